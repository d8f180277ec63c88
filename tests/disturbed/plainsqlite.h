// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>
#include <QString>

#include <sqlite3.h>

#include <functional>

/// The rows of a table by row id, each as its typed values.
using Rows = QMap<qint64, QByteArray>;

/// \return the value in a column of the row that a statement is at, with its type
QByteArray literal(sqlite3_stmt *row, int column);

/// \return a name as it stands in a statement
QByteArray quotedName(QByteArray name);

/// A database file, opened without any of the tool's own code.
class Sqlite {
public:
    /// Creates the file if it is missing.
    explicit Sqlite(const QString &path);
    ~Sqlite();
    Q_DISABLE_COPY_MOVE(Sqlite)

    /// \param row called for each row that can be read
    /// \return SQLite's result code
    int run(const QByteArray &sql, const std::function<void(sqlite3_stmt *)> &row = {}) const;

    /// \return the first values of the rows that can be read
    QByteArrayList column(const QByteArray &sql) const;

    /// \return how many rows a table or view has; 0 if they cannot be counted
    qint64 countRows(const QByteArray &name) const;

    /// \return the names in lower case
    QByteArrayList tables() const;

    /// Reads a table from both its ends, so that a damaged page hides no more than itself.
    /// \param row called for each row that can be read, with the row's id before its values
    void scan(const QByteArray &table, const std::function<void(sqlite3_stmt *)> &row) const;

    /// \return the rows of a table that can be read
    Rows rows(const QByteArray &table) const;

    /// \return what SQLite's check finds; its failure is a finding, too
    QByteArrayList findings() const;

    /// \return SQLite's connection
    sqlite3 *connection() const { return handle; }

private:
    void addFindings(QByteArrayList &findings) const;

    sqlite3 *handle = nullptr;
};

/// Makes a database of each statement and row of another one that can be read, by no more than plain reading.
/// \param to an empty database
void copyRowByRow(const Sqlite &from, const Sqlite &to);
