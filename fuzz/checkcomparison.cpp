// SPDX-License-Identifier: MIT
#include "checkcomparison.h"

#include "checkreport.h"
#include "editscript.h"
#include "require.h"

#include "plainsqlite.h"

#include "coagulation/report/attention.h"
#include "coagulation/report/comparison.h"

#include <QList>

#include <algorithm>

using namespace coagulation::report;

namespace {

QByteArrayList columns(const Sqlite &database, const QByteArray &table)
{
    return database.column("select name from pragma_table_xinfo(" + quotedName(table) + ")");
}

QList<QByteArray> sortedRows(const Sqlite &database, const QByteArray &table)
{
    QList<QByteArray> rows = database.rows(table).values();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void checkTable(const TableFacts &table, const Sqlite &before, const Sqlite &after)
{
    const QByteArray name = table.name.toUtf8();
    if (!table.problem.isEmpty() || !table.rowsBefore || !table.rowsAfter)
        return;
    require(*table.rowsBefore == before.countRows(name), "so many rows were in " + table.name);
    require(*table.rowsAfter == after.countRows(name), "so many rows are in " + table.name);
    if (table.viewAfter) // may show a row twice
        return;
    require(*table.rowsBefore - table.removed + table.added == *table.rowsAfter,
            "added and removed rows make the difference in " + table.name);
    if (table.added + table.removed + table.renamed + table.changed == 0
        && columns(before, name) == columns(after, name))
        require(sortedRows(before, name) == sortedRows(after, name),
                "nothing has changed in " + table.name);
}

} // namespace

void checkComparison(const QString &name, const QString &before, const QString &after)
{
    const QByteArray bytesBefore = DatabaseFiles::readFrom(before).database;
    const QByteArray bytesAfter = DatabaseFiles::readFrom(after).database;
    Report report;
    report.use = Use::Comparison;
    report.databases = {{name}};
    DatabaseFacts &facts = report.databases.first();
    facts.filesBefore = {{before, bytesBefore.size(), "0"}};
    facts.filesAfter = {{after, bytesAfter.size(), "0"}};
    compare(facts, before, after, {true, true}, [](const QString &) { return true; });
    report.attention = attentionOf(report);
    checkReport(report);

    require(DatabaseFiles::readFrom(before).database == bytesBefore, "the old file stays as it is");
    require(DatabaseFiles::readFrom(after).database == bytesAfter, "the new file stays as it is");
    const Sqlite databaseBefore(before);
    const Sqlite databaseAfter(after);
    // A connection that may write refuses schemas that one for reading takes: with a check on an unknown column, say.
    if (databaseBefore.tables().isEmpty() || databaseAfter.tables().isEmpty())
        return;
    for (const TableFacts &table : facts.tables)
        checkTable(table, databaseBefore, databaseAfter);
}
