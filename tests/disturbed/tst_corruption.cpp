// SPDX-License-Identifier: MIT
/// Old databases that are damaged at random, given to the real binary: it must end, leave what it
/// refuses as it was, and lose nothing in what it upgrades.
///
/// The environment variables VARDO_CORRUPTIONS (of each database), VARDO_CORRUPTION_SEED and
/// VARDO_CORRUPTION_CASE (the only one that is run) change what is tried.

#include "corruption.h"
#include "expectedsteps.h"
#include "olddatabases.h"
#include "plainsqlite.h"
#include "testfiles.h"
#include "toolrun.h"

#include <QDir>
#include <QMap>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QtConcurrent>

#include <array>
#include <functional>
#include <limits>
#include <numeric>

namespace {

constexpr int timeLimit = 60000; ///< in ms, for what takes some 50

/// \return the schema, in lower case, since SQLite reads names and key words in any
QByteArrayList schema(const Sqlite &database)
{
    QByteArrayList lines;
    database.run("select lower(type), lower(name), lower(tbl_name), lower(sql) from sqlite_master"
                 " where sql notnull order by 1, 2, 3, 4",
                 [&lines](sqlite3_stmt *row) {
                     QByteArrayList values;
                     for (int column = 0; column < 4; ++column)
                         values << literal(row, column);
                     lines << values.join(' ');
                 });
    return lines;
}

/// \return all of a database that can be read: the schema, then each table's rows in their order
QByteArrayList readable(const Sqlite &database)
{
    QByteArrayList lines = schema(database);
    for (const QByteArray &table : database.tables())
        lines << table << database.rows(table).values();
    return lines;
}

/// Makes a sound database of all that can be read in a damaged one.
void makeSoundCopy(const QString &damagedPath, const QString &path)
{
    const Sqlite damaged(damagedPath);
    const bool copied = damaged.run("vacuum into '" + path.toUtf8() + '\'') == SQLITE_OK;
    if (copied && readable(Sqlite(path)) == readable(damaged))
        return;
    // "vacuum" leaves out an entry of the schema whose type is not in lower case, for one
    QFile::remove(path);
    copyRowByRow(damaged, Sqlite(path));
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The files of a database.
struct Files {
    QByteArray database;
    QByteArray leftover; ///< a journal or write-ahead log; empty for none
    QString leftoverSuffix;
    int pageSize = 0;
    QByteArray version; ///< that is stored; empty for none
    QByteArrayList schema;
    QByteArrayList keptTables; ///< whose rows an upgrade does not change, but for new columns

    void writeTo(const QString &path) const
    {
        writeFile(path, database);
        if (!leftover.isEmpty())
            writeFile(path + leftoverSuffix, leftover);
    }
};

/// How an old database is stored. Beside a view, SQLite may check less of a file.
struct Layout {
    const char *settings; ///< which rewrite the database
    int pageSize;
    const char *leftoverSuffix; ///< of what a crashed program leaves; empty for none
};

constexpr std::array layouts{
    Layout{"pragma page_size=4096; vacuum", 4096, ""},
    Layout{"pragma page_size=512; vacuum; create view own as select 1", 512, ""},
    Layout{"pragma page_size=1024; vacuum", 1024, ""},
    Layout{"pragma page_size=1024; pragma auto_vacuum=full; vacuum", 1024, ""},
    Layout{
        "pragma page_size=512; pragma auto_vacuum=incremental; vacuum; create view own as select 1",
        512, ""},
    Layout{"pragma page_size=1024; vacuum; pragma journal_mode=wal; create view own as select 1",
           1024, ""},
    Layout{"pragma page_size=512; vacuum; pragma journal_mode=wal", 512, "-wal"},
    Layout{"pragma page_size=1024; vacuum; create view own as select 1", 1024, "-journal"},
};

struct Kind {
    QString name;
    QList<int> versions; ///< one for each layout
    QStringList rows;    ///< added, for some dozen pages
    QString lastChange;  ///< the one that a crashed program was at
};

const QString hundreds = "with recursive n(i) as (select 1 union all select i + 1 from n"
                         " limit %1) insert into %2 from n";

QString insertMany(int count, const QString &into)
{
    return hundreds.arg(count).arg(into);
}

const QString longText = "replace(hex(zeroblob(5000)), '00', 'ab')";

const QList<Kind> kinds{
    {"profile",
     {0, 4, 8, 9, 12, 16, 22, 28},
     {
         insertMany(150, "profile(name, value) select 'site/' || i, 'value of the site ' || i * 7"),
         "insert into profile(name, value) select 'site/long', " + longText,
         insertMany(40,
                    "curve(id, name, a, b, valid) select 1000 + i, 'site ' || i, i / 3.0, 1, 1"),
         insertMany(300, "curvePoint select 1000 + i, 1000 + i % 40, i / 7.0, i * 1.5, i, i % 5"),
         insertMany(60, "curveVariable select 1000 + i % 40, 'ISI', i / 9.0"),
     },
     "update curvePoint set z = z + 1"},
    {"data",
     {0, 1, 2, 3, 4, 7, 9, 11},
     {
         insertMany(150,
                    "patient(id, sampleNo, date, time, name, sex, barcode) select 1000 + i, i,"
                    " '2019-03-' || i % 30, '08:00:' || i || '.5', 'name ' || i, 'x', i * 1001"),
         insertMany(60, "patientExtra select 1000 + i, 1000 + i, 'bed', i"),
         insertMany(100, "exam select 1000 + i, i, '2019-03-' || i % 30, 'PT'"),
         insertMany(60,
                    "curve(id, patientId, item, curve) select 1000 + i, 1000 + i, 'PT',"
                    " cast('curve ' || i * 99 as blob)"),
         "insert into curve(id, patientId, item, curve) select 2000, 1001, 'TT', cast(" + longText
             + " as blob)",
         insertMany(30, "doctor(id, abbr, name) select 1000 + i, 'd' || i, 'doctor ' || i"),
     },
     "update patient set name = name || '+'"},
    {"qc",
     {0, 0, 0, 1, 1, 2, 2, 2},
     {
         insertMany(200,
                    "qc select 1000 + i, i % 20, '2019-03-' || i % 30, '08:00:' || i || '.5',"
                    " i / 7.0, 0, 'remark ' || i"),
         "insert into qc(id, remark) select 2000, " + longText,
         insertMany(80,
                    "reagent(id, reagentId, fileNo, name, lotsNum) select 1000 + i, i % 7,"
                    " i, 'control ' || i, 'L' || i"),
         insertMany(120,
                    "info(id, reagentId, itemId, subitemId, item, subitem, xmean)"
                    " select 1000 + i, 1000 + i % 80, i, i, 'PT', 'T', i / 9.0"),
     },
     "update qc set flag = flag + 1, remark = remark || '+'"},
    {"syslog",
     {0, 1, 2, 3, 0, 1, 2, 3},
     {
         insertMany(250,
                    "assay select 1000 + i, '2019-03-' || i % 30, '08:00:' || i || '.5',"
                    " 'wb1', 'PT', 'sample ' || i, 'remark ' || i"),
         insertMany(250, "event select 1000 + i, '2019-03-01 08:00:' || i, i % 3, 'event ' || i"),
         "insert into event(id, text) select 2000, " + longText,
     },
     "update event set text = text || '+'"},
};

/// \return the statements that fill a database and leave free pages
QStringList filling(const Kind &kind)
{
    return kind.rows
        + QStringList{"create table scratch(a)",
                      insertMany(20, "scratch select hex(zeroblob(300))"), "drop table scratch"};
}

/// \return also a run that does not end, which is killed then
ToolRun runVardo(const QString &folder)
{
    const QString log = folder + "/upgrade.log";
    RunningTool tool({VARDO, {"-p", folder + '/'}, log});
    if (!tool.endsWithin(timeLimit))
        tool.kill();
    ToolRun run = tool.result();
    QFile::remove(log);
    return run;
}

/// \return true when a table has all its rows, each with its values and perhaps some of new columns
bool keepsRows(const Sqlite &before, const Sqlite &after, const QByteArray &table)
{
    const Rows expected = before.rows(table);
    const Rows found = after.rows(table);
    return std::equal(expected.constKeyValueBegin(), expected.constKeyValueEnd(),
                      found.constKeyValueBegin(), found.constKeyValueEnd(),
                      [](const auto &row, const auto &longer) {
                          return row.first == longer.first && longer.second.startsWith(row.second);
                      });
}

/// Notes the schema of a sound database, and the tables whose rows its upgrade keeps.
void describe(Files &files, const Kind &kind)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(kind.name + ".db");
    const QString original = folder.filePath("original.db");
    files.writeTo(path);
    files.writeTo(original);
    if (runVardo(folder.path()).exitCode != 0)
        qFatal("The sound %s database is not upgraded.", qUtf8Printable(kind.name));
    const Sqlite before(original);
    const Sqlite after(path);
    files.schema = schema(before);
    files.keptTables = before.tables();
    files.keptTables.removeIf(
        [&](const QByteArray &table) { return !keepsRows(before, after, table); });
}

Files makeFiles(const Kind &kind, int version, const Layout &layout)
{
    const TestDatabase database(kind.name + ".db");
    makeDatabaseAt(database, kind.name, version);
    const QStringList settings = QString(layout.settings).split("; ");
    database.execute(settings + filling(kind));

    Files files;
    files.version = version > 0 ? QByteArray::number(version) : QByteArray();
    files.pageSize = layout.pageSize;
    files.leftoverSuffix = layout.leftoverSuffix;
    if (files.leftoverSuffix.isEmpty()) {
        files.database = database.bytes();
        describe(files, kind);
        return files;
    }
    // the journal's: with pages of the change in the database already
    const Sqlite program(database.path());
    for (const char *sql :
         {"pragma synchronous=off", "pragma cache_size=3", "pragma wal_autocheckpoint=0", "begin"})
        program.run(sql);
    program.run(kind.lastChange.toUtf8());
    if (files.leftoverSuffix == "-wal")
        program.run("commit");
    files.database = database.bytes();
    files.leftover = read(database.path() + files.leftoverSuffix);
    describe(files, kind);
    return files;
}

/// What became of one damaged database.
struct Outcome {
    int number = 0;
    QString corruption;
    QString result;
    QString reason;  ///< of a refusal, without what differs from file to file
    QString failure; ///< of the tool; empty for none
};

/// \return the warning that says why a database was refused
QString decidingWarning(const QStringList &log)
{
    const QStringList warnings = log.filter(
        QRegularExpression("^Warning: (?!File doesn't exist)", // of the other three databases
                           QRegularExpression::DotMatchesEverythingOption));
    return warnings.isEmpty() ? QString() : warnings.constLast();
}

/// \return true for the one step that says nothing of a table without a column which it asks for
bool isSilentStep(const QStringList &log)
{
    return log.contains("Debug: update_v10(): FAIL");
}

QString refusal(const QString &warning)
{
    if (warning.isEmpty())
        return "silent";
    if (warning.contains(" is damaged: "))
        return "damaged";
    if (warning.contains("The upgrade would damage "))
        return "would damage";
    if (warning.contains("[ \"pragma integrity_check"))
        return "check fails";
    if (warning.contains("Can't open") || warning.contains("Failed to start"))
        return "not opened";
    return "statement fails";
}

/// \return a warning without what differs from file to file
QString form(QString warning)
{
    static const QList<std::pair<QRegularExpression, QString>> replacements{
        {QRegularExpression(R"(Database .* is damaged: .*)"), "Database … is damaged: …"},
        {QRegularExpression(R"(would damage .*)"), "would damage …: …"},
        {QRegularExpression(R"(\(\d+\): )"), "(…): "},
        {QRegularExpression(R"(malformed database schema \(.*" : )"),
         R"(malformed database schema (…) - …" : )"},
        {QRegularExpression(R"(\[ "(\w+ \w+ ?)[^\]]*"\])"), R"([ "\1…" ])"},
        {QRegularExpression(R"(no such (\w+): .*" : )"), R"(no such \1: …" : )"},
        {QRegularExpression(R"((table|index|trigger|view) .* already exists)"),
         R"(\1 … already exists)"},
        {QRegularExpression(R"(table .* has no column named .*" : )"),
         R"(table … has no column named …" : )"},
        {QRegularExpression(R"(duplicate column name: .*" : )"), R"(duplicate column name: …" : )"},
    };
    warning = warning.simplified();
    if (warning.contains("[ \"pragma integrity_check") || warning.contains("[ \"select version"))
        warning.replace('[', '{'); // these are told in full
    for (const auto &[pattern, replacement] : replacements)
        warning.replace(pattern, replacement);
    return warning.replace('{', '[');
}

/// One damaged database and what the tool does with it.
class Case {
public:
    Case(const Kind &databaseKind, const QList<Files> &bases, quint32 seed, int number)
        : kind(databaseKind)
        , fileName('/' + databaseKind.name + ".db")
    {
        const quint32 place = qHash(kind.name, 0) & 0xffff;
        const std::array<quint32, 3> seeds{seed, place, quint32(number)};
        QRandomGenerator random(seeds.data(), qsizetype(seeds.size()));
        outcome.number = number;
        files = bases.at(random.bounded(int(bases.size())));
        damage(random);
        repeated = random.bounded(10) == 0;
    }

    Outcome run()
    {
        files.writeTo(path("tried"));
        files.writeTo(path("settled"));
        settle();
        const ToolRun first = runVardo(folder("tried"));
        outcome.failure = judge(first);
        return outcome;
    }

    const Files &damagedFiles() const { return files; }

private:
    QString folder(const QString &name) const
    {
        QDir(directory.path()).mkdir(name);
        return directory.filePath(name);
    }
    QString path(const QString &name) const { return folder(name) + fileName; }

    void damage(QRandomGenerator &random)
    {
        if (!files.leftover.isEmpty() && random.bounded(2) == 0) {
            outcome.corruption = corruptionOfLeftover().name;
            corruptionOfLeftover().apply(files.leftover, files.pageSize, random);
            return;
        }
        const QList<Corruption> &all = corruptionsOfDatabase();
        const Corruption &corruption = all.at(random.bounded(int(all.size())));
        outcome.corruption = corruption.name;
        corruption.apply(files.database, files.pageSize, random);
    }

    /// Lets SQLite itself roll back or move what a crashed program left.
    void settle() const
    {
        const Sqlite database(path("settled"));
        database.run("select count(*) from sqlite_master");
    }

    QString judge(const ToolRun &run)
    {
        const QByteArray printed = run.errors + run.output;
        if (!run.exited)
            return "a crash or no end, " + printed;
        if (!printed.isEmpty() || run.exitCode < 0 || run.exitCode > 1)
            return QString("exit code %1, %2").arg(run.exitCode).arg(QString(printed));
        return run.exitCode == 0 ? judgeUpgrade(run) : judgeRefusal(run);
    }

    QString judgeRefusal(const ToolRun &run)
    {
        const QString warning = decidingWarning(run.log);
        outcome.result = refusal(warning);
        outcome.reason = form(warning);
        if (warning.isEmpty() && !isSilentStep(run.log))
            return "no warning tells why";
        if (QString difference = differenceToSettled(); !difference.isEmpty())
            return difference;
        return repeated ? judgeRepetition(run) : QString();
    }

    QString differenceToSettled() const
    {
        if (read(path("tried")) != read(path("settled")))
            return "the refused file is not what it was";
        if (files.leftover.isEmpty() && read(path("tried")) != files.database)
            return "reading alone changes the file";
        if (QFile::exists(path("tried") + "-journal")
            != QFile::exists(path("settled") + "-journal"))
            return "a journal is left";
        return {};
    }

    QString judgeRepetition(const ToolRun &first) const
    {
        const ToolRun second = runVardo(folder("tried"));
        if (second.exitCode != 1 || !second.errors.isEmpty())
            return QString("the second run ends with %1").arg(second.exitCode);
        if (files.leftover.isEmpty() && second.log != first.log)
            return "the second run logs " + second.log.join(" | ");
        return differenceToSettled();
    }

    QString judgeUpgrade(const ToolRun &run)
    {
        const bool stepRan = !run.log.filter(": PASS").isEmpty();
        outcome.result = stepRan ? "upgraded" : "up to date";
        const Sqlite upgraded(path("tried"));
        if (upgraded.column("select * from version") != QByteArrayList{newestVersion()})
            return "the version is not the newest";
        const QByteArrayList known = Sqlite(path("settled")).findings();
        for (const QByteArray &finding : upgraded.findings()) {
            if (finding != "ok" && !known.contains(finding))
                return "the upgraded file is damaged: " + finding;
        }
        if (QString difference = changeOfKeptTables(); !difference.isEmpty())
            return difference;
        return differenceToUpgradedCopy();
    }

    /// \return what is lost, unless the damage changed the version, the layout or a value's type, and so
    ///         what the steps do
    QString changeOfKeptTables() const
    {
        const Sqlite before(path("settled"));
        const Sqlite after(path("tried"));
        if (before.column("select version from version").value(0) != files.version
            || schema(before) != files.schema || before.findings() != QByteArrayList{"ok"})
            return {};
        for (const QByteArray &table : files.keptTables) {
            if (!keepsRows(before, after, table))
                return "rows are lost or changed: " + table;
        }
        return {};
    }

    QByteArray newestVersion() const { return QByteArray::number(newestVersionOf(kind.name)); }

    QString differenceToUpgradedCopy() const
    {
        makeSoundCopy(path("settled"), path("copy"));
        const ToolRun run = runVardo(folder("copy"));
        if (run.exitCode != 0)
            return "a sound copy is refused: " + decidingWarning(run.log);
        const QByteArrayList expected = readable(Sqlite(path("copy")));
        const QByteArrayList found = readable(Sqlite(path("tried")));
        if (found == expected)
            return {};
        qsizetype line = 0;
        while (line < qMin(found.size(), expected.size()) && found.at(line) == expected.at(line))
            ++line;
        return "an upgraded sound copy has " + expected.value(line).left(300) + " where it has "
            + found.value(line).left(300);
    }

    const Kind &kind;
    QString fileName;
    QTemporaryDir directory;
    Files files;
    Outcome outcome;
    bool repeated = false;
};

int fromEnvironment(const char *variable, int otherwise)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(variable, &isNumber);
    return isNumber ? number : otherwise;
}

/// Keeps the files of a failure for whoever looks into it.
void keep(const Files &files, const QString &name)
{
    QDir().mkpath(FINDINGS);
    files.writeTo(QString(FINDINGS) + '/' + name + ".db");
}

const QStringList results{"damaged", "check fails",  "not opened", "statement fails",
                          "silent",  "would damage", "upgraded",   "up to date"};

using Table = QMap<QString, QMap<QString, int>>; ///< numbers of cases by corruption and result

QString layOut(const Table &table)
{
    const auto line = [](const QString &name, const QMap<QString, int> &counts) {
        QString text = name.leftJustified(29);
        for (const QString &result : results)
            text += QString::number(counts.value(result)).rightJustified(16);
        return text;
    };
    QString header = QString().leftJustified(29);
    for (const QString &result : results)
        header += result.rightJustified(16);
    QStringList lines{header};
    QMap<QString, int> sum;
    for (auto row = table.begin(); row != table.end(); ++row) {
        lines << line(row.key(), row.value());
        for (const QString &result : results)
            sum[result] += row.value().value(result);
    }
    return (lines << line("all", sum)).join('\n');
}

} // namespace

class TestCorruption : public QObject {
    Q_OBJECT

private slots:
    void losesNothing_data();
    void losesNothing();
    void cleanupTestCase();

private:
    void count(const Outcome &outcome);

    const quint32 seed = quint32(fromEnvironment("VARDO_CORRUPTION_SEED", 1));
    Table byCorruption;
    QMap<QString, int> reasons;
};

void TestCorruption::losesNothing_data()
{
    QTest::addColumn<int>("index");

    for (int index = 0; index < kinds.size(); ++index)
        QTest::newRow(qUtf8Printable(kinds.at(index).name)) << index;
}

/// Shows: REL-6
void TestCorruption::losesNothing()
{
    QFETCH(int, index);
    const Kind &kind = kinds.at(index);
    QList<Files> bases;
    for (std::size_t i = 0; i < layouts.size(); ++i) // other pairs with another seed
        bases << makeFiles(kind, kind.versions.at(qsizetype((i + seed) % layouts.size())),
                           layouts.at(i));
    QList<int> numbers(fromEnvironment("VARDO_CORRUPTIONS", 125));
    std::iota(numbers.begin(), numbers.end(), 0);
    if (const int only = fromEnvironment("VARDO_CORRUPTION_CASE", -1); only >= 0)
        numbers = {only};

    const auto outcomes = QtConcurrent::blockingMapped<QList<Outcome>>(
        numbers, std::function<Outcome(int)>([&](int number) {
            Case damaged(kind, bases, seed, number);
            Outcome outcome = damaged.run();
            if (!outcome.failure.isEmpty())
                keep(damaged.damagedFiles(),
                     QString("%1-%2-%3").arg(kind.name).arg(seed).arg(number));
            return outcome;
        }));

    int failures = 0;
    for (const Outcome &outcome : outcomes) {
        count(outcome);
        if (outcome.failure.isEmpty())
            continue;
        ++failures;
        qWarning("%s, seed %u, case %d, %s: %s", qUtf8Printable(kind.name), seed, outcome.number,
                 qUtf8Printable(outcome.corruption), qUtf8Printable(outcome.failure));
    }
    QCOMPARE(failures, 0);
}

void TestCorruption::count(const Outcome &outcome)
{
    ++byCorruption[outcome.corruption][outcome.result];
    if (!outcome.reason.isEmpty())
        ++reasons[outcome.reason];
}

void TestCorruption::cleanupTestCase()
{
    QStringList lines;
    for (auto reason = reasons.begin(); reason != reasons.end(); ++reason)
        lines << QString::number(reason.value()).rightJustified(6) + ' ' + reason.key();
    qInfo("Seed %u\n%s\nWhy databases were refused:\n%s", seed,
          qUtf8Printable(layOut(byCorruption)), qUtf8Printable(lines.join('\n')));
}

QTEST_GUILESS_MAIN(TestCorruption)
#include "tst_corruption.moc"
