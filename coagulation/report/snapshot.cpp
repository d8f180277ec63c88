// SPDX-License-Identifier: MIT
#include "coagulation/report/snapshot.h"

#include "coagulation/report/readlock.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

namespace coagulation::report {

namespace {

/// SQLite keeps the journal and the write-ahead log beside the file that a link leads to.
QString fileBehind(const QString &database)
{
    const QFileInfo file(database);
    return file.isSymLink() ? file.canonicalFilePath() : database;
}

/// The copy of one database, which grows file by file.
class Copying {
public:
    Copying(QString sourcePath, QString targetPath, const BytesRead &bytesRead)
        : source(std::move(sourcePath))
        , target(std::move(targetPath))
        , progress(bytesRead)
    {
    }

    /// \param file of the database, open for reading
    /// \param ending of its name after that of the database, for example "-wal"
    bool copy(QFile &file, const QString &ending = {})
    {
        const CopyResult copied = copyFile(file, target + ending, progress);
        switch (copied.state) {
        case CopyState::Copied:
            written << target + ending;
            result.files << FileFacts{QFileInfo(file).absoluteFilePath(), copied.bytes, {}};
            break;
        case CopyState::NotRead:
            fail(Snapshot::State::Unreadable,
                 QString("%1 cannot be read: %2.").arg(file.fileName(), copied.error));
            break;
        case CopyState::NotWritten:
            fail(Snapshot::State::NotWritten,
                 QString("%1 cannot be written: %2.").arg(target + ending, copied.error));
            break;
        case CopyState::Stopped:
            fail(Snapshot::State::Stopped, "The copying was stopped.");
            break;
        }
        return result.state == Snapshot::State::Copied;
    }

    /// Copies a file beside the database, if it is there and holds something.
    bool copyBeside(const QString &ending)
    {
        QFile file(source + ending);
        if (!file.exists() || file.size() == 0)
            return true;
        return open(file) && copy(file, ending);
    }

    bool open(QFile &file)
    {
        if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) // nothing is read beforehand
            return true;
        fail(Snapshot::State::Unreadable,
             QString("%1 cannot be read: %2.").arg(file.fileName(), file.errorString()));
        return false;
    }

    void fail(Snapshot::State state, const QString &problem)
    {
        for (const QString &path : written)
            QFile::remove(path);
        result = {state, problem, {}};
    }

    /// Takes the last copy back, to make it once more.
    void removeLast()
    {
        QFile::remove(written.takeLast());
        result.files.removeLast();
    }

    Snapshot snapshot() const { return result; }
    QString path() const { return source; }

private:
    QString source;
    QString target;
    const BytesRead &progress;
    QStringList written{};
    Snapshot result{};
};

/// \return what changes when a program starts a write-ahead log afresh
QByteArray headerOf(QFile &log)
{
    constexpr qint64 headerBytes = 32;
    log.seek(0);
    return log.read(headerBytes);
}

/// Copies the write-ahead log beside a locked database. While the lock is held, the log only grows, and SQLite
/// ignores the end of a copy that tears a commit. But if all of the log was in the database already, another
/// program may start it afresh, once. A copy of both halves would hold old pages as if they were new.
bool copyLog(Copying &copying)
{
    QFile log(copying.path() + "-wal");
    if (!log.exists())
        return true;
    if (!copying.open(log))
        return false;
    constexpr int tries = 3;
    for (int i = 0; i < tries; ++i) {
        const QByteArray header = headerOf(log);
        if (header.isEmpty())
            return true;
        if (!copying.copy(log, "-wal"))
            return false;
        if (headerOf(log) == header)
            return true;
        copying.removeLast();
    }
    copying.fail(Snapshot::State::Unreadable,
                 QString("The write-ahead log of %1 changes too often.").arg(copying.path()));
    return false;
}

/// SQLite takes a file without a page for an empty database, and removes the journal and the log beside it.
constexpr qint64 smallestPage = 512;

/// Copies what is there without a lock.
void copyAsItIs(Copying &copying, QFile &file)
{
    if (copying.copy(file) && copying.copyBeside("-journal"))
        copying.copyBeside("-wal");
}

/// \return what shows that another program has worked on a database
QStringList traces(const QString &database)
{
    QStringList traces;
    for (const char *ending : {"", "-journal", "-wal", "-shm"}) {
        const QFileInfo file(database + ending);
        if (file.exists())
            traces << QString("%1 %2 %3")
                          .arg(ending, QString::number(file.size()),
                               file.lastModified().toString(Qt::ISODateWithMs));
    }
    return traces;
}

/// Copies a database in a folder where SQLite may not write what it needs for its lock: the index of a write-ahead
/// log, or the file itself, to play back a journal. As long as nobody has made the index or changed a file,
/// nobody has used the database.
void copyUnused(Copying &copying, QFile &file, const QString &error)
{
    const QStringList before = traces(copying.path());
    if (QFile::exists(copying.path() + "-shm")) {
        copying.fail(Snapshot::State::Unreadable,
                     QString("%1 cannot be locked: %2.").arg(copying.path(), error));
        return;
    }
    copyAsItIs(copying, file);
    if (copying.snapshot().state == Snapshot::State::Copied && traces(copying.path()) != before)
        copying.fail(Snapshot::State::Unreadable,
                     QString("%1 changed while it was copied, and cannot be locked: %2.")
                         .arg(copying.path(), error));
}

} // namespace

Snapshot takeSnapshot(const QString &database, const QString &target, const BytesRead &progress)
{
    const QString source = fileBehind(database);
    Copying copying(source, target, progress);
    // Open before the lock is taken, and until it is given up; see ReadLock.
    QFile file(source);
    if (!copying.open(file))
        return copying.snapshot();
    if (file.size() < smallestPage) {
        copyAsItIs(copying, file);
        return copying.snapshot();
    }
    const ReadLock lock(source);
    switch (lock.state()) {
    case ReadLock::State::Held:
        // No journal: one that stands beside a locked file belongs to a transaction that has not touched the
        // file yet.
        if (copying.copy(file))
            copyLog(copying);
        break;
    case ReadLock::State::Damaged:
        copyAsItIs(copying, file);
        break;
    case ReadLock::State::Refused:
        copyUnused(copying, file, lock.error());
        break;
    case ReadLock::State::Busy:
        copying.fail(Snapshot::State::Unreadable,
                     QString("%1 is locked by another program.").arg(source));
        break;
    case ReadLock::State::Failed:
        copying.fail(Snapshot::State::Unreadable,
                     QString("%1 cannot be read: %2.").arg(source, lock.error()));
        break;
    }
    return copying.snapshot();
}

QString copySnapshot(const QString &source, const QString &target, const BytesRead &progress)
{
    for (const QString &path : filesOf(source)) {
        QFile file(path);
        const QString copy = target + path.mid(source.size());
        if (!file.copy(copy))
            return QString("%1 cannot be written: %2.").arg(copy, file.errorString());
        if (!progress(file.size()))
            return "The copying was stopped.";
    }
    return {};
}

QStringList filesOf(const QString &database)
{
    QStringList files;
    if (QFileInfo::exists(database)) {
        const QString path = fileBehind(database);
        for (const char *ending : {"", "-journal", "-wal"}) {
            if (QFileInfo::exists(path + ending))
                files << path + ending;
        }
    }
    return files;
}

QList<FileFacts> factsOfFiles(const QString &database)
{
    QList<FileFacts> facts;
    for (const QString &path : filesOf(database)) {
        const QFileInfo file(path);
        facts << FileFacts{file.absoluteFilePath(), file.size(), {}};
    }
    return facts;
}

qint64 bytesOf(const QString &database)
{
    qint64 bytes = 0;
    for (const QString &path : filesOf(database))
        bytes += QFileInfo(path).size();
    return bytes;
}

} // namespace coagulation::report
