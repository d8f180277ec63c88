// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace coagulation {

/// \param file __FILE__, in whatever folder the project is built
/// \return the path from the project's root on, for units below coagulation/
consteval const char *sourcePath(const char *file)
{
    const std::string_view path = file;
    const auto start = path.rfind("coagulation");
    return start == std::string_view::npos ? file : path.substr(start).data();
}

} // namespace coagulation

/// The source file and line of the caller, as two arguments.
#define SOURCE_LINE ::coagulation::sourcePath(__FILE__), __LINE__
