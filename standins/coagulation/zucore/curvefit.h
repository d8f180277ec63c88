// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <vector>

/// Least-squares fits of standard curves: numbers only.
///
/// Both fits minimise the sum of the squared residuals y - f(x), each point with the same weight. They
/// never throw. Use no numbers of a result that is not marked converged.
namespace coagulation::curvefit {

struct Fit {
    bool converged = false; ///< full rank and at the least minimum, everything finite
    std::vector<double> coefficients;
    std::vector<double> fitted;    ///< f(x) of each point
    std::vector<double> leverages; ///< diagonal of the hat matrix (of its tangent, for a logistic)
    double residualSum = 0.0;      ///< sum of the squared residuals

    /// Multiple correlation coefficient R = sqrt(1 - residual sum / total sum), 0 to 1; 0 when no
    /// number holds the total sum, and not a number when all y are the same.
    /// Source: Draper and Smith, Applied Regression Analysis, 3rd ed., 1.6.
    double correlation = 0.0;
};

/// Straight line y = k0 + k1 x, through the column-scaled, rank-revealing QR decomposition of its design
/// matrix.
/// \param x, y the points, the same number of each; any unit
/// \return coefficients k0, k1; not converged with fewer than 2 distinct x
Fit fitLine(std::span<const double> x, std::span<const double> y);

/// Four-parameter logistic y = d + (a - d) / (1 + (x / c)^b), strictly monotonic.
/// a: response at x = 0, in the unit of y
/// b: slope factor, no unit, b > 0
/// c: the x at half response, in the unit of x, c > 0
/// d: response at infinite x, in the unit of y
/// Source: Gottschalk and Dunn, Anal. Biochem. 343 (2005) 54-65.
///
/// Searches from many starts, all of which are tried, and takes the least minimum that the points
/// determine. The fit has not converged when a search came to a lower sum elsewhere. The sum then falls
/// towards a step, a power or a straight line, which no four numbers describe. That would be the better
/// explanation of the points, and a minimum beside it only looks like a calibration. A lead of less than
/// a millionth does not count: it would refuse curves that both describe equally well.
/// \param x 0 or more
/// \param y as many
/// \return coefficients a, b, c, d; not converged with fewer than 4 distinct x, or if c or a - d overflows
///         or lacks digits
Fit fitLogistic(std::span<const double> x, std::span<const double> y);

/// Finds outliers by their externally studentised residuals, tested two-sidedly at 5 % with
/// Bonferroni's correction for the number of points n; p coefficients leave n - p - 1 degrees of
/// freedom of Student's t. With fewer than 2, and where a residual is below 1e-9 of the range of y,
/// nothing is an outlier.
/// Source: Cook and Weisberg, Residuals and Influence in Regression (1982), 2.2.
/// \param y the fitted points' y, in the order of the fit
std::vector<bool> findOutliers(const Fit &fit, std::span<const double> y);

} // namespace coagulation::curvefit
