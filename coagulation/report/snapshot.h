// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"
#include "coagulation/report/filecopy.h"

/// Copies of databases that other programs may be using.
namespace coagulation::report {

struct Snapshot {
    enum class State {
        Copied,
        Unreadable, ///< locked for too long, no right to read, an error of the disk
        NotWritten, ///< the copy could not be written, as on a full disk
        Stopped,    ///< `progress` returned false
    };
    State state = State::Copied;
    QString problem{}; ///< a sentence, if it was not copied
    /// The originals as they were copied, without digests: these take longer than the copy, and others wait
    /// for the end of the copy. The copies have them.
    QList<FileFacts> files{};
};

/// Copies a database, and the write-ahead log beside it, so that the copy is one state of it whatever other
/// programs do meanwhile. SQLite's own lock for readers is held for as long as the copy takes: others can read,
/// and what they want to write waits.
///
/// The original keeps every byte, with one exception: SQLite plays back a journal that a crash has left before
/// it gives the lock. A file that SQLite cannot read, being damaged or no database, is copied as it is, with its
/// journal and its write-ahead log. So is one whose lock takes a file beside it that may not be written: nobody
/// else has it open then.
/// \param database path, which exists; it may be a link
/// \param target path of the copy, which does not exist yet
/// \param progress called with the number of bytes read since the last call; false stops the copying
Snapshot takeSnapshot(const QString &database, const QString &target, const BytesRead &progress);

/// Makes the second copy of a snapshot, with what stands beside it.
/// \return why it cannot be written; empty if it is written
QString copySnapshot(const QString &source, const QString &target, const BytesRead &progress);

/// \return the paths of a database and of what SQLite keeps beside it, as far as they exist: the database, its
///         journal, its write-ahead log; those behind a link; none if there is no such database
QStringList filesOf(const QString &database);

/// \return the same with sizes, and without digests
QList<FileFacts> factsOfFiles(const QString &database);

/// \return the sizes of these files together
qint64 bytesOf(const QString &database);

} // namespace coagulation::report
