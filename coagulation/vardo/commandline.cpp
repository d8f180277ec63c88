// SPDX-License-Identifier: MIT
#include "coagulation/vardo/commandline.h"

namespace coagulation {

CommandLine parseCommandLine(const QStringList &arguments)
{
    CommandLine command;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "-h" || *argument == "-?" || *argument == "--help")
            return {.exitCode = exitcode::success};
        if (*argument == "-p" || *argument == "-s") {
            QString &affix = *argument == "-p" ? command.affixes.prefix : command.affixes.suffix;
            if (++argument == arguments.end())
                return {.exitCode = exitcode::failure};
            affix = *argument;
        } else if (argument->startsWith('-')) {
            return {.exitCode = exitcode::unknownOption,
                    .error = "Unknown option " + *argument + '\n'};
        } else {
            command.logFile = *argument;
        }
    }
    return command;
}

} // namespace coagulation
