// SPDX-License-Identifier: MIT
/// The steps 17 to 23 of the profile database, each on the sample at the version before it.

#include "messagerecorder.h"
#include "profilesteps.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

// clang-format off
const QStringList templatesOf17{
    "39, 'PT2', 'PT2', NULL, 11, 'T', 'P', 'Log', 'Log'",
    "40, 'PT3', 'PT3', NULL, 12, 'T', 'P', 'Log', 'Log'",
    "33, 'APTT2', 'APTT2', NULL, 21, 'T', 'P', 'Log', 'Log'",
    "34, 'APTT3', 'APTT3', NULL, 22, 'T', 'P', 'Log', 'Log'",
    "35, 'APTT4', 'APTT4', NULL, 23, 'T', 'P', 'Log', 'Log'",
    "36, 'APTT5', 'APTT5', NULL, 24, 'T', 'P', 'Log', 'Log'",
    "37, 'APTT6', 'APTT6', NULL, 25, 'T', 'P', 'Log', 'Log'",
    "38, 'APTT7', 'APTT7', NULL, 26, 'T', 'P', 'Log', 'Log'",
};

const QStringList itemsOf17{
    "240, 39, 'T', 0, 's', NULL, 1, 1, 'PT2-S', 'Prothrombin time(PT2)', 9.0, 15.0, 0.0, 0.0, 7.0, 40.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "241, 39, 'OD', 3, 'OD', NULL, -1, 2, 'PT2-OD', 'Absorbency(PT2)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -5.0, 10.0, 0",
    "242, 39, 'P', 1, '%', NULL, 2, 3, 'PT2-%', 'Activated degree(PT2)', 80.0, 150.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "243, 39, 'R', 2, NULL, 'T/PT.normal', 2, 4, 'PT2-R', 'PTR(PT2)', 0.82, 1.15, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "244, 39, 'INR', 2, NULL, 'pow(R, ISI)', 2, 5, 'PT2-INR', 'International standardization ratio(PT2)', 0.76, 1.15, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "250, 40, 'T', 0, 's', NULL, 1, 1, 'PT3-S', 'Prothrombin time(PT3)', 9.0, 15.0, 0.0, 0.0, 7.0, 40.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "251, 40, 'OD', 3, 'OD', NULL, -1, 2, 'PT3-OD', 'Absorbency(PT3)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -5.0, 10.0, 0",
    "252, 40, 'P', 1, '%', NULL, 2, 3, 'PT3-%', 'Activated degree(PT3)', 80.0, 150.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "253, 40, 'R', 2, NULL, 'T/PT.normal', 2, 4, 'PT3-R', 'PTR(PT3)', 0.82, 1.15, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "254, 40, 'INR', 2, NULL, 'pow(R, ISI)', 2, 5, 'PT3-INR', 'International standardization ratio(PT3)', 0.76, 1.15, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "180, 33, 'T', 0, 's', NULL, 1, 1, 'APTT2-T', 'Normal mixed plasma', 24.0, 36.0, 0.0, 0.0, 18.0, 60.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "181, 33, 'R', 2, NULL, 'T/APTT.normal', 2, 2, 'APTT2-R', 'APTT2R', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "190, 34, 'T', 0, 's', NULL, 1, 1, 'APTT3-T', 'Immediate testing of 1:1 mixed plasma', 24.0, 36.0, 0.0, 0.0, 18.0, 60.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "191, 34, 'R', 2, NULL, 'T/APTT.normal', 2, 2, 'APTT3-R', 'APTT3R', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "192, 34, 'RI', 2, '%', '(APTT3.T-APTT2.T)/APTT.T', 2, 3, 'APTT3-RI', 'Ransons score', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "200, 35, 'T', 0, 's', NULL, 1, 1, 'APTT4-T', 'Patient incubated', 24.0, 36.0, 0.0, 0.0, 18.0, 60.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "201, 35, 'R', 2, NULL, 'T/APTT.normal', 2, 2, 'APTT4-R', 'APTT4R', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "210, 36, 'T', 0, 's', NULL, 1, 1, 'APTT5-T', 'Incubation of normal mixed plasma', 24.0, 36.0, 0.0, 0.0, 18.0, 60.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "211, 36, 'R', 2, NULL, 'T/APTT.normal', 2, 2, 'APTT5-R', 'APTT5R', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "220, 37, 'T', 0, 's', NULL, 1, 1, 'APTT6-T', 'Incubation of 1:1 mixed plasma', 24.0, 36.0, 0.0, 0.0, 18.0, 60.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "221, 37, 'R', 2, NULL, 'T/APTT.normal', 2, 2, 'APTT6-R', 'APTT6R', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "230, 38, 'T', 0, 's', NULL, 1, 1, 'APTT7-T', 'incubation of separately mixed plasma in 1:1 ratio', 24.0, 36.0, 0.0, 0.0, 18.0, 60.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "231, 38, 'R', 2, NULL, 'T/APTT.normal', 2, 2, 'APTT7-R', 'APTT7R', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
    "232, 38, 'RI', 2, '%', '(APTT6.T-APTT5.T)/APTT4.T', 2, 3, 'APTT7-RI', 'Ransons score', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1",
};

const QList<std::pair<QString, QString>> chineseCodesOf17{ // by abbr
    {"PT2-S", "凝血酶原时间(PT2)"},
    {"PT2-OD", "吸光度(PT2)"},
    {"PT2-%", "百分活动度(PT2)"},
    {"PT2-R", "比值(PT2)"},
    {"PT2-INR", "国际标准化比值(PT2)"},
    {"PT3-S", "凝血酶原时间(PT3)"},
    {"PT3-OD", "吸光度(PT3)"},
    {"PT3-%", "百分活动度(PT3)"},
    {"PT3-R", "比值(PT3)"},
    {"PT3-INR", "国际标准化比值(PT3)"},
    {"APTT2-T", "正常混合血浆"},
    {"APTT2-R", "正常混合血浆比值(APTT2)"},
    {"APTT3-T", "1:1混合血浆即刻检测"},
    {"APTT3-R", "1:1混合血浆即刻检测比值(APTT3)"},
    {"APTT3-RI", "罗纳斯指数(APTT3)"},
    {"APTT4-T", "患者孵育"},
    {"APTT4-R", "患者孵育比值(APTT4)"},
    {"APTT5-T", "正常混合血浆孵育"},
    {"APTT5-R", "正常混合血浆孵育比值(APTT5)"},
    {"APTT6-T", "1:1混合血浆孵育"},
    {"APTT6-R", "1:1混合血浆孵育比值(APTT6)"},
    {"APTT7-T", "分别孵育后1:1混合血浆"},
    {"APTT7-R", "分别孵育后1:1混合血浆比值(APTT7)"},
    {"APTT7-RI", "罗纳斯指数(APTT7)"},
};

const QString differenceOfAptt7 = "233, 38, 'DETLA', 2, 's', 'APTT6.T-APTT7.T', 2, 4, 'APTT7-DETLA', 'Time-dependency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1";
const QString differenceOfAptt7InChinese = "233, 38, 'DETLA', 2, 's', 'APTT6.T-APTT7.T', 2, 4, 'APTT7-DETLA', '时间依赖差(APTT7)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1";
const QString rosnerIndexOfAptt3 = "192, 34, 'RI', 2, '%', '(APTT3.T-APTT2.T)/APTT.T', 2, 3, 'APTT3-RI', '罗纳斯指数(APTT3)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1000000000.0, 1";

const QStringList reagentsOf20{
    "NULL, 0, 'RX', 2000, 200, 3",
    "NULL, 2, 'Buffer(RX)', 6500, 200, 6",
};

const QString templateOf20 = "41, 'RX', 'RX', NULL, 410, 'T', 'P', 'Log', 'Log'";

const QStringList calibrationsOf20{
    "27, 31, 'UFH', 0, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'",
    "28, 25, 'LMWH', 0, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'",
    "29, 41, 'RX', 0, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'",
};

const QStringList itemsOf20 = QStringList{
    "260, 41, 'T', 0, 's', NULL, 1, 1, 'RX-T', 'Rivaroxaban', RANGES, 0.0, 1000000000.0, 0",
    "261, 41, 'OD', 3, 'OD', NULL, -1, 2, 'RX-OD', 'Absorbency', RANGES, -5.0, 10.0, 0",
    "262, 41, 'P', 1, 'IU/ml', NULL, 2, 3, 'RX', 'RX', RANGES, 0.0, 1000000000.0, 1",
    "263, 41, 'R', 2, 'OD/min', 'OD/(T*60)', -1, 4, 'RX-R', 'Absorbency rate', RANGES, 0.0, 1000000000.0, 1",
}.replaceInStrings("RANGES", "0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0");

const QStringList redilutions{
    "'ATIII/redilution/lower', '1/8'", "'ATIII/redilution/upper', '1/30'",
    "'FIB/redilution/lower', '1/5'", "'FIB/redilution/upper', '1/20'",
    "'II/redilution/lower', '1/5'", "'II/redilution/upper', '1/20'",
    "'V/redilution/lower', '1/5'", "'V/redilution/upper', '1/20'",
    "'VII/redilution/lower', '1/5'", "'VII/redilution/upper', '1/20'",
    "'X/redilution/lower', '1/5'", "'X/redilution/upper', '1/20'",
    "'VIII/redilution/lower', '1/5'", "'VIII/redilution/upper', '1/20'",
    "'IX/redilution/lower', '1/5'", "'IX/redilution/upper', '1/20'",
    "'XI/redilution/lower', '1/5'", "'XI/redilution/upper', '1/20'",
    "'XII/redilution/lower', '1/5'", "'XII/redilution/upper', '1/20'",
    "'PC/redilution/lower', '1/2'", "'PC/redilution/upper', '1/8'",
    "'PS/redilution/lower', '1/10'", "'PS/redilution/upper', '1/40'",
    "'XA/redilution/lower', '1/5'", "'XA/redilution/upper', '1/20'",
};
// clang-format on

QStringList itemsOf17InChinese()
{
    QStringList items = itemsOf17;
    for (const auto &[abbr, code] : chineseCodesOf17)
        items.replaceInStrings(QRegularExpression(QString("'%1', '[^']*'").arg(abbr)),
                               QString("'%1', '%2'").arg(abbr, code));
    return items;
}

QStringList templateStatementsOf17()
{
    QStringList statements;
    for (const QString &row : templatesOf17)
        statements << "insert or ignore into assayTemplate values(" + row.section(", ", 0, 2);
    return statements;
}

QStringList itemStatementsOf17()
{
    QStringList statements;
    for (const QString &row : itemsOf17)
        statements << "insert or ignore into assayItem values(" + row.section(", ", 0, 3);
    return statements;
}

QStringList codeStatementsOf17()
{
    QStringList statements;
    for (const auto &[abbr, code] : chineseCodesOf17)
        statements << QString("update assayItem set code='%1' where abbr='%2'").arg(code, abbr);
    return statements;
}

const QStringList orderStatements{
    "update assayTemplate set displayOrder=330 where name='PT2'",
    "update assayTemplate set displayOrder=340 where name='PT3'",
    "update assayTemplate set displayOrder=350 where name='APTT2'",
    "update assayTemplate set displayOrder=360 where name='APTT3'",
    "update assayTemplate set displayOrder=370 where name='APTT4'",
    "update assayTemplate set displayOrder=380 where name='APTT5'",
    "update assayTemplate set displayOrder=390 where name='APTT6'",
    "update assayTemplate set displayOrder=400 where name='APTT7'",
};

} // namespace

class TestProfileV17ToV23 : public QObject {
    Q_OBJECT

private slots:
    void init();

    void v17AddsProgramsOfPtAndAptt_data();
    void v17AddsProgramsOfPtAndAptt();
    void v17KeepsRowsThatExist();
    void v17SkipsTemplatesOfAKnownName();
    void v17AddsTheRowsThatCanBeAdded();
    void v17NamesEveryItemOfAnAbbreviation();
    void v18AddsTheTimeDependency_data();
    void v18AddsTheTimeDependency();
    void v18KeepsTheItemThatExists();
    void v18PassesWithoutItem192();
    void v18RemovesItem192WhoseverItIs();
    void v19MovesTheProgramsToTheEnd();
    void v19PassesWithoutThePrograms();
    void v19FindsProgramsByName();
    void v20AddsRivaroxaban();
    void v21AddsRedilutions();
    void v22AddsTheLabelOfTheInstrument_data();
    void v22AddsTheLabelOfTheInstrument();
    void v22KeepsALabel();
    void v23AddsExpiryDates();
    void v23CountsTwentyYears_data();
    void v23CountsTwentyYears();

    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void ignoresAndWarnsOnce_data();
    void ignoresAndWarnsOnce();
    void v18IgnoresARefusedCode();
    void v18IgnoresARefusedItem();
};

void TestProfileV17ToV23::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestProfileV17ToV23::v17AddsProgramsOfPtAndAptt_data()
{
    addLanguageRows();
}

/// Shows: PRO-11
void TestProfileV17ToV23::v17AddsProgramsOfPtAndAptt()
{
    QFETCH(QString, base);
    QFETCH(QString, profile);
    QFETCH(bool, chinese);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 16);
    DatabaseContent expected(database);
    const Languages languages(base, profile);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v17);

    QVERIFY(passed);
    expected.insert("assayTemplate", templatesOf17);
    expected.insert("assayItem", chinese ? itemsOf17InChinese() : itemsOf17);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

/// Shows: PRO-16
void TestProfileV17ToV23::v17KeepsRowsThatExist()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    database.execute({"update assayTemplate set displayName = 'my ' || name, displayOrder = 1"
                      " where id between 33 and 40",
                      "update assayItem set assayTemplateId = 1, name = 'my ' || name, abbr = id,"
                      " code = 'mine', upperMeasurement = 7.5 where id between 180 and 254"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v17);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV17ToV23::v17SkipsTemplatesOfAKnownName()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 16);
    database.execute({"insert into assayTemplate(id, name, displayName) values"
                      "(500, 'PT3', 'site''s PT3'), (501, 'site''s APTT', 'APTT7')"});
    DatabaseContent expected(database);
    const Languages languages("en", QString());

    const bool passed = runProfileStep(database, &UpdateProfile::update_v17);

    QVERIFY(passed);
    expected.insert("assayTemplate", templatesOf17.mid(0, 1) + templatesOf17.mid(2, 5));
    expected.insert("assayItem", itemsOf17);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v17AddsTheRowsThatCanBeAdded()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 16);
    database.execute({refuseInsert("assayTemplate", "new.id = 39"),
                      refuseInsert("assayItem", "new.id in (240, 232)")});
    DatabaseContent expected(database);
    const Languages languages("en", QString());
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v17);

    QVERIFY(passed);
    expected.insert("assayTemplate", templatesOf17.mid(1));
    expected.insert("assayItem", itemsOf17.mid(1, 22));
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {"insert or ignore into assayTemplate values(39, 'PT2',",
                     "insert or ignore into assayItem values(240, 39,",
                     "insert or ignore into assayItem values(232, 38,"});
}

void TestProfileV17ToV23::v17NamesEveryItemOfAnAbbreviation()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 16);
    database.execute({"insert into assayItem(id, name, abbr, code) values"
                      "(300, 'T', 'PT2-S', 'mine'), (301, 'T', 'pt2-s', 'mine')",
                      "insert into assayItem(id, name, abbr, code) values"
                      "(240, 'T', 'PT2-T', 'mine')"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v17);

    QVERIFY(passed);
    QCOMPARE(database.rows("select id, code from assayItem where id in (240, 300, 301)"
                           " order by id"),
             QStringList({"240, 'mine'", "300, '凝血酶原时间(PT2)'", "301, 'mine'"}));
}

void TestProfileV17ToV23::v18AddsTheTimeDependency_data()
{
    addLanguageRows();
}

/// Shows: PRO-11
void TestProfileV17ToV23::v18AddsTheTimeDependency()
{
    QFETCH(QString, base);
    QFETCH(QString, profile);
    QFETCH(bool, chinese);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    DatabaseContent expected(database);
    const Languages languages(base, profile);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v18);

    QVERIFY(passed);
    expected.insert("assayItem", {chinese ? differenceOfAptt7InChinese : differenceOfAptt7});
    expected.remove("assayItem", rosnerIndexOfAptt3);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v18KeepsTheItemThatExists()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    database.execute({"insert into assayItem(id, name, code) values(233, 'mine', 'mine')"});
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v18);

    QVERIFY(passed);
    expected.remove("assayItem", rosnerIndexOfAptt3);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v18PassesWithoutItem192()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    database.execute({"delete from assayItem where id = 192"});
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v18);

    QVERIFY(passed);
    expected.insert("assayItem", {differenceOfAptt7InChinese});
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

/// Shows: PRO-18
void TestProfileV17ToV23::v18RemovesItem192WhoseverItIs()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    database.execute({"update assayItem set assayTemplateId = 1, abbr = 'mine' where id = 192",
                      "update assayItem set abbr = 'APTT3-RI' where id = 191"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v18);

    QVERIFY(passed);
    QCOMPARE(database.rows("select id, abbr from assayItem where id between 190 and 193"
                           " order by id"),
             QStringList({"190, 'APTT3-T'", "191, 'APTT3-RI'"}));
}

void TestProfileV17ToV23::v18IgnoresARefusedItem()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    database.execute({refuseInsert("assayItem")});
    DatabaseContent expected(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v18);

    QVERIFY(passed);
    expected.remove("assayItem", rosnerIndexOfAptt3);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {"insert or ignore into assayItem values(233, 38, 'DETLA', 2, 's',"
                     " 'APTT6.T-APTT7.T', 2, 4, 'APTT7-DETLA', 'Time-dependency',"});
}

void TestProfileV17ToV23::v18IgnoresARefusedCode()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 17);
    database.execute({refuseUpdate("assayItem")});
    DatabaseContent expected(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v18);

    QVERIFY(passed);
    expected.insert("assayItem", {differenceOfAptt7}).remove("assayItem", rosnerIndexOfAptt3);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder,
                    {"update assayItem set code='时间依赖差(APTT7)' where abbr='APTT7-DETLA'"});
}

/// Shows: PRO-11
void TestProfileV17ToV23::v19MovesTheProgramsToTheEnd()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 18);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v19);

    QVERIFY(passed);
    expected.edit("assayTemplate", "'PT2', 'PT2'", ", 11,", ", 330,");
    expected.edit("assayTemplate", "'PT3', 'PT3'", ", 12,", ", 340,");
    expected.edit("assayTemplate", "'APTT2', 'APTT2'", ", 21,", ", 350,");
    expected.edit("assayTemplate", "'APTT3', 'APTT3'", ", 22,", ", 360,");
    expected.edit("assayTemplate", "'APTT4', 'APTT4'", ", 23,", ", 370,");
    expected.edit("assayTemplate", "'APTT5', 'APTT5'", ", 24,", ", 380,");
    expected.edit("assayTemplate", "'APTT6', 'APTT6'", ", 25,", ", 390,");
    expected.edit("assayTemplate", "'APTT7', 'APTT7'", ", 26,", ", 400,");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v19PassesWithoutThePrograms()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 18);
    database.execute({"delete from assayTemplate where id >= 33"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v19);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV17ToV23::v19FindsProgramsByName()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 18);
    database.execute({"delete from assayTemplate",
                      "insert into assayTemplate(id, name, displayName, displayOrder) values"
                      "(500, 'PT2', 'second', 7), (39, 'PT', 'PT2', 8), (40, 'pt3', 'PT3', 9)"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v19);

    QVERIFY(passed);
    QCOMPARE(database.rows("select id, displayOrder from assayTemplate order by id"),
             QStringList({"39, 8", "40, 9", "500, 330"}));
}

/// Shows: PRO-12
void TestProfileV17ToV23::v20AddsRivaroxaban()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 19);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v20);

    QVERIFY(passed);
    expected.insertNumbered("reagent", reagentsOf20).insert("assayTemplate", {templateOf20});
    expected.insert("assayCalibration", calibrationsOf20).insert("assayItem", itemsOf20);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

/// Shows: PRO-12
void TestProfileV17ToV23::v21AddsRedilutions()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 20);
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v21);

    QVERIFY(passed);
    QCOMPARE(redilutions.size(), 26);
    expected.append("profile", redilutions);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v22AddsTheLabelOfTheInstrument_data()
{
    QTest::addColumn<QByteArray>("context");
    QTest::addColumn<QString>("translation");
    QTest::addColumn<QString>("label"); // as SQL literal

    const QByteArray own = "coagulation::UpdateProfile";
    QTest::newRow("no translation") << own << QString() << "'测量仪器'";
    QTest::newRow("translated") << own << "Instrument"
                                << "'Instrument'";
    QTest::newRow("with an apostrophe") << own << "Doctor's"
                                        << "'Doctor''s'";
    QTest::newRow("with the end of a statement") << own << "'); delete from profile; --"
                                                 << "'''); delete from profile; --'";
    QTest::newRow("with places for arguments") << own << "%1 :instrId ?"
                                               << "'%1 :instrId ?'";
    QTest::newRow("of digits") << own << "007"
                               << "'007'";
    QTest::newRow("in another context") << QByteArray("coagulation::UpdateBase") << "Instrument"
                                        << "'测量仪器'";
}

/// Shows: PRO-12
void TestProfileV17ToV23::v22AddsTheLabelOfTheInstrument()
{
    QFETCH(QByteArray, context);
    QFETCH(QString, translation);
    QFETCH(QString, label);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 21);
    DatabaseContent expected(database);
    const Translation installed(context, {{"测量仪器", translation}});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v22);

    QVERIFY(passed);
    expected.append("profile", {"'patient/instrId', " + label});
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v22KeepsALabel()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 21);
    database.execute({"insert into profile values('patient/instrId', null)"});
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v22);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

/// Shows: PRO-13
void TestProfileV17ToV23::v23AddsExpiryDates()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 22);
    database.execute(
        {"update curve set date = null", "update curve set date = '2016-04-0' || id where id < 6"});
    DatabaseContent expected(database);

    const bool passed = runProfileStep(database, &UpdateProfile::update_v23);

    QVERIFY(passed);
    const QStringList expiryDates{"'2036-04-01'", "'2036-04-02'", "'2036-04-03'",
                                  "'2036-04-04'", "'2036-04-05'", "NULL"};
    QStringList &curves = expected.rows("curve");
    for (int i = 0; i < curves.size(); ++i)
        curves[i] += ", " + expiryDates.at(i);
    expected.redefine("CREATE TABLE \"curve\"",
                      "CREATE TABLE \"curve\" (id integer primary key, name text not null,"
                      " xUnit text, yUnit text, correlation real, date date, xFun integer,"
                      " yFun integer, a real, b real, c real, d real, e real, valid integer,"
                      " instrUuid text, lotsNum text, expirationDate date)");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
}

void TestProfileV17ToV23::v23CountsTwentyYears_data()
{
    QTest::addColumn<QString>("date"); // as SQL literals
    QTest::addColumn<QString>("expiryDate");

    QTest::newRow("a leap day") << "'2016-02-29'"
                                << "'2036-02-29'";
    QTest::newRow("a leap day, to a year without one") << "'2080-02-29'"
                                                       << "'2100-03-01'";
    QTest::newRow("the end of a century") << "'1999-12-31'"
                                          << "'2019-12-31'";
    QTest::newRow("with a time") << "'2016-04-01T23:59:59'"
                                 << "'2036-04-01'";
    QTest::newRow("no date") << "'soon'"
                             << "NULL";
    QTest::newRow("empty") << "''"
                           << "NULL";
    QTest::newRow("null") << "null"
                          << "NULL";
}

/// Shows: PRO-13
void TestProfileV17ToV23::v23CountsTwentyYears()
{
    QFETCH(QString, date);
    QFETCH(QString, expiryDate);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 22);
    database.execute({QString("update curve set date = %1 where id = 1").arg(date)});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v23);

    QVERIFY(passed);
    QCOMPARE(database.rows("select expirationDate from curve where id = 1"),
             QStringList{expiryDate});
}

void TestProfileV17ToV23::failsAndKeepsTheFile_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order

    const QString intoReagent =
        "insert into reagent (reagentId, type, name, initVolume, alarmLimit,"
        " vialType) values (null, ";
    QTest::newRow("20: reagent RX exists, from version 10")
        << 20 << 10 << QStringList{"insert into reagent(name) values('RX')"}
        << QStringList{intoReagent + "0, 'RX', 2000, 200, 3)"};
    QTest::newRow("20: reagent Buffer(RX) exists")
        << 20 << 19 << QStringList{"insert into reagent(name) values('Buffer(RX)')"}
        << QStringList{intoReagent + "2, 'Buffer(RX)', 6500, 200, 6)"};
    QTest::newRow("20: reagent is missing") << 20 << 19 << QStringList{"drop table reagent"}
                                            << QStringList{intoReagent + "0, 'RX', 2000, 200, 3)"};
    const QString intoTemplate =
        "insert into assaytemplate values(41, 'RX', 'RX', null, 410, 'T', 'P', 'Log', 'Log')";
    QTest::newRow("20: template 41 exists")
        << 20 << 19
        << QStringList{"insert into assayTemplate(id, name, displayName) values(41, 'a', 'b')"}
        << QStringList{intoTemplate};
    QTest::newRow("20: a template has the name RX")
        << 20 << 19
        << QStringList{"insert into assayTemplate(id, name, displayName) values(500, 'RX', 'b')"}
        << QStringList{intoTemplate};
    QTest::newRow("20: a template shows the name RX, from version 12")
        << 20 << 12
        << QStringList{"insert into assayTemplate(id, name, displayName) values(500, 'a', 'RX')"}
        << QStringList{intoTemplate};
    QTest::newRow("20: assayTemplate is missing")
        << 20 << 19 << QStringList{"drop table assayTemplate"} << QStringList{intoTemplate};
    for (const QString &row : calibrationsOf20) {
        const QString statement =
            "insert into assayCalibration values(" + row.section(", ", 0, 3) + ", null, 'OD', 'P',";
        const QString id = row.section(", ", 0, 0);
        const QString name = row.section(", ", 2, 2);
        QTest::addRow("20: calibration %s exists", qUtf8Printable(id))
            << 20 << 19
            << QStringList{QString("insert into assayCalibration(id, name) values(%1, 'a')")
                               .arg(id)}
            << QStringList{statement};
        QTest::addRow("20: a calibration has the name %s", qUtf8Printable(name))
            << 20 << 19
            << QStringList{QString("insert into assayCalibration(id, name) values(500, %1)")
                               .arg(name)}
            << QStringList{statement};
    }
    for (const QString &row : itemsOf20) {
        const QString id = row.section(", ", 0, 0);
        QTest::addRow("20: item %s exists", qUtf8Printable(id))
            << 20 << 19
            << QStringList{QString("insert into assayItem(id, name) values(%1, 'a')").arg(id)}
            << QStringList{"insert into assayItem values(" + row.section(", ", 0, 3)};
    }
    QTest::newRow("20: all of it exists, from version 18")
        << 20 << 18
        << QStringList{"insert into reagent(name) values('RX'), ('Buffer(RX)')",
                       "insert into assayTemplate(id, name, displayName) values(41, 'RX', 'RX')",
                       "insert into assayCalibration(id, name) values"
                       "(27, 'UFH'), (28, 'LMWH'), (29, 'RX')",
                       "insert into assayItem(id, name) values"
                       "(260, 'T'), (261, 'OD'), (262, 'P'), (263, 'R')"}
        << QStringList{intoReagent + "0, 'RX', 2000, 200, 3)"};

    const QString intoProfile =
        "insert into profile values('ATIII/redilution/lower', '1/8'),"
        " ('ATIII/redilution/upper', '1/30'), ('FIB/redilution/lower', '1/5'),";
    for (const QString &row : redilutions) {
        const QString key = row.section(", ", 0, 0);
        QTest::addRow("21: key %s exists", qUtf8Printable(key))
            << 21 << 20 << QStringList{QString("insert into profile values(%1, null)").arg(key)}
            << QStringList{intoProfile};
    }
    QTest::newRow("21: the last key exists, from version 10")
        << 21 << 10 << QStringList{"insert into profile values('XA/redilution/upper', '1/20')"}
        << QStringList{intoProfile};
    QTest::newRow("21: profile is missing")
        << 21 << 20 << QStringList{"drop table profile"} << QStringList{intoProfile};

    const QString label = "insert or ignore into profile values('patient/instrId', :instrId)";
    QTest::newRow("22: profile is missing")
        << 22 << 21 << QStringList{"drop table profile"} << QStringList{label};
    QTest::newRow("22: the key is refused, from version 10")
        << 22 << 10 << QStringList{refuseInsert("profile", "new.name = 'patient/instrId'")}
        << QStringList{label};

    const QString newColumn = "ALTER TABLE curve ADD COLUMN expirationDate date;";
    QTest::newRow("23: the column exists, from version 10")
        << 23 << 10 << QStringList{"alter table curve add expirationDate"}
        << QStringList{newColumn};
    QTest::newRow("23: the column exists in other letters")
        << 23 << 22 << QStringList{"alter table curve add expirationdate"}
        << QStringList{newColumn};
    QTest::newRow("23: curve is missing")
        << 23 << 22 << QStringList{"drop table curve"} << QStringList{newColumn};
    QTest::newRow("23: the dates are refused")
        << 23 << 22 << QStringList{refuseUpdate("curve")}
        << QStringList{"UPDATE curve SET expirationDate = DATE(date, '+20 years')"
                       " WHERE expirationDate IS NULL AND date IS NOT NULL;"};
}

void TestProfileV17ToV23::failsAndKeepsTheFile()
{
    QFETCH(int, step);
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);

    verifyStepFails(step, stored, obstacles, failing);
}

void TestProfileV17ToV23::ignoresAndWarnsOnce_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QStringList>("failing"); // how each failing statement begins, in order
    QTest::addColumn<QStringList>("kept");    // tables

    QTest::newRow("17: templates are refused")
        << 17 << QStringList{refuseInsert("assayTemplate")} << templateStatementsOf17()
        << QStringList{"assayTemplate"};
    QTest::newRow("17: assayTemplate is missing")
        << 17 << QStringList{"drop table assayTemplate"} << templateStatementsOf17()
        << QStringList{"assayTemplate"};
    QStringList itemsOfTheCodes;
    for (const auto &[abbr, code] : chineseCodesOf17)
        itemsOfTheCodes
            << QString("insert into assayItem(name, abbr) values('mine', '%1')").arg(abbr);
    QTest::newRow("17: all of items is refused")
        << 17 << itemsOfTheCodes + QStringList{refuseInsert("assayItem"), refuseUpdate("assayItem")}
        << itemStatementsOf17() + codeStatementsOf17() << QStringList{"assayItem"};
    QTest::newRow("17: assayItem is missing")
        << 17 << QStringList{"drop table assayItem"} << itemStatementsOf17() + codeStatementsOf17()
        << QStringList{"assayItem"};

    const QStringList statementsOf18{
        "insert or ignore into assayItem values(233, 38, 'DETLA', 2, 's', 'APTT6.T-APTT7.T',",
        "update assayItem set code='时间依赖差(APTT7)' where abbr='APTT7-DETLA'",
        "delete from assayItem where id = 192",
    };
    QTest::newRow("18: all is refused")
        << 18
        << QStringList{"insert into assayItem(name, abbr) values('mine', 'APTT7-DETLA')",
                       refuseInsert("assayItem"), refuseUpdate("assayItem"),
                       "create trigger delete_item before delete on assayItem"
                       " begin select raise(abort, 'refused'); end"}
        << statementsOf18 << QStringList{"assayItem"};
    QTest::newRow("18: assayItem is missing")
        << 18 << QStringList{"drop table assayItem"} << statementsOf18 << QStringList{"assayItem"};

    QTest::newRow("19: all is refused") << 19 << QStringList{refuseUpdate("assayTemplate")}
                                        << orderStatements << QStringList{"assayTemplate"};
    QTest::newRow("19: assayTemplate is missing")
        << 19 << QStringList{"drop table assayTemplate"} << orderStatements
        << QStringList{"assayTemplate"};
}

void TestProfileV17ToV23::ignoresAndWarnsOnce()
{
    QFETCH(int, step);
    QFETCH(QStringList, obstacles);
    QFETCH(QStringList, failing);
    QFETCH(QStringList, kept);

    verifyStepIgnores(step, obstacles, failing, kept);
}

QTEST_GUILESS_MAIN(TestProfileV17ToV23)
#include "tst_profile_v17_to_v23.moc"
