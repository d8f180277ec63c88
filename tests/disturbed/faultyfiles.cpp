// SPDX-License-Identifier: MIT
/// Preloaded into a process, makes its calls on the files of one folder fail; see faultyfiles.h.

#include "faultyfiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

using faultyfiles::Call;

namespace {

/// \return the function of this name that the process would call without this library
template <typename Function> Function next(const char *name)
{
    // NOLINTNEXTLINE(*-reinterpret-cast): what dlsym is for
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

const auto realOpen = next<int (*)(const char *, int, ...)>("open64");
const auto realWrite = next<ssize_t (*)(int, const void *, size_t, off64_t)>("pwrite64");
const auto realTruncate = next<int (*)(int, off64_t)>("ftruncate64");
const auto realSync = next<int (*)(int)>("fdatasync");
const auto realUnlink = next<int (*)(const char *)>("unlink");

std::string variable(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

struct Settings {
    std::string folder = variable(faultyfiles::folderVariable);
    long call = std::strtol(variable(faultyfiles::callVariable).c_str(), nullptr, 10);
    std::string fault = variable(faultyfiles::faultVariable);
    std::string report = variable(faultyfiles::reportVariable);
    std::string trace = variable(faultyfiles::traceVariable);
};

const Settings &settings()
{
    static const Settings settings;
    return settings;
}

bool isWatched(std::string_view path)
{
    const std::string &folder = settings().folder;
    return !folder.empty() && path.substr(0, folder.size()) == folder;
}

std::string pathOf(int file)
{
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t size = readlink(link.c_str(), path.data(), path.size());
    return {path.data(), static_cast<size_t>(std::max<ssize_t>(size, 0))};
}

void appendTo(const std::string &file, std::string_view bytes)
{
    const int descriptor = realOpen(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (descriptor < 0 || ::write(descriptor, bytes.data(), bytes.size()) < 0)
        std::abort();
    close(descriptor);
}

void trace(Call call, std::string_view path, long long offset = 0, std::string_view data = {})
{
    if (settings().trace.empty())
        return;
    const faultyfiles::TraceHead head{call, static_cast<unsigned>(path.size()), offset,
                                      static_cast<unsigned>(data.size())};
    std::string record(sizeof(head), '\0');
    std::memcpy(record.data(), &head, sizeof(head));
    appendTo(settings().trace, record.append(path).append(data));
}

/// \return whether the call now made is to fail
bool isDue()
{
    static long calls = 0;
    ++calls;
    const bool persists =
        settings().fault == faultyfiles::diskFull || settings().fault == faultyfiles::ioError;
    return settings().call > 0
        && (calls == settings().call || (persists && calls > settings().call));
}

/// Fails the call that is due, or kills the process.
/// \return what the failed call returns
int fail()
{
    appendTo(settings().report, "met\n");
    const std::string &fault = settings().fault;
    if (fault == faultyfiles::kill || fault == faultyfiles::tear)
        raise(SIGKILL);
    errno = fault == faultyfiles::diskFull || fault == faultyfiles::diskFullOnce ? ENOSPC : EIO;
    return -1;
}

} // namespace

extern "C" {

// The system's headers name the parameters as only they may.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

int open64(const char *path, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const bool creates = (flags & O_CREAT) != 0 && isWatched(path) && access(path, F_OK) != 0;
    const int file = realOpen(path, flags, mode);
    if (creates && file >= 0)
        trace(Call::Create, path);
    return file;
}

ssize_t pwrite64(int file, const void *data, size_t size, off64_t offset)
{
    const std::string path = pathOf(file);
    if (isWatched(path)) {
        if (isDue()) {
            if (settings().fault == faultyfiles::tear)
                (void)realWrite(file, data, size / 2, offset);
            return fail();
        }
        trace(Call::Write, path, offset, {static_cast<const char *>(data), size});
    }
    return realWrite(file, data, size, offset);
}

int ftruncate64(int file, off64_t size) noexcept
{
    const std::string path = pathOf(file);
    if (isWatched(path)) {
        if (isDue())
            return fail();
        trace(Call::Truncate, path, size);
    }
    return realTruncate(file, size);
}

int fdatasync(int file)
{
    const std::string path = pathOf(file);
    if (!isWatched(path))
        return realSync(file);
    if (isDue())
        return fail();
    trace(Call::Sync, path);
    return 0; // the process may die here, the machine does not
}

int unlink(const char *path) noexcept
{
    if (isWatched(path)) {
        if (isDue())
            return fail();
        trace(Call::Unlink, path);
    }
    return realUnlink(path);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

} // extern "C"
