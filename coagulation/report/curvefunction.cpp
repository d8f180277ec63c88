// SPDX-License-Identifier: MIT
#include "coagulation/report/curvefunction.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace coagulation::report {

namespace {

constexpr int unknown = -1;

constexpr int linearMethod = 0;
constexpr int logisticMethod = 4;

constexpr int linearFunction = 0;
constexpr int logarithm = 1;

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

bool isKnown(int function)
{
    return function == linearFunction || function == logarithm;
}

double apply(int function, double value)
{
    if (function == linearFunction)
        return value;
    return value > 0.0 ? std::log10(value) : undefined;
}

double invert(int function, double value)
{
    return function == linearFunction ? value : std::pow(10.0, value);
}

/// \return the first coefficients; none if one of them is missing or not finite
std::optional<std::vector<double>> firstCoefficients(const CurveState &state, std::size_t count)
{
    std::vector<double> coefficients;
    for (std::size_t i = 0; i < count; ++i) {
        const std::optional<double> coefficient = state.coefficients.at(i);
        if (!coefficient || !std::isfinite(*coefficient))
            return std::nullopt;
        coefficients.push_back(*coefficient);
    }
    return coefficients;
}

std::optional<CurveFunction> lineOf(const CurveState &state, int xFunction, int yFunction)
{
    const std::optional<std::vector<double>> k = firstCoefficients(state, 2);
    if (!k || k->at(1) == 0.0)
        return std::nullopt;
    return [k0 = k->at(0), k1 = k->at(1), xFunction, yFunction](double x) {
        return invert(yFunction, k0 + k1 * apply(xFunction, x));
    };
}

std::optional<CurveFunction> logisticOf(const CurveState &state, int xFunction, int yFunction)
{
    const std::optional<std::vector<double>> k = firstCoefficients(state, 4);
    if (!k)
        return std::nullopt;
    const double a = k->at(0);
    const double b = k->at(1);
    const double c = k->at(2);
    const double d = k->at(3);
    if (!(b > 0.0) || !(c > 0.0) || a == d)
        return std::nullopt;
    return [=](double x) {
        // The fit leaves out what a logarithm does not have, although it takes x itself.
        const bool defined = xFunction == logarithm ? x > 0.0 : x >= 0.0;
        return defined ? invert(yFunction, d + (a - d) / (1.0 + std::pow(x / c, b))) : undefined;
    };
}

} // namespace

std::optional<CurveFunction> functionOf(const CurveFacts &curve, const CurveState &state)
{
    const int xFunction = curve.xFunction.value_or(unknown);
    const int yFunction = curve.yFunction.value_or(unknown);
    if (!isKnown(xFunction) || !isKnown(yFunction))
        return std::nullopt;
    switch (curve.method.value_or(unknown)) {
    case linearMethod:
        return lineOf(state, xFunction, yFunction);
    case logisticMethod:
        return logisticOf(state, xFunction, yFunction);
    default:
        return std::nullopt;
    }
}

bool agreesWithPoints(const CurveFunction &function, const CurveFacts &curve,
                      std::optional<double> PointFacts::*fitted)
{
    std::vector<PointFacts> points;
    std::copy_if(curve.points.begin(), curve.points.end(), std::back_inserter(points),
                 [fitted](const PointFacts &point) { return !point.excluded && point.*fitted; });
    double largest = 0.0;
    for (const PointFacts &point : points)
        largest = std::max(largest, std::abs(*(point.*fitted)));

    return !points.empty()
        && std::all_of(points.begin(), points.end(), [&](const PointFacts &point) {
               const double stored = *(point.*fitted);
               // What is rounded beside the large values is not wrong for a value near zero.
               const double tolerance = 1e-6 * std::abs(stored) + 1e-12 * largest;
               return std::abs(function(point.x) - stored) <= tolerance;
           });
}

double Range::at(double share, bool logarithmic) const
{
    if (logarithmic && from > 0.0)
        return std::pow(10.0, std::lerp(std::log10(from), std::log10(to), share));
    return std::lerp(from, to, share);
}

std::optional<Range> calibratedRange(const CurveFacts &curve)
{
    std::optional<Range> range;
    for (const PointFacts &point : curve.points) {
        if (point.excluded || !std::isfinite(point.x))
            continue;
        if (!range)
            range = Range{point.x, point.x};
        range->from = std::min(range->from, point.x);
        range->to = std::max(range->to, point.x);
    }
    return range;
}

DrawableCurves drawable(const CurveFacts &curve)
{
    DrawableCurves curves{functionOf(curve, curve.before), functionOf(curve, curve.after)};
    if (curves.after && !agreesWithPoints(*curves.after, curve))
        curves.after.reset();
    if (!curves.after && curves.before
        && !agreesWithPoints(*curves.before, curve, &PointFacts::zBefore))
        curves.before.reset();
    return curves;
}

std::optional<double> largestDifference(const CurveFacts &curve)
{
    const DrawableCurves curves = drawable(curve);
    const std::optional<Range> range = calibratedRange(curve);
    if (!curves.before || !curves.after || !range)
        return std::nullopt;

    constexpr int places = 256;
    std::optional<double> largest;
    for (int i = 0; i <= places; ++i) {
        const double x = range->at(double(i) / places, curve.logarithmicX);
        const double after = (*curves.after)(x);
        const double difference = 100.0 * std::abs(((*curves.before)(x)-after) / after);
        if (std::isfinite(difference))
            largest = std::max(largest.value_or(0.0), difference);
    }
    return largest;
}

} // namespace coagulation::report
