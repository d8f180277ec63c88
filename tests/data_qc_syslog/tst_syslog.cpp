// SPDX-License-Identifier: MIT
/// The system log database from every stored version to the current one.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "testdatabase.h"
#include "upgrade.h"

#include "coagulation/vardo/updatesyslog.h"

#include <QTest>

using coagulation::UpdateSyslog;

namespace {

const QString newestVersion = QString::number(newestVersionOf("syslog"));

const QStringList oldAssays{
    "create table assay(id integer primary key, date date, time time, item text)",
    "insert into assay values"
    "(1, '2019-03-04', '08:15:30.123', 'PT'),"
    "(2, '2019-03-04', '08:15:31', 'APTT'),"
    "(3, '2019-03-04', '', 'TT'),"
    "(4, '2019-03-04', null, 'FIB'),"
    "(5, '2019-03-04', '.5', 'AT''III'),"
    "(6, '2019-03-04', '08:15:32.', '凝血酶.原'),"
    "(7, '2019-03-04', '1.2.3', null),"
    "(8, '2019-03-04', 12.75, 'DD'),"
    "(9, '2019-03-04', 12, 'DD'),"
    "(10, '2019-03-04', x'312e35', 'DD')",
};

const QStringList wholeSecondAssays{
    "1, '2019-03-04', '08:15:30', 'PT'",
    "2, '2019-03-04', '08:15:31', 'APTT'",
    "3, '2019-03-04', '', 'TT'",
    "4, '2019-03-04', NULL, 'FIB'",
    "5, '2019-03-04', 0, 'AT''III'", // a time column has numeric affinity: it held 0.5
    "6, '2019-03-04', '08:15:32', '凝血酶.原'",
    "7, '2019-03-04', 1, NULL",
    "8, '2019-03-04', 12, 'DD'",
    "9, '2019-03-04', 12, 'DD'",
    "10, '2019-03-04', X'31', 'DD'",
};

const QString assaySchema =
    "CREATE TABLE assay(id integer primary key, date date, time time, item text)";
const QString versionSchema = "CREATE TABLE version(version integer)";
const QString maintenanceRecordsSchema =
    "CREATE TABLE maintenanceRecords (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " instrUuid TEXT NOT NULL, maintenanceDate DATE NOT NULL, recordType TEXT NOT NULL,"
    " maintenanceItem TEXT NOT NULL, recorder TEXT NOT NULL)";
const QString sequenceSchema = "CREATE TABLE sqlite_sequence(name,seq)";

QStringList versionTable(int version)
{
    return {"create table version(version integer)",
            QString("insert into version values(%1)").arg(version)};
}

} // namespace

class TestSyslog : public QObject {
    Q_OBJECT

private slots:
    void init();

    void takesTheFileNameFromPrefixAndSuffix();
    void reachesTheNewestVersionFromEveryVersion_data();
    void reachesTheNewestVersionFromEveryVersion();
    void cutsTimesAtTheirFirstPoint();
    void keepsTimesBelowVersion3Only();
    void changesNothingElse();
    void acceptsAVersionTableWithoutAVersion();
    void upgradesThoughTheColumnOfTheVersionHasAnotherName();
    void failsWithoutAssays();
    void failsWhenMaintenanceRecordsExist_data();
    void failsWhenMaintenanceRecordsExist();
    void failsWhenATimeCannotBeCut();
    void neverReusesTheIdOfAMaintenanceRecord();
    void changesNothingInASecondRun();
};

void TestSyslog::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestSyslog::takesTheFileNameFromPrefixAndSuffix()
{
    const TestDatabase database("a_syslog_b.db");
    database.execute(oldAssays);
    coagulation::fileNameAffixes() = {database.folderPath() + "/a_", "_b"};

    const bool upgraded = UpdateSyslog().run();

    QVERIFY(upgraded);
    QCOMPARE(database.table("version"), QStringList{newestVersion});
}

void TestSyslog::reachesTheNewestVersionFromEveryVersion_data()
{
    addVersionRows("syslog");
}

/// Shows: SYS-1
void TestSyslog::reachesTheNewestVersionFromEveryVersion()
{
    QFETCH(int, stored);

    verifyUpgrade("syslog", stored, {{"version", {newestVersion}}});
}

/// Shows: SYS-1
void TestSyslog::cutsTimesAtTheirFirstPoint()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays);

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.table("assay"), wholeSecondAssays);
}

void TestSyslog::keepsTimesBelowVersion3Only()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays + versionTable(3));
    const QStringList before = database.table("assay");

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.table("assay"), before);
}

/// Shows: SYS-1
void TestSyslog::changesNothingElse()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays
                     + QStringList{"create table event(time time, text text)",
                                   "insert into event values('09:00:00.5', 'O''Neill: 开机')",
                                   "create index event_index on event(time)",
                                   "create view today as select * from event"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(
        database.schema(),
        QStringList({"CREATE INDEX event_index on event(time)", assaySchema,
                     "CREATE TABLE event(time time, text text)", maintenanceRecordsSchema,
                     sequenceSchema, versionSchema, "CREATE VIEW today as select * from event"}));
    QCOMPARE(database.table("event"), QStringList{"'09:00:00.5', 'O''Neill: 开机'"});
    QCOMPARE(database.table("maintenanceRecords"), QStringList());
}

void TestSyslog::acceptsAVersionTableWithoutAVersion()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays + QStringList{"create table version(version integer)"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages().mid(1, 2),
             QStringList({"Warning: coagulation/vardo/updatesyslog.cpp ( line ):  "
                          "\"table version already exists\" : "
                          "[ \"create table version(version integer)\" ]",
                          "Debug: update_v1() : PASS"}));
    QCOMPARE(database.table("version"), QStringList{newestVersion});
}

void TestSyslog::upgradesThoughTheColumnOfTheVersionHasAnotherName()
{
    const TestDatabase database("syslog.db");
    database.execute(
        oldAssays
        + QStringList{"create table version(v integer)", "insert into version values(1)"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1); // the table is there already
    QCOMPARE(database.table("version"), QStringList{newestVersion});
    QCOMPARE(database.table("assay"), wholeSecondAssays);
}

void TestSyslog::failsWithoutAssays()
{
    const TestDatabase database("syslog.db");
    database.execute({"create table event(time time)"});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(), "Debug: update_v1() : PASS",
                          "Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: assay\" : "
                          "[ \"update assay set time = iif(instr(time, '.'),"
                          " substr(time, 1, instr(time, '.')-1), time)\" ]",
                          "Debug: update_v3() : FAIL"}));
}

void TestSyslog::failsWhenMaintenanceRecordsExist_data()
{
    QTest::addColumn<QStringList>("old");

    QTest::newRow("no version table") << QStringList{};
    QTest::newRow("1") << versionTable(1);
    QTest::newRow("3") << versionTable(3);
}

/// Shows: ENG-11
void TestSyslog::failsWhenMaintenanceRecordsExist()
{
    QFETCH(QStringList, old);
    const TestDatabase database("syslog.db");
    database.execute(oldAssays + old + QStringList{"create table maintenanceRecords(id)"});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().constLast(), QString("Debug: update_v4() : FAIL"));
    QVERIFY(recorder.messages()
                .at(recorder.messages().size() - 2)
                .startsWith("Warning: coagulation/vardo/updatesyslog.cpp ( line ):  "
                            "\"table maintenanceRecords already exists\" : [ "
                            "\"CREATE TABLE maintenanceRecords (\\n"));
}

void TestSyslog::failsWhenATimeCannotBeCut()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays
                     + QStringList{"create trigger keep before update on assay"
                                   " begin select raise(abort, 'locked row'); end"});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().constLast(), QString("Debug: update_v3() : FAIL"));
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1);
}

/// Shows: SYS-2
void TestSyslog::neverReusesTheIdOfAMaintenanceRecord()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays);
    QVERIFY(upgrade(database));

    const QString insert = "insert into maintenanceRecords(instrUuid, maintenanceDate, recordType,"
                           " maintenanceItem, recorder)"
                           " values('u', '2024-01-02', 'daily', '清洗', 'Li')";
    database.execute({insert, insert, "delete from maintenanceRecords where id = 2", insert});

    QCOMPARE(database.rows("select id, instrUuid, maintenanceDate, recordType, maintenanceItem,"
                           " recorder from maintenanceRecords"),
             QStringList({"1, 'u', '2024-01-02', 'daily', '清洗', 'Li'",
                          "3, 'u', '2024-01-02', 'daily', '清洗', 'Li'"}));
}

void TestSyslog::changesNothingInASecondRun()
{
    const TestDatabase database("syslog.db");
    database.execute(oldAssays);
    QVERIFY(upgrade(database));
    const QStringList before = database.content();

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
}

QTEST_GUILESS_MAIN(TestSyslog)
#include "tst_syslog.moc"
