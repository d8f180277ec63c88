// SPDX-License-Identifier: MIT
/// The conversions of step 10: values of variables, limits of items, display names of templates and
/// names of reagents.

#include "messagerecorder.h"
#include "profiledatabase.h"
#include "profileupgrade.h"
#include "upgrade.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

const QString sourceFile = "coagulation/vardo/updateprofile_v10_conversions.cpp ( line ): ";

/// Fills the database with the sample at a version and changes it.
void makeAt(const TestDatabase &database, int version, const QStringList &statements)
{
    makeProfileAt(database, version);
    database.execute(QStringList{"pragma legacy_alter_table=on"} + statements);
}

/// \return the warnings but those of the factory templates, whose rows have eight values: the table
///         has nine columns in the layout of version 8 and above
QStringList warnings(const MessageRecorder &recorder)
{
    return recorder.messages()
        .filter(QRegularExpression("^Warning: "))
        .filter(QRegularExpression(R"(^(?!.*into assaytemplate values\())",
                                   QRegularExpression::CaseInsensitiveOption));
}

/// Tests that a run fails, with one warning or with none if `logged` is empty, and changes nothing.
void testFailure(const TestDatabase &database, const QString &error, const QString &logged)
{
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().constLast(), "Debug: update_v10(): FAIL");
    const QStringList all = warnings(recorder);
    QVERIFY2(all.size() == (logged.isEmpty() ? 0 : 1), qUtf8Printable(all.join('\n')));
    if (!logged.isEmpty()) {
        QVERIFY2(all.constFirst().startsWith("Warning: " + sourceFile + " \"" + error),
                 qUtf8Printable(all.constFirst()));
        QVERIFY2(all.constFirst().simplified().contains("[ \"" + logged),
                 qUtf8Printable(all.constFirst()));
    }
}

/// \return an expression that cannot be read in the rows that the condition holds for: the smallest
///         integer has no absolute value
QString unreadable(const QString &condition, const QString &column)
{
    return QString("iif(%1, abs(length('') * id - 9223372036854775807 - 1), %2) as %2")
        .arg(condition, column);
}

// clang-format off
/// Curves of PT and FIB, which need no refit, one without a calibration, and what they were made with.
const QStringList emptyVariables{
    "delete from curve",
    "delete from curveVariable",
    "delete from variable",
    "insert into curve(id, name, valid) values(1, 'PT', 1), (2, 'FIB', 1), (3, 'site''s', 1)",
    "insert into curveVariable values"
    "(1, 'ISI', 1.07), (1, 'normal', 12), (2, 'ISI', 9.99), (3, 'ISI', 5), (2, 'none', null),"
    "(2, 'text', 'n/a'), (98, 'lost', 1), (3, 'site', 2)",
    "insert into variable values"
    "(1, 1, 'ISI', null), (2, 1, 'normal', null), (3, 3, 'normal', null), (4, 2, 'ISI', null)",
};

/// More items of the templates 8 and 9, and no limits to move.
const QStringList moreItems{
    "delete from dataCheck",
    "insert into assayItem(id, assayTemplateId, name) values"
    "(9001, 8, 'my ''T'''), (9002, 8, ''), (9003, 9, 'T'), (9004, null, 'T')",
};

/// The items with limits that step 10 writes in any case, as rows of itemLimits().
const QStringList factoryLimits{
    "14, 0.1, 40.0, 0.0, 0.0, 0.0, 10.0",
    "17, 1.0, 100.0, 0.0, 0.0, 0.0, 0.0",
    "20, 15.0, 150.0, 0.0, 0.0, 0.0, 0.0",
};
// clang-format on

/// \return of the items that have any limit the limits to report, to repeat and to redilute
QStringList itemLimits(const TestDatabase &database)
{
    return database.rows("select id, lowerReport, upperReport, lowerRepeat, upperRepeat,"
                         " lowerRedilution, upperRedilution from assayItem"
                         " where lowerReport <> 0 or upperReport <> 0 or lowerRepeat <> 0"
                         " or upperRepeat <> 0 or lowerRedilution <> 0 or upperRedilution <> 0"
                         " order by id");
}

/// \param values template; report, item, lower and upper limit; the same for redilution and repeat
QString dataCheckRow(const QString &values)
{
    return "insert into dataCheck(assayTemplateId, report, reportItemFullName, reportLower,"
           " reportUpper, redilution, redilutionItemFullName, redilutionLower, redilutionUpper,"
           " repeat, repeatItemFullName, repeatLower, repeatUpper) values("
        + values + ')';
}

QStringList renameLines(const MessageRecorder &recorder)
{
    return recorder.messages().filter("Relaced");
}

QString renameLine(const QString &key, const QString &to, const QString &from)
{
    return QString(R"(Debug: %1 Relaced "%2" to "%3" from "%4")").arg(sourceFile, key, to, from);
}

} // namespace

class TestProfileV10Conversions : public QObject {
    Q_OBJECT

private slots:
    void init();

    void fillsVariablesOfTheSample();
    void fillsAVariable_data();
    void fillsAVariable();
    void takesTheFirstOfSeveralValues();
    void keepsTheTypeOfAValue();
    void leavesVariablesAloneOfWhichOneHasAValue_data();
    void leavesVariablesAloneOfWhichOneHasAValue();
    void failsAtVariables_data();
    void failsAtVariables();
    void fillsVariablesBeforeTheRefit();

    void movesLimitsOfTheSample();
    void movesLimits_data();
    void movesLimits();
    void movesLimitsOfAllRows();
    void keepsTheRowsThatLimitsComeFrom();
    void takesFlagsAsBooleans_data();
    void takesFlagsAsBooleans();
    void passesWithoutLimits();
    void movesLimitsBelowVersion5Only_data();
    void movesLimitsBelowVersion5Only();
    void failsAtLimits_data();
    void failsAtLimits();

    void givesTemplatesADisplayName();
    void givesTemplatesTheLayoutWithADisplayName();
    void keepsWhatRefersToTemplates();
    void deletesAllOfATemplateAndNoMore();
    void copiesTemplatesByColumnName();
    void setsDisplayNamesBelowVersion8Only_data();
    void setsDisplayNamesBelowVersion8Only();
    void passesThoughTemplatesStayAsTheyAre_data();
    void passesThoughTemplatesStayAsTheyAre();

    void renamesReagentsOfTheSample();
    void renamesReagents();
    void findsKeysByTheirPattern_data();
    void findsKeysByTheirPattern();
    void findsKeysByTheirWholeValue();
    void replacesTheKeyReadLastFirst();
    void replacesKeysOfReagentsThatAreGone();
    void replacesKeysThatAreDeletedLater();
    void renamesRinseUnlessX2Exists_data();
    void renamesRinseUnlessX2Exists();
    void renamesThoughOnlyTheNewNameExists();
    void failsAtReagents_data();
    void failsAtReagents();
};

void TestProfileV10Conversions::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

// ---- values of variables

void TestProfileV10Conversions::fillsVariablesOfTheSample()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.table("variable"),
             QStringList({"1, 1, 'ISI', 1.07", "2, 1, 'normal', 12.0", "3, 3, 'normal', NULL"}));
}

void TestProfileV10Conversions::fillsAVariable_data()
{
    QTest::addColumn<QString>("variable"); // template and name
    QTest::addColumn<QString>("value");

    QTest::newRow("a curve's value") << "2, 'ISI'"
                                     << "9.99";
    QTest::newRow("a curve's text") << "2, 'text'"
                                    << "'n/a'";
    QTest::newRow("a curve's null") << "2, 'none'"
                                    << "NULL";
    QTest::newRow("a second calibration of the template") << "1, 'site'"
                                                          << "2.0";
    QTest::newRow("a template without a curve") << "5, 'ISI'"
                                                << "NULL";
    QTest::newRow("a template without a calibration") << "3, 'ISI'"
                                                      << "NULL";
    QTest::newRow("an unknown template") << "77, 'ISI'"
                                         << "NULL";
    QTest::newRow("no template") << "null, 'ISI'"
                                 << "NULL";
    QTest::newRow("a curve that is gone") << "1, 'lost'"
                                          << "NULL";
    QTest::newRow("a variable of another template") << "1, 'text'"
                                                    << "NULL";
    QTest::newRow("another letter case") << "1, 'isi'"
                                         << "NULL";
    QTest::newRow("no name") << "1, null"
                             << "NULL";
    QTest::newRow("a byte order mark before the name") << "1, char(65279) || 'ISI'"
                                                       << "NULL";
    QTest::newRow("SQL") << "1, 'x'' or 1=1 --'"
                         << "NULL";
}

/// Shows: PRO-3
void TestProfileV10Conversions::fillsAVariable()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           emptyVariables
               + QStringList{"delete from variable",
                             "insert into variable values(70, 1, 'normal', null)",
                             QString("insert into variable values(60, %1, null)").arg(variable),
                             "update assayCalibration set name = 'site''s' where id = 2"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(database.rows("select id, value from variable order by id"),
             QStringList({"60, " + value, "70, 12.0"}));
    QCOMPARE(database.rows("select assayTemplateId, name from variable where id = 60"),
             database.rows("select " + variable));
}

void TestProfileV10Conversions::takesTheFirstOfSeveralValues()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           emptyVariables
               + QStringList{"delete from curveVariable",
                             "insert into curveVariable values(1, 'ISI', 1.25), (1, 'ISI', 1.5),"
                             " (1, 'normal', null), (1, 'normal', 11)"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.table("variable"),
             QStringList({"1, 1, 'ISI', 1.25", "2, 1, 'normal', NULL", "3, 3, 'normal', NULL",
                          "4, 2, 'ISI', NULL"}));
}

void TestProfileV10Conversions::keepsTheTypeOfAValue()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           emptyVariables
               + QStringList{"delete from variable", "drop table curveVariable",
                             "create table curveVariable(curveId, name, value)",
                             "insert into curveVariable values(1, 'integer', 3), (1, 'real', 0.5),"
                             " (1, 'text', '3'), (1, 'empty', ''), (1, 'blob', x'00ff'),"
                             " (1, 'long', 9007199254740993), (1, 'empty blob', x''),"
                             " (1, 'mark', char(65279) || 'q')",
                             "insert into variable(assayTemplateId, name)"
                             " select 1, name from curveVariable"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(
        database.rows("select name, value from variable order by id"),
        QStringList({"'integer', 3", "'real', 0.5", "'text', '3'", "'empty', ''", "'blob', X'00FF'",
                     "'long', 9007199254740993", "'empty blob', X''", "'mark', '\ufeffq'"}));
}

void TestProfileV10Conversions::leavesVariablesAloneOfWhichOneHasAValue_data()
{
    QTest::addColumn<QString>("value");

    QTest::newRow("number") << "1.5";
    QTest::newRow("zero") << "0";
    QTest::newRow("empty text") << "''";
}

void TestProfileV10Conversions::leavesVariablesAloneOfWhichOneHasAValue()
{
    QFETCH(QString, value);
    const TestDatabase database("profile.db");
    // without the table of the values, which is not asked for
    makeAt(database, 9,
           emptyVariables
               + QStringList{QString("update variable set value = %1 where id = 3").arg(value),
                             "drop table curveVariable"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(database.table("variable"),
             QStringList({"1, 1, 'ISI', NULL", "2, 1, 'normal', NULL", "3, 3, 'normal', " + value,
                          "4, 2, 'ISI', NULL"}));
}

void TestProfileV10Conversions::failsAtVariables_data()
{
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("error");  // how its text begins
    QTest::addColumn<QString>("logged"); // how the statement begins; none is logged if empty

    const QString select = "select id, assayTemplateId, name, value from variable";
    const QString lookUp = "select curveVariable.value from curveVariable, curve, assayCalibration"
                           " where curveVariable.name=:name and curveId=curve.id"
                           " and curve.name=assayCalibration.name"
                           " and assayCalibration.assayTemplateId=:assayTemplateId";
    const QString update = "update variable set value=:value where id=:id";
    const QString view = "create view variable as select id, assayTemplateId, %1, value"
                         " from variables";
    const QString write = "create trigger write instead of update on variable"
                          " begin update variables set value = new.value where id = old.id; end";

    QTest::newRow("no variables") << QStringList{"drop table variable"} << ""
                                  << "";
    QTest::newRow("a variable has no value")
        << QStringList{"alter table variable drop column value"} << ""
        << "";
    QTest::newRow("a variable has no id")
        << QStringList{"drop table variable",
                       "create table variable(key, assayTemplateId, name, value)"}
        << "no such column: id" << select;
    QTest::newRow("the first variable cannot be read")
        << QStringList{"alter table variable rename to variables",
                       view.arg(unreadable("id = 1", "name")), write}
        << "integer overflow" << select;
    QTest::newRow("the second variable cannot be read")
        << QStringList{"alter table variable rename to variables",
                       view.arg(unreadable("id = 2", "name")), write}
        << "integer overflow" << select;
    QTest::newRow("no values") << QStringList{"drop table curveVariable"}
                               << "no such table: curveVariable" << lookUp;
    QTest::newRow("no values, no variables")
        << QStringList{"delete from variable", "drop table curveVariable"}
        << "no such table: curveVariable" << lookUp;
    QTest::newRow("no curves") << QStringList{"drop table curve"} << "no such table: curve"
                               << lookUp;
    QTest::newRow("no calibrations") << QStringList{"drop table assayCalibration"}
                                     << "no such table: assayCalibration" << lookUp;
    QTest::newRow("a value cannot be read")
        << QStringList{"alter table curveVariable rename to curveVariables",
                       "create view curveVariable as select curveId, name, "
                           + unreadable("curveId = 2", "value").replace("* id", "* curveId")
                           + " from curveVariables"}
        << "integer overflow" << lookUp;
    QTest::newRow("the update of a variable is not possible")
        << QStringList{"create trigger keep after update on variable"
                       " begin delete from missing; end"}
        << "no such table: main.missing" << update;
    QTest::newRow("the second variable cannot be changed")
        << QStringList{"create trigger keep before update on variable when old.id = 2"
                       " begin select raise(abort, 'kept'); end"}
        << "kept" << update;
}

void TestProfileV10Conversions::failsAtVariables()
{
    QFETCH(QStringList, obstacles);
    QFETCH(QString, error);
    QFETCH(QString, logged);
    const TestDatabase database("profile.db");
    makeAt(database, 9, emptyVariables + obstacles);

    testFailure(database, error, logged);
}

void TestProfileV10Conversions::fillsVariablesBeforeTheRefit()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           emptyVariables
               + QStringList{"alter table curve drop column lotsNum", "drop table curveVariable"});

    testFailure(database, "no such table: curveVariable", "select curveVariable.value from");
}

// ---- limits of items

void TestProfileV10Conversions::movesLimitsOfTheSample()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(itemLimits(database),
             QStringList({"1, 5.0, 120.5, 7.0, 40.0, 0.0, 0.0", "8, 0.0, 0.0, 0.0, 0.0, 0.5, 6.0"})
                 + factoryLimits);
}

void TestProfileV10Conversions::movesLimits_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<QStringList>("limits");

    // item 21 is T and 22 is P of template 8
    QTest::newRow("report") << "8, 1, 'II.T', 1.5, 20, 0, 'II.T', 2, 3, 0, 'II.T', 4, 5"
                            << QStringList{"21, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0"};
    QTest::newRow("redilution") << "8, 0, 'II.T', 1.5, 20, 1, 'II.T', 2, 3, 0, 'II.T', 4, 5"
                                << QStringList{"21, 0.0, 0.0, 0.0, 0.0, 2.0, 3.0"};
    QTest::newRow("repeat") << "8, 0, 'II.T', 1.5, 20, 0, 'II.T', 2, 3, 1, 'II.T', 4, 5"
                            << QStringList{"21, 0.0, 0.0, 4.0, 5.0, 0.0, 0.0"};
    QTest::newRow("all of an item") << "8, 1, 'II.T', 1.5, 20, 1, 'II.T', 2, 3, 1, 'II.T', 4, 5"
                                    << QStringList{"21, 1.5, 20.0, 4.0, 5.0, 2.0, 3.0"};
    QTest::newRow("all of three items")
        << "8, 1, 'II.P', 1.5, 20, 1, 'II.my ''T''', 2, 3, 1, 'II.T', 4, 5"
        << QStringList{"21, 0.0, 0.0, 4.0, 5.0, 0.0, 0.0", "22, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0",
                       "9001, 0.0, 0.0, 0.0, 0.0, 2.0, 3.0"};
    QTest::newRow("none") << "8, 0, 'II.T', 1.5, 20, 0, 'II.T', 2, 3, 0, 'II.T', 4, 5"
                          << QStringList();
    QTest::newRow("no flags") << "8, null, 'II.T', 1, 2, null, 'II.T', 2, 3, null, 'II.T', 4, 5"
                              << QStringList();
    QTest::newRow("no flags, no limits")
        << "8, 0, null, null, null, 0, null, null, null, 0, null, null, null" << QStringList();

    const QString report = "8, 1, %1, 1.5, 20, 0, null, null, null, 0, null, null, null";
    const QStringList ofT{"21, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0"};
    const QStringList ofTheUnnamed{"9002, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0"};
    QTest::newRow("item of another template") << report.arg("'DD.T'") << ofT;
    QTest::newRow("item of no template") << report.arg("'.T'") << ofT;
    QTest::newRow("three parts") << report.arg("'II.T.P'") << ofT;
    QTest::newRow("four parts, the second empty") << report.arg("'II..T.P'") << ofTheUnnamed;
    QTest::newRow("no point") << report.arg("'T'") << ofTheUnnamed;
    QTest::newRow("a point at the end") << report.arg("'T.'") << ofTheUnnamed;
    QTest::newRow("no item") << report.arg("null") << ofTheUnnamed;
    QTest::newRow("empty item") << report.arg("''") << ofTheUnnamed;
    QTest::newRow("unknown item") << report.arg("'II.OD'") << QStringList();
    QTest::newRow("item in another letter case") << report.arg("'II.t'") << QStringList();
    QTest::newRow("item with a blank") << report.arg("'II. T'") << QStringList();
    QTest::newRow("item with an apostrophe")
        << report.arg("'II.my ''T'''") << QStringList{"9001, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0"};
    QTest::newRow("item that ends in an apostrophe") << report.arg("'II.T'''") << QStringList();
    QTest::newRow("item of SQL") << report.arg("'II.T'' or ''1''=''1'") << QStringList();
    QTest::newRow("item of two statements")
        << report.arg("'II.T''; delete from user; --'") << QStringList();
    QTest::newRow("item that looks like an argument") << report.arg("'II.%1%2'") << QStringList();

    QTest::newRow("no template") << "null, 1, 'II.T', 1, 2, 1, 'II.T', 2, 3, 1, 'II.T', 4, 5"
                                 << QStringList();
    QTest::newRow("no template, no limits")
        << "null, 1, 'II.T', null, null, 1, 'II.T', null, 3, 1, 'II.T', 4, null" << QStringList();
    QTest::newRow("empty template")
        << "'', 1, 'II.T', null, 2, 1, 'II.T', 2, 3, 1, 'II.T', 4, 5" << QStringList();
    QTest::newRow("template without items")
        << "15, 1, 'XII.T', 1, 2, 1, 'XII.T', 2, 3, 1, 'XII.T', 4, 5" << QStringList();
    QTest::newRow("template with an item of the same name")
        << "9, 1, 'V.T', 1.5, 20, 0, '', 2, 3, 0, '', 4, 5"
        << QStringList{"9003, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0"};

    QTest::newRow("small and negative limits")
        << "8, 1, 'II.T', -1.5, 0.0000001, 1, 'II.T', -2e-12, 0.125, 0, null, null, null"
        << QStringList{"21, -1.5, 1.0e-07, 0.0, 0.0, -2.0e-12, 0.125"};
    QTest::newRow("large and long limits")
        << "8, 1, 'II.T', 1234567.891, 1e20, 1, 'II.T', 0, 123456789012, 0, null, null, null"
        << QStringList{"21, 1234567.891, 1.0e+20, 0.0, 0.0, 0.0, 123456789012.0"};
}

/// Shows: PRO-3
void TestProfileV10Conversions::movesLimits()
{
    QFETCH(QString, row);
    QFETCH(QStringList, limits);
    const TestDatabase database("profile.db");
    makeAt(database, 4, moreItems + QStringList{dataCheckRow(row)});
    const QStringList users = database.table("user");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QStringList expected = factoryLimits;
    for (const QString &limit : limits)
        expected << limit;
    QCOMPARE(itemLimits(database), expected); // the factory's items come first
    QCOMPARE(database.table("user"), users);
    QCOMPARE(
        database.rows("select id, name from assayItem where id between 9001 and 9999 order by id"),
        QStringList({"9001, 'my ''T'''", "9002, ''", "9003, 'T'", "9004, 'T'"}));
}

void TestProfileV10Conversions::movesLimitsOfAllRows()
{
    const TestDatabase database("profile.db");
    makeAt(database, 4,
           moreItems
               + QStringList{
                   dataCheckRow("9, 1, 'V.T', 1, 2, 0, null, null, null, 0, null, null, null"),
                   dataCheckRow("null, 1, 'V.T', 3, 4, 0, null, null, null, 0, null, null, null"),
                   dataCheckRow("8, 0, null, null, null, 0, null, null, null, 1, 'II.P', 5, 6")});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(itemLimits(database),
             factoryLimits
                 + QStringList(
                     {"22, 0.0, 0.0, 5.0, 6.0, 0.0, 0.0", "9003, 1.0, 2.0, 0.0, 0.0, 0.0, 0.0"}));
}

void TestProfileV10Conversions::keepsTheRowsThatLimitsComeFrom()
{
    const TestDatabase database("profile.db");
    makeAt(database, 4,
           moreItems
               + QStringList{dataCheckRow("8, 1, 'II.T', 1, 2, 1, 'II.T', 2, 3, 1, 'II.T', 4, 5")});
    const QStringList before = database.table("dataCheck");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(before.size(), 1);
    QCOMPARE(database.rows("select * from dataCheck where assayTemplateId = 8"), before);
}

void TestProfileV10Conversions::takesFlagsAsBooleans_data()
{
    QTest::addColumn<QString>("flag");
    QTest::addColumn<bool>("set");

    QTest::newRow("1") << "1" << true;
    QTest::newRow("2") << "2" << true;
    QTest::newRow("-1") << "-1" << true;
    QTest::newRow("text 1") << "'1'" << true;
    QTest::newRow("true") << "'true'" << true;
    QTest::newRow("0") << "0" << false;
    QTest::newRow("0.0") << "0.0" << false;
    QTest::newRow("text 0") << "'0'" << false;
    QTest::newRow("false") << "'false'" << false;
    QTest::newRow("empty") << "''" << false;
    QTest::newRow("null") << "null" << false;
}

void TestProfileV10Conversions::takesFlagsAsBooleans()
{
    QFETCH(QString, flag);
    QFETCH(bool, set);
    const TestDatabase database("profile.db");
    makeAt(
        database, 4,
        moreItems
            + QStringList{
                "drop table dataCheck",
                "create table dataCheck(assayTemplateId integer, report, reportItemFullName,"
                " reportLower, reportUpper, mark, markItemFullName, redilution,"
                " redilutionItemFullName, redilutionLower, redilutionUpper, repeat,"
                " repeatItemFullName, repeatLower, repeatUpper)",
                dataCheckRow(
                    QString("8, %1, 'II.T', 1, 2, %1, 'II.T', 3, 4, %1, 'II.T', 5, 6").arg(flag))});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(itemLimits(database),
             factoryLimits
                 + (set ? QStringList{"21, 1.0, 2.0, 5.0, 6.0, 3.0, 4.0"} : QStringList()));
}

void TestProfileV10Conversions::passesWithoutLimits()
{
    const TestDatabase database("profile.db");
    makeAt(database, 4, moreItems);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(itemLimits(database), factoryLimits);
}

void TestProfileV10Conversions::movesLimitsBelowVersion5Only_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("limits");

    QTest::newRow("4") << 4 << QStringList{"21, 1.5, 20.0, 0.0, 0.0, 0.0, 0.0"};
    QTest::newRow("5") << 5 << QStringList();
    QTest::newRow("9") << 9 << QStringList();
}

/// Shows: PRO-3
void TestProfileV10Conversions::movesLimitsBelowVersion5Only()
{
    QFETCH(int, stored);
    QFETCH(QStringList, limits);
    const TestDatabase database("profile.db");
    const QStringList noLimits{"update assayItem set lowerReport=0, upperReport=0, lowerRepeat=0,"
                               " upperRepeat=0, lowerRedilution=0, upperRedilution=0"};
    makeAt(database, stored,
           (stored < 5 ? QStringList() : noLimits) + moreItems
               + QStringList{dataCheckRow(
                   "8, 1, 'II.T', 1.5, 20, 0, null, null, null, 0, null, null, null")});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(itemLimits(database), factoryLimits + limits);
}

void TestProfileV10Conversions::failsAtLimits_data()
{
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("error");  // how its text begins
    QTest::addColumn<QString>("logged"); // how the statement begins; none is logged if empty

    const QString atComma = R"(near \",\": syntax error)";
    const QString atWhere = R"(near \"WHERE\": syntax error)";
    const QString atAnd = R"(near \"AND\": syntax error)";
    const QString noLower =
        "UPDATE assayItem SET lowerReport=, upperReport=20 WHERE assayTemplateId=8 AND name='T'";
    const QString noUpper =
        "UPDATE assayItem SET lowerReport=1.5, upperReport= WHERE assayTemplateId=8 AND name='T'";
    const QString noTemplate =
        "UPDATE assayItem SET lowerReport=1.5, upperReport=20 WHERE assayTemplateId= AND name='T'";

    const auto report = [](const QString &templateId, const QString &lower, const QString &upper) {
        return QStringList{
            dataCheckRow(QString("%1, 1, 'II.T', %2, %3, 0, null, null, null, 0, null, null, null")
                             .arg(templateId, lower, upper))};
    };
    QTest::newRow("no lower limit to report") << report("8", "null", "20") << atComma << noLower;
    QTest::newRow("no upper limit to report") << report("8", "1.5", "null") << atWhere << noUpper;
    QTest::newRow("no lower limit to redilute")
        << QStringList{dataCheckRow("8, 0, 'II.T', 1, 2, 1, 'II.P', null, 3, 0, 'II.T', 4, 5")}
        << atComma
        << "UPDATE assayItem SET lowerRedilution=, upperRedilution=3 WHERE assayTemplateId=8"
           " AND name='P'";
    QTest::newRow("no upper limit to redilute")
        << QStringList{dataCheckRow("8, 0, 'II.T', 1, 2, 1, 'II.P', 2, null, 0, 'II.T', 4, 5")}
        << atWhere
        << "UPDATE assayItem SET lowerRedilution=2, upperRedilution= WHERE assayTemplateId=8"
           " AND name='P'";
    QTest::newRow("no lower limit to repeat")
        << QStringList{dataCheckRow("8, 0, 'II.T', 1, 2, 0, 'II.P', 2, 3, 1, 'II.T', null, 5")}
        << atComma
        << "UPDATE assayItem SET lowerRepeat=, upperRepeat=5 WHERE assayTemplateId=8"
           " AND name='T'";
    QTest::newRow("no upper limit to repeat")
        << QStringList{dataCheckRow("8, 0, 'II.T', 1, 2, 0, 'II.P', 2, 3, 1, 'II.T', 4, null")}
        << atWhere
        << "UPDATE assayItem SET lowerRepeat=4, upperRepeat= WHERE assayTemplateId=8"
           " AND name='T'";
    QTest::newRow("report comes first, redilution second")
        << QStringList{dataCheckRow("8, 1, 'II.T', 1, 2, 1, 'II.P', null, 3, 1, 'II.T', null, 5")}
        << atComma
        << "UPDATE assayItem SET lowerRedilution=, upperRedilution=3 WHERE assayTemplateId=8"
           " AND name='P'";
    QTest::newRow("the second row")
        << report("9", "1", "2") + report("8", "null", "20") << atComma << noLower;
    QTest::newRow("of an item that does not exist")
        << QStringList{dataCheckRow(
               "8, 1, 'II.it''s', null, 20, 0, null, null, null, 0, null, null, null")}
        << atComma
        << "UPDATE assayItem SET lowerReport=, upperReport=20 WHERE assayTemplateId=8"
           " AND name='it''s'";

    // texts, which would be SQL
    QTest::newRow("lower limit and another column")
        << report("8", "'1, name=''x'''", "20") << atComma << noLower;
    QTest::newRow("lower limit of a column")
        << report("8", "'upperReport'", "20") << atComma << noLower;
    QTest::newRow("lower limit with a decimal comma")
        << report("8", "'1,5'", "20") << atComma << noLower;
    QTest::newRow("lower limit of a formula") << report("8", "'1+1'", "20") << atComma << noLower;
    QTest::newRow("empty lower limit") << report("8", "''", "20") << atComma << noLower;
    QTest::newRow("upper limit and a comment")
        << report("8", "1.5", "'9 --'") << atWhere << noUpper;
    QTest::newRow("upper limit and a condition")
        << report("8", "1.5", "'9 where 1=1 or 2'") << atWhere << noUpper;
    QTest::newRow("upper limit of a blob")
        << report("8", "1.5", "x'39202d2d'") << atWhere << noUpper;
    QTest::newRow("template of all") << report("'0) or (1=1'", "1.5", "20") << atAnd << noTemplate;
    QTest::newRow("template or all") << report("'8 or 1=1'", "1.5", "20") << atAnd << noTemplate;
    QTest::newRow("template and a comment") << report("'8 --'", "1.5", "20") << atAnd << noTemplate;
    QTest::newRow("template of a column")
        << report("'assayTemplateId'", "1.5", "20") << atAnd << noTemplate;
    QTest::newRow("blank template") << report("' '", "1.5", "20") << atAnd << noTemplate;

    const QString view =
        "create view dataCheck as select id, assayTemplateId, report, reportItemFullName, %1,"
        " reportUpper, mark, markItemFullName, redilution, redilutionItemFullName, redilutionLower,"
        " redilutionUpper, repeat, repeatItemFullName, repeatLower, repeatUpper"
        " from (select rowid as id, * from checks)";
    const QStringList twoRows{
        dataCheckRow("8, 1, 'II.T', 1, 2, 0, null, null, null, 0, null, null, null"),
        dataCheckRow("9, 1, 'V.T', 1, 2, 0, null, null, null, 0, null, null, null"),
        "alter table dataCheck rename to checks"};
    QTest::newRow("no table") << QStringList{"drop table dataCheck"} << ""
                              << "";
    QTest::newRow("the first row cannot be read")
        << twoRows + QStringList{view.arg(unreadable("assayTemplateId = 8", "reportLower"))} << ""
        << "";
    QTest::newRow("the second row cannot be read")
        << twoRows + QStringList{view.arg(unreadable("assayTemplateId = 9", "reportLower"))}
        << "integer overflow"
        << "select * from dataCheck";
}

void TestProfileV10Conversions::failsAtLimits()
{
    QFETCH(QStringList, obstacles);
    QFETCH(QString, error);
    QFETCH(QString, logged);
    const TestDatabase database("profile.db");
    makeAt(database, 4, moreItems + obstacles);

    testFailure(database, error, logged);
}

// ---- display names of templates

/// Shows: PRO-3
void TestProfileV10Conversions::givesTemplatesADisplayName()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(recorder.messages().filter(QRegularExpression("^Warning: ")), QStringList());
    QCOMPARE(database.rows("select count(*) from assayTemplate where displayName = name"),
             database.rows("select count(*) from assayTemplate"));
}

void TestProfileV10Conversions::givesTemplatesTheLayoutWithADisplayName()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows("select name, lower(type), \"notnull\", dflt_value, pk"
                           " from pragma_table_info('assayTemplate')"),
             QStringList({"'id', 'integer', 0, NULL, 1", "'name', 'text', 1, NULL, 0",
                          "'displayName', 'text', 1, NULL, 0", "'class', 'text', 0, NULL, 0",
                          "'displayOrder', 'integer', 0, NULL, 0", "'caliX', 'text', 0, NULL, 0",
                          "'caliY', 'text', 0, NULL, 0", "'funX', 'text', 0, NULL, 0",
                          "'funY', 'text', 0, NULL, 0"}));
    QCOMPARE(database.rows("select info.name from pragma_index_list('assayTemplate') as list,"
                           " pragma_index_info(list.name) as info where \"unique\" order by 1"),
             QStringList({"'displayName'", "'name'"}));
    QCOMPARE(database.schema().filter("assayTemplate_new"), QStringList());
    QCOMPARE(database.schema().filter("TRIGGER afterDeleteAssayTemplate"),
             QStringList{"CREATE TRIGGER afterDeleteAssayTemplate after delete on assayTemplate"
                         " begin"
                         " delete from variable where variable.assayTemplateId = old.id;"
                         " delete from assayItem where assayItem.assayTemplateId = old.id;"
                         " delete from dataCheck where dataCheck.assayTemplateId = old.id;"
                         " end"});
}

void TestProfileV10Conversions::keepsWhatRefersToTemplates()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    database.execute({"create view orders as select name from assayTemplate where displayOrder < 25"
                      " order by displayOrder",
                      "create table mine(id integer references assayTemplate)",
                      "create trigger mineToo after insert on mine"
                      " begin update assayTemplate set class = 'mine' where id = new.id; end"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(recorder.messages().filter(QRegularExpression("^Warning: ")), QStringList());
    QCOMPARE(database.schema().filter(QRegularExpression("orders|mine")),
             QStringList({"CREATE TABLE mine(id integer references assayTemplate)",
                          "CREATE TRIGGER mineToo after insert on mine begin"
                          " update assayTemplate set class = 'mine' where id = new.id; end",
                          "CREATE VIEW orders as select name from assayTemplate"
                          " where displayOrder < 25 order by displayOrder"}));
    QCOMPARE(database.rows("select * from orders"), QStringList({"'PT'", "'APTT'"}));
}

void TestProfileV10Conversions::deletesAllOfATemplateAndNoMore()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;
    QVERIFY(runProfileStep(database, &UpdateProfile::update_v10));
    const QString templates = "select distinct assayTemplateId from %1"
                              " where assayTemplateId between 1 and 5 order by 1";

    database.execute({"delete from assayTemplate where id = 1"});

    QCOMPARE(database.rows(templates.arg("variable")), QStringList{"3"});
    QCOMPARE(database.rows(templates.arg("assayItem")), QStringList({"2", "3", "4", "5"}));
    QCOMPARE(database.rows(templates.arg("dataCheck")), QStringList({"2", "3", "4", "5"}));
    QCOMPARE(database.rows(templates.arg("assayCalibration")), QStringList({"1", "2", "5"}));
}

void TestProfileV10Conversions::copiesTemplatesByColumnName()
{
    const TestDatabase database("profile.db");
    makeAt(database, 7,
           {"drop table assayTemplate",
            "create table assayTemplate(displayName text, funY text, funX text, caliY text,"
            " caliX text, displayOrder integer, class text, name text, id integer primary key)",
            "insert into assayTemplate values"
            "('凝血酶原时间', 'fy', 'fx', 'cy', 'cx', 10, 'c', 'PT', 7),"
            "(null, null, null, null, null, null, null, 'it''s', 3)"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(database.table("assayTemplate"),
             QStringList({"3, 'it''s', 'it''s', NULL, NULL, NULL, NULL, NULL, NULL",
                          "7, 'PT', 'PT', 'c', 10, 'cx', 'cy', 'fx', 'fy'"}));
}

void TestProfileV10Conversions::setsDisplayNamesBelowVersion8Only_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<QString>("displayName");

    const QString addName = "alter table assayTemplate add displayName text";
    const QString setName = "update assayTemplate set displayName = 'Prothrombin' where id = 1";
    QTest::newRow("7") << 7 << QStringList() << "'PT'";
    QTest::newRow("7, with display names") << 7 << QStringList{addName, setName} << "'PT'";
    QTest::newRow("8") << 8 << QStringList{setName} << "'Prothrombin'";
    QTest::newRow("9") << 9 << QStringList{setName} << "'Prothrombin'";
}

void TestProfileV10Conversions::setsDisplayNamesBelowVersion8Only()
{
    QFETCH(int, stored);
    QFETCH(QStringList, statements);
    QFETCH(QString, displayName);
    const TestDatabase database("profile.db");
    makeAt(database, stored, statements);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(database.rows("select displayName from assayTemplate where id = 1"),
             QStringList{displayName});
}

void TestProfileV10Conversions::passesThoughTemplatesStayAsTheyAre_data()
{
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("failing");    // how the failing statement begins
    QTest::addColumn<QStringList>("copied"); // the rows of assayTemplate_new
    QTest::addColumn<bool>("triggerStays");

    const QStringList twoTemplates{
        "drop table assayTemplate",
        "create table assayTemplate(id integer primary key, name text, displayName text,"
        " class text, displayOrder integer, caliX text, caliY text, funX text, funY text)",
        "insert into assayTemplate(id, name, displayName) values(1, 'PT', 'x'), (2, 'FIB', 'y')",
        "create trigger afterDeleteAssayTemplate after delete on assayTemplate"
        " begin delete from variable; end"};
    const QString copiedPt = "1, 'PT', 'PT', NULL, NULL, NULL, NULL, NULL, NULL";

    // Not here, since no content makes them fail once the old table is dropped: the rename and the
    // new trigger.
    QTest::newRow("the new table exists")
        << twoTemplates
            + QStringList{"create table assayTemplate_new(id)",
                          "insert into assayTemplate_new values('mine')"}
        << "-- assay template\\ncreate table assayTemplate_new" << QStringList{"'mine'"} << true;
    QTest::newRow("a column more")
        << twoTemplates + QStringList{"alter table assayTemplate add extra"}
        << R"(INSERT INTO \"assayTemplate_new\")" << QStringList() << true;
    QTest::newRow("the second name is not new")
        << twoTemplates + QStringList{"update assayTemplate set name = 'PT'"}
        << R"(INSERT INTO \"assayTemplate_new\")" << QStringList{copiedPt} << true;
    QTest::newRow("the second has no name")
        << twoTemplates + QStringList{"update assayTemplate set name = null where id = 2"}
        << R"(INSERT INTO \"assayTemplate_new\")" << QStringList{copiedPt} << true;
    QTest::newRow("a view") << twoTemplates
            + QStringList{"delete from assayTemplate where id = 2",
                          "alter table assayTemplate rename to templates",
                          "drop trigger afterDeleteAssayTemplate",
                          "create view assayTemplate as select * from templates",
                          "create trigger afterDeleteAssayTemplate instead of delete"
                          " on assayTemplate begin delete from variable; end"}
                            << "drop table assayTemplate" << QStringList{copiedPt} << false;
}

void TestProfileV10Conversions::passesThoughTemplatesStayAsTheyAre()
{
    QFETCH(QStringList, obstacles);
    QFETCH(QString, failing);
    QFETCH(QStringList, copied);
    QFETCH(bool, triggerStays);
    const TestDatabase database("profile.db");
    makeAt(database, 7, obstacles);
    const QStringList before = database.rows("select * from assayTemplate");
    const QStringList trigger = database.schema().filter("TRIGGER afterDeleteAssayTemplate");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    const QStringList all = warnings(recorder);
    QVERIFY2(all.size() == 1, qUtf8Printable(all.join('\n')));
    QVERIFY2(all.constFirst().contains("[ \"" + failing, Qt::CaseInsensitive),
             qUtf8Printable(all.constFirst()));
    QCOMPARE(database.rows("select * from assayTemplate"), before);
    QCOMPARE(database.table("assayTemplate_new"), copied);
    QCOMPARE(trigger.size(), 1);
    QCOMPARE(database.schema().filter("TRIGGER afterDeleteAssayTemplate"),
             triggerStays ? trigger : QStringList());
    // what comes after it
    QCOMPARE(database.rows("select value from profile where name = 'ATIII/kinetic/start'"),
             QStringList{"'5'"});
}

// ---- names of reagents

/// Shows: PRO-4
void TestProfileV10Conversions::renamesReagentsOfTheSample()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(renameLines(recorder),
             QStringList({renameLine("program/DDplus/name1", "R1(DD)", "Buffer(DD)"),
                          renameLine("program/DD/name1", "R1(DD)", "Buffer(DD)"),
                          renameLine("program/DD/name2", "R2(DD)", "Latex"),
                          renameLine("program/FDP/name1", "R1(FDP)", "Buffer(FDP)"),
                          renameLine("program/FDP/name2", "R2(FDP)", "FDP")}));
    QCOMPARE(database.rows("select name, value from profile where name like 'program/%'"
                           " order by rowid"),
             QStringList({"'program/PT/name1', 'PT'", "'program/PT/reagent1', 100",
                          "'program/PT/volume', 50", "'program/APTT/name1', 'APTT'",
                          "'program/APTT/name2', 'CaCl2'", "'program/FIB/name1', 'FIB'",
                          "'program/FIB/diluent', 'Buffer(FIB)'", "'program/DD/name1', 'R1(DD)'",
                          "'program/DD/name2', 'R2(DD)'", "'program/DD/diluent', 'Saline'",
                          "'program/FDP/name1', 'R1(FDP)'", "'program/FDP/name2', 'R2(FDP)'",
                          "'program/DDplus/name1', 'R1(DD)'"}));
    QCOMPARE(database.rows("select name from reagent where name in ('Rinse', 'X2', 'Latex', 'FDP',"
                           " 'Buffer(DD)', 'Buffer(FDP)', 'R1(DD)', 'R2(DD)', 'R1(FDP)', 'R2(FDP)')"
                           " order by name"),
             QStringList({"'R1(DD)'", "'R1(FDP)'", "'R2(DD)'", "'R2(FDP)'", "'X2'"}));
}

/// Shows: PRO-4
void TestProfileV10Conversions::renamesReagents()
{
    const TestDatabase database("profile.db");
    makeAt(
        database, 9,
        {"delete from reagent",
         "insert into reagent values(1, 'a', 2, 'Buffer(DD)', 1, 2, 3),"
         "(2, null, 0, 'Latex', null, null, null), (3, 'c', 7, 'FDP', 4, 5, 6),"
         "(4, 'd', 3, 'Rinse', 7, 8, 9), (5, 5, 2, 'Buffer(FDP)', 1.5, 'x', 0),"
         "(6, 'f', 0, 'latex', 1, 1, 1), (7, 'g', 0, 'FDP ', 1, 1, 1), (8, 'h', 0, 'PT', 1, 1, 1),"
         "(9, 'i', 0, 'buffer(dd)', 1, 1, 1), (10, 'j', 0, 'FDP ct', 1, 1, 1)"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(
        database.table("reagent"),
        QStringList({"1, 'a', 2, 'R1(DD)', 1, 2, 3", "2, NULL, 0, 'R2(DD)', NULL, NULL, NULL",
                     "3, 'c', 7, 'R2(FDP)', 4, 5, 6", "4, 'd', 3, 'X2', 7, 8, 9",
                     "5, 5, 2, 'R1(FDP)', 1.5, 'x', 0", "6, 'f', 0, 'latex', 1, 1, 1",
                     "7, 'g', 0, 'FDP ', 1, 1, 1", "8, 'h', 0, 'PT', 1, 1, 1",
                     "9, 'i', 0, 'buffer(dd)', 1, 1, 1", "10, 'j', 0, 'FDP ct', 1, 1, 1",
                     "11, NULL, 2, 'Buffer(ATIII)', 6500, 200, 6",
                     "12, NULL, 0, 'R1(XA)', 2000, 200, 3", "13, NULL, 0, 'R2(XA)', 2000, 200, 3",
                     "14, NULL, 2, 'Buffer(XA)', 6500, 200, 6"}));
}

void TestProfileV10Conversions::findsKeysByTheirPattern_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("found");

    const auto add = [](const QString &key, bool found) {
        QTest::newRow(qUtf8Printable(key)) << key << found;
    };
    add("program/DD/name1", true);
    add("program/DD/name2", true);
    add("program/DD/namex", true);
    add("program/DD/name_", true);
    add("program/DD/name演", true);
    add("program/DD/diluent", true);
    add("program/D_2/name1", true);
    add("program/2/diluent", true);
    add("program/DD/name", false);
    add("program/DD/nam1", false);
    add("program/DD/name12", false);
    add("program/DD/diluent1", false);
    add("program/DD/reagent1", false);
    add("program/DD", false);
    add("other/DD/name1", false);
    add(" program/DD/name1", false);

    // found by the query, which ignores case; the pattern does not
    add("PROGRAM/DD/name1", false);
    add("program/DD/NAME1", false);
    add("program/DD/Diluent", false);
    add("program/dd/name1", true);

    // letters, digits and underscores only
    add("program/D-2/name1", false);
    add("program/D D/name1", false);
    add("program/DD+/diluent", false);
    add("program/演/name1", false);
    add("program/DÄ/diluent", false);
    add("program//name1", false);

    // more parts: the pattern has to begin the key, not to end it, and its e may be missing
    add("program/DD/x/name1", false);
    add("program/DD/name/name1", true);
    add("program/DD/nam/name1", true);
    add("program/DD/nam's/diluent", true);
    add("program/DD/na/name1", false);
    add("program/DD/diluents/name1", true);
    add("program/program/DD/name1", false);
    add("program/-/program/DD/name1", false);
    add("program/DD/program/DD/diluent", false);
    add("program/program/name1", true);
}

void TestProfileV10Conversions::findsKeysByTheirPattern()
{
    QFETCH(QString, key);
    QFETCH(bool, found);
    QString literal = key;
    literal.replace('\'', "''");
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           {"delete from profile where name like 'program/%'",
            QString("insert into profile values('%1', 'Buffer(DD)')").arg(literal)});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows(QString("select value from profile where name = '%1'").arg(literal)),
             QStringList{found ? "'R1(DD)'" : "'Buffer(DD)'"});
    QCOMPARE(renameLines(recorder),
             found ? QStringList{renameLine(key, "R1(DD)", "Buffer(DD)")} : QStringList());
}

void TestProfileV10Conversions::findsKeysByTheirWholeValue()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           {"delete from profile where name like 'program/%'",
            "insert into profile values('program/A/name1', 'fdp'), ('program/A/name2', 'FDP '),"
            " ('program/A/name3', 'FDP'), ('program/A/name4', null), ('program/A/name5', ''),"
            " ('program/A/name6', 100), ('program/A/name7', 'Rinse'),"
            " ('program/A/name8', 'R1(DD)'), ('program/A/diluent', 'Buffer(FDP)'),"
            " ('other', 'FDP')"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows("select name, value from profile where name like 'program/%'"
                           " or name = 'other' order by rowid"),
             QStringList({"'program/A/name1', 'fdp'", "'program/A/name2', 'FDP '",
                          "'program/A/name3', 'R2(FDP)'", "'program/A/name4', NULL",
                          "'program/A/name5', ''", "'program/A/name6', 100",
                          "'program/A/name7', 'Rinse'", "'program/A/name8', 'R1(DD)'",
                          "'program/A/diluent', 'R1(FDP)'", "'other', 'FDP'"}));
}

void TestProfileV10Conversions::replacesTheKeyReadLastFirst()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           {"delete from profile where name like 'program/%'",
            "insert into profile values('program/B/name1', 'Latex'), ('program/A/name1', 'FDP'),"
            " ('program/A/name2', 'Latex'), ('program/C/diluent', 'Latex'),"
            " ('program/A/diluent', 'Buffer(DD)')"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(renameLines(recorder),
             QStringList({renameLine("program/A/diluent", "R1(DD)", "Buffer(DD)"),
                          renameLine("program/C/diluent", "R2(DD)", "Latex"),
                          renameLine("program/A/name2", "R2(DD)", "Latex"),
                          renameLine("program/B/name1", "R2(DD)", "Latex"),
                          renameLine("program/A/name1", "R2(FDP)", "FDP")}));
}

void TestProfileV10Conversions::replacesKeysOfReagentsThatAreGone()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           {"delete from reagent", "delete from profile where name like 'program/%'",
            "insert into profile values('program/DD/name1', 'Buffer(DD)')"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows("select value from profile where name = 'program/DD/name1'"),
             QStringList{"'R1(DD)'"});
}

void TestProfileV10Conversions::replacesKeysThatAreDeletedLater()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           {"delete from profile where name like 'program/%'",
            "insert into profile values('program/ATIII/name1', 'Latex')"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(renameLines(recorder),
             QStringList{renameLine("program/ATIII/name1", "R2(DD)", "Latex")});
    QCOMPARE(database.rows("select * from profile where name like 'program/%'"), QStringList());
}

void TestProfileV10Conversions::renamesRinseUnlessX2Exists_data()
{
    QTest::addColumn<QStringList>("reagents");
    QTest::addColumn<QStringList>("renamed");

    QTest::newRow("Rinse") << QStringList{"'Rinse'"} << QStringList{"'X2'"};
    QTest::newRow("X2 before Rinse")
        << QStringList{"'X2'", "'Rinse'"} << QStringList{"'X2'", "'Rinse'"};
    QTest::newRow("X2 after Rinse")
        << QStringList{"'Rinse'", "'X2'"} << QStringList{"'Rinse'", "'X2'"};
    QTest::newRow("x2") << QStringList{"'x2'", "'Rinse'"} << QStringList{"'x2'", "'X2'"};
    QTest::newRow("rinse") << QStringList{"'rinse'"} << QStringList{"'rinse'"};
    QTest::newRow("neither") << QStringList{"'PT'"} << QStringList{"'PT'"};
}

/// Shows: PRO-4
void TestProfileV10Conversions::renamesRinseUnlessX2Exists()
{
    QFETCH(QStringList, reagents);
    QFETCH(QStringList, renamed);
    const TestDatabase database("profile.db");
    makeAt(
        database, 9,
        {"delete from reagent", "insert into reagent(name) values(" + reagents.join("), (") + ')'});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(
        database.rows(
            QString("select name from reagent where id <= %1 order by id").arg(reagents.size())),
        renamed);
}

void TestProfileV10Conversions::renamesThoughOnlyTheNewNameExists()
{
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           {"delete from reagent",
            "insert into reagent(name) values('R1(DD)'), ('Latex'), ('R1(FDP)'), ('FDP')"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows("select name from reagent where id <= 4 order by id"),
             QStringList({"'R1(DD)'", "'R2(DD)'", "'R1(FDP)'", "'R2(FDP)'"}));
}

void TestProfileV10Conversions::failsAtReagents_data()
{
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("error");  // how its text begins
    QTest::addColumn<QString>("logged"); // how the statement begins

    const auto addExisting = [](const QString &from, const QString &to) {
        QTest::addRow("%s exists", qUtf8Printable(to))
            << QStringList{QString("insert into reagent(name) values('%1'), ('%2')").arg(from, to)}
            << "UNIQUE constraint failed: reagent.name"
            << QString("update or fail reagent set name='%1' where name='%2'").arg(to, from);
    };
    addExisting("Buffer(DD)", "R1(DD)");
    addExisting("Latex", "R2(DD)");
    addExisting("Buffer(FDP)", "R1(FDP)");
    addExisting("FDP", "R2(FDP)");
    QTest::newRow("Rinse cannot be renamed")
        << QStringList{"insert into reagent(name) values('Rinse')",
                       "create trigger keep before update on reagent when old.name = 'Rinse'"
                       " begin select raise(abort, 'kept'); end"}
        << "kept"
        << "update or ignore reagent set name='X2' where name='Rinse'";

    const QStringList keys{"insert into profile values('program/DD/name1', 'Latex'),"
                           " ('program/DD/name2', 'Latex')"};
    const QStringList view{
        "alter table profile rename to settings",
        "create view profile as select name, " + unreadable("name = 'program/DD/name%1'", "value")
            + " from (select rowid as id, name, value from settings)",
        "create trigger write instead of insert on profile"
        " begin insert into settings values(new.name, new.value); end",
        "create trigger change instead of update on profile"
        " begin update settings set value = new.value where name = old.name; end",
        "create trigger remove instead of delete on profile"
        " begin delete from settings where name = old.name; end"};
    const QString select = "select name, value from profile where name like 'program/%/name_'"
                           " or name like 'program/%/diluent'";
    QTest::newRow("the first key cannot be read")
        << keys + QStringList(view).replaceInStrings("%1", "1") << "integer overflow" << select;
    QTest::newRow("the second key cannot be read")
        << keys + QStringList(view).replaceInStrings("%1", "2") << "integer overflow" << select;
    // Not here, since no content makes it fail while the other updates of keys pass: that its update
    // is not possible at all.
    QTest::newRow("a key cannot be changed") << keys
            + QStringList{"create trigger keep before update on profile"
                          " when old.name = 'program/DD/name1'"
                          " begin select raise(abort, 'kept'); end"}
                                             << "kept"
                                             << "update profile set value=:value where name=:name";
}

void TestProfileV10Conversions::failsAtReagents()
{
    QFETCH(QStringList, obstacles);
    QFETCH(QString, error);
    QFETCH(QString, logged);
    const TestDatabase database("profile.db");
    makeAt(database, 9,
           QStringList{"delete from reagent", "delete from profile where name like 'program/%'"}
               + obstacles);

    testFailure(database, error, logged);
}

QTEST_GUILESS_MAIN(TestProfileV10Conversions)
#include "tst_profile_v10_conversions.moc"
