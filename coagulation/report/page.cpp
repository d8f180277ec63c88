// SPDX-License-Identifier: MIT
#include "coagulation/report/page.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/pageparts.h"
#include "coagulation/report/pagestyle.h"
#include "coagulation/report/pagewriter.h"

namespace coagulation::report {

namespace {

QString titleOf(const Report &report)
{
    return report.use == Use::Rehearsal ? "Rehearsal of an upgrade"
                                        : "Comparison before and after an upgrade";
}

void writeHead(PageWriter &page, const Report &report)
{
    const Element head(page, "head");
    page.voidElement("meta", {{"charset", "utf-8"}});
    page.voidElement("meta",
                     {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    page.element("title", titleOf(report));
    page.element("style", pageStyle());
}

void writeContents(PageWriter &page, const Report &report)
{
    const Element nav(page, "nav", {{"aria-label", "Contents"}});
    const Element list(page, "ul");
    const auto entry = [&page](const QString &anchor, const QString &text) {
        const Element item(page, "li");
        page.element("a", text, {{"href", "#" + anchor}});
    };
    entry("attention", "What needs attention");
    for (const DatabaseFacts &database : report.databases)
        entry(databaseAnchor(database.name), "Database " + database.name);
    if (hasCurves(report))
        entry(curvesAnchor(), "Standard curves");
    if (!report.log.isEmpty())
        entry("log", "Log");
    entry("record", "Record");
}

void writeHeader(PageWriter &page, const Report &report)
{
    const Element header(page, "header");
    page.element("h1", titleOf(report));
    writeVerdict(page, report);
    writeContents(page, report);
}

} // namespace

bool writePage(QIODevice &device, const Report &report)
{
    PageWriter page(device);
    page.beginDocument();
    {
        const Element html(page, "html", {{"lang", "en"}});
        writeHead(page, report);
        const Element body(page, "body");
        writeHeader(page, report);
        const Element main(page, "main");
        writeAttention(page, report);
        writeLegend(page);
        for (const DatabaseFacts &database : report.databases)
            writeDatabase(page, database, report);
        writeCurves(page, report);
        writeLog(page, report);
        writeRecord(page, report);
    }
    page.text("\n");
    return !page.failed();
}

} // namespace coagulation::report
