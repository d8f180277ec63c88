// SPDX-License-Identifier: MIT
/// What a failed statement means: a failure of content is the step's to judge, a failure of the
/// environment ends the run, and afterwards the file is what it was.

#include "driversqlite.h"
#include "messagerecorder.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

#include <sqlite3.h>

namespace {

sqlite3 *handle()
{
    return *static_cast<sqlite3 **>(QSqlDatabase::database().driver()->handle().data());
}

void raise(sqlite3_context *context, int, sqlite3_value **arguments)
{
    sqlite3_result_error_code(context, sqlite3_value_int(*arguments));
}

/// Gives the updater's connection the SQL function fail(code), which fails with that result code.
void addFail()
{
    sqlite3_create_function(handle(), "fail", 1, SQLITE_UTF8, nullptr, raise, nullptr, nullptr);
}

/// Makes SQLite's own function instr() fail with a result code on the updater's connection.
template <int code> void makeInstrFail()
{
    const auto fail = [](sqlite3_context *context, int, sqlite3_value **) {
        sqlite3_result_error_code(context, code);
    };
    sqlite3_create_function(handle(), "instr", 2, SQLITE_UTF8, nullptr, fail, nullptr, nullptr);
}

int denyRollback(void *, int action, const char *what, const char *, const char *, const char *)
{
    return action == SQLITE_TRANSACTION && qstrcmp(what, "ROLLBACK") == 0 ? SQLITE_DENY : SQLITE_OK;
}

/// \return the statements that were traced, as they are written, also those that Qt's driver runs by itself
QStringList &statements()
{
    static QStringList statements;
    return statements;
}

int trace(unsigned, void *, void *statement, void *)
{
    statements() << sqlite3_sql(static_cast<sqlite3_stmt *>(statement));
    return 0;
}

/// \return those that read or change what is in the database, not the transaction or the connection
QStringList thoseOnContent(const QStringList &statements)
{
    static const QRegularExpression onContent("^(?!begin|rollback|pragma)",
                                              QRegularExpression::CaseInsensitiveOption);
    return statements.filter(onContent);
}

const QStringList patients{
    "create table version(version integer)",
    "insert into version values(0)",
    "create table patient(id integer primary key, name text)",
    "insert into patient values(1, '王芳'), (2, 'O''Neill')",
};

const QString warning = "Warning: tests/engine/tst_engine_failures.cpp ( line ):  ";

/// Enough rows for several pages of 512 bytes.
const QStringList manyPatients{
    "pragma page_size=512",
    "vacuum",
    "create table version(version integer)",
    "insert into version values(0)",
    "create table patient(id integer primary key, name text)",
    "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2000)"
    " insert into patient select i, 'patient number ' || i from n",
    "create table patient_new(id integer primary key, name text)",
};

} // namespace

Q_DECLARE_METATYPE(std::function<bool(StepUpdater &)>)

class TestEngineFailures : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void environmentFailureEndsTheRun_data();
    void environmentFailureEndsTheRun();
    void contentFailureIsTheStepsToJudge_data();
    void contentFailureIsTheStepsToJudge();
    void everyOperationMeetsTheEnvironment_data();
    void everyOperationMeetsTheEnvironment();
    void logsNoValueOfAFailedRow_data();
    void logsNoValueOfAFailedRow();
    void aFailedQuestionIsNotLogged();
    void aQuestionThatEndsTheTransactionIsLogged();
    void everyOperationIsSilentAfterwards();
    void noStatementRunsAfterwards_data();
    void noStatementRunsAfterwards();
    void nothingReachesTheFileAfterwards();
    void laterStepsDoNotRun();
    void aTransactionThatSqliteGaveUpEndsTheRun();
    void aSilentQueryIsLoggedWhenTheEnvironmentFails();
    void aSilentQueryStaysSilentWhenTheContentFails();
    void aSilentQueryIsLoggedWhenTheTransactionIsGone();
    void outsideARunNothingIsAbandoned();
    void failingVersionWriteEndsTheRun();
    void failingSecondVersionReadEndsTheRun();
    void aCommitThatLosesTheTransactionIsNotRolledBack();
    void preparesTheConnectionBeforeItReads();
    void failingRollbackIsReported();
    void failingRollbackOfAnAbandonedRunIsReported();
    void aFullDatabaseEndsTheRun();
    void anUnfinishedQueryEndsTheRun();
    void aDamagedPageEndsTheCopy_data();
    void aDamagedPageEndsTheCopy();
    void aDamagedPageEndsTheReading();
};

void TestEngineFailures::initTestCase()
{
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
}

void TestEngineFailures::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestEngineFailures::environmentFailureEndsTheRun_data()
{
    QTest::addColumn<int>("code");

    QTest::newRow("internal") << SQLITE_INTERNAL;
    QTest::newRow("permission") << SQLITE_PERM;
    QTest::newRow("aborted") << SQLITE_ABORT;
    QTest::newRow("busy") << SQLITE_BUSY;
    QTest::newRow("locked") << SQLITE_LOCKED;
    QTest::newRow("no memory") << SQLITE_NOMEM;
    QTest::newRow("read-only") << SQLITE_READONLY;
    QTest::newRow("interrupted") << SQLITE_INTERRUPT;
    QTest::newRow("I/O error") << SQLITE_IOERR;
    QTest::newRow("corrupt") << SQLITE_CORRUPT;
    QTest::newRow("full") << SQLITE_FULL;
    QTest::newRow("cannot open") << SQLITE_CANTOPEN;
    QTest::newRow("protocol") << SQLITE_PROTOCOL;
    QTest::newRow("no large files") << SQLITE_NOLFS;
    QTest::newRow("not a database") << SQLITE_NOTADB;
    QTest::newRow("I/O error, extended") << SQLITE_IOERR_WRITE;
    QTest::newRow("read-only, extended") << SQLITE_READONLY_DIRECTORY;
}

/// Shows: ENG-9
void TestEngineFailures::environmentFailureEndsTheRun()
{
    QFETCH(int, code);
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        step.tryAll({
            SQL("update patient set name = 'changed' where id = 1"),
            SQL(QString("update patient set name = fail(%1)").arg(code)),
            SQL("update patient set name = 'late'"),
        });
        return true;
    });
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().size(), 3);
    QVERIFY2(recorder.messages().at(1).startsWith(warning),
             qUtf8Printable(recorder.messages().at(1)));
    QVERIFY2(recorder.messages().at(1).endsWith(
                 QString("[ \"update patient set name = fail(%1)\" ]").arg(code)),
             qUtf8Printable(recorder.messages().at(1)));
    QCOMPARE(recorder.messages().at(2), QString("Debug: update_v1() : FAIL"));
}

void TestEngineFailures::contentFailureIsTheStepsToJudge_data()
{
    QTest::addColumn<QString>("sql");

    QTest::newRow("generic") << "update patient set name = fail(1)";
    QTest::newRow("not found") << "update patient set name = fail(12)";
    QTest::newRow("schema") << "update patient set name = fail(17)";
    QTest::newRow("too big") << "update patient set name = fail(18)";
    QTest::newRow("constraint") << "update patient set name = fail(19)";
    QTest::newRow("mismatch") << "update patient set name = fail(20)";
    QTest::newRow("authorisation") << "update patient set name = fail(23)";
    QTest::newRow("range") << "update patient set name = fail(25)";
    QTest::newRow("unknown code") << "update patient set name = fail(99)";
    QTest::newRow("syntax") << "update patient name = 1";
    QTest::newRow("missing table") << "update missing set name = 1";
    QTest::newRow("exists") << "create table patient(id)";
    QTest::newRow("primary key") << "insert into patient values(1, 'x')";
    QTest::newRow("data type") << "insert into patient values('x', 'x')";
}

/// Shows: ENG-10
void TestEngineFailures::contentFailureIsTheStepsToJudge()
{
    QFETCH(QString, sql);
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        step.tryAll({
            SQL("update patient set name = 'changed' where id = 1"),
            SQL(sql),
            SQL("update patient set name = 'late' where id = 2"),
        });
        return true;
    });
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1);
    QCOMPARE(database.table("patient"), QStringList({"1, 'changed'", "2, 'late'"}));
    QCOMPARE(database.table("version"), QStringList{"1"});
}

using Step = std::function<bool(StepUpdater &)>;

void TestEngineFailures::everyOperationMeetsTheEnvironment_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("statement"); // how the failing one begins

    const auto keep = [](QSqlRecord &) {};
    QTest::newRow("exec") << Step([](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "update patient set name = fail(:code)", {{":code", 13}});
    }) << "update patient set name = fail(:code)";
    QTest::newRow("execAll") << Step([](StepUpdater &step) {
        return step.execAll({SQL("select fail(13)")});
    }) << "select fail(13)";
    QTest::newRow("copyTable's reading")
        << Step([](StepUpdater &step) { return step.copyTable("broken", "target"); })
        << "select * from broken";
    QTest::newRow("copyTable's reading, adjusted") << Step([keep](StepUpdater &step) {
        return step.copyTable("broken", "target", {}, {}, keep);
    }) << "select * from broken";
    QTest::newRow("copyTable's reading of a later row, adjusted") << Step(
        [keep](StepUpdater &step) { return step.copyTable("breaking", "target", {}, {}, keep); })
                                                                  << "select * from breaking";
    QTest::newRow("copyTable's insert")
        << Step([](StepUpdater &step) { return step.copyTable("patient", "broken_target"); })
        << "insert into broken_target (";
    QTest::newRow("copyTable's insert, adjusted") << Step([keep](StepUpdater &step) {
        return step.copyTable("patient", "broken_target", {}, {}, keep);
    }) << "insert into broken_target (";
    QTest::newRow("rebuildTable's copy")
        << Step([](StepUpdater &step) { return step.rebuildTable("broken_target", "patient"); })
        << "insert into broken_target (";
    QTest::newRow("removeDecimals")
        << Step([](StepUpdater &step) { return step.removeDecimals("broken_target", {"name"}); })
        << "update broken_target set name = iif(";
    QTest::newRow("updateOrInsert's update") << Step([](StepUpdater &step) {
        return step.updateOrInsert("update patient set name = fail(13)", "select 1", SOURCE_LINE);
    }) << "update patient set name = fail(13)";
    QTest::newRow("updateOrInsert's insert") << Step([](StepUpdater &step) {
        return step.updateOrInsert("update patient set name = 1 where id = 99",
                                   "insert into patient values(9, fail(13))", SOURCE_LINE);
    }) << "insert into patient values(9, fail(13))";
    QTest::newRow("setVersion's insert") << Step([](StepUpdater &step) {
        return step.exec(SOURCE_LINE,
                         "create temp trigger broken before insert on main.version"
                         " begin select fail(13); end")
            && step.setVersion(7);
    }) << "insert into version values(7)";
    QTest::newRow("readRows") << Step([](StepUpdater &step) {
        QSqlQuery query;
        query.setForwardOnly(true);
        return query.exec("select name from breaking")
            && step.readRows(query, SOURCE_LINE, [] { return true; });
    }) << "select name from breaking";
}

/// Shows: ENG-9
void TestEngineFailures::everyOperationMeetsTheEnvironment()
{
    QFETCH(Step, step);
    QFETCH(QString, statement);
    const TestDatabase database;
    database.execute(patients
                     + QStringList{"create table target(id, name)",
                                   "create table broken_target(id, name)",
                                   "insert into broken_target values(1, '1.5')"});
    const QStringList before = database.content();
    const MessageRecorder recorder;
    bool result = true;
    StepUpdater updater(database.path(), [&](StepUpdater &operations) {
        operations.tryAll({SQL("update patient set name = 'changed' where id = 1")});
        result = step(operations);
        return true;
    });
    addFail();
    QVERIFY(QSqlQuery().exec("create temp view broken as select fail(13) as name"));
    QVERIFY(QSqlQuery().exec("create temp view breaking as"
                             " select id, iif(id = 2, fail(13), 'x') as name from main.patient"));
    for (const char *event : {"insert", "update"})
        QVERIFY(QSqlQuery().exec(QString("create temp trigger broken_%1 before %1"
                                         " on main.broken_target begin select fail(13); end")
                                     .arg(event)));

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QVERIFY(!result);
    QCOMPARE(database.content(), before);
    const QStringList log = recorder.messages();
    QCOMPARE(log.size(), 3);
    // letter case and quotation marks of the statements that the driver makes are its own
    const QString failure = log.at(1).toLower().remove(R"(\")");
    QVERIFY2(failure.contains("\"database or disk is full\" : [ \"" + statement),
             qUtf8Printable(log.at(1)));
    QCOMPARE(log.at(2), QString("Debug: update_v1() : FAIL"));
}

void TestEngineFailures::logsNoValueOfAFailedRow_data()
{
    QTest::addColumn<Step>("step");

    QTest::newRow("a bound value") << Step([](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "insert into narrow values(:id, :name)",
                         {{":id", 1}, {":name", "Mustermann.5"}});
    });
    QTest::newRow("a copied row") << Step(
        [](StepUpdater &step) { return step.copyTable("people", "narrow"); });
    QTest::newRow("an adjusted row") << Step([](StepUpdater &step) {
        return step.copyTable("people", "narrow", {}, {}, [](QSqlRecord &) {});
    });
    QTest::newRow("a row of a table that gets a new layout")
        << Step([](StepUpdater &step) { return step.rebuildTable("narrow", "people"); });
    QTest::newRow("a changed value")
        << Step([](StepUpdater &step) { return step.removeDecimals("people", {"name"}); });
}

/// Shows: LOG-8
void TestEngineFailures::logsNoValueOfAFailedRow()
{
    QFETCH(Step, step);
    const TestDatabase database;
    database.execute({"create table people(id, name check(name like '%.5'))",
                      "create table narrow(id, name check(length(name) < 5))",
                      "insert into people values(1, 'Mustermann.5')"});
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), step);

    QVERIFY(!updater.run());

    const QString log = recorder.messages().join('\n');
    QVERIFY2(log.contains("constraint failed"), qUtf8Printable(log));
    QVERIFY2(!log.contains("Mustermann"), qUtf8Printable(log));
}

void TestEngineFailures::noStatementRunsAfterwards_data()
{
    QTest::addColumn<Step>("step");

    const auto fail = [](StepUpdater &step) { return step.exec(SOURCE_LINE, "select fail(10)"); };
    QTest::newRow("operation after operation") << Step([fail](StepUpdater &step) {
        (void)fail(step);
        step.tryAll({SQL("select 'late'")});
        (void)step.copyTable("patient", "late");
        (void)step.removeDecimals("patient", {"name"});
        (void)step.updateOrInsert("select 'late'", "select 'late'", SOURCE_LINE);
        return step.setVersion(3);
    });
    QTest::newRow("within adjust") << Step([fail](StepUpdater &step) {
        return step.copyTable("patient", "target", {}, {}, [&](QSqlRecord &) { (void)fail(step); });
    });
    QTest::newRow("within readRows") << Step([fail](StepUpdater &step) {
        QSqlQuery query("select id from patient");
        return step.readRows(query, SOURCE_LINE, [&] {
            (void)fail(step);
            step.tryAll({SQL("select 'late'")});
            return true;
        });
    });
}

/// Shows: ENG-9
void TestEngineFailures::noStatementRunsAfterwards()
{
    QFETCH(Step, step);
    const TestDatabase database;
    database.execute(patients + QStringList{"create table target(id, name)"});
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), step);
    addFail();
    statements().clear();
    sqlite3_trace_v2(handle(), SQLITE_TRACE_STMT, trace, nullptr);

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    const QStringList ran = statements();
    QVERIFY(ran.contains("select fail(10)"));
    QCOMPARE(thoseOnContent(ran.mid(ran.indexOf("select fail(10)") + 1)), QStringList());
}

/// The log shows the statement that the step stands for, and not the question before it.
void TestEngineFailures::aFailedQuestionIsNotLogged()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        makeInstrFail<SQLITE_ERROR>();
        return step.removeDecimals("patient", {"name"});
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1);
    QVERIFY(
        recorder.messages().filter("Warning: ").constFirst().contains("[ \"update patient set"));
}

void TestEngineFailures::aQuestionThatEndsTheTransactionIsLogged()
{
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        makeInstrFail<SQLITE_IOERR>();
        return step.removeDecimals("patient", {"name"});
    });

    const bool upgraded = updater.run();

    QVERIFY2(!upgraded, qUtf8Printable(recorder.messages().join(";")));
    QCOMPARE(recorder.messages().mid(1),
             QStringList({"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"disk I/O error\" : "
                          "[ \"select 1 from patient where instr(name, '.') limit 1\" ]",
                          "Debug: update_v1() : FAIL"}));
    QCOMPARE(database.content(), before);
}

void TestEngineFailures::everyOperationIsSilentAfterwards()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    QList<bool> results;
    int rowsRead = 0;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        (void)step.exec(SOURCE_LINE, QString("select fail(%1)").arg(SQLITE_IOERR));
        QSqlQuery rows("select id from patient"); // of the step's own, which still reads
        results << step.exec(SOURCE_LINE, "drop table patient")
                << step.execAll({SQL("drop table patient")}) << step.copyTable("patient", "missing")
                << step.copyTable("missing", "patient")
                << step.copyTable("patient", "missing", {}, {}, [](QSqlRecord &) {})
                << step.rebuildTable("missing", "patient") << step.renameTable("patient", "person")
                << step.removeDecimals("patient", {"name"}) << (step.countRows("patient") != 0)
                << step.keepUnmoved("patient", 2)
                << step.updateOrInsert("update missing set a=1", "drop table patient", SOURCE_LINE)
                << step.setVersion(3)
                << step.readRows(rows, SOURCE_LINE, [&] { return ++rowsRead > 0; });
        step.tryAll({SQL("drop table missing")});
        step.reportLeftValues("patient", {});
        QSqlQuery own;
        own.exec("drop table missing");
        step.logSqlError(own, SOURCE_LINE);
        step.logUnlessContentError(own, SOURCE_LINE);
        return true;
    });
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(results, QList<bool>(13, false));
    QCOMPARE(rowsRead, 0);
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(),
                          warning
                              + "\"disk I/O error\" : "
                                "[ \"select fail(10)\" ]",
                          "Debug: update_v1() : FAIL"}));
}

void TestEngineFailures::nothingReachesTheFileAfterwards()
{
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    bool changed = true;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        (void)step.exec(SOURCE_LINE, QString("select fail(%1)").arg(SQLITE_IOERR));
        changed = QSqlQuery().exec("delete from patient"); // a query of the step's own
        return true;
    });
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QVERIFY(!changed);
    QCOMPARE(database.content(), before);
}

class TwoStepUpdater : public coagulation::UpdateBase {
    Q_OBJECT

public:
    using UpdateBase::UpdateBase;

    bool secondRan = false;

public slots:
    bool update_v1()
    {
        tryAll({SQL("update patient set name = fail(13)")});
        return true;
    }
    bool update_v2()
    {
        secondRan = true;
        return true;
    }
};

void TestEngineFailures::laterStepsDoNotRun()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    TwoStepUpdater updater(database.path());
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QVERIFY(!updater.secondRan);
}

/// Shows: ENG-9
void TestEngineFailures::aTransactionThatSqliteGaveUpEndsTheRun()
{
    const TestDatabase database;
    database.execute(patients
                     + QStringList{"create trigger keep before delete on patient"
                                   " begin select raise(rollback, 'patients are kept'); end"});
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        step.tryAll({
            SQL("update patient set name = 'changed'"),
            SQL("delete from patient"),
            SQL("update patient set name = 'late'"),
        });
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages(),
             QStringList({"Debug: Updating " + database.path(),
                          warning
                              + "\"patients are kept\" : "
                                "[ \"delete from patient\" ]",
                          "Debug: update_v1() : FAIL"}));
}

void TestEngineFailures::aSilentQueryIsLoggedWhenTheEnvironmentFails()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        QSqlQuery query(QString("select fail(%1)").arg(SQLITE_BUSY));
        step.logUnlessContentError(query, SOURCE_LINE);
        return true;
    });
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({warning
                              + "\"database is locked\" : "
                                "[ \"select fail(5)\" ]",
                          "Debug: update_v1() : FAIL"}));
}

void TestEngineFailures::aSilentQueryStaysSilentWhenTheContentFails()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        QSqlQuery query("select * from missing");
        step.logUnlessContentError(query, SOURCE_LINE);
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages().filter("Warning: "), QStringList());
}

void TestEngineFailures::aSilentQueryIsLoggedWhenTheTransactionIsGone()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        QSqlQuery query("insert or rollback into patient values(1, 'again')");
        step.logUnlessContentError(query, SOURCE_LINE);
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1);
}

void TestEngineFailures::outsideARunNothingIsAbandoned()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &) { return true; });
    addFail();

    const bool failed = updater.exec(SOURCE_LINE, "select fail(10)");
    const bool after = updater.exec(SOURCE_LINE, "update patient set name = 'changed'");

    QVERIFY(!failed);
    QVERIFY(after);
    QCOMPARE(recorder.messages().filter("Warning: ").size(), 1);
}

void TestEngineFailures::failingVersionWriteEndsTheRun()
{
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        return step.exec(SOURCE_LINE,
                         "create temp trigger broken before delete on main.version"
                         " begin select fail(10); end");
    });
    addFail();

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({"Debug: update_v1() : PASS",
                          "Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                          "\"disk I/O error\" : [ \"delete from version\" ]",
                          "Debug: Failed to update version to 1"}));
}

void TestEngineFailures::failingSecondVersionReadEndsTheRun()
{
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    bool ran = false;
    StepUpdater updater(database.path(), [&](StepUpdater &) { return ran = true; });
    addFail();
    QVERIFY(QSqlQuery().exec("create temp view version as select fail(10) as version"));

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QVERIFY(!ran);
    QCOMPARE(recorder.messages().mid(1),
             QStringList{"Warning: coagulation/vardo/updatebase.cpp ( line ):  "
                         "\"disk I/O error\" : "
                         "[ \"select version from version order by version desc\" ]"});
    QCOMPARE(database.content(), before);
    QVERIFY(QSqlQuery().exec("begin")); // no transaction is left
}

void TestEngineFailures::aCommitThatLosesTheTransactionIsNotRolledBack()
{
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "delete from patient");
    });
    sqlite3_commit_hook(
        handle(), [](void *) { return 1; }, nullptr); // makes it a rollback

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().mid(2),
             QStringList({"Debug: Updated version to 1",
                          "Warning: Failed to commit:"
                          " \"constraint failed\""}));
}

void TestEngineFailures::preparesTheConnectionBeforeItReads()
{
    const TestDatabase database;
    database.execute(patients);
    statements().clear();
    // As a build of SQLite whose default is to check foreign keys.
    const auto open = [](sqlite3 *opened, char **, const sqlite3_api_routines *) {
        sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
        return sqlite3_trace_v2(opened, SQLITE_TRACE_STMT, trace, nullptr);
    };
    const auto extension = reinterpret_cast<void (*)()>(+open); // NOLINT: SQLite's own idiom
    sqlite3_auto_extension(extension);

    const StepUpdater updater(database.path(), [](StepUpdater &) { return true; });

    sqlite3_cancel_auto_extension(extension);
    const QStringList ran = statements();
    const QStringList reading = thoseOnContent(ran);
    QVERIFY(!reading.isEmpty());
    const QStringList before = ran.mid(0, ran.indexOf(reading.constFirst()));
    for (const char *setting : {"pragma legacy_alter_table=on", "pragma foreign_keys=off"})
        QVERIFY2(before.contains(setting), qUtf8Printable(ran.join('\n')));
    QSqlQuery foreignKeys("pragma foreign_keys");
    QVERIFY(foreignKeys.next());
    QCOMPARE(foreignKeys.value(0).toInt(), 0);
}

void TestEngineFailures::failingRollbackIsReported()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &) { return false; });
    sqlite3_set_authorizer(handle(), denyRollback, nullptr);

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({"Debug: update_v1() : FAIL",
                          "Warning: Failed to call roolback:"
                          " \"not authorized\""}));
}

void TestEngineFailures::failingRollbackOfAnAbandonedRunIsReported()
{
    const TestDatabase database;
    database.execute(patients);
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        step.tryAll({SQL("update patient set name = 'changed'"), SQL("select fail(5)")});
        return true;
    });
    addFail();
    sqlite3_set_authorizer(handle(), denyRollback, nullptr);

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(recorder.messages().mid(2),
             QStringList({"Warning: Failed to call roolback:"
                          " \"not authorized\"",
                          "Debug: update_v1() : FAIL"}));
}

void TestEngineFailures::aFullDatabaseEndsTheRun()
{
    const TestDatabase database;
    database.execute(manyPatients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        QSqlQuery().exec("pragma max_page_count=1"); // SQLite takes the present size
        step.tryAll({SQL("insert into patient_new select * from patient")});
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({warning
                              + "\"database or disk is full\" : "
                                "[ \"insert into patient_new select * from patient\" ]",
                          "Debug: update_v1() : FAIL"}));
}

void TestEngineFailures::anUnfinishedQueryEndsTheRun()
{
    const TestDatabase database;
    database.execute(patients);
    const QStringList before = database.content();
    const MessageRecorder recorder;
    StepUpdater updater(database.path(), [](StepUpdater &step) {
        QSqlQuery reading;
        reading.setForwardOnly(true);
        reading.exec("select * from patient");
        step.tryAll({SQL("drop table patient")});
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().mid(1),
             QStringList({warning
                              + "\"database table is locked\" : "
                                "[ \"drop table patient\" ]",
                          "Debug: update_v1() : FAIL"}));
}

namespace {

/// Overwrites a page in the middle of the table patient.
QByteArray damage(const TestDatabase &database)
{
    QFile file(database.path());
    if (!file.open(QIODevice::ReadWrite) || !file.seek(60LL * 512)
        || file.write(QByteArray(512, '\xff')) != 512)
        qFatal("%s cannot be damaged", qUtf8Printable(database.path()));
    file.close();
    return database.bytes();
}

/// Runs its step without the check that would find the damage: as if it came after the check.
class UncheckedUpdater : public StepUpdater {
public:
    using StepUpdater::StepUpdater;
    bool upgrade() override { return update_v1(); }
};

} // namespace

void TestEngineFailures::aDamagedPageEndsTheCopy_data()
{
    QTest::addColumn<bool>("adjusted");

    QTest::newRow("inside SQLite") << false;
    QTest::newRow("row by row") << true;
}

void TestEngineFailures::aDamagedPageEndsTheCopy()
{
    QFETCH(bool, adjusted);
    const TestDatabase database;
    database.execute(manyPatients);
    const QByteArray before = damage(database);
    const MessageRecorder recorder;
    UncheckedUpdater updater(database.path(), [&](StepUpdater &step) {
        const auto keep = [](QSqlRecord &) {};
        (void)step.copyTable("patient", "patient_new", {}, {},
                             adjusted ? keep : std::function<void(QSqlRecord &)>());
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QCOMPARE(database.bytes(), before);
    QCOMPARE(recorder.messages().size(), 2);
    QVERIFY2(recorder.messages().at(1).contains("database disk image is malformed"),
             qUtf8Printable(recorder.messages().at(1)));
}

void TestEngineFailures::aDamagedPageEndsTheReading()
{
    const TestDatabase database;
    database.execute(manyPatients);
    const QByteArray before = damage(database);
    const MessageRecorder recorder;
    int rows = 0;
    UncheckedUpdater updater(database.path(), [&](StepUpdater &step) {
        QSqlQuery query;
        query.setForwardOnly(true);
        (void)(query.exec("select * from patient") && step.readRows(query, SOURCE_LINE, [&] {
            ++rows;
            return true;
        }));
        return true;
    });

    const bool upgraded = updater.run();

    QVERIFY(!upgraded);
    QVERIFY(rows > 0 && rows < 2000);
    QCOMPARE(database.bytes(), before);
    QCOMPARE(recorder.messages().mid(1),
             QStringList{warning
                         + "\"database disk image is malformed\" : "
                           "[ \"select * from patient\" ]"});
}

QTEST_GUILESS_MAIN(TestEngineFailures)
#include "tst_engine_failures.moc"
