// SPDX-License-Identifier: MIT
#include "plainsqlite.h"

#include <QSet>

namespace {

/// The only collation that the databases name is NOCASE. Where damage gave it another name, this stands
/// in, so that the rest can be judged.
void addCollation(void *, sqlite3 *database, int, const char *name)
{
    sqlite3_create_collation(
        database, name, SQLITE_UTF8, nullptr,
        [](void *, int leftSize, const void *left, int rightSize, const void *right) {
            return qstrnicmp(static_cast<const char *>(left), leftSize,
                             static_cast<const char *>(right), rightSize);
        });
}

/// \return the first value of a row in UTF-8, whatever the database's encoding is
QByteArray firstText(sqlite3_stmt *row)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): SQLite's letters are unsigned
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(row, 0));
    return {text, sqlite3_column_bytes(row, 0)};
}

} // namespace

QByteArray literal(sqlite3_stmt *row, int column)
{
    const int type = sqlite3_column_type(row, column);
    if (type == SQLITE_NULL)
        return "null";
    if (type == SQLITE_INTEGER)
        return QByteArray::number(sqlite3_column_int64(row, column));
    if (type == SQLITE_FLOAT)
        return QByteArray::number(sqlite3_column_double(row, column), 'e', 17);
    const auto *data = static_cast<const char *>(sqlite3_column_blob(row, column));
    const QByteArray bytes(data, sqlite3_column_bytes(row, column));
    return type == SQLITE_TEXT ? '\'' + bytes + '\'' : "x'" + bytes.toHex() + '\'';
}

QByteArray quotedName(QByteArray name)
{
    return '"' + name.replace('"', "\"\"") + '"';
}

Sqlite::Sqlite(const QString &path)
{
    sqlite3_open_v2(path.toUtf8().constData(), &handle,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_collation_needed(handle, nullptr, addCollation);
}

Sqlite::~Sqlite()
{
    sqlite3_close(handle);
}

int Sqlite::run(const QByteArray &sql, const std::function<void(sqlite3_stmt *)> &row) const
{
    sqlite3_stmt *statement = nullptr;
    const int prepared = sqlite3_prepare_v2(handle, sql.constData(), -1, &statement, nullptr);
    if (prepared != SQLITE_OK)
        return prepared;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        if (row)
            row(statement);
    }
    return sqlite3_finalize(statement);
}

QByteArrayList Sqlite::column(const QByteArray &sql) const
{
    QByteArrayList values;
    run(sql, [&values](sqlite3_stmt *row) { values << firstText(row); });
    return values;
}

qint64 Sqlite::countRows(const QByteArray &name) const
{
    return column("select count(*) from " + quotedName(name)).value(0).toLongLong();
}

QByteArrayList Sqlite::tables() const
{
    return column(
        "select distinct lower(name) from sqlite_master where lower(type) = 'table' order by 1");
}

void Sqlite::scan(const QByteArray &table, const std::function<void(sqlite3_stmt *)> &row) const
{
    for (const char *order : {"asc", "desc"})
        run("select rowid, * from " + quotedName(table) + " not indexed order by rowid " + order,
            row);
}

Rows Sqlite::rows(const QByteArray &table) const
{
    Rows rows;
    scan(table, [&rows](sqlite3_stmt *row) {
        QByteArrayList values;
        for (int column = 1; column < sqlite3_column_count(row); ++column)
            values << literal(row, column);
        rows.insert(sqlite3_column_int64(row, 0), values.join(", "));
    });
    return rows;
}

QByteArrayList Sqlite::findings() const
{
    QByteArrayList findings;
    addFindings(findings);
    // Beside some of these SQLite leaves out the free pages.
    const QByteArray withoutPages =
        " from sqlite_master where type in ('view', 'trigger') or sql like 'create virtual%'";
    if (!column("select name" + withoutPages).isEmpty()) {
        run("begin");
        run("pragma writable_schema=on");
        run("delete" + withoutPages);
        run("pragma writable_schema=reset");
        addFindings(findings);
        run("rollback");
        run("pragma writable_schema=reset");
    }
    return findings;
}

void Sqlite::addFindings(QByteArrayList &findings) const
{
    const auto check = [this, &findings](const QByteArray &what) {
        return run("pragma integrity_check(" + what + ')', [&findings](sqlite3_stmt *row) {
            const QByteArrayList lines =
                firstText(row).split('\n'); // one row may hold several, a line each
            for (const QByteArray &line : lines) {
                if (!findings.contains(line))
                    findings << line;
            }
        });
    };
    if (const int code = check("2147483647"); code != SQLITE_OK) {
        findings << "check fails: " + QByteArray::number(code);
        for (const QByteArray &table : tables()) // one of them may need a collation that is missing
            check(quotedName(table));
    }
}

void copyRowByRow(const Sqlite &from, const Sqlite &to)
{
    to.run("begin");
    for (
        const QByteArray &sql : from.column(
            "select sql from sqlite_master where lower(type) = 'table' and name not like 'sqlite%'"))
        to.run(sql);
    for (const QByteArray &table : from.tables()) {
        QSet<qint64> copied;
        const auto insert = [&to, &table, &copied](sqlite3_stmt *row) {
            const qint64 id = sqlite3_column_int64(row, 0);
            if (copied.contains(id))
                return;
            copied << id;
            sqlite3_stmt *statement = nullptr;
            QByteArray places = ",?";
            places = places.repeated(sqlite3_column_count(row) - 1).mid(1);
            sqlite3_prepare_v2(
                to.connection(),
                ("insert or ignore into " + quotedName(table) + " values(" + places + ')')
                    .constData(),
                -1, &statement, nullptr);
            for (int column = 1; column < sqlite3_column_count(row); ++column)
                sqlite3_bind_value(statement, column, sqlite3_column_value(row, column));
            sqlite3_step(statement);
            sqlite3_finalize(statement);
        };
        from.scan(table, insert);
    }
    for (const QByteArray &sql :
         from.column("select sql from sqlite_master where lower(type) <> 'table' and sql notnull"))
        to.run(sql);
    to.run("commit");
}
