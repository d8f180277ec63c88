// SPDX-License-Identifier: MIT
#include "coagulation/zucore/standardcurve.h"

#include "coagulation/zucore/curvefit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace coagulation {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

bool isKnown(zu::Function function)
{
    return function == zu::Function::Linear || function == zu::Function::Log;
}

bool isKnown(zu::RegressionMethod method)
{
    return method == zu::RegressionMethod::Linear || method == zu::RegressionMethod::Logistic4;
}

double apply(zu::Function function, double value)
{
    if (function == zu::Function::Linear)
        return value;
    return value > 0.0 ? std::log10(value) : undefined;
}

double invert(zu::Function function, double value)
{
    return function == zu::Function::Linear ? value : std::pow(10.0, value);
}

/// \return x as the curve takes it
double transformX(zu::RegressionMethod method, zu::Function function, double x)
{
    if (method == zu::RegressionMethod::Linear)
        return apply(function, x);
    const bool defined = function == zu::Function::Log ? x > 0.0 : x >= 0.0;
    return defined ? x : undefined;
}

} // namespace

StandardCurve::StandardCurve(Workbench *, QObject *parent)
    : QObject(parent)
{
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
    case zu::RegressionMethod::Linear:
        return 2;
    case zu::RegressionMethod::Logistic4:
        return 4;
    }
    return 5;
}

void StandardCurve::update()
{
    m_valid = false;
    if (!isKnown(m_method) || !isKnown(m_xFun) || !isKnown(m_yFun))
        return;

    std::vector<double> x;
    std::vector<double> y;
    std::vector<qsizetype> used;
    for (qsizetype i = 0; i < m_points.size(); ++i) {
        const double pointX = transformX(m_method, m_xFun, m_points.at(i).x);
        const double pointY = apply(m_yFun, m_points.at(i).y);
        if (std::isfinite(pointX) && std::isfinite(pointY)) {
            x.push_back(pointX);
            y.push_back(pointY);
            used.push_back(i);
        }
    }
    const curvefit::Fit fitted = m_method == zu::RegressionMethod::Linear
        ? curvefit::fitLine(x, y)
        : curvefit::fitLogistic(x, y);
    // which refuses what is not a number, too
    if (!fitted.converged || !(fitted.correlation >= minimumCorrelation))
        return;
    std::vector<double> z;
    for (const double value : fitted.fitted)
        z.push_back(invert(m_yFun, value));
    if (!std::all_of(z.begin(), z.end(), [](double value) { return std::isfinite(value); }))
        return;

    const std::vector<bool> outliers = curvefit::findOutliers(fitted, y);
    for (StdPoint &point : m_points)
        point.flags = (point.flags & ~StdPoint::Outlier) | StdPoint::Excluded;
    for (std::size_t i = 0; i < used.size(); ++i) {
        StdPoint &point = m_points[used[i]];
        point.z = z[i];
        point.flags &= ~StdPoint::Excluded;
        if (outliers[i])
            point.flags |= StdPoint::Outlier;
    }
    m_coefficients = QList<double>(fitted.coefficients.begin(), fitted.coefficients.end());
    m_correlation = fitted.correlation;
    m_valid = true;
}

} // namespace coagulation
