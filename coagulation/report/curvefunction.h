// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <functional>

/// Standard curves as functions, to draw and compare them.
namespace coagulation::report {

/// A curve's y at x, in its own units; not a number where it is undefined.
using CurveFunction = std::function<double(double)>;

/// Makes the function of stored coefficients. Method 0 is k0 + k1 x in the space of both axes' functions.
/// Method 4 is d + (a - d) / (1 + (x / c)^b), with the function of the y axis applied to y.
/// \return none if a coefficient is missing or useless (not finite; no slope; c or b not above 0), or if method or
///         functions are not known
std::optional<CurveFunction> functionOf(const CurveFacts &curve, const CurveState &state);

/// \param fitted the y that the fit stored with each point, before or after
/// \return whether a function gives the y that the fit stored with each point, to a millionth; a library that
///         orders coefficients in its own way would give others. Not so if no point has one.
bool agreesWithPoints(const CurveFunction &function, const CurveFacts &curve,
                      std::optional<double> PointFacts::*fitted = &PointFacts::zAfter);

/// The x of a calibration that is in use: from the smallest to the largest measured one that is not excluded.
struct Range {
    double from = 0.0;
    double to = 0.0;

    /// \param share of the way from one end to the other
    /// \param logarithmic the way is that of a logarithmic axis, if it can show the range
    double at(double share, bool logarithmic) const;
};
std::optional<Range> calibratedRange(const CurveFacts &curve);

/// \return the curves that can be drawn: before, after. A curve is only drawn if the stored y of its points, or
///         those of the curve after the upgrade, show that its coefficients are what we take them for.
struct DrawableCurves {
    std::optional<CurveFunction> before;
    std::optional<CurveFunction> after;
};
DrawableCurves drawable(const CurveFacts &curve);

/// \return see CurveFacts::largestDifference
std::optional<double> largestDifference(const CurveFacts &curve);

} // namespace coagulation::report
