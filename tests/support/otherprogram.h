// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

/// Another program on a database: it keeps its connection, and with it a transaction, until it is closed.
class OtherProgram {
public:
    /// \param path of the database
    explicit OtherProgram(const QString &path);
    ~OtherProgram() { close(); }
    Q_DISABLE_COPY_MOVE(OtherProgram)

    /// Starts statements, each in lines of its own.
    void ask(const QByteArray &statements);

    /// \return the rows and errors that the last statements asked for gave
    QByteArray answer();

    QByteArray run(const QByteArray &statements);

    void close();

    /// Ends the program as a crash would.
    void kill();

private:
    QProcess shell;
};
