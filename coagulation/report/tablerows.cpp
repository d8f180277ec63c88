// SPDX-License-Identifier: MIT
#include "coagulation/report/tablerows.h"

#include "coagulation/report/databasepair.h"
#include "coagulation/vardo/connection.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace coagulation::report {

namespace {

/// SQLite's select lists are limited, and nobody reads rows that are wider.
constexpr qsizetype mostColumns = 200;

/// The letters of all values that are kept of a table, so that its rows do not take the memory whatever they hold.
constexpr qsizetype mostLetters = 4'000'000;

/// \return "id = 3", or "curveId = 1, name = 'ISI'"
/// \param column of the row's first term of the key
QString keyText(const Literals &literals, const QSqlQuery &row, int column,
                const QStringList &names)
{
    QStringList parts;
    for (const QString &name : names) {
        parts << name + " = " + literals.read(row, column);
        column += literalTermCount;
    }
    return parts.join(", ");
}

/// \return the names with an alias before each of them
QStringList qualified(const QString &alias, QStringList names)
{
    for (QString &name : names)
        name = alias + '.' + name;
    return names;
}

QStringList termsOf(const QStringList &expressions)
{
    QStringList terms;
    for (const QString &expression : expressions)
        terms << literalTerms(expression);
    return terms;
}

/// A password is nobody's business, not even that of who reads the report.
/// \param layout of the table, which the query calls by the alias
/// \param value expression of a column's value
/// \return what is shown in its place
QString shown(const TableLayout &layout, const QString &alias, const QString &column,
              const QString &value)
{
    if (column.contains("password", Qt::CaseInsensitive))
        return QString("iif(%1 is null, null, 'not shown')").arg(value);
    const Column *const setting = layout.column("name");
    if (setting == nullptr || column.compare("value", Qt::CaseInsensitive) != 0)
        return value;
    return QString("iif(%1 is not null and %2.%3 like '%password%', 'not shown', %1)")
        .arg(value, alias, quoted(setting->name));
}

struct KeyNames {
    QStringList names;
    QStringList before; ///< expressions
    QStringList after;  ///< expressions
};

KeyNames keyOf(const TablePair &pair)
{
    KeyNames key;
    for (const CommonColumn &column : pair.key) {
        key.names << column.name;
        key.before << "b." + column.before;
        key.after << "a." + column.after;
    }
    return key;
}

/// \return the column by which people know a row; empty if there is none beside the key
QString nameColumn(const TablePair &pair, const KeyNames &key)
{
    for (const char *name : {"abbr", "name"}) {
        if (key.names.contains(name, Qt::CaseInsensitive))
            return {};
        if (pair.after.column(name) != nullptr)
            return name;
    }
    return {};
}

qsizetype lettersOf(const QList<Cell> &cells)
{
    qsizetype letters = 0;
    for (const Cell &cell : cells)
        letters += cell.value.size();
    return letters;
}

qsizetype lettersOf(const QList<ChangedCell> &cells)
{
    qsizetype letters = 0;
    for (const ChangedCell &cell : cells)
        letters += cell.before.size() + cell.after.size();
    return letters;
}

} // namespace

QString isOverwritten(const CommonColumn &column)
{
    // '12.5' that became '12' is no time, and a value that somebody may have set.
    return QString("(b.%1 is not null and not (typeof(b.%1) = 'text' and typeof(a.%2) = 'text'"
                   " and substr(b.%1, 1, length(a.%2) + 1) = a.%2 || '.' collate binary"
                   " and a.%2 glob '*[0-9]:[0-9][0-9]'"
                   " and substr(b.%1, length(a.%2) + 2) not glob '*[^0-9]*'))")
        .arg(column.before, column.after);
}

QList<RowFacts> readRows(Questions &questions, const Literals &literals, const TableLayout &layout,
                         const QString &alias, const QStringList &key,
                         const RowSelection &selection)
{
    QStringList columns;
    QStringList expressions;
    for (const Column &column :
         layout.columns.first(std::min(layout.columns.size(), mostColumns))) {
        columns << column.name;
        expressions << shown(layout, alias, column.name, alias + '.' + quoted(column.name));
    }
    QStringList keyExpressions;
    for (const QString &name : key)
        keyExpressions << (layout.column(name) != nullptr ? quoted(name)
                                                          : layout.rowidNames.value(0));
    keyExpressions = qualified(alias, keyExpressions);
    const QString sql =
        QString("select %1 from %2 as %3%4%5 limit %6")
            .arg((termsOf(keyExpressions) + termsOf(expressions)).join(", "), layout.quotedName(),
                 alias, selection.condition.isEmpty() ? QString() : " where " + selection.condition,
                 key.isEmpty() ? QString() : " order by " + keyExpressions.join(", "),
                 QString::number(selection.most));
    QList<RowFacts> rows;
    qsizetype letters = 0;
    questions.ask(sql, {}, [&](const QSqlQuery &row) {
        RowFacts facts{keyText(literals, row, 0, key)};
        int term = literalTermCount * static_cast<int>(key.size());
        for (const QString &column : columns) {
            facts.cells << Cell{column, literals.read(row, term)};
            term += literalTermCount;
        }
        letters += lettersOf(facts.cells);
        rows << facts;
        return letters < mostLetters;
    });
    return rows;
}

QList<RowFacts> readRenamedRows(Questions &questions, const Literals &literals,
                                const TablePair &pair, const QString &twins, qint64 most)
{
    const KeyNames key = keyOf(pair);
    QList<CommonColumn> columns = pair.columns;
    columns.removeIf(
        [&key](const CommonColumn &column) { return key.names.contains(column.name); });
    columns = columns.first(std::min(columns.size(), mostColumns));
    QStringList expressions;
    for (const CommonColumn &column : columns)
        expressions << shown(pair.after, "a", column.name, "a." + column.after);
    const QString sql =
        QString("select %1 from %2 order by %3 limit %4")
            .arg((termsOf(key.before) + termsOf(key.after) + termsOf(expressions)).join(", "),
                 twins, key.before.join(", "), QString::number(most));
    QList<RowFacts> rows;
    questions.ask(sql, {}, [&](const QSqlQuery &row) {
        const int terms = literalTermCount * static_cast<int>(key.names.size());
        RowFacts facts{keyText(literals, row, 0, key.names),
                       keyText(literals, row, terms, key.names)};
        int term = 2 * terms;
        for (const CommonColumn &column : columns) {
            facts.cells << Cell{column.name, literals.read(row, term)};
            term += literalTermCount;
        }
        rows << facts;
        return true;
    });
    return rows;
}

QList<ChangedRow> readChangedRows(Questions &questions, const Literals &literals,
                                  const TablePair &pair, const QList<CommonColumn> &columns,
                                  qint64 most)
{
    const KeyNames key = keyOf(pair);
    const QList<CommonColumn> some = columns.first(std::min(columns.size(), mostColumns));
    const QString name = nameColumn(pair, key);
    QStringList terms = termsOf(key.before) + termsOf(key.after)
        + termsOf({name.isEmpty() ? QString("null") : "a." + name});
    for (const CommonColumn &column : some)
        terms << differs(column) << isOverwritten(column)
              << literalTerms(shown(pair.before, "b", column.name, "b." + column.before))
              << literalTerms(shown(pair.after, "a", column.name, "a." + column.after));
    const QString sql = QString("select %1 from %2 where %3 order by %4 limit %5")
                            .arg(terms.join(", "), pair.joined(), differsInAny(columns),
                                 key.before.join(", "), QString::number(most));
    QList<ChangedRow> rows;
    qsizetype letters = 0;
    questions.ask(sql, {}, [&](const QSqlQuery &row) {
        const int keyTerms = literalTermCount * static_cast<int>(key.names.size());
        ChangedRow changed{keyText(literals, row, 0, key.names), {}};
        const QString newKey = keyText(literals, row, keyTerms, key.names);
        if (!pair.newNames.isEmpty() && newKey != changed.key)
            changed.key += ", now " + newKey;
        int term = 2 * keyTerms;
        if (!name.isEmpty())
            changed.name = literals.read(row, term);
        term += literalTermCount;
        for (const CommonColumn &column : some) {
            if (row.value(term).toBool())
                changed.cells << ChangedCell{column.name, literals.read(row, term + 2),
                                             literals.read(row, term + 2 + literalTermCount),
                                             row.value(term + 1).toBool()};
            term += 2 + 2 * literalTermCount;
        }
        letters += lettersOf(changed.cells);
        rows << changed;
        return letters < mostLetters;
    });
    return rows;
}

} // namespace coagulation::report
