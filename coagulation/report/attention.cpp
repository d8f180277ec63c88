// SPDX-License-Identifier: MIT
#include "coagulation/report/attention.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/comparison.h"
#include "coagulation/report/failures.h"
#include "coagulation/report/numbertext.h"
#include "coagulation/report/unexpectedsentence.h"
#include "coagulation/report/wording.h"

#include <QRegularExpression>

#include <algorithm>

namespace coagulation::report {

namespace {

using Kind = Attention::Kind;

constexpr qsizetype mostOfAKind =
    20; ///< sentences; a list that nobody reads to its end hides what matters

/// \return whether the refit of standard curves writes a column; curves have a section of their own
bool belongsToCurves(const QString &table, const QString &column)
{
    static const QStringList ofCurve{"correlation", "date", "a", "b", "c", "d", "e", "valid"};
    static const QStringList ofPoint{"z", "flags"};
    return (table == "curve" && ofCurve.contains(column, Qt::CaseInsensitive))
        || (table == "curvePoint" && ofPoint.contains(column, Qt::CaseInsensitive));
}

bool isTable(const TableFacts &table, const QString &name)
{
    return table.name.compare(name, Qt::CaseInsensitive) == 0;
}

bool isColumn(const QString &column, const QString &name)
{
    return column.compare(name, Qt::CaseInsensitive) == 0;
}

bool isReagentIdentifier(const DatabaseFacts &database, const TableFacts &table,
                         const QString &column)
{
    return database.name == "profile" && isTable(table, "reagent") && isColumn(column, "reagentId");
}

/// The steps drop these and make nothing of the same name. Other indexes that they drop come back.
bool isDroppedOnPurpose(const DatabaseFacts &database, const ObjectFacts &object)
{
    return object.type == "index"
        && ((database.name == "data"
             && object.name == "result_index") // of the table that becomes a view
            || (database.name == "profile"
                && object.name == "curve_index")); // of a table with a new layout
}

/// \return the first of several words, for a sentence: "id = 6, id = 7 and 3 more"
QString firstOf(QStringList words, qint64 all, qsizetype most = 5)
{
    words = words.first(std::min(words.size(), most));
    if (const qint64 more = all - words.size(); more > 0)
        return words.join(", ") + " and " + countText(more) + " more";
    if (words.size() < 2)
        return words.join(QString());
    const QString last = words.takeLast();
    return words.join(", ") + " and " + last;
}

/// \return a key with the name that people know the row by: "id = 6 ('Buffer')"
QString withName(const QString &key, const QString &name)
{
    return name.isEmpty() || key.startsWith("name = ") ? key : key + " (" + name + ')';
}

/// \return the literal in a column; empty if the row lacks it
QString valueOf(const RowFacts &row, const QString &column)
{
    const auto cell = std::find_if(row.cells.begin(), row.cells.end(), [&column](const Cell &one) {
        return isColumn(one.column, column);
    });
    return cell == row.cells.end() ? QString() : cell->value;
}

QStringList keysOf(const QList<RowFacts> &rows)
{
    QStringList keys;
    for (const RowFacts &row : rows)
        keys << withName(row.key, valueOf(row, "name"));
    return keys;
}

/// \return "id = 7 for 'PT'" for each
QStringList currentCurves(const QList<RowFacts> &rows)
{
    QStringList curves;
    for (const RowFacts &row : rows)
        curves << QString("id = %1 for %2").arg(valueOf(row, "curveId"), valueOf(row, "name"));
    return curves;
}

QStringList quotedNames(QStringList names)
{
    for (QString &name : names)
        name = QString("‘%1’").arg(name);
    return names;
}

/// \return the first values of these columns that were overwritten
QList<OverwrittenValue> overwrittenIn(const TableFacts &table, const QStringList &columns)
{
    QList<OverwrittenValue> values;
    for (const ChangedRow &row : table.changedRows) {
        for (const ChangedCell &cell : row.cells) {
            if (values.size() < mostOfAKind && cell.overwritten && columns.contains(cell.column))
                values << OverwrittenValue{withName(row.key, row.name), cell.column, cell.before,
                                           cell.after};
        }
    }
    return values;
}

/// Collects what needs attention in a database.
class Finder {
public:
    explicit Finder(const DatabaseFacts &facts)
        : database(facts)
    {
    }

    QList<Attention> found() &&
    {
        addCurves();
        addMethods();
        addUnexpectedRows();
        for (qsizetype i = 0; i < database.tables.size(); ++i) {
            addChosenValues(database.tables.at(i), tableAnchor(database.name, i));
            addLostRows(database.tables.at(i), tableAnchor(database.name, i));
            addKeptLayout(database.tables.at(i), tableAnchor(database.name, i));
            addNotCompared(database.tables.at(i), tableAnchor(database.name, i));
            addGoneColumns(database.tables.at(i), tableAnchor(database.name, i));
            addOverwritten(database.tables.at(i), tableAnchor(database.name, i));
            addReagentIdentifiers(database.tables.at(i), tableAnchor(database.name, i));
        }
        addGoneObjects();
        addLoweredVersion();
        return attention;
    }

private:
    void add(Kind kind, const QString &text, const QString &anchor)
    {
        attention << Attention{kind, text, anchor};
    }
    void addCurves();
    void addMethods();
    void addUnexpectedRows();
    void addChosenValues(const TableFacts &table, const QString &anchor);
    void addLostRows(const TableFacts &table, const QString &anchor);
    void addHiddenRows(const TableFacts &table, qint64 hidden, const QString &anchor);
    void addKeptLayout(const TableFacts &table, const QString &anchor);
    void addNotCompared(const TableFacts &table, const QString &anchor);
    void addGoneColumns(const TableFacts &table, const QString &anchor);
    void addGoneObjects();
    void addOverwritten(const TableFacts &table, const QString &anchor);
    void addReagentIdentifiers(const TableFacts &table, const QString &anchor);
    void addLoweredVersion();

    const DatabaseFacts &database;
    QList<Attention> attention{};
};

void Finder::addCurves()
{
    for (qsizetype i = 0; i < database.curves.size(); ++i) {
        const CurveFacts &curve = database.curves.at(i);
        if (curve.after.valid.value_or(false))
            add(Kind::RefittedCurve,
                QString("The standard curve ‘%1’ was fitted once more: calibrate again before use.")
                    .arg(curve.name),
                curveAnchor(i));
        else
            add(Kind::InvalidCurve,
                QString("The standard curve ‘%1’ is invalid: calibrate again.").arg(curve.name),
                curveAnchor(i));
    }
    if (const QStringList &others = database.otherInvalidCurves; !others.isEmpty())
        add(Kind::InvalidCurve,
            QString("%1 invalid and %2 not fitted once more: %3. Calibrate again what you use.")
                .arg(others.size() == 1
                         ? QString("1 other standard curve is")
                         : QString("%1 other standard curves are").arg(countText(others.size())),
                     others.size() == 1 ? "was" : "were",
                     firstOf(quotedNames(others), others.size())),
            curvesAnchor());
}

void Finder::addMethods()
{
    const auto table =
        std::find_if(database.tables.begin(), database.tables.end(),
                     [](const TableFacts &one) { return isTable(one, "assayCalibration"); });
    const QString anchor = table == database.tables.end()
        ? databaseAnchor(database.name)
        : tableAnchor(database.name, table - database.tables.begin());
    for (const MethodChange &change : database.methodChanges)
        add(Kind::Calibration,
            QString("The method of the calibration ‘%1’ changed from %2 to %3:"
                    " calibrate its standard curves again before use.")
                .arg(change.calibration, change.before, change.after),
            anchor);
}

void Finder::addUnexpectedRows()
{
    for (const UnexpectedRow &row : database.unexpectedRows)
        add(Kind::UnexpectedRow, sentenceOn(row), databaseAnchor(database.name));
}

/// What the steps of the profile database choose among several standard curves of an assay.
void Finder::addChosenValues(const TableFacts &table, const QString &anchor)
{
    if (database.name != "profile")
        return;
    if (isTable(table, "currentCurve") && !table.rowsBefore && table.added > 0)
        add(Kind::Calibration,
            QString("The upgrade chose the current standard curves: %1. Check which ones you use.")
                .arg(firstOf(currentCurves(table.addedRows), table.added, table.addedRows.size())),
            anchor);
    if (!isTable(table, "variable"))
        return;
    for (const ChangedRow &row : table.changedRows) {
        for (const ChangedCell &cell : row.cells) {
            if (isColumn(cell.column, "value") && cell.before == "NULL")
                add(Kind::Calibration,
                    QString("The variable %1 got the value %2 from a standard curve: check it.")
                        .arg(withName(row.key, row.name), cell.after),
                    anchor);
        }
    }
}

void Finder::addLostRows(const TableFacts &table, const QString &anchor)
{
    static const QRegularExpression unmoved(R"(^(.+)_unmoved\d*$)",
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = unmoved.match(table.name);
    const bool keepsMore = table.rowsAfter.value_or(0) > table.rowsBefore.value_or(0);
    if (match.hasMatch() && keepsMore) // otherwise an earlier upgrade did not move them
        add(Kind::LostRows,
            QString("%1 of %2 did not arrive in its new layout. %3 keeps them,"
                    " and the analyser software does not see them.")
                .arg(countText(*table.rowsAfter, "row", "rows"), match.captured(1), table.name),
            anchor);
    if (!table.rowsBefore)
        return;
    const qint64 before = *table.rowsBefore;
    const qint64 lost = std::max(table.removed, before - table.rowsAfter.value_or(before));
    if (!table.rowsAfter && table.problem.isEmpty() && before > 0)
        add(Kind::LostRows,
            QString("The table %1 is gone, with %2.")
                .arg(table.name, countText(before, "row", "rows")),
            anchor);
    else if (lost > 0 && table.viewAfter)
        addHiddenRows(table, lost, anchor);
    else if (lost > 0)
        add(Kind::LostRows,
            QString("%1 of %2 %3 not there any more%4.")
                .arg(countText(lost, "row", "rows"), table.name, lost == 1 ? "is" : "are",
                     table.removedRows.isEmpty() ? QString()
                                                 : ": " + firstOf(keysOf(table.removedRows), lost)),
            anchor);
}

/// \param hidden the number of rows that the view does not show
void Finder::addHiddenRows(const TableFacts &table, qint64 hidden, const QString &anchor)
{
    if (const qint64 kept = hidden - table.notKept; kept > 0)
        add(Kind::LostRows,
            QString("%1 of %2 %3 kept in results.")
                .arg(countText(kept, "row", "rows"), table.name,
                     kept == 1 ? "is no longer shown. It is" : "are no longer shown. They are"),
            anchor);
    if (table.notKept > 0)
        add(Kind::LostRows,
            QString("%1 of %2 %3 in results either.")
                .arg(countText(table.notKept, "row", "rows"), table.name,
                     table.notKept == 1 ? "is no longer shown, and is not"
                                        : "are no longer shown, and are not"),
            anchor);
}

/// The step that makes the new layout of the templates may fail, and the upgrade goes on.
void Finder::addKeptLayout(const TableFacts &table, const QString &anchor)
{
    if (database.name == "profile" && isTable(table, "assayTemplate_new") && !table.rowsBefore)
        add(Kind::LostRows,
            "The table assayTemplate kept its old layout. Rows that later steps added to it are missing, or have"
            " their values in the wrong columns: keep the copies and ask for help.",
            anchor);
}

void Finder::addNotCompared(const TableFacts &table, const QString &anchor)
{
    if (!table.problem.isEmpty() && !table.damaged && table.problem != virtualTableProblem)
        add(Kind::NotCompared,
            QString("The table %1 was not compared: %2").arg(table.name, asClause(table.problem)),
            anchor);
}

void Finder::addGoneColumns(const TableFacts &table, const QString &anchor)
{
    for (const QString &column : table.columnsRemoved)
        add(Kind::GoneObject, QString("The column %1 of %2 is gone.").arg(column, table.name),
            anchor);
    if (table.rowsBefore == 0 && !table.rowsAfter && table.problem.isEmpty())
        add(Kind::GoneObject, QString("The table %1 is gone. It was empty.").arg(table.name),
            anchor);
}

void Finder::addGoneObjects()
{
    for (const ObjectFacts &object : database.objectsGone) {
        if (isDroppedOnPurpose(database, object))
            continue;
        const QString of = object.type == "view" ? QString() : " of " + object.table;
        add(Kind::GoneObject, QString("The %1 %2%3 is gone.").arg(object.type, object.name, of),
            objectsAnchor(database.name));
    }
}

void Finder::addOverwritten(const TableFacts &table, const QString &anchor)
{
    if (isTable(table, "version"))
        return;
    QStringList columns;
    QStringList counts;
    qint64 all = 0;
    for (const ColumnChanges &changes : table.changedColumns) {
        const bool elsewhere =
            (database.name == "profile" && belongsToCurves(table.name, changes.column))
            || isReagentIdentifier(database, table, changes.column);
        if (changes.overwritten == 0 || elsewhere)
            continue;
        columns << changes.column;
        counts << countText(changes.overwritten) + " of " + changes.column;
        all += changes.overwritten;
    }
    if (columns.isEmpty())
        return;
    const bool one = columns.size() == 1;
    const QString text =
        QString("In %1, %2%3 %4 replaced%5.")
            .arg(table.name, countText(all, "value", "values"),
                 one ? " of " + columns.first() : QString(), all == 1 ? "was" : "were",
                 one ? QString() : ": " + counts.join(", "));
    const QList<OverwrittenValue> values = overwrittenIn(table, columns);
    attention << Attention{Kind::Overwritten, text, anchor, values, all - values.size()};
}

void Finder::addReagentIdentifiers(const TableFacts &table, const QString &anchor)
{
    for (const ChangedRow &row : table.changedRows) {
        for (const ChangedCell &cell : row.cells) {
            // an empty identifier is none to the laboratory
            if (!isReagentIdentifier(database, table, cell.column) || !cell.overwritten
                || cell.before == "''")
                continue;
            const QString reagent = row.name.isEmpty() ? row.key : row.name;
            add(Kind::ReagentIdentifier,
                QString("The identifier of the reagent %1 changed from %2 to %3.")
                    .arg(reagent, cell.before, cell.after),
                anchor);
        }
    }
}

void Finder::addLoweredVersion()
{
    if (database.problem.isEmpty()
        && database.versionBefore.value_or(0) > database.versionAfter.value_or(0))
        add(Kind::LoweredVersion,
            QString("The version of the %1 database was lowered from %2 to %3.")
                .arg(database.name, QString::number(database.versionBefore.value_or(0)),
                     QString::number(database.versionAfter.value_or(0))),
            databaseAnchor(database.name));
}

/// \param named the warnings that failures name
QList<Attention> warningsOf(const QList<LogLine> &log, const QList<qsizetype> &named)
{
    QList<Attention> warnings;
    for (qsizetype i = 0; i < log.size(); ++i) {
        if (log.at(i).warning && !named.contains(i))
            warnings << Attention{Kind::Warning, withoutKind(log.at(i).text), logAnchor(i)};
    }
    return warnings;
}

/// Leaves the first sentences of each kind, and says how many more there are. Of failures, curves, calibrations and
/// rows that the steps did not expect each counts.
QList<Attention> shortened(const QList<Attention> &all)
{
    QList<Attention> kept;
    QMap<Kind, qsizetype> counts;
    for (const Attention &item : all)
        ++counts[item.kind];
    QMap<Kind, qsizetype> seen;
    for (const Attention &item : all) {
        const qsizetype place = ++seen[item.kind];
        const bool keepsAll = item.kind <= Kind::UnexpectedRow;
        if (keepsAll || place <= mostOfAKind)
            kept << item;
        else if (place == mostOfAKind + 1)
            kept << Attention{
                item.kind, QString("And %1 more.").arg(countText(counts[item.kind] - mostOfAKind)),
                item.anchor};
    }
    return kept;
}

/// \return "the data database" and the first verb, "all 4 databases" and the second one
QString databasesAndVerb(const Report &report, const char *ofOne, const char *ofSeveral)
{
    QStringList names;
    for (const DatabaseFacts &database : report.databases) {
        if (!database.filesBefore.isEmpty())
            names << database.name;
    }
    if (names.size() == 1)
        return QString("the %1 database %2").arg(names.first(), ofOne);
    return QString("all %1 databases %2").arg(QString::number(names.size()), ofSeveral);
}

QString pointsOf(qsizetype count)
{
    return count == 1 ? QString("1 point needs attention")
                      : QString("%1 points need attention").arg(count);
}

} // namespace

QList<Attention> attentionOf(const Report &report)
{
    QList<Attention> all;
    QList<qsizetype> namedWarnings;
    for (const Failure &failure : failuresOf(report)) {
        all << Attention{Kind::Failure, failure.sentence, failure.anchor};
        if (failure.warning)
            namedWarnings << *failure.warning;
    }
    for (const DatabaseFacts &database : report.databases)
        all << Finder(database).found();
    all << warningsOf(report.log, namedWarnings);
    std::stable_sort(all.begin(), all.end(),
                     [](const Attention &a, const Attention &b) { return a.kind < b.kind; });
    return shortened(all);
}

bool succeeded(const Report &report)
{
    return failuresOf(report).isEmpty();
}

bool isUpgraded(const Report &report)
{
    return std::any_of(
        report.databases.begin(), report.databases.end(), [](const DatabaseFacts &database) {
            return database.versionBefore.value_or(0) < database.versionAfter.value_or(0);
        });
}

QString verdict(const Report &report)
{
    const bool rehearsal = report.use == Use::Rehearsal;
    const QList<Failure> failures = failuresOf(report);
    if (!failures.isEmpty()) {
        const Failure &first = failures.first();
        const QString place = first.database.isEmpty()
            ? QString()
            : QString(" at the %1 database").arg(first.database);
        return QString("%1%2: %3")
            .arg(rehearsal ? "The upgrade fails" : "Something is wrong", place, first.clause);
    }
    const QList<Attention> attention = attentionOf(report);
    const QString points = attention.isEmpty() ? QString() : "; " + pointsOf(attention.size());
    if (!isUpgraded(report))
        return rehearsal
            ? QString("There is nothing to upgrade: %1 at the version that this vardo knows%2.")
                  .arg(databasesAndVerb(report, "is", "are"), points)
            : QString("Nothing was upgraded: %1 at the newest version before%2.")
                  .arg(databasesAndVerb(report, "was", "were"), points);
    if (!rehearsal)
        return attention.isEmpty()
            ? QString("The upgrade worked, and nothing needs attention.")
            : QString("The upgrade worked, and %1.").arg(pointsOf(attention.size()));
    const QString time =
        report.milliseconds ? ", in " + timeInWords(*report.milliseconds) : QString();
    return QString("The upgrade works: %1 the version that this vardo knows%2%3.")
        .arg(databasesAndVerb(report, "reaches", "reach"), time, points);
}

} // namespace coagulation::report
