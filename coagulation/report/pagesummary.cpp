// SPDX-License-Identifier: MIT
/// The top of the page: verdict, short answers, what needs attention, and how to read the rest.

#include "coagulation/report/pageparts.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/attention.h"
#include "coagulation/report/numbertext.h"

#include <algorithm>

namespace coagulation::report {

namespace {

struct Judgement {
    QString kind; ///< class of the style sheet
    QString mark; ///< a symbol and a word, for who cannot tell the colours
};

Judgement judgementOf(const Report &report)
{
    const bool rehearsal = report.use == Use::Rehearsal;
    if (!succeeded(report))
        return {"bad", rehearsal ? "✗ Fails" : "✗ Wrong"};
    if (!isUpgraded(report)) // in a comparison, the copies may be of a day too late
        return {"look", rehearsal ? "! Nothing to do" : "! Not upgraded"};
    if (!report.attention.isEmpty())
        return {"look", rehearsal ? "! Works, look below" : "! Look below"};
    return {"good", rehearsal ? "✓ Works" : "✓ In order"};
}

/// A question and its answer.
class Answer {
public:
    Answer(PageWriter &page, const QString &question)
        : pair(page, "li")
        , asked(page, question)
        , answer(page, "div", {{"class", "answer"}})
    {
    }

private:
    Element pair;
    struct Question {
        Question(PageWriter &page, const QString &text)
        {
            page.element("div", text, {{"class", "question"}});
        }
    } asked;
    Element answer;
};

struct Link {
    QString anchor;
    QString text;
};

/// Writes the first links of a list, and how many there are beyond.
void writeLinks(PageWriter &page, const QList<Link> &links)
{
    constexpr qsizetype most = 12;
    for (qsizetype i = 0; i < std::min(most, links.size()); ++i) {
        if (i > 0)
            page.text(", ");
        page.foreignElement("a", links.at(i).text, {{"href", "#" + links.at(i).anchor}});
    }
    if (links.size() > most)
        page.text(" and " + countText(links.size() - most) + " more");
}

void writeWhetherItWorks(PageWriter &page, const Report &report)
{
    if (report.use == Use::Rehearsal) {
        const Answer answer(page, "Would the upgrade work?");
        page.text(succeeded(report) ? "Yes" : "No");
    } else {
        const Answer answer(page, "Is anything wrong?");
        page.text(succeeded(report) ? "No" : "Yes");
    }
}

void writeDuration(PageWriter &page, const Report &report)
{
    if (!report.milliseconds)
        return;
    const Answer answer(page, "How long does it take?");
    page.text(durationText(*report.milliseconds) + " on this computer, without the copying");
}

/// \param names of the curves of one kind
void writeCurveNames(PageWriter &page, const QString &kind, const QList<Link> &names)
{
    if (names.isEmpty())
        return;
    const Element line(page, "div");
    page.text(kind);
    writeLinks(page, names);
}

void writeCurvesToCalibrate(PageWriter &page, const DatabaseFacts &profile)
{
    QList<Link> invalid;
    QList<Link> refitted;
    for (qsizetype i = 0; i < profile.curves.size(); ++i) {
        const CurveFacts &curve = profile.curves.at(i);
        (curve.after.valid == true ? refitted : invalid) << Link{curveAnchor(i), curve.name};
    }
    for (const QString &name : profile.otherInvalidCurves)
        invalid << Link{"curves", name};
    QList<Link> ofAnotherMethod;
    for (const MethodChange &change : profile.methodChanges)
        ofAnotherMethod << Link{"attention", change.calibration};
    const Answer answer(page, "Which curves must be calibrated again?");
    if (invalid.isEmpty() && refitted.isEmpty() && ofAnotherMethod.isEmpty())
        page.text("None because of this upgrade: no curve is invalid, none was fitted once more, "
                  "and no calibration has another method");
    writeCurveNames(page, "Invalid: ", invalid);
    writeCurveNames(page, "Fitted once more: ", refitted);
    writeCurveNames(page, "Of a calibration with another method: ", ofAnotherMethod);
}

/// \return the tables of a database in which values need attention since they were overwritten
QList<Link> overwrittenTables(const DatabaseFacts &database, const QList<Attention> &attention)
{
    QList<Link> tables;
    for (qsizetype i = 0; i < database.tables.size(); ++i) {
        const QString anchor = tableAnchor(database.name, i);
        const bool isOverwritten =
            std::any_of(attention.begin(), attention.end(), [&anchor](const Attention &point) {
                return point.kind == Attention::Kind::Overwritten && point.anchor == anchor;
            });
        if (isOverwritten)
            tables << Link{anchor, database.tables.at(i).name};
    }
    return tables;
}

void writeOverwrittenSettings(PageWriter &page, const DatabaseFacts &profile, const Report &report)
{
    QList<Link> tables = overwrittenTables(profile, report.attention);
    if (const DatabaseFacts *qc = databaseOf(report, "qc"))
        tables << overwrittenTables(*qc, report.attention);
    const Answer answer(page, "Which settings changed?");
    if (tables.isEmpty()) {
        page.text("No value was overwritten");
        return;
    }
    page.text("Values were overwritten in ");
    writeLinks(page, tables);
}

QString headingOf(Attention::Kind kind)
{
    switch (kind) {
    case Attention::Kind::Failure:
        return "Failures";
    case Attention::Kind::InvalidCurve:
        return "Standard curves that are invalid";
    case Attention::Kind::RefittedCurve:
        return "Standard curves that were fitted once more";
    case Attention::Kind::Calibration:
        return "Calibrations to check";
    case Attention::Kind::UnexpectedRow:
        return "Rows and settings of yours that the upgrade did not expect";
    case Attention::Kind::LostRows:
        return "Rows that did not arrive";
    case Attention::Kind::NotCompared:
        return "Tables that could not be compared";
    case Attention::Kind::GoneObject:
        return "Columns, tables, indexes, triggers and views that are gone";
    case Attention::Kind::Overwritten:
        return "Values of yours that were overwritten";
    case Attention::Kind::ReagentIdentifier:
        return "Reagent identifiers that changed";
    case Attention::Kind::LoweredVersion:
        return "Versions that were lowered";
    case Attention::Kind::Warning:
        return "Warnings of the log";
    }
    Q_UNREACHABLE();
}

using Points = QList<Attention>;

/// The values that a point is about, and how many there are beyond.
void writeValues(PageWriter &page, const Attention &point)
{
    {
        const Table table(page, {}, {{"Row"}, {"Column"}, {"Before"}, {"After"}}, "values");
        for (const OverwrittenValue &value : point.values) {
            const Element row(page, "tr");
            page.foreignElement("th", value.key, {{"scope", "row"}, {"class", "name literal"}});
            page.foreignElement("td", value.column, {{"class", "name"}});
            page.foreignElement("td", value.before, {{"class", "literal values"}});
            page.foreignElement("td", value.after, {{"class", "literal values"}});
        }
    }
    if (point.moreValues > 0)
        page.element("p", "And " + countText(point.moreValues, "more value", "more values") + ".");
}

void writePoints(PageWriter &page, const Points &points)
{
    const Element list(page, "ul");
    for (const Attention &point : points) {
        const Element item(page, "li");
        if (point.anchor.isEmpty())
            page.foreign(point.text);
        else
            page.foreignElement("a", point.text, {{"href", "#" + point.anchor}});
        if (!point.values.isEmpty())
            writeValues(page, point);
    }
}

/// \param points of one kind
void writeKind(PageWriter &page, const Points &points)
{
    constexpr qsizetype most = 20;
    page.element("h3", headingOf(points.first().kind) + " (" + countText(points.size()) + ")");
    writePoints(page, points.first(std::min(most, points.size())));
    if (points.size() > most) {
        const Folded rest(page, countText(points.size() - most) + " more");
        writePoints(page, points.sliced(most));
    }
}

/// A few points need no headings.
constexpr qsizetype fewPoints = 6;

void writeByKind(PageWriter &page, const Points &attention)
{
    auto begin = attention.begin();
    while (begin != attention.end()) {
        const auto end = std::find_if(begin, attention.end(), [begin](const Attention &point) {
            return point.kind != begin->kind;
        });
        writeKind(page, Points(begin, end));
        begin = end;
    }
}

} // namespace

void writeVerdict(PageWriter &page, const Report &report)
{
    const Judgement judgement = judgementOf(report);
    {
        const Element box(page, "p", {{"class", "verdict " + judgement.kind}, {"id", "verdict"}});
        page.element("span", judgement.mark, {{"class", "mark"}});
        page.text(" ");
        page.foreignElement("span", verdict(report), {{"class", "words"}});
    }
    if (report.use == Use::Rehearsal) {
        page.element(
            "p",
            "This was a rehearsal: the upgrade ran on copies. The databases that the laboratory "
            "works with are unchanged.");
    }
    const Element answers(page, "ul", {{"class", "glance"}, {"id", "answers"}});
    writeWhetherItWorks(page, report);
    writeDuration(page, report);
    const DatabaseFacts *profile = databaseOf(report, "profile");
    if (profile != nullptr && profile->problem.isEmpty()) {
        writeCurvesToCalibrate(page, *profile);
        writeOverwrittenSettings(page, *profile, report);
    }
}

void writeAttention(PageWriter &page, const Report &report)
{
    const Element section(page, "section", {{"id", "attention"}});
    page.element("h2", "What needs attention");
    if (report.attention.isEmpty())
        page.element("p", "Nothing needs attention.");
    else if (report.attention.size() <= fewPoints)
        writePoints(page, report.attention);
    else
        writeByKind(page, report.attention);
}

void writeLegend(PageWriter &page)
{
    const Element section(page, "section", {{"id", "words"}});
    const Folded folded(page, "What the words and values mean");
    const Element list(page, "ul");
    const auto point = [&page](const QString &text) { page.element("li", text); };
    point(
        "Values stand as SQLite has them. Texts are in quotes, and a quote within a text stands twice. So "
        "1, 1.0 and '1' differ: a whole number, one with decimals, and a text.");
    point("NULL means that nothing is stored. X'0A' is a row of bytes.");
    point(
        "A character that cannot be printed has a sign in its place, such as ␊ for the end of a line. What "
        "is very long ends in … and says how long it is.");
    point(
        "Rows meet by their key. A row is added or removed if only one side has its key. It is changed if "
        "a value differs, and has a new key if only its key differs.");
    point(
        "A value is overwritten if there was one before and it is not there any more. A time that only lost "
        "its fraction of a second does not count.");
}

} // namespace coagulation::report
