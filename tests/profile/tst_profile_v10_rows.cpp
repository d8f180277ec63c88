// SPDX-License-Identifier: MIT
/// Identifiers, settings, factory rows and labels of the profile database's step to version 10.

#include "messagerecorder.h"
#include "profiledatabase.h"
#include "profileupgrade.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

bool runStep(const TestDatabase &database)
{
    return runProfileStep(database, &UpdateProfile::update_v10);
}

QStringList insertReagents(const QStringList &rows)
{
    return {"delete from reagent",
            "insert into reagent(id, reagentId, name) values " + rows.join(", ")};
}

const QStringList identifiedReagents{
    "PT",     "APTT",   "CaCl2",   "FIB",     "Buffer(FIB)", "TT",
    "R1(DD)", "R2(DD)", "R1(FDP)", "R2(FDP)", "R1(ATIII)",   "R2(ATIII)",
    "II",     "X",      "VIII",    "IX",      "XII",         "Buffer(ATIII)"};

} // namespace

class TestProfileV10Rows : public QObject {
    Q_OBJECT

private slots:
    void init();

    void makesReagentIdsUnique_data();
    void makesReagentIdsUnique();
    void tellsChangedReagentIds();
    void forgetsEmptyReagentIds();
    void fixesTheReagentIdsThatAreMissing();
    void fixesNoReagentIdThatIsThere();

    void keepsTheUsersSettings();
    void replacesTheUsersSettings();
    void enablesAssays();
    void keepsTheUsersReagents();
    void replacesTheUsersReagents();
    void keepsTheUsersAssays();
    void setsCalibrations_data();
    void setsCalibrations();
    void insertsAMissingOdThreshold();
    void addsNoSubmissionTime();
    void raisesOnlyTheOldNormalLimit();
    void renamesOnlyUnchangedReagentTypes();
    void updatesExistingDataChecks();
    void removesTheProgramOfAtiii();

    void deletesAllOfACurveAndNoMore();
    void deletesAllOfATemplateAndNoMore();

    void translatesLabels();
    void writesNoChineseInEnglish();
    void asksForTheLanguage_data();
    void asksForTheLanguage();
    void asksForTheLanguageInItsOwnContext();
    void storesLabelsLetterForLetter_data();
    void storesLabelsLetterForLetter();
};

void TestProfileV10Rows::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestProfileV10Rows::makesReagentIdsUnique_data()
{
    QTest::addColumn<QStringList>("reagents"); // id, reagentId, name
    QTest::addColumn<QStringList>("reagentIds");

    QTest::newRow("a number that is taken")
        << QStringList{"(1, 'A', 'a')", "(2, 'A', 'b')", "(3, 'A(2)', 'c')"}
        << QStringList{"'A'", "'A(3)'", "'A(2)'"};
    QTest::newRow("three of one") << QStringList{"(1, 'A', 'a')", "(2, 'A', 'b')", "(3, 'A', 'c')"}
                                  << QStringList{"'A'", "'A(2)'", "'A(3)'"};
    QTest::newRow("two chains, entangled")
        << QStringList{"(1, 'B', 'a')", "(2, 'A', 'b')", "(3, 'A', 'c')",   "(4, 'B', 'd')",
                       "(5, 'A', 'e')", "(6, 'B', 'f')", "(7, 'B(3)', 'g')"}
        << QStringList{"'B'", "'A'", "'A(2)'", "'B(2)'", "'A(3)'", "'B(4)'", "'B(3)'"};
    QTest::newRow("a chain of a numbered one")
        << QStringList{"(1, 'A', 'a')", "(2, 'A(2)', 'b')", "(3, 'A(2)', 'c')", "(4, 'A', 'd')"}
        << QStringList{"'A'", "'A(2)'", "'A(2)(2)'", "'A(3)'"};
    QTest::newRow("a gap") << QStringList{"(1, 'A(3)', 'a')", "(2, 'A', 'b')", "(3, 'A', 'c')",
                                          "(4, 'A', 'd')"}
                           << QStringList{"'A(3)'", "'A'", "'A(2)'", "'A(4)'"};
    QTest::newRow("inserted in another order")
        << QStringList{"(9, 'A', 'a')", "(10, 'A', 'b')", "(2, 'A', 'c')"}
        << QStringList{"'A'", "'A(2)'", "'A(3)'"}; // by id: 2, 9, 10
    QTest::newRow("a number and a text")
        << QStringList{"(1, 5, 'a')", "(2, '5', 'b')"} << QStringList{"5", "'5(2)'"};
    QTest::newRow("other case is another identifier")
        << QStringList{"(1, 'a', 'a')", "(2, 'A', 'b')"} << QStringList{"'a'", "'A'"};
    QTest::newRow("apostrophes and place markers")
        << QStringList{"(1, 'O''N %1 %2', 'a')", "(2, 'O''N %1 %2', 'b')"}
        << QStringList{"'O''N %1 %2'", "'O''N %1 %2(2)'"};
    QTest::newRow("a byte order mark")
        << QStringList{"(1, char(65279) || 'A', 'a')", "(2, char(65279) || 'A', 'b')"}
        << QStringList{"'\ufeffA'", "'\ufeffA(2)'"};
}

/// Shows: PRO-2
void TestProfileV10Rows::makesReagentIdsUnique()
{
    QFETCH(QStringList, reagents);
    QFETCH(QStringList, reagentIds);
    const TestDatabase database("profile.db");
    makeProfileAt(database, 6);
    database.execute(insertReagents(reagents));

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select reagentId from reagent where length(name) = 1 order by id"),
             reagentIds);
}

/// Shows: PRO-2
void TestProfileV10Rows::tellsChangedReagentIds()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 6);
    database.execute(insertReagents(
        {"(1, 'A', 'a')", "(2, 'B', 'b')", "(3, 'B', 'c')", "(10, 'A', 'd')", "(20, null, 'e')"}));
    const MessageRecorder recorder;

    const bool passed = runStep(database);

    QVERIFY(passed);
    const QString line = "Debug: coagulation/vardo/updateprofile_v10_layouts.cpp ( line ): "
                         R"( UPDATE reagent SET reagentId = "%1" WHERE id = %2)";
    QCOMPARE(recorder.messages().filter("UPDATE reagent"),
             QStringList({line.arg("B(2)", "3"), line.arg("A(2)", "10")}));
}

void TestProfileV10Rows::forgetsEmptyReagentIds()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 6);
    database.execute(insertReagents({"(1, '', 'a')", "(2, null, 'b')", "(3, '', 'c')"}));

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select reagentId from reagent where length(name) = 1"),
             QStringList({"NULL", "NULL", "NULL"}));
}

/// Shows: PRO-2
void TestProfileV10Rows::fixesTheReagentIdsThatAreMissing()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 6);
    database.execute({"update reagent set reagentId = null",
                      "insert into reagent(name) values('VIII'), ('IX'), ('XII')"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(
        database.rows("select reagentId, name from reagent where reagentId notnull"
                      " order by reagentId"),
        QStringList({"'101', 'PT'", "'102', 'APTT'", "'103', 'CaCl2'", "'104', 'FIB'",
                     "'105', 'Buffer(FIB)'", "'106', 'TT'", "'107', 'R1(DD)'", "'108', 'R2(DD)'",
                     "'109', 'R1(FDP)'", "'110', 'R2(FDP)'", "'111', 'Buffer(ATIII)'",
                     "'112', 'R1(ATIII)'", "'113', 'R2(ATIII)'", "'114', 'II'", "'115', 'X'",
                     "'116', 'VIII'", "'117', 'IX'", "'118', 'XII'"}));
}

/// Shows: PRO-2
void TestProfileV10Rows::fixesNoReagentIdThatIsThere()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 6);
    database.execute(
        {"insert into reagent(name) values('VIII'), ('IX'), ('XII'), ('Buffer(ATIII)')",
         "update reagent set reagentId = 'mine ' || id"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QStringList kept;
    for (const QString &name : identifiedReagents)
        kept << database.rows(QString("select name from reagent where name = '%1'"
                                      " and reagentId = 'mine ' || id")
                                  .arg(name));
    QCOMPARE(kept.join(", "), "'" + identifiedReagents.join("', '") + "'");
}

/// Shows: PRO-5
void TestProfileV10Rows::keepsTheUsersSettings()
{
    // clang-format off
    const QStringList settings{
        "FIB/report/dilution", "dilution", "patient/sampleType", "reagent/initVolume",
        "reagent/alarmLimit", "reagent/interruptLimit", "patient/hospitalNo",
        "analyst/FIB/odPercent", "patient/memo", "patient/printTime", "patient/outputTime",
        "PC/dilution", "PC/incubator/duration", "PC/kinetic/start", "PC/kinetic/end",
        "PC/max_clot_time", "PS/dilution", "PS/mechanicalclot/end", "PS/opticalclot/end",
        "PS/max_clot_time", "analyst/LAS/odPercent", "patient/sampleTime", "patient/testTime",
        "patient/validateTime", "APTT/mechanicalclot/end", "APTT/opticalclot/end",
        "APTT/max_clot_time", "TT/mechanicalclot/end", "TT/opticalclot/end", "TT/max_clot_time",
        "XA/dilution", "specialValue/XA/UFH", "specialValue/XA/LMWH", "specialValue/XA/RX",
        "XA/twopoints/p1/start", "XA/twopoints/p1/end", "XA/twopoints/p2/start",
        "XA/max_clot_time"};
    // clang-format on
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    for (const QString &name : settings)
        database.execute({QString("replace into profile values('%1', 'mine')").arg(name)});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QStringList sorted = settings;
    sorted.sort();
    QCOMPARE(
        database.rows("select name from profile where value = 'mine' order by name").join(", "),
        "'" + sorted.join("', '") + "'");
}

/// Shows: PRO-6
void TestProfileV10Rows::replacesTheUsersSettings()
{
    // clang-format off
    const QStringList settings{
        "DD/mix/times", "DD/max_clot_time", "specialValue/DD/P", "DD/priority", "FDP/mix/times",
        "FDP/max_clot_time", "specialValue/FDP/P", "schedule/sample", "schedule/reagent",
        "schedule/mix", "schedule/dilution", "schedule/dilution/1/10", "schedule/dilution/1/20",
        "schedule/dilution/1/40", "schedule/clean", "schedule/test/PT", "schedule/test/FIB/table",
        "schedule/test/APTT", "schedule/test/TT", "schedule/test/II", "schedule/test/V",
        "schedule/test/VII", "schedule/test/X", "schedule/test/VIII", "schedule/test/IX",
        "schedule/test/XI", "schedule/test/XII", "analyst/FIB/odThreshold",
        "analyst/APTT/odThreshold", "analyst/odThreshold", "patient/time", "ATIII/kinetic/start",
        "ATIII/kinetic/end", "ATIII/max_clot_time", "ATIII/dilution", "ATIII/report/dilution",
        "ATIII/incubator/duration"};
    // clang-format on
    const TestDatabase untouched("profile.db");
    makeProfileAt(untouched, 0);
    QVERIFY(runStep(untouched));
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    for (const QString &name : settings)
        database.execute({QString("replace into profile values('%1', 'mine')").arg(name)});

    const bool passed = runStep(database);

    QVERIFY(passed);
    const QString all = "select name, value from profile order by name";
    QCOMPARE(database.rows("select name from profile where value = 'mine'"), QStringList());
    QCOMPARE(database.rows(all), untouched.rows(all));
}

/// Shows: PRO-18
void TestProfileV10Rows::enablesAssays()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    for (const QString &name :
         QStringList{"DD", "II", "V", "VII", "X", "VIII", "IX", "XI", "XII", "FDP", "PT", "XIII"})
        database.execute({QString("replace into profile values('%1/disable', 1)").arg(name)});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select name from profile where name like '%/disable' order by name"),
             QStringList({"'PT/disable'", "'XIII/disable'"}));
}

/// Shows: PRO-5
void TestProfileV10Rows::keepsTheUsersReagents()
{
    // clang-format off
    const QStringList names{
        "Buffer(ATIII)", "R1(PC)", "R2(PC)", "R3(PC)", "R1(PS)", "R2(PS)", "R3(PS)", "LAS", "LAC",
        "R1(APCR1)", "R2(APCR1)", "R3(APCR1)", "R1(APCR2)", "R2(APCR2)", "R3(APCR2)",
        "Buffer(PC)", "Buffer(PS)", "Buffer(LAS)", "Buffer(LAC)", "Buffer(APCR1)",
        "Buffer(APCR2)", "PC ct", "PS ct", "LAS ct", "LAC ct", "APCR1 ct", "APCR2 ct", "R1(XA)",
        "R2(XA)", "Buffer(XA)"};
    // clang-format on
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    for (const QString &name : names)
        database.execute(
            {QString("insert into reagent(name, initVolume) values('%1', 69)").arg(name)});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select name from reagent where initVolume = 69 order by id").join(", "),
             "'" + names.join("', '") + "'");
}

/// Shows: PRO-6
void TestProfileV10Rows::replacesTheUsersReagents()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"replace into reagent(id, type, name, initVolume) values"
                      " (7, 9, 'Latex', 69), (30, 9, 'FDP', 69), (31, 9, 'Saline', 69),"
                      " (32, 9, 'Buffer(PT)', 69), (33, 9, 'Buffer(APTT)', 69),"
                      " (34, 9, 'Buffer(FIB)', 69), (35, 9, 'Buffer(TT)', 69),"
                      " (36, 9, 'Buffer(DD)', 69), (37, 9, 'Buffer(EX)', 69),"
                      " (38, 9, 'Buffer(EN)', 69), (39, 9, 'Buffer(FDP)', 69),"
                      " (40, 9, 'DD ct', 69), (41, 9, 'FDP ct', 69)"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select type, name, initVolume, alarmLimit, vialType from reagent"
                           " where id between 42 and 54"),
             QStringList({"0, 'R2(DD)', 2000, 200, 3", "0, 'R2(FDP)', 2000, 200, 3",
                          "2, 'Saline', 6500, 200, 6", "2, 'Buffer(PT)', 6500, 200, 6",
                          "2, 'Buffer(APTT)', 6500, 200, 6", "2, 'Buffer(FIB)', 6500, 200, 6",
                          "2, 'Buffer(TT)', 6500, 200, 6", "2, 'R1(DD)', 6500, 200, 6",
                          "2, 'Buffer(EX)', 6500, 200, 6", "2, 'Buffer(EN)', 6500, 200, 6",
                          "2, 'R1(FDP)', 6500, 200, 6", "5, 'DD ct', 1000, 200, 1",
                          "5, 'FDP ct', 1000, 200, 1"}));
    QCOMPARE(database.rows("select id from reagent where initVolume = 69"), QStringList());
}

/// Shows: PRO-5
void TestProfileV10Rows::keepsTheUsersAssays()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute(
        {"insert into assayTemplate(id, name) values(16, 'mine'), (50, 'PS'), (51, 'XA')",
         "insert into assayCalibration(id, assayTemplateId, name) values(30, 16, 'PC'),"
         " (31, 51, 'Anti-Xa(UFH)')",
         "insert into assayItem(id, assayTemplateId, name) values(40, 16, 'mine'), (74, 51, 'my')"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select id, name, displayName from assayTemplate where id > 15"),
             QStringList({"16, 'mine', 'mine'", "18, 'LAS', 'LAS'", "19, 'LAC', 'LAC'",
                          "20, 'APCR1', 'APCR1'", "21, 'APCR2', 'APCR2'", "50, 'PS', 'PS'",
                          "51, 'XA', 'XA'"}));
    QCOMPARE(database.rows("select id, name, caliX from assayCalibration"
                           " where name in ('PC', 'PS', 'Anti-Xa(UFH)', 'Anti-Xa(LMWH)')"
                           " order by name"),
             QStringList({"37, 'Anti-Xa(LMWH)', 'OD'", "31, 'Anti-Xa(UFH)', NULL", "30, 'PC', NULL",
                          "32, 'PS', 'T'"}));
    QCOMPARE(database.rows("select id, name, unit from assayItem where id in (40, 41, 73, 74)"),
             QStringList(
                 {"40, 'mine', NULL", "41, 'OD', 'OD'", "73, 'LMWH', 'U/ml'", "74, 'my', NULL"}));
}

void TestProfileV10Rows::setsCalibrations_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("row"); // method, funX, funY, dispX, dispY

    for (const QString &name :
         QStringList{"PT", "FIB", "II", "V", "VII", "X", "VIII", "IX", "XI", "XII"})
        QTest::addRow("%s", qUtf8Printable(name))
            << name << QStringList{"0, 'fx', 'fy', 'Log', 'Log'"};
    for (const QString &name : QStringList{"PT 演算 FIB", "PT calculate FIB"})
        QTest::addRow("%s", qUtf8Printable(name))
            << name << QStringList{"0, 'Log', 'Log', 'Log', 'Log'"};
    for (const QString &name : QStringList{"DD", "FDP", "AT"})
        QTest::addRow("%s", qUtf8Printable(name))
            << name << QStringList{"4, 'Log', 'Linear', 'Log', 'Log'"};
    QTest::newRow("ATIII") << "ATIII" << QStringList{"1, 'fx', 'fy', 'dx', 'Linear'"};
    QTest::newRow("the user's own") << "XIII" << QStringList{"9, 'fx', 'fy', 'dx', 'dy'"};
}

/// Shows: PRO-6
void TestProfileV10Rows::setsCalibrations()
{
    QFETCH(QString, name);
    QFETCH(QStringList, row);
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"delete from assayCalibration", "delete from curve",
                      QString("insert into assayCalibration(name, method, funX, funY, dispX, dispY)"
                              " values('%1', 9, 'fx', 'fy', 'dx', 'dy')")
                          .arg(name)});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select method, funX, funY, dispX, dispY from assayCalibration"
                           " where assayTemplateId isnull"),
             row);
}

void TestProfileV10Rows::insertsAMissingOdThreshold()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 7);
    database.execute({"delete from profile where name = 'analyst/odThreshold'"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select value from profile where name = 'analyst/odThreshold'"),
             QStringList{"'4,0.2; 7,0.02; 10,0.008'"});
}

void TestProfileV10Rows::addsNoSubmissionTime()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"delete from profile where name = 'patient/time'"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select value from profile where name = 'patient/time'"), QStringList());
}

void TestProfileV10Rows::raisesOnlyTheOldNormalLimit()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"update assayItem set upperNormal = 13.5 where id = 1",
                      "update assayItem set upperNormal = 14 where id in (3, 6)"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select id, upperNormal from assayItem where id in (1, 3, 6)"),
             QStringList({"1, 13.5", "3, 14.0", "6, 14.0"}));
}

void TestProfileV10Rows::renamesOnlyUnchangedReagentTypes()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"update reagentType set name = 'Plasma' where id = 1",
                      "update reagentType set name = 'Cleaning' where id = 4",
                      "update reagentType set name = 'Standard substance' where id = 2"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.table("reagentType"),
             QStringList({"0, 'Reagent'", "1, 'Plasma'", "2, 'Standard substance'", "3, 'Cleaner'",
                          "4, 'Cleaning'", "5, 'Standard'"}));
}

/// Shows: PRO-6
void TestProfileV10Rows::updatesExistingDataChecks()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 7);
    database.execute({"delete from dataCheck"});
    for (int id = 1; id <= 9; ++id)
        database.execute({QString("insert into dataCheck(assayTemplateId, reportItemFullName,"
                                  " markItemFullName, redilutionItemFullName, redilutionUpper, rep)"
                                  " values(%1, 'r', 'm', 'd', 7, 1)")
                              .arg(id)});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select assayTemplateId, report, reportItemFullName, mark,"
                           " markItemFullName, redilution, redilutionItemFullName,"
                           " redilutionUpper, rep from dataCheck order by assayTemplateId"),
             QStringList(
                 {"1, 0, 'r', 1, 'PT.T', 0, 'd', 7.0, 1", "2, 0, 'r', 1, 'FIB.P', 0, 'd', 7.0, 1",
                  "3, 0, 'r', 1, 'APTT.T', 0, 'd', 7.0, 1", "4, 0, 'r', 1, 'TT.T', 0, 'd', 7.0, 1",
                  "5, 1, 'DD.P', 1, 'DD.P', 1, 'DD.P', 10.0, 1",
                  "6, 1, 'FDP.P', 1, 'FDP.P', 0, 'd', 7.0, 1",
                  "7, 1, 'ATIII.P', 1, 'ATIII.P', 0, 'd', 7.0, 1",
                  "8, 0, 'r', 0, 'm', 0, 'd', 7.0, 1", "9, 0, 'r', 0, 'm', 0, 'd', 7.0, 1"}));
}

/// Shows: PRO-18
void TestProfileV10Rows::removesTheProgramOfAtiii()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 9);
    database.execute({"insert into profile values('program/ATIII/steps/1', 1), ('ATIII/mix/x', 1),"
                      " ('program/ATIIIplus/volume', 1), ('ATIII/mixing', 1)"});
    const MessageRecorder recorder;

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select name, value from profile where name like '%ATIII%'"
                           " order by name"),
             QStringList({"'ATIII/dilution', '1/15'", "'ATIII/incubator/duration', '90'",
                          "'ATIII/kinetic/end', '55'", "'ATIII/kinetic/start', '5'",
                          "'ATIII/max_clot_time', '55'", "'ATIII/mixing', 1",
                          "'ATIII/report/dilution', '1/15'", "'program/ATIIIplus/volume', 1"}));
}

/// Shows: PRO-7
void TestProfileV10Rows::deletesAllOfACurveAndNoMore()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    QVERIFY(runStep(database));
    database.execute({"insert into curveInfo values(1, 'a', 1), (2, 'a', 2)",
                      "insert into currentCurve(name, curveId) values('other', 1)"});

    database.execute({"delete from curve where id = 1"});

    QCOMPARE(database.rows("select distinct curveId from curvePoint order by 1"),
             QStringList({"2", "3", "4", "5"}));
    QCOMPARE(database.rows("select curveId from curveVariable"), QStringList{"2"});
    QCOMPARE(database.rows("select curveId from curveReagent"), QStringList{"2"});
    QCOMPARE(database.rows("select curveId from curveInfo"), QStringList{"2"});
    QCOMPARE(database.rows("select curveId from currentCurve order by 1"),
             QStringList({"2", "3", "4", "5", "7"}));
}

void TestProfileV10Rows::deletesAllOfATemplateAndNoMore()
{
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    QVERIFY(runStep(database));

    database.execute({"delete from assayTemplate where id = 1"});

    QCOMPARE(database.rows("select id from variable"), QStringList{"3"});
    QCOMPARE(database.rows("select id from assayItem where id < 10 order by id"),
             QStringList({"6", "7", "8", "9"}));
    QCOMPARE(database.rows("select id from assayItem where id > 74"), QStringList());
    QCOMPARE(database.rows("select assayTemplateId from dataCheck where assayTemplateId notnull"
                           " order by 1"),
             QStringList({"2", "3", "4", "5", "6", "7", "8"}));
}

/// Shows: PRO-17
void TestProfileV10Rows::translatesLabels()
{
    const Translation english("coagulation::UpdateProfile",
                              {{"梯度1", "Gradient 1"},
                               {"梯度2", "Gradient 2"},
                               {"梯度3", "Gradient 3"},
                               {"梯度4", "Gradient 4"},
                               {"样本类型", "Sample type"},
                               {"初始量[ul]", "Initial volume[ul]"},
                               {"报警限[ul]", "Alarm limit[ul]"},
                               {"中断限[ul]", "Interrupt limit[ul]"},
                               {"住院号", "In-patient number"},
                               {"备注", "Remark"},
                               {"打印时间", "Print time"},
                               {"传输时间", "Transfer time"},
                               {"活化部分凝血活酶时间", "Activated PTT"},
                               {"送检时间", "Submission time"},
                               {"采样时间", "Sampling time"},
                               {"测试时间", "Test time"},
                               {"审核时间", "Review time"}});
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"delete from profile where name = 'patient/hospitalNo'"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(
        database.rows("select name, value from profile where name = 'dilution'"
                      " or name like 'patient/%' or name like 'reagent/%' order by name"),
        QStringList({"'dilution', 'Gradient 1;1/5;1/10;1/20;1/30,"
                     "Gradient 2;1/5;1/10;1/20;1/30;1/40,Gradient 3;1/1;1/2;1/4;1/8,"
                     "Gradient 4;1/1;3/4;1/2;1/4'",
                     "'patient/hospitalNo', 'In-patient number'", "'patient/memo', 'Remark'",
                     "'patient/name', '姓名'", "'patient/outputTime', 'Transfer time'",
                     "'patient/printTime', 'Print time'", "'patient/sampleTime', 'Sampling time'",
                     "'patient/sampleType', 'Sample type'", "'patient/testTime', 'Test time'",
                     "'patient/time', 'Submission time'", "'patient/validateTime', 'Review time'",
                     "'reagent/alarmLimit', 'Alarm limit[ul]'",
                     "'reagent/initVolume', 'Initial volume[ul]'",
                     "'reagent/interruptLimit', 'Interrupt limit[ul]'"}));
    QCOMPARE(database.rows("select code from assayItem where id = 9"),
             QStringList{"'Activated PTT'"});
    // zh is not translated: the Chinese codes are there
    QCOMPARE(database.rows("select code from assayItem where id in (2, 70)"),
             QStringList({"'吸光度(PT)'", "'时间(抗Xa)'"}));
}

/// Shows: PRO-17
void TestProfileV10Rows::writesNoChineseInEnglish()
{
    const Translation english("coagulation::UpdateProfile", {{"zh", "en"}, {"备注", "Remark"}});
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(
        database.rows("select abbr, code from assayItem where id < 40 or id >= 70 order by id"),
        QStringList({"'PT-S', '凝血酶原时间'",
                     "'PT-OD', 'Absorbency'",
                     "'PT-%', 'Activated degree'",
                     "'PTR', 'PT ratio'",
                     "'PT-INR', 'INR'",
                     "'FIB-S', 'FIB time'",
                     "'FIB-OD', 'Absorbency'",
                     "'FIB', '纤维蛋白原'",
                     "'APTT', '活化部分凝血活酶时间'",
                     "'APTTR', 'APTT ratio'",
                     "'TT', '凝血酶时间'",
                     "'DD-T', 'DD time'",
                     "'DD-OD', 'Absorbency'",
                     "'DD', 'D-二聚体'",
                     "'FDP-T', 'FDP time'",
                     "'FDP-OD', 'Absorbency'",
                     "'FDP', 'FDP'",
                     "'AT-T', 'AT time'",
                     "'AT-OD', 'Absorbency'",
                     "'AT-%', 'Antithrombin'",
                     "'II-S', 'Factor II'",
                     "'II-%', 'Factor II'",
                     "'XA-T', 'Anti-Xa time'",
                     "'XA-OD', 'Absorbency'",
                     "'XA-UFH', 'Anti-Xa UFH'",
                     "'XA-LMWH', 'Anti-Xa LMWH'",
                     "'XA-RX', 'Anti-Xa Rivaroxaban'",
                     "'my.PT', 'site''s own'"}));
    QCOMPARE(database.rows("select value from profile where name = 'patient/memo'"),
             QStringList{"'Remark'"});
}

void TestProfileV10Rows::asksForTheLanguage_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QStringList>("codes");

    const QStringList chinese{"'吸光度(PT)'", "'吸光度(抗Xa)'"};
    const QStringList other{"'Absorbency'", "'Absorbency'"};
    QTest::newRow("ZH_tw") << "ZH_tw" << chinese;
    QTest::newRow("zh-Hans") << "zh-Hans" << chinese;
    QTest::newRow("Z") << "Z" << other;
    QTest::newRow("en_zh") << "en_zh" << other;
}

void TestProfileV10Rows::asksForTheLanguage()
{
    QFETCH(QString, language);
    QFETCH(QStringList, codes);
    const Translation translation("coagulation::UpdateProfile", {{"zh", language}});
    const TestDatabase database("profile.db");
    makeProfileAt(database, 7);

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select code from assayItem where abbr in ('PT-OD', 'XA-OD')"), codes);
}

void TestProfileV10Rows::asksForTheLanguageInItsOwnContext()
{
    const Translation ofTheEngine("coagulation::UpdateBase", {{"zh", "en"}, {"备注", "Remark"}});
    const TestDatabase database("profile.db");
    makeProfileAt(database, 7);

    const bool passed = runStep(database);

    QVERIFY(passed);
    QCOMPARE(database.rows("select code from assayItem where abbr in ('PT-OD', 'XA-OD')"),
             QStringList({"'吸光度(PT)'", "'吸光度(抗Xa)'"}));
    QCOMPARE(database.rows("select value from profile where name = 'patient/memo'"),
             QStringList{"'备注'"});
}

void TestProfileV10Rows::storesLabelsLetterForLetter_data()
{
    QTest::addColumn<QString>("label");

    QTest::newRow("an apostrophe") << "patient's remark";
    QTest::newRow("apostrophes at the ends") << "'remark'";
    QTest::newRow("place markers") << "%1 %2 %3 %4 %5";
    QTest::newRow("a bound value's name") << ":name ? @x $y";
    QTest::newRow("separators") << "a;b,c\"d\" -- e";
}

void TestProfileV10Rows::storesLabelsLetterForLetter()
{
    QFETCH(QString, label);
    QMap<QString, QString> texts;
    for (const QString &text :
         QStringList{"梯度1", "梯度2", "梯度3", "梯度4", "样本类型", "初始量[ul]", "报警限[ul]",
                     "中断限[ul]", "住院号", "备注", "打印时间", "传输时间", "活化部分凝血活酶时间",
                     "送检时间", "采样时间", "测试时间", "审核时间"})
        texts.insert(text, label);
    const Translation translation("coagulation::UpdateProfile", texts);
    const TestDatabase database("profile.db");
    makeProfileAt(database, 0);
    database.execute({"delete from profile where name = 'patient/hospitalNo'"});

    const bool passed = runStep(database);

    QVERIFY(passed);
    const QString quoted = label.replace('\'', "''");
    const QString stored = '\'' + quoted + '\'';
    QCOMPARE(database.rows("select value from profile where name in ('patient/sampleType',"
                           " 'reagent/initVolume', 'reagent/alarmLimit',"
                           " 'reagent/interruptLimit', 'patient/hospitalNo', 'patient/memo',"
                           " 'patient/printTime', 'patient/outputTime', 'patient/time',"
                           " 'patient/sampleTime', 'patient/testTime', 'patient/validateTime')"),
             QStringList(12, stored));
    QCOMPARE(database.rows("select code from assayItem where id = 9"), QStringList{stored});
    QCOMPARE(database.rows("select value from profile where name = 'dilution'").constFirst(),
             '\'' + quoted + ";1/5;1/10;1/20;1/30," + quoted + ";1/5;1/10;1/20;1/30;1/40," + quoted
                 + ";1/1;1/2;1/4;1/8," + quoted + ";1/1;3/4;1/2;1/4'");
}

QTEST_GUILESS_MAIN(TestProfileV10Rows)
#include "tst_profile_v10_rows.moc"
