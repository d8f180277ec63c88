// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

namespace coagulation::report {

/// \return what is unexpected in a row, and what to do, for the laboratory
QString sentenceOn(const UnexpectedRow &row);

} // namespace coagulation::report
