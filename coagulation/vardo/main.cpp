// SPDX-License-Identifier: MIT
/// The driver: reads the command line, opens the log and upgrades the four databases in order.

#include "coagulation/core/translators.h"
#include "coagulation/vardo/consolelog.h"
#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateprofile.h"
#include "coagulation/vardo/updateqc.h"
#include "coagulation/vardo/updatesyslog.h"

#include <QCoreApplication>

#include <cstdio>
#include <optional>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace {

constexpr const char *usage = R"(vardo [options] [logfile]
options
-h, -? --help show this information
-p prefix     prefix of database file name. default is null
-s suffix     suffix of database file name. default is null
              profile database file name will be <prefix>profile<suffix>.db
              data database file name will be <prefix>data<suffix>.db
              qc database file name will be <prefix>qc<suffix>.db
              syslog database file name will be <prefix>syslog<suffix>.db
)";

constexpr int success = 0;
constexpr int failure = 1; ///< an updater failed, or an option's value is missing
constexpr int unknownOption = 2;

struct Options {
    coagulation::FileNameAffixes affixes;
    QString logFile;
};

/// \param arguments the command line without the program's name
/// \return the exit code, if the tool is to show its usage and end
std::optional<int> parse(const QStringList &arguments, Options &options)
{
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "-h" || *argument == "-?" || *argument == "--help")
            return success;
        if (*argument == "-p" || *argument == "-s") {
            QString &affix = *argument == "-p" ? options.affixes.prefix : options.affixes.suffix;
            if (++argument == arguments.end())
                return failure;
            affix = *argument;
        } else if (argument->startsWith('-')) {
            coagulation::printError("Unknown option " + *argument + '\n');
            return unknownOption;
        } else {
            options.logFile = *argument;
        }
    }
    return std::nullopt;
}

template <typename Updater> bool upgrade()
{
    Updater updater;
    return updater.run();
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef Q_OS_WIN
    // A missing disk or a crash is an error: in an unattended run nobody answers a dialog.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
#endif
    coagulation::shieldLogFromEnvironment();
    const QCoreApplication application(argc, argv);

    Options options;
    if (const std::optional<int> exitCode = parse(QCoreApplication::arguments().mid(1), options)) {
        std::fputs(usage, stdout);
        return *exitCode;
    }
    coagulation::fileNameAffixes() = options.affixes;
    coagulation::openLog(options.logFile);
    coagulation::installTranslators();

    const bool upgraded = upgrade<coagulation::UpdateProfile>()
        && upgrade<coagulation::UpdateData>() && upgrade<coagulation::UpdateQc>()
        && upgrade<coagulation::UpdateSyslog>();
    if (!upgraded)
        return failure;

    coagulation::closeLog();
    return success;
}
