// SPDX-License-Identifier: MIT
#pragma once

namespace coagulation {

/// Installs no translation. Says in the log that it was called where the variable MAKER_TELLS is set; the
/// logs of other tests, whose every line is expected, stay as they are.
void installTranslators();

} // namespace coagulation
