// SPDX-License-Identifier: MIT
/// The refit of the stored curves in step 10 with the library itself: curves of both methods
/// whose fit can be told by hand.

#include "messagerecorder.h"
#include "profiledatabase.h"
#include "profileupgrade.h"
#include "today.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

/// \return the curves as rows, as by withToday(), and with what the fit calculates to six decimal places
QStringList curveRows(const TestDatabase &database)
{
    return withToday(database.rows("select id, name, round(correlation, 6), date, round(a, 6),"
                                   " round(b, 6), round(c, 6), round(d, 6), round(e, 6), valid,"
                                   " lotsNum from curve not indexed"));
}

QStringList pointRows(const TestDatabase &database)
{
    return database.rows("select id, x, y, round(z, 6), flags from curvePoint not indexed");
}

QStringList invalidLines(const MessageRecorder &recorder)
{
    return recorder.messages().filter("Invalid curve: name =");
}

} // namespace

class TestProfileV10CurvesFitted : public QObject {
    Q_OBJECT

private slots:
    void init();

    void refitsTheSample();
    void refits_data();
    void refits();
};

void TestProfileV10CurvesFitted::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

/// Shows: CUR-1
void TestProfileV10CurvesFitted::refitsTheSample()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    const QString place = "Debug: coagulation/vardo/updateprofile_v10_curves.cpp ( line ):  ";
    const QStringList lines = recorder.messages().filter(
        QRegularExpression("No calibration named |Invalid curve: name ="));
    const QStringList expectedLines{place + R"(No calibration named  "site's")",
                                    place + R"(Invalid curve: name = "II"  id = 5)"};
    QCOMPARE(lines, expectedLines);
    QCOMPARE(curveRows(database),
             QStringList({"1, 'PT', 0.998, '2016-04-01', 3.1, -1.2, NULL, NULL, NULL, 1, 'L-1'",
                          "2, 'FIB', 1.0, 'today', 2.0, -1.0, NULL, NULL, NULL, 1, 'L-2'",
                          "3, 'DD', 1.0, 'today', 0.2, 1.0, 4.0, 2.2, NULL, 1, NULL",
                          "4, 'site''s', 0.25, '2016-04-04', 1.0, 2.0, 3.0, 4.0, 5.0, 0, 'L-4'",
                          "5, 'II', 0.75, 'today', 1.0, 2.0, NULL, NULL, NULL, 0, 'L-5'",
                          "7, 'PT', 0.9, NULL, 3.2, -1.3, NULL, NULL, NULL, 1, NULL"}));
    QCOMPARE(
        pointRows(database),
        QStringList({"1, 12.0, 100.0, 100.0, 0", "2, 20.0, 50.0, 50.0, 0", "3, 34.0, 25.0, 25.0, 0",
                     "11, 5.0, 20.0, 20.0, 4", "12, 10.0, 10.0, 10.0, 0", "13, 25.0, 4.0, 4.0, 0",
                     "14, 50.0, 2.0, 2.0, 0", "21, 1.0, 0.6, 0.6, 0", "22, 4.0, 1.2, 1.2, 0",
                     "23, 6.0, 1.4, 1.4, 0", "24, 12.0, 1.7, 1.7, 0", "25, 16.0, 1.8, 1.8, 0",
                     "31, 1.0, 1.0, -1.0, 0", "32, 2.0, 2.0, -1.0, 0", "41, 30.0, 50.0, -1.0, 0",
                     "42, 30.0, 60.0, -1.0, 2"}));
}

void TestProfileV10CurvesFitted::refits_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("function"); // of both axes
    QTest::addColumn<QString>("points");
    QTest::addColumn<QString>("curve"); // correlation, date, a to e, valid
    QTest::addColumn<QStringList>("fitted");

    // y = 7/6 + 3/2 x; the sum of squares of the residuals is 1/6, that of y 14/3
    QTest::newRow("linear") << 0 << 0
                            << "(1, 1, 0, 1, -1, 0), (2, 1, 1, 3, -1, 0),"
                               " (3, 1, 2, 4, -1, 16)"
                            << "0.981981, 'today', 1.166667, 1.5, NULL, NULL, NULL, 1"
                            << QStringList{"1, 0.0, 1.0, 1.166667, 0", "2, 1.0, 3.0, 2.666667, 0",
                                           "3, 2.0, 4.0, 4.166667, 16"};
    // lg y = 3 - 2 lg x; 0 has no logarithm
    QTest::newRow("linear, logarithmic")
        << 0 << 1
        << "(1, 1, 1, 1000, -1, 0), (2, 1, 0, 5, -1, 0), (3, 1, 10, 10, -1, 1),"
           " (4, 1, 100, 0.1, -1, 0)"
        << "1.0, 'today', 3.0, -2.0, NULL, NULL, NULL, 1"
        << QStringList{"1, 1.0, 1000.0, 1000.0, 0", "2, 0.0, 5.0, -1.0, 1",
                       "3, 10.0, 10.0, 10.0, 0", "4, 100.0, 0.1, 0.1, 0"};
    // y = 6 + (1 - 6) / (1 + (x/2)^2)
    QTest::newRow("logistic of four parameters")
        << 4 << 0
        << "(1, 1, 0, 1, -1, 0), (2, 1, 1, 2, -1, 0), (3, 1, 2, 3.5, -1, 0), (4, 1, 4, 5, -1, 0),"
           " (5, 1, 6, 5.5, -1, 0)"
        << "1.0, 'today', 1.0, 2.0, 2.0, 6.0, NULL, 1"
        << QStringList{"1, 0.0, 1.0, 1.0, 0", "2, 1.0, 2.0, 2.0, 0", "3, 2.0, 3.5, 3.5, 0",
                       "4, 4.0, 5.0, 5.0, 0", "5, 6.0, 5.5, 5.5, 0"};
    QTest::newRow("not to be fitted: one x")
        << 0 << 0 << "(1, 1, 5, 1, -1, 4), (2, 1, 5, 2, -2, 0)"
        << "0.5, 'today', 11.0, 12.0, NULL, NULL, NULL, 0"
        << QStringList{"1, 5.0, 1.0, -1.0, 4", "2, 5.0, 2.0, -2.0, 0"};
    QTest::newRow("not to be fitted: too few points")
        << 4 << 0 << "(1, 1, 1, 1, -1, 0), (2, 1, 2, 2, -2, 0), (3, 1, 4, 3, -3, 0)"
        << "0.5, 'today', 11.0, 12.0, 13.0, 14.0, NULL, 0"
        << QStringList{"1, 1.0, 1.0, -1.0, 0", "2, 2.0, 2.0, -2.0, 0", "3, 4.0, 3.0, -3.0, 0"};
    QTest::newRow("no points of its own")
        << 0 << 0 << "(1, 2, 1, 1, -1, 0), (2, 2, 2, 2, -2, 0)"
        << "0.5, 'today', 11.0, 12.0, NULL, NULL, NULL, 0"
        << QStringList{"1, 1.0, 1.0, -1.0, 0", "2, 2.0, 2.0, -2.0, 0"};
    for (const int method : {1, 2, 3, 5, -1, 99}) {
        QTest::addRow("unknown method %d keeps all coefficients", method)
            << method << 0
            << "(1, 1, 0, 1, -1, 0), (2, 1, 1, 4, -2, 1), (3, 1, 2, 9, -3, 0), (4, 1, 3, 16, -4, 2)"
            << "0.5, 'today', 11.0, 12.0, 13.0, 14.0, 15.0, 0"
            << QStringList{"1, 0.0, 1.0, -1.0, 0", "2, 1.0, 4.0, -2.0, 1", "3, 2.0, 9.0, -3.0, 0",
                           "4, 3.0, 16.0, -4.0, 2"};
    }
    // y = 1 + x, with a correlation of 0.7071
    QTest::newRow("not to be fitted: too low a correlation")
        << 0 << 0
        << "(1, 1, 0, 0, -1, 0), (2, 1, 0, 2, -2, 0), (3, 1, 2, 2, -3, 0), (4, 1, 2, 4, -4, 16)"
        << "0.5, 'today', 11.0, 12.0, NULL, NULL, NULL, 0"
        << QStringList{"1, 0.0, 0.0, -1.0, 0", "2, 0.0, 2.0, -2.0, 0", "3, 2.0, 2.0, -3.0, 0",
                       "4, 2.0, 4.0, -4.0, 16"};
    QTest::newRow("an unknown function")
        << 0 << 2 << "(1, 1, 1, 1, -1, 0), (2, 1, 2, 2, -2, 0)"
        << "0.5, 'today', 11.0, 12.0, NULL, NULL, NULL, 0"
        << QStringList{"1, 1.0, 1.0, -1.0, 0", "2, 2.0, 2.0, -2.0, 0"};
}

void TestProfileV10CurvesFitted::refits()
{
    QFETCH(int, method);
    QFETCH(int, function);
    QFETCH(QString, points);
    QFETCH(QString, curve);
    QFETCH(QStringList, fitted);
    const TestDatabase database("profile.db");
    makeProfileAt(database, 9);
    database.execute(
        {"delete from curve", "delete from curvePoint", "delete from assayCalibration",
         // what is displayed does not change the fit
         QString("insert into assayCalibration values"
                 "(1, 1, 'PT', %1, null, 'T', 'P', null, null, 'Log', 'Log')")
             .arg(method),
         QString("insert into curve values(1, 'PT', 's', '%', 0.5, '2016-04-01', %1, %1,"
                 " 11, 12, 13, 14, 15, 0, null, 'L')")
             .arg(function),
         "insert into curvePoint values" + points});
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, &UpdateProfile::update_v10);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(curveRows(database), QStringList{"1, 'PT', " + curve + ", 'L'"});
    QCOMPARE(pointRows(database), fitted);
    QCOMPARE(invalidLines(recorder).size(), curve.endsWith('0') ? 1 : 0);
}

QTEST_GUILESS_MAIN(TestProfileV10CurvesFitted)
#include "tst_profile_v10_curves_fitted.moc"
