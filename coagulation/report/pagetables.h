// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

namespace coagulation::report {

class PageWriter;

/// The overview of a database's tables: rows before and after, and what became of them.
void writeTableOverview(PageWriter &page, const DatabaseFacts &database);

/// A table's differences in detail.
/// \param index of the table in the database's facts
void writeTableDifferences(PageWriter &page, const DatabaseFacts &database, qsizetype index);

/// \return whether anything of a table differs, or could not be compared
bool differs(const TableFacts &table);

} // namespace coagulation::report
