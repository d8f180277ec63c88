// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace coagulation {

/// A point of a standard curve.
struct StdPoint {
    /// Bits of `flags`; others belong to the analyser software and are kept.
    enum Flag : qint32 {
        Excluded = 1, ///< not fitted: the function of an axis is undefined there
        Outlier = 2,  ///< farther from the curve than the other points make likely
    };

    double x = 0.0;   ///< in the curve's x unit
    double y = 0.0;   ///< in the curve's y unit
    double z = 0.0;   ///< the curve's y at x, in its y unit
    qint32 flags = 0; ///< bits of Flag
};

} // namespace coagulation
