// SPDX-License-Identifier: MIT
#include "coagulation/report/rehearsal.h"

#include "coagulation/report/comparison.h"
#include "coagulation/report/digests.h"
#include "coagulation/report/interruption.h"
#include "coagulation/report/progress.h"
#include "coagulation/report/readlock.h"
#include "coagulation/report/snapshot.h"
#include "coagulation/report/space.h"

#include <QDir>
#include <QFileInfo>

namespace coagulation::report {

namespace {

/// A journal beside a copy was left by a crash: of another program, or of vardo on the copy. A connection that
/// only reads could not play it back.
void playBackJournal(const QString &copy)
{
    if (QFileInfo::exists(copy + "-journal"))
        const ReadLock lock(copy);
}

/// A rehearsal, stage by stage. Each stage returns false when there is nothing to go on with; then the outcome
/// has an error.
class Rehearsal {
public:
    Rehearsal(CommandLine commandLine, QString program, QString ownFolder, Progress &shownProgress)
        : command(std::move(commandLine))
        , vardo(std::move(program))
        , folder(std::move(ownFolder))
        , progress(shownProgress)
    {
    }

    Outcome run()
    {
        if (findDatabases() && hasSpace() && makeFolders() && copyOriginals() && copyCopies()) {
            Digests digests(filesIn("before"));
            if (upgrade()) {
                takeDigests(digests);
                compareCopies();
            }
        }
        return std::move(outcome);
    }

private:
    bool fail(const QString &error)
    {
        outcome.error = error;
        return false;
    }

    bool goOn() { return !interrupted() || fail("Stopped."); }

    QString original(const QString &database) const
    {
        return command.folder + command.names.fileName(database);
    }

    /// \param side "before" or "after"
    QString copy(const QString &side, const QString &database) const
    {
        return folder + '/' + side + '/' + command.names.fileName(database);
    }

    bool findDatabases()
    {
        QStringList missing;
        for (const QString &database : databases()) {
            if (!QFileInfo::exists(original(database)))
                missing << original(database);
            else
                outcome.report.databases
                    << DatabaseFacts{.name = database, .newestVersion = newestVersion(database)};
        }
        if (outcome.report.databases.isEmpty())
            return fail(
                QString("There is no database: none of %1 exists.").arg(missing.join(", ")));
        return true;
    }

    bool hasSpace()
    {
        QStringList originals;
        for (const DatabaseFacts &facts : outcome.report.databases)
            originals << original(facts.name);
        outcome.error = lackOfSpace(spaceNeededFor(originals), freeSpaceIn(folder), folder);
        return outcome.error.isEmpty();
    }

    bool makeFolders()
    {
        const QDir own(folder);
        const QFile::Permissions onlyUser = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
        for (const char *side : {"before", "after"}) {
            if (!own.mkdir(side, onlyUser))
                return fail(QString("%1/%2 cannot be made.").arg(folder, side));
        }
        return true;
    }

    bool copyOriginals()
    {
        qint64 total = 0;
        for (const DatabaseFacts &facts : outcome.report.databases)
            total += 2 * bytesOf(original(facts.name));
        progress.beginBytes("Copying the databases", total);
        for (DatabaseFacts &facts : outcome.report.databases) {
            const Snapshot snapshot =
                takeSnapshot(original(facts.name), copy("before", facts.name), counter());
            if (!goOn())
                return false;
            if (snapshot.state == Snapshot::State::NotWritten)
                return fail(snapshot.problem);
            facts.problem = snapshot.problem;
            facts.filesBefore = snapshot.files;
            if (!facts.problem.isEmpty())
                outcome.complete = false;
        }
        return true;
    }

    bool copyCopies()
    {
        for (const DatabaseFacts &facts : outcome.report.databases) {
            const QString error =
                copySnapshot(copy("before", facts.name), copy("after", facts.name), counter());
            if (!goOn())
                return false;
            if (!error.isEmpty())
                return fail(error);
        }
        return true;
    }

    BytesRead counter()
    {
        return [this](qint64 bytes) {
            progress.addBytes(bytes);
            return !interrupted();
        };
    }

    QStringList filesIn(const QString &side) const
    {
        QStringList files;
        for (const DatabaseFacts &facts : outcome.report.databases)
            files << filesOf(copy(side, facts.name));
        return files;
    }

    bool upgrade()
    {
        if (filesIn("after").isEmpty())
            return true;
        progress.step("Upgrading the copies");
        const UpgradeRun run = runUpgrade(
            vardo, folder + "/after", command.names,
            [this](const QString &line) {
                progress.step("Upgrading the copies", partOfUpgrade(line));
            },
            interrupted);
        if (!goOn())
            return false;
        outcome.report.log = run.log;
        outcome.report.exitCode = run.exitCode;
        outcome.report.milliseconds = run.milliseconds;
        outcome.report.problem = run.problem;
        for (DatabaseFacts &facts : outcome.report.databases) {
            const LoggedUpgrade logged =
                upgradeIn(run.log, command.names.fileName(facts.name), run.milliseconds);
            facts.steps = logged.steps;
            facts.milliseconds = logged.milliseconds;
        }
        return true;
    }

    /// The originals' digests are those of their copies.
    void takeDigests(Digests &digests)
    {
        const QHash<QString, QByteArray> values = digests.result();
        for (DatabaseFacts &facts : outcome.report.databases) {
            for (FileFacts &file : facts.filesBefore) {
                const QString ending = file.path.mid(facts.filesBefore.first().path.size());
                file.sha256 = values.value(copy("before", facts.name) + ending);
            }
        }
    }

    bool compareCopies()
    {
        for (const DatabaseFacts &facts : outcome.report.databases) {
            for (const char *side : {"before", "after"})
                playBackJournal(copy(side, facts.name));
        }
        Digests digests(filesIn("after"));
        for (DatabaseFacts &facts : outcome.report.databases) {
            const QString before = copy("before", facts.name);
            const QString after = copy("after", facts.name);
            facts.filesAfter = factsOfFiles(after);
            if (facts.problem.isEmpty())
                compareDatabase(facts, before, after, command.examples, progress);
            if (!goOn())
                return false;
        }
        const QHash<QString, QByteArray> values = digests.result();
        for (DatabaseFacts &facts : outcome.report.databases)
            setDigests(facts.filesAfter, values);
        return true;
    }

    CommandLine command;
    QString vardo;
    QString folder;
    Progress &progress;
    Outcome outcome{};
};

} // namespace

Outcome rehearse(const CommandLine &command, const QString &vardo, const QString &folder,
                 Progress &progress)
{
    return Rehearsal(command, vardo, folder, progress).run();
}

} // namespace coagulation::report
