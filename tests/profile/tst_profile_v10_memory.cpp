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

namespace {

/// The statement during which a request fails.
struct Window {
    QByteArray begin;             ///< of the statement's text
    int fulfilled = 0;            ///< requests that are fulfilled before
    sqlite3_stmt *open = nullptr; ///< the statement once it has begun
    bool ended = false;
    bool refused = false;
};

Window &window()
{
    static Window window;
    return window;
}

int trace(unsigned event, void * /*context*/, void *statement, void *text)
{
    if (event == SQLITE_TRACE_STMT && window().open == nullptr
        && QByteArrayView(static_cast<const char *>(text)).startsWith(window().begin)) {
        window().open = static_cast<sqlite3_stmt *>(statement);
        failingmemory::failAfter(window().fulfilled);
    } else if (event == SQLITE_TRACE_PROFILE && statement == window().open && !window().ended) {
        window().ended = true;
        window().refused = failingmemory::stop();
    }
    return 0;
}

int traceConnection(sqlite3 *opened, char ** /*message*/, const sqlite3_api_routines * /*api*/)
{
    return sqlite3_trace_v2(opened, SQLITE_TRACE_STMT | SQLITE_TRACE_PROFILE, trace, nullptr);
}

} // namespace

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

    // NOLINTNEXTLINE: SQLite's own idiom
    const auto extension = reinterpret_cast<void (*)()>(traceConnection);
    int rolledBack = 0;
    bool refused = true;
    constexpr int beginning = 150; // the columns and the first row; later requests are much alike
    for (int fulfilled = 0; refused; fulfilled += fulfilled < beginning ? 1 : 10) {
        const TestDatabase database("profile.db");
        writeFile(database.path(), old.bytes());
        window() = {.begin = statement, .fulfilled = fulfilled};
        sqlite3_auto_extension(extension);
        const bool upgraded = upgrade(database);
        sqlite3_cancel_auto_extension(extension);
        QCOMPARE(withToday(database.content()), upgraded ? newContent : oldContent);
        QVERIFY(window().ended);
        refused = window().refused;
        rolledBack += upgraded ? 0 : 1;
    }
    QVERIFY(rolledBack > 0);
}

QTEST_GUILESS_MAIN(TestProfileV10Memory)
#include "tst_profile_v10_memory.moc"
