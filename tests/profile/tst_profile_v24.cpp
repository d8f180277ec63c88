// SPDX-License-Identifier: MIT
/// Step 24 of the profile database: the keys of programs by reagent.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "profilesteps.h"
#include "upgrade.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

const QString selection = "SELECT name FROM profile WHERE name LIKE 'program/%/volume'"
                          " OR name LIKE 'program/%/diluent' OR name LIKE 'program/%/name1'"
                          " OR name LIKE 'program/%/name2' OR name LIKE 'program/%/name3'"
                          " OR name LIKE 'program/%/reagent1' OR name LIKE 'program/%/reagent2'"
                          " OR name LIKE 'program/%/reagent3' OR name LIKE '%/mix/type'"
                          " OR name LIKE '%/mix/times' OR name LIKE '%/mix/volume'"
                          " OR name LIKE '%/mix/duration'";
const QString renaming = "update profile set name=:newKey where name=:key";

/// Fills the database with the sample at version 23 without its settings.
void makeWithoutSettings(const TestDatabase &database)
{
    makeProfileAtStep(database, 23);
    database.execute({"delete from profile"});
}

} // namespace

class TestProfileV24 : public QObject {
    Q_OBJECT

private slots:
    void init();

    void groupsTheSettingsOfTheSample();
    void renamesAKey_data();
    void renamesAKey();
    void keepsAKey_data();
    void keepsAKey();
    void renamesInAscendingOrder();
    void keepsValuesAndTheirTypes();
    void changesNothingInASecondRun();
    void renamesToAKeyThatExistsWithoutAConstraint();
    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void failsWhenTheRenamingCannotBePrepared_data();
    void failsWhenTheRenamingCannotBePrepared();
};

void TestProfileV24::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

/// Shows: PRO-13
void TestProfileV24::groupsTheSettingsOfTheSample()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 23);
    DatabaseContent expected(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    expected.replace("profile", "'PT/mix/times', 1", "'program/PT/r3/mix/times', 1");
    expected.replace("profile", "'DD/mix/times', 3", "'program/DD/r3/mix/times', 3");
    expected.replace("profile", "'FDP/mix/times', 3", "'program/FDP/r3/mix/times', 3");
    expected.replace("profile", "'program/PT/name1', 'PT'", "'program/PT/r1/name', 'PT'");
    expected.replace("profile", "'program/PT/reagent1', 100", "'program/PT/r1/volume', 100");
    expected.replace("profile", "'program/PT/volume', 50", "'program/PT/dilution/volume', 50");
    expected.replace("profile", "'program/APTT/name1', 'APTT'", "'program/APTT/r1/name', 'APTT'");
    expected.replace("profile", "'program/APTT/name2', 'CaCl2'", "'program/APTT/r2/name', 'CaCl2'");
    expected.replace("profile", "'program/FIB/name1', 'FIB'", "'program/FIB/r1/name', 'FIB'");
    expected.replace("profile", "'program/FIB/diluent', 'Buffer(FIB)'",
                     "'program/FIB/dilution/name', 'Buffer(FIB)'");
    expected.replace("profile", "'program/DD/name1', 'R1(DD)'", "'program/DD/r1/name', 'R1(DD)'");
    expected.replace("profile", "'program/DD/name2', 'R2(DD)'", "'program/DD/r2/name', 'R2(DD)'");
    expected.replace("profile", "'program/DD/diluent', 'Saline'",
                     "'program/DD/dilution/name', 'Saline'");
    expected.replace("profile", "'program/FDP/name1', 'R1(FDP)'",
                     "'program/FDP/r1/name', 'R1(FDP)'");
    expected.replace("profile", "'program/FDP/name2', 'R2(FDP)'",
                     "'program/FDP/r2/name', 'R2(FDP)'");
    expected.replace("profile", "'program/DDplus/name1', 'R1(DD)'",
                     "'program/DDplus/r1/name', 'R1(DD)'");
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    QCOMPARE(recorder.messages(), QStringList{"Debug: Updating " + database.path()});
}

void TestProfileV24::renamesAKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("renamed");

    const QList<std::pair<const char *, const char *>> keys{
        // the dilution
        {"program/PT/volume", "program/PT/dilution/volume"},
        {"program/pt/volume", "program/pt/dilution/volume"},
        {"program/PT_2/volume", "program/PT_2/dilution/volume"},
        {"program/_/volume", "program/_/dilution/volume"},
        {"program/0/volume", "program/0/dilution/volume"},
        {"program/volume/volume", "program/volume/dilution/volume"},
        {"program/dilution/volume", "program/dilution/dilution/volume"},
        {"program/program/volume", "program/program/dilution/volume"},
        {"program/PT/diluent", "program/PT/dilution/name"},
        {"program/name1/diluent", "program/name1/dilution/name"},
        // the reagents
        {"program/PT/name1", "program/PT/r1/name"},
        {"program/PT/name2", "program/PT/r2/name"},
        {"program/APTT/name3", "program/APTT/r3/name"},
        {"program/diluent/name1", "program/diluent/r1/name"},
        {"program/PT/reagent1", "program/PT/r1/volume"},
        {"program/PT/reagent2", "program/PT/r2/volume"},
        {"program/APTT/reagent3", "program/APTT/r3/volume"},
        {"program/reagent3/reagent3", "program/reagent3/r3/volume"},
        // the mixing
        {"PT/mix/type", "program/PT/r3/mix/type"},
        {"PT/mix/times", "program/PT/r3/mix/times"},
        {"PT/mix/volume", "program/PT/r3/mix/volume"},
        {"PT/mix/duration", "program/PT/r3/mix/duration"},
        {"pt_2/mix/type", "program/pt_2/r3/mix/type"},
        {"PT/mix/Volume", "program/PT/r3/mix/Volume"}, // the rule takes any word after mix
        {"mix/mix/type", "program/mix/r3/mix/type"},
        // a program named "program", or "mix": the first rule that matches
        {"program/mix/volume", "program/mix/dilution/volume"},
        {"program/mix/type", "program/program/r3/mix/type"},
        {"program/mix/times", "program/program/r3/mix/times"},
    };
    for (const auto &[key, renamed] : keys)
        QTest::newRow(key) << key << renamed;
}

/// Shows: PRO-13
void TestProfileV24::renamesAKey()
{
    QFETCH(QString, key);
    QFETCH(QString, renamed);
    const TestDatabase database("profile.db");
    makeWithoutSettings(database);
    database.execute({QString("insert into profile values('%1', '%1')").arg(key)});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    QCOMPARE(database.table("profile"), QStringList{QString("'%1', '%2'").arg(renamed, key)});
}

void TestProfileV24::keepsAKey_data()
{
    QTest::addColumn<QString>("key");

    for (const char *key : {
             // selected, but of another form
             "Program/PT/Volume",
             "PROGRAM/PT/VOLUME",
             "program/PT/Volume",
             "Program/PT/name1",
             "program/PT/Name1",
             "program/PT/NAME2",
             "program/PT/Reagent3",
             "program/PT/Diluent",
             "PT/Mix/type",
             "PT/MIX/TIMES",
             "program/a/b/volume",
             "program/a/b/diluent",
             "program/a/b/name1",
             "program/a/b/reagent2",
             "x/y/mix/type",
             "program/PT/mix/type",
             "program//volume",
             "program//name1",
             "/mix/type",
             "/PT/mix/type",
             "program/PT-2/volume",
             "program/P T/name1",
             "program/PT./reagent1",
             "program/PT(2)/diluent",
             "P+/mix/times",
             "program/凝血/volume",
             "program/é/name1",
             "program/٣/reagent1", // a digit, but not of ASCII
             "凝血/mix/times",
             "PTé/mix/duration",
             "program/PT\n/volume",
             "\nPT/mix/type",
             // of the new form
             "program/PT/dilution/volume",
             "program/PT/r1/volume",
             "program/PT/r3/mix/times",
             // not selected, though a rule would change it
             "program/PT/name0",
             "program/PT/name4",
             "program/PT/name9",
             "program/PT/reagent0",
             "program/PT/reagent4",
             "program/PT/reagent9",
             "PT/mix/speed",
             "PT/mix/type2",
             // neither
             "program/PT/name",
             "program/PT/name12",
             "program/PT/reagent",
             "program/PT/reagent12",
             "program/PT/namex",
             "program/PT/dilution/name",
             "program/volume",
             "program/name1",
             "aprogram/PT/volume",
             "program/PT/volume/",
             "program/PT/volume ",
             "program/PT/volume\n",
             " program/PT/volume",
             "PT/mix/type/x",
             "PT/mix/",
             "PT/mix",
             "mix/type",
             "",
         })
        QTest::addRow("'%s'", QByteArray(key).replace('\n', "\\n").constData()) << key;
}

void TestProfileV24::keepsAKey()
{
    QFETCH(QString, key);
    const TestDatabase database("profile.db");
    makeWithoutSettings(database);
    database.execute({QString("insert into profile values('%1', 1)").arg(key)});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages(), QStringList{"Debug: Updating " + database.path()});
}

void TestProfileV24::renamesInAscendingOrder()
{
    const TestDatabase database("profile.db");
    makeWithoutSettings(database);
    database.execute(
        {"create table renamed(key text)",
         "create trigger rename_key after update of name on profile"
         " begin insert into renamed values(old.name); end",
         "insert into profile(name) values('program/PT/volume'), ('a/mix/type'), ('PT/mix/volume'),"
         " ('program/a/name1'), ('program/PT/reagent1'), ('_/mix/type'), ('program/APTT/name1'),"
         " ('PT/mix/type'), ('program/PT/name2'), ('PT2/mix/type'), ('program/PT/diluent'),"
         " ('9/mix/type'), ('program/PT_/name1'), ('z/mix/type'), ('program/PT0/name1')"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    QCOMPARE(database.rows("select key from renamed order by rowid"),
             QStringList({"'9/mix/type'", "'PT/mix/type'", "'PT/mix/volume'", "'PT2/mix/type'",
                          "'_/mix/type'", "'a/mix/type'", "'program/APTT/name1'",
                          "'program/PT/diluent'", "'program/PT/name2'", "'program/PT/reagent1'",
                          "'program/PT/volume'", "'program/PT0/name1'", "'program/PT_/name1'",
                          "'program/a/name1'", "'z/mix/type'"}));
}

void TestProfileV24::keepsValuesAndTheirTypes()
{
    const TestDatabase database("profile.db");
    makeWithoutSettings(database);
    database.execute({"insert into profile values('a/mix/type', 1), ('b/mix/type', 1.0),"
                      " ('c/mix/type', '1'), ('d/mix/type', x'00ff'), ('e/mix/type', null),"
                      " ('f/mix/type', ''), ('g/mix/type', 'it''s/mix/type')"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    QCOMPARE(database.table("profile"),
             QStringList({"'program/a/r3/mix/type', 1", "'program/b/r3/mix/type', 1.0",
                          "'program/c/r3/mix/type', '1'", "'program/d/r3/mix/type', X'00FF'",
                          "'program/e/r3/mix/type', NULL", "'program/f/r3/mix/type', ''",
                          "'program/g/r3/mix/type', 'it''s/mix/type'"}));
}

void TestProfileV24::changesNothingInASecondRun()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 24);
    const QStringList before = database.content();

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    QCOMPARE(database.content(), before);
}

void TestProfileV24::renamesToAKeyThatExistsWithoutAConstraint()
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 23);
    database.execute({"drop table profile", "create table profile(name text, value)",
                      "insert into profile values('PT/mix/type', 1), ('program/PT/r3/mix/type', 2),"
                      " ('PT/mix/type', 3)"});

    const bool passed = runProfileStep(database, &UpdateProfile::update_v24);

    QVERIFY(passed);
    QCOMPARE(database.table("profile"),
             QStringList({"'program/PT/r3/mix/type', 1", "'program/PT/r3/mix/type', 2",
                          "'program/PT/r3/mix/type', 3"}));
}

void TestProfileV24::failsAndKeepsTheFile_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("failing"); // how the failing statement begins

    QTest::newRow("a new key exists")
        << 23 << QStringList{"insert into profile values('program/PT/r1/name', 'PT')"} << renaming;
    QTest::newRow("a new key exists, from version 10")
        << 10 << QStringList{"insert into profile values('program/PT/dilution/volume', 50)"}
        << renaming;
    QTest::newRow("two new keys exist")
        << 23
        << QStringList{"insert into profile values('program/PT/r3/mix/times', 1),"
                       " ('program/APTT/r1/name', 'APTT')"}
        << renaming;
    QTest::newRow("the last key is refused")
        << 23
        << QStringList{"insert into profile values('z/mix/type', 1)",
                       refuseUpdate("profile", "old.name = 'z/mix/type'")}
        << renaming;
    QTest::newRow("profile is missing") << 23 << QStringList{"drop table profile"} << selection;
    QTest::newRow("profile has no name")
        << 23 << QStringList{"drop table profile", "create table profile(key text, value)"}
        << selection;
}

void TestProfileV24::failsAndKeepsTheFile()
{
    QFETCH(int, stored);
    QFETCH(QStringList, obstacles);
    QFETCH(QString, failing);

    verifyStepFails(24, stored, obstacles, {failing});
}

void TestProfileV24::failsWhenTheRenamingCannotBePrepared_data()
{
    QTest::addColumn<QStringList>("settings");

    QTest::newRow("settings of programs")
        << QStringList{"insert into setting values('PT/mix/type', 1)"};
    QTest::newRow("no settings") << QStringList();
}

void TestProfileV24::failsWhenTheRenamingCannotBePrepared()
{
    QFETCH(QStringList, settings);
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, 23);
    database.execute(QStringList{"drop table profile", "create table setting(name text, value)",
                                 "create view profile as select * from setting"}
                     + settings);
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(debugMessages(recorder.messages()),
             QStringList{"Debug: Updating " + database.path()} + stepLog("profile", 23, 24));
    const QStringList warnings = recorder.messages().filter(QRegularExpression("^Warning: "));
    QCOMPARE(warnings.size(), 1);
    QVERIFY2(warnings.constFirst().contains("cannot modify profile because it is a view"),
             qUtf8Printable(warnings.constFirst()));
}

QTEST_GUILESS_MAIN(TestProfileV24)
#include "tst_profile_v24.moc"
