// SPDX-License-Identifier: MIT
/// The upgrade of every version's sample: the report claims no row lost but those that the steps delete on purpose.

#include "compared.h"
#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "upgrade.h"

#include "coagulation/report/attention.h"

#include <QFile>
#include <QTest>

using namespace coagulation::report;

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

void TestReportVersions::claimsNothingLost()
{
    QFETCH(QString, name);
    QFETCH(int, stored);
    const TestDatabase before(name + ".db");
    makeDatabaseAt(before, name, stored);
    const TestDatabase after(name + ".db");
    QVERIFY(QFile::remove(after.path()) && QFile::copy(before.path(), after.path()));
    const MessageRecorder recorder;
    QVERIFY(upgrade(after));

    Report report;
    report.exitCode = 0;
    DatabaseFacts facts = compared(before, after, name);
    facts.filesBefore = {{before.path(), 1, "0"}};
    facts.filesAfter = {{after.path(), 1, "0"}};
    report.databases = {facts};
    for (auto &t : facts.tables) for (auto&r:t.removedRows) printf("LOST %s %d %s %s\n", qPrintable(name), stored, qPrintable(t.name), qPrintable(r.key));
    for (auto &a : attentionOf(report)) if (a.kind==Attention::Kind::GoneObject||a.kind==Attention::Kind::Failure||a.kind==Attention::Kind::InvalidCurve||a.kind==Attention::Kind::RefittedCurve) printf("%d %s %d %s\n",int(a.kind), qPrintable(name), stored, qPrintable(a.text));
}

QTEST_GUILESS_MAIN(TestReportVersions)

#include "tst_report_versions.moc"
