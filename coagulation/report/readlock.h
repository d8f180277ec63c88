// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace coagulation::report {

/// SQLite's lock for readers on a database file, held as long as this lives. Others can read meanwhile; a program
/// that writes waits with its commit.
///
/// The system drops a process's locks on a file when the process closes any of its descriptors of it: a file
/// that is opened beside the lock must be opened before and closed after it.
class ReadLock {
public:
    enum class State {
        Held,
        Busy,    ///< another program writes, and did not end for some seconds
        Damaged, ///< SQLite cannot read the file
        Refused, ///< SQLite would have to write into the file or beside it, and cannot
        Failed,
    };

    /// \param database path, which exists
    explicit ReadLock(const QString &database);
    ~ReadLock();
    Q_DISABLE_COPY_MOVE(ReadLock)

    State state() const { return reached; }
    QString error() const { return text; } ///< SQLite's words

private:
    State begin(const QString &database);

    QString connection;
    QString text{};
    State reached;
};

} // namespace coagulation::report
