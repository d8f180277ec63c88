// SPDX-License-Identifier: MIT
#pragma once

namespace coagulation::report {

/// Makes Ctrl-C and the request to end set a mark instead of ending the program, so that it removes its copies.
void catchInterruptions();

/// \return true once the user has asked for the end
bool interrupted();

} // namespace coagulation::report
