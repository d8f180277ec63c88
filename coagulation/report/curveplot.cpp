// SPDX-License-Identifier: MIT
#include "coagulation/report/curveplot.h"

#include "coagulation/report/curvefunction.h"
#include "coagulation/report/numbertext.h"
#include "coagulation/report/plotaxis.h"
#include "coagulation/report/visibletext.h"

#include <QPointF>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>

namespace coagulation::report {

namespace {

constexpr double width = 640.0;
constexpr double height = 400.0;
constexpr double left = 84.0; ///< of the area within the axes
constexpr double right = 624.0;
constexpr double top = 66.0;
constexpr double bottom = 338.0;

QString coordinate(double value)
{
    return QString::number(value, 'f', 1);
}

bool isShown(const PointFacts &point, const CurveFacts &curve)
{
    return PlotAxis::canShow(point.x, curve.logarithmicX)
        && PlotAxis::canShow(point.y, curve.logarithmicY);
}

/// A curve's places in the units of its axes.
using Line = QList<QPointF>;

Line withoutUnshown(const Line &line, const CurveFacts &curve)
{
    Line shown;
    std::copy_if(line.begin(), line.end(), std::back_inserter(shown), [&](const QPointF &place) {
        return PlotAxis::canShow(place.x(), curve.logarithmicX)
            && PlotAxis::canShow(place.y(), curve.logarithmicY);
    });
    return shown;
}

/// \return many places of a function over the calibrated range
Line lineOf(const std::optional<CurveFunction> &function, const CurveFacts &curve)
{
    const std::optional<Range> range = calibratedRange(curve);
    if (!function || !range)
        return {};
    constexpr int places = 160;
    Line line;
    for (int i = 0; i <= places; ++i) {
        const double x = range->at(double(i) / places, curve.logarithmicX);
        line << QPointF(x, (*function)(x));
    }
    return withoutUnshown(line, curve);
}

bool joinsFittedValues(const CurveFacts &curve)
{
    return curve.after.valid == true && !drawable(curve).after;
}

/// \return the y that the fit stored with the points, for a curve whose coefficients say nothing to us
Line fittedLine(const CurveFacts &curve)
{
    Line line;
    for (const PointFacts &point : curve.points) {
        if (!point.excluded && point.zAfter)
            line << QPointF(point.x, *point.zAfter);
    }
    std::sort(line.begin(), line.end(),
              [](const QPointF &one, const QPointF &other) { return one.x() < other.x(); });
    return withoutUnshown(line, curve);
}

Line lineBefore(const CurveFacts &curve)
{
    return lineOf(drawable(curve).before, curve);
}

Line lineAfter(const CurveFacts &curve)
{
    return joinsFittedValues(curve) ? fittedLine(curve) : lineOf(drawable(curve).after, curve);
}

struct Axes {
    PlotAxis x;
    PlotAxis y;

    double across(double value) const { return std::lerp(left, right, x.position(value)); }
    double down(double value) const { return std::lerp(bottom, top, y.position(value)); }
    bool hold(const QPointF &place) const
    {
        const double position = y.position(place.y());
        return position >= 0.0 && position <= 1.0;
    }
};

/// The axes reach over the points and the curve after. That before may lie anywhere: the axes grow for it, but not
/// so far that nothing else can be told apart.
Axes axesOf(const CurveFacts &curve)
{
    QList<double> x;
    QList<double> y;
    for (const PointFacts &point : curve.points) {
        if (isShown(point, curve)) {
            x << point.x;
            y << point.y;
        }
    }
    for (const QPointF &place : lineAfter(curve)) {
        x << place.x();
        y << place.y();
    }
    Axes axes{PlotAxis(curve.logarithmicX, x), PlotAxis(curve.logarithmicY, y)};
    QList<double> before;
    for (const QPointF &place : lineBefore(curve))
        before << place.y();
    axes.y.reachFor(before);
    return axes;
}

/// Writes the elements of one picture.
class Picture {
public:
    Picture(QXmlStreamWriter &writer, const CurveFacts &drawnCurve, int number)
        : page(writer)
        , curve(drawnCurve)
        , name(QString("plot-%1").arg(number))
        , axes(axesOf(drawnCurve))
    {
    }

    void write();

private:
    void describe();
    void writeGrid();
    void writeUnits();
    void writeLines();
    void writePoints();
    void writeLegend();

    void text(const QString &content, double x, double y, const QString &kind);
    void straight(double x1, double y1, double x2, double y2, const QString &kind);
    void path(const QString &steps, const QString &kind);
    void line(const Line &places, const QString &kind);
    void mark(const PointFacts &point, double x, double y);

    QXmlStreamWriter &page;
    const CurveFacts &curve;
    QString name;
    Axes axes;
};

void Picture::write()
{
    page.writeStartElement("svg");
    page.writeAttribute("class", "plot");
    page.writeAttribute("viewBox", QString("0 0 %1 %2").arg(width).arg(height));
    page.writeAttribute("role", "img");
    describe();
    writeGrid();
    writeUnits();
    writeLines();
    writePoints();
    writeLegend();
    page.writeEndElement();
}

qsizetype countOf(const CurveFacts &curve, bool PointFacts::*mark)
{
    return std::count_if(curve.points.begin(), curve.points.end(),
                         [mark](const PointFacts &point) { return point.*mark; });
}

void Picture::describe()
{
    page.writeStartElement("title");
    page.writeCharacters("Standard curve " + visibleText(curve.name));
    page.writeEndElement();

    QString description = countText(curve.points.size(), "measured point", "measured points");
    if (const qsizetype excluded = countOf(curve, &PointFacts::excluded))
        description += QString(", %1 excluded").arg(excluded);
    if (const qsizetype outliers = countOf(curve, &PointFacts::outlier))
        description += QString(", %1 far from the curve").arg(outliers);
    description +=
        lineBefore(curve).isEmpty() ? "; no curve before" : "; the curve before is dashed";
    description += lineAfter(curve).isEmpty() ? "; no curve after." : "; the curve after is solid.";
    page.writeStartElement("desc");
    page.writeCharacters(description);
    page.writeEndElement();
}

void Picture::text(const QString &content, double x, double y, const QString &kind)
{
    page.writeStartElement("text");
    page.writeAttribute("class", kind);
    page.writeAttribute("x", coordinate(x));
    page.writeAttribute("y", coordinate(y));
    page.writeCharacters(content);
    page.writeEndElement();
}

void Picture::straight(double x1, double y1, double x2, double y2, const QString &kind)
{
    page.writeEmptyElement("line");
    page.writeAttribute("class", kind);
    page.writeAttribute("x1", coordinate(x1));
    page.writeAttribute("y1", coordinate(y1));
    page.writeAttribute("x2", coordinate(x2));
    page.writeAttribute("y2", coordinate(y2));
}

void Picture::path(const QString &steps, const QString &kind)
{
    page.writeEmptyElement("path");
    page.writeAttribute("class", kind);
    page.writeAttribute("d", steps);
}

void Picture::writeGrid()
{
    for (const PlotAxis::Tick &tick : axes.x.ticks()) {
        const double x = axes.across(tick.value);
        straight(x, top, x, bottom, "grid");
        text(tick.label, x, bottom + 22.0, "tick across");
    }
    for (const PlotAxis::Tick &tick : axes.y.ticks()) {
        const double y = axes.down(tick.value);
        straight(left, y, right, y, "grid");
        text(tick.label, left - 8.0, y + 5.0, "tick down");
    }
    path(QString("M%1 %2V%3H%4").arg(left).arg(top).arg(bottom).arg(right), "axis");
}

/// \return a unit as far as there is room for it
QString unitText(const QString &unit)
{
    constexpr qsizetype room = 24;
    const QString visible = visibleText(unit);
    return visible.size() > room ? visible.left(room) + "…" : visible;
}

void Picture::writeUnits()
{
    const auto title = [](const QString &what, const QString &unit, bool logarithmic) {
        QString words = unit.isEmpty() ? what : what + " in " + unitText(unit);
        return logarithmic ? words + ", logarithmic" : words;
    };
    text(title("Measured value", curve.xUnit, curve.logarithmicX), right, height - 14.0,
         "unit across");
    text(title("Result", curve.yUnit, curve.logarithmicY), 4.0, top - 14.0, "unit down");
}

void Picture::line(const Line &places, const QString &kind)
{
    if (places.size() < 2)
        return;
    QString steps;
    for (const QPointF &place : places) {
        steps += steps.isEmpty() ? 'M' : 'L';
        steps += coordinate(axes.across(place.x())) + ' ' + coordinate(axes.down(place.y()));
    }
    path(steps, kind);
}

void Picture::writeLines()
{
    page.writeStartElement("clipPath");
    page.writeAttribute("id", name + "-area");
    page.writeEmptyElement("rect");
    page.writeAttribute("x", coordinate(left));
    page.writeAttribute("y", coordinate(top));
    page.writeAttribute("width", coordinate(right - left));
    page.writeAttribute("height", coordinate(bottom - top));
    page.writeEndElement();

    page.writeStartElement("g");
    page.writeAttribute("clip-path", "url(#" + name + "-area)");
    line(lineBefore(curve), "curve before");
    line(lineAfter(curve), "curve after");
    page.writeEndElement();
}

/// Draws the mark of a measured point: × if it is excluded, a circle otherwise, and a diamond round an outlier.
void Picture::mark(const PointFacts &point, double x, double y)
{
    if (point.excluded) {
        path(QString("M%1 %2l10 10m0 -10l-10 10").arg(coordinate(x - 5.0), coordinate(y - 5.0)),
             "excluded");
    } else {
        page.writeEmptyElement("circle");
        page.writeAttribute("class", "point");
        page.writeAttribute("cx", coordinate(x));
        page.writeAttribute("cy", coordinate(y));
        page.writeAttribute("r", "4.5");
    }
    if (point.outlier)
        path(QString("M%1 %2l10 10l-10 10l-10 -10z").arg(coordinate(x), coordinate(y - 10.0)),
             "outlier");
}

void Picture::writePoints()
{
    for (const PointFacts &point : curve.points) {
        if (isShown(point, curve))
            mark(point, axes.across(point.x), axes.down(point.y));
    }
}

void Picture::writeLegend()
{
    constexpr double y = 20.0;
    double x = 14.0;
    const auto entry = [&](const QString &words) {
        text(words, x + 18.0, y + 5.0, "legend");
        x += 132.0;
    };
    PointFacts plain;
    mark(plain, x, y);
    entry("measured");
    if (countOf(curve, &PointFacts::excluded) > 0) {
        plain.excluded = true;
        mark(plain, x, y);
        entry("excluded");
        plain.excluded = false;
    }
    if (countOf(curve, &PointFacts::outlier) > 0) {
        plain.outlier = true;
        mark(plain, x, y);
        entry("outlier");
    }
    const auto curveEntry = [&](const Line &places, const QString &words) {
        if (places.size() < 2)
            return;
        straight(x - 12.0, y, x + 14.0, y, "curve " + words);
        entry(words);
    };
    curveEntry(lineBefore(curve), "before");
    curveEntry(lineAfter(curve), "after");
}

QString noteBefore(const CurveFacts &curve)
{
    const Line before = lineBefore(curve);
    if (before.isEmpty())
        return "The curve before is not drawn: its coefficients give no curve that this program knows.";
    const Axes axes = axesOf(curve);
    const bool outside = std::none_of(before.begin(), before.end(),
                                      [&](const QPointF &place) { return axes.hold(place); });
    return outside ? "The curve before lies outside this picture." : QString();
}

QString noteAfter(const CurveFacts &curve)
{
    if (curve.after.valid != true)
        return lineAfter(curve).isEmpty() ? "The curve after is not drawn: it is invalid."
                                          : QString();
    if (lineAfter(curve).isEmpty())
        return "The curve after is not drawn: its coefficients do not give the results that are stored "
               "with its points.";
    if (joinsFittedValues(curve))
        return "The curve after is drawn through the results that are stored with its points, since its "
               "coefficients do not give them in the order that this program knows.";
    return {};
}

} // namespace

bool canBePlotted(const CurveFacts &curve)
{
    return std::any_of(curve.points.begin(), curve.points.end(),
                       [&](const PointFacts &point) { return isShown(point, curve); });
}

void writeCurvePlot(QXmlStreamWriter &page, const CurveFacts &curve, int number)
{
    Picture(page, curve, number).write();
}

QStringList plotNotes(const CurveFacts &curve)
{
    QStringList notes;
    const qsizetype unshown =
        std::count_if(curve.points.begin(), curve.points.end(),
                      [&](const PointFacts &point) { return !isShown(point, curve); });
    if (unshown > 0)
        notes << countText(unshown, "point is", "points are")
                + " not shown: a logarithmic axis has no place for 0 and what is below it.";
    notes << noteBefore(curve) << noteAfter(curve);
    notes.removeAll(QString());
    return notes;
}

} // namespace coagulation::report
