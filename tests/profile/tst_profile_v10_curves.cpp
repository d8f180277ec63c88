// SPDX-License-Identifier: MIT
/// The refit of the stored curves in step 10, with a library that does what the test orders.

#include "curvedouble.h"
#include "messagerecorder.h"
#include "profiledatabase.h"
#include "profileupgrade.h"
#include "today.h"
#include "upgrade.h"

#include <QTest>

using coagulation::UpdateProfile;
using curvedouble::library;
using curvedouble::Refit;

namespace {

const QString sourceFile = "coagulation/vardo/updateprofile_v10_curves.cpp ( line ): ";

/// Adds to three calibrations A, B and C the curves 1 to 3 of the same names.
QStringList threeCurves()
{
    return {
        "insert into curve values"
        "(1, 'A', 's', '%', 0.5, '2016-04-01', 1, 0, 1.5, 2.5, 3.5, 4.5, 5.5, 0, '{1}', 'L-1'),"
        "(2, 'B', 'OD', 'g/l', 0.25, '2016-04-02', 0, 1, 6, 7, 8, 9, 10, null, '{2}', 'L-2'),"
        "(3, 'C', null, null, 0.75, null, 0, 0, 11, 12, null, null, null, 1, null, null)",
        "insert into curvePoint values"
        "(11, 1, 5, 20, -1, 4), (12, 1, 10, 10.5, -2, 0), (21, 2, 1, 2, -3, 8),"
        "(31, 3, 4, 5, -4, 16), (13, 1, 25, 4, null, null)",
    };
}

/// Fills the database with the sample at version 9, but with calibrations and curves of the test, and
/// makes a new library.
void make(const TestDatabase &database, const QStringList &statements)
{
    makeProfileAt(database, 9);
    database.execute(QStringList{"update variable set value = 1", // so that none is looked up
                                 "delete from curve", "delete from curvePoint",
                                 "delete from assayCalibration",
                                 "insert into assayCalibration values"
                                 "(1, 2, 'A', 4, 'T>0', 'T', 'P', 'fx', 'fy', 'dx', 'dy'),"
                                 "(2, 5, 'B', 0, null, null, null, null, null, null, null),"
                                 "(3, 1, 'C', 0, null, 'OD', 'P', null, null, null, null)",
                                 "pragma legacy_alter_table=on"}
                     + statements);
    library() = {};
}

/// \return the curves as rows, as by withToday()
QStringList curveRows(const TestDatabase &database)
{
    return withToday(database.rows("select id, name, xUnit, yUnit, correlation, date, xFun, yFun,"
                                   " a, b, c, d, e, valid, instrUuid, lotsNum from curve"
                                   " not indexed"));
}

/// \return the warnings; at version 9 one statement of the factory data fails always
QStringList warnings(const MessageRecorder &recorder)
{
    return recorder.messages()
        .filter(QRegularExpression("^Warning: "))
        .filter(QRegularExpression(R"(^(?!.*assaytemplate values\(22))",
                                   QRegularExpression::CaseInsensitiveOption));
}

QStringList linesOfTheRefit(const MessageRecorder &recorder)
{
    return recorder.messages().filter(
        QRegularExpression("No calibration named |Invalid curve: name ="));
}

const QStringList curvesAsStored{
    "1, 'A', 's', '%', 0.5, '2016-04-01', 1, 0, 1.5, 2.5, 3.5, 4.5, 5.5, 0, '{1}', 'L-1'",
    "2, 'B', 'OD', 'g/l', 0.25, '2016-04-02', 0, 1, 6.0, 7.0, 8.0, 9.0, 10.0, NULL, '{2}', 'L-2'",
    "3, 'C', NULL, NULL, 0.75, NULL, 0, 0, 11.0, 12.0, NULL, NULL, NULL, 1, NULL, NULL",
};

const QStringList pointsAsStored{
    "11, 1, 5.0, 20.0, -1.0, 4", "12, 1, 10.0, 10.5, -2.0, 0", "13, 1, 25.0, 4.0, NULL, NULL",
    "21, 2, 1.0, 2.0, -3.0, 8",  "31, 3, 4.0, 5.0, -4.0, 16",
};

} // namespace

class TestProfileV10Curves : public QObject {
    Q_OBJECT

private slots:
    void init();

    void givesTheLibraryWhatIsStored_data();
    void givesTheLibraryWhatIsStored();
    void givesTheLibraryTheWholeCalibration_data();
    void givesTheLibraryTheWholeCalibration();
    void showsACurveWithTheFunctionsThatTheLibraryTells();
    void refitsInTheOrderOfTheCurves();
    void writesWhatTheLibraryReports();
    void readsAndWritesCoefficientsByTheirNumber_data();
    void readsAndWritesCoefficientsByTheirNumber();
    void takesValidityAsABoolean_data();
    void takesValidityAsABoolean();
    void leavesAValidCurveAlone();
    void leavesACurveAloneThatTheLibraryHoldsValid();
    void refitsACurveThatTheLibraryDoubts();
    void writesTheValidityThatTheRefitLeaves_data();
    void writesTheValidityThatTheRefitLeaves();
    void writesWhatAFailedRefitLeaves();
    void writesNoPointOfAnInvalidCurve();
    void skipsACurveWithoutACalibration_data();
    void skipsACurveWithoutACalibration();
    void takesTheFirstOfSeveralCalibrations();
    void keepsPointsWithTheirRows_data();
    void keepsPointsWithTheirRows();
    void writesNoOtherPoint();
    void refitsACurveWithoutPoints();
    void passesWithoutCurves();
    void takesLongIdentifiers();
    void writesTheLocalDate();
    void failsAndKeepsTheFile_data();
    void failsAndKeepsTheFile();
    void failsWithoutCurvesToo();
};

void TestProfileV10Curves::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestProfileV10Curves::givesTheLibraryWhatIsStored_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<QStringList>("given");

    QTest::newRow("all") << QStringList{"delete from curve where id <> 1"}
                         << QStringList{"owner: none",
                                        "name: A",
                                        "units: s, %",
                                        "lots: L-1",
                                        "correlation: 0.5",
                                        "date: 2016-04-01",
                                        "functions: 1, 0",
                                        "displayed: 0, 0",
                                        "method: 4",
                                        "points: (5 20 -1 4) (10 10.5 -2 0) (25 4 0 0)",
                                        "coefficients: 1.5 2.5 3.5",
                                        "valid: no"};
    QTest::newRow("nothing")
        << QStringList{"delete from curve where id <> 2",
                       "update curve set xUnit = null, yUnit = null, correlation = null,"
                       " date = null, xFun = null, yFun = null, a = null, b = null, c = null,"
                       " lotsNum = null",
                       "update curvePoint set x = null, y = null, z = null, flags = null",
                       "update assayCalibration set method = null"}
        << QStringList{"owner: none",         "name: B",
                       "units: , ",           "lots: ",
                       "correlation: 0",      "date: ",
                       "functions: 0, 0",     "displayed: 0, 0",
                       "method: 0",           "points: (0 0 0 0)",
                       "coefficients: 0 0 0", "valid: no"};
    QTest::newRow("numbers that no enumeration lists")
        << QStringList{"delete from curve where id <> 2",
                       "update curve set xFun = 77, yFun = -3, date = '1999-12-31'",
                       "update curvePoint set flags = -2147483648",
                       "update assayCalibration set method = 1000"}
        << QStringList{"owner: none",         "name: B",
                       "units: OD, g/l",      "lots: L-2",
                       "correlation: 0.25",   "date: 1999-12-31",
                       "functions: 77, -3",   "displayed: 0, 0",
                       "method: 1000",        "points: (1 2 -3 -2147483648)",
                       "coefficients: 6 7 8", "valid: no"};
    QTest::newRow("texts")
        << QStringList{"delete from curve where id <> 2",
                       "update curve set name = 'PT 演算 ''FIB''', xUnit = 'µ''l', lotsNum = '批 1'",
                       "update assayCalibration set name = 'PT 演算 ''FIB''' where id = 2",
                       "delete from curvePoint"}
        << QStringList{"owner: none",     "name: PT 演算 'FIB'", "units: µ'l, g/l",
                       "lots: 批 1",      "correlation: 0.25",   "date: 2016-04-02",
                       "functions: 0, 1", "displayed: 0, 0",     "method: 0",
                       "points: ",        "coefficients: 6 7 8", "valid: no"};
    QTest::newRow("no name")
        << QStringList{"delete from curve where id <> 2", "update curve set name = ''",
                       "update assayCalibration set name = '' where id = 2",
                       "delete from curvePoint"}
        << QStringList{
               "owner: none",       "name: ",           "units: OD, g/l",      "lots: L-2",
               "correlation: 0.25", "date: 2016-04-02", "functions: 0, 1",     "displayed: 0, 0",
               "method: 0",         "points: ",         "coefficients: 6 7 8", "valid: no"};
}

/// Shows: CUR-3
void TestProfileV10Curves::givesTheLibraryWhatIsStored()
{
    QFETCH(QStringList, statements);
    QFETCH(QStringList, given);
    const TestDatabase database("profile.db");
    // the trigger would delete the points with their curves
    make(database, threeCurves() + QStringList{"drop trigger deleteCurve"} + statements);
    library().coefficientCount = 3;
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(library().curves.size(), 1);
    QCOMPARE(library().curves.constFirst(), given);
}

void TestProfileV10Curves::givesTheLibraryTheWholeCalibration_data()
{
    QTest::addColumn<int>("curve");
    QTest::addColumn<QStringList>("calibration");

    QTest::newRow("all") << 1
                         << QStringList{"1", "A", "4", "T>0", "T", "P", "fx", "fy", "dx", "dy"};
    QTest::newRow("nothing") << 2 << QStringList{"2", "B", "0", "", "", "", "", "", "", ""};
}

/// Shows: CUR-3
void TestProfileV10Curves::givesTheLibraryTheWholeCalibration()
{
    QFETCH(int, curve);
    QFETCH(QStringList, calibration);
    const TestDatabase database("profile.db");
    make(database,
         threeCurves() + QStringList{QString("delete from curve where id <> %1").arg(curve)});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QVERIFY(!library().calibrations.isEmpty());
    for (const QStringList &asked : library().calibrations)
        QCOMPARE(asked, calibration);
}

void TestProfileV10Curves::showsACurveWithTheFunctionsThatTheLibraryTells()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    library().dispFunX = static_cast<zu::Function>(21);
    library().dispFunY = static_cast<zu::Function>(22);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().curves.size(), 3);
    for (const QStringList &curve : library().curves)
        QCOMPARE(curve.filter("displayed"), QStringList{"displayed: 21, 22"});
    QCOMPARE(library().curves.constFirst().filter("functions"), QStringList{"functions: 1, 0"});
}

void TestProfileV10Curves::refitsInTheOrderOfTheCurves()
{
    const TestDatabase database("profile.db");
    make(database,
         threeCurves()
             + QStringList{"update curve set valid = 0", "update curve set id = 9 where name = 'A'",
                           "insert into curve(id, name) values(5, 'B')"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().refitted, QStringList({"B", "C", "B", "A"}));
}

/// Shows: CUR-1
void TestProfileV10Curves::writesWhatTheLibraryReports()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    library().coefficientCount = 4;
    library().refits = {
        {"A",
         {.valid = true,
          .correlation = 0.9375,
          .coefficients = QList<double>{-1, 0.125, 1e-7, 1234567.875, 99},
          .points = {{20.5, 1}, {10, 2}, {4.25, -2147483648}}}},
        {"B", {.valid = true, .coefficients = QList<double>{3, 4, 5, 6}, .points = {{-0.5, 0}}}},
    };
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(linesOfTheRefit(recorder), QStringList());
    QCOMPARE(library().refitted, QStringList({"A", "B"}));
    QCOMPARE(
        curveRows(database),
        QStringList(
            {"1, 'A', 's', '%', 0.9375, 'today', 1, 0, -1.0, 0.125, 1.0e-07, 1234567.875, NULL, 1,"
             " '{1}', 'L-1'",
             "2, 'B', 'OD', 'g/l', 0.25, 'today', 0, 1, 3.0, 4.0, 5.0, 6.0, NULL, 1, '{2}', 'L-2'",
             curvesAsStored.at(2)}));
    QCOMPARE(database.table("curvePoint"),
             QStringList({"11, 1, 5.0, 20.0, 20.5, 1", "12, 1, 10.0, 10.5, 10.0, 2",
                          "13, 1, 25.0, 4.0, 4.25, -2147483648", "21, 2, 1.0, 2.0, -0.5, 0",
                          pointsAsStored.at(4)}));
    QCOMPARE(database.rows("select typeof(correlation), typeof(date), typeof(a), typeof(e),"
                           " typeof(valid) from curve where id = 1"),
             QStringList{"'real', 'text', 'real', 'null', 'integer'"});
}

void TestProfileV10Curves::readsAndWritesCoefficientsByTheirNumber_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("written");

    // the stored ones are 1.5 2.5 3.5 4.5 5.5, those of the refit 10 20 30 40 50 60
    QTest::newRow("-1") << -1 << "1.5 2.5 3.5 4.5 5.5"
                        << "NULL, NULL, NULL, NULL, NULL";
    QTest::newRow("0") << 0 << "1.5 2.5 3.5 4.5 5.5"
                       << "NULL, NULL, NULL, NULL, NULL";
    QTest::newRow("1") << 1 << "1.5 2.5 3.5 4.5 5.5"
                       << "10.0, NULL, NULL, NULL, NULL";
    QTest::newRow("2") << 2 << "1.5 2.5"
                       << "10.0, 20.0, NULL, NULL, NULL";
    QTest::newRow("3") << 3 << "1.5 2.5 3.5"
                       << "10.0, 20.0, 30.0, NULL, NULL";
    QTest::newRow("4") << 4 << "1.5 2.5 3.5 4.5"
                       << "10.0, 20.0, 30.0, 40.0, NULL";
    QTest::newRow("5") << 5 << "1.5 2.5 3.5 4.5 5.5"
                       << "10.0, 20.0, 30.0, 40.0, 50.0";
    QTest::newRow("6") << 6 << "1.5 2.5 3.5 4.5 5.5"
                       << "10.0, 20.0, 30.0, 40.0, 50.0";
}

void TestProfileV10Curves::readsAndWritesCoefficientsByTheirNumber()
{
    QFETCH(int, count);
    QFETCH(QString, given);
    QFETCH(QString, written);
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    library().coefficientCount = count;
    library().refits = {
        {"A", {.valid = true, .coefficients = QList<double>{10, 20, 30, 40, 50, 60}}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().curves.constFirst().filter("coefficients"),
             QStringList{"coefficients: " + given});
    QCOMPARE(database.rows("select a, b, c, d, e from curve where id = 1"), QStringList{written});
}

void TestProfileV10Curves::takesValidityAsABoolean_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("valid");

    QTest::newRow("1") << "1" << true;
    QTest::newRow("2") << "2" << true;
    QTest::newRow("-1") << "-1" << true;
    QTest::newRow("0.5") << "0.5" << true;
    QTest::newRow("true") << "'true'" << true;
    QTest::newRow("0") << "0" << false;
    QTest::newRow("null") << "null" << false;
    QTest::newRow("false") << "'false'" << false;
    QTest::newRow("empty") << "''" << false;
}

void TestProfileV10Curves::takesValidityAsABoolean()
{
    QFETCH(QString, stored);
    QFETCH(bool, valid);
    const TestDatabase database("profile.db");
    make(database,
         threeCurves() + QStringList{"update curve set valid = " + stored + " where id = 1"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().curves.constFirst().filter("valid"),
             QStringList{QString("valid: ") + (valid ? "yes" : "no")});
    QCOMPARE(library().refitted.contains("A"), !valid);
}

/// Shows: CUR-2
void TestProfileV10Curves::leavesAValidCurveAlone()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves() + QStringList{"update curve set valid = 1"});
    const QStringList before = curveRows(database);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(linesOfTheRefit(recorder), QStringList());
    QCOMPARE(library().curves.size(), 3);
    QCOMPARE(library().refitted, QStringList());
    QCOMPARE(curveRows(database), before);
    QCOMPARE(database.table("curvePoint"), pointsAsStored);
}

/// Shows: CUR-2
void TestProfileV10Curves::leavesACurveAloneThatTheLibraryHoldsValid()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    library().validBeforeRefit = true;
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().refitted, QStringList());
    QCOMPARE(curveRows(database), curvesAsStored);
    QCOMPARE(database.table("curvePoint"), pointsAsStored);
}

void TestProfileV10Curves::refitsACurveThatTheLibraryDoubts()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves() + QStringList{"delete from curve where id <> 3"});
    library().validBeforeRefit = false;
    library().refits = {{"C",
                         {.valid = true,
                          .correlation = 1.0,
                          .coefficients = QList<double>{1, 2},
                          .points = {{5, 0}}}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().curves.constFirst().filter("valid"), QStringList{"valid: yes"});
    QCOMPARE(curveRows(database),
             QStringList{"3, 'C', NULL, NULL, 1.0, 'today', 0, 0, 1.0, 2.0, NULL, NULL, NULL, 1,"
                         " NULL, NULL"});
    QCOMPARE(database.table("curvePoint"), QStringList{"31, 3, 4.0, 5.0, 5.0, 0"});
}

void TestProfileV10Curves::writesTheValidityThatTheRefitLeaves_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("curves");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("valid")
        << 5
        << QStringList{"1, 'A', 's', '%', 0.5, 'today', 1, 0, 1.5, 2.5, NULL, NULL, NULL, 1, '{1}',"
                       " 'L-1'"}
        << QStringList();
    QTest::newRow("invalid")
        << 0
        << QStringList{"1, 'A', 's', '%', 0.5, 'today', 1, 0, 1.5, 2.5, NULL, NULL, NULL, 0, '{1}',"
                       " 'L-1'"}
        << QStringList{"Debug: " + sourceFile + R"( Invalid curve: name = "A"  id = 1)"};
}

void TestProfileV10Curves::writesTheValidityThatTheRefitLeaves()
{
    QFETCH(int, stored);
    QFETCH(QStringList, curves);
    QFETCH(QStringList, lines);
    const TestDatabase database("profile.db");
    make(database,
         threeCurves()
             + QStringList{"delete from curve where id <> 1",
                           QString("update curve set valid = %1").arg(stored)});
    library().validBeforeRefit = false;
    library().refits = {{"A", Refit{}}}; // keeps all as it was set
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(curveRows(database), curves);
    QCOMPARE(linesOfTheRefit(recorder), lines);
}

/// Shows: CUR-4
void TestProfileV10Curves::writesWhatAFailedRefitLeaves()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    library().coefficientCount = 3;
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(linesOfTheRefit(recorder),
             QStringList({"Debug: " + sourceFile + R"( Invalid curve: name = "A"  id = 1)",
                          "Debug: " + sourceFile + R"( Invalid curve: name = "B"  id = 2)"}));
    QCOMPARE(
        curveRows(database),
        QStringList(
            {"1, 'A', 's', '%', 0.5, 'today', 1, 0, 1.5, 2.5, 3.5, NULL, NULL, 0, '{1}', 'L-1'",
             "2, 'B', 'OD', 'g/l', 0.25, 'today', 0, 1, 6.0, 7.0, 8.0, NULL, NULL, 0, '{2}', 'L-2'",
             curvesAsStored.at(2)}));
    QCOMPARE(database.table("curvePoint"), pointsAsStored);
}

/// Shows: CUR-4
void TestProfileV10Curves::writesNoPointOfAnInvalidCurve()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    library().refits = {{"A",
                         {.valid = false,
                          .correlation = -0.5,
                          .coefficients = QList<double>{9, 8},
                          .points = {{1, 1}, {2, 2}, {3, 3}}}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(curveRows(database).constFirst(),
             "1, 'A', 's', '%', -0.5, 'today', 1, 0, 9.0, 8.0, NULL, NULL, NULL, 0, '{1}', 'L-1'");
    QCOMPARE(database.table("curvePoint"), pointsAsStored);
}

void TestProfileV10Curves::skipsACurveWithoutACalibration_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("logged"); // the name in the log

    QTest::newRow("another name") << "PT 演算"
                                  << R"("PT 演算")";
    QTest::newRow("another letter case") << "a"
                                         << R"("a")";
    QTest::newRow("an apostrophe") << "site's"
                                   << R"("site's")";
    QTest::newRow("a blank more") << "A "
                                  << R"("A ")";
    QTest::newRow("empty") << ""
                           << R"("")";
    QTest::newRow("quotes") << R"(the "A")"
                            << R"("the \"A\"")";
    QTest::newRow("SQL") << "A' or '1'='1"
                         << R"("A' or '1'='1")";
    QTest::newRow("a pattern") << "%"
                               << R"("%")";
    QTest::newRow("a byte order mark")
        << QChar(QChar::ByteOrderMark) + QString("A") << R"("\uFEFFA")";
}

/// Shows: CUR-2
void TestProfileV10Curves::skipsACurveWithoutACalibration()
{
    QFETCH(QString, name);
    QFETCH(QString, logged);
    QString literal = name;
    literal.replace('\'', "''");
    const TestDatabase database("profile.db");
    make(database,
         threeCurves()
             + QStringList{QString("update curve set name = '%1' where id = 1").arg(literal)});
    const QStringList before = curveRows(database);
    library().refits = {{"B", {.valid = true, .points = {{7, 7}}}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(linesOfTheRefit(recorder),
             QStringList{"Debug: " + sourceFile + " No calibration named  " + logged});
    QCOMPARE(library().refitted, QStringList{"B"}); // the next curves all the same
    QCOMPARE(curveRows(database),
             QStringList({before.at(0),
                          "2, 'B', 'OD', 'g/l', 0.25, 'today', 0, 1, 6.0, 7.0, NULL, NULL, NULL, 1,"
                          " '{2}', 'L-2'",
                          before.at(2)}));
    QCOMPARE(database.rows("select id, z, flags from curvePoint where id < 30 order by id"),
             QStringList({"11, -1.0, 4", "12, -2.0, 0", "13, NULL, NULL", "21, 7.0, 7"}));
}

void TestProfileV10Curves::takesTheFirstOfSeveralCalibrations()
{
    const TestDatabase database("profile.db");
    make(database,
         threeCurves()
             + QStringList{
                 "delete from curve where id <> 1", "drop table assayCalibration",
                 "create table assayCalibration(id integer primary key, assayTemplateId integer,"
                 " name text, method integer, condition text, caliX text, caliY text, funX text,"
                 " funY text, dispX text, dispY text)",
                 "insert into assayCalibration values"
                 "(7, 2, 'A', 3, null, 'T', 'P', null, null, 'Log', null),"
                 "(9, 2, 'A', 5, null, 'OD', 'P', null, null, null, 'Log'),"
                 "(6, 2, 'B', 1, null, 'OD', 'P', null, null, null, null)"});
    library().refits = {{"A", {.valid = true}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().refitted, QStringList{"A"}); // once
    QCOMPARE(library().curves.constFirst().filter("method"), QStringList{"method: 3"});
    QCOMPARE(library().calibrations.constFirst(),
             QStringList({"7", "A", "3", "", "T", "P", "", "", "Log", ""}));
}

void TestProfileV10Curves::keepsPointsWithTheirRows_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<QString>("given");

    const QString columns = "(curveId integer, x real, y real, z real, flags integer)";
    const QStringList rows{
        "insert into curvePoint(curveId, x, y, z, flags) values(1, 25, 4, -1, 0),"
        " (2, 1, 1, -1, 0), (1, 5, 20, -1, 0), (1, 10, 10, -1, 0)"};
    const QString inRowOrder = "points: (25 4 -1 0) (5 20 -1 0) (10 10 -1 0)";

    QTest::newRow("with a key")
        << QStringList{"create table curvePoint(id integer primary key, curveId integer, x real,"
                       " y real, z real, flags integer)"}
            + rows
        << inRowOrder;
    QTest::newRow("without a key")
        << QStringList{"create table curvePoint" + columns} + rows << inRowOrder;
    QTest::newRow("without a key, with gaps") << QStringList{"create table curvePoint" + columns}
            + QStringList{"insert into curvePoint(rowid, curveId, flags) values(100, 9, 0)"}
            + rows << inRowOrder;
    QTest::newRow("with a key that is no integer")
        << QStringList{"create table curvePoint(id text primary key, curveId integer, x real,"
                       " y real, z real, flags integer)"}
            + rows
        << inRowOrder;
    QTest::newRow("in the order of an index") << QStringList{"create table curvePoint" + columns}
            + rows + QStringList{"create index byX on curvePoint(curveId, x)"}
                                              << "points: (5 20 -1 0) (10 10 -1 0) (25 4 -1 0)";
    QTest::newRow("in the falling order of an index that holds all")
        << QStringList{"create table curvePoint" + columns} + rows
            + QStringList{"create index byX on curvePoint(curveId, x desc, y, z, flags)"}
        << "points: (25 4 -1 0) (10 10 -1 0) (5 20 -1 0)";
}

void TestProfileV10Curves::keepsPointsWithTheirRows()
{
    QFETCH(QStringList, statements);
    QFETCH(QString, given);
    const TestDatabase database("profile.db");
    make(database,
         threeCurves() + QStringList{"delete from curve where id <> 1", "drop table curvePoint"}
             + statements);
    // the same result whatever the order: z is y and a half, the flag is y
    static const QRegularExpression yOfAPoint(R"(\(\S+ (\d+))");
    Refit refit{.valid = true};
    for (auto match = yOfAPoint.globalMatch(given); match.hasNext();) {
        const int y = match.next().captured(1).toInt();
        refit.points << curvedouble::PointResult{y + 0.5, y};
    }
    library().refits = {{"A", refit}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().curves.constFirst().filter("points"), QStringList{given});
    QCOMPARE(
        database.rows("select x, y, z, flags from curvePoint not indexed where curveId in (1, 2)"),
        QStringList({"25.0, 4.0, 4.5, 4", "1.0, 1.0, -1.0, 0", "5.0, 20.0, 20.5, 20",
                     "10.0, 10.0, 10.5, 10"}));
}

void TestProfileV10Curves::writesNoOtherPoint()
{
    const TestDatabase database("profile.db");
    make(database,
         threeCurves()
             + QStringList{"insert into curvePoint values(41, null, 1, 1, -7, 7),"
                           " (42, 4, 1, 1, -7, 7), (43, '1x', 1, 1, -7, 7)"});
    library().refits = {{"A", {.valid = true, .points = {{1, 1}, {2, 2}, {3, 3}}}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.table("curvePoint"),
             QStringList({"11, 1, 5.0, 20.0, 1.0, 1", "12, 1, 10.0, 10.5, 2.0, 2",
                          "13, 1, 25.0, 4.0, 3.0, 3", pointsAsStored.at(3), pointsAsStored.at(4),
                          "41, NULL, 1.0, 1.0, -7.0, 7", "42, 4, 1.0, 1.0, -7.0, 7",
                          "43, '1x', 1.0, 1.0, -7.0, 7"}));
}

void TestProfileV10Curves::refitsACurveWithoutPoints()
{
    const TestDatabase database("profile.db");
    make(database, threeCurves() + QStringList{"delete from curvePoint where curveId = 1"});
    library().refits = {{"A", {.valid = true, .correlation = 0.0}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(library().curves.constFirst().filter("points"), QStringList{"points: "});
    QCOMPARE(curveRows(database).constFirst(),
             "1, 'A', 's', '%', 0.0, 'today', 1, 0, 1.5, 2.5, NULL, NULL, NULL, 1, '{1}', 'L-1'");
    QCOMPARE(database.table("curvePoint"), pointsAsStored.mid(3));
}

void TestProfileV10Curves::passesWithoutCurves()
{
    const TestDatabase database("profile.db");
    make(database, {"insert into curvePoint values(11, 1, 5, 20, -1, 4)"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(warnings(recorder), QStringList());
    QCOMPARE(linesOfTheRefit(recorder), QStringList());
    QCOMPARE(library().curves.size(), 0);
    QCOMPARE(database.table("curve"), QStringList());
    QCOMPARE(database.table("curvePoint"), QStringList{"11, 1, 5.0, 20.0, -1.0, 4"});
}

void TestProfileV10Curves::takesLongIdentifiers()
{
    const TestDatabase database("profile.db");
    make(database,
         {"insert into curve(id, name) values(705032704, 'C'), (5000000000, 'A'),"
          " (9223372036854775807, 'B')", // 705032704 is what 32 bits hold of the second
          "update curve set valid = 1 where name = 'C'",
          "insert into curvePoint values(5000000001, 5000000000, 1, 1, -1, 0),"
          " (705032705, 705032704, 2, 2, -1, 0)"});
    library().refits = {{"A", {.valid = true, .points = {{1.5, 3}}}}};
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(linesOfTheRefit(recorder),
             QStringList{"Debug: " + sourceFile
                         + R"( Invalid curve: name = "B"  id = 9223372036854775807)"});
    QCOMPARE(database.rows("select id, date notnull, valid from curve order by id"),
             QStringList({"705032704, 0, 1", "5000000000, 1, 1", "9223372036854775807, 1, 0"}));
    QCOMPARE(database.table("curvePoint"),
             QStringList({"705032705, 705032704, 2.0, 2.0, -1.0, 0",
                          "5000000001, 5000000000, 1.0, 1.0, 1.5, 3"}));
}

/// Shows: CUR-1
void TestProfileV10Curves::writesTheLocalDate()
{
#ifdef Q_OS_WIN
    QSKIP("the time zone of a process cannot be changed: the local date is NOT tested");
#else
    // A zone in which it is another day than in UTC, and in which it is not near midnight.
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const qint64 hours = now.time().hour() >= 11 ? 14 : -12;
    const QDate there = now.addSecs(hours * 3600).date();
    QVERIFY(there != now.date());
    const TestDatabase database("profile.db");
    make(database, threeCurves());
    const bool wasSet = qEnvironmentVariableIsSet("TZ");
    const QByteArray before = qgetenv("TZ");
    qputenv("TZ", hours > 0 ? "TEST-14" : "TEST+12"); // POSIX counts to the west
    tzset();
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    if (wasSet)
        qputenv("TZ", before);
    else
        qunsetenv("TZ");
    tzset();
    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows("select date from curve where id = 1"),
             QStringList{'\'' + there.toString(Qt::ISODate) + '\''});
#endif
}

void TestProfileV10Curves::failsAndKeepsTheFile_data()
{
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<QString>("error");  // how its text begins
    QTest::addColumn<QString>("logged"); // how the statement begins; none is logged if empty

    // What cannot be read: the smallest integer, whose absolute value is none.
    const QStringList curveView{"alter table curve rename to curves"};
    const QString viewOfCurves =
        "create view curve as select id, name, xUnit, yUnit, correlation, date, xFun, yFun,"
        " a, b, c, d, e, iif(id = %1, abs(id - 9223372036854775807 - 1 - %1), valid) as valid,"
        " instrUuid, lotsNum from curves";
    const QString updateOfCurves =
        "create trigger write instead of update on curve"
        " begin update curves set date = new.date where id = old.id; end";
    const QString viewOfPoints =
        "create view curvePoint as select id as rowid, curveId, x, y,"
        " iif(id = %1, abs(id - 9223372036854775807 - 1 - %1), z) as z, flags from points";
    const QString updateOfPoints = "create trigger write instead of update on curvePoint"
                                   " begin update points set z = new.z where id = old.rowid; end";

    QTest::newRow("1: a curve has no lots")
        << QStringList{"alter table curve drop column lotsNum"} << ""
        << "";
    QTest::newRow("1: no curves") << QStringList{"drop table curve"} << ""
                                  << "";
    QTest::newRow("1: the first curve cannot be read")
        << curveView + QStringList{viewOfCurves.arg(1), updateOfCurves} << ""
        << "";
    QTest::newRow("1: the second curve cannot be read")
        << curveView + QStringList{viewOfCurves.arg(2), updateOfCurves} << "integer overflow"
        << "select id, name, xunit, yunit, correlation, date, xFun, yFun, a, b, c, d, e, valid,"
           " lotsNum from curve";
    QTest::newRow("2: a calibration has no condition")
        << QStringList{"alter table assayCalibration drop column condition"}
        << "no such column: condition"
        << "select id, name, method, condition, caliX, caliY, funX, funY, dispX, dispY from"
           " assayCalibration where name = :name";
    QTest::newRow("2: no calibrations")
        << QStringList{"drop table assayCalibration"} << "no such table: assayCalibration"
        << "select id, name, method, condition";
    QTest::newRow("2: a calibration cannot be read")
        << QStringList{"alter table assayCalibration rename to calibrations",
                       "create view assayCalibration as select id, assayTemplateId, name,"
                       " iif(id = 2, abs(id - 9223372036854775807 - 3), method) as method,"
                       " condition, caliX, caliY, funX, funY, dispX, dispY from calibrations"}
        << "integer overflow"
        << "select id, name, method, condition";
    QTest::newRow("3: no points") << QStringList{"drop table curvePoint"}
                                  << "no such table: curvePoint"
                                  << "select rowid, x, y, z, flags from curvePoint"
                                     " where curveId = :curveId";
    QTest::newRow("3: points without rowid")
        << QStringList{"drop table curvePoint",
                       "create table curvePoint(id integer primary key, curveId, x, y, z, flags)"
                       " without rowid"}
        << "no such column: rowid"
        << "select rowid, x, y, z, flags from curvePoint";
    QTest::newRow("3: the first point cannot be read")
        << QStringList{"alter table curvePoint rename to points", viewOfPoints.arg(11),
                       updateOfPoints}
        << "integer overflow"
        << "select rowid, x, y, z, flags from curvePoint";
    QTest::newRow("3: the second point cannot be read")
        << QStringList{"alter table curvePoint rename to points", viewOfPoints.arg(12),
                       updateOfPoints}
        << "integer overflow"
        << "select rowid, x, y, z, flags from curvePoint";
    QTest::newRow("4: the update of a curve is not possible")
        << QStringList{"create trigger keep after update on curve begin delete from missing; end"}
        << "no such table: main.missing"
        << "update curve set correlation = :correlation, date = :date, a = :a, b = :b, c = :c,"
           " d = :d, e = :e, valid = :valid where id = :id";
    QTest::newRow("4: the second curve cannot be changed")
        << QStringList{"create trigger keep before update on curve when old.id = 2"
                       " begin select raise(abort, 'kept'); end"}
        << "kept"
        << "update curve set correlation = :correlation";
    QTest::newRow("5: the update of a point is not possible")
        << QStringList{"create trigger keep after update on curvePoint"
                       " begin delete from missing; end"}
        << "" // the query of the curves' update is logged, which did not fail
        << "update curve set correlation = :correlation";
    QTest::newRow("5: the second point cannot be changed")
        << QStringList{"create trigger keep before update on curvePoint when old.id = 12"
                       " begin select raise(abort, 'kept'); end"}
        << "kept"
        << "update curvePoint set z = :z, flags = :flags where rowid = :rowid";
}

void TestProfileV10Curves::failsAndKeepsTheFile()
{
    QFETCH(QStringList, obstacles);
    QFETCH(QString, error);
    QFETCH(QString, logged);
    const TestDatabase database("profile.db");
    make(database, threeCurves() + obstacles);
    library().refits = {{"A", {.valid = true, .points = {{1, 1}, {2, 2}, {3, 3}}}},
                        {"B", {.valid = true}}};
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QStringList log = recorder.messages();
    QVERIFY2(log.size() == (logged.isEmpty() ? 2 : 3), qUtf8Printable(log.join('\n')));
    QCOMPARE(log.takeFirst(), "Debug: Updating " + database.path());
    QCOMPARE(log.takeLast(), "Debug: update_v10(): FAIL");
    if (!logged.isEmpty()) {
        const QString &line = log.constFirst();
        QVERIFY2(line.startsWith("Warning: " + sourceFile + " \"" + error), qUtf8Printable(line));
        QVERIFY2(line.contains("\" : [ \"" + logged), qUtf8Printable(line));
        QCOMPARE(line.contains(R"( "" : [ )"), error.isEmpty());
    }
}

void TestProfileV10Curves::failsWithoutCurvesToo()
{
    const TestDatabase database("profile.db");
    make(database, {"drop table curvePoint"});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY(!passed);
    QCOMPARE(warnings(recorder).size(), 1);
    QVERIFY(warnings(recorder).constFirst().contains("[ \"select rowid, x, y, z, flags from"));
}

QTEST_GUILESS_MAIN(TestProfileV10Curves)
#include "tst_profile_v10_curves.moc"
