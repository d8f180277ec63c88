// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace coagulation::report {

/// The letters of a text that a page shows; the manual page says so, too.
constexpr qsizetype mostLetters = 2'000;

/// Makes a text of a database, a log or a path fit for a page: letters that no page may hold, such as control
/// characters and halves of a surrogate pair, and those that override the direction of a text become visible
/// ones. A text that is too long is shortened and says so.
QString visibleText(const QString &text);

} // namespace coagulation::report
