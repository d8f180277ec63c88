// SPDX-License-Identifier: MIT
#include "coagulation/report/readlock.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/damagecheck.h"
#include "coagulation/vardo/execute.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace coagulation::report {

namespace {

ReadLock::State stateOf(const QSqlError &error)
{
    constexpr int readOnly = 8; // SQLite's result codes
    constexpr int cannotOpen = 14;
    const int code = error.nativeErrorCode().toInt() & 0xff;
    if (isLocked(error))
        return ReadLock::State::Busy;
    if (isDamage(error))
        return ReadLock::State::Damaged;
    return code == readOnly || code == cannotOpen ? ReadLock::State::Refused
                                                  : ReadLock::State::Failed;
}

/// Whoever closes a database last moves its write-ahead log into it. A read-only connection cannot, so that the
/// file keeps its bytes. Where there is no such log yet, a connection that may write removes the empty one that
/// SQLite makes.
QString optionsFor(const QString &database)
{
    const QString wait = "QSQLITE_BUSY_TIMEOUT=5000";
    return QFileInfo::exists(database + "-wal") ? wait + ";QSQLITE_OPEN_READONLY" : wait;
}

} // namespace

ReadLock::ReadLock(const QString &database)
    : connection("lock of " + database)
    , reached(begin(database))
{
}

ReadLock::~ReadLock()
{
    QSqlDatabase::database(connection, false).close();
    QSqlDatabase::removeDatabase(connection);
}

ReadLock::State ReadLock::begin(const QString &database)
{
    QSqlDatabase opened = QSqlDatabase::addDatabase("QSQLITE", connection);
    opened.setDatabaseName(QFileInfo(database).absoluteFilePath()); // not to be taken for a URI
    opened.setConnectOptions(optionsFor(database));
    opened.open();
    QSqlError error = opened.lastError();
    if (opened.isOpen()) {
        QSqlQuery query(opened);
        // This pragma reads the file, unlike "begin", but needs no schema that it understands.
        if (execute(query, "begin") && execute(query, "pragma schema_version"))
            return State::Held;
        error = query.lastError();
    }
    text = error.databaseText();
    return stateOf(error);
}

} // namespace coagulation::report
