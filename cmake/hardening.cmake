# SPDX-License-Identifier: MIT
# Databases come from anywhere, also damaged. Should one of them lead a program to an error in memory, the program
# ends instead of serving whoever made the database. Debian's own packages are built in the same way.
#
# Builds without optimisation stay as they are: the checks of buffers need the optimiser, and the sanitizers have
# checks of their own. Microsoft's compiler does its part unasked.
if(MSVC OR VARDO_SANITIZE)
    return()
endif()

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)

# The first lets a function notice that its return address was overwritten, the second keeps large arrays from
# reaching beyond the stack, the third allows jumps to the beginnings of functions only, where the system's own objects
# do so as well: those of Debian 12 do not. On Windows every program does the second (MinGW fails at its option), and
# nothing looks at what the third leaves in a program.
set(options -fstack-protector-strong)
if(NOT WIN32)
    list(APPEND options -fstack-clash-protection -fcf-protection)
endif()
foreach(option IN LISTS options)
    string(MAKE_C_IDENTIFIER "VARDO_KNOWS${option}" known)
    check_cxx_compiler_flag(${option} ${known})
    if(${known})
        target_compile_options(vardo_options INTERFACE $<${optimised}:${option}>)
    endif()
endforeach()
# MinGW has the functions that these checks call in a library of their own.
target_link_options(vardo_options INTERFACE $<${optimised}:-fstack-protector-strong>)

# The C library's functions check the sizes of buffers. Level 3 sees more of them; a C library that lacks it warns.
cmake_push_check_state(RESET)
set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <cstring>\nint main() {}" VARDO_KNOWS_FORTIFY_SOURCE_3)
cmake_pop_check_state()
# Some compilers, and packagers in their flags, define it already.
target_compile_options(vardo_options INTERFACE
    $<${optimised}:-U_FORTIFY_SOURCE>
    $<${optimised}:-D_FORTIFY_SOURCE=$<IF:$<BOOL:${VARDO_KNOWS_FORTIFY_SOURCE_3}>,3,2>>)

# The C++ library checks indexes and preconditions.
target_compile_definitions(vardo_options INTERFACE $<${optimised}:_GLIBCXX_ASSERTIONS>)

# Addresses are random, no data is run, and addresses of functions cannot be replaced once the program runs. For
# Windows the toolchain file asks for the like.
if(UNIX AND NOT APPLE)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    target_link_options(vardo_options INTERFACE
        $<${optimised}:LINKER:-z,relro,-z,now,-z,noexecstack>)
endif()
