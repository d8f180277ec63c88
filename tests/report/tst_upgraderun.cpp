// SPDX-License-Identifier: MIT
/// What the report takes from a log, and what it says about the space that a rehearsal needs.

#include "coagulation/report/space.h"
#include "coagulation/report/upgraderun.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace coagulation::report;

namespace {

const QByteArray lineEnding = " ((null):0, (null))\n";

/// \return a log file's bytes
QByteArray logOf(const QStringList &lines)
{
    QByteArray log;
    for (const QString &line : lines)
        log += line.toUtf8() + lineEnding;
    return log;
}

QStringList textsOf(const QList<LogLine> &lines)
{
    QStringList texts;
    for (const LogLine &line : lines)
        texts << line.text;
    return texts;
}

const QStringList runOnLab{"Debug: Updating /lab/profile.db", "Debug: update_v30(): SKIP",
                           "Warning: File doesn't exist: /lab/data.db, skipped",
                           "Debug: Updating /lab/qc.db", "Debug: update_v3() : FAIL"};
const QStringList runOnOthers{"Debug: Updating /lab/b_profile.db", "Debug: update_v30(): PASS",
                              "Debug: Updating /lab/b_data.db"};

} // namespace

class TestUpgradeRun : public QObject {
    Q_OBJECT

private slots:
    void readsTheLastRun_data();
    void readsTheLastRun();
    void readsWarnings();
    void readsTheLinesOfWindows();
    void readsNoMissingLog();
    void takesTheStepsOfADatabase();
    void measuresTheSteps();
    void measuresToTheNextDatabase();
    void knowsNoTimesOfALogThatNobodyWatched();
    void tellsThatAProgramDidNotStart();
    void showsTheCourse_data();
    void showsTheCourse();
    void computesTheSpace();
    void namesTheSpaceThatIsMissing();

private:
    QString write(const QByteArray &log) const
    {
        QFile file(folder.filePath("upgrade.log"));
        if (!file.open(QIODevice::WriteOnly) || file.write(log) != log.size())
            qFatal("no log");
        return file.fileName();
    }

    QTemporaryDir folder;
};

void TestUpgradeRun::readsTheLastRun_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("run");

    QTest::newRow("one run") << "" << runOnLab << runOnLab;
    QTest::newRow("two runs") << "" << runOnLab + runOnLab << runOnLab;
    QTest::newRow("other databases before") << "" << runOnOthers + runOnLab << runOnLab;
    QTest::newRow("other databases behind") << "" << runOnLab + runOnOthers << runOnLab;
    QTest::newRow("other databases on both sides")
        << "" << runOnOthers + runOnLab + runOnOthers << runOnLab;
    QTest::newRow("prefix") << "b_" << runOnLab + runOnOthers << runOnOthers;
    QTest::newRow("only others") << "c_" << runOnLab + runOnOthers << QStringList();
    const QStringList named{"Debug: Updating /lab/profileprofile.db",
                            "Debug: Updating /lab/profiledata.db"};
    QTest::newRow("prefix that is a database's name") << "profile" << named + named << named;
    const QStringList missing{"Warning: File doesn't exist: /lab/profile.db, skipped",
                              "Debug: Updating /lab/data.db"};
    QTest::newRow("no profile database") << "" << runOnLab + missing << missing;
    QTest::newRow("empty") << "" << QStringList() << QStringList();
}

void TestUpgradeRun::readsTheLastRun()
{
    QFETCH(QString, prefix);
    QFETCH(QStringList, lines);
    QFETCH(QStringList, run);

    const std::optional<QList<LogLine>> log = readLog(write(logOf(lines)), {prefix, ""});

    QVERIFY(log);
    QCOMPARE(textsOf(*log), run);
}

void TestUpgradeRun::readsWarnings()
{
    const std::optional<QList<LogLine>> log = readLog(write(logOf(runOnLab)), {});

    QVERIFY(log);
    QVERIFY(!log->at(1).warning);
    QVERIFY(log->at(2).warning);
}

void TestUpgradeRun::readsTheLinesOfWindows()
{
    const QByteArray bytes = logOf(runOnLab).replace("\n", "\r\n");

    const std::optional<QList<LogLine>> log = readLog(write(bytes), {});

    QVERIFY(log);
    QCOMPARE(textsOf(*log), runOnLab);
}

void TestUpgradeRun::readsNoMissingLog()
{
    QVERIFY(!readLog(folder.filePath("missing"), {}));
}

void TestUpgradeRun::takesTheStepsOfADatabase()
{
    const std::optional<QList<LogLine>> log = readLog(write(logOf(runOnLab)), {});
    QVERIFY(log);

    const LoggedUpgrade profile = upgradeIn(*log, "profile.db");
    const LoggedUpgrade data = upgradeIn(*log, "data.db");
    const LoggedUpgrade qc = upgradeIn(*log, "qc.db");

    QCOMPARE(profile.steps.size(), 1);
    QCOMPARE(profile.steps.first().signature, QString("update_v30()"));
    QCOMPARE(profile.steps.first().result, StepResult::Skip);
    QVERIFY(data.steps.isEmpty());
    QCOMPARE(qc.steps.size(), 1);
    QCOMPARE(qc.steps.first().signature, QString("update_v3()"));
    QCOMPARE(qc.steps.first().result, StepResult::Fail);
}

void TestUpgradeRun::measuresTheSteps()
{
    const QList<LogLine> log{{"Debug: Updating /lab/qc.db", 100},
                             {"Debug: update_v1() : SKIP", 110},
                             {"Debug: a word in between", 120},
                             {"Debug: update_v2() : PASS", 150},
                             {"Debug: update_v3() : FAIL", 155}};

    const QList<StepFacts> steps = upgradeIn(log, "qc.db").steps;

    QCOMPARE(steps.at(0).milliseconds, std::optional<qint64>());
    QCOMPARE(steps.at(1).milliseconds, std::optional<qint64>(40));
    QCOMPARE(steps.at(2).milliseconds, std::optional<qint64>(5));
}

void TestUpgradeRun::measuresToTheNextDatabase()
{
    const QList<LogLine> log{{"Debug: Updating /lab/profile.db", 20},
                             {"Debug: Updated version to 30", 80},
                             {"Debug: Updating /lab/data.db", 100}};

    QCOMPARE(upgradeIn(log, "profile.db", 170).milliseconds, std::optional<qint64>(80));
    QCOMPARE(upgradeIn(log, "data.db", 170).milliseconds, std::optional<qint64>(70));
}

void TestUpgradeRun::knowsNoTimesOfALogThatNobodyWatched()
{
    const std::optional<QList<LogLine>> log = readLog(write(logOf(runOnLab)), {});
    QVERIFY(log);

    const LoggedUpgrade qc = upgradeIn(*log, "qc.db");

    QCOMPARE(qc.milliseconds, std::optional<qint64>());
    QCOMPARE(qc.steps.first().milliseconds, std::optional<qint64>());
}

void TestUpgradeRun::tellsThatAProgramDidNotStart()
{
    const QString program = folder.filePath("missing");

    const UpgradeRun run = runUpgrade(
        program, folder.path(), {}, [](const QString &) {}, [] { return false; });

    QVERIFY2(run.problem.startsWith(program + " did not start: "), qUtf8Printable(run.problem));
    QCOMPARE(run.exitCode, std::optional<int>());
}

void TestUpgradeRun::showsTheCourse_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("part");

    QTest::newRow("database") << "Debug: Updating /lab/qc.db"
                              << "qc.db";
    QTest::newRow("step") << "Debug: update_v3() : PASS"
                          << "update_v3()";
    QTest::newRow("missing database") << "Warning: File doesn't exist: /lab/qc.db, skipped"
                                      << "qc.db";
    QTest::newRow("any other line") << "Debug: Updated version to 3"
                                    << "";
}

void TestUpgradeRun::showsTheCourse()
{
    QFETCH(QString, line);
    QFETCH(QString, part);

    QCOMPARE(partOfUpgrade(line), part);
}

/// Shows: REP-6
void TestUpgradeRun::computesTheSpace()
{
    const auto make = [this](const QString &name, qint64 bytes) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || !file.resize(bytes))
            qFatal("no file");
        return file.fileName();
    };
    const QString large = make("data.db", 800);
    make("data.db-wal", 200);
    const QString small = make("qc.db", 100);

    const SpaceNeeded needed = spaceNeededFor({large, small, folder.filePath("missing.db")});

    QCOMPARE(needed.copies, 2200);
    QCOMPARE(needed.upgrade, 880 + 1500);
}

/// Shows: REP-6
void TestUpgradeRun::namesTheSpaceThatIsMissing()
{
    const SpaceNeeded needed{2'000'000'000, 1'200'000'000};

    QCOMPARE(lackOfSpace(needed, 3'200'000'000, "/tmp"), QString());
    const QString problem = lackOfSpace(needed, 1'100'000'000, "/tmp");
    QVERIFY2(
        problem.startsWith("The rehearsal needs 3.2 GB, of which 2.0 GB for the copies and 1.2 GB"
                           " for the upgrade; 1.1 GB are free in /tmp."),
        qUtf8Printable(problem));
}

QTEST_GUILESS_MAIN(TestUpgradeRun)

#include "tst_upgraderun.moc"
