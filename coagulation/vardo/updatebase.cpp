// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updatebase.h"

#include "coagulation/vardo/damagecheck.h"

#include <QDebug>
#include <QFileInfo>
#include <QMap>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>

#include <algorithm>
#include <array>

namespace coagulation {

namespace {

constexpr int lockTimeout = 5000; ///< ms, the driver's own default

/// \return true for a failure that has nothing to do with what is in the database
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

/// \return the methods update_v<N>() that the object's class itself declares, by N
QMap<int, QMetaMethod> findSteps(const QMetaObject &metaObject)
{
    static const QRegularExpression stepSignature(R"(^update_v(\d+)\(\)$)");

    QMap<int, QMetaMethod> steps;
    for (int index = metaObject.methodOffset(); index < metaObject.methodCount(); ++index) {
        const QMetaMethod method = metaObject.method(index);
        const auto match = stepSignature.match(QString::fromLatin1(method.methodSignature()));
        const int number = match.captured(1).toInt();
        if (match.hasMatch() && !steps.contains(number))
            steps.insert(number, method);
    }
    return steps;
}

QSqlDatabase connection()
{
    return QSqlDatabase::database(QSqlDatabase::defaultConnection, false);
}

/// \return an invalid error when the connection is open and ready for the steps
QSqlError openConnection()
{
    QSqlDatabase database = connection();
    if (!database.isValid()) // the driver's own text is "Driver not loaded", twice
        return {
            "on Debian install the package libqt6sql6-sqlite, on Windows put qsqlite.dll into the"
            " folder sqldrivers beside vardo.exe",
            "Qt's SQLite driver is missing or cannot be loaded:", QSqlError::ConnectionError};
    if (!database.open())
        return database.lastError();

    // No wait for a lock: the version, which is read next, is read again in the transaction.
    // Without legacy_alter_table, a trigger or view that names a missing table makes every rename of a
    // table fail. foreign_keys is off by default, but builds of SQLite may differ.
    for (const char *setting :
         {"pragma busy_timeout=0", "pragma legacy_alter_table=on", "pragma foreign_keys=off"}) {
        QSqlQuery query;
        if (!query.exec(setting)) {
            QSqlError error = query.lastError();
            query.clear();
            database.close();
            return error;
        }
    }
    return {};
}

/// \param milliseconds how long statements wait for another program to release its lock
void waitForLocks(int milliseconds)
{
    QSqlQuery().exec(QString("pragma busy_timeout=%1").arg(milliseconds));
}

/// The state of the transaction, as a second "begin" shows it. SQLite ends a transaction by itself after
/// some failures, and the second "begin" can be such a failure if there is no memory.
enum class Probe { Open, Ended, Failed };

Probe probeTransaction()
{
    if (!connection().isOpen())
        return Probe::Ended;
    QSqlQuery probe;
    if (!probe.exec("begin"))
        return isEnvironmentError(probe.lastError()) ? Probe::Failed : Probe::Open;
    probe.exec("rollback");
    return Probe::Ended;
}

QSqlRecord withoutColumns(QSqlRecord record, const QStringList &columns)
{
    for (const QString &column : columns)
        record.remove(record.indexOf(column));
    return record;
}

void setDefaults(QSqlRecord &row, const QSqlRecord &defaults)
{
    for (int i = 0; i < defaults.count(); ++i) {
        if (row.contains(defaults.fieldName(i)))
            row.setValue(defaults.fieldName(i), defaults.value(i));
        else
            row.append(defaults.field(i));
    }
}

/// \return the row that the query is on, with empty blobs as they are stored: the driver reads one as a
///         null byte array, and would write that as null
QSqlRecord currentRow(const QSqlQuery &query)
{
    QSqlRecord row = query.record();
    for (int i = 0; i < row.count(); ++i) {
        const QVariant value = row.value(i);
        if (value.typeId() == QMetaType::QByteArray && !value.isNull()
            && value.toByteArray().isNull())
            row.setValue(i, QByteArray(""));
    }
    return row;
}

/// \param insert used for all rows of a table, since preparing costs more than inserting
bool insertRow(QSqlQuery &insert, const QString &table, const QSqlRecord &row)
{
    const QString sql =
        connection().driver()->sqlStatement(QSqlDriver::InsertStatement, table, row, true);
    if (sql != insert.lastQuery() && !insert.prepare(sql))
        return false;
    for (int i = 0; i < row.count(); ++i) {
        if (row.isGenerated(i)) // the others are not in the statement
            insert.addBindValue(row.value(i));
    }
    return insert.exec();
}

} // namespace

FileNameAffixes &fileNameAffixes()
{
    static FileNameAffixes affixes;
    return affixes;
}

QString databaseFileName(const QString &pattern)
{
    return pattern.arg(fileNameAffixes().prefix, fileNameAffixes().suffix);
}

QDebug debugFrom(const char *sourceFile, int line)
{
    return qDebug() << sourceFile << "(" << line << "): ";
}

UpdateBase::UpdateBase(const QString &path, QObject *parent)
    : QObject(parent)
{
    QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);

    const QFileInfo file(path);
    filePath = file.absoluteFilePath();
    if (!file.exists()) {
        qWarning("File doesn't exist: %s, skipped", qUtf8Printable(filePath));
        skipped = true;
        return;
    }

    qDebug("Updating %s", qUtf8Printable(filePath));
    // SQLite takes a name that begins with "file:" for a URI, and would open another file.
    const bool looksLikeUri = path.startsWith("file:", Qt::CaseInsensitive);
    QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE");
    database.setDatabaseName(looksLikeUri ? filePath : path);
    if (const QSqlError error = openConnection(); error.isValid()) {
        qWarning("Can't open %s: %s", qUtf8Printable(path), qUtf8Printable(error.text()));
        return;
    }
    readVersion();
}

void UpdateBase::readVersion()
{
    QSqlQuery query;
    query.setForwardOnly(true);
    const bool read = query.exec("select version from version order by version desc");
    version = read && query.next() ? query.value(0).toInt() : 0;
    if (!read)
        logFailedCheck(query, SOURCE_LINE);
}

bool UpdateBase::run()
{
    if (skipped)
        return true;
    if (!beginTransaction())
        return false;

    // Another run may have upgraded the file meanwhile, or a lock may have hidden its version.
    readVersion();
    if (!verifyTransaction())
        return false;

    const bool upgraded = upgrade();
    if (!verifyTransaction())
        return false;
    if (upgraded) {
        QSqlDatabase database = connection();
        waitForLocks(lockTimeout);
        if (database.commit()) {
            transaction = Transaction::None;
            return true;
        }
        qWarning() << "Failed to commit:" << database.lastError().text();
    }
    rollBack();
    transaction = Transaction::None;
    return false;
}

bool UpdateBase::beginTransaction()
{
    QSqlError error = connection().isOpen() ? QSqlError() : openConnection();
    if (!error.isValid()) {
        // Immediate, so that a lock of the analyser software is met here and not within a step.
        waitForLocks(lockTimeout);
        QSqlQuery begin;
        if (!begin.exec("begin immediate"))
            error = begin.lastError();
        // While another program reads, changed pages stay in memory. SQLite often tries to write some
        // of them, and a wait each time would take forever. Only the commit waits.
        waitForLocks(0);
    }
    if (error.isValid()) {
        qWarning() << "Failed to start transaction:" << error.text();
        return false;
    }
    transaction = Transaction::Open;
    return true;
}

void UpdateBase::rollBack()
{
    if (probeTransaction() == Probe::Ended)
        return;
    QSqlDatabase database = connection();
    if (!database.rollback()) {
        // "roolback": support looks for this spelling in the logs
        qWarning() << "Failed to call roolback:" << database.lastError().text();
    }
}

bool UpdateBase::upgrade()
{
    const QMap<int, QMetaMethod> steps = findSteps(*metaObject());
    if (steps.isEmpty()) {
        debugFrom(SOURCE_LINE) << metaObject()->className()
                               << "does not contain methods like 'bool update_v<N>()'";
        return true;
    }

    if (version != steps.lastKey() && !passesDamageCheck())
        return false;

    for (auto step = steps.begin(); step != steps.end(); ++step) {
        const QByteArray signature = step->methodSignature();
        if (version >= step.key()) {
            qDebug("%-12s: SKIP", signature.constData());
            continue;
        }
        bool passed = false;
        if (!step->invoke(this, Qt::DirectConnection, Q_RETURN_ARG(bool, passed))
            || !verifyTransaction())
            passed = false;
        qDebug("%-12s: %s", signature.constData(), passed ? "PASS" : "FAIL");
        if (!passed)
            return false;
    }

    // If a step changed a value that is not of its column's type, an index may still hold the old one.
    if (hasOddValues && !passesDamageCheck())
        return false;

    // also when every step was skipped: a version above the newest step is lowered to it
    const int newVersion = versionToRecord > 0 ? versionToRecord : steps.lastKey();
    if (!setVersion(newVersion)) {
        qDebug() << "Failed to update version to" << newVersion;
        return false;
    }
    qDebug() << "Updated version to" << newVersion;
    return true;
}

bool UpdateBase::passesDamageCheck()
{
    const DamageReport report = checkForDamage(connection());
    hasOddValues = hasOddValues || report.hasOddValues;
    if (!report.damage.isEmpty()) {
        reportDamage(report.damage);
        return false;
    }
    // The check may fail for want of a collation or function that the steps do not need.
    if (report.failure)
        logFailedCheck(report.failure->query, report.failure->sourceFile, report.failure->line);
    return verifyTransaction();
}

void UpdateBase::reportDamage(QString finding) const
{
    qWarning("Database %s is damaged: %s", qUtf8Printable(filePath),
             qUtf8Printable(finding.replace('\n', ' ')));
}

void UpdateBase::logFailedCheck(const QSqlQuery &query, const char *sourceFile, int line)
{
    if (transaction != Transaction::Open || !isDamage(query.lastError())) {
        logUnlessContentError(query, sourceFile, line);
        return;
    }
    reportDamage(query.lastError().databaseText());
    abandon();
}

bool UpdateBase::exec(const char *sourceFile, int line, const QString &sql,
                      const QVariantMap &values)
{
    if (!verifyTransaction())
        return false;

    QSqlQuery query;
    query.setForwardOnly(true);
    bool done = query.prepare(sql);
    if (done) {
        for (auto value = values.begin(); value != values.end(); ++value)
            query.bindValue(value.key(), value.value());
        done = query.exec();
    }
    if (!done)
        logSqlError(query, sourceFile, line);
    return done;
}

bool UpdateBase::execAll(std::initializer_list<Statement> statements)
{
    return std::all_of(statements.begin(), statements.end(), [this](const Statement &statement) {
        return exec(statement.sourceFile, statement.line, statement.sql);
    });
}

void UpdateBase::tryAll(std::initializer_list<Statement> statements)
{
    for (const Statement &statement : statements)
        (void)exec(statement.sourceFile, statement.line, statement.sql);
}

void UpdateBase::logSqlError(const QSqlQuery &query, const char *sourceFile, int line)
{
    if (transaction == Transaction::Abandoned)
        return;
    qWarning() << sourceFile << "(" << line << "): " << query.lastError().text() << ": ["
               << query.lastQuery() << "]";

    if (endsRun(query.lastError()))
        abandon();
}

void UpdateBase::logUnlessContentError(const QSqlQuery &query, const char *sourceFile, int line)
{
    if (endsRun(query.lastError()))
        logSqlError(query, sourceFile, line);
}

void UpdateBase::abandon()
{
    rollBack();
    transaction = Transaction::Abandoned;
    // Nothing that a step still runs by itself may reach the file.
    QSqlQuery().exec("pragma query_only=on");
}

bool UpdateBase::verifyTransaction()
{
    if (transaction == Transaction::Open && probeTransaction() != Probe::Open) {
        qWarning("The transaction has ended, most likely for want of memory: %s",
                 qUtf8Printable(filePath));
        abandon();
    }
    return transaction != Transaction::Abandoned;
}

bool UpdateBase::endsRun(const QSqlError &error) const
{
    return transaction == Transaction::Open
        && (isEnvironmentError(error) || probeTransaction() != Probe::Open);
}

bool UpdateBase::readRows(QSqlQuery &query, const char *sourceFile, int line,
                          const std::function<bool()> &row)
{
    bool complete = true;
    while (complete && verifyTransaction() && query.next())
        complete = row();
    if (query.lastError().isValid()) {
        logSqlError(query, sourceFile, line);
        complete = false;
    }
    query.finish(); // an unfinished query locks its tables against a change of their layout
    return complete && verifyTransaction();
}

bool UpdateBase::copyTable(const QString &from, const QString &to, const QSqlRecord &defaults,
                           const QStringList &excluded,
                           const std::function<void(QSqlRecord &)> &adjust)
{
    if (!verifyTransaction())
        return false;

    QSqlQuery rows;
    rows.setForwardOnly(true);
    if (!rows.exec("select * from " + from)) {
        logSqlError(rows, SOURCE_LINE);
        return verifyTransaction();
    }
    if (adjust)
        return copyAdjustedRows(rows, to, defaults, excluded, adjust);
    if (!rows.next())
        return true;

    QSqlRecord row = withoutColumns(rows.record(), excluded);
    setDefaults(row, defaults);
    rows.finish();
    if (!verifyTransaction())
        return false;
    QStringList columns;
    QStringList values;
    QVariantList bound;
    for (int i = 0; i < row.count(); ++i) {
        const QString name = row.fieldName(i);
        columns << connection().driver()->escapeIdentifier(name, QSqlDriver::FieldName);
        if (defaults.contains(name)) {
            values << "?";
            bound << row.value(i);
        } else {
            // qualified: a quoted name alone is a text for SQLite if there is no such column
            values << from + '.' + columns.constLast();
        }
    }

    // Inside SQLite, since the driver changes some values. "not indexed", since an index would change
    // the order.
    QSqlQuery insert;
    bool inserted = insert.prepare(QString("insert into %1 (%2) select %3 from %4 not indexed")
                                       .arg(to, columns.join(", "), values.join(", "), from));
    if (inserted) {
        for (const QVariant &value : bound)
            insert.addBindValue(value);
        inserted = insert.exec();
    }
    if (!inserted)
        logSqlError(insert, SOURCE_LINE);
    return inserted;
}

bool UpdateBase::copyAdjustedRows(QSqlQuery &rows, const QString &to, const QSqlRecord &defaults,
                                  const QStringList &excluded,
                                  const std::function<void(QSqlRecord &)> &adjust)
{
    QSqlQuery insert;
    return readRows(rows, SOURCE_LINE, [&] {
        QSqlRecord row = withoutColumns(currentRow(rows), excluded);
        setDefaults(row, defaults);
        adjust(row);
        if (!verifyTransaction())
            return false;
        const bool inserted = insertRow(insert, to, row);
        if (!inserted)
            logSqlError(insert, SOURCE_LINE);
        return inserted;
    });
}

bool UpdateBase::rebuildTable(const QString &newTable, const QString &oldTable)
{
    return copyTable(oldTable, newTable) && execAll({SQL(QString("drop table %1").arg(oldTable))})
        && renameTable(newTable, oldTable);
}

bool UpdateBase::renameTable(const QString &from, const QString &to)
{
    return execAll({SQL(QString("alter table %1 rename to %2").arg(from, to))});
}

bool UpdateBase::removeDecimals(const QString &table, const QStringList &columns)
{
    QStringList assignments;
    for (const QString &column : columns)
        assignments
            << QString("%1 = iif(instr(%1, '.'), substr(%1, 1, instr(%1, '.')-1), %1)").arg(column);
    return execAll({SQL(QString("update %1 set %2").arg(table, assignments.join(',')))});
}

bool UpdateBase::updateOrInsert(const QString &updateSql, const QString &insertSql,
                                const char *sourceFile, int line)
{
    if (!verifyTransaction())
        return false;

    QSqlQuery query;
    const bool done =
        query.exec(updateSql) && (query.numRowsAffected() > 0 || query.exec(insertSql));
    if (!done)
        logSqlError(query, sourceFile, line);
    return done;
}

bool UpdateBase::setVersion(int newVersion)
{
    tryAll({SQL("delete from version")});
    return execAll({SQL(QString("insert into version values(%1)").arg(newVersion))});
}

} // namespace coagulation
