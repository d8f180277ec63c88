// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/commandline.h"
#include "coagulation/report/outcome.h"

namespace coagulation::report {

/// Copies the databases, upgrades the copies and compares them.
/// \param vardo path of the program
/// \param folder of this run alone, which is empty
Outcome rehearse(const CommandLine &command, const QString &vardo, const QString &folder,
                 Progress &progress);

} // namespace coagulation::report
