// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QSqlDatabase;

namespace coagulation::report {

/// Runs SQLite's own check of a file. A finding that is damage goes before one about a value.
/// \param schema name of the database on the connection
/// \return "ok", or a finding, or why there is none
QString integrityOf(const QSqlDatabase &connection, const QString &schema);

/// \return whether a finding is none, or is about a value which breaks a constraint or is not of its column's
///         type: older software wrote such values, and the file itself is sound
bool isSound(const QString &finding);

} // namespace coagulation::report
