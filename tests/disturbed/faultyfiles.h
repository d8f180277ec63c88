// SPDX-License-Identifier: MIT
#pragma once

/// What a test orders of the preload libraries faultyfiles and faultymemory, and what the first records.
///
/// faultyfiles counts the calls by which a process changes or settles the files of one folder (write,
/// truncate, sync and unlink) and lets one of them fail; faultymemory does the same to SQLite's requests
/// for memory. Linux only.
namespace faultyfiles {

// Names of environment variables. Without the first nothing is counted.
constexpr const char *folderVariable = "FAULTY_FILES_FOLDER"; ///< canonical, no slash at its end
constexpr const char *callVariable = "FAULTY_FILES_CALL";     ///< number of the call, from 1
constexpr const char *faultVariable = "FAULTY_FILES_FAULT";   ///< one of the below
constexpr const char *reportVariable = "FAULTY_FILES_REPORT"; ///< file that the fault creates
constexpr const char *traceVariable = "FAULTY_FILES_TRACE";   ///< file that gets every call

constexpr const char *kill = "kill";                       ///< before the call
constexpr const char *tear = "tear";                       ///< after half of the write
constexpr const char *diskFullOnce = "disk full once";     ///< ENOSPC
constexpr const char *diskFull = "disk full from then on"; ///< ENOSPC
constexpr const char *ioErrorOnce = "I/O error once";      ///< EIO
constexpr const char *ioError = "I/O error from then on";  ///< EIO
constexpr const char *noMemoryOnce = "no memory once";
constexpr const char *noMemory = "no memory from then on";

enum class Call : int { Create, Write, Truncate, Sync, Unlink };

/// Head of a call in the trace; the path and the written bytes follow.
struct TraceHead {
    Call call;
    unsigned pathSize; ///< bytes
    long long offset;  ///< of a write; the new size for a truncation
    unsigned dataSize; ///< bytes
};

} // namespace faultyfiles
