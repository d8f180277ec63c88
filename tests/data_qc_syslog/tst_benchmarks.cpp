// SPDX-License-Identifier: MIT
/// The statements that benchmarks/ gives the sqlite3 shell are those of the upgrades.

#include "messagerecorder.h"
#include "olddatabases.h"
#include "upgrade.h"

#include <QFile>
#include <QProcess>
#include <QTest>

namespace {

/// Lets the sqlite3 shell run a script of benchmarks/.
bool runShell(const TestDatabase &database, const QString &script)
{
    QProcess shell;
    shell.setStandardInputFile(QString(BENCHMARKS) + '/' + script);
    shell.start(sqliteShell(), {"-bail", "-cmd", "pragma synchronous=off", database.path()});
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

    QTest::newRow("data") << "data" << 0 << "upgrade_data.sql";
    QTest::newRow("qc") << "qc" << 2 << "upgrade_qc.sql";
}

void TestBenchmarks::shellMakesTheUpgradedDatabase()
{
    QFETCH(QString, database);
    QFETCH(int, storedVersion);
    QFETCH(QString, script);
    const TestDatabase upgraded(database + ".db");
    makeDatabaseAt(upgraded, database, storedVersion);
    const TestDatabase byShell(database + ".db");
    makeDatabaseAt(byShell, database, storedVersion);

    const MessageRecorder recorder;

    QVERIFY(upgrade(upgraded));
    QVERIFY(runShell(byShell, script));

    QCOMPARE(byShell.content(), upgraded.content());
}

QTEST_GUILESS_MAIN(TestBenchmarks)
#include "tst_benchmarks.moc"
