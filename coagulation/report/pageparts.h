// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"
#include "coagulation/report/pagewriter.h"

/// The page's parts, each a section or a few of them. What a report has nothing of is left out.
namespace coagulation::report {

/// The verdict, and the answers to what most people ask.
void writeVerdict(PageWriter &page, const Report &report);

void writeAttention(PageWriter &page, const Report &report);

/// How values stand in the tables, and what their heads mean.
void writeLegend(PageWriter &page);

void writeDatabase(PageWriter &page, const DatabaseFacts &database, const Report &report);

void writeCurves(PageWriter &page, const Report &report);

void writeLog(PageWriter &page, const Report &report);

void writeRecord(PageWriter &page, const Report &report);

/// \return the facts of a database; none if it is not in the report
const DatabaseFacts *databaseOf(const Report &report, const QString &name);

bool hasCurves(const Report &report);

/// A table that scrolls in a box of its own where it is wider than the page, with the heads of its columns.
class Table {
public:
    struct Head {
        QString text;
        QString kind{}; ///< class of the style sheet, such as "number"
    };

    /// \param caption may be empty
    Table(PageWriter &page, const QString &caption, std::initializer_list<Head> columns,
          const QString &kind = {});

private:
    Element box;
    Element table;
    // The heads are closed before the first row, hence between the table and its body.
    struct Heads {
        Heads(PageWriter &page, const QString &caption, std::initializer_list<Head> heads);
    } heads;
    Element body;
};

/// What many readers want to skip: content that is folded away until somebody asks for it.
class Folded {
public:
    Folded(PageWriter &page, const QString &summaryText, bool open = false);

private:
    Element details;
    struct Summary {
        Summary(PageWriter &page, const QString &text);
    } summary;
};

} // namespace coagulation::report
