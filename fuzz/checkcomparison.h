// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Compares a database before and after its upgrade as vardo-report does. Ends the program unless the numbers of rows
/// fit those of the files, a table without a difference has the same rows in both, the files stay as they are, and
/// the report is one that checkReport() takes.
/// \param name of the database: "profile", "data", "qc" or "syslog"
/// \param before, after paths of both files, which no other program writes
void checkComparison(const QString &name, const QString &before, const QString &after);
