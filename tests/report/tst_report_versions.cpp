// SPDX-License-Identifier: MIT
/// The upgrade of every version's sample: the report claims no row lost but those that the steps
/// delete on purpose, and names all that needs attention.

#include "compared.h"
#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "upgrade.h"

#include "coagulation/report/attention.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

using namespace coagulation::report;

namespace {

/// A row of a sample that the upgrade of databases below a version deletes on purpose.
struct DeletedRow {
    QString database;
    int from; ///< the first version whose sample has the row
    int below;
    QString table;
    QString key;
};

const QList<DeletedRow> deletedRows{
    {"profile", 0, 2, "profile", "name = 'DD/disable'"},
    {"profile", 0, 2, "profile", "name = 'II/disable'"},
    {"profile", 0, 10, "profile", "name = 'ATIII/mix/times'"},
    {"profile", 0, 10, "profile", "name = 'program/ATIII/name1'"},
    {"profile", 0, 10, "profile", "name = 'program/ATIII/volume'"},
    {"profile", 0, 2, "reagent", "id = 6"}, // Buffer
    {"profile", 0, 2, "reagent", "id = 7"}, // Latex, which gets a new number
    {"profile", 17, 18, "assayItem", "id = 192"},
    {"qc", 0, 3, "subsetting", "id = 1"}, // a later row has the same file number and item
};

QStringList expectedLosses(const QString &database, int stored)
{
    QStringList losses;
    for (const DeletedRow &row : deletedRows) {
        if (row.database == database && row.from <= stored && stored < row.below)
            losses << row.table + ": " + row.key;
    }
    losses.sort();
    return losses;
}

QStringList lossesIn(const DatabaseFacts &facts)
{
    QStringList losses;
    for (const TableFacts &table : facts.tables) {
        for (const RowFacts &row : table.removedRows)
            losses << table.name + ": " + row.key;
    }
    losses.sort();
    return losses;
}

/// A sentence on the upgrade of databases below a version.
struct Point {
    QString database;
    int from; ///< the first version whose sample has what it is about
    int below;
    QString text;
};

const QList<Point> points{
    {"profile", 0, 10, "The standard curve ‘II’ is invalid: calibrate again."},
    {"profile", 0, 10,
     "1 other standard curve is invalid and was not fitted once more: ‘site's’. Calibrate again what you use."},
    {"profile", 10, 31,
     "2 other standard curves are invalid and were not fitted once more: ‘site's’ and ‘II’."
     " Calibrate again what you use."},
    {"profile", 0, 10,
     "The standard curve ‘FIB’ was fitted once more: calibrate again before use."},
    {"profile", 0, 10, "The standard curve ‘DD’ was fitted once more: calibrate again before use."},
    {"profile", 0, 3,
     "The method of the calibration ‘DD’ changed from 0 to 4:"
     " calibrate its standard curves again before use."},
    {"profile", 0, 4,
     "The upgrade chose the current standard curves: id = 2 for 'FIB', id = 3 for 'DD', id = 4 for 'site''s',"
     " id = 5 for 'II' and id = 7 for 'PT'. Check which ones you use."},
    {"profile", 0, 10,
     "The variable id = 1 ('ISI') got the value 1.07 from a standard curve: check it."},
    {"profile", 0, 10,
     "The variable id = 2 ('normal') got the value 12.0 from a standard curve: check it."},
    {"profile", 0, 5, "No item got the limits of the result check for ‘II’: set them again."},
    {"profile", 0, 23,
     "The standard curve ‘PT’ has no date of expiry, since it has no date: check it."},
    {"profile", 0, 2,
     "5 rows of profile are not there any more: name = 'ATIII/mix/times', name = 'DD/disable',"
     " name = 'II/disable', name = 'program/ATIII/name1' and name = 'program/ATIII/volume'."},
    {"profile", 2, 10,
     "3 rows of profile are not there any more: name = 'ATIII/mix/times', name = 'program/ATIII/name1'"
     " and name = 'program/ATIII/volume'."},
    {"profile", 0, 2,
     "2 rows of reagent are not there any more: id = 6 ('Buffer') and id = 7 ('Latex')."},
    {"profile", 17, 18, "1 row of assayItem is not there any more: id = 192 ('RI')."},
    {"profile", 0, 7, "The identifier of the reagent 'CaCl2' changed from 'A101' to 'A101(3)'."},
    {"profile", 0, 7, "The identifier of the reagent 'QC normal' changed from 'S-1' to 'S-1(2)'."},
    // values were overwritten in
    {"profile", 0, 11, "assayCalibration"},
    {"profile", 0, 13, "assayItem"},
    {"profile", 26, 27, "assayItem"},
    {"profile", 14, 30, "assayTemplate"},
    {"profile", 0, 10, "dataCheck"},
    {"profile", 0, 10, "profile"},
    {"profile", 0, 10, "reagent"},
    {"profile", 14, 30, "reagent"},
    {"profile", 0, 10, "reagentType"},
    {"qc", 0, 3, "1 row of subsetting is not there any more: id = 1."},
};

QStringList expectedPoints(const QString &database, int stored)
{
    QStringList texts;
    for (const Point &point : points) {
        if (point.database == database && point.from <= stored && stored < point.below)
            texts << point.text;
    }
    texts.sort();
    return texts;
}

/// \return the sentences; of those on overwritten values the tables
QStringList pointsIn(const Report &report)
{
    static const QRegularExpression overwritten("^In (.+), .* replaced");
    QStringList texts;
    for (const Attention &point : attentionOf(report)) {
        const QRegularExpressionMatch match = overwritten.match(point.text);
        texts << (match.hasMatch() ? match.captured(1) : point.text);
    }
    texts.sort();
    return texts;
}

/// \param changes of the sample before the upgrade
Report reportOnUpgrade(const QString &name, int stored, const QStringList &changes = {})
{
    const MessageRecorder recorder;
    const TestDatabase before(name + ".db");
    makeDatabaseAt(before, name, stored);
    before.execute(changes);
    const TestDatabase after(name + ".db");
    if (!QFile::remove(after.path()) || !QFile::copy(before.path(), after.path())
        || !upgrade(after))
        qFatal("The sample could not be upgraded");
    return reportOn(before, after, name);
}

void addVersions()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("stored");

    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        for (int stored = 0; stored <= newestVersionOf(name); ++stored)
            QTest::addRow("%s %d", name, stored) << QString(name) << stored;
    }
}

} // namespace

class TestReportVersions : public QObject {
    Q_OBJECT

private slots:
    void claimsNothingLost_data();
    void claimsNothingLost();
    void namesWhatNeedsAttention_data();
    void namesWhatNeedsAttention();
    void tellsOfTemplatesThatKeptTheirLayout();
};

void TestReportVersions::claimsNothingLost_data()
{
    addVersions();
}

/// Shows: REP-11
void TestReportVersions::claimsNothingLost()
{
    QFETCH(QString, name);
    QFETCH(int, stored);

    const Report report = reportOnUpgrade(name, stored);

    const DatabaseFacts &facts = report.databases.first();
    QCOMPARE(facts.problem, QString());
    QCOMPARE(facts.versionBefore.value_or(0), stored);
    QCOMPARE(facts.versionAfter, newestVersionOf(name));
    QCOMPARE(lossesIn(facts), expectedLosses(name, stored));
    qint64 removed = 0;
    for (const TableFacts &table : facts.tables) {
        QCOMPARE(table.problem, QString());
        removed += table.removed;
    }
    QCOMPARE(removed, expectedLosses(name, stored).size());
    QVERIFY(succeeded(report));
}

void TestReportVersions::namesWhatNeedsAttention_data()
{
    addVersions();
}

/// Shows: REP-12
void TestReportVersions::namesWhatNeedsAttention()
{
    QFETCH(QString, name);
    QFETCH(int, stored);

    QCOMPARE(pointsIn(reportOnUpgrade(name, stored)), expectedPoints(name, stored));
}

/// A column that somebody has added keeps the templates from their new layout, and the upgrade goes on.
void TestReportVersions::tellsOfTemplatesThatKeptTheirLayout()
{
    const Report report =
        reportOnUpgrade("profile", 7, {"alter table assayTemplate add remark text"});

    const QStringList texts = pointsIn(report);
    QVERIFY2(!texts.filter("The table assayTemplate kept its old layout.").isEmpty(),
             qPrintable(texts.join('\n')));
    QVERIFY(succeeded(report));
}

QTEST_GUILESS_MAIN(TestReportVersions)

#include "tst_report_versions.moc"
