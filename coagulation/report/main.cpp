// SPDX-License-Identifier: MIT
/// The driver: reads the command line, rehearses or compares, and writes the report.

#include "coagulation/report/attention.h"
#include "coagulation/report/commandline.h"
#include "coagulation/report/foldercomparison.h"
#include "coagulation/report/interruption.h"
#include "coagulation/report/outputs.h"
#include "coagulation/report/progress.h"
#include "coagulation/report/record.h"
#include "coagulation/report/rehearsal.h"
#include "coagulation/report/workplace.h"
#include "coagulation/vardo/consolelog.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace {

using namespace coagulation::report;

constexpr int success = 0;
constexpr int failure = 1;  ///< the upgrade fails, or something is wrong in a comparison
constexpr int noReport = 2; ///< or one that lacks a database

int endWith(const QString &error)
{
    coagulation::printError("vardo-report: " + error + '\n');
    return noReport;
}

/// \return the path of the vardo that stands beside this program; empty if there is none
QString vardoBesideThis()
{
    return QStandardPaths::findExecutable("vardo", {QCoreApplication::applicationDirPath()});
}

/// SQLite's temporary files hold parts of the databases: they go to the folder of the copies, whose space was
/// looked at.
void keepTemporaryFilesIn(const QString &folder)
{
#ifdef Q_OS_WIN
    qputenv("TMP", folder.toLocal8Bit());
#else
    qputenv("SQLITE_TMPDIR", QFile::encodeName(folder));
#endif
}

int exitCodeOf(const Outcome &outcome)
{
    const bool fails = outcome.report.exitCode.value_or(success) != success;
    if (!outcome.complete && !fails)
        return noReport;
    return succeeded(outcome.report) ? success : failure;
}

int makeReport(const CommandLine &command, const QString &vardo, const Workplace &workplace)
{
    Progress progress(command.quiet ? Progress::Style::Quiet : Progress::styleOfStandardError());
    Outcome outcome = command.use == Use::Rehearsal
        ? rehearse(command, vardo, workplace.path(), progress)
        : compareFolders(command, workplace.path(), progress);
    progress.endLine();
    if (!outcome.error.isEmpty())
        return endWith(outcome.error);

    Report &report = outcome.report;
    report.use = command.use;
    report.examplesOfPatients = command.examples;
    report.record = recordOf(workplace.path(), command.use == Use::Rehearsal ? vardo : QString());
    report.attention = attentionOf(report);
    if (const QString problem = writeOutputs(command, report); !problem.isEmpty())
        return endWith(problem);
    if (!printOutput(QFileInfo(command.page).absoluteFilePath() + '\n'))
        return endWith("Standard output takes no text.");
    return exitCodeOf(outcome);
}

int run(const CommandLine &command)
{
    const QString vardo = vardoBesideThis();
    if (command.use == Use::Rehearsal && vardo.isEmpty())
        return endWith("There is no vardo in " + QCoreApplication::applicationDirPath() + '.');
    const Workplace workplace(command.keep);
    if (!workplace.problem().isEmpty())
        return endWith(workplace.problem());
    if (const QString problem = problemOfOutputs(command); !problem.isEmpty())
        return endWith(problem);
    keepTemporaryFilesIn(workplace.path());
    return makeReport(command, vardo, workplace);
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef Q_OS_WIN
    // A missing disk or a crash is an error: nobody may be there to answer a dialog.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
#endif
    coagulation::shieldLogFromEnvironment();
    catchInterruptions();
    const QCoreApplication application(argc, argv);

    const ParsedCommandLine parsed = parseCommandLine(QCoreApplication::arguments());
    if (!parsed.output.isEmpty()) {
        return printOutput(parsed.output) ? success : endWith("Standard output takes no text.");
    }
    if (!parsed.command)
        return endWith(parsed.error + " Try vardo-report --help.");
    return run(*parsed.command);
}
