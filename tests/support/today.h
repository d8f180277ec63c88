// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Makes rows comparable that were written on different days: a curve that is fitted gets the local date,
/// and a test may run across midnight.
/// \param rows with texts as SQL literals or in hexadecimal
/// \return the rows with "today" in place of each day since the start of the test program, and with
///         "in 20 years" in place of the same day 20 years later, which is the curve's day of expiry
QStringList withToday(QStringList rows);
