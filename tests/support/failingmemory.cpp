// SPDX-License-Identifier: MIT
#include "failingmemory.h"

#include <QByteArrayView>

#include <sqlite3.h>

#include <atomic>

namespace failingmemory {

namespace {

// SQLite takes plain functions.
// NOLINTBEGIN(*-avoid-non-const-global-variables)
sqlite3_mem_methods real; ///< what SQLite would call by itself
std::atomic<bool> counts = false;
std::atomic<int> left = 0; ///< requests that are fulfilled before one is not; then below 0
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

/// The statement during which a request fails.
struct Window {
    QByteArray begin; ///< of its text
    int fulfilled = 0;
    void *statement = nullptr; ///< once it has begun
    bool ended = false;
    bool refused = false;
};

Window &window()
{
    static Window window;
    return window;
}

int trace(unsigned event, void * /*context*/, void *statement, void *text)
{
    if (event == SQLITE_TRACE_STMT && window().statement == nullptr
        && QByteArrayView(static_cast<const char *>(text)).startsWith(window().begin)) {
        window().statement = statement;
        failAfter(window().fulfilled);
    } else if (event == SQLITE_TRACE_PROFILE && statement == window().statement
               && !window().ended) {
        window().ended = true;
        window().refused = stop();
    }
    return 0;
}

int traceConnection(sqlite3 *opened, char ** /*message*/, const sqlite3_api_routines * /*api*/)
{
    return sqlite3_trace_v2(opened, SQLITE_TRACE_STMT | SQLITE_TRACE_PROFILE, trace, nullptr);
}

// NOLINTNEXTLINE(*-reinterpret-cast,*-avoid-non-const-global-variables): SQLite's own idiom
void (*const extension)() = reinterpret_cast<void (*)()>(traceConnection);

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

DuringStatement::DuringStatement(const QByteArray &begin, int fulfilled)
{
    window() = {.begin = begin, .fulfilled = fulfilled};
    sqlite3_auto_extension(extension);
}

DuringStatement::~DuringStatement()
{
    sqlite3_cancel_auto_extension(extension);
    stop();
}

bool DuringStatement::hasEnded() const
{
    return window().ended;
}

bool DuringStatement::wasRefused() const
{
    return window().refused;
}

} // namespace failingmemory
