// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/commandline.h"

/// The files that a run leaves: the page, and the file for programs.
namespace coagulation::report {

/// Looks for what would keep the files from being written, so that it shows before the long work.
/// \return a sentence; empty if they can be written
QString problemOfOutputs(const CommandLine &command);

/// Writes the files. An older one stays as it is until the new one is complete.
/// \return why one was not written, a sentence; empty if all are
QString writeOutputs(const CommandLine &command, const Report &report);

/// Writes to standard output, readable in a Windows console of any code page.
/// \return false if it takes no more
bool printOutput(const QString &text);

} // namespace coagulation::report
