// SPDX-License-Identifier: MIT
/// The standard curves that were fitted once more: pictures and numbers.

#include "coagulation/report/pageparts.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/curveplot.h"
#include "coagulation/report/numbertext.h"

#include <array>

namespace coagulation::report {

namespace {

QString methodText(const std::optional<int> &method)
{
    if (!method)
        return "not known: there is no calibration of this name";
    switch (*method) {
    case 0:
        return "straight line: a + b x";
    case 4:
        return "four-parameter logistic: d + (a - d) / (1 + (x / c)^b)";
    default:
        return QString("number %1, which this program does not know").arg(*method);
    }
}

QString functionText(const std::optional<int> &function)
{
    if (!function)
        return "not stored";
    if (*function == 0)
        return "linear";
    return *function == 1 ? QString("logarithm") : QString("number %1").arg(*function);
}

QString validityText(const std::optional<bool> &valid)
{
    if (!valid)
        return "not stored";
    return *valid ? "✓ valid" : "✗ invalid";
}

QString dateText(const QString &date)
{
    return date.isEmpty() ? QString("not stored") : date;
}

QString storedText(const std::optional<double> &number)
{
    return number ? numberText(*number) : QString("NULL");
}

void writeRow(PageWriter &page, const QString &what, const QString &before, const QString &after,
              const QString &kind)
{
    const Element row(page, "tr");
    page.element("th", what, {{"scope", "row"}});
    page.foreignElement("td", before, {{"class", kind}});
    page.foreignElement("td", after, {{"class", kind}});
}

void writeCoefficients(PageWriter &page, const CurveFacts &curve)
{
    const std::array<QString, 5> names{"a", "b", "c", "d", "e"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::optional<double> before = curve.before.coefficients.at(i);
        const std::optional<double> after = curve.after.coefficients.at(i);
        if (before || after)
            writeRow(page, "Coefficient " + names.at(i), storedText(before), storedText(after),
                     "number");
    }
}

void writeNumbers(PageWriter &page, const CurveFacts &curve)
{
    const Element box(page, "div");
    {
        const Table table(page, "Before and after",
                          {{"Stored"}, {"Before", "number"}, {"After", "number"}});
        writeRow(page, "Validity", validityText(curve.before.valid),
                 validityText(curve.after.valid), "number");
        writeRow(page, "Date", dateText(curve.before.date), dateText(curve.after.date), "number");
        writeRow(page, "Correlation", storedText(curve.before.correlation),
                 storedText(curve.after.correlation), "number");
        writeCoefficients(page, curve);
    }
    const Element list(page, "ul");
    page.element("li", "Method: " + methodText(curve.method));
    page.element("li",
                 "Functions of the axes: x " + functionText(curve.xFunction) + ", y "
                     + functionText(curve.yFunction));
    if (curve.largestDifference) {
        page.element("li",
                     "Largest difference between both curves over the calibrated range: "
                         + percentText(*curve.largestDifference) + " of the result",
                     {{"class", "difference"}});
    }
}

void writePicture(PageWriter &page, const CurveFacts &curve, int number)
{
    if (!canBePlotted(curve)) {
        page.element("p", "There is no picture, since no measured point has a place on the axes.");
        return;
    }
    const Element figure(page, "figure");
    writeCurvePlot(page.xml(), curve, number);
    const QStringList notes = plotNotes(curve);
    if (!notes.isEmpty())
        page.element("figcaption", notes.join(' '));
}

void writeCurve(PageWriter &page, const CurveFacts &curve, qsizetype index)
{
    const Element article(page, "article", {{"id", curveAnchor(index)}});
    {
        const Element heading(page, "h3");
        page.foreign(curve.name);
        page.text(" (");
        page.foreign(curve.key);
        page.text(")");
    }
    if (curve.after.valid != true)
        page.element("p", "✗ This curve is invalid. Calibrate it again before use.",
                     {{"class", "bad"}});
    const Element facts(page, "div", {{"class", "curve-facts"}});
    writePicture(page, curve, int(index) + 1);
    writeNumbers(page, curve);
}

void writeOtherInvalidCurves(PageWriter &page, const QStringList &names)
{
    if (names.isEmpty())
        return;
    page.element("h3", "Invalid curves that were not fitted once more");
    const Element list(page, "ul");
    for (const QString &name : names)
        page.foreignElement("li", name);
}

} // namespace

void writeCurves(PageWriter &page, const Report &report)
{
    if (!hasCurves(report))
        return;
    const DatabaseFacts &profile = *databaseOf(report, "profile");
    const Element section(page, "section", {{"id", curvesAnchor()}});
    page.element("h2", "Standard curves");
    if (!profile.curves.isEmpty())
        page.element(
            "p", "These curves were fitted once more. Calibrate each of them again before use.");
    for (qsizetype i = 0; i < profile.curves.size(); ++i)
        writeCurve(page, profile.curves.at(i), i);
    writeOtherInvalidCurves(page, profile.otherInvalidCurves);
}

} // namespace coagulation::report
