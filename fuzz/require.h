// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdio>
#include <cstdlib>

/// Ends the program unless a condition holds, which the fuzzer takes for a finding.
/// \param what must be so
inline void require(bool condition, const QString &what)
{
    if (condition)
        return;
    std::fprintf(stderr, "Not so: %s\n", qUtf8Printable(what));
    std::abort();
}
