# SPDX-License-Identifier: MIT
# Builds for 64-bit Windows on Debian, with the compiler of the packages mingw-w64. Programs are static: they
# need no DLL but Windows' own. Wine runs them in tests.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix) # Qt and C++ need POSIX' model of threads
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)
set(CMAKE_CROSSCOMPILING_EMULATOR wine)

# Packages, headers and libraries of Windows only. Programs are those of this machine.
set(CMAKE_FIND_ROOT_PATH /usr/${triplet} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Addresses are random and data is never run. No time stamp: the same source makes the same bytes.
string(JOIN " " flags -static -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
    -Wl,--no-insert-timestamp -s)
foreach(kind IN ITEMS EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "${flags}")
endforeach()
