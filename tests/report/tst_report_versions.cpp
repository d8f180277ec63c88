// SPDX-License-Identifier: MIT
/// The upgrade of every version's sample: the report claims no row lost but those that the steps
/// delete on purpose.

#include "compared.h"
#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "upgrade.h"

#include "coagulation/report/attention.h"

#include <QFile>
#include <QTest>

#include <algorithm>

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

qsizetype countOf(Attention::Kind kind, const Report &report)
{
    const QList<Attention> all = attentionOf(report);
    return std::count_if(all.begin(), all.end(),
                         [kind](const Attention &one) { return one.kind == kind; });
}

} // namespace

class TestReportVersions : public QObject {
    Q_OBJECT

private slots:
    void claimsNothingLost_data();
    void claimsNothingLost();
};

void TestReportVersions::claimsNothingLost_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("stored");

    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        for (int stored = 0; stored <= newestVersionOf(name); ++stored)
            QTest::addRow("%s %d", name, stored) << QString(name) << stored;
    }
}

/// Shows: REP-11
void TestReportVersions::claimsNothingLost()
{
    QFETCH(QString, name);
    QFETCH(int, stored);
    const MessageRecorder recorder;
    const TestDatabase before(name + ".db");
    makeDatabaseAt(before, name, stored);
    const TestDatabase after(name + ".db");
    QVERIFY(QFile::remove(after.path()) && QFile::copy(before.path(), after.path()));
    QVERIFY(upgrade(after));

    const Report report = reportOn(before, after, name);

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
    QCOMPARE(countOf(Attention::Kind::GoneObject, report), 0);
    QCOMPARE(countOf(Attention::Kind::LoweredVersion, report), 0);
    QCOMPARE(countOf(Attention::Kind::RefittedCurve, report),
             name == "profile" && stored < 10 ? 2 : 0);
}

QTEST_GUILESS_MAIN(TestReportVersions)

#include "tst_report_versions.moc"
