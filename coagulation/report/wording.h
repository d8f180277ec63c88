// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Words for sentences.
namespace coagulation::report {

/// \return "less than a second", "3 seconds", "2 minutes"
QString timeInWords(qint64 milliseconds);

/// \return a line of the log without the word for its kind
QString withoutKind(const QString &line);

/// \return a sentence as the end of another one
QString asClause(QString sentence);

} // namespace coagulation::report
