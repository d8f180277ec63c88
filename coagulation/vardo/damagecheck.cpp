// SPDX-License-Identifier: MIT
#include "coagulation/vardo/damagecheck.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/execute.h"
#include "coagulation/vardo/sourceline.h"

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QStringList>

#include <initializer_list>
#include <utility>

namespace coagulation {

namespace {

/// \param check the executed "pragma integrity_check"
/// \return its first row that is not about a value which breaks a constraint or is not of its column's
///         type: older software wrote such values, and the file itself is sound
QString findingNotAboutAValue(QSqlQuery &check)
{
    static const QRegularExpression aboutAValue(R"(^(CHECK constraint failed in |\S+ value in ))");

    while (check.next()) {
        QString finding = check.value(0).toString();
        if (!aboutAValue.match(finding).hasMatch())
            return finding;
    }
    return {};
}

enum class Outcome { Sound, OddValues, Damaged, Failed };

Outcome runCheck(QSqlQuery &check, const QString &sql, DamageReport &report)
{
    check.setForwardOnly(true);
    const QString finding = execute(check, sql) ? findingNotAboutAValue(check) : QString();
    if (finding == "ok")
        return Outcome::Sound;
    if (!finding.isEmpty()) {
        report.damage = finding;
        return Outcome::Damaged;
    }
    if (check.lastError().isValid())
        return Outcome::Failed;
    report.hasOddValues = true;
    return Outcome::OddValues;
}

void checkTable(const QSqlDatabase &connection, const QString &table, DamageReport &report)
{
    QSqlQuery check(connection);
    if (runCheck(check, QString("pragma integrity_check(%1)").arg(quoted(table)), report)
        != Outcome::Failed)
        return;
    const QSqlError error = check.lastError();
    if (isEnvironmentError(error))
        report.failure = DamageReport::Failure{std::move(check), SOURCE_LINE};
    else
        report.unchecked.insert(table, error.databaseText());
}

/// \return the texts in the first column of a question's rows
QStringList namesFrom(const QSqlDatabase &connection, const QString &sql, DamageReport &report)
{
    QStringList names;
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    if (execute(query, sql)) {
        while (query.next())
            names << query.value(0).toString();
    }
    if (query.lastError().isValid())
        report.failure = DamageReport::Failure{std::move(query), SOURCE_LINE};
    return names;
}

/// Executes one statement after the other, up to the first that fails. It is no failure of the check if SQLite does not
/// allow a statement.
void runAll(const QSqlDatabase &connection, std::initializer_list<const char *> statements,
            DamageReport &report)
{
    for (const char *sql : statements) {
        QSqlQuery query(connection);
        if (execute(query, sql))
            continue;
        if (!report.failure && isEnvironmentError(query.lastError()))
            report.failure = DamageReport::Failure{std::move(query), SOURCE_LINE};
        return;
    }
}

/// One table may need a collation or function that SQLite lacks. Then there is no check of the whole file.
void checkTables(const QSqlDatabase &connection, DamageReport &report)
{
    for (const QString &table : namesFrom(
             connection, "select name from sqlite_master where type = 'table' and rootpage > 0",
             report)) {
        if (!report.damage.isEmpty() || report.failure)
            return;
        checkTable(connection, table, report);
    }
}

void checkFile(const QSqlDatabase &connection, DamageReport &report)
{
    // The first finding is nearly always enough. If it is about a value, a later one may be damage.
    for (const char *sql : {"pragma integrity_check(1)", "pragma integrity_check(2147483647)"}) {
        QSqlQuery check(connection);
        const Outcome outcome = runCheck(check, sql, report);
        if (outcome == Outcome::OddValues)
            continue;
        if (outcome == Outcome::Failed && isEnvironmentError(check.lastError()))
            report.failure = DamageReport::Failure{std::move(check), SOURCE_LINE};
        else if (outcome == Outcome::Failed)
            checkTables(connection, report);
        return;
    }
}

/// Views, triggers and virtual tables have no pages. SQLite takes page 0 of the first table that it knows for the mark of
/// a check of one table, and then leaves out the free pages: the steps would write into those that a table uses, too.
/// So the check runs without such entries of the schema, and they come back afterwards.
/// \return true if something has to come back
bool leaveOutWhatHasNoPages(const QSqlDatabase &connection, DamageReport &report)
{
    if (namesFrom(connection,
                  "select name from sqlite_master"
                  " where type = 'view' or sql like 'create virtual%' limit 1",
                  report)
            .isEmpty())
        return false;
    // Damage in the schema's own pages may disappear with an entry.
    checkTable(connection, "sqlite_master", report);
    // Without a transaction, which SQLite may have ended, the savepoint would begin one and its release commit it.
    QSqlQuery query(connection);
    const Probe probe = probeTransaction(query);
    if (probe == Probe::Failed && !report.failure)
        report.failure = DamageReport::Failure{std::move(query), SOURCE_LINE};
    if (!report.damage.isEmpty() || report.failure || probe == Probe::Ended)
        return false;
    // Nothing between the savepoint and the deletion could end the transaction unnoticed.
    runAll(connection,
           {"pragma writable_schema=on", "savepoint all_entries",
            "delete from sqlite_master"
            " where type in ('view', 'trigger') or sql like 'create virtual%'",
            "pragma writable_schema=reset"},
           report);
    return true;
}

void bringBackWhatHasNoPages(const QSqlDatabase &connection, DamageReport &report)
{
    runAll(connection,
           {"rollback to all_entries", "release all_entries", "pragma writable_schema=reset"},
           report);
}

void checkEverything(const QSqlDatabase &connection, DamageReport &report)
{
    const bool reduced = leaveOutWhatHasNoPages(connection, report);
    if (report.damage.isEmpty() && !report.failure)
        checkFile(connection, report);
    if (reduced)
        bringBackWhatHasNoPages(connection, report);
}

void checkSchema(const QSqlDatabase &connection, DamageReport &report)
{
    // SQLite reads these names in any case, but a change of the layout looks for the exact name: it
    // would be left out without a failure.
    QSqlQuery entries(connection);
    entries.setForwardOnly(true);
    if (!execute(entries,
                 "select type || ' ' || name from sqlite_master as entry"
                 " where type not in ('table', 'index', 'trigger', 'view')"
                 " or (type in ('table', 'view') and tbl_name <> name)"
                 " or (type = 'index' and not exists (select 1 from sqlite_master"
                 " where type = 'table' and name = entry.tbl_name))"
                 " or (name not glob '*[\"''`]*' and instr(sql, name) = 0)"))
        report.failure = DamageReport::Failure{std::move(entries), SOURCE_LINE};
    else if (entries.next())
        report.damage = "misspelt entry of the schema: " + entries.value(0).toString();
}

void lookForQuotingIndexes(const QSqlDatabase &connection, DamageReport &report)
{
    const QStringList tables =
        namesFrom(connection,
                  "select tbl_name from sqlite_master as entry where instr(sql, '\"') and ("
                  "(type = 'index' and (instr(lower(sql), 'where')"
                  " or exists (select 1 from pragma_index_xinfo(entry.name)"
                  " where cid = -2)))" // no column of the table
                  " or (type = 'table' and sql not like 'create virtual%'"
                  " and exists (select 1 from pragma_table_xinfo(entry.name)"
                  " where hidden = 2)))", // a generated column that is not stored
                  report);
    for (const QString &table : tables)
        report.endangered.insert(table, "an index of which has double quotes");
}

/// What the check of a table would have found: when a statement writes such a value once more, the value becomes one of
/// its column's type, and an index that holds it does not change.
bool holdsOddValues(const QSqlDatabase &connection, const QString &table, DamageReport &report)
{
    const QString literal = '\'' + QString(table).replace('\'', "''") + '\'';
    const QStringList conditions = namesFrom(connection,
                                             QString(R"(
select case
        when type like '%int%' or not (type like '%char%' or type like '%clob%' or type like '%text%')
        then printf('typeof("%w") = ''text'' and "%w" || '''' = cast("%w" as numeric)', name, name, name)
        else printf('typeof("%w") in (''integer'', ''real'')', name)
    end
from pragma_table_xinfo(%1) as entry
where hidden in (0, 3) and type <> '' and type not like '%blob%'
    and exists (select 1 from pragma_index_list(%1) as list, pragma_index_xinfo(list.name) as part
        where part.name = entry.name or part.cid = -2 or list.partial))")
                                                 .arg(literal),
                                             report);
    if (conditions.isEmpty())
        return false;
    return !namesFrom(connection,
                      QString("select 1 from %1 where %2 limit 1")
                          .arg(quoted(table), conditions.join(" or ")),
                      report)
                .isEmpty();
}

} // namespace

DamageReport checkForDamage(const QSqlDatabase &connection)
{
    DamageReport report;
    checkEverything(connection, report);
    if (report.damage.isEmpty() && !report.failure)
        checkSchema(connection, report);
    if (report.damage.isEmpty() && !report.failure)
        lookForQuotingIndexes(connection, report);
    const QStringList unchecked = report.unchecked.keys();
    for (const QString &table : unchecked) {
        if (!report.failure && holdsOddValues(connection, table, report))
            report.endangered.insert(table,
                                     "which has values that are not of their columns' types");
    }
    return report;
}

bool isDamage(const QSqlError &error)
{
    // primary result codes, https://www.sqlite.org/rescode.html
    constexpr int corrupt = 11;
    constexpr int notADatabase = 26;
    const int code = error.nativeErrorCode().toInt() & 0xff; // the other bits are details
    return code == corrupt || code == notADatabase;
}

} // namespace coagulation
