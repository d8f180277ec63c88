// SPDX-License-Identifier: MIT
/// The page of a report: each fact has its place.

#include "parsedpage.h"
#include "samplereport.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>

using namespace coagulation::report;

namespace {

Report goodRehearsal()
{
    Report report = calmReport();
    report.use = Use::Rehearsal;
    report.exitCode = 0;
    return report;
}

Report withPoint(Report report)
{
    report.attention << Attention{Attention::Kind::Warning, "a point", "record"};
    return report;
}

Report failedRehearsal()
{
    Report report = goodRehearsal();
    report.exitCode = 1;
    report.problem = "vardo ended with exit code 1.";
    return report;
}

Report wrongComparison()
{
    Report report = calmReport();
    report.databases[0].problem = "The database is damaged.";
    return report;
}

/// \return a report whose profile database has one table
Report reportOf(const TableFacts &table)
{
    Report report = goodRehearsal();
    report.databases[0].tables = {table};
    return report;
}

TableFacts tableWithChangedRows(qsizetype count)
{
    TableFacts table;
    table.name = "profile";
    table.rowsBefore = count;
    table.rowsAfter = count;
    table.changed = count;
    for (qsizetype i = 0; i < count; ++i)
        table.changedRows << ChangedRow{QString("id = %1").arg(i), {{"value", "1", "2"}}};
    return table;
}

} // namespace

class TestPage : public QObject {
    Q_OBJECT

private slots:
    void givesTheVerdictInColourSymbolAndWords_data();
    void givesTheVerdictInColourSymbolAndWords();
    void saysThatARehearsalChangedNoOriginal();
    void doesNotSayThatAComparisonChangedNothing();
    void answersWhatMostPeopleAsk();
    void answersThatThereIsNothingToCalibrate();
    void linksEachPointToItsPlace();
    void saysThatNothingNeedsAttention();
    void groupsManyPointsByKind();
    void givesFewPointsNoHeadings();
    void foldsManyPointsOfAKind();

    void namesVersionsSizesAndChecks();
    void saysWhatHappenedToADatabase_data();
    void saysWhatHappenedToADatabase();
    void showsEachStep();
    void opensStepsIfOneFailed();
    void countsTheRowsOfEachTable();
    void foldsTablesWithoutDifference();
    void showsChangedRowsBeforeAndAfter();
    void foldsMoreThan200ChangedRows_data();
    void foldsMoreThan200ChangedRows();
    void saysHowManyRowsAreNotShown();
    void showsRowsOfOneSideAndThoseWithANewKey();
    void showsObjectsThatAreGoneOrNew();
    void saysWhyATableWasNotCompared();
    void saysThatPatientsAreHidden_data();
    void saysThatPatientsAreHidden();

    void showsEachCurveAsPictureAndNumbers();
    void listsCurvesThatStayInvalid();
    void marksWarningsOfTheLog();
    void endsWithTheRecord();
    void leavesOutWhatThereIsNothingOf();
};

void TestPage::givesTheVerdictInColourSymbolAndWords_data()
{
    QTest::addColumn<Report>("report");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("words");

    QTest::newRow("rehearsal, good") << goodRehearsal() << "good"
                                     << "✓ Works The upgrade works";
    QTest::newRow("rehearsal, points") << withPoint(goodRehearsal()) << "look"
                                       << "! Works, look below The upgrade works";
    QTest::newRow("rehearsal, failed") << failedRehearsal() << "bad"
                                       << "✗ Fails The upgrade fails";
    QTest::newRow("comparison, good") << calmReport() << "good"
                                      << "✓ In order The upgrade worked";
    QTest::newRow("comparison, points") << withPoint(calmReport()) << "look"
                                        << "! Look below The upgrade worked";
    Report later = calmReport();
    later.databases[0].versionBefore = later.databases[0].versionAfter;
    QTest::newRow("comparison, nothing upgraded") << later << "look"
                                                  << "! Not upgraded Nothing was upgraded";
    later.use = Use::Rehearsal;
    QTest::newRow("rehearsal, nothing to upgrade") << later << "look"
                                                   << "! Nothing to do There is nothing to upgrade";
    QTest::newRow("comparison, wrong") << wrongComparison() << "bad"
                                       << "✗ Wrong Something is wrong";
}

/// Shows: REP-13
void TestPage::givesTheVerdictInColourSymbolAndWords()
{
    QFETCH(Report, report);
    QFETCH(QString, kind);
    QFETCH(QString, words);

    const ParsedPage page(report);

    const ParsedPage::Element verdict = page.withId("verdict");
    QCOMPARE(verdict.attributes.value("class"), "verdict " + kind);
    QVERIFY2(verdict.text.startsWith(words), qUtf8Printable(verdict.text));
}

void TestPage::saysThatARehearsalChangedNoOriginal()
{
    const ParsedPage page(goodRehearsal());

    QVERIFY(page.elements().constFirst().text.contains(
        "The databases that the laboratory works with are unchanged."));
}

void TestPage::doesNotSayThatAComparisonChangedNothing()
{
    const ParsedPage page(calmReport());

    QVERIFY(!page.elements().constFirst().text.contains("unchanged"));
}

/// Shows: REP-13
void TestPage::answersWhatMostPeopleAsk()
{
    const ParsedPage page(sampleReport());

    QCOMPARE(page.textsWithin("answers", "li"),
             QStringList({"Would the upgrade work? No",
                          "How long does it take? 3.5 s on this computer, without the copying",
                          "Which curves must be calibrated again? Invalid: II, AT III "
                          "Fitted once more: FIB, DD, AT "
                          "Of a calibration with another method: DD",
                          "Which settings changed? Values were overwritten in profile"}));
}

void TestPage::answersThatThereIsNothingToCalibrate()
{
    const ParsedPage page(calmReport());

    QCOMPARE(page.textsWithin("answers", "li"),
             QStringList(
                 {"Is anything wrong? No",
                  "Which curves must be calibrated again? None because of this upgrade: no curve "
                  "is invalid, none was fitted once more, and no calibration has another method",
                  "Which settings changed? No value was overwritten"}));
}

/// Shows: REP-12
void TestPage::linksEachPointToItsPlace()
{
    const Report report = sampleReport();

    const ParsedPage page(report);

    QStringList links;
    for (const ParsedPage::Element &link : page.within("attention", "a"))
        links << link.attributes.value("href") + ' ' + link.text;
    QStringList expected;
    for (const Attention &point : report.attention)
        expected << '#' + point.anchor + ' ' + point.text;
    QCOMPARE(links, expected);
}

void TestPage::saysThatNothingNeedsAttention()
{
    const ParsedPage page(calmReport());

    QCOMPARE(page.textsWithin("attention", "p"), QStringList{"Nothing needs attention."});
}

void TestPage::groupsManyPointsByKind()
{
    const ParsedPage page(sampleReport());

    QCOMPARE(page.textsWithin("attention", "h3"),
             QStringList({"Failures (1)", "Standard curves that are invalid (1)",
                          "Standard curves that were fitted once more (1)",
                          "Calibrations to check (1)", "Rows that did not arrive (1)",
                          "Columns, tables, indexes, triggers and views that are gone (1)",
                          "Values of yours that were overwritten (1)",
                          "Reagent identifiers that changed (1)", "Versions that were lowered (1)",
                          "Warnings of the log (1)"}));
}

void TestPage::givesFewPointsNoHeadings()
{
    const ParsedPage page(withPoint(goodRehearsal()));

    QCOMPARE(page.textsWithin("attention", "h3"), QStringList());
    QCOMPARE(page.textsWithin("attention", "li"), QStringList{"a point"});
}

void TestPage::foldsManyPointsOfAKind()
{
    Report report = goodRehearsal();
    for (int i = 0; i < 25; ++i)
        report = withPoint(report);

    const ParsedPage page(report);

    QCOMPARE(page.within("attention", "li").size(), 25);
    QCOMPARE(page.textsWithin("attention", "summary"), QStringList{"5 more"});
}

void TestPage::namesVersionsSizesAndChecks()
{
    const QStringList rows = ParsedPage(sampleReport()).rowsWithin("database-data");

    QVERIFY(rows.contains("Version | 2 | 12"));
    QVERIFY(rows.contains("Newest version known | 12 | 12"));
    QVERIFY(rows.contains("Size | 1.0 MB | 2.1 MB"));
    QVERIFY(rows.contains("Check of the file | ok, nothing found | row 3 missing from index "
                          "patient_index"));
}

void TestPage::saysWhatHappenedToADatabase_data()
{
    QTest::addColumn<DatabaseFacts>("database");
    QTest::addColumn<QString>("sentences");

    DatabaseFacts database = sampleReport().databases.at(2);
    QTest::newRow("upgraded") << database
                              << "It went from version 3 to version 2. 1 step passed. The upgrade "
                                 "took 1.2 s.";
    database.versionBefore.reset();
    database.milliseconds.reset();
    QTest::newRow("without a version")
        << database << "It went from no version to version 2. 1 step passed.";
    database.versionBefore = 2;
    database.steps.clear();
    QTest::newRow("up to date") << database << "It stays at version 2.";
    database.steps << StepFacts{"update_v3()", StepResult::Fail, 1};
    QTest::newRow("failed") << database << "It stays at version 2. A step failed.";
    QTest::newRow("missing") << sampleReport().databases.at(3) << "There is no such database.";
}

void TestPage::saysWhatHappenedToADatabase()
{
    QFETCH(DatabaseFacts, database);
    QFETCH(QString, sentences);
    Report report = goodRehearsal();
    database.name = "profile";
    report.databases = {database};

    const ParsedPage page(report);

    QCOMPARE(page.textsWithin("database-profile", "p", "summary"), QStringList{sentences});
}

void TestPage::showsEachStep()
{
    const QStringList rows = ParsedPage(sampleReport()).rowsWithin("database-data");

    QVERIFY(rows.contains("update_v1() | – SKIP | "));
    QVERIFY(rows.contains("update_v30() | ✓ PASS | 1.2 s"));
    QVERIFY(rows.contains("update_v12() | ✗ FAIL | 7 ms"));
}

void TestPage::opensStepsIfOneFailed()
{
    const ParsedPage page(sampleReport());

    const auto isOpen = [&page](const QString &database) {
        return page.within(database, "details").constFirst().attributes.contains("open");
    };
    QVERIFY(isOpen("database-data"));
    QVERIFY(!isOpen("database-qc"));
}

void TestPage::countsTheRowsOfEachTable()
{
    const QStringList rows = ParsedPage(sampleReport()).rowsWithin("database-profile");

    QVERIFY(
        rows.contains("profile | 1,200 | 1,234 | 35 | 1 | 2 | 2 | new: remark, unit gone: old"));
    QVERIFY(rows.contains("reagent_unmoved | – | 3 |  |  |  |  | "));
    QVERIFY(rows.contains("notes | 4 | – |  | 4 |  |  | "));
}

void TestPage::foldsTablesWithoutDifference()
{
    const ParsedPage page(sampleReport());

    QVERIFY(
        page.textsWithin("database-profile", "summary").contains("1 table without any difference"));
    QCOMPARE(page.textsWithin("table-profile-2", "th"), QStringList{"reagent"});
}

void TestPage::showsChangedRowsBeforeAndAfter()
{
    const QStringList rows = ParsedPage(sampleReport()).rowsWithin("table-profile-1");

    QVERIFY(rows.contains("name = 'site' 'Site' | value | 'mine' | 'theirs' | ● overwritten"));
    QVERIFY(rows.contains("name = 'x' | value | NULL | 1 | "));
    QVERIFY(rows.contains("remark | '1' | 1.0 | "));
    QVERIFY(rows.contains("value | 2 | 1")); // by column
}

void TestPage::foldsMoreThan200ChangedRows_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("summaries");

    QTest::newRow("200") << 200 << QStringList();
    QTest::newRow("201") << 201 << QStringList{"Show 201 rows changed"};
}

void TestPage::foldsMoreThan200ChangedRows()
{
    QFETCH(int, count);
    QFETCH(QStringList, summaries);

    const ParsedPage page(reportOf(tableWithChangedRows(count)));

    QCOMPARE(page.textsWithin("table-profile-1", "summary"), summaries);
    QCOMPARE(page.within("table-profile-1", "th", "name").size(), count);
}

void TestPage::saysHowManyRowsAreNotShown()
{
    TableFacts table = tableWithChangedRows(20);
    table.changed = 3'000;

    const ParsedPage page(reportOf(table));

    QVERIFY(page.textsWithin("table-profile-1", "caption").contains("20 of 3,000 rows changed"));
}

void TestPage::showsRowsOfOneSideAndThoseWithANewKey()
{
    const ParsedPage page(sampleReport());

    const QStringList rows = page.rowsWithin("table-profile-1");
    QVERIFY(rows.contains("name = 'new' | name 'new' value NULL"));
    QVERIFY(rows.contains("name = 'gone' | name 'gone' value 1.0"));
    QVERIFY(rows.contains("name = 'a' → name = 'b' | value X'00FF'"));
    const QStringList captions = page.textsWithin("table-profile-1", "caption");
    QVERIFY(captions.contains("1 of 35 rows added"));
    QVERIFY(captions.contains("1 row removed"));
    QVERIFY(captions.contains("2 rows with a new key"));
}

void TestPage::showsObjectsThatAreGoneOrNew()
{
    const QStringList rows = ParsedPage(sampleReport()).rowsWithin("objects-profile");

    QVERIFY(rows.contains("gone | index | curve_index | curve"));
    QVERIFY(rows.contains("new | trigger | reagent_trigger | reagent"));
}

void TestPage::saysWhyATableWasNotCompared()
{
    const ParsedPage page(sampleReport());

    QCOMPARE(page.textsWithin("table-data-2", "p", "problem"),
             QStringList{"The table patient could not be read."});
}

void TestPage::saysThatPatientsAreHidden_data()
{
    QTest::addColumn<bool>("examples");

    QTest::newRow("hidden") << false;
    QTest::newRow("shown") << true;
}

void TestPage::saysThatPatientsAreHidden()
{
    QFETCH(bool, examples);
    Report report = sampleReport();
    report.examplesOfPatients = examples;

    const ParsedPage page(report);

    const auto isHidden = [&page](const QString &database) {
        return page.withId(database).text.contains("The option --examples shows some of the rows.");
    };
    QCOMPARE(isHidden("database-data"), !examples);
    QVERIFY(!isHidden("database-profile"));
}

/// Shows: REP-14
void TestPage::showsEachCurveAsPictureAndNumbers()
{
    const ParsedPage page(sampleReport());

    QCOMPARE(page.within("curve-1", "svg").size(), 1);
    const QStringList rows = page.rowsWithin("curve-1");
    QVERIFY(rows.contains("Validity | ✓ valid | ✓ valid"));
    QVERIFY(rows.contains("Date | 2016-04-02 | 2026-11-22"));
    QVERIFY(rows.contains("Correlation | 0.95 | 1"));
    QVERIFY(rows.contains("Coefficient b | -1.03 | -1"));
    QVERIFY(page.withId("curve-1").text.contains(
        "Largest difference between both curves over the calibrated range: 6.7 % of the result"));
    QVERIFY(page.withId("curve-3").text.contains("This curve is invalid."));
    QCOMPARE(page.within("curve-4", "svg").size(), 0);
    QVERIFY(page.withId("curve-4").text.contains("There is no picture"));
}

void TestPage::listsCurvesThatStayInvalid()
{
    Report report = calmReport();
    report.databases[0].otherInvalidCurves = QStringList{"AT", "II"};

    const ParsedPage page(report);

    QCOMPARE(page.textsWithin("curves", "li"), QStringList({"AT", "II"}));
}

void TestPage::marksWarningsOfTheLog()
{
    const ParsedPage page(sampleReport());

    QCOMPARE(page.withId("log-1").text, QString("Debug: Updating /lab/profile.db 3 ms"));
    QCOMPARE(page.withId("log-2").text, QString("! Warning: no such table: x 12 ms"));
    QCOMPARE(page.withId("log-2").attributes.value("class"), QString("warning"));
}

/// Shows: REP-19
void TestPage::endsWithTheRecord()
{
    const QStringList rows = ParsedPage(sampleReport()).rowsWithin("record");

    QVERIFY(rows.contains("Time | 2026-11-22 09:35:43 UTC+01:00"));
    QVERIFY(rows.contains("Computer | workstation"));
    QVERIFY(rows.contains("User | technician"));
    QVERIFY(rows.contains("vardo that ran | /usr/bin/vardo"));
    QVERIFY(rows.contains("SQLite | 3.40.1"));
    QVERIFY(rows.contains("before | /lab/profile.db-wal | 4,096 | could not be read"));
    QCOMPARE(rows.filter(QRegularExpression(R"(^after \| /tmp/copies/data.db \| 2,097,152 \| )"
                                            "[0-9a-f]{64}$"))
                 .size(),
             1);
}

void TestPage::leavesOutWhatThereIsNothingOf()
{
    const ParsedPage page(calmReport());

    for (const char *id : {"curves", "log", "objects-profile", "table-profile-2"})
        QVERIFY2(!page.hasId(id), id);
}

QTEST_GUILESS_MAIN(TestPage)
#include "tst_page.moc"
