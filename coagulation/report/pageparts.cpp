// SPDX-License-Identifier: MIT
#include "coagulation/report/pageparts.h"

#include <algorithm>

namespace coagulation::report {

const DatabaseFacts *databaseOf(const Report &report, const QString &name)
{
    const auto found =
        std::find_if(report.databases.begin(), report.databases.end(),
                     [&name](const DatabaseFacts &database) { return database.name == name; });
    return found == report.databases.end() ? nullptr : &*found;
}

bool hasCurves(const Report &report)
{
    const DatabaseFacts *profile = databaseOf(report, "profile");
    return profile != nullptr
        && !(profile->curves.isEmpty() && profile->otherInvalidCurves.isEmpty());
}

Table::Table(PageWriter &page, const QString &caption, std::initializer_list<Head> columns,
             const QString &kind)
    // A box that scrolls must be reached by the keyboard, too.
    : box(page, "div", {{"class", "wide"}, {"tabindex", "0"}})
    , table(page, "table", {{"class", kind}})
    , heads(page, caption, columns)
    , body(page, "tbody")
{
}

Table::Heads::Heads(PageWriter &page, const QString &caption, std::initializer_list<Head> heads)
{
    if (!caption.isEmpty())
        page.foreignElement("caption", caption);
    const Element head(page, "thead");
    const Element row(page, "tr");
    for (const Head &column : heads)
        page.element("th", column.text, {{"scope", "col"}, {"class", column.kind}});
}

Folded::Folded(PageWriter &page, const QString &summaryText, bool open)
    : details(page, "details", {{"open", open ? "open" : ""}})
    , summary(page, summaryText)
{
}

Folded::Summary::Summary(PageWriter &page, const QString &text)
{
    page.foreignElement("summary", text);
}

} // namespace coagulation::report
