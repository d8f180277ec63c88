// SPDX-License-Identifier: MIT
/// Standard curves as functions of their stored coefficients.

#include "samplereport.h"

#include "coagulation/report/curvefunction.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace coagulation::report;

namespace {

using Coefficients = std::array<std::optional<double>, 5>;

constexpr double infinite = std::numeric_limits<double>::infinity();

CurveFacts curveOf(int method, int xFunction, int yFunction)
{
    CurveFacts curve;
    curve.method = method;
    curve.xFunction = xFunction;
    curve.yFunction = yFunction;
    return curve;
}

CurveState stateOf(const Coefficients &coefficients)
{
    return {true, {}, 1.0, coefficients};
}

/// \return a straight line from before to after over 1 to 3, both through the stored values of their points
CurveFacts lineFrom(const Coefficients &before, const Coefficients &after)
{
    CurveFacts curve = curveOf(0, 0, 0);
    curve.before = stateOf(before);
    curve.after = stateOf(after);
    for (const double x : {1.0, 3.0}) {
        const auto at = [x](const Coefficients &k) { return *k[0] + *k[1] * x; };
        curve.points << PointFacts{x, at(after), at(before), at(after)};
    }
    return curve;
}

} // namespace

class TestCurveFunction : public QObject {
    Q_OBJECT

private slots:
    void isTheFormulaOfItsMethod_data();
    void isTheFormulaOfItsMethod();
    void isUndefinedWhereItsFunctionsAre_data();
    void isUndefinedWhereItsFunctionsAre();
    void isNotMadeOfUselessCoefficients_data();
    void isNotMadeOfUselessCoefficients();
    void isNotMadeOfAnUnknownForm_data();
    void isNotMadeOfAnUnknownForm();
    void agreesToAMillionth_data();
    void agreesToAMillionth();
    void agreesWithNoPointsAtAll_data();
    void agreesWithNoPointsAtAll();
    void isNotComparedWithExcludedPoints();
    void reachesOverPointsInUse();
    void hasNoRangeWithoutPoints();
    void goesEvenlyAlongTheAxis_data();
    void goesEvenlyAlongTheAxis();

    void isDrawnBeforeAndAfter();
    void isNotDrawnInAnotherOrderOfCoefficients();
    void isDrawnBeforeAloneIfItsOwnPointsAgree();
    void isNotDrawnBeforeAloneIfNothingShowsItsForm();

    void differsByTheLargestShareOfTheResult_data();
    void differsByTheLargestShareOfTheResult();
    void differsByNothingIfOneCannotBeDrawn();
};

void TestCurveFunction::isTheFormulaOfItsMethod_data()
{
    QTest::addColumn<CurveFacts>("curve");
    QTest::addColumn<CurveState>("state");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");

    const CurveState line = stateOf({2.0, 3.0});
    QTest::newRow("line") << curveOf(0, 0, 0) << line << 10.0 << 32.0;
    QTest::newRow("line, log x") << curveOf(0, 1, 0) << line << 100.0 << 8.0;
    QTest::newRow("line, log y") << curveOf(0, 0, 1) << line << 1.0 << 1e5;
    QTest::newRow("line, both log") << curveOf(0, 1, 1) << line << 10.0 << 1e5;
    QTest::newRow("more coefficients than needed")
        << curveOf(0, 0, 0) << stateOf({2.0, 3.0, infinite, 1.0, 1.0}) << 10.0 << 32.0;
    const CurveState logistic = stateOf({1.0, 2.0, 4.0, 3.0});
    QTest::newRow("logistic, at 0") << curveOf(4, 0, 0) << logistic << 0.0 << 1.0;
    QTest::newRow("logistic, halfway") << curveOf(4, 0, 0) << logistic << 4.0 << 2.0;
    QTest::newRow("logistic, beyond") << curveOf(4, 0, 0) << logistic << 12.0 << 2.8;
    QTest::newRow("logistic, log x takes x itself") << curveOf(4, 1, 0) << logistic << 12.0 << 2.8;
    QTest::newRow("logistic, log y") << curveOf(4, 0, 1) << logistic << 4.0 << 100.0;
}

void TestCurveFunction::isTheFormulaOfItsMethod()
{
    QFETCH(CurveFacts, curve);
    QFETCH(CurveState, state);
    QFETCH(double, x);
    QFETCH(double, y);

    const std::optional<CurveFunction> function = functionOf(curve, state);

    QVERIFY(function);
    QCOMPARE((*function)(x), y);
}

void TestCurveFunction::isUndefinedWhereItsFunctionsAre_data()
{
    QTest::addColumn<CurveFacts>("curve");
    QTest::addColumn<double>("x");

    QTest::newRow("line, logarithm of 0") << curveOf(0, 1, 0) << 0.0;
    QTest::newRow("line, logarithm below 0") << curveOf(0, 1, 0) << -1.0;
    QTest::newRow("logistic, below 0") << curveOf(4, 0, 0) << -1.0;
    QTest::newRow("logistic, logarithm of 0") << curveOf(4, 1, 0) << 0.0;
}

void TestCurveFunction::isUndefinedWhereItsFunctionsAre()
{
    QFETCH(CurveFacts, curve);
    QFETCH(double, x);

    const std::optional<CurveFunction> function = functionOf(curve, stateOf({1.0, 2.0, 4.0, 3.0}));

    QVERIFY(function);
    QVERIFY(std::isnan((*function)(x)));
}

void TestCurveFunction::isNotMadeOfUselessCoefficients_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<CurveState>("state");

    QTest::newRow("line, none") << 0 << CurveState();
    QTest::newRow("line, one") << 0 << stateOf({1.0});
    QTest::newRow("line, no slope") << 0 << stateOf({1.0, 0.0});
    QTest::newRow("line, infinite") << 0 << stateOf({1.0, infinite});
    QTest::newRow("line, no number") << 0 << stateOf({std::nan(""), 1.0});
    QTest::newRow("logistic, three") << 4 << stateOf({1.0, 2.0, 4.0});
    QTest::newRow("logistic, all 0") << 4 << stateOf({0.0, 0.0, 0.0, 0.0, 0.0});
    QTest::newRow("logistic, level") << 4 << stateOf({1.0, 2.0, 4.0, 1.0});
    QTest::newRow("logistic, b of 0") << 4 << stateOf({1.0, 0.0, 4.0, 3.0});
    QTest::newRow("logistic, b below 0") << 4 << stateOf({1.0, -2.0, 4.0, 3.0});
    QTest::newRow("logistic, c of 0") << 4 << stateOf({1.0, 2.0, 0.0, 3.0});
    QTest::newRow("logistic, c below 0") << 4 << stateOf({1.0, 2.0, -4.0, 3.0});
    QTest::newRow("logistic, infinite") << 4 << stateOf({1.0, 2.0, 4.0, infinite});
}

void TestCurveFunction::isNotMadeOfUselessCoefficients()
{
    QFETCH(int, method);
    QFETCH(CurveState, state);

    QVERIFY(!functionOf(curveOf(method, 0, 0), state));
}

void TestCurveFunction::isNotMadeOfAnUnknownForm_data()
{
    QTest::addColumn<CurveFacts>("curve");

    CurveFacts curve = curveOf(0, 0, 0);
    curve.method.reset();
    QTest::newRow("no method") << curve;
    curve = curveOf(0, 0, 0);
    curve.xFunction.reset();
    QTest::newRow("no function of x") << curve;
    QTest::newRow("another method") << curveOf(1, 0, 0);
    QTest::newRow("another function of x") << curveOf(0, 2, 0);
    QTest::newRow("another function of y") << curveOf(4, 0, -1);
}

void TestCurveFunction::isNotMadeOfAnUnknownForm()
{
    QFETCH(CurveFacts, curve);

    QVERIFY(!functionOf(curve, stateOf({1.0, 2.0, 4.0, 3.0})));
}

void TestCurveFunction::agreesToAMillionth_data()
{
    QTest::addColumn<double>("stored");
    QTest::addColumn<bool>("agrees");

    QTest::newRow("the same") << 7.0 << true;
    QTest::newRow("half a millionth more") << 7.0 * (1.0 + 0.5e-6) << true;
    QTest::newRow("two millionths more") << 7.0 * (1.0 + 2e-6) << false;
    QTest::newRow("two millionths less") << 7.0 * (1.0 - 2e-6) << false;
    QTest::newRow("no number") << std::nan("") << false;
}

void TestCurveFunction::agreesToAMillionth()
{
    QFETCH(double, stored);
    QFETCH(bool, agrees);
    CurveFacts curve;
    curve.points << PointFacts{1.0, 0.0, std::nullopt, 7.0} << PointFacts{2.0, 0.0, 1.0, stored}
                 << PointFacts{3.0, 0.0, 1.0, std::nullopt};

    QCOMPARE(agreesWithPoints([](double) { return 7.0; }, curve), agrees);
}

void TestCurveFunction::agreesWithNoPointsAtAll_data()
{
    QTest::addColumn<CurveFacts>("curve");

    QTest::newRow("no points") << CurveFacts();
    CurveFacts curve;
    curve.points << PointFacts{1.0, 7.0, 7.0, std::nullopt};
    QTest::newRow("points without a stored result") << curve;
}

void TestCurveFunction::agreesWithNoPointsAtAll()
{
    QFETCH(CurveFacts, curve);

    QVERIFY(!agreesWithPoints([](double) { return 7.0; }, curve));
}

void TestCurveFunction::isNotComparedWithExcludedPoints()
{
    CurveFacts curve;
    curve.points << PointFacts{1.0, 7.0, {}, 7.0} << PointFacts{0.0, 7.0, {}, -1.0, true};

    QVERIFY(agreesWithPoints([](double) { return 7.0; }, curve));
}

void TestCurveFunction::reachesOverPointsInUse()
{
    CurveFacts curve;
    curve.points << PointFacts{4.0} << PointFacts{2.0} << PointFacts{9.0}
                 << PointFacts{100.0, 0.0, {}, {}, true} << PointFacts{infinite};

    const std::optional<Range> range = calibratedRange(curve);

    QVERIFY(range);
    QCOMPARE(range->from, 2.0);
    QCOMPARE(range->to, 9.0);
}

void TestCurveFunction::hasNoRangeWithoutPoints()
{
    CurveFacts curve;
    curve.points << PointFacts{100.0, 0.0, {}, {}, true};

    QVERIFY(!calibratedRange(curve));
}

void TestCurveFunction::goesEvenlyAlongTheAxis_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<bool>("logarithmic");
    QTest::addColumn<double>("middle");

    QTest::newRow("linear") << 1.0 << 100.0 << false << 50.5;
    QTest::newRow("logarithmic") << 1.0 << 100.0 << true << 10.0;
    QTest::newRow("logarithmic from 0") << 0.0 << 100.0 << true << 50.0;
    QTest::newRow("huge") << -1e308 << 1e308 << false << 0.0;
}

void TestCurveFunction::goesEvenlyAlongTheAxis()
{
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(bool, logarithmic);
    QFETCH(double, middle);

    QCOMPARE(Range({from, to}).at(0.5, logarithmic), middle);
}

void TestCurveFunction::isDrawnBeforeAndAfter()
{
    const DrawableCurves curves = drawable(lineFrom({1.0, 2.0}, {2.0, 4.0}));

    QCOMPARE(curves.before.value()(10.0), 21.0);
    QCOMPARE(curves.after.value()(10.0), 42.0);
}

void TestCurveFunction::isNotDrawnInAnotherOrderOfCoefficients()
{
    CurveFacts curve = lineFrom({1.0, 2.0}, {2.0, 4.0});
    std::swap(curve.before.coefficients[0], curve.before.coefficients[1]);
    std::swap(curve.after.coefficients[0], curve.after.coefficients[1]);

    const DrawableCurves curves = drawable(curve);

    QVERIFY(!curves.before);
    QVERIFY(!curves.after);
}

void TestCurveFunction::isDrawnBeforeAloneIfItsOwnPointsAgree()
{
    CurveFacts curve = lineFrom({1.0, 2.0}, {2.0, 4.0});
    curve.after.coefficients = {};

    const DrawableCurves curves = drawable(curve);

    QVERIFY(curves.before);
    QVERIFY(!curves.after);
}

void TestCurveFunction::isNotDrawnBeforeAloneIfNothingShowsItsForm()
{
    CurveFacts curve = lineFrom({1.0, 2.0}, {2.0, 4.0});
    curve.after.coefficients = {};
    for (PointFacts &point : curve.points)
        point.zBefore = -1.0;

    QVERIFY(!drawable(curve).before);
}

void TestCurveFunction::differsByTheLargestShareOfTheResult_data()
{
    QTest::addColumn<CurveFacts>("curve");
    QTest::addColumn<double>("difference");

    QTest::newRow("none") << lineFrom({1.0, 2.0}, {1.0, 2.0}) << 0.0;
    QTest::newRow("the same everywhere") << lineFrom({2.2, 4.4}, {2.0, 4.0}) << 10.0;
    QTest::newRow("most at the start") << lineFrom({1.0, 1.0}, {0.5, 1.0}) << 100.0 / 3.0;
    QTest::newRow("most at the end") << lineFrom({1.0, 2.0}, {1.0, 1.0}) << 75.0;
    QTest::newRow("results below 0") << lineFrom({-1.1, -1.1}, {-1.0, -1.0}) << 10.0;
    // The place in the middle, where a share has no meaning, does not count.
    QTest::newRow("a result of 0") << lineFrom({-4.0, 2.0}, {-2.0, 1.0}) << 100.0;

    CurveFacts logarithmic = sampleCurve();
    QTest::newRow("logarithmic axes")
        << logarithmic << 100.0 * (1.0 - std::pow(10.0, 0.02) * std::pow(50.0, -0.03));
    logarithmic.points = {PointFacts{10.0, 10.0, {}, 10.0}};
    QTest::newRow("one point") << logarithmic << 100.0 * (1.0 - std::pow(10.0, -0.01));
}

/// Shows: REP-14
void TestCurveFunction::differsByTheLargestShareOfTheResult()
{
    QFETCH(CurveFacts, curve);
    QFETCH(double, difference);
    // of which none is a place where the curves differ most
    curve.points.removeIf([](const PointFacts &point) { return point.outlier; });

    const std::optional<double> found = largestDifference(curve);

    QVERIFY(found);
    QVERIFY2(std::abs(*found - difference) < 1e-9, qPrintable(QString::number(*found, 'g', 17)));
}

void TestCurveFunction::differsByNothingIfOneCannotBeDrawn()
{
    CurveFacts curve = lineFrom({1.0, 2.0}, {2.0, 4.0});
    curve.before.coefficients = {};

    QVERIFY(!largestDifference(curve));
}

QTEST_GUILESS_MAIN(TestCurveFunction)
#include "tst_curvefunction.moc"
