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
    void knowsTheItemsAndCalibrationsThatTheStepsAdd_data();
    void knowsTheItemsAndCalibrationsThatTheStepsAdd();
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
    const QStringList kinds{"ownAssay",           "misplacedLimit",    "oldSettingName",
                            "curveWithoutExpiry", "ownItem",           "ownCalibration",
                            "factoryName",        "replacedLimit",     "replacedIdentifier",
                            "equalIdentifiers",   "factoryDisplayName"};
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
        << 22 << dated << expiring
        << QStringList{"curveWithoutExpiry: II, soon", "curveWithoutExpiry: V, "};
    QTest::newRow("a curve without expiry of before") << 23 << dated + expiring << none << none;
    const QStringList numbered{assays, items, calibrations,
                               "insert into assayTemplate values(1, 'PT'), (900, 'Own')"};
    const auto with = [&numbered](const QString &statement) {
        return numbered + QStringList{statement};
    };
    QTest::newRow("an own item under a number of the factory's")
        << 9 << with("insert into assayItem values(40, 1, 'R'), (42, 900, 'A.B')") << none
        << QStringList{"ownItem: PT.R, PC", "ownItem: Own.A.B, PC"};
    QTest::newRow("an item of no assay under a number of the factory's")
        << 9 << with("insert into assayItem values(284, null, 'R')") << none
        << QStringList{"ownItem: R, dPT2"};
    QTest::newRow("own items beside numbers of the factory's")
        << 9
        << with(
               "insert into assayItem values(39, 1, 'a'), (43, 1, 'b'), (192, 1, 'c'), (285, 1, 'd')")
        << none << none;
    QTest::newRow("an item of the factory's with another name")
        << 24 << with("insert into assayItem values(40, 16, 'Time')") << none << none;
    QTest::newRow("an own item without an upgrade")
        << newestVersion("profile") << with("insert into assayItem values(40, 1, 'R')") << none
        << none;
    QTest::newRow("an own calibration under a number of the factory's")
        << 9 << with("insert into assayCalibration values(33, 1, 'PT-R')") << none
        << QStringList{"ownCalibration: PT-R, vWF"};
    QTest::newRow("an own calibration with a name of the factory's")
        << 9 << with("insert into assayCalibration values(500, 1, 'Plg'), (501, 900, 'PC')") << none
        << QStringList{"ownCalibration: PC, PC", "ownCalibration: Plg, Plg"};
    QTest::newRow("a calibration of the factory's")
        << 9 << with("insert into assayCalibration values(500, 26, 'Plg')") << none << none;
    QTest::newRow("own calibrations under numbers that the factory's share")
        << 4 << with("insert into assayCalibration values(8, 1, 'a'), (16, 1, 'b')") << none
        << none;
    QTest::newRow("own calibrations beside numbers of the factory's")
        << 9
        << with(
               "insert into assayCalibration values(7, 1, 'a'), (17, 1, 'b'), (25, 1, 'c'), (34, 1, 'd')")
        << none << none;
    QTest::newRow("an own assay with a name of the factory's")
        << 9 << with("insert into assayTemplate values(500, 'PS'), (501, 'ps')") << none
        << QStringList{"factoryName: PS, 500"};
    const QStringList displayed{
        "create table assayTemplate(id integer primary key, name text, displayName text)",
        "insert into assayTemplate values(500, 'Own', 'FM'), (501, 'Plg', 'Plg'), (24, 'vWF', 'vWF')"};
    QTest::newRow("an own assay that is displayed by a name of the factory's")
        << 13 << displayed << none
        << QStringList{"factoryDisplayName: FM, 500", "factoryName: Plg, 501"};
    QTest::newRow("an assay of the factory's")
        << 24 << with("insert into assayTemplate values(17, 'PS')") << none << none;

    const QStringList limited{
        "create table dataCheck(assayTemplateId integer, report integer, reportItemFullName text,"
        " reportLower real, reportUpper real, redilution integer, redilutionItemFullName text,"
        " redilutionLower real, redilutionUpper real, repeat integer, repeatItemFullName text,"
        " repeatLower real, repeatUpper real)",
        "create table assayItem(id integer primary key, assayTemplateId integer, name text, lowerReport real,"
        " upperReport real, lowerRedilution real, upperRedilution real, lowerRepeat real, upperRepeat real)"};
    const auto checkedBy = [&limited](const QString &values) {
        return limited + QStringList{"insert into dataCheck values" + values};
    };
    const QString check = "(5, 1, 'DD.P', 0.5, 20, 1, 'DD.P', null, 15, 1, 'DD.P', 1, 2)";
    QTest::newRow("limits that their item has")
        << 4 << checkedBy(check)
        << QStringList{"insert into assayItem values(8, 5, 'P', 0.5, 20, 0, 15, 1, 2)"} << none;
    QTest::newRow("an item that got other limits")
        << 4 << checkedBy(check)
        << QStringList{"insert into assayItem values(8, 5, 'P', 0.1, 20, 0, 10, 1, 3)"}
        << QStringList{"replacedLimit: DD.P, 0.5 to 20", "replacedLimit: DD.P, 0 to 15",
                       "replacedLimit: DD.P, 1 to 2"};
    QTest::newRow("an item of another assay")
        << 4 << checkedBy(check)
        << QStringList{"insert into assayItem values(8, 6, 'P', 0.1, 40, 0, 10, 1, 3)"} << none;
    QTest::newRow("limits that are switched off, and others")
        << 4 << checkedBy("(5, 0, 'DD.P', 0.5, 20, null, 'DD.P', 1, 15, 0, 'DD.P', 1, 2)")
        << QStringList{"insert into assayItem values(8, 5, 'P', 0.1, 40, 0, 10, 1, 3)"} << none;
    QTest::newRow("limits that an earlier upgrade replaced")
        << 5 << checkedBy(check)
        << QStringList{"insert into assayItem values(8, 5, 'P', 0.1, 40, 0, 10, 1, 3)"} << none;

    const QString reagents = "create table reagent(id integer primary key, reagentId, name text)";
    const QStringList labelled{
        reagents,
        "insert into reagent values(1, 'LAB-7', 'FDP'), (2, 'LAB-8', 'Buffer(DD)'), (3, 9, 'Latex'),"
        " (4, null, 'Saline'), (5, '', 'DD ct'), (6, 'LAB-1', 'Own')"};
    const QStringList anew{
        "delete from reagent",
        "insert into reagent values(11, '110', 'R2(FDP)'), (12, 'LAB-8', 'R1(DD)'), (13, '9', 'R2(DD)'),"
        " (14, '101', 'Saline')"};
    QTest::newRow("reagents made anew")
        << 1 << labelled << anew << QStringList{"replacedIdentifier: FDP, LAB-7"};
    QTest::newRow("reagents that an earlier upgrade made anew") << 2 << labelled << anew << none;
    QTest::newRow("a reagent with the identifier of another")
        << 24
        << QStringList{reagents, "insert into reagent values(1, null, 'LAC'), (2, '119', 'Own')"}
        << QStringList{"update reagent set reagentId = 119 where id = 1"}
        << QStringList{"equalIdentifiers: LAC, Own"};
    QTest::newRow("reagents with identifiers of their own")
        << 24
        << QStringList{reagents, "insert into reagent values(1, 119, 'LAC'), (2, '0119', 'Own')"}
        << none << none;
    QTest::newRow("equal identifiers without an upgrade")
        << newestVersion("profile")
        << QStringList{reagents, "insert into reagent values(1, 119, 'LAC'), (2, '119', 'Own')"}
        << none << none;
    QTest::newRow("a table less on one side")
        << 4 << QStringList{assays,       items,
                            calibrations, checks,
                            settings,     curves,
                            reagents,     "insert into assayTemplate values(16, 'TEG')"}
        << QStringList{"drop table assayTemplate",
                       "drop table assayItem",
                       "drop table assayCalibration",
                       "drop table profile",
                       "drop table curve",
                       "drop table reagent"}
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
    QTest::newRow("own item")
        << 5 << "insert into assayItem(id, assayTemplateId, name) values(41, 1, 'X')"
        << "ownItem: PT.X, PC";
    QTest::newRow("own calibration")
        << 25 << "update assayCalibration set id = 32 where name = 'PT'"
        << "ownCalibration: PT, Plg";
    QTest::newRow("own assay with a name of the factory's")
        << 5 << own.arg("500", "").replace("TEG", "PS") << "factoryName: PS, 500";
    QTest::newRow("own calibration with a name of the factory's, numbered by SQLite")
        << 5 << "update assayCalibration set name = 'PC' where name = 'PT'"
        << "ownCalibration: PC, PC";
    QTest::newRow("own calibration with a name of the factory's")
        << 25 << "update assayCalibration set name = 'Plg' where name = 'PT'"
        << "ownCalibration: Plg, Plg";
    QTest::newRow("own assay that is displayed by a name of the factory's")
        << 13 << own.arg("500", "'FM', ") << "factoryDisplayName: FM, 500";
    QTest::newRow("limit that the factory sets")
        << 4
        << "replace into dataCheck(assayTemplateId, report, reportItemFullName, reportLower, reportUpper) values(7, 1, 'ATIII.P', 20, 140)"
        << "replacedLimit: ATIII.P, 20 to 140";
    QTest::newRow("reagent made anew")
        << 1 << "replace into reagent(type, name, reagentId) values(0, 'FDP', 'LAB-7')"
        << "replacedIdentifier: FDP, LAB-7";
    QTest::newRow("reagents with the same identifier")
        << 24 << "insert into reagent(type, name, reagentId) values(0, 'Own', '119')"
        << "equalIdentifiers: LAC, Own";
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

void TestUnexpectedRows::knowsTheItemsAndCalibrationsThatTheStepsAdd_data()
{
    QTest::addColumn<QString>("table");

    QTest::newRow("items") << "assayItem";
    QTest::newRow("calibrations") << "assayCalibration";
}

void TestUnexpectedRows::knowsTheItemsAndCalibrationsThatTheStepsAdd()
{
    QFETCH(QString, table);
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", 0);
    database.execute({QString("delete from %1 where assayTemplateId > 15").arg(table)});
    const QStringList own = database.rows(QString("select id from %1").arg(table));
    QVERIFY(upgrade(database));

    QStringList known;
    for (const FactoryRow &row : factoryRows()) {
        if (row.table == table)
            known << QString("%1, %2, %3").arg(row.id).arg(row.assay).arg(row.name);
    }
    // calibrations 8 to 16 get the numbers that are free
    const QString columns = table == "assayItem"
        ? "id || ', ' || assayTemplateId || ', '"
        : "iif(id between 8 and 16, 0, id) || ', ' || assayTemplateId || ', ' || name";
    QStringList added;
    for (const QString &row :
         database.rows(QString("select %1 from %2 where id not in (%3) order by id")
                           .arg(columns, table, own.join(", "))))
        added << row.mid(1, row.size() - 2); // without its quotes

    QCOMPARE(known, added);
}

QTEST_GUILESS_MAIN(TestUnexpectedRows)

#include "tst_unexpectedrows.moc"
