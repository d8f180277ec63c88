# SPDX-License-Identifier: MIT
include(CMakeFindDependencyMacro)
find_dependency(Qt6 COMPONENTS Core)
include(${CMAKE_CURRENT_LIST_DIR}/coreTargets.cmake) # brings coagulation::core
