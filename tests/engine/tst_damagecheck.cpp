// SPDX-License-Identifier: MIT
/// The check that a database is sound before its steps run.

#include "messagerecorder.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include <QFile>
#include <QTest>
#include <QtEndian>

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

/// \return the change that gives the index `odd` of a table a collation that SQLite does not know
QString unknownCollation(const QString &table)
{
    return "update sqlite_master set sql = 'CREATE INDEX odd ON " + table
        + "(a collate elsewhere)' where name = 'odd'";
}

struct Outcome {
    bool upgraded = false;
    bool stepRan = false;
    QStringList messages;
};

Outcome upgrade(const TestDatabase &database, const QString &stepSql = "select 1")
{
    Outcome outcome;
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        outcome.stepRan = true;
        return step.execAll({SQL(stepSql)});
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

/// The words of the findings depend on the version of SQLite.
const QStringList missingRow{"row 1 missing from index damagedIndex",
                             "wrong # of entries in index damagedIndex"};
const QStringList unusedPage{"*** in database main *** Page 3 is never used",
                             "*** in database main *** Page 3: never used"};

/// \return the line that reports one of some findings: the one that the message is, or else the first
QString damageLine(const TestDatabase &database, const QStringList &findings,
                   const QString &message)
{
    for (const QString &finding : findings) {
        if (message == damageLine(database, finding))
            return message;
    }
    return damageLine(database, findings.constFirst());
}

/// \return a number of four bytes; for the places see "The Database Header" and "The Freelist" in
///         https://www.sqlite.org/fileformat2.html
int numberAt(const QByteArray &bytes, qsizetype place)
{
    return qFromBigEndian<qint32>(bytes.sliced(place, 4).constData());
}

int pageSizeOf(const QByteArray &bytes)
{
    return qFromBigEndian<quint16>(bytes.sliced(16, 2).constData());
}

void overwrite(const TestDatabase &database, const QByteArray &bytes)
{
    QFile file(database.path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

class TestDamageCheck : public QObject {
    Q_OBJECT

private slots:
    void init();

    void refusesAnIndexThatLacksARow();
    void refusesAPageOfGarbage();
    void refusesAMalformedSchema_data();
    void refusesAMalformedSchema();
    void refusesAMisspeltEntryOfTheSchema_data();
    void refusesAMisspeltEntryOfTheSchema();
    void takesAnyNameForSound();
    void refusesAVersionThatDamageMadeTooHigh();
    void checksAgainWhatAStepMade_data();
    void checksAgainWhatAStepMade();
    void upgradesATableThatItCannotCheck_data();
    void upgradesATableThatItCannotCheck();
    void refusesWhatItCannotCheckAgain_data();
    void refusesWhatItCannotCheckAgain();
    void takesAQuotingIndexForNoDamage_data();
    void takesAQuotingIndexForNoDamage();
    void logsAFindingInOneLine();
    void reportsTheAbsolutePath();
    void findsDamageBehindFindingsAboutValues_data();
    void findsDamageBehindFindingsAboutValues();
    void takesAFindingAboutAValueForNoDamage_data();
    void takesAFindingAboutAValueForNoDamage();
    void takesAFailingCheckForNoDamage_data();
    void takesAFailingCheckForNoDamage();
    void findsDamageBesideATableThatCannotBeChecked();
    void findsAMisspeltEntryThoughTheCheckFails();
    void findsDamageBesideWhatHasNoPages_data();
    void findsDamageBesideWhatHasNoPages();
    void findsAFreePageThatATableUses();
    void findsDamageInThePageOfAView();
    void leavesViewsTriggersAndVirtualTablesToTheSteps();
    void checksNothingWhenEveryStepIsSkipped();
    void saysNothingOfASoundFile();
};

void TestDamageCheck::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

/// Shows: ENG-7
void TestDamageCheck::refusesAnIndexThatLacksARow()
{
    const TestDatabase database;
    database.execute(QStringList{versionTable} + tableWithAnEmptyIndex());
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages,
             QStringList({"Debug: Updating " + database.path(),
                          damageLine(database, missingRow, outcome.messages.constLast())}));
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::refusesAPageOfGarbage()
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

void TestDamageCheck::refusesAMalformedSchema_data()
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

void TestDamageCheck::refusesAMalformedSchema()
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

void TestDamageCheck::refusesAMisspeltEntryOfTheSchema_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("entry");

    // A change of the table or index would be left out, without a failure.
    QTest::newRow("table's type") << "type = 'tAble' where name = 'early'"
                                  << "tAble early";
    QTest::newRow("table's name") << "name = 'Early', tbl_name = 'Early' where name = 'early'"
                                  << "table Early";
    QTest::newRow("table's name for itself") << "tbl_name = 'Early' where name = 'early'"
                                             << "table early";
    QTest::newRow("index's type") << "type = 'Index' where name = 'early_index'"
                                  << "Index early_index";
    QTest::newRow("index's name") << "name = 'early_Index' where name = 'early_index'"
                                  << "index early_Index";
    QTest::newRow("index's table") << "tbl_name = 'EARLY' where name = 'early_index'"
                                   << "index early_index";
    QTest::newRow("trigger's name") << "name = 'On_early' where name = 'on_early'"
                                    << "trigger On_early";
    QTest::newRow("view's name") << "name = 'Seen', tbl_name = 'Seen' where name = 'seen'"
                                 << "view Seen";
}

/// Shows: ENG-7
void TestDamageCheck::refusesAMisspeltEntryOfTheSchema()
{
    QFETCH(QString, change);
    QFETCH(QString, entry);
    const TestDatabase database;
    database.execute(
        QStringList{versionTable, "create table early(a)", "create index early_index on early(a)",
                    "create trigger on_early after delete on early begin select 1; end",
                    "create view seen as select a from early"}
        + redefine("update sqlite_master set " + change));
    QCOMPARE(database.rows("select * from pragma_integrity_check"), QStringList{"'ok'"});
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.mid(1),
             QStringList{damageLine(database, "misspelt entry of the schema: " + entry)});
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::takesAnyNameForSound()
{
    const TestDatabase database;
    database.execute({versionTable, R"(create table "a ""quoted"" name"(a unique))",
                      "create table 'it''s'(a)", "create table [in brackets](a)",
                      "create table `tick``ed`(a)", "create table Mixed(id integer primary key, a)",
                      "create index 化验 on MIXED(a)",
                      "create trigger t after delete on mIXED begin select 1; end",
                      "alter table mixed rename to Renamed", "create table m(a primary key)",
                      "create table counted(id integer primary key autoincrement)",
                      "insert into counted values(1)", "analyze",
                      "create virtual table words using fts5(word)"});

    const Outcome outcome = upgrade(database);

    QVERIFY(outcome.upgraded);
    QCOMPARE(outcome.messages.filter("Warning"), QStringList());
}

/// The entry of the table `version` leads to the rows of another table, which would be lost.
void TestDamageCheck::refusesAVersionThatDamageMadeTooHigh()
{
    const TestDatabase database;
    database.execute(
        QStringList{versionTable, "create table early(a)", "insert into early values(1020), (1030)"}
        + redefine("update sqlite_master set rootpage = (select rootpage from sqlite_master"
                   " where name = 'early') where name = 'version'"));
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QCOMPARE(outcome.messages.size(), 2);
    QVERIFY(outcome.messages.constLast().startsWith(damageLine(database, "")));
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::checksAgainWhatAStepMade_data()
{
    QTest::addColumn<QStringList>("old");
    QTest::addColumn<QString>("step");

    // A text in what is now a column of numbers is no damage, until it is rewritten and its index is not.
    QTest::newRow("an odd value") << QStringList{"create table early(a text, b)",
                                                 "create index early_index on early(a)",
                                                 "insert into early values('0001', 1)"}
            + redefine("update sqlite_master set sql = 'CREATE TABLE early(a numeric, b)'"
                       " where name = 'early'")
                                  << "update early set b = 2";
    // SQLite takes a quoted name for a text while no column has it.
    QTest::newRow("an index on a quoted name")
        << QStringList{"create table early(a)", "insert into early values(1)",
                       R"(create index early_index on early("later" collate nocase))"}
        << "alter table early add later";
    QTest::newRow("a partial index on a quoted name")
        << QStringList{"create table early(a)", "insert into early values(1)",
                       R"(create index early_index on early(a) where "later" is null)"}
        << "alter table early add later";
    QTest::newRow("a generated column of a quoted name")
        << QStringList{R"(create table early(a, b as ("later")))",
                       "create index early_index on early(b)", "insert into early values(1)"}
        << "alter table early add later";
    QTest::newRow("an index on a quoted name, and a table that SQLite cannot check")
        << QStringList{"create table early(a)", "insert into early values(1)",
                       R"(create index early_index on early("later" collate nocase))",
                       "create table other(a)", "create index odd on other(a)"}
            + redefine(unknownCollation("other"))
        << "alter table early add later";
}

/// Shows: ENG-8
void TestDamageCheck::checksAgainWhatAStepMade()
{
    QFETCH(QStringList, old);
    QFETCH(QString, step);
    const TestDatabase database;
    database.execute(QStringList{versionTable} + old);
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database, step);

    QVERIFY(!outcome.upgraded);
    QVERIFY(outcome.stepRan);
    QCOMPARE(outcome.messages.constLast(),
             "Warning: The upgrade would damage " + database.path()
                 + ": row 1 missing from index early_index");
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::refusesWhatItCannotCheckAgain_data()
{
    QTest::addColumn<QStringList>("old");
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("reason");

    QTest::newRow("an index on a quoted name")
        << QStringList{"create table early(a)", "insert into early values(1)",
                       R"(create index early_index on early("later" collate nocase))"}
        << "alter table early add later"
        << "an index of which has double quotes";
    const auto addOdd = [](const char *name, const QString &index, const QString &value,
                           const QString &type) {
        QTest::newRow(name) << QStringList{"create table early(a, b, c)",
                                           "insert into early values(1, 2, 'other')",
                                           QString("insert into early values(1, 2, %1)").arg(value),
                                           index}
                + redefine(QString("update sqlite_master set sql = 'CREATE TABLE early(a, b, c %1)'"
                                   " where name = 'early'")
                               .arg(type))
                            << "update early set b = 2"
                            << "which has values that are not of their columns' types";
    };
    const QString plain = "create index early_index on early(c)";
    addOdd("a text like a number in a column of numbers", plain, "'0001'", "numeric");
    addOdd("a text like a number in a column of integers", plain, "' 1 '", "integer");
    addOdd("a text like a number in a column of dates", plain, "'1e3'", "date");
    addOdd("a number in a column of texts", plain, "1", "text");
    addOdd("an index on an expression", "create index early_index on early(c || '')", "1", "text");
    addOdd("a partial index", "create index early_index on early(b) where c = 1", "1", "text");
}

/// Shows: ENG-8
void TestDamageCheck::refusesWhatItCannotCheckAgain()
{
    QFETCH(QStringList, old);
    QFETCH(QString, step);
    QFETCH(QString, reason);
    const TestDatabase database;
    database.execute(QStringList{versionTable} + old + QStringList{"create index odd on early(a)"}
                     + redefine(unknownCollation("early")));
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database, step);

    QVERIFY(!outcome.upgraded);
    QVERIFY(outcome.stepRan);
    QCOMPARE(outcome.messages.constLast(),
             "Warning: The upgrade would damage " + database.path() + ": no check of early, "
                 + reason + ": no such collation sequence: elsewhere");
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::upgradesATableThatItCannotCheck_data()
{
    QTest::addColumn<QString>("columns");
    QTest::addColumn<QString>("values");

    QTest::newRow("a date in an index") << "a date, b text"
                                        << "'2016-04-01', 'x'";
    QTest::newRow("a number in an index") << "a integer, b text"
                                          << "7, 'x'";
    QTest::newRow("a text in an index") << "a text, b text"
                                        << "'7', 'x'";
    QTest::newRow("any value in a column without a type") << "a, b text"
                                                          << "'7', 'x'";
    QTest::newRow("an odd value beside the index") << "a integer, b integer"
                                                   << "7, '7'";
    QTest::newRow("nothing") << "a integer, b integer"
                             << "null, null";
}

/// Shows: ENG-8
void TestDamageCheck::upgradesATableThatItCannotCheck()
{
    QFETCH(QString, columns);
    QFETCH(QString, values);
    const TestDatabase database;
    database.execute(QStringList{versionTable, "create table early(a, b, c)",
                                 QString("insert into early values(%1, 1)").arg(values),
                                 "create index odd on early(a)"}
                     + redefine(QString("update sqlite_master set sql = 'CREATE TABLE early(%1, c)'"
                                        " where name = 'early'")
                                    .arg(columns))
                     + redefine(unknownCollation("early")));

    QVERIFY(upgrade(database, "update early set c = 2").upgraded);
}

void TestDamageCheck::takesAQuotingIndexForNoDamage_data()
{
    QTest::addColumn<QStringList>("change");

    QTest::newRow("a table that can be checked") << QStringList();
    QTest::newRow("a table that cannot be checked")
        << QStringList{"create index odd on early(a)"} + redefine(unknownCollation("early"));
}

void TestDamageCheck::takesAQuotingIndexForNoDamage()
{
    QFETCH(QStringList, change);
    const TestDatabase database;
    database.execute(QStringList{versionTable, "create table early(a)",
                                 "insert into early values(1)",
                                 R"(create index "early_index" on "early"("a"))"}
                     + change);

    const Outcome outcome = upgrade(database, "alter table early add later");

    QVERIFY(outcome.upgraded);
    QCOMPARE(outcome.messages.filter("Warning"), QStringList());
}

void TestDamageCheck::logsAFindingInOneLine()
{
    const TestDatabase database;
    database.execute({"pragma auto_vacuum=none", versionTable, "create table gone(a)"});
    // a page that belongs to nothing
    database.execute(redefine("delete from sqlite_master where name = 'gone'"));

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QCOMPARE(outcome.messages.constLast(),
             damageLine(database, unusedPage, outcome.messages.constLast()));
}

void TestDamageCheck::reportsTheAbsolutePath()
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
             damageLine(database, missingRow, recorder.messages().constLast()));
}

void TestDamageCheck::findsDamageBehindFindingsAboutValues_data()
{
    QTest::addColumn<int>("values");

    QTest::newRow("one") << 1;
    QTest::newRow("as many as SQLite lists unless told otherwise") << 100;
    QTest::newRow("many") << 1000;
}

void TestDamageCheck::findsDamageBehindFindingsAboutValues()
{
    QFETCH(int, values);
    const TestDatabase database;
    database.execute(QStringList{versionTable} + tableWithNulls(values) + tableWithAnEmptyIndex());

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.mid(1),
             QStringList{damageLine(database, missingRow, outcome.messages.constLast())});
}

void TestDamageCheck::takesAFindingAboutAValueForNoDamage_data()
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

/// Shows: ENG-8
void TestDamageCheck::takesAFindingAboutAValueForNoDamage()
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

void TestDamageCheck::takesAFailingCheckForNoDamage_data()
{
    QTest::addColumn<QString>("object");

    QTest::newRow("unknown collation") << "CREATE INDEX odd ON plain(a collate elsewhere)";
    QTest::newRow("unknown function") << "CREATE INDEX odd ON plain(elsewhere(a))";
}

void TestDamageCheck::takesAFailingCheckForNoDamage()
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

/// Shows: ENG-7
void TestDamageCheck::findsDamageBesideATableThatCannotBeChecked()
{
    const TestDatabase database;
    database.execute(
        QStringList{versionTable, "create table early(a)", "create index odd on early(a)"}
        + redefine(unknownCollation("early")) + tableWithAnEmptyIndex());
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.constLast(),
             damageLine(database, missingRow, outcome.messages.constLast()));
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::findsAMisspeltEntryThoughTheCheckFails()
{
    const TestDatabase database;
    database.execute(
        QStringList{versionTable, "create table early(a)", "create index odd on early(a)"}
        + redefine(unknownCollation("early"))
        + redefine("update sqlite_master set type = 'tAble' where name = 'early'"));
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(outcome.messages.constLast().contains("misspelt entry of the schema: tAble early"));
    QCOMPARE(database.bytes(), before);
}

void TestDamageCheck::findsDamageBesideWhatHasNoPages_data()
{
    QTest::addColumn<QStringList>("objects");

    QTest::newRow("nothing") << QStringList();
    QTest::newRow("view") << QStringList{"create view seen as select a from early"};
    QTest::newRow("view with a trigger")
        << QStringList{"create view seen as select a from early",
                       "create trigger hidden instead of delete on seen begin select 1; end"};
    QTest::newRow("virtual table")
        << QStringList{"create virtual table words using fts5(word, content='')",
                       "create virtual table vocabulary using fts5vocab(words, row)"};
}

/// SQLite looks for no such page if the last of few tables is a view or a virtual table.
void TestDamageCheck::findsDamageBesideWhatHasNoPages()
{
    QFETCH(QStringList, objects);
    const TestDatabase database;
    database.execute(QStringList{versionTable, "create table lost(a)", "create table early(a)"}
                     + objects + redefine("delete from sqlite_master where name = 'lost'"));
    const QByteArray before = database.bytes();

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QCOMPARE(outcome.messages.mid(1),
             QStringList{damageLine(database, unusedPage, outcome.messages.constLast())});
    QCOMPARE(database.bytes(), before);
}

/// The steps would write into the page.
/// Shows: ENG-7
void TestDamageCheck::findsAFreePageThatATableUses()
{
    const TestDatabase database;
    database.execute({versionTable, "create table used(a)", "insert into used values(1), (2)",
                      "create table gone(a)", "insert into gone values(zeroblob(20000))",
                      "drop table gone", "create view seen as select a from used"});
    const quint32 page =
        database.rows("select rootpage from sqlite_master where name = 'used'").value(0).toUInt();
    QByteArray bytes = database.bytes();
    const int list = (numberAt(bytes, 32) - 1) * pageSizeOf(bytes);
    QVERIFY(numberAt(bytes, list + 4) > 0);
    QByteArray number(4, '\0');
    qToBigEndian(page, number.data());
    bytes.replace(list + 8, number.size(), number);
    overwrite(database, bytes);

    const Outcome outcome = upgrade(database, "create table later as select * from used");

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QVERIFY(
        outcome.messages.constLast().startsWith(damageLine(database, "*** in database main ***")));
    QCOMPARE(database.bytes(), bytes);
}

/// The page is empty, and so without the damage, while the view is left out.
void TestDamageCheck::findsDamageInThePageOfAView()
{
    const TestDatabase database;
    const QString longText = QString(3000, 'x');
    database.execute({versionTable, "create table early(a)",
                      "create view first as select '" + longText + "'",
                      "create view second as select '" + longText + "'"});
    QByteArray bytes = database.bytes();
    const int pageSize = pageSizeOf(bytes);
    const qsizetype page = bytes.indexOf("CREATE VIEW second") / pageSize * pageSize;
    QVERIFY(page > 0);
    bytes[page + 7] = static_cast<char>(bytes[page + 7] + 3); // fragmented bytes
    overwrite(database, bytes);

    const Outcome outcome = upgrade(database);

    QVERIFY(!outcome.upgraded);
    QVERIFY(!outcome.stepRan);
    QVERIFY(outcome.messages.constLast().contains("ragmentation"));
    QCOMPARE(database.bytes(), bytes);
}

void TestDamageCheck::leavesViewsTriggersAndVirtualTablesToTheSteps()
{
    const TestDatabase database;
    database.execute({versionTable, "create table early(a)", "create table noted(a)",
                      "create trigger note after insert on early begin"
                      " insert into noted values(new.a); end",
                      "create view seen as select a from early",
                      "create trigger enter instead of insert on seen begin"
                      " insert into early values(new.a); end",
                      "create virtual table words using fts5(word)"});
    const QStringList schema = database.schema();

    QVERIFY(upgrade(database, "insert into seen values(7)").upgraded);

    QCOMPARE(database.schema(), schema);
    QCOMPARE(database.rows("select a from noted"), QStringList{"7"});
    database.execute({"insert into words values('kept')"});
    QCOMPARE(database.rows("select word from words where words match 'kept'"),
             QStringList{"'kept'"});
}

/// Shows: ENG-7
void TestDamageCheck::checksNothingWhenEveryStepIsSkipped()
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

void TestDamageCheck::saysNothingOfASoundFile()
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

QTEST_GUILESS_MAIN(TestDamageCheck)
#include "tst_damagecheck.moc"
