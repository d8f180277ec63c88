// SPDX-License-Identifier: MIT
/// The driver: reads the command line, opens the log and upgrades the four databases in order.

#include "coagulation/core/translators.h"
#include "coagulation/vardo/commandline.h"
#include "coagulation/vardo/consolelog.h"
#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateprofile.h"
#include "coagulation/vardo/updateqc.h"
#include "coagulation/vardo/updatesyslog.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

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
#else
    // Whether nobody reads the log any more or a file may not grow: what cannot be written does not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    coagulation::shieldLogFromEnvironment();
    const QCoreApplication application(argc, argv);

    const auto command = coagulation::parseCommandLine(QCoreApplication::arguments().mid(1));
    if (command.exitCode) {
        coagulation::printError(command.error);
        std::fputs(usage, stdout);
        return *command.exitCode;
    }
    coagulation::fileNameAffixes() = command.affixes;
    coagulation::openLog(command.logFile);
    coagulation::installTranslators();

    const bool upgraded = upgrade<coagulation::UpdateProfile>()
        && upgrade<coagulation::UpdateData>() && upgrade<coagulation::UpdateQc>()
        && upgrade<coagulation::UpdateSyslog>();
    if (!upgraded)
        return coagulation::exitcode::failure;

    coagulation::closeLog();
    return coagulation::exitcode::success;
}
