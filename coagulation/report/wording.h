// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Words for sentences.
namespace coagulation::report {

/// \return the number with a comma after each thousand
QString counted(qint64 number);

/// \return "1 row", "1,200 rows"
QString countedRows(qint64 number);

/// \return "less than a second", "3 seconds", "2 minutes"
QString spokenDuration(qint64 milliseconds);

/// \return a line of the log without the word for its kind
QString withoutKind(const QString &line);

/// \return a sentence as the end of another one
QString asClause(QString sentence);

} // namespace coagulation::report
