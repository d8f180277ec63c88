// SPDX-License-Identifier: MIT
/// An upgrade in which each of SQLite's requests for memory fails once.

#include "driversqlite.h"
#include "messagerecorder.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <sqlite3.h>

/// What a step does while memory ends.
using Operation = std::function<void(StepUpdater &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

// What SQLite would call by itself, and how many requests are fulfilled before one is not; SQLite takes
// plain functions.
// NOLINTNEXTLINE(*-avoid-non-const-global-variables)
sqlite3_mem_methods real;
// NOLINTNEXTLINE(*-avoid-non-const-global-variables)
int fulfilled = -1; ///< below 0: all are

void *allocate(int size)
{
    return fulfilled-- == 0 ? nullptr : real.xMalloc(size);
}

void *reallocate(void *memory, int size)
{
    return fulfilled-- == 0 ? nullptr : real.xRealloc(memory, size);
}

} // namespace

class TestEngineMemory : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void changesAllOrNothing_data();
    void changesAllOrNothing();
};

void TestEngineMemory::initTestCase()
{
    QCOMPARE(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &real), SQLITE_OK);
    sqlite3_mem_methods methods = real;
    methods.xMalloc = allocate;
    methods.xRealloc = reallocate;
    QCOMPARE(sqlite3_config(SQLITE_CONFIG_MALLOC, &methods), SQLITE_OK);
    // Not earlier: a SQLite in use takes no other allocator.
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
}

void TestEngineMemory::changesAllOrNothing_data()
{
    QTest::addColumn<Operation>("operation");

    QTest::newRow("in a statement that fails") << Operation(
        [](StepUpdater &step) { step.tryAll({SQL("insert into missing values(1)")}); });
    QTest::newRow("in a statement that changes nothing") << Operation(
        [](StepUpdater &step) { step.tryAll({SQL("delete from kept where a > 90")}); });
    QTest::newRow("in a statement that fails halfway") << Operation([](StepUpdater &step) {
        step.tryAll({SQL("insert or fail into kept select a + 1 from kept order by a desc")});
    });
    QTest::newRow("while a table is copied")
        << Operation([](StepUpdater &step) { (void)step.copyTable("texts", "copies"); });
    QTest::newRow("while rows are read") << Operation([](StepUpdater &step) {
        QSqlQuery texts("select a from texts");
        (void)step.readRows(texts, SOURCE_LINE, [] { return true; });
    });
    QTest::newRow("while the reading of rows is ended early") << Operation([](StepUpdater &step) {
        QSqlQuery texts("select a from texts");
        (void)step.readRows(texts, SOURCE_LINE, [] { return false; });
    });
    QTest::newRow("while the first row is read") << Operation([](StepUpdater &) {
        QSqlQuery texts("select a from texts");
        texts.next();
    });
}

/// Also when memory ends within what the engine or the driver asks of SQLite by themselves.
/// Shows: REL-2
void TestEngineMemory::changesAllOrNothing()
{
    QFETCH(Operation, operation);

    int rolledBack = 0;
    bool met = true;
    for (int request = 0; met; ++request) {
        const TestDatabase database;
        database.execute({"create table version(version integer)", "create table kept(a unique)",
                          "insert into kept values(1), (2), (3)", "create table texts(a)",
                          "insert into texts values('one'), ('two')", "create table copies(a)"});
        const QByteArray before = database.bytes();

        const MessageRecorder recorder;
        StepUpdater updater(database.path(), [&](StepUpdater &step) {
            step.tryAll({SQL("insert into kept values(10)")});
            fulfilled = request;
            operation(step);
            met = fulfilled < 0;
            fulfilled = -1;
            step.tryAll({SQL("insert into kept values(11)")});
            return step.execAll({SQL("insert into kept values(12)")});
        });
        if (updater.run()) {
            QCOMPARE(database.rows("select a from kept where a >= 10"),
                     QStringList({"10", "11", "12"}));
        } else {
            QCOMPARE(database.bytes(), before);
            QVERIFY(!recorder.messages().filter("memory").isEmpty());
            ++rolledBack;
        }
    }

    const bool mayGoOn = qstrcmp(QTest::currentDataTag(), "while the first row is read") == 0
        && sqlite3_libversion_number() > 3'040'001; // as later versions do
    QVERIFY(rolledBack > 0 || mayGoOn);
}

QTEST_GUILESS_MAIN(TestEngineMemory)
#include "tst_engine_memory.moc"
