// SPDX-License-Identifier: MIT
/// An upgrade in which each of SQLite's requests for memory fails once.

#include "coagulation/vardo/connection.h"
#include "driversqlite.h"
#include "failingmemory.h"
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

const QStringList losesAPage{
    "create table version(version integer)", "create table lost(a)", "pragma writable_schema=on",
    "delete from sqlite_master where name = 'lost'", "pragma writable_schema=reset"};

/// Whether SQLite calls a file sound that has lost a page, without any of the tool's code.
bool isCalledSound(const QString &path)
{
    sqlite3 *connection = nullptr;
    sqlite3_stmt *check = nullptr;
    const bool isSound = sqlite3_open(qUtf8Printable(path), &connection) == SQLITE_OK
        && sqlite3_prepare_v2(connection, "pragma integrity_check(1)", -1, &check, nullptr)
            == SQLITE_OK
        && sqlite3_step(check) == SQLITE_ROW
        && QByteArrayView(static_cast<const char *>(sqlite3_column_blob(check, 0)),
                          sqlite3_column_bytes(check, 0))
            == "ok";
    sqlite3_finalize(check);
    sqlite3_close(connection);
    return isSound;
}

/// SQLite 3.46 passes over a finding if it has no memory for its text. 3.40 fails then.
/// \return how many of SQLite's requests for memory hide the lost page if they alone fail
int requestsThatHideTheLostPage()
{
    const TestDatabase database;
    database.execute(losesAPage);
    int hiding = 0;
    bool met = true;
    for (int request = 0; met; ++request) {
        failingmemory::failAfter(request);
        hiding += int(isCalledSound(database.path()));
        met = failingmemory::stop();
    }
    return hiding;
}

} // namespace

class TestEngineMemory : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void changesAllOrNothing_data();
    void changesAllOrNothing();
    void findsViewsAndTriggersAgain();
    void refusesDamageBesideAView();
};

void TestEngineMemory::initTestCase()
{
    QVERIFY(failingmemory::install());
    // Not earlier: a SQLite in use takes no other allocator.
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
}

void TestEngineMemory::changesAllOrNothing_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QStringList>("copies");

    const QStringList both = {"'one'", "'two'"};

    QTest::newRow("in a statement that fails")
        << Operation([](StepUpdater &step) { step.tryAll({SQL("insert into missing values(1)")}); })
        << QStringList();
    QTest::newRow("in a statement that changes nothing")
        << Operation([](StepUpdater &step) { step.tryAll({SQL("delete from kept where a > 90")}); })
        << QStringList();
    QTest::newRow("in a statement that fails halfway") << Operation([](StepUpdater &step) {
        step.tryAll({SQL("insert or fail into kept select a + 1 from kept order by a desc")});
    }) << QStringList();
    QTest::newRow("while a table is copied")
        << Operation([](StepUpdater &step) { (void)step.copyTable("texts", "copies"); }) << both;
    QTest::newRow("while changed rows are copied") << Operation([](StepUpdater &step) {
        (void)step.copyTable("texts", "copies", {}, {}, [](QSqlRecord &row) {
            row.setValue("a", row.value("a").toString().toUpper());
        });
    }) << QStringList({"'ONE'", "'TWO'"});
    QTest::newRow("while columns are read by their names") << Operation([](StepUpdater &step) {
        QSqlQuery texts("select * from texts");
        const QStringList columns = step.columnsOf("texts");
        (void)step.readRows(texts, SOURCE_LINE, [&] {
            const QSqlRecord row = coagulation::currentRow(texts, columns);
            return !row.contains("a")
                || step.exec(SOURCE_LINE, "insert into copies values(:a)",
                             {{":a", row.value("a")}});
        });
    }) << both;
    QTest::newRow("while rows are read") << Operation([](StepUpdater &step) {
        QSqlQuery texts("select a from texts");
        (void)step.readRows(texts, SOURCE_LINE, [] { return true; });
    }) << QStringList();
    QTest::newRow("while the reading of rows is ended early") << Operation([](StepUpdater &step) {
        QSqlQuery texts("select a from texts");
        (void)step.readRows(texts, SOURCE_LINE, [] { return false; });
    }) << QStringList();
    QTest::newRow("while the first row is read") << Operation([](StepUpdater &) {
        QSqlQuery texts("select a from texts");
        texts.next();
    }) << QStringList();
}

/// Also when memory ends within what the engine or the driver asks of SQLite by themselves.
/// Shows: REL-2
void TestEngineMemory::changesAllOrNothing()
{
    QFETCH(Operation, operation);
    QFETCH(QStringList, copies);

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
            failingmemory::failAfter(request);
            operation(step);
            met = failingmemory::stop();
            step.tryAll({SQL("insert into kept values(11)")});
            return step.execAll({SQL("insert into kept values(12)")});
        });
        if (updater.run()) {
            QCOMPARE(database.rows("select a from kept where a >= 10"),
                     QStringList({"10", "11", "12"}));
            QCOMPARE(database.rows("select a from copies order by rowid"), copies);
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

/// The check for damage leaves them out for a while.
/// Shows: REL-2
void TestEngineMemory::findsViewsAndTriggersAgain()
{
    int rolledBack = 0;
    bool met = true;
    for (int request = 0; met; ++request) {
        const TestDatabase database;
        database.execute({"create table version(version integer)", "create table kept(a)",
                          "create table noted(a)", "create view seen as select a from kept",
                          "create trigger note after insert on kept begin"
                          " insert into noted values(new.a); end"});
        const QByteArray before = database.bytes();
        const QStringList schema = database.schema();

        const MessageRecorder recorder;
        StepUpdater updater(database.path(), [&](StepUpdater &step) {
            met = failingmemory::stop();
            return step.execAll({SQL("insert into kept select count(*) from seen")});
        });
        failingmemory::failAfter(request);
        if (updater.run()) {
            QCOMPARE(database.schema(), schema);
            QCOMPARE(database.rows("select a from noted"), QStringList{"0"});
        } else {
            QVERIFY(failingmemory::stop());
            QCOMPARE(database.bytes(), before);
            QVERIFY(!recorder.messages().filter("Warning").isEmpty());
            ++rolledBack;
        }
    }
    QVERIFY(rolledBack > 0);
}

/// SQLite alone would overlook the lost page.
void TestEngineMemory::refusesDamageBesideAView()
{
    int refused = 0;
    int upgraded = 0;
    bool met = true;
    for (int request = 0; met; ++request) {
        const TestDatabase database;
        database.execute(losesAPage + QStringList{"create view seen as select * from version"});
        const QByteArray before = database.bytes();

        const MessageRecorder recorder;
        StepUpdater updater(database.path(), [](StepUpdater &) { return true; });
        failingmemory::failAfter(request);
        const bool passed = updater.run();
        met = failingmemory::stop();
        if (passed) {
            ++upgraded;
        } else {
            QCOMPARE(database.bytes(), before);
            ++refused;
        }
    }
    QVERIFY(refused > 0);
    QCOMPARE(upgraded, requestsThatHideTheLostPage());
}

QTEST_GUILESS_MAIN(TestEngineMemory)
#include "tst_engine_memory.moc"
