// SPDX-License-Identifier: MIT
/// The fits of standard curves against certified and published results, and at their limits.

#include "coagulation/zucore/curvefit.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <numeric>

using namespace coagulation::curvefit;

using Values = std::vector<double>;

Q_DECLARE_METATYPE(Values)

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// \return how many leading digits two numbers share, as NIST counts them
double sharedDigits(double value, double certified)
{
    const double error = std::abs(value - certified) / std::abs(certified);
    return error == 0.0 ? 16.0 : -std::log10(error);
}

/// \return the fewest shared digits of all numbers
double sharedDigits(const Values &values, const Values &certified)
{
    if (values.size() != certified.size())
        return 0.0;
    double fewest = 16.0;
    for (std::size_t i = 0; i < values.size(); ++i)
        fewest = std::min(fewest, sharedDigits(values[i], certified[i]));
    return fewest;
}

Values count(int from, int to)
{
    Values values(static_cast<std::size_t>(to - from + 1));
    std::iota(values.begin(), values.end(), from);
    return values;
}

/// y = d + (a - d) / (1 + (x / c)^b)
struct Logistic {
    double a;
    double b;
    double c;
    double d;
};

Values evaluate(const Logistic &curve, const Values &x)
{
    Values y;
    for (const double value : x)
        y.push_back(curve.d + (curve.a - curve.d) / (1.0 + std::pow(value / curve.c, curve.b)));
    return y;
}

/// The mean as a fit of one coefficient.
Fit fitMean(const Values &y)
{
    Fit fit;
    const auto count = static_cast<double>(y.size());
    const double mean = std::accumulate(y.begin(), y.end(), 0.0) / count;
    fit.converged = true;
    fit.coefficients = {mean};
    fit.fitted.assign(y.size(), mean);
    fit.leverages.assign(y.size(), 1.0 / count);
    for (const double value : y)
        fit.residualSum += std::pow(value - mean, 2);
    return fit;
}

} // namespace

class TestCurveFit : public QObject {
    Q_OBJECT

private slots:
    void agreesWithACertifiedLine();
    void agreesWithAPublishedDoseResponse();
    void givesTheLogisticBack_data();
    void givesTheLogisticBack();
    void knowsTheLogisticInAllDigits();
    void fitsManyPoints();
    void scalesWithTheUnits_data();
    void scalesWithTheUnits();
    void definesEveryResult_data();
    void definesEveryResult();
    void doesNotConvergeWithoutARise_data();
    void doesNotConvergeWithoutARise();
    void doesNotConvergeBesideABetterStep();
    void needsNumbersThatHoldItsCoefficients_data();
    void needsNumbersThatHoldItsCoefficients();
    void findsAnOutlierFromTheTabulatedQuantileOn_data();
    void findsAnOutlierFromTheTabulatedQuantileOn();
    void findsNoOutlierWithTooFewPoints();
    void findsNoOutlierWithoutAFit();
    void findsNoOutlierAmongRoundingErrors();
    void findsAnOutlierOfOtherwiseExactPoints();
    void leveragesSumToTheNumberOfCoefficients();
};

/// Shows: CUR-5
void TestCurveFit::agreesWithACertifiedLine()
{
    // NIST Statistical Reference Datasets, linear regression, Norris
    // https://www.itl.nist.gov/div898/strd/lls/lls.shtml
    const Values x = {0.2,   337.4, 118.2, 884.6, 10.1,  226.5, 666.3, 996.3, 448.6,
                      777.0, 558.2, 0.4,   0.6,   775.5, 666.9, 338.0, 447.5, 11.6,
                      556.0, 228.1, 995.8, 887.6, 120.2, 0.3,   0.3,   556.8, 339.1,
                      887.2, 999.0, 779.0, 11.1,  118.3, 229.2, 669.1, 448.9, 0.5};
    const Values y = {0.1,   338.8, 118.1, 888.0, 9.2,   228.1, 668.5, 998.5, 449.1,
                      778.9, 559.2, 0.3,   0.1,   778.1, 668.8, 339.3, 448.9, 10.8,
                      557.7, 228.3, 998.0, 888.8, 119.6, 0.3,   0.6,   557.6, 339.3,
                      888.0, 998.5, 778.9, 10.2,  117.6, 228.9, 668.4, 449.2, 0.2};

    const Fit fit = fitLine(x, y);

    QVERIFY(fit.converged);
    const double shared = sharedDigits(fit.coefficients, {-0.262323073774029, 1.00211681802045});
    QVERIFY2(shared >= 8.0, qPrintable(QString::number(shared)));
    QVERIFY(sharedDigits(fit.correlation * fit.correlation, 0.999993745883712) >= 9.0);
}

/// Shows: CUR-5
void TestCurveFit::agreesWithAPublishedDoseResponse()
{
    // Root length of ryegrass under ferulic acid: Inderjit, Streibig and Olofsdotter, Physiologia
    // Plantarum 114 (2002) 422-428; coefficients of Ritz and Streibig, J. Statistical Software 12
    // (2005) 5. Their b, c (lower), d (upper), e (half) are our b, d, a, c.
    const Values x = {0,    0,    0,    0,    0,    0,    0.94, 0.94, 0.94, 1.88, 1.88, 1.88,
                      3.75, 3.75, 3.75, 7.50, 7.50, 7.50, 15,   15,   15,   30,   30,   30};
    const Values y = {7.5800000, 8.0000000, 8.3285714, 7.2500000, 7.3750000, 7.9625000,
                      8.3555556, 6.9142857, 7.7500000, 6.8714286, 6.4500000, 5.9222222,
                      1.9250000, 2.8857143, 4.2333333, 1.1875000, 0.8571429, 1.0571429,
                      0.6875000, 0.5250000, 0.8250000, 0.2500000, 0.2200000, 0.4400000};

    const Fit fit = fitLogistic(x, y);

    QVERIFY(fit.converged);
    QVERIFY(sharedDigits(fit.coefficients, {7.79296, 2.98222, 3.05795, 0.48141}) >= 4.0);
}

void TestCurveFit::givesTheLogisticBack_data()
{
    QTest::addColumn<double>("b");
    QTest::addColumn<Values>("coefficients");

    QTest::newRow("rising") << 1.5 << Values{5.0, 1.5, 9.0, 60.0};
    QTest::newRow("falling, which b = -1.5 does") << -1.5 << Values{60.0, 1.5, 9.0, 5.0};
}

void TestCurveFit::givesTheLogisticBack()
{
    QFETCH(double, b);
    QFETCH(Values, coefficients);
    const Values x = {1, 2, 4, 8, 16, 32, 64};
    const Values y = evaluate({.a = 5.0, .b = b, .c = 9.0, .d = 60.0}, x);

    const Fit fit = fitLogistic(x, y);

    QVERIFY(fit.converged);
    QVERIFY(sharedDigits(fit.coefficients, coefficients) >= 12.0);
}

void TestCurveFit::knowsTheLogisticInAllDigits()
{
    constexpr int curves = 200;
    const Values x{3.1, 6.2, 12.4, 24.8, 49.6, 99.2, 198.4};
    for (int i = 0; i < curves; ++i) {
        Values y = evaluate({0.4, 1.0, 12.4 + i % 11, 2.5}, x);
        for (std::size_t k = 0; k < y.size(); ++k)
            y[k] += 0.03 * ((7 * i + static_cast<int>(k)) * 7919 % 101) / 100.0;

        // other sums are rounded otherwise, as with another C library
        const Fit fit = fitLogistic(x, y);
        const Fit backward =
            fitLogistic(Values(x.rbegin(), x.rend()), Values(y.rbegin(), y.rend()));

        QVERIFY(fit.converged);
        const double digits = sharedDigits(backward.coefficients, fit.coefficients);
        QVERIFY2(digits >= 11.0, qPrintable(QString("%1: %2 digits").arg(i).arg(digits)));
    }
}

/// No calibration has as many, but a database may: the time must not grow with the square of them.
void TestCurveFit::fitsManyPoints()
{
    Values x;
    for (int i = 1; i <= 20000; ++i)
        x.push_back(0.005 * i);
    const Values y = evaluate({.a = 5.0, .b = 1.5, .c = 9.0, .d = 60.0}, x);

    const Fit fit = fitLogistic(x, y);

    QVERIFY(fit.converged);
    QVERIFY(sharedDigits(fit.coefficients, {5.0, 1.5, 9.0, 60.0}) >= 9.0);
}

void TestCurveFit::scalesWithTheUnits_data()
{
    QTest::addColumn<double>("xUnit");
    QTest::addColumn<double>("yUnit");

    QTest::newRow("small x") << 1e-12 << 1.0;
    QTest::newRow("large x") << 1e12 << 1.0;
    QTest::newRow("small y") << 1.0 << 1e-160;
    QTest::newRow("large y") << 1.0 << 1e150;
}

void TestCurveFit::scalesWithTheUnits()
{
    QFETCH(double, xUnit);
    QFETCH(double, yUnit);
    const Values inX = {0, 1, 2, 4, 8, 16, 32, 64};
    const Values inY = {79, 75, 70.5, 60, 44, 31, 20, 14};
    Values x;
    Values y;
    for (std::size_t i = 0; i < inX.size(); ++i) {
        x.push_back(inX[i] * xUnit);
        y.push_back(inY[i] * yUnit);
    }

    const Fit plain = fitLogistic(inX, inY);
    const Fit fit = fitLogistic(x, y);

    QVERIFY(plain.converged && fit.converged);
    const Values &k = plain.coefficients;
    QVERIFY(sharedDigits(fit.coefficients, {k[0] * yUnit, k[1], k[2] * xUnit, k[3] * yUnit})
            >= 7.0);
    QVERIFY(sharedDigits(fit.correlation, plain.correlation) >= 12.0);
}

void TestCurveFit::definesEveryResult_data()
{
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");
    QTest::addColumn<bool>("line");     // whether it converges
    QTest::addColumn<bool>("logistic"); // whether it converges

    const Values x = {1, 2, 4, 8, 16, 32, 64, 128};
    const Values y = {79, 75, 68, 57, 43, 30, 20, 13};
    const auto replaced = [](Values values, std::size_t place, double value) {
        values[place] = value;
        return values;
    };
    QTest::newRow("good points") << x << y << true << true;
    QTest::newRow("no points") << Values{} << Values{} << false << false;
    QTest::newRow("one point") << Values{1} << Values{1} << false << false;
    QTest::newRow("two points") << Values{1, 2} << Values{3, 2} << true << false;
    QTest::newRow("three points") << Values{1, 2, 4} << Values{3, 2, 1.5} << true << false;
    QTest::newRow("the same x") << Values(8, 5.0) << y << false << false;
    QTest::newRow("two distinct x") << Values{1, 1, 1, 1, 2, 2, 2, 2} << y << true << false;
    QTest::newRow("the same y") << x << Values(8, 5.0) << true << false;
    QTest::newRow("zero everywhere") << Values(8, 0.0) << Values(8, 0.0) << false << false;
    QTest::newRow("y zero everywhere") << x << Values(8, 0.0) << true << false;
    QTest::newRow("x not a number") << replaced(x, 3, notANumber) << y << false << false;
    QTest::newRow("y not a number") << x << replaced(y, 3, notANumber) << false << false;
    QTest::newRow("x infinite") << replaced(x, 7, infinity) << y << false << false;
    QTest::newRow("y infinite") << x << replaced(y, 0, infinity) << false << false;
    QTest::newRow("y minus infinite") << x << replaced(y, 0, -infinity) << false << false;
    QTest::newRow("duplicates") << Values{1, 1, 4, 4, 16, 16, 64, 64, 128, 128}
                                << Values{79, 78, 68, 67, 43, 44, 20, 21, 13, 12} << true << true;
    QTest::newRow("descending") << Values{128, 64, 32, 16, 8, 4, 2, 1}
                                << Values{13, 20, 30, 43, 57, 68, 75, 79} << true << true;
    QTest::newRow("x from zero") << replaced(x, 0, 0.0) << y << true << true;
}

void TestCurveFit::definesEveryResult()
{
    QFETCH(Values, x);
    QFETCH(Values, y);
    QFETCH(bool, line);
    QFETCH(bool, logistic);

    QCOMPARE(fitLine(x, y).converged, line);
    QCOMPARE(fitLogistic(x, y).converged, logistic);
}

void TestCurveFit::doesNotConvergeWithoutARise_data()
{
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");

    const Values x = {1, 2, 4, 8, 16, 32, 64, 128};
    QTest::newRow("power law") << x << Values{1, 2, 4, 8, 16, 32, 64, 128};
    QTest::newRow("straight on the logarithmic axis") << x << Values{1, 2, 3, 4, 5, 6, 7, 8};
    QTest::newRow("a step between two points") << x << Values{0, 0, 0, 0, 1, 1, 1, 1};
    QTest::newRow("1e300 in x") << Values{1, 2, 4, 8, 16, 32, 64, 1e300}
                                << Values{1, 1, 1, 1, 1, 1, 1, 2};
}

void TestCurveFit::doesNotConvergeWithoutARise()
{
    QFETCH(Values, x);
    QFETCH(Values, y);

    QVERIFY(!fitLogistic(x, y).converged);
}

/// Shows: CUR-7
void TestCurveFit::doesNotConvergeBesideABetterStep()
{
    // There is a minimum with a sum of 413, at a = 61, b = 1.3, c = 12, d = 13. But a step between the
    // fourth point and the fifth, on which the fourth lies, leaves 370.
    const Values x = {1, 2, 4, 8, 16, 32, 64};
    const Values y = {57.7, 64.5, 39.9, 55.3, 25.0, 26.3, 16.7};

    QVERIFY(!fitLogistic(x, y).converged);
}

void TestCurveFit::needsNumbersThatHoldItsCoefficients_data()
{
    QTest::addColumn<double>("c");
    QTest::addColumn<double>("d"); // and a = -d
    QTest::addColumn<bool>("converges");

    constexpr double least = std::numeric_limits<double>::min(); // with all digits
    constexpr double most = std::numeric_limits<double>::max();
    QTest::newRow("usual ones") << 8.0 << 1.0 << true;
    QTest::newRow("large plateaus") << 8.0 << 0.4 * most << true;
    QTest::newRow("plateaus with an infinite difference") << 8.0 << 0.6 * most << false;
    QTest::newRow("small plateaus") << 8.0 << 4.0 * least << true;
    QTest::newRow("plateaus that lack digits") << 8.0 << std::ldexp(least, -30) << false;
    QTest::newRow("small c") << 16.0 * least << 1.0 << true;
    QTest::newRow("c that lacks digits") << std::ldexp(least, -30) << 1.0 << false;
}

/// Shows: CUR-7
void TestCurveFit::needsNumbersThatHoldItsCoefficients()
{
    QFETCH(double, c);
    QFETCH(double, d);
    QFETCH(bool, converges);
    Values x;
    Values y;
    for (const double ratio : {0.125, 0.25, 0.5, 1.0, 2.0, 4.0, 8.0, 16.0}) {
        x.push_back(c * ratio);
        y.push_back(d * ((ratio - 1.0) / (ratio + 1.0))); // b = 1, and a - d need not be a number
    }

    QCOMPARE(fitLogistic(x, y).converged, converges);
}

void TestCurveFit::findsAnOutlierFromTheTabulatedQuantileOn_data()
{
    QTest::addColumn<double>("farthest");
    QTest::addColumn<bool>("outlier");

    // A mean of four points -1, -1, 1, 1 (standard deviation 1.1547) against a fifth: its t is
    // y / (1.1547 sqrt(1 + 1/4)) with 3 degrees of freedom, to be compared with the two-sided 1 %
    // quantile 5.8409 (5 % over 5 points), that is y with 7.5406.
    QTest::newRow("just below") << 7.53 << false;
    QTest::newRow("just above") << 7.55 << true;
    QTest::newRow("just below, negative") << -7.53 << false;
    QTest::newRow("just above, negative") << -7.55 << true;
}

void TestCurveFit::findsAnOutlierFromTheTabulatedQuantileOn()
{
    QFETCH(double, farthest);
    QFETCH(bool, outlier);
    const Values y = {-1, 1, farthest, -1, 1};

    const std::vector<bool> outliers = findOutliers(fitMean(y), y);

    QCOMPARE(outliers, std::vector<bool>({false, false, outlier, false, false}));
}

void TestCurveFit::findsNoOutlierWithTooFewPoints()
{
    // the fourth is far away, but 4 points and 2 coefficients leave 1 degree of freedom
    const Values y = {1.001, 2, 2.999, 1000};
    Fit fit = fitMean(y);
    fit.coefficients = {1.0, 1.0};
    fit.fitted = {1, 2, 3, 4};

    QCOMPARE(findOutliers(fit, y), std::vector<bool>(4, false));
}

void TestCurveFit::findsNoOutlierWithoutAFit()
{
    const Values y = {1, 4, 9, 16, 25, 1000};

    QCOMPARE(findOutliers(Fit{}, y), std::vector<bool>(6, false));
}

void TestCurveFit::findsNoOutlierAmongRoundingErrors()
{
    const Values x = count(1, 20);
    Values y;
    for (const double value : x)
        y.push_back(3.0 + 0.1 * value);
    y[7] += 1e-10;

    const std::vector<bool> outliers = findOutliers(fitLine(x, y), y);

    QCOMPARE(outliers, std::vector<bool>(20, false));
}

void TestCurveFit::findsAnOutlierOfOtherwiseExactPoints()
{
    const Values x = count(1, 10);
    Values y = count(11, 20);
    y[4] += 0.5;

    const std::vector<bool> outliers = findOutliers(fitLine(x, y), y);

    std::vector<bool> expected(10, false);
    expected[4] = true;
    QCOMPARE(outliers, expected);
}

void TestCurveFit::leveragesSumToTheNumberOfCoefficients()
{
    const Values x = {1, 2, 4, 8, 16, 32, 64, 128};
    const Values y = {79, 75, 68, 57, 43, 30, 20, 13};

    for (const Fit &fit : {fitLine(x, y), fitLogistic(x, y)}) {
        QVERIFY(fit.converged);
        const double sum = std::accumulate(fit.leverages.begin(), fit.leverages.end(), 0.0);
        QVERIFY(std::abs(sum - static_cast<double>(fit.coefficients.size())) < 1e-12);
    }
}

QTEST_GUILESS_MAIN(TestCurveFit)
#include "tst_curvefit.moc"
