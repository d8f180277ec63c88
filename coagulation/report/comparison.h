// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <functional>

/// Compares a database before and after an upgrade, whatever its layout. SQLite does the work: both files are
/// attached to one connection, and only counts and the rows to show leave it.
namespace coagulation::report {

struct ComparisonOptions {
    bool allChangedRows = false; ///< of each table, up to mostRows; otherwise examples
    bool examples = true;        ///< rows as examples; otherwise counts only
};

constexpr qint64 mostExamples = 20; ///< of a kind, in each table
constexpr qint64 mostRows = 20'000; ///< changed rows of a table that a report holds

/// The problem of a virtual table, which is no failure. Such a table can do anything when it is read.
constexpr const char *virtualTableProblem = "a virtual table, not compared";

/// Compares tables, indexes, triggers and views. Rows meet by primary key, or by rowid where there is none.
/// Both files stay as they are. What cannot be compared becomes a sentence in the facts.
/// \param facts with the name; gets versions, integrity, tables, objects and curves
/// \param before, after paths of both files, which exist
/// \param progress called with the name of each table before it is compared; false ends the comparison
void compare(DatabaseFacts &facts, const QString &before, const QString &after,
             const ComparisonOptions &options,
             const std::function<bool(const QString &)> &progress);

/// \return the version of the newest step that this program knows
/// \param name of the database, "profile", "data", "qc" or "syslog"
int newestVersion(const QString &name);

} // namespace coagulation::report
