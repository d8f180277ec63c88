// SPDX-License-Identifier: MIT
#include "failingmemory.h"

#include <sqlite3.h>

namespace failingmemory {

namespace {

// SQLite takes plain functions.
// NOLINTBEGIN(*-avoid-non-const-global-variables)
sqlite3_mem_methods real; ///< what SQLite would call by itself
bool counts = false;
int left = 0; ///< requests that are fulfilled before one is not; then below 0
// NOLINTEND(*-avoid-non-const-global-variables)

bool isDue()
{
    return counts && left-- == 0;
}

void *allocate(int size)
{
    return isDue() ? nullptr : real.xMalloc(size);
}

void *reallocate(void *memory, int size)
{
    return isDue() ? nullptr : real.xRealloc(memory, size);
}

} // namespace

bool install()
{
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &real) != SQLITE_OK)
        return false;
    sqlite3_mem_methods methods = real;
    methods.xMalloc = allocate;
    methods.xRealloc = reallocate;
    // Without memory set aside for small requests, each is one that may fail.
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK
        && sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) == SQLITE_OK;
}

void failAfter(int fulfilled)
{
    left = fulfilled;
    counts = true;
}

bool stop()
{
    const bool refused = counts && left < 0;
    counts = false;
    return refused;
}

} // namespace failingmemory
