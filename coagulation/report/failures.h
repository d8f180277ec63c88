// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

namespace coagulation::report {

/// Why an upgrade does not work, or what is wrong in a comparison.
struct Failure {
    QString database{}; ///< its name; empty for the run as a whole
    QString clause;     ///< the end of a sentence that names the database
    QString sentence;   ///< that stands alone
    QString anchor{};
    std::optional<qsizetype> warning{}; ///< the line of the log that the sentence quotes
};

/// \return none if the upgrade works
QList<Failure> failuresOf(const Report &report);

} // namespace coagulation::report
