// SPDX-License-Identifier: MIT
#include "coagulation/report/json.h"

#include "coagulation/report/attention.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace coagulation::report {

namespace {

/// Grows when a key gets another meaning or is dropped; not for a key that is added.
constexpr int format = 1;

/// \return null for what JSON cannot write
QJsonValue numberValue(const std::optional<double> &number)
{
    return number && std::isfinite(*number) ? QJsonValue(*number) : QJsonValue();
}

template <typename Value> QJsonValue valueOrNull(const std::optional<Value> &value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

/// \return a text without halves of surrogate pairs, at which other programs' readers of JSON stop
QJsonValue textValue(const QString &text)
{
    return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
}

QJsonArray textArray(const QStringList &texts)
{
    QJsonArray array;
    for (const QString &text : texts)
        array << textValue(text);
    return array;
}

QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : textValue(text);
}

QJsonValue bytesOrNull(const QByteArray &text)
{
    return textOrNull(QString::fromLatin1(text));
}

template <typename Item>
QJsonArray arrayOf(const QList<Item> &items, QJsonObject (*objectOf)(const Item &))
{
    QJsonArray array;
    for (const Item &item : items)
        array << objectOf(item);
    return array;
}

QJsonObject fileObject(const FileFacts &file)
{
    return {{"path", textValue(file.path)},
            {"bytes", file.bytes},
            {"sha256", bytesOrNull(file.sha256)}};
}

QString resultWord(StepResult result)
{
    switch (result) {
    case StepResult::Pass:
        return "pass";
    case StepResult::Fail:
        return "fail";
    case StepResult::Skip:
        return "skip";
    }
    Q_UNREACHABLE();
}

QJsonObject stepObject(const StepFacts &step)
{
    return {{"signature", textValue(step.signature)},
            {"result", resultWord(step.result)},
            {"milliseconds", valueOrNull(step.milliseconds)}};
}

QJsonObject cellObject(const Cell &cell)
{
    return {{"column", textValue(cell.column)}, {"value", textValue(cell.value)}};
}

QJsonObject rowObject(const RowFacts &row)
{
    return {{"key", textValue(row.key)},
            {"newKey", textOrNull(row.newKey)},
            {"cells", arrayOf(row.cells, cellObject)}};
}

QJsonObject changedCellObject(const ChangedCell &cell)
{
    return {{"column", textValue(cell.column)},
            {"before", textValue(cell.before)},
            {"after", textValue(cell.after)},
            {"overwritten", cell.overwritten}};
}

QJsonObject changedRowObject(const ChangedRow &row)
{
    return {{"key", textValue(row.key)},
            {"name", textOrNull(row.name)},
            {"cells", arrayOf(row.cells, changedCellObject)}};
}

QJsonObject columnObject(const ColumnChanges &column)
{
    return {{"column", textValue(column.column)},
            {"rows", column.rows},
            {"overwritten", column.overwritten}};
}

QJsonObject tableObject(const TableFacts &table)
{
    return {{"name", textValue(table.name)},
            {"viewAfter", table.viewAfter},
            {"rowsBefore", valueOrNull(table.rowsBefore)},
            {"rowsAfter", valueOrNull(table.rowsAfter)},
            {"columnsAdded", textArray(table.columnsAdded)},
            {"columnsRemoved", textArray(table.columnsRemoved)},
            {"added", table.added},
            {"removed", table.removed},
            {"renamed", table.renamed},
            {"changed", table.changed},
            {"changedColumns", arrayOf(table.changedColumns, columnObject)},
            {"addedRows", arrayOf(table.addedRows, rowObject)},
            {"removedRows", arrayOf(table.removedRows, rowObject)},
            {"renamedRows", arrayOf(table.renamedRows, rowObject)},
            {"changedRows", arrayOf(table.changedRows, changedRowObject)},
            {"problem", textOrNull(table.problem)}};
}

QJsonObject objectObject(const ObjectFacts &object)
{
    return {{"type", textValue(object.type)},
            {"name", textValue(object.name)},
            {"table", textValue(object.table)}};
}

QJsonObject pointObject(const PointFacts &point)
{
    return {{"x", numberValue(point.x)},
            {"y", numberValue(point.y)},
            {"zBefore", numberValue(point.zBefore)},
            {"zAfter", numberValue(point.zAfter)},
            {"excluded", point.excluded},
            {"outlier", point.outlier}};
}

QJsonObject stateObject(const CurveState &state)
{
    QJsonArray coefficients;
    for (const std::optional<double> &coefficient : state.coefficients)
        coefficients << numberValue(coefficient);
    return {{"valid", valueOrNull(state.valid)},
            {"date", textOrNull(state.date)},
            {"correlation", numberValue(state.correlation)},
            {"coefficients", coefficients}};
}

QJsonObject curveObject(const CurveFacts &curve)
{
    return {{"key", textValue(curve.key)},
            {"name", textValue(curve.name)},
            {"xUnit", textValue(curve.xUnit)},
            {"yUnit", textValue(curve.yUnit)},
            {"method", valueOrNull(curve.method)},
            {"xFunction", valueOrNull(curve.xFunction)},
            {"yFunction", valueOrNull(curve.yFunction)},
            {"logarithmicX", curve.logarithmicX},
            {"logarithmicY", curve.logarithmicY},
            {"before", stateObject(curve.before)},
            {"after", stateObject(curve.after)},
            {"points", arrayOf(curve.points, pointObject)},
            {"largestDifference", numberValue(curve.largestDifference)}};
}

QJsonObject methodChangeObject(const MethodChange &change)
{
    return {{"calibration", textValue(change.calibration)},
            {"before", textValue(change.before)},
            {"after", textValue(change.after)}};
}

QString kindWord(UnexpectedRow::Kind kind)
{
    switch (kind) {
    case UnexpectedRow::Kind::OwnAssay:
        return "ownAssay";
    case UnexpectedRow::Kind::MisplacedLimit:
        return "misplacedLimit";
    case UnexpectedRow::Kind::OldSettingName:
        return "oldSettingName";
    case UnexpectedRow::Kind::CurveWithoutExpiry:
        return "curveWithoutExpiry";
    case UnexpectedRow::Kind::OwnItem:
        return "ownItem";
    case UnexpectedRow::Kind::OwnCalibration:
        return "ownCalibration";
    case UnexpectedRow::Kind::FactoryName:
        return "factoryName";
    case UnexpectedRow::Kind::ReplacedLimit:
        return "replacedLimit";
    case UnexpectedRow::Kind::ReplacedIdentifier:
        return "replacedIdentifier";
    case UnexpectedRow::Kind::EqualIdentifiers:
        return "equalIdentifiers";
    case UnexpectedRow::Kind::FactoryDisplayName:
        return "factoryDisplayName";
    }
    Q_UNREACHABLE();
}

QJsonObject unexpectedRowObject(const UnexpectedRow &row)
{
    return {{"kind", kindWord(row.kind)},
            {"name", textValue(row.name)},
            {"other", textOrNull(row.other)}};
}

QJsonObject databaseObject(const DatabaseFacts &database)
{
    return {{"name", textValue(database.name)},
            {"newestVersion", database.newestVersion},
            {"versionBefore", valueOrNull(database.versionBefore)},
            {"versionAfter", valueOrNull(database.versionAfter)},
            {"filesBefore", arrayOf(database.filesBefore, fileObject)},
            {"filesAfter", arrayOf(database.filesAfter, fileObject)},
            {"steps", arrayOf(database.steps, stepObject)},
            {"milliseconds", valueOrNull(database.milliseconds)},
            {"integrityBefore", textOrNull(database.integrityBefore)},
            {"integrityAfter", textOrNull(database.integrityAfter)},
            {"problem", textOrNull(database.problem)},
            {"tables", arrayOf(database.tables, tableObject)},
            {"objectsGone", arrayOf(database.objectsGone, objectObject)},
            {"objectsNew", arrayOf(database.objectsNew, objectObject)},
            {"curves", arrayOf(database.curves, curveObject)},
            {"otherInvalidCurves", textArray(database.otherInvalidCurves)},
            {"methodChanges", arrayOf(database.methodChanges, methodChangeObject)},
            {"unexpectedRows", arrayOf(database.unexpectedRows, unexpectedRowObject)}};
}

QJsonObject lineObject(const LogLine &line)
{
    return {{"text", textValue(line.text)},
            {"milliseconds", valueOrNull(line.milliseconds)},
            {"warning", line.warning}};
}

QString kindWord(Attention::Kind kind)
{
    switch (kind) {
    case Attention::Kind::Failure:
        return "failure";
    case Attention::Kind::InvalidCurve:
        return "invalidCurve";
    case Attention::Kind::RefittedCurve:
        return "refittedCurve";
    case Attention::Kind::Calibration:
        return "calibration";
    case Attention::Kind::UnexpectedRow:
        return "unexpectedRow";
    case Attention::Kind::LostRows:
        return "lostRows";
    case Attention::Kind::NotCompared:
        return "notCompared";
    case Attention::Kind::GoneObject:
        return "goneObject";
    case Attention::Kind::Overwritten:
        return "overwritten";
    case Attention::Kind::ReagentIdentifier:
        return "reagentIdentifier";
    case Attention::Kind::LoweredVersion:
        return "loweredVersion";
    case Attention::Kind::Warning:
        return "warning";
    }
    Q_UNREACHABLE();
}

QJsonObject overwrittenObject(const OverwrittenValue &value)
{
    return {{"key", textValue(value.key)},
            {"column", textValue(value.column)},
            {"before", textValue(value.before)},
            {"after", textValue(value.after)}};
}

QJsonObject attentionObject(const Attention &attention)
{
    return {{"kind", kindWord(attention.kind)},
            {"text", textValue(attention.text)},
            {"anchor", textOrNull(attention.anchor)},
            {"values", arrayOf(attention.values, overwrittenObject)},
            {"moreValues", attention.moreValues}};
}

QJsonObject recordObject(const Record &record)
{
    // A local time as text has no offset from UTC; one with an offset has it.
    const QDateTime time = record.time.toOffsetFromUtc(record.time.offsetFromUtc());
    return {{"time", textOrNull(time.toString(Qt::ISODate))},
            {"host", textOrNull(record.host)},
            {"user", textOrNull(record.user)},
            {"program", textOrNull(record.program)},
            {"programSha256", bytesOrNull(record.programSha256)},
            {"vardoVersion", textValue(record.vardoVersion)},
            {"qtVersion", textValue(record.qtVersion)},
            {"sqliteVersion", textValue(record.sqliteVersion)}};
}

} // namespace

QByteArray toJson(const Report &report)
{
    const QJsonObject object{{"format", format},
                             {"use", report.use == Use::Rehearsal ? "rehearsal" : "comparison"},
                             {"succeeded", succeeded(report)},
                             {"verdict", textValue(verdict(report))},
                             {"examplesOfPatients", report.examplesOfPatients},
                             {"exitCode", valueOrNull(report.exitCode)},
                             {"milliseconds", valueOrNull(report.milliseconds)},
                             {"problem", textOrNull(report.problem)},
                             {"attention", arrayOf(report.attention, attentionObject)},
                             {"databases", arrayOf(report.databases, databaseObject)},
                             {"log", arrayOf(report.log, lineObject)},
                             {"record", recordObject(report.record)}};
    return QJsonDocument(object).toJson();
}

} // namespace coagulation::report
