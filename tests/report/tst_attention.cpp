// SPDX-License-Identifier: MIT
/// What needs attention: for each kind databases that have it and databases that have not; and the verdict.

#include "compared.h"
#include "testdatabase.h"

#include "coagulation/report/attention.h"

#include <QTest>

using namespace coagulation::report;
using Kind = Attention::Kind;

Q_DECLARE_METATYPE(Attention::Kind)

class TestAttention : public QObject {
    Q_OBJECT

private slots:
    void tellsWhatDatabasesHave_data();
    void tellsWhatDatabasesHave();
    void isSilentOtherwise_data();
    void isSilentOtherwise();
    void tellsFailures_data();
    void tellsFailures();
    void quotesTheWarningOfTheFailedStep();
    void tellsWarnings();
    void shortensManySentences();
    void tellsOfRowsThatTheStepsDidNotExpect_data();
    void tellsOfRowsThatTheStepsDidNotExpect();
    void tellsOfEachRowThatTheStepsDidNotExpect();
    void showsTheFirstOverwrittenValues();
    void linksToPlaces();
    void ordersByImportance();
    void givesAVerdict_data();
    void givesAVerdict();
};

namespace {

/// \return a database at its newest version
QStringList atNewestVersion(const QString &name, const QStringList &statements)
{
    return QStringList{"create table version(version integer)",
                       QString("insert into version values(%1)").arg(newestVersion(name))}
    + statements;
}

Report reportOn(const QString &name, const QStringList &before, const QStringList &after)
{
    const TestDatabase databaseBefore;
    databaseBefore.execute(atNewestVersion(name, before));
    const TestDatabase databaseAfter;
    databaseAfter.execute(atNewestVersion(name, after));
    return ::reportOn(databaseBefore, databaseAfter, name);
}

/// \return a report in which nothing is wrong
Report soundReport()
{
    Report report;
    report.exitCode = 0;
    report.milliseconds = 2600;
    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        DatabaseFacts facts{name};
        facts.newestVersion = newestVersion(name);
        facts.filesBefore = {{QString("/lab/%1.db").arg(name), 4096, "0"}};
        facts.filesAfter = facts.filesBefore;
        facts.versionBefore = 1;
        facts.versionAfter = facts.newestVersion;
        facts.integrityBefore = "ok";
        facts.integrityAfter = "ok";
        report.databases << facts;
    }
    return report;
}

QStringList textsOf(const Report &report)
{
    QStringList texts;
    for (const Attention &attention : attentionOf(report))
        texts << attention.text;
    return texts;
}

} // namespace

void TestAttention::tellsWhatDatabasesHave_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<Attention::Kind>("kind");
    QTest::addColumn<QString>("text");

    const QString numbered = "create table t(id integer primary key, x, name)";
    const QString rows = "insert into t values(1, 'a', 'one'), (2, 'b', 'two'), (3, 'c', 'three')";
    const QString curve = "create table curve(id integer primary key, name, date, valid)";

    QTest::newRow("invalid curve")
        << "profile" << QStringList{curve, "insert into curve values(1, 'II', '2020-01-01', 0)"}
        << QStringList{curve, "insert into curve values(1, 'II', '2026-01-01', 0)"}
        << Kind::InvalidCurve << "The standard curve ‘II’ is invalid: calibrate again.";
    QTest::newRow("another invalid curve")
        << "profile" << QStringList{curve, "insert into curve values(1, 'II', '2020-01-01', 0)"}
        << QStringList{curve, "insert into curve values(1, 'II', '2020-01-01', 0)"}
        << Kind::InvalidCurve
        << "1 other standard curve is invalid and was not fitted once more: ‘II’. Calibrate again what you use.";
    QTest::newRow("refitted curve")
        << "profile" << QStringList{curve, "insert into curve values(1, 'PT', '2020-01-01', 0)"}
        << QStringList{curve, "insert into curve values(1, 'PT', '2026-01-01', 1)"}
        << Kind::RefittedCurve
        << "The standard curve ‘PT’ was fitted once more: calibrate again before use.";

    const QString valid = "insert into curve values(1, 'DD', '2020-01-01', 1)";
    const QString calibration =
        "create table assayCalibration(id integer primary key, name, method)";
    QTest::newRow("another method")
        << "profile"
        << QStringList{curve, valid, calibration,
                       "insert into assayCalibration values(1, 'DD', null)"}
        << QStringList{curve, valid, calibration, "insert into assayCalibration values(1, 'DD', 4)"}
        << Kind::Calibration
        << "The method of the calibration ‘DD’ changed from NULL to 4:"
           " calibrate its standard curves again before use.";
    const QString variable = "create table variable(id integer primary key, name, value)";
    QTest::newRow("a variable's value")
        << "profile" << QStringList{variable, "insert into variable values(1, 'ISI', null)"}
        << QStringList{variable, "insert into variable values(1, 'ISI', 1.07)"} << Kind::Calibration
        << "The variable id = 1 ('ISI') got the value 1.07 from a standard curve: check it.";
    QTest::newRow("current curves")
        << "profile" << QStringList{}
        << QStringList{"create table currentCurve(id integer primary key, name, curveId)",
                       "insert into currentCurve values(2, 'FIB', 2), (6, 'PT', 7)"}
        << Kind::Calibration
        << "The upgrade chose the current standard curves: id = 2 for 'FIB' and id = 7 for 'PT'."
           " Check which ones you use.";

    QStringList manyCurves;
    QStringList manyNames;
    for (int id = 1; id <= 25; ++id) {
        manyCurves << QString("insert into currentCurve values(%1, 'C%1', %1)").arg(id);
        manyNames << QString("id = %1 for 'C%1'").arg(id);
    }
    QTest::newRow("many current curves")
        << "profile" << QStringList{}
        << QStringList{"create table currentCurve(id integer primary key, name, curveId)"}
            + manyCurves
        << Kind::Calibration
        << "The upgrade chose the current standard curves: " + manyNames.first(24).join(", ")
            + " and " + manyNames.last() + ". Check which ones you use.";
    QTest::newRow("templates in their old layout")
        << "profile" << QStringList{"create table assayTemplate(id)"}
        << QStringList{"create table assayTemplate(id)", "create table assayTemplate_new(id)"}
        << Kind::LostRows
        << "The table assayTemplate kept its old layout. Rows that later steps added to it are missing, or have"
           " their values in the wrong columns: keep the copies and ask for help.";

    QTest::newRow("lost row") << "qc" << QStringList{numbered, rows}
                              << QStringList{numbered, rows, "delete from t where id = 2"}
                              << Kind::LostRows
                              << "1 row of t is not there any more: id = 2 ('two').";
    QTest::newRow("lost rows")
        << "data" << QStringList{numbered, rows}
        << QStringList{numbered, rows, "delete from t where id <> 2"} << Kind::LostRows
        << "2 rows of t are not there any more: id = 1 ('one') and id = 3 ('three').";
    QTest::newRow("lost among new rows")
        << "qc" << QStringList{numbered, rows}
        << QStringList{numbered, rows, "delete from t where id = 2",
                       "insert into t values(4, 'd', 'four')"}
        << Kind::LostRows << "1 row of t is not there any more: id = 2 ('two').";
    QTest::newRow("lost table") << "qc" << QStringList{numbered, rows} << QStringList{}
                                << Kind::LostRows << "The table t is gone, with 3 rows.";
    QTest::newRow("rows that were not moved")
        << "data" << QStringList{}
        << QStringList{"create table result_unmoved(id integer primary key)",
                       "insert into result_unmoved values(1), (2)"}
        << Kind::LostRows
        << "2 rows of result did not arrive in its new layout. result_unmoved keeps them,"
           " and the analyser software does not see them.";
    QTest::newRow("rows that a view does not show")
        << "data"
        << QStringList{"create table result(id integer primary key)",
                       "insert into result values(1), (2)",
                       "create table results(id integer primary key)",
                       "insert into results values(1), (2)"}
        << QStringList{"create table results(id integer primary key)",
                       "insert into results values(1), (2)",
                       "create view result as select id from results where id > 1"}
        << Kind::LostRows << "1 row of result is no longer shown. It is kept in results.";
    for (const auto &[name, table, view] :
         {std::tuple{"a row that results lack, too", "create table results(id integer primary key)",
                     "create view result as select id from results"},
          {"a row of results without numbers", "create table results(x)",
           "create view result as select x as id from results"},
          {"a row without results", "create table others(id)",
           "create view result as select id from others"}})
        QTest::newRow(name) << "data"
                            << QStringList{"create table result(id integer primary key)",
                                           "insert into result values(1)"}
                            << QStringList{table, view} << Kind::LostRows
                            << "1 row of result is no longer shown, and is not in results either.";
    QTest::newRow("rows that results lack, too")
        << "data"
        << QStringList{"create table result(id integer primary key)",
                       "insert into result values(1), (2)"}
        << QStringList{"create table results(id integer primary key)",
                       "create view result as select id from results"}
        << Kind::LostRows << "2 rows of result are no longer shown, and are not in results either.";

    const QString odd = "create table odd(x text collate nocase primary key)";
    const QString sorting =
        "update sqlite_master set sql = replace(sql, 'nocase', 'own') where name = 'odd'";
    QTest::newRow("a table that only its own program can sort")
        << "qc" << QStringList{odd, "pragma writable_schema=on", sorting}
        << QStringList{odd, "pragma writable_schema=on", sorting} << Kind::NotCompared
        << "The table odd was not compared: the table cannot be read: no such collation sequence: own.";

    QTest::newRow("gone column") << "qc" << QStringList{numbered}
                                 << QStringList{"create table t(id integer primary key, name)"}
                                 << Kind::GoneObject << "The column x of t is gone.";
    QTest::newRow("gone table") << "qc" << QStringList{numbered} << QStringList{}
                                << Kind::GoneObject << "The table t is gone. It was empty.";
    QTest::newRow("gone index") << "qc" << QStringList{numbered, "create index own on t(x)"}
                                << QStringList{numbered} << Kind::GoneObject
                                << "The index own of t is gone.";
    QTest::newRow("gone trigger")
        << "data"
        << QStringList{numbered, "create trigger own after delete on t begin select 1; end"}
        << QStringList{numbered} << Kind::GoneObject << "The trigger own of t is gone.";
    QTest::newRow("gone view") << "syslog" << QStringList{"create view own as select 1"}
                               << QStringList{} << Kind::GoneObject << "The view own is gone.";
    QTest::newRow("index of the wrong database")
        << "qc" << QStringList{numbered, "create index result_index on t(x)"}
        << QStringList{numbered} << Kind::GoneObject << "The index result_index of t is gone.";

    for (const char *name : {"profile", "data", "qc", "syslog"})
        QTest::addRow("overwritten in %s", name)
            << name << QStringList{numbered, rows}
            << QStringList{numbered, rows, "update t set x = 'new' where id > 1"}
            << Kind::Overwritten << "In t, 2 values of x were replaced.";
    QTest::newRow("one overwritten value")
        << "qc" << QStringList{numbered, rows}
        << QStringList{numbered, rows, "update t set x = null where id = 1"} << Kind::Overwritten
        << "In t, 1 value of x was replaced.";
    QTest::newRow("a curve's own name")
        << "profile" << QStringList{curve, "insert into curve values(1, 'PT', '2020-01-01', 1)"}
        << QStringList{curve, "insert into curve values(1, 'II', '2020-01-01', 1)"}
        << Kind::Overwritten << "In curve, 1 value of name was replaced.";
    QTest::newRow("a reagent of another database")
        << "qc"
        << QStringList{"create table reagent(id integer primary key, reagentId)",
                       "insert into reagent values(1, 7)"}
        << QStringList{"create table reagent(id integer primary key, reagentId)",
                       "insert into reagent values(1, 8)"}
        << Kind::Overwritten << "In reagent, 1 value of reagentId was replaced.";

    const QString reagent = "create table reagent(id integer primary key, reagentId, name)";
    QTest::newRow("reagent identifier")
        << "profile" << QStringList{reagent, "insert into reagent values(3, 'A101', 'CaCl2')"}
        << QStringList{reagent, "insert into reagent values(3, 'A101(3)', 'CaCl2')"}
        << Kind::ReagentIdentifier
        << "The identifier of the reagent 'CaCl2' changed from 'A101' to 'A101(3)'.";
}

/// Shows: REP-12
void TestAttention::tellsWhatDatabasesHave()
{
    QFETCH(QString, name);
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    QFETCH(Attention::Kind, kind);
    QFETCH(QString, text);

    const Report report = reportOn(name, before, after);
    const QList<Attention> attention = attentionOf(report);

    QCOMPARE(textsOf(report), QStringList{text});
    QCOMPARE(attention.first().kind, kind);
    QVERIFY(succeeded(report));
}

void TestAttention::isSilentOtherwise_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");

    const QString curve = "create table curve(id integer primary key, name, date, valid)";
    const QString valid = "insert into curve values(1, 'PT', '2020-01-01', 1)";
    QTest::newRow("valid curve") << "profile" << QStringList{curve, valid}
                                 << QStringList{curve, valid};
    const QString current = "create table currentCurve(id integer primary key, name, curveId)";
    QTest::newRow("current curves of before")
        << "profile" << QStringList{current, "insert into currentCurve values(6, 'PT', 7)"}
        << QStringList{current, "insert into currentCurve values(6, 'PT', 7), (7, 'II', 8)"};
    QTest::newRow("templates that an earlier upgrade left in their old layout")
        << "profile" << QStringList{"create table assayTemplate_new(id)"}
        << QStringList{"create table assayTemplate_new(id)"};
    QTest::newRow("templates of another database")
        << "qc" << QStringList{} << QStringList{"create table assayTemplate_new(id)"};
    QTest::newRow("no current curve") << "profile" << QStringList{} << QStringList{current};
    const QString variable = "create table variable(id integer primary key, name, value)";
    QTest::newRow("a variable of another database")
        << "data" << QStringList{variable, "insert into variable values(1, 'ISI', null)"}
        << QStringList{variable, "insert into variable values(1, 'ISI', 1.07)"};
    QTest::newRow("curve of an instrument") // of the data database
        << "data"
        << QStringList{"create table curve(id integer primary key, curve)",
                       "insert into curve values(1, null)"}
        << QStringList{"create table curve(id integer primary key, curve)",
                       "insert into curve values(1, x'00')"};
    QTest::newRow("new rows") << "qc" << QStringList{"create table t(x)"}
                              << QStringList{"create table t(x)", "insert into t values(1)"};
    QTest::newRow("an empty table of rows that were not moved")
        << "data" << QStringList{} << QStringList{"create table result_unmoved(id)"};
    QTest::newRow("rows that an earlier upgrade did not move")
        << "data"
        << QStringList{"create table result_unmoved(id)", "insert into result_unmoved values(1)"}
        << QStringList{"create table result_unmoved(id)", "insert into result_unmoved values(1)"};
    QTest::newRow("indexes that the steps drop")
        << "data" << QStringList{"create table t(x)", "create index result_index on t(x)"}
        << QStringList{"create table t(x)"};
    QTest::newRow("indexes that the steps drop, of curves")
        << "profile" << QStringList{"create table t(x)", "create index curve_index on t(x)"}
        << QStringList{"create table t(x)"};
    QTest::newRow("a table that became a view of the same rows")
        << "data"
        << QStringList{"create table result(id integer primary key, x)",
                       "insert into result values(1, 'a')"}
        << QStringList{"create table results(id integer primary key, x)",
                       "insert into results values(1, 'a')",
                       "create view result as select id, x from results"};
    QTest::newRow("new objects") << "qc" << QStringList{"create table t(x)"}
                                 << QStringList{"create table t(x, y)", "create index i on t(x)",
                                                "create view v as select 1"};
    QTest::newRow("values filled in")
        << "qc"
        << QStringList{"create table t(id integer primary key, x)", "insert into t values(1, null)"}
        << QStringList{"create table t(id integer primary key, x)", "insert into t values(1, 'a')"};
    QTest::newRow("times without fractions")
        << "data"
        << QStringList{"create table t(id integer primary key, x)",
                       "insert into t values(1, '08:01:02.5')"}
        << QStringList{"create table t(id integer primary key, x)",
                       "insert into t values(1, '08:01:02')"};
    QTest::newRow("renamed settings")
        << "profile"
        << QStringList{"create table profile(name text primary key, value)",
                       "insert into profile values('program/PT/volume', 50)"}
        << QStringList{"create table profile(name text primary key, value)",
                       "insert into profile values('program/PT/dilution/volume', 50)"};
    for (const char *identifier : {"null", "''"})
        QTest::addRow("reagent that had no identifier: %s", identifier)
            << "profile"
            << QStringList{"create table reagent(id integer primary key, reagentId)",
                           QString("insert into reagent values(1, %1)").arg(identifier)}
            << QStringList{"create table reagent(id integer primary key, reagentId)",
                           "insert into reagent values(1, '101')"};
    QTest::newRow("virtual table") << "qc" << QStringList{"create virtual table t using fts5(x)"}
                                   << QStringList{"create virtual table t using fts5(x)"};
}

/// Shows: REP-12
void TestAttention::isSilentOtherwise()
{
    QFETCH(QString, name);
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);

    const Report report = reportOn(name, before, after);

    QCOMPARE(textsOf(report), QStringList());
    QVERIFY(succeeded(report));
}

void TestAttention::tellsFailures_data()
{
    QTest::addColumn<Report>("report");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("clause");

    const auto add = [](const char *row, const QString &clause, const QStringList &texts,
                        const std::function<void(Report &)> &change) {
        Report report = soundReport();
        change(report);
        QTest::newRow(row) << report << texts << "The upgrade fails" + clause;
    };
    add("no end", ": vardo was stopped.", {"Vardo was stopped."}, [](Report &report) {
        report.exitCode.reset();
        report.problem = "Vardo was stopped.";
    });
    add("exit code", ": vardo ended with exit code 1.",
        {"The upgrade failed: vardo ended with exit code 1."},
        [](Report &report) { report.exitCode = 1; });
    add("failed step", " at the data database: the step update_v8() failed.",
        {"The upgrade of the data database failed: the step update_v8() failed."},
        [](Report &report) {
            report.exitCode = 1;
            report.databases[1].versionAfter = 1;
            report.databases[1].steps = {{"update_v8()", StepResult::Fail}};
        });
    add("not compared", " at the qc database: the database before the upgrade is locked.",
        {"The qc database could not be compared: the database before the upgrade is locked."},
        [](Report &report) {
            report.databases[2].problem = "The database before the upgrade is locked.";
        });
    add("missing", " at the qc database: it is missing after the upgrade.",
        {"The qc database is missing after the upgrade."},
        [](Report &report) { report.databases[2].filesAfter.clear(); });
    add("damaged", " at the syslog database: it is damaged.",
        {"The syslog database is damaged after the upgrade: Page 3 is never used"},
        [](Report &report) { report.databases[3].integrityAfter = "Page 3 is never used"; });
    add("damaged before", " at the syslog database: it is damaged.",
        {"The syslog database is damaged: Page 3 is never used"}, [](Report &report) {
            report.databases[3].integrityBefore = "Page 3 is never used";
            report.databases[3].integrityAfter = "Page 3 is never used";
        });
    add("damaged before alone", " at the syslog database: it was damaged before the upgrade.",
        {"The syslog database was damaged before the upgrade: Page 3 is never used"},
        [](Report &report) { report.databases[3].integrityBefore = "Page 3 is never used"; });
    add("too high", " at the profile database: it is at version 31, not at 30.",
        {"The profile database is at version 31 after the upgrade, not at 30."},
        [](Report &report) {
            report.databases[0].newestVersion = 30;
            report.databases[0].versionAfter = 31;
        });
    add("too low", " at the profile database: it is at version 9, not at 30.",
        {"The profile database is at version 9 after the upgrade, not at 30."}, [](Report &report) {
            report.databases[0].newestVersion = 30;
            report.databases[0].versionAfter = 9;
        });
    add("below none", " at the profile database: it is at version -1, not at 30.",
        {"The profile database is at version -1 after the upgrade, not at 30.",
         "The version of the profile database was lowered from 0 to -1."},
        [](Report &report) {
            report.databases[0].newestVersion = 30;
            report.databases[0].versionBefore = std::nullopt;
            report.databases[0].versionAfter = -1;
        });
    add("newer", " at the data database: it is newer than vardo.",
        {"The data database was at version 99 before the upgrade. The newest one that vardo knows is 12.",
         "The version of the data database was lowered from 99 to 12."},
        [](Report &report) {
            report.databases[1].newestVersion = 12;
            report.databases[1].versionBefore = 99;
            report.databases[1].versionAfter = 12;
        });
    add("table", " at the qc database: the table t could not be compared.",
        {"The table t of the qc database could not be compared: the table is damaged."},
        [](Report &report) {
            TableFacts table{"t"};
            table.problem = "The table is damaged.";
            table.damaged = true;
            report.databases[2].tables << table;
        });
}

void TestAttention::tellsFailures()
{
    QFETCH(Report, report);
    QFETCH(QStringList, texts);
    QFETCH(QString, clause);

    QCOMPARE(textsOf(report), texts);
    QCOMPARE(attentionOf(report).constFirst().kind, Kind::Failure);
    QCOMPARE(verdict(report), clause);
    QVERIFY(!succeeded(report));
    QVERIFY(succeeded(soundReport()));
    QCOMPARE(textsOf(soundReport()), QStringList());
}

void TestAttention::quotesTheWarningOfTheFailedStep()
{
    Report report = soundReport();
    report.exitCode = 1;
    report.databases[1].steps = {{"update_v8()", StepResult::Fail}};
    report.log = {{"Debug: Updating /lab/profile.db"}, {"Warning: of another database", {}, true},
                  {"Debug: Updating /lab/data.db"},    {"Warning: early", {}, true},
                  {"Warning: the cause", {}, true},    {"Debug: update_v8() : FAIL"}};

    QCOMPARE(
        textsOf(report),
        (QStringList{
            "The upgrade of the data database failed: the step update_v8() failed. The log says: the cause",
            "of another database", "early"}));
    QCOMPARE(attentionOf(report).constFirst().anchor, "log-5");
}

void TestAttention::tellsWarnings()
{
    Report report = soundReport();
    report.log = {{"Debug: Updating /lab/profile.db"},
                  {"Warning: Left 5 values of result.extra behind", {}, true}};

    QCOMPARE(textsOf(report), QStringList{"Left 5 values of result.extra behind"});
    QCOMPARE(attentionOf(report).constFirst().kind, Kind::Warning);
    QCOMPARE(attentionOf(report).constFirst().anchor, "log-2");
}

void TestAttention::shortensManySentences()
{
    Report report = soundReport();
    for (int i = 1; i <= 27; ++i)
        report.log << LogLine{QString("Warning: %1").arg(i), {}, true};

    const QStringList texts = textsOf(report);

    QCOMPARE(texts.size(), 21);
    QCOMPARE(texts.at(19), "20");
    QCOMPARE(texts.at(20), "And 7 more.");
}

void TestAttention::tellsOfRowsThatTheStepsDidNotExpect_data()
{
    using Unexpected = UnexpectedRow::Kind;
    QTest::addColumn<Unexpected>("kind");
    QTest::addColumn<QString>("other");
    QTest::addColumn<QString>("text");

    QTest::newRow("own assay")
        << Unexpected::OwnAssay << "PC"
        << "The assay ‘R%2’ has the number of the factory's assay ‘PC’, whose items, calibrations or checks were"
           " added to it: check them.";
    QTest::newRow("limit of no item")
        << Unexpected::MisplacedLimit << QString()
        << "No item got the limits of the result check for ‘R%2’: set them again.";
    QTest::newRow("limit of another item")
        << Unexpected::MisplacedLimit << "II"
        << "The limits of the result check for ‘R%2’ went to an item of the assay ‘II’: check them.";
    QTest::newRow("setting")
        << Unexpected::OldSettingName << QString()
        << "The setting ‘R%2’ kept its old name, which the new analyser software does not look for: set it again.";
    QTest::newRow("curve with a date that is none")
        << Unexpected::CurveWithoutExpiry << "soon"
        << "The standard curve ‘R%2’ has no date of expiry, since ‘soon’ is no date: check it.";
    QTest::newRow("curve without a date")
        << Unexpected::CurveWithoutExpiry << QString()
        << "The standard curve ‘R%2’ has no date of expiry, since it has no date: check it.";
    QTest::newRow("own item")
        << Unexpected::OwnItem << "PC"
        << "The item ‘R%2’ has the number of an item of the factory's assay ‘PC’, which"
           " was left out: do not use that assay.";
    QTest::newRow("own calibration")
        << Unexpected::OwnCalibration << "Plg"
        << "The calibration ‘R%2’ has the number or the name of one of the factory's assay ‘Plg’, which was left"
           " out: do not use that assay.";
    QTest::newRow("name of the factory's")
        << Unexpected::FactoryName << "500"
        << "The assay ‘R%2’ has the name of an assay of the factory's, but the number 500. The factory's was left"
           " out, and settings were added to yours: check them.";
    QTest::newRow("replaced limit")
        << Unexpected::ReplacedLimit << "0.5 to 20"
        << "The limits of the result check for ‘R%2’ were 0.5 to 20, and the item got others: check them.";
    QTest::newRow("replaced identifier")
        << Unexpected::ReplacedIdentifier << "LAB-7"
        << "The reagent ‘R%2’ was made anew without its identifier LAB-7: check it against your bottles.";
    QTest::newRow("equal identifiers")
        << Unexpected::EqualIdentifiers << "Own"
        << "The reagents ‘R%2’ and ‘Own’ have the same identifier: change one of them.";
    QTest::newRow("displayed name of the factory's")
        << Unexpected::FactoryDisplayName << "500"
        << "The assay with the number 500 is displayed under the name of the factory's assay ‘R%2’, which was left"
           " out: check its items, calibrations and checks.";
}

/// Shows: REP-24
void TestAttention::tellsOfRowsThatTheStepsDidNotExpect()
{
    QFETCH(UnexpectedRow::Kind, kind);
    QFETCH(QString, other);
    QFETCH(QString, text);
    Report report = soundReport();
    report.databases[0].unexpectedRows << UnexpectedRow{kind, "R%2", other};

    const QList<Attention> attention = attentionOf(report);

    QCOMPARE(textsOf(report), QStringList{text});
    QCOMPARE(attention.first().kind, Kind::UnexpectedRow);
    QCOMPARE(attention.first().anchor, QString("database-profile"));
}

void TestAttention::tellsOfEachRowThatTheStepsDidNotExpect()
{
    Report report = soundReport();
    for (int i = 1; i <= 27; ++i)
        report.databases[0].unexpectedRows
            << UnexpectedRow{UnexpectedRow::Kind::OldSettingName, QString("setting %1").arg(i)};

    const QStringList texts = textsOf(report);

    QCOMPARE(texts.size(), 27);
    QVERIFY2(texts.last().startsWith("The setting ‘setting 27’ "), qUtf8Printable(texts.last()));
}

void TestAttention::showsTheFirstOverwrittenValues()
{
    const QString table = "create table t(id integer primary key, name, x)";
    const QString rows =
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 25)"
        " insert into t select i, 'n' || i, %1 from n";
    const Report report = reportOn("qc", {table, rows.arg("i + 0.5")}, {table, rows.arg("'new'")});

    const QList<Attention> attention = attentionOf(report);

    QCOMPARE(attention.size(), 1);
    const QList<OverwrittenValue> values = attention.first().values;
    QCOMPARE(values.size(), 20);
    QCOMPARE(attention.first().moreValues, 5);
    QCOMPARE(values.first().key, QString("id = 1 ('n1')"));
    QCOMPARE(values.first().column, QString("x"));
    QCOMPARE(values.first().before, QString("1.5"));
    QCOMPARE(values.last().after, QString("'new'"));
}

void TestAttention::linksToPlaces()
{
    const QString curve = "create table curve(id integer primary key, name, date, valid)";
    const Report report = reportOn(
        "profile",
        {curve, "insert into curve values(1, 'II', '2020-01-01', 0), (2, 'X', '2020-01-01', 0)",
         "create index own on curve(name)", "create table t(x)", "insert into t values(1)"},
        {curve, "insert into curve values(1, 'II', '2020-01-01', 0), (2, 'X', '2026-01-01', 1)",
         "create table t(x)"});

    QStringList anchors;
    for (const Attention &attention : attentionOf(report))
        anchors << attention.anchor;

    QCOMPARE(anchors, (QStringList{"curves", "curve-1", "table-profile-2", "objects-profile"}));
}

/// Shows: REP-12
void TestAttention::ordersByImportance()
{
    Report report = soundReport();
    report.log = {{"Warning: last", {}, true}};
    report.databases[0].objectsGone = {{"view", "v", "v"}};
    report.databases[1].versionBefore = 13;
    report.databases[3].integrityAfter = "Page 3 is never used";

    QList<Attention> attention = attentionOf(report);

    QVERIFY(attention.size() > 3);
    QVERIFY(std::is_sorted(attention.begin(), attention.end(),
                           [](const Attention &a, const Attention &b) { return a.kind < b.kind; }));
}

void TestAttention::givesAVerdict_data()
{
    QTest::addColumn<Report>("report");
    QTest::addColumn<QString>("sentence");

    Report report = soundReport();
    QTest::newRow("rehearsal")
        << report
        << "The upgrade works: all 4 databases reach the version that this vardo knows, in 3 seconds.";
    report.log = {{"Warning: one", {}, true}};
    QTest::newRow("with a point")
        << report
        << "The upgrade works: all 4 databases reach the version that this vardo knows,"
           " in 3 seconds; 1 point needs attention.";
    report.databases.resize(1);
    report.milliseconds = 240'000;
    report.log << LogLine{"Warning: two", {}, true};
    QTest::newRow("one database")
        << report
        << "The upgrade works: the profile database reaches the version that this vardo knows,"
           " in 4 minutes; 2 points need attention.";
    report.use = Use::Comparison;
    report.exitCode.reset();
    QTest::newRow("comparison") << report << "The upgrade worked, and 2 points need attention.";
    report.log.clear();
    QTest::newRow("comparison without a point")
        << report << "The upgrade worked, and nothing needs attention.";
    report.databases.first().filesAfter.clear();
    QTest::newRow("comparison with a failure")
        << report << "Something is wrong at the profile database: it is missing after the upgrade.";

    report = soundReport();
    for (DatabaseFacts &database : report.databases)
        database.versionBefore = database.versionAfter;
    QTest::newRow("rehearsal of upgraded databases")
        << report
        << "There is nothing to upgrade: all 4 databases are at the version that this vardo knows.";
    report.log = {{"Warning: one", {}, true}};
    report.databases.resize(1);
    QTest::newRow("rehearsal of one upgraded database")
        << report
        << "There is nothing to upgrade: the profile database is at the version that this vardo knows;"
           " 1 point needs attention.";
    report.use = Use::Comparison;
    QTest::newRow("comparison of upgraded databases")
        << report
        << "Nothing was upgraded: the profile database was at the newest version before;"
           " 1 point needs attention.";
}

/// Shows: REP-13, REP-23
void TestAttention::givesAVerdict()
{
    QFETCH(Report, report);
    QFETCH(QString, sentence);

    QCOMPARE(verdict(report), sentence);
}

QTEST_GUILESS_MAIN(TestAttention)

#include "tst_attention.moc"
