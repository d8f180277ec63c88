// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <span>
#include <vector>

/// Least-squares fits of standard curves: numbers only.
///
/// All fits minimise the sum of the squared residuals y - f(x), each point with the same weight. They
/// never throw. Use no numbers of a result that is not marked converged.
namespace coagulation::curvefit {

struct Fit {
    bool converged = false; ///< full rank and at a minimum, everything finite
    std::vector<double> coefficients;
    std::vector<double> fitted;    ///< f(x) of each point
    std::vector<double> leverages; ///< diagonal of the hat matrix (of its tangent, for a logistic)
    double residualSum = 0.0;      ///< sum of the squared residuals

    /// Multiple correlation coefficient R = sqrt(1 - residual sum / total sum), 0 to 1; not a number
    /// when all y are the same. Source: Draper and Smith, Applied Regression Analysis, 3rd ed., 1.6.
    double correlation = 0.0;
};

/// Polynomial y = k0 + k1 x + … + kn x^n, through the column-scaled, rank-revealing QR
/// decomposition of its design matrix.
/// \param x, y the points, the same number of each; any unit
/// \param degree n, 0 or more
/// \return coefficients k0 to kn; not converged with fewer than n + 1 distinct x
Fit fitPolynomial(std::span<const double> x, std::span<const double> y, int degree);

/// \return k0 + k1 x + … + kn x^n
double polynomial(std::span<const double> coefficients, double x);

/// \return whether the polynomial rises strictly, or falls strictly, from x = lower to x = upper.
///         Decided from the extremes of its derivative, found from the coefficients
/// \param coefficients five at most (degree 4)
bool isMonotonic(std::span<const double> coefficients, double lower, double upper);

/// Five-parameter logistic y = d + (a - d) / (1 + (x / c)^b)^e; four-parameter logistic for e = 1.
/// a: response at x = 0 for b > 0, at infinite x for b < 0, in the unit of y
/// b: slope factor, no unit, not 0
/// c: in the unit of x, c > 0; with e = 1 the x at half response
/// d: response at infinite x for b > 0, at x = 0 for b < 0, in the unit of y
/// e: asymmetry, no unit, e > 0
/// Strictly monotonic unless a = d.
/// Source: Gottschalk and Dunn, Anal. Biochem. 343 (2005) 54-65.
struct Logistic {
    double a = 0.0;
    double b = 1.0;
    double c = 1.0;
    double d = 0.0;
    double e = 1.0;

    /// \param x 0 or more (not checked)
    double operator()(double x) const;
};

/// A plateau that is known and not fitted.
struct FixedPlateaus {
    std::optional<double> a;
    std::optional<double> d;
};

/// Four-parameter logistic, normalised to b > 0.
/// \param x 0 or more; x, y the same number of each
/// \return coefficients a, b, c, d
Fit fitLogistic4(std::span<const double> x, std::span<const double> y,
                 const FixedPlateaus &fixed = {});

/// Five-parameter logistic with b of either sign, whichever fits better.
/// \param x 0 or more; x, y the same number of each
/// \return coefficients a, b, c, d, e
Fit fitLogistic5(std::span<const double> x, std::span<const double> y,
                 const FixedPlateaus &fixed = {});

/// Finds outliers by their externally studentised residuals, tested two-sidedly at 5 % with
/// Bonferroni's correction for the number of points n; p coefficients leave n - p - 1 degrees of
/// freedom of Student's t. With fewer than 2, and where a residual is below 1e-9 of the range of y,
/// nothing is an outlier.
/// Source: Cook and Weisberg, Residuals and Influence in Regression (1982), 2.2.
/// \param y the fitted points' y, in the order of the fit
std::vector<bool> findOutliers(const Fit &fit, std::span<const double> y);

} // namespace coagulation::curvefit
