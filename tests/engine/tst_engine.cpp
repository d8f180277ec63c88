// SPDX-License-Identifier: MIT
/// The engine: opening, the stored version, finding and running steps, one transaction.

#include "messagerecorder.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

#include <chrono>
#include <thread>

using coagulation::UpdateBase;

namespace {

QStringList versionTable(int version)
{
    return {"create table version(version integer)",
            QString("insert into version values(%1)").arg(version)};
}

/// \return the value of a one-row query on the updater's own connection
QVariant onDefaultConnection(const QString &sql)
{
    QSqlQuery query;
    return query.exec(sql) && query.next() ? query.value(0) : QVariant();
}

} // namespace

/// Steps 9 and 10, declared the other way round.
class ToyUpdater : public UpdateBase {
    Q_OBJECT

public:
    using UpdateBase::UpdateBase;
    using UpdateBase::version;

    QList<int> ran;

public slots:
    bool update_v10() { return step(10); }
    bool update_v9() { return step(9); }

private:
    bool step(int number)
    {
        ran << number;
        return exec(SOURCE_LINE, QString("create table made_by_%1(id)").arg(number));
    }
};

/// Only update_v3() is a step: the others have arguments, a suffix, another case or no slot.
class OddUpdater : public UpdateBase {
    Q_OBJECT

public:
    using UpdateBase::UpdateBase;

    QStringList ran;

    bool update_v7() { return note("plain member"); }

public slots:
    bool update_v1(int) { return note("argument"); }
    bool update_v2a() { return note("suffix"); }
    bool Update_v4() { return note("case"); }
    bool update_v() { return note("no number"); }
    bool my_update_v5() { return note("prefix"); }
    bool update_v3() { return note("step"); }

signals:
    void changed();

private:
    bool note(const char *what)
    {
        ran << what;
        return true;
    }
};

/// Two methods with the number 1; the class adds step 2 to what it inherits.
class DoubleUpdater : public UpdateBase {
    Q_OBJECT

public:
    using UpdateBase::UpdateBase;

    QStringList ran;

public slots:
    bool update_v01()
    {
        ran << "update_v01";
        return true;
    }
    bool update_v1()
    {
        ran << "update_v1";
        return true;
    }
};

class DerivedUpdater : public DoubleUpdater {
    Q_OBJECT

public:
    using DoubleUpdater::DoubleUpdater;

public slots:
    bool update_v2()
    {
        ran << "update_v2";
        return true;
    }
};

/// A slot with a default argument can also be called without it.
class DefaultArgumentUpdater : public UpdateBase {
    Q_OBJECT

public:
    using UpdateBase::UpdateBase;

    int given = 0;

public slots:
    bool update_v1(int value = 7)
    {
        given = value;
        return true;
    }
};

class IntUpdater : public UpdateBase {
    Q_OBJECT

public:
    using UpdateBase::UpdateBase;

public slots:
    int update_v1() { return 1; }
};

class TestEngine : public QObject {
    Q_OBJECT

private slots:
    void init();

    // opening
    void skipsAMissingFile();
    void logsTheAbsolutePath();
    void failsOnAFolder();
    void failsOnAFileThatIsNoDatabase();
    void triesAgainToOpenInRun();
    void releasesTheConnectionOfTheUpdaterBefore();
    void keepsItsConnectionAfterItsEnd();
    void preparesTheConnection();
    void preparesAConnectionThatRunOpens();
    void renamesATableBesideABrokenView();

    // the stored version
    void readsTheStoredVersion_data();
    void readsTheStoredVersion();
    void readsTheVersionAgainBeforeTheSteps();
    void rereadsTheVersionThatALockHid();

    // the steps
    void runsOnlyStepsAboveTheStoredVersion_data();
    void runsOnlyStepsAboveTheStoredVersion();
    void takesOnlySlotsWithoutArgumentsForSteps();
    void takesTheFirstMethodWithANumber();
    void takesNoStepFromTheBaseClass();
    void takesASlotWithADefaultArgumentForAStep();
    void failsAStepThatDoesNotReturnABool();
    void reportsAClassWithoutSteps();
    void padsTheSignatureTo12Characters();
    void stopsAtTheFirstFailingStep();
    void callsUpgradeThroughTheVirtualTable();

    // the new version
    void replacesEveryVersionRow();
    void failsWithoutAVersionTable();
    void aStepMayCreateTheVersionTable();

    // the transaction
    void rollsBackWhatEarlierStepsDid();
    void locksTheFileBeforeTheFirstStep();
    void waitsForALockToGo();
    void failsToStartWhileAnotherWrites();
    void failsToCommitWhileAnotherReads();
    void writesNothingOnceTheTransactionHasEnded();
};

void TestEngine::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestEngine::skipsAMissingFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("missing.db");
    const MessageRecorder recorder;

    ToyUpdater updater(path);
    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, QList<int>());
    QCOMPARE(recorder.messages(),
             QStringList{QString("Warning: File doesn't exist: %1, skipped").arg(path)});
    QVERIFY(!QFile::exists(path));
}

void TestEngine::logsTheAbsolutePath()
{
    const TestDatabase database("检验 100%s.db");
    database.execute(versionTable(10));
    const QString workingDirectory = QDir::currentPath();
    QVERIFY(QDir::setCurrent(database.folderPath()));
    const MessageRecorder recorder;

    const ToyUpdater updater("检验 100%s.db");
    const ToyUpdater missing("不.db");
    const QStringList messages = recorder.messages();
    QVERIFY(QDir::setCurrent(workingDirectory));

    QCOMPARE(messages,
             QStringList({"Debug: Updating " + database.path(),
                          QString("Warning: File doesn't exist: %1/不.db, skipped")
                              .arg(database.folderPath())}));
}

void TestEngine::failsOnAFolder()
{
    const QTemporaryDir folder;
    const MessageRecorder recorder;

    ToyUpdater updater(folder.path());
    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(updater.ran, QList<int>());
    QCOMPARE(
        recorder.messages(),
        QStringList(
            {"Debug: Updating " + folder.path(),
             QString("Warning: Can't open %1: unable to open database file").arg(folder.path()),
             "Warning: Failed to start transaction:"
             " \"unable to open database file\""}));
}

void TestEngine::failsOnAFileThatIsNoDatabase()
{
    const TestDatabase database;
    QFile file(database.path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray letter = QByteArray("This is no database. ").repeated(200);
    file.write(letter);
    file.close();
    const MessageRecorder recorder;

    ToyUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(),
                          "Warning: Failed to start transaction:"
                          " \"file is not a database\""}));
    QCOMPARE(database.bytes(), letter);
}

void TestEngine::triesAgainToOpenInRun()
{
    const TestDatabase database;
    database.execute(versionTable(9));
    const QString hidden = database.path() + ".hidden";
    QVERIFY(QFile::rename(database.path(), hidden));
    QVERIFY(QDir().mkdir(database.path()));
    const MessageRecorder recorder;
    ToyUpdater updater(database.path());
    QVERIFY(QDir().rmdir(database.path()));
    QVERIFY(QFile::rename(hidden, database.path()));

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, QList<int>{10});
    QCOMPARE(database.table("version"), QStringList{"10"});
}

void TestEngine::releasesTheConnectionOfTheUpdaterBefore()
{
    const TestDatabase first("first.db");
    const TestDatabase second("second.db");
    const MessageRecorder recorder;

    const ToyUpdater before(first.path());
    const ToyUpdater after(second.path());

    QCOMPARE(QSqlDatabase::connectionNames(), QStringList{QSqlDatabase::defaultConnection});
    QCOMPARE(QSqlDatabase::database().databaseName(), second.path());
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + first.path(), "Debug: Updating " + second.path()}));
}

void TestEngine::keepsItsConnectionAfterItsEnd()
{
    const TestDatabase database;
    database.execute(versionTable(10));

    QVERIFY(ToyUpdater(database.path()).run());

    QVERIFY(QSqlDatabase::database(QSqlDatabase::defaultConnection, false).isOpen());
    QCOMPARE(QSqlDatabase::database().databaseName(), database.path());
}

void TestEngine::preparesTheConnection()
{
    const TestDatabase database;

    const ToyUpdater updater(database.path());

    QCOMPARE(onDefaultConnection("pragma legacy_alter_table"), QVariant(1));
}

void TestEngine::preparesAConnectionThatRunOpens()
{
    const TestDatabase database;
    QVariant setting;
    StepUpdater updater(database.path(), [&](StepUpdater &) {
        setting = onDefaultConnection("pragma legacy_alter_table");
        return false;
    });
    QSqlDatabase::database().close();

    (void)updater.run();

    QCOMPARE(setting, QVariant(1));
}

/// Shows: OPS-4
void TestEngine::renamesATableBesideABrokenView()
{
    const TestDatabase database;
    database.execute(versionTable(0)
                     + QStringList{"create table curve(id)",
                                   "create view old as select * from missing",
                                   "create trigger lost after delete on curve"
                                   " begin delete from missing; end"});
    StepUpdater updater(database.path(),
                        [](StepUpdater &step) { return step.renameTable("curve", "curves"); });

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(database.table("curves"), QStringList());
}

void TestEngine::readsTheStoredVersion_data()
{
    QTest::addColumn<QStringList>("old");
    QTest::addColumn<int>("version");

    const QString create = "create table version(version integer)";
    QTest::newRow("no table") << QStringList{} << 0;
    QTest::newRow("no row") << QStringList{create} << 0;
    QTest::newRow("one row") << QStringList{create, "insert into version values(7)"} << 7;
    QTest::newRow("the highest of three")
        << QStringList{create, "insert into version values(7), (12), (9)"} << 12;
    QTest::newRow("null") << QStringList{create, "insert into version values(null)"} << 0;
    QTest::newRow("negative") << QStringList{create, "insert into version values(-3)"} << -3;
    QTest::newRow("number as text")
        << QStringList{"create table version(version text)", "insert into version values('8')"}
        << 8;
    QTest::newRow("no number") << QStringList{create, "insert into version values('eight')"} << 0;
    QTest::newRow("other column") << QStringList{"create table version(number integer)",
                                                 "insert into version values(8)"}
                                  << 0;
    QTest::newRow("a view") << QStringList{"create view version as select 6 as version"} << 6;
}

/// Shows: ENG-1
void TestEngine::readsTheStoredVersion()
{
    QFETCH(QStringList, old);
    QFETCH(int, version);
    const TestDatabase database;
    database.execute(old);

    const ToyUpdater updater(database.path());

    QCOMPARE(updater.version, version);
}

/// Shows: ENG-5
void TestEngine::readsTheVersionAgainBeforeTheSteps()
{
    const TestDatabase database;
    database.execute(versionTable(0));
    ToyUpdater updater(database.path());
    database.execute({"update version set version = 9"}); // another run was faster

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, QList<int>{10});
}

void TestEngine::rereadsTheVersionThatALockHid()
{
    const TestDatabase database;
    database.execute(versionTable(9));
    std::unique_ptr<ToyUpdater> updater;
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(database.path());
        QVERIFY(other.open());
        QSqlQuery lock(other);
        QVERIFY(lock.exec("begin exclusive"));

        updater = std::make_unique<ToyUpdater>(database.path());

        QVERIFY(lock.exec("rollback"));
    }
    QSqlDatabase::removeDatabase("other");
    QCOMPARE(updater->version, 0);

    const bool upgraded = updater->run();

    QVERIFY(upgraded);
    QCOMPARE(updater->ran, QList<int>{10});
}

void TestEngine::runsOnlyStepsAboveTheStoredVersion_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QList<int>>("steps");
    QTest::addColumn<QStringList>("log");

    const QString pass9 = "Debug: update_v9() : PASS";
    const QString skip9 = "Debug: update_v9() : SKIP";
    const QString pass10 = "Debug: update_v10(): PASS";
    const QString skip10 = "Debug: update_v10(): SKIP";
    QTest::newRow("new file") << 0 << QList<int>{9, 10} << QStringList{pass9, pass10};
    QTest::newRow("negative") << -1 << QList<int>{9, 10} << QStringList{pass9, pass10};
    QTest::newRow("just before") << 8 << QList<int>{9, 10} << QStringList{pass9, pass10};
    QTest::newRow("between the two") << 9 << QList<int>{10} << QStringList{skip9, pass10};
    QTest::newRow("up to date") << 10 << QList<int>{} << QStringList{skip9, skip10};
    QTest::newRow("newer than known") << 11 << QList<int>{} << QStringList{skip9, skip10};
}

/// Shows: ENG-1
void TestEngine::runsOnlyStepsAboveTheStoredVersion()
{
    QFETCH(int, stored);
    QFETCH(QList<int>, steps);
    QFETCH(QStringList, log);
    const TestDatabase database;
    database.execute(versionTable(stored));
    const MessageRecorder recorder;

    ToyUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, steps);
    QCOMPARE(recorder.messages(),
             QStringList{"Debug: Updating " + database.path()} + log
                 + QStringList{"Debug: Updated version to 10"});
    QCOMPARE(database.table("version"), QStringList{"10"}); // also when it was above
}

/// Shows: ENG-1
void TestEngine::takesOnlySlotsWithoutArgumentsForSteps()
{
    const TestDatabase database;
    database.execute(versionTable(0));

    OddUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, QStringList{"step"});
    QCOMPARE(database.table("version"), QStringList{"3"});
}

void TestEngine::takesTheFirstMethodWithANumber()
{
    const TestDatabase database;
    database.execute(versionTable(0));
    const MessageRecorder recorder;

    DoubleUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, QStringList{"update_v01"});
    QCOMPARE(recorder.messages().at(1), QString("Debug: update_v01(): PASS"));
}

void TestEngine::takesNoStepFromTheBaseClass()
{
    const TestDatabase database;
    database.execute(versionTable(0));

    DerivedUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.ran, QStringList{"update_v2"});
}

void TestEngine::takesASlotWithADefaultArgumentForAStep()
{
    const TestDatabase database;
    database.execute(versionTable(0));

    DefaultArgumentUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(updater.given, 7);
}

void TestEngine::failsAStepThatDoesNotReturnABool()
{
    const TestDatabase database;
    database.execute(versionTable(0));
    const MessageRecorder recorder;

    const bool upgraded = IntUpdater(database.path()).run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().constLast(), QString("Debug: update_v1() : FAIL"));
    QCOMPARE(database.table("version"), QStringList{"0"});
}

void TestEngine::reportsAClassWithoutSteps()
{
    class StepLess : public UpdateBase {
    public:
        using UpdateBase::UpdateBase;
    };
    const TestDatabase database;
    database.execute(versionTable(3));
    const MessageRecorder recorder;

    const bool upgraded = StepLess(database.path()).run();

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(),
                          "Debug: coagulation/vardo/updatebase.cpp ( line ):  "
                          "coagulation::UpdateBase does not contain methods like"
                          " 'bool update_v<N>()'"}));
    QCOMPARE(database.table("version"), QStringList{"3"});
}

void TestEngine::padsTheSignatureTo12Characters()
{
    const TestDatabase database;
    database.execute(versionTable(9));
    const MessageRecorder recorder;

    const bool upgraded = ToyUpdater(database.path()).run();

    QVERIFY(upgraded);
    QCOMPARE(recorder.numberedMessages().mid(1, 2),
             QStringList({"Debug: update_v9() : SKIP", "Debug: update_v10(): PASS"}));
}

/// Shows: LOG-3, ENG-2
void TestEngine::stopsAtTheFirstFailingStep()
{
    const TestDatabase database;
    database.execute(versionTable(3) + QStringList{"create table made_by_9(other)"});
    const MessageRecorder recorder;

    ToyUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(updater.ran, QList<int>{9});
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(),
                          "Warning: tests/engine/tst_engine.cpp ( line ):  "
                          "\"table made_by_9 already exists\" : "
                          "[ \"create table made_by_9(id)\" ]",
                          "Debug: update_v9() : FAIL"}));
    QCOMPARE(database.table("version"), QStringList{"3"});
}

void TestEngine::callsUpgradeThroughTheVirtualTable()
{
    class Overriding : public UpdateBase {
    public:
        using UpdateBase::UpdateBase;
        bool upgrade() override { return exec(SOURCE_LINE, "create table mine(id)"); }
    };
    const TestDatabase database;

    const bool upgraded = Overriding(database.path()).run();

    QVERIFY(upgraded);
    QCOMPARE(database.schema(), QStringList{"CREATE TABLE mine(id)"});
}

/// Shows: ENG-3
void TestEngine::replacesEveryVersionRow()
{
    const TestDatabase database;
    database.execute(versionTable(3) + QStringList{"insert into version values(5), (null), ('x')"});

    const bool upgraded = ToyUpdater(database.path()).run();

    QVERIFY(upgraded);
    QCOMPARE(database.table("version"), QStringList{"10"});
}

/// Shows: ENG-3
void TestEngine::failsWithoutAVersionTable()
{
    const TestDatabase database;
    const MessageRecorder recorder;

    const bool upgraded = ToyUpdater(database.path()).run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().mid(3),
             QStringList({"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: version\" : "
                          "[ \"delete from version\" ]",
                          "Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: version\" : "
                          "[ \"insert into version values(10)\" ]",
                          "Debug: Failed to update version to 10"}));
    QCOMPARE(database.schema(), QStringList());
}

void TestEngine::aStepMayCreateTheVersionTable()
{
    const TestDatabase database;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "create table version(version integer)");
    });

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(database.table("version"), QStringList{"1"});
}

/// Shows: ENG-2
void TestEngine::rollsBackWhatEarlierStepsDid()
{
    const TestDatabase database;
    database.execute(versionTable(0) + QStringList{"create table made_by_10(other)"});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    ToyUpdater updater(database.path());
    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(updater.ran, QList<int>({9, 10}));
    QCOMPARE(database.content(), before);
}

/// Shows: ENG-5
void TestEngine::locksTheFileBeforeTheFirstStep()
{
    const TestDatabase database;
    database.execute(versionTable(0));
    bool locked = false;
    StepUpdater updater(database.path(), [&](StepUpdater &) {
        {
            QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
            other.setDatabaseName(database.path());
            other.setConnectOptions("QSQLITE_BUSY_TIMEOUT=0");
            locked = other.open() && !QSqlQuery(other).exec("begin immediate");
        }
        QSqlDatabase::removeDatabase("other");
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QVERIFY(locked);
}

void TestEngine::waitsForALockToGo()
{
    const TestDatabase database;
    database.execute(versionTable(9));
    QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
    other.setDatabaseName(database.path());
    QVERIFY(other.open());
    QVERIFY(QSqlQuery(other).exec("begin immediate"));
    ToyUpdater updater(database.path());
    other = QSqlDatabase();
    std::thread release([path = database.path()] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        QSqlDatabase::removeDatabase("other"); // closes it, which ends its transaction
    });

    const bool upgraded = updater.run();
    release.join();

    QVERIFY(upgraded);
    QCOMPARE(database.table("version"), QStringList{"10"});
}

void TestEngine::failsToStartWhileAnotherWrites()
{
    const TestDatabase database;
    database.execute(versionTable(9));
    const QStringList before = database.content();
    const MessageRecorder recorder;
    ToyUpdater updater(database.path());
    bool upgraded = true;
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(database.path());
        QVERIFY(other.open());
        QVERIFY(QSqlQuery(other).exec("begin immediate"));

        upgraded = updater.run();
    }
    QSqlDatabase::removeDatabase("other");

    QVERIFY(!upgraded);
    QCOMPARE(updater.ran, QList<int>());
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(),
                          "Warning: Failed to start transaction:"
                          " \"database is locked\""}));
    QCOMPARE(database.content(), before);
}

void TestEngine::failsToCommitWhileAnotherReads()
{
    const TestDatabase database;
    database.execute(versionTable(9));
    const QStringList before = database.content();
    const MessageRecorder recorder;
    ToyUpdater updater(database.path());
    bool upgraded = true;
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(database.path());
        QVERIFY(other.open());
        QSqlQuery reading(other);
        QVERIFY(reading.exec("begin") && reading.exec("select * from version"));

        upgraded = updater.run();

        // the transaction is gone, although the reader is still there
        QVERIFY(QSqlQuery().exec("begin immediate") && QSqlQuery().exec("rollback"));
    }
    QSqlDatabase::removeDatabase("other");

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().mid(3),
             QStringList({"Debug: Updated version to 10",
                          "Warning: Failed to commit:"
                          " \"database is locked\""}));
    QCOMPARE(database.content(), before);
}

void TestEngine::writesNothingOnceTheTransactionHasEnded()
{
    const TestDatabase database;
    database.execute(versionTable(0));
    const QByteArray before = database.bytes();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(),
                        [](StepUpdater &step) { return step.exec(SOURCE_LINE, "rollback"); });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.bytes(), before);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({"Warning: The transaction has ended, and SQLite reported no failure: "
                              + database.path(),
                          "Debug: update_v1() : FAIL"}));
}

QTEST_GUILESS_MAIN(TestEngine)
#include "tst_engine.moc"
