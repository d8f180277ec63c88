// SPDX-License-Identifier: MIT
#include "coagulation/report/curvefacts.h"

#include "coagulation/report/curvefunction.h"
#include "coagulation/report/databasepair.h"
#include "coagulation/report/tablelayout.h"

#include <QHash>
#include <QSet>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace coagulation::report {

namespace {

const QStringList &coefficientNames()
{
    static const QStringList names{"a", "b", "c", "d", "e"};
    return names;
}

/// The select lists that name what a layout has, and NULL for what it lacks.
class Terms {
public:
    Terms(Questions &questions, const QString &schema, const QString &table)
    {
        if (hasPlainTable(questions, schema, table))
            layout = layoutOf(questions, schema, {table});
    }

    bool has(const QString &column) const { return layout.column(column) != nullptr; }

    /// \return the column with the alias of its table, or "null"
    QString of(const QString &alias, const QString &column) const
    {
        return has(column) ? QString(R"(%1."%2")").arg(alias, column) : QString("null");
    }

    QStringList of(const QString &alias, const QStringList &columns) const
    {
        QStringList terms;
        for (const QString &column : columns)
            terms << of(alias, column);
        return terms;
    }

private:
    TableLayout layout{};
};

QString keyOf(const QVariant &id)
{
    return "id = " + id.toString();
}

std::optional<double> number(const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    return !value.isNull() && isNumber ? std::optional(number) : std::nullopt;
}

std::optional<int> integer(const QVariant &value)
{
    return value.isNull() ? std::nullopt : std::optional(value.toInt());
}

const QStringList &stateColumns()
{
    static const QStringList columns =
        QStringList{"valid", "date", "correlation"} + coefficientNames();
    return columns;
}

/// \param first column of the state in the row
CurveState readState(const QSqlQuery &row, int first)
{
    CurveState state;
    if (!row.value(first).isNull())
        state.valid = row.value(first).toBool();
    state.date = row.value(first + 1).toString();
    state.correlation = number(row.value(first + 2));
    for (std::size_t i = 0; i < state.coefficients.size(); ++i)
        state.coefficients.at(i) = number(row.value(first + 3 + static_cast<int>(i)));
    return state;
}

QHash<qint64, CurveFacts> readCurves(Questions &questions)
{
    const Terms before(questions, schemaBefore, "curve");
    const Terms after(questions, schemaAfter, "curve");
    QHash<qint64, CurveFacts> curves;
    QStringList differences;
    for (const QString &column : stateColumns()) {
        if (before.has(column) && after.has(column))
            differences << QString(R"(b."%1" is not a."%1")").arg(column);
    }
    if (!before.has("id") || !after.has("id") || differences.isEmpty())
        return curves;
    const QStringList terms =
        after.of("a", QStringList{"id", "name", "xUnit", "yUnit", "xFun", "yFun"})
        + before.of("b", stateColumns()) + after.of("a", stateColumns());
    questions.ask(
        QString("select %1 from main.curve as b join after.curve as a on a.id = b.id where %2")
            .arg(terms.join(", "), differences.join(" or ")),
        {}, [&curves](const QSqlQuery &row) {
            const qint64 id = row.value(0).toLongLong();
            CurveFacts curve;
            curve.key = keyOf(row.value(0));
            curve.name = row.value(1).toString();
            curve.xUnit = row.value(2).toString();
            curve.yUnit = row.value(3).toString();
            curve.xFunction = integer(row.value(4));
            curve.yFunction = integer(row.value(5));
            curve.before = readState(row, 6);
            curve.after = readState(row, 6 + static_cast<int>(stateColumns().size()));
            curves.insert(id, curve);
            return true;
        });
    return curves;
}

void readCalibrations(Questions &questions, QHash<qint64, CurveFacts> &curves)
{
    const Terms calibration(questions, schemaAfter, "assayCalibration");
    if (!calibration.has("name"))
        return;
    const QString sql = QString("select %1 from after.assayCalibration as a where a.name = ?")
                            .arg(calibration.of("a", {"method", "dispX", "dispY"}).join(", "));
    for (CurveFacts &curve : curves)
        questions.ask(sql, {curve.name}, [&curve](const QSqlQuery &row) {
            curve.method = integer(row.value(0));
            curve.logarithmicX = row.value(1).toString() == "Log";
            curve.logarithmicY = row.value(2).toString() == "Log";
            return false;
        });
}

void readPoints(Questions &questions, QHash<qint64, CurveFacts> &curves)
{
    const Terms before(questions, schemaBefore, "curvePoint");
    const Terms after(questions, schemaAfter, "curvePoint");
    if (!after.has("curveId") || !after.has("x") || !after.has("y"))
        return;
    const QString sql =
        QString("select %1, %2 from after.curvePoint as a%3 order by a.rowid")
            .arg(after.of("a", {"curveId", "x", "y", "z", "flags"}).join(", "), before.of("b", "z"),
                 before.has("curveId")
                     ? QString(" left join main.curvePoint as b on b.rowid = a.rowid"
                               " and b.curveId = a.curveId")
                     : QString());
    questions.ask(sql, {}, [&curves](const QSqlQuery &row) {
        const auto curve = curves.find(row.value(0).toLongLong());
        const std::optional<double> x = number(row.value(1));
        const std::optional<double> y = number(row.value(2));
        if (curve == curves.end() || !x || !y)
            return true;
        const int flags = row.value(4).toInt();
        curve->points << PointFacts{
            *x, *y, number(row.value(5)), number(row.value(3)), (flags & 1) != 0, (flags & 2) != 0};
        return true;
    });
}

} // namespace

QList<CurveFacts> refittedCurves(Questions &questions)
{
    QHash<qint64, CurveFacts> curves = readCurves(questions);
    if (curves.isEmpty())
        return {};
    readCalibrations(questions, curves);
    readPoints(questions, curves);
    QList<qint64> ids = curves.keys();
    std::sort(ids.begin(), ids.end());
    QList<CurveFacts> inOrder;
    for (const qint64 id : ids) {
        CurveFacts curve = curves.value(id);
        curve.largestDifference = largestDifference(curve);
        inOrder << curve;
    }
    return inOrder;
}

QStringList otherInvalidCurves(Questions &questions, const QList<CurveFacts> &refitted)
{
    const Terms curve(questions, schemaAfter, "curve");
    QStringList names;
    if (!curve.has("id") || !curve.has("valid"))
        return names;
    QSet<QString> known;
    for (const CurveFacts &one : refitted)
        known << one.key;
    questions.ask(
        QString("select %1 from after.curve as a where coalesce(a.valid, 0) = 0 order by id")
            .arg(curve.of("a", QStringList{"id", "name"}).join(", ")),
        {}, [&](const QSqlQuery &row) {
            if (!known.contains(keyOf(row.value(0))))
                names << row.value(1).toString();
            return true;
        });
    return names;
}

QList<MethodChange> methodChanges(Questions &questions)
{
    QList<MethodChange> changes;
    for (const char *schema : {schemaBefore, schemaAfter}) {
        const Terms calibration(questions, schema, "assayCalibration");
        if (!calibration.has("name") || !calibration.has("method"))
            return changes;
    }
    const Terms curve(questions, schemaAfter, "curve");
    if (!curve.has("name") || !curve.has("valid"))
        return changes;
    questions.ask(
        "select a.name, substr(quote(b.method), 1, 20), substr(quote(a.method), 1, 20) from main.assayCalibration as b"
        " join after.assayCalibration as a on a.name = b.name"
        " where a.method is not b.method and exists"
        " (select 1 from after.curve as c where c.name = a.name and c.valid <> 0)"
        " order by a.rowid",
        {}, [&changes](const QSqlQuery &row) {
            changes << MethodChange{row.value(0).toString(), row.value(1).toString(),
                                    row.value(2).toString()};
            return true;
        });
    return changes;
}

} // namespace coagulation::report
