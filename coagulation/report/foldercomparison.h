// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/commandline.h"
#include "coagulation/report/outcome.h"

namespace coagulation::report {

/// Compares the databases of two folders. What SQLite would write into a folder to read a database there, such as
/// the index of a write-ahead log, it writes beside a copy.
/// \param folder of this run alone, for the copies
Outcome compareFolders(const CommandLine &command, const QString &folder, Progress &progress);

} // namespace coagulation::report
