// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace coagulation::report {

/// \return the page's style sheet, without the characters that XML would have to escape, which a style element
///         would take literally
QString pageStyle();

} // namespace coagulation::report
