// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <functional>

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
    QString problem{};        ///< a sentence, if it was not copied
    QList<FileFacts> files{}; ///< the originals as they were copied: paths, sizes, digests
};

/// Copies a database, and the write-ahead log beside it, so that the copy is one state of it whatever other
/// programs do meanwhile. SQLite's own lock for readers is held for as long as the copy takes: others can read,
/// and what they want to write waits.
///
/// The original keeps every byte, with one exception: SQLite plays back a journal that a crash has left before
/// it gives the lock. A file that SQLite cannot read, being damaged or no database, is copied as it is, with its
/// journal and its write-ahead log.
/// \param source path of the database, which exists
/// \param target path of the copy, which does not exist yet
/// \param progress called with the number of bytes read since the last call; false stops the copying
Snapshot takeSnapshot(const QString &source, const QString &target,
                      const std::function<bool(qint64)> &progress);

/// Makes the second copy of a snapshot, with what stands beside it.
/// \return false if it cannot be written
bool copySnapshot(const QString &source, const QString &target,
                  const std::function<bool(qint64)> &progress);

/// \return the database and what SQLite keeps beside it, as they are: paths, sizes, digests; none if there is
///         no such database
QList<FileFacts> filesOf(const QString &database);

/// How much space a rehearsal takes, in bytes.
struct SpaceNeeded {
    qint64 copies = 0;  ///< two of each database
    qint64 upgrade = 0; ///< what the databases grow by, and the journal and temporary files of the largest one
};

/// \param databases paths; missing ones take no space
SpaceNeeded spaceNeededFor(const QStringList &databases);

} // namespace coagulation::report
