# SPDX-License-Identifier: MIT
include(CMakeFindDependencyMacro)
find_dependency(Qt6 COMPONENTS Core)
include(${CMAKE_CURRENT_LIST_DIR}/zucoreTargets.cmake) # brings coagulation::zucore
