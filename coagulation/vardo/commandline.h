// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/updatebase.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace coagulation {

/// What the tool ends with.
namespace exitcode {
constexpr int success = 0;
constexpr int failure = 1; ///< an updater failed, or an option's value is missing
constexpr int unknownOption = 2;
} // namespace exitcode

/// What the user asks for.
struct CommandLine {
    FileNameAffixes affixes{};
    QString logFile{};             ///< empty for none
    std::optional<int> exitCode{}; ///< if the tool is to show its usage and end
    QString error{};               ///< a line to show before the usage; empty for none
};

/// \param arguments the command line without the program's name
CommandLine parseCommandLine(const QStringList &arguments);

} // namespace coagulation
