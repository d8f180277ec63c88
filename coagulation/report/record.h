// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

namespace coagulation::report {

/// \param ownFolder a folder that this process made, whose owner is the user
/// \return time, host, user and versions
Record recordOf(const QString &ownFolder);

/// \return SHA-256 of a file in hexadecimal digits; empty if it cannot be read
QByteArray sha256Of(const QString &path);

} // namespace coagulation::report
