// SPDX-License-Identifier: MIT
/// The facts of a report for programs.

#include "samplereport.h"

#include "coagulation/report/json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QStringDecoder>
#include <QTest>

#include <cmath>

using namespace coagulation::report;

namespace {

QJsonObject objectOf(const Report &report)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(toJson(report), &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("%s", qUtf8Printable(error.errorString()));
    return document.object();
}

/// \return the value at a path of keys and indexes, for example "databases/0/name"
QJsonValue valueAt(const QJsonObject &object, const QString &path)
{
    QJsonValue value = object;
    for (const QString &part : path.split('/'))
        value = value.isArray() ? value.toArray().at(part.toInt()) : value.toObject().value(part);
    return value;
}

} // namespace

class TestJson : public QObject {
    Q_OBJECT

private slots:
    void holdsEachFact_data();
    void holdsEachFact();
    void namesTheUse();
    void namesEachKindOfPoint();
    void holdsNullForWhatIsNotKnown_data();
    void holdsNullForWhatIsNotKnown();
    void holdsNullForNumbersThatJsonLacks();
    void staysReadableWithHostileTexts_data();
    void staysReadableWithHostileTexts();
};

void TestJson::holdsEachFact_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonValue>("value");

    const auto row = [](const char *path, const QJsonValue &value) {
        QTest::newRow(path) << QString(path) << value;
    };
    row("format", 1);
    row("use", "rehearsal");
    row("succeeded", false);
    row("examplesOfPatients", false);
    row("exitCode", 1);
    row("milliseconds", 3'456);
    row("problem", "vardo ended with exit code 1.");
    row("attention/4/kind", "lostRows");
    row("attention/4/text", "reagent_unmoved holds 3 rows.");
    row("attention/4/anchor", "table-profile-3");
    row("databases/0/name", "profile");
    row("databases/0/newestVersion", 30);
    row("databases/0/versionBefore", 9);
    row("databases/0/versionAfter", 30);
    row("databases/0/milliseconds", 1'234);
    row("databases/0/integrityBefore", "ok");
    row("databases/0/integrityAfter", "ok");
    row("databases/2/problem", "The database is damaged.");
    row("databases/0/filesBefore/0/path", "/lab/profile.db");
    row("databases/0/filesBefore/0/bytes", 1'048'576);
    row("databases/0/filesAfter/0/sha256",
        "9f86d081884c7d659a2feaa0c55ad015a3bf4f1b2b0b822cd15d6c15b0f00a08");
    row("databases/0/steps/0/signature", "update_v1()");
    row("databases/0/steps/0/result", "skip");
    row("databases/0/steps/1/result", "pass");
    row("databases/0/steps/1/milliseconds", 1'200);
    row("databases/1/steps/2/result", "fail");
    row("databases/0/tables/0/name", "profile");
    row("databases/1/tables/0/viewAfter", true);
    row("databases/0/tables/0/rowsBefore", 1'200);
    row("databases/0/tables/0/rowsAfter", 1'234);
    row("databases/0/tables/0/columnsAdded/1", "unit");
    row("databases/0/tables/0/columnsRemoved/0", "old");
    row("databases/0/tables/0/added", 35);
    row("databases/0/tables/0/removed", 1);
    row("databases/0/tables/0/renamed", 2);
    row("databases/0/tables/0/changed", 2);
    row("databases/1/tables/1/problem", "The table patient could not be read.");
    row("databases/0/tables/0/changedColumns/0/column", "value");
    row("databases/0/tables/0/changedColumns/0/rows", 2);
    row("databases/0/tables/0/changedColumns/0/overwritten", 1);
    row("databases/0/tables/0/addedRows/0/cells/1/value", "NULL");
    row("databases/0/tables/0/removedRows/0/key", "name = 'gone'");
    row("databases/0/tables/0/renamedRows/0/newKey", "name = 'b'");
    row("databases/0/tables/0/renamedRows/0/cells/0/column", "value");
    row("databases/0/tables/0/changedRows/0/name", "'Site'");
    row("databases/0/tables/0/changedRows/0/cells/0/before", "'mine'");
    row("databases/0/tables/0/changedRows/0/cells/0/after", "'theirs'");
    row("databases/0/tables/0/changedRows/0/cells/0/overwritten", true);
    row("databases/0/objectsGone/0/type", "index");
    row("databases/0/objectsGone/0/table", "curve");
    row("databases/0/objectsNew/0/name", "reagent_trigger");
    row("databases/0/otherInvalidCurves/0", "AT III");
    row("databases/0/methodChanges/0/calibration", "DD");
    row("databases/0/methodChanges/0/before", "0");
    row("databases/0/methodChanges/0/after", "4");
    row("databases/0/unexpectedRows/0/kind", "ownAssay");
    row("databases/0/unexpectedRows/0/name", "TEG");
    row("databases/0/unexpectedRows/0/other", "PC");
    row("databases/0/unexpectedRows/1/kind", "oldSettingName");
    row("databases/0/unexpectedRows/1/other", QJsonValue::Null);
    row("databases/0/curves/0/key", "id = 2");
    row("databases/0/curves/0/name", "FIB");
    row("databases/0/curves/0/xUnit", "s");
    row("databases/0/curves/0/yUnit", "g/l");
    row("databases/0/curves/0/method", 0);
    row("databases/0/curves/0/xFunction", 1);
    row("databases/0/curves/0/yFunction", 1);
    row("databases/0/curves/0/logarithmicX", true);
    row("databases/0/curves/0/largestDifference", 6.7);
    row("databases/0/curves/0/before/valid", true);
    row("databases/0/curves/0/before/date", "2016-04-02");
    row("databases/0/curves/0/after/correlation", 1.0);
    row("databases/0/curves/0/after/coefficients/1", -1.0);
    row("databases/0/curves/0/points/0/x", 5.0);
    row("databases/0/curves/0/points/0/y", 20.0);
    row("databases/0/curves/0/points/4/zAfter", 5.0);
    row("databases/0/curves/0/points/4/outlier", true);
    row("databases/0/curves/1/points/5/excluded", true);
    row("log/1/text", "Warning: no such table: x");
    row("log/1/milliseconds", 12);
    row("log/1/warning", true);
    row("record/time", "2026-11-22T09:35:43+01:00");
    row("record/host", "workstation");
    row("record/user", "technician");
    row("record/program", "/usr/bin/vardo");
    row("record/vardoVersion", "1.1.0");
    row("record/qtVersion", "6.4.2");
    row("record/sqliteVersion", "3.40.1");
}

/// Shows: REP-18
void TestJson::holdsEachFact()
{
    QFETCH(QString, path);
    QFETCH(QJsonValue, value);

    QCOMPARE(valueAt(objectOf(sampleReport()), path), value);
}

void TestJson::namesTheUse()
{
    QCOMPARE(objectOf(calmReport()).value("use").toString(), QString("comparison"));
}

void TestJson::namesEachKindOfPoint()
{
    const QJsonArray points = objectOf(sampleReport()).value("attention").toArray();
    QStringList kinds;
    for (const auto &point : points)
        kinds << point.toObject().value("kind").toString();

    QCOMPARE(kinds,
             QStringList({"failure", "invalidCurve", "refittedCurve", "calibration", "lostRows",
                          "goneObject", "overwritten", "reagentIdentifier", "loweredVersion",
                          "warning"}));
}

void TestJson::holdsNullForWhatIsNotKnown_data()
{
    QTest::addColumn<QString>("path");

    for (const char *path :
         {"databases/0/problem", "databases/3/versionBefore", "databases/3/milliseconds",
          "databases/3/integrityBefore", "databases/0/filesBefore/1/sha256",
          "databases/0/steps/0/milliseconds", "databases/0/tables/2/rowsBefore",
          "databases/0/tables/3/rowsAfter", "databases/0/tables/0/addedRows/0/newKey",
          "databases/0/tables/0/changedRows/1/name", "databases/0/curves/3/method",
          "databases/0/curves/3/before/valid", "databases/0/curves/0/after/coefficients/4",
          "databases/0/curves/0/points/4/zBefore", "databases/0/curves/2/largestDifference",
          "log/2/milliseconds"})
        QTest::newRow(path) << path;
}

/// Shows: REP-18
void TestJson::holdsNullForWhatIsNotKnown()
{
    QFETCH(QString, path);

    QCOMPARE(valueAt(objectOf(sampleReport()), path), QJsonValue(QJsonValue::Null));
}

void TestJson::holdsNullForNumbersThatJsonLacks()
{
    Report report = sampleReport();
    report.databases[0].curves[0].points[0].x = std::nan("");

    QCOMPARE(valueAt(objectOf(report), "databases/0/curves/0/points/0/x"),
             QJsonValue(QJsonValue::Null));
}

void TestJson::staysReadableWithHostileTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("read");

    const auto unchanged = [](const char *name, const QString &text) {
        QTest::newRow(name) << text << text;
    };
    unchanged("quotes and backslashes", R"("\"\\u0022\)");
    unchanged("control characters", QStringLiteral("\0\n\x1b\x7f\u009B"));
    unchanged("right to left", "a" + QString(QChar(0x202E)) + "b");
    unchanged("a megabyte", QString(1'048'576, 'w'));
    QTest::newRow("half of a pair") << "a" + QString(QChar(0xD83E)) + "b"
                                    << "a?b";
}

/// Shows: REP-18
void TestJson::staysReadableWithHostileTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, read);
    Report report = calmReport();
    report.log << LogLine{text};

    const QByteArray json = toJson(report);

    QStringDecoder decoder(QStringDecoder::Utf8);
    QVERIFY(!QString(decoder(json)).isEmpty());
    QVERIFY(!decoder.hasError());
    QCOMPARE(valueAt(objectOf(report), "log/0/text").toString(), read);
}

QTEST_GUILESS_MAIN(TestJson)
#include "tst_json.moc"
