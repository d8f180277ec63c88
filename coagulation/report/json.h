// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <QByteArray>

namespace coagulation::report {

/// \return the facts as one JSON object in UTF-8; the manual describes its keys
QByteArray toJson(const Report &report);

} // namespace coagulation::report
