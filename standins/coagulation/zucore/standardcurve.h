// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/zucore/stdpoint.h"
#include "coagulation/zucore/zu.h"

#include <QDate>
#include <QList>
#include <QObject>
#include <QString>

namespace coagulation {

class Workbench;

/// A standard curve: the points of a calibration and the curve fitted to them.
///
/// Stands in for the maker's class behind the same interface. It fits the two methods that are known to
/// be the maker's, 0 (linear) and 4 (four-parameter logistic). The order of the coefficients is this
/// library's own.
class StandardCurve : public QObject {
public:
    /// The smallest correlation of a valid curve. Below it the curve leaves about a tenth of the variance
    /// of y unexplained (1 - R²). A usable calibration leaves less than a hundredth: one with a tenth has
    /// wrong points or the wrong method, and would give wrong results.
    static constexpr double minimumCorrelation = 0.95;

    explicit StandardCurve(Workbench *workbench, QObject *parent = nullptr);

    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    QString xUnit() const { return m_xUnit; }
    void setXUnit(const QString &unit) { m_xUnit = unit; }
    QString yUnit() const { return m_yUnit; }
    void setYUnit(const QString &unit) { m_yUnit = unit; }
    QDate date() const { return m_date; }
    void setDate(const QDate &date) { m_date = date; }
    QString lotsNum() const { return m_lotsNum; }
    void setLotsNum(const QString &lotsNum) { m_lotsNum = lotsNum; }

    /// Multiple correlation coefficient in the space of the axes' functions, 0 to 1.
    double correlation() const { return m_correlation; }
    void setCorrelation(double correlation) { m_correlation = correlation; }

    /// Functions of the axes that the curve is fitted with.
    void setXFun(zu::Function function) { m_xFun = function; }
    void setYFun(zu::Function function) { m_yFun = function; }

    /// Functions of the axes that the curve is shown with; they do not change the fit.
    void setXDispFun(zu::Function function) { m_xDispFun = function; }
    void setYDispFun(zu::Function function) { m_yDispFun = function; }
    zu::Function xDispFun() const { return m_xDispFun; }
    zu::Function yDispFun() const { return m_yDispFun; }

    /// \param method may be a number that is not listed
    void setMethod(zu::RegressionMethod method) { m_method = method; }

    void setPoints(const QList<StdPoint> &points) { m_points = points; }

    /// \return the point, 0 being the first; a point of zeros when there is none
    StdPoint point(int index) const { return m_points.value(index); }

    /// \return how many coefficients the method has; 5 for an unknown method, so that all stored ones
    ///         are kept
    int coefficientCount() const;

    void setCoefficient(const QList<double> &coefficients) { m_coefficients = coefficients; }

    /// \return the coefficient, 0 being the first; 0.0 when there is none
    double coefficient(int index) const { return m_coefficients.value(index); }

    bool isValid() const;
    void setValid(bool valid);

    /// Fits the curve to its points. It is valid when the method and both functions are known, when
    /// the points determine it, when no other curve of the method explains them better, and from
    /// minimumCorrelation on. Such a curve is strictly monotonic: of these methods only a level line is
    /// not, and its correlation is 0. Then coefficients, correlation and each point's z and flags are
    /// the fit's. Otherwise all of them stay as they were set, and only isValid() changes.
    ///
    /// A point is flagged as excluded and keeps its z if a function is undefined there: 0 or less under
    /// a logarithm, x below 0 for a logistic curve, or a number that is not finite.
    void update();

private:
    QString m_name;
    QString m_xUnit;
    QString m_yUnit;
    QDate m_date;
    QString m_lotsNum;
    double m_correlation = 0.0;
    zu::Function m_xFun = zu::Function::Linear;
    zu::Function m_yFun = zu::Function::Linear;
    zu::Function m_xDispFun = zu::Function::Linear;
    zu::Function m_yDispFun = zu::Function::Linear;
    zu::RegressionMethod m_method = zu::RegressionMethod::Linear;
    QList<StdPoint> m_points;
    QList<double> m_coefficients;
    bool m_valid = false;
};

} // namespace coagulation
