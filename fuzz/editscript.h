// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

/// What happened to a sample database before its upgrade, as readable text. Each line is a statement of SQL, or one
/// of these:
///
///     -- version 12                       the sample's stored version, 0 unless said; the newest at most
///     -- encoding UTF-16le                of its texts: UTF-16le or UTF-16be
///     -- crash                            the program that ran the statements so far dies here
///     -- page 3 offset 17 xor 64          changes a byte of the file
///     -- leftover offset 17 xor 64        changes a byte of the journal or log that the crash left
///     -- cut 5000                         shortens the file to so many bytes
///
/// Statements that fail are ignored. The lines that change bytes follow after all statements, in their order.
struct EditScript {
    int version = 0;
    QByteArray encoding{};       ///< empty for UTF-8
    QByteArrayList statements{}; ///< with the line "-- crash"
    QByteArrayList changes{};    ///< the lines that change bytes

    /// \param newest version of the sample
    static EditScript read(const QByteArray &text, int newest);
};

/// The files of a database.
struct DatabaseFiles {
    QByteArray database;
    QByteArray journal{}; ///< null if there is none, as the next one
    QByteArray log{};     ///< the write-ahead log

    /// Writes them, and removes what else SQLite keeps beside the database.
    void writeTo(const QString &path) const;

    /// \return the files of a database that nobody has open, or whose program is to die now
    static DatabaseFiles readFrom(const QString &path);

    /// Writes them, and lets SQLite itself roll back or move what a crashed program left.
    void settleAt(const QString &path) const;

    bool hasLeftover() const { return !journal.isNull() || !log.isNull(); }
};

/// Runs a script on a sample.
/// \param name "profile", "data", "qc" or "syslog"
/// \param folder that the work is done in
DatabaseFiles editedSample(const QString &name, const EditScript &script, const QString &folder);

/// \return a database file: a sample as a workstation at a version would have it
QByteArray sampleBytes(const QString &name, int version);
