// SPDX-License-Identifier: MIT
/// The section of a database: what happened to it, its steps, its tables.

#include "coagulation/report/pageparts.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/numbertext.h"
#include "coagulation/report/pagetables.h"

#include <algorithm>

namespace coagulation::report {

namespace {

QString resultText(StepResult result)
{
    switch (result) {
    case StepResult::Pass:
        return "✓ PASS";
    case StepResult::Fail:
        return "✗ FAIL";
    case StepResult::Skip:
        return "– SKIP";
    }
    Q_UNREACHABLE();
}

qsizetype countOf(const DatabaseFacts &database, StepResult result)
{
    return std::count_if(database.steps.begin(), database.steps.end(),
                         [result](const StepFacts &step) { return step.result == result; });
}

QString versionsText(const std::optional<int> &before, const std::optional<int> &after)
{
    const auto text = [](const std::optional<int> &version) {
        return version ? "version " + QString::number(*version) : QString("no version");
    };
    if (before == after)
        return "It stays at " + text(after) + '.';
    return "It went from " + text(before) + " to " + text(after) + '.';
}

QString summaryOf(const DatabaseFacts &database)
{
    if (database.filesBefore.isEmpty() && database.filesAfter.isEmpty())
        return "There is no such database.";
    QStringList sentences;
    if (database.versionBefore || database.versionAfter)
        sentences << versionsText(database.versionBefore, database.versionAfter);
    if (countOf(database, StepResult::Fail) > 0)
        sentences << "A step failed.";
    else if (const qsizetype passed = countOf(database, StepResult::Pass))
        sentences << countText(passed, "step", "steps") + " passed.";
    if (database.milliseconds)
        sentences << "The upgrade took " + durationText(*database.milliseconds) + '.';
    return sentences.join(' ');
}

QString versionText(const std::optional<int> &version)
{
    return version ? QString::number(*version) : QString("none");
}

QString sizeOf(const QList<FileFacts> &files)
{
    qint64 bytes = 0;
    for (const FileFacts &file : files)
        bytes += file.bytes;
    if (files.isEmpty())
        return "no file";
    return files.size() == 1 ? sizeText(bytes)
                             : sizeText(bytes) + " in " + countText(files.size()) + " files";
}

QString integrityText(const QString &finding)
{
    if (finding.isEmpty())
        return "not asked";
    return finding == "ok" ? QString("ok, nothing found") : finding;
}

void writeBothSides(PageWriter &page, const QString &what, const QString &before,
                    const QString &after)
{
    const Element row(page, "tr");
    page.element("th", what, {{"scope", "row"}});
    page.foreignElement("td", before);
    page.foreignElement("td", after);
}

void writeFile(PageWriter &page, const DatabaseFacts &database)
{
    const Table table(page, "The file before and after", {{"File"}, {"Before"}, {"After"}});
    writeBothSides(page, "Version", versionText(database.versionBefore),
                   versionText(database.versionAfter));
    if (database.newestVersion > 0) {
        const QString newest = QString::number(database.newestVersion);
        writeBothSides(page, "Newest version known", newest, newest);
    }
    writeBothSides(page, "Size", sizeOf(database.filesBefore), sizeOf(database.filesAfter));
    writeBothSides(page, "Check of the file", integrityText(database.integrityBefore),
                   integrityText(database.integrityAfter));
}

void writeSteps(PageWriter &page, const DatabaseFacts &database)
{
    if (database.steps.isEmpty())
        return;
    const bool failed = countOf(database, StepResult::Fail) > 0;
    const Folded folded(page,
                        QString("Steps: %1 passed, %2 failed, %3 skipped")
                            .arg(countOf(database, StepResult::Pass))
                            .arg(countOf(database, StepResult::Fail))
                            .arg(countOf(database, StepResult::Skip)),
                        failed);
    const Table table(page, "Steps of the upgrade", {{"Step"}, {"Result"}, {"Time", "number"}});
    for (const StepFacts &step : database.steps) {
        const Element row(page, "tr");
        page.foreignElement("td", step.signature);
        page.element("td", resultText(step.result),
                     {{"class", step.result == StepResult::Fail ? "bad tag" : "tag"}});
        page.element("td", step.milliseconds ? durationText(*step.milliseconds) : "",
                     {{"class", "number"}});
    }
}

void writeObjects(PageWriter &page, const QList<ObjectFacts> &objects, const QString &what)
{
    for (const ObjectFacts &object : objects) {
        const Element row(page, "tr");
        page.element("td", what, {{"class", "short"}});
        page.foreignElement("td", object.type, {{"class", "short"}});
        page.foreignElement("td", object.name);
        page.foreignElement("td", object.table);
    }
}

void writeObjects(PageWriter &page, const DatabaseFacts &database)
{
    if (database.objectsGone.isEmpty() && database.objectsNew.isEmpty())
        return;
    const Element section(page, "section", {{"id", objectsAnchor(database.name)}});
    page.element("h3", "Indexes, triggers and views");
    const Table table(page, "Those that are gone or new",
                      {{"Now"}, {"Kind"}, {"Name"}, {"Of the table"}});
    writeObjects(page, database.objectsGone, "gone");
    writeObjects(page, database.objectsNew, "new");
}

/// Names and results of patients are in the data database alone.
void writeWhatIsHidden(PageWriter &page, const DatabaseFacts &database, const Report &report)
{
    const bool hidden = database.name == "data" && !report.examplesOfPatients
        && std::any_of(database.tables.begin(), database.tables.end(), differs);
    if (!hidden)
        return;
    const Element note(page, "p", {{"class", "quiet"}});
    page.text(
        "This database holds names and results of patients. They are not shown, only counts. The option ");
    page.element("code", "--examples");
    page.text(" shows some of the rows.");
}

} // namespace

void writeDatabase(PageWriter &page, const DatabaseFacts &database, const Report &report)
{
    const Element section(page, "section", {{"id", databaseAnchor(database.name)}});
    page.element("h2", "Database " + database.name);
    if (!database.problem.isEmpty())
        page.foreignElement("p", database.problem, {{"class", "bad problem"}});
    page.element("p", summaryOf(database), {{"class", "summary"}});
    if (database.filesBefore.isEmpty() && database.filesAfter.isEmpty())
        return;
    writeFile(page, database);
    writeSteps(page, database);
    writeWhatIsHidden(page, database, report);
    writeTableOverview(page, database);
    writeObjects(page, database);
    for (qsizetype i = 0; i < database.tables.size(); ++i)
        writeTableDifferences(page, database, i);
}

} // namespace coagulation::report
