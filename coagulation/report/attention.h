// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

/// What of the facts a person must look at.
namespace coagulation::report {

/// \return in the order of importance: failures first
QList<Attention> attentionOf(const Report &report);

/// \return whether the upgrade works, or nothing is wrong in a comparison
bool succeeded(const Report &report);

/// \return whether a database has a higher version than before
bool isUpgraded(const Report &report);

/// \return the verdict, one sentence
QString verdict(const Report &report);

} // namespace coagulation::report
