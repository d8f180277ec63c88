// SPDX-License-Identifier: MIT
#include "coagulation/report/digests.h"

#include "coagulation/report/filecopy.h"
#include "coagulation/report/interruption.h"

namespace coagulation::report {

Digests::Digests(const QStringList &paths)
{
    for (const QString &path : paths) {
        files.push_back(std::make_unique<File>(path));
        files.back()->file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    for (const std::unique_ptr<File> &file : files) {
        if (file->file.isOpen())
            threads.start([this, &file = *file] {
                file.digest =
                    digestOf(file.file, [this](qint64) { return !stopped && !interrupted(); });
            });
    }
}

Digests::~Digests()
{
    stopped = true;
    threads.waitForDone();
}

QHash<QString, QByteArray> Digests::result()
{
    threads.waitForDone();
    QHash<QString, QByteArray> digests;
    for (const std::unique_ptr<File> &file : files)
        digests[file->file.fileName()] = file->digest;
    return digests;
}

void setDigests(QList<FileFacts> &files, const QHash<QString, QByteArray> &digests)
{
    for (FileFacts &file : files)
        file.sha256 = digests.value(file.path);
}

} // namespace coagulation::report
