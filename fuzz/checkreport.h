// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

/// Ends the program unless the page of a report is well-formed XML without control characters, in which nothing runs
/// and whose links lead somewhere within it, and its JSON can be parsed.
void checkReport(const coagulation::report::Report &report);
