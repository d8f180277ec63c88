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

/// \return whether a function gives the y that the fit stored with each point, to a millionth; a library that
///         orders coefficients in its own way would give others
bool agreesWithPoints(const CurveFunction &function, const CurveFacts &curve);

/// The x of a calibration that is in use: from the smallest to the largest measured one that is not excluded.
struct Range {
    double from = 0.0;
    double to = 0.0;
};
std::optional<Range> calibratedRange(const CurveFacts &curve);

/// \return the curves that can be drawn: before, after
struct DrawableCurves {
    std::optional<CurveFunction> before;
    std::optional<CurveFunction> after;
};
DrawableCurves drawable(const CurveFacts &curve);

/// \return see CurveFacts::largestDifference
std::optional<double> largestDifference(const CurveFacts &curve);

} // namespace coagulation::report
