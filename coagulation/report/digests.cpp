// SPDX-License-Identifier: MIT
#include "coagulation/report/digests.h"

#include "coagulation/report/filecopy.h"
#include "coagulation/report/interruption.h"

#include <QFile>
#include <QThread>

namespace coagulation::report {

Digests::Digests(const QStringList &paths)
{
    for (const QString &path : paths) {
        files.push_back(std::make_unique<QFile>(path));
        files.back()->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    thread.reset(QThread::create([this] { compute(); }));
    thread->start();
}

Digests::~Digests()
{
    stopped = true;
    thread->wait();
}

QHash<QString, QByteArray> Digests::result()
{
    thread->wait();
    return digests;
}

void Digests::compute()
{
    for (const std::unique_ptr<QFile> &file : files) {
        if (file->isOpen())
            digests[file->fileName()] =
                digestOf(*file, [this](qint64) { return !stopped && !interrupted(); });
    }
}

void setDigests(QList<FileFacts> &files, const QHash<QString, QByteArray> &digests)
{
    for (FileFacts &file : files)
        file.sha256 = digests.value(file.path);
}

} // namespace coagulation::report
