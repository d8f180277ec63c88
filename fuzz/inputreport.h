// SPDX-License-Identifier: MIT
#pragma once

#include "inputreader.h"

#include "coagulation/report/facts.h"

/// \return a report as a run of vardo-report could fill it from databases and logs with any contents: what a machine
///         counts or chooses is sound, all other texts and numbers are any
coagulation::report::Report readReport(InputReader &input);
