# SPDX-License-Identifier: MIT
# cpack runs this when the programs are in their folder. Adds the list of the libraries that they use.
set(root "${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
set(list "${root}/${CPACK_VARDO_DOCDIR}/components.cdx.json")
execute_process(
    COMMAND /usr/bin/python3 -B "${CMAKE_CURRENT_LIST_DIR}/components.py"
        ${CPACK_VARDO_CURVES} ${CPACK_DEBIAN_PACKAGE_NAME} ${CPACK_PACKAGE_VERSION} "${list}"
        "${root}/${CPACK_VARDO_BINDIR}/vardo" "${root}/${CPACK_VARDO_BINDIR}/vardo-report"
    COMMAND_ERROR_IS_FATAL ANY)
file(CHMOD "${list}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ) # whatever the user's mask
