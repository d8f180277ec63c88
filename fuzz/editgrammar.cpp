// SPDX-License-Identifier: MIT
#include "editgrammar.h"

#include "editscript.h"
#include "scratchfolder.h"

#include "expectedsteps.h"
#include "plainsqlite.h"

#include <QSet>

#include <algorithm>

namespace {

const QByteArrayList oddValues{
    "null",
    "0",
    "1",
    "-1",
    "2",
    "2147483648",
    "9223372036854775807",
    "-9223372036854775808",
    "0.1",
    "1.5",
    "1e308",
    "9e999",
    "-9e999",
    "''",
    "' '",
    "'.'",
    "'x'",
    "'a''b'",
    "'\"'",
    "'%1'",
    "'08:00:00.5'",
    "'2016-04-01'",
    "'Log'",
    "'{00000000-0000-0000-0000-000000000000}'",
    "'a' || char(0) || 'b'",
    "cast(x'ff27fe' as text)",
    "x''",
    "x'00ff'",
    "x'3132'",
    "char(0x1F9EA, 0x202e)",
    "replace(hex(zeroblob(3000)), '00', 'ab')",
};

const QByteArrayList types{"",     "integer", "text",        "real",
                           "blob", "date",    "text unique", "integer not null default 0"};

QByteArray number(qsizetype value)
{
    return QByteArray::number(value);
}

QByteArray literalText(const QByteArray &text)
{
    return '\'' + QByteArray(text).replace('\'', "''") + '\'';
}

} // namespace

EditGrammar::EditGrammar(const QString &name, int version)
    : database(name)
{
    collect(sampleBytes(name, version));
    collect(sampleBytes(name, newestVersionOf(name)));
}

void EditGrammar::collect(const QByteArray &bytes)
{
    constexpr qsizetype longestValue = 60;
    const ScratchFolder folder;
    DatabaseFiles{bytes}.writeTo(folder.filePath("read.db"));
    const Sqlite file(folder.filePath("read.db"));

    objects << file.column("select type || ' ' || name from sqlite_master where sql notnull");
    for (const QByteArray &name :
         file.column("select name from sqlite_master where type in ('table', 'view')")) {
        const Table table{
            name, file.column("select name from pragma_table_info(" + literalText(name) + ')')};
        tables << table;
        for (const QByteArray &column : table.columns) {
            for (const QByteArray &found :
                 file.column("select distinct quote(" + quotedName(column) + ") from "
                             + quotedName(name) + " limit 500")) {
                if (found.size() <= longestValue && !found.contains('\n'))
                    values << found;
            }
        }
    }
}

QByteArray EditGrammar::value(Random &random) const
{
    switch (random.below(6)) {
    case 0:
    case 1:
        return random.oneOf(oddValues);
    case 2:
        return number(random.below(20));
    case 3:
        return random.oneOf(values) + " || " + random.oneOf(oddValues);
    default:
        return random.oneOf(values);
    }
}

QByteArray EditGrammar::tableName(Random &random) const
{
    return random.oneOf(tables).name;
}

QByteArray EditGrammar::newName(Random &random) const
{
    static const QByteArrayList suffixes{"_new", "_unmoved", "_unmoved2", "_index", "2", " \"x\""};
    switch (random.below(4)) {
    case 0:
        return tableName(random);
    case 1:
        return tableName(random).toUpper();
    case 2:
        return "site" + number(random.below(4));
    default:
        return tableName(random) + random.oneOf(suffixes);
    }
}

QByteArray EditGrammar::anyName(Random &random) const
{
    const Table table = random.oneOf(tables);
    return random.oneIn(3) ? table.name : random.oneOf(table.columns);
}

QByteArray EditGrammar::condition(Random &random) const
{
    switch (random.below(4)) {
    case 0:
        return {};
    case 1:
        return " where rowid % 2 = " + number(random.below(2));
    default:
        return " where rowid = " + number(1 + random.below(random.oneIn(3) ? 400 : 20));
    }
}

QByteArray EditGrammar::update(Random &random) const
{
    const Table table = random.oneOf(tables);
    return "update " + quotedName(table.name) + " set " + quotedName(random.oneOf(table.columns))
        + " = " + value(random) + condition(random);
}

QByteArray EditGrammar::remove(Random &random) const
{
    return "delete from " + quotedName(tableName(random)) + condition(random);
}

QByteArray EditGrammar::insert(Random &random) const
{
    const Table table = random.oneOf(tables);
    QByteArrayList places;
    QByteArrayList inserted;
    for (const QByteArray &column : table.columns) {
        if (random.oneIn(4))
            continue;
        places << quotedName(column);
        inserted << (column == "id" ? number(random.below(2000)) : value(random));
    }
    return "insert or replace into " + quotedName(table.name) + '(' + places.join(", ")
        + ") values(" + inserted.join(", ") + ')';
}

QByteArray EditGrammar::drop(Random &random) const
{
    const QByteArrayList object = random.oneOf(objects).split(' ');
    return "drop " + object.value(0) + ' ' + quotedName(object.value(1));
}

QByteArray EditGrammar::alter(Random &random) const
{
    const Table table = random.oneOf(tables);
    const QByteArray beginning = "alter table " + quotedName(table.name);
    switch (random.below(4)) {
    case 0:
        return beginning + " rename to " + quotedName(newName(random));
    case 1:
        return beginning + " rename column " + quotedName(random.oneOf(table.columns)) + " to "
            + quotedName(anyName(random));
    case 2:
        return beginning + " drop column " + quotedName(random.oneOf(table.columns));
    default:
        return beginning + " add column " + quotedName(anyName(random)) + ' ' + random.oneOf(types);
    }
}

QByteArray EditGrammar::create(Random &random) const
{
    const Table table = random.oneOf(tables);
    const QByteArray name = quotedName(newName(random));
    switch (random.below(6)) {
    case 0:
        return "create table " + name + " as select * from " + quotedName(table.name);
    case 1:
        return "create table " + name + '(' + quotedName(anyName(random)) + ' '
            + random.oneOf(types) + ", " + quotedName(anyName(random)) + ' ' + random.oneOf(types)
            + (random.oneIn(3) ? ") strict" : ")");
    case 2:
        return "create view " + name + " as select * from " + quotedName(table.name);
    case 3:
        return "create unique index " + name + " on " + quotedName(table.name) + '('
            + quotedName(random.oneOf(table.columns)) + ')';
    case 4:
        return "create virtual table " + name + " using fts5(" + anyName(random) + ')';
    default:
        return "create index " + name + " on " + quotedName(table.name) + '('
            + quotedName(random.oneOf(table.columns)) + " collate nocase)";
    }
}

QByteArray EditGrammar::createTrigger(Random &random) const
{
    static const QByteArrayList moments{"before", "after", "instead of"};
    static const QByteArrayList events{"insert", "update", "delete"};
    static const QByteArrayList raises{"raise(ignore)", "raise(abort, 'x')", "raise(fail, 'x')",
                                       "raise(rollback, 'x')"};
    QByteArray body = "select " + random.oneOf(raises);
    if (random.oneIn(2))
        body = random.oneIn(2) ? update(random) : remove(random);
    const QByteArray when = random.oneIn(4) ? " when new.rowid > 5" : "";
    return "create trigger " + quotedName(newName(random)) + ' ' + random.oneOf(moments) + ' '
        + random.oneOf(events) + " on " + quotedName(tableName(random)) + when + " begin " + body
        + "; end";
}

QByteArray EditGrammar::schemaChange(Random &random) const
{
    const QByteArray name = random.oneOf(objects).split(' ').value(1);
    const QByteArray where = " where name = " + literalText(name);
    switch (random.below(5)) {
    case 0:
        return "update sqlite_master set sql = replace(sql, " + literalText(anyName(random)) + ", "
            + literalText(anyName(random)) + ')' + where;
    case 1:
        return "update sqlite_master set rootpage = " + number(random.below(60)) + where;
    case 2:
        return "update sqlite_master set name = upper(name), tbl_name = upper(tbl_name)" + where;
    case 3:
        return "delete from sqlite_master" + where;
    default:
        return "update sqlite_master set sql = replace(sql, 'text', 'text not null check("
            + anyName(random) + " < 5)')" + where;
    }
}

QByteArray EditGrammar::setting(Random &random) const
{
    static const QByteArrayList settings{
        "pragma writable_schema=on",
        "pragma page_size=512",
        "pragma page_size=65536",
        "pragma auto_vacuum=full",
        "pragma auto_vacuum=incremental",
        "pragma journal_mode=wal",
        "pragma legacy_alter_table=on",
        "pragma ignore_check_constraints=on",
        "pragma user_version=99",
        "vacuum",
        "reindex",
        "analyze",
        "begin",
        "commit",
        "rollback",
    };
    return random.oneOf(settings);
}

QByteArray EditGrammar::directive(Random &random) const
{
    const auto byte = [&random] { return number(1 + random.below(255)); };
    switch (random.below(8)) {
    case 0:
        return "-- encoding UTF-16le";
    case 1:
        return "-- encoding UTF-16be";
    case 2:
        return "-- crash";
    case 3:
        return "-- leftover offset " + number(random.below(6000)) + " xor " + byte();
    case 4:
        return "-- cut " + number(random.below(120'000));
    case 5: // where a page's header and its cell pointers are
        return "-- page " + number(random.below(40)) + " offset " + number(random.below(120))
            + " xor " + byte();
    case 6:
        return "-- version " + number(random.below(newestVersionOf(database) + 1));
    default:
        return "-- page " + number(random.below(40)) + " offset " + number(random.below(4096))
            + " xor " + byte();
    }
}

QByteArray EditGrammar::line(Random &random) const
{
    switch (random.below(16)) {
    case 0:
    case 1:
    case 2:
    case 3:
        return update(random);
    case 4:
        return remove(random);
    case 5:
    case 6:
        return insert(random);
    case 7:
        return drop(random);
    case 8:
    case 9:
        return alter(random);
    case 10:
        return create(random);
    case 11:
        return createTrigger(random);
    case 12:
        return schemaChange(random);
    case 13:
        return setting(random);
    default:
        return directive(random);
    }
}
