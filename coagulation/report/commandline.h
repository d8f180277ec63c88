// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"
#include "coagulation/report/upgraderun.h"

namespace coagulation::report {

/// What the user asks for.
struct CommandLine {
    Use use = Use::Rehearsal;
    DatabaseNames names{}; ///< without a folder
    QString folder{};      ///< of the databases to rehearse; empty or with a separator at its end
    QString before{};      ///< folders to compare
    QString after{};
    QString page{};
    QString json{}; ///< empty for none, as the next ones
    QString log{};
    QString keep{};
    bool examples = false;
    bool quiet = false;
};

struct ParsedCommandLine {
    std::optional<CommandLine> command{};
    QString error{};  ///< a sentence, if there is no command
    QString output{}; ///< the help or the version, if they were asked for
};

/// \param arguments with the program's name
ParsedCommandLine parseCommandLine(const QStringList &arguments);

} // namespace coagulation::report
