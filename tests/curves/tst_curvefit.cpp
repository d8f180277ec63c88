// SPDX-License-Identifier: MIT
/// The fits of standard curves against certified and published results, and at their limits.

#include "coagulation/zucore/curvefit.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

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

Values exponentials(const Values &exponents)
{
    Values values;
    for (const double exponent : exponents)
        values.push_back(std::exp(exponent));
    return values;
}

Values count(int from, int to)
{
    Values values(static_cast<std::size_t>(to - from + 1));
    std::iota(values.begin(), values.end(), from);
    return values;
}

/// y of the Wampler data sets: a polynomial of degree 5 plus a multiple of fixed deviations.
Values wampler(const Values &coefficients, double deviationFactor)
{
    const Values deviations = {759,   -2048, 2048,  -2048, 2523,  -2048, 2048,
                               -2048, 1838,  -2048, 2048,  -2048, 1838,  -2048,
                               2048,  -2048, 2523,  -2048, 2048,  -2048, 759};
    Values y;
    for (std::size_t x = 0; x < deviations.size(); ++x)
        y.push_back(polynomial(coefficients, static_cast<double>(x))
                    + deviationFactor * deviations[x]);
    return y;
}

Values evaluate(const Logistic &curve, const Values &x)
{
    Values y;
    for (const double value : x)
        y.push_back(curve(value));
    return y;
}

double residualSum(const Logistic &curve, const Values &x, const Values &y)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
        sum += std::pow(curve(x[i]) - y[i], 2);
    return sum;
}

Fit fitNumbered(int method, const Values &x, const Values &y)
{
    return method == 4 ? fitLogistic4(x, y)
        : method == 5  ? fitLogistic5(x, y)
                       : fitPolynomial(x, y, method + 1);
}

/// A logistic curve and points that show both of its plateaus and its rise.
struct RandomLogistic {
    Logistic curve;
    Values x;

    RandomLogistic(std::mt19937 &random, bool asymmetric)
    {
        const auto uniform = [&](double low, double high) {
            return std::uniform_real_distribution<double>(low, high)(random);
        };
        curve.a = uniform(-50.0, 50.0);
        curve.d = curve.a + (uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0) * uniform(1.0, 100.0);
        curve.b = uniform(0.5, 4.0);
        curve.c = std::pow(10.0, uniform(-2.0, 3.0));
        if (asymmetric) {
            curve.e = std::pow(10.0, uniform(-0.4, 0.4));
            if (uniform(0.0, 1.0) < 0.5)
                curve.b = -curve.b;
        }
        // from 2 % to 98 % of the height, evenly on the logarithmic axis
        const int points = asymmetric ? 12 : 7;
        const auto lnXAt = [this](double share) {
            return std::log(curve.c) + std::log(std::pow(share, -1.0 / curve.e) - 1.0) / curve.b;
        };
        for (int i = 0; i < points; ++i)
            x.push_back(std::exp(std::lerp(lnXAt(0.02), lnXAt(0.98), i / (points - 1.0))));
    }
};

} // namespace

class TestCurveFit : public QObject {
    Q_OBJECT

private slots:
    void agreesWithCertifiedPolynomials_data();
    void agreesWithCertifiedPolynomials();
    void agreesWithCertifiedCorrelations_data();
    void agreesWithCertifiedCorrelations();
    void agreesWithCertifiedLogistic4();
    void agreesWithCertifiedLogistic5();
    void agreesWithAPublishedDoseResponse();
    void normalisesLogistic4ToAPositiveSlopeFactor();
    void fitsLogistic5WithBothSigns_data();
    void fitsLogistic5WithBothSigns();
    void keepsAFixedPlateau();
    void scalesWithTheUnits_data();
    void scalesWithTheUnits();
    void convergesUnderNoise_data();
    void convergesUnderNoise();
    void definesEveryResult_data();
    void definesEveryResult();
    void doesNotConvergeWithoutARise_data();
    void doesNotConvergeWithoutARise();
    void evaluatesALogisticAtItsPlateaus_data();
    void evaluatesALogisticAtItsPlateaus();
    void decidesMonotonicityFromTheDerivative_data();
    void decidesMonotonicityFromTheDerivative();
    void findsAnOutlierFromTheTabulatedQuantileOn_data();
    void findsAnOutlierFromTheTabulatedQuantileOn();
    void findsNoOutlierWithTooFewPoints();
    void findsNoOutlierAmongRoundingErrors();
    void findsAnOutlierOfOtherwiseExactPoints();
    void leveragesSumToTheNumberOfCoefficients_data();
    void leveragesSumToTheNumberOfCoefficients();
};

void TestCurveFit::agreesWithCertifiedPolynomials_data()
{
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");
    QTest::addColumn<Values>("certified");
    QTest::addColumn<double>("digits");

    // NIST Statistical Reference Datasets, linear regression
    // https://www.itl.nist.gov/div898/strd/lls/lls.shtml
    QTest::newRow("Norris") << Values{0.2,   337.4, 118.2, 884.6, 10.1,  226.5, 666.3, 996.3, 448.6,
                                      777.0, 558.2, 0.4,   0.6,   775.5, 666.9, 338.0, 447.5, 11.6,
                                      556.0, 228.1, 995.8, 887.6, 120.2, 0.3,   0.3,   556.8, 339.1,
                                      887.2, 999.0, 779.0, 11.1,  118.3, 229.2, 669.1, 448.9, 0.5}
                            << Values{0.1,   338.8, 118.1, 888.0, 9.2,   228.1, 668.5, 998.5, 449.1,
                                      778.9, 559.2, 0.3,   0.1,   778.1, 668.8, 339.3, 448.9, 10.8,
                                      557.7, 228.3, 998.0, 888.8, 119.6, 0.3,   0.6,   557.6, 339.3,
                                      888.0, 998.5, 778.9, 10.2,  117.6, 228.9, 668.4, 449.2, 0.2}
                            << Values{-0.262323073774029, 1.00211681802045} << 8.0;
    Values pontiusX;
    for (int run = 0; run < 2; ++run) {
        for (const double load : count(1, 20))
            pontiusX.push_back(150000.0 * load);
    }
    QTest::newRow("Pontius")
        << pontiusX
        << Values{0.11019, 0.21956, 0.32949, 0.43899, 0.54803, 0.65694, 0.76562, 0.87487,
                  0.98292, 1.09146, 1.20001, 1.30822, 1.41599, 1.52399, 1.63194, 1.73947,
                  1.84646, 1.95392, 2.06128, 2.16844, 0.11052, 0.22018, 0.32939, 0.43886,
                  0.54798, 0.65739, 0.76596, 0.87474, 0.98300, 1.09150, 1.20004, 1.30818,
                  1.41613, 1.52408, 1.63159, 1.73965, 1.84696, 1.95445, 2.06177, 2.16829}
        << Values{0.673565789473684e-03, 0.732059160401003e-06, -0.316081871345029e-14} << 8.0;
    const Values ones(6, 1.0);
    const Values falling = {1.0, 0.1, 0.01, 0.001, 0.0001, 0.00001};
    QTest::newRow("Wampler1") << count(0, 20) << wampler(ones, 0.0) << ones << 8.0;
    QTest::newRow("Wampler2") << count(0, 20) << wampler(falling, 0.0) << falling << 8.0;
    QTest::newRow("Wampler3") << count(0, 20) << wampler(ones, 1.0) << ones << 8.0;
    QTest::newRow("Wampler4") << count(0, 20) << wampler(ones, 100.0) << ones << 7.0;
    QTest::newRow("Wampler5") << count(0, 20) << wampler(ones, 10000.0) << ones << 5.0;
}

void TestCurveFit::agreesWithCertifiedPolynomials()
{
    QFETCH(Values, x);
    QFETCH(Values, y);
    QFETCH(Values, certified);
    QFETCH(double, digits);

    const Fit fit = fitPolynomial(x, y, static_cast<int>(certified.size()) - 1);

    QVERIFY(fit.converged);
    const double shared = sharedDigits(fit.coefficients, certified);
    QVERIFY2(shared >= digits, qPrintable(QString::number(shared)));
}

void TestCurveFit::agreesWithCertifiedCorrelations_data()
{
    agreesWithCertifiedPolynomials_data();
}

void TestCurveFit::agreesWithCertifiedCorrelations()
{
    QFETCH(Values, x);
    QFETCH(Values, y);
    QFETCH(Values, certified);
    const QMap<QString, double> rSquared = {
        {"Norris", 0.999993745883712},
        {"Pontius", 0.999999900178537},
        {"Wampler1", 1.0},
        {"Wampler2", 1.0},
        {"Wampler3", 0.999995559025820},
        {"Wampler4", 0.957478440825662},
        {"Wampler5", 0.224668921574940e-02},
    };

    const Fit fit = fitPolynomial(x, y, static_cast<int>(certified.size()) - 1);

    const double expected = rSquared.value(QTest::currentDataTag());
    QVERIFY(sharedDigits(fit.correlation * fit.correlation, expected) >= 9.0);
}

void TestCurveFit::agreesWithCertifiedLogistic4()
{
    // NIST StRD, Rat42: y = b1 / (1 + exp(b2 - b3 x)), which is a logistic of exp(x) from 0 to b1
    const Values x = exponentials({9, 14, 21, 28, 42, 57, 63, 70, 79});
    const Values y = {8.930, 10.800, 18.590, 22.330, 39.350, 56.110, 61.730, 64.620, 67.080};

    const Fit fit = fitLogistic4(x, y, {.a = 0.0, .d = std::nullopt});

    QVERIFY(fit.converged);
    const double b = fit.coefficients[1];
    QCOMPARE(fit.coefficients[0], 0.0);
    QVERIFY(sharedDigits({fit.coefficients[3], b * std::log(fit.coefficients[2]), b},
                         {7.2462237576E+01, 2.6180768402E+00, 6.7359200066E-02})
            >= 6.0);
    QVERIFY(sharedDigits(fit.residualSum, 8.0565229338E+00) >= 9.0);
}

void TestCurveFit::agreesWithCertifiedLogistic5()
{
    // NIST StRD, Rat43: y = b1 / (1 + exp(b2 - b3 x))^(1 / b4)
    const Values x = exponentials(count(1, 15));
    const Values y = {16.08,  33.83,  65.80,  97.20,  191.55, 326.20, 386.87, 520.53,
                      590.03, 651.92, 724.93, 699.56, 689.96, 637.56, 717.41};

    const Fit fit = fitLogistic5(x, y, {.a = std::nullopt, .d = 0.0});

    QVERIFY(fit.converged);
    const double b = fit.coefficients[1];
    QVERIFY(b < 0.0);
    QCOMPARE(fit.coefficients[3], 0.0);
    QVERIFY(sharedDigits({fit.coefficients[0], -b * std::log(fit.coefficients[2]), -b,
                          1.0 / fit.coefficients[4]},
                         {6.9964151270E+02, 5.2771253025E+00, 7.5962938329E-01, 1.2792483859E+00})
            >= 6.0);
    QVERIFY(sharedDigits(fit.residualSum, 8.7864049080E+03) >= 9.0);
}

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

    const Fit fit = fitLogistic4(x, y);

    QVERIFY(fit.converged);
    QVERIFY(sharedDigits(fit.coefficients, {7.79296, 2.98222, 3.05795, 0.48141}) >= 4.0);
}

void TestCurveFit::normalisesLogistic4ToAPositiveSlopeFactor()
{
    const Values x = {1, 2, 4, 8, 16, 32, 64};
    const Values y = evaluate({.a = 5.0, .b = -1.5, .c = 9.0, .d = 60.0}, x);

    const Fit fit = fitLogistic4(x, y);

    QVERIFY(fit.converged);
    QVERIFY(sharedDigits(fit.coefficients, {60.0, 1.5, 9.0, 5.0}) >= 12.0);
}

void TestCurveFit::fitsLogistic5WithBothSigns_data()
{
    QTest::addColumn<double>("b");

    QTest::newRow("positive") << 1.3;
    QTest::newRow("negative") << -1.3;
}

void TestCurveFit::fitsLogistic5WithBothSigns()
{
    QFETCH(double, b);
    const Values x = {0.5, 1, 2, 4, 8, 16, 32, 64, 128, 256};
    const Values y = evaluate({.a = 5.0, .b = b, .c = 9.0, .d = 60.0, .e = 2.0}, x);

    const Fit fit = fitLogistic5(x, y);

    QVERIFY(fit.converged);
    QVERIFY(sharedDigits(fit.coefficients, {5.0, b, 9.0, 60.0, 2.0}) >= 11.0);
}

void TestCurveFit::keepsAFixedPlateau()
{
    const Values x = {1, 2, 4, 8, 16, 32, 64};
    const Values y = {1.1, 3.9, 9.2, 20.1, 29.5, 36.3, 38.0};

    const Fit lower = fitLogistic4(x, y, {.a = 1.0, .d = std::nullopt});
    const Fit both = fitLogistic4(x, y, {.a = 0.0, .d = 40.0});

    QVERIFY(lower.converged);
    QCOMPARE(lower.coefficients[0], 1.0);
    QVERIFY(both.converged);
    QCOMPARE(both.coefficients[0], 0.0);
    QCOMPARE(both.coefficients[3], 40.0);
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

    const Fit plain = fitLogistic4(inX, inY);
    const Fit fit = fitLogistic4(x, y);

    QVERIFY(plain.converged && fit.converged);
    const Values &k = plain.coefficients;
    QVERIFY(sharedDigits(fit.coefficients, {k[0] * yUnit, k[1], k[2] * xUnit, k[3] * yUnit})
            >= 7.0);
    QVERIFY(sharedDigits(fit.correlation, plain.correlation) >= 12.0);
}

void TestCurveFit::convergesUnderNoise_data()
{
    QTest::addColumn<bool>("asymmetric");

    QTest::newRow("four parameters") << false;
    QTest::newRow("five parameters") << true;
}

void TestCurveFit::convergesUnderNoise()
{
    QFETCH(bool, asymmetric);
    constexpr int curves = 1000;
    constexpr double noise = 0.01; // standard deviation, of the range of y
    std::mt19937 random(20161);
    int converged = 0;

    for (int i = 0; i < curves; ++i) {
        const RandomLogistic truth(random, asymmetric);
        Values y = evaluate(truth.curve, truth.x);
        const double range = std::abs(y.front() - y.back());
        std::normal_distribution<double> deviation(0.0, noise * range);
        for (double &value : y)
            value += deviation(random);

        const Fit fit = asymmetric ? fitLogistic5(truth.x, y) : fitLogistic4(truth.x, y);

        converged += fit.converged ? 1 : 0;
        if (fit.converged)
            QVERIFY(fit.residualSum <= residualSum(truth.curve, truth.x, y) * (1.0 + 1e-12));
    }
    QVERIFY2(converged >= curves * 99 / 100, qPrintable(QString::number(converged)));
}

void TestCurveFit::definesEveryResult_data()
{
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");
    QTest::addColumn<int>("polynomials"); // how many degrees from 1 on converge
    QTest::addColumn<bool>("logistics");  // whether the logistic curves converge

    const Values x = {1, 2, 4, 8, 16, 32, 64, 128};
    const Values y = {79, 75, 68, 57, 43, 30, 20, 13};
    const auto replaced = [](Values values, std::size_t place, double value) {
        values[place] = value;
        return values;
    };
    QTest::newRow("good points") << x << y << 4 << true;
    QTest::newRow("no points") << Values{} << Values{} << 0 << false;
    QTest::newRow("one point") << Values{1} << Values{1} << 0 << false;
    QTest::newRow("two points") << Values{1, 2} << Values{3, 2} << 1 << false;
    QTest::newRow("three points") << Values{1, 2, 4} << Values{3, 2, 1.5} << 2 << false;
    QTest::newRow("the same x") << Values(8, 5.0) << y << 0 << false;
    QTest::newRow("two distinct x") << Values{1, 1, 1, 1, 2, 2, 2, 2} << y << 1 << false;
    QTest::newRow("the same y") << x << Values(8, 5.0) << 4 << false;
    QTest::newRow("zero everywhere") << Values(8, 0.0) << Values(8, 0.0) << 0 << false;
    QTest::newRow("y zero everywhere") << x << Values(8, 0.0) << 4 << false;
    QTest::newRow("x not a number") << replaced(x, 3, notANumber) << y << 0 << false;
    QTest::newRow("y not a number") << x << replaced(y, 3, notANumber) << 0 << false;
    QTest::newRow("x infinite") << replaced(x, 7, infinity) << y << 0 << false;
    QTest::newRow("y infinite") << x << replaced(y, 0, infinity) << 0 << false;
    QTest::newRow("y minus infinite") << x << replaced(y, 0, -infinity) << 0 << false;
    QTest::newRow("duplicates") << Values{1, 1, 4, 4, 16, 16, 64, 64, 128, 128}
                                << Values{79, 78, 68, 67, 43, 44, 20, 21, 13, 12} << 4 << true;
    QTest::newRow("descending") << Values{128, 64, 32, 16, 8, 4, 2, 1}
                                << Values{13, 20, 30, 43, 57, 68, 75, 79} << 4 << true;
    QTest::newRow("x from zero") << replaced(x, 0, 0.0) << y << 4 << true;
}

void TestCurveFit::definesEveryResult()
{
    QFETCH(Values, x);
    QFETCH(Values, y);
    QFETCH(int, polynomials);
    QFETCH(bool, logistics);

    for (int degree = 1; degree <= 4; ++degree) {
        const Fit fit = fitPolynomial(x, y, degree);
        QCOMPARE(fit.converged, degree <= polynomials);
    }
    QCOMPARE(fitLogistic4(x, y).converged, logistics);
    QCOMPARE(fitLogistic5(x, y).converged, logistics);
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

    QVERIFY(!fitLogistic4(x, y).converged);
    QVERIFY(!fitLogistic5(x, y).converged);
}

void TestCurveFit::evaluatesALogisticAtItsPlateaus_data()
{
    QTest::addColumn<double>("b");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("expected");

    QTest::newRow("rising from a: at zero") << 2.0 << 0.0 << 10.0;
    QTest::newRow("rising from a: at c") << 2.0 << 3.0 << 15.0;
    QTest::newRow("rising from a: far away") << 2.0 << 1e300 << 20.0;
    QTest::newRow("the other way: at zero") << -2.0 << 0.0 << 20.0;
    QTest::newRow("the other way: at c") << -2.0 << 3.0 << 15.0;
    QTest::newRow("the other way: far away") << -2.0 << 1e300 << 10.0;
}

void TestCurveFit::evaluatesALogisticAtItsPlateaus()
{
    QFETCH(double, b);
    QFETCH(double, x);
    QFETCH(double, expected);
    const Logistic curve = {.a = 10.0, .b = b, .c = 3.0, .d = 20.0};

    QCOMPARE(curve(x), expected);
}

void TestCurveFit::decidesMonotonicityFromTheDerivative_data()
{
    QTest::addColumn<Values>("coefficients");
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");
    QTest::addColumn<bool>("monotonic");

    QTest::newRow("rising line") << Values{1, 2} << 0.0 << 9.0 << true;
    QTest::newRow("falling line") << Values{1, -2} << 0.0 << 9.0 << true;
    QTest::newRow("constant") << Values{1, 0} << 0.0 << 9.0 << false;
    QTest::newRow("only a constant") << Values{1} << 0.0 << 9.0 << false;
    QTest::newRow("parabola right of its vertex") << Values{0, -2, 1} << 1.5 << 9.0 << true;
    QTest::newRow("parabola left of its vertex") << Values{0, -2, 1} << -3.0 << 0.5 << true;
    QTest::newRow("parabola from its vertex on") << Values{0, -2, 1} << 1.0 << 9.0 << true;
    QTest::newRow("parabola across its vertex") << Values{0, -2, 1} << 0.99 << 9.0 << false;
    QTest::newRow("cubic without a turn") << Values{0, 1, 0, 1} << -5.0 << 5.0 << true;
    QTest::newRow("cubic with a level place") << Values{0, 0, 0, 1} << -5.0 << 5.0 << true;
    QTest::newRow("cubic with two turns") << Values{0, -1, 0, 1} << -5.0 << 5.0 << false;
    QTest::newRow("cubic between its turns") << Values{0, -1, 0, 1} << -0.5 << 0.5 << true;
    // derivative (t - 1)² - 0.0001: negative only from 0.99 to 1.01, far between any samples
    QTest::newRow("cubic with a shallow dip")
        << Values{0, 0.9999, -1, 1.0 / 3.0} << 0.0 << 2.0 << false;
    QTest::newRow("cubic beside its shallow dip")
        << Values{0, 0.9999, -1, 1.0 / 3.0} << 1.02 << 2.0 << true;
    // derivative t (t - 1) (t - 2)
    QTest::newRow("quartic with three turns") << Values{0, 0, 1, -1, 0.25} << -1.0 << 3.0 << false;
    QTest::newRow("quartic left of its turns") << Values{0, 0, 1, -1, 0.25} << -3.0 << -0.1 << true;
    QTest::newRow("quartic from turn to turn") << Values{0, 0, 1, -1, 0.25} << 0.0 << 1.0 << true;
    // derivative (t - 1)² (t + 1)
    QTest::newRow("quartic with a level place")
        << Values{0, 1, -0.5, -1.0 / 3.0, 0.25} << -0.5 << 3.0 << true;
    QTest::newRow("not a number") << Values{0, notANumber} << 0.0 << 1.0 << false;
    QTest::newRow("infinite") << Values{0, 1, infinity} << 0.0 << 1.0 << false;
}

void TestCurveFit::decidesMonotonicityFromTheDerivative()
{
    QFETCH(Values, coefficients);
    QFETCH(double, lower);
    QFETCH(double, upper);
    QFETCH(bool, monotonic);

    QCOMPARE(isMonotonic(coefficients, lower, upper), monotonic);
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

    const std::vector<bool> outliers = findOutliers(fitPolynomial(count(1, 5), y, 0), y);

    QCOMPARE(outliers, std::vector<bool>({false, false, outlier, false, false}));
}

void TestCurveFit::findsNoOutlierWithTooFewPoints()
{
    // 5 points and 3 coefficients leave 1 degree of freedom, 6 points leave 2
    const Values five = {1, 4, 9, 17, 25};
    const Values six = {1, 4, 9, 16, 25, 1000};

    const std::vector<bool> ofFive = findOutliers(fitPolynomial(count(1, 5), five, 2), five);
    const std::vector<bool> ofSix = findOutliers(fitPolynomial({}, six, 2), six);

    QCOMPARE(ofFive, std::vector<bool>(5, false));
    QCOMPARE(ofSix, std::vector<bool>(6, false));
}

void TestCurveFit::findsNoOutlierAmongRoundingErrors()
{
    const Values x = count(1, 20);
    Values y;
    for (const double value : x)
        y.push_back(3.0 + 0.1 * value);
    y[7] += 1e-10;

    const std::vector<bool> outliers = findOutliers(fitPolynomial(x, y, 1), y);

    QCOMPARE(outliers, std::vector<bool>(20, false));
}

void TestCurveFit::findsAnOutlierOfOtherwiseExactPoints()
{
    const Values x = count(1, 10);
    Values y = count(11, 20);
    y[4] += 0.5;

    const std::vector<bool> outliers = findOutliers(fitPolynomial(x, y, 1), y);

    std::vector<bool> expected(10, false);
    expected[4] = true;
    QCOMPARE(outliers, expected);
}

void TestCurveFit::leveragesSumToTheNumberOfCoefficients_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<double>("sum");

    QTest::newRow("linear") << 0 << 2.0;
    QTest::newRow("quadratic") << 1 << 3.0;
    QTest::newRow("cubic") << 2 << 4.0;
    QTest::newRow("quartic") << 3 << 5.0;
    QTest::newRow("four parameters") << 4 << 4.0;
    QTest::newRow("five parameters") << 5 << 5.0;
}

void TestCurveFit::leveragesSumToTheNumberOfCoefficients()
{
    QFETCH(int, method);
    QFETCH(double, sum);
    const Values x = {1, 2, 4, 8, 16, 32, 64, 128};
    const Values y = {79, 75, 68, 57, 43, 30, 20, 13};

    const Fit fit = fitNumbered(method, x, y);

    QVERIFY(fit.converged);
    QVERIFY(std::abs(std::accumulate(fit.leverages.begin(), fit.leverages.end(), -sum)) < 1e-12);
}

QTEST_GUILESS_MAIN(TestCurveFit)
#include "tst_curvefit.moc"
