# SPDX-License-Identifier: MIT
# What Windows shows of a program (its version, who fits standard curves), and the manifest of both programs.
enable_language(RC)

set(VARDO_RESOURCES ${CMAKE_CURRENT_LIST_DIR})

function(vardo_add_resources target description) # the description stands in the properties of <target>.exe
    set(manifest ${VARDO_RESOURCES}/program.manifest)
    configure_file(${VARDO_RESOURCES}/program.rc.in ${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    if(MSVC)
        target_sources(${target} PRIVATE ${manifest})
    endif()
endfunction()
