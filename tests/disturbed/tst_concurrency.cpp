// SPDX-License-Identifier: MIT
/// The tool beside other programs, and beside other runs of itself, on the same databases.

#include "expectedsteps.h"
#include "olddatabases.h"
#include "otherprogram.h"
#include "platform.h"
#include "today.h"
#include "toolrun.h"

#include <QCryptographicHash>
#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <vector>

namespace {

const QStringList names{"profile", "data", "qc", "syslog"};

/// Where a run gives up waiting for a lock.
constexpr int busyTimeout = 5000;

/// A run of the tool on the databases of a folder, with a log of its own unless another one is named.
class Run : public RunningTool {
public:
    explicit Run(const QString &databases, const QString &logName = "log.txt")
        : RunningTool({.program = VARDO, .log = logName, .folder = databases})
        , folder(databases)
    {
    }

    /// Waits for the end.
    int exitCode()
    {
        const ToolRun run = result();
        if (!run.exited)
            qFatal("a crash: %s", run.errors.constData());
        return run.exitCode;
    }

    /// Waits for the end.
    /// \return the lines of the log without the folder
    QStringList lines() { return result().log.replaceInStrings(folder + '/', ""); }

private:
    QString folder;
};

/// The four databases as they are before and after an upgrade, and the logs of undisturbed runs.
class Databases {
public:
    /// \param enlarge statements that add rows to the data database
    explicit Databases(const QStringList &enlarge = {})
    {
        for (const QString &name : names) {
            const TestDatabase database(name + ".db");
            makeDatabaseAt(database, name, 0);
            if (name == "data")
                database.execute(enlarge);
            before << withToday(database.content());
            if (!QFile::copy(database.path(), old.filePath(name + ".db"))
                || !QFile::copy(database.path(), upgraded.filePath(name + ".db")))
                qFatal("no copy of %s", qUtf8Printable(database.path()));
        }
        firstLog = logOfARun();
        secondLog = logOfARun();
        for (const QString &name : names)
            after << withToday(databaseContent(upgraded.filePath(name + ".db")));
    }

    /// \param journalMode "delete" or "wal"
    void copyTo(const QString &folder, const QString &journalMode) const
    {
        copy(old, folder, journalMode);
    }
    void copyUpgradedTo(const QString &folder, const QString &journalMode) const
    {
        copy(upgraded, folder, journalMode);
    }

    const QStringList &firstRun() const { return firstLog; }
    const QStringList &secondRun() const { return secondLog; }
    const QList<QStringList> &oldContents() const { return before; }
    const QList<QStringList> &newContents() const { return after; }

    static QList<QStringList> contentsOf(const QString &folder)
    {
        QList<QStringList> contents;
        for (const QString &name : names)
            contents << withToday(databaseContent(QDir(folder).filePath(name + ".db")));
        return contents;
    }

private:
    QStringList logOfARun()
    {
        Run run(upgraded.path());
        if (run.exitCode() != 0)
            qFatal("an undisturbed run failed");
        QStringList lines = run.lines();
        QFile::remove(upgraded.filePath("log.txt"));
        return lines;
    }

    static void copy(const QTemporaryDir &from, const QString &to, const QString &journalMode)
    {
        for (const QString &name : names) {
            const QString path = QDir(to).filePath(name + ".db");
            if (!QFile::copy(from.filePath(name + ".db"), path))
                qFatal("no copy to %s", qUtf8Printable(path));
            executeOn(path, {"pragma journal_mode=" + journalMode});
        }
    }

    QTemporaryDir old;
    QTemporaryDir upgraded;
    QStringList firstLog;
    QStringList secondLog;
    QList<QStringList> before;
    QList<QStringList> after;
};

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

/// \return the lines up to one, with it
QStringList linesUpTo(const QStringList &lines, const QString &last)
{
    return lines.mid(0, lines.indexOf(last) + 1);
}

const QStringList databaseFiles{"data.db", "profile.db", "qc.db", "syslog.db"};

const QString lockedLine = R"(Warning: Failed to start transaction: "database is locked")";
const QString uncommittedLine = R"(Warning: Failed to commit: "database is locked")";

/// \return whether the long forms of the tests that wait are asked for
bool isLongRun()
{
    return qEnvironmentVariableIntValue("VARDO_LONG_TESTS") != 0;
}

/// A database that another program keeps in use until the run has given up.
struct Hindrance {
    const char *name;
    const char *journalMode;
    QByteArray statements;
    QString lastSoundLine; ///< of the log
    QString lastLine;
};

const QList<Hindrance> hindrances{
    {"a writer, rollback journal", "delete", "begin immediate;", "Debug: Updating qc.db",
     lockedLine},
    {"an exclusive writer, rollback journal", "delete", "begin exclusive;", "Debug: Updating qc.db",
     lockedLine},
    {"a writer, WAL", "wal", "begin immediate;", "Debug: Updating qc.db", lockedLine},
    {"an exclusive writer, WAL", "wal", "begin exclusive;", "Debug: Updating qc.db", lockedLine},
    {"a program that keeps all to itself, WAL", "wal",
     "pragma locking_mode=exclusive; begin exclusive;", "Debug: Updating qc.db", lockedLine},
    {"a reader, rollback journal", "delete", "begin; select count(*) from qc;",
     QString("Debug: Updated version to %1").arg(newestVersionOf("qc")), uncommittedLine},
};

/// A run and the program that hinders it, in a folder of their own.
struct HinderedRun {
    HinderedRun(const Databases &databases, Hindrance kind)
        : hindrance(std::move(kind))
    {
        databases.copyTo(folder.path(), hindrance.journalMode);
        qcBefore = bytesOf(folder.filePath("qc.db"));
        syslogBefore = bytesOf(folder.filePath("syslog.db"));
        other = std::make_unique<OtherProgram>(folder.filePath("qc.db"));
        other->run(hindrance.statements);
        run = std::make_unique<Run>(folder.path());
    }

    Hindrance hindrance;
    QTemporaryDir folder;
    QByteArray qcBefore;
    QByteArray syslogBefore;
    std::unique_ptr<OtherProgram> other;
    std::unique_ptr<Run> run;
};

/// Reads all of a data database again and again, each time in one read transaction.
class Reader {
public:
    explicit Reader(const QString &path)
        : program(path)
    {
        read();
    }

    void startReading()
    {
        // To read a table that the layout lacks prints an error, the same each time. The shell shows no
        // more of a table than a digest of its rows: to print them takes it far longer than to read them.
        static const QByteArray everything = [] {
            QByteArray statements =
                "begin;\nselect type, name, sql from sqlite_master order by type, name;\n";
            for (const char *table :
                 {"patient", "patientExtra", "exam", "result", "results", "checkedResult", "curve",
                  "detail", "department", "sex", "treatmentRoom", "diagnosis", "doctor", "operator",
                  "memo", "sampleAssayRequest", "version"})
                statements += QByteArray("select sha3_query('select * from ") + table + "');\n";
            return statements + "commit;";
        }();
        program.ask(everything);
    }

    /// \return false when the file was locked at one of the statements
    bool takeSnapshot()
    {
        static const QRegularExpression line(R"( near line \d+)"); // of the shell's input
        const QString all = QString::fromUtf8(program.answer()).remove(line);
        if (all.contains("locked"))
            return false;
        const QByteArray digest = QCryptographicHash::hash(all.toUtf8(), QCryptographicHash::Sha1);
        if (seen.isEmpty() || seen.constLast() != digest)
            seen << digest;
        return true;
    }

    /// Reads once, however long the file is locked.
    void read()
    {
        do {
            startReading();
        } while (!takeSnapshot());
    }

    /// \return digests of what was seen, without repetitions
    const QByteArrayList &snapshots() const { return seen; }

private:
    OtherProgram program;
    QByteArrayList seen;
};

/// A run takes some hundred milliseconds for these.
const QStringList manyPatients{
    "with recursive n(i) as (select 100 union all select i + 1 from n where i < 5099)"
    " insert into patient(id, sampleNo, date, time, name)"
    " select i, printf('%04d', i), '2016-05-11', '08:01:02.345', 'patient ' || i from n",
    "with recursive n(i) as (select 0 union all select i + 1 from n where i < 19999)"
    " insert into result(id, patientId, item, subitem, result, unit)"
    " select i + 100, i / 4 + 100, 'I' || (i % 4), 'T', i * 0.25, 's' from n",
    "with recursive n(i) as (select 0 union all select i + 1 from n where i < 999)"
    " insert into curve(id, patientId, item, curve)"
    " select i + 100, i + 100, 'I0', zeroblob(200 + i) from n"};

} // namespace

class TestConcurrency : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void waitsForALock_data();
    void waitsForALock();
    void skipsWhatIsUpgradedAfterALock_data();
    void skipsWhatIsUpgradedAfterALock();
    void upgradesWhatALockHidAtFirst_data();
    void upgradesWhatALockHidAtFirst();
    void givesUpAfterFiveSeconds();
    void waitsForAReader();
    void givesUpOnAReaderOfALargeDatabase();
    void leavesAReaderItsContentInWalMode();
    void neverShowsAMixtureToReaders_data();
    void neverShowsAMixtureToReaders();
    void upgradesOnceInSeveralRuns_data();
    void upgradesOnceInSeveralRuns();
    void writesWholeLinesInALogOfTwoRuns();
    void upgradesAfterAnotherRunWasKilled_data();
    void upgradesAfterAnotherRunWasKilled();

private:
    QString path(const QString &fileName) const { return folder->filePath(fileName); }

    std::unique_ptr<Databases> small;
    std::unique_ptr<Databases> large;
    std::unique_ptr<QTemporaryDir> folder;
};

void TestConcurrency::initTestCase()
{
    small = std::make_unique<Databases>();
    large = std::make_unique<Databases>(manyPatients);
    QCOMPARE(small->firstRun().filter(": PASS").size(), numberOfSteps());
    QCOMPARE(small->secondRun().filter(": SKIP").size(), numberOfSteps());
}

void TestConcurrency::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void TestConcurrency::waitsForALock_data()
{
    QTest::addColumn<QString>("journalMode");
    QTest::addColumn<QByteArray>("statements");
    QTest::addColumn<int>("held"); // ms

    for (const int held : {1000, 4000}) {
        if (held > 1000 && !isLongRun())
            continue;
        for (const char *mode : {"delete", "wal"}) {
            for (const char *lock : {"begin immediate;", "begin exclusive;"})
                QTest::addRow("%s %s %d ms", mode, lock, held) << mode << QByteArray(lock) << held;
        }
        QTest::addRow("all to itself %d ms", held)
            << "wal" << QByteArray("pragma locking_mode=exclusive; begin exclusive;") << held;
    }
}

/// Shows: ENG-6
void TestConcurrency::waitsForALock()
{
    QFETCH(QString, journalMode);
    QFETCH(QByteArray, statements);
    QFETCH(int, held);
    small->copyTo(folder->path(), journalMode);
    OtherProgram other(path("qc.db"));
    other.run(statements);

    Run run(folder->path());
    const bool ended = run.endsWithin(held);
    other.close();

    QVERIFY(!ended);
    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), small->firstRun());
    QCOMPARE(databaseFilesIn(folder->path()), databaseFiles);
    QCOMPARE(Databases::contentsOf(folder->path()), small->newContents());
}

void TestConcurrency::skipsWhatIsUpgradedAfterALock_data()
{
    QTest::addColumn<QString>("journalMode");
    QTest::addColumn<QByteArray>("statements");

    QTest::newRow("rollback journal") << "delete" << QByteArray("begin exclusive;");
    QTest::newRow("WAL") << "wal" << QByteArray("pragma locking_mode=exclusive; begin exclusive;");
}

void TestConcurrency::skipsWhatIsUpgradedAfterALock()
{
    QFETCH(QString, journalMode);
    QFETCH(QByteArray, statements);
    small->copyUpgradedTo(folder->path(), journalMode);
    OtherProgram other(path("qc.db"));
    other.run(statements);

    Run run(folder->path());
    const bool ended = run.endsWithin(1000);
    other.close();

    QVERIFY(!ended);
    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), small->secondRun());
    QCOMPARE(databaseFilesIn(folder->path()), databaseFiles);
    QCOMPARE(Databases::contentsOf(folder->path()), small->newContents());
}

void TestConcurrency::upgradesWhatALockHidAtFirst_data()
{
    QTest::addColumn<bool>("upgradedBefore");

    QTest::newRow("newest") << true;
    QTest::newRow("oldest") << false;
}

/// The version is read twice: a lock that hides it from the first reading must not make the run repeat
/// its steps.
void TestConcurrency::upgradesWhatALockHidAtFirst()
{
    QFETCH(bool, upgradedBefore);
    if (upgradedBefore)
        small->copyUpgradedTo(folder->path(), "delete");
    else
        small->copyTo(folder->path(), "delete");
    OtherProgram other(path("qc.db"));
    other.run("begin exclusive;");

    Run run(folder->path());
    const bool ended = run.endsWithin(1000);
    other.close();

    QVERIFY(!ended);
    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), upgradedBefore ? small->secondRun() : small->firstRun());
    QCOMPARE(Databases::contentsOf(folder->path()), small->newContents());
}

/// All kinds at once, since each run waits for seconds.
/// Shows: ENG-6
void TestConcurrency::givesUpAfterFiveSeconds()
{
    std::vector<std::unique_ptr<HinderedRun>> runs;
    for (const Hindrance &hindrance : hindrances)
        runs.push_back(std::make_unique<HinderedRun>(*small, hindrance));

    for (const auto &hindered : runs) {
        const char *name = hindered->hindrance.name;
        const QTemporaryDir &place = hindered->folder;
        QVERIFY2(hindered->run->exitCode() == 1, name);
        QVERIFY2(hindered->run->elapsed() >= busyTimeout - 500, name);
        hindered->other->close();

        const QStringList expectedLog =
            linesUpTo(small->firstRun(), hindered->hindrance.lastSoundLine)
            << hindered->hindrance.lastLine;
        QVERIFY2(hindered->run->lines() == expectedLog,
                 qUtf8Printable(name + hindered->run->lines().join('\n')));
        QVERIFY2(databaseFilesIn(place.path()) == databaseFiles, name);
        QVERIFY2(bytesOf(place.filePath("qc.db")) == hindered->qcBefore, name);
        QVERIFY2(bytesOf(place.filePath("syslog.db")) == hindered->syslogBefore, name);
        QVERIFY2(Databases::contentsOf(place.path())
                     == small->newContents().mid(0, 2) + small->oldContents().mid(2),
                 name);

        Run next(place.path(), "next.txt");
        QVERIFY2(next.exitCode() == 0, name);
        QVERIFY2(Databases::contentsOf(place.path()) == small->newContents(), name);
    }
}

/// Shows: ENG-6
void TestConcurrency::waitsForAReader()
{
    small->copyTo(folder->path(), "delete");
    OtherProgram reader(path("qc.db"));
    reader.run("begin; select count(*) from qc;");

    Run run(folder->path());
    const bool ended = run.endsWithin(1000);
    reader.close();

    QVERIFY(!ended);
    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), small->firstRun());
    QCOMPARE(Databases::contentsOf(folder->path()), small->newContents());
}

/// SQLite asks for the file whenever the changed pages do not fit into its cache, not only for the
/// commit.
void TestConcurrency::givesUpOnAReaderOfALargeDatabase()
{
    large->copyTo(folder->path(), "delete");
    executeOn(path("data.db"), {"pragma default_cache_size=10"});
    OtherProgram reader(path("data.db"));
    reader.run("begin; select count(*) from exam;");

    Run run(folder->path());
    const bool ended = run.endsWithin(3 * busyTimeout);

    QVERIFY(ended);
    QCOMPARE(run.exitCode(), 1);
    reader.close();
    QCOMPARE(Databases::contentsOf(folder->path()).mid(1), large->oldContents().mid(1));
}

void TestConcurrency::leavesAReaderItsContentInWalMode()
{
    const QByteArray all = "select name, sql from sqlite_master; select * from qc;"
                           " select * from info; select * from subsetting; select * from reagent;";
    small->copyTo(folder->path(), "wal");
    OtherProgram reader(path("qc.db"));
    const QByteArray before = reader.run("begin; " + all);

    Run run(folder->path());

    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), small->firstRun());
    QCOMPARE(reader.run(all), before);
    reader.run("commit;");
    QCOMPARE(reader.run("select version from version;").trimmed(),
             QByteArray::number(newestVersionOf("qc")));
    QVERIFY(reader.run(all) != before);
    reader.close();
    QCOMPARE(databaseFilesIn(folder->path()), databaseFiles);
    QCOMPARE(Databases::contentsOf(folder->path()), small->newContents());
}

void TestConcurrency::neverShowsAMixtureToReaders_data()
{
    QTest::addColumn<QString>("journalMode");
    QTest::addColumn<QString>("setting"); // stored in the file

    QTest::newRow("rollback journal") << "delete"
                                      << "pragma user_version=0";
    // so small that pages go to the file before the commit
    QTest::newRow("rollback journal, ten pages of cache") << "delete"
                                                          << "pragma default_cache_size=10";
    QTest::newRow("WAL") << "wal"
                         << "pragma user_version=0";
    QTest::newRow("WAL, ten pages of cache") << "wal"
                                             << "pragma default_cache_size=10";
}

/// Shows: REL-7
void TestConcurrency::neverShowsAMixtureToReaders()
{
    QFETCH(QString, journalMode);
    QFETCH(QString, setting);
    large->copyTo(folder->path(), journalMode);
    executeOn(path("data.db"), {setting});
    std::vector<std::unique_ptr<Reader>> readers(3);
    for (auto &reader : readers)
        reader = std::make_unique<Reader>(path("data.db"));
    const QByteArrayList before = readers.front()->snapshots();

    Run run(folder->path());
    while (!run.endsWithin(1)) {
        for (const auto &reader : readers)
            reader->startReading();
        for (const auto &reader : readers)
            (void)reader->takeSnapshot();
    }
    const int exitCode = run.exitCode();

    const QByteArrayList after = Reader(path("data.db")).snapshots();
    for (const auto &reader : readers) {
        reader->read();
        QCOMPARE(reader->snapshots(), exitCode == 0 ? before + after : before);
    }
    readers.clear();
    const QList<QStringList> contents = Databases::contentsOf(folder->path());
    if (exitCode == 0) {
        QCOMPARE(run.lines(), large->firstRun());
        QCOMPARE(contents, large->newContents());
    } else {
        QCOMPARE(run.lines().constLast(), uncommittedLine);
        QCOMPARE(contents, large->newContents().mid(0, 1) + large->oldContents().mid(1));
    }
}

void TestConcurrency::upgradesOnceInSeveralRuns_data()
{
    QTest::addColumn<QString>("journalMode");
    QTest::addColumn<int>("count");

    for (const char *mode : {"delete", "wal"}) {
        for (const int count : {2, 4}) {
            for (int round = 0; round < 2; ++round)
                QTest::addRow("%s, %d runs, round %d", mode, count, round) << mode << count;
        }
    }
}

/// Shows: REL-7
void TestConcurrency::upgradesOnceInSeveralRuns()
{
    QFETCH(QString, journalMode);
    QFETCH(int, count);
    large->copyTo(folder->path(), journalMode);
    const QList<QStringList> firstParts = partsOf(large->firstRun());
    const QList<QStringList> secondParts = partsOf(large->secondRun());

    std::vector<std::unique_ptr<Run>> runs;
    runs.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        runs.push_back(std::make_unique<Run>(folder->path(), QString("log%1.txt").arg(i)));

    QList<int> upgrades(names.size());
    for (const auto &run : runs) {
        const int exitCode = run->exitCode();
        QStringList log = run->lines();
        if (exitCode != 0) {
            QCOMPARE(log.takeLast(), lockedLine);
            QVERIFY(log.takeLast().startsWith("Debug: Updating "));
        }
        const QList<QStringList> parts = partsOf(log);
        QVERIFY(exitCode != 0 || parts.size() == names.size());
        for (int i = 0; i < parts.size(); ++i) {
            if (parts.at(i) == firstParts.at(i))
                ++upgrades[i];
            else
                QCOMPARE(parts.at(i), secondParts.at(i));
        }
    }
    QCOMPARE(upgrades, QList<int>({1, 1, 1, 1}));
    QCOMPARE(Databases::contentsOf(folder->path()), large->newContents());
    // Runs that close a database at the same moment may leave its log to each other. Who opens it next removes it.
    QCOMPARE(databaseFilesIn(folder->path()), databaseFiles);
}

/// Shows: LOG-6
void TestConcurrency::writesWholeLinesInALogOfTwoRuns()
{
    if (!appendsInOneStep())
        QSKIP(
            "Wine appends in two steps: lines that are written at the same moment are NOT tested");
    large->copyTo(folder->path(), "delete");

    Run one(folder->path());
    Run other(folder->path());
    const int exitCodes = one.exitCode() + other.exitCode();

    QCOMPARE(exitCodes, 0);
    QStringList expected = large->firstRun() + large->secondRun();
    QStringList lines = one.lines();
    expected.sort();
    lines.sort();
    QCOMPARE(lines, expected);
}

void TestConcurrency::upgradesAfterAnotherRunWasKilled_data()
{
    QTest::addColumn<QString>("journalMode");
    QTest::addColumn<uint>("seed");

    for (uint seed = 1; seed <= (isLongRun() ? 100U : 5U); ++seed) {
        QTest::addRow("rollback journal, seed %u", seed) << "delete" << seed;
        QTest::addRow("WAL, seed %u", seed) << "wal" << seed;
    }
}

/// Shows: REL-4
void TestConcurrency::upgradesAfterAnotherRunWasKilled()
{
    QFETCH(QString, journalMode);
    QFETCH(uint, seed);
    large->copyTo(folder->path(), journalMode);
    QRandomGenerator random(seed);

    Run killed(folder->path(), "killed.txt");
    QTest::qSleep(random.bounded(10));
    Run waiting(folder->path(), "waiting.txt");
    QTest::qSleep(random.bounded(200));
    killed.kill();

    QCOMPARE(waiting.exitCode(), 0);
    QCOMPARE(Databases::contentsOf(folder->path()), large->newContents());
    Run last(folder->path(), "last.txt");
    QCOMPARE(last.exitCode(), 0);
    QCOMPARE(last.lines(), large->secondRun());
    QCOMPARE(Databases::contentsOf(folder->path()), large->newContents());
    QCOMPARE(databaseFilesIn(folder->path()), databaseFiles);
}

QTEST_GUILESS_MAIN(TestConcurrency)
#include "tst_concurrency.moc"
