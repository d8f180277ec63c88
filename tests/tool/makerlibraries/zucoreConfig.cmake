# SPDX-License-Identifier: MIT
# Stands for the package of the maker's zucore library, to configure the project with.
add_library(coagulation::zucore INTERFACE IMPORTED)
