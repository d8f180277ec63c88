// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/comparison.h"
#include "coagulation/report/literals.h"
#include "coagulation/report/tablelayout.h"

class QSqlDatabase;

namespace coagulation::report {

/// What the comparisons of all tables share.
struct ComparisonContext {
    const QSqlDatabase &connection;
    const Literals &literals;
    ComparisonOptions options;
    bool isProfile = false; ///< the database has the settings
};

/// Compares the rows of a table. A failure becomes the problem of the facts.
/// \param facts with the name; gets columns, counts and rows
/// \param before, after what has the table's name in the schemas; none if there is nothing
void compareTable(const ComparisonContext &context, const std::optional<SchemaEntry> &before,
                  const std::optional<SchemaEntry> &after, TableFacts &facts);

} // namespace coagulation::report
