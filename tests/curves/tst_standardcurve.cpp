// SPDX-License-Identifier: MIT
/// The standard curve behind the maker's interface: axes, methods, validity, points and flags.

#include "coagulation/zucore/assaytemplate.h"
#include "coagulation/zucore/standardcurve.h"

#include <QTest>

#include <Eigen/SVD>

#include <cmath>
#include <limits>
#include <random>

using coagulation::AssayTemplate;
using coagulation::StandardCurve;
using coagulation::StdPoint;
using zu::Function;
using zu::RegressionMethod;

using Values = std::vector<double>;
using Points = QList<StdPoint>;

Q_DECLARE_METATYPE(Values)
Q_DECLARE_METATYPE(StdPoint)

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

Points points(const Values &x, const Values &y)
{
    Points points;
    for (std::size_t i = 0; i < x.size(); ++i)
        points << StdPoint{x[i], y[i], 0.0, 0};
    return points;
}

/// A strictly monotonic curve of a method on given axes, and points that lie exactly on it.
class RandomCurve {
public:
    RandomCurve(std::mt19937 &generator, RegressionMethod curveMethod, Function xFunction,
                Function yFunction)
        : random(generator)
        , method(curveMethod)
        , xFun(xFunction)
        , yFun(yFunction)
    {
        if (method == RegressionMethod::Logistic4)
            makeLogistic();
        else
            makeLine();
        for (const double value : x)
            y.push_back(fromAxis(model(value)));
    }

    /// \return derivatives of the model by its coefficients, a row a point
    Eigen::MatrixXd jacobian() const
    {
        Eigen::MatrixXd jacobian(static_cast<Eigen::Index>(x.size()),
                                 static_cast<Eigen::Index>(coefficients.size()));
        for (Eigen::Index i = 0; i < jacobian.rows(); ++i) {
            const Values row = derivatives(x[static_cast<std::size_t>(i)]);
            for (Eigen::Index k = 0; k < jacobian.cols(); ++k)
                jacobian(i, k) = row[static_cast<std::size_t>(k)];
        }
        return jacobian;
    }

    /// \return the points' y on the y axis
    Eigen::VectorXd onAxis() const
    {
        Eigen::VectorXd values(static_cast<Eigen::Index>(x.size()));
        for (Eigen::Index i = 0; i < values.size(); ++i)
            values[i] = model(x[static_cast<std::size_t>(i)]);
        return values;
    }

    double toAxis(double value) const { return yFun == Function::Log ? std::log10(value) : value; }

    Values coefficients;
    Values x;
    Values y;

private:
    double uniform(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(random);
    }

    double fromAxis(double value) const
    {
        return yFun == Function::Log ? std::pow(10.0, value) : value;
    }

    double toXAxis(double value) const { return xFun == Function::Log ? std::log10(value) : value; }

    double fromXAxis(double t) const { return xFun == Function::Log ? std::pow(10.0, t) : t; }

    double model(double atX) const
    {
        if (method == RegressionMethod::Linear)
            return coefficients[0] + coefficients[1] * toXAxis(atX);
        return coefficients[3]
            + (coefficients[0] - coefficients[3])
            / (1.0 + std::pow(atX / coefficients[2], coefficients[1]));
    }

    Values derivatives(double atX) const
    {
        if (method == RegressionMethod::Linear)
            return {1.0, toXAxis(atX)};
        const double b = coefficients[1];
        const double c = coefficients[2];
        const double height = coefficients[0] - coefficients[3];
        const double ratio = std::pow(atX / c, b);
        const double g = 1.0 / (1.0 + ratio);
        const double slope = -height * g / (1.0 + ratio) * ratio;
        return {g, slope * std::log(atX / c), -slope * b / c, 1.0 - g};
    }

    void makeLogistic()
    {
        const double a = uniform(-1.0, 2.0);
        const double d = a + (uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0) * uniform(0.5, 3.0);
        const double b = uniform(0.5, 4.0);
        const double c = std::pow(10.0, uniform(-2.0, 3.0));
        coefficients = {a, b, c, d};

        // from 2 % to 98 % of the height, evenly on the logarithmic axis
        constexpr int count = 7;
        const double end = std::log(1.0 / 0.02 - 1.0) / b;
        for (int i = 0; i < count; ++i)
            x.push_back(c * std::exp(std::lerp(-end, end, i / (count - 1.0))));
    }

    void makeLine()
    {
        const double slope = (uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0) * uniform(0.2, 2.0);
        coefficients = {uniform(-0.5, 0.5), slope};
        const double first = uniform(0.1, 1.0);
        const double last = first + uniform(0.5, 2.0);
        constexpr int count = 5;
        for (int i = 0; i < count; ++i)
            x.push_back(fromXAxis(std::lerp(first, last, i / (count - 1.0))));
    }

    std::mt19937 &random;
    RegressionMethod method;
    Function xFun;
    Function yFun;
};

/// Numbers that a database may hold, but that are no method of this library.
const QList<int> otherMethods = {1, 2, 3, 5, -1, 99};

/// A curve with numbers that no fit would give, to see what an update leaves alone.
void fillWithOldNumbers(StandardCurve &curve)
{
    curve.setCoefficient({101.0, 102.0, 103.0, 104.0, 105.0});
    curve.setCorrelation(-7.0);
    curve.setValid(true);
}

Values coefficients(const StandardCurve &curve)
{
    Values values;
    for (int i = 0; i < 5; ++i)
        values.push_back(curve.coefficient(i));
    return values;
}

QList<qint32> flags(const StandardCurve &curve, int count)
{
    QList<qint32> flags;
    for (int i = 0; i < count; ++i)
        flags << curve.point(i).flags;
    return flags;
}

} // namespace

class TestStandardCurve : public QObject {
    Q_OBJECT

private slots:
    void keepsWhatIsSet();
    void beginsEmptyAndInvalid();
    void tellsTheNumberOfCoefficients_data();
    void tellsTheNumberOfCoefficients();
    void readsDisplayFunctions_data();
    void readsDisplayFunctions();

    void givesAnExactCurveBack_data();
    void givesAnExactCurveBack();
    void fitsALineByHand_data();
    void fitsALineByHand();
    void fitsALogisticAlikeOnBothXAxes();

    void leavesEverythingOfAnUnknownMethod_data();
    void leavesEverythingOfAnUnknownMethod();
    void neverMakesAnUnknownFunctionValid_data();
    void neverMakesAnUnknownFunctionValid();
    void isValidFromTheLeastCorrelationOn_data();
    void isValidFromTheLeastCorrelationOn();
    void isInvalidWhenItCannotBeTrusted_data();
    void isInvalidWhenItCannotBeTrusted();
    void leavesAllNumbersWhenInvalid();

    void excludesPointsWithoutATransform_data();
    void excludesPointsWithoutATransform();
    void flagsAnOutlier();
    void clearsFlagsThatNoLongerHold();
    void keepsFlagsThatItDoesNotKnow();
    void endsForAnyNumbers_data();
    void endsForAnyNumbers();
};

void TestStandardCurve::keepsWhatIsSet()
{
    StandardCurve curve(nullptr, nullptr);

    curve.setName("PT-FIB");
    curve.setXUnit("s");
    curve.setYUnit("g/l");
    curve.setDate(QDate(2016, 5, 9));
    curve.setLotsNum("R1603,R1604");
    curve.setCorrelation(0.5);
    curve.setXDispFun(Function::Log);
    curve.setYDispFun(static_cast<Function>(7));
    curve.setCoefficient({1.0, 2.0});
    curve.setValid(true);
    curve.setPoints({StdPoint{1.0, 2.0, 3.0, 4}});

    QCOMPARE(curve.name(), QString("PT-FIB"));
    QCOMPARE(curve.xUnit(), QString("s"));
    QCOMPARE(curve.yUnit(), QString("g/l"));
    QCOMPARE(curve.date(), QDate(2016, 5, 9));
    QCOMPARE(curve.lotsNum(), QString("R1603,R1604"));
    QCOMPARE(curve.correlation(), 0.5);
    QCOMPARE(curve.xDispFun(), Function::Log);
    QCOMPARE(static_cast<int>(curve.yDispFun()), 7);
    QCOMPARE(coefficients(curve), Values({1.0, 2.0, 0.0, 0.0, 0.0}));
    QVERIFY(curve.isValid());
    QCOMPARE(curve.point(0).x, 1.0);
    QCOMPARE(curve.point(0).y, 2.0);
    QCOMPARE(curve.point(0).z, 3.0);
    QCOMPARE(curve.point(0).flags, 4);
    QCOMPARE(curve.point(1).flags, 0);
}

void TestStandardCurve::beginsEmptyAndInvalid()
{
    StandardCurve curve(nullptr, nullptr);

    QVERIFY(!curve.isValid());
    QCOMPARE(curve.coefficientCount(), 2);
    QCOMPARE(curve.coefficient(0), 0.0);
}

void TestStandardCurve::tellsTheNumberOfCoefficients_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("count");

    QTest::newRow("linear") << 0 << 2;
    QTest::newRow("four-parameter logistic") << 4 << 4;
    for (const int method : otherMethods)
        QTest::addRow("unknown: %d", method) << method << 5;
}

void TestStandardCurve::tellsTheNumberOfCoefficients()
{
    QFETCH(int, method);
    QFETCH(int, count);
    StandardCurve curve(nullptr, nullptr);

    curve.setMethod(static_cast<RegressionMethod>(method));

    QCOMPARE(curve.coefficientCount(), count);
}

void TestStandardCurve::readsDisplayFunctions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("function");

    QTest::newRow("null") << QString() << 0;
    QTest::newRow("empty") << QString("") << 0;
    QTest::newRow("Linear") << QString("Linear") << 0;
    QTest::newRow("Log") << QString("Log") << 1;
    QTest::newRow("lower case") << QString("log") << 0;
    QTest::newRow("blank") << QString("Log ") << 0;
    QTest::newRow("other") << QString("Logit") << 0;
}

void TestStandardCurve::readsDisplayFunctions()
{
    QFETCH(QString, text);
    QFETCH(int, function);
    AssayTemplate::Calibration byX;
    AssayTemplate::Calibration byY;

    byX.dispX = text;
    byX.dispY = "Log";
    byY.dispX = "Log";
    byY.dispY = text;

    QCOMPARE(static_cast<int>(byX.dispFunX()), function);
    QCOMPARE(byX.dispFunY(), Function::Log);
    QCOMPARE(byY.dispFunX(), Function::Log);
    QCOMPARE(static_cast<int>(byY.dispFunY()), function);
}

void TestStandardCurve::givesAnExactCurveBack_data()
{
    QTest::addColumn<RegressionMethod>("method");
    QTest::addColumn<Function>("xFun");
    QTest::addColumn<Function>("yFun");

    for (const RegressionMethod method : {RegressionMethod::Linear, RegressionMethod::Logistic4}) {
        for (const Function xFun : {Function::Linear, Function::Log}) {
            for (const Function yFun : {Function::Linear, Function::Log})
                QTest::addRow("method %d, x %d, y %d", static_cast<int>(method),
                              static_cast<int>(xFun), static_cast<int>(yFun))
                    << method << xFun << yFun;
        }
    }
}

/// Shows: CUR-5
void TestStandardCurve::givesAnExactCurveBack()
{
    QFETCH(RegressionMethod, method);
    QFETCH(Function, xFun);
    QFETCH(Function, yFun);
    std::mt19937 random(1603);

    for (int i = 0; i < 1000; ++i) {
        const RandomCurve truth(random, method, xFun, yFun);
        StandardCurve curve(nullptr, nullptr);
        curve.setMethod(method);
        curve.setXFun(xFun);
        curve.setYFun(yFun);
        curve.setPoints(points(truth.x, truth.y));

        curve.update();

        QVERIFY2(curve.isValid(), qPrintable(QString::number(i)));
        const Eigen::MatrixXd jacobian = truth.jacobian();
        const Eigen::VectorXd lengths = jacobian.colwise().norm();
        const Eigen::MatrixXd scaled = jacobian * lengths.cwiseInverse().asDiagonal();
        const Eigen::VectorXd singularValues = scaled.jacobiSvd().singularValues();
        const double condition = singularValues.maxCoeff() / singularValues.minCoeff();
        const Eigen::VectorXd onAxis = truth.onAxis();
        double squaredError = 0.0;
        for (std::size_t k = 0; k < truth.coefficients.size(); ++k) {
            const double error = curve.coefficient(static_cast<int>(k)) - truth.coefficients[k];
            squaredError += std::pow(error * lengths[static_cast<Eigen::Index>(k)], 2);
        }
        QVERIFY2(std::sqrt(squaredError) <= 100.0 * epsilon * condition * onAxis.norm(),
                 qPrintable(QString("curve %1: error %2, allowed %3")
                                .arg(i)
                                .arg(std::sqrt(squaredError))
                                .arg(100.0 * epsilon * condition * onAxis.norm())));
        const double range = onAxis.maxCoeff() - onAxis.minCoeff();
        for (Eigen::Index k = 0; k < onAxis.size(); ++k) {
            const StdPoint point = curve.point(static_cast<int>(k));
            QVERIFY(std::abs(truth.toAxis(point.z) - onAxis[k]) <= 1e-10 * range);
            QCOMPARE(point.flags, 0);
        }
        QVERIFY(curve.correlation() > 1.0 - 1e-12 && curve.correlation() <= 1.0);
    }
}

void TestStandardCurve::fitsALineByHand_data()
{
    QTest::addColumn<Function>("xFun");
    QTest::addColumn<Function>("yFun");
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");
    QTest::addColumn<Values>("z");

    // On the axes: x 1, 2, 3 and y 1.7, 2, 2.9, so y = 1 + 0.6 x, R² = 12/13.
    QTest::newRow("linear") << Function::Linear << Function::Linear << Values{1, 2, 3}
                            << Values{1.7, 2.0, 2.9} << Values{1.6, 2.2, 2.8};
    QTest::newRow("logarithmic x") << Function::Log << Function::Linear << Values{10, 100, 1000}
                                   << Values{1.7, 2.0, 2.9} << Values{1.6, 2.2, 2.8};
    const Values powers = {50.118723362727229, 100.0, 794.32823472428150};
    const Values fitted = {39.810717055349725, 158.48931924611135, 630.95734448019325};
    QTest::newRow("logarithmic y")
        << Function::Linear << Function::Log << Values{1, 2, 3} << powers << fitted;
    QTest::newRow("both logarithmic")
        << Function::Log << Function::Log << Values{10, 100, 1000} << powers << fitted;
}

void TestStandardCurve::fitsALineByHand()
{
    QFETCH(Function, xFun);
    QFETCH(Function, yFun);
    QFETCH(Values, x);
    QFETCH(Values, y);
    QFETCH(Values, z);
    StandardCurve curve(nullptr, nullptr);
    curve.setXFun(xFun);
    curve.setYFun(yFun);
    curve.setPoints(points(x, y));

    curve.update();

    QVERIFY(curve.isValid());
    QCOMPARE(curve.coefficient(0), 1.0);
    QCOMPARE(curve.coefficient(1), 0.6);
    QCOMPARE(curve.correlation(), std::sqrt(12.0 / 13.0));
    for (std::size_t i = 0; i < z.size(); ++i)
        QCOMPARE(curve.point(static_cast<int>(i)).z, z[i]);
}

void TestStandardCurve::fitsALogisticAlikeOnBothXAxes()
{
    const Points measured = points({1, 2, 4, 8, 16, 32, 64}, {79, 75, 68, 57, 43, 30, 20});
    StandardCurve linear(nullptr, nullptr);
    linear.setMethod(RegressionMethod::Logistic4);
    linear.setPoints(measured);
    StandardCurve logarithmic(nullptr, nullptr);
    logarithmic.setMethod(RegressionMethod::Logistic4);
    logarithmic.setXFun(Function::Log);
    logarithmic.setPoints(measured);

    linear.update();
    logarithmic.update();

    QVERIFY(linear.isValid() && logarithmic.isValid());
    QCOMPARE(coefficients(logarithmic), coefficients(linear));
    QVERIFY(linear.coefficient(1) > 0.0);
}

void TestStandardCurve::leavesEverythingOfAnUnknownMethod_data()
{
    QTest::addColumn<int>("method");

    for (const int method : otherMethods)
        QTest::addRow("%d", method) << method;
}

/// Shows: CUR-6
void TestStandardCurve::leavesEverythingOfAnUnknownMethod()
{
    QFETCH(int, method);
    StandardCurve curve(nullptr, nullptr);
    fillWithOldNumbers(curve);
    curve.setMethod(static_cast<RegressionMethod>(method));
    // which lie on a line and on a parabola and cubic without a bend
    curve.setPoints({StdPoint{1, 1, 6.5, 2}, StdPoint{2, 2, 7.5, 1}, StdPoint{3, 3, 8.5, 0},
                     StdPoint{4, 4, 9.5, 64}, StdPoint{5, 5, 10.5, 3}, StdPoint{6, 6, 11.5, 0}});

    curve.update();

    QVERIFY(!curve.isValid());
    QCOMPARE(coefficients(curve), Values({101, 102, 103, 104, 105}));
    QCOMPARE(curve.correlation(), -7.0);
    QCOMPARE(flags(curve, 6), QList<qint32>({2, 1, 0, 64, 3, 0}));
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(curve.point(i).x, i + 1.0);
        QCOMPARE(curve.point(i).y, i + 1.0);
        QCOMPARE(curve.point(i).z, i + 6.5);
    }
}

void TestStandardCurve::neverMakesAnUnknownFunctionValid_data()
{
    QTest::addColumn<int>("xFun");
    QTest::addColumn<int>("yFun");

    QTest::newRow("x function") << 2 << 0;
    QTest::newRow("y function") << 0 << -1;
}

void TestStandardCurve::neverMakesAnUnknownFunctionValid()
{
    QFETCH(int, xFun);
    QFETCH(int, yFun);
    StandardCurve curve(nullptr, nullptr);
    fillWithOldNumbers(curve);
    curve.setXFun(static_cast<Function>(xFun));
    curve.setYFun(static_cast<Function>(yFun));
    curve.setPoints(points({1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}));

    curve.update();

    QVERIFY(!curve.isValid());
    QCOMPARE(coefficients(curve), Values({101, 102, 103, 104, 105}));
}

void TestStandardCurve::isValidFromTheLeastCorrelationOn_data()
{
    QTest::addColumn<RegressionMethod>("method");
    QTest::addColumn<Function>("yFun");
    QTest::addColumn<double>("correlation");
    QTest::addColumn<bool>("valid");

    for (const RegressionMethod method : {RegressionMethod::Linear, RegressionMethod::Logistic4}) {
        for (const Function yFun : {Function::Linear, Function::Log}) {
            const QByteArray name = QString("method %1, y %2: ")
                                        .arg(static_cast<int>(method))
                                        .arg(static_cast<int>(yFun))
                                        .toLatin1();
            QTest::newRow(name + "just below") << method << yFun << 0.9499 << false;
            QTest::newRow(name + "just above") << method << yFun << 0.9501 << true;
        }
    }
}

/// Shows: CUR-7
void TestStandardCurve::isValidFromTheLeastCorrelationOn()
{
    QFETCH(RegressionMethod, method);
    QFETCH(Function, yFun);
    QFETCH(double, correlation);
    QFETCH(bool, valid);
    // Two points above each other at each x, at the same distance from a curve of the method on the y
    // axis: the fit goes through the middle. The distance follows from the correlation.
    std::mt19937 random(1604);
    const RandomCurve truth(random, method, Function::Linear, Function::Linear);
    const Eigen::VectorXd middle = truth.onAxis();
    const double spread = (middle.array() - middle.mean()).square().mean();
    const double distance = std::sqrt(spread * (1.0 / (correlation * correlation) - 1.0));
    Points measured;
    for (Eigen::Index i = 0; i < middle.size(); ++i) {
        for (const double onAxis : {middle[i] - distance, middle[i] + distance})
            measured << StdPoint{truth.x[static_cast<std::size_t>(i)],
                                 yFun == Function::Log ? std::pow(10.0, onAxis) : onAxis, -1.0, 0};
    }
    StandardCurve curve(nullptr, nullptr);
    fillWithOldNumbers(curve);
    curve.setMethod(method);
    curve.setYFun(yFun);
    curve.setPoints(measured);

    curve.update();

    QCOMPARE(curve.isValid(), valid);
    QCOMPARE(curve.correlation(), valid ? correlation : -7.0);
    QCOMPARE(curve.point(0).z == -1.0, !valid);
    QCOMPARE(coefficients(curve) == Values({101, 102, 103, 104, 105}), !valid);
}

void TestStandardCurve::isInvalidWhenItCannotBeTrusted_data()
{
    QTest::addColumn<RegressionMethod>("method");
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");

    QTest::newRow("no points") << RegressionMethod::Linear << Values{} << Values{};
    QTest::newRow("one point") << RegressionMethod::Linear << Values{1} << Values{1};
    QTest::newRow("one distinct x")
        << RegressionMethod::Linear << Values{2, 2, 2} << Values{1, 2, 3};
    QTest::newRow("level line") << RegressionMethod::Linear << Values{1, 2, 3} << Values{5, 5, 5};
    // correlation 0.26, and squares that no number holds, of the differences to the mean alone
    QTest::newRow("no line, in the largest numbers")
        << RegressionMethod::Linear << Values{1, 2, 3, 4}
        << Values{0.0, 1.6 * 8.9e153, -0.2 * 8.9e153, 1.2 * 8.9e153};
    QTest::newRow("three points for four parameters")
        << RegressionMethod::Logistic4 << Values{1, 2, 4} << Values{1, 2, 3};
    QTest::newRow("logistic without a plateau")
        << RegressionMethod::Logistic4 << Values{1, 2, 4, 8, 16, 32} << Values{1, 2, 4, 8, 16, 32};
}

/// Shows: CUR-7
void TestStandardCurve::isInvalidWhenItCannotBeTrusted()
{
    QFETCH(RegressionMethod, method);
    QFETCH(Values, x);
    QFETCH(Values, y);
    StandardCurve curve(nullptr, nullptr);
    fillWithOldNumbers(curve);
    curve.setMethod(method);
    curve.setPoints(points(x, y));

    curve.update();

    QVERIFY(!curve.isValid());
}

/// Shows: CUR-6
void TestStandardCurve::leavesAllNumbersWhenInvalid()
{
    StandardCurve curve(nullptr, nullptr);
    fillWithOldNumbers(curve);
    curve.setPoints({StdPoint{1.0, 5.0, 6.5, 2}, StdPoint{1.0, 6.0, 7.5, 1},
                     StdPoint{notANumber, 7.0, 8.5, 0}});

    curve.update();

    QVERIFY(!curve.isValid());
    QCOMPARE(coefficients(curve), Values({101, 102, 103, 104, 105}));
    QCOMPARE(curve.correlation(), -7.0);
    QCOMPARE(flags(curve, 3), QList<qint32>({2, 1, 0}));
    QCOMPARE(curve.point(0).z, 6.5);
    QCOMPARE(curve.point(1).z, 7.5);
    QCOMPARE(curve.point(2).z, 8.5);
}

void TestStandardCurve::excludesPointsWithoutATransform_data()
{
    QTest::addColumn<RegressionMethod>("method");
    QTest::addColumn<Function>("xFun");
    QTest::addColumn<Function>("yFun");
    QTest::addColumn<StdPoint>("point");
    QTest::addColumn<bool>("excluded");

    const auto linear = Function::Linear;
    const auto log = Function::Log;
    const auto line = RegressionMethod::Linear;
    const auto logistic = RegressionMethod::Logistic4;
    QTest::newRow("line, x 0") << line << linear << linear << StdPoint{0, 80, -1, 0} << false;
    QTest::newRow("line, x below 0")
        << line << linear << linear << StdPoint{-1, 80, -1, 0} << false;
    QTest::newRow("line, log x, x 0") << line << log << linear << StdPoint{0, 80, -1, 0} << true;
    QTest::newRow("line, log x, x below 0")
        << line << log << linear << StdPoint{-1, 80, -1, 0} << true;
    QTest::newRow("line, log y, y 0") << line << linear << log << StdPoint{3, 0, -1, 0} << true;
    QTest::newRow("line, log y, y below 0")
        << line << linear << log << StdPoint{3, -2, -1, 0} << true;
    QTest::newRow("line, y below 0")
        << line << linear << linear << StdPoint{30, -10, -1, 0} << false;
    QTest::newRow("line, x not a number")
        << line << linear << linear << StdPoint{notANumber, 8, -1, 0} << true;
    QTest::newRow("line, y infinite")
        << line << linear << linear << StdPoint{3, infinity, -1, 0} << true;
    QTest::newRow("logistic, x 0")
        << logistic << linear << linear << StdPoint{0, 81, -1, 0} << false;
    QTest::newRow("logistic, x below 0")
        << logistic << linear << linear << StdPoint{-1, 81, -1, 0} << true;
    QTest::newRow("logistic, log x, x 0")
        << logistic << log << linear << StdPoint{0, 81, -1, 0} << true;
    QTest::newRow("logistic, log y, y 0")
        << logistic << linear << log << StdPoint{3, 0, -1, 0} << true;
}

/// Shows: CUR-8
void TestStandardCurve::excludesPointsWithoutATransform()
{
    QFETCH(RegressionMethod, method);
    QFETCH(Function, xFun);
    QFETCH(Function, yFun);
    QFETCH(StdPoint, point);
    QFETCH(bool, excluded);
    const Points good = method == RegressionMethod::Linear
        ? points({10, 11, 12, 13, 14, 15, 16, 17}, {50, 47.1, 43.9, 41, 38, 35.1, 31.9, 29})
        : points({1, 2, 4, 8, 16, 32, 64, 128}, {79, 75, 68, 57, 43, 30, 20, 13});
    StandardCurve without(nullptr, nullptr);
    StandardCurve curve(nullptr, nullptr);
    for (StandardCurve *each : {&without, &curve}) {
        each->setMethod(method);
        each->setXFun(xFun);
        each->setYFun(yFun);
    }
    without.setPoints(good);
    curve.setPoints(Points{point} + good);

    without.update();
    curve.update();

    QVERIFY(without.isValid() && curve.isValid());
    QCOMPARE(curve.point(0).flags & StdPoint::Excluded, excluded ? 1 : 0);
    QCOMPARE(curve.point(0).z == -1.0, excluded);
    QCOMPARE(coefficients(curve) == coefficients(without), excluded);
}

/// Shows: CUR-8
void TestStandardCurve::flagsAnOutlier()
{
    StandardCurve curve(nullptr, nullptr);
    curve.setPoints(
        points({1, 2, 3, 4, 5, 6, 7, 8}, {1.01, 2.02, 2.98, 4.0, 6.0, 5.99, 7.01, 8.0}));

    curve.update();

    QVERIFY(curve.isValid());
    QCOMPARE(flags(curve, 8), QList<qint32>({0, 0, 0, 0, 2, 0, 0, 0}));
}

void TestStandardCurve::clearsFlagsThatNoLongerHold()
{
    StandardCurve curve(nullptr, nullptr);
    curve.setPoints({StdPoint{1, 1, 0, 1}, StdPoint{2, 2.01, 0, 2}, StdPoint{3, 3, 0, 3},
                     StdPoint{4, 3.99, 0, 0}});

    curve.update();

    QVERIFY(curve.isValid());
    QCOMPARE(flags(curve, 4), QList<qint32>({0, 0, 0, 0}));
}

void TestStandardCurve::keepsFlagsThatItDoesNotKnow()
{
    constexpr qint32 highest = std::numeric_limits<qint32>::min();
    StandardCurve curve(nullptr, nullptr);
    curve.setXFun(Function::Log);
    curve.setPoints({StdPoint{1, 1, 0, 4}, StdPoint{10, 2.01, 0, 0x70 | 2},
                     StdPoint{100, 3, 0, highest | 1}, StdPoint{1000, 3.99, 0, 0},
                     StdPoint{0, 3.99, 0, 8 | 2}});

    curve.update();

    QVERIFY(curve.isValid());
    QCOMPARE(flags(curve, 5), QList<qint32>({4, 0x70, highest, 0, 8 | 1}));
}

void TestStandardCurve::endsForAnyNumbers_data()
{
    QTest::addColumn<Values>("x");
    QTest::addColumn<Values>("y");

    const Values good = {1, 2, 4, 8, 16, 32, 64};
    QTest::newRow("all not a number") << Values(7, notANumber) << Values(7, notANumber);
    QTest::newRow("all infinite") << Values(7, infinity) << Values(7, -infinity);
    QTest::newRow("all zero") << Values(7, 0.0) << Values(7, 0.0);
    QTest::newRow("all negative") << Values{-1, -2, -3, -4, -5, -6, -7} << good;
    QTest::newRow("y all 1e300") << good << Values(7, 1e300);
    QTest::newRow("y up to 1e300") << good << Values{1, 1e50, 1e100, 1e150, 1e200, 1e250, 1e300};
    QTest::newRow("y of both signs to 1e300")
        << good << Values{-1e300, -1e200, -1, 0, 1, 1e200, 1e300};
    QTest::newRow("x up to 1e300") << Values{1, 1e50, 1e100, 1e150, 1e200, 1e250, 1e300} << good;
    QTest::newRow("smallest numbers")
        << Values{5e-324, 1e-323, 1.5e-323, 2e-323, 2.5e-323, 3e-323, 3.5e-323} << good;
    QTest::newRow("y smallest numbers")
        << good << Values{5e-324, 1e-323, 1.5e-323, 2e-323, 2.5e-323, 3e-323, 3.5e-323};
    QTest::newRow("largest numbers") << Values(7, std::numeric_limits<double>::max())
                                     << Values(7, std::numeric_limits<double>::max());
    QTest::newRow("x that are alike beside a distant one")
        << Values{1, std::nextafter(1.0, 2.0), 1e300, 1e301, 1e302, 1e303, 1e304} << good;
    QTest::newRow("alternating") << good << Values{1, -1, 1, -1, 1, -1, 1};
    QTest::newRow("pairs") << Values{1, 1, 2, 2, 3, 3, 3} << Values{1, 2, 1, 2, 1, 2, 1};
}

/// Shows: CUR-8
void TestStandardCurve::endsForAnyNumbers()
{
    QFETCH(Values, x);
    QFETCH(Values, y);

    for (int method = -1; method <= 6; ++method) {
        for (const Function xFun : {Function::Linear, Function::Log}) {
            for (const Function yFun : {Function::Linear, Function::Log}) {
                StandardCurve curve(nullptr, nullptr);
                curve.setMethod(static_cast<RegressionMethod>(method));
                curve.setXFun(xFun);
                curve.setYFun(yFun);
                curve.setPoints(points(x, y));

                curve.update();

                if (curve.isValid()) {
                    for (int i = 0; i < curve.coefficientCount(); ++i)
                        QVERIFY(std::isfinite(curve.coefficient(i)));
                    QVERIFY(std::isfinite(curve.correlation()));
                }
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestStandardCurve)
#include "tst_standardcurve.moc"
