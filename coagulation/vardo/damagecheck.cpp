// SPDX-License-Identifier: MIT
#include "coagulation/vardo/damagecheck.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/execute.h"
#include "coagulation/vardo/sourceline.h"

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>

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

void checkFile(const QSqlDatabase &connection, DamageReport &report)
{
    // The first finding is nearly always enough. If it is about a value, a later one may be damage.
    for (const char *sql : {"pragma integrity_check(1)", "pragma integrity_check(2147483647)"}) {
        QSqlQuery check(connection);
        check.setForwardOnly(true);
        const QString finding = execute(check, sql) ? findingNotAboutAValue(check) : QString();
        if (finding == "ok")
            return;
        if (!finding.isEmpty()) {
            report.damage = finding;
            return;
        }
        if (check.lastError().isValid()) {
            report.failure = DamageReport::Failure{std::move(check), SOURCE_LINE};
            return;
        }
        report.hasOddValues = true;
    }
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

void lookForQuotingIndex(const QSqlDatabase &connection, DamageReport &report)
{
    QSqlQuery indexes(connection);
    indexes.setForwardOnly(true);
    constexpr auto sql =
        "select 1 from sqlite_master as entry where instr(sql, '\"') and (type = 'index'"
        " or (type = 'table' and sql not like 'create virtual%'"
        " and exists (select 1 from pragma_table_xinfo(entry.name)"
        " where hidden = 2)))"; // a generated column that is not stored
    if (!execute(indexes, sql))
        report.failure = DamageReport::Failure{std::move(indexes), SOURCE_LINE};
    else
        report.hasQuotingIndex = indexes.next();
}

} // namespace

DamageReport checkForDamage(const QSqlDatabase &connection)
{
    DamageReport report;
    checkFile(connection, report);
    // also if the check fails for want of a collation or function that the steps do not need
    if (report.damage.isEmpty()
        && !(report.failure && isEnvironmentError(report.failure->query.lastError())))
        checkSchema(connection, report);
    if (report.damage.isEmpty() && !report.failure)
        lookForQuotingIndex(connection, report);
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
