// SPDX-License-Identifier: MIT
#include "coagulation/report/databasepair.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/damagecheck.h"
#include "coagulation/vardo/execute.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QVariant>

namespace coagulation::report {

namespace {

/// \return a name of the file that SQLite opens for reading only, whatever letters are in it
QString readOnlyUri(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const QString root = absolute.startsWith('/') ? QString() : "/"; // before a drive of Windows
    return "file://" + root + QString::fromLatin1(QUrl::toPercentEncoding(absolute, "/:"))
        + "?mode=ro";
}

} // namespace

DatabasePair::DatabasePair(const QString &name)
    : connectionName(name)
    , database(QSqlDatabase::addDatabase("QSQLITE", name))
{
}

DatabasePair::~DatabasePair()
{
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(connectionName);
}

QString DatabasePair::openBefore(const QString &path)
{
    const QString subject = "The database before the upgrade ";
    database.setConnectOptions("QSQLITE_OPEN_READONLY;QSQLITE_OPEN_URI");
    database.setDatabaseName(readOnlyUri(path));
    if (!database.open()) {
        refusal = database.lastError();
        return subject + predicateOf(refusal) + '.';
    }
    Questions questions(database);
    for (const char *setting :
         {"pragma query_only=on", "pragma trusted_schema=off", "pragma cell_size_check=on",
          "pragma temp_store=file", "pragma foreign_keys=off"})
        questions.value(setting);
    questions.value("select count(*) from main.sqlite_master");
    refusal = questions.error();
    return questions.failed() ? subject + questions.predicate() + '.' : QString();
}

QString DatabasePair::openAfter(const QString &path)
{
    Questions questions(database);
    questions.value("attach ? as after", {readOnlyUri(path)});
    if (questions.predicate().contains("must use the same text encoding"))
        return "The databases before and after the upgrade store texts in different encodings.";
    questions.value("select count(*) from after.sqlite_master");
    questions.value("begin"); // all questions see the same rows
    refusal = questions.error();
    return questions.failed() ? "The database after the upgrade " + questions.predicate() + '.'
                              : QString();
}

bool saysNothingOfTheContent(const QSqlError &error)
{
    return isEnvironmentError(error) && !isDamage(error);
}

QString predicateOf(const QSqlError &error)
{
    // primary result codes, https://www.sqlite.org/rescode.html
    switch (error.nativeErrorCode().toInt() & 0xff) { // the other bits are details
    case 5:
    case 6:
        return "is locked by another program";
    case 11:
        return "is damaged: " + error.databaseText();
    case 26:
        return "is no SQLite database, or it is encrypted";
    default:
        return "cannot be read: "
            + (error.databaseText().isEmpty() ? error.text() : error.databaseText());
    }
}

bool Questions::ask(const QString &sql, const QVariantList &values,
                    const std::function<bool(const QSqlQuery &)> &row)
{
    if (failed())
        return false;
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    bool done = query.prepare(sql);
    if (done) {
        for (const QVariant &value : values)
            query.addBindValue(value);
        done = execute(query);
    }
    bool goOn = done;
    while (goOn && query.next())
        goOn = row(query);
    // Only a further step shows that there was no memory for a text of the last row, which is empty then.
    if (done && !goOn)
        query.next();
    const QSqlError error = query.lastError();
    if (!done || (error.isValid() && (goOn || isEnvironmentError(error)))) {
        firstError = error;
        failure = predicateOf(firstError);
    }
    return !failed();
}

QVariant Questions::value(const QString &sql, const QVariantList &values)
{
    QVariant first;
    ask(sql, values, [&first](const QSqlQuery &row) {
        first = row.value(0);
        return false;
    });
    return first;
}

QStringConverter::Encoding textEncoding(Questions &questions)
{
    const QString name = questions.value("pragma encoding").toString();
    if (name == "UTF-16le")
        return QStringConverter::Utf16LE;
    return name == "UTF-16be" ? QStringConverter::Utf16BE : QStringConverter::Utf8;
}

} // namespace coagulation::report
