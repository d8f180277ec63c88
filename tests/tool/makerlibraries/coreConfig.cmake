# SPDX-License-Identifier: MIT
# Stands for the package of the maker's core library, to configure the project with.
add_library(coagulation::core INTERFACE IMPORTED)
