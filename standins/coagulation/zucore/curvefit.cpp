// SPDX-License-Identifier: MIT
#include "coagulation/zucore/curvefit.h"

#include <Eigen/QR>
#include <unsupported/Eigen/NonLinearOptimization>
#include <unsupported/Eigen/SpecialFunctions>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

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

Eigen::Index countDistinct(std::span<const double> values)
{
    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    return std::unique(sorted.begin(), sorted.end()) - sorted.begin();
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
    return std::sqrt(std::max(0.0, 1.0 - residualSum / totalSum));
}

/// A matrix decomposed with its columns scaled to the length 1, so that the rank does not depend on
/// the units of the coefficients.
class ScaledQr {
public:
    /// \param threshold the smallest pivot, relative to the largest, that counts for the rank
    explicit ScaledQr(const MatrixXd &matrix, double threshold = epsilon)
        : lengths(matrix.colwise().norm().transpose())
        , decomposition(matrix * lengths.cwiseInverse().asDiagonal())
    {
        decomposition.setThreshold(threshold * static_cast<double>(matrix.cols()));
    }

    bool hasFullRank() const
    {
        return lengths.allFinite() && lengths.minCoeff() > 0.0
            && decomposition.rank() == lengths.size();
    }

    /// \return the least-squares solution
    VectorXd solve(const VectorXd &right) const
    {
        return decomposition.solve(right).cwiseQuotient(lengths);
    }

    /// \return the first columns of Q, which span the columns of the matrix
    MatrixXd basis() const
    {
        return decomposition.householderQ()
            * MatrixXd::Identity(decomposition.rows(), decomposition.cols());
    }

    const VectorXd &columnLengths() const { return lengths; }

private:
    VectorXd lengths;
    Eigen::ColPivHouseholderQR<MatrixXd> decomposition;
};

std::vector<double> leverages(const ScaledQr &decomposition)
{
    return toStd(decomposition.basis().rowwise().squaredNorm());
}

} // namespace

Fit fitPolynomial(std::span<const double> x, std::span<const double> y, int degree)
{
    Fit fit;
    const Vector right = view(y);
    const Eigen::Index columns = degree + 1;
    if (countDistinct(x) < columns)
        return fit;

    MatrixXd design(right.size(), columns);
    design.col(0).setOnes();
    for (Eigen::Index power = 1; power < columns; ++power)
        design.col(power) = design.col(power - 1).cwiseProduct(view(x));
    if (!design.allFinite() || !right.allFinite())
        return fit;

    const ScaledQr decomposition(design);
    if (!decomposition.hasFullRank())
        return fit;
    VectorXd coefficients = decomposition.solve(right);
    // one step of refinement, for what the first solution loses to a bad condition
    coefficients += decomposition.solve(right - design * coefficients);

    const VectorXd fitted = design * coefficients;
    fit.residualSum = (right - fitted).squaredNorm();
    fit.coefficients = toStd(coefficients);
    fit.fitted = toStd(fitted);
    fit.leverages = leverages(decomposition);
    fit.correlation = multipleCorrelation(right, fit.residualSum);
    fit.converged = coefficients.allFinite() && std::isfinite(fit.residualSum);
    return fit;
}

double polynomial(std::span<const double> coefficients, double x)
{
    return std::accumulate(coefficients.rbegin(), coefficients.rend(), 0.0,
                           [x](double sum, double coefficient) { return sum * x + coefficient; });
}

bool isMonotonic(std::span<const double> coefficients, double lower, double upper)
{
    // derivative k1 + k2 t + k3 t² + k4 t³, whose extremes are at the ends and at the zeros of
    // k2 + 2 k3 t + 3 k4 t²
    std::array<double, 4> derivative = {};
    for (std::size_t power = 1; power < coefficients.size(); ++power)
        derivative.at(power - 1) = static_cast<double>(power) * coefficients[power];
    std::vector<double> places = {lower, upper};
    const double constant = derivative[1];
    const double linear = 2.0 * derivative[2];
    const double quadratic = 3.0 * derivative[3];
    const double discriminant = linear * linear - 4.0 * quadratic * constant;
    if (discriminant >= 0.0) {
        // without the cancellation of the schoolbook formula
        const double root = -0.5 * (linear + std::copysign(std::sqrt(discriminant), linear));
        for (const double place : {root / quadratic, constant / root}) {
            if (place > lower && place < upper)
                places.push_back(place);
        }
    }

    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -minimum;
    for (const double place : places) {
        const double slope = polynomial(derivative, place);
        if (!std::isfinite(slope))
            return false;
        minimum = std::min(minimum, slope);
        maximum = std::max(maximum, slope);
    }
    // a slope of 0 at a single place does not stop the rise or fall
    return (minimum >= 0.0 && maximum > 0.0) || (maximum <= 0.0 && minimum < 0.0);
}

namespace {

/// The logistic's parameters as they are fitted: c and e through their logarithms, which keeps them
/// above 0 and makes steps of all five comparable.
enum Parameter { A, B, LnC, D, LnE, ParameterCount };
using Parameters = std::array<double, ParameterCount>;

/// What one point contributes: the power g = 1 / (1 + (x / c)^b)^e, so that y = d + (a - d) g, and
/// its derivatives by the shape.
struct Shape {
    double g = 0.0;
    double oneMinusG = 0.0;
    double byB = 0.0;
    double byLnC = 0.0;
    double byLnE = 0.0;
};

/// \return the logarithm of x; for x = 0 a number so low that the curve is at its plateau, but finite
double logarithm(double x)
{
    return x > 0.0 ? std::log(x) : -1.0 / epsilon;
}

Shape shape(const Parameters &p, double lnX)
{
    const double e = std::exp(p[LnE]);
    const double distance = lnX - p[LnC];
    const double exponent = p[B] * distance; // of (x / c)^b = exp(exponent)
    // logarithm of 1 / (1 + exp(exponent)), and exp(exponent) / (1 + exp(exponent)), not overflowing
    const double decay = std::exp(-std::abs(exponent));
    const double lnBase = -std::max(exponent, 0.0) - std::log1p(decay);
    const double complement = (exponent > 0.0 ? 1.0 : decay) / (1.0 + decay);

    Shape result;
    result.g = std::exp(e * lnBase);
    result.oneMinusG = -std::expm1(e * lnBase);
    const double byExponent = -e * result.g * complement;
    result.byB = byExponent * distance;
    result.byLnC = -byExponent * p[B];
    result.byLnE = result.g * lnBase * e;
    return result;
}

/// Residuals and Jacobian of a logistic at the points, by its free parameters, in the form that
/// Eigen's Levenberg-Marquardt takes.
class LogisticProblem {
public:
    using Scalar = double;
    using InputType = VectorXd;
    using ValueType = VectorXd;
    using JacobianType = MatrixXd;
    enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };

    /// \param fixedValues the values of the parameters that are not free are taken from it
    LogisticProblem(const VectorXd &pointLnX, const VectorXd &pointY, const Parameters &fixedValues,
                    const std::vector<Parameter> &freeParameters)
        : lnX(pointLnX)
        , y(pointY)
        , fixed(fixedValues)
        , free(freeParameters)
    {
    }

    int inputs() const { return static_cast<int>(free.size()); }
    int values() const { return static_cast<int>(y.size()); }

    Parameters parameters(const VectorXd &values) const
    {
        Parameters parameters = fixed;
        for (std::size_t i = 0; i < free.size(); ++i)
            parameters.at(free[i]) = values[static_cast<Eigen::Index>(i)];
        return parameters;
    }

    VectorXd values(const Parameters &parameters) const
    {
        VectorXd values(inputs());
        for (std::size_t i = 0; i < free.size(); ++i)
            values[static_cast<Eigen::Index>(i)] = parameters.at(free[i]);
        return values;
    }

    /// Residuals f(x) - y.
    int operator()(const VectorXd &values, VectorXd &residuals) const
    {
        const Parameters p = parameters(values);
        for (Eigen::Index i = 0; i < y.size(); ++i) {
            const Shape at = shape(p, lnX[i]);
            residuals[i] = p[A] * at.g + p[D] * at.oneMinusG - y[i];
        }
        return 0;
    }

    int df(const VectorXd &values, MatrixXd &jacobian) const
    {
        const Parameters p = parameters(values);
        const double height = p[A] - p[D];
        for (Eigen::Index i = 0; i < y.size(); ++i) {
            const Shape at = shape(p, lnX[i]);
            const std::array<double, ParameterCount> row = {
                at.g, height * at.byB, height * at.byLnC, at.oneMinusG, height * at.byLnE};
            for (std::size_t k = 0; k < free.size(); ++k)
                jacobian(i, static_cast<Eigen::Index>(k)) = row.at(free[k]);
        }
        return 0;
    }

private:
    const VectorXd &lnX;
    const VectorXd &y;
    Parameters fixed;
    const std::vector<Parameter> &free;
};

/// Fits a logistic from several starts and keeps the best minimum.
class LogisticFitter {
public:
    /// \param pointLnX, pointY finite, the same number of each
    LogisticFitter(VectorXd pointLnX, VectorXd pointY, bool isAsymmetric,
                   const FixedPlateaus &plateaus);

    /// \param signs of b to start with
    /// \return nothing when no start led to a minimum
    std::optional<Parameters> fit(std::initializer_list<double> signs) const;

    /// Residuals and so on of the fit that fit() found.
    Fit describe(const Parameters &parameters) const;

private:
    struct Candidate {
        Parameters parameters;
        double residualSum;
    };

    Candidate withBestPlateaus(double b, double lnC, double lnE) const;
    std::vector<Candidate> starts(double sign) const;
    std::optional<Candidate> minimise(const Parameters &start) const;
    bool isMinimum(const LogisticProblem &problem, const VectorXd &values) const;

    VectorXd lnX;
    VectorXd y;
    double lowest;  ///< of the lnX of x > 0
    double highest; ///< of the lnX of x > 0
    FixedPlateaus fixed;
    std::vector<Parameter> free;
    bool asymmetric;
};

LogisticFitter::LogisticFitter(VectorXd pointLnX, VectorXd pointY, bool isAsymmetric,
                               const FixedPlateaus &plateaus)
    : lnX(std::move(pointLnX))
    , y(std::move(pointY))
    , lowest(lnX.maxCoeff())
    , highest(lnX.maxCoeff())
    , fixed(plateaus)
    , asymmetric(isAsymmetric)
{
    for (const double value : lnX) {
        if (value > logarithm(0.0))
            lowest = std::min(lowest, value);
    }
    if (!fixed.a)
        free.push_back(A);
    free.insert(free.end(), {B, LnC});
    if (!fixed.d)
        free.push_back(D);
    if (asymmetric)
        free.push_back(LnE);
}

/// The plateaus are linear in the model: with the shape given, the best ones need no search.
LogisticFitter::Candidate LogisticFitter::withBestPlateaus(double b, double lnC, double lnE) const
{
    Candidate candidate = {{0.0, b, lnC, 0.0, lnE}, 0.0};
    Parameters &p = candidate.parameters;
    const VectorXd g = lnX.unaryExpr([&](double value) { return shape(p, value).g; });
    const VectorXd h = VectorXd::Ones(g.size()) - g;
    if (fixed.a && fixed.d) {
        p[A] = *fixed.a;
        p[D] = *fixed.d;
    } else if (fixed.a) {
        p[A] = *fixed.a;
        p[D] = h.dot(y - *fixed.a * g) / h.squaredNorm();
    } else if (fixed.d) {
        p[D] = *fixed.d;
        p[A] = g.dot(y - *fixed.d * h) / g.squaredNorm();
    } else {
        const VectorXd centred = g.array() - g.mean();
        const double height = centred.dot(y) / centred.squaredNorm();
        p[D] = y.mean() - height * g.mean();
        p[A] = p[D] + height;
    }
    candidate.residualSum = (p[A] * g + p[D] * h - y).squaredNorm();
    return candidate;
}

/// \return starts, the one that the data suggest first, then ones spread over the range of the
///         points, the best first
std::vector<LogisticFitter::Candidate> LogisticFitter::starts(double sign) const
{
    // half response: between the two neighbours where y crosses the middle of its range
    std::vector<Eigen::Index> order(static_cast<std::size_t>(lnX.size()));
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [this](auto i, auto k) { return lnX[i] < lnX[k]; });
    const double middle = 0.5 * (y.minCoeff() + y.maxCoeff());
    double halfResponse = 0.5 * (lowest + highest);
    for (std::size_t i = 1; i < order.size(); ++i) {
        const double before = y[order[i - 1]] - middle;
        const double after = y[order[i]] - middle;
        if (before * after <= 0.0 && before != after) {
            const double left = std::max(lnX[order[i - 1]], lowest);
            halfResponse = left + (lnX[order[i]] - left) * before / (before - after);
            break;
        }
    }

    // the rise takes about 4 / b on the logarithmic axis
    const double width = highest - lowest;
    std::vector<Candidate> starts;
    for (const double place : {-0.25, 0.0, 0.25, 0.5, 0.75, 1.0, 1.25}) {
        for (const double steepness : {2.0, 6.0, 18.0}) {
            const double b = sign * steepness / width;
            const double lnC = lowest + place * width;
            starts.push_back(withBestPlateaus(b, lnC, 0.0));
            if (asymmetric) {
                starts.push_back(withBestPlateaus(b, lnC, -1.5));
                starts.push_back(withBestPlateaus(b, lnC, 1.5));
            }
        }
    }
    std::erase_if(starts, [](const Candidate &start) { return !std::isfinite(start.residualSum); });
    std::sort(starts.begin(), starts.end(), [](const Candidate &left, const Candidate &right) {
        return left.residualSum < right.residualSum;
    });
    starts.insert(starts.begin(), withBestPlateaus(sign * 6.0 / width, halfResponse, 0.0));
    return starts;
}

/// A minimum by its gradient and by the step to it, whatever made the search stop.
bool LogisticFitter::isMinimum(const LogisticProblem &problem, const VectorXd &values) const
{
    // Parameters that the points do not determine make a fit worthless: one that is almost a
    // combination of the others, or one whose change by its own size (of the height for a plateau, e
    // times for c and e) moves no point by this part of the height.
    constexpr double rankThreshold = 1e-10;
    constexpr double influenceThreshold = 1e-6;
    // The relative offset of Bates and Watts, Technometrics 23 (1981) 179-183: how much of the
    // residuals a linear step could still remove.
    constexpr double offsetTolerance = 1e-6;
    constexpr double stepTolerance = 1e-6;  // relative to the parameters, in the unit of y
    constexpr double residualFloor = 1e-13; // of the range of y: nothing but rounding is left

    VectorXd residuals(y.size());
    MatrixXd jacobian(y.size(), values.size());
    problem(values, residuals);
    problem.df(values, jacobian);
    if (!values.allFinite() || !residuals.allFinite() || !jacobian.allFinite())
        return false;
    const ScaledQr decomposition(jacobian, rankThreshold);
    if (!decomposition.hasFullRank())
        return false;

    const VectorXd &lengths = decomposition.columnLengths();
    const Parameters p = problem.parameters(values);
    const double height = std::abs(p[A] - p[D]);
    const VectorXd influences =
        lengths.cwiseProduct(problem.values(Parameters{height, std::abs(p[B]), 1.0, height, 1.0}));
    if (influences.minCoeff() < influenceThreshold * height)
        return false;

    const double removable = (decomposition.basis().transpose() * residuals).norm();
    const VectorXd step = decomposition.solve(residuals);
    const bool flat = removable <= offsetTolerance * residuals.norm()
        || removable <= residualFloor * range(y) * std::sqrt(static_cast<double>(y.size()));
    const bool still =
        step.cwiseProduct(lengths).norm() <= stepTolerance * values.cwiseProduct(lengths).norm();
    return flat && still;
}

std::optional<LogisticFitter::Candidate> LogisticFitter::minimise(const Parameters &start) const
{
    LogisticProblem problem(lnX, y, start, free);
    VectorXd values = problem.values(start);
    Eigen::LevenbergMarquardt<LogisticProblem> search(problem);
    search.parameters.ftol = epsilon;
    search.parameters.xtol = epsilon;
    search.parameters.maxfev = 300;
    search.minimize(values);
    if (!isMinimum(problem, values))
        return std::nullopt;

    VectorXd residuals(y.size());
    problem(values, residuals);
    return Candidate{problem.parameters(values), residuals.squaredNorm()};
}

std::optional<Parameters> LogisticFitter::fit(std::initializer_list<double> signs) const
{
    constexpr std::size_t always = 3;  // starts that are tried even when the first led to a minimum
    constexpr std::size_t atMost = 12; // starts that are tried while none led to a minimum

    std::optional<Candidate> best;
    for (const double sign : signs) {
        std::size_t tried = 0;
        bool found = false;
        for (const Candidate &start : starts(sign)) {
            if (tried >= atMost || (tried >= always && found))
                break;
            ++tried;
            const std::optional<Candidate> minimum = minimise(start.parameters);
            found = found || minimum;
            if (minimum && (!best || minimum->residualSum < best->residualSum))
                best = minimum;
        }
    }
    return best ? std::optional(best->parameters) : std::nullopt;
}

Fit LogisticFitter::describe(const Parameters &parameters) const
{
    const LogisticProblem problem(lnX, y, parameters, free);
    const VectorXd values = problem.values(parameters);
    VectorXd residuals(y.size());
    MatrixXd jacobian(y.size(), values.size());
    problem(values, residuals);
    problem.df(values, jacobian);

    Fit fit;
    fit.fitted = toStd(y + residuals);
    fit.leverages = leverages(ScaledQr(jacobian));
    fit.residualSum = residuals.squaredNorm();
    fit.correlation = multipleCorrelation(y, fit.residualSum);
    return fit;
}

Fit fitLogistic(std::span<const double> x, std::span<const double> y, bool asymmetric,
                const FixedPlateaus &plateaus)
{
    const Vector values = view(y);
    const auto parameterCount =
        4 + (asymmetric ? 1 : 0) - (plateaus.a ? 1 : 0) - (plateaus.d ? 1 : 0);
    if (countDistinct(x) < parameterCount || !view(x).allFinite() || !values.allFinite()
        || range(values) == 0.0)
        return {};

    // a power of two: y keeps all its digits, and its square neither overflows nor vanishes
    const double unit = std::ldexp(1.0, std::ilogb(values.cwiseAbs().maxCoeff()));
    FixedPlateaus fixed;
    if (plateaus.a)
        fixed.a = *plateaus.a / unit;
    if (plateaus.d)
        fixed.d = *plateaus.d / unit;
    const LogisticFitter fitter(view(x).unaryExpr(&logarithm), values / unit, asymmetric, fixed);
    std::optional<Parameters> found = asymmetric ? fitter.fit({1.0, -1.0}) : fitter.fit({1.0});
    if (!found)
        return {};

    Fit fit = fitter.describe(*found);
    Parameters &p = *found;
    if (!asymmetric && p[B] < 0.0) {
        // the same curve, read from its other end
        p[B] = -p[B];
        std::swap(p[A], p[D]);
    }
    fit.coefficients = {p[A] * unit, p[B], std::exp(p[LnC]), p[D] * unit};
    if (asymmetric)
        fit.coefficients.push_back(std::exp(p[LnE]));
    for (double &value : fit.fitted)
        value *= unit;
    fit.residualSum *= unit * unit;
    fit.converged = view(fit.coefficients).allFinite() && fit.coefficients[2] > 0.0 && p[A] != p[D];
    return fit;
}

} // namespace

double Logistic::operator()(double x) const
{
    const Shape at = shape({a, b, std::log(c), d, std::log(e)}, logarithm(x));
    return a * at.g + d * at.oneMinusG;
}

Fit fitLogistic4(std::span<const double> x, std::span<const double> y, const FixedPlateaus &fixed)
{
    return fitLogistic(x, y, false, fixed);
}

Fit fitLogistic5(std::span<const double> x, std::span<const double> y, const FixedPlateaus &fixed)
{
    return fitLogistic(x, y, true, fixed);
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
