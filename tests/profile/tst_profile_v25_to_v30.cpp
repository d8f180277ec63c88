// SPDX-License-Identifier: MIT
/// The steps 25 to 30 of the profile database, each on the sample at the version before it.

#include "messagerecorder.h"
#include "profilesteps.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

// clang-format off
const QStringList reagentsOf26{
    "NULL, 0, 'dPT1', 2000, 200, 3",
    "NULL, 0, 'dPT2', 2000, 200, 3",
    "NULL, 2, 'Buffer(dPT1)', 6500, 200, 6",
    "NULL, 2, 'Buffer(dPT2)', 6500, 200, 6",
    "NULL, 5, 'dPT1 ct', 1000, 200, 1",
    "NULL, 5, 'dPT2 ct', 1000, 200, 1",
};

const QStringList templatesOf26{
    "42, 'dPT1', 'dPT1', NULL, 420, 'T', 'P', 'Log', 'Log'",
    "43, 'dPT2', 'dPT2', NULL, 430, 'T', 'P', 'Log', 'Log'",
};

const QStringList calibrationsOf26{
    "30, 42, 'dPT1', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "31, 43, 'dPT2', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
};

const QStringList variablesOf26{
    "42, 'normal', NULL",
    "43, 'normal', NULL",
};

const QStringList itemsOf26 = QStringList{
    "270, 42, 'T', 0, 's', NULL, 1, 1, 'dPT1-S', 'dPT1 Screening', RANGES, 0.0, 1000000000.0, 1",
    "271, 42, 'OD', 3, 'OD', NULL, -1, 2, 'dPT1-OD', 'Absorbency', RANGES, -5.0, 10.0, 0",
    "272, 42, 'P', 1, '%', NULL, 2, 3, 'dPT1-%', 'dPT1', RANGES, 0.0, 1000000000.0, 0",
    "273, 42, 'R', 2, NULL, 'T/normal', 2, 4, 'dPT1R', 'Screen ratio', RANGES, 0.0, 1000000000.0, 1",
    "280, 43, 'T', 0, 's', NULL, 1, 1, 'dPT2-S', 'dPT2 Confirm', RANGES, 0.0, 1000000000.0, 1",
    "281, 43, 'OD', 3, 'OD', NULL, -1, 2, 'dPT2-OD', 'Absorbency', RANGES, -5.0, 10.0, 0",
    "282, 43, 'P', 1, '%', NULL, 2, 3, 'dPT2-%', 'dPT2', RANGES, 0.0, 1000000000.0, 0",
    "283, 43, 'R', 2, NULL, 'T/normal', 2, 4, 'dPT2R', 'Confirm ratio', RANGES, 0.0, 1000000000.0, 1",
    "284, 43, 'NLR', 2, NULL, 'DPT1.R/R', 2, 5, 'dPT2-NLR', 'Normalized ratio', RANGES, 0.0, 1000000000.0, 1",
}.replaceInStrings("RANGES", "0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0");

const QStringList statementsOf26{
    "INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 0, 'dPT1', 2000, 200, 3)",
    "INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 0, 'dPT2', 2000, 200, 3)",
    "INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 2, 'Buffer(dPT1)', 6500, 200, 6)",
    "INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 2, 'Buffer(dPT2)', 6500, 200, 6)",
    "INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 5, 'dPT1 ct', 1000, 200, 1)",
    "INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 5, 'dPT2 ct', 1000, 200, 1)",
    "INSERT INTO assayTemplate VALUES(42, 'dPT1', 'dPT1', NULL, 420, 'T', 'P', 'Log', 'Log')",
    "INSERT INTO assayTemplate VALUES(43, 'dPT2', 'dPT2', NULL, 430, 'T', 'P', 'Log', 'Log')",
    "INSERT INTO assayCalibration VALUES(30, 42, 'dPT1', 0, null, 'T', 'P', 'Log', 'Log', 'Log', 'Log')",
    "INSERT INTO assayCalibration VALUES(31, 43, 'dPT2', 0, null, 'T', 'P', 'Log', 'Log', 'Log', 'Log')",
    "INSERT INTO variable VALUES(null, 42, 'normal', null)",
    "INSERT INTO variable VALUES(null, 43, 'normal', null)",
    "INSERT INTO assayItem VALUES(270, 42, 'T', 0, 's', null, 1, 1, 'dPT1-S', 'dPT1 Screening', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 1)",
    "INSERT INTO assayItem VALUES(271, 42, 'OD',",
    "INSERT INTO assayItem VALUES(272, 42, 'P',",
    "INSERT INTO assayItem VALUES(273, 42, 'R',",
    "INSERT INTO assayItem VALUES(280, 43, 'T',",
    "INSERT INTO assayItem VALUES(281, 43, 'OD',",
    "INSERT INTO assayItem VALUES(282, 43, 'P',",
    "INSERT INTO assayItem VALUES(283, 43, 'R',",
    "INSERT INTO assayItem VALUES(284, 43, 'NLR',",
};

const QStringList reagentsOf30{
    "NULL, 2, 'R1(Plg)', 6500, 200, 6",
    "NULL, 5, 'Plg ct', 1000, 200, 1",
    "NULL, 5, 'vWF ct', 1000, 200, 1",
};

const QStringList calibrationsOf30{
    "32, 26, 'Plg', 1, NULL, 'OD', 'P', 'Linear', 'Linear', 'Linear', 'Linear'",
    "33, 24, 'vWF', 4, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'",
};

const QStringList settingsOf30{
    "'Plg/kinetic/start', 5",
    "'Plg/kinetic/end', 55",
    "'Plg/max_clot_time', 55",
    "'Plg/dilution', '1/15'",
    "'Plg/redilution/lower', '1/8'",
    "'Plg/redilution/upper', '1/30'",
    "'Plg/incubator/duration', '90'",
    "'Plg/report/dilution', '1/15'",
    "'Plg/incubator/duration/factory', '90'",
    "'program/vWF/r3/mix/times', 3",
    "'specialValue/vWF/P', 0.1",
    "'vWF/priority', 10",
    "'vWF/twopoints/p1/start', 40",
    "'vWF/twopoints/p1/end', 60",
    "'vWF/twopoints/p2/start', 290",
    "'vWF/max_clot_time', 300",
};

const QStringList dataChecksOf30{
    "26, 1, 'Plg.P', 0.0, 0.0, 1, 'Plg.P', 0.0, 0.0, 0, NULL, 0.0, 0.0, 0, NULL, 0.0, 0.0, 0, 0.0",
    "24, 1, 'vWF.P', 0.0, 0.0, 1, 'vWF.P', 0.0, 0.0, 0, NULL, 0.0, 0.0, 0, NULL, 0.0, 0.0, 0, 0.0",
};

const QStringList reagentStatementsOf30{
    "insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'R1(Plg)', 6500, 200, 6)",
    "insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'Plg ct', 1000, 200, 1)",
    "insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'vWF ct', 1000, 200, 1)",
};

const QStringList calibrationStatementsOf30{
    "insert or ignore into assayCalibration values(32, 26, 'Plg', 1, null, 'OD', 'P', 'Linear', 'Linear', 'Linear', 'Linear')",
    "insert or ignore into assayCalibration values(33, 24, 'vWF', 4, null, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log')",
};

const QStringList dataCheckStatementsOf30{
    "insert or ignore into dataCheck (assayTemplateId, report, reportItemFullName, reportLower, reportUpper, mark, markItemFullName, markLower, markUpper, redilution, redilutionItemFullName, redilutionLower, redilutionUpper, repeat, repeatItemFullName, repeatLower, repeatUpper, rep, repDiff) values (26, 1, 'Plg.P', 0, 0, 1, 'Plg.P', 0, 0, 0, null, 0, 0, 0, null, 0, 0, 0, 0)",
    "insert or ignore into dataCheck (assayTemplateId, report, reportItemFullName, reportLower, reportUpper, mark, markItemFullName, markLower, markUpper, redilution, redilutionItemFullName, redilutionLower, redilutionUpper, repeat, repeatItemFullName, repeatLower, repeatUpper, rep, repDiff) values (24, 1, 'vWF.P', 0, 0, 1, 'vWF.P', 0, 0, 0, null, 0, 0, 0, null, 0, 0, 0, 0)",
};
// clang-format on

QStringList settingStatementsOf30()
{
    QStringList statements;
    for (const QString &row : settingsOf30)
        statements << "insert or ignore into profile values (" + row + ')';
    return statements;
}

/// Changes a content of version 29 as step 30 does.
void becomeVersion30(DatabaseContent &content)
{
    content.edit("reagent", "'vWF'", "'vWF'", "'R2(vWF)'");
    content.edit("reagent", "'Plg'", "'Plg'", "'R2(Plg)'");
    content.edit("reagent", "'Buffer(vWF)'", "'Buffer(vWF)'", "'R1(vWF)'");
    content.insertNumbered("reagent", reagentsOf30);
    content.replace("assayTemplate", "26, 'Plg', 'Plg', NULL, 260, 'T', 'P', 'Log', 'Log'",
                    "26, 'Plg', 'Plg', NULL, 260, 'OD', 'P', 'Linear', 'Linear'");
    content.insert("assayCalibration", calibrationsOf30);
    content.append("profile", settingsOf30).append("dataCheck", dataChecksOf30);
}

} // namespace

class TestProfileV25ToV30 : public QObject {
    Q_OBJECT

private slots:
    void init();

    void v25GivesIdsToLupusReagents();
    void v25PassesWithoutLupusReagents();
    void v25TakesAnIdThatIsATextOfAnother();
    void v26AddsTwoDilutePtAssays();
    void v26WarnsOfEveryRowThatExists();
    void v26AddsTheRowsThatCanBeAdded();
    void v27CorrectsTheRatioOfDilutePt_data();
    void v27CorrectsTheRatioOfDilutePt();
    void v28AddsTheFactoryDuration();
    void v29GivesIdsToAntiXaReagents();
    void v29PassesWithoutAntiXaReagents();
    void v29TakesAnIdThatIsANumberOfAnother();
    void v30RenamesAndExtendsVwfAndPlasminogen();
    void v30PassesWithoutTheReagents();
    void v30RenamesReagentsOfTheTypeOnly();
    void v30KeepsRowsThatExist();
    void v30PassesWithoutTemplate26();
    void v30AddsTheRowsThatCanBeAdded();

    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void ignoresAndWarnsOnce_data();
    void ignoresAndWarnsOnce();
};

void TestProfileV25ToV30::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

/// Shows: PRO-14
void TestProfileV25ToV30::v25GivesIdsToLupusReagents()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 24);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v25);

    QVERIFY(passed);
    expected.edit("reagent", "'LAC'", "NULL, 0, 'LAC'", "119, 0, 'LAC'");
    expected.edit("reagent", "'LAS'", "NULL, 0, 'LAS'", "120, 0, 'LAS'");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV25ToV30::v25PassesWithoutLupusReagents()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 24);
    database.execute({"delete from reagent where name in ('LAC', 'LAS')"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v25);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV25ToV30::v25TakesAnIdThatIsATextOfAnother()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 24);
    database.execute({"update reagent set reagentId = '119' where name = 'PT'",
                      "update reagent set reagentId = 'mine' where name = 'LAC'"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v25);

    QVERIFY(passed);
    QCOMPARE(database.rows("select name, reagentId from reagent"
                           " where name in ('PT', 'LAC', 'LAS') order by name"),
             QStringList({"'LAC', 119", "'LAS', 120", "'PT', '119'"}));
}

/// Shows: PRO-14
void TestProfileV25ToV30::v26AddsTwoDilutePtAssays()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 25);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v26);

    QVERIFY(passed);
    expected.insertNumbered("reagent", reagentsOf26).insert("assayTemplate", templatesOf26);
    expected.insert("assayCalibration", calibrationsOf26);
    expected.insertNumbered("variable", variablesOf26).insert("assayItem", itemsOf26);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV25ToV30::v26WarnsOfEveryRowThatExists()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 26);
    database.execute({"update assayItem set code = 'mine' where id >= 270"});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v26);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
    QCOMPARE(statementsOf26.size(), 21);
    compareFailures(recorder, statementsOf26);
}

void TestProfileV25ToV30::v26AddsTheRowsThatCanBeAdded()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 25);
    database.execute({"insert into reagent(name) values('dPT1')",
                      "insert into assayTemplate(id, name, displayName) values(500, 'a', 'dPT2')",
                      "insert into assayCalibration(id, name) values(31, 'mine')",
                      "insert into variable(assayTemplateId, name, value) values(42, 'normal', 12)",
                      "insert into assayItem(id, name) values(284, 'mine')"});
    DatabaseContent expected(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v26);

    QVERIFY(passed);
    expected.insertNumbered("reagent", reagentsOf26.mid(1));
    expected.insert("assayTemplate", templatesOf26.mid(0, 1));
    expected.insert("assayCalibration", calibrationsOf26.mid(0, 1));
    expected.insertNumbered("variable", variablesOf26.mid(1));
    expected.insert("assayItem", itemsOf26.mid(0, 8));
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {statementsOf26.at(0), statementsOf26.at(7), statementsOf26.at(9),
                     statementsOf26.at(10), statementsOf26.at(20)});
}

void TestProfileV25ToV30::v27CorrectsTheRatioOfDilutePt_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("expr");

    QTest::newRow("of step 26") << QStringList() << QStringList{"'dPT1.R/R'"};
    QTest::newRow("the user's") << QStringList{"update assayItem set expr = 'R' where id = 284"}
                                << QStringList{"'dPT1.R/R'"};
    QTest::newRow("without one") << QStringList{"delete from assayItem where id = 284"}
                                 << QStringList();
}

/// Shows: PRO-14
void TestProfileV25ToV30::v27CorrectsTheRatioOfDilutePt()
{
    QFETCH(QStringList, before);
    QFETCH(QStringList, expr);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 26);
    database.execute(before);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v27);

    QVERIFY(passed);
    const QString query = "select expr from assayItem where id = 284";
    QCOMPARE(database.rows(query), expr);
    // and nothing else
    const QStringList others = expected.rows("assayItem").filter(QRegularExpression("^(?!284,)"));
    QCOMPARE(database.rows("select * from assayItem where id <> 284"), others);
    const DatabaseContent content(database);
    expected.take("assayItem", content);
    QCOMPARE(content.lines(), expected.lines());
}

/// Shows: PRO-15
void TestProfileV25ToV30::v28AddsTheFactoryDuration()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 27);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v28);

    QVERIFY(passed);
    expected.append("profile", {"'ATIII/incubator/duration/factory', '90'"});
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

/// Shows: PRO-15
void TestProfileV25ToV30::v29GivesIdsToAntiXaReagents()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 28);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v29);

    QVERIFY(passed);
    expected.edit("reagent", "'R1(XA)'", "NULL, 0, 'R1(XA)'", "'121', 0, 'R1(XA)'");
    expected.edit("reagent", "'R2(XA)'", "NULL, 0, 'R2(XA)'", "'122', 0, 'R2(XA)'");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV25ToV30::v29PassesWithoutAntiXaReagents()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 28);
    database.execute({"delete from reagent where name like '%(XA)'"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v29);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV25ToV30::v29TakesAnIdThatIsANumberOfAnother()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 28);
    database.execute({"update reagent set reagentId = 121 where name = 'PT'",
                      "update reagent set reagentId = 'mine' where name = 'R1(XA)'"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v29);

    QVERIFY(passed);
    QCOMPARE(database.rows("select name, reagentId from reagent"
                           " where name in ('PT', 'R1(XA)', 'R2(XA)') order by name"),
             QStringList({"'PT', 121", "'R1(XA)', '121'", "'R2(XA)', '122'"}));
}

/// Shows: PRO-15
void TestProfileV25ToV30::v30RenamesAndExtendsVwfAndPlasminogen()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 29);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v30);

    QVERIFY(passed);
    becomeVersion30(expected);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV25ToV30::v30PassesWithoutTheReagents()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 29);
    DatabaseContent expected(database);
    database.execute({"delete from reagent where name in ('vWF', 'Plg', 'Buffer(vWF)')"});
    const DatabaseContent without(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v30);

    QVERIFY(passed);
    becomeVersion30(expected);
    expected.take("reagent", without).insertNumbered("reagent", reagentsOf30);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV25ToV30::v30RenamesReagentsOfTheTypeOnly()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 29);
    database.execute({"update reagent set type = 1 where name in ('vWF', 'Plg')",
                      "update reagent set type = 0 where name = 'Buffer(vWF)'"});
    const QString names = "select name from reagent where name like '%vWF%' or name like '%Plg%'"
                          " order by id";

    const bool passed = runProfileStep(database, &UpdateProfile::update_v30);

    QVERIFY(passed);
    QCOMPARE(database.rows(names),
             QStringList({"'vWF'", "'Plg'", "'Buffer(vWF)'", "'Buffer(Plg)'", "'R1(Plg)'",
                          "'Plg ct'", "'vWF ct'"}));
}

/// Shows: PRO-16
void TestProfileV25ToV30::v30KeepsRowsThatExist()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 30);
    database.execute(
        {"update reagent set type = 7, initVolume = 5 where name in ('R1(Plg)', 'Plg ct', 'vWF ct')",
         "update assayCalibration set condition = 'mine', method = 7 where id in (32, 33)",
         "update profile set value = 'mine' where rowid > (select max(rowid) - 16 from profile)",
         "update dataCheck set report = 0, reportUpper = 5 where assayTemplateId in (24, 26)"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v30);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV25ToV30::v30PassesWithoutTemplate26()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 29);
    database.execute({"delete from assayTemplate where id = 26"});
    const QStringList templates = database.table("assayTemplate");

    const bool passed = runProfileStep(database, &UpdateProfile::update_v30);

    QVERIFY(passed);
    QCOMPARE(database.table("assayTemplate"), templates);
    QCOMPARE(database.rows("select * from assayCalibration where id >= 32"), calibrationsOf30);
}

void TestProfileV25ToV30::v30AddsTheRowsThatCanBeAdded()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 29);
    DatabaseContent expected(database);
    database.execute({refuseInsert("reagent", "new.name = 'R1(Plg)'"),
                      refuseInsert("assayCalibration", "new.id = 32"),
                      refuseInsert("profile", "new.name = 'Plg/dilution'"),
                      refuseInsert("dataCheck", "new.assayTemplateId = 26")});
    const DatabaseContent before(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v30);

    QVERIFY(passed);
    becomeVersion30(expected);
    expected.takeSchema(before).remove("assayCalibration", calibrationsOf30.at(0));
    expected.remove("profile", settingsOf30.at(3)).remove("dataCheck", dataChecksOf30.at(0));
    QStringList &reagents = expected.rows("reagent");
    const QString firstId = reagents.at(reagents.size() - 3).section(", ", 0, 0);
    reagents.resize(reagents.size() - 3);
    expected.insertNumbered("reagent", reagentsOf30.mid(1));
    QVERIFY(reagents.constLast().startsWith(QString::number(firstId.toInt() + 1)));
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {reagentStatementsOf30.at(0), calibrationStatementsOf30.at(0),
                     settingStatementsOf30().at(3), dataCheckStatementsOf30.at(0)});
}

void TestProfileV25ToV30::failsAndKeepsTheFile_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order

    const QString lac = "UPDATE reagent SET reagentId=119 WHERE name='LAC'";
    const QString las = "UPDATE reagent SET reagentId=120 WHERE name='LAS'";
    QTest::newRow("25: 119 is taken")
        << 25 << 24 << QStringList{"update reagent set reagentId = 119 where name = 'PT'"}
        << QStringList{lac};
    QTest::newRow("25: 120 is taken, from version 10")
        << 25 << 10 << QStringList{"update reagent set reagentId = 120 where name = 'PT'"}
        << QStringList{las};
    QTest::newRow("25: reagent is missing")
        << 25 << 24 << QStringList{"drop table reagent"} << QStringList{lac};

    const QString setting = "insert into profile values ('ATIII/incubator/duration/factory', '90')";
    QTest::newRow("28: the key exists")
        << 28 << 27
        << QStringList{"insert into profile values('ATIII/incubator/duration/factory', '90')"}
        << QStringList{setting};
    QTest::newRow("28: the key exists, from version 10")
        << 28 << 10
        << QStringList{"insert into profile values('ATIII/incubator/duration/factory', null)"}
        << QStringList{setting};
    QTest::newRow("28: profile is missing")
        << 28 << 27 << QStringList{"drop table profile"} << QStringList{setting};

    const QString r1 = "update reagent set reagentId='121' where name='R1(XA)'";
    const QString r2 = "update reagent set reagentId='122' where name='R2(XA)'";
    QTest::newRow("29: '121' is taken, from version 10")
        << 29 << 10 << QStringList{"update reagent set reagentId = '121' where name = 'PT'"}
        << QStringList{r1};
    QTest::newRow("29: '122' is taken")
        << 29 << 28 << QStringList{"update reagent set reagentId = '122' where name = 'PT'"}
        << QStringList{r2};
    QTest::newRow("29: reagent is missing")
        << 29 << 28 << QStringList{"drop table reagent"} << QStringList{r1};

    const QString vWF = "UPDATE reagent SET name='R2(vWF)' WHERE name='vWF' AND type=0";
    const QString plg = "UPDATE reagent SET name='R2(Plg)' WHERE name='Plg' AND type=0";
    const QString buffer = "UPDATE reagent SET name='R1(vWF)' WHERE name='Buffer(vWF)' AND type=2";
    QTest::newRow("30: R2(vWF) exists, from version 10")
        << 30 << 10 << QStringList{"insert into reagent(name) values('R2(vWF)')"}
        << QStringList{vWF};
    QTest::newRow("30: R2(Plg) exists")
        << 30 << 29 << QStringList{"insert into reagent(name) values('R2(Plg)')"}
        << QStringList{plg};
    QTest::newRow("30: R1(vWF) exists")
        << 30 << 29 << QStringList{"insert into reagent(name) values('R1(vWF)')"}
        << QStringList{buffer};
    QTest::newRow("30: reagent is missing")
        << 30 << 29 << QStringList{"drop table reagent"} << QStringList{vWF};
    const QString axes =
        "UPDATE assayTemplate SET caliX='OD', caliY='P', funX='Linear', funY='Linear' WHERE id=26";
    QTest::newRow("30: the axes are refused")
        << 30 << 29 << QStringList{refuseUpdate("assayTemplate")} << QStringList{axes};
    QTest::newRow("30: the axes are refused, after ignored reagents")
        << 30 << 29 << QStringList{refuseUpdate("assayTemplate"), refuseInsert("reagent")}
        << reagentStatementsOf30 + QStringList{axes};
    QTest::newRow("30: assayTemplate is missing")
        << 30 << 29 << QStringList{"drop table assayTemplate"} << QStringList{axes};
}

void TestProfileV25ToV30::failsAndKeepsTheFile()
{
    QFETCH(int, step);
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);

    verifyStepFails(step, stored, obstacles, failing);
}

void TestProfileV25ToV30::ignoresAndWarnsOnce_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order
    QTest::addColumn<QStringList>("kept");    // tables

    QTest::newRow("26: all is refused")
        << 26
        << QStringList{refuseInsert("reagent"), refuseInsert("assayTemplate"),
                       refuseInsert("assayCalibration"), refuseInsert("variable"),
                       refuseInsert("assayItem")}
        << statementsOf26
        << QStringList{"reagent", "assayTemplate", "assayCalibration", "variable", "assayItem"};
    QTest::newRow("26: reagent is missing") << 26 << QStringList{"drop table reagent"}
                                            << statementsOf26.mid(0, 6) << QStringList{"reagent"};
    QTest::newRow("26: assayTemplate is missing")
        << 26 << QStringList{"drop table assayTemplate"} << statementsOf26.mid(6, 2)
        << QStringList{"assayTemplate"};
    QTest::newRow("26: assayCalibration is missing")
        << 26 << QStringList{"drop table assayCalibration"} << statementsOf26.mid(8, 2)
        << QStringList{"assayCalibration"};
    QTest::newRow("26: variable is missing")
        << 26 << QStringList{"drop table variable"} << statementsOf26.mid(10, 2)
        << QStringList{"variable"};
    QTest::newRow("26: assayItem is missing") << 26 << QStringList{"drop table assayItem"}
                                              << statementsOf26.mid(12) << QStringList{"assayItem"};

    const QString ratio = "UPDATE assayItem SET expr='dPT1.R/R' WHERE id=284";
    QTest::newRow("27: the expression is refused")
        << 27 << QStringList{refuseUpdate("assayItem")} << QStringList{ratio}
        << QStringList{"assayItem"};
    QTest::newRow("27: assayItem is missing") << 27 << QStringList{"drop table assayItem"}
                                              << QStringList{ratio} << QStringList{"assayItem"};

    QTest::newRow("30: calibrations, settings and data checks are refused")
        << 30
        << QStringList{refuseInsert("assayCalibration"), refuseInsert("profile"),
                       refuseInsert("dataCheck")}
        << calibrationStatementsOf30 + settingStatementsOf30() + dataCheckStatementsOf30
        << QStringList{"assayCalibration", "profile", "dataCheck"};
    QTest::newRow("30: assayCalibration is missing")
        << 30 << QStringList{"drop table assayCalibration"} << calibrationStatementsOf30
        << QStringList{"assayCalibration"};
    QTest::newRow("30: profile is missing") << 30 << QStringList{"drop table profile"}
                                            << settingStatementsOf30() << QStringList{"profile"};
    QTest::newRow("30: dataCheck is missing")
        << 30 << QStringList{"drop table dataCheck"} << dataCheckStatementsOf30
        << QStringList{"dataCheck"};
}

void TestProfileV25ToV30::ignoresAndWarnsOnce()
{
    QFETCH(int, step);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);
    QFETCH(QStringList, kept);

    verifyStepIgnores(step, obstacles, failing, kept);
}

QTEST_GUILESS_MAIN(TestProfileV25ToV30)
#include "tst_profile_v25_to_v30.moc"
