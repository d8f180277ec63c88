// SPDX-License-Identifier: MIT
/// A Windows program that keeps a file open until its standard input ends, as the analyser software or a virus
/// scanner may. It prints a line when it has the file.

#include <windows.h>

#include <cstdio>
#include <span>
#include <string>

namespace {

/// \param whom "nobody", "readers" or "everybody"
DWORD sharedWith(const std::wstring &whom)
{
    if (whom == L"everybody")
        return FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return whom == L"readers" ? FILE_SHARE_READ : 0;
}

} // namespace

int wmain(int argc, wchar_t *argv[])
{
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (arguments.size() != 3) {
        std::fputs("fileholder <file> nobody|readers|everybody\n", stderr);
        return 2;
    }
    auto *const file = CreateFileW(arguments[1], GENERIC_READ, sharedWith(arguments[2]), nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) { }
    CloseHandle(file);
    return 0;
}
