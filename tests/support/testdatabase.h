// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A real database file in a folder of its own, worked on through a connection of its own, which is
/// closed between the calls. A statement that fails ends the test program.
class TestDatabase {
public:
    /// \param name file name of the database, which does not exist yet
    explicit TestDatabase(QString name = "test.db");
    /// Closes the connection that an updater has left on the file, since Windows removes no open file.
    ~TestDatabase();
    Q_DISABLE_COPY_MOVE(TestDatabase)

    QString path() const { return folder.filePath(fileName); }
    QString folderPath() const { return folder.path(); }

    /// Runs a sample of the project's folder samples/ through the sqlite3 shell.
    /// \param sample name of the file, for example "data_v0.sql"
    void load(const QString &sample) const;

    void execute(const QStringList &statements) const;

    /// \return the rows of a query in its order, each as SQL literals: "3, '3', NULL"
    QStringList rows(const QString &query) const;

    /// \return the rows of a table in its own order, as by rows()
    QStringList table(const QString &name) const;

    /// \return the statements that made the database's indexes, tables, triggers and views, by type
    ///         and name, with single blanks and none inside of brackets or before a comma
    QStringList schema() const;

    /// \return the schema as by schema(), ordered by its statements, without what a rename or an added
    ///         column leaves in a statement's layout
    QStringList comparableSchema() const;

    /// \return all that is in the file: the schema's statements as they are stored, then the rows of
    ///         every table
    QStringList content() const;

    /// \return the bytes of the file
    QByteArray bytes() const;

private:
    QTemporaryDir folder;
    QString fileName;
};

/// \return the path of the sqlite3 shell
QString sqliteShell();

/// \return the rows of a query on a database file; see TestDatabase::rows()
QStringList databaseRows(const QString &path, const QString &query);

/// Runs statements on a database file, which is created when missing; a failure ends the program.
void executeOn(const QString &path, const QStringList &statements);

/// \return all that is in a database file; see TestDatabase::content()
QStringList databaseContent(const QString &path);
