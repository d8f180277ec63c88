// SPDX-License-Identifier: MIT
/// The standard curve behind the maker's interface: axes, methods, validity, points and flags.

#include "coagulation/zucore/assaytemplate.h"
#include "coagulation/zucore/curvefit.h"
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

bool isLogistic(RegressionMethod method)
{
    return method == RegressionMethod::Logistic4 || method == RegressionMethod::Logistic5;
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
        if (isLogistic(method))
            makeLogistic();
        else
            makePolynomial(static_cast<int>(method) + 1);
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

    double fromXAxis(double t) const { return xFun == Function::Log ? std::pow(10.0, t) : t; }

    double model(double atX) const
    {
        if (!isLogistic(method))
            return coagulation::curvefit::polynomial(coefficients,
                                                     xFun == Function::Log ? std::log10(atX) : atX);
        const double e = coefficients.size() > 4 ? coefficients[4] : 1.0;
        return coefficients[3]
            + (coefficients[0] - coefficients[3])
            / std::pow(1.0 + std::pow(atX / coefficients[2], coefficients[1]), e);
    }

    Values derivatives(double atX) const
    {
        Values row;
        if (!isLogistic(method)) {
            const double t = xFun == Function::Log ? std::log10(atX) : atX;
            for (std::size_t power = 0; power < coefficients.size(); ++power)
                row.push_back(std::pow(t, power));
            return row;
        }
        const double b = coefficients[1];
        const double c = coefficients[2];
        const double height = coefficients[0] - coefficients[3];
        const double e = coefficients.size() > 4 ? coefficients[4] : 1.0;
        const double ratio = std::pow(atX / c, b);
        const double g = std::pow(1.0 + ratio, -e);
        const double slope = -e * height * g / (1.0 + ratio) * ratio;
        row = {g, slope * std::log(atX / c), -slope * b / c, 1.0 - g};
        if (coefficients.size() > 4)
            row.push_back(-height * g * std::log1p(ratio));
        return row;
    }

    void makeLogistic()
    {
        const bool asymmetric = method == RegressionMethod::Logistic5;
        const double a = uniform(-1.0, 2.0);
        const double d = a + (uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0) * uniform(0.5, 3.0);
        const double negative = asymmetric && uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0;
        const double b = negative * uniform(0.5, 4.0);
        const double c = std::pow(10.0, uniform(-2.0, 3.0));
        coefficients = {a, b, c, d};
        const double e = asymmetric ? std::pow(10.0, uniform(-0.4, 0.4)) : 1.0;
        if (asymmetric)
            coefficients.push_back(e);

        // from 2 % to 98 % of the height, evenly on the logarithmic axis
        const int count = asymmetric ? 9 : 7;
        const auto lnXAt = [&](double share) {
            return std::log(c) + std::log(std::pow(share, -1.0 / e) - 1.0) / b;
        };
        for (int i = 0; i < count; ++i)
            x.push_back(std::exp(std::lerp(lnXAt(0.02), lnXAt(0.98), i / (count - 1.0))));
    }

    void makePolynomial(int degree)
    {
        const double first = uniform(0.1, 1.0);
        const double last = first + uniform(0.5, 2.0);

        // The derivative is a sum of Bernstein's polynomials u^i (1 - u)^(m - i), u = 0 to 1 over the
        // points, with coefficients of one sign: it has no zero there.
        Values derivative(static_cast<std::size_t>(degree), 0.0);
        for (int i = 0; i < degree; ++i) {
            Values term = {uniform(0.2, 1.0)};
            for (int factor = 0; factor < degree - 1; ++factor)
                term = product(term, factor < i ? Values{0.0, 1.0} : Values{1.0, -1.0});
            for (std::size_t power = 0; power < term.size(); ++power)
                derivative[power] += term[power];
        }
        Values inU = {uniform(-0.5, 0.5)};
        for (std::size_t power = 0; power < derivative.size(); ++power)
            inU.push_back(derivative[power] / static_cast<double>(power + 1));

        const Values u = {-first / (last - first), 1.0 / (last - first)};
        const double sign = uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0;
        coefficients.assign(inU.size(), 0.0);
        Values power = {1.0};
        for (const double coefficient : inU) {
            for (std::size_t i = 0; i < power.size(); ++i)
                coefficients[i] += sign * coefficient * power[i];
            power = product(power, u);
        }

        const int count = degree + 4;
        for (int i = 0; i < count; ++i)
            x.push_back(fromXAxis(std::lerp(first, last, i / (count - 1.0))));
    }

    static Values product(const Values &left, const Values &right)
    {
        Values product(left.size() + right.size() - 1, 0.0);
        for (std::size_t i = 0; i < left.size(); ++i) {
            for (std::size_t k = 0; k < right.size(); ++k)
                product[i + k] += left[i] * right[k];
        }
        return product;
    }

    std::mt19937 &random;
    RegressionMethod method;
    Function xFun;
    Function yFun;
};

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

    void neverMakesAnUnknownNumberValid_data();
    void neverMakesAnUnknownNumberValid();
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
    QTest::newRow("quadratic") << 1 << 3;
    QTest::newRow("cubic") << 2 << 4;
    QTest::newRow("quartic") << 3 << 5;
    QTest::newRow("four-parameter logistic") << 4 << 4;
    QTest::newRow("five-parameter logistic") << 5 << 5;
    QTest::newRow("unknown") << 6 << 5;
    QTest::newRow("negative") << -1 << 5;
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

    for (int method = 0; method <= 5; ++method) {
        for (const Function xFun : {Function::Linear, Function::Log}) {
            for (const Function yFun : {Function::Linear, Function::Log})
                QTest::addRow("method %d, x %d, y %d", method, static_cast<int>(xFun),
                              static_cast<int>(yFun))
                    << static_cast<RegressionMethod>(method) << xFun << yFun;
        }
    }
}

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

    // On the axes: x 1, 2, 3 and y 1, 3, 2, so y = 1 + 0.5 x, R = 0.5.
    QTest::newRow("linear") << Function::Linear << Function::Linear << Values{1, 2, 3}
                            << Values{1, 3, 2} << Values{1.5, 2.0, 2.5};
    QTest::newRow("logarithmic x") << Function::Log << Function::Linear << Values{10, 100, 1000}
                                   << Values{1, 3, 2} << Values{1.5, 2.0, 2.5};
    QTest::newRow("logarithmic y")
        << Function::Linear << Function::Log << Values{1, 2, 3} << Values{10, 1000, 100}
        << Values{31.622776601683793, 100.0, 316.22776601683793};
    QTest::newRow("both logarithmic")
        << Function::Log << Function::Log << Values{10, 100, 1000} << Values{10, 1000, 100}
        << Values{31.622776601683793, 100.0, 316.22776601683793};
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
    QCOMPARE(curve.coefficient(1), 0.5);
    QCOMPARE(curve.correlation(), 0.5);
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

void TestStandardCurve::neverMakesAnUnknownNumberValid_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("xFun");
    QTest::addColumn<int>("yFun");

    QTest::newRow("method above") << 6 << 0 << 0;
    QTest::newRow("method below") << -1 << 0 << 0;
    QTest::newRow("x function") << 0 << 2 << 0;
    QTest::newRow("y function") << 0 << 0 << -1;
}

void TestStandardCurve::neverMakesAnUnknownNumberValid()
{
    QFETCH(int, method);
    QFETCH(int, xFun);
    QFETCH(int, yFun);
    StandardCurve curve(nullptr, nullptr);
    fillWithOldNumbers(curve);
    curve.setMethod(static_cast<RegressionMethod>(method));
    curve.setXFun(static_cast<Function>(xFun));
    curve.setYFun(static_cast<Function>(yFun));
    curve.setPoints(points({1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}));

    curve.update();

    QVERIFY(!curve.isValid());
    QCOMPARE(coefficients(curve), Values({101, 102, 103, 104, 105}));
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
    QTest::newRow("two distinct x for a parabola")
        << RegressionMethod::Quadratic << Values{1, 1, 2, 2} << Values{1, 2, 3, 4};
    QTest::newRow("parabola with its vertex among the points")
        << RegressionMethod::Quadratic << Values{-2, -1, 0, 1, 3} << Values{4, 1, 0, 1, 9};
    QTest::newRow("cubic with two turns")
        << RegressionMethod::Cubic << Values{-2, -1, 0, 1, 2} << Values{-6, 0, 0, 0, 6};
    QTest::newRow("quartic with a dip between two points")
        << RegressionMethod::Quartic << Values{0, 1, 2, 3, 4} << Values{0, 10, 11, 11.1, 20};
    QTest::newRow("three points for four parameters")
        << RegressionMethod::Logistic4 << Values{1, 2, 4} << Values{1, 2, 3};
    QTest::newRow("four points for five parameters")
        << RegressionMethod::Logistic5 << Values{1, 2, 4, 8} << Values{1, 3, 5, 6};
    QTest::newRow("logistic without a plateau")
        << RegressionMethod::Logistic4 << Values{1, 2, 4, 8, 16, 32} << Values{1, 2, 4, 8, 16, 32};
}

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
        << line << linear << linear << StdPoint{300, -2, -1, 0} << false;
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

void TestStandardCurve::excludesPointsWithoutATransform()
{
    QFETCH(RegressionMethod, method);
    QFETCH(Function, xFun);
    QFETCH(Function, yFun);
    QFETCH(StdPoint, point);
    QFETCH(bool, excluded);
    const Points good = points({1, 2, 4, 8, 16, 32, 64, 128}, {79, 75, 68, 57, 43, 30, 20, 13});
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

void TestStandardCurve::flagsAnOutlier()
{
    StandardCurve curve(nullptr, nullptr);
    curve.setPoints(
        points({1, 2, 3, 4, 5, 6, 7, 8}, {1.01, 2.02, 2.98, 4.0, 9.0, 5.99, 7.01, 8.0}));

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
    QTest::newRow("alternating") << good << Values{1, -1, 1, -1, 1, -1, 1};
    QTest::newRow("pairs") << Values{1, 1, 2, 2, 3, 3, 3} << Values{1, 2, 1, 2, 1, 2, 1};
}

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
