// SPDX-License-Identifier: MIT
/// Comparisons in which one request of SQLite for memory fails. What could not be read must not look like something
/// that is not there.

#include "compared.h"
#include "driversqlite.h"
#include "failingmemory.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "testfiles.h"
#include "upgrade.h"

#include "coagulation/report/failures.h"
#include "coagulation/report/json.h"

#include <QTest>

#include <sqlite3.h>

using namespace coagulation::report;

class TestComparisonMemory : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void tellsEverythingOrWhyNot_data();
    void tellsEverythingOrWhyNot();
};

void TestComparisonMemory::initTestCase()
{
    QVERIFY(failingmemory::install());
    // Not earlier: a SQLite in use takes no other allocator.
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
}

void TestComparisonMemory::tellsEverythingOrWhyNot_data()
{
    QTest::addColumn<QByteArray>("statement");

    const auto add = [](const char *name, const char *statement) {
        QTest::newRow(name) << QByteArray(statement);
    };
    add("tables", "select name, type, rootpage > 0 and sql like");
    add("version before", R"(select version from "main".version)");
    add("version after", R"(select version from "after".version)");
    add("objects", "select type, name, tbl_name");
    add("encoding", "pragma encoding");
    add("curves", R"(select a."id", a."name", a."xUnit")");
    add("calibrations", R"(select a."method", a."dispX")");
    add("points", R"(select a."curveId")");
    add("other curves", R"(select a."id", a."name" from after.curve)");
    add("methods", "select a.name, substr");
    add("own assays", "select b.name from main.assayTemplate");
    add("result checks", R"(select "assayTemplateId")");
    add("items", "select count(*) from main.assayItem");
    add("names of settings", "select a.name from after.profile");
    add("expiry", "select name, date from after.curve");
    add("taken numbers", "select ifnull(t.name || '.', '') || b.name");
    add("factory's names", "select id from main.assayTemplate where name");
    add("replaced limits", "select c.reportItemFullName");
    add("equal identifiers", "select a.name, b.name from after.reagent");
}

/// Shows: REP-12
void TestComparisonMemory::tellsEverythingOrWhyNot()
{
    QFETCH(QByteArray, statement);
    const TestDatabase before("profile.db");
    makeDatabaseAt(before, "profile", 4);
    const TestDatabase after("profile.db");
    writeFile(after.path(), before.bytes());
    const MessageRecorder recorder;
    QVERIFY(upgrade(after));
    const QByteArray undisturbed = toJson(reportOn(before, after, "profile"));

    int failures = 0;
    bool refused = true;
    constexpr int beginning = 60; // later requests are much alike
    for (int fulfilled = 0; refused; fulfilled += fulfilled < beginning ? 1 : 20) {
        const failingmemory::DuringStatement failure(statement, fulfilled);
        const Report report = reportOn(before, after, "profile");
        QVERIFY(failure.hasEnded());
        refused = failure.wasRefused();
        if (failuresOf(report).isEmpty())
            QCOMPARE(toJson(report), undisturbed);
        else
            ++failures;
    }
    QVERIFY(failures > 0);
}

QTEST_GUILESS_MAIN(TestComparisonMemory)
#include "tst_comparison_memory.moc"
