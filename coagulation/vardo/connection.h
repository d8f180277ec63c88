// SPDX-License-Identifier: MIT
#pragma once

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlRecord>
#include <QStringList>
#include <QVariant>

class QSqlQuery;

/// The default connection of Qt, which every statement of the tool uses.
namespace coagulation {

QSqlDatabase connection();

/// \return a name as it stands in a statement
QString quoted(QString name);

/// \return the value in a column of a query's row, with an empty blob as it is stored: the driver reads one as a
///         null byte array, and would write that as null
QVariant valueIn(const QSqlQuery &row, int column);

/// The driver's own names of columns lack quotation marks and brackets. They are empty if there was no memory for them,
/// and SQLite does not report this.
/// \param columns of the table that the query selects all of, in their order; ignored unless there is one for each
/// \return the row that a query is on, with these names
QSqlRecord currentRow(const QSqlQuery &query, const QStringList &columns);

/// \return a value as it has to be bound to be stored as it is: SQLite leaves out a byte order mark (U+FEFF) at the
///         beginning of a text, and takes U+FFFE for a swapped one
QVariant bindable(const QVariant &value);

/// Opens the connection, whose file is set, for the steps.
/// \param milliseconds how long to wait while another program holds the file open and lets nobody write to it,
///                     as programs can on Windows; then the error is that of a lock
/// \return an invalid error when it is open
QSqlError openConnection(int milliseconds = 0);

/// \return true if another program has locked the database or its file
bool isLocked(const QSqlError &error);

/// \param milliseconds how long statements wait for another program to release its lock
void waitForLocks(int milliseconds);

/// The state of the transaction, as a second "begin" shows it. SQLite ends a transaction by itself after
/// some failures, and the second "begin" can be such a failure if there is no memory.
enum class Probe { Open, Ended, Failed };

Probe probeTransaction();

/// \param probe asks, and keeps the error of a probe that failed
Probe probeTransaction(QSqlQuery &probe);

/// \return true for a failure that has nothing to do with what is in the database
bool isEnvironmentError(const QSqlError &error);

} // namespace coagulation
