// SPDX-License-Identifier: MIT
/// Upgrades that the system under the tool disturbs: each call on the files fails once, in every way,
/// and memory ends at every size. The database is the old one or the new one, and the exit code says which.

#include "disturbedupgrade.h"
#include "driversqlite.h"
#include "faultyfiles.h"

#include <QTest>

#include <sqlite3.h>
#include <sys/resource.h>

namespace {

/// \return whether every call is to fail once, as scripts/faults asks for; or a choice of them
bool walksAll()
{
    return qEnvironmentVariableIntValue("VARDO_ALL_FAULTS") != 0;
}

/// \return n, where every n-th call on the files is to fail
int strideOf(Writing writing)
{
    if (walksAll())
        return 1;
    if (DisturbedUpgrade::isSanitized())
        return 10;
    return writing == Writing::AtCommit ? 1 : 5;
}

/// \return by what factor the number of a request for memory that is to fail grows
double strideOfRequests(const QString &fault)
{
    if (walksAll())
        return fault == faultyfiles::noMemoryOnce ? 1 : 1.003; // there are 100,000 requests
    return DisturbedUpgrade::isSanitized() ? 1.3 : 1.1;
}

/// \return the warnings of a log, but for those of databases that are not there
QStringList reasons(const QStringList &log)
{
    return log.filter(QRegularExpression("^Warning: (?!File doesn't exist)"));
}

/// Of a write-ahead log whose last write could not be made sure, nor taken back since nothing can be
/// written any more, it shows only at the next opening whether it holds.
bool isUndecided(const ToolRun &run, Writing writing)
{
    return writing == Writing::Ahead && !reasons(run.log).filter("Failed to commit:").isEmpty();
}

/// \return what contradicts the promise after a disturbed run, empty if nothing does
QString brokenPromise(DisturbedUpgrade &upgrade, const ToolRun &run,
                      Writing writing = Writing::AtCommit)
{
    const DisturbedUpgrade::Files left = upgrade.files();
    QString outcome = upgrade.outcome();
    if (outcome != "old" && outcome != "new")
        return outcome;
    if (run.exited && outcome != (run.exitCode == 0 ? "new" : "old") && !isUndecided(run, writing))
        return QString("exit code %1 with the %2 database").arg(run.exitCode).arg(outcome);
    if (run.exited && run.exitCode != 0 && reasons(run.log).isEmpty() && run.errors.isEmpty())
        return "no reason in the log:\n" + run.log.join('\n');

    upgrade.setFiles(left);
    const QString afterwards = upgrade.outcomeOfAnotherRun();
    return afterwards == "new" ? QString() : afterwards;
}

QProcessEnvironment faultyEnvironment(const DisturbedUpgrade &upgrade, const QString &library,
                                      const QString &fault)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", library);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0"); // it wants to be loaded first
    environment.insert(faultyfiles::folderVariable, upgrade.folder());
    environment.insert(faultyfiles::reportVariable, upgrade.aside("met"));
    environment.insert(faultyfiles::faultVariable, fault);
    return environment;
}

/// \return what a run breaks in which a call fails, empty if nothing; "not met" if it makes fewer calls
QString brokenByFault(DisturbedUpgrade &upgrade, QProcessEnvironment &environment, int call,
                      Writing writing)
{
    QFile::remove(upgrade.aside("met"));
    upgrade.setFiles(upgrade.oldFiles());
    environment.insert(faultyfiles::callVariable, QString::number(call));
    const ToolRun run = upgrade.run(environment);

    const QString broken = brokenPromise(upgrade, run, writing);
    if (!broken.isEmpty())
        return QString("call %1: %2").arg(QString::number(call), broken);
    return QFile::exists(upgrade.aside("met")) ? QString() : "not met";
}

} // namespace

class TestFaults : public QObject {
    Q_OBJECT

private slots:
    void init();

    void profile_data() { addFaults(); }
    /// Shows: REL-1
    void profile() { walkFiles("profile"); }
    void data_data() { addFaults(); }
    /// Shows: REL-1
    void data() { walkFiles("data"); }
    void qc_data() { addFaults(); }
    /// Shows: REL-1
    void qc() { walkFiles("qc"); }
    void syslog_data() { addFaults(); }
    /// Shows: REL-1
    void syslog() { walkFiles("syslog"); }

    void sqliteWithoutMemory_data();
    void sqliteWithoutMemory();
    void processWithoutMemory_data();
    void processWithoutMemory();

private:
    static void addFaults();
    static void walkFiles(const QString &database);
};

void TestFaults::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestFaults::addFaults()
{
    QTest::addColumn<Writing>("writing");
    QTest::addColumn<QString>("fault");

    for (const char *fault :
         {faultyfiles::kill, faultyfiles::tear, faultyfiles::diskFullOnce, faultyfiles::diskFull,
          faultyfiles::ioErrorOnce, faultyfiles::ioError}) {
        QTest::addRow("journal, %s", fault) << Writing::AtCommit << fault;
        QTest::addRow("journal and full cache, %s", fault) << Writing::Spilling << fault;
        QTest::addRow("write-ahead log, %s", fault) << Writing::Ahead << fault;
    }
}

void TestFaults::walkFiles(const QString &database)
{
    QFETCH(Writing, writing);
    QFETCH(QString, fault);
    DisturbedUpgrade upgrade(database, writing, VARDO);
    QProcessEnvironment environment = faultyEnvironment(upgrade, FAULTYFILES, fault);
    const int stride = strideOf(writing);

    int faults = 0;
    QString broken;
    for (int call = 1; broken.isEmpty(); call += stride, ++faults)
        broken = brokenByFault(upgrade, environment, call, writing);

    QCOMPARE(broken, "not met");
    qInfo("%d faults", faults - 1);
    QVERIFY(faults > 1);
}

void TestFaults::sqliteWithoutMemory_data()
{
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
    QTest::addColumn<QString>("database");
    QTest::addColumn<QString>("fault");

    for (const char *database : {"profile", "data", "qc", "syslog"}) {
        for (const char *fault : {faultyfiles::noMemoryOnce, faultyfiles::noMemory})
            QTest::addRow("%s, %s", database, fault) << database << fault;
    }
}

/// Shows: REL-2
void TestFaults::sqliteWithoutMemory()
{
    QFETCH(QString, database);
    QFETCH(QString, fault);
    DisturbedUpgrade upgrade(database, Writing::AtCommit, VARDO);
    QProcessEnvironment environment = faultyEnvironment(upgrade, FAULTYMEMORY, fault);
    const double stride = strideOfRequests(fault);
    int faults = 0;
    QString broken;
    for (double call = 1; broken.isEmpty(); call = std::max(call + 1, call * stride), ++faults)
        broken = brokenByFault(upgrade, environment, static_cast<int>(call), Writing::AtCommit);

    QCOMPARE(broken, "not met");
    qInfo("%d faults", faults - 1);
    QVERIFY(faults > 10);
}

void TestFaults::processWithoutMemory_data()
{
    QTest::addColumn<QString>("database");

    for (const char *database : {"profile", "data", "qc", "syslog"})
        QTest::newRow(database) << database;
}

/// Shows: REL-2
void TestFaults::processWithoutMemory()
{
    if (DisturbedUpgrade::isSanitized())
        QSKIP("the sanitizer needs all addresses there are: a memory limit is NOT tested");
    QFETCH(QString, database);
    DisturbedUpgrade upgrade(database, Writing::AtCommit, VARDO);

    const rlim_t step = walksAll() ? 16 * 1024 : 256 * 1024;
    ToolRun run;
    int failed = 0; // runs that got as far as to their log and no further
    for (rlim_t limit = step; run.exitCode != 0; limit += step) {
        upgrade.setFiles(upgrade.oldFiles());
        run = upgrade.run(QProcessEnvironment::systemEnvironment(), [limit] {
            const rlimit addresses{limit, limit};
            setrlimit(RLIMIT_AS, &addresses);
        });

        const QString broken = brokenPromise(upgrade, run);
        QVERIFY2(broken.isEmpty(), qPrintable(QString("%1 bytes: %2").arg(limit).arg(broken)));
        if (run.exitCode != 0 && !run.log.isEmpty())
            ++failed;
    }

    qInfo("%d runs without enough memory", failed);
    QVERIFY(failed > 0);
}

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
