// SPDX-License-Identifier: MIT
/// A rehearsal as its user sees it: the real program with its streams, exit codes and files.

#include "laboratory.h"
#include "platform.h"
#include "testdatabase.h"
#include "testfiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <memory>

#ifdef Q_OS_UNIX
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

/// \return a part of the error of each run with this message
QByteArray message(const QString &text)
{
    return "vardo-report: " + text.toUtf8();
}

const QByteArray plainProgress = "Copying the databases …\nUpgrading the copies …\nComparing …\n";

} // namespace

class TestRehearse : public QObject {
    Q_OBJECT

private slots:
    void init();

    void reportsAnUpgradeThatWorks();
    void namesTheReportAloneOnStandardOutput();
    void writesTheReportWhereItIsAskedTo();
    void findsTheDatabases_data();
    void findsTheDatabases();
    void recordsTheOriginals();
    void recordsTheProgramThatRan();
    void recordsTheSteps();
    void removesTheCopies();
    void keepsTheCopiesWhereItIsAskedTo();
    void keepsTheCopiesForTheUserAlone();
    void refusesAFolderForCopies_data();
    void refusesAFolderForCopies();
    void refusesToRehearseNothing();
    void copiesNothingWithoutTheSpaceForAll();
    void writesNoReportItCannotWrite_data();
    void writesNoReportItCannotWrite();
    void refusesToOverwriteADatabase();
    void refusesToOverwriteAnyDatabase();
    void refusesToOverwriteTheLogOfALinkedDatabase();
    void showsPatientsOnlyWhenAskedTo();
    void showsNoValueOfPatients_data();
    void showsNoValueOfPatients();
    void writesPatientsForTheUserAlone();
    void showsPlainProgress();
    void showsNothingWithQuiet();
    void showsABarInATerminal();

private:
    QString path(const QString &fileName) const { return laboratory->path(fileName); }

    std::unique_ptr<Laboratory> laboratory;
};

void TestRehearse::init()
{
    laboratory = std::make_unique<Laboratory>();
}

/// Shows: REP-1, REP-8
void TestRehearse::reportsAnUpgradeThatWorks()
{
    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(laboratory->facts()["succeeded"], true);
    QCOMPARE(laboratory->facts()["exitCode"], 0);
    QCOMPARE(laboratory->facts()["databases"].toArray().size(), 4);
    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        const QJsonObject database = databaseIn(laboratory->facts(), name);
        QCOMPARE(database["versionAfter"], database["newestVersion"]);
    }
    QVERIFY(laboratory->pageText().contains("</html>"));
}

/// Shows: REP-21
void TestRehearse::namesTheReportAloneOnStandardOutput()
{
    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(QFileInfo(run.output.trimmed()).canonicalFilePath(),
             QFileInfo(laboratory->page()).canonicalFilePath());
    QVERIFY(QFileInfo(run.output.trimmed()).isAbsolute());
    QCOMPARE(run.output.count('\n'), 1);
}

void TestRehearse::writesTheReportWhereItIsAskedTo()
{
    const QString page = laboratory->result("报告 %1.html");

    const ToolRun run = laboratory->run(laboratory->rehearsal({"-o", page}));

    QCOMPARE(QString::fromUtf8(run.output), page + '\n');
    QVERIFY(fileBytes(page).contains("</html>"));
    QVERIFY(!QFile::exists(laboratory->page()));
}

void TestRehearse::findsTheDatabases_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("suffix");

    QTest::newRow("both") << "a_"
                          << "_b";
    QTest::newRow("a dash in front") << "-h"
                                     << "-x";
    QTest::newRow("an option") << "--keep"
                               << "--json";
    QTest::newRow("blanks") << " lab 1 "
                            << " old ";
    QTest::newRow("Chinese") << "检验科_"
                             << "_旧";
    QTest::newRow("quotes") << R"(o'neill"s)"
                            << "'";
    QTest::newRow("argument markers") << "%2"
                                      << "%1";
    QTest::newRow("another database's name") << "profile"
                                             << "data";
    QTest::newRow("URI") << "file:"
                         << "?mode=ro";
}

void TestRehearse::findsTheDatabases()
{
    QFETCH(QString, prefix);
    QFETCH(QString, suffix);
    if (!canBeFileName(prefix + suffix))
        QSKIP("Windows has no such file names: this one is NOT tested");
    const Laboratory named(prefix, suffix);

    const ToolRun run = named.run(named.rehearsal());

    QCOMPARE(run.exitCode, 0);
    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        const QJsonObject database = databaseIn(named.facts(), name);
        QCOMPARE(QFileInfo(database["filesBefore"][0]["path"].toString()).canonicalFilePath(),
                 QFileInfo(named.path(prefix + name + suffix + ".db")).canonicalFilePath());
        QCOMPARE(database["versionAfter"], database["newestVersion"]);
        QVERIFY(!database["steps"].toArray().isEmpty());
    }
}

/// Shows: REP-19
void TestRehearse::recordsTheOriginals()
{
    laboratory->run(laboratory->rehearsal());

    const QJsonObject file = databaseIn(laboratory->facts(), "qc")["filesBefore"][0].toObject();
    const QByteArray bytes = fileBytes(path("qc.db"));
    QCOMPARE(file["bytes"], bytes.size());
    QCOMPARE(file["sha256"],
             QString(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex()));
}

/// Shows: REP-19
void TestRehearse::recordsTheProgramThatRan()
{
    laboratory->run(laboratory->rehearsal());

    const QJsonObject record = laboratory->facts()["record"].toObject();
    const QString program = record["program"].toString();
    QCOMPARE(QFileInfo(program).absolutePath(), QFileInfo(VARDO_REPORT).absolutePath());
    QCOMPARE(QFileInfo(program).completeBaseName(), "vardo");
    QCOMPARE(
        record["programSha256"],
        QString(QCryptographicHash::hash(fileBytes(program), QCryptographicHash::Sha256).toHex()));
}

/// Shows: REP-1
void TestRehearse::recordsTheSteps()
{
    laboratory->run(laboratory->rehearsal());

    const QJsonArray steps = databaseIn(laboratory->facts(), "profile")["steps"].toArray();
    QCOMPARE(steps.first()["signature"], "update_v10()");
    QCOMPARE(steps.first()["result"], "pass");
    QVERIFY(steps.first()["milliseconds"].isDouble());
    QCOMPARE(steps.last()["signature"], "update_v30()");
}

/// Shows: REP-5
void TestRehearse::removesTheCopies()
{
    laboratory->run(laboratory->rehearsal());

    QCOMPARE(laboratory->temporaryFiles(), QStringList());
}

/// Shows: REP-5
void TestRehearse::keepsTheCopiesWhereItIsAskedTo()
{
    const QString folder = laboratory->result("copies");

    const ToolRun run = laboratory->run(laboratory->rehearsal({"--keep", folder}));

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(Laboratory::filesIn(folder + "/before"), laboratory->files());
    QCOMPARE(databaseRows(folder + "/after/profile.db", "select max(version) from version"),
             QStringList{"30"});
    QVERIFY(QFile::exists(folder + "/after/upgrade.log"));
    QCOMPARE(laboratory->temporaryFiles(), QStringList());
}

/// Shows: REP-5
void TestRehearse::keepsTheCopiesForTheUserAlone()
{
#ifdef Q_OS_WIN
    QSKIP("a folder has the rights of the one above it there: this is NOT tested");
#endif
    const QString folder = laboratory->result("copies");

    laboratory->run(laboratory->rehearsal({"--keep", folder}));

    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup
        | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    for (const char *name : {"", "/before", "/after"})
        QCOMPARE(QFile::permissions(folder + name) & others, QFile::Permissions());
}

void TestRehearse::refusesAFolderForCopies_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("problem");

    QTest::newRow("not empty") << "full"
                               << "is not empty.";
    QTest::newRow("a file") << "full/file"
                            << "is no folder.";
    QTest::newRow("in a folder that is missing") << "missing/folder"
                                                 << "cannot be made.";
}

void TestRehearse::refusesAFolderForCopies()
{
    QFETCH(QString, folder);
    QFETCH(QString, problem);
    QVERIFY(QDir().mkpath(laboratory->result("full")));
    writeFile(laboratory->result("full/file"), "precious");

    const ToolRun run =
        laboratory->run(laboratory->rehearsal({"--keep", laboratory->result(folder)}));

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors, message(laboratory->result(folder) + ' ' + problem + '\n'));
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(Laboratory::filesIn(laboratory->result("full")).size(), 1);
    QVERIFY(!QFile::exists(laboratory->page()));
}

void TestRehearse::refusesToRehearseNothing()
{
    const ToolRun run = laboratory->run({"rehearse", "-p", path("b_")});

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors,
             message(QString("There is no database: none of %1profile.db, %1data.db, %1qc.db,"
                             " %1syslog.db exists.\n")
                         .arg(path("b_"))));
    QVERIFY(!QFile::exists(laboratory->page()));
    QCOMPARE(laboratory->temporaryFiles(), QStringList());
}

/// Shows: REP-6
void TestRehearse::copiesNothingWithoutTheSpaceForAll()
{
    // A hole in a file takes no space, but a rehearsal counts it: it would need the double of what is free.
    const std::filesystem::path database = QFileInfo(path("qc.db")).filesystemFilePath();
    std::error_code error;
    std::filesystem::resize_file(database, std::filesystem::space(database).available / 2, error);
    if (error)
        QSKIP("this file system has no such large files: a lack of space is NOT tested");
    const QStringList before = QDir(path("")).entryList(QDir::Files);

    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.startsWith(message("The rehearsal needs ")), run.errors);
    QCOMPARE(laboratory->temporaryFiles(), QStringList());
    QCOMPARE(QDir(path("")).entryList(QDir::Files), before);
}

void TestRehearse::writesNoReportItCannotWrite_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("page in a missing folder") << QStringList{"-o", "missing/page.html"};
    QTest::newRow("page that is a folder") << QStringList{"-o", "."};
    QTest::newRow("file for programs in a missing folder")
        << QStringList{"--json", "missing/facts.json"};
    QTest::newRow("both in one file") << QStringList{"--json", "./vardo-report.html"};
}

/// Shows: REP-20
void TestRehearse::writesNoReportItCannotWrite()
{
    QFETCH(QStringList, arguments);
    writeFile(laboratory->page(), "the report of yesterday");

    const ToolRun run = runTool(laboratory->command(laboratory->rehearsal(arguments)));

    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.startsWith("vardo-report: "), run.errors);
    QVERIFY2(!run.errors.contains("Copying"), run.errors);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(laboratory->pageText(), QByteArray("the report of yesterday"));
}

/// Shows: REP-20
void TestRehearse::refusesToOverwriteADatabase()
{
    const QStringList before = laboratory->files();

    const ToolRun run = laboratory->run(laboratory->rehearsal({"-o", path("qc.db")}));

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors, message(path("qc.db") + " would be overwritten.\n"));
    QCOMPARE(laboratory->files(), before);
}

/// Shows: REP-20
void TestRehearse::refusesToOverwriteAnyDatabase()
{
    const TestDatabase other("ward2-profile.db");
    other.execute({"create table t(x)"});
    const QByteArray before = fileBytes(other.path());

    for (const char *option : {"-o", "--json"}) {
        const ToolRun run =
            runTool(laboratory->command(laboratory->rehearsal({option, other.path()})));

        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.errors, message(other.path() + " is a database, and would be overwritten.\n"));
        QCOMPARE(fileBytes(other.path()), before);
    }
}

/// Shows: REP-20
void TestRehearse::refusesToOverwriteTheLogOfALinkedDatabase()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir elsewhere;
    const QString database = QFileInfo(elsewhere.path()).canonicalFilePath() + "/moved.db";
    QVERIFY(QFile::rename(path("qc.db"), database));
    QVERIFY(QFile::link(database, path("qc.db")));

    const ToolRun run = laboratory->run(laboratory->rehearsal({"-o", database + "-wal"}));

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors, message(database + "-wal would be overwritten.\n"));
#else
    QSKIP("QFile makes no link that SQLite follows");
#endif
}

/// Shows: REP-15
void TestRehearse::showsPatientsOnlyWhenAskedTo()
{
    // a value that an upgrade changes
    executeOn(path("data.db"), {"update patient set time = 'Jane Roe.5'"});

    laboratory->run(laboratory->rehearsal());
    QVERIFY(!laboratory->pageText().contains("Jane Roe"));

    laboratory->run(laboratory->rehearsal({"--examples"}));
    QVERIFY(laboratory->facts()["examplesOfPatients"].toBool());
    QVERIFY(laboratory->pageText().contains("Jane Roe"));
}

void TestRehearse::showsNoValueOfPatients_data()
{
    QTest::addColumn<QStringList>("changes"); // of the data database
    QTest::addColumn<int>("exitCode");

    QTest::newRow("an upgrade that works") << QStringList() << 0;
    QTest::newRow("rows that cannot be moved")
        << QStringList{"alter table result rename column code to kode"} << 0;
    QTest::newRow("a step that fails") << QStringList{"alter table doctor add own"} << 1;
    QTest::newRow("rows that are there twice")
        << QStringList{"create table results(id integer, abbr text unique)",
                       "insert into results select id, abbr from result where id = 1"}
        << 1;
}

/// Shows: REP-15
void TestRehearse::showsNoValueOfPatients()
{
    QFETCH(QStringList, changes);
    QFETCH(int, exitCode);
    const QStringList columns{"patient.sampleNo",  "patient.name",      "patient.barcode",
                              "patient.diagnosis", "patientExtra.name", "patientExtra.value",
                              "exam.item",         "result.abbr",       "result.unit",
                              "curve.curve",       "doctor.name",       "operator.name"};
    for (const QString &column : columns)
        executeOn(path("data.db"),
                  {QString("update %1 set %2 = 'Jane Roe'")
                       .arg(column.section('.', 0, 0), column.section('.', 1))});
    executeOn(path("data.db"), changes);

    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.exitCode, exitCode);
    QVERIFY(laboratory->pageText().contains("Updating")); // the log is in it, too
    QVERIFY(!laboratory->pageText().contains("Jane Roe"));
    QVERIFY(!fileBytes(laboratory->result("facts.json")).contains("Jane Roe"));
}

/// Shows: REP-15
void TestRehearse::writesPatientsForTheUserAlone()
{
#ifdef Q_OS_WIN
    QSKIP("a file has the rights of its folder there: this is NOT tested");
#endif
    writeFile(laboratory->page(), "the report of yesterday, for everybody");
    QVERIFY(QFile::setPermissions(laboratory->page(),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));

    laboratory->run(laboratory->rehearsal({"--examples"}));

    const QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    for (const QString &file : {laboratory->page(), laboratory->result("facts.json")})
        QCOMPARE(QFile::permissions(file) & others, QFile::Permissions());
}

/// Shows: REP-21
void TestRehearse::showsPlainProgress()
{
    const ToolRun run = laboratory->run(laboratory->rehearsal());

    QCOMPARE(run.errors, plainProgress);
}

/// Shows: REP-21
void TestRehearse::showsNothingWithQuiet()
{
    const ToolRun run = laboratory->run(laboratory->rehearsal({"--quiet"}));

    QCOMPARE(run.errors, QByteArray());
}

void TestRehearse::showsABarInATerminal()
{
#ifdef Q_OS_UNIX
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
        QSKIP("no terminal is to be had: progress in one is NOT tested");
    const ToolCommand command = laboratory->command(laboratory->rehearsal());
    QProcess program;
    program.setWorkingDirectory(command.folder);
    program.setStandardErrorFile(ptsname(terminal));
    program.start(command.program, command.arguments);
    QVERIFY(program.waitForFinished());

    QByteArray shown(100'000, '\0');
    shown.truncate(::read(terminal, shown.data(), static_cast<std::size_t>(shown.size())));
    ::close(terminal);

    QVERIFY2(shown.startsWith("\rCopying the databases"), shown);
    QVERIFY2(shown.contains("[##############################] 376.8 kB of 376.8 kB\r\n"), shown);
    QVERIFY2(shown.contains("\rUpgrading the copies: update_v4()"), shown);
    QVERIFY2(shown.contains("\rComparing: profile, "), shown);
    QVERIFY2(shown.endsWith("\r\n"), shown);
#else
    QSKIP("the test has no console: progress in one is NOT tested");
#endif
}

QTEST_GUILESS_MAIN(TestRehearse)

#include "tst_rehearse.moc"
