// SPDX-License-Identifier: MIT
#include "goldenlines.h"

#include <QCryptographicHash>
#include <QDir>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QTextStream>
#include <QVariant>

#include <sqlite3.h>

#include <algorithm>
#include <bit>
#include <functional>

namespace {

const char *const description =
    R"text(# What delivered steps leave behind. Lines are only ever added: see docs/adding-a-step.md.
#
#   database, stored version at the start of the run, step, table, rows, digest
#
# The table "(schema)" stands for the statements in sqlite_master. A digest is the beginning of the SHA-256
# of the rows by primary key, or by rowid where there is none. A row ends with a line feed; bars stand
# between its values: n (null), i and a number, r and the bits of a real in hexadecimal, t (text) or b
# (blob), the length, ":" and the bytes. Of the statements, ordered by their bytes, blanks beside brackets
# and commas are left out, other blanks are one, and CREATE TABLE names its table without quotes. The
# table version, which the engine writes, is left out; what the fit of the curves 2, 3 and 5 in step 10 of
# the profile database writes counts as null.
)text";

using Row = sqlite3_stmt *;

/// Runs a query on the connection that the engine uses. Not by QSqlQuery, whose values do not show each
/// storage class and every byte, and which would take most of the test's time.
void forEachRow(const QString &sql, const std::function<void(Row)> &visit)
{
    const QVariant handle = QSqlDatabase::database().driver()->handle();
    auto *connection = *static_cast<sqlite3 *const *>(handle.constData());
    Row row = nullptr;
    sqlite3_prepare_v2(connection, sql.toUtf8().constData(), -1, &row, nullptr);
    while (sqlite3_step(row) == SQLITE_ROW)
        visit(row);
    if (row == nullptr || sqlite3_finalize(row) != SQLITE_OK)
        qFatal("%s: %s", sqlite3_errmsg(connection), qUtf8Printable(sql));
}

QByteArray bytes(Row row, int column)
{
    const auto *data = static_cast<const char *>(sqlite3_column_blob(row, column));
    return {data, sqlite3_column_bytes(row, column)};
}

QStringList texts(const QString &query)
{
    QStringList texts;
    forEachRow(query, [&texts](Row row) { texts << QString::fromUtf8(bytes(row, 0)); });
    return texts;
}

QString contentOf(const QByteArrayList &rows)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QByteArray &row : rows)
        hash.addData(row + '\n');
    return QString("%1 %2").arg(rows.size()).arg(QString(hash.result().toHex().first(16)));
}

QString schemaContent()
{
    static const QRegularExpression quotedTable(R"re(^CREATE TABLE "(\w+)")re");
    static const QRegularExpression blanks(" ?([(),]) ?");
    QByteArrayList statements;
    for (const QString &statement : texts("select sql from sqlite_master where sql notnull"))
        statements << statement.simplified()
                          .replace(quotedTable, R"(CREATE TABLE \1)")
                          .replace(blanks, R"(\1)")
                          .toUtf8();
    std::sort(statements.begin(), statements.end());
    return contentOf(statements);
}

/// \return the column, without what the fit of step 10 writes: it depends on the day and on the library
///         that fits. Step 23 takes the day of expiry from that of the fit; nothing else follows from it.
QString heldPart(const QString &database, const QString &table, const QString &column)
{
    static const QStringList ofCurve{"correlation", "date",          "a", "b", "c", "d", "e",
                                     "valid",       "expirationDate"};
    static const QStringList ofPoint{"z", "flags"};
    QString quoted = '"' + column + '"';
    if (database == "profile" && table == "curve" && ofCurve.contains(column))
        return QString("iif(id in (2, 3, 5), null, %1)").arg(quoted);
    if (database == "profile" && table == "curvePoint" && ofPoint.contains(column))
        return QString("iif(curveId in (2, 3, 5), null, %1)").arg(quoted);
    return quoted;
}

QByteArray encoded(Row row, int column)
{
    switch (sqlite3_column_type(row, column)) {
    case SQLITE_NULL:
        return "n";
    case SQLITE_INTEGER:
        return 'i' + QByteArray::number(sqlite3_column_int64(row, column));
    case SQLITE_FLOAT: {
        const double value = sqlite3_column_double(row, column);
        return 'r' + QByteArray::number(std::bit_cast<quint64>(value), 16);
    }
    default: {
        const bool isText = sqlite3_column_type(row, column) == SQLITE_TEXT;
        const QByteArray value = bytes(row, column);
        return (isText ? 't' : 'b') + QByteArray::number(value.size()) + ':' + value;
    }
    }
}

QString tableContent(const QString &database, const QString &table)
{
    QStringList columns = texts(QString("select name from pragma_table_info('%1')").arg(table));
    for (QString &column : columns)
        column = heldPart(database, table, column);
    const QStringList key = texts(
        QString(R"(select '"' || name || '"' from pragma_table_info('%1') where pk order by pk)")
            .arg(table));

    QByteArrayList rows;
    forEachRow(QString("select %1 from \"%2\" order by %3")
                   .arg(columns.join(", "), table, key.isEmpty() ? "rowid" : key.join(", ")),
               [&](Row row) {
                   QByteArrayList values;
                   for (int i = 0; i < columns.size(); ++i)
                       values << encoded(row, i);
                   rows << values.join('|');
               });
    return contentOf(rows);
}

} // namespace

QList<GoldenLine> goldenLinesOf(const QString &database, const QString &run)
{
    QList<GoldenLine> lines{{run + " (schema)", schemaContent()}};
    for (const QString &table : texts("select name from sqlite_master"
                                      " where type = 'table' and name <> 'version' order by name"))
        lines << GoldenLine{run + ' ' + table, tableContent(database, table)};
    return lines;
}

GoldenFiles readGoldenFiles(const QString &folder)
{
    static const QRegularExpression form(
        R"(^(?<subject>[a-z]+ \d+ \d+ (\w+|\(schema\))) (?<content>\d+ [0-9a-f]{16})$)");
    GoldenFiles files;
    for (const QFileInfo &info : QDir(folder).entryInfoList({"[0-9]*.txt"})) {
        QFile file(info.filePath());
        if (!file.open(QIODevice::ReadOnly))
            files.faults << info.fileName() + ": " + file.errorString();
        QTextStream stream(&file);
        for (QString line; stream.readLineInto(&line);) {
            if (line.startsWith('#'))
                continue;
            const auto match = form.match(line);
            const QString subject = match.captured("subject");
            if (!match.hasMatch())
                files.faults << info.fileName() + ": malformed: " + line;
            else if (files.contents.contains(subject))
                files.faults << info.fileName() + ": there before: " + line;
            else
                files.contents[subject] = match.captured("content");
        }
    }
    return files;
}

QString goldenFile(const QList<GoldenLine> &lines)
{
    QString text = description;
    for (const GoldenLine &line : lines)
        text += line.subject + ' ' + line.content + '\n';
    return text;
}
