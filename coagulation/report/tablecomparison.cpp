// SPDX-License-Identifier: MIT
#include "coagulation/report/tablecomparison.h"

#include "coagulation/report/databasepair.h"
#include "coagulation/report/settingnames.h"
#include "coagulation/report/tablerows.h"
#include "coagulation/vardo/connection.h"

#include <QSet>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace coagulation::report {

namespace {

class TableComparison {
public:
    TableComparison(const ComparisonContext &shared, TableFacts &table)
        : context(shared)
        , questions(shared.connection)
        , facts(table)
    {
    }

    void compareBoth(const SchemaEntry &before, const SchemaEntry &after);
    void showGone(const SchemaEntry &before);
    void showNew(const SchemaEntry &after);

    bool failed() const { return questions.failed(); }
    bool failedByTheFile() const { return isEnvironmentError(questions.error()); }
    QString predicate() const { return questions.predicate(); }

private:
    qint64 countRows(const TableLayout &layout);
    bool isCheapToRead(const TableLayout &view);
    void compareColumns();
    void findRenamedSettings();
    void countMeetings();
    qint64 countNotKept();
    QString contents() const;
    void countContents();
    QString twins() const;
    void countRenamed();
    void countChangedColumns();
    bool hasTwins() const { return facts.renamed > pair.newNames.size(); }
    QString isRemoved() const;
    QString isAdded() const;
    void readExamples();
    void readRenamedExamples();
    QString contentsOnOneSide(bool before) const;
    qint64 mostLost() const { return context.options.allChangedRows ? mostRows : mostExamples; }
    qint64 mostAdded() const;

    const ComparisonContext &context;
    Questions questions;
    TableFacts &facts;
    TablePair pair{};
    bool meetsByContent = false;
    QList<CommonColumn> changedColumns{};
};

qint64 TableComparison::countRows(const TableLayout &layout)
{
    return questions.value("select count(*) from " + layout.quotedName()).toLongLong();
}

/// \return whether the rows of a view cost no more than a look-up each. A view could as well never end.
bool TableComparison::isCheapToRead(const TableLayout &view)
{
    int scans = 0;
    bool cheap = true;
    questions.ask("explain query plan select * from " + view.quotedName(), {},
                  [&](const QSqlQuery &row) {
                      const QString step = row.value(3).toString();
                      const bool reads = step.startsWith("SCAN ") || step.startsWith("SEARCH ");
                      if (!reads || step.contains("VIRTUAL TABLE"))
                          cheap = false;
                      else if (!step.contains("USING INTEGER PRIMARY KEY (rowid=?)"))
                          ++scans;
                      return true;
                  });
    return cheap && scans <= 1;
}

void TableComparison::compareBoth(const SchemaEntry &before, const SchemaEntry &after)
{
    const TableLayout layoutBefore = layoutOf(questions, schemaBefore, before);
    const TableLayout layoutAfter = layoutOf(questions, schemaAfter, after);
    facts.viewAfter = layoutAfter.view;
    if (layoutAfter.view && !isCheapToRead(layoutAfter) && !failed()) {
        facts.rowsBefore = countRows(layoutBefore);
        facts.problem = "a view after the upgrade, which takes too long to be read";
        return;
    }
    pair = pairOf(questions, layoutBefore, layoutAfter);
    compareColumns();
    if (context.isProfile && folded(facts.name) == "profile")
        findRenamedSettings();
    countMeetings();
    if (failed())
        return;
    if (!pair.byPrimaryKey && facts.changed + facts.added + facts.removed > 0)
        countContents();
    if (facts.added > 0 && facts.removed > 0)
        countRenamed();
    if (facts.changed > 0)
        countChangedColumns();
    if (context.options.examples)
        readExamples();
}

void TableComparison::showGone(const SchemaEntry &before)
{
    const TableLayout layout = layoutOf(questions, schemaBefore, before);
    facts.removed = countRows(layout);
    facts.rowsBefore = facts.removed;
    if (context.options.examples && facts.removed > 0)
        facts.removedRows = readRows(questions, context.literals, layout, "b", layout.keyOrRowid(),
                                     {{}, mostLost()});
}

void TableComparison::showNew(const SchemaEntry &after)
{
    const TableLayout layout = layoutOf(questions, schemaAfter, after);
    facts.added = countRows(layout);
    facts.rowsAfter = facts.added;
    if (context.options.examples && facts.added > 0)
        facts.addedRows = readRows(questions, context.literals, layout, "a", layout.keyOrRowid(),
                                   {{}, mostAdded()});
}

/// \return how many rows of a new table to show: all current curves, since each is to be checked
qint64 TableComparison::mostAdded() const
{
    return context.isProfile && folded(facts.name) == "currentcurve" ? mostLost() : mostExamples;
}

void TableComparison::compareColumns()
{
    for (const Column &column : pair.before.columns) {
        if (pair.after.column(column.name) == nullptr)
            facts.columnsRemoved << column.name;
    }
    for (const Column &column : pair.after.columns) {
        if (pair.before.column(column.name) == nullptr)
            facts.columnsAdded << column.name;
    }
}

/// Settings whose names the steps have changed meet by their new names.
void TableComparison::findRenamedSettings()
{
    if (!pair.byPrimaryKey || pair.key.size() != 1 || pair.before.collations != "binary"
        || pair.after.view)
        return;
    QMap<QString, QString> names;
    questions.ask(QString("select b.%1 from %2 as b where typeof(b.%1) = 'text' and %3")
                      .arg(pair.key.first().before, pair.before.quotedName(), pair.onlyBefore()),
                  {}, [&names](const QSqlQuery &row) {
                      const QString name = row.value(0).toString();
                      const QString newName = newSettingName(name);
                      if (newName != name
                          && !name.contains(QChar(0))) // which no statement can name
                          names.insert(name, newName);
                      return true;
                  });
    const QString isNew =
        QString("select count(*) from %1 as a where a.%2 = ? and %3")
            .arg(pair.after.quotedName(), pair.key.first().after, pair.onlyAfter());
    QSet<QString> taken; // two old names may give the same new one
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        if (taken.contains(name.value()) || questions.value(isNew, {name.value()}).toInt() != 1)
            continue;
        taken << name.value();
        pair.newNames.insert(name.key(), name.value());
    }
    if (!pair.newNames.isEmpty()) // otherwise each of them would be a change
        pair.columns.removeIf([this](const CommonColumn &column) {
            return column.before == pair.key.first().before;
        });
}

/// Counts the rows after, those that meet, and those of them that differ, in one pass: a view costs much.
void TableComparison::countMeetings()
{
    const qint64 rowsBefore = countRows(pair.before);
    qint64 rowsAfter = 0;
    qint64 met = 0;
    if (pair.key.isEmpty())
        rowsAfter = countRows(pair.after);
    else
        questions.ask(
            // SQLite jumps over the rest of a condition in "filter", and computes all of it elsewhere.
            QString("select count(*), count(b.%1),"
                    " count(*) filter (where b.%1 is not null and %2)"
                    " from %3 as a left join %4 as b on %5")
                .arg(pair.key.first().before, differsInAny(pair.columns), pair.after.quotedName(),
                     pair.before.quotedName(), pair.meeting()),
            {}, [&](const QSqlQuery &row) {
                rowsAfter = row.value(0).toLongLong();
                met = row.value(1).toLongLong();
                facts.changed = row.value(2).toLongLong();
                return false;
            });
    if (failed())
        return;
    facts.rowsBefore = rowsBefore;
    facts.rowsAfter = rowsAfter;
    facts.added = rowsAfter - met;
    facts.removed = std::max<qint64>(rowsBefore - met, 0); // a view may show a row twice
    facts.renamed = pair.newNames.size();
    if (facts.viewAfter && facts.removed > 0)
        facts.notKept = countNotKept();
}

/// One table becomes a view: `result`, whose rows go to `results`.
qint64 TableComparison::countNotKept()
{
    const TableLayout results = layoutOf(questions, schemaAfter, {"results"});
    if (results.column("id") == nullptr || pair.before.column("id") == nullptr)
        return facts.removed;
    return questions
        .value(QString("select count(*) from %1 as b"
                       " where not exists (select 1 from %2 as a where a.id = b.id)")
                   .arg(pair.before.quotedName(), results.quotedName()))
        .toLongLong();
}

/// \return the groups of equal rows whose number differs, as a query: `difference` is above 0 if there are more
///         after the upgrade; `before` and `after` are rowids, one of each group
QString TableComparison::contents() const
{
    QStringList before;
    QStringList after;
    QStringList groups;
    for (qsizetype i = 0; i < pair.columns.size(); ++i) {
        const QString name = QString("c%1").arg(i);
        before << pair.columns.at(i).before + " as " + name;
        after << pair.columns.at(i).after;
        groups << QString("%1 collate binary, typeof(%1)").arg(name);
    }
    return QString("select sum(d) as difference, max(rb) as before, max(ra) as after from ("
                   "select -1 as d, %1 as rb, null as ra, %2 from %3 union all"
                   " select 1, null, %4, %5 from %6) group by %7 having sum(d) <> 0")
        .arg(pair.rowid ? pair.rowid->before : QString("null"), before.join(", "),
             pair.before.quotedName(), pair.rowid ? pair.rowid->after : QString("null"),
             after.join(", "), pair.after.quotedName(), groups.join(", "));
}

/// Compares the contents of rows without a key. If a table was made anew, its rowids may have shifted.
void TableComparison::countContents()
{
    if (pair.columns.isEmpty())
        return;
    questions.ask(QString("select coalesce(sum(max(difference, 0)), 0),"
                          " coalesce(sum(max(-difference, 0)), 0) from (%1)")
                      .arg(contents()),
                  {}, [this](const QSqlQuery &row) {
                      const qint64 added = row.value(0).toLongLong();
                      const qint64 removed = row.value(1).toLongLong();
                      if (!pair.key.isEmpty()
                          && added + removed >= facts.added + facts.removed + facts.changed)
                          return false;
                      meetsByContent = true;
                      facts.added = added;
                      facts.removed = removed;
                      facts.changed = 0;
                      return false;
                  });
}

/// \return the pairs of rows that have another key, but the same rowid and the same other values
QString TableComparison::twins() const
{
    QList<CommonColumn> others = pair.columns;
    others.removeIf([this](const CommonColumn &column) {
        return std::any_of(pair.key.begin(), pair.key.end(), [&column](const CommonColumn &part) {
            return part.before == column.before;
        });
    });
    return QString("%1 as b join %2 as a on b.%3 = a.%4 where %5 and %6 and not %7")
        .arg(pair.before.quotedName(), pair.after.quotedName(), pair.rowid->before,
             pair.rowid->after, pair.onlyBefore(), pair.onlyAfter(), differsInAny(others));
}

void TableComparison::countRenamed()
{
    const bool keyIsRowid = pair.before.collations.isEmpty();
    if (!pair.byPrimaryKey || !pair.rowid || keyIsRowid)
        return;
    const qint64 count = questions.value("select count(*) from " + twins()).toLongLong();
    facts.renamed += count;
    facts.added -= count;
    facts.removed -= count;
}

void TableComparison::countChangedColumns()
{
    constexpr qsizetype atOnce = 400; // SQLite takes 2,000 sums and columns in them
    for (qsizetype first = 0; first < pair.columns.size(); first += atOnce) {
        const QList<CommonColumn> columns =
            pair.columns.sliced(first, std::min(atOnce, pair.columns.size() - first));
        QStringList sums;
        for (const CommonColumn &column : columns)
            sums << QString("count(*) filter (where %1)").arg(differs(column))
                 << QString("count(*) filter (where %1 and %2)")
                        .arg(differs(column), isOverwritten(column));
        questions.ask(QString("select %1 from %2").arg(sums.join(", "), pair.joined()), {},
                      [&](const QSqlQuery &row) {
                          int term = 0;
                          for (const CommonColumn &column : columns) {
                              const qint64 rows = row.value(term).toLongLong();
                              if (rows > 0) {
                                  facts.changedColumns << ColumnChanges{
                                      column.name, rows, row.value(term + 1).toLongLong()};
                                  changedColumns << column;
                              }
                              term += 2;
                          }
                          return false;
                      });
    }
}

/// \return the condition for rows of one side that have no equal one on the other
QString TableComparison::contentsOnOneSide(bool before) const
{
    return QString("%1 in (select %2 from (%3) where difference %4 0)")
        .arg(before ? "b." + pair.rowid->before : "a." + pair.rowid->after,
             before ? "before" : "after", contents(), before ? "<" : ">");
}

/// \return the condition for the rows before that are not there any more
QString TableComparison::isRemoved() const
{
    QString alone = meetsByContent ? contentsOnOneSide(true) : pair.onlyBefore();
    if (!hasTwins())
        return alone;
    return QString("%1 and b.%2 not in (select b.%2 from %3)")
        .arg(alone, pair.rowid->before, twins());
}

/// \return the condition for the rows after that were not there before
QString TableComparison::isAdded() const
{
    QString alone = meetsByContent ? contentsOnOneSide(false) : pair.onlyAfter();
    if (!hasTwins())
        return alone;
    return QString("%1 and a.%2 not in (select a.%2 from %3)")
        .arg(alone, pair.rowid->after, twins());
}

void TableComparison::readExamples()
{
    const bool canFindRows = !pair.key.isEmpty() && !(meetsByContent && !pair.rowid);
    if (!canFindRows)
        return;
    QStringList key;
    for (const CommonColumn &column : pair.key)
        key << column.name;
    if (facts.removed > 0)
        facts.removedRows = readRows(questions, context.literals, pair.before, "b", key,
                                     {isRemoved(), std::min(facts.removed, mostLost())});
    if (facts.added > 0)
        facts.addedRows = readRows(questions, context.literals, pair.after, "a", key,
                                   {isAdded(), std::min(facts.added, mostExamples)});
    readRenamedExamples();
    if (facts.changed > 0)
        facts.changedRows = readChangedRows(questions, context.literals, pair, changedColumns,
                                            std::min(facts.changed, mostLost()));
}

void TableComparison::readRenamedExamples()
{
    if (!pair.newNames.isEmpty())
        facts.renamedRows = readRenamedRows(
            questions, context.literals, pair,
            QString("%1 where b.%2 <> a.%3")
                .arg(pair.joined(), pair.key.first().before, pair.key.first().after),
            mostLost());
    if (hasTwins())
        facts.renamedRows +=
            readRenamedRows(questions, context.literals, pair, twins(), mostLost());
}

} // namespace

void compareTable(const ComparisonContext &context, const std::optional<SchemaEntry> &before,
                  const std::optional<SchemaEntry> &after, TableFacts &facts)
{
    const auto isVirtual = [](const std::optional<SchemaEntry> &entry) {
        return entry && entry->kind == SchemaEntry::Kind::Virtual;
    };
    if (isVirtual(before) || isVirtual(after)) {
        facts.problem = virtualTableProblem;
        return;
    }
    TableComparison comparison(context, facts);
    if (before && after)
        comparison.compareBoth(*before, *after);
    else if (before)
        comparison.showGone(*before);
    else if (after)
        comparison.showNew(*after);
    if (comparison.failed())
        facts.problem = "The table " + comparison.predicate() + '.';
    facts.damaged = comparison.failedByTheFile();
}

} // namespace coagulation::report
