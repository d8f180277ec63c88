// SPDX-License-Identifier: MIT
#pragma once

/// Enumerations of the core library. Their numbers are stored in databases and may hold a value that
/// is not listed here.
namespace zu {

/// The function of an axis.
enum class Function : int {
    Linear = 0,
    Log = 1, ///< logarithm to base 10
};

/// How a standard curve is fitted to its points. The y axis' function applies to y, the x axis' one
/// to x, except in the logistic curves, whose own exponent is the logarithmic x axis.
enum class RegressionMethod : int {
    Linear = 0,    ///< k0 + k1 x
    Quadratic = 1, ///< k0 + k1 x + k2 x²
    Cubic = 2,     ///< up to k3 x³
    Quartic = 3,   ///< up to k4 x⁴
    Logistic4 = 4, ///< d + (a - d) / (1 + (x / c)^b), coefficients a, b, c, d
    Logistic5 = 5, ///< d + (a - d) / (1 + (x / c)^b)^e, coefficients a, b, c, d, e
};

} // namespace zu
