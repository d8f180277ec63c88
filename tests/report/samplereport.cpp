// SPDX-License-Identifier: MIT
#include "samplereport.h"

#include "coagulation/report/anchors.h"

#include <cmath>

using namespace coagulation::report;

namespace {

const QByteArray digest("9f86d081884c7d659a2feaa0c55ad015a3bf4f1b2b0b822cd15d6c15b0f00a08");

CurveFacts logisticCurve()
{
    CurveFacts curve;
    curve.key = "id = 3";
    curve.name = "DD";
    curve.xUnit = "OD";
    curve.yUnit = "mg/l";
    curve.method = 4;
    curve.xFunction = 1;
    curve.yFunction = 0;
    curve.logarithmicX = true;
    curve.before = {false, "2016-04-03", std::nullopt, {0.0, 0.0, 0.0, 0.0, 0.0}};
    curve.after = {true, "2026-11-22", 1.0, {0.2, 1.0, 4.0, 2.2, std::nullopt}};
    for (const double x : {1.0, 4.0, 6.0, 12.0, 16.0}) {
        const double y = 2.2 - 2.0 / (1.0 + x / 4.0);
        curve.points << PointFacts{x, y + 0.02, -1.0, y};
    }
    curve.points << PointFacts{0.0, 0.3, -1.0, -1.0, true};
    return curve;
}

CurveFacts invalidCurve()
{
    CurveFacts curve;
    curve.key = "id = 5";
    curve.name = "II";
    curve.xUnit = "s";
    curve.yUnit = "%";
    curve.method = 7;
    curve.xFunction = 1;
    curve.yFunction = 1;
    curve.before = {false, "2016-04-05", 0.75, {1.0, 2.0, 3.0, 4.0, 5.0}};
    curve.after = {false, "2026-11-22", 0.75, {1.0, 2.0}};
    curve.points << PointFacts{30.0, 50.0, -1.0, -1.0} << PointFacts{30.0, 60.0, -1.0, -1.0};
    return curve;
}

/// \return a curve without any point that could be drawn
CurveFacts curveWithoutPoints()
{
    CurveFacts curve;
    curve.key = "id = 9";
    curve.name = "AT";
    curve.after.valid = true;
    return curve;
}

TableFacts changedTable()
{
    TableFacts table;
    table.name = "profile";
    table.rowsBefore = 1'200;
    table.rowsAfter = 1'234;
    table.columnsAdded = QStringList{"remark", "unit"};
    table.columnsRemoved = QStringList{"old"};
    table.added = 35;
    table.removed = 1;
    table.renamed = 2;
    table.changed = 2;
    table.changedColumns << ColumnChanges{"value", 2, 1};
    table.addedRows << RowFacts{"name = 'new'", {}, {{"name", "'new'"}, {"value", "NULL"}}};
    table.removedRows << RowFacts{"name = 'gone'", {}, {{"name", "'gone'"}, {"value", "1.0"}}};
    table.renamedRows << RowFacts{"name = 'a'", "name = 'b'", {{"value", "X'00FF'"}}}
                      << RowFacts{"name = 'c'", "name = 'd'", {{"value", "2"}}};
    table.changedRows << ChangedRow{
        "name = 'site'",
        {{"value", "'mine'", "'theirs'", true}},
        "'Site'"} << ChangedRow{"name = 'x'", {{"value", "NULL", "1"}, {"remark", "'1'", "1.0"}}};
    return table;
}

TableFacts plainTable(const QString &name, std::optional<qint64> before,
                      std::optional<qint64> after)
{
    TableFacts table;
    table.name = name;
    table.rowsBefore = before;
    table.rowsAfter = after;
    return table;
}

DatabaseFacts upgradedDatabase(const QString &name, int before, int after)
{
    DatabaseFacts database;
    database.name = name;
    database.newestVersion = after;
    database.filesBefore << FileFacts{"/lab/" + name + ".db", 1'048'576, digest};
    database.filesAfter << FileFacts{"/tmp/copies/" + name + ".db", 2'097'152, digest};
    database.versionBefore = before;
    database.versionAfter = after;
    database.milliseconds = 1'234;
    database.integrityBefore = "ok";
    database.integrityAfter = "ok";
    database.steps << StepFacts{"update_v1()", StepResult::Skip, std::nullopt}
                   << StepFacts{"update_v30()", StepResult::Pass, 1'200};
    return database;
}

DatabaseFacts profileDatabase()
{
    DatabaseFacts profile = upgradedDatabase("profile", 9, 30);
    profile.filesBefore << FileFacts{"/lab/profile.db-wal", 4'096, {}};
    profile.tables << changedTable() << plainTable("reagent", 12, 12)
                   << plainTable("reagent_unmoved", std::nullopt, 3);
    profile.tables << plainTable("notes", 4, std::nullopt);
    profile.tables.last().removed = 4;
    profile.objectsGone << ObjectFacts{"index", "curve_index", "curve"};
    profile.objectsNew << ObjectFacts{"trigger", "reagent_trigger", "reagent"};
    profile.curves << sampleCurve() << logisticCurve() << invalidCurve() << curveWithoutPoints();
    profile.otherInvalidCurves = QStringList{"AT III"};
    profile.methodChanges << MethodChange{"DD", "0", "4"};
    profile.unexpectedRows << UnexpectedRow{UnexpectedRow::Kind::OwnAssay, "TEG", "PC"}
                           << UnexpectedRow{UnexpectedRow::Kind::OldSettingName, "凝血/mix/type"};
    return profile;
}

DatabaseFacts dataDatabase()
{
    DatabaseFacts data = upgradedDatabase("data", 2, 12);
    data.steps << StepFacts{"update_v12()", StepResult::Fail, 7};
    data.integrityAfter = "row 3 missing from index patient_index";
    data.tables << plainTable("result", 500'000, 500'000) << plainTable("patient", 100'000, 99'999);
    data.tables[0].viewAfter = true;
    data.tables[1].removed = 1;
    data.tables[1].problem = "The table patient could not be read.";
    return data;
}

QList<Attention> pointsOfEveryKind()
{
    return {
        {Attention::Kind::Failure, "The step update_v12() of data failed.", databaseAnchor("data")},
        {Attention::Kind::InvalidCurve, "The curve II is invalid.", curveAnchor(2)},
        {Attention::Kind::RefittedCurve, "The curve FIB was fitted once more.", curveAnchor(0)},
        {Attention::Kind::Calibration, "The method of DD changed.", tableAnchor("profile", 0)},
        {Attention::Kind::LostRows, "reagent_unmoved holds 3 rows.", tableAnchor("profile", 2)},
        {Attention::Kind::GoneObject, "The index curve_index is gone.", objectsAnchor("profile")},
        {Attention::Kind::Overwritten, "A value of profile was overwritten.",
         tableAnchor("profile", 0)},
        {Attention::Kind::ReagentIdentifier, "A reagent has another identifier.",
         tableAnchor("profile", 1)},
        {Attention::Kind::LoweredVersion, "The version of qc was lowered.", databaseAnchor("qc")},
        {Attention::Kind::Warning, "no such table: x", logAnchor(1)}};
}

} // namespace

CurveFacts sampleCurve()
{
    CurveFacts curve;
    curve.key = "id = 2";
    curve.name = "FIB";
    curve.xUnit = "s";
    curve.yUnit = "g/l";
    curve.method = 0;
    curve.xFunction = 1;
    curve.yFunction = 1;
    curve.logarithmicX = true;
    curve.logarithmicY = true;
    curve.before = {true, "2016-04-02", 0.95, {2.02, -1.03}};
    curve.after = {true, "2026-11-22", 1.0, {2.0, -1.0}};
    for (const double x : {5.0, 10.0, 25.0, 50.0}) {
        curve.points << PointFacts{x, 100.0 / x, std::pow(10.0, 2.02 - 1.03 * std::log10(x)),
                                   100.0 / x};
    }
    curve.points << PointFacts{20.0, 8.0, std::nullopt, 5.0, false, true};
    curve.largestDifference = 6.7;
    return curve;
}

Report sampleReport()
{
    Report report;
    report.record = {QDateTime::fromString("2026-11-22T09:35:43+01:00", Qt::ISODate),
                     "workstation",
                     "technician",
                     "/usr/bin/vardo",
                     digest,
                     "1.1.0",
                     "6.4.2",
                     "3.40.1"};
    report.databases << profileDatabase() << dataDatabase() << upgradedDatabase("qc", 3, 2);
    report.databases.last().problem = "The database is damaged.";
    DatabaseFacts missing;
    missing.name = "syslog";
    missing.newestVersion = 4;
    report.databases << missing;
    report.log << LogLine{"Debug: Updating /lab/profile.db", 3}
               << LogLine{"Warning: no such table: x", 12, true} << LogLine{"Debug: done"};
    report.exitCode = 1;
    report.milliseconds = 3'456;
    report.problem = "vardo ended with exit code 1.";
    report.attention = pointsOfEveryKind();
    return report;
}

Report calmReport()
{
    Report report;
    report.use = Use::Comparison;
    report.record.vardoVersion = "1.1.0";
    report.databases << upgradedDatabase("profile", 29, 30);
    report.databases[0].steps.clear();
    report.databases[0].tables << plainTable("reagent", 12, 12);
    return report;
}

namespace {

/// A text that is empty means something else, and stays.
void fill(QString &place, const QString &text)
{
    if (!place.isEmpty())
        place = text;
}

void fill(QStringList &places, const QString &text)
{
    for (QString &place : places)
        place = text;
}

void fill(QList<FileFacts> &files, const QString &text)
{
    for (FileFacts &file : files)
        file.path = text;
}

void fill(QList<RowFacts> &rows, const QString &text)
{
    for (RowFacts &row : rows) {
        row.key = text;
        fill(row.newKey, text);
        for (Cell &cell : row.cells)
            cell = {text, text};
    }
}

void fill(QList<ChangedRow> &rows, const QString &text)
{
    for (ChangedRow &row : rows) {
        row.key = text;
        fill(row.name, text);
        for (ChangedCell &cell : row.cells)
            cell = {text, text, text, cell.overwritten};
    }
}

void fill(TableFacts &table, const QString &text)
{
    table.name = text;
    fill(table.columnsAdded, text);
    fill(table.columnsRemoved, text);
    fill(table.problem, text);
    for (ColumnChanges &column : table.changedColumns)
        column.column = text;
    fill(table.addedRows, text);
    fill(table.removedRows, text);
    fill(table.renamedRows, text);
    fill(table.changedRows, text);
}

void fill(QList<ObjectFacts> &objects, const QString &text)
{
    for (ObjectFacts &object : objects)
        object = {text, text, text};
}

void fill(CurveFacts &curve, const QString &text)
{
    curve.key = text;
    curve.name = text;
    curve.xUnit = text;
    curve.yUnit = text;
    fill(curve.before.date, text);
    fill(curve.after.date, text);
}

void fill(DatabaseFacts &database, const QString &text)
{
    fill(database.filesBefore, text);
    fill(database.filesAfter, text);
    fill(database.integrityBefore, text);
    fill(database.integrityAfter, text);
    fill(database.problem, text);
    for (StepFacts &step : database.steps)
        step.signature = text;
    for (TableFacts &table : database.tables)
        fill(table, text);
    fill(database.objectsGone, text);
    fill(database.objectsNew, text);
    for (CurveFacts &curve : database.curves)
        fill(curve, text);
    fill(database.otherInvalidCurves, text);
    for (MethodChange &change : database.methodChanges)
        change = {text, text, text};
    for (UnexpectedRow &row : database.unexpectedRows)
        row = {row.kind, text, text};
}

} // namespace

void fillTexts(Report &report, const QString &text)
{
    fill(report.record.host, text);
    fill(report.record.user, text);
    fill(report.record.program, text);
    fill(report.problem, text);
    for (DatabaseFacts &database : report.databases)
        fill(database, text);
    for (LogLine &line : report.log)
        line.text = text;
    for (Attention &point : report.attention)
        point.text = text;
}
