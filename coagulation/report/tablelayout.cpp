// SPDX-License-Identifier: MIT
#include "coagulation/report/tablelayout.h"

#include "coagulation/report/databasepair.h"
#include "coagulation/vardo/connection.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace coagulation::report {

namespace {

/// \return the affinity that SQLite gives a column of a declared type, or empty for the one that keeps values
///         as they are
/// Source: https://www.sqlite.org/datatype3.html, "Determination Of Column Affinity"
QString affinityOf(const QString &declaredType)
{
    const QString type = declaredType.toUpper();
    const auto names = [&type](const char *part) { return type.contains(QLatin1String(part)); };
    if (names("INT"))
        return "integer";
    if (names("CHAR") || names("CLOB") || names("TEXT"))
        return "text";
    if (names("BLOB") || type.isEmpty())
        return {};
    return names("REAL") || names("FLOA") || names("DOUB") ? "real" : "numeric";
}

/// \return the names for the rowid that are no columns; none if the table has no rowid
QStringList rowidNamesOf(Questions &questions, const TableLayout &layout)
{
    // A table without rowid has a primary key, whose index holds every column of the table.
    const bool withoutRowid = !layout.key.isEmpty()
        && questions
               .value("select exists(select 1 from pragma_index_list(?, ?) as list"
                      " where list.origin = 'pk' and (select count(*)"
                      " from pragma_index_xinfo(list.name, ?) where cid = -1) = 0)",
                      {layout.name, layout.schema, layout.schema})
               .toBool();
    if (layout.view || withoutRowid)
        return {};
    QStringList names{"rowid", "_rowid_", "oid"};
    names.removeIf([&layout](const QString &name) { return layout.column(name) != nullptr; });
    return names;
}

/// Equal keys must be the same on both sides: no two rows of one side may meet one of the other.
bool keysAgree(const TableLayout &before, const TableLayout &after)
{
    if (before.key.isEmpty())
        return false;
    const bool known = std::all_of(before.key.begin(), before.key.end(), [&](const QString &name) {
        const Column *column = after.column(name);
        return column != nullptr && column->affinity == before.column(name)->affinity;
    });
    if (!known || after.view)
        return known;
    return before.key.size() == after.key.size() && before.collations == after.collations
        && std::all_of(before.key.begin(), before.key.end(), [&](const QString &name) {
               return after.key.contains(name, Qt::CaseInsensitive);
           });
}

bool hasNullInKey(Questions &questions, const TableLayout &layout)
{
    QStringList conditions;
    for (const QString &name : layout.key) {
        if (!layout.column(name)->notNull)
            conditions << quoted(name) + " is null";
    }
    if (conditions.isEmpty())
        return false;
    return questions
        .value(QString("select exists(select 1 from %1 where %2)")
                   .arg(layout.quotedName(), conditions.join(" or ")))
        .toBool();
}

QString textLiteral(QString text)
{
    return '\'' + text.replace('\'', "''") + '\'';
}

CommonColumn commonColumn(const Column &before, const Column &after)
{
    return {before.name, quoted(before.name), quoted(after.name),
            !before.affinity.isEmpty() && before.affinity == after.affinity};
}

} // namespace

QString folded(const QString &name)
{
    QString lower = name;
    for (QChar &letter : lower) {
        if (letter >= u'A' && letter <= u'Z')
            letter = letter.toLower();
    }
    return lower;
}

QMap<QString, SchemaEntry> rowSourcesOf(Questions &questions, const QString &schema)
{
    QMap<QString, SchemaEntry> entries;
    // Whatever is not made by a plain "create table" could run any code when it is asked for its rows.
    questions.ask(
        QString(
            R"(select name, type, rootpage > 0 and sql like 'create table%' from "%1".sqlite_master
 where type in ('table', 'view') and name not like 'sqlite\_%' escape '\')")
            .arg(schema),
        {}, [&entries](const QSqlQuery &row) {
            const QString name = row.value(0).toString();
            SchemaEntry entry{name, SchemaEntry::Kind::Virtual};
            if (row.value(1).toString() == "view")
                entry.kind = SchemaEntry::Kind::View;
            else if (row.value(2).toBool())
                entry.kind = SchemaEntry::Kind::Table;
            entries.insert(folded(name), entry);
            return true;
        });
    return entries;
}

bool hasPlainTable(Questions &questions, const QString &schema, const QString &name)
{
    const QMap<QString, SchemaEntry> entries = rowSourcesOf(questions, schema);
    const auto entry = entries.find(folded(name));
    return entry != entries.end() && entry->kind == SchemaEntry::Kind::Table;
}

QString TableLayout::quotedName() const
{
    return quoted(schema) + '.' + quoted(name);
}

const Column *TableLayout::column(const QString &columnName) const
{
    const QString wanted = folded(columnName);
    const auto found =
        std::find_if(columns.begin(), columns.end(),
                     [&wanted](const Column &column) { return folded(column.name) == wanted; });
    return found != columns.end() ? &*found : nullptr;
}

QStringList TableLayout::keyOrRowid() const
{
    if (!key.isEmpty())
        return key;
    return rowidNames.isEmpty() ? QStringList() : QStringList{"rowid"};
}

TableLayout layoutOf(Questions &questions, const QString &schema, const SchemaEntry &entry)
{
    TableLayout layout{schema, entry.name, entry.kind == SchemaEntry::Kind::View};
    QMap<int, QString> key;
    questions.ask(
        R"(select name, type, pk, "notnull" from pragma_table_xinfo(?, ?) where hidden <> 1)",
        {entry.name, schema}, [&](const QSqlQuery &row) {
            const Column column{row.value(0).toString(), affinityOf(row.value(1).toString()),
                                row.value(2).toInt(), row.value(3).toBool()};
            layout.columns << column;
            if (column.keyPart > 0)
                key.insert(column.keyPart, column.name);
            return true;
        });
    layout.key = key.values();
    if (!layout.key.isEmpty())
        layout.collations =
            questions
                .value("select group_concat(lower(info.coll)) from pragma_index_list(?, ?) as list,"
                       " pragma_index_xinfo(list.name, ?) as info"
                       " where list.origin = 'pk' and info.key = 1",
                       {entry.name, schema, schema})
                .toString();
    layout.rowidNames = rowidNamesOf(questions, layout);
    return layout;
}

QString TablePair::meeting(const QString &alias) const
{
    if (!newNames.isEmpty())
        return QString("%1.%2 = %3")
            .arg(alias, key.first().before, renamed("a." + key.first().after, false));
    QStringList conditions;
    for (const CommonColumn &column : key)
        conditions << QString("%1.%2 = a.%3").arg(alias, column.before, column.after);
    return conditions.join(" and ");
}

QString TablePair::joined() const
{
    return QString("%1 as b join %2 as a on %3")
        .arg(before.quotedName(), after.quotedName(), meeting());
}

QString TablePair::onlyBefore() const
{
    QStringList conditions;
    for (const CommonColumn &column : key)
        conditions
            << QString("%1 = other.%2").arg(renamed("b." + column.before, true), column.after);
    return QString("not exists (select 1 from %1 as other where %2)")
        .arg(after.quotedName(), conditions.join(" and "));
}

QString TablePair::onlyAfter() const
{
    return QString("not exists (select 1 from %1 as other where %2)")
        .arg(before.quotedName(), meeting("other"));
}

QString TablePair::renamed(const QString &expression, bool toNew) const
{
    if (newNames.isEmpty())
        return expression;
    QStringList cases;
    for (auto name = newNames.begin(); name != newNames.end(); ++name)
        cases << QString("when %1 then %2")
                     .arg(textLiteral(toNew ? name.key() : name.value()),
                          textLiteral(toNew ? name.value() : name.key()));
    return QString("case %1 %2 else %1 end").arg(expression, cases.join(' '));
}

QString differs(const CommonColumn &column)
{
    // Without a collation of its own, a comparison takes that of the column, which may not see a change.
    QString values = QString("b.%1 is not a.%2 collate binary").arg(column.before, column.after);
    if (column.sameType) // the types take a third of the time
        return values;
    return QString("(%1 or typeof(b.%2) <> typeof(a.%3))").arg(values, column.before, column.after);
}

QString differsInAny(const QList<CommonColumn> &columns)
{
    if (columns.isEmpty())
        return "0";
    // In pairs, pairs of pairs and so on, since SQLite limits the depth of an expression.
    QStringList conditions;
    for (const CommonColumn &column : columns)
        conditions << differs(column);
    while (conditions.size() > 1) {
        QStringList halves;
        for (qsizetype i = 0; i + 1 < conditions.size(); i += 2)
            halves << '(' + conditions.at(i) + " or " + conditions.at(i + 1) + ')';
        if (conditions.size() % 2 == 1)
            halves << conditions.last();
        conditions = halves;
    }
    return conditions.first();
}

TablePair pairOf(Questions &questions, const TableLayout &before, const TableLayout &after)
{
    TablePair pair{before, after};
    for (const Column &column : before.columns) {
        if (const Column *other = after.column(column.name); other != nullptr)
            pair.columns << commonColumn(column, *other);
    }
    if (!before.rowidNames.isEmpty() && !after.rowidNames.isEmpty())
        pair.rowid = {"rowid", before.rowidNames.first(), after.rowidNames.first(), true};
    pair.byPrimaryKey = keysAgree(before, after) && !hasNullInKey(questions, before)
        && (after.view || !hasNullInKey(questions, after));
    if (pair.byPrimaryKey) {
        for (const QString &name : before.key)
            pair.key << commonColumn(*before.column(name), *after.column(name));
    } else if (pair.rowid) {
        pair.key << *pair.rowid;
    }
    return pair;
}

} // namespace coagulation::report
