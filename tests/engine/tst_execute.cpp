// SPDX-License-Identifier: MIT
/// Statements run with the upper halves of the vector registers cleared, as SQLite's speed needs it.

#include "driversqlite.h"
#include "stepupdater.h"
#include "testdatabase.h"

#include "coagulation/vardo/execute.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QTest>

#include <sqlite3.h>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace {

#if defined(__x86_64__)

/// \return whether the processor and the system show which registers are in use
bool showsRegisters()
{
    unsigned int a = 0;
    unsigned int b = 0;
    unsigned int c = 0;
    unsigned int d = 0;
    constexpr unsigned int stateLeaf = 13;
    constexpr unsigned int showsStatesInUse = 1U << 2; // xgetbv with ecx = 1
    return __builtin_cpu_supports("avx") != 0
        && __get_cpuid_count(stateLeaf, 1, &a, &b, &c, &d) != 0 && (a & showsStatesInUse) != 0;
}

/// \return whether the upper halves of the vector registers are in use
bool upperHalvesInUse()
{
    constexpr unsigned int upperHalves = 1U << 2;
    unsigned int low = 0;
    unsigned int high = 0;
    // NOLINTNEXTLINE(hicpp-no-assembler): the intrinsic would need the whole unit compiled for it
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
    return (low & upperHalves) != 0;
}

/// Leaves a value in an upper half, as Qt's hash functions do.
void useUpperHalves()
{
    // NOLINTNEXTLINE(hicpp-no-assembler): a compiler would clear the halves at the function's end
    __asm__ volatile("vpcmpeqd %%xmm0, %%xmm0, %%xmm0\n\t"
                     "vinsertf128 $1, %%xmm0, %%ymm0, %%ymm0"
                     :
                     :
                     : "xmm0");
}

#else

bool showsRegisters()
{
    return false;
}

bool upperHalvesInUse()
{
    return false;
}

void useUpperHalves() { }

#endif

/// The SQL function upperHalvesInUse(), which shows the state while a statement runs.
void sqlUpperHalvesInUse(sqlite3_context *context, int, sqlite3_value **)
{
    sqlite3_result_int(context, upperHalvesInUse() ? 1 : 0);
}

} // namespace

class TestExecute : public QObject {
    Q_OBJECT

private slots:
    void init();

    void clearsTheUpperHalves();
    void keepsTheLowerHalves();
    void clearsThemBeforeAStatement_data();
    void clearsThemBeforeAStatement();
};

using Execution = std::function<bool(StepUpdater &)>;
Q_DECLARE_METATYPE(Execution)

void TestExecute::init()
{
    if (!showsRegisters())
        QSKIP("this processor does not show which registers are in use");
}

void TestExecute::clearsTheUpperHalves()
{
    useUpperHalves();
    const bool before = upperHalvesInUse();

    coagulation::clearUpperVectorHalves();

    const bool after = upperHalvesInUse();
    QVERIFY(before);
    QVERIFY(!after);
}

void TestExecute::keepsTheLowerHalves()
{
    const volatile double value = 0.1;
    const double inARegister = value;

    coagulation::clearUpperVectorHalves();

    QCOMPARE(inARegister, 0.1);
}

void TestExecute::clearsThemBeforeAStatement_data()
{
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
    QTest::addColumn<Execution>("execution");

    const QString insert = "insert into seen values(upperHalvesInUse())";
    QTest::newRow("exec") << Execution(
        [insert](StepUpdater &step) { return step.exec(SOURCE_LINE, insert); });
    QTest::newRow("exec with a value") << Execution([](StepUpdater &step) {
        return step.exec(SOURCE_LINE, "insert into seen select upperHalvesInUse() where :one = 1",
                         {{":one", 1}});
    });
    QTest::newRow("updateOrInsert") << Execution([insert](StepUpdater &step) {
        return step.updateOrInsert("update seen set inUse = 2", insert, SOURCE_LINE);
    });
    QTest::newRow("copyTable inside SQLite")
        << Execution([](StepUpdater &step) { return step.copyTable("live", "seen"); });
    QTest::newRow("prepared query") << Execution([insert](StepUpdater &) {
        QSqlQuery query;
        return query.prepare(insert) && coagulation::execute(query);
    });
    QTest::newRow("query with its statement") << Execution([insert](StepUpdater &) {
        QSqlQuery query;
        return coagulation::execute(query, insert);
    });
}

void TestExecute::clearsThemBeforeAStatement()
{
    QFETCH(Execution, execution);
    const TestDatabase database;
    database.execute({"create table version(version integer)", "create table seen(inUse integer)",
                      "create view live as select 0 as inUse"});
    bool before = false;
    StepUpdater updater(database.path(), [&](StepUpdater &step) {
        (void)step.exec(SOURCE_LINE, "drop view live");
        (void)step.exec(SOURCE_LINE, "create temp view live as select upperHalvesInUse() as inUse");
        useUpperHalves();
        before = upperHalvesInUse();
        return execution(step);
    });
    sqlite3_create_function(
        *static_cast<sqlite3 **>(QSqlDatabase::database().driver()->handle().data()),
        "upperHalvesInUse", 0, SQLITE_UTF8, nullptr, sqlUpperHalvesInUse, nullptr, nullptr);

    const bool upgraded = updater.run();

    QVERIFY(upgraded);
    QVERIFY(before);
    QCOMPARE(database.table("seen"), QStringList{"0"});
}

QTEST_GUILESS_MAIN(TestExecute)
#include "tst_execute.moc"
