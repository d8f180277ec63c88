// SPDX-License-Identifier: MIT
/// The end of the page: the log, and the record of what was done with which files.

#include "coagulation/report/pageparts.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/numbertext.h"

namespace coagulation::report {

namespace {

void writeLine(PageWriter &page, const LogLine &line, qsizetype index)
{
    const Element item(page, "li",
                       {{"id", logAnchor(index)}, {"class", line.warning ? "warning" : "line"}});
    if (line.warning)
        page.element("strong", "! ");
    page.foreign(line.text);
    if (line.milliseconds)
        page.element("span", " " + durationText(*line.milliseconds), {{"class", "time"}});
}

/// \return "2026-11-22 09:35:43 UTC+01:00"
QString timeText(const QDateTime &time)
{
    const int minutes = time.offsetFromUtc() / 60;
    const int size = std::abs(minutes);
    return time.toString("yyyy-MM-dd HH:mm:ss") + " UTC" + (minutes < 0 ? '-' : '+')
        + QString("%1:%2").arg(size / 60, 2, 10, QChar('0')).arg(size % 60, 2, 10, QChar('0'));
}

void writeFact(PageWriter &page, const QString &what, const QString &value)
{
    if (value.isEmpty())
        return;
    const Element row(page, "tr");
    page.element("th", what, {{"scope", "row"}, {"class", "name"}});
    page.foreignElement("td", value, {{"class", "values"}});
}

void writeRun(PageWriter &page, const Report &report)
{
    const Record &record = report.record;
    const Table table(page, "The run", {{"What"}, {"Value"}});
    writeFact(page, "Time", record.time.isValid() ? timeText(record.time) : QString());
    writeFact(page, "Computer", record.host);
    writeFact(page, "User", record.user);
    writeFact(page, "vardo-report", record.vardoVersion);
    writeFact(page, "Qt", record.qtVersion);
    writeFact(page, "SQLite", record.sqliteVersion);
    writeFact(page, "vardo that ran", record.program);
    writeFact(page, "Its SHA-256", QString::fromLatin1(record.programSha256));
    if (report.exitCode)
        writeFact(page, "Its exit code", QString::number(*report.exitCode));
}

void writeFiles(PageWriter &page, const QList<FileFacts> &files, const QString &side)
{
    for (const FileFacts &file : files) {
        const Element row(page, "tr");
        page.element("td", side, {{"class", "short"}});
        page.foreignElement("td", file.path, {{"class", "values"}});
        page.element("td", countText(file.bytes), {{"class", "number"}});
        page.foreignElement("td",
                            file.sha256.isEmpty() ? QString("could not be read")
                                                  : QString::fromLatin1(file.sha256),
                            {{"class", "digest values"}});
    }
}

bool hasFiles(const Report &report)
{
    return std::any_of(report.databases.begin(), report.databases.end(),
                       [](const DatabaseFacts &database) {
                           return !database.filesBefore.isEmpty() || !database.filesAfter.isEmpty();
                       });
}

} // namespace

void writeLog(PageWriter &page, const Report &report)
{
    if (report.log.isEmpty())
        return;
    constexpr qsizetype mostUnfolded = 100;
    const Element section(page, "section", {{"id", "log"}});
    page.element("h2", "Log");
    const Folded folded(page, countText(report.log.size(), "line", "lines"),
                        report.log.size() <= mostUnfolded);
    const Element list(page, "ol", {{"class", "log"}});
    for (qsizetype i = 0; i < report.log.size(); ++i)
        writeLine(page, report.log.at(i), i);
}

void writeRecord(PageWriter &page, const Report &report)
{
    const Element section(page, "section", {{"id", "record"}});
    page.element("h2", "Record");
    if (!report.problem.isEmpty())
        page.foreignElement("p", report.problem, {{"class", "bad problem"}});
    writeRun(page, report);
    if (!hasFiles(report))
        return;
    const Table table(page, "The files", {{"Side"}, {"Path"}, {"Bytes", "number"}, {"SHA-256"}});
    for (const DatabaseFacts &database : report.databases) {
        writeFiles(page, database.filesBefore, "before");
        writeFiles(page, database.filesAfter, "after");
    }
}

} // namespace coagulation::report
