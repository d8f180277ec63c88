// SPDX-License-Identifier: MIT
/// Preloaded into a process, lets one of SQLite's requests for memory fail; see faultyfiles.h.

#include "faultyfiles.h"

#include <sqlite3.h>

#include <cstdlib>
#include <fstream>
#include <string_view>

namespace {

// NOLINTNEXTLINE(*-avoid-non-const-global-variables): what SQLite would call without this library
sqlite3_mem_methods real;

const char *variable(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isDue()
{
    static const long due = std::strtol(variable(faultyfiles::callVariable), nullptr, 10);
    static const bool persists =
        std::string_view(variable(faultyfiles::faultVariable)) == faultyfiles::noMemory;
    static long calls = 0;

    ++calls;
    if (due == 0 || calls < due || (calls > due && !persists))
        return false;
    if (calls == due)
        std::ofstream(variable(faultyfiles::reportVariable)) << "met\n";
    return true;
}

void *allocate(int size)
{
    return isDue() ? nullptr : real.xMalloc(size);
}

void *reallocate(void *memory, int size)
{
    return isDue() ? nullptr : real.xRealloc(memory, size);
}

/// Takes the place of SQLite's allocator before its first use.
const bool installed = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &real);
    sqlite3_mem_methods methods = real;
    methods.xMalloc = allocate;
    methods.xRealloc = reallocate;
    // Without memory set aside for small requests, each is one that may fail.
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK
        && sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) == SQLITE_OK;
}();

} // namespace
