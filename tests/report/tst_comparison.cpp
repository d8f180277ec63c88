// SPDX-License-Identifier: MIT
/// How rows meet, and what is said of rows, columns and objects.

#include "compared.h"
#include "expectedsteps.h"
#include "testdatabase.h"

#include <QTest>

#include <utility>

using namespace coagulation::report;

class TestComparison : public QObject {
    Q_OBJECT

private slots:
    void rowsMeet_data();
    void rowsMeet();
    void settingsMeetByTheirNewNames_data();
    void settingsMeetByTheirNewNames();
    void countsColumnsAndOverwrittenValues();
    void tellsColumns();
    void tellsObjects();
    void tellsTablesThatAreNewOrGone();
    void ordersRowsByKey();
    void showsExamplesOnly();
    void showsCountsOnly();
    void namesTheChangedRow();
    void showsWideTables();
    void readsVersions_data();
    void readsVersions();
    void knowsTheNewestVersions();
};

void TestComparison::rowsMeet_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<QStringList>("expected");

    const QString numbered = "create table t(id integer primary key, x)";
    QTest::newRow("by integer key, in any order")
        << QStringList{numbered, "insert into t values(1, 'a'), (2, 'b')"}
        << QStringList{numbered, "insert into t values(2, 'b')", "insert into t values(1, 'a')"}
        << QStringList{};
    QTest::newRow("by the key's name in other letters")
        << QStringList{"create table T(ID integer primary key, X)", "insert into t values(1, 'a')"}
        << QStringList{numbered, "insert into t values(1, 'b')"}
        << QStringList{"T: changed 1", "  ID = 1 | X: 'a' -> 'b'"};

    const QString named = "create table t(name text primary key, x)";
    QTest::newRow("by name, with other rowids")
        << QStringList{named, "insert into t values('a', 1), ('b', 2)"}
        << QStringList{named, "insert into t values('b', 2), ('a', 3)"}
        << QStringList{"t: changed 1", "  name = 'a' | x: 1 -> 3"};
    QTest::newRow("renamed") << QStringList{named, "insert into t values('a', 1), ('b', 2)"}
                             << QStringList{named, "insert into t values('a', 1), ('c', 2)"}
                             << QStringList{"t: renamed 1", "  name = 'b' -> name = 'c' | x = 2"};
    QTest::newRow("renamed beside added and removed ones")
        << QStringList{named,
                       "insert into t(rowid, name, x) values(1, 'a', 1), (2, 'b', 2), (3, 'd', 4)"}
        << QStringList{named,
                       "insert into t(rowid, name, x) values(1, 'e', 1), (2, 'b', 2), (4, 'f', 4)"}
        << QStringList{"t: added 1",   "  name = 'f' | name = 'f', x = 4",
                       "t: removed 1", "  name = 'd' | name = 'd', x = 4",
                       "t: renamed 1", "  name = 'a' -> name = 'e' | x = 1"};
    QTest::newRow("another row in the place of the old one")
        << QStringList{named, "insert into t values('a', 1)"}
        << QStringList{named, "insert into t values('b', 2)"}
        << QStringList{"t: added 1", "  name = 'b' | name = 'b', x = 2", "t: removed 1",
                       "  name = 'a' | name = 'a', x = 1"};
    QTest::newRow("names changed places")
        << QStringList{named, "insert into t values('a', 1), ('b', 2)"}
        << QStringList{named, "insert into t values('b', 1), ('a', 2)"}
        << QStringList{"t: changed 2", "  name = 'a' | x: 1 -> 2", "  name = 'b' | x: 2 -> 1"};

    const QString noCase = "create table t(name text primary key collate nocase, x)";
    QTest::newRow("by a name that ignores case")
        << QStringList{noCase, "insert into t values('PT', 1)"}
        << QStringList{noCase, "insert into t values('pt', 1)"}
        << QStringList{"t: changed 1", "  name = 'PT' | name: 'PT' -> 'pt'"};

    const QString composite = "create table t(a text, b integer, x, primary key(b, a))";
    QTest::newRow("by a key of two columns")
        << QStringList{composite, "insert into t values('a', 1, 'x'), ('b', 1, 'y')"}
        << QStringList{composite, "insert into t values('b', 1, 'z'), ('a', 1, 'x'), ('a', 2, 'x')"}
        << QStringList{"t: added 1", "  b = 2, a = 'a' | a = 'a', b = 2, x = 'x'", "t: changed 1",
                       "  b = 1, a = 'b' | x: 'y' -> 'z'"};

    const QString withoutRowid =
        "create table t(a text, b integer, x, primary key(a, b)) without rowid";
    QTest::newRow("without rowid")
        << QStringList{withoutRowid, "insert into t values('a', 1, 'x'), ('b', 1, 'y')"}
        << QStringList{withoutRowid, "insert into t values('b', 1, 'z')"}
        << QStringList{"t: removed 1", "  a = 'a', b = 1 | a = 'a', b = 1, x = 'x'", "t: changed 1",
                       "  a = 'b', b = 1 | x: 'y' -> 'z'"};
    QTest::newRow("without rowid, and with another key")
        << QStringList{withoutRowid, "insert into t values('a', 1, 'x'), ('b', 1, 'y')"}
        << QStringList{"create table t(a text primary key, b integer, x) without rowid",
                       "insert into t values('a', 1, 'x'), ('c', 1, 'y')"}
        << QStringList{"t: added 1", "t: removed 1"};

    QTest::newRow("a null in the key: by rowid")
        << QStringList{named, "insert into t values(null, 1), (null, 2)"}
        << QStringList{named, "insert into t values(null, 1), (null, 3)"}
        << QStringList{"t: changed 1", "  rowid = 2 | x: 2 -> 3"};
    QTest::newRow("another key: by rowid")
        << QStringList{named, "insert into t values('a', 1)"}
        << QStringList{"create table t(name text, x integer primary key)",
                       "insert into t values('b', 1)"}
        << QStringList{"t: changed 1", "  rowid = 1 | name: 'a' -> 'b'"};
    QTest::newRow("a key of another type: by rowid")
        << QStringList{named, "insert into t values('1', 'a'), ('01', 'b')"}
        << QStringList{"create table t(name integer primary key, x)",
                       "insert into t values(1, 'a'), (2, 'b')"}
        << QStringList{"t: changed 2", "  rowid = 1 | name: '1' -> 1",
                       "  rowid = 2 | name: '01' -> 2"};

    const QString keyless = "create table t(x, y)";
    QTest::newRow("by rowid") << QStringList{keyless, "insert into t values('a', 1), ('b', 2)"}
                              << QStringList{keyless, "insert into t values('a', 1), ('b', 3)"}
                              << QStringList{"t: changed 1", "  rowid = 2 | y: 2 -> 3"};
    QTest::newRow("by content, if rowids shifted")
        << QStringList{keyless,
                       "insert into t(rowid, x, y) values(1, 'a', 1), (5, 'b', 2), (6, 'b', 2), (7, 'c', 3)"}
        << QStringList{keyless,
                       "insert into t(rowid, x, y) values(1, 'a', 1), (2, 'b', 2), (3, 'b', 2), (4, 'c', 3)"}
        << QStringList{};
    QTest::newRow("by content, one of two equal rows gone")
        << QStringList{keyless,
                       "insert into t(rowid, x, y) values(1, 'a', 1), (5, 'b', 2), (6, 'b', 2), (7, 'c', 3)"}
        << QStringList{keyless,
                       "insert into t(rowid, x, y) values(1, 'a', 1), (2, 'b', 2), (3, 'c', 3)"}
        << QStringList{"t: removed 1", "  rowid = 6 | x = 'b', y = 2"};
    QTest::newRow("by content, of another type")
        << QStringList{keyless,
                       "insert into t(rowid, x, y) values(1, 'a', 1), (5, 'b', 2), (6, 'c', 3)"}
        << QStringList{keyless,
                       "insert into t(rowid, x, y) values(1, 'a', 1), (2, 'b', 2.0), (3, 'c', 3)"}
        << QStringList{"t: added 1", "  rowid = 2 | x = 'b', y = 2.0", "t: removed 1",
                       "  rowid = 5 | x = 'b', y = 2"};

    QTest::newRow("a column that is named as the rowid")
        << QStringList{"create table t(rowid text, x)", "insert into t values('a', 1)"}
        << QStringList{"create table t(rowid text, x)", "insert into t values('a', 2)"}
        << QStringList{"t: changed 1", "  rowid = 1 | x: 1 -> 2"};
    QTest::newRow("every name of the rowid taken")
        << QStringList{"create table t(rowid, _rowid_, oid)", "insert into t values(1, 2, 3)"}
        << QStringList{"create table t(rowid, _rowid_, oid)", "insert into t values(1, 2, 4)"}
        << QStringList{"t: added 1", "t: removed 1"};
    QTest::newRow("a table that became a view")
        << QStringList{numbered, "insert into t values(1, 'a'), (2, 'b'), (3, 'c'), (4, 'd')"}
        << QStringList{"create table u(id integer primary key, x)",
                       "create table v(id integer primary key, u)",
                       "insert into u values(1, 'a'), (2, 'b'), (3, 'x'), (4, 'd'), (5, 'e')",
                       "insert into v(u) values(5), (3), (1), (4)",
                       "create view t as select u.id, x from u, v where u.id = v.u"}
        << QStringList{"t: added 1",
                       "  id = 5 | id = 5, x = 'e'",
                       "t: removed 1",
                       "  id = 2 | id = 2, x = 'b'",
                       "t: changed 1",
                       "  id = 3 | x: 'c' -> 'x'",
                       "u: added 5",
                       "  id = 1 | id = 1, x = 'a'",
                       "  id = 2 | id = 2, x = 'b'",
                       "  id = 3 | id = 3, x = 'x'",
                       "  id = 4 | id = 4, x = 'd'",
                       "  id = 5 | id = 5, x = 'e'",
                       "v: added 4",
                       "  id = 1 | id = 1, u = 5",
                       "  id = 2 | id = 2, u = 3",
                       "  id = 3 | id = 3, u = 1",
                       "  id = 4 | id = 4, u = 4",
                       "new view t of t"};
    QTest::newRow("a generated column")
        << QStringList{"create table t(id integer primary key, x, y as (x * 2))",
                       "insert into t values(1, 2)"}
        << QStringList{"create table t(id integer primary key, x, y as (x * 2))",
                       "insert into t values(1, 3)"}
        << QStringList{"t: changed 1", "  id = 1 | x: 2 -> 3, y: 4 -> 6"};
}

/// Shows: REP-9
void TestComparison::rowsMeet()
{
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    QFETCH(QStringList, expected);

    QCOMPARE(differencesOf(before, after), expected);
}

void TestComparison::settingsMeetByTheirNewNames_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QStringList>("expected");

    const QList<std::pair<QString, QString>> names{
        {"program/PT/volume", "program/PT/dilution/volume"},
        {"program/PT/diluent", "program/PT/dilution/name"},
        {"program/PT/name2", "program/PT/r2/name"},
        {"program/PT/reagent3", "program/PT/r3/volume"},
        {"PT/mix/times", "program/PT/r3/mix/times"},
        {"print/{00000000-0000-0000-0000-000000000000}/copies", "print/wb1/copies"},
    };
    for (const auto &[before, after] : names)
        QTest::newRow(qUtf8Printable(before))
            << QString("('%1', 2), ('x', 1)").arg(before)
            << QString("('y', 7), ('%1', 3), ('x', 1)").arg(after)
            << QStringList{
                   "profile: added 1",
                   "  name = 'y' | name = 'y', value = 7",
                   "profile: renamed 1",
                   QString("  name = '%1' -> name = '%2' | value = 3").arg(before, after),
                   "profile: changed 1",
                   QString("  name = '%1', now name = '%2' | value: 2 -> 3").arg(before, after)};
    QTest::newRow("the same value")
        << "('program/PT/volume', 2)"
        << "('program/PT/dilution/volume', 2)"
        << QStringList{
               "profile: renamed 1",
               "  name = 'program/PT/volume' -> name = 'program/PT/dilution/volume' | value = 2"};
    QTest::newRow("no new name")
        << "('program/PT/name4', 2)"
        << "('x', 1), ('program/PT/r4/name', 3)"
        << QStringList{"profile: added 2",
                       "  name = 'program/PT/r4/name' | name = 'program/PT/r4/name', value = 3",
                       "  name = 'x' | name = 'x', value = 1", "profile: removed 1",
                       "  name = 'program/PT/name4' | name = 'program/PT/name4', value = 2"};
    QTest::newRow("the new name was there before")
        << "('program/PT/volume', 2), ('program/PT/dilution/volume', 3)"
        << "('program/PT/dilution/volume', 3)"
        << QStringList{"profile: removed 1",
                       "  name = 'program/PT/volume' | name = 'program/PT/volume', value = 2"};
}

/// Shows: REP-9
void TestComparison::settingsMeetByTheirNewNames()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QStringList, expected);
    const QString settings = "create table profile(name text primary key, value)";
    const TestDatabase databaseBefore;
    databaseBefore.execute({settings, "insert into profile values" + before});
    const TestDatabase databaseAfter;
    databaseAfter.execute({settings, "insert into profile values" + after});

    QCOMPARE(differences(compared(databaseBefore, databaseAfter, "profile")), expected);
}

/// Shows: REP-9
void TestComparison::countsColumnsAndOverwrittenValues()
{
    const QString table = "create table t(id integer primary key, x, y, z)";
    const TestDatabase before;
    before.execute(
        {table, "insert into t values(1, 1, null, 'a'), (2, 2, 2, 'a'), (3, null, 3, 'a')"});
    const TestDatabase after;
    after.execute({table, "insert into t values(1, 2, 1, 'a'), (2, 3, 2, 'a'), (3, 4, 3, 'a')"});

    const TableFacts facts = tableIn(compared(before, after), "t");

    QCOMPARE(facts.rowsBefore, 3);
    QCOMPARE(facts.rowsAfter, 3);
    QCOMPARE(facts.changed, 3);
    QCOMPARE(facts.changedColumns.size(), 2);
    QCOMPARE(facts.changedColumns.at(0).column, "x");
    QCOMPARE(facts.changedColumns.at(0).rows, 3);
    QCOMPARE(facts.changedColumns.at(0).overwritten, 2);
    QCOMPARE(facts.changedColumns.at(1).column, "y");
    QCOMPARE(facts.changedColumns.at(1).rows, 1);
    QCOMPARE(facts.changedColumns.at(1).overwritten, 0);
}

void TestComparison::tellsColumns()
{
    QCOMPARE(differencesOf({"create table t(id integer primary key, a, Both, b)",
                            "insert into t values(1, 1, 2, 3)"},
                           {"create table t(id integer primary key, both, c)",
                            "insert into t values(1, 2, 4)"}),
             (QStringList{"t: new column c", "t: gone column a", "t: gone column b"}));
}

void TestComparison::tellsObjects()
{
    const QString table = "create table t(id integer primary key, x unique)";
    const QString kept = "create index Kept on t(x)";

    QCOMPARE(
        differencesOf({table, kept, "create index t_x on t(x)", "create view v as select 1",
                       "create trigger g after delete on t begin select 1; end"},
                      {table, kept, "create index KEPT2 on t(x)", "create view g as select 1"}),
        (QStringList{"gone index t_x of t", "gone trigger g of t", "gone view v of v",
                     "new index KEPT2 of t", "new view g of g"}));
}

/// Shows: REP-9
void TestComparison::tellsTablesThatAreNewOrGone()
{
    const TestDatabase before;
    before.execute({"create table old(id integer primary key)", "insert into old values(1), (2)"});
    const TestDatabase after;
    after.execute({"create table new(x)", "insert into new values('a')"});

    const DatabaseFacts facts = compared(before, after);

    QCOMPARE(differences(facts),
             (QStringList{"new: added 1", "  rowid = 1 | x = 'a'", "old: removed 2",
                          "  id = 1 | id = 1", "  id = 2 | id = 2"}));
    QVERIFY(!tableIn(facts, "new").rowsBefore);
    QCOMPARE(tableIn(facts, "new").rowsAfter, 1);
    QCOMPARE(tableIn(facts, "old").rowsBefore, 2);
    QVERIFY(!tableIn(facts, "old").rowsAfter);
}

void TestComparison::ordersRowsByKey()
{
    const QString table = "create table t(name text primary key, x)";

    QCOMPARE(differencesOf({table, "insert into t values('c', 1), ('a', 1), ('b', 1)"},
                           {table, "insert into t values('b', 2), ('c', 2), ('a', 2)"}),
             (QStringList{"t: changed 3", "  name = 'a' | x: 1 -> 2", "  name = 'b' | x: 1 -> 2",
                          "  name = 'c' | x: 1 -> 2"}));
}

namespace {

const QString numbered = "create table t(id integer primary key, x)";

QString numberedRows(int first, int last, int x)
{
    return QString("insert into t with recursive n(i) as (select %1 union all select i + 1 from n"
                   " where i < %2) select i, %3 from n")
        .arg(first)
        .arg(last)
        .arg(x);
}

} // namespace

void TestComparison::showsExamplesOnly()
{
    const TestDatabase before;
    before.execute({numbered, numberedRows(1, 60, 1)});
    const TestDatabase after;
    after.execute({numbered, numberedRows(31, 90, 2)});

    const TableFacts examples = tableIn(compared(before, after, "data", {false, true}), "t");
    const TableFacts all = tableIn(compared(before, after, "qc", {true, true}), "t");

    for (const TableFacts &facts : {examples, all}) {
        QCOMPARE(facts.added, 30);
        QCOMPARE(facts.removed, 30);
        QCOMPARE(facts.changed, 30);
        QCOMPARE(facts.addedRows.size(), 20);
    }
    QCOMPARE(examples.removedRows.size(), 20);
    QCOMPARE(examples.changedRows.size(), 20);
    QCOMPARE(examples.changedRows.last().key, "id = 50");
    QCOMPARE(all.removedRows.size(), 30);
    QCOMPARE(all.changedRows.size(), 30);
}

/// Shows: REP-15
void TestComparison::showsCountsOnly()
{
    const TestDatabase before;
    before.execute(
        {numbered, numberedRows(1, 3, 1), "create table gone(x)", "insert into gone values(1)"});
    const TestDatabase after;
    after.execute({numbered, numberedRows(2, 4, 2)});

    const DatabaseFacts facts = compared(before, after, "data", {false, false});

    QCOMPARE(differences(facts),
             (QStringList{"gone: removed 1", "t: added 1", "t: removed 1", "t: changed 2"}));
    QCOMPARE(tableIn(facts, "t").changedColumns.first().rows, 2);
}

void TestComparison::namesTheChangedRow()
{
    const QString table = "create table t(id integer primary key, x, name)";
    const TestDatabase before;
    before.execute({table, "insert into t values(1, 1, 'old')"});
    const TestDatabase after;
    after.execute({table, "insert into t values(1, 2, 'PT')"});

    QCOMPARE(tableIn(compared(before, after), "t").changedRows.first().name, "'PT'");
}

void TestComparison::showsWideTables()
{
    QStringList columns;
    QStringList changes;
    for (int i = 0; i < 900; ++i) {
        columns << QString("c%1").arg(i);
        changes << QString("c%1 = 1").arg(i);
    }
    const TestDatabase before;
    before.execute(
        {QString("create table t(%1)").arg(columns.join(',')), "insert into t(c0) values(null)"});
    const TestDatabase after;
    after.execute({QString("create table t(%1)").arg(columns.join(',')),
                   "insert into t(c0) values(null)", "update t set " + changes.join(',')});

    const TableFacts facts = tableIn(compared(before, after), "t");

    QCOMPARE(facts.problem, QString());
    QCOMPARE(facts.changed, 1);
    QCOMPARE(facts.changedColumns.size(), 900);
    QCOMPARE(facts.changedRows.size(), 1);
    QCOMPARE(facts.changedRows.first().cells.size(), 200);
}

void TestComparison::readsVersions_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<int>("version"); // -1: none

    QTest::newRow("no table") << QStringList{"create table t(x)"} << -1;
    QTest::newRow("no row") << QStringList{"create table version(version integer)"} << -1;
    QTest::newRow("null") << QStringList{"create table version(version integer)",
                                         "insert into version values(null)"}
                          << -1;
    QTest::newRow("one") << QStringList{"create table version(version integer)",
                                        "insert into version values(7)"}
                         << 7;
    QTest::newRow("the highest") << QStringList{"create table version(version integer)",
                                                "insert into version values(7), (9), (8)"}
                                 << 9;
    QTest::newRow("another layout")
        << QStringList{"create table version(number integer)", "insert into version values(7)"}
        << -1;
    QTest::newRow("a view") << QStringList{"create view version as select 7 as version"} << -1;
}

void TestComparison::readsVersions()
{
    QFETCH(QStringList, statements);
    QFETCH(int, version);
    const TestDatabase database;
    database.execute(statements);

    const DatabaseFacts facts = compared(database, database);

    QCOMPARE(facts.versionBefore.value_or(-1), version);
    QCOMPARE(facts.versionAfter.value_or(-1), version);
    QCOMPARE(facts.integrityBefore, "ok");
    QCOMPARE(facts.integrityAfter, "ok");
}

void TestComparison::knowsTheNewestVersions()
{
    for (const char *name : {"profile", "data", "qc", "syslog"})
        QCOMPARE(newestVersion(name), newestVersionOf(name));
    QCOMPARE(newestVersion("other"), 0);
}

QTEST_GUILESS_MAIN(TestComparison)

#include "tst_comparison.moc"
