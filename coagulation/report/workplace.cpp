// SPDX-License-Identifier: MIT
#include "coagulation/report/workplace.h"

#include <QDir>
#include <QFileInfo>

namespace coagulation::report {

Workplace::Workplace(const QString &keep)
{
    if (keep.isEmpty())
        makeTemporary();
    else
        makeKept(keep);
}

void Workplace::makeTemporary()
{
    temporary.emplace(QDir::tempPath() + "/vardo-report-XXXXXX");
    folder = temporary->path();
    if (!temporary->isValid())
        text = QString("No folder can be made in %1: %2.")
                   .arg(QDir::tempPath(), temporary->errorString());
}

void Workplace::makeKept(const QString &keep)
{
    const QFileInfo info(keep);
    folder = info.absoluteFilePath();
    const QFile::Permissions onlyUser = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    if (info.isDir()) {
        if (!QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
            text = QString("%1 is not empty.").arg(folder);
    } else if (info.exists()) {
        text = QString("%1 is no folder.").arg(folder);
    } else if (!QDir().mkdir(folder, onlyUser)) {
        text = QString("%1 cannot be made.").arg(folder);
    }
}

} // namespace coagulation::report
