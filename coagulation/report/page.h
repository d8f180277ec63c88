// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

class QIODevice;

namespace coagulation::report {

/// Writes the report as one page of HTML 5: no script, nothing from outside.
/// \return false if the device takes no more
bool writePage(QIODevice &device, const Report &report);

} // namespace coagulation::report
