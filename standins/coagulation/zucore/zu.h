// SPDX-License-Identifier: MIT
#pragma once

/// Enumerations whose numbers are stored in databases. A database may hold a number that is not listed
/// here.
namespace zu {

/// The function of an axis.
enum class Function : int {
    Linear = 0,
    Log = 1, ///< logarithm to base 10
};

/// How a standard curve is fitted to its points. The functions of the axes apply to y and to x. Only
/// the logistic curve takes x as it is: its formula already works on its logarithm.
enum class RegressionMethod : int {
    Linear = 0,    ///< k0 + k1 x
    Logistic4 = 4, ///< d + (a - d) / (1 + (x / c)^b), coefficients a, b, c, d
};

} // namespace zu
