/// The check that a database is sound before its steps run.

#include "messagerecorder.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include <QFile>
#include <QtTest>

namespace {

const QString versionTable = "create table version(version integer)";

/// Changes the schema behind SQLite's back.
QStringList redefine(const QString &change)
{
    return {"pragma writable_schema=on", change, "pragma writable_schema=reset"};
}

/// \return what makes a table whose index lacks the rows
QStringList tableWithAnEmptyIndex()
{
    return QStringList{"create table damaged(a)", "create index damagedIndex on damaged(a)",
                       "create table stash as select * from sqlite_master"
                       " where name = 'damagedIndex'"}
    + redefine("delete from sqlite_master where name = 'damagedIndex'")
        + QStringList{"insert into damaged values(1), (2), (3)"}
    + redefine("insert into sqlite_master select * from stash");
}

/// \return what makes a table with as many nulls as asked for in a column that takes none
QStringList tableWithNulls(int count)
{
    return QStringList{"create table early(a)",
                       QString("with recursive n(i) as (select 1 union all select i + 1 from n"
                               " limit %1) insert into early select null from n")
                           .arg(count)}
    + redefine("update sqlite_master set sql = 'CREATE TABLE early(a not null)'"
               " where name = 'early'");
}

struct Outcome {
    bool upgraded = false;
    bool stepRan = false;
    QStringList messages;
};

Outcome upgrade(const TestDatabase &database)
{
    Outcome outcome;
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&outcome](StepUpdater &) {
        outcome.stepRan = true;
        return true;
    });
    outcome.upgraded = updater.run();
    outcome.messages = recorder.messages();
    return outcome;
}

/// \return the first finding of SQLite's check, as the log has it
QString damageLine(const TestDatabase &database, const QString &finding)
{
    return "Warning: Database " + database.path() + " is damaged: " + finding;
}

} // namespace

class TestUpdateBaseDamage : public QObject {
    Q_OBJECT

private slots:
    void init();

    void refusesAnIndexThatLacksARow();
    void refusesAPageOfGarbage();
    void refusesAMalformedSchema_data();
    void refusesAMalformedSchema();
    void logsAFindingInOneLine();
    void reportsTheAbsolutePath();
    void findsDamageBehindFindingsAboutValues_data();
    void findsDamageBehindFindingsAboutValues();
    void takesAFindingAboutAValueForNoDamage_data();
    void takesAFindingAboutAValueForNoDamage();
    void takesAFailingCheckForNoDamage_data();
    void takesAFailingCheckForNoDamage();
    void checksNothingWhenEveryStepIsSkipped();
    void saysNothingOfASoundFile();
};

void TestUpdateBaseDamage::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestUpdateBaseDamage::refusesAnIndexThatLacksARow()
{
    const TestDatabase database;
    database.execute(QStringList{versionTable} + tableWithAnEmptyIndex());
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages,
             QStringList({"Debug: Updating " + database.path(),
                          damageLine(database, "row 1 missing from index damagedIndex")}));
    QCOMPARE(database.bytes(), before);
}

void TestUpdateBaseDamage::refusesAPageOfGarbage()
{
    const TestDatabase database;
    database.execute({versionTable, "create table filler(a)",
                      "insert into filler values(zeroblob(3000)), (zeroblob(3000))"});
    QFile file(database.path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(file.size() - 4096));
    QCOMPARE(file.write(QByteArray(4096, '\x5a')), 4096);
    file.close();
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.size(), 2);
    QVERIFY(outcome.messages.constLast().startsWith(damageLine(database, "")));
    QCOMPARE(database.bytes(), before);
}

void TestUpdateBaseDamage::refusesAMalformedSchema_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("finding");

    // Both stop the reading of the version already.
    QTest::newRow("a statement that is none")
        << "update sqlite_master set sql = 'CREATE GARBAGE' where name = 'early'"
        << "malformed database schema (early) - near \"GARBAGE\": syntax error";
    QTest::newRow("a table on a page that is not there")
        << "update sqlite_master set rootpage = 1000 where name = 'early'"
        << "malformed database schema (early) - invalid rootpage";
}

void TestUpdateBaseDamage::refusesAMalformedSchema()
{
    QFETCH(QString, change);
    QFETCH(QString, finding);
    const TestDatabase database;
    database.execute({versionTable, "create table early(a)"});
    database.execute({"pragma writable_schema=on", change});
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages,
             QStringList({"Debug: Updating " + database.path(), damageLine(database, finding)}));
    QCOMPARE(database.bytes(), before);
}

void TestUpdateBaseDamage::logsAFindingInOneLine()
{
    const TestDatabase database;
    database.execute({"pragma auto_vacuum=none", versionTable, "create table gone(a)"});
    // a page that belongs to nothing
    database.execute(redefine("delete from sqlite_master where name = 'gone'"));

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QCOMPARE(outcome.messages.constLast(),
             damageLine(database, "*** in database main *** Page 3 is never used"));
}

void TestUpdateBaseDamage::reportsTheAbsolutePath()
{
    const TestDatabase database;
    database.execute(QStringList{versionTable} + tableWithAnEmptyIndex());
    const QString workingDirectory = QDir::currentPath();
    QVERIFY(QDir::setCurrent(database.folderPath()));
    const MessageRecorder recorder;

    StepUpdater updater("test.db", [](StepUpdater &) { return true; });
    const bool upgraded = updater.run();

    QVERIFY(QDir::setCurrent(workingDirectory));
    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().constLast(),
             damageLine(database, "row 1 missing from index damagedIndex"));
}

void TestUpdateBaseDamage::findsDamageBehindFindingsAboutValues_data()
{
    QTest::addColumn<int>("values");

    QTest::newRow("one") << 1;
    QTest::newRow("as many as SQLite lists unless told otherwise") << 100;
    QTest::newRow("many") << 1000;
}

void TestUpdateBaseDamage::findsDamageBehindFindingsAboutValues()
{
    QFETCH(int, values);
    const TestDatabase database;
    database.execute(QStringList{versionTable} + tableWithNulls(values) + tableWithAnEmptyIndex());

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.mid(1),
             QStringList{damageLine(database, "row 1 missing from index damagedIndex")});
}

void TestUpdateBaseDamage::takesAFindingAboutAValueForNoDamage_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QString>("value");

    QTest::newRow("null") << "a not null"
                          << "null";
    QTest::newRow("check") << "a check (a > 5)"
                           << "3";
    QTest::newRow("text that is a number") << "a integer"
                                           << "'3'";
    QTest::newRow("number that is a text") << "a text"
                                           << "3";
}

void TestUpdateBaseDamage::takesAFindingAboutAValueForNoDamage()
{
    QFETCH(QString, layout);
    QFETCH(QString, value);
    const TestDatabase database;
    database.execute(QStringList{versionTable, "create table early(a)",
                                 QString("insert into early values(%1)").arg(value)}
                     + redefine(QString("update sqlite_master set sql = 'CREATE TABLE early(%1)'"
                                        " where name = 'early'")
                                    .arg(layout)));
    QVERIFY(database.rows("select * from pragma_integrity_check") != QStringList{"'ok'"});

    const Outcome outcome = upgrade(database);

    QVERIFY(outcome.upgraded);
    QVERIFY(outcome.stepRan);
    QCOMPARE(outcome.messages.filter("Warning"), QStringList());
}

void TestUpdateBaseDamage::takesAFailingCheckForNoDamage_data()
{
    QTest::addColumn<QString>("object");

    QTest::newRow("unknown collation") << "CREATE INDEX odd ON plain(a collate elsewhere)";
    QTest::newRow("unknown function") << "CREATE INDEX odd ON plain(elsewhere(a))";
}

void TestUpdateBaseDamage::takesAFailingCheckForNoDamage()
{
    QFETCH(QString, object);
    const TestDatabase database;
    database.execute(
        QStringList{versionTable, "create table plain(a)", "insert into plain values(1)",
                    "create index odd on plain(a)"}
        + redefine(QString("update sqlite_master set sql = '%1' where name = 'odd'").arg(object)));

    const Outcome outcome = upgrade(database);

    QVERIFY(outcome.upgraded);
    QVERIFY(outcome.stepRan);
    QCOMPARE(outcome.messages.filter("Warning"), QStringList());
}

void TestUpdateBaseDamage::checksNothingWhenEveryStepIsSkipped()
{
    const TestDatabase database;
    database.execute(QStringList{versionTable, "insert into version values(1)"}
                     + tableWithAnEmptyIndex());

    const Outcome outcome = upgrade(database);

    QVERIFY(outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.mid(1),
             QStringList({"Debug: update_v1() : SKIP", "Debug: Updated version to 1"}));
}

void TestUpdateBaseDamage::saysNothingOfASoundFile()
{
    const TestDatabase database;
    database.execute({versionTable});

    const Outcome outcome = upgrade(database);

    QVERIFY(outcome.upgraded);
    QVERIFY(outcome.stepRan);
    QCOMPARE(outcome.messages,
             QStringList({"Debug: Updating " + database.path(), "Debug: update_v1() : PASS",
                          "Debug: Updated version to 1"}));
}

QTEST_GUILESS_MAIN(TestUpdateBaseDamage)
#include "tst_updatebase_damage.moc"
