// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/tablecomparison.h"

/// The rows of a table that a report shows.
namespace coagulation::report {

class Questions;

/// Which rows of one side to read.
struct RowSelection {
    QString condition{}; ///< with the row as "b" or "a"; empty for all rows
    qint64 most = mostExamples;
};

QList<RowFacts> readRows(Questions &questions, const Literals &literals, const TableLayout &layout,
                         const QString &alias, const QStringList &key,
                         const RowSelection &selection);

/// \param twins the tables with the pairs of rows that are the same but for the key
QList<RowFacts> readRenamedRows(Questions &questions, const Literals &literals,
                                const TablePair &pair, const QString &twins, qint64 most);

/// \param columns those of which to read the values
QList<ChangedRow> readChangedRows(Questions &questions, const Literals &literals,
                                  const TablePair &pair, const QList<CommonColumn> &columns,
                                  qint64 most);

/// \return the condition under which a value that differs was overwritten; see ChangedCell
QString isOverwritten(const CommonColumn &column);

} // namespace coagulation::report
