// SPDX-License-Identifier: MIT
/// The tool as its user sees it: the real binary with its arguments, streams, exit codes and files.

#include "drivertexts.h"
#include "expectedsteps.h"
#include "olddatabases.h"
#include "platform.h"
#include "testdatabase.h"
#include "toolrun.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QByteArray usage = R"(vardo [options] [logfile]
options
-h, -? --help show this information
-p prefix     prefix of database file name. default is null
-s suffix     suffix of database file name. default is null
              profile database file name will be <prefix>profile<suffix>.db
              data database file name will be <prefix>data<suffix>.db
              qc database file name will be <prefix>qc<suffix>.db
              syslog database file name will be <prefix>syslog<suffix>.db
)";

const QStringList newestSyslogVersion{QString::number(newestVersionOf("syslog"))};

const QStringList names{"profile", "data", "qc", "syslog"};

/// Makes a database file from the sample of the oldest layout.
/// \param name for example "qc"
void loadSample(const QString &name, const QString &path)
{
    const TestDatabase sample;
    sample.load(name + "_v0.sql");
    if (!QFile::copy(sample.path(), path))
        qFatal("%s exists", qUtf8Printable(path));
}

/// Makes a plugin that Qt finds and the loader refuses: it wants a function that SQLite does not have.
void copyDriverThatCannotBeLoaded(const QString &path)
{
    QFile driver(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/sqldrivers/libqsqlite.so");
    QFile copy(path);
    if (!driver.open(QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly))
        qFatal("%s cannot be copied", qUtf8Printable(driver.fileName()));
    QByteArray bytes = driver.readAll();
    bytes.replace("sqlite3_open_v2", "sqlite3_no_such");
    copy.write(bytes);
}

int versionOf(const QString &path)
{
    return databaseRows(path, "select version from version").value(0).toInt();
}

} // namespace

class TestVardo : public QObject {
    Q_OBJECT

private slots:
    void init();

    void showsItsUsage_data();
    void showsItsUsage();
    void endsLinesAsTheSystemDoes();
    void opensNoFileWhenItShowsItsUsage_data();
    void opensNoFileWhenItShowsItsUsage();
    void takesAnyValueAfterAnOption_data();
    void takesAnyValueAfterAnOption();
    void logsToTheLastLogFileOnly();
    void appendsToTheLog();
    void logsToStandardErrorWhenTheLogCannotBeOpened();
    void upgradesThoughTheLogCannotBeWritten();
    void upgradesThoughNobodyReadsStandardError();
    void warnsOfMissingDatabasesAndSucceeds();
    void reportsAnUpgrade();
    void upgradesAllFourWhereverTheyAre_data();
    void upgradesAllFourWhereverTheyAre();
    void upgradesThoseThatAreThere_data();
    void upgradesThoseThatAreThere();
    void logsEveryRunInOneFile();
    void leavesALogWhenItIsKilled_data();
    void leavesALogWhenItIsKilled();
    void stopsAtTheFirstFailure();
    void keepsTheDatabasesBeforeTheFailure_data();
    void keepsTheDatabasesBeforeTheFailure();
    void closesTheDatabases();
    void doesNotTakeAPrefixForAUri();
    void doesNotTakeAPrefixForAResource();
    void logsTheSameInEveryEnvironment_data();
    void logsTheSameInEveryEnvironment();
    void readsTheFileNamesFromTheWorkingDirectory();
    void leavesAReadOnlyFileAsItWas();
    void leavesTheFileAsItWasWhenTheDiskIsFull();
    void leavesAFileThatIsNoDatabaseAsItWas();
    void reportsAFolderInPlaceOfADatabase();
    void tellsWhatToInstallWhenTheDriverIsNotUsable_data();
    void tellsWhatToInstallWhenTheDriverIsNotUsable();

private:
    /// Runs the tool in the folder.
    ToolRun run(const QStringList &arguments, const QString &program = VARDO,
                const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    QString path(const QString &fileName) const { return folder->filePath(fileName); }
    QByteArray read(const QString &fileName) const;
    QByteArray readText(const QString &fileName) const { return withPlainLineEnds(read(fileName)); }
    /// \return what standard error holds when no database is there
    QByteArray warningsOfMissing(const QString &prefix = {}, const QString &suffix = {}) const;

    std::unique_ptr<QTemporaryDir> folder;
};

void TestVardo::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

ToolRun TestVardo::run(const QStringList &arguments, const QString &program,
                       const QProcessEnvironment &environment)
{
    ToolRun run = runTool({.program = program,
                           .arguments = arguments,
                           .folder = folder->path(),
                           .environment = environment});
    if (!run.exited)
        qFatal("a crash: %s", run.errors.constData());
    return run;
}

QByteArray TestVardo::read(const QString &fileName) const
{
    QFile file(path(fileName));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

QByteArray TestVardo::warningsOfMissing(const QString &prefix, const QString &suffix) const
{
    QByteArray warnings;
    for (const QString &name : names)
        warnings +=
            "File doesn't exist: " + path(prefix + name + suffix).toUtf8() + ".db, skipped\n";
    return warnings;
}

void TestVardo::showsItsUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("errors");

    const QByteArray none;
    QTest::newRow("-h") << QStringList{"-h"} << 0 << none;
    QTest::newRow("-?") << QStringList{"-?"} << 0 << none;
    QTest::newRow("--help") << QStringList{"--help"} << 0 << none;
    QTest::newRow("help after other arguments")
        << QStringList{"-p", "a_", "log.txt", "-h"} << 0 << none;
    QTest::newRow("help before an unknown option") << QStringList{"-h", "-x"} << 0 << none;
    QTest::newRow("-p without a value") << QStringList{"-p"} << 1 << none;
    QTest::newRow("-s without a value") << QStringList{"-s"} << 1 << none;
    QTest::newRow("-s without a value at the end")
        << QStringList{"log.txt", "-p", "a_", "-s"} << 1 << none;
    QTest::newRow("unknown option") << QStringList{"-x"} << 2 << QByteArray("Unknown option -x\n");
    QTest::newRow("unknown option before help")
        << QStringList{"-x", "-h"} << 2 << QByteArray("Unknown option -x\n");
    QTest::newRow("unknown long option")
        << QStringList{"--prefix"} << 2 << QByteArray("Unknown option --prefix\n");
    QTest::newRow("option in upper case")
        << QStringList{"-P", "a_"} << 2 << QByteArray("Unknown option -P\n");
    QTest::newRow("option with its value attached")
        << QStringList{"-pa_"} << 2 << QByteArray("Unknown option -pa_\n");
    QTest::newRow("help with more letters")
        << QStringList{"-help"} << 2 << QByteArray("Unknown option -help\n");
    QTest::newRow("dash alone") << QStringList{"-"} << 2 << QByteArray("Unknown option -\n");
    QTest::newRow("two dashes") << QStringList{"--"} << 2 << QByteArray("Unknown option --\n");
    QTest::newRow("format in the option")
        << QStringList{"-%s%n"} << 2 << QByteArray("Unknown option -%s%n\n");
    QTest::newRow("Chinese option")
        << QStringList{"-前缀"} << 2 << QByteArray("Unknown option -前缀\n");
}

/// Shows: CLI-1
void TestVardo::showsItsUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, errors);

    const ToolRun result = run(arguments);

    QCOMPARE(result.output, usage);
    QCOMPARE(result.errors, errors);
    QCOMPARE(result.exitCode, exitCode);
}

void TestVardo::endsLinesAsTheSystemDoes()
{
    QProcess tool;
    tool.start(VARDO, {"-x"});
    QVERIFY(tool.waitForFinished());

    QCOMPARE(tool.readAllStandardOutput(), QByteArray(usage).replace("\n", lineEnd()));
    QCOMPARE(tool.readAllStandardError(), "Unknown option -x" + lineEnd());
}

void TestVardo::opensNoFileWhenItShowsItsUsage_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("help") << QStringList{"log.txt", "-h"};
    QTest::newRow("missing value") << QStringList{"log.txt", "-p"};
    QTest::newRow("unknown option") << QStringList{"log.txt", "-x"};
}

/// Shows: CLI-1
void TestVardo::opensNoFileWhenItShowsItsUsage()
{
    QFETCH(QStringList, arguments);
    executeOn(path("syslog.db"), {"create table assay(time text)"});
    const QByteArray before = read("syslog.db");

    run(arguments);

    QVERIFY(!QFile::exists(path("log.txt")));
    QCOMPARE(read("syslog.db"), before);
}

void TestVardo::takesAnyValueAfterAnOption_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("suffix");

    QTest::newRow("none") << QStringList{} << ""
                          << "";
    QTest::newRow("prefix") << QStringList{"-p", "a_"} << "a_"
                            << "";
    QTest::newRow("suffix") << QStringList{"-s", "_b"} << ""
                            << "_b";
    QTest::newRow("both") << QStringList{"-p", "a_", "-s", "_b"} << "a_"
                          << "_b";
    QTest::newRow("suffix first") << QStringList{"-s", "_b", "-p", "a_"} << "a_"
                                  << "_b";
    QTest::newRow("the last one counts") << QStringList{"-p", "a_", "-p", "c_"} << "c_"
                                         << "";
    QTest::newRow("a dash in front") << QStringList{"-p", "-h", "-s", "-x"} << "-h"
                                     << "-x";
    QTest::newRow("an option's name") << QStringList{"-p", "-p", "-s", "-s"} << "-p"
                                      << "-s";
    QTest::newRow("empty") << QStringList{"-p", "", "-s", ""} << ""
                           << "";
    QTest::newRow("blanks") << QStringList{"-p", " lab 1 ", "-s", " old "} << " lab 1 "
                            << " old ";
    QTest::newRow("Chinese") << QStringList{"-p", "检验科_", "-s", "_旧"} << "检验科_"
                             << "_旧";
    QTest::newRow("beyond the basic plane") << QStringList{"-p", "🩸"} << "🩸"
                                            << "";
    QTest::newRow("quotes") << QStringList{"-p", "o'neill\"s"} << "o'neill\"s"
                            << "";
    QTest::newRow("argument markers") << QStringList{"-p", "%2", "-s", "%1"} << "%2"
                                      << "%1";
    QTest::newRow("format") << QStringList{"-p", "%s%n", "-s", "%d"} << "%s%n"
                            << "%d";
    QTest::newRow("a log file between") << QStringList{"-p", "a_", "log.txt", "-s", "_b"} << "a_"
                                        << "_b";
}

/// Shows: CLI-2
void TestVardo::takesAnyValueAfterAnOption()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, prefix);
    QFETCH(QString, suffix);
    const QString fileName = prefix + "syslog" + suffix + ".db";
    if (!canBeFileName(fileName))
        QSKIP("Windows has no such file names: this one is NOT tested");
    executeOn(path(fileName), {"create table assay(time text)"});

    const ToolRun result = run(arguments);

    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(databaseRows(path(fileName), "select version from version"), newestSyslogVersion);
    const QByteArray log = result.errors + readText("log.txt");
    QVERIFY2(log.contains("Updating " + path(fileName).toUtf8()), log.constData());
}

/// Shows: LOG-1
void TestVardo::logsToTheLastLogFileOnly()
{
    const ToolRun result = run({"log1.txt", "log2.txt"});

    QVERIFY(!QFile::exists(path("log1.txt")));
    QCOMPARE(readText("log2.txt").count('\n'), 4);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.output, QByteArray());
}

/// Shows: LOG-1
void TestVardo::appendsToTheLog()
{
    run({"log.txt"});
    const QByteArray first = readText("log.txt");

    run({"log.txt"});

    QCOMPARE(readText("log.txt"), first + first);
}

/// Shows: LOG-1
void TestVardo::logsToStandardErrorWhenTheLogCannotBeOpened()
{
    const ToolRun result = run({"missing/log.txt"});

    QCOMPARE(result.errors, warningsOfMissing());
    QCOMPARE(result.exitCode, 0);
}

/// Shows: LOG-1
void TestVardo::upgradesThoughTheLogCannotBeWritten()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("no /dev/full on this system: a log that cannot be written is NOT tested");
    executeOn(path("syslog.db"), {"create table assay(time text)"});

    const ToolRun result = run({"/dev/full"});

    QCOMPARE(result.exitCode, 0);
    QCOMPARE(databaseRows(path("syslog.db"), "select version from version"), newestSyslogVersion);
}

/// Shows: LOG-1
void TestVardo::upgradesThoughNobodyReadsStandardError()
{
#ifdef Q_OS_WIN
    QSKIP("no shell to close a pipe: a log without a reader is NOT tested");
#endif
    executeOn(path("syslog.db"), {"create table assay(time text)"});

    // the reader has ended before the first message
    const ToolRun result =
        run({"-c", R"({ sleep 0.5; "$0" 2>&1; echo $? >code; } | true; cat code)", VARDO}, "sh");

    QCOMPARE(result.output, QByteArray("0\n"));
    QCOMPARE(databaseRows(path("syslog.db"), "select version from version"), newestSyslogVersion);
}

/// Shows: CLI-4
void TestVardo::warnsOfMissingDatabasesAndSucceeds()
{
    const ToolRun result = run({"-p", "a_", "-s", "_b"});

    QCOMPARE(result.errors, warningsOfMissing("a_", "_b"));
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 0);
    QVERIFY(QDir(folder->path()).isEmpty());
}

/// Shows: LOG-3
void TestVardo::reportsAnUpgrade()
{
    executeOn(path("syslog.db"), {"create table assay(time text)"});
    const QByteArray base = folder->path().toUtf8();
    const QByteArray end = " ((null):0, (null))\n";

    const ToolRun result = run({"log.txt"});

    QCOMPARE(readText("log.txt"),
             "Warning: File doesn't exist: " + base
                 + "/profile.db, skipped ((null):0, (null))\n"
                   "Warning: File doesn't exist: "
                 + base
                 + "/data.db, skipped ((null):0, (null))\n"
                   "Warning: File doesn't exist: "
                 + base
                 + "/qc.db, skipped ((null):0, (null))\n"
                   "Debug: Updating "
                 + base + "/syslog.db ((null):0, (null))\n"
                 + stepLog("syslog", 0).join(end).toUtf8() + end + "Debug: Updated version to "
                 + newestSyslogVersion.constFirst().toUtf8() + end);
    QCOMPARE(result.exitCode, 0);
}

void TestVardo::upgradesAllFourWhereverTheyAre_data()
{
    QTest::addColumn<QString>("prefix"); // within the working directory
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<bool>("absolute");

    QTest::newRow("the working directory") << ""
                                           << "" << false;
    QTest::newRow("a prefix and a suffix") << "a_"
                                           << "_b" << false;
    QTest::newRow("a folder below") << "lab/"
                                    << "" << false;
    QTest::newRow("an absolute folder") << "lab/"
                                        << "" << true;
    QTest::newRow("blanks") << "my lab/wb 1 "
                            << " old" << true;
    QTest::newRow("not ASCII") << "实验室/凝血仪-"
                               << "_副本" << true;
    QTest::newRow("not ASCII, relative") << "实验室/凝血仪-"
                                         << "_副本" << false;
    QTest::newRow("apostrophe and percent") << "O'Neill's %1/%2 100%"
                                            << "%1's" << true;
}

/// Shows: CLI-2
void TestVardo::upgradesAllFourWhereverTheyAre()
{
    QFETCH(QString, prefix);
    QFETCH(QString, suffix);
    QFETCH(bool, absolute);
    QVERIFY(QDir(folder->path()).mkpath(QFileInfo(path(prefix + "x")).path()));
    for (const QString &name : names)
        loadSample(name, path(prefix + name + suffix + ".db"));

    const ToolRun result =
        run({"-p", absolute ? path(prefix) : prefix, "-s", suffix, path("log.txt")});

    QCOMPARE(result.exitCode, 0);
    for (const QString &name : names) {
        const QString fileName = path(prefix + name + suffix + ".db");
        QCOMPARE(versionOf(fileName), newestVersionOf(name));
        QVERIFY(readText("log.txt").contains("Debug: Updating " + fileName.toUtf8() + " ("));
    }
}

void TestVardo::upgradesThoseThatAreThere_data()
{
    QTest::addColumn<int>("there"); // a bit for each of the four

    for (int there = 0; there < 16; ++there)
        QTest::addRow("%d%d%d%d", there & 1, there >> 1 & 1, there >> 2 & 1, there >> 3) << there;
}

/// Shows: CLI-4
void TestVardo::upgradesThoseThatAreThere()
{
    QFETCH(int, there);
    for (int i = 0; i < names.size(); ++i) {
        if ((there >> i & 1) != 0)
            loadSample(names.at(i), path(names.at(i) + ".db"));
    }

    const ToolRun result = run({"log.txt"});

    QCOMPARE(result.exitCode, 0);
    for (int i = 0; i < names.size(); ++i) {
        const QString &name = names.at(i);
        const QString fileName = path(name + ".db");
        if ((there >> i & 1) != 0)
            QCOMPARE(versionOf(fileName), newestVersionOf(name));
        else
            QVERIFY(readText("log.txt").contains("File doesn't exist: " + fileName.toUtf8()
                                                 + ", skipped"));
        QCOMPARE(QFile::exists(fileName), (there >> i & 1) != 0);
    }
}

/// Shows: LOG-3
void TestVardo::logsEveryRunInOneFile()
{
    for (const QString &name : names)
        loadSample(name, path(name + ".db"));

    run({"log.txt"});
    const QByteArray first = readText("log.txt");
    run({"log.txt"});
    const QByteArray second = readText("log.txt").mid(first.size());
    run({"log.txt"});

    QCOMPARE(first.count("PASS"), numberOfSteps());
    QCOMPARE(second.count("SKIP"), numberOfSteps());
    QCOMPARE(second.count('\n'), numberOfSteps() + 2 * names.size());
    QCOMPARE(readText("log.txt"), first + second + second);
}

void TestVardo::leavesALogWhenItIsKilled_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("changes"); // of the database
    QTest::addColumn<QStringList>("lock");    // of another program
    QTest::addColumn<QStringList>("steps");   // that are in the log

    const QStringList reading{"begin", "select * from patient"};
    QTest::newRow("while it waits to begin")
        << 0 << QStringList() << QStringList{"begin immediate"} << QStringList();
    QTest::newRow("within a step")
        << 8
        << QStringList{"create view endless as with recursive n(i) as"
                       " (select 1 union all select i + 1 from n) select max(i) as i from n",
                       "create trigger wait before update on patient"
                       " begin select i from endless; end",
                       "update results set time = '08:00:00.5'", "delete from patient",
                       "insert into patient(time) values('08:00:00.5')"}
        << QStringList() << stepLog("data", 8).mid(0, 1);
    QTest::newRow("after all steps") << 0 << QStringList() << reading << stepLog("data", 0);
    QTest::newRow("after some steps") << 10 << QStringList() << reading << stepLog("data", 10);
}

/// Shows: LOG-6
void TestVardo::leavesALogWhenItIsKilled()
{
    QFETCH(int, stored);
    QFETCH(QStringList, changes);
    QFETCH(QStringList, lock);
    QFETCH(QStringList, steps);
    const TestDatabase sample;
    makeDatabaseAt(sample, "data", stored);
    sample.execute(changes);
    QVERIFY(QFile::copy(sample.path(), path("data.db")));
    const QStringList expected =
        QStringList({"Warning: File doesn't exist: " + path("profile.db") + ", skipped",
                     "Debug: Updating " + path("data.db")})
        + steps;
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(path("data.db"));
        QVERIFY(other.open());
        QSqlQuery locking(other);
        for (const QString &statement : lock)
            QVERIFY(locking.exec(statement));

        RunningTool tool({.program = VARDO, .log = path("log.txt"), .folder = folder->path()});
        (void)QTest::qWaitFor([&] { return logLines(path("log.txt")) == expected; });
        QCOMPARE(logLines(path("log.txt")), expected);
        tool.kill();
        QVERIFY(!tool.result().exited);
    }
    QSqlDatabase::removeDatabase("other");

    QCOMPARE(logLines(path("log.txt")), expected);
}

/// Shows: CLI-3
void TestVardo::stopsAtTheFirstFailure()
{
    QDir(folder->path()).mkdir("profile.db");
    for (const char *fileName : {"data.db", "qc.db", "syslog.db"})
        executeOn(path(fileName), {"create table assay(time text)"});
    const QByteArray before = read("syslog.db");

    const ToolRun result = run({"log.txt"});

    QCOMPARE(result.exitCode, 1);
    QCOMPARE(readText("log.txt").count("Updating"), 1);
    QVERIFY(readText("log.txt").startsWith("Debug: Updating " + path("profile.db").toUtf8()));
    QCOMPARE(read("syslog.db"), before);
}

void TestVardo::keepsTheDatabasesBeforeTheFailure_data()
{
    QTest::addColumn<int>("failing"); // among the names

    for (int i = 0; i < names.size(); ++i)
        QTest::newRow(qUtf8Printable(names.at(i))) << i;
}

/// Shows: CLI-3
void TestVardo::keepsTheDatabasesBeforeTheFailure()
{
    QFETCH(int, failing);
    const QStringList obstacles{"drop table curvePoint", "drop table department",
                                "drop table reagent", "drop table assay"};
    for (const QString &name : names)
        loadSample(name, path(name + ".db"));
    const QString failingName = names.at(failing) + ".db";
    executeOn(path(failingName), {obstacles.at(failing)});
    const QStringList contentBefore = databaseContent(path(failingName));
    QList<QByteArray> before;
    for (const QString &name : names)
        before << read(name + ".db");

    const ToolRun result = run({"log.txt"});

    QCOMPARE(result.exitCode, 1);
    QCOMPARE(readText("log.txt").count("Updating"), failing + 1);
    QCOMPARE(readText("log.txt").count("FAIL"), 1);
    QVERIFY(readText("log.txt").endsWith(": FAIL ((null):0, (null))\n"));
    QCOMPARE(databaseContent(path(failingName)), contentBefore);
    for (int i = 0; i < names.size(); ++i) {
        const QString &name = names.at(i);
        if (i < failing)
            QCOMPARE(versionOf(path(name + ".db")), newestVersionOf(name));
        else if (i > failing)
            QCOMPARE(read(name + ".db"), before.at(i));
    }
}

/// Shows: CLI-5
void TestVardo::closesTheDatabases()
{
    executeOn(path("syslog.db"), {"pragma journal_mode=wal", "create table assay(time text)"});

    run({"log.txt"});

    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList({"log.txt", "syslog.db"}));
}

/// Shows: CLI-2
void TestVardo::doesNotTakeAPrefixForAUri()
{
    if (!canBeFileName("file:syslog.db"))
        QSKIP("Windows has no such file names: a prefix that looks like a URI is NOT tested");
    executeOn(path("syslog.db"), {"create table assay(time text)"});
    executeOn(path("./file:syslog.db"), {"create table assay(time text)"});
    const QByteArray other = read("syslog.db");

    run({"-p", "file:", "log.txt"});

    QCOMPARE(databaseRows(path("./file:syslog.db"), "select * from version"), newestSyslogVersion);
    QCOMPARE(read("syslog.db"), other);
}

void TestVardo::doesNotTakeAPrefixForAResource()
{
    if (!canBeFileName(":syslog.db"))
        QSKIP("Windows has no such file names: a prefix that looks like a resource is NOT tested");
    executeOn(path("./:syslog.db"), {"create table assay(time text)"});

    run({"-p", ":", "log.txt"});

    QCOMPARE(databaseRows(path("./:syslog.db"), "select * from version"), newestSyslogVersion);
}

void TestVardo::logsTheSameInEveryEnvironment_data()
{
    QTest::addColumn<QStringList>("variables"); // name and value in turn

    QTest::newRow("lines off") << QStringList{"QT_LOGGING_RULES", "*=false"};
    QTest::newRow("default category off") << QStringList{"QT_LOGGING_RULES", "default=false"};
    QTest::newRow("Qt's debug lines on") << QStringList{"QT_LOGGING_RULES", "*=true"};
    QTest::newRow("rules file") << QStringList{"QT_LOGGING_CONF", "rules.ini"};
    QTest::newRow("configuration folder") << QStringList{"XDG_CONFIG_HOME", "<folder>"};
    QTest::newRow("logging debugged") << QStringList{"QT_LOGGING_DEBUG", "1"};
    QTest::newRow("plugins debugged") << QStringList{"QT_DEBUG_PLUGINS", "1"};
    QTest::newRow("another layout") << QStringList{"QT_MESSAGE_PATTERN", "%{pid} %{message}"};
    QTest::newRow("fatal warnings") << QStringList{"QT_FATAL_WARNINGS", "1"};
    QTest::newRow("fatal criticals") << QStringList{"QT_FATAL_CRITICALS", "1"};
    QTest::newRow("C locale") << QStringList{"LC_ALL", "C"};
    QTest::newRow("unknown locale") << QStringList{"LC_ALL", "xx_XX.ISO-8859-5"};
}

/// Shows: LOG-5
void TestVardo::logsTheSameInEveryEnvironment()
{
    QFETCH(QStringList, variables);
    QVERIFY(QDir(folder->path()).mkdir("QtProject"));
    for (const char *fileName : {"rules.ini", "QtProject/qtlogging.ini"}) {
        QFile rules(path(fileName));
        QVERIFY(rules.open(QIODevice::WriteOnly));
        rules.write("[Rules]\n*=false\nqt.*=true\n");
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (int i = 0; i < variables.size(); i += 2)
        environment.insert(variables.at(i),
                           QString(variables.at(i + 1)).replace("<folder>", folder->path()));
    executeOn(path("a_syslog.db"), {"create table assay(time text)"});
    executeOn(path("b_syslog.db"), {"create table assay(time text)"});

    const ToolRun usual = run({"-p", "a_"});
    const ToolRun result = run({"-p", "b_"}, VARDO, environment);

    // some versions of Qt first say that they take another locale
    const QByteArray lines = result.errors.mid(result.errors.indexOf("File doesn't exist"));
    QCOMPARE(lines, QByteArray(usual.errors).replace("/a_", "/b_"));
    QCOMPARE(usual.errors.count('\n'), 3 + 2 + stepsOf("syslog").size()); // three are missing
    QCOMPARE(result.exitCode, 0);
}

/// Shows: CLI-2
void TestVardo::readsTheFileNamesFromTheWorkingDirectory()
{
    QVERIFY(QDir(folder->path()).mkdir("lab"));
    executeOn(path("lab/syslog.db"), {"create table assay(time text)"});

    run({"-p", "lab/", "log.txt"});

    QCOMPARE(databaseRows(path("lab/syslog.db"), "select * from version"), newestSyslogVersion);
}

/// Shows: REL-5
void TestVardo::leavesAReadOnlyFileAsItWas()
{
    executeOn(path("syslog.db"), {"create table assay(time text)"});
    QVERIFY(QFile::setPermissions(path("syslog.db"), QFile::ReadOwner));
    const QByteArray before = read("syslog.db");
#ifdef Q_OS_WIN
    if (QFile(path("syslog.db")).open(QIODevice::ReadWrite))
        QSKIP("this user writes read-only files: a read-only file is NOT tested");

    const ToolRun result = run({"log.txt"});
#else
    // Without this capability even the superuser cannot write a read-only file.
    const QStringList bound{"--bounding-set", "-dac_override"};
    if (QProcess::execute("setpriv", bound + QStringList{"true"}) != 0)
        QSKIP("setpriv does not work here: a read-only file is NOT tested");
    if (QProcess::execute("setpriv", bound + QStringList{"test", "-w", path("syslog.db")}) == 0)
        QSKIP("this user writes read-only files: a read-only file is NOT tested");

    const ToolRun result = run(bound + QStringList{VARDO, "log.txt"}, "setpriv");
#endif

    QCOMPARE(result.exitCode, 1);
    QCOMPARE(read("syslog.db"), before);
    const QStringList log = logLines(path("log.txt"));
    const QString warning = log.value(log.size() - 2);
    QVERIFY2(warning.startsWith("Warning: coagulation/vardo/updatesyslog.cpp ( "),
             qUtf8Printable(warning));
    QVERIFY2(warning.endsWith("\"attempt to write a readonly database\" : "
                              "[ \"create table version(version integer)\" ]"),
             qUtf8Printable(warning));
    QCOMPARE(log.constLast(), "Debug: update_v1() : FAIL");
}

/// Shows: REL-5
void TestVardo::leavesTheFileAsItWasWhenTheDiskIsFull()
{
#ifdef Q_OS_WIN
    QSKIP("the shell's limit on file sizes is not to be had: a full disk is NOT tested");
#endif
    executeOn(path("syslog.db"),
              {"pragma page_size=512", "create table assay(id integer primary key, time text)",
               "with recursive n(i) as (select 1 union all select i + 1 from n where i < 5000) "
               "insert into assay select i, '08:15:30.123' from n"});
    const QByteArray before = read("syslog.db");

    // 16 blocks of 512 bytes are enough for the first statements' journal, but not for all of it
    const ToolRun result = run({"-c", R"(ulimit -f 16; exec "$0" log.txt)", VARDO}, "sh");

    QCOMPARE(result.exitCode, 1);
    QCOMPARE(read("syslog.db"), before);
    const QByteArray log = readText("log.txt");
    QVERIFY2(log.contains("disk I/O error") || log.contains("database or disk is full"),
             log.constData());
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList({"log.txt", "syslog.db"}));
}

/// Shows: ENG-12
void TestVardo::leavesAFileThatIsNoDatabaseAsItWas()
{
    QFile file(path("syslog.db"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("This is a letter, not a database. ").repeated(100));
    file.close();
    const QByteArray before = read("syslog.db");

    const ToolRun result = run({});

    QCOMPARE(result.exitCode, 1);
    QCOMPARE(read("syslog.db"), before);
    QVERIFY2(withoutDriverTexts(QString::fromUtf8(result.errors))
                 .endsWith("Updating " + path("syslog.db")
                           + "\nFailed to start transaction: \"file is not a database\"\n"),
             result.errors.constData());
}

/// Shows: ENG-12
void TestVardo::reportsAFolderInPlaceOfADatabase()
{
    QVERIFY(QDir(folder->path()).mkdir("profile.db"));

    const ToolRun result = run({});

    QCOMPARE(withoutDriverTexts(QString::fromUtf8(result.errors)),
             "Updating " + path("profile.db")
                 + "\n"
                   "Can't open profile.db: unable to open database file\n"
                   "Failed to start transaction: \"unable to open database file\"\n");
    QCOMPARE(result.exitCode, 1);
}

void TestVardo::tellsWhatToInstallWhenTheDriverIsNotUsable_data()
{
    QTest::addColumn<bool>("damaged");

    QTest::newRow("no plugin") << false;
    QTest::newRow("a plugin that cannot be loaded") << true;
}

/// Shows: LOG-7
void TestVardo::tellsWhatToInstallWhenTheDriverIsNotUsable()
{
#ifdef Q_OS_WIN
    QSKIP("the program may hold Qt and its driver: a missing driver is NOT tested");
#endif
    QFETCH(bool, damaged);
    QVERIFY(QDir(folder->path()).mkpath("plugins/sqldrivers"));
    QVERIFY(QFile::copy(VARDO, path("vardo")));
    QFile paths(path("qt.conf")); // where Qt looks for plugins, of the program beside it
    QVERIFY(paths.open(QIODevice::WriteOnly));
    paths.write("[Paths]\nPrefix=.\nPlugins=plugins\n");
    paths.close();
    if (damaged)
        copyDriverThatCannotBeLoaded(path("plugins/sqldrivers/libqsqlite.so"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_PLUGIN_PATH");
    executeOn(path("syslog.db"), {"create table assay(time text)"});
    const QByteArray before = read("syslog.db");

    const ToolRun result = run({"log.txt"}, path("vardo"), environment);

    QCOMPARE(result.exitCode, 1);
    QCOMPARE(read("syslog.db"), before);
    const QByteArray log = readText("log.txt");
    const QByteArray cause =
        "Qt's SQLite driver is missing or cannot be loaded: on Debian install the package"
        " libqt6sql6-sqlite, on Windows put qsqlite.dll into the folder sqldrivers beside vardo.exe";
    QVERIFY2(log.contains("Warning: Can't open syslog.db: " + cause + " ((null)"), log.constData());
    QVERIFY2(log.contains("Warning: Failed to start transaction: \"" + cause + "\" ((null)"),
             log.constData());
}

QTEST_GUILESS_MAIN(TestVardo)
#include "tst_vardo.moc"
