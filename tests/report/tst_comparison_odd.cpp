// SPDX-License-Identifier: MIT
/// Files that cannot be compared, and databases that somebody made to do harm.

#include "compared.h"
#include "platform.h"
#include "testdatabase.h"

#include "coagulation/vardo/connection.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

using namespace coagulation::report;

class TestComparisonOdd : public QObject {
    Q_OBJECT

private slots:
    void saysWhyAFileCannotBeRead_data();
    void saysWhyAFileCannotBeRead();
    void saysThatAFileIsLocked();
    void tellsFindingsOfTheCheck();
    void goesOnAfterADamagedTable();
    void opensAnyFileName_data();
    void opensAnyFileName();
    void takesNamesAsTheyAre_data();
    void takesNamesAsTheyAre();
    void readsNoVirtualTable();
    void readsNoEndlessView();
    void callsNoHarmfulFunction();
    void leavesTheFilesAlone();
    void stopsBetweenTables();
    void keepsFewLettersOfManyRows();
};

namespace {

const QString table = "create table t(id integer primary key, x)";

void write(const TestDatabase &database, const QByteArray &bytes)
{
    QFile file(database.path());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s", qUtf8Printable(file.errorString()));
}

/// \return a database whose table has a page of nonsense in its middle
QByteArray withDamagedPage(const TestDatabase &database)
{
    database.execute({"pragma page_size = 4096", table,
                      "insert into t with recursive n(i) as (select 1 union all select i + 1 from n"
                      " where i < 2000) select i, printf('%0100d', i) from n",
                      "create table u(id integer primary key, x)", "insert into u values(1, 'a')"});
    QByteArray bytes = database.bytes();
    constexpr qsizetype page = 4096;
    bytes.replace(10 * page, page, QByteArray(page, '\x55'));
    return bytes;
}

} // namespace

void TestComparisonOdd::saysWhyAFileCannotBeRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem");

    const TestDatabase sound;
    sound.execute({table, "insert into t values(1, 'a')"});
    QByteArray random = sound.bytes();
    for (qsizetype i = 0; i < random.size(); ++i)
        random[i] = static_cast<char>(i * 7919 >> 5);
    QTest::newRow("encrypted") << random << "is no SQLite database, or it is encrypted.";
    QTest::newRow("a text") << QByteArray("This is no database. ").repeated(100)
                            << "is no SQLite database, or it is encrypted.";
    QTest::newRow("damaged schema")
        << sound.bytes().replace("CREATE TABLE t", "CREATE FABLE t")
        << R"(is damaged: malformed database schema (t) - near "FABLE": syntax error.)";

    const TestDatabase utf16;
    QFile::remove(utf16.path());
    utf16.execute({"pragma encoding = 'UTF-16'", table});
    QTest::newRow("another encoding")
        << utf16.bytes()
        << "The databases before and after the upgrade store texts in different encodings.";
}

void TestComparisonOdd::saysWhyAFileCannotBeRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, problem);
    const TestDatabase sound;
    sound.execute(
        {table, "create table version(version integer)", "insert into version values(2)"});
    const TestDatabase broken;
    write(broken, bytes);
    const bool names = problem.startsWith("The ");

    const DatabaseFacts before = compared(broken, sound);
    const DatabaseFacts after = compared(sound, broken);

    QCOMPARE(before.problem, names ? problem : "The database before the upgrade " + problem);
    QCOMPARE(after.problem, names ? problem : "The database after the upgrade " + problem);
    QCOMPARE(after.versionBefore, 2);
    QCOMPARE(after.integrityBefore, "ok");
    QVERIFY(after.tables.isEmpty());
}

void TestComparisonOdd::saysThatAFileIsLocked()
{
    const TestDatabase free;
    free.execute({table});
    const TestDatabase locked;
    locked.execute({table});
    QProcess other;
    other.start(sqliteShell(), {locked.path()});
    other.write("begin exclusive;\nselect 'locked';\n");
    while (!other.readAllStandardOutput().contains("locked"))
        QVERIFY(other.waitForReadyRead());

    const DatabaseFacts before = compared(locked, free);
    const DatabaseFacts after = compared(free, locked);

    QCOMPARE(before.problem, "The database before the upgrade is locked by another program.");
    QCOMPARE(after.problem, "The database after the upgrade is locked by another program.");
    other.closeWriteChannel();
    QVERIFY(other.waitForFinished());
}

void TestComparisonOdd::tellsFindingsOfTheCheck()
{
    const TestDatabase sound;
    sound.execute({table});
    const TestDatabase odd;
    odd.execute(
        {table, "insert into t values(1, null)", "pragma writable_schema = on",
         "update sqlite_master set sql = 'create table t(id integer primary key, x not null)'"});

    const DatabaseFacts facts = compared(sound, odd);

    QCOMPARE(facts.integrityBefore, "ok");
    QCOMPARE(facts.integrityAfter, "NULL value in t.x");
}

void TestComparisonOdd::goesOnAfterADamagedTable()
{
    const TestDatabase before;
    const QByteArray damaged = withDamagedPage(before);
    const TestDatabase after;
    write(after, damaged);
    before.execute({"update u set x = 'b'"});

    const DatabaseFacts facts = compared(before, after);

    QVERIFY2(tableIn(facts, "t").problem.startsWith("The table is damaged: "),
             qUtf8Printable(tableIn(facts, "t").problem));
    QCOMPARE(tableIn(facts, "u").changed, 1);
    QCOMPARE(facts.problem, QString());
    QVERIFY(facts.integrityAfter != "ok" && !facts.integrityAfter.isEmpty());
}

void TestComparisonOdd::opensAnyFileName_data()
{
    QTest::addColumn<QString>("name");

    for (const char *name :
         {"with blank.db", "%20.db", "a#b.db", "a&mode=rwc.db", "凝血.db", "it's.db", "a;b.db",
          "%1.db", "file:x.db", "a?mode=memory.db", R"(a"b.db)", R"(a\b.db)"})
        QTest::newRow(name) << name;
}

void TestComparisonOdd::opensAnyFileName()
{
    QFETCH(QString, name);
    if (!canBeFileName(name))
        QSKIP("no file has this name here");
    const TestDatabase before(name);
    before.execute({table, "insert into t values(1, 'a')"});
    const TestDatabase after(name);
    after.execute({table, "insert into t values(1, 'b')"});

    QCOMPARE(differences(compared(before, after)),
             (QStringList{"t: changed 1", "  id = 1 | x: 'a' -> 'b'"}));
}

void TestComparisonOdd::takesNamesAsTheyAre_data()
{
    QTest::addColumn<QString>("name");

    for (const char *name :
         {"select", "after", "main", "a", "b",  "other", "it's", R"(a"b)", "[a]",   "`a`",
          "a b",    "a\nb",  "%1",   "?", ":x", "a;--",  "凝血", "",       "rowid", "sqlitex"})
        QTest::newRow(name) << QString(name);
}

void TestComparisonOdd::takesNamesAsTheyAre()
{
    QFETCH(QString, name);
    const QString quotedName = coagulation::quoted(name);
    for (const char *key : {"integer primary key", "text primary key", "text"}) {
        const QString odd = QString("create table %1(%1 %2, x)").arg(quotedName, key);
        const TestDatabase before;
        before.execute({odd, QString("insert into %1 values(1, 'a'), (2, 'b')").arg(quotedName)});
        const TestDatabase after;
        after.execute({odd, QString("insert into %1 values(1, 'c'), (3, 'd')").arg(quotedName)});

        const DatabaseFacts facts = compared(before, after);

        QCOMPARE(tableIn(facts, name).problem, QString());
        QVERIFY(tableIn(facts, name).changed > 0);
    }
}

/// Shows: REP-17
void TestComparisonOdd::readsNoVirtualTable()
{
    const TestDatabase before;
    before.execute({"create virtual table t using fts5(x)", "create table u(x)"});
    const TestDatabase after;
    after.execute(
        {table, "create virtual table u using fts5(x)", "create virtual table v using fts5(x)"});

    const DatabaseFacts facts = compared(before, after);

    for (const char *name : {"t", "u", "v"}) {
        QCOMPARE(tableIn(facts, name).problem, virtualTableProblem);
        QVERIFY(!tableIn(facts, name).rowsAfter);
    }
}

/// Shows: REP-17
void TestComparisonOdd::readsNoEndlessView()
{
    const QString endless =
        "with recursive n(i) as (select 1 union all select i + 1 from n) select i as id, i as x from n";
    const TestDatabase before;
    before.execute({table, "insert into t values(1, 'a')",
                    "create table curve(id integer primary key, valid)"});
    const TestDatabase after;
    after.execute({"create view version as " + endless, "create view t as " + endless,
                   "create view curve as " + endless, "create view assayCalibration as " + endless,
                   "create view own as " + endless});

    const DatabaseFacts facts = compared(before, after, "profile");

    QCOMPARE(tableIn(facts, "t").problem,
             "a view after the upgrade, which takes too long to be read");
    QCOMPARE(tableIn(facts, "t").rowsBefore, 1);
    QVERIFY(!facts.versionAfter);
}

/// Shows: REP-17
void TestComparisonOdd::callsNoHarmfulFunction()
{
    const TestDatabase before;
    before.execute({table, "insert into t values(1, 'a')"});
    const TestDatabase after;
    after.execute({"create table u(id integer primary key)", "insert into u values(1)",
                   "create view t as select id, load_extension('x') as x from u"});

    const QString problem = tableIn(compared(before, after), "t").problem;

    QVERIFY2(problem.contains("unsafe use of load_extension")
                 || problem.contains("no such function"),
             qUtf8Printable(problem));
}

void TestComparisonOdd::leavesTheFilesAlone()
{
    const TestDatabase before;
    before.execute({table, "insert into t values(1, 'a')"});
    const TestDatabase after;
    after.execute({table, "insert into t values(1, 'b')"});
    const QByteArray bytesBefore = before.bytes();
    const QByteArray bytesAfter = after.bytes();

    const DatabaseFacts facts = compared(before, after);

    QCOMPARE(facts.problem, QString());
    QCOMPARE(before.bytes(), bytesBefore);
    QCOMPARE(after.bytes(), bytesAfter);
    for (const TestDatabase *database : {&before, &after})
        QCOMPARE(QDir(database->folderPath()).entryList(QDir::Files).size(), 1);
}

void TestComparisonOdd::stopsBetweenTables()
{
    const TestDatabase database;
    database.execute({"create table a(x)", "create table b(x)", "create table c(x)"});
    DatabaseFacts facts{"qc"};
    QStringList asked;

    compare(facts, database.path(), database.path(), {}, [&asked](const QString &name) {
        asked << name;
        return name != "b";
    });

    QCOMPARE(asked, (QStringList{"a", "b"}));
    QCOMPARE(facts.problem, "The comparison was stopped.");
    QCOMPARE(facts.tables.size(), 1);
}

void TestComparisonOdd::keepsFewLettersOfManyRows()
{
    QStringList columns;
    for (int i = 0; i < 50; ++i)
        columns << QString("c%1").arg(i);
    const TestDatabase before;
    before.execute(
        {QString("create table t(%1)").arg(columns.join(',')),
         QString(
             "insert into t with recursive n(i) as (select 1 union all select i + 1 from n where i < 5000)"
             " select %1 from n")
             .arg(QString("zeroblob(300), ").repeated(50).chopped(2))});
    const TestDatabase after;
    after.execute({QString("create table t(%1)").arg(columns.join(','))});

    const TableFacts facts = tableIn(compared(before, after), "t");

    QCOMPARE(facts.removed, 5000);
    QVERIFY(facts.removedRows.size() > 500);
    QVERIFY(facts.removedRows.size() < 2000);
}

QTEST_GUILESS_MAIN(TestComparisonOdd)

#include "tst_comparison_odd.moc"
