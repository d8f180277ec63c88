// SPDX-License-Identifier: MIT
/// The laboratory's own rows of a profile database that the steps did not expect.

#include "compared.h"
#include "expectedsteps.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "upgrade.h"

#include "coagulation/report/unexpectedrows.h"

#include <QFile>
#include <QTest>

using namespace coagulation::report;

class TestUnexpectedRows : public QObject {
    Q_OBJECT

private slots:
    void findsThem_data();
    void findsThem();
    void findsThemAfterAnUpgrade_data();
    void findsThemAfterAnUpgrade();
    void findsNoneWithoutAnUpgrade();
    void findsNoneInOtherDatabases();
    void knowsTheAssaysThatTheStepsAdd();
};

namespace {

QStringList atVersion(int version, const QStringList &statements)
{
    return QStringList{"create table version(version integer)",
                       QString("insert into version values(%1)").arg(version)}
    + statements;
}

/// \return a line for each: "ownAssay: TEG, PC"
QStringList linesOf(const QList<UnexpectedRow> &rows)
{
    const QStringList kinds{"ownAssay", "misplacedLimit", "oldSettingName", "curveWithoutExpiry"};
    QStringList lines;
    for (const UnexpectedRow &row : rows)
        lines << QString("%1: %2, %3").arg(kinds.at(int(row.kind)), row.name, row.other);
    return lines;
}

const QString assays =
    "create table assayTemplate(id integer primary key, name text not null unique)";
const QString items =
    "create table assayItem(id integer primary key, assayTemplateId integer, name text)";
const QString calibrations =
    "create table assayCalibration(id integer primary key, assayTemplateId integer, name text)";
const QString checks =
    "create table dataCheck(assayTemplateId integer unique, report integer, reportItemFullName text,"
    " redilution integer, redilutionItemFullName text, repeat integer, repeatItemFullName text)";
const QString settings = "create table profile(name text primary key, value)";
const QString curves = "create table curve(id integer primary key, name text, date date)";

} // namespace

void TestUnexpectedRows::findsThem_data()
{
    QTest::addColumn<int>("versionBefore");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("change");
    QTest::addColumn<QStringList>("lines");

    const QStringList none;
    const QStringList own{assays,
                          items,
                          calibrations,
                          checks,
                          "insert into assayTemplate values(16, 'TEG'), (17, 'PS'), (900, 'Own')",
                          "insert into assayItem values(500, 16, 'R'), (501, 900, 'T')",
                          "insert into dataCheck(assayTemplateId) values(900)"};
    QTest::newRow("an item added to an own assay")
        << 9 << own << QStringList{"insert into assayItem values(40, 16, 'T')"}
        << QStringList{"ownAssay: TEG, PC"};
    QTest::newRow("a calibration added to an own assay")
        << 9 << own << QStringList{"insert into assayCalibration values(14, 16, 'PC')"}
        << QStringList{"ownAssay: TEG, PC"};
    QTest::newRow("a result check added to an own assay")
        << 9 << own << QStringList{"insert into dataCheck(assayTemplateId) values(16)"}
        << QStringList{"ownAssay: TEG, PC"};
    QTest::newRow("nothing added to an own assay") << 9 << own << none << none;
    QTest::newRow("an item added to the factory's assay")
        << 9 << own << QStringList{"insert into assayItem values(45, 17, 'T')"} << none;
    QTest::newRow("an item added to an own assay of another number")
        << 9 << own << QStringList{"insert into assayItem values(502, 900, 'P')"} << none;
    QTest::newRow("an own assay of a later day")
        << 9 << QStringList{assays, items}
        << QStringList{"insert into assayTemplate values(16, 'TEG')",
                       "insert into assayItem values(500, 16, 'R')"}
        << none;
    QTest::newRow("assays without a name")
        << 9
        << QStringList{"create table assayTemplate(id integer primary key)",
                       "insert into assayTemplate values(16)", items}
        << QStringList{"insert into assayItem values(40, 16, 'T')"} << none;

    const auto checked = [](const QString &values) {
        return QStringList{assays,
                           items,
                           checks,
                           "insert into assayTemplate values(5, 'DD'), (8, 'II')",
                           "insert into assayItem values(1, 5, 'T'), (2, 5, 'P'), (3, 8, 'T')",
                           "insert into dataCheck values" + values};
    };
    QTest::newRow("limits of an item")
        << 4 << checked("(5, 1, 'DD.T', 1, 'DD.P', 1, 'DD.T')") << none << none;
    QTest::newRow("limits of unknown items")
        << 4 << checked("(5, 1, 'DD.X', 1, 'DD.Y', 1, 'DD')") << none
        << QStringList{"misplacedLimit: DD.X, ", "misplacedLimit: DD.Y, ", "misplacedLimit: DD, "};
    QTest::newRow("an item in another letter case")
        << 4 << checked("(5, 1, 'DD.t', 0, null, 0, null)") << none
        << QStringList{"misplacedLimit: DD.t, "};
    QTest::newRow("an item of another assay") << 4 << checked("(8, 1, 'DD.T', 0, null, 0, null)")
                                              << none << QStringList{"misplacedLimit: DD.T, II"};
    QTest::newRow("limits that are switched off")
        << 4 << checked("(5, 0, 'DD.X', null, 'DD.X', 0, 'DD.X')") << none << none;
    QTest::newRow("a check of no assay")
        << 4 << checked("(null, 1, 'DD.X', 0, null, 0, null)") << none << none;
    QTest::newRow("limits that an earlier upgrade moved")
        << 5 << checked("(5, 1, 'DD.X', 0, null, 0, null)") << none << none;

    const auto set = [](const QString &name) {
        return QStringList{settings, QString("insert into profile values('%1', 1)").arg(name)};
    };
    for (const char *name :
         {"program/凝血/volume", "program/PT-2/diluent", "program/A B/name3", "program/é/reagent1",
          "凝血/mix/type", "PT-2/mix/times", "Ä/mix/volume", "PT 2/mix/duration"})
        QTest::newRow(name) << 23 << set(name) << none
                            << QStringList{QString("oldSettingName: %1, ").arg(name)};
    for (const char *name :
         {"program/凝血/name4", "program/凝血/dilution/volume", "program//volume", "凝血/mix/speed",
          "program/凝血/r3/mix/type", "凝血/disable", "program/凝血/VOLUME"})
        QTest::newRow(name) << 23 << set(name) << none << none;
    QTest::newRow("a setting that is renamed")
        << 23 << set("program/PT/volume")
        << QStringList{"update profile set name = 'program/PT/dilution/volume'"} << none;
    QTest::newRow("a setting of a later day")
        << 23 << QStringList{settings}
        << QStringList{"insert into profile values('凝血/mix/type', 1)"} << none;
    QTest::newRow("a setting that an earlier upgrade left")
        << 24 << set("凝血/mix/type") << none << none;

    const QStringList dated{
        curves,
        "insert into curve values(1, 'PT', '2020-02-29'), (2, 'II', 'soon'), (3, 'V', null)"};
    const QStringList expiring{"alter table curve add expirationDate date",
                               "update curve set expirationDate = date(date, '+20 years')"};
    QTest::newRow("a curve whose date is none")
        << 22 << dated << expiring << QStringList{"curveWithoutExpiry: II, soon"};
    QTest::newRow("a curve without expiry of before") << 23 << dated + expiring << none << none;
    QTest::newRow("a table less on one side")
        << 4
        << QStringList{assays,
                       items,
                       calibrations,
                       checks,
                       settings,
                       curves,
                       "insert into assayTemplate values(16, 'TEG')"}
        << QStringList{"drop table assayTemplate", "drop table profile", "drop table curve"}
        << none;
}

/// Shows: REP-24
void TestUnexpectedRows::findsThem()
{
    QFETCH(int, versionBefore);
    QFETCH(QStringList, before);
    QFETCH(QStringList, change);
    QFETCH(QStringList, lines);
    const TestDatabase databaseBefore;
    databaseBefore.execute(atVersion(versionBefore, before));
    const TestDatabase databaseAfter;
    databaseAfter.execute(atVersion(newestVersion("profile"), before) + change);

    const DatabaseFacts facts = compared(databaseBefore, databaseAfter, "profile");

    QCOMPARE(facts.problem, QString());
    QCOMPARE(linesOf(facts.unexpectedRows), lines);
}

void TestUnexpectedRows::findsThemAfterAnUpgrade_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("line");

    const QString own =
        "insert into assayTemplate values(%1, 'TEG', %2null, 900, 'T', 'P', 'Log', 'Log')";
    QTest::newRow("protein C") << 5 << own.arg("16", "") << "ownAssay: TEG, PC";
    QTest::newRow("anti-Xa") << 6 << own.arg("22", "") << "ownAssay: TEG, XA";
    QTest::newRow("FM") << 13 << own.arg("23", "'TEG', ") << "ownAssay: TEG, FM";
    QTest::newRow("plasminogen") << 13 << own.arg("26", "'TEG', ") << "ownAssay: TEG, Plg";
    QTest::newRow("APTT2") << 16 << own.arg("33", "'TEG', ") << "ownAssay: TEG, APTT2";
    QTest::newRow("dPT1") << 25 << own.arg("42", "'TEG', ") << "ownAssay: TEG, dPT1";
    QTest::newRow("limit")
        << 4 << "update dataCheck set reportItemFullName = 'PT.t' where assayTemplateId = 1"
        << "misplacedLimit: PT.t, ";
    QTest::newRow("setting") << 10 << "insert into profile values('凝血/mix/times', 3)"
                             << "oldSettingName: 凝血/mix/times, ";
    QTest::newRow("date") << 22 << "update curve set date = 'soon' where id = 1"
                          << "curveWithoutExpiry: PT, soon";
}

void TestUnexpectedRows::findsThemAfterAnUpgrade()
{
    QFETCH(int, stored);
    QFETCH(QString, change);
    QFETCH(QString, line);
    const TestDatabase before("profile.db");
    makeDatabaseAt(before, "profile", stored);
    before.execute({change});
    const TestDatabase after("profile.db");
    QVERIFY(QFile::remove(after.path()) && QFile::copy(before.path(), after.path()));
    QVERIFY(upgrade(after));

    const QStringList lines = linesOf(compared(before, after, "profile").unexpectedRows);

    QVERIFY2(lines.contains(line), qPrintable(lines.join('\n')));
}

void TestUnexpectedRows::findsNoneWithoutAnUpgrade()
{
    const QStringList statements{assays,
                                 items,
                                 checks,
                                 settings,
                                 "insert into assayTemplate values(5, 'DD'), (16, 'TEG')",
                                 "insert into dataCheck values(5, 1, 'DD.X', 0, null, 0, null)",
                                 "insert into profile values('凝血/mix/type', 1)"};
    const TestDatabase before;
    before.execute(atVersion(4, statements));
    const TestDatabase after;
    after.execute(atVersion(4, statements)
                  + QStringList{"insert into assayItem values(500, 16, 'R')"});

    QCOMPARE(linesOf(compared(before, after, "profile").unexpectedRows), QStringList());
}

void TestUnexpectedRows::findsNoneInOtherDatabases()
{
    const TestDatabase before;
    before.execute(atVersion(1, {settings, "insert into profile values('凝血/mix/type', 1)"}));
    const TestDatabase after;
    after.execute(atVersion(30, {settings, "insert into profile values('凝血/mix/type', 1)"}));

    QCOMPARE(linesOf(compared(before, after, "qc").unexpectedRows), QStringList());
}

void TestUnexpectedRows::knowsTheAssaysThatTheStepsAdd()
{
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", 0);
    const QString highest = database.rows("select max(id) from assayTemplate").constFirst();
    QVERIFY(upgrade(database));

    QStringList known;
    for (auto assay = factoryAssays().begin(); assay != factoryAssays().end(); ++assay)
        known << QString("%1, '%2'").arg(QString::number(assay.key()), assay.value());

    QCOMPARE(
        known,
        database.rows("select id, name from assayTemplate where id > " + highest + " order by id"));
}

QTEST_GUILESS_MAIN(TestUnexpectedRows)

#include "tst_unexpectedrows.moc"
