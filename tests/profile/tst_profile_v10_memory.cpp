// SPDX-License-Identifier: MIT
/// The laboratory's own values, while one request of SQLite for memory after another fails. A value or the name of a
/// column that the driver loses in silence must not be taken for one that is not there.

#include "driversqlite.h"
#include "failingmemory.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "testfiles.h"
#include "today.h"
#include "upgrade.h"

#include <QTest>

#include <sqlite3.h>

class TestProfileV10Memory : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void keepsAllValuesOrNone_data();
    void keepsAllValuesOrNone();
};

void TestProfileV10Memory::initTestCase()
{
    QVERIFY(failingmemory::install());
    // Not earlier: a SQLite in use takes no other allocator.
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
}

void TestProfileV10Memory::keepsAllValuesOrNone_data()
{
    QTest::addColumn<QByteArray>("statement");

    QTest::newRow("limits of result checks") << QByteArray("select * from dataCheck");
    QTest::newRow("templates") << QByteArray("select * from assayTemplate");
    QTest::newRow("variables") << QByteArray(
        "select id, assayTemplateId, name, value from variable");
    QTest::newRow("values of variables") << QByteArray("select curveVariable.value");
    QTest::newRow("identifiers of reagents") << QByteArray("select id, reagentId from reagent");
    QTest::newRow("names of reagents in settings") << QByteArray("select name, value from profile");
    QTest::newRow("curves") << QByteArray("select id, name, xunit");
    QTest::newRow("calibrations") << QByteArray("select id, name, method");
    QTest::newRow("points of curves") << QByteArray("select rowid, x, y");
}

/// Shows: REL-2
void TestProfileV10Memory::keepsAllValuesOrNone()
{
    QFETCH(QByteArray, statement);
    const TestDatabase old("profile.db");
    makeDatabaseAt(old, "profile", 0);
    const QStringList oldContent = withToday(old.content());
    const MessageRecorder recorder;
    const TestDatabase undisturbed("profile.db");
    writeFile(undisturbed.path(), old.bytes());
    QVERIFY(upgrade(undisturbed));
    const QStringList newContent = withToday(undisturbed.content());

    int rolledBack = 0;
    bool refused = true;
    constexpr int beginning = 100; // the columns and the first row; later requests are much alike
    for (int fulfilled = 0; refused; fulfilled += fulfilled < beginning ? 1 : 25) {
        const TestDatabase database("profile.db");
        writeFile(database.path(), old.bytes());
        const failingmemory::DuringStatement failure(statement, fulfilled);
        const bool upgraded = upgrade(database);
        QVERIFY(failure.hasEnded());
        refused = failure.wasRefused();
        QCOMPARE(withToday(database.content()), upgraded ? newContent : oldContent);
        rolledBack += upgraded ? 0 : 1;
    }
    QVERIFY(rolledBack > 0);
}

QTEST_GUILESS_MAIN(TestProfileV10Memory)
#include "tst_profile_v10_memory.moc"
