// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// What the schemas of both databases say of tables, and where the rows of a table meet.
namespace coagulation::report {

class Questions;

/// \return a name in the form in which SQLite compares names
QString folded(const QString &name);

/// An entry of a schema that has rows.
struct SchemaEntry {
    enum class Kind { Table, View, Virtual };
    QString name;
    Kind kind = Kind::Table;
};

/// \param schema name of the database on the connection, as below
/// \return tables and views by folded name, without SQLite's own
QMap<QString, SchemaEntry> rowSourcesOf(Questions &questions, const QString &schema);

/// \return whether there is a table of this name whose rows can be read without harm
bool hasPlainTable(Questions &questions, const QString &schema, const QString &name);

struct Column {
    QString name;
    QString affinity;
    int keyPart = 0; ///< place in the primary key, from 1 on; 0 for none
    bool notNull = false;
};

struct TableLayout {
    QString schema;
    QString name;
    bool view = false;
    QList<Column> columns{};
    QStringList key{};        ///< columns of the primary key, in its order
    QString collations{};     ///< of the primary key's index; empty for a rowid
    QStringList rowidNames{}; ///< that stand for the rowid; none if there is no rowid

    /// \return the table as it stands in a statement
    QString quotedName() const;
    const Column *column(const QString &columnName) const;
    /// \return what names a row: the primary key or "rowid"; nothing if there is neither
    QStringList keyOrRowid() const;
};

TableLayout layoutOf(Questions &questions, const QString &schema, const SchemaEntry &entry);

/// A column that is on both sides.
struct CommonColumn {
    QString name;          ///< as before
    QString before;        ///< in a statement
    QString after;         ///< in a statement
    bool sameType = false; ///< equal values have the same type on both sides
};

/// A table on both sides, and what its rows have in common. In its expressions the row before is "b", the one
/// after is "a".
struct TablePair {
    TableLayout before;
    TableLayout after;
    QList<CommonColumn> columns{};
    QList<CommonColumn> key{}; ///< by which rows meet; none: by their content only
    bool byPrimaryKey = false;
    std::optional<CommonColumn> rowid{}; ///< none if one side has none
    QMap<QString, QString> newNames{};   ///< of keys that are texts of one column, by the old name

    /// \return the condition under which two rows meet, for a search among the rows before
    /// \param alias of the row before
    QString meeting(const QString &alias = "b") const;

    /// \return the tables with all pairs of rows that meet
    QString joined() const;

    /// \return the conditions under which a row has none to meet on the other side
    QString onlyBefore() const;
    QString onlyAfter() const;

private:
    QString renamed(const QString &expression, bool toNew) const;
};

/// \return the condition under which two rows differ in a column
QString differs(const CommonColumn &column);

/// \return the condition under which two rows differ in one of several columns
QString differsInAny(const QList<CommonColumn> &columns);

TablePair pairOf(Questions &questions, const TableLayout &before, const TableLayout &after);

} // namespace coagulation::report
