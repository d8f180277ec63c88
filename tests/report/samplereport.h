// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

/// \return a rehearsal in which everything that a report can hold happened once at least
coagulation::report::Report sampleReport();

/// \return a report of a comparison in which nothing differs
coagulation::report::Report calmReport();

/// Puts a text into every text of a report that comes from a database, a log or a path.
void fillTexts(coagulation::report::Report &report, const QString &text);

/// \return a curve with a straight line of logarithms before and after: y = 10^(before0 + before1 log x)
coagulation::report::CurveFacts sampleCurve();
