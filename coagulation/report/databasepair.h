// SPDX-License-Identifier: MIT
#pragma once

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringConverter>
#include <QVariantList>

#include <functional>

class QSqlQuery;

/// A database before and after an upgrade, on one connection.
namespace coagulation::report {

/// The names of both databases on the connection.
constexpr const char *schemaBefore = "main";
constexpr const char *schemaAfter = "after";

/// \return true if a question failed since the file is locked, the user may not read it, or there is no memory
bool saysNothingOfTheContent(const QSqlError &error);

/// Both databases, open for reading, as long as this lives. Nothing writes to them, and no function that a
/// schema names is called unless it is harmless.
class DatabasePair {
public:
    /// \param name of the connection
    explicit DatabasePair(const QString &name);
    ~DatabasePair();
    Q_DISABLE_COPY_MOVE(DatabasePair)

    /// \return why the database before cannot be read, a sentence; empty if it can
    QString openBefore(const QString &path);

    /// \return why the database after cannot be read beside it, a sentence; empty if it can
    QString openAfter(const QString &path);

    /// \return whether a database was not opened since it is locked, or the user may not read it
    bool isUnreadable() const { return saysNothingOfTheContent(refusal); }

    const QSqlDatabase &connection() const { return database; }

private:
    QString connectionName;
    QSqlError refusal{};
    QSqlDatabase database;
};

/// \return what the error says of a database, the end of a sentence: "is locked by another program"
QString predicateOf(const QSqlError &error);

/// Asks a connection. The first failure is kept, and nothing is asked after it.
class Questions {
public:
    explicit Questions(const QSqlDatabase &database)
        : connection(database)
    {
    }

    /// \param row called for each row of the answer, as long as it returns true
    /// \return false after a failure
    bool ask(const QString &sql, const QVariantList &values,
             const std::function<bool(const QSqlQuery &)> &row);

    /// \return the first value of the answer; not valid if there is none
    QVariant value(const QString &sql, const QVariantList &values = {});

    bool failed() const { return !failure.isEmpty(); }

    /// \return see predicateOf(); empty if nothing failed
    QString predicate() const { return failure; }

    /// \return the error of the first failure
    const QSqlError &error() const { return firstError; }

private:
    const QSqlDatabase &connection;
    QString failure{};
    QSqlError firstError{};
};

/// \return the encoding of the texts of both databases
QStringConverter::Encoding textEncoding(Questions &questions);

} // namespace coagulation::report
