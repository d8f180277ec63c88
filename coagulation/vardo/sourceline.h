// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace coagulation {

/// The path of a source file as log lines show it, whatever folder and system the project is built on: from
/// the folder coagulation on, with forward slashes.
template <std::size_t size> struct SourcePath {
    std::array<char, size> text{};

    /// \param file __FILE__
    // NOLINTNEXTLINE(*-avoid-c-arrays, *-explicit-*): a literal, as a template's argument
    consteval SourcePath(const char (&file)[size])
    {
        std::string_view path = file;
        if (const auto start = path.rfind("coagulation"); start != std::string_view::npos)
            path.remove_prefix(start);
        std::replace_copy(path.begin(), path.end(), text.begin(), '\\', '/');
    }
};

template <SourcePath path> consteval const char *sourcePath()
{
    return path.text.data();
}

} // namespace coagulation

/// The source file and line of the caller, as two arguments.
#define SOURCE_LINE ::coagulation::sourcePath<__FILE__>(), __LINE__
