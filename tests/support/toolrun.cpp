// SPDX-License-Identifier: MIT
#include "toolrun.h"

#include "testdatabase.h"

#include <QFile>
#include <QProcess>

ToolRun runTool(const QString &program, const TestDatabase &database)
{
    constexpr int patience = 120'000; // ms, for large databases under the sanitizers
    QProcess process;
    process.start(program, {"-p", database.folderPath() + '/', database.path() + ".log"});
    if (!process.waitForFinished(patience) || process.exitStatus() != QProcess::NormalExit)
        qFatal("%s: %s", qUtf8Printable(program), qUtf8Printable(process.errorString()));

    QFile file(database.path() + ".log");
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no log");
    const QString log = QString::fromUtf8(file.readAll());
    file.remove();
    return {process.exitCode(),
            QString(log).remove(" ((null):0, (null))").split('\n', Qt::SkipEmptyParts)};
}
