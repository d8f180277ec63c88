// SPDX-License-Identifier: MIT
/// The data database from every stored version to the current one.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "upgrade.h"

#include <QTest>

namespace {

const QString newestVersion = QString::number(newestVersionOf("data"));

// clang-format off
const ExpectedTables newTables{
    {"patient", {
        "1, '0001', '2016-05-09', '08:01:02', '王芳', '女', '45岁', '心内科', '李伟', '房颤', '690123450001', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL",
        "2, '0002', '2016-05-09', '08:03:04', 'O''Neill', '男', '61', 'ICU', 'Dr. Ho', '\"DVT\", left', '690123450002', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL",
        "3, '0003', '2016-05-09', '', '', '', '', '', NULL, NULL, '', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL",
        "5, '0001', '2016-05-10', '07:59:59', '赵.敏', '女', '3月', '儿科', '李伟', '术前; 待查', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL",
        "8, '0002', '2016-05-10', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL",
    }},
    {"patientExtra", {"1, 1, '床号', '12-3'", "2, 1, '病区', 'A'", "3, 2, 'bed', '7'", "4, 5, '监护人', '赵''先生'"}},
    {"exam", {
        "1, '0001', '2016-05-09', 'PT'", "2, '0001', '2016-05-09', 'APTT'", "3, '0002', '2016-05-09', 'DD'",
        "4, '0001', '2016-05-10', 'PT'", "5, '0002', '2016-05-10', 'FIB'",
    }},
    {"results", {
        "1, 1, 'PT', 'T', 1, 'PT', '凝血酶原时间', NULL, NULL, 12.3, 's', 0, 1, 9.0, 14.0, NULL",
        "2, 1, 'PT', 'INR', 1, 'PT-INR', '国际标准化比值', NULL, NULL, 1.07, NULL, 0, 2, 0.8, 1.2, NULL",
        "3, 1, 'APTT', 'T', 1, 'APTT', '活化部分凝血活酶时间', NULL, NULL, 31.0, 's', 0, 3, 20.0, 40.0, NULL",
        "4, 2, 'PT', 'T', 1, 'PT', 'Prothrombin time', NULL, NULL, 58.75, 's', 3, 1, 9.0, 14.0, NULL",
        "5, 2, 'DD', 'P', 1, 'DD', 'D-Dimer', NULL, NULL, 0.1, 'mg/l', 1, 9, 0.0, 0.55, NULL",
        "6, 2, 'FIB', 'P', 1, 'FIB', 'Fibrinogen', NULL, NULL, NULL, 'g/l', 8, 5, 2.0, 4.0, NULL",
        "9, 5, 'PT', 'T', 1, 'PT', '凝血酶原时间', NULL, NULL, 13.0, 's', 0, 1, 9.0, 14.0, NULL",
        "12, 5, 'TT', 'T', 1, 'TT', 'TT''s \"code\"', NULL, NULL, '-', 's', NULL, NULL, NULL, NULL, NULL",
    }},
    {"checkedResult", { // in the order of result_index, which holds all that is selected
        "1, 1, 'APTT', 'T', 3", "2, 1, 'PT', 'INR', 2", "3, 1, 'PT', 'T', 1", "4, 2, 'DD', 'P', 5",
        "5, 2, 'FIB', 'P', 6", "6, 2, 'PT', 'T', 4", "7, 5, 'PT', 'T', 9", "8, 5, 'TT', 'T', 12",
    }},
    {"curve", {
        "1, 1, 'PT', 1, X'00010203040506070809FF', NULL",
        "2, 1, 'APTT', 1, X'', NULL",
        "3, 2, 'PT', 1, X'27273B2D2D0A00C328', NULL",
        "4, 5, 'PT', 1, X'00', NULL",
        "7, 5, 'TT', 1, NULL, NULL",
        "8, 2, 'DD', 1, X'" + QString(240, '0') + "', NULL",
    }},
    {"detail", {}},
    {"department", {"1, NULL, '心内科'", "2, NULL, 'ICU'", "5, NULL, '儿科'"}},
    {"sex", {"1, 'm', '男'", "2, 'F', '女'", "3, NULL, ''"}},
    {"treatmentRoom", {"1, 'tr1', '第一诊室', NULL", "2, 'TR2', 'Room \"2\"', NULL"}},
    {"diagnosis", {"1, 'fc', '房颤'", "2, 'DVT', 'Deep vein thrombosis, patient''s left leg'"}},
    {"doctor", {"1, 'lw', '李伟', NULL", "2, 'ho', 'Dr. Ho', NULL"}},
    {"operator", {"1, NULL, '张丽'", "2, NULL, 'admin'"}},
    {"memo", {}},
    {"sampleAssayRequest", {}},
    {"version", {newestVersion}},
};
// clang-format on

} // namespace

class TestData : public QObject {
    Q_OBJECT

private slots:
    void init();

    void reachesTheNewestVersionFromEveryVersion_data();
    void reachesTheNewestVersionFromEveryVersion();
    void keepsADetailOfEveryVersion_data();
    void keepsADetailOfEveryVersion();
    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void ignoresAndWarnsOnce_data();
    void ignoresAndWarnsOnce();
    void copiesLookupListsByColumnName();
    void keepsAnOlderMemoTable();
    void makesEmptyTablesWithoutOldResults();
    void findsAbbreviationsInAnyCase();
    void cutsTimesAtTheirPoint();
    void keepsStorageClasses();
    void choosesTheLaterOfTwoOldResults();
    void deletesAllOfAPatientAndNoMore_data();
    void deletesAllOfAPatientAndNoMore();
    void showsTheOldResultsThroughTheView_data();
    void showsTheOldResultsThroughTheView();
    void showsTheCheckedVersionOfAResult();
    void keepsAViewThatVersion4MayHaveGot();
    void storesRequestsAsNotFinished();
    void changesNothingInASecondRun();
};

void TestData::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestData::reachesTheNewestVersionFromEveryVersion_data()
{
    addVersionRows("data");
}

/// Shows: DAT-1, DAT-2, DAT-8
void TestData::reachesTheNewestVersionFromEveryVersion()
{
    QFETCH(int, stored);

    verifyUpgrade("data", stored, newTables);
}

void TestData::keepsADetailOfEveryVersion_data()
{
    QTest::addColumn<int>("stored");

    for (const int version : {1, 2, 3, 7, 8, 11})
        QTest::addRow("%d", version) << version;
}

/// Shows: DAT-2
void TestData::keepsADetailOfEveryVersion()
{
    QFETCH(int, stored);
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", stored);
    database.execute({"insert into detail(id, patientId, item, info) values"
                      "(3, 2, 'PT', '通道 1'), (4, 2, 'DD', 'O''Neill')"});
    if (stored >= 3)
        database.execute({"update detail set version = 1"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.table("detail"),
             QStringList({"3, 2, 'PT', 1, '通道 1', NULL", "4, 2, 'DD', 1, 'O''Neill', NULL"}));
}

void TestData::failsAndKeepsTheFile_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order
    QTest::addColumn<int>("step");

    // Not here, since no content makes them fail: the renames of the rebuilt lookup lists.
    for (const QString &name :
         QStringList{"department", "sex", "treatmentRoom", "diagnosis", "doctor", "operator"}) {
        QTest::addRow("1: %s_new exists", qUtf8Printable(name))
            << 0 << QStringList{QString("create table %1_new(id)").arg(name)}
            << QStringList{QString("create table %1_new(").arg(name)} << 8;
        QTest::addRow("1: %s is missing", qUtf8Printable(name))
            << 0 << QStringList{QString("drop table %1").arg(name)}
            << QStringList{"select * from " + name, "drop table " + name} << 8;
        QTest::addRow("1: %s has a column more", qUtf8Printable(name))
            << 0 << QStringList{QString("alter table %1 add extra text").arg(name)}
            << QStringList{QString("insert into %1_new (").arg(name)} << 8;
        QTest::addRow("1: %s_index is a table", qUtf8Printable(name))
            << 0
            << QStringList{QString("drop index if exists %1_index").arg(name),
                           QString("create table %1_index(id)").arg(name)}
            << QStringList{QString("create index if not exists %1_index").arg(name)} << 8;
    }
    QTest::newRow("1: detail exists")
        << 0 << QStringList{"create table detail(id)"} << QStringList{"create table detail("} << 8;
    QTest::newRow("1: version exists without a version")
        << 0 << QStringList{"create table version(version integer)"}
        << QStringList{"create table version(version integer)"} << 8;
    QTest::newRow("2: no trigger") << 1 << QStringList{"drop trigger on_delete_patient"}
                                   << QStringList{"drop trigger on_delete_patient"} << 8;
    QTest::newRow("2: patients are a view")
        << 1
        << QStringList{"alter table patient rename to person", "drop trigger on_delete_patient",
                       "create view patient as select * from person",
                       "create trigger on_delete_patient instead of delete on patient"
                       " begin delete from person where id = old.id; end"}
        << QStringList{"create trigger on_delete_patient"} << 8;
    QTest::newRow("5: patient.memo exists") << 4 << QStringList{"alter table patient add memo"}
                                            << QStringList{"alter table patient add memo"} << 8;
    QTest::newRow("6: patient.printTime exists")
        << 5 << QStringList{"alter table patient add printTime"}
        << QStringList{"alter table patient add printTime"} << 8;
    QTest::newRow("6: patient.outputTime exists")
        << 5 << QStringList{"alter table patient add outputTime"}
        << QStringList{"alter table patient add outputTime"} << 8;
    QTest::newRow("7: doctor.department exists")
        << 6 << QStringList{"alter table doctor add department"}
        << QStringList{"alter table doctor add department"} << 8;
    QTest::newRow("7: treatmentRoom.department exists")
        << 6 << QStringList{"alter table treatmentRoom add department"}
        << QStringList{"alter table treatmentRoom add department"} << 8;
    QTest::newRow("8: patient.sampleTime exists")
        << 7 << QStringList{"alter table patient add sampleTime"}
        << QStringList{"alter table patient add sampleTime"} << 8;
    QTest::newRow("8: patient.testTime exists")
        << 7 << QStringList{"alter table patient add testTime"}
        << QStringList{"alter table patient add testTime"} << 8;
    QTest::newRow("8: patient.validateTime exists, from the start")
        << 0 << QStringList{"alter table patient add validateTime"}
        << QStringList{"alter table patient add validateTime"} << 8;
    QTest::newRow("9: patients cannot be changed")
        << 8
        << QStringList{"create trigger keep before update on patient"
                       " begin select raise(abort, 'kept'); end"}
        << QStringList{"update patient set time = iif("} << 9;
    QTest::newRow("9: results cannot be changed")
        << 8
        << QStringList{"update results set time = '08:01:02.5' where id = 12",
                       "create trigger keep before update on results"
                       " begin select raise(abort, 'kept'); end"}
        << QStringList{"update results set time = iif("} << 9;
    QTest::newRow("10: patient.instrId exists")
        << 9 << QStringList{"alter table patient add instrId"}
        << QStringList{"alter table patient add instrId"} << 10;
    QTest::newRow("11: results.deletedAt exists")
        << 10 << QStringList{"alter table results add deletedAt"}
        << QStringList{"alter table results add deletedAt"} << 11;
    QTest::newRow("11: curve.deletedAt exists")
        << 10 << QStringList{"alter table curve add deletedAt"}
        << QStringList{"alter table curve   add deletedAt"} << 11;
    QTest::newRow("11: detail.deletedAt exists, from version 8")
        << 8 << QStringList{"alter table detail add deletedAt"}
        << QStringList{"alter table detail  add deletedAt"} << 11;
    QTest::newRow("12: sampleAssayRequest exists")
        << 11 << QStringList{"create table sampleAssayRequest(id)"}
        << QStringList{"create table sampleAssayRequest("} << 12;
    QTest::newRow("3: a trigger ends the transaction")
        << 2
        << dataChangesTo(3).mid(7, 1)
            + QStringList{"create trigger keep before insert on curve_new"
                          " begin select raise(rollback, 'kept'); end"}
        << QStringList{"create table curve_new(", "insert into curve_new ("} << 8;
    QTest::newRow("3: curve is an index, so that curve_new keeps its name")
        << 2 << QStringList{"drop table curve", "create index curve on patient(name)"}
        << QStringList{"insert into curve_new (", "drop table curve",
                       "alter table curve_new rename to curve", "alter table curve   add deletedAt"}
        << 11;
    QTest::newRow("3: detail is a view, so that detail_new keeps its name")
        << 2 << QStringList{"drop table detail", "create view detail as select 1 as id, 2 as time"}
        << QStringList{"insert into detail_new (", "drop table detail",
                       "alter table detail_new rename to detail",
                       "alter table detail  add deletedAt"}
        << 11;
}

/// Shows: ENG-11
void TestData::failsAndKeepsTheFile()
{
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);
    QFETCH(int, step);

    verifyUpgradeFails("data", stored, obstacles, failing, step);
}

void TestData::ignoresAndWarnsOnce_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order

    // Not here, since no content makes them fail while the fatal statements pass: the creation of
    // the trigger in block 3 (only a patient that is no table does, which block 5 does not pass). The
    // two renames of block 3 stand with the failures, since step 11 does not pass after them.
    QTest::newRow("1: patient.sampleType exists")
        << 0 << QStringList{"alter table patient add sampleType text"}
        << QStringList{"alter table patient add sampleType text"};
    QTest::newRow("1: patient.hospitalNo exists")
        << 0 << QStringList{"alter table patient add hospitalNo text"}
        << QStringList{"alter table patient add hospitalNo text"};
    QTest::newRow("3: results exists")
        << 2 << dataChangesTo(3).mid(0, 1) << QStringList{"create table results("};
    QTest::newRow("3: results_index is a table")
        << 2 << QStringList{"create table results_index(id)"}
        << QStringList{"create index results_index on"};
    QTest::newRow("3: results take no row")
        << 2
        << dataChangesTo(3).mid(0, 1)
            + QStringList{"create trigger keep before insert on results"
                          " begin select raise(abort, 'kept'); end"}
        << QStringList{"create table results(", "insert into results (",
                       "Kept 8 rows of result in result_unmoved"};
    QTest::newRow("3: result has no unit")
        << 2 << QStringList{"alter table result drop column unit"}
        << QStringList{"insert into results (", "Kept 8 rows of result in result_unmoved"};
    QTest::newRow("3: checkedResult exists")
        << 2 << dataChangesTo(3).mid(3, 1) << QStringList{"create table checkedResult("};
    QTest::newRow("3: checkedResult_index is a table")
        << 2 << QStringList{"create table checkedResult_index(id)"}
        << QStringList{"create index checkedResult_index on"};
    QTest::newRow("3: checkedResult takes no row")
        << 2
        << dataChangesTo(3).mid(3, 1)
            + QStringList{"create trigger keep before insert on checkedResult"
                          " begin select raise(abort, 'kept'); end"}
        << QStringList{"create table checkedResult(", "insert into checkedResult(",
                       "Kept 8 rows of result in result_unmoved"};
    QTest::newRow("3: no result_index")
        << 2 << QStringList{"drop index result_index"} << QStringList{"drop index result_index"};
    QTest::newRow("3: result is a view") << 2
                                         << QStringList{"alter table result rename to old",
                                                        "create view result as select * from old"}
                                         << QStringList{"drop table result"};
    QTest::newRow("3: curve_new exists")
        << 2 << dataChangesTo(3).mid(7, 1) << QStringList{"create table curve_new("};
    QTest::newRow("3: curves have no item")
        << 2 << QStringList{"alter table curve drop column item"}
        << QStringList{"insert into curve_new (", "Kept 6 rows of curve in curve_unmoved"};
    QTest::newRow("3: curve_new takes no row")
        << 2
        << dataChangesTo(3).mid(7, 1)
            + QStringList{"create trigger keep before insert on curve_new"
                          " begin select raise(abort, 'kept'); end"}
        << QStringList{"create table curve_new(", "insert into curve_new (",
                       "Kept 6 rows of curve in curve_unmoved"};
    QTest::newRow("3: no curve") << 2 << QStringList{"drop table curve"}
                                 << QStringList{"insert into curve_new (", "drop table curve"};
    QTest::newRow("3: detail_new exists")
        << 2 << dataChangesTo(3).mid(11, 1) << QStringList{"create table detail_new("};
    QTest::newRow("3: details have no info")
        << 2 << QStringList{"alter table detail drop column info"}
        << QStringList{"insert into detail_new ("};
    QTest::newRow("3: no detail") << 2 << QStringList{"drop table detail"}
                                  << QStringList{"insert into detail_new (", "drop table detail"};
    QTest::newRow("3: no trigger") << 2 << QStringList{"drop trigger on_delete_patient"}
                                   << QStringList{"drop trigger on_delete_patient"};
    QTest::newRow("4: result is a table")
        << 3 << QStringList{"create table result(id)"}
        << QStringList{"drop view if exists result", "create view result"};
    QTest::newRow("4: result is an index")
        << 3 << QStringList{"create index result on patient(name)"}
        << QStringList{"create view result"};
    QTest::newRow("5: memo exists") << 4 << dataChangesTo(5).mid(1, 1) << QStringList{"-- remarks"};
    QTest::newRow("5: memo_index is a table") << 4 << QStringList{"create table memo_index(id)"}
                                              << QStringList{"create index memo_index on"};
}

/// Shows: ENG-10
void TestData::ignoresAndWarnsOnce()
{
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);

    verifyUpgradeIgnores("data", stored, obstacles, failing);
}

/// Shows: DAT-4
void TestData::copiesLookupListsByColumnName()
{
    const TestDatabase database("data.db");
    database.load("data_v0.sql");
    database.execute({"drop table doctor", "create table doctor(name text, id integer primary key)",
                      "insert into doctor values('李伟', 4)"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.table("doctor"), QStringList{"4, NULL, '李伟', NULL"});
}

void TestData::keepsAnOlderMemoTable()
{
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", 4);
    database.execute({"create table memo(id integer primary key, abbr text, name text)",
                      "insert into memo values(1, 'cx', '重新采血')"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.table("memo"), QStringList{"1, 'cx', '重新采血'"});
}

void TestData::makesEmptyTablesWithoutOldResults()
{
    const TestDatabase database("data.db");
    database.load("data_v0.sql");
    database.execute({"drop table result"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages().filter(QRegularExpression("^Warning: ")).size(), 4);
    QCOMPARE(database.table("results"), QStringList());
    QCOMPARE(database.table("checkedResult"), QStringList());
    QCOMPARE(database.comparableSchema(), referenceSchema("data"));
}

/// Shows: DAT-4
void TestData::findsAbbreviationsInAnyCase()
{
    const TestDatabase database("data.db");
    database.load("data_v0.sql");

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select name from sex where abbr = 'f'"), QStringList{"'女'"});
    QCOMPARE(database.rows("select name from diagnosis where abbr = 'FC'"), QStringList{"'房颤'"});
}

/// Shows: DAT-5
void TestData::cutsTimesAtTheirPoint()
{
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", 8);
    database.execute(
        {"update patient set time = '10:20:30.500', printTime = '10:20:31.500',"
         " outputTime = '10:20:32.500', sampleTime = '10:20:33.500',"
         " testTime = '2016-05-09T10:20:34.500', validateTime = '10:20:35.500', memo = 'a.b'"
         " where id = 1",
         "update patient set printTime = '10:20:31', outputTime = '' where id = 2",
         "update results set time = '10:20:36.750' where id = 1",
         "update results set time = '10:20:36' where id = 2",
         "update results set time = '' where id = 3"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select time, printTime, outputTime, sampleTime, testTime, validateTime,"
                           " memo from patient where id < 3"),
             QStringList({"'10:20:30', '10:20:31', '10:20:32', '10:20:33', '2016-05-09T10:20:34',"
                          " '10:20:35', 'a.b'",
                          "'08:03:04', '10:20:31', '', NULL, NULL, NULL, NULL"}));
    QCOMPARE(database.rows("select time from results where id < 5"),
             QStringList({"'10:20:36'", "'10:20:36'", "''", "NULL"}));
}

void TestData::keepsStorageClasses()
{
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", 2);
    database.execute({"insert into curve(id, patientId, item, curve) values"
                      "(20, 1, 'A', 'text'), (21, 1, 'B', 5), (22, 1, 'C', 0.5)",
                      "insert into detail(id, patientId, item, info) values"
                      "(20, 1, 'A', x'00ff'), (21, 1, 'B', 7), (22, 1, 'C', null)"});
    const TestDatabase lists("data.db");
    lists.load("data_v0.sql");
    lists.execute({"drop table sex", "create table sex(id integer primary key, abbr, name)",
                   "insert into sex values(1, 5, x'00ff'), (2, 0.5, 7)"});

    const bool upgraded = upgrade(database) && upgrade(lists);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select curve from curve where id >= 20 order by id"),
             QStringList({"'text'", "5", "0.5"}));
    QCOMPARE(database.rows("select info from detail where id >= 20 order by id"),
             QStringList({"X'00FF'", "'7'", "NULL"})); // 7 became a text when it was stored
    QCOMPARE(lists.table("sex"), QStringList({"1, '5', X'00FF'", "2, '0.5', '7'"}));
}

/// Shows: DAT-3
void TestData::choosesTheLaterOfTwoOldResults()
{
    const TestDatabase database("data.db");
    database.load("data_v0.sql");
    database.execute({"insert into result(id, patientId, item, subitem, result)"
                      " values(20, 1, 'PT', 'T', 99)"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    const QString ofThePair = " where patientId = 1 and item = 'PT' and subitem = 'T'";
    QCOMPARE(database.rows("select id, version, result from results" + ofThePair + " order by id"),
             QStringList({"1, 1, 12.3", "20, 1, 99.0"}));
    QCOMPARE(database.rows("select resultsId from checkedResult" + ofThePair), QStringList{"20"});
    QCOMPARE(database.rows("select id, result from result" + ofThePair), QStringList{"20, 99.0"});
}

void TestData::deletesAllOfAPatientAndNoMore_data()
{
    reachesTheNewestVersionFromEveryVersion_data();
}

/// Shows: DAT-7
void TestData::deletesAllOfAPatientAndNoMore()
{
    QFETCH(int, stored);
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", stored);
    QVERIFY(upgrade(database));
    database.execute({"insert into detail(patientId, item) values(1, 'PT'), (2, 'PT')"});

    database.execute({"delete from patient where id = 1"});

    QCOMPARE(database.rows("select id from patient order by id"),
             QStringList({"2", "3", "5", "8"}));
    QCOMPARE(database.rows("select id from patientExtra order by id"), QStringList({"3", "4"}));
    QCOMPARE(database.rows("select id from exam order by id"), QStringList({"3", "4", "5"}));
    QCOMPARE(database.rows("select id from results order by id"),
             QStringList({"4", "5", "6", "9", "12"}));
    QCOMPARE(database.rows("select resultsId from checkedResult order by resultsId"),
             QStringList({"4", "5", "6", "9", "12"}));
    QCOMPARE(database.rows("select id from curve order by id"), QStringList({"3", "4", "7", "8"}));
    QCOMPARE(database.rows("select patientId from detail"), QStringList{"2"});
}

void TestData::showsTheOldResultsThroughTheView_data()
{
    reachesTheNewestVersionFromEveryVersion_data();
}

/// Shows: DAT-3
void TestData::showsTheOldResultsThroughTheView()
{
    QFETCH(int, stored);
    const TestDatabase oldest("data.db");
    oldest.load("data_v0.sql");
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", stored);
    const QString query = "select id, patientId, item, subitem, abbr, code, result, unit, flag,"
                          " displayOrder, lowerMarkLimit, upperMarkLimit from result order by id";
    const QStringList before = oldest.rows(query);

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(before.size(), 8);
    QCOMPARE(database.rows(query), before);
}

/// Shows: DAT-3
void TestData::showsTheCheckedVersionOfAResult()
{
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", 8);
    database.execute({"insert into results(id, patientId, item, subitem, version, result)"
                      " values(30, 1, 'PT', 'T', 2, 11.5), (31, 1, 'PT', 'T', 3, 11.75)",
                      "insert into checkedResult(patientId, item, subitem, resultsId)"
                      " values(1, 'PT', 'T', 30)"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select id, result from result where patientId = 1 order by id"),
             QStringList({"2, 1.07", "3, 31.0", "30, 11.5"}));
}

void TestData::keepsAViewThatVersion4MayHaveGot()
{
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", 4);
    const QString view = "CREATE VIEW result as select * from results where flag = 0";
    database.execute({"drop view result", view});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.rows("select sql from sqlite_master where name = 'result'"),
             QStringList{'\'' + view + '\''});
}

/// Shows: DAT-8
void TestData::storesRequestsAsNotFinished()
{
    const TestDatabase database("data.db");
    database.load("data_v0.sql");
    QVERIFY(upgrade(database));

    database.execute({"insert into sampleAssayRequest(barcode, testItems) values('69', 'PT')"});

    QCOMPARE(database.table("sampleAssayRequest"), QStringList{"'69', 'PT', NULL, 0, NULL"});
}

void TestData::changesNothingInASecondRun()
{
    const TestDatabase database("data.db");
    database.load("data_v0.sql");
    QVERIFY(upgrade(database));
    const QStringList before = database.content();

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
}

QTEST_GUILESS_MAIN(TestData)
#include "tst_data.moc"
