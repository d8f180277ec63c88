// SPDX-License-Identifier: MIT
/// The steps 11 to 16 of the profile database, each on the sample at the version before it.

#include "messagerecorder.h"
#include "profilesteps.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

const QString noInstrument = "{00000000-0000-0000-0000-000000000000}";

/// \return rows of items, which stand here without their eight zeros
QStringList withRanges(QStringList rows)
{
    return rows.replaceInStrings("RANGES", "0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0");
}

// clang-format off
const QStringList lupusVariables{
    "18, 'RPS', NULL",
    "19, 'RPC', NULL",
};

const QStringList lupusItems{
    "53, 18, 'R', 2, NULL, 'T/RPS', 2, 4, 'LASR', 'Screen ratio', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "58, 19, 'R', 2, NULL, 'T/RPC', 2, 4, 'LACR', 'Confirm ratio', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "59, 19, 'NLR', 2, NULL, 'LAS.R/R', 2, 5, 'LA-NLR', 'Normalized ratio', 0.0, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
};

const QStringList lupusStatements{
    "update assayItem set code='Lupus Anticoagulant Screening' where code='Lups Anticoagulant Screening'",
    "update assayItem set code='Lupus Anticoagulant Confirm' where code='Lups Anticoagulant Confirm'",
    "insert or ignore into variable values(null, 18, 'RPS', null)",
    "insert or ignore into variable values(null, 19, 'RPC', null)",
    "INSERT OR IGNORE INTO assayItem VALUES(53, 18, 'R', 2, NULL, 'T/RPS', 2, 4, 'LASR', 'Screen ratio', 0.0, 0.0,",
    "INSERT OR IGNORE INTO assayItem VALUES(58, 19, 'R', 2, NULL, 'T/RPC', 2, 4, 'LACR', 'Confirm ratio', 0.0, 0.0,",
    "INSERT OR IGNORE INTO assayItem VALUES(59, 19, 'NLR', 2, NULL, 'LAS.R/R', 2, 5, 'LA-NLR', 'Normalized ratio', 0.0, 1.2,",
};

const QString antiXaCalibration = "26, 22, 'Anti-Xa', 0, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'";
const QString antiXaItem = "75, 22, 'P', 1, '%', NULL, 2, 6, 'XA-%', 'Anti-Xa Activated degree', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1";
const QString antiXaItemInChinese = "75, 22, 'P', 1, '%', NULL, 2, 6, 'XA-%', '抗Xa-百分活动度', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1";

const QStringList templatesOf14{
    "23, 'FM', 'FM', NULL, 230, 'T', 'P', 'Log', 'Log'",
    "24, 'vWF', 'vWF', NULL, 240, 'T', 'P', 'Log', 'Log'",
    "25, 'LMWH', 'LMWH', NULL, 250, 'T', 'P', 'Log', 'Log'",
    "26, 'Plg', 'Plg', NULL, 260, 'T', 'P', 'Log', 'Log'",
    "27, 'PAI', 'PAI', NULL, 270, 'T', 'P', 'Log', 'Log'",
    "28, 'TAFI', 'TAFI', NULL, 280, 'T', 'P', 'Log', 'Log'",
    "29, 'FPS', 'FPS', NULL, 290, 'T', 'P', 'Log', 'Log'",
    "30, 'AP', 'AP', NULL, 300, 'T', 'P', 'Log', 'Log'",
    "31, 'UFH', 'UFH', NULL, 310, 'T', 'P', 'Log', 'Log'",
    "32, 'Hep', 'Hep', NULL, 320, 'T', 'P', 'Log', 'Log'",
};

const QStringList itemsOf14 = withRanges({
    "80, 23, 'T', 0, 's', NULL, 1, 1, 'FM-T', 'Fibrin Monomer', RANGES, 0",
    "81, 23, 'OD', 3, 'OD', NULL, -1, 2, 'FM-OD', 'Absorbency', RANGES, 0",
    "82, 23, 'P', 1, 'ug/ml', NULL, 2, 3, 'FM', 'FM', RANGES, 1",
    "90, 24, 'T', 0, 's', NULL, 1, 1, 'vWF-T', 'von Willebrand Factor', RANGES, 0",
    "91, 24, 'OD', 3, 'OD', NULL, -1, 2, 'vWF-OD', 'Absorbency', RANGES, 0",
    "92, 24, 'P', 1, '%', NULL, 2, 3, 'vWF-%', 'vWF', RANGES, 1",
    "93, 24, 'DOD', 2, 'DOD', NULL, -1, 4, 'vWF-DOD', 'vWF DOD', RANGES, 1",
    "100, 25, 'T', 0, 's', NULL, 1, 1, 'LMWH-T', 'Low Molecular Weight Heparin', RANGES, 0",
    "101, 25, 'OD', 3, 'OD', NULL, -1, 2, 'LMWH-OD', 'Absorbency', RANGES, 0",
    "102, 25, 'P', 1, 'IU/ml', NULL, 2, 3, 'LMWH', 'LMWH', RANGES, 1",
    "103, 25, 'R', 2, 'OD/min', 'OD/(T*60)', -1, 4, 'LMWH-R', 'Absorbency rate', RANGES, 1",
    "110, 26, 'T', 0, 's', NULL, 1, 1, 'Plg-T', 'Plasminogen', RANGES, 0",
    "111, 26, 'OD', 3, 'OD', NULL, -1, 2, 'Plg-OD', 'Absorbency', RANGES, 0",
    "112, 26, 'P', 1, '%', NULL, 2, 3, 'Plg-%', 'Plasminogen', RANGES, 1",
    "113, 26, 'R', 2, 'OD/min', 'OD/(T*60)', -1, 4, 'Plg-R', 'Absorbency rate', RANGES, 1",
    "120, 27, 'T', 0, 's', NULL, 1, 1, 'PAI-T', 'Plasminogen Activator Inhibitor', RANGES, 0",
    "121, 27, 'OD', 3, 'OD', NULL, -1, 2, 'PAI-OD', 'Absorbency', RANGES, 0",
    "122, 27, 'P', 1, '%', NULL, 2, 3, 'PAI-%', 'PAI', RANGES, 1",
    "123, 27, 'R', 2, 'OD/min', 'OD/(T*60)', -1, 4, 'PAI-R', 'Absorbency rate', RANGES, 1",
    "130, 28, 'T', 0, 's', NULL, 1, 1, 'TAFI-T', 'TAFI', RANGES, 0",
    "131, 28, 'OD', 3, 'OD', NULL, -1, 2, 'TAFI-OD', 'Absorbency', RANGES, 0",
    "132, 28, 'P', 1, 'ug/ml', NULL, 2, 3, 'TAFI', 'TAFI', RANGES, 1",
    "140, 29, 'T', 0, 's', NULL, 1, 1, 'FPS-T', 'Free Protein S', RANGES, 0",
    "141, 29, 'OD', 3, 'OD', NULL, -1, 2, 'FPS-OD', 'Absorbency', RANGES, 0",
    "142, 29, 'P', 1, '%', NULL, 2, 3, 'FPS-%', 'FPS', RANGES, 1",
    "150, 30, 'T', 0, 's', NULL, 1, 1, 'AP-T', 'Antiplasmin', RANGES, 0",
    "151, 30, 'OD', 3, 'OD', NULL, -1, 2, 'AP-OD', 'Absorbency', RANGES, 0",
    "152, 30, 'P', 1, '%', NULL, 2, 3, 'AP-%', 'AP', RANGES, 1",
    "160, 31, 'T', 0, 's', NULL, 1, 1, 'UFH-T', 'Unfractioned Heparin', RANGES, 0",
    "161, 31, 'OD', 3, 'OD', NULL, -1, 2, 'UFH-OD', 'Absorbency', RANGES, 0",
    "162, 31, 'P', 1, 'IU/ml', NULL, 2, 3, 'UFH', 'UFH', RANGES, 1",
    "163, 31, 'R', 2, 'OD/min', 'OD/(T*60)', -1, 4, 'UFH-R', 'Absorbency rate', RANGES, 1",
    "170, 32, 'T', 0, 's', NULL, 1, 1, 'Hep-T', 'Heparinoid', RANGES, 0",
    "171, 32, 'OD', 3, 'OD', NULL, -1, 2, 'Hep-OD', 'Absorbency', RANGES, 0",
    "172, 32, 'P', 1, 'IU/ml', NULL, 2, 3, 'Hep', 'Hep', RANGES, 1",
});

const QStringList reagentsOf14{
    "NULL, 0, 'FM', 2000, 200, 3",
    "NULL, 0, 'vWF', 2000, 200, 3",
    "NULL, 0, 'LMWH', 2000, 200, 3",
    "NULL, 0, 'Plg', 2000, 200, 3",
    "NULL, 0, 'PAI', 2000, 200, 3",
    "NULL, 0, 'TAFI', 2000, 200, 3",
    "NULL, 0, 'FPS', 2000, 200, 3",
    "NULL, 0, 'AP', 2000, 200, 3",
    "NULL, 0, 'UFH', 2000, 200, 3",
    "NULL, 0, 'Hep', 2000, 200, 3",
    "NULL, 2, 'Buffer(FM)', 6500, 200, 6",
    "NULL, 2, 'Buffer(vWF)', 6500, 200, 6",
    "NULL, 2, 'Buffer(LMWH)', 6500, 200, 6",
    "NULL, 2, 'Buffer(Plg)', 6500, 200, 6",
    "NULL, 2, 'Buffer(PAI)', 6500, 200, 6",
    "NULL, 2, 'Buffer(TAFI)', 6500, 200, 6",
    "NULL, 2, 'Buffer(FPS)', 6500, 200, 6",
    "NULL, 2, 'Buffer(AP)', 6500, 200, 6",
    "NULL, 2, 'Buffer(UFH)', 6500, 200, 6",
    "NULL, 2, 'Buffer(Hep)', 6500, 200, 6",
};

// items measured as times, ratios, activities and concentrations
const QList<int> measuredItems{
    1, 3, 4, 5, 6, 8, 9, 10, 11, 12, 14, 15, 17, 18, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33,
    34, 35, 36, 40, 42, 45, 47, 50, 52, 53, 55, 57, 58, 59, 60, 62, 65, 67, 70, 72, 73, 74, 75, 80, 82, 90,
    92, 100, 102, 103, 110, 112, 113, 120, 122, 123, 130, 132, 140, 142, 150, 152, 160, 162, 163, 170, 172,
    2048, 2049, 2064, 2065, 2066,
};

const QList<int> absorbances{
    2, 7, 13, 16, 19, 41, 46, 51, 56, 61, 66, 71, 81, 91, 93, 101, 111, 121, 131, 141, 151, 161, 171,
};
// clang-format on

const QString currentCurve15 =
    "CREATE TABLE \"currentCurve\" (id integer primary key, instrUuid text, name text,"
    " curveId integer references curve, unique(instrUuid, name) on conflict replace)";

const QString deleteCurve15 = "CREATE TRIGGER deleteCurve after delete on curve begin"
                              " delete from curvePoint where curvePoint.curveId = old.id;"
                              " delete from curveVariable where curveVariable.curveId = old.id;"
                              " delete from curveReagent where curveReagent.curveId = old.id;"
                              " delete from curveInfo where curveInfo.curveId = old.id;"
                              " delete from currentCurve where currentCurve.curveId = old.id; end";

const QString assayItem16 =
    "CREATE TABLE \"assayItem\" (id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text not null, method integer,"
    " unit text, expr text, precision integer default 2, displayOrder integer, abbr text,"
    " code text, lowerNormal real default 0, upperNormal real default 0,"
    " lowerReport real default 0, upperReport real default 0, lowerRepeat real default 0,"
    " upperRepeat real default 0, lowerRedilution real default 0,"
    " upperRedilution real default 0, lowerMeasurement real, upperMeasurement real,"
    " visible integer default 1)";

const QString afterDeleteAssayTemplate16 =
    "CREATE TRIGGER afterDeleteAssayTemplate after delete on assayTemplate begin"
    " delete from variable where variable.assayTemplateId = old.id;"
    " delete from assayItem where assayItem.assayTemplateId = old.id;"
    " delete from dataCheck where dataCheck.assayTemplateId = old.id; end";

/// \return a row of step 16 from one of before, whose last column is the visibility
QString withMeasurement(const QString &row)
{
    const int id = row.section(',', 0, 0).toInt();
    const QString range = measuredItems.contains(id) ? "0.0, 1000000000.0"
        : absorbances.contains(id)                   ? "-5.0, 10.0"
                                                     : "NULL, NULL";
    const auto last = row.lastIndexOf(", ");
    return row.left(last) + ", " + range + row.mid(last);
}

QStringList statementsOf14()
{
    QStringList statements;
    for (const QString &row : templatesOf14)
        statements << "insert or ignore into assaytemplate values(" + row.section(", ", 0, 2);
    for (const QString &row : itemsOf14)
        statements << "insert or ignore into assayItem values(" + row.section(", ", 0, 3);
    for (const QString &row : reagentsOf14)
        statements << "insert or ignore into reagent (type, name, initVolume, alarmLimit,"
                      " vialType) values("
                + row.section(", ", 1);
    return statements;
}

} // namespace

class TestProfileV11ToV16 : public QObject {
    Q_OBJECT

private slots:
    void init();

    void v11MakesTheAxesOfCalibration6Linear();
    void v11PassesWithoutCalibration6();
    void v12CorrectsLupusItemsAndAddsRatios();
    void v12KeepsItemsAndVariablesThatExist();
    void v12PassesWithoutLupusItems();
    void v12AddsTheItemsThatCanBeAdded();
    void v13AddsAntiXaActivity_data();
    void v13AddsAntiXaActivity();
    void v13KeepsRowsThatExist();
    void v13PassesWithoutItsRows();
    void v13NeedsNoCodeInOtherLanguages();
    void v14AddsTenAssays();
    void v14KeepsRowsThatExist();
    void v14SkipsTemplatesOfAKnownName();
    void v14AddsTheRowsThatCanBeAdded();
    void v15GivesCurrentCurvesToTheWorkbench();
    void v15RenamesKeysOfTheEmptyInstrument_data();
    void v15RenamesKeysOfTheEmptyInstrument();
    void v15KeepsValuesAndUnnamedChoices();
    void v15ReportsValuesOfAnAddedColumn();
    void v15ReportsNothingOfAView();
    void v15PassesWithoutTheTrigger();
    void v15AllowsOneCurveOfANameAndInstrument();
    void v15DeletesAllOfACurveAndNoMore();
    void v16AddsMeasuringRanges();
    void v16FillsTheRangesOfTheFactoryItems();
    void v16KeepsUsersItems();
    void v16KeepsRangesThatExist();
    void v16DeletesAllOfATemplateAndNoMore();

    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void ignoresAndWarnsOnce_data();
    void ignoresAndWarnsOnce();
};

void TestProfileV11ToV16::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

/// Shows: PRO-8
void TestProfileV11ToV16::v11MakesTheAxesOfCalibration6Linear()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 10);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v11);

    QVERIFY(passed);
    expected.replace("assayCalibration",
                     "6, 7, 'ATIII', 1, NULL, 'OD', 'P', NULL, NULL, 'Log', 'Linear'",
                     "6, 7, 'ATIII', 1, NULL, 'OD', 'P', 'Linear', NULL, 'Linear', 'Linear'");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v11PassesWithoutCalibration6()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 10);
    database.execute({"delete from assayCalibration where id = 6"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v11);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

/// Shows: PRO-8
void TestProfileV11ToV16::v12CorrectsLupusItemsAndAddsRatios()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 11);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v12);

    QVERIFY(passed);
    expected.edit("assayItem", "'LAS-S'", "'Lups Anticoagulant Screening'",
                  "'Lupus Anticoagulant Screening'");
    expected.edit("assayItem", "'LAC-S'", "'Lups Anticoagulant Confirm'",
                  "'Lupus Anticoagulant Confirm'");
    expected.insertNumbered("variable", lupusVariables);
    expected.insert("assayItem", lupusItems);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v12KeepsItemsAndVariablesThatExist()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 12);
    database.execute({"update assayItem set expr = 'T/2', code = 'mine' where id = 53",
                      "update assayItem set assayTemplateId = 1, name = 'X' where id = 58",
                      "update assayItem set visible = 1 where id = 59",
                      "update variable set value = 1.5 where name = 'RPS'",
                      "update variable set value = '' where name = 'RPC'"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v12);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV11ToV16::v12PassesWithoutLupusItems()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 11);
    database.execute({"delete from assayItem where assayTemplateId in (18, 19)"});
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v12);

    QVERIFY(passed);
    expected.insertNumbered("variable", lupusVariables).insert("assayItem", lupusItems);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v12AddsTheItemsThatCanBeAdded()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 11);
    database.execute({refuseInsert("assayItem", "new.id = 58"),
                      refuseInsert("variable", "new.name = 'RPS'"),
                      refuseUpdate("assayItem", "old.id = 50")});
    DatabaseContent expected(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v12);

    QVERIFY(passed);
    expected.edit("assayItem", "'LAC-S'", "'Lups Anticoagulant Confirm'",
                  "'Lupus Anticoagulant Confirm'");
    expected.insertNumbered("variable", {lupusVariables.at(1)});
    expected.insert("assayItem", {lupusItems.at(0), lupusItems.at(2)});
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {lupusStatements.at(0), lupusStatements.at(2), lupusStatements.at(5)});
}

void TestProfileV11ToV16::v13AddsAntiXaActivity_data()
{
    addLanguageRows();
}

/// Shows: PRO-8
void TestProfileV11ToV16::v13AddsAntiXaActivity()
{
    QFETCH(QString, base);
    QFETCH(QString, profile);
    QFETCH(bool, chinese);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 12);
    DatabaseContent expected(database);
    const Languages languages(base, profile);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v13);

    QVERIFY(passed);
    expected.insert("assayCalibration", {antiXaCalibration});
    expected.insert("assayItem", {chinese ? antiXaItemInChinese : antiXaItem});
    expected.edit("assayItem", "'XA-UFH'", "'U/ml'", "'IU/ml'");
    expected.edit("assayItem", "'XA-LMWH'", "'U/ml'", "'IU/ml'");
    expected.edit("assayItem", "'XA-RX'", "'U/ml'", "'IU/ml'");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v13KeepsRowsThatExist()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 12);
    database.execute({"insert into assayCalibration(id, name) values(26, 'mine')",
                      "insert into assayItem(id, name, unit, abbr) values"
                      "(75, 'mine', 'U/ml', 'mine'), (300, 'UFH', 'pg', 'XA-UFH')"});
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v13);

    QVERIFY(passed);
    expected.edit("assayItem", "72, 22,", "'U/ml'", "'IU/ml'");
    expected.edit("assayItem", "300, NULL,", "'pg'", "'IU/ml'");
    expected.edit("assayItem", "'XA-LMWH'", "'U/ml'", "'IU/ml'");
    expected.edit("assayItem", "'XA-RX'", "'U/ml'", "'IU/ml'");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v13PassesWithoutItsRows()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 12);
    database.execute({"delete from assayItem where abbr like 'XA-%'",
                      refuseInsert("assayCalibration"), refuseInsert("assayItem")});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v13);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
    compareFailures(recorder,
                    {"insert or ignore into assayCalibration values(26, 22, 'Anti-Xa', 0, null,",
                     "insert or ignore into assayItem values(75, 22, 'P', 1, '%', NULL,"});
}

void TestProfileV11ToV16::v13NeedsNoCodeInOtherLanguages()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 12);
    database.execute({refuseUpdate("assayItem", "old.abbr = 'XA-%'")});
    const Languages languages("en", QString());

    const bool passed = runProfileStep(database, &UpdateProfile::update_v13);

    QVERIFY(passed);
    QCOMPARE(database.rows("select code from assayItem where id = 75"),
             QStringList{"'Anti-Xa Activated degree'"});
}

/// Shows: PRO-8
void TestProfileV11ToV16::v14AddsTenAssays()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 13);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v14);

    QVERIFY(passed);
    expected.insert("assayTemplate", templatesOf14).insert("assayItem", itemsOf14);
    expected.insertNumbered("reagent", reagentsOf14);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

/// Shows: PRO-16
void TestProfileV11ToV16::v14KeepsRowsThatExist()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    database.execute({"update assayTemplate set displayName = 'my ' || name, displayOrder = 1"
                      " where id between 23 and 32",
                      "update assayItem set assayTemplateId = 1, name = 'my ' || name,"
                      " upperNormal = 7.5 where id between 80 and 172",
                      "update reagent set reagentId = 'R-' || id, initVolume = 5 where id > 50"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v14);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV11ToV16::v14SkipsTemplatesOfAKnownName()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 13);
    database.execute({"insert into assayTemplate(id, name, displayName) values"
                      "(500, 'vWF', 'site''s vWF'), (501, 'site''s AP', 'AP')"});
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v14);

    QVERIFY(passed);
    QStringList templates = templatesOf14;
    templates.removeAt(7); // AP
    templates.removeAt(1); // vWF
    expected.insert("assayTemplate", templates).insert("assayItem", itemsOf14);
    expected.insertNumbered("reagent", reagentsOf14);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v14AddsTheRowsThatCanBeAdded()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 13);
    database.execute({refuseInsert("assayTemplate", "new.name = 'FM'"),
                      refuseInsert("assayItem", "new.id = 172"),
                      refuseInsert("reagent", "new.name = 'Buffer(Plg)'")});
    DatabaseContent expected(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v14);

    QVERIFY(passed);
    QStringList reagents = reagentsOf14;
    reagents.removeAt(13);
    expected.insert("assayTemplate", templatesOf14.mid(1));
    expected.insert("assayItem", itemsOf14.mid(0, 34)).insertNumbered("reagent", reagents);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {"insert or ignore into assaytemplate values(23, 'FM',",
                     "insert or ignore into assayItem values(172, 32, 'P',",
                     "insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType)"
                     " values(2, 'Buffer(Plg)',"});
}

/// Shows: PRO-9
void TestProfileV11ToV16::v15GivesCurrentCurvesToTheWorkbench()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v15);

    QVERIFY(passed);
    expected.replace("currentCurve", "2, 'FIB', 2", "2, 'wb1', 'FIB', 2");
    expected.replace("currentCurve", "3, 'DD', 3", "3, 'wb1', 'DD', 3");
    expected.replace("currentCurve", "4, 'site''s', 4", "4, 'wb1', 'site''s', 4");
    expected.replace("currentCurve", "5, 'II', 5", "5, 'wb1', 'II', 5");
    expected.replace("currentCurve", "6, 'PT', 7", "6, 'wb1', 'PT', 7");
    expected.replace("profile", "'print/" + noInstrument + "/copies', 2", "'print/wb1/copies', 2");
    expected.redefine("CREATE TABLE currentCurve", currentCurve15);
    expected.redefine("CREATE TRIGGER deleteCurve", deleteCurve15);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV11ToV16::v15RenamesKeysOfTheEmptyInstrument_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("renamed");

    QTest::newRow("alone") << noInstrument << "wb1";
    QTest::newRow("at the beginning") << noInstrument + "/x"
                                      << "wb1/x";
    QTest::newRow("at the end") << "x/" + noInstrument << "x/wb1";
    QTest::newRow("inside of a word") << "a" + noInstrument + "b"
                                      << "awb1b";
    QTest::newRow("twice") << noInstrument + noInstrument << "wb1wb1";
    QTest::newRow("three times") << noInstrument + "/" + noInstrument + "/" + noInstrument
                                 << "wb1/wb1/wb1";
    for (const char *key :
         {"x/00000000-0000-0000-0000-000000000000", "x/{00000000-0000-0000-0000-00000000000}",
          "x/{00000000-0000-0000-0000-000000000001}", "x/{00000000_0000_0000_0000_000000000000}",
          "x/{}"})
        QTest::newRow(key) << key << key;
}

/// Shows: PRO-9
void TestProfileV11ToV16::v15RenamesKeysOfTheEmptyInstrument()
{
    QFETCH(QString, key);
    QFETCH(QString, renamed);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    database.execute(
        {"delete from profile", QString("insert into profile values('%1', '%1')").arg(key)});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v15);

    QVERIFY(passed);
    QCOMPARE(database.table("profile"), QStringList{QString("'%1', '%2'").arg(renamed, key)});
}

void TestProfileV11ToV16::v15ReportsValuesOfAnAddedColumn()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    database.execute({"alter table currentCurve add chosenBy text",
                      "alter table currentCurve add unused text",
                      "alter table currentCurve add INSTRUUID text",
                      "update currentCurve set chosenBy = 'lab' where id < 5",
                      "update currentCurve set INSTRUUID = 'X1'"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v15);

    QVERIFY(passed);
    QCOMPARE(recorder.messages().filter("Warning: "),
             QStringList({"Warning: Left 3 values of currentCurve.chosenBy behind",
                          "Warning: Left 5 values of currentCurve.INSTRUUID behind"}));
}

void TestProfileV11ToV16::v15ReportsNothingOfAView()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    database.execute({"drop table currentCurve",
                      "create view currentCurve as select 1 as id, 'PT' as name, 1 as curveId,"
                      " 'kept' as extra"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v15);

    QVERIFY(!passed);
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1);
    QVERIFY(recorder.messages()
                .filter("Warning: ")
                .constFirst()
                .contains("[ \"DROP TABLE currentCurve\" ]"));
}

void TestProfileV11ToV16::v15KeepsValuesAndUnnamedChoices()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    database.execute({"delete from currentCurve", "delete from profile",
                      "insert into currentCurve values(9, null, 1), (3, null, null), (4, 'pt', 1),"
                      " (7, 'PT', 99)",
                      QString("insert into profile values('a/%1', 1), ('b/%1', 0.5),"
                              " ('c/%1', x'00ff'), ('d/%1', null), ('e/%1', '')")
                          .arg(noInstrument)});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v15);

    QVERIFY(passed);
    QCOMPARE(database.table("currentCurve"),
             QStringList({"3, 'wb1', NULL, NULL", "4, 'wb1', 'pt', 1", "7, 'wb1', 'PT', 99",
                          "9, 'wb1', NULL, 1"}));
    QCOMPARE(database.table("profile"),
             QStringList({"'a/wb1', 1", "'b/wb1', 0.5", "'c/wb1', X'00FF'", "'d/wb1', NULL",
                          "'e/wb1', ''"}));
}

void TestProfileV11ToV16::v15PassesWithoutTheTrigger()
{
    const TestDatabase complete("profile.db");
    makeProfileAtStep(complete, 15);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 14);
    database.execute({"drop trigger deleteCurve"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v15);

    QVERIFY(passed);
    QCOMPARE(database.schema(), complete.schema());
}

/// Shows: PRO-9
void TestProfileV11ToV16::v15AllowsOneCurveOfANameAndInstrument()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 15);

    database.execute({"insert into currentCurve(instrUuid, name, curveId) values('wb1', 'PT', 1)",
                      "insert into currentCurve(instrUuid, name, curveId) values('wb2', 'PT', 7)"});

    QCOMPARE(database.rows("select instrUuid, curveId from currentCurve where name = 'PT'"
                           " order by id"),
             QStringList({"'wb1', 1", "'wb2', 7"}));
}

/// Shows: PRO-7
void TestProfileV11ToV16::v15DeletesAllOfACurveAndNoMore()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 15);
    database.execute({"insert into curveInfo values(1, 'test', 1), (2, 'test', 2)"});
    const QStringList tables{"curvePoint", "curveVariable", "curveReagent", "curveInfo",
                             "currentCurve"};
    QList<QStringList> kept;
    for (const QString &table : tables) {
        QVERIFY(!database.rows(QString("select * from %1 where curveId = 2").arg(table)).isEmpty());
        kept << database.rows(QString("select * from %1 where curveId <> 2").arg(table));
    }

    database.execute({"delete from curve where id = 2"});

    for (int i = 0; i < tables.size(); ++i)
        QCOMPARE(database.rows("select * from " + tables.at(i)), kept.at(i));
}

/// Shows: PRO-10
void TestProfileV11ToV16::v16AddsMeasuringRanges()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 15);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v16);

    QVERIFY(passed);
    for (QString &row : expected.rows("assayItem"))
        row = withMeasurement(row);
    expected.redefine("CREATE TABLE \"assayItem\"", assayItem16);
    expected.redefine("CREATE TRIGGER afterDeleteAssayTemplate", afterDeleteAssayTemplate16);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

/// Shows: PRO-10
void TestProfileV11ToV16::v16FillsTheRangesOfTheFactoryItems()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 15);
    database.execute(
        {"delete from assayItem",
         "with recursive n(i) as (select 0 union all select i + 1 from n where i < 3000)"
         " insert into assayItem(id, name) select i, 'T' from n"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v16);

    QVERIFY(passed);
    QStringList expected;
    for (int id = 0; id <= 3000; ++id)
        expected << withMeasurement(QString("%1, 1").arg(id));
    QCOMPARE(database.rows("select id, lowerMeasurement, upperMeasurement, visible from assayItem"
                           " order by id"),
             expected);
}

/// Shows: PRO-10
void TestProfileV11ToV16::v16KeepsUsersItems()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 15);
    database.execute({"delete from assayItem",
                      "insert into assayItem values(1, 2, 'it''s', 3, '', '1, 2', null, null, null,"
                      " '', null, 'none', 1.5, x'00ff', 4, 5, 6, 7, 0)",
                      "insert into assayItem(id, name) values(176, 'mine')"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v16);

    QVERIFY(passed);
    QCOMPARE(database.table("assayItem"),
             QStringList({"1, 2, 'it''s', 3, '', '1, 2', NULL, NULL, NULL, '', NULL, 'none', 1.5,"
                          " X'00FF', 4.0, 5.0, 6.0, 7.0, 0.0, 1000000000.0, 0",
                          "176, NULL, 'mine', NULL, NULL, NULL, 2, NULL, NULL, NULL, 0.0, 0.0, 0.0,"
                          " 0.0, 0.0, 0.0, 0.0, 0.0, NULL, NULL, 1"}));
}

void TestProfileV11ToV16::v16KeepsRangesThatExist()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 16);
    database.execute({"update assayItem set lowerMeasurement = 3, upperMeasurement = 4"
                      " where id in (1, 2, 90001)"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v16);

    QVERIFY(passed);
    QCOMPARE(database.rows("select id, lowerMeasurement, upperMeasurement from assayItem"
                           " where id in (1, 2, 90001) order by id"),
             QStringList({"1, 0.0, 1000000000.0", "2, -5.0, 10.0", "90001, 3.0, 4.0"}));
}

/// Shows: PRO-7
void TestProfileV11ToV16::v16DeletesAllOfATemplateAndNoMore()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 16);
    const QStringList tables{"variable", "assayItem", "dataCheck"};
    QList<QStringList> kept;
    for (const QString &table : tables) {
        const QString query = "select * from " + table + " where assayTemplateId ";
        QVERIFY(!database.rows(query + "= 1").isEmpty());
        kept << database.rows(query + "is not 1");
    }

    database.execute({"delete from assayTemplate where id = 1"});

    for (int i = 0; i < tables.size(); ++i)
        QCOMPARE(database.rows("select * from " + tables.at(i)), kept.at(i));
}

void TestProfileV11ToV16::failsAndKeepsTheFile_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order

    // Not here, since no content makes them fail: the drops of triggers, and the renames of the
    // rebuilt tables, whose names are free at that point.
    QTest::newRow("13: the unit of UFH is refused")
        << 13 << 12 << QStringList{refuseUpdate("assayItem", "old.abbr = 'XA-UFH'")}
        << QStringList{"update assayItem set unit='IU/ml' where abbr='XA-UFH'"};
    QTest::newRow("13: the unit of LMWH is refused, from version 10")
        << 13 << 10 << QStringList{refuseUpdate("assayItem", "old.abbr = 'XA-LMWH'")}
        << QStringList{"update assayItem set unit='IU/ml' where abbr='XA-LMWH'"};
    QTest::newRow("13: the unit of RX is refused")
        << 13 << 12 << QStringList{refuseUpdate("assayItem", "old.abbr = 'XA-RX'")}
        << QStringList{"update assayItem set unit='IU/ml' where abbr='XA-RX'"};
    QTest::newRow("13: the Chinese code is refused, from version 11")
        << 13 << 11 << QStringList{refuseUpdate("assayItem", "old.abbr = 'XA-%'")}
        << QStringList{"update assayItem set code='抗Xa-百分活动度' where abbr='XA-%'"};
    QTest::newRow("13: assayItem is missing")
        << 13 << 12 << QStringList{"drop table assayItem"}
        << QStringList{"insert or ignore into assayItem values(75, 22,",
                       "update assayItem set unit='IU/ml' where abbr='XA-UFH'"};

    QTest::newRow("15: currentCurve_new exists, from version 10")
        << 15 << 10 << QStringList{"create table currentCurve_new(id)"}
        << QStringList{"-- currentCurve create table currentCurve_new ("};
    const QString copy = "INSERT INTO currentCurve_new (id, instrUuid, name, curveId)"
                         " SELECT id, 'wb1', name, curveId FROM currentCurve";
    QTest::newRow("15: currentCurve is missing")
        << 15 << 14 << QStringList{"drop table currentCurve"} << QStringList{copy};
    QTest::newRow("15: currentCurve has no curveId")
        << 15 << 14
        << QStringList{"drop table currentCurve",
                       "create table currentCurve(id integer primary key, name text)"}
        << QStringList{copy};
    QTest::newRow("15: two choices of one id")
        << 15 << 14
        << QStringList{"drop table currentCurve",
                       "create table currentCurve(id integer, name text, curveId integer)",
                       "insert into currentCurve values(1, 'PT', 1), (1, 'FIB', 2)"}
        << QStringList{copy};
    QTest::newRow("15: currentCurve is a view")
        << 15 << 14
        << QStringList{"alter table currentCurve rename to chosen",
                       "create view currentCurve as select * from chosen"}
        << QStringList{"DROP TABLE currentCurve"};
    QTest::newRow("15: curve is missing") << 15 << 14 << QStringList{"drop table curve"}
                                          << QStringList{"create trigger deleteCurve after delete"};
    QTest::newRow("15: curve is a view, from version 12")
        << 15 << 12
        << QStringList{"alter table curve rename to line",
                       "create view curve as select * from line"}
        << QStringList{"create trigger deleteCurve after delete"};
    const QString renameKeys = "UPDATE profile SET name = REPLACE(name, '" + noInstrument
        + "', 'wb1') WHERE name LIKE '%" + noInstrument + "%'";
    QTest::newRow("15: a key of the workbench exists, from version 10")
        << 15 << 10 << QStringList{"insert into profile values('print/wb1/copies', 3)"}
        << QStringList{renameKeys};
    QTest::newRow("15: the renaming is refused")
        << 15 << 14 << QStringList{refuseUpdate("profile")} << QStringList{renameKeys};
    QTest::newRow("15: profile is missing")
        << 15 << 14 << QStringList{"drop table profile"} << QStringList{renameKeys};

    QTest::newRow("16: assayItem_new exists, from version 10")
        << 16 << 10 << QStringList{"create table assayItem_new(id)"}
        << QStringList{"create table assayItem_new ("};
    QTest::newRow("16: assayItem is missing")
        << 16 << 15 << QStringList{"drop table assayItem"}
        << QStringList{"select * from assayItem", "drop table assayItem"};
    QTest::newRow("16: assayItem has a column more")
        << 16 << 15 << QStringList{"alter table assayItem add extra text"}
        << QStringList{"insert into assayItem_new ("};
    QTest::newRow("16: assayItem is a view")
        << 16 << 15
        << QStringList{"alter table assayItem rename to item",
                       "create view assayItem as select * from item"}
        << QStringList{"drop table assayItem"};
    QTest::newRow("16: assayTemplate is missing")
        << 16 << 15 << QStringList{"drop table assayTemplate"}
        << QStringList{"create trigger afterDeleteAssayTemplate after delete on assayTemplate"};
    QTest::newRow("16: assayTemplate is a view, from version 14")
        << 16 << 14
        << QStringList{"alter table assayTemplate rename to assay",
                       "create view assayTemplate as select * from assay"}
        << QStringList{"create trigger afterDeleteAssayTemplate after delete on assayTemplate"};
}

void TestProfileV11ToV16::failsAndKeepsTheFile()
{
    QFETCH(int, step);
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);

    verifyStepFails(step, stored, obstacles, failing);
}

void TestProfileV11ToV16::ignoresAndWarnsOnce_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order
    QTest::addColumn<QStringList>("kept");    // tables

    // Not here, since no content makes them fail: the two updates of step 16, whose table is new.
    const QString axes = "UPDATE assayCalibration SET funX='Linear', dispX='Linear' WHERE id=6";
    QTest::newRow("11: the update is refused")
        << 11 << QStringList{refuseUpdate("assayCalibration")} << QStringList{axes}
        << QStringList{"assayCalibration"};
    QTest::newRow("11: assayCalibration is missing")
        << 11 << QStringList{"drop table assayCalibration"} << QStringList{axes}
        << QStringList{"assayCalibration"};

    const QStringList ofItems = lupusStatements.mid(0, 2) + lupusStatements.mid(4);
    QTest::newRow("12: all is refused")
        << 12
        << QStringList{refuseUpdate("assayItem"), refuseInsert("assayItem"),
                       refuseInsert("variable")}
        << lupusStatements << QStringList{"assayItem", "variable"};
    QTest::newRow("12: items are refused")
        << 12 << QStringList{refuseUpdate("assayItem"), refuseInsert("assayItem")} << ofItems
        << QStringList{"assayItem"};
    QTest::newRow("12: assayItem is missing")
        << 12 << QStringList{"drop table assayItem"} << ofItems << QStringList{"assayItem"};
    QTest::newRow("12: variable is missing")
        << 12 << QStringList{"drop table variable"} << lupusStatements.mid(2, 2)
        << QStringList{"variable"};

    const QString calibration = "insert or ignore into assayCalibration values(26, 22, 'Anti-Xa',"
                                " 0, null, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log')";
    QTest::newRow("13: the calibration is refused")
        << 13 << QStringList{refuseInsert("assayCalibration")} << QStringList{calibration}
        << QStringList{"assayCalibration"};
    QTest::newRow("13: assayCalibration is missing")
        << 13 << QStringList{"drop table assayCalibration"} << QStringList{calibration}
        << QStringList{"assayCalibration"};

    QTest::newRow("14: all is refused")
        << 14
        << QStringList{refuseInsert("assayTemplate"), refuseInsert("assayItem"),
                       refuseInsert("reagent")}
        << statementsOf14() << QStringList{"assayTemplate", "assayItem", "reagent"};
    QTest::newRow("14: assayTemplate is missing")
        << 14 << QStringList{"drop table assayTemplate"} << statementsOf14().mid(0, 10)
        << QStringList{"assayTemplate"};
    QTest::newRow("14: assayItem is missing")
        << 14 << QStringList{"drop table assayItem"} << statementsOf14().mid(10, 35)
        << QStringList{"assayItem"};
    QTest::newRow("14: reagent is missing") << 14 << QStringList{"drop table reagent"}
                                            << statementsOf14().mid(45) << QStringList{"reagent"};
}

void TestProfileV11ToV16::ignoresAndWarnsOnce()
{
    QFETCH(int, step);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);
    QFETCH(QStringList, kept);

    verifyStepIgnores(step, obstacles, failing, kept);
}

QTEST_GUILESS_MAIN(TestProfileV11ToV16)
#include "tst_profile_v11_to_v16.moc"
