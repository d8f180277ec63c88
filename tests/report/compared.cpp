// SPDX-License-Identifier: MIT
#include "compared.h"

#include "testdatabase.h"

#include <algorithm>

using namespace coagulation::report;

namespace {

QStringList linesOf(const QList<RowFacts> &rows)
{
    QStringList lines;
    for (const RowFacts &row : rows) {
        QStringList cells;
        for (const Cell &cell : row.cells)
            cells << cell.column + " = " + cell.value;
        const QString newKey = row.newKey.isEmpty() ? QString() : " -> " + row.newKey;
        lines << "  " + row.key + newKey + " | " + cells.join(", ");
    }
    return lines;
}

QStringList linesOf(const QList<ChangedRow> &rows)
{
    QStringList lines;
    for (const ChangedRow &row : rows) {
        QStringList cells;
        for (const ChangedCell &cell : row.cells)
            cells << cell.column + ": " + cell.before + " -> " + cell.after;
        lines << "  " + row.key + " | " + cells.join(", ");
    }
    return lines;
}

QStringList differencesIn(const TableFacts &table)
{
    QStringList lines;
    const auto addCount = [&](const QString &what, qint64 count, const QStringList &rows) {
        if (count != 0)
            lines << QString("%1: %2 %3").arg(table.name, what, QString::number(count));
        lines << rows;
    };
    if (!table.problem.isEmpty())
        lines << table.name + ": " + table.problem;
    for (const QString &column : table.columnsAdded)
        lines << table.name + ": new column " + column;
    for (const QString &column : table.columnsRemoved)
        lines << table.name + ": gone column " + column;
    addCount("added", table.added, linesOf(table.addedRows));
    addCount("removed", table.removed, linesOf(table.removedRows));
    addCount("renamed", table.renamed, linesOf(table.renamedRows));
    addCount("changed", table.changed, linesOf(table.changedRows));
    return lines;
}

QStringList linesOf(const QString &what, const QList<ObjectFacts> &objects)
{
    QStringList lines;
    for (const ObjectFacts &object : objects)
        lines << QString("%1 %2 %3 of %4").arg(what, object.type, object.name, object.table);
    return lines;
}

} // namespace

DatabaseFacts compared(const TestDatabase &before, const TestDatabase &after, const QString &name,
                       const ComparisonOptions &options)
{
    DatabaseFacts facts{name};
    compare(facts, before.path(), after.path(), options, [](const QString &) { return true; });
    return facts;
}

Report reportOn(const TestDatabase &before, const TestDatabase &after, const QString &name)
{
    Report report;
    report.exitCode = 0;
    DatabaseFacts facts = compared(before, after, name);
    facts.filesBefore = {{before.path(), before.bytes().size(), "0"}};
    facts.filesAfter = {{after.path(), after.bytes().size(), "0"}};
    report.databases = {facts};
    return report;
}

QStringList differences(const DatabaseFacts &facts)
{
    QStringList lines;
    if (!facts.problem.isEmpty())
        lines << facts.problem;
    for (const TableFacts &table : facts.tables)
        lines << differencesIn(table);
    return lines << linesOf("gone", facts.objectsGone) << linesOf("new", facts.objectsNew);
}

const TableFacts &tableIn(const DatabaseFacts &facts, const QString &name)
{
    const auto found =
        std::find_if(facts.tables.begin(), facts.tables.end(),
                     [&name](const TableFacts &table) { return table.name == name; });
    if (found == facts.tables.end())
        qFatal("no table %s: %s", qUtf8Printable(name), qUtf8Printable(facts.problem));
    return *found;
}

QStringList differencesOf(const QStringList &before, const QStringList &after)
{
    const TestDatabase databaseBefore;
    const TestDatabase databaseAfter;
    databaseBefore.execute(before);
    databaseAfter.execute(after);
    return differences(compared(databaseBefore, databaseAfter));
}
