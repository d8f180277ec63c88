// SPDX-License-Identifier: MIT
/// The quality-control database from every stored version to the current one.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "testfiles.h"
#include "upgrade.h"

#include <QTest>

namespace {

const QString newestVersion = QString::number(newestVersionOf("qc"));

const ExpectedTables newTables{
    {"reagent",
     {
         "1, 21, 1, '质控血浆 正常', 'N1603', '2017-03-31', NULL",
         "2, 22, 2, 'Control \"pathological\"', 'P1603', '2017-03-31', NULL",
         "4, 21, 3, '质控血浆 正常', '', NULL, NULL",
     }},
    {"info",
     {
         "1, 1, 1, 1, 'wb1', 'PT', 'T', 's', 1, 15.5, 14.5, 12.5, 10.5, 9.5, 0, NULL, NULL",
         "2, 1, 2, 4, 'wb1', 'APTT', 'T', 's', 0, 40.0, 38.0, 32.0, 26.0, 24.0, 0, NULL, NULL",
         "3, 2, 1, 1, 'wb1', 'PT', 'T', 's', NULL, NULL, NULL, 45.1, NULL, NULL, 0, NULL, NULL",
         "7, 4, 3, 6, 'wb1', 'FIB', 'P', 'g/l', 1, 4.01, 3.8, 3.2, 2.6, 2.41, 0, NULL, NULL",
     }},
    // row 1 has given way to row 5, of the same file number and item
    {"subsetting",
     {
         "2, 1, 4, 'wb1', 1, 0, 0, NULL, NULL, NULL, NULL, NULL, 0, NULL, NULL, 0, 0, 0, 0, 0, 0",
         "3, 2, 1, 'wb1', 1, 0, 1, 50.0, 48.0, 45.1, 42.0, 40.0, 0, NULL, NULL, 1, 2, 2, 0, 0, 0",
         "5, 1, 1, 'wb1', 1, 0, 1, 15.9, 14.9, 12.9, 10.9, 9.9, 0, NULL, NULL, 2, 2, 1, 0, 0, 0",
     }},
    {"qc",
     {
         "1, 1, '2016-05-09', '07:45:10', 12.6, 0, NULL",
         "2, 1, '2016-05-10', '07:44:59', 14.9, 1, '超过 2.0 s; 已复查'",
         "3, 2, '2016-05-10', '07:46:01', 31.7, 0, ''",
         "4, 7, '2016-05-10', '', 3.25, 0, 'operator''s check'",
         "5, 7, NULL, NULL, NULL, NULL, NULL",
     }},
    {"version", {newestVersion}},
};

} // namespace

class TestQc : public QObject {
    Q_OBJECT

private slots:
    void init();

    void reachesTheNewestVersionFromEveryVersion_data();
    void reachesTheNewestVersionFromEveryVersion();
    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void refusesATableThatCannotBeRead();
    void ignoresAndWarnsOnce_data();
    void ignoresAndWarnsOnce();
    void takesTheNameOfAnIndexOnAnotherTable_data();
    void takesTheNameOfAnIndexOnAnotherTable();
    void fillsOnlyColumnsThatTheOldLayoutLacks();
    void keepsTheStorageClassThatTheColumnDemands();
    void keepsTheStorageClassesOfTargetsAndRules();
    void replacesASettingOfTheSameItemAndInstrument();
    void changesNothingInASecondRun();
};

void TestQc::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestQc::reachesTheNewestVersionFromEveryVersion_data()
{
    addVersionRows("qc");
}

/// Shows: QC-1, QC-2
void TestQc::reachesTheNewestVersionFromEveryVersion()
{
    QFETCH(int, stored);

    verifyUpgrade("qc", stored, newTables);
}

void TestQc::failsAndKeepsTheFile_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order
    QTest::addColumn<int>("step");

    // Not here, since no content makes them fail: the renames of the rebuilt tables, and
    // "drop index if exists info_index" (no error even where a table or a view has the name).

    QTest::newRow("1: version exists without a version")
        << 0 << QStringList{"create table version(version integer)"}
        << QStringList{"create table version(version integer)"} << 1;
    QTest::newRow("1: reagent_new exists") << 0 << QStringList{"create table reagent_new(id)"}
                                           << QStringList{"create table reagent_new("} << 1;
    QTest::newRow("1: no reagent")
        << 0 << QStringList{"drop table reagent"}
        << QStringList{"select * from reagent", "drop table reagent"} << 1;
    QTest::newRow("1: reagent has a column more")
        << 0 << QStringList{"alter table reagent add extra"}
        << QStringList{"insert into reagent_new ("} << 1;
    QTest::newRow("2: results cannot be changed")
        << 1
        << QStringList{"create trigger keep before update on qc"
                       " begin select raise(abort, 'kept'); end"}
        << QStringList{"update qc set time = iif("} << 2;
    QTest::newRow("2: no qc") << 0 << QStringList{"drop table qc"}
                              << QStringList{"update qc set time"} << 2;
    QTest::newRow("3: info_new exists") << 2 << QStringList{"create table info_new(id)"}
                                        << QStringList{"create table info_new("} << 3;
    QTest::newRow("3: no info") << 2 << QStringList{"drop table info"}
                                << QStringList{"select * from info", "drop table info"} << 3;
    QTest::newRow("3: info has a column more") << 2 << QStringList{"alter table info add extra"}
                                               << QStringList{"insert into info_new ("} << 3;
    QTest::newRow("3: info_index is a table")
        << 2 << QStringList{"drop index info_index", "create table info_index(id)"}
        << QStringList{"create index info_index on"} << 3;
    QTest::newRow("3: subsetting_new exists") << 2 << QStringList{"create table subsetting_new(id)"}
                                              << QStringList{"create table subsetting_new("} << 3;
    QTest::newRow("3: no subsetting, from the start")
        << 0 << QStringList{"drop table subsetting"}
        << QStringList{"select * from subsetting", "drop table subsetting"} << 3;
    QTest::newRow("3: subsetting has a column more")
        << 2 << QStringList{"alter table subsetting add extra"}
        << QStringList{"insert into subsetting_new ("} << 3;
}

/// Shows: ENG-11
void TestQc::failsAndKeepsTheFile()
{
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);
    QFETCH(int, step);

    verifyUpgradeFails("qc", stored, obstacles, failing, step);
}

/// Its rows would be lost with it.
void TestQc::refusesATableThatCannotBeRead()
{
    const TestDatabase database("qc.db");
    makeDatabaseAt(database, "qc", 0);
    database.execute({"alter table reagent add bad as (abs(-9223372036854775807 - 1))"});
    const QByteArray before = fileBytes(database.path());
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(fileBytes(database.path()), before);
    QCOMPARE(recorder.messages().filter("Debug: update_v"), stepLog("qc", 0, 1));
    const QStringList warnings = recorder.messages().filter("Warning: ");
    QCOMPARE(warnings.size(), 1);
    QVERIFY2(warnings.constFirst().endsWith("[ \"select * from reagent\" ]"),
             qUtf8Printable(warnings.constFirst()));
}

void TestQc::ignoresAndWarnsOnce_data()
{
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("failing"); // how the failing statement begins

    // Not here, since no content makes it fail: "drop index if exists reagent_index" (no error even
    // where a table or a view has the name).
    QTest::newRow("1: reagent_index is a table")
        << QStringList{"drop index reagent_index", "create table reagent_index(id)"}
        << "create index reagent_index on";
}

void TestQc::ignoresAndWarnsOnce()
{
    QFETCH(QStringList, obstacles);
    QFETCH(QString, failing);

    verifyUpgradeIgnores("qc", 0, obstacles, {failing});
}

void TestQc::takesTheNameOfAnIndexOnAnotherTable_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QString>("index");

    QTest::newRow("reagent_index") << 0 << "reagent_index";
    QTest::newRow("info_index") << 2 << "info_index";
}

void TestQc::takesTheNameOfAnIndexOnAnotherTable()
{
    QFETCH(int, stored);
    QFETCH(QString, index);
    const TestDatabase database("qc.db");
    makeDatabaseAt(database, "qc", stored);
    database.execute({"drop index " + index, QString("create index %1 on qc(time)").arg(index)});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded); // and no warning
    QCOMPARE(database.comparableSchema(), referenceSchema("qc"));
}

/// Shows: QC-2
void TestQc::fillsOnlyColumnsThatTheOldLayoutLacks()
{
    const TestDatabase database("qc.db");
    makeDatabaseAt(database, "qc", 2);
    database.execute({"alter table subsetting add instrId text",
                      "alter table subsetting add execCheck integer",
                      "alter table subsetting add rule10x integer", "delete from subsetting",
                      "insert into subsetting(id, fileNo, subitemId, instrId, execCheck, rule10x)"
                      " values(1, 1, 1, 'wb2', 0, 2), (2, 1, 1, null, null, null)"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select id, instrId, execCheck, checkMethod, rule4_1s, rule10x"
                           " from subsetting order by id"),
             QStringList({"1, 'wb2', 0, 0, 0, 2", "2, NULL, NULL, 0, 0, NULL"}));
}

void TestQc::keepsTheStorageClassThatTheColumnDemands()
{
    const TestDatabase database("qc.db");
    database.load("qc_v0.sql");
    database.execute({"drop table reagent",
                      "create table reagent(id integer primary key, reagentId, fileNo, name,"
                      " lotsNum, expireDate)",
                      "insert into reagent values(1, '21', 'three', 4, 5.5, x'00ff')"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.table("reagent"), QStringList{"1, 21, 'three', '4', '5.5', X'00FF', NULL"});
}

void TestQc::keepsTheStorageClassesOfTargetsAndRules()
{
    const TestDatabase database("qc.db");
    makeDatabaseAt(database, "qc", 2);
    database.execute(
        {"drop table info", "create table info(id integer primary key, item, unit, x, sul, ul)",
         "insert into info values(1, 5, x'00ff', '7', '8.5', 'none')", "drop table subsetting",
         "create table subsetting(id integer primary key, fileNo, x, sul, rule1_2s)",
         "insert into subsetting values(1, 'one', 2.0, 3, x'33')"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select item, unit, x, sul, ul from info"),
             QStringList{"'5', X'00FF', 7, 8.5, 'none'"});
    QCOMPARE(database.rows("select fileNo, x, sul, rule1_2s from subsetting"),
             QStringList{"'one', 2, 3.0, X'33'"});
}

/// Shows: QC-3
void TestQc::replacesASettingOfTheSameItemAndInstrument()
{
    const TestDatabase database("qc.db");
    database.load("qc_v0.sql");
    QVERIFY(upgrade(database));

    database.execute({"insert into subsetting(id, fileNo, subitemId) values(9, 1, 1)",
                      "insert into subsetting(id, fileNo, subitemId, instrId)"
                      " values(10, 1, 1, 'wb2')"});

    QCOMPARE(database.rows("select id, rule1_2s, rule1_3s from subsetting order by id"),
             QStringList({"2, 0, 0", "3, 1, 2", "9, 1, 2", "10, 1, 2"}));
}

void TestQc::changesNothingInASecondRun()
{
    const TestDatabase database("qc.db");
    database.load("qc_v0.sql");
    QVERIFY(upgrade(database));
    const QStringList before = database.content();

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
}

QTEST_GUILESS_MAIN(TestQc)
#include "tst_qc.moc"
