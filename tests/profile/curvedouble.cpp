// SPDX-License-Identifier: MIT
/// Defines all that the headers of the library leave to its objects, so that none of them is linked.

#include "curvedouble.h"

#include "coagulation/zucore/assaytemplate.h"
#include "coagulation/zucore/standardcurve.h"

namespace curvedouble {

Library &library()
{
    static Library theLibrary;
    return theLibrary;
}

} // namespace curvedouble

namespace coagulation {

using curvedouble::library;
using curvedouble::Refit;

StandardCurve::StandardCurve(Workbench *workbench, QObject *parent)
    : QObject(parent)
{
    setProperty("owned", workbench != nullptr || parent != nullptr);
    setProperty("index", library().curves.size());
    library().curves << QStringList{};
}

int StandardCurve::coefficientCount() const
{
    return library().coefficientCount;
}

bool StandardCurve::isValid() const
{
    if (property("refitted").toBool())
        return m_valid;

    QStringList points;
    for (const StdPoint &point : m_points)
        points << QString("(%1 %2 %3 %4)").arg(point.x).arg(point.y).arg(point.z).arg(point.flags);
    QStringList coefficients;
    for (const double coefficient : m_coefficients)
        coefficients << QString::number(coefficient);
    library().curves[property("index").toInt()] = {
        "owner: " + QString(property("owned").toBool() ? "yes" : "none"),
        "name: " + m_name,
        "units: " + m_xUnit + ", " + m_yUnit,
        "lots: " + m_lotsNum,
        "correlation: " + QString::number(m_correlation),
        "date: " + m_date.toString(Qt::ISODate),
        QString("functions: %1, %2").arg(static_cast<int>(m_xFun)).arg(static_cast<int>(m_yFun)),
        QString("displayed: %1, %2")
            .arg(static_cast<int>(m_xDispFun))
            .arg(static_cast<int>(m_yDispFun)),
        QString("method: %1").arg(static_cast<int>(m_method)),
        "points: " + points.join(' '),
        "coefficients: " + coefficients.join(' '),
        "valid: " + QString(m_valid ? "yes" : "no"),
    };
    return library().validBeforeRefit.value_or(m_valid);
}

void StandardCurve::setValid(bool valid)
{
    m_valid = valid;
}

void StandardCurve::update()
{
    (void)isValid(); // what the curve has been given by now
    setProperty("refitted", true);
    library().refitted << m_name;

    const Refit refit = library().refits.value(m_name, Refit{.valid = false});
    m_valid = refit.valid.value_or(m_valid);
    m_correlation = refit.correlation.value_or(m_correlation);
    m_coefficients = refit.coefficients.value_or(m_coefficients);
    for (qsizetype i = 0; i < qMin(refit.points.size(), m_points.size()); ++i) {
        m_points[i].z = refit.points.at(i).z;
        m_points[i].flags = refit.points.at(i).flags;
    }
}

zu::Function AssayTemplate::Calibration::dispFunX() const
{
    library().calibrations << QStringList{QString::number(id),
                                          name,
                                          QString::number(static_cast<int>(method)),
                                          condition,
                                          caliX,
                                          caliY,
                                          funX,
                                          funY,
                                          dispX,
                                          dispY};
    return library().dispFunX;
}

zu::Function AssayTemplate::Calibration::dispFunY() const
{
    return library().dispFunY;
}

} // namespace coagulation
