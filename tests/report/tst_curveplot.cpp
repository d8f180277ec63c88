// SPDX-License-Identifier: MIT
/// Pictures of standard curves, and their axes.

#include "samplereport.h"

#include "coagulation/report/curvefunction.h"
#include "coagulation/report/curveplot.h"
#include "coagulation/report/numbertext.h"
#include "coagulation/report/plotaxis.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cmath>
#include <limits>

using namespace coagulation::report;

namespace {

struct Shape {
    QString name;
    QXmlStreamAttributes attributes;
    QString text;
};

/// The elements of a curve's picture.
class Drawing {
public:
    explicit Drawing(const CurveFacts &curve, int number = 1)
    {
        QString written;
        QXmlStreamWriter writer(&written);
        writeCurvePlot(writer, curve, number);
        QXmlStreamReader reader(written);
        while (!reader.atEnd()) {
            reader.readNext();
            if (reader.isStartElement())
                shapes << Shape{reader.name().toString(), reader.attributes(), {}};
            else if (reader.isCharacters())
                shapes.last().text += reader.text();
        }
        if (reader.hasError())
            qFatal("%s", qUtf8Printable(reader.errorString()));
    }

    QList<Shape> ofKind(const QString &kind) const
    {
        QList<Shape> found;
        for (const Shape &shape : shapes) {
            if (shape.attributes.value("class") == kind)
                found << shape;
        }
        return found;
    }

    QStringList texts(const QString &kind) const
    {
        QStringList found;
        for (const Shape &shape : ofKind(kind))
            found << shape.text;
        return found;
    }

    QString text(const QString &name) const
    {
        for (const Shape &shape : shapes) {
            if (shape.name == name)
                return shape.text;
        }
        return {};
    }

    const QList<Shape> &all() const { return shapes; }

private:
    QList<Shape> shapes;
};

CurveFacts curveThrough(const QList<QPair<double, double>> &places, bool logarithmic)
{
    CurveFacts curve;
    curve.logarithmicX = logarithmic;
    curve.logarithmicY = logarithmic;
    curve.after.valid = true;
    for (const auto &[x, y] : places)
        curve.points << PointFacts{x, y, std::nullopt, y};
    return curve;
}

QStringList labelsOf(const PlotAxis &axis)
{
    QStringList labels;
    for (const PlotAxis::Tick &tick : axis.ticks())
        labels << tick.label;
    return labels;
}

} // namespace

class TestCurvePlot : public QObject {
    Q_OBJECT

private slots:
    void namesValuesThatAreEasyToRead_data();
    void namesValuesThatAreEasyToRead();
    void placesValuesAlongTheAxis_data();
    void placesValuesAlongTheAxis();
    void reachesForTheCurveBefore();
    void writesNumbersForPeople_data();
    void writesNumbersForPeople();
    void writesPerCentForPeople_data();
    void writesPerCentForPeople();

    void drawsPointsAndBothCurves();
    void marksExcludedPointsAndOutliers();
    void namesUnitsAndKindsOfAxes();
    void describesItself();
    void countsPointsWithoutAPlace();
    void joinsStoredResultsIfCoefficientsSayNothing();
    void drawsNoInvalidCurve();
    void saysThatTheCurveBeforeIsElsewhere();
    void isNotMadeWithoutAPoint_data();
    void isNotMadeWithoutAPoint();
    void staysWithinItsNumbers_data();
    void staysWithinItsNumbers();
    void hasIdentifiersOfItsOwn();
};

void TestCurvePlot::namesValuesThatAreEasyToRead_data()
{
    QTest::addColumn<bool>("logarithmic");
    QTest::addColumn<QList<double>>("values");
    QTest::addColumn<QStringList>("labels");

    const auto linear = [](const char *name, const QList<double> &values,
                           const QStringList &labels) {
        QTest::newRow(name) << false << values << labels;
    };
    linear("from 0", {0.0, 100.0}, {"0", "20", "40", "60", "80", "100"});
    linear("decimals", {0.1, 0.5}, {"0.1", "0.2", "0.3", "0.4", "0.5"});
    linear("around 0", {-1.0, 1.0}, {"-1.0", "-0.5", "0.0", "0.5", "1.0"});
    linear("one value", {20.0}, {"19.0", "19.5", "20.0", "20.5", "21.0"});
    linear("one value of 0", {0.0}, {"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"});
    linear("large", {0.0, 5e7}, {"0", "10⁷", "2×10⁷", "3×10⁷", "4×10⁷", "5×10⁷"});
    linear("close together", {1e9, 1e9 + 10.0},
           {"10⁹", "1.000000002×10⁹", "1.000000004×10⁹", "1.000000006×10⁹", "1.000000008×10⁹",
            "1.00000001×10⁹"});

    const auto logarithmic = [](const char *name, const QList<double> &values,
                                const QStringList &labels) {
        QTest::newRow(name) << true << values << labels;
    };
    logarithmic("decades", {1.0, 10'000.0}, {"1", "10", "100", "1000", "10000"});
    logarithmic("few decades", {1.0, 100.0}, {"1", "2", "5", "10", "20", "50", "100"});
    logarithmic("less than a decade", {2.5, 4.0}, {"2.5", "3.0", "3.5", "4.0"});
    logarithmic("many decades", {1e-9, 1e9}, {"10⁻⁹", "10⁻⁶", "0.001", "1", "1000", "10⁶", "10⁹"});
}

void TestCurvePlot::namesValuesThatAreEasyToRead()
{
    QFETCH(bool, logarithmic);
    QFETCH(QList<double>, values);
    QFETCH(QStringList, labels);

    QCOMPARE(labelsOf(PlotAxis(logarithmic, values)), labels);
}

void TestCurvePlot::placesValuesAlongTheAxis_data()
{
    QTest::addColumn<bool>("logarithmic");
    QTest::addColumn<double>("middle");

    QTest::newRow("linear") << false << 505.0;
    QTest::newRow("logarithmic") << true << 100.0;
}

void TestCurvePlot::placesValuesAlongTheAxis()
{
    QFETCH(bool, logarithmic);
    QFETCH(double, middle);
    const PlotAxis axis(logarithmic, {10.0, 1000.0});

    const double start = axis.position(10.0);
    const double end = axis.position(1000.0);

    QVERIFY(start >= 0.0 && start < 0.1);
    QVERIFY(end > 0.9 && end <= 1.0);
    QVERIFY(std::abs(axis.position(middle) - (start + end) / 2.0) < 1e-9);
}

void TestCurvePlot::reachesForTheCurveBefore()
{
    PlotAxis axis(false, {100.0, 200.0});

    axis.reachFor({220.0, 1e9});

    QVERIFY(axis.position(220.0) <= 1.0);
    QVERIFY(axis.position(1e9) > 1.0);
    QVERIFY(axis.position(200.0) > 0.8);
}

void TestCurvePlot::writesNumbersForPeople_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");

    QTest::newRow("whole") << 4.0 << "4";
    QTest::newRow("rounded") << 0.199999999999997 << "0.2";
    QTest::newRow("below 0") << -1.25 << "-1.25";
    QTest::newRow("0") << 0.0 << "0";
    QTest::newRow("large") << 1.5e10 << "1.5×10¹⁰";
    QTest::newRow("small") << -2e-7 << "-2×10⁻⁷";
    QTest::newRow("a power") << 1e-7 << "10⁻⁷";
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << "infinite";
    QTest::newRow("no number") << std::nan("") << "not a number";
}

void TestCurvePlot::writesNumbersForPeople()
{
    QFETCH(double, number);
    QFETCH(QString, text);

    QCOMPARE(numberText(number), text);
}

void TestCurvePlot::writesPerCentForPeople_data()
{
    QTest::addColumn<double>("percent");
    QTest::addColumn<QString>("text");

    QTest::newRow("none") << 0.0 << "0 %";
    QTest::newRow("tiny") << 1e-9 << "less than 0.001 %";
    QTest::newRow("small") << 0.0423 << "0.042 %";
    QTest::newRow("usual") << 12.34 << "12 %";
    QTest::newRow("nearly 100") << 99.7 << "100 %";
    QTest::newRow("large") << 345.6 << "346 %";
    QTest::newRow("huge") << 1e17 << "more than 1,000 %";
}

void TestCurvePlot::writesPerCentForPeople()
{
    QFETCH(double, percent);
    QFETCH(QString, text);

    QCOMPARE(percentText(percent), text);
}

/// Shows: REP-14
void TestCurvePlot::drawsPointsAndBothCurves()
{
    const Drawing drawing(sampleCurve());

    QCOMPARE(drawing.ofKind("point").size(), 5 + 2); // two in the legend
    QCOMPARE(drawing.ofKind("curve before").size(), 2);
    QCOMPARE(drawing.ofKind("curve after").size(), 2);
    QCOMPARE(drawing.texts("legend"), QStringList({"measured", "outlier", "before", "after"}));
}

void TestCurvePlot::marksExcludedPointsAndOutliers()
{
    CurveFacts curve = sampleCurve();
    curve.points[0].excluded = true;

    const Drawing drawing(curve);

    QCOMPARE(drawing.ofKind("excluded").size(), 1 + 1);
    QCOMPARE(drawing.ofKind("outlier").size(), 1 + 1);
    QCOMPARE(drawing.ofKind("point").size(), 4 + 2);
}

void TestCurvePlot::namesUnitsAndKindsOfAxes()
{
    CurveFacts curve = sampleCurve();
    curve.logarithmicY = false;
    curve.yUnit = QString(100, 'g');

    const Drawing drawing(curve);

    QCOMPARE(drawing.texts("unit across"), QStringList{"Measured value in s, logarithmic"});
    QCOMPARE(drawing.texts("unit down"), QStringList{"Result in " + QString(24, 'g') + "…"});
}

void TestCurvePlot::describesItself()
{
    CurveFacts curve = sampleCurve();
    curve.points[0].excluded = true;

    const Drawing drawing(curve);

    QCOMPARE(drawing.text("title"), QString("Standard curve FIB"));
    QCOMPARE(drawing.text("desc"),
             QString("5 measured points, 1 excluded, 1 far from the curve; the curve before is "
                     "dashed; the curve after is solid."));
}

void TestCurvePlot::countsPointsWithoutAPlace()
{
    CurveFacts curve = sampleCurve();
    curve.points << PointFacts{0.0, 1.0, {}, {}, true} << PointFacts{1.0, -1.0, {}, {}, true};

    QCOMPARE(
        plotNotes(curve),
        QStringList{"2 points are not shown: a logarithmic axis has no place for 0 and what is "
                    "below it."});
    QCOMPARE(Drawing(curve).ofKind("excluded").size(), 0 + 1);
}

void TestCurvePlot::joinsStoredResultsIfCoefficientsSayNothing()
{
    CurveFacts curve = sampleCurve();
    std::swap(curve.after.coefficients[0], curve.after.coefficients[1]);

    const QString path =
        Drawing(curve).ofKind("curve after").constFirst().attributes.value("d").toString();

    QCOMPARE(path.count('L'), curve.points.size() - 1);
    QVERIFY(plotNotes(curve).join(' ').contains(
        "drawn through the results that are stored with its points"));
}

void TestCurvePlot::drawsNoInvalidCurve()
{
    CurveFacts curve = sampleCurve();
    curve.after.valid = false;
    for (PointFacts &point : curve.points)
        point.zAfter = -1.0;

    QCOMPARE(Drawing(curve).ofKind("curve after").size(), 0);
    QVERIFY(plotNotes(curve).contains("The curve after is not drawn: it is invalid."));
}

void TestCurvePlot::saysThatTheCurveBeforeIsElsewhere()
{
    CurveFacts curve = sampleCurve();
    curve.before.coefficients = {9.0, 9.0};

    QCOMPARE(plotNotes(curve), QStringList{"The curve before lies outside this picture."});
}

void TestCurvePlot::isNotMadeWithoutAPoint_data()
{
    QTest::addColumn<CurveFacts>("curve");

    QTest::newRow("no point") << CurveFacts();
    QTest::newRow("none for these axes") << curveThrough({{0.0, 1.0}, {1.0, 0.0}}, true);
    QTest::newRow("no number") << curveThrough({{std::nan(""), 1.0}}, false);
    QTest::newRow("too large to draw") << curveThrough({{1.0, 1.7e308}}, false);
}

void TestCurvePlot::isNotMadeWithoutAPoint()
{
    QFETCH(CurveFacts, curve);

    QVERIFY(!canBePlotted(curve));
}

void TestCurvePlot::staysWithinItsNumbers_data()
{
    QTest::addColumn<CurveFacts>("curve");

    for (const bool logarithmic : {false, true}) {
        const auto row = [logarithmic](const char *name,
                                       const QList<QPair<double, double>> &places) {
            QTest::addRow("%s, %s", name, logarithmic ? "logarithmic" : "linear")
                << curveThrough(places, logarithmic);
        };
        row("one point", {{3.0, 7.0}});
        row("all equal", {{3.0, 7.0}, {3.0, 7.0}, {3.0, 7.0}});
        row("huge", {{1e300, 1e300}, {1e-290, 1e-290}});
        row("tiny", {{1e-300, 1e-300}, {2e-289, 3e-289}});
        row("below what is normal", {{5e-324, 5e-324}, {1.0, 1.0}});
        row("close together", {{1.0, 1.0}, {std::nextafter(1.0, 2.0), 1.0 + 1e-8}});
        row("around 0", {{-1e300, -5.0}, {1e300, 5.0}, {2.0, 2.0}});
        QList<QPair<double, double>> many;
        for (int i = 1; i <= 1'000; ++i)
            many << QPair<double, double>(i, 1.0 / i);
        row("1,000 points", many);
    }
    CurveFacts steep = sampleCurve();
    steep.before.coefficients = {300.0, 290.0};
    QTest::newRow("a steep curve before") << steep;
}

void TestCurvePlot::staysWithinItsNumbers()
{
    QFETCH(CurveFacts, curve);
    QVERIFY(canBePlotted(curve));

    const Drawing drawing(curve);

    qsizetype numbers = 0;
    static const QRegularExpression number("-?[0-9.]+|nan|inf");
    for (const Shape &shape : drawing.all()) {
        for (const char *name : {"x", "y", "x1", "y1", "x2", "y2", "cx", "cy", "d"}) {
            auto found = number.globalMatch(shape.attributes.value(name).toString());
            while (found.hasNext()) {
                const QString text = found.next().captured();
                QVERIFY2(std::abs(text.toDouble()) < 4'000.0, qPrintable(text));
                QVERIFY2(text != "nan" && text != "inf", qPrintable(shape.name));
                ++numbers;
            }
        }
    }
    QVERIFY(numbers > 20);
    const qsizetype ticks = drawing.texts("tick across").size();
    QVERIFY2(ticks >= 2 && ticks <= 10, QByteArray::number(ticks).constData());
}

void TestCurvePlot::hasIdentifiersOfItsOwn()
{
    QSet<QString> ids;

    for (const int number : {1, 2}) {
        const Drawing drawing(sampleCurve(), number);
        for (const Shape &shape : drawing.all()) {
            if (shape.attributes.hasAttribute("id"))
                ids << shape.attributes.value("id").toString();
            if (shape.attributes.hasAttribute("clip-path"))
                QCOMPARE(shape.attributes.value("clip-path").toString(),
                         QString("url(#plot-%1-area)").arg(number));
        }
    }

    QCOMPARE(ids, QSet<QString>({"plot-1-area", "plot-2-area"}));
}

QTEST_GUILESS_MAIN(TestCurvePlot)
#include "tst_curveplot.moc"
