// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Takes Qt's own words out of a line of the log, since they may change with Qt: to the text of an error of
/// SQLite's its driver adds what it was doing, as in "no such table: x Unable to execute statement".
/// \return the line with SQLite's text alone
QString withoutDriverTexts(QString line);
