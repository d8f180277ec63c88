// SPDX-License-Identifier: MIT
/// Which standard curves count as fitted once more, and what is read of them.

#include "compared.h"
#include "testdatabase.h"

#include <QTest>

using namespace coagulation::report;

class TestCurveFacts : public QObject {
    Q_OBJECT

private slots:
    void findsRefittedCurves_data();
    void findsRefittedCurves();
    void readsACurve();
    void readsOldAndOddLayouts_data();
    void readsOldAndOddLayouts();
    void tellsThatCalibrationsCannotBeRead();
    void namesOtherInvalidCurves();
    void findsOtherMethods_data();
    void findsOtherMethods();
};

namespace {

const QString curveTable =
    "create table curve(id integer primary key, name text not null, xUnit text, yUnit text,"
    " correlation real, date date, xFun integer, yFun integer, a real, b real, c real, d real,"
    " e real, valid integer, lotsNum text)";
const QString curveRow =
    "insert into curve values(3, 'PT', 'OD', '%', null, '2020-02-29', 1, 0, 9, 9, 9, 9, 9, 0, 'L')";

} // namespace

void TestCurveFacts::findsRefittedCurves_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("refitted");

    for (const char *column : {"correlation = 0.5", "date = '2026-01-01'", "a = 1", "b = 1",
                               "c = null", "d = 1", "e = 1", "valid = 1", "valid = null"})
        QTest::newRow(column) << column << true;
    for (const char *column :
         {"name = 'II'", "xUnit = 's'", "lotsNum = 'M'", "xFun = 0", "a = 9.0"})
        QTest::newRow(column) << column << false;
}

/// Shows: REP-14
void TestCurveFacts::findsRefittedCurves()
{
    QFETCH(QString, change);
    QFETCH(bool, refitted);
    const TestDatabase before;
    before.execute({curveTable, curveRow});
    const TestDatabase after;
    after.execute({curveTable, curveRow, "update curve set " + change});

    QCOMPARE(compared(before, after, "profile").curves.size(), refitted ? 1 : 0);
    QVERIFY(compared(before, after, "qc").curves.isEmpty());
}

void TestCurveFacts::readsACurve()
{
    const QStringList points{
        "create table curvePoint(id integer primary key, curveId integer, x real, y real, z real, flags integer)",
        "insert into curvePoint values(1, 3, 0.5, 100, -1, 0), (2, 4, 7, 7, 7, 7), (3, 3, 1.5, 50, null, 0),"
        " (4, 3, 2.5, 25, -1, 0), (5, 3, null, 25, -1, 0)"};
    const TestDatabase before;
    before.execute(QStringList{curveTable, curveRow} + points);
    const TestDatabase after;
    after.execute(
        QStringList{curveTable, curveRow} + points
        + QStringList{
            "update curve set correlation = 0.99, date = '2026-01-01', a = 1.5, b = null, valid = 1",
            "update curvePoint set z = 99, flags = 1 where id = 1",
            "update curvePoint set z = 51, flags = 2 where id = 3",
            "update curvePoint set z = 26, flags = 4 where id = 4",
            "create table assayCalibration(id integer primary key, name text, method integer,"
            " dispX text, dispY text)",
            "insert into assayCalibration values(1, 'II', 4, null, null), (2, 'PT', 0, 'Log', 'Linear')"});

    const QList<CurveFacts> curves = compared(before, after, "profile").curves;

    QCOMPARE(curves.size(), 1);
    const CurveFacts &curve = curves.first();
    QCOMPARE(curve.key, "id = 3");
    QCOMPARE(curve.name, "PT");
    QCOMPARE(curve.xUnit, "OD");
    QCOMPARE(curve.yUnit, "%");
    QCOMPARE(curve.method, 0);
    QCOMPARE(curve.xFunction, 1);
    QCOMPARE(curve.yFunction, 0);
    QVERIFY(curve.logarithmicX);
    QVERIFY(!curve.logarithmicY);
    QCOMPARE(curve.before.valid, false);
    QCOMPARE(curve.before.date, "2020-02-29");
    QVERIFY(!curve.before.correlation);
    QCOMPARE(curve.before.coefficients.at(4), 9.0);
    QCOMPARE(curve.after.valid, true);
    QCOMPARE(curve.after.date, "2026-01-01");
    QCOMPARE(curve.after.correlation, 0.99);
    QCOMPARE(curve.after.coefficients.at(0), 1.5);
    QVERIFY(!curve.after.coefficients.at(1));
    QCOMPARE(curve.points.size(), 3);
    QCOMPARE(curve.points.at(0).x, 0.5);
    QCOMPARE(curve.points.at(0).y, 100.0);
    QCOMPARE(curve.points.at(0).zBefore, -1.0);
    QCOMPARE(curve.points.at(0).zAfter, 99.0);
    QVERIFY(curve.points.at(0).excluded && !curve.points.at(0).outlier);
    QVERIFY(!curve.points.at(1).zBefore);
    QVERIFY(!curve.points.at(1).excluded && curve.points.at(1).outlier);
    QVERIFY(!curve.points.at(2).excluded && !curve.points.at(2).outlier);
}

void TestCurveFacts::readsOldAndOddLayouts_data()
{
    QTest::addColumn<QStringList>("others");

    QTest::newRow("the curves alone") << QStringList{};
    QTest::newRow("points without curves") << QStringList{"create table curvePoint(x, y)"};
    QTest::newRow("calibrations without methods") << QStringList{
        "create table assayCalibration(name)", "insert into assayCalibration values('PT')"};
    QTest::newRow("points without numbers") << QStringList{
        "create table curvePoint(curveId, x, y)", "insert into curvePoint values(3, 'x', x'00')"};
    QTest::newRow("points without rowids")
        << QStringList{"create table curvePoint(curveId primary key, x, y) without rowid",
                       "insert into curvePoint values(3, 'x', null)"};
    QTest::newRow("views") << QStringList{
        "create view curvePoint as select 3 as curveId, 1 as x, 1 as y",
        "create view assayCalibration as select 'PT' as name"};
}

void TestCurveFacts::readsOldAndOddLayouts()
{
    QFETCH(QStringList, others);
    const QString table = "create table curve(id integer primary key, name, valid)";
    const TestDatabase before;
    before.execute(QStringList{table, "insert into curve values(3, 'PT', 0)"} + others);
    const TestDatabase after;
    after.execute(QStringList{table, "insert into curve values(3, 'PT', 1)"} + others);

    const QList<CurveFacts> curves = compared(before, after, "profile").curves;

    QCOMPARE(curves.size(), 1);
    QCOMPARE(curves.first().name, "PT");
    QVERIFY(curves.first().points.isEmpty());
    QVERIFY(!curves.first().method);
    QVERIFY(!curves.first().largestDifference);
}

/// Shows: REP-12
void TestCurveFacts::tellsThatCalibrationsCannotBeRead()
{
    const QStringList statements = {
        curveTable, curveRow,
        "create table assayCalibration(name text, method integer, dispX text, dispY text)",
        "pragma writable_schema=on",
        "update sqlite_master set sql = replace(sql, 'name text,', 'name text collate another,')"
        " where name = 'assayCalibration'"};
    const TestDatabase before;
    before.execute(statements);
    const TestDatabase after;
    after.execute(statements + QStringList{"update curve set valid = 1"});

    const DatabaseFacts facts = compared(before, after, "profile");

    QCOMPARE(facts.problem,
             "One of the databases cannot be read: no such collation sequence: another.");
    QVERIFY(!facts.unreadable);
    QCOMPARE(facts.curves.size(), 1);
}

void TestCurveFacts::namesOtherInvalidCurves()
{
    const QString table = "create table curve(id integer primary key, name, valid)";
    const QString rows =
        "insert into curve values(1, 'refitted', 0), (2, 'kept', 0), (3, 'sound', 1), (4, 'unknown', null)";
    const TestDatabase before;
    before.execute({table, rows});
    const TestDatabase after;
    after.execute({table, rows, "update curve set valid = null where id = 1"});

    QCOMPARE(compared(before, after, "profile").otherInvalidCurves,
             (QStringList{"kept", "unknown"}));
}

void TestCurveFacts::findsOtherMethods_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("change");
    QTest::addColumn<QStringList>("changes");

    const QStringList sample{"create table curve(id integer primary key, name, valid)",
                             "insert into curve values(1, 'PT', 1), (2, 'PT', 0), (3, 'II', 0)",
                             "create table assayCalibration(name, method)",
                             "insert into assayCalibration values('DD', 4), ('PT', 0), ('II', 0)"};
    const QStringList none;
    QTest::newRow("another method")
        << sample << "update assayCalibration set method = method + 1" << QStringList{"PT 0 1"};
    QTest::newRow("no method") << sample << "update assayCalibration set method = null"
                               << QStringList{"PT 0 NULL"};
    QTest::newRow("another type") << sample << "update assayCalibration set method = '0'"
                                  << QStringList{"PT 0 '0'"};
    QTest::newRow("the same method")
        << sample << "update assayCalibration set method = 0 where name <> 'DD'" << none;
    QTest::newRow("an invalid curve")
        << sample << "update assayCalibration set method = 4 where name = 'II'" << none;
    QTest::newRow("a new calibration")
        << sample << "insert into assayCalibration values('AT', 4)" << none;
    QTest::newRow("curves without validity")
        << QStringList{"create table curve(id integer primary key, name)",
                       "insert into curve values(1, 'PT')"}
            + sample.mid(2)
        << "update assayCalibration set method = 4" << none;
    QTest::newRow("calibrations without methods")
        << sample.first(2) + QStringList{"create table assayCalibration(name)"}
        << "insert into assayCalibration values('PT')" << none;
    QTest::newRow("no curves") << sample.mid(2) << "update assayCalibration set method = 4" << none;
}

/// Shows: REP-14
void TestCurveFacts::findsOtherMethods()
{
    QFETCH(QStringList, before);
    QFETCH(QString, change);
    const TestDatabase databaseBefore;
    databaseBefore.execute(before);
    const TestDatabase databaseAfter;
    databaseAfter.execute(before + QStringList{change});

    QStringList changes;
    for (const MethodChange &one : compared(databaseBefore, databaseAfter, "profile").methodChanges)
        changes << one.calibration + ' ' + one.before + ' ' + one.after;

    QTEST(changes, "changes");
    QVERIFY(compared(databaseBefore, databaseAfter, "qc").methodChanges.isEmpty());
}

QTEST_GUILESS_MAIN(TestCurveFacts)

#include "tst_curvefacts.moc"
