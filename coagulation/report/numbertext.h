// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Numbers as people read them in the page.
namespace coagulation::report {

/// \return with commas between the thousands
QString countText(qint64 count);

/// \return "3 rows", "1 row"
QString countText(qint64 count, const QString &one, const QString &many);

/// \return "2.4 MB"; up to 999 in bytes
QString sizeText(qint64 bytes);

/// \return "350 ms", "2.4 s", "3 min 20 s", "1 h 5 min"
QString durationText(qint64 milliseconds);

/// \return eight significant digits at most; very large and small ones with a power of ten
QString numberText(double number);

/// \return a per cent value as somebody would say it: "0.04 %", "12 %", "more than 1,000 %"
QString percentText(double percent);

/// \return a value beside an axis, with as many digits as tell it from the next one
/// \param step to the next value
QString tickLabel(double value, double step);

} // namespace coagulation::report
