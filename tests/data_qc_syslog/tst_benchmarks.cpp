// SPDX-License-Identifier: MIT
/// The statements that benchmarks/ gives the sqlite3 shell are those of the upgrades.

#include "messagerecorder.h"
#include "olddatabases.h"

#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateqc.h"

#include <QFile>
#include <QProcess>
#include <QTest>

namespace {

using Upgrade = bool (*)(const TestDatabase &);

template <typename Updater> bool upgrade(const TestDatabase &database)
{
    coagulation::fileNameAffixes() = {database.folderPath() + '/', ""};
    const MessageRecorder recorder;
    return Updater().run();
}

/// Lets the sqlite3 shell run a script of benchmarks/.
bool runShell(const TestDatabase &database, const QString &script)
{
    QProcess shell;
    shell.setStandardInputFile(QString(BENCHMARKS) + '/' + script);
    shell.start("sqlite3", {"-bail", "-cmd", "pragma synchronous=off", database.path()});
    return shell.waitForFinished() && shell.exitCode() == 0;
}

} // namespace

class TestBenchmarks : public QObject {
    Q_OBJECT

private slots:
    void shellMakesTheUpgradedDatabase_data();
    void shellMakesTheUpgradedDatabase();
};

void TestBenchmarks::shellMakesTheUpgradedDatabase_data()
{
    QTest::addColumn<QString>("database");
    QTest::addColumn<int>("storedVersion");
    QTest::addColumn<QString>("script");
    QTest::addColumn<Upgrade>("upgrade");

    QTest::newRow("data") << "data" << 0 << "upgrade_data.sql"
                          << Upgrade(upgrade<coagulation::UpdateData>);
    QTest::newRow("qc") << "qc" << 2 << "upgrade_qc.sql" << Upgrade(upgrade<coagulation::UpdateQc>);
}

void TestBenchmarks::shellMakesTheUpgradedDatabase()
{
    QFETCH(QString, database);
    QFETCH(int, storedVersion);
    QFETCH(QString, script);
    QFETCH(Upgrade, upgrade);
    const TestDatabase upgraded(database + ".db");
    makeDatabaseAt(upgraded, database, storedVersion);
    const TestDatabase byShell(database + ".db");
    makeDatabaseAt(byShell, database, storedVersion);

    QVERIFY(upgrade(upgraded));
    QVERIFY(runShell(byShell, script));

    QCOMPARE(byShell.content(), upgraded.content());
}

QTEST_GUILESS_MAIN(TestBenchmarks)
#include "tst_benchmarks.moc"
