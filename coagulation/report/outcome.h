// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

/// What a rehearsal and a comparison have in common.
namespace coagulation::report {

class Progress;

/// What came out of it.
struct Outcome {
    QString error{};      ///< why there is no report, a sentence; empty if there is one
    Report report{};      ///< without what needs attention
    bool complete = true; ///< all databases could be read
};

/// Compares one database as the report wants it: all changed rows of the profile and the quality-control
/// database, and no rows of the data database unless they were asked for.
/// \param examplesOfPatients whether they were
void compareDatabase(DatabaseFacts &facts, const QString &before, const QString &after,
                     bool examplesOfPatients, Progress &progress);

} // namespace coagulation::report
