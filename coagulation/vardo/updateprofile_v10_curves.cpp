// SPDX-License-Identifier: MIT
/// The refit of version 10: every standard curve that is not valid is fitted once more.

#include "coagulation/vardo/updateprofile.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/execute.h"
#include "coagulation/zucore/assaytemplate.h"
#include "coagulation/zucore/standardcurve.h"

#include <QDate>
#include <QDebug>
#include <QSqlQuery>

#include <algorithm>

namespace coagulation {

namespace {

/// \param row id, name, method, condition, caliX, caliY, funX, funY, dispX, dispY
AssayTemplate::Calibration readCalibration(const QSqlQuery &row)
{
    AssayTemplate::Calibration calibration;
    calibration.id = row.value(0).toInt();
    calibration.name = row.value(1).toString();
    calibration.method = static_cast<zu::RegressionMethod>(row.value(2).toInt());
    calibration.condition = row.value(3).toString();
    calibration.caliX = row.value(4).toString();
    calibration.caliY = row.value(5).toString();
    calibration.funX = row.value(6).toString();
    calibration.funY = row.value(7).toString();
    calibration.dispX = row.value(8).toString();
    calibration.dispY = row.value(9).toString();
    return calibration;
}

/// \param row of a curve; its columns 8 to 12 hold the coefficients a to e
/// \param count how many the curve's method has
/// \return as many coefficients, five at most; all five if the count is below two
QList<double> storedCoefficients(const QSqlQuery &row, int count)
{
    QList<double> coefficients(count < 2 ? 5 : std::min(count, 5));
    for (int i = 0; i < coefficients.size(); ++i)
        coefficients[i] = row.value(8 + i).toDouble();
    return coefficients;
}

} // namespace

/// Prepared once for all curves.
struct UpdateProfile::RefitQueries {
    QSqlQuery calibration;
    QSqlQuery points;
    QSqlQuery updateCurve;
    QSqlQuery updatePoint;
};

/// Fits every curve that is not valid once more, as the analyser software of this version would.
bool UpdateProfile::refitStandardCurves()
{
    QSqlQuery curves;
    curves.setForwardOnly(true);
    if (!execute(curves,
                 "select id, name, xunit, yunit, correlation, date, xFun, yFun,"
                 " a, b, c, d, e, valid, lotsNum from curve")) {
        logUnlessContentError(curves, SOURCE_LINE);
        return false;
    }
    RefitQueries queries;
    queries.points.setForwardOnly(true);
    if (!queries.calibration.prepare(
            "select id, name, method, condition, caliX, caliY, funX, funY, dispX, dispY"
            " from assayCalibration where name = :name")) {
        logSqlError(queries.calibration, SOURCE_LINE);
        return false;
    }
    if (!queries.points.prepare(
            "select rowid, x, y, z, flags from curvePoint where curveId = :curveId")) {
        logSqlError(queries.points, SOURCE_LINE);
        return false;
    }
    if (!queries.updateCurve.prepare(
            "update curve set correlation = :correlation, date = :date,"
            " a = :a, b = :b, c = :c, d = :d, e = :e, valid = :valid where id = :id")) {
        logSqlError(queries.updateCurve, SOURCE_LINE);
        return false;
    }
    if (!queries.updatePoint.prepare(
            "update curvePoint set z = :z, flags = :flags where rowid = :rowid")) {
        // Logs the statement of the previous query: support knows this failure by that text.
        logSqlError(queries.updateCurve, SOURCE_LINE);
        return false;
    }
    return readRows(curves, SOURCE_LINE, [&] { return refitStandardCurve(curves, queries); });
}

/// \param row id, name, xunit, yunit, correlation, date, xFun, yFun, a to e, valid, lotsNum
bool UpdateProfile::refitStandardCurve(const QSqlQuery &row, RefitQueries &queries)
{
    const QString name = row.value(1).toString();
    queries.calibration.bindValue(":name", bindable(name));
    if (!execute(queries.calibration)) {
        logSqlError(queries.calibration, SOURCE_LINE);
        return false;
    }
    if (!queries.calibration.next()) {
        debugFrom(SOURCE_LINE) << "No calibration named " << name;
        return true;
    }
    const AssayTemplate::Calibration calibration = readCalibration(queries.calibration);

    StandardCurve curve(nullptr, nullptr);
    curve.setName(name);
    curve.setXUnit(row.value(2).toString());
    curve.setYUnit(row.value(3).toString());
    curve.setLotsNum(row.value(14).toString());
    curve.setCorrelation(row.value(4).toDouble());
    curve.setDate(row.value(5).toDate());
    curve.setXFun(static_cast<zu::Function>(row.value(6).toInt()));
    curve.setYFun(static_cast<zu::Function>(row.value(7).toInt()));
    curve.setXDispFun(calibration.dispFunX());
    curve.setYDispFun(calibration.dispFunY());
    curve.setMethod(calibration.method);

    queries.points.bindValue(":curveId", row.value(0));
    if (!execute(queries.points)) {
        logSqlError(queries.points, SOURCE_LINE);
        return false;
    }
    QVariantList rowids;
    QList<StdPoint> points;
    if (!readRows(queries.points, SOURCE_LINE, [&] {
            // by position: the rowid has the name of the integer primary key, if there is one
            rowids << queries.points.value(0);
            points << StdPoint{queries.points.value(1).toDouble(),
                               queries.points.value(2).toDouble(),
                               queries.points.value(3).toDouble(), queries.points.value(4).toInt()};
            return true;
        }))
        return false;
    curve.setPoints(points);

    curve.setCoefficient(storedCoefficients(row, curve.coefficientCount()));
    curve.setValid(row.value(13).toBool());
    if (curve.isValid())
        return true;
    curve.update();
    return storeCurve(curve, row.value(0).toLongLong(), rowids, queries);
}

/// \param rowids of the curve's points, in their order
bool UpdateProfile::storeCurve(const StandardCurve &curve, qint64 id, const QVariantList &rowids,
                               RefitQueries &queries)
{
    if (!curve.isValid())
        debugFrom(SOURCE_LINE) << "Invalid curve: name =" << curve.name() << " id =" << id;

    // null for what the method does not have
    const auto coefficient = [&curve](int index) {
        return index < curve.coefficientCount() ? QVariant(curve.coefficient(index)) : QVariant();
    };
    queries.updateCurve.bindValue(":correlation", curve.correlation());
    queries.updateCurve.bindValue(":date", QDate::currentDate());
    queries.updateCurve.bindValue(":a", coefficient(0));
    queries.updateCurve.bindValue(":b", coefficient(1));
    queries.updateCurve.bindValue(":c", coefficient(2));
    queries.updateCurve.bindValue(":d", coefficient(3));
    queries.updateCurve.bindValue(":e", coefficient(4));
    queries.updateCurve.bindValue(":valid", curve.isValid() ? 1 : 0);
    queries.updateCurve.bindValue(":id", id);
    if (!execute(queries.updateCurve)) {
        logSqlError(queries.updateCurve, SOURCE_LINE);
        return false;
    }

    if (!curve.isValid())
        return true;
    for (int i = 0; i < rowids.size(); ++i) {
        const StdPoint point = curve.point(i);
        queries.updatePoint.bindValue(":z", point.z);
        queries.updatePoint.bindValue(":flags", point.flags);
        queries.updatePoint.bindValue(":rowid", rowids.at(i));
        if (!execute(queries.updatePoint)) {
            logSqlError(queries.updatePoint, SOURCE_LINE);
            return false;
        }
    }
    return true;
}

} // namespace coagulation
