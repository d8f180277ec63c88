// SPDX-License-Identifier: MIT
/// The stand-in that fits standard curves, with any points, methods and functions: a valid curve is finite,
/// strictly monotonic and describes its points; an invalid one keeps its numbers.

#include "inputbytes.h"
#include "inputreader.h"
#include "require.h"

#include "coagulation/zucore/standardcurve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <vector>

using coagulation::StandardCurve;
using coagulation::StdPoint;

namespace {

constexpr int mostPoints = 64; // calibrations have some ten

struct Input {
    zu::RegressionMethod method;
    zu::Function xFunction;
    zu::Function yFunction;
    QList<StdPoint> points;
};

/// \return mostly one of the numbers that are known
template <typename Enumeration> Enumeration choose(InputReader &reader, int other)
{
    const int choice = reader.below(16);
    if (choice == 15)
        return Enumeration(reader.integer());
    return Enumeration(choice % 2 == 0 ? 0 : other);
}

Input readInput(InputReader &reader)
{
    Input input{choose<zu::RegressionMethod>(reader, 4),
                choose<zu::Function>(reader, 1),
                choose<zu::Function>(reader, 1),
                {}};
    while (!reader.atEnd() && input.points.size() < mostPoints) {
        StdPoint point;
        point.x = reader.number();
        point.y = reader.number();
        point.z = -1.0;
        point.flags = reader.byte();
        input.points << point;
    }
    return input;
}

bool isSame(double left, double right)
{
    return std::bit_cast<quint64>(left) == std::bit_cast<quint64>(right);
}

bool isSame(const StdPoint &left, const StdPoint &right)
{
    return isSame(left.x, right.x) && isSame(left.y, right.y) && isSame(left.z, right.z)
        && left.flags == right.flags;
}

QList<StdPoint> pointsOf(const StandardCurve &curve, qsizetype count)
{
    QList<StdPoint> points;
    for (qsizetype i = 0; i < count; ++i)
        points << curve.point(int(i));
    return points;
}

/// \return the y of a curve's stored coefficients, in the unit of its points
double valueAt(const StandardCurve &curve, const Input &input, double x)
{
    double y = 0.0;
    if (input.method == zu::RegressionMethod::Linear) {
        const bool isLog = input.xFunction == zu::Function::Log;
        y = curve.coefficient(0) + curve.coefficient(1) * (isLog ? std::log10(x) : x);
    } else {
        const double a = curve.coefficient(0);
        const double d = curve.coefficient(3);
        // x / c alone may be too small or too large for a number
        const double lnRatio = std::log(x) - std::log(curve.coefficient(2));
        y = d + (a - d) / (1.0 + std::exp(curve.coefficient(1) * lnRatio));
    }
    return input.yFunction == zu::Function::Log ? std::pow(10.0, y) : y;
}

void checkCoefficients(const StandardCurve &curve, const Input &input)
{
    for (int i = 0; i < curve.coefficientCount(); ++i)
        require(std::isfinite(curve.coefficient(i)), "the coefficients are finite");
    if (input.method == zu::RegressionMethod::Linear) {
        require(curve.coefficient(1) != 0.0, "the line has a slope");
        return;
    }
    require(curve.coefficient(1) > 0.0 && curve.coefficient(2) > 0.0, "b and c are above 0");
    require(curve.coefficient(0) != curve.coefficient(3), "the plateaus differ");
}

/// On the axes of the fit, from what is stored.
void checkCorrelation(const std::vector<StdPoint> &points, const Input &input)
{
    const auto onAxis = [&input](double y) {
        return input.yFunction == zu::Function::Log ? std::log10(y) : y;
    };
    const auto count = double(points.size());
    double mean = 0.0;
    for (const StdPoint &point : points)
        mean += onAxis(point.y) / count;
    double largest = 0.0;
    for (const StdPoint &point : points)
        largest = std::max(largest, std::abs(onAxis(point.y) - mean));
    double residual = 0.0;
    double total = 0.0;
    for (const StdPoint &point : points) { // squares of what may be very large or small
        residual += std::pow((onAxis(point.y) - onAxis(point.z)) / largest, 2);
        total += std::pow((onAxis(point.y) - mean) / largest, 2);
    }
    constexpr double rounding = 1e-6;
    require(std::sqrt(1.0 - residual / total) >= StandardCurve::minimumCorrelation - rounding,
            "the points lie near the curve");
}

void checkPoints(const StandardCurve &curve, const Input &input)
{
    constexpr double rounding = 1e-9; // of the largest y
    const QList<StdPoint> points = pointsOf(curve, input.points.size());
    std::vector<StdPoint> used;
    for (qsizetype i = 0; i < points.size(); ++i) {
        constexpr int own = StdPoint::Excluded | StdPoint::Outlier;
        require((points.at(i).flags & ~own) == (input.points.at(i).flags & ~own),
                "flags of others are kept");
        if ((points.at(i).flags & StdPoint::Excluded) != 0)
            require(isSame(points.at(i).z, -1.0), "an excluded point keeps its z");
        else
            used.push_back(points.at(i));
    }

    if (used.empty()) {
        require(false, "a valid curve is fitted to points");
        return;
    }
    std::sort(used.begin(), used.end(),
              [](const StdPoint &left, const StdPoint &right) { return left.x < right.x; });
    const double largest =
        std::accumulate(used.begin(), used.end(), 0.0, [](double most, const StdPoint &point) {
            return std::max(most, std::abs(point.z));
        });
    const bool falls = input.method == zu::RegressionMethod::Linear
        ? curve.coefficient(1) < 0.0
        : curve.coefficient(3) < curve.coefficient(0);
    for (std::size_t i = 0; i < used.size(); ++i) {
        const double z = used[i].z;
        require(std::isfinite(z), "each z is finite");
        // with a logarithm small values count as much as large ones
        const double scale = input.yFunction == zu::Function::Log ? std::abs(z) : largest;
        require(std::abs(valueAt(curve, input, used[i].x) - z) <= 1e-6 * scale,
                "the coefficients give each z");
        if (i > 0) {
            const double step = z - used[i - 1].z;
            require((falls ? -step : step) >= -rounding * largest, "the z rise or fall with x");
        }
    }
    checkCorrelation(used, input);
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    constexpr double storedCorrelation = 0.25;
    const QList<double> storedCoefficients{1.0, 2.0, 3.0, 4.0, 5.0};
    InputReader reader(inputBytes(data, size));
    const Input input = readInput(reader);
    StandardCurve curve(nullptr);
    curve.setMethod(input.method);
    curve.setXFun(input.xFunction);
    curve.setYFun(input.yFunction);
    curve.setPoints(input.points);
    curve.setCoefficient(storedCoefficients);
    curve.setCorrelation(storedCorrelation);

    curve.update();

    if (curve.isValid()) {
        require(curve.correlation() >= StandardCurve::minimumCorrelation
                    && curve.correlation() <= 1.0,
                "the correlation is large enough");
        checkCoefficients(curve, input);
        checkPoints(curve, input);
        return 0;
    }
    require(isSame(curve.correlation(), storedCorrelation), "the correlation is kept");
    for (int i = 0; i < storedCoefficients.size(); ++i)
        require(isSame(curve.coefficient(i), storedCoefficients.at(i)),
                "the coefficients are kept");
    for (qsizetype i = 0; i < input.points.size(); ++i)
        require(isSame(curve.point(int(i)), input.points.at(i)), "the points are kept");
    return 0;
}
