// SPDX-License-Identifier: MIT
/// Copies of databases that other programs use, or that they left in the middle of their work.

#include "filesizelimit.h"
#include "otherprogram.h"
#include "testdatabase.h"

#include "coagulation/report/snapshot.h"
#include "testfiles.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace coagulation::report;

namespace {

const QByteArrayList modes{"delete", "truncate", "persist", "memory", "off", "wal"};

/// 2,000 rows with the same value: more than one of them in a database, and it holds half a transaction.
constexpr int rows = 2000;
const QStringList numberedRows{
    "create table number(id integer primary key, value, filling)",
    "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2000) "
    "insert into number select i, 0, zeroblob(500) from n"};

const QByteArray setToOne = "update number set value = 1;\n";

bool countNothing(qint64 /*bytes*/)
{
    return true;
}

/// \return names, sizes and digests of a folder's files, but for the index of a write-ahead log, which is made
///         anew whenever nobody has it
QStringList filesIn(const QString &folder)
{
    QStringList files;
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
        if (file.fileName().endsWith("-shm"))
            continue;
        const QByteArray bytes = fileBytes(file.filePath());
        files << QString("%1 %2 %3")
                     .arg(file.fileName(), QString::number(bytes.size()),
                          QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex());
    }
    return files;
}

/// \return the values of a copy's rows, without repetitions
QStringList valuesIn(const QString &copy)
{
    if (databaseRows(copy, "select * from pragma_integrity_check") != QStringList{"'ok'"})
        return {"damaged"};
    return databaseRows(copy, "select value || ' in ' || count(*) from number group by value");
}

/// \return what the rows of one state are, as by valuesIn()
QStringList state(int value)
{
    return {QString("'%1 in %2'").arg(value).arg(rows)};
}

} // namespace

class TestSnapshot : public QObject {
    Q_OBJECT

private slots:
    void init();

    void copiesADatabase_data();
    void copiesADatabase();
    void tellsWhatItCopied();
    void copiesForTheUserAlone();
    void copiesBesideAnotherProgram_data();
    void copiesBesideAnotherProgram();
    void letsOthersReadAndKeepsThemFromWriting();
    void letsOthersWriteToAWriteAheadLog();
    void givesTheLockUp();
    void copiesWhatWasCommitted_data();
    void copiesWhatWasCommitted();
    void copiesALogThatIsStartedAfresh();
    void playsBackTheJournalOfACrash();
    void leavesTheLogOfACrash();
    void copiesTheLogBehindALink();
    void givesUpOnALockedDatabase_data();
    void givesUpOnALockedDatabase();
    void copiesWhatSqliteCannotRead_data();
    void copiesWhatSqliteCannotRead();
    void refusesWhatChangesWithoutALock_data();
    void refusesWhatChangesWithoutALock();
    void refusesAFolder();
    void leavesNoHalfCopyOnAFullDisk_data();
    void leavesNoHalfCopyOnAFullDisk();
    void stopsWhenAskedTo();
    void overwritesNothing();

private:
    Snapshot take(const BytesRead &progress = countNothing) const
    {
        return takeSnapshot(original(), copy(), progress);
    }
    void makeDatabase(const QByteArray &mode) const
    {
        executeOn(original(), QStringList{"pragma journal_mode=" + mode} + numberedRows);
    }
    QString original() const { return originals->filePath("data.db"); }
    QString copy() const { return copies->filePath("data.db"); }

    std::unique_ptr<QTemporaryDir> originals;
    std::unique_ptr<QTemporaryDir> copies;
};

void TestSnapshot::init()
{
    originals = std::make_unique<QTemporaryDir>();
    copies = std::make_unique<QTemporaryDir>();
}

void TestSnapshot::copiesADatabase_data()
{
    QTest::addColumn<QByteArray>("mode");

    for (const QByteArray &mode : modes)
        QTest::newRow(mode) << mode;
}

void TestSnapshot::copiesADatabase()
{
    QFETCH(QByteArray, mode);
    makeDatabase(mode);
    const QStringList before = QDir(originals->path()).entryList(QDir::Files);
    const QStringList filesBefore = filesIn(originals->path());

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(snapshot.state, Snapshot::State::Copied);
    QCOMPARE(valuesIn(copy()), state(0));
    QCOMPARE(fileBytes(copy()), fileBytes(original()));
    QCOMPARE(filesIn(originals->path()), filesBefore);
    QCOMPARE(QDir(originals->path()).entryList(QDir::Files), before);
}

void TestSnapshot::tellsWhatItCopied()
{
    makeDatabase("wal");
    OtherProgram other(original());
    other.run(setToOne);

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.files.size(), 2);
    QCOMPARE(snapshot.files.at(0).path, QFileInfo(original()).absoluteFilePath());
    QCOMPARE(snapshot.files.at(0).bytes, QFileInfo(copy()).size());
    QCOMPARE(snapshot.files.at(1).path, QFileInfo(original()).absoluteFilePath() + "-wal");
    QCOMPARE(snapshot.files.at(1).bytes, QFileInfo(copy() + "-wal").size());
}

void TestSnapshot::copiesForTheUserAlone()
{
#ifdef Q_OS_WIN
    QSKIP("a file has the rights of its folder there: this is NOT tested");
#endif
    makeDatabase("delete");

    take();

    const QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QCOMPARE(QFile::permissions(copy()) & others, QFile::Permissions());
}

void TestSnapshot::copiesBesideAnotherProgram_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("statements");
    QTest::addColumn<int>("value");

    const QByteArray read = "begin; select count(*) from number;";
    const QByteArray change = "begin immediate;\n" + setToOne;
    for (const QByteArray &mode : modes) {
        QTest::addRow("idle, %s", mode.constData()) << mode << QByteArray("select 1;") << 0;
        QTest::addRow("has written, %s", mode.constData()) << mode << setToOne << 1;
        QTest::addRow("reads, %s", mode.constData()) << mode << read << 0;
        if (mode != "memory" && mode != "off") // these write into the file at once
            QTest::addRow("changes, %s", mode.constData()) << mode << change << 0;
    }
    QTest::newRow("changes after a commit, wal") << QByteArray("wal") << setToOne + change << 1;
    QTest::newRow("has written a little, wal")
        << QByteArray("wal")
        << setToOne + "pragma wal_checkpoint(restart);\nupdate number set value = 1 where id = 7;\n"
        << 1;
    QTest::newRow("has emptied its log, wal")
        << QByteArray("wal") << setToOne + "pragma wal_checkpoint(truncate);\n"
        << 1;
}

/// Shows: REP-3
void TestSnapshot::copiesBesideAnotherProgram()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, statements);
    QFETCH(int, value);
    makeDatabase(mode);
    OtherProgram other(original());
    other.run(mode == "wal" ? QByteArray() : "pragma journal_mode=" + mode + ';');
    other.run("pragma cache_size=10000;\n" + statements);
    const QStringList before = filesIn(originals->path());

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(valuesIn(copy()), state(value));
    QCOMPARE(filesIn(originals->path()), before);
}

/// Shows: REP-3
void TestSnapshot::letsOthersReadAndKeepsThemFromWriting()
{
    makeDatabase("delete");
    OtherProgram other(original());
    QByteArray read;
    QByteArray written;

    take([&](qint64) {
        read = other.run("select count(*) from number;");
        written = other.run(setToOne);
        return true;
    });

    QCOMPARE(read.trimmed(), QByteArray::number(rows));
    QVERIFY2(written.contains("database is locked"), written.constData());
}

void TestSnapshot::letsOthersWriteToAWriteAheadLog()
{
    makeDatabase("wal");
    OtherProgram other(original());
    other.run("update number set value = 2;");
    QByteArray written;

    take([&](qint64) {
        written = other.run(setToOne);
        return true;
    });

    QCOMPARE(written, QByteArray());
    const QStringList values = valuesIn(copy());
    QVERIFY2(values == state(1) || values == state(2), qUtf8Printable(values.join(' ')));
}

void TestSnapshot::givesTheLockUp()
{
    makeDatabase("delete");

    take();

    OtherProgram other(original());
    QCOMPARE(other.run(setToOne), QByteArray());
}

void TestSnapshot::copiesWhatWasCommitted_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("settings");

    QTest::newRow("delete") << QByteArray("delete") << QByteArray();
    QTest::newRow("delete, pages written early")
        << QByteArray("delete") << QByteArray("pragma cache_size=5;");
    QTest::newRow("truncate") << QByteArray("truncate") << QByteArray();
    QTest::newRow("persist") << QByteArray("persist") << QByteArray();
    QTest::newRow("wal") << QByteArray("wal") << QByteArray();
    QTest::newRow("wal, started afresh again and again")
        << QByteArray("wal") << QByteArray("pragma wal_autocheckpoint=1;");
    QTest::newRow("wal, pages written early")
        << QByteArray("wal") << QByteArray("pragma cache_size=5;");
}

/// Shows: REP-3
void TestSnapshot::copiesWhatWasCommitted()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, settings);
    constexpr int statesWanted = 12;
    makeDatabase(mode);
    OtherProgram writer(original());
    writer.run("pragma synchronous=off; pragma busy_timeout=60000;" + settings);
    if (mode != "wal")
        writer.run("pragma journal_mode=" + mode + ';');
    // The pause between two transactions lets others have the lock.
    const QByteArray pause =
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 20000)"
        " select 'never' where (select count(*) from n) = 0;\n";
    QByteArray transactions;
    for (int value = 1; value <= 20'000; ++value)
        transactions += "begin immediate; update number set value = " + QByteArray::number(value)
            + "; commit;\n" + pause;
    writeFile(copies->filePath("transactions"), transactions);
    writer.ask(".read '" + copies->filePath("transactions").toUtf8() + "'\n");

    QSet<QStringList> states;
    const QDeadlineTimer end(60'000);
    while (states.size() < statesWanted && !end.hasExpired()) {
        const Snapshot snapshot = take();
        if (!snapshot.problem.isEmpty())
            writer.kill();
        QCOMPARE(snapshot.problem, QString());
        const QStringList values = valuesIn(copy());
        QCOMPARE(values.size(), 1);
        states << values;
        for (const char *ending : {"", "-wal", "-shm"})
            QFile::remove(copy() + ending);
    }
    writer.kill();
    QCOMPARE(states.size(), statesWanted); // or nobody wrote
}

void TestSnapshot::copiesALogThatIsStartedAfresh()
{
    makeDatabase("wal");
    OtherProgram other(original());
    other.run("pragma wal_autocheckpoint=0;\nupdate number set value = 2;\n" + setToOne
              + "pragma wal_checkpoint;\n");
    QVERIFY(QFileInfo(original() + "-wal").size() > 2'000'000); // of several pieces
    const qint64 size = QFileInfo(original()).size();
    qint64 counted = 0;
    bool written = false;

    const Snapshot snapshot = take([&](qint64 bytes) {
        counted += bytes;
        if (counted > size && !written) { // within the log
            written = true;
            other.run("update number set value = 3;");
        }
        return true;
    });

    QCOMPARE(snapshot.problem, QString());
    QVERIFY(written);
    QCOMPARE(valuesIn(copy()), state(3));
}

void TestSnapshot::playsBackTheJournalOfACrash()
{
    makeDatabase("delete");
    const QStringList before = filesIn(originals->path());
    OtherProgram other(original());
    other.run("pragma cache_size=5;\nbegin immediate;\n" + setToOne);
    other.kill();
    QVERIFY(filesIn(originals->path()) != before);

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(valuesIn(copy()), state(0));
    QCOMPARE(snapshot.files.size(), 1);
    QCOMPARE(filesIn(originals->path()), before);
}

void TestSnapshot::leavesTheLogOfACrash()
{
    makeDatabase("wal");
    OtherProgram other(original());
    other.run(setToOne + "begin immediate;\nupdate number set value = 2;\n");
    other.kill();
    const QStringList before = filesIn(originals->path());
    QVERIFY(QFileInfo(original() + "-wal").size() > 0);

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(valuesIn(copy()), state(1));
    QCOMPARE(filesIn(originals->path()), before);
}

void TestSnapshot::copiesTheLogBehindALink()
{
#ifdef Q_OS_WIN
    QSKIP("Qt makes a shortcut here, which SQLite does not follow");
#endif
    makeDatabase("wal");
    OtherProgram other(original());
    other.run(setToOne);
    other.kill();
    const QStringList before = filesIn(originals->path());
    const QTemporaryDir links;
    const QString link = links.filePath("data.db");
    QVERIFY(QFile::link(original(), link));

    const Snapshot snapshot = takeSnapshot(link, copy(), countNothing);

    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(snapshot.files.size(), 2);
    QCOMPARE(valuesIn(copy()), state(1));
    QCOMPARE(filesIn(originals->path()), before);
}

void TestSnapshot::givesUpOnALockedDatabase_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("statements");

    QTest::newRow("delete") << QByteArray("delete") << QByteArray("begin exclusive;");
    QTest::newRow("wal") << QByteArray("wal")
                         << QByteArray("pragma locking_mode=exclusive; begin exclusive;");
}

/// Shows: REP-4
void TestSnapshot::givesUpOnALockedDatabase()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, statements);
    makeDatabase(mode);
    OtherProgram other(original());
    other.run(statements);
    QElapsedTimer timer;
    timer.start();

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.state, Snapshot::State::Unreadable);
    QCOMPARE(snapshot.problem, original() + " is locked by another program.");
    QVERIFY(timer.elapsed() >= 4500);
    QVERIFY(QDir(copies->path()).isEmpty());
}

void TestSnapshot::copiesWhatSqliteCannotRead_data()
{
    QTest::addColumn<QByteArray>("bytes");

    const TestDatabase database;
    database.execute(numberedRows);
    const QByteArray sound = database.bytes();
    QTest::newRow("a letter") << QByteArray("This is a letter. ").repeated(1000);
    QTest::newRow("one byte") << QByteArray("x"); // SQLite takes it for an empty database
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("cut short") << sound.first(sound.size() / 2);
    QTest::newRow("without its beginning") << QByteArray(100, '\0') + sound.mid(100);
}

void TestSnapshot::copiesWhatSqliteCannotRead()
{
    QFETCH(QByteArray, bytes);
    writeFile(original(), bytes);
    writeFile(original() + "-journal", "a journal");
    writeFile(original() + "-wal", "a log");
    const QStringList before = filesIn(originals->path());

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(filesIn(copies->path()), before);
    QCOMPARE(filesIn(originals->path()), before);
}

void TestSnapshot::refusesWhatChangesWithoutALock_data()
{
    QTest::addColumn<bool>("changes");

    QTest::newRow("another program begins a log") << true;
    QTest::newRow("nobody uses it") << false;
}

/// Where SQLite cannot make the index of a write-ahead log, nobody else can have it.
/// Shows: REP-3
void TestSnapshot::refusesWhatChangesWithoutALock()
{
#ifdef Q_OS_UNIX
    QFETCH(bool, changes);
    makeDatabase("wal");
    QVERIFY(QFile::link(originals->filePath("no folder/index"), original() + "-shm"));

    const Snapshot snapshot = take([&](qint64) {
        if (changes)
            writeFile(original() + "-wal", "a log");
        return true;
    });

    QCOMPARE(snapshot.state, changes ? Snapshot::State::Unreadable : Snapshot::State::Copied);
    QVERIFY2(!changes
                 || snapshot.problem.startsWith(
                     original() + " changed while it was copied, and cannot be locked: "),
             qUtf8Printable(snapshot.problem));
    QCOMPARE(QDir(copies->path()).isEmpty(), changes);
#else
    QSKIP("SQLite makes the index of a log on Windows: this is NOT tested");
#endif
}

void TestSnapshot::refusesAFolder()
{
    QVERIFY(QDir().mkpath(original()));

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.state, Snapshot::State::Unreadable);
    QVERIFY2(snapshot.problem.startsWith(original() + " cannot be read: "),
             qUtf8Printable(snapshot.problem));
    QVERIFY(QDir(copies->path()).isEmpty());
}

void TestSnapshot::leavesNoHalfCopyOnAFullDisk_data()
{
    QTest::addColumn<double>("part"); // of the database

    QTest::newRow("nothing fits") << 0.0;
    QTest::newRow("half of the database fits") << 0.5;
    QTest::newRow("the log does not fit") << 1.0;
}

void TestSnapshot::leavesNoHalfCopyOnAFullDisk()
{
#ifdef Q_OS_UNIX
    QFETCH(double, part);
    makeDatabase("wal");
    const auto size = static_cast<double>(QFileInfo(original()).size());
    OtherProgram other(original());
    other.run("pragma wal_autocheckpoint=0;\nupdate number set value = 2;\n" + setToOne);
    const QStringList before = filesIn(originals->path());

    Snapshot snapshot;
    {
        const FileSizeLimit limit(static_cast<qint64>(part * size));
        snapshot = take();
    }

    QCOMPARE(snapshot.state, Snapshot::State::NotWritten);
    QVERIFY2(snapshot.problem.startsWith(copy()), qUtf8Printable(snapshot.problem));
    QVERIFY(QDir(copies->path()).isEmpty());
    QCOMPARE(filesIn(originals->path()), before);
#else
    QSKIP("a limit on file sizes is not to be had: a full disk is NOT tested");
#endif
}

void TestSnapshot::stopsWhenAskedTo()
{
    makeDatabase("delete");

    const Snapshot snapshot = take([](qint64) { return false; });

    QCOMPARE(snapshot.state, Snapshot::State::Stopped);
    QVERIFY(QDir(copies->path()).isEmpty());
}

void TestSnapshot::overwritesNothing()
{
    makeDatabase("delete");
    writeFile(copy(), "precious");

    const Snapshot snapshot = take();

    QCOMPARE(snapshot.state, Snapshot::State::NotWritten);
    QCOMPARE(fileBytes(copy()), QByteArray("precious"));
}

QTEST_GUILESS_MAIN(TestSnapshot)

#include "tst_snapshot.moc"
