// SPDX-License-Identifier: MIT
#include "coagulation/zucore/curvefit.h"

#include "coagulation/zucore/scaledqr.h"

#include <unsupported/Eigen/NonLinearOptimization>
#include <unsupported/Eigen/SpecialFunctions>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace coagulation::curvefit {

namespace {

using Eigen::MatrixXd;
using Eigen::VectorXd;
using Vector = Eigen::Map<const VectorXd>;

constexpr double epsilon = std::numeric_limits<double>::epsilon();

Vector view(std::span<const double> values)
{
    return {values.data(), static_cast<Eigen::Index>(values.size())};
}

std::vector<double> toStd(const VectorXd &values)
{
    return {values.begin(), values.end()};
}

std::vector<double> sortedDistinct(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

double range(const VectorXd &values)
{
    return values.maxCoeff() - values.minCoeff();
}

double multipleCorrelation(const VectorXd &y, double residualSum)
{
    if (range(y) == 0.0)
        return std::numeric_limits<double>::quiet_NaN();
    const double totalSum = (y.array() - y.mean()).square().sum();
    if (!std::isnormal(totalSum)) // as that of the smallest or largest numbers: the fit is unknown
        return 0.0;
    return std::sqrt(std::max(0.0, 1.0 - residualSum / totalSum));
}

/// \param tangent the derivatives of the fitted values by the coefficients, decomposed
Fit describe(const VectorXd &coefficients, const VectorXd &fitted, const VectorXd &y,
             const ScaledQr &tangent)
{
    Fit fit;
    fit.coefficients = toStd(coefficients);
    fit.fitted = toStd(fitted);
    fit.leverages = toStd(tangent.basis().rowwise().squaredNorm());
    fit.residualSum = (y - fitted).squaredNorm();
    fit.correlation = multipleCorrelation(y, fit.residualSum);
    fit.converged = coefficients.allFinite() && std::isfinite(fit.residualSum);
    return fit;
}

} // namespace

Fit fitLine(std::span<const double> x, std::span<const double> y)
{
    const Vector right = view(y);
    if (!view(x).allFinite() || !right.allFinite()
        || sortedDistinct({x.begin(), x.end()}).size() < 2)
        return {};

    MatrixXd design(right.size(), 2);
    design << VectorXd::Ones(right.size()), view(x);
    const ScaledQr decomposition(design);
    if (!decomposition.hasFullRank())
        return {};
    VectorXd coefficients = decomposition.solve(right);
    // one step of refinement, for what the first solution loses to a bad condition
    coefficients += decomposition.solve(right - design * coefficients);
    return describe(coefficients, design * coefficients, right, decomposition);
}

namespace {

/// The parameters of a logistic, c through its logarithm, which keeps it above 0.
enum Parameter { A, B, LnC, D, ParameterCount };

/// In place of the logarithm of 0: so low that the curve is at its plateau, but finite.
constexpr double logarithmOfZero = -1.0 / epsilon;

double logarithm(double x)
{
    return x > 0.0 ? std::log(x) : logarithmOfZero;
}

/// A logistic at the points: what is left of y, and how the curve changes with its parameters.
struct Tangent {
    VectorXd residuals; ///< f(x) - y
    MatrixXd jacobian;  ///< a row a point, a column a parameter
};

Tangent tangent(const VectorXd &parameters, const VectorXd &lnX, const VectorXd &y)
{
    const double height = parameters[A] - parameters[D];
    Tangent result = {VectorXd(y.size()), MatrixXd(y.size(), ParameterCount)};
    for (Eigen::Index i = 0; i < y.size(); ++i) {
        const double distance = lnX[i] - parameters[LnC];
        const double exponent = parameters[B] * distance; // of (x / c)^b = exp(exponent)
        // the shares of a and of d, not overflowing
        const double decay = std::exp(-std::abs(exponent));
        const double ofA = (exponent > 0.0 ? decay : 1.0) / (1.0 + decay);
        const double ofD = (exponent > 0.0 ? 1.0 : decay) / (1.0 + decay);
        const double byExponent = -height * ofA * ofD;
        result.residuals[i] = parameters[A] * ofA + parameters[D] * ofD - y[i];
        result.jacobian.row(i) << ofA, byExponent * distance, -byExponent * parameters[B], ofD;
    }
    return result;
}

/// The shape of a logistic without its plateaus: a share g = 1 / (1 + exp(steepness t + shift)) of one
/// plateau and 1 - g of the other, over the logarithm t of x.
enum ShapeParameter { LnSteepness, Shift, ShapeParameterCount };

/// A shape at the points, with the plateaus that fit it best.
struct Projection {
    bool mirrored = false; ///< g is the share of d, not of a
    VectorXd g;
    VectorXd centred;           ///< g less its mean
    double squaredLength = 0.0; ///< of `centred`
    double height = 0.0;        ///< of the plateau that g is the share of, over the other
    VectorXd residuals;         ///< f(x) - y
};

/// The sum of the squared residuals by the shape alone, in the form that Eigen's Levenberg-Marquardt
/// takes. The plateaus are linear in the model: with the shape given, the best ones need no search.
/// Source: Golub and Pereyra, SIAM J. Numer. Anal. 10 (1973) 413-432; the derivatives are those of
/// Kaufman, BIT 15 (1975) 49-57.
class ShapeProblem {
public:
    using Scalar = double;
    using InputType = VectorXd;
    using ValueType = VectorXd;
    using JacobianType = MatrixXd;
    enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };

    ShapeProblem(VectorXd pointT, const VectorXd &y)
        : t(std::move(pointT))
        , yMean(y.mean())
        , centredY(y.array() - yMean)
    {
    }

    int inputs() const { return ShapeParameterCount; }
    int values() const { return static_cast<int>(t.size()); }

    Projection project(const VectorXd &shape) const
    {
        Projection result;
        // Before a rise beyond the points 1 - g is small and keeps the digits that g loses.
        result.mirrored = shape[Shift] < 0.0;
        const double sign = result.mirrored ? -1.0 : 1.0;
        const double steepness = std::exp(shape[LnSteepness]);
        result.g = 1.0 / (1.0 + (sign * (steepness * t.array() + shape[Shift])).exp());
        result.centred = result.g.array() - result.g.mean();
        result.squaredLength = result.centred.squaredNorm();
        // below this only rounding is left of the rise
        if (result.squaredLength > epsilon * result.g.squaredNorm())
            result.height = result.centred.dot(centredY) / result.squaredLength;
        result.residuals = result.height * result.centred - centredY;
        return result;
    }

    int operator()(const VectorXd &shape, VectorXd &residuals) const
    {
        residuals = project(shape).residuals;
        return 0;
    }

    int df(const VectorXd &shape, MatrixXd &jacobian) const
    {
        const Projection at = project(shape);
        const double sign = at.mirrored ? -1.0 : 1.0;
        jacobian.col(Shift) = -sign * at.height * at.g.array() * (1.0 - at.g.array());
        jacobian.col(LnSteepness) =
            std::exp(shape[LnSteepness]) * jacobian.col(Shift).cwiseProduct(t);
        if (at.height == 0.0)
            return 0;
        for (auto column : jacobian.colwise()) { // less what the plateaus take up
            column.array() -= column.mean();
            column -= at.centred * (at.centred.dot(column) / at.squaredLength);
        }
        return 0;
    }

    /// \return the plateaus a and d
    std::pair<double, double> plateaus(const VectorXd &shape) const
    {
        const Projection at = project(shape);
        const double base = yMean - at.height * at.g.mean();
        const double top = base + at.height;
        return at.mirrored ? std::pair(base, top) : std::pair(top, base);
    }

private:
    VectorXd t;
    double yMean;
    VectorXd centredY;
};

/// \return whether no neighbour is lower; the first of equal neighbours counts as the lowest
bool isLocalMinimum(const MatrixXd &sums, Eigen::Index row, Eigen::Index column)
{
    const double sum = sums(row, column);
    const Eigen::Index lastRow = std::min(row + 1, sums.rows() - 1);
    const Eigen::Index lastColumn = std::min(column + 1, sums.cols() - 1);
    for (Eigen::Index i = std::max<Eigen::Index>(row - 1, 0); i <= lastRow; ++i) {
        for (Eigen::Index k = std::max<Eigen::Index>(column - 1, 0); k <= lastColumn; ++k) {
            const bool isBefore = std::pair(i, k) < std::pair(row, column);
            if (sums(i, k) < sum || (isBefore && sums(i, k) == sum))
                return false;
        }
    }
    return true;
}

/// \return some of many ascending numbers, evenly by their order and with both ends. Calibrations have
///         fewer; without a limit the time would grow with the square of their number
std::vector<double> thinned(const std::vector<double> &values)
{
    constexpr std::size_t most = 50;
    if (values.size() <= most)
        return values;
    std::vector<double> kept;
    for (std::size_t i = 0; i < most; ++i)
        kept.push_back(values[i * (values.size() - 1) / (most - 1)]);
    return kept;
}

/// Fits a logistic from many starts and keeps the least minimum.
class LogisticFitter {
public:
    /// \param pointLnX, pointY finite, the same number of each
    /// \param distinctLnX those of x above 0, ascending, 2 or more
    LogisticFitter(VectorXd pointLnX, VectorXd pointY, const std::vector<double> &distinctLnX);

    /// \return the parameters; nothing unless the least sum is that of a minimum
    std::optional<VectorXd> fit() const;

private:
    /// Where a search came to.
    struct End {
        VectorXd shape;
        double residualSum;
    };

    std::vector<VectorXd> starts() const;
    std::vector<double> places(double steepness) const;
    End search(VectorXd shape, int evaluations) const;
    VectorXd polished(const VectorXd &shape) const;
    VectorXd parameters(const VectorXd &shape) const;
    bool isMinimum(const VectorXd &parameters) const;
    double roundingSum() const;

    VectorXd lnX;
    VectorXd y;
    double middle;                ///< of the distinct logarithms
    double width;                 ///< of their range
    std::vector<double> distinct; ///< or some of them, scaled to -0.5 … 0.5
    ShapeProblem problem;
};

LogisticFitter::LogisticFitter(VectorXd pointLnX, VectorXd pointY,
                               const std::vector<double> &distinctLnX)
    : lnX(std::move(pointLnX))
    , y(std::move(pointY))
    , middle(0.5 * (distinctLnX.front() + distinctLnX.back()))
    , width(distinctLnX.back() - distinctLnX.front())
    , problem((lnX.array() - middle) / width, y)
{
    // Beside a distant one two may become alike.
    for (const double value : thinned(distinctLnX)) {
        const double place = (value - middle) / width;
        if (distinct.empty() || place > distinct.back())
            distinct.push_back(place);
    }
}

/// \return where the rise may be: between the points, closer to each other near a point, and beyond
///         them by multiples of the rise's own width
std::vector<double> LogisticFitter::places(double steepness) const
{
    std::vector<double> places;
    for (const double exponent : {16.0, 8.0, 4.0, 2.0, 1.0})
        places.push_back(distinct.front() - exponent / steepness);
    for (std::size_t i = 1; i < distinct.size(); ++i) {
        for (const double share : {0.0, 1.0 / 18.0, 1.0 / 6.0, 0.5, 5.0 / 6.0, 17.0 / 18.0})
            places.push_back(std::lerp(distinct[i - 1], distinct[i], share));
    }
    places.push_back(distinct.back());
    for (const double exponent : {1.0, 2.0, 4.0, 8.0, 16.0})
        places.push_back(distinct.back() + exponent / steepness);
    return places;
}

/// \return the shapes of a lattice, by steepness and by place, whose sum is not above that of their
///         neighbours. The lattice is fine enough to have one near each minimum: a test compares the
///         fit with a search from some thousand starts
std::vector<VectorXd> LogisticFitter::starts() const
{
    constexpr double lowest = 0.3;   // almost a straight line over all points
    constexpr double highest = 30.0; // almost a step in the smallest gap between two points
    constexpr double ratio = 1.5;
    double gap = 1.0;
    for (std::size_t i = 1; i < distinct.size(); ++i)
        gap = std::min(gap, distinct[i] - distinct[i - 1]);
    const auto levels =
        static_cast<Eigen::Index>(std::log(highest / gap / lowest) / std::log(ratio)) + 2;

    std::vector<std::vector<VectorXd>> lattice;
    MatrixXd sums(levels, static_cast<Eigen::Index>(places(1.0).size()));
    for (Eigen::Index level = 0; level < levels; ++level) {
        const double steepness = lowest * std::pow(ratio, level);
        std::vector<VectorXd> shapes;
        for (const double place : places(steepness)) {
            const auto column = static_cast<Eigen::Index>(shapes.size());
            shapes.emplace_back(Eigen::Vector2d(std::log(steepness), -steepness * place));
            sums(level, column) = problem.project(shapes.back()).residuals.squaredNorm();
        }
        lattice.push_back(std::move(shapes));
    }
    std::vector<VectorXd> starts;
    for (Eigen::Index level = 0; level < sums.rows(); ++level) {
        for (Eigen::Index column = 0; column < sums.cols(); ++column) {
            if (isLocalMinimum(sums, level, column))
                starts.push_back(
                    lattice[static_cast<std::size_t>(level)][static_cast<std::size_t>(column)]);
        }
    }
    return starts;
}

/// A minimum by its gradient and by the step to it, whatever made the search stop.
bool LogisticFitter::isMinimum(const VectorXd &parameters) const
{
    // Parameters that the points do not determine make a fit worthless: one that is almost a
    // combination of the others, or one whose change by its own size (of the height for a plateau, e
    // times for c) moves no point by this part of the height.
    constexpr double rankThreshold = 1e-10;
    constexpr double influenceThreshold = 1e-6;
    // The relative offset of Bates and Watts, Technometrics 23 (1981) 179-183: how much of the
    // residuals a linear step could still remove.
    constexpr double offsetTolerance = 1e-6;
    constexpr double stepTolerance = 1e-6; // relative to the parameters, in the unit of y

    const Tangent at = tangent(parameters, lnX, y);
    if (!parameters.allFinite() || !at.residuals.allFinite() || !at.jacobian.allFinite())
        return false;
    const ScaledQr decomposition(at.jacobian, rankThreshold);
    if (!decomposition.hasFullRank())
        return false;

    const VectorXd &lengths = decomposition.columnLengths();
    const double height = std::abs(parameters[A] - parameters[D]);
    const VectorXd influences =
        lengths.cwiseProduct(Eigen::Vector4d(height, parameters[B], 1.0, height));
    if (influences.minCoeff() < influenceThreshold * height)
        return false;

    const double removable = (decomposition.basis().transpose() * at.residuals).norm();
    const VectorXd step = decomposition.solve(at.residuals);
    const bool flat = removable <= offsetTolerance * at.residuals.norm()
        || removable * removable <= roundingSum();
    const bool still = step.cwiseProduct(lengths).norm()
        <= stepTolerance * parameters.cwiseProduct(lengths).norm();
    return flat && still;
}

/// \return a sum of squared residuals of which nothing but rounding is left
double LogisticFitter::roundingSum() const
{
    constexpr double residualFloor = 1e-13; // of the range of y
    return std::pow(residualFloor * range(y), 2) * static_cast<double>(y.size());
}

LogisticFitter::End LogisticFitter::search(VectorXd shape, int evaluations) const
{
    ShapeProblem searched = problem; // Eigen wants to change it
    Eigen::LevenbergMarquardt<ShapeProblem> search(searched);
    search.parameters.ftol = epsilon;
    search.parameters.xtol = epsilon;
    search.parameters.maxfev = evaluations;
    // Both parameters of a shape have the same natural unit. Steps that are scaled by the derivatives
    // instead would be endless where the sum does not change.
    search.parameters.factor = 1.0;
    search.useExternalScaling = true;
    search.diag = VectorXd::Ones(ShapeParameterCount);
    search.minimize(shape);
    const double residualSum = problem.project(shape).residuals.squaredNorm();
    return {std::move(shape), residualSum};
}

/// \return the minimum that a search came to, in all digits. The search ends where the sum does not change any
///         more: that is known to half of the digits, and the other half would depend on the C library
VectorXd LogisticFitter::polished(const VectorXd &shape) const
{
    constexpr int most = 100;            // steps; some five are usual
    constexpr double longestStep = 1e-4; // a search that ended farther away found no minimum
    VectorXd minimum = shape;
    MatrixXd jacobian(y.size(), ShapeParameterCount);
    double last = longestStep;
    for (int i = 0; i < most; ++i) {
        problem.df(minimum, jacobian);
        const ScaledQr decomposition(jacobian);
        if (!decomposition.hasFullRank())
            return shape;
        const VectorXd step = decomposition.solve(problem.project(minimum).residuals);
        if (!(step.norm() < last)) // only rounding is left of it
            break;
        last = step.norm();
        minimum -= step;
    }
    return minimum;
}

VectorXd LogisticFitter::parameters(const VectorXd &shape) const
{
    const auto [a, d] = problem.plateaus(shape);
    const double b = std::exp(shape[LnSteepness]) / width;
    return Eigen::Vector4d(a, b, middle - shape[Shift] / b, d);
}

std::optional<VectorXd> LogisticFitter::fit() const
{
    constexpr int usual = 200;     // evaluations: enough to tell which end is the lowest
    constexpr int thorough = 1000; // enough for a minimum in a narrow valley
    constexpr double lead = 1e-6;  // of the lowest end, relative, over a minimum that is refused

    std::vector<End> ends;
    for (VectorXd &start : starts())
        ends.push_back(search(std::move(start), usual));
    std::erase_if(ends, [](const End &end) { return !std::isfinite(end.residualSum); });
    std::sort(ends.begin(), ends.end(), [](const End &left, const End &right) {
        return left.residualSum < right.residualSum;
    });
    for (const End &end : ends) {
        if (end.residualSum > ends.front().residualSum * (1.0 + lead) + roundingSum())
            break;
        const VectorXd found = parameters(polished(search(end.shape, thorough).shape));
        if (isMinimum(found))
            return found;
    }
    return std::nullopt;
}

} // namespace

Fit fitLogistic(std::span<const double> x, std::span<const double> y)
{
    const Vector values = view(y);
    if (!view(x).allFinite() || !values.allFinite())
        return {};
    const VectorXd lnX = view(x).unaryExpr(&logarithm);
    std::vector<double> distinct = sortedDistinct(toStd(lnX));
    if (distinct.size() < ParameterCount || range(values) == 0.0)
        return {};
    if (distinct.front() == logarithmOfZero)
        distinct.erase(distinct.begin());

    // a power of two: y keeps all its digits, and its square neither overflows nor vanishes
    const double unit = std::ldexp(1.0, std::ilogb(values.cwiseAbs().maxCoeff()));
    const VectorXd scaledY = values / unit;
    const std::optional<VectorXd> found = LogisticFitter(lnX, scaledY, distinct).fit();
    if (!found)
        return {};

    const VectorXd &p = *found;
    const Tangent at = tangent(p, lnX, scaledY);
    const Eigen::Vector4d coefficients(p[A], p[B], std::exp(p[LnC]), p[D]);
    Fit fit = describe(coefficients, scaledY + at.residuals, scaledY, ScaledQr(at.jacobian));
    fit.coefficients[A] *= unit;
    fit.coefficients[D] *= unit;
    for (double &value : fit.fitted)
        value *= unit;
    fit.residualSum *= unit * unit;
    // A curve is computed from c and this difference. It may overflow, and below the normal numbers both lack digits.
    const double height = fit.coefficients[A] - fit.coefficients[D];
    fit.converged = view(fit.coefficients).allFinite() && std::isnormal(fit.coefficients[LnC])
        && std::isnormal(height);
    return fit;
}

std::vector<bool> findOutliers(const Fit &fit, std::span<const double> y)
{
    constexpr double significance = 0.05;
    constexpr double residualFloor = 1e-9; // of the range of y

    std::vector<bool> outliers(y.size(), false);
    const auto count = static_cast<double>(y.size());
    const double freedom = count - static_cast<double>(fit.coefficients.size()) - 1.0;
    if (!fit.converged || freedom < 2.0)
        return outliers;

    const double floor = residualFloor * range(view(y));
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double residual = y[i] - fit.fitted[i];
        const double rest = 1.0 - fit.leverages[i];
        if (std::abs(residual) < floor || rest <= 0.0)
            continue;
        // t² = f r² / (S (1 - h) - r²); the probability of a |t| as large follows from
        // f / (f + t²) = 1 - r² / (S (1 - h))
        const double share = residual * residual / (fit.residualSum * rest);
        const double probability =
            Eigen::numext::betainc(0.5 * freedom, 0.5, std::clamp(1.0 - share, 0.0, 1.0));
        outliers[i] = probability < significance / count;
    }
    return outliers;
}

} // namespace coagulation::curvefit
