// SPDX-License-Identifier: MIT
/// The operations that steps are made of, on real files.

#include "messagerecorder.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include <QSqlDatabase>
#include <QSqlField>
#include <QSqlQuery>
#include <QTest>

#include <utility>

namespace {

const QString versionTable = "create table version(version integer)";

/// What a step did: its own result, and the log from the step on without PASS or FAIL.
struct Outcome {
    bool result = false;
    QStringList log;
};

/// Runs one step on the database. Its changes are kept whatever it returns.
Outcome runStep(const TestDatabase &database, const std::function<bool(StepUpdater &)> &step)
{
    Outcome outcome;
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &operations) {
        outcome.result = step(operations);
        outcome.log = recorder.messages().mid(1);
        return true;
    });
    if (!updater.run())
        qFatal("%s", qUtf8Printable(recorder.messages().join('\n')));
    return outcome;
}

QSqlRecord record(const QList<std::pair<QString, QVariant>> &fields)
{
    QSqlRecord record;
    for (const auto &[name, value] : fields) {
        QSqlField field(name);
        field.setValue(value);
        record.append(field);
    }
    return record;
}

/// A row a storage class, with its neighbours: what the driver's own literals would change.
const QStringList valuesOfEveryStorageClass{
    "create table source(id integer primary key, value)",
    "insert into source(value) values(null)",
    "insert into source(value) values(0), (-1), (9223372036854775807), (-9223372036854775808)",
    "insert into source(value) values(3.0), (0.1), (1e308), (5e-324), (-0.30000000000000004), (9e999)",
    "insert into source(value) values(''), ('3'), ('3.0'), ('O''Neill'), ('凝血🩸'), ('1e5'), ('a''||1')",
    "insert into source(value) values('line 1' || char(10) || 'line 2'), (':name ? \"x\" %1')",
    "insert into source(value) values(x''), (x'00'), (x'00ff10'), (x'33')",
    "insert into source(value) values(zeroblob(100000))",
    "insert into source(value) values(char(65279)), (char(65279) || 'q')",
};

} // namespace

class TestEngineOperations : public QObject {
    Q_OBJECT

private slots:
    void init();

    void execRunsAStatement();
    void execBindsValuesByName();
    void execLogsTheCallersLine();
    void execLogsOneWarning_data();
    void execLogsOneWarning();
    void execRefusesTwoStatements();
    void execLogsAStatementOnOneLine();
    void execAllStopsAtTheFirstFailure();
    void tryAllRunsEveryStatement();
    void statementsKnowTheirLines();

    void copyTableKeepsEveryValue_data();
    void copyTableKeepsEveryValue();
    void copyTableKeepsInvalidText();
    void copyTableKeepsAByteOrderMark_data();
    void copyTableKeepsAByteOrderMark();
    void copyTableMatchesColumnsByName();
    void copyTableFromAMissingTableCopiesNothing_data();
    void copyTableFromAMissingTableCopiesNothing();
    void copyTableFailsAtATableThatCannotBeRead_data();
    void copyTableFailsAtATableThatCannotBeRead();
    void copyTableFromAnEmptyTableNeedsNoTarget_data();
    void copyTableFromAnEmptyTableNeedsNoTarget();
    void copyTableAddsDefaults_data();
    void copyTableAddsDefaults();
    void copyTableLeavesOutExcludedColumns_data();
    void copyTableLeavesOutExcludedColumns();
    void copyTableGivesAnExcludedColumnItsDefault_data();
    void copyTableGivesAnExcludedColumnItsDefault();
    void copyTableKeepsTheOrderOfTheTable();
    void copyTableCopiesAView();
    void copyTableQuotesColumnNames_data();
    void copyTableQuotesColumnNames();
    void copyTableTakesNoQuotedNameForAnother_data();
    void copyTableTakesNoQuotedNameForAnother();
    void copyTableFailsAtAColumnThatIsOnlyAText();
    void copyTableFailsAtTheFirstBadRow_data();
    void copyTableFailsAtTheFirstBadRow();
    void copyTableAdjustsEachRow();
    void copyTableAdjustMayChangeTheColumns();
    void copyTableAdjustSeesDefaultsButNoExcludedColumn();
    void copyTableAdjustMayLeaveOutAColumn();
    void copyTableTakesTheLastOfTwoDefaults_data();
    void copyTableTakesTheLastOfTwoDefaults();
    void copyTableBindsANullByteArrayAsNull_data();
    void copyTableBindsANullByteArrayAsNull();
    void copyTableFollowsTheTargetsConflictClause();

    void rebuildTableReplacesTheLayout();
    void rebuildTableFailsWithoutTheOldTable();
    void rebuildTableFailsWhenARowDoesNotFit();
    void rebuildTableFailsWhenTheNewNameIsMissing();
    void renameTableRenames();
    void renameTableFailsOnAMissingTable();

    void removeDecimalsCutsAtTheFirstPoint_data();
    void removeDecimalsCutsAtTheFirstPoint();
    void removeDecimalsCutsSeveralColumnsInOneStatement();
    void removeDecimalsWritesNothingWithoutAPoint();
    void removeDecimalsFailsOnAMissingColumn();
    void removeDecimalsFailsWhateverTheRowsHold_data();
    void removeDecimalsFailsWhateverTheRowsHold();

    void updateOrInsertUpdates_data();
    void updateOrInsertUpdates();
    void updateOrInsertInsertsWhenNothingMatches();
    void updateOrInsertFailsWithTheCallersLine_data();
    void updateOrInsertFailsWithTheCallersLine();

    void setVersionLeavesOneRow();
    void setVersionWarnsTwiceWithoutItsTable();
    void setVersionInsertsEvenWhenTheDeleteFails();
    void setVersionAsksTheInsertAlone_data();
    void setVersionAsksTheInsertAlone();

    void readRowsVisitsEveryRow();
    void readRowsStopsWhenTheCallerDoes();
    void readRowsReportsAnUnreadableRow();
    void readRowsUnlocksTheTable();

private:
    /// Columns to test both ways of copyTable with: inside SQLite, and through an adjust function.
    static void addWays();
    static std::function<void(QSqlRecord &)> adjustOfWay();
};

void TestEngineOperations::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestEngineOperations::addWays()
{
    QTest::addColumn<bool>("adjusted");

    QTest::newRow("inside SQLite") << false;
    QTest::newRow("row by row") << true;
}

std::function<void(QSqlRecord &)> TestEngineOperations::adjustOfWay()
{
    QFETCH(bool, adjusted);
    return adjusted ? [](QSqlRecord &) {} : std::function<void(QSqlRecord &)>();
}

void TestEngineOperations::execRunsAStatement()
{
    const TestDatabase database;
    database.execute({versionTable});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "create table made(id)");
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log, QStringList());
    QCOMPARE(database.table("made"), QStringList());
}

void TestEngineOperations::execBindsValuesByName()
{
    const TestDatabase database;
    database.execute({versionTable, "create table made(a, b, c, d, e, f)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "insert into made values(:b, :a, :b, :c, ':a', :d)",
                         {{":a", "O'Neill"},
                          {":b", 3},
                          {":c", QVariant()},
                          {":d", QString(QChar::ByteOrderMark)}});
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("made"), QStringList{"3, 'O''Neill', 3, NULL, ':a', '\ufeff'"});
}

/// Shows: LOG-4
void TestEngineOperations::execLogsTheCallersLine()
{
    const TestDatabase database;
    database.execute({versionTable});
    const MessageRecorder recorder;
    int line = 0;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        line = __LINE__ + 1;
        return step.exec(SOURCE_LINE, "drop table missing");
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.numberedMessages().at(1),
             QString("Warning: tests/engine/tst_engine_operations.cpp ( %1 ):  "
                     "\"no such table: missing\" : "
                     "[ \"drop table missing\" ]")
                 .arg(line));
}

void TestEngineOperations::execLogsOneWarning_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("error");

    QTest::newRow("syntax") << "create tabel x(id)"
                            << "near \"tabel\": syntax error";
    QTest::newRow("missing table") << "delete from missing"
                                   << "no such table: missing";
    QTest::newRow("missing column") << "update made set missing = 1"
                                    << "no such column: missing";
    QTest::newRow("constraint") << "insert into made values(1)"
                                << "UNIQUE constraint failed: made.id";
    QTest::newRow("trigger") << "delete from made"
                             << "rows are kept";
}

/// Shows: LOG-4
void TestEngineOperations::execLogsOneWarning()
{
    QFETCH(QString, sql);
    QFETCH(QString, error);
    const TestDatabase database;
    database.execute({versionTable, "create table made(id integer primary key)",
                      "insert into made values(1)",
                      "create trigger keep before delete on made"
                      " begin select raise(abort, 'rows are kept'); end"});

    const Outcome outcome =
        runStep(database, [&](StepUpdater &step) { return step.exec(SOURCE_LINE, sql); });

    QVERIFY(!outcome.result);
    QString escaped = error;
    QCOMPARE(outcome.log,
             QStringList{QString("Warning: tests/engine/tst_engine_operations.cpp ( line ):  "
                                 "\"%1\" : [ \"%2\" ]")
                             .arg(escaped.replace('"', "\\\""), sql)});
    QCOMPARE(database.table("made"), QStringList{"1"});
}

void TestEngineOperations::execRefusesTwoStatements()
{
    const QString sql = "insert into made values(1); insert into made values(2)";
    const TestDatabase database;
    database.execute({versionTable, "create table made(id)"});

    const Outcome outcome =
        runStep(database, [&](StepUpdater &step) { return step.exec(SOURCE_LINE, sql); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log.size(), 1);
    QVERIFY(outcome.log.first().endsWith(QString(" : [ \"%1\" ]").arg(sql)));
    QCOMPARE(database.table("made"), QStringList());
}

/// Shows: LOG-4
void TestEngineOperations::execLogsAStatementOnOneLine()
{
    const TestDatabase database;
    database.execute({versionTable});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "update \"missing\"\n set\tname = '凝血'");
    });

    QCOMPARE(outcome.log.size(), 1);
    QVERIFY(outcome.log.first().endsWith(R"([ "update \"missing\"\n set\tname = '凝血'" ])"));
}

/// Shows: OPS-1
void TestEngineOperations::execAllStopsAtTheFirstFailure()
{
    const TestDatabase database;
    database.execute({versionTable});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.execAll({
            SQL("create table first(id)"),
            SQL("create table first(id)"),
            SQL("create table third(id)"),
        });
    });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log.size(), 1);
    QCOMPARE(database.schema(),
             QStringList({"CREATE TABLE first(id)", "CREATE TABLE version(version integer)"}));
}

/// Shows: OPS-1
void TestEngineOperations::tryAllRunsEveryStatement()
{
    const TestDatabase database;
    database.execute({versionTable});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        step.tryAll({
            SQL("create table first(id)"),
            SQL("create table first(id)"),
            SQL("create table third(id)"),
        });
        return true;
    });

    QCOMPARE(outcome.log.size(), 1);
    QCOMPARE(database.schema(),
             QStringList({"CREATE TABLE first(id)", "CREATE TABLE third(id)",
                          "CREATE TABLE version(version integer)"}));
}

/// Shows: LOG-4
void TestEngineOperations::statementsKnowTheirLines()
{
    const TestDatabase database;
    database.execute({versionTable});
    const MessageRecorder recorder;
    int line = 0;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        line = __LINE__;
        step.tryAll({
            SQL("drop table a"),
            SQL(QString("drop table %1").arg("b")),
        });
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    const QStringList log = recorder.numberedMessages().mid(1, 2);
    QVERIFY2(log.at(0).contains(QString("_operations.cpp ( %1 )").arg(line + 2)),
             qUtf8Printable(log.at(0)));
    QVERIFY2(log.at(1).contains(QString("_operations.cpp ( %1 )").arg(line + 3)),
             qUtf8Printable(log.at(1)));
}

void TestEngineOperations::copyTableKeepsEveryValue_data()
{
    QTest::addColumn<bool>("adjusted");
    QTest::addColumn<QString>("type");

    for (const char *type : {"", "integer", "text", "real", "blob", "numeric", "date"}) {
        QTest::addRow("inside SQLite, %s", type) << false << type;
        QTest::addRow("row by row, %s", type) << true << type;
    }
}

/// Shows: OPS-2
void TestEngineOperations::copyTableKeepsEveryValue()
{
    QFETCH(QString, type);
    const TestDatabase database;
    database.execute(valuesOfEveryStorageClass
                     + QStringList{versionTable,
                                   QString("create table target(id integer, value %1)").arg(type),
                                   QString("create table plain(id integer, value %1)").arg(type),
                                   "insert into plain select * from source"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {}, adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log, QStringList());
    // as a plain insert: a column's declared type alone may change the storage class
    QCOMPARE(database.table("target"), database.table("plain"));
    if (type.isEmpty())
        QCOMPARE(database.table("target"), database.table("source"));
    // quote() rounds reals
    QCOMPARE(database.rows("select count(*) from target t, plain p where t.id = p.id"
                           " and typeof(t.value) = typeof(p.value) and t.value is p.value"),
             database.rows("select count(*) from source"));
}

/// Shows: OPS-2
void TestEngineOperations::copyTableKeepsInvalidText()
{
    const TestDatabase database;
    database.execute(
        {versionTable, "create table source(value text)",
         "insert into source values(cast(x'ff41fe' as text)), (cast(x'410042' as text))",
         "create table target(value text)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.copyTable("source", "target"); });

    QVERIFY(outcome.result);
    QCOMPARE(database.rows("select cast(value as blob) from target"),
             QStringList({"X'FF41FE'", "X'410042'"}));
}

void TestEngineOperations::copyTableKeepsAByteOrderMark_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QString>("bytes"); // U+FEFF and q; swapped: U+FFFE and q

    QTest::newRow("UTF-8") << "UTF-8"
                           << "X'EFBBBF71'";
    QTest::newRow("UTF-16le") << "UTF-16le"
                              << "X'FFFE7100'";
    QTest::newRow("UTF-16be") << "UTF-16be"
                              << "X'FEFF0071'";
    QTest::newRow("UTF-16le, swapped") << "UTF-16le"
                                       << "X'FEFF7100'";
    QTest::newRow("UTF-16be, swapped") << "UTF-16be"
                                       << "X'FFFE0071'";
}

/// Shows: OPS-2
void TestEngineOperations::copyTableKeepsAByteOrderMark()
{
    QFETCH(QString, encoding);
    QFETCH(QString, bytes);
    const TestDatabase database;
    database.execute({"pragma encoding='" + encoding + '\'', versionTable,
                      "create table source(value text)",
                      "insert into source values(cast(" + bytes + " as text))",
                      "create table target(value text)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {}, [](QSqlRecord & /*row*/) {});
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.rows("select cast(value as blob) from target"), QStringList{bytes});
}

/// Shows: OPS-2
void TestEngineOperations::copyTableMatchesColumnsByName()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(b, A)",
                      "insert into source values('b', 'a')",
                      "create table target(a, x default 'new', B)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.copyTable("source", "target"); });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"'a', 'new', 'b'"});
}

void TestEngineOperations::copyTableFromAMissingTableCopiesNothing_data()
{
    addWays();
}

void TestEngineOperations::copyTableFromAMissingTableCopiesNothing()
{
    const TestDatabase database;
    database.execute({versionTable, "create table target(id)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {}, adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log,
             QStringList{"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                         "\"no such table: source\" : "
                         "[ \"select * from source\" ]"});
    QCOMPARE(database.table("target"), QStringList());
}

void TestEngineOperations::copyTableFailsAtATableThatCannotBeRead_data()
{
    addWays();
}

/// Its rows would be lost with it.
/// Shows: OPS-7
void TestEngineOperations::copyTableFailsAtATableThatCannotBeRead()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id)", "insert into source values(1), (2)",
                      "alter table source add column bad as (abs(-9223372036854775807 - 1))",
                      "create table target(id)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {"bad"}, adjustOfWay());
    });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log,
             QStringList{"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                         "\"integer overflow\" : "
                         "[ \"select * from source\" ]"});
    QCOMPARE(database.rows("select id from source"), QStringList({"1", "2"}));
}

void TestEngineOperations::copyTableFromAnEmptyTableNeedsNoTarget_data()
{
    addWays();
}

void TestEngineOperations::copyTableFromAnEmptyTableNeedsNoTarget()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "missing", record({{"x", 1}}), {}, adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log, QStringList());
}

void TestEngineOperations::copyTableAddsDefaults_data()
{
    addWays();
}

/// Shows: OPS-3
void TestEngineOperations::copyTableAddsDefaults()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, state)",
                      "insert into source values(1, 'old'), (2, null)",
                      "create table target(id, state, instrId, level, blank)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable(
            "source", "target",
            record({{"instrId", "wb'1"}, {"STATE", 3}, {"level", 0.5}, {"blank", QVariant()}}), {},
            adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"),
             QStringList({"1, 3, 'wb''1', 0.5, NULL", "2, 3, 'wb''1', 0.5, NULL"}));
}

void TestEngineOperations::copyTableLeavesOutExcludedColumns_data()
{
    addWays();
}

/// Shows: OPS-3
void TestEngineOperations::copyTableLeavesOutExcludedColumns()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, a, b, c)",
                      "insert into source values(1, 'a', 'b', 'c')",
                      "create table target(id, a default 'x', b, c default 'y')"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {"A", "c", "missing"}, adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"1, 'x', 'b', 'y'"});
}

void TestEngineOperations::copyTableGivesAnExcludedColumnItsDefault_data()
{
    addWays();
}

void TestEngineOperations::copyTableGivesAnExcludedColumnItsDefault()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, a)",
                      "insert into source values(1, 'a')", "create table target(id, a)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", record({{"a", "new"}}), {"a"}, adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"1, 'new'"});
}

/// Shows: OPS-2
void TestEngineOperations::copyTableKeepsTheOrderOfTheTable()
{
    // SQLite would rather read the small index than the table
    const TestDatabase database;
    database.execute({versionTable, "create table source(a, b, padding)",
                      "insert into source values(3, 'c', zeroblob(500)), (1, 'a', zeroblob(500)),"
                      " (2, 'b', zeroblob(500))",
                      "create index covering on source(a, b)", "create table target(a, b)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {"padding"});
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.rows("select rowid, * from target order by rowid"),
             QStringList({"1, 3, 'c'", "2, 1, 'a'", "3, 2, 'b'"}));
}

void TestEngineOperations::copyTableCopiesAView()
{
    const TestDatabase database;
    database.execute({versionTable, "create table assay(id, name)",
                      "insert into assay values(1, 'PT'), (2, 'TT')",
                      "create view source as select id, name from assay where id > 1",
                      "create table target(id, name)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.copyTable("source", "target"); });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"2, 'TT'"});
}

void TestEngineOperations::copyTableQuotesColumnNames_data()
{
    addWays();
}

void TestEngineOperations::copyTableQuotesColumnNames()
{
    const TestDatabase database;
    database.execute({versionTable,
                      "create table source(\"order\", \"two words\", \"组\", \"a'b\")",
                      "insert into source values(1, 2, 3, 4)",
                      "create table target(\"a'b\", \"组\", \"two words\", \"order\")"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {}, adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"4, 3, 2, 1"});
}

void TestEngineOperations::copyTableTakesNoQuotedNameForAnother_data()
{
    QTest::addColumn<QString>("column"); // beside `name`

    for (const char *column : {R"("[name]")", R"("""name""")", "\"`name`\"", R"("n""ame")"})
        QTest::newRow(column) << column;
}

/// The driver leaves out quotation marks and brackets: the value would overwrite the one of `name`.
void TestEngineOperations::copyTableTakesNoQuotedNameForAnother()
{
    QFETCH(QString, column);
    const TestDatabase database;
    database.execute({versionTable, QString("create table source(name, %1)").arg(column),
                      "insert into source values('李伟', 'added')", "create table target(name)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.copyTable("source", "target"); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log.size(), 1);
    QVERIFY2(outcome.log.constFirst().contains("table target has no column named "),
             qUtf8Printable(outcome.log.constFirst()));
    QCOMPARE(database.table("target"), QStringList());
}

void TestEngineOperations::copyTableFailsAtAColumnThatIsOnlyAText()
{
    // The driver drops quotes from a column's name; "ab" alone would be copied as the text 'ab'.
    const TestDatabase database;
    database.execute({versionTable, R"(create table source("a""b"))",
                      "insert into source values('value')", "create table target(ab)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.copyTable("source", "target"); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log.size(), 1);
    QCOMPARE(database.table("target"), QStringList());
}

void TestEngineOperations::copyTableFailsAtTheFirstBadRow_data()
{
    addWays();
}

/// Shows: OPS-3
void TestEngineOperations::copyTableFailsAtTheFirstBadRow()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, name)",
                      "insert into source values(1, 'PT'), (2, null), (3, null)",
                      "create table target(id, name not null)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {}, adjustOfWay());
    });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log.size(), 1);
    QVERIFY2(outcome.log.first().startsWith("Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                                            "\"NOT NULL constraint failed: target.name"
                                            "\" : [ \"insert into ",
                                            Qt::CaseInsensitive),
             qUtf8Printable(outcome.log.first()));
}

/// Shows: OPS-3
void TestEngineOperations::copyTableAdjustsEachRow()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, name)",
                      "insert into source values(1, 'PT'), (2, 'O''Neill'), (3, null)",
                      "create table target(id, name, displayName)"});
    QSqlRecord defaults;
    defaults.append(QSqlField("displayName", QMetaType(QMetaType::QString)));

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        return step.copyTable("source", "target", defaults, {}, [](QSqlRecord &row) {
            row.setValue("displayName", row.value("name"));
        });
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"),
             QStringList({"1, 'PT', 'PT'", "2, 'O''Neill', 'O''Neill'", "3, NULL, NULL"}));
}

void TestEngineOperations::copyTableAdjustMayChangeTheColumns()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, name)",
                      "insert into source values(1, 'PT'), (2, 'TT'), (3, 'DD')",
                      "create table target(id, name default 'none')"});

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {}, [](QSqlRecord &row) {
            if (row.value("id").toInt() == 2)
                row.remove(row.indexOf("name"));
        });
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList({"1, 'PT'", "2, 'none'", "3, 'DD'"}));
}

void TestEngineOperations::copyTableAdjustSeesDefaultsButNoExcludedColumn()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, name)",
                      "insert into source values(1, 'PT')", "create table target(id, level)"});
    QStringList seen;

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        return step.copyTable("source", "target", record({{"level", 5}}), {"name"},
                              [&](QSqlRecord &row) {
                                  for (int i = 0; i < row.count(); ++i)
                                      seen << row.fieldName(i) + '=' + row.value(i).toString();
                              });
    });

    QVERIFY(outcome.result);
    QCOMPARE(seen, QStringList({"id=1", "level=5"}));
}

void TestEngineOperations::copyTableAdjustMayLeaveOutAColumn()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id, name, level)",
                      "insert into source values(1, 'PT', 5)",
                      "create table target(id, name default 'none', level)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", {}, {},
                              [](QSqlRecord &row) { row.setGenerated("name", false); });
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"1, 'none', 5"});
}

void TestEngineOperations::copyTableTakesTheLastOfTwoDefaults_data()
{
    addWays();
}

void TestEngineOperations::copyTableTakesTheLastOfTwoDefaults()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id)", "insert into source values(1)",
                      "create table target(id, level)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", record({{"level", 1}, {"LEVEL", 2}}), {},
                              adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"1, 2"});
}

void TestEngineOperations::copyTableBindsANullByteArrayAsNull_data()
{
    addWays();
}

void TestEngineOperations::copyTableBindsANullByteArrayAsNull()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(id)", "insert into source values(1)",
                      "create table target(id, curve)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.copyTable("source", "target", record({{"curve", QByteArray()}}), {},
                              adjustOfWay());
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("target"), QStringList{"1, NULL"});
}

void TestEngineOperations::copyTableFollowsTheTargetsConflictClause()
{
    const TestDatabase database;
    database.execute({versionTable, "create table source(fileNo, value)",
                      "insert into source values(7, 'first'), (8, 'other'), (7, 'later')",
                      "create table target(fileNo unique on conflict replace, value)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.copyTable("source", "target"); });

    QVERIFY(outcome.result);
    QCOMPARE(database.rows("select * from target order by fileNo"),
             QStringList({"7, 'later'", "8, 'other'"}));
}

/// Shows: OPS-4
void TestEngineOperations::rebuildTableReplacesTheLayout()
{
    const TestDatabase database;
    database.execute({versionTable, "create table doctor(id integer primary key, name)",
                      "insert into doctor values(4, '李'), (9, 'O''Neill')"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.execAll({SQL("create table doctor_new(id integer primary key,"
                                 " abbr text collate nocase, name text)")})
            && step.rebuildTable("doctor_new", "doctor");
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log, QStringList());
    QCOMPARE(database.schema(),
             QStringList({"CREATE TABLE \"doctor\"(id integer primary key,"
                          " abbr text collate nocase, name text)",
                          "CREATE TABLE version(version integer)"}));
    QCOMPARE(database.table("doctor"), QStringList({"4, NULL, '李'", "9, NULL, 'O''Neill'"}));
}

void TestEngineOperations::rebuildTableFailsWithoutTheOldTable()
{
    const TestDatabase database;
    database.execute({versionTable, "create table doctor_new(id)"});

    const Outcome outcome = runStep(
        database, [](StepUpdater &step) { return step.rebuildTable("doctor_new", "doctor"); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log,
             QStringList({"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: doctor\" : "
                          "[ \"select * from doctor\" ]",
                          "Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: doctor\" : "
                          "[ \"drop table doctor\" ]"}));
}

void TestEngineOperations::rebuildTableFailsWhenARowDoesNotFit()
{
    const TestDatabase database;
    database.execute({versionTable, "create table doctor(id, title)",
                      "insert into doctor values(1, 'Dr')", "create table doctor_new(id)"});

    const Outcome outcome = runStep(
        database, [](StepUpdater &step) { return step.rebuildTable("doctor_new", "doctor"); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log.size(), 1);
    QCOMPARE(database.table("doctor"), QStringList{"1, 'Dr'"});
}

void TestEngineOperations::rebuildTableFailsWhenTheNewNameIsMissing()
{
    const TestDatabase database;
    database.execute({versionTable, "create table doctor(id)"}); // empty: nothing to copy

    const Outcome outcome = runStep(
        database, [](StepUpdater &step) { return step.rebuildTable("doctor_new", "doctor"); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log,
             QStringList{"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                         "\"no such table: doctor_new\" : "
                         "[ \"alter table doctor_new rename to doctor\" ]"});
}

void TestEngineOperations::renameTableRenames()
{
    const TestDatabase database;
    database.execute({versionTable, "create table before(id)", "insert into before values(1)"});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.renameTable("before", "after"); });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("after"), QStringList{"1"});
}

void TestEngineOperations::renameTableFailsOnAMissingTable()
{
    const TestDatabase database;
    database.execute({versionTable});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.renameTable("before", "after"); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log,
             QStringList{"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                         "\"no such table: before\" : "
                         "[ \"alter table before rename to after\" ]"});
}

void TestEngineOperations::removeDecimalsCutsAtTheFirstPoint_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    QTest::newRow("fraction") << "'12.50'"
                              << "'12'";
    QTest::newRow("time") << "'08:15:30.123'"
                          << "'08:15:30'";
    QTest::newRow("no point") << "'12'"
                              << "'12'";
    QTest::newRow("nothing before the point") << "'.5'"
                                              << "''";
    QTest::newRow("nothing after the point") << "'12.'"
                                             << "'12'";
    QTest::newRow("two points") << "'1.2.3'"
                                << "'1'";
    QTest::newRow("empty") << "''"
                           << "''";
    QTest::newRow("null") << "null"
                          << "NULL";
    QTest::newRow("integer") << "12"
                             << "12";
    QTest::newRow("real") << "12.75"
                          << "'12'";
    QTest::newRow("Chinese") << "'上午八点.五'"
                             << "'上午八点'";
}

/// Shows: OPS-5
void TestEngineOperations::removeDecimalsCutsAtTheFirstPoint()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    const TestDatabase database;
    database.execute(
        {versionTable, "create table qc(time)", QString("insert into qc values(%1)").arg(before)});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.removeDecimals("qc", {"time"}); });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("qc"), QStringList{after});
}

void TestEngineOperations::removeDecimalsCutsSeveralColumnsInOneStatement()
{
    const TestDatabase database;
    database.execute({versionTable, "create table patient(time text, printTime text, name text)",
                      "insert into patient values('1.5', '2.5', 'A. B.')",
                      "create table updates(n)",
                      "create trigger count after update on patient"
                      " begin insert into updates values(1); end"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.removeDecimals("patient", {"time", "printTime"});
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("patient"), QStringList{"'1', '2', 'A. B.'"});
    QCOMPARE(database.table("updates"), QStringList{"1"});
}

/// Shows: OPS-5
void TestEngineOperations::removeDecimalsWritesNothingWithoutAPoint()
{
    const TestDatabase database;
    database.execute({versionTable, "create table qc(time, note text, printTime)",
                      "insert into qc values('08:15:30', 'a.b', null), ('', '.', 12),"
                      " (x'00ff', '1.5', 9e999), (null, null, '上午八点')",
                      "create trigger keep before update on qc"
                      " begin select raise(abort, 'a row was written'); end"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.removeDecimals("qc", {"time", "printTime"});
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log, QStringList());
    // SQLite's versions differ in how they show what is infinite
    QCOMPARE(
        database.rows("select time, note, iif(printTime = 9e999, 'infinite', printTime) from qc"),
        QStringList({"'08:15:30', 'a.b', NULL", "'', '.', 12", "X'00FF', '1.5', 'infinite'",
                     "NULL, NULL, '上午八点'"}));
}

void TestEngineOperations::removeDecimalsFailsOnAMissingColumn()
{
    const TestDatabase database;
    database.execute({versionTable, "create table patient(time text)"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.removeDecimals("patient", {"time", "printTime"});
    });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log,
             QStringList{"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                         "\"no such column: printTime\" : "
                         "[ \"update patient set "
                         "time = iif(instr(time, '.'), substr(time, 1, instr(time, '.')-1), time),"
                         "printTime = iif(instr(printTime, '.'),"
                         " substr(printTime, 1, instr(printTime, '.')-1), printTime)\" ]"});
}

void TestEngineOperations::removeDecimalsFailsWhateverTheRowsHold_data()
{
    QTest::addColumn<QString>("create");
    QTest::addColumn<QString>("error");

    QTest::newRow("no table") << "create table other(time)"
                              << "no such table: qc";
    QTest::newRow("view") << "create view qc as select '08:15:30' as time"
                          << "cannot modify qc because it is a view";
    QTest::newRow("computed column") << "create table qc(at, time as (at))"
                                     << R"(cannot UPDATE generated column \"time\")";
}

/// Such a table has never been upgraded; that its rows need no change makes no difference.
void TestEngineOperations::removeDecimalsFailsWhateverTheRowsHold()
{
    QFETCH(QString, create);
    QFETCH(QString, error);
    const TestDatabase database;
    database.execute({versionTable, create});

    const Outcome outcome =
        runStep(database, [](StepUpdater &step) { return step.removeDecimals("qc", {"time"}); });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log,
             QStringList{
                 "Warning: coagulation/vardo/updatebase.cpp ( line ):  \"" + error
                 + "\" : [ \"update qc set "
                   "time = iif(instr(time, '.'), substr(time, 1, instr(time, '.')-1), time)\" ]"});
}

void TestEngineOperations::updateOrInsertUpdates_data()
{
    QTest::addColumn<QString>("old");
    QTest::addColumn<QStringList>("updated");

    QTest::newRow("one row") << "('a', 'old')" << QStringList{"'a', 'new'"};
    QTest::newRow("two rows") << "('a', 'old'), ('a', 'older')"
                              << QStringList{"'a', 'new'", "'a', 'new'"};
    QTest::newRow("a row that holds the value") << "('a', 'new')" << QStringList{"'a', 'new'"};
}

/// Shows: OPS-6
void TestEngineOperations::updateOrInsertUpdates()
{
    QFETCH(QString, old);
    QFETCH(QStringList, updated);
    const TestDatabase database;
    database.execute(
        {versionTable, "create table profile(name, value)", "insert into profile values" + old});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.updateOrInsert("update profile set value='new' where name='a'",
                                   "insert into profile values('a', 'inserted')", SOURCE_LINE);
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("profile"), updated);
}

/// Shows: OPS-6
void TestEngineOperations::updateOrInsertInsertsWhenNothingMatches()
{
    const TestDatabase database;
    database.execute({versionTable, "create table profile(name, value)",
                      "insert into profile values('b', 'old')"});

    const Outcome outcome = runStep(database, [](StepUpdater &step) {
        return step.updateOrInsert("update profile set value='new' where name='a'",
                                   "insert into profile values('a', 'inserted')", SOURCE_LINE);
    });

    QVERIFY(outcome.result);
    QCOMPARE(database.table("profile"), QStringList({"'b', 'old'", "'a', 'inserted'"}));
}

void TestEngineOperations::updateOrInsertFailsWithTheCallersLine_data()
{
    QTest::addColumn<QString>("updateSql");
    QTest::addColumn<QString>("insertSql");
    QTest::addColumn<QString>("logged");

    const QString update = "update profile set value='new' where name='a'";
    const QString insert = "insert into profile values('a')";
    QTest::newRow("update") << "update missing set value=1" << insert
                            << "\"no such table: missing\" : "
                               "[ \"update missing set value=1\" ]";
    QTest::newRow("insert") << update << insert
                            << "\"table profile has 2 columns but 1 values were supplied\""
                               " : [ \"insert into profile values('a')\" ]";
}

void TestEngineOperations::updateOrInsertFailsWithTheCallersLine()
{
    QFETCH(QString, updateSql);
    QFETCH(QString, insertSql);
    QFETCH(QString, logged);
    const TestDatabase database;
    database.execute({versionTable, "create table profile(name, value)"});

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        return step.updateOrInsert(updateSql, insertSql, "unit.cpp", 77);
    });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log, QStringList{"Warning: unit.cpp ( line ):  " + logged});
}

void TestEngineOperations::setVersionLeavesOneRow()
{
    const TestDatabase database;
    database.execute({versionTable, "insert into version values(1), (2)"});
    bool result = false;
    StepUpdater updater(database.path(), [](StepUpdater &) { return true; });

    result = updater.setVersion(17); // outside a run it stands by itself

    QVERIFY(result);
    QCOMPARE(database.table("version"), QStringList{"17"});
}

void TestEngineOperations::setVersionWarnsTwiceWithoutItsTable()
{
    const TestDatabase database;
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &) { return true; });

    const bool result = updater.setVersion(17);

    QVERIFY(!result);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: version\" : "
                          "[ \"delete from version\" ]",
                          "Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"no such table: version\" : "
                          "[ \"insert into version values(17)\" ]"}));
}

void TestEngineOperations::setVersionInsertsEvenWhenTheDeleteFails()
{
    const TestDatabase database;
    database.execute({versionTable, "insert into version values(1)",
                      "create trigger keep before delete on version"
                      " begin select raise(abort, 'kept'); end"});
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &) { return true; });

    const bool result = updater.setVersion(17);

    QVERIFY(result);
    QCOMPARE(recorder.messages().size(), 2);
    QCOMPARE(database.table("version"), QStringList({"1", "17"}));
}

void TestEngineOperations::setVersionAsksTheInsertAlone_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QStringList>("triggers");

    QTest::newRow("a column of another name") << "create table version(v integer)" << QStringList{};
    QTest::newRow("a trigger that keeps the version out")
        << versionTable
        << QStringList{
               "create trigger own before insert on version begin select raise(ignore); end"};
    QTest::newRow("an old row that stays and counts more")
        << versionTable
        << QStringList{
               "insert into version values('old')",
               "create trigger keep before delete on version begin select raise(ignore); end"};
}

/// Such a database may have been upgraded so for years: nobody but the report looks at what became of the version.
/// Shows: ENG-3
void TestEngineOperations::setVersionAsksTheInsertAlone()
{
    QFETCH(QString, table);
    QFETCH(QStringList, triggers);
    const TestDatabase database;
    database.execute(QStringList{table} + triggers);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &) { return true; });

    const bool result = updater.setVersion(17);

    QVERIFY(result);
    QCOMPARE(recorder.messages().mid(1), QStringList());
}

/// Shows: OPS-7
void TestEngineOperations::readRowsVisitsEveryRow()
{
    const TestDatabase database;
    database.execute(
        {versionTable, "create table reagent(id)", "insert into reagent values(1), (2), (3)"});
    QList<int> ids;

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        QSqlQuery query("select id from reagent");
        return step.readRows(query, SOURCE_LINE, [&] {
            ids << query.value(0).toInt();
            return true;
        });
    });

    QVERIFY(outcome.result);
    QCOMPARE(ids, QList<int>({1, 2, 3}));
}

void TestEngineOperations::readRowsStopsWhenTheCallerDoes()
{
    const TestDatabase database;
    database.execute(
        {versionTable, "create table reagent(id)", "insert into reagent values(1), (2), (3)"});
    QList<int> ids;

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        QSqlQuery query("select id from reagent");
        return step.readRows(query, SOURCE_LINE, [&] {
            ids << query.value(0).toInt();
            return ids.size() < 2;
        });
    });

    QVERIFY(!outcome.result);
    QCOMPARE(outcome.log, QStringList());
    QCOMPARE(ids, QList<int>({1, 2}));
}

/// Shows: OPS-7
void TestEngineOperations::readRowsReportsAnUnreadableRow()
{
    const TestDatabase database;
    database.execute({versionTable, "create table reagent(id)",
                      "insert into reagent values('{}'), ('no json'), ('{}')"});
    int rows = 0;

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        QSqlQuery query;
        query.setForwardOnly(true);
        return query.exec("select json(id) from reagent") && step.readRows(query, SOURCE_LINE, [&] {
            ++rows;
            return true;
        });
    });

    QVERIFY(!outcome.result);
    QCOMPARE(rows, 1);
    QCOMPARE(outcome.log,
             QStringList{"Warning: tests/engine/tst_engine_operations.cpp ( line ):  "
                         "\"malformed JSON\" : "
                         "[ \"select json(id) from reagent\" ]"});
}

void TestEngineOperations::readRowsUnlocksTheTable()
{
    const TestDatabase database;
    database.execute(
        {versionTable, "create table reagent(id)", "insert into reagent values(1), (2), (3)"});

    const Outcome outcome = runStep(database, [&](StepUpdater &step) {
        QSqlQuery query;
        query.setForwardOnly(true);
        return query.exec("select id from reagent")
            && !step.readRows(query, SOURCE_LINE, [] { return false; })
            && step.exec(SOURCE_LINE, "drop table reagent");
    });

    QVERIFY(outcome.result);
    QCOMPARE(outcome.log, QStringList());
}

QTEST_GUILESS_MAIN(TestEngineOperations)
#include "tst_engine_operations.moc"
