// SPDX-License-Identifier: MIT
/// Rehearsals of databases that others use, that are damaged, or that cannot be written; rehearsals
/// that are killed.

#include "laboratory.h"
#include "otherprogram.h"
#include "testdatabase.h"
#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QThread>

#include <memory>

class TestRehearseDisturbed : public QObject {
    Q_OBJECT

private slots:
    void init();

    void leavesTheOriginalsAsTheyWere_data();
    void leavesTheOriginalsAsTheyWere();
    void readsFromAReadOnlyFolder_data();
    void readsFromAReadOnlyFolder();
    void reportsAFailure_data();
    void reportsAFailure();
    void rehearsesTheOthersOfALockedDatabase();
    void leavesTheOriginalsWhenItIsKilled_data();
    void leavesTheOriginalsWhenItIsKilled();
    void removesTheCopiesWhenItIsStopped_data();
    void removesTheCopiesWhenItIsStopped();
    void reportsThatVardoWasKilled();
    void missesVardo();
    void takesNoVardoFromThePath();

private:
    QString path(const QString &fileName) const { return laboratory->path(fileName); }
    ToolCommand commandWithoutVardo() const;

    std::unique_ptr<Laboratory> laboratory;
};

/// \return a rehearsal by a vardo-report that has no vardo beside it
ToolCommand TestRehearseDisturbed::commandWithoutVardo() const
{
    const QString programs = laboratory->result("programs");
    const QString alone = programs + '/' + QFileInfo(VARDO_REPORT).fileName();
    if (!QDir().mkpath(programs) || !QFile::copy(VARDO_REPORT, alone))
        qFatal("no copy of vardo-report in %s", qUtf8Printable(programs));
    ToolCommand command = laboratory->command(laboratory->rehearsal());
    command.program = alone;
    return command;
}

void TestRehearseDisturbed::init()
{
    laboratory = std::make_unique<Laboratory>();
}

void TestRehearseDisturbed::leavesTheOriginalsAsTheyWere_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("statements"); // of another program

    for (const char *mode : {"delete", "wal"}) {
        QTest::addRow("idle, %s", mode) << QByteArray(mode) << QByteArray("select 1;");
        QTest::addRow("reads, %s", mode)
            << QByteArray(mode) << QByteArray("begin; select count(*) from version;");
        QTest::addRow("has written, %s", mode)
            << QByteArray(mode) << QByteArray("create table other(value);");
        QTest::addRow("writes, %s", mode)
            << QByteArray(mode) << QByteArray("begin immediate; create table other(value);");
    }
}

/// Shows: REP-2
void TestRehearseDisturbed::leavesTheOriginalsAsTheyWere()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, statements);
    for (const char *name : {"profile.db", "data.db", "qc.db", "syslog.db"})
        executeOn(path(name), {"pragma journal_mode=" + mode});
    OtherProgram other(path("data.db"));
    other.run(statements);
    const QStringList before = laboratory->files();

    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(laboratory->files(), before);
}

void TestRehearseDisturbed::readsFromAReadOnlyFolder_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("statements"); // of a program that crashes
    QTest::addColumn<QString>("left");          // what the crash leaves beside the database

    const QByteArray none = "select 1;";
    QTest::newRow("closed, delete") << QByteArray("delete") << none << "";
    QTest::newRow("closed, wal") << QByteArray("wal") << none << "";
    QTest::newRow("journal of a crash")
        << QByteArray("delete")
        << QByteArray("pragma cache_size=1; begin immediate; create table other(value);"
                      " insert into other values(zeroblob(100000));")
        << "-journal";
    QTest::newRow("log of a crash")
        << QByteArray("wal") << QByteArray("create table other(value);") << "-wal";
}

void TestRehearseDisturbed::readsFromAReadOnlyFolder()
{
#ifdef Q_OS_UNIX
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, statements);
    QFETCH(QString, left);
    // Without this capability even the superuser cannot write there.
    const QStringList bound{"--bounding-set", "-dac_override"};
    executeOn(path("syslog.db"), {"pragma journal_mode=" + mode});
    OtherProgram other(path("syslog.db"));
    other.run(statements);
    other.kill();
    QFile::remove(path("syslog.db-shm"));
    QVERIFY(QFileInfo(path("syslog.db") + left).size() > 0);
    const QStringList before = laboratory->files();
    QVERIFY(QFile::setPermissions(path("syslog.db"), QFile::ReadOwner));
    QVERIFY(QFile::setPermissions(path(""), QFile::ReadOwner | QFile::ExeOwner));
    if (QProcess::execute("setpriv", bound + QStringList{"test", "!", "-w", path("")}) != 0)
        QSKIP("this user writes read-only folders: this is NOT tested");
    ToolCommand command = laboratory->command(bound + QStringList{VARDO_REPORT}
                                              + laboratory->rehearsal({"--json", "facts.json"}));
    command.program = "setpriv";

    const ToolRun run = runTool(command);

    QVERIFY(
        QFile::setPermissions(path(""), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY2(run.exitCode == 0, run.errors + laboratory->facts()["verdict"].toString().toUtf8());
    QCOMPARE(laboratory->files(), before);
    QCOMPARE(databaseIn(laboratory->facts(), "syslog")["problem"], QJsonValue());
#else
    QSKIP("Windows has no read-only folders: they are NOT tested");
#endif
}

void TestRehearseDisturbed::reportsAFailure_data()
{
    QTest::addColumn<QByteArray>("bytes"); // of the quality-control database

    const TestDatabase sound;
    sound.execute({"create table number(value)"});
    QTest::newRow("no database") << QByteArray("This is a letter. ").repeated(1000);
    QTest::newRow("cut short") << sound.bytes().first(5000);
}

/// Shows: REP-8
void TestRehearseDisturbed::reportsAFailure()
{
    QFETCH(QByteArray, bytes);
    writeFile(path("qc.db"), bytes);
    const QStringList before = laboratory->files();

    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.exitCode, 1);
    QCOMPARE(laboratory->facts()["succeeded"], false);
    QCOMPARE(laboratory->facts()["exitCode"], 1);
    QVERIFY2(laboratory->facts()["verdict"].toString().contains("qc"),
             qUtf8Printable(laboratory->facts()["verdict"].toString()));
    QCOMPARE(databaseIn(laboratory->facts(), "data")["versionAfter"], 12);
    QCOMPARE(laboratory->files(), before);
}

/// Shows: REP-4, REP-8
void TestRehearseDisturbed::rehearsesTheOthersOfALockedDatabase()
{
    OtherProgram other(path("data.db"));
    other.run("begin exclusive;");

    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.exitCode, 2);
    QVERIFY(laboratory->pageText().contains("</html>"));
    QVERIFY(databaseIn(laboratory->facts(), "data")["problem"].toString().endsWith(
        "data.db is locked by another program."));
    QCOMPARE(databaseIn(laboratory->facts(), "syslog")["versionAfter"], 4);
}

void TestRehearseDisturbed::leavesTheOriginalsWhenItIsKilled_data()
{
    QTest::addColumn<int>("milliseconds");

    for (const int milliseconds : {0, 10, 20, 40, 60, 80, 120, 160, 240, 320})
        QTest::addRow("%d ms", milliseconds) << milliseconds;
}

/// Shows: REP-2
void TestRehearseDisturbed::leavesTheOriginalsWhenItIsKilled()
{
    QFETCH(int, milliseconds);
    executeOn(path("data.db"), {"pragma journal_mode=wal"});
    OtherProgram other(path("data.db"));
    other.run("create table other(value);");
    const QStringList before = laboratory->files();
    RunningTool tool(laboratory->command(laboratory->rehearsal()));

    QThread::msleep(static_cast<unsigned long>(milliseconds));
    tool.kill();

    QCOMPARE(laboratory->files(), before);
    // vardo may go on for a moment
    QVERIFY(QTest::qWaitFor([&] { return laboratory->removeTemporaryFiles(); }));
}

void TestRehearseDisturbed::removesTheCopiesWhenItIsStopped_data()
{
    leavesTheOriginalsWhenItIsKilled_data();
}

/// Shows: REP-5
void TestRehearseDisturbed::removesTheCopiesWhenItIsStopped()
{
#ifdef Q_OS_UNIX
    QFETCH(int, milliseconds);
    const QStringList before = laboratory->files();
    const ToolCommand command = laboratory->command(laboratory->rehearsal());
    QProcess program;
    program.setWorkingDirectory(command.folder);
    program.setProcessEnvironment(command.environment);
    program.start(command.program, command.arguments);
    QVERIFY(program.waitForStarted());
    QThread::msleep(static_cast<unsigned long>(milliseconds));

    program.terminate();
    QVERIFY(program.waitForFinished());

    QCOMPARE(laboratory->temporaryFiles(), QStringList());
    QCOMPARE(laboratory->files(), before);
    if (program.exitStatus() == QProcess::NormalExit && program.exitCode() != 0) {
        QCOMPARE(program.exitCode(), 2);
        QVERIFY(program.readAllStandardError().endsWith("vardo-report: Stopped.\n"));
    }
#else
    QSKIP("Windows has no such request: it is NOT tested");
#endif
}

void TestRehearseDisturbed::reportsThatVardoWasKilled()
{
#ifdef Q_OS_UNIX
    const QString programs = laboratory->result("programs");
    QVERIFY(QDir().mkpath(programs));
    QVERIFY(QFile::copy(VARDO_REPORT, programs + "/vardo-report"));
    writeFile(programs + "/vardo", "#!/bin/sh\nkill -9 $$\n");
    QVERIFY(QFile::setPermissions(programs + "/vardo", QFile::ReadOwner | QFile::ExeOwner));
    ToolCommand command = laboratory->command(laboratory->rehearsal({"--json", "facts.json"}));
    command.program = programs + "/vardo-report";

    const ToolRun run = runTool(command);

    QCOMPARE(run.exitCode, 1);
    QCOMPARE(laboratory->facts()["exitCode"], QJsonValue());
    QVERIFY2(laboratory->facts()["problem"].toString().contains("did not end by itself"),
             qUtf8Printable(laboratory->facts()["problem"].toString()));
    QVERIFY(laboratory->pageText().contains("</html>"));
#else
    QSKIP("a script cannot stand in for vardo.exe: this is NOT tested");
#endif
}

/// Shows: REP-1
void TestRehearseDisturbed::missesVardo()
{
    const ToolRun run = runTool(commandWithoutVardo());

    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.startsWith("vardo-report: There is no vardo in "), run.errors);
}

/// Shows: REP-1
void TestRehearseDisturbed::takesNoVardoFromThePath()
{
    ToolCommand command = commandWithoutVardo();
    command.environment.insert("PATH", QFileInfo(VARDO_REPORT).path());

    const ToolRun run = runTool(command);

    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.startsWith("vardo-report: There is no vardo in "), run.errors);
}

QTEST_GUILESS_MAIN(TestRehearseDisturbed)

#include "tst_rehearse_disturbed.moc"
