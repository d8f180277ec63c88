// SPDX-License-Identifier: MIT
/// The profile database from every stored version to the current one.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "profilesteps.h"
#include "today.h"
#include "upgrade.h"

#include <QTest>

namespace {

const int newestVersion = newestVersionOf("profile");
const QString updated = QString("Debug: Updated version to %1").arg(newestVersion);

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

class TestProfile : public QObject {
    Q_OBJECT

private slots:
    void init();

    void reachesTheNewestVersionFromEveryVersion_data();
    void reachesTheNewestVersionFromEveryVersion();
    void changesNothingInASecondRun();
    void lowersAVersionAboveTheNewestStep();
    void keepsTheFileAfterAFailureOfAnyStep_data();
    void keepsTheFileAfterAFailureOfAnyStep();
};

void TestProfile::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestProfile::reachesTheNewestVersionFromEveryVersion_data()
{
    QTest::addColumn<int>("stored");

    for (int version = 0; version <= newestVersion; ++version)
        QTest::addRow("%d", version) << version;
}

/// Shows: PRO-1
void TestProfile::reachesTheNewestVersionFromEveryVersion()
{
    QFETCH(int, stored);
    const TestDatabase fromTheOldest("profile.db");
    makeDatabaseAt(fromTheOldest, "profile", 0);
    QVERIFY(upgrade(fromTheOldest));
    DatabaseContent expected(fromTheOldest);
    becomeUpgradedFrom(stored, expected);
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", stored);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    const QStringList log = recorder.messages();
    QCOMPARE(log.constFirst(), "Debug: Updating " + database.path());
    QCOMPARE(log.filter(QRegularExpression("^Debug: update_v")), stepLog("profile", stored));
    QCOMPARE(log.constLast(), updated);
    compareFailures(
        recorder,
        stored == 8 || stored == 9
            ? QStringList{"insert or ignore into assaytemplate values(22, 'XA', null, 220,"}
            : QStringList());
    QCOMPARE(database.table("version"), QStringList{QString::number(newestVersion)});
    QCOMPARE(withToday(DatabaseContent(database).lines()), withToday(expected.lines()));
}

void TestProfile::changesNothingInASecondRun()
{
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", 0);
    QVERIFY(upgrade(database));
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages(),
             QStringList{"Debug: Updating " + database.path()} + stepLog("profile", newestVersion)
                 + QStringList{updated});
}

void TestProfile::lowersAVersionAboveTheNewestStep()
{
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", newestVersion);
    const QStringList before = database.content();
    database.execute({"update version set version = version + 1"});

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
}

void TestProfile::keepsTheFileAfterAFailureOfAnyStep_data()
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

/// Shows: ENG-11
void TestProfile::keepsTheFileAfterAFailureOfAnyStep()
{
    QFETCH(int, stored);
    QFETCH(int, step);
    QFETCH(QString, obstacle);
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", stored);
    database.execute({obstacle});
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    const QStringList log = debugMessages(recorder.messages());
    QCOMPARE(log.filter(QRegularExpression("^Debug: update_v")), stepLog("profile", stored, step));
    QCOMPARE(log.filter("Updated version"), QStringList());
}

QTEST_GUILESS_MAIN(TestProfile)
#include "tst_profile.moc"
