// SPDX-License-Identifier: MIT
#pragma once

namespace zu {

enum class Function : int {
    Identity = 0,
    Reciprocal = 1,
    Decadic = 3,
};

enum class RegressionMethod : int {
    StraightLine = 0, // as documented
    Spline = 2,
    Sigmoid = 4, // as documented
};

} // namespace zu
