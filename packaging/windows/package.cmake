# SPDX-License-Identifier: MIT
# cpack runs this when the programs are in their folder. Adds the pages and the licences, and packs the archive.
set(folder "${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
set(notices "${CPACK_TEMPORARY_DIRECTORY}.md") # beside the folder, not in the archive
set(archive "${CPACK_TEMPORARY_DIRECTORY}.zip")

foreach(needed IN ITEMS sources licenses)
    if(NOT EXISTS "${CPACK_VARDO_LIBRARIES}/${needed}")
        message(FATAL_ERROR "${CPACK_VARDO_LIBRARIES} has no ${needed}, of which the notices are made:"
            " build the libraries with scripts/windows-libraries")
    endif()
endforeach()
execute_process(COMMAND /usr/bin/python3 -c "import markdown_it"
    RESULT_VARIABLE missing ERROR_QUIET)
if(missing)
    message(FATAL_ERROR "The pages are made with Debian's package python3-markdown-it, which is missing:"
        " scripts/setup windows installs it")
endif()

execute_process(
    COMMAND /usr/bin/python3 -B "${CMAKE_CURRENT_LIST_DIR}/notices.py"
        ${CPACK_VARDO_CURVES} ${CPACK_VARDO_PACKAGE} ${CPACK_PACKAGE_VERSION}
        "${CPACK_VARDO_LIBRARIES}" "${notices}" "${folder}"
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/pages.py" "${CPACK_VARDO_NAME}" "${folder}"
        "${CPACK_VARDO_SOURCE}/docs/operating.md=manual.html"
        "${CPACK_VARDO_SOURCE}/docs/changed-values.md=changed-values.html"
        "${CPACK_VARDO_SOURCE}/docs/limits.md=limits.html"
        "${CPACK_VARDO_SOURCE}/CHANGELOG.md=changelog.html"
        "${CPACK_VARDO_SOURCE}/SECURITY.md=security.html"
        "${notices}=third-party.html"
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/archive.py" "${folder}" "${archive}"
    COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES "${archive}")
