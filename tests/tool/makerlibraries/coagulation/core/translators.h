// SPDX-License-Identifier: MIT
#pragma once

namespace coagulation {

/// Installs no translation and says in the log that it was called.
void installTranslators();

} // namespace coagulation
