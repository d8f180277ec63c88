// SPDX-License-Identifier: MIT
#include "coagulation/report/foldercomparison.h"

#include "coagulation/report/comparison.h"
#include "coagulation/report/digests.h"
#include "coagulation/report/interruption.h"
#include "coagulation/report/progress.h"
#include "coagulation/report/snapshot.h"

#include <QDir>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace coagulation::report {

namespace {

bool hasHeaderOfLog(const QString &database)
{
    constexpr qint64 fileFormats = 18; // https://www.sqlite.org/fileformat.html
    QFile file(database);
    return file.open(QIODevice::ReadOnly) && file.seek(fileFormats) && file.read(2) == "\2\2";
}

/// \return whether SQLite would write beside a database, or into it, to read it
bool needsCopy(const QString &database)
{
    return filesOf(database).size() > 1 || hasHeaderOfLog(database);
}

/// \return whether two names lead to one file, as those of a link and of what it leads to
bool isSameFile(const QString &first, const QString &second)
{
    std::error_code error;
    return std::filesystem::equivalent(QFileInfo(first).filesystemFilePath(),
                                       QFileInfo(second).filesystemFilePath(), error);
}

class FolderComparison {
public:
    FolderComparison(CommandLine commandLine, QString ownFolder, Progress &shownProgress)
        : command(std::move(commandLine))
        , folder(std::move(ownFolder))
        , progress(shownProgress)
    {
    }

    Outcome run()
    {
        if (foldersExist() && readLogFile() && findDatabases() && compareAll())
            takeSteps();
        return std::move(outcome);
    }

private:
    bool fail(const QString &error)
    {
        outcome.error = error;
        return false;
    }

    QString before(const QString &database) const { return path(command.before, database); }
    QString after(const QString &database) const { return path(command.after, database); }
    QString path(const QString &side, const QString &database) const
    {
        return QDir(side).absoluteFilePath(command.names.fileName(database));
    }

    bool foldersExist()
    {
        for (const QString &side : {command.before, command.after}) {
            if (!QFileInfo(side).isDir())
                return fail(QString("%1 is no folder.").arg(side));
        }
        return true;
    }

    bool readLogFile()
    {
        if (command.log.isEmpty())
            return true;
        const std::optional<QList<LogLine>> log = readLog(command.log, command.names);
        if (!log)
            return fail(QString("%1 cannot be read.").arg(command.log));
        if (log->isEmpty())
            return fail(QString("%1 holds no run of vardo on these databases.").arg(command.log));
        outcome.report.log = *log;
        return true;
    }

    bool findDatabases()
    {
        for (const QString &database : databases()) {
            DatabaseFacts facts{.name = database,
                                .newestVersion = newestVersion(database),
                                .filesBefore = factsOfFiles(before(database)),
                                .filesAfter = factsOfFiles(after(database))};
            if (facts.filesBefore.isEmpty() && facts.filesAfter.isEmpty())
                continue;
            if (facts.filesBefore.isEmpty() || facts.filesAfter.isEmpty())
                facts.problem =
                    QString("There is no %1 in %2.")
                        .arg(command.names.fileName(database),
                             facts.filesBefore.isEmpty() ? command.before : command.after);
            else if (isSameFile(before(database), after(database))) // it would show no difference
                return fail(
                    QString("%1 and %2 are the same file.").arg(before(database), after(database)));
            outcome.report.databases << facts;
        }
        if (outcome.report.databases.isEmpty())
            return fail(QString("There is no database: neither %1 nor another one is in %2 or %3.")
                            .arg(command.names.fileName(databases().first()), command.before,
                                 command.after));
        return true;
    }

    bool compareAll()
    {
        QStringList files;
        for (const DatabaseFacts &facts : outcome.report.databases) {
            for (const FileFacts &file : facts.filesBefore + facts.filesAfter)
                files << file.path;
        }
        Digests digests(files); // the locks of the comparison outlive no file that is closed
        for (DatabaseFacts &facts : outcome.report.databases) {
            if (facts.problem.isEmpty() && !compareOne(facts))
                return false;
        }
        const QHash<QString, QByteArray> values = digests.result();
        for (DatabaseFacts &facts : outcome.report.databases) {
            setDigests(facts.filesBefore, values);
            setDigests(facts.filesAfter, values);
        }
        return !interrupted() || fail("Stopped.");
    }

    bool compareOne(DatabaseFacts &facts)
    {
        const QString first = readable(facts, before(facts.name), "before");
        const QString second = readable(facts, after(facts.name), "after");
        if (outcome.error.isEmpty() && facts.problem.isEmpty())
            compareDatabase(facts, first, second, command.examples, progress);
        if (facts.unreadable)
            outcome.complete = false;
        if (interrupted())
            return fail("Stopped.");
        return outcome.error.isEmpty();
    }

    /// \return the path of a database, or of its copy in this run's folder
    QString readable(DatabaseFacts &facts, const QString &database, const QString &side)
    {
        if (!needsCopy(database))
            return database;
        progress.step("Copying", QFileInfo(database).fileName());
        QDir(folder).mkpath(side);
        QString copy = folder + '/' + side + '/' + QFileInfo(database).fileName();
        const Snapshot snapshot =
            takeSnapshot(database, copy, [](qint64) { return !interrupted(); });
        if (snapshot.state == Snapshot::State::Unreadable) {
            facts.problem = snapshot.problem;
            outcome.complete = false;
        } else if (snapshot.state != Snapshot::State::Copied) {
            outcome.error = snapshot.problem;
        }
        return copy;
    }

    void takeSteps()
    {
        for (DatabaseFacts &facts : outcome.report.databases)
            facts.steps = upgradeIn(outcome.report.log, command.names.fileName(facts.name)).steps;
    }

    CommandLine command;
    QString folder;
    Progress &progress;
    Outcome outcome{};
};

} // namespace

Outcome compareFolders(const CommandLine &command, const QString &folder, Progress &progress)
{
    return FolderComparison(command, folder, progress).run();
}

} // namespace coagulation::report
