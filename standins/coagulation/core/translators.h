// SPDX-License-Identifier: MIT
#pragma once

/// Stand-in for the maker's library of the same name: the one operation that the tool calls.
namespace coagulation {

/// Installs the translation of the tool's labels for the system's locale, if there is one: the file
/// vardo_<locale>.qm in the folder `translations` beside the executable, else in
/// `../share/vardo/translations`. Without one the labels stay as they are written in the source.
/// Needs a QCoreApplication, which then owns the translator.
void installTranslators();

} // namespace coagulation
