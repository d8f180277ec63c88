# SPDX-License-Identifier: MIT
# Programs for Linux say in themselves of which package and version they are: vardo has no option that would.

set(VARDO_PACKAGE_NOTE ${CMAKE_CURRENT_LIST_DIR}/package-note.cpp.in)

function(vardo_add_package_note target)
    configure_file(${VARDO_PACKAGE_NOTE} package-note.cpp @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/package-note.cpp)
endfunction()
