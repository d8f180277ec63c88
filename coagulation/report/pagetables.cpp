// SPDX-License-Identifier: MIT
#include "coagulation/report/pagetables.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/numbertext.h"
#include "coagulation/report/pageparts.h"

#include <algorithm>

namespace coagulation::report {

namespace {

QString rowsText(const std::optional<qint64> &rows)
{
    return rows ? countText(*rows) : QString("–");
}

/// \return nothing for none, so that what differs stands out
QString differenceText(qint64 rows)
{
    return rows == 0 ? QString() : countText(rows);
}

void writeNumber(PageWriter &page, const QString &text)
{
    page.element("td", text, {{"class", "number"}});
}

void writeColumns(PageWriter &page, const TableFacts &table)
{
    const Element cell(page, "td", {{"class", "values"}});
    const auto columns = [&page](const QString &what, const QStringList &names) {
        if (names.isEmpty())
            return;
        const Element line(page, "div");
        page.text(what + ' ');
        page.foreign(names.join(", "));
    };
    columns("new:", table.columnsAdded);
    columns("gone:", table.columnsRemoved);
}

void writeOverviewRow(PageWriter &page, const QString &anchor, const TableFacts &table)
{
    const Element row(page, "tr");
    {
        const Element name(page, "th", {{"scope", "row"}, {"class", "name"}});
        page.foreignElement("a", table.name, {{"href", "#" + anchor}});
        if (table.viewAfter)
            page.text(" (a view now)");
    }
    writeNumber(page, rowsText(table.rowsBefore));
    writeNumber(page, rowsText(table.rowsAfter));
    writeNumber(page, differenceText(table.added));
    writeNumber(page, differenceText(table.removed));
    writeNumber(page, differenceText(table.renamed));
    writeNumber(page, differenceText(table.changed));
    writeColumns(page, table);
}

void writeTablesAlike(PageWriter &page, const DatabaseFacts &database)
{
    const qsizetype alike = database.tables.size()
        - std::count_if(database.tables.begin(), database.tables.end(), differs);
    if (alike == 0)
        return;
    const Folded folded(page, countText(alike, "table", "tables") + " without any difference");
    const Table table(page, "Tables without any difference", {{"Table"}, {"Rows", "number"}},
                      "counts");
    for (qsizetype i = 0; i < database.tables.size(); ++i) {
        const TableFacts &facts = database.tables.at(i);
        if (differs(facts))
            continue;
        const Element row(page, "tr", {{"id", tableAnchor(database.name, i)}});
        page.foreignElement("th", facts.name, {{"scope", "row"}, {"class", "name"}});
        writeNumber(page, rowsText(facts.rowsAfter));
    }
}

QString stateOf(const TableFacts &table)
{
    if (!table.rowsBefore)
        return "This table is new.";
    if (!table.rowsAfter)
        return "This table is gone.";
    return table.viewAfter ? "This table is a view now." : "";
}

void writeColumnCounts(PageWriter &page, const TableFacts &facts)
{
    if (facts.changedColumns.isEmpty())
        return;
    const Table table(page, "Changed rows by column",
                      {{"Column"}, {"Rows", "number"}, {"Of these overwritten", "number"}},
                      "counts");
    for (const ColumnChanges &column : facts.changedColumns) {
        const Element row(page, "tr");
        page.foreignElement("th", column.column, {{"scope", "row"}, {"class", "name"}});
        writeNumber(page, countText(column.rows));
        writeNumber(page, differenceText(column.overwritten));
    }
}

/// \return "3 rows removed"; "20 of 300 rows removed" if not all are shown
QString shownText(qsizetype shown, qint64 all, const QString &what)
{
    if (shown < all)
        return countText(shown) + " of " + countText(all) + " rows " + what;
    return countText(all, "row", "rows") + ' ' + what;
}

/// \param all rows of this kind, of which some are shown
void writeRows(PageWriter &page, const QList<RowFacts> &rows, qint64 all, const QString &what)
{
    if (rows.isEmpty())
        return;
    const Table table(page, shownText(rows.size(), all, what), {{"Row"}, {"Values"}});
    for (const RowFacts &facts : rows) {
        const Element row(page, "tr");
        {
            const Element key(page, "th", {{"scope", "row"}, {"class", "name literal"}});
            page.foreign(facts.key);
            if (!facts.newKey.isEmpty()) {
                page.text(" → ");
                page.foreign(facts.newKey);
            }
        }
        const Element values(page, "td", {{"class", "values"}});
        for (const Cell &cell : facts.cells) {
            page.text(" ");
            const Element pair(page, "span", {{"class", "pair"}});
            page.foreignElement("span", cell.column, {{"class", "column"}});
            page.text(" ");
            page.foreignElement("span", cell.value, {{"class", "literal"}});
        }
    }
}

void writeChangedCell(PageWriter &page, const ChangedCell &cell)
{
    page.foreignElement("td", cell.column, {{"class", "name"}});
    page.foreignElement("td", cell.before, {{"class", "literal values"}});
    page.foreignElement("td", cell.after, {{"class", "literal values"}});
    page.element("td", cell.overwritten ? "● overwritten" : "", {{"class", "look tag"}});
}

void writeChangedKey(PageWriter &page, const ChangedRow &row)
{
    const Element head(
        page, "th",
        {{"scope", "row"}, {"class", "name"}, {"rowspan", QString::number(row.cells.size())}});
    page.foreignElement("span", row.key, {{"class", "literal"}});
    if (!row.name.isEmpty())
        page.foreignElement("div", row.name, {{"class", "quiet"}});
}

void writeChangedRow(PageWriter &page, const ChangedRow &facts)
{
    for (qsizetype i = 0; i < facts.cells.size(); ++i) {
        const Element row(page, "tr");
        if (i == 0)
            writeChangedKey(page, facts);
        writeChangedCell(page, facts.cells.at(i));
    }
}

void writeChangedRowTable(PageWriter &page, const TableFacts &facts)
{
    const Table table(page, shownText(facts.changedRows.size(), facts.changed, "changed"),
                      {{"Row"}, {"Column"}, {"Before"}, {"After"}, {""}});
    for (const ChangedRow &row : facts.changedRows)
        writeChangedRow(page, row);
}

void writeChangedRows(PageWriter &page, const TableFacts &facts)
{
    constexpr qsizetype mostUnfolded = 200;
    if (facts.changedRows.isEmpty())
        return;
    if (facts.changedRows.size() <= mostUnfolded) {
        writeChangedRowTable(page, facts);
        return;
    }
    const Folded folded(page,
                        "Show " + shownText(facts.changedRows.size(), facts.changed, "changed"));
    writeChangedRowTable(page, facts);
}

} // namespace

bool differs(const TableFacts &table)
{
    return table.viewAfter || table.rowsBefore != table.rowsAfter || !table.columnsAdded.isEmpty()
        || !table.columnsRemoved.isEmpty() || !table.problem.isEmpty()
        || table.added + table.removed + table.renamed + table.changed > 0;
}

void writeTableOverview(PageWriter &page, const DatabaseFacts &database)
{
    if (database.tables.isEmpty())
        return;
    page.element("h3", "Tables");
    if (std::any_of(database.tables.begin(), database.tables.end(), differs)) {
        const Table table(page, "Tables with differences, in rows",
                          {{"Table", "name"},
                           {"Before", "number"},
                           {"After", "number"},
                           {"Added", "number"},
                           {"Removed", "number"},
                           {"New key", "number"},
                           {"Changed", "number"},
                           {"Columns"}},
                          "counts");
        for (qsizetype i = 0; i < database.tables.size(); ++i) {
            if (differs(database.tables.at(i)))
                writeOverviewRow(page, tableAnchor(database.name, i), database.tables.at(i));
        }
    }
    writeTablesAlike(page, database);
}

void writeTableDifferences(PageWriter &page, const DatabaseFacts &database, qsizetype index)
{
    const TableFacts &table = database.tables.at(index);
    if (!differs(table))
        return;
    const Element section(page, "section", {{"id", tableAnchor(database.name, index)}});
    {
        const Element heading(page, "h3");
        page.text("Table ");
        page.foreign(table.name);
    }
    const QString state = stateOf(table);
    if (!state.isEmpty())
        page.element("p", state);
    if (!table.problem.isEmpty())
        page.foreignElement("p", table.problem, {{"class", "bad problem"}});
    writeColumnCounts(page, table);
    writeChangedRows(page, table);
    writeRows(page, table.removedRows, table.removed, "removed");
    writeRows(page, table.renamedRows, table.renamed, "with a new key");
    writeRows(page, table.addedRows, table.added, "added");
}

} // namespace coagulation::report
