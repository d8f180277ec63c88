// SPDX-License-Identifier: MIT
/// The tool of Windows behaves as that of Linux: exit codes, streams, logs and databases.

#include "bothtools.h"
#include "expectedsteps.h"
#include "olddatabases.h"
#include "profilesteps.h"
#include "testfiles.h"
#include "wine.h"

#include <QTest>

#include <memory>

namespace {

const QStringList names{"profile", "data", "qc", "syslog"};

/// Makes an old database at a path.
void makeDatabase(const QString &path, const QString &name, int version,
                  const QStringList &changes = {})
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, version);
    database.execute(changes);
    if (!QDir().mkpath(QFileInfo(path).path()) || !QFile::copy(database.path(), path))
        qFatal("%s cannot be made", qUtf8Printable(path));
}

/// \return statements that add 200 curves to the oldest profile database, all to be fitted
/// \param name of their calibration
/// \param scatter how far their points may be from a logistic curve
QStringList newCurves(const QString &name, double scatter)
{
    return {
        QString("with recursive n(i) as (select 0 union all select i + 1 from n where i < 199)"
                " insert into curve(id, name, xFun, yFun, valid)"
                " select i + 1000, '%1', 1, i % 2 and '%1' <> 'DD', 0 from n")
            .arg(name),
        QString("with recursive n(i) as (select 0 union all select i + 1 from n where i < 1399)"
                " insert into curvePoint(curveId, x, y) select i / 7 + 1000, (1 << i % 7) * 3.1,"
                " 2.5 - 2.1 / (1 + (1 << i % 7) / (4.0 + i / 7 % 11)) + %1 * (i * 7919 % 101) / 100"
                " from n")
            .arg(scatter),
    };
}

/// Where databases are, and how that is said to each tool.
struct Place {
    const char *name = nullptr;
    QString files; ///< what stands before the names of the databases, seen from the root
    QString suffix;
    QStringList arguments;
    QStringList windowsArguments;
    QString folder{}; ///< the working folder, seen from the root
};

/// \param root of the files
QList<Place> places(const QString &root)
{
    const QString longFolder =
        QString("/%1/%2/%3/").arg(QString(100, 'x'), QString(100, 'y'), QString(100, 'z'));
    const auto onWindows = [&root](const QString &path) { return windowsPath(root + path); };
    return {
        {"working folder", "", "", {"log.txt"}, {"log.txt"}},
        {"relative, backslash",
         "lab/",
         "",
         {"-p", "lab/", "log.txt"},
         {"-p", R"(lab\)", "log.txt"}},
        {"relative, slash",
         "lab/",
         "",
         {"-p", "lab/", "lab/log.txt"},
         {"-p", "lab/", "lab/log.txt"}},
        {"absolute, backslashes",
         "lab/",
         "",
         {"-p", root + "/lab/", root + "/log.txt"},
         {"-p", onWindows("/lab/"), onWindows("/log.txt")}},
        {"absolute, slashes",
         "lab/",
         "",
         {"-p", root + "/lab/", root + "/log.txt"},
         {"-p", "Z:" + root + "/lab/", "Z:" + root + "/log.txt"}},
        {"absolute, no drive", "lab/", "", {"-p", root + "/lab/", root + "/log.txt"}, {}},
        {"the folder above",
         "lab/",
         "",
         {"-p", "../", "../../log.txt"},
         {"-p", R"(..\)", R"(..\..\log.txt)"},
         "lab/run"},
        {"prefix and suffix", "old-", "-2016", {"-p", "old-", "-s", "-2016", "log.txt"}, {}},
        {"several dots", "a.b.", ".c", {"-p", "a.b.", "-s", ".c", "log.txt"}, {}},
        {"blanks",
         "my lab/an old ",
         " of today",
         {"-p", "my lab/an old ", "-s", " of today", "the log.txt"},
         {}},
        {"blanks, backslash",
         "my lab/",
         " (2)",
         {"-p", "my lab/", "-s", " (2)", "my lab/the log.txt"},
         {"-p", R"(my lab\)", "-s", " (2)", R"(my lab\the log.txt)"}},
        {"Chinese",
         "检验科/旧-",
         "-备份",
         {"-p", "检验科/旧-", "-s", "-备份", "检验科/升级.txt"},
         {"-p", R"(检验科\旧-)", "-s", "-备份", R"(检验科\升级.txt)"}},
        {"Chinese working folder", "检验科/数据 库/", "", {"日志.txt"}, {}, "检验科/数据 库"},
        {"letters of many languages",
         "Ünï-Λ-Ж-한-😀/",
         "é",
         {"-p", "Ünï-Λ-Ж-한-😀/", "-s", "é", "ß.txt"},
         {}},
        {"a path above 260 letters",
         longFolder.mid(1),
         "",
         {"-p", root + longFolder, root + longFolder + "log.txt"},
         {"-p", onWindows(longFolder), onWindows(longFolder) + "log.txt"}},
        {"a path above 260 letters, relative",
         longFolder.mid(1),
         "",
         {"-p", longFolder.mid(1), "log.txt"},
         {}},
    };
}

} // namespace

class TestWindowsSame : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void takesTheSameCommandLines_data();
    void takesTheSameCommandLines();
    void upgradesEveryStoredVersion_data();
    void upgradesEveryStoredVersion();
    void upgradesAllFourInEveryLanguage_data();
    void upgradesAllFourInEveryLanguage();
    void upgradesAllFourWhereverTheyAre_data();
    void upgradesAllFourWhereverTheyAre();
    void fitsTheSameCurves_data();
    void fitsTheSameCurves();
    void skipsAndAppendsInTheNextRun();
    void leavesWhatIsNoSoundDatabase_data();
    void leavesWhatIsNoSoundDatabase();
    void reportsStatementsThatFail_data();
    void reportsStatementsThatFail();
    void takesUpWhatAnotherProgramLeft_data();
    void takesUpWhatAnotherProgramLeft();
    void endsLinesAsTheSystemDoes();

private:
    std::unique_ptr<BothTools> tools;
};

void TestWindowsSame::initTestCase()
{
    if (QString(WINDOWS_TOOL).isEmpty())
        QSKIP("VARDO_WINDOWS_TOOL is not set: the tool of Windows is NOT tested");
    startWine();
    tools = std::make_unique<BothTools>();
}

void TestWindowsSame::init()
{
    tools->clear();
}

void TestWindowsSame::cleanupTestCase()
{
    if (tools)
        qInfo("%s", qUtf8Printable(tools->summary()));
}

void TestWindowsSame::takesTheSameCommandLines_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");

    const auto add = [](const QStringList &arguments, int exitCode) {
        QTest::newRow(qUtf8Printable("vardo " + arguments.join(' '))) << arguments << exitCode;
    };
    add({}, 0);
    add({"-h"}, 0);
    add({"-?"}, 0);
    add({"--help"}, 0);
    add({"log.txt", "-h"}, 0);
    add({"-x"}, 2);
    add({"--version"}, 2);
    add({"-未知"}, 2);
    add({R"(-"a b" c\)"}, 2);
    add({"-*"}, 2);
    add({"-x", "-h"}, 2);
    add({"-p"}, 1);
    add({"-s"}, 1);
    add({"-p", "a", "-s"}, 1);
    add({"-p", "", "log.txt"}, 0);
    add({"-p", "-s", "-s", "-p"}, 0);
    add({"-p", "not here/", "log.txt"}, 0);
    add({"first.txt", "second.txt"}, 0);
    add({"not here/log.txt"}, 0);
    add({""}, 0);
}

/// Shows: PLT-6
void TestWindowsSame::takesTheSameCommandLines()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    writeFile(tools->path("-x"), "which -? and -* are patterns of");

    tools->compare({.arguments = arguments});

    QCOMPARE(tools->exitCode(), exitCode);
}

void TestWindowsSame::upgradesEveryStoredVersion_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("translated");

    for (const QString &name : names) {
        for (int version = 0; version <= newestVersionOf(name); ++version) {
            for (const bool translated : {false, true})
                QTest::addRow("%s %d%s", qUtf8Printable(name), version,
                              translated ? ", English" : "")
                    << name << version << translated;
        }
    }
}

/// Shows: PLT-6
void TestWindowsSame::upgradesEveryStoredVersion()
{
    QFETCH(QString, name);
    QFETCH(int, version);
    QFETCH(bool, translated);
    const QString locale = translated ? "en_US.UTF-8" : "C.UTF-8";
    if (!tools->hasLocale(locale))
        QSKIP("localedef cannot make the locale: English labels are NOT compared");
    makeDatabase(tools->path(name + ".db"), name, version);

    tools->compare({.arguments = {"log.txt"}, .locale = locale, .translated = translated});

    QCOMPARE(tools->exitCode(), 0);
}

void TestWindowsSame::upgradesAllFourInEveryLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("translated");

    for (const char *locale : {"en_US.UTF-8", "en_GB.UTF-8", "zh_CN.UTF-8", "fr_FR.UTF-8"}) {
        for (const bool translated : {false, true})
            QTest::addRow("%s%s", locale, translated ? ", labels" : "") << locale << translated;
    }
}

void TestWindowsSame::upgradesAllFourInEveryLanguage()
{
    QFETCH(QString, locale);
    QFETCH(bool, translated);
    if (!tools->hasLocale(locale))
        QSKIP("localedef cannot make the locale: it is NOT compared");
    for (const QString &name : names)
        makeDatabase(tools->path(name + ".db"), name, 0);

    tools->compare({.arguments = {"log.txt"}, .locale = locale, .translated = translated});

    QCOMPARE(tools->exitCode(), 0);
    const bool english = translated && locale.startsWith("en");
    QCOMPARE(databaseRows(tools->path("profile.db"),
                          "select value from profile where name = 'patient/memo'"),
             QStringList{english ? "'Remarks'" : "'备注'"});
}

void TestWindowsSame::upgradesAllFourWhereverTheyAre_data()
{
    QTest::addColumn<Place>("place");

    for (const Place &place : places(tools->root()))
        QTest::newRow(place.name) << place;
}

void TestWindowsSame::upgradesAllFourWhereverTheyAre()
{
    QFETCH(Place, place);
    QVERIFY(QDir().mkpath(tools->path(place.folder)));
    for (const QString &name : names)
        makeDatabase(tools->path(place.files + name + place.suffix + ".db"), name, 0);

    tools->compare({.arguments = place.arguments,
                    .windowsArguments = place.windowsArguments,
                    .folder = place.folder});

    QCOMPARE(tools->exitCode(), 0);
    for (const QString &name : names)
        QCOMPARE(databaseRows(tools->path(place.files + name + place.suffix + ".db"),
                              "select version from version"),
                 QStringList{QString::number(newestVersionOf(name))});
}

void TestWindowsSame::fitsTheSameCurves_data()
{
    QTest::addColumn<QString>("calibration");
    QTest::addColumn<double>("scatter");

    QTest::newRow("lines through scattered points") << "PT" << 0.03;
    QTest::newRow("logistic curves through their points") << "DD" << 0.0;
    QTest::newRow("logistic curves through scattered points") << "DD" << 0.03;
    QTest::newRow("logistic curves through points far from them") << "DD" << 0.1;
}

/// Shows: PLT-6
void TestWindowsSame::fitsTheSameCurves()
{
    QFETCH(QString, calibration);
    QFETCH(double, scatter);
    makeDatabase(tools->path("profile.db"), "profile", 0, newCurves(calibration, scatter));

    tools->compare({.arguments = {"log.txt"}});

    QCOMPARE(tools->exitCode(), 0);
    QCOMPARE(databaseRows(tools->path("profile.db"),
                          "select count(*) from curve where id >= 1000 and valid"),
             QStringList{"200"});
}

void TestWindowsSame::skipsAndAppendsInTheNextRun()
{
    for (const QString &name : names)
        makeDatabase(tools->path(name + ".db"), name, 0);
    tools->compare({.arguments = {"log.txt"}});
    // the line ends of the run before stay what they are
    writeFile(tools->path("log.txt"), asOnLinux(fileBytes(tools->path("log.txt"))));

    tools->compare({.arguments = {"log.txt"}});

    QCOMPARE(tools->exitCode(), 0);
    QCOMPARE(QString(fileBytes(tools->path("log.txt"))).count(": SKIP"), numberOfSteps());
}

void TestWindowsSame::leavesWhatIsNoSoundDatabase_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("exitCode");

    const TestDatabase sound("syslog.db");
    makeDatabaseAt(sound, "syslog", 0);
    const QByteArray bytes = sound.bytes();
    const auto damaged = [&bytes](qsizetype from, qsizetype size) {
        return QByteArray(bytes).replace(from, size, QByteArray(size, '\xa5'));
    };

    QTest::newRow("no database") << QByteArray("This is a letter. ").repeated(200) << 1;
    QTest::newRow("nothing") << QByteArray() << 1;
    QTest::newRow("the header alone") << bytes.first(100) << 1;
    QTest::newRow("cut in a page") << bytes.first(bytes.size() / 2 + 100) << 1;
    QTest::newRow("cut after a page") << bytes.first(4096) << 1;
    QTest::newRow("a damaged schema") << damaged(100, 200) << 1;
    QTest::newRow("a damaged page") << damaged(4096, 64) << 1;
    QTest::newRow("damaged content") << damaged(bytes.size() - 600, 500) << 1;
    QTest::newRow("zeros at the end")
        << bytes.first(bytes.size() - 4096) + QByteArray(4096, 0) << 1;
}

void TestWindowsSame::leavesWhatIsNoSoundDatabase()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, exitCode);
    writeFile(tools->path("syslog.db"), bytes);

    tools->compare({});

    QCOMPARE(tools->exitCode(), exitCode);
    QCOMPARE(fileBytes(tools->path("syslog.db")), bytes);
}

void TestWindowsSame::reportsStatementsThatFail_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("version");
    QTest::addColumn<QStringList>("obstacles");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("profile: a table is in the way")
        << "profile" << 0 << QStringList{"create table user_new(id)"} << 1;
    QTest::newRow("profile: a table is missing")
        << "profile" << 0 << QStringList{"drop table curve"} << 1;
    QTest::newRow("profile: a row is refused")
        << "profile" << 9 << QStringList{refuseInsert("profile")} << 1;
    QTest::newRow("profile: a Chinese message")
        << "profile" << 9
        << QStringList{"create trigger keep before insert on profile"
                       " begin select raise(abort, '不允许“插入”'); end"}
        << 1;
    QTest::newRow("profile: calibrations of unknown names")
        << "profile" << 0 << QStringList{"update curve set name = '未知的 ' || id"} << 0;
    QTest::newRow("data: an index is a table")
        << "data" << 2 << QStringList{"create table results_index(id)"} << 0;
    QTest::newRow("data: rows that cannot move")
        << "data" << 2 << QStringList{"alter table result drop column unit"} << 0;
    QTest::newRow("data: a table is in the way")
        << "data" << 0 << QStringList{"create table detail(id)"} << 1;
    QTest::newRow("qc: a column more")
        << "qc" << 2 << QStringList{"alter table subsetting add extra"} << 1;
    QTest::newRow("qc: an index is a table")
        << "qc" << 0 << QStringList{"drop index reagent_index", "create table reagent_index(id)"}
        << 0;
    QTest::newRow("syslog: a view")
        << "syslog" << 0 << QStringList{"create view version as select 1 as version"} << 1;
}

void TestWindowsSame::reportsStatementsThatFail()
{
    QFETCH(QString, name);
    QFETCH(int, version);
    QFETCH(QStringList, obstacles);
    QFETCH(int, exitCode);
    makeDatabase(tools->path(name + ".db"), name, version, obstacles);

    tools->compare({.arguments = {"log.txt"}});

    QCOMPARE(tools->exitCode(), exitCode);
    const QByteArray log = fileBytes(tools->path("log.txt"));
    QVERIFY2(log.contains("coagulation/vardo/update") || log.contains(": FAIL"), log.constData());
}

void TestWindowsSame::takesUpWhatAnotherProgramLeft_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<QString>("left"); // the end of the name of the file that is left

    QTest::newRow("a hot journal") << "pragma journal_mode=delete; pragma cache_size=10;"
                                   << "-journal";
    QTest::newRow("a write-ahead log") << "pragma journal_mode=wal; pragma wal_autocheckpoint=0;"
                                       << "-wal";
}

void TestWindowsSame::takesUpWhatAnotherProgramLeft()
{
    QFETCH(QString, settings);
    QFETCH(QString, left);
    makeDatabase(tools->path("data.db"), "data", 0);
    QProcess shell;
    shell.setWorkingDirectory(tools->root());
    shell.start("sqlite3", {"-batch", "data.db"});
    shell.write(
        qUtf8Printable(settings
                       + "begin; insert into patientExtra(patientId, name) select 1, 'committed';"
                         " commit; begin; create table unfinished as with recursive n(i) as"
                         " (select 1 union all select i + 1 from n where i < 5000)"
                         " select i, 'a text that fills pages' from n;"
                         " update patient set memo = 1;\n.print ready\n"));
    QByteArray answer;
    while (!answer.contains("ready")) {
        QVERIFY(shell.waitForReadyRead());
        answer += shell.readAllStandardOutput();
    }
    shell.kill();
    shell.waitForFinished();
    QVERIFY2(QFileInfo(tools->path("data.db" + left)).size() > 0, answer.constData());
    QFile::remove(tools->path("data.db-shm")); // made anew from the log

    tools->compare({.arguments = {"log.txt"}});

    QCOMPARE(tools->exitCode(), 0);
    QCOMPARE(databaseRows(tools->path("data.db"),
                          "select (select count(*) from patientExtra where name = 'committed'),"
                          " (select count(*) from sqlite_master where name = 'unfinished')"),
             QStringList{"1, 0"});
}

/// What else is compared may differ in this, so it is looked at here.
void TestWindowsSame::endsLinesAsTheSystemDoes()
{
    const auto run = [this](const QStringList &arguments) {
        return runTool(
            underWine({.program = WINDOWS_TOOL, .arguments = arguments, .folder = tools->root()}));
    };
    const auto endsAllLines = [](const QByteArray &text) {
        return text.contains('\n') && text.count("\r\n") == text.count('\n')
            && text.count('\r') == text.count('\n');
    };

    const QByteArray usage = run({"-h"}).output;
    const QByteArray errors = run({}).errors;
    run({"log.txt"});

    QVERIFY2(endsAllLines(usage), usage.constData());
    QVERIFY2(endsAllLines(errors), errors.constData());
    const QByteArray log = fileBytes(tools->path("log.txt"));
    QVERIFY2(endsAllLines(log), log.constData());
}

QTEST_GUILESS_MAIN(TestWindowsSame)
#include "tst_windows_same.moc"
