// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updatebase.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/consolelog.h"
#include "coagulation/vardo/damagecheck.h"
#include "coagulation/vardo/execute.h"

#include <QDebug>
#include <QDir>
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

namespace coagulation {

namespace {

constexpr int lockTimeout = 5000; ///< ms, the driver's own default

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

/// \param insert used for all rows of a table, since preparing costs more than inserting
bool insertRow(QSqlQuery &insert, const QString &table, const QSqlRecord &row)
{
    const QString sql =
        connection().driver()->sqlStatement(QSqlDriver::InsertStatement, table, row, true);
    if (sql != insert.lastQuery() && !insert.prepare(sql))
        return false;
    for (int i = 0; i < row.count(); ++i) {
        if (row.isGenerated(i)) // the others are not in the statement
            insert.addBindValue(bindable(row.value(i)));
    }
    return execute(insert);
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

    // Qt takes a name that begins with a colon for one of its own resources.
    const QFileInfo file(path.startsWith(':') ? QDir::currentPath() + '/' + path : path);
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
        if (!isLocked(error)) // the wait for another program is later
            qWarning("Can't open %s: %s", qUtf8Printable(path), qUtf8Printable(error.text()));
        return;
    }
    readVersion();
}

void UpdateBase::readVersion()
{
    QSqlQuery query;
    query.setForwardOnly(true);
    const bool read = execute(query, "select version from version order by version desc");
    version = read && query.next() ? query.value(0).toInt() : 0;
    if (!read)
        logFailedCheck(query, SOURCE_LINE);
}

bool UpdateBase::run()
{
    if (skipped)
        return true;
    flushLog(); // here and around each step, so that a process that is killed leaves a log
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
    QSqlError error = connection().isOpen() ? QSqlError() : openConnection(lockTimeout);
    if (!error.isValid()) {
        // Immediate, so that a lock of the analyser software is met here and not within a step.
        waitForLocks(lockTimeout);
        QSqlQuery begin;
        if (!execute(begin, "begin immediate"))
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

    if (version != steps.lastKey() && !passesDamageCheck(Moment::BeforeSteps))
        return false;

    for (auto step = steps.begin(); step != steps.end(); ++step) {
        const QByteArray signature = step->methodSignature();
        if (version >= step.key()) {
            qDebug("%-12s: SKIP", signature.constData());
            continue;
        }
        flushLog();
        bool passed = false;
        if (!step->invoke(this, Qt::DirectConnection, Q_RETURN_ARG(bool, passed))
            || !verifyTransaction())
            passed = false;
        qDebug("%-12s: %s", signature.constData(), passed ? "PASS" : "FAIL");
        flushLog();
        if (!passed)
            return false;
    }

    // If a step changed a value that is not of its column's type, an index may still hold the old one. So may an index
    // on a quoted text that has become the name of a column.
    if (checkAfterSteps && !passesDamageCheck(Moment::AfterSteps))
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

bool UpdateBase::passesDamageCheck(Moment moment)
{
    const DamageReport report = checkForDamage(connection());
    QString damage = report.damage;
    if (moment == Moment::BeforeSteps) {
        endangered = report.endangered;
        checkAfterSteps = report.hasOddValues || !endangered.isEmpty();
    } else {
        for (auto table = endangered.begin(); table != endangered.end(); ++table) {
            if (damage.isEmpty() && report.unchecked.contains(table.key()))
                damage = QString("no check of %1, %2: %3")
                             .arg(table.key(), table.value(), report.unchecked.value(table.key()));
        }
    }
    if (!damage.isEmpty()) {
        reportDamage(damage, moment);
        return false;
    }
    if (report.failure)
        logFailedCheck(report.failure->query, report.failure->sourceFile, report.failure->line);
    return verifyTransaction();
}

void UpdateBase::reportDamage(QString finding, Moment moment) const
{
    finding.replace('\n', ' ');
    if (moment == Moment::BeforeSteps)
        qWarning("Database %s is damaged: %s", qUtf8Printable(filePath), qUtf8Printable(finding));
    else
        qWarning("The upgrade would damage %s: %s", qUtf8Printable(filePath),
                 qUtf8Printable(finding));
}

void UpdateBase::logFailedCheck(const QSqlQuery &query, const char *sourceFile, int line)
{
    if (transaction != Transaction::Open || !isDamage(query.lastError())) {
        logUnlessContentError(query, sourceFile, line);
        return;
    }
    reportDamage(query.lastError().databaseText(), Moment::BeforeSteps);
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
            query.bindValue(value.key(), bindable(value.value()));
        done = execute(query);
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

bool UpdateBase::tryAll(std::initializer_list<Statement> statements)
{
    bool done = true;
    for (const Statement &statement : statements)
        done = exec(statement.sourceFile, statement.line, statement.sql) && done;
    return done;
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
    QSqlQuery query;
    execute(query, "pragma query_only=on");
}

bool UpdateBase::verifyTransaction()
{
    if (transaction == Transaction::Open && !hasTransaction()) {
        qWarning("The transaction has ended, and SQLite reported no failure: %s",
                 qUtf8Printable(filePath));
        abandon();
    }
    return transaction != Transaction::Abandoned;
}

bool UpdateBase::hasTransaction()
{
    return probeTransaction() == Probe::Open;
}

bool UpdateBase::endsRun(const QSqlError &error) const
{
    return transaction == Transaction::Open && (isEnvironmentError(error) || !hasTransaction());
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
    if (!execute(rows, "select * from " + from)) {
        logSqlError(rows, SOURCE_LINE);
        // The rows of a table that is there would be lost with it.
        return !typesOf(from).contains("table") && verifyTransaction();
    }
    if (adjust)
        return copyAdjustedRows(rows, columnsOf(from), to, defaults, excluded, adjust);
    if (!rows.next())
        return true;

    QSqlRecord row = withoutColumns(currentRow(rows, columnsOf(from)), excluded);
    setDefaults(row, defaults);
    rows.finish();
    if (!verifyTransaction())
        return false;
    QStringList columns;
    QStringList values;
    QVariantList bound;
    for (int i = 0; i < row.count(); ++i) {
        const QString name = row.fieldName(i);
        columns << quoted(name);
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
        inserted = execute(insert);
    }
    if (!inserted)
        logSqlError(insert, SOURCE_LINE);
    return inserted;
}

bool UpdateBase::copyAdjustedRows(QSqlQuery &rows, const QStringList &columns, const QString &to,
                                  const QSqlRecord &defaults, const QStringList &excluded,
                                  const std::function<void(QSqlRecord &)> &adjust)
{
    QSqlQuery insert;
    return readRows(rows, SOURCE_LINE, [&] {
        QSqlRecord row = withoutColumns(currentRow(rows, columns), excluded);
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
    const QString sql = QString("update %1 set %2").arg(table, assignments.join(','));

    // Most tables hold no such text, and the statement would write every row as it was. If it cannot
    // even be prepared, it runs for its failure.
    if (verifyTransaction() && QSqlQuery().prepare(sql) && !mayHoldDecimals(table, columns))
        return verifyTransaction();
    return execAll({SQL(sql)});
}

bool UpdateBase::mayHoldDecimals(const QString &table, const QStringList &columns)
{
    QStringList conditions;
    for (const QString &column : columns)
        conditions << QString("instr(%1, '.')").arg(column);

    QSqlQuery query;
    query.setForwardOnly(true);
    const bool found =
        execute(query,
                QString("select 1 from %1 where %2 limit 1").arg(table, conditions.join(" or ")))
        && query.next();
    if (!query.lastError().isValid())
        return found;
    // Not logged: the statement that follows fails for the same reason. It cannot follow if SQLite has
    // ended the transaction.
    if (!hasTransaction())
        logSqlError(query, SOURCE_LINE);
    return true;
}

bool UpdateBase::updateOrInsert(const QString &updateSql, const QString &insertSql,
                                const char *sourceFile, int line)
{
    if (!verifyTransaction())
        return false;

    QSqlQuery query;
    const bool done =
        execute(query, updateSql) && (query.numRowsAffected() > 0 || execute(query, insertSql));
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
