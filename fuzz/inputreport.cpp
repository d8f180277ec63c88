// SPDX-License-Identifier: MIT
#include "inputreport.h"

#include "coagulation/report/attention.h"
#include "coagulation/report/curvefunction.h"

#include <algorithm>

using namespace coagulation::report;

namespace {

constexpr int most = 4; // of a list's items

/// \param read makes one item
template <typename Item> QList<Item> readList(InputReader &input, Item (*read)(InputReader &))
{
    QList<Item> items;
    for (int left = input.below(most); left > 0; --left)
        items << read(input);
    return items;
}

/// \return mostly something, unless the input has ended
template <typename Value>
std::optional<Value> readOptional(InputReader &input, Value (*read)(InputReader &))
{
    if (input.below(4) == 0)
        return std::nullopt;
    return read(input);
}

/// Makes a list longer than what the page shows of one, with many items that are alike.
template <typename Item> QList<Item> prolonged(InputReader &input, QList<Item> items)
{
    constexpr qsizetype many = 25;
    if (!items.isEmpty() && input.below(8) == 7)
        items += QList<Item>(many, items.constLast());
    return items;
}

QString readText(InputReader &input)
{
    return input.text();
}

double readNumber(InputReader &input)
{
    return input.number();
}

int readInteger(InputReader &input)
{
    return input.integer();
}

bool readFlag(InputReader &input)
{
    return input.flag();
}

/// \return a number of rows, bytes or milliseconds
qint64 readCount(InputReader &input)
{
    const qint64 count = input.byte();
    return input.below(8) == 0 ? count << 32 : count;
}

/// \return mostly a number that is known
int readChoice(InputReader &input)
{
    static const QList<int> known{0, 1, 4};
    return input.below(8) == 0 ? input.integer() : known.at(input.below(int(known.size())));
}

FileFacts readFile(InputReader &input)
{
    return {input.text(), readCount(input), input.flag() ? QByteArray("0123abcd") : QByteArray()};
}

Cell readCell(InputReader &input)
{
    return {input.text(), input.text()};
}

RowFacts readRow(InputReader &input)
{
    return {input.text(), input.text(), readList(input, readCell)};
}

ChangedCell readChangedCell(InputReader &input)
{
    return {input.text(), input.text(), input.text(), input.flag()};
}

ChangedRow readChangedRow(InputReader &input)
{
    return {input.text(), readList(input, readChangedCell), input.text()};
}

ColumnChanges readColumnChanges(InputReader &input)
{
    return {input.text(), readCount(input), readCount(input)};
}

/// Rows that are shown are counted, too.
void countShownRows(TableFacts &table)
{
    table.added = std::max<qint64>(table.added, table.addedRows.size());
    table.removed = std::max<qint64>(table.removed, table.removedRows.size());
    table.renamed = std::max<qint64>(table.renamed, table.renamedRows.size());
    table.changed =
        std::max<qint64>({table.changed, table.changedRows.size(), table.changedColumns.size()});
}

TableFacts readTable(InputReader &input)
{
    TableFacts table;
    table.name = input.text();
    table.viewAfter = input.flag();
    table.rowsBefore = readOptional(input, readCount);
    table.rowsAfter = readOptional(input, readCount);
    table.columnsAdded = readList(input, readText);
    table.columnsRemoved = readList(input, readText);
    table.added = readCount(input);
    table.removed = readCount(input);
    table.renamed = readCount(input);
    table.changed = readCount(input);
    table.changedColumns = readList(input, readColumnChanges);
    table.addedRows = readList(input, readRow);
    table.removedRows = readList(input, readRow);
    table.renamedRows = readList(input, readRow);
    table.changedRows = prolonged(input, readList(input, readChangedRow));
    table.problem = input.text();
    table.damaged = input.flag();
    countShownRows(table);
    return table;
}

ObjectFacts readObject(InputReader &input)
{
    return {input.text(), input.text(), input.text()};
}

StepFacts readStep(InputReader &input)
{
    return {input.text(), StepResult(input.below(3)), readOptional(input, readCount)};
}

PointFacts readPoint(InputReader &input)
{
    return {input.number(),
            input.number(),
            readOptional(input, readNumber),
            readOptional(input, readNumber),
            input.flag(),
            input.flag()};
}

CurveState readState(InputReader &input)
{
    CurveState state{readOptional(input, readFlag), input.text(), readOptional(input, readNumber)};
    for (std::optional<double> &coefficient : state.coefficients)
        coefficient = readOptional(input, readNumber);
    return state;
}

/// Stores with each point the y that the curve's coefficients give, as a fit does. Otherwise no curve would be drawn.
void storeFittedValues(CurveFacts &curve)
{
    const std::optional<CurveFunction> before = functionOf(curve, curve.before);
    const std::optional<CurveFunction> after = functionOf(curve, curve.after);
    for (PointFacts &point : curve.points) {
        if (before)
            point.zBefore = (*before)(point.x);
        if (after)
            point.zAfter = (*after)(point.x);
    }
}

CurveFacts readCurve(InputReader &input)
{
    CurveFacts curve;
    curve.key = input.text();
    curve.name = input.text();
    curve.xUnit = input.text();
    curve.yUnit = input.text();
    curve.method = readOptional(input, readChoice);
    curve.xFunction = readOptional(input, readChoice);
    curve.yFunction = readOptional(input, readChoice);
    curve.logarithmicX = input.flag();
    curve.logarithmicY = input.flag();
    curve.before = readState(input);
    curve.after = readState(input);
    for (int left = input.below(12); left > 0; --left)
        curve.points << readPoint(input);
    if (input.flag())
        storeFittedValues(curve);
    curve.largestDifference = largestDifference(curve);
    return curve;
}

MethodChange readMethodChange(InputReader &input)
{
    return {input.text(), input.text(), input.text()};
}

UnexpectedRow readUnexpectedRow(InputReader &input)
{
    using Kind = UnexpectedRow::Kind;
    constexpr int kinds = int(Kind::CurveWithoutExpiry) + 1;
    return {Kind(input.below(kinds)), input.text(), input.text()};
}

DatabaseFacts readDatabase(InputReader &input, const QString &name)
{
    DatabaseFacts database;
    database.name = name;
    database.newestVersion = input.byte();
    database.filesBefore = readList(input, readFile);
    database.filesAfter = readList(input, readFile);
    database.versionBefore = readOptional(input, readInteger);
    database.versionAfter = readOptional(input, readInteger);
    database.steps = readList(input, readStep);
    database.milliseconds = readOptional(input, readCount);
    database.integrityBefore = input.text();
    database.integrityAfter = input.text();
    database.problem = input.text();
    database.unreadable = input.flag();
    if (database.filesBefore.isEmpty() && database.filesAfter.isEmpty())
        return database; // nothing was compared
    database.tables = prolonged(input, readList(input, readTable));
    database.objectsGone = readList(input, readObject);
    database.objectsNew = readList(input, readObject);
    if (name == "profile") {
        database.curves = prolonged(input, readList(input, readCurve));
        database.otherInvalidCurves = prolonged(input, readList(input, readText));
        database.methodChanges = readList(input, readMethodChange);
        database.unexpectedRows = prolonged(input, readList(input, readUnexpectedRow));
    }
    return database;
}

LogLine readLogLine(InputReader &input)
{
    return {input.text(), readOptional(input, readCount), input.flag()};
}

Record readRecord(InputReader &input)
{
    return {QDateTime::fromMSecsSinceEpoch(readCount(input)),
            input.text(),
            input.text(),
            input.text(),
            input.flag() ? QByteArray("0123abcd") : QByteArray(),
            input.text(),
            input.text(),
            input.text()};
}

} // namespace

Report readReport(InputReader &input)
{
    Report report;
    report.use = input.flag() ? Use::Comparison : Use::Rehearsal;
    report.examplesOfPatients = input.flag();
    const QStringList names{"profile", "data", "qc", "syslog"};
    for (const QString &name : names.first(input.below(int(names.size()) + 1)))
        report.databases << readDatabase(input, name);
    report.record = readRecord(input);
    report.log = prolonged(input, readList(input, readLogLine));
    report.exitCode = readOptional(input, readInteger);
    report.milliseconds = readOptional(input, readCount);
    report.problem = input.text();
    report.attention = attentionOf(report);
    return report;
}
