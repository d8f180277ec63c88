/// The profile database from every stored version to the current one.

#include "messagerecorder.h"
#include "profiledatabase.h"
#include "profilesteps.h"

#include <QtTest>

namespace {

const QStringList newSchema{
    "CREATE TABLE \"assayCalibration\"(id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text not null unique,"
    " method integer, condition text, caliX text, caliY text, funX text, funY text, dispX text,"
    " dispY text)",
    "CREATE TABLE \"assayItem\" (id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text not null, method integer,"
    " unit text, expr text, precision integer default 2, displayOrder integer, abbr text,"
    " code text, lowerNormal real default 0, upperNormal real default 0,"
    " lowerReport real default 0, upperReport real default 0, lowerRepeat real default 0,"
    " upperRepeat real default 0, lowerRedilution real default 0,"
    " upperRedilution real default 0, lowerMeasurement real, upperMeasurement real,"
    " visible integer default 1)",
    "CREATE TABLE \"assayTemplate\" (id integer primary key, name text not null unique,"
    " displayName text not null unique, class text, displayOrder integer, caliX text, caliY text,"
    " funX text, funY text)",
    "CREATE TABLE \"currentCurve\" (id integer primary key, instrUuid text, name text,"
    " curveId integer references curve, unique(instrUuid, name) on conflict replace)",
    "CREATE TABLE \"curve\" (id integer primary key, name text not null, xUnit text, yUnit text,"
    " correlation real, date date, xFun integer, yFun integer, a real, b real, c real, d real,"
    " e real, valid integer, instrUuid text, lotsNum text, expirationDate date)",
    "CREATE TABLE \"user\"(id integer primary key, name text unique COLLATE NOCASE, password text,"
    " level integer default 0, hide integer default 0)",
    "CREATE TABLE curveInfo (curveId integer references curve, name text not null, value,"
    " unique (curveId, name) on conflict replace)",
    "CREATE TABLE curvePoint (id integer primary key, curveId integer references curve, x real,"
    " y real, z real, flags integer)",
    "CREATE TABLE curveReagent (curveId integer references curve, name text, lot text)",
    "CREATE TABLE curveVariable (curveId integer references curve, name text, value real)",
    "CREATE TABLE dataCheck (assayTemplateId integer unique references assayTemplate,"
    " report integer default 0, reportItemFullName text, reportLower real, reportUpper real,"
    " mark integer default 0, markItemFullName text, markLower real, markUpper real,"
    " redilution integer default 0, redilutionItemFullName text, redilutionLower real,"
    " redilutionUpper real, repeat integer default 0, repeatItemFullName text,"
    " repeatLower real, repeatUpper real, rep integer default 0, repDiff real)",
    "CREATE TABLE profile (name text primary key, value)",
    "CREATE TABLE reagent (id integer primary key, reagentId, type integer references reagentType,"
    " name text not null unique, initVolume integer, alarmLimit integer, vialType integer)",
    "CREATE TABLE reagentType (id integer primary key, name text)",
    "CREATE TABLE variable (id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text, value,"
    " unique(assayTemplateId, name))",
    "CREATE TABLE version(version integer)",
    "CREATE TRIGGER afterDeleteAssayTemplate after delete on assayTemplate begin"
    " delete from variable where variable.assayTemplateId = old.id;"
    " delete from assayItem where assayItem.assayTemplateId = old.id;"
    " delete from dataCheck where dataCheck.assayTemplateId = old.id; end",
    "CREATE TRIGGER deleteCurve after delete on curve begin"
    " delete from curvePoint where curvePoint.curveId = old.id;"
    " delete from curveVariable where curveVariable.curveId = old.id;"
    " delete from curveReagent where curveReagent.curveId = old.id;"
    " delete from curveInfo where curveInfo.curveId = old.id;"
    " delete from currentCurve where currentCurve.curveId = old.id; end",
    "CREATE UNIQUE INDEX reagent_index_reagentId on reagent (reagentId)",
};

/// \return the schema in the order and with the blanks that a test can compare
QStringList comparable(QStringList schema)
{
    schema.replaceInStrings(" (", "(").sort();
    return schema;
}

/// Fills a database with the sample at a version.
void makeAt(const TestDatabase &database, int version)
{
    if (version < 10)
        makeProfileAt(database, version);
    else
        makeProfileAtStep(database, version);
}

/// \return what is in an upgraded database, with one date for all curves that were fitted again, whose
///         date is the day of the test
DatabaseContent contentOf(const TestDatabase &database)
{
    database.execute({"update curve set date = 'today', expirationDate = 'in 20 years'"
                      " where date > '2016-04-30'"});
    return DatabaseContent(database);
}

/// Changes the content after an upgrade from the oldest layout into that after an upgrade from another
/// version, whose own rows stand before those that version 10 brings to every database.
void becomeUpgradedFrom(int stored, DatabaseContent &content)
{
    if (stored < 6 || stored > 9)
        return;

    // Version 6 brought 26 reagents, and settings up to that of LAS, version 10 an ATIII buffer and
    // three labels.
    for (QString &row : content.rows("reagent")) {
        const int id = row.section(',', 0, 0).toInt();
        if (id >= 27 && id <= 53)
            row = QString::number(id == 27 ? 53 : id - 1) + row.mid(2);
    }
    content.insert("reagent", {}); // by their new ids
    QStringList &settings = content.rows("profile");
    for (const QString &label :
         QStringList{"'patient/outputTime', '传输时间'", "'patient/printTime', '打印时间'",
                     "'patient/memo', '备注'"}) // each before the last
        settings.move(settings.indexOf(label), settings.indexOf("'analyst/LAS/odPercent', 0.1"));

    // Version 7 gave out its reagent ids before there was an ATIII buffer.
    if (stored >= 7)
        content.edit("reagent", "'Buffer(ATIII)'", "'111'", "NULL");

    // Version 8 gave templates a column more, with which the row of the anti-Xa template fails.
    if (stored >= 8)
        content.remove("assayTemplate", "22, 'XA', 'XA', NULL, 220, 'T', 'P', 'Log', 'Log'");
}

} // namespace

class TestUpdateProfile : public QObject {
    Q_OBJECT

private slots:
    void init();

    void reachesVersion30_data();
    void reachesVersion30();
    void changesNothingInASecondRun();
    void lowersAVersionAboveTheNewestStep();
    void keepsTheFileAfterAFailureOfAnyStep_data();
    void keepsTheFileAfterAFailureOfAnyStep();
};

void TestUpdateProfile::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestUpdateProfile::reachesVersion30_data()
{
    QTest::addColumn<int>("stored");

    for (int version = 0; version <= 30; ++version)
        QTest::addRow("%d", version) << version;
}

void TestUpdateProfile::reachesVersion30()
{
    QFETCH(int, stored);
    const TestDatabase fromTheOldest("profile.db");
    makeAt(fromTheOldest, 0);
    QVERIFY(upgradeProfile(fromTheOldest));
    DatabaseContent expected = contentOf(fromTheOldest);
    becomeUpgradedFrom(stored, expected);
    const TestDatabase database("profile.db");
    makeAt(database, stored);
    const MessageRecorder recorder;

    const bool upgraded = upgradeProfile(database);

    QVERIFY(upgraded);
    const QStringList log = recorder.messages();
    QCOMPARE(log.constFirst(), "Debug: Updating " + database.path());
    QCOMPARE(log.filter(QRegularExpression("^Debug: update_v")), profileStepLog(stored));
    QCOMPARE(log.constLast(), "Debug: Updated version to 30");
    compareFailures(
        recorder,
        stored == 8 || stored == 9
            ? QStringList{"insert or ignore into assaytemplate values(22, 'XA', null, 220,"}
            : QStringList());
    QCOMPARE(comparable(database.schema()), comparable(newSchema));
    QCOMPARE(database.table("version"), QStringList{"30"});
    QCOMPARE(contentOf(database).lines(), expected.lines());
}

void TestUpdateProfile::changesNothingInASecondRun()
{
    const TestDatabase database("profile.db");
    makeAt(database, 0);
    QVERIFY(upgradeProfile(database));
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgradeProfile(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
    QStringList log{"Debug: Updating " + database.path()};
    for (int step = 10; step <= 30; ++step)
        log << QString("Debug: update_v%1(): SKIP").arg(step);
    QCOMPARE(recorder.messages(), log << "Debug: Updated version to 30");
}

void TestUpdateProfile::lowersAVersionAboveTheNewestStep()
{
    const TestDatabase database("profile.db");
    makeAt(database, 30);
    const QStringList before = database.content();
    database.execute({"update version set version = 31"});

    const bool upgraded = upgradeProfile(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
}

void TestUpdateProfile::keepsTheFileAfterAFailureOfAnyStep_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("step");
    QTest::addColumn<QString>("obstacle");

    const QString settingOf28 =
        "insert into profile values('ATIII/incubator/duration/factory', '60')";
    QTest::newRow("28, from the oldest layout") << 0 << 28 << settingOf28;
    for (int version = 1; version < 28; ++version)
        QTest::addRow("28, from %d", version) << version << 28 << settingOf28;
    QTest::newRow("15, from the oldest layout")
        << 0 << 15 << "insert into profile values('print/wb1/copies', 1)";
    QTest::newRow("21, from the oldest layout")
        << 0 << 21 << "insert into profile values('FIB/redilution/upper', '1/20')";
    QTest::newRow("24, from the oldest layout")
        << 0 << 24 << "insert into profile values('program/DD/r3/mix/times', 1)";
    QTest::newRow("30, from the oldest layout")
        << 0 << 30 << "insert into reagent(name) values('R2(vWF)')";
}

void TestUpdateProfile::keepsTheFileAfterAFailureOfAnyStep()
{
    QFETCH(int, stored);
    QFETCH(int, step);
    QFETCH(QString, obstacle);
    const TestDatabase database("profile.db");
    makeAt(database, stored);
    database.execute({obstacle});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgradeProfile(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    const QStringList log = debugMessages(recorder.messages());
    QCOMPARE(log.filter(QRegularExpression("^Debug: update_v")), profileStepLog(stored, step));
    QCOMPARE(log.filter("Updated version"), QStringList());
}

QTEST_GUILESS_MAIN(TestUpdateProfile)
#include "tst_updateprofile.moc"
