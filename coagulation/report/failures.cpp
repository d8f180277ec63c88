// SPDX-License-Identifier: MIT
#include "coagulation/report/failures.h"

#include "coagulation/report/anchors.h"
#include "coagulation/report/integrity.h"
#include "coagulation/report/wording.h"

#include <QFileInfo>

#include <algorithm>

namespace coagulation::report {

namespace {

const char *const beginsDatabase = "Debug: Updating "; ///< the first line of a database in the log

/// \return the last warning of the database that the log names last, which is why a run failed
std::optional<qsizetype> lastWarning(const QList<LogLine> &log)
{
    for (qsizetype i = log.size() - 1; i >= 0 && !log.at(i).text.startsWith(beginsDatabase); --i) {
        if (log.at(i).warning)
            return i;
    }
    return std::nullopt;
}

const DatabaseFacts *databaseWithFailedStep(const Report &report)
{
    const auto failed = [](const StepFacts &step) { return step.result == StepResult::Fail; };
    const auto found = std::find_if(
        report.databases.begin(), report.databases.end(), [&failed](const DatabaseFacts &database) {
            return std::any_of(database.steps.begin(), database.steps.end(), failed);
        });
    return found != report.databases.end() ? &*found : nullptr;
}

QString failedStep(const DatabaseFacts &database)
{
    const auto step =
        std::find_if(database.steps.begin(), database.steps.end(),
                     [](const StepFacts &one) { return one.result == StepResult::Fail; });
    return step != database.steps.end() ? step->signature : QString();
}

/// \return the database that the log names last
const DatabaseFacts *databaseNamedLast(const Report &report)
{
    for (qsizetype i = report.log.size() - 1; i >= 0; --i) {
        const QString &line = report.log.at(i).text;
        if (!line.startsWith(beginsDatabase))
            continue;
        for (const DatabaseFacts &database : report.databases) {
            if (!database.filesBefore.isEmpty()
                && line.endsWith(QFileInfo(database.filesBefore.first().path).fileName()))
                return &database;
        }
    }
    return nullptr;
}

/// What the run of vardo itself says.
QList<Failure> failuresOfTheRun(const Report &report)
{
    if (!report.problem.isEmpty())
        return {{{}, asClause(report.problem), report.problem}};
    const DatabaseFacts *database = databaseWithFailedStep(report);
    QString clause;
    if (database != nullptr) {
        clause = QString("the step %1 failed").arg(failedStep(*database));
    } else if (report.exitCode.value_or(0) != 0) {
        clause = QString("vardo ended with exit code %1").arg(*report.exitCode);
        database = databaseNamedLast(report);
    } else {
        return {};
    }
    Failure failure{{}, clause + '.', "The upgrade failed: " + clause + '.'};
    if (database != nullptr) {
        failure.database = database->name;
        failure.sentence =
            "The upgrade of the " + database->name + " database failed: " + clause + '.';
        failure.anchor = databaseAnchor(database->name);
    }
    failure.warning = lastWarning(report.log);
    if (failure.warning) {
        failure.sentence += " The log says: " + withoutKind(report.log.at(*failure.warning).text);
        failure.anchor = logAnchor(*failure.warning);
    }
    return {failure};
}

bool isDamaged(const QString &integrity)
{
    return !integrity.isEmpty() && !isSound(integrity);
}

/// Collects what is wrong with a database.
class DatabaseFailures {
public:
    explicit DatabaseFailures(const DatabaseFacts &facts)
        : database(facts)
    {
    }

    /// \param upgraded whether vardo says that it brought each database to its newest version
    QList<Failure> found(bool upgraded) &&
    {
        if (!database.problem.isEmpty()) {
            const QString clause = asClause(database.problem);
            add(clause, subject() + " could not be compared: " + clause);
        } else if (database.filesAfter.isEmpty()) {
            if (!database.filesBefore.isEmpty())
                add("it is missing after the upgrade.",
                    subject() + " is missing after the upgrade.");
        } else {
            addDamage();
            addVersions(upgraded);
            addTables();
        }
        return failures;
    }

private:
    QString subject() const { return "The " + database.name + " database"; }

    void add(const QString &clause, const QString &sentence, const QString &anchor = {})
    {
        failures << Failure{database.name, clause, sentence,
                            anchor.isEmpty() ? databaseAnchor(database.name) : anchor};
    }

    void addDamage()
    {
        const bool before = isDamaged(database.integrityBefore);
        if (isDamaged(database.integrityAfter))
            add("it is damaged.",
                subject() + " is damaged" + (before ? QString() : " after the upgrade") + ": "
                    + database.integrityAfter);
        else if (before) // a copy that nobody can go back to
            add("it was damaged before the upgrade.",
                subject() + " was damaged before the upgrade: " + database.integrityBefore);
    }

    void addVersions(bool upgraded)
    {
        const int before = database.versionBefore.value_or(0);
        const int after = database.versionAfter.value_or(0);
        const QString newest = QString::number(database.newestVersion);
        if (before > database.newestVersion)
            add("it is newer than vardo.",
                QString(
                    "%1 was at version %2 before the upgrade. The newest one that vardo knows is %3.")
                    .arg(subject(), QString::number(before), newest));
        // One that is higher comes from a vardo of another version, whose changes this program does not know.
        if (upgraded && after != database.newestVersion)
            add(QString("it is at version %1, not at %2.").arg(QString::number(after), newest),
                QString("%1 is at version %2 after the upgrade, not at %3.")
                    .arg(subject(), QString::number(after), newest));
    }

    void addTables()
    {
        for (qsizetype i = 0; i < database.tables.size(); ++i) {
            const TableFacts &table = database.tables.at(i);
            if (!table.damaged)
                continue;
            add(QString("the table %1 could not be compared.").arg(table.name),
                QString("The table %1 of the %2 database could not be compared: %3")
                    .arg(table.name, database.name, asClause(table.problem)),
                tableAnchor(database.name, i));
        }
    }

    const DatabaseFacts &database;
    QList<Failure> failures{};
};

} // namespace

QList<Failure> failuresOf(const Report &report)
{
    QList<Failure> failures = failuresOfTheRun(report);
    const bool upgraded = failures.isEmpty();
    for (const DatabaseFacts &database : report.databases)
        failures << DatabaseFailures(database).found(upgraded);
    return failures;
}

} // namespace coagulation::report
