// SPDX-License-Identifier: MIT
#include "standardcurve.h"

#include <QDebug>

namespace coagulation {

StandardCurve::StandardCurve(Workbench *, QObject *parent)
    : QObject(parent)
{
}

void StandardCurve::update()
{
    describe();
    m_coefficients.clear();
    for (int i = 0; i < coefficientCount(); ++i)
        m_coefficients << 11.5 + i;
    for (StdPoint &point : m_points) {
        point.z = 7 * point.x;
        point.flags |= StdPoint::Fitted;
    }
    m_correlation = 0.123;
    m_valid = true;
}

bool StandardCurve::isValid() const
{
    return m_valid;
}

void StandardCurve::setValid(bool valid)
{
    m_valid = valid;
}

int StandardCurve::coefficientCount() const
{
    switch (m_method) {
    case zu::RegressionMethod::StraightLine:
        return 2;
    case zu::RegressionMethod::Sigmoid:
        return 4;
    default:
        return 5;
    }
}

void StandardCurve::describe() const
{
    QDebug line = qDebug().noquote();
    line << "The maker's curve:" << m_name << m_xUnit << m_yUnit << m_lotsNum
         << m_date.toString(Qt::ISODate) << m_correlation << "method" << static_cast<int>(m_method)
         << "axes" << static_cast<int>(m_xFun) << static_cast<int>(m_yFun) << "shown"
         << static_cast<int>(m_xDispFun) << static_cast<int>(m_yDispFun) << "coefficients";
    for (const double coefficient : m_coefficients)
        line << coefficient;
    for (const StdPoint &point : m_points)
        line << "point" << point.x << point.y << point.z << point.flags;
}

} // namespace coagulation
