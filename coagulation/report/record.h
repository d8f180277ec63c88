// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

namespace coagulation::report {

/// \param ownFolder a folder that this process made, whose owner is the user
/// \param program path of the vardo that ran; empty if none did
Record recordOf(const QString &ownFolder, const QString &program);

} // namespace coagulation::report
