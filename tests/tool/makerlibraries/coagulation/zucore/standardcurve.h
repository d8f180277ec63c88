// SPDX-License-Identifier: MIT
#pragma once

#include "stdpoint.h"
#include "zu.h"

#include <QDate>
#include <QList>
#include <QObject>
#include <QString>

namespace coagulation {

class Workbench;

/// A curve whose fit is no fit, but numbers that nobody else stores.
class StandardCurve : public QObject {
public:
    StandardCurve(Workbench *workbench, QObject *parent);

    /// Says in the log what the curve holds. Then it is valid, its correlation is 0.123, its
    /// coefficients are 11.5, 12.5, …, and each point's z is 7 x and its flag Fitted is set.
    virtual void update();

    virtual bool isValid() const;
    virtual void setValid(bool valid);

    /// \return 2 for a straight line, 4 for a sigmoid, 5 for others
    virtual int coefficientCount() const;

    double coefficient(int index) const { return m_coefficients.at(index); }
    void setCoefficient(const QList<double> &coefficients) { m_coefficients = coefficients; }

    const StdPoint &point(int index) const { return m_points.at(index); }
    void setPoints(const QList<StdPoint> &points) { m_points = points; }

    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    void setXUnit(const QString &unit) { m_xUnit = unit; }
    void setYUnit(const QString &unit) { m_yUnit = unit; }
    void setLotsNum(const QString &lotsNum) { m_lotsNum = lotsNum; }
    void setDate(const QDate &date) { m_date = date; }
    double correlation() const { return m_correlation; }
    void setCorrelation(double correlation) { m_correlation = correlation; }
    void setMethod(zu::RegressionMethod method) { m_method = method; }
    void setXFun(zu::Function function) { m_xFun = function; }
    void setYFun(zu::Function function) { m_yFun = function; }
    void setXDispFun(zu::Function function) { m_xDispFun = function; }
    void setYDispFun(zu::Function function) { m_yDispFun = function; }

private:
    void describe() const;

    bool m_valid = false;
    QList<double> m_coefficients;
    QList<StdPoint> m_points;
    zu::RegressionMethod m_method = zu::RegressionMethod::Spline;
    zu::Function m_yDispFun = zu::Function::Reciprocal;
    zu::Function m_xDispFun = zu::Function::Reciprocal;
    zu::Function m_yFun = zu::Function::Reciprocal;
    zu::Function m_xFun = zu::Function::Reciprocal;
    double m_correlation = -1.0;
    QString m_lotsNum;
    QDate m_date;
    QString m_yUnit;
    QString m_xUnit;
    QString m_name;
};

} // namespace coagulation
