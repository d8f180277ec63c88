// SPDX-License-Identifier: MIT
#include "editscript.h"

#include "require.h"

#include "olddatabases.h"
#include "plainsqlite.h"
#include "testfiles.h"

#include <QFile>
#include <QMap>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

namespace {

constexpr qsizetype mostStatements = 60;
constexpr auto crash = "-- crash";

/// \return the whole numbers of a line that has these words before each of them
std::optional<QList<int>> numbersIn(const QByteArray &line, const QByteArrayList &words)
{
    const QByteArrayList parts = line.simplified().split(' ').mid(1); // without the dashes
    if (parts.size() != 2 * words.size())
        return std::nullopt;
    QList<int> numbers;
    for (qsizetype i = 0; i < words.size(); ++i) {
        bool isNumber = false;
        numbers << parts.at(2 * i + 1).toInt(&isNumber);
        if (parts.at(2 * i) != words.at(i) || !isNumber || numbers.constLast() < 0)
            return std::nullopt;
    }
    return numbers;
}

int pageSizeOf(const QByteArray &database)
{
    if (database.size() < 100)
        return 512;
    const int stored = uchar(database.at(16)) << 8 | uchar(database.at(17));
    return stored == 1 ? 0x10000 : std::max(stored, 512);
}

void flip(QByteArray &bytes, qsizetype offset, int bits)
{
    if (offset < bytes.size())
        bytes[offset] = char(bytes.at(offset) ^ bits);
}

void change(DatabaseFiles &files, const QByteArray &line)
{
    if (const auto page = numbersIn(line, {"page", "offset", "xor"})) {
        const int size = pageSizeOf(files.database);
        flip(files.database, qsizetype(page->at(0)) * size + page->at(1) % size, page->at(2));
    } else if (const auto leftover = numbersIn(line, {"leftover", "offset", "xor"})) {
        flip(files.journal.isNull() ? files.log : files.journal, leftover->at(1), leftover->at(2));
    } else if (const auto cut = numbersIn(line, {"cut"})) {
        files.database.truncate(cut->at(0));
    }
}

/// Keeps statements within the file that they are for. Settings of the connection that makes the file would not
/// matter; those that go into the file, or into how it is left, are let through.
int authorize(void * /*data*/, int action, const char *first, const char *second,
              const char * /*database*/, const char * /*trigger*/)
{
    static constexpr std::array<std::string_view, 9> settings{
        "auto_vacuum",  "cache_size",         "incremental_vacuum",
        "journal_mode", "legacy_alter_table", "page_size",
        "user_version", "writable_schema",    "ignore_check_constraints"};
    static constexpr std::array<std::string_view, 3> modules{"fts5", "rtree", "dbstat"};

    const auto isOneOf = [](const char *name, const auto &names) {
        return name != nullptr && std::find(names.begin(), names.end(), name) != names.end();
    };
    switch (action) {
    case SQLITE_ATTACH: // "vacuum" attaches a file without a name; others name one
        return first != nullptr && *first == '\0' ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_PRAGMA:
        return isOneOf(first, settings) ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_CREATE_VTABLE:
        return isOneOf(second, modules) ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_FUNCTION:
        return qstrcmp(second, "load_extension") == 0 ? SQLITE_DENY : SQLITE_OK;
    default:
        return SQLITE_OK;
    }
}

/// Bounds what a statement may cost: neither it nor the database that it leaves is to last longer than an upgrade.
void limit(sqlite3 *connection)
{
    constexpr int largestValue = 100'000; // bytes
    constexpr int instructions = 1'000;   // of SQLite, between two questions
    constexpr int largestDepth = 50;

    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, largestValue);
    sqlite3_limit(connection, SQLITE_LIMIT_COMPOUND_SELECT, largestDepth);
    static int questions = 0;
    questions = 0;
    sqlite3_progress_handler(
        connection, instructions,
        [](void *) {
            constexpr int most = 2'000;
            return ++questions > most ? 1 : 0;
        },
        nullptr);
    sqlite3_set_authorizer(connection, authorize, nullptr);
}

DatabaseFiles runStatements(const QString &path, const QByteArrayList &statements)
{
    std::optional<DatabaseFiles> left;
    {
        const Sqlite database(path);
        // the cache is small, so that a crash finds changed pages in the file
        for (const char *sql : {"pragma synchronous=off", "pragma cache_size=3"})
            database.run(sql);
        limit(database.connection());
        for (const QByteArray &statement : statements) {
            if (statement == crash && !left)
                left = DatabaseFiles::readFrom(path);
            else
                database.run(statement);
        }
    }
    return left ? *left : DatabaseFiles::readFrom(path);
}

QByteArray withEncoding(const QByteArray &bytes, const QByteArray &encoding, const QString &folder)
{
    const QString from = folder + "/from.db";
    const QString to = folder + "/to.db";
    DatabaseFiles{bytes}.writeTo(from);
    QFile::remove(to);
    {
        const Sqlite copy(to);
        copy.run("pragma encoding = '" + encoding + '\'');
        copyRowByRow(Sqlite(from), copy);
    }
    return fileBytes(to);
}

QByteArray readIfThere(const QString &path)
{
    return QFile::exists(path) ? fileBytes(path) : QByteArray();
}

QByteArray madeSample(const QString &name, int version)
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, version);
    return database.bytes();
}

/// A fuzzer starts its target many times over, and a sample takes longer to make than to upgrade: the first one to need
/// it leaves it in a folder for the others.
QByteArray sharedSample(const QString &name, int version)
{
    const QString folder = qEnvironmentVariable("VARDO_FUZZ_SAMPLES");
    if (folder.isEmpty())
        return madeSample(name, version);
    const QString path = QString("%1/%2-%3.db").arg(folder, name).arg(version);
    if (!QFile::exists(path)) {
        QSaveFile file(path); // whole, or not there yet
        const bool isWritten = file.open(QIODevice::WriteOnly)
            && file.write(madeSample(name, version)) > 0 && file.commit();
        require(isWritten, "a sample can be left for others: " + file.errorString());
    }
    return fileBytes(path);
}

} // namespace

EditScript EditScript::read(const QByteArray &text, int newest)
{
    EditScript script;
    for (const QByteArray &line : text.split('\n')) {
        if (const auto version = numbersIn(line, {"version"}))
            script.version = std::min(version->at(0), newest);
        else if (line == "-- encoding UTF-16le" || line == "-- encoding UTF-16be")
            script.encoding = line.mid(int(std::strlen("-- encoding ")));
        else if (line.startsWith("-- ") && line != crash)
            script.changes << line;
        else if (!line.trimmed().isEmpty() && script.statements.size() < mostStatements)
            script.statements << line;
    }
    return script;
}

void DatabaseFiles::writeTo(const QString &path) const
{
    writeFile(path, database);
    for (const auto &[suffix, bytes] : {std::pair("-journal", &journal), std::pair("-wal", &log)}) {
        QFile::remove(path + suffix);
        if (!bytes->isNull())
            writeFile(path + suffix, *bytes);
    }
    QFile::remove(path + "-shm");
}

void DatabaseFiles::settleAt(const QString &path) const
{
    writeTo(path);
    if (hasLeftover())
        Sqlite(path).run("select count(*) from sqlite_master");
}

DatabaseFiles DatabaseFiles::readFrom(const QString &path)
{
    return {fileBytes(path), readIfThere(path + "-journal"), readIfThere(path + "-wal")};
}

DatabaseFiles editedSample(const QString &name, const EditScript &script, const QString &folder)
{
    QByteArray sample = sampleBytes(name, script.version);
    if (!script.encoding.isEmpty())
        sample = withEncoding(sample, script.encoding, folder);
    const QString path = folder + "/edited.db";
    DatabaseFiles{sample}.writeTo(path);
    DatabaseFiles files = runStatements(path, script.statements);
    for (const QByteArray &line : script.changes)
        change(files, line);
    return files;
}

QByteArray sampleBytes(const QString &name, int version)
{
    static QMap<std::pair<QString, int>, QByteArray> known;
    QByteArray &bytes = known[{name, version}];
    if (bytes.isEmpty())
        bytes = sharedSample(name, version);
    return bytes;
}
