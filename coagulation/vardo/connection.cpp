// SPDX-License-Identifier: MIT
#include "coagulation/vardo/connection.h"

#include "coagulation/vardo/execute.h"

#include <QSqlField>
#include <QSqlQuery>

#include <algorithm>
#include <array>

#ifdef Q_OS_WIN
#include <QDeadlineTimer>
#include <QDir>
#include <QThread>

#include <qt_windows.h>
#endif

namespace coagulation {

namespace {

constexpr int busy = 5; ///< SQLite's result code

#ifdef Q_OS_WIN
/// \return true if another program opened the file so that it can't be opened for reading and writing.
///         SQLite would open it read-only, or fail without saying why.
bool isHeld(const QString &path)
{
    auto *const file = CreateFileW(qUtf16Printable(QDir::toNativeSeparators(path)),
                                   GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return false;
}

bool isHeldFor(const QString &path, int milliseconds)
{
    constexpr int pause = 100; // ms
    const QDeadlineTimer end(milliseconds);
    while (isHeld(path)) {
        if (end.hasExpired())
            return true;
        QThread::msleep(pause);
    }
    return false;
}
#else
bool isHeldFor(const QString & /*path*/, int /*milliseconds*/)
{
    return false; // every program may open it
}
#endif

} // namespace

QSqlDatabase connection()
{
    return QSqlDatabase::database(QSqlDatabase::defaultConnection, false);
}

QString quoted(QString name)
{
    return '"' + name.replace('"', "\"\"") + '"';
}

QVariant valueIn(const QSqlQuery &row, int column)
{
    const QVariant value = row.value(column);
    const bool isEmptyBlob =
        value.typeId() == QMetaType::QByteArray && !value.isNull() && value.toByteArray().isNull();
    return isEmptyBlob ? QVariant(QByteArray("")) : value;
}

QSqlRecord currentRow(const QSqlQuery &query, const QStringList &columns)
{
    const QSqlRecord unnamed = query.record();
    QSqlRecord row;
    for (int i = 0; i < unnamed.count(); ++i) {
        QSqlField field = unnamed.field(i);
        if (columns.size() == unnamed.count())
            field.setName(columns.at(i));
        field.setValue(valueIn(query, i));
        row.append(field);
    }
    return row;
}

QVariant bindable(const QVariant &value)
{
    constexpr QChar byteOrderMark(QChar::ByteOrderMark);
    const QString text = value.typeId() == QMetaType::QString ? value.toString() : QString();
    if (text.startsWith(byteOrderMark) || text.startsWith(QChar(QChar::ByteOrderSwapped)))
        return byteOrderMark + text; // SQLite leaves out the first one
    return value;
}

QSqlError openConnection(int milliseconds)
{
    QSqlDatabase database = connection();
    if (!database.isValid()) // the driver's own text is "Driver not loaded", twice
        return {
            "on Debian install the package libqt6sql6-sqlite, on Windows put qsqlite.dll into the"
            " folder sqldrivers beside vardo.exe",
            "Qt's SQLite driver is missing or cannot be loaded:", QSqlError::ConnectionError};
    if (isHeldFor(database.databaseName(), milliseconds))
        return {"Another program holds the file open", "database is locked",
                QSqlError::ConnectionError, QString::number(busy)};
    if (!database.open())
        return database.lastError();

    // No wait for a lock: the version, which is read next, is read again in the transaction.
    // Without legacy_alter_table, a trigger or view that names a missing table makes every rename of a
    // table fail. foreign_keys is off by default, but builds of SQLite may differ.
    for (const char *setting :
         {"pragma busy_timeout=0", "pragma legacy_alter_table=on", "pragma foreign_keys=off"}) {
        QSqlQuery query;
        if (!execute(query, setting)) {
            QSqlError error = query.lastError();
            query.clear();
            database.close();
            return error;
        }
    }
    return {};
}

void waitForLocks(int milliseconds)
{
    QSqlQuery query;
    execute(query, QString("pragma busy_timeout=%1").arg(milliseconds));
}

bool isLocked(const QSqlError &error)
{
    return (error.nativeErrorCode().toInt() & 0xff) == busy;
}

bool isEnvironmentError(const QSqlError &error)
{
    // primary result codes, https://www.sqlite.org/rescode.html
    static constexpr std::array codes = {
        2,  // internal
        3,  // permission
        4,  // aborted
        5,  // busy
        6,  // locked
        7,  // no memory
        8,  // read-only
        9,  // interrupted
        10, // I/O error
        11, // corrupt
        13, // full
        14, // cannot open
        15, // protocol
        22, // no large files
        26, // not a database
    };
    const int code = error.nativeErrorCode().toInt() & 0xff; // the other bits are details
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

Probe probeTransaction()
{
    QSqlQuery probe;
    return probeTransaction(probe);
}

Probe probeTransaction(QSqlQuery &probe)
{
    if (!connection().isOpen())
        return Probe::Ended;
    if (!execute(probe, "begin"))
        return isEnvironmentError(probe.lastError()) ? Probe::Failed : Probe::Open;
    execute(probe, "rollback");
    return Probe::Ended;
}

} // namespace coagulation
