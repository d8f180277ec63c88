// SPDX-License-Identifier: MIT
/// The tool of Windows beside other programs and other runs, killed, and without space or rights.

#include "expectedsteps.h"
#include "folderfiles.h"
#include "olddatabases.h"
#include "today.h"
#include "wine.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

const QStringList names{"profile", "data", "qc", "syslog"};
constexpr int timeout = 60000; // ms, far above what any of the programs takes

/// Where a run gives up waiting for a lock.
constexpr int busyTimeout = 5000;

enum class System { Linux, Windows };

/// A run of one of the tools on the databases of a folder.
class Run : public RunningTool {
public:
    Run(System system, const QString &databases, const QString &logName = "log.txt")
        : RunningTool(command(system, databases, logName))
        , folder(databases)
    {
    }

    static ToolCommand command(System system, const QString &databases, const QString &logName)
    {
        const bool isWindows = system == System::Windows;
        const ToolCommand command{
            .program = isWindows ? WINDOWS_TOOL : VARDO, .log = logName, .folder = databases};
        return isWindows ? underWine(command) : command;
    }

    /// Waits for the end.
    int exitCode()
    {
        const ToolRun run = result();
        if (!run.exited)
            qFatal("a crash: %s", run.errors.constData());
        return run.exitCode;
    }

    /// Waits for the end.
    /// \return the lines of the log, as that of Linux has them and without the folder
    QStringList lines() { return comparable(result().log, folder); }

    static QStringList comparable(QStringList lines, const QString &folder)
    {
        for (QString &line : lines) {
            if (line.endsWith('\r'))
                line.chop(1);
        }
        return lines.replaceInStrings("Z:" + folder + '/', "").replaceInStrings(folder + '/', "");
    }

private:
    QString folder;
};

QList<QStringList> contentsOf(const QString &folder)
{
    QList<QStringList> contents;
    for (const QString &name : names)
        contents << withToday(databaseContent(QDir(folder).filePath(name + ".db")));
    return contents;
}

/// The four databases before an upgrade, what the tool of Linux makes of them, and its logs.
struct Databases {
    /// \param settings statements for each database, such as of the journal's mode
    /// \param enlarge statements that add rows to the data database
    explicit Databases(const QStringList &settings, const QStringList &enlarge = {})
    {
        const QTemporaryDir temporary;
        const QString folder = QDir(temporary.path()).canonicalPath();
        for (const QString &name : names) {
            const TestDatabase database(name + ".db");
            makeDatabaseAt(database, name, 0);
            if (name == "data")
                database.execute(enlarge);
            database.execute(settings);
            if (!QFile::copy(database.path(), folder + '/' + name + ".db"))
                qFatal("no copy of %s", qUtf8Printable(database.path()));
        }
        files = filesIn(folder);
        oldContents = contentsOf(folder);
        Run first(System::Linux, folder, "first.txt");
        firstLog = first.lines();
        Run second(System::Linux, folder, "second.txt");
        secondLog = second.lines();
        if (first.exitCode() != 0 || second.exitCode() != 0)
            qFatal("an undisturbed run failed");
        newContents = contentsOf(folder);
    }

    FolderFiles files;
    QList<QStringList> oldContents;
    QList<QStringList> newContents;
    QStringList firstLog;
    QStringList secondLog;
};

/// A run takes some hundred milliseconds for these.
const QStringList manyPatients{
    "with recursive n(i) as (select 100 union all select i + 1 from n where i < 5099)"
    " insert into patient(id, sampleNo, date, time, name)"
    " select i, printf('%04d', i), '2016-05-11', '08:01:02.345', 'patient ' || i from n",
    "with recursive n(i) as (select 0 union all select i + 1 from n where i < 19999)"
    " insert into result(id, patientId, item, subitem, result, unit)"
    " select i + 100, i / 4 + 100, 'I' || (i % 4), 'T', i * 0.25, 's' from n"};

/// A program of Linux that has a database locked, as long as this lives.
class Lock {
public:
    Lock(const QString &path, const QStringList &statements)
        : name(path)
        , database(QSqlDatabase::addDatabase("QSQLITE", name))
    {
        database.setDatabaseName(path);
        database.open();
        for (const QString &statement : statements) {
            QSqlQuery query(database);
            if (!query.exec(statement))
                qFatal("%s", qUtf8Printable(query.lastError().text()));
            query.next();
        }
    }
    ~Lock()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(Lock)

private:
    QString name;
    QSqlDatabase database;
};

/// A program of Windows that has a file open, as long as this lives.
class Holder {
public:
    /// \param whom it shares the file with: "nobody", "readers" or "everybody"
    Holder(const QString &path, const QString &whom)
    {
        const ToolCommand command =
            underWine({.program = WINDOWS_HOLDER, .arguments = {windowsPath(path), whom}});
        process.setProcessEnvironment(command.environment);
        process.start(command.program, command.arguments);
        if (!process.waitForReadyRead(timeout))
            qFatal("%s: %s", WINDOWS_HOLDER, qUtf8Printable(process.errorString()));
    }
    ~Holder()
    {
        process.closeWriteChannel();
        process.waitForFinished(timeout);
    }
    Q_DISABLE_COPY_MOVE(Holder)

private:
    QProcess process;
};

/// A file system of little space, as long as this lives.
class SmallDisk {
public:
    explicit SmallDisk(int kilobytes)
        : mounted(QProcess::execute("mount",
                                    {"-t", "tmpfs", "-o", QString("size=%1k").arg(kilobytes),
                                     "tmpfs", folder.path()})
                  == 0)
    {
    }
    ~SmallDisk()
    {
        if (mounted)
            QProcess::execute("umount", {"--lazy", folder.path()});
    }
    Q_DISABLE_COPY_MOVE(SmallDisk)

    bool isThere() const { return mounted; }
    QString path() const { return QDir(folder.path()).canonicalPath(); }

private:
    QTemporaryDir folder;
    bool mounted;
};

const QStringList databaseFiles{"data.db", "profile.db", "qc.db", "syslog.db"};

const QString lockedLine = R"(Warning: Failed to start transaction: "database is locked")";
const QString heldLine =
    R"(Warning: Failed to start transaction: "database is locked Another program holds the file open")";

void addLockRows()
{
    QTest::addColumn<bool>("ahead"); // a write-ahead log
    QTest::addColumn<QStringList>("statements");

    const QStringList reading{"begin", "select count(*) from qc"};
    QTest::newRow("a writer") << false << QStringList{"begin immediate"};
    QTest::newRow("an exclusive writer") << false << QStringList{"begin exclusive"};
    QTest::newRow("a reader") << false << reading;
    QTest::newRow("a writer, write-ahead log") << true << QStringList{"begin immediate"};
    QTest::newRow("a program that keeps all to itself, write-ahead log")
        << true << QStringList{"pragma locking_mode=exclusive", "begin exclusive"};
}

} // namespace

class TestWindowsDisturbed : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void waitsForALock_data();
    void waitsForALock();
    void givesUpOnALock_data();
    void givesUpOnALock();
    void waitsForTheHolderOfAFile_data();
    void waitsForTheHolderOfAFile();
    void givesUpOnTheHolderOfAFile_data();
    void givesUpOnTheHolderOfAFile();
    void upgradesBesideAReaderThatSharesTheFile();
    void upgradesAfterARunWasKilled_data();
    void upgradesAfterARunWasKilled();
    void upgradesOnceInSeveralRuns_data();
    void upgradesOnceInSeveralRuns();
    void keepsTheOldContentWhenTheDiskIsFull_data();
    void keepsTheOldContentWhenTheDiskIsFull();
    void leavesTheFileAsItWasWithoutTheRightToWrite_data();
    void leavesTheFileAsItWasWithoutTheRightToWrite();

private:
    QString path(const QString &name) const { return root() + '/' + name; }
    QString root() const { return QDir(folder->path()).canonicalPath(); }

    std::unique_ptr<Databases> small;
    std::unique_ptr<Databases> smallAhead;
    std::unique_ptr<Databases> large;
    std::unique_ptr<QTemporaryDir> folder;
};

void TestWindowsDisturbed::initTestCase()
{
    if (QString(WINDOWS_TOOL).isEmpty())
        QSKIP("VARDO_WINDOWS_TOOL is not set: the tool of Windows is NOT tested");
    startWine();
    small = std::make_unique<Databases>(QStringList{});
    smallAhead = std::make_unique<Databases>(QStringList{"pragma journal_mode=wal"});
    large = std::make_unique<Databases>(QStringList{}, manyPatients);
}

void TestWindowsDisturbed::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void TestWindowsDisturbed::waitsForALock_data()
{
    addLockRows();
}

void TestWindowsDisturbed::waitsForALock()
{
    QFETCH(bool, ahead);
    QFETCH(QStringList, statements);
    const Databases &databases = ahead ? *smallAhead : *small;
    setFilesIn(root(), databases.files);
    auto lock = std::make_unique<Lock>(path("qc.db"), statements);

    Run run(System::Windows, root());
    const bool ended = run.endsWithin(1000);
    lock.reset();

    QVERIFY(!ended);
    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), databases.firstLog);
    QCOMPARE(contentsOf(root()), databases.newContents);
}

void TestWindowsDisturbed::givesUpOnALock_data()
{
    addLockRows();
}

/// Shows: PLT-7
void TestWindowsDisturbed::givesUpOnALock()
{
    QFETCH(bool, ahead);
    QFETCH(QStringList, statements);
    const Databases &databases = ahead ? *smallAhead : *small;
    const QTemporaryDir linuxFolder;
    setFilesIn(root(), databases.files);
    setFilesIn(linuxFolder.path(), databases.files);
    auto lock = std::make_unique<Lock>(path("qc.db"), statements);
    auto linuxLock = std::make_unique<Lock>(linuxFolder.filePath("qc.db"), statements);

    Run run(System::Windows, root());
    Run linuxRun(System::Linux, linuxFolder.path());
    const int exitCode = run.exitCode();
    const qint64 elapsed = run.elapsed();
    const QStringList expectedLog = linuxRun.lines();
    lock.reset();
    linuxLock.reset();

    QCOMPARE(exitCode, 1);
    QVERIFY2(elapsed >= busyTimeout - 500, qPrintable(QString::number(elapsed)));
    QCOMPARE(run.lines(), expectedLog);
    QVERIFY(expectedLog.constLast().contains("database is locked"));
    const QByteArray before = databases.files.value("qc.db");
    QVERIFY(filesIn(root()).value("qc.db") == before);
    QCOMPARE(contentsOf(root()), databases.newContents.mid(0, 2) + databases.oldContents.mid(2));
}

void TestWindowsDisturbed::waitsForTheHolderOfAFile_data()
{
    QTest::addColumn<QString>("whom"); // the file is shared with

    QTest::newRow("nobody") << "nobody";
    QTest::newRow("readers") << "readers";
}

/// Shows: PLT-7
void TestWindowsDisturbed::waitsForTheHolderOfAFile()
{
    if (QString(WINDOWS_HOLDER).isEmpty())
        QSKIP("VARDO_WINDOWS_HOLDER is not set: a file that another program holds is NOT tested");
    QFETCH(QString, whom);
    setFilesIn(root(), small->files);
    auto holder = std::make_unique<Holder>(path("qc.db"), whom);

    Run run(System::Windows, root());
    const bool ended = run.endsWithin(1000);
    holder.reset();

    QVERIFY(!ended);
    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), small->firstLog);
    QCOMPARE(contentsOf(root()), small->newContents);
}

void TestWindowsDisturbed::givesUpOnTheHolderOfAFile_data()
{
    waitsForTheHolderOfAFile_data();
}

void TestWindowsDisturbed::givesUpOnTheHolderOfAFile()
{
    if (QString(WINDOWS_HOLDER).isEmpty())
        QSKIP("VARDO_WINDOWS_HOLDER is not set: a file that another program holds is NOT tested");
    QFETCH(QString, whom);
    setFilesIn(root(), small->files);
    auto holder = std::make_unique<Holder>(path("qc.db"), whom);

    Run run(System::Windows, root());
    const int exitCode = run.exitCode();
    const qint64 elapsed = run.elapsed();
    holder.reset();

    QCOMPARE(exitCode, 1);
    QVERIFY2(elapsed >= busyTimeout - 500, qPrintable(QString::number(elapsed)));
    const QStringList linesBefore =
        small->firstLog.mid(0, small->firstLog.indexOf("Debug: Updating qc.db") + 1);
    QCOMPARE(run.lines(), linesBefore + QStringList{heldLine});
    const QByteArray before = small->files.value("qc.db");
    QVERIFY(filesIn(root()).value("qc.db") == before);
}

void TestWindowsDisturbed::upgradesBesideAReaderThatSharesTheFile()
{
    if (QString(WINDOWS_HOLDER).isEmpty())
        QSKIP("VARDO_WINDOWS_HOLDER is not set: a file that another program holds is NOT tested");
    setFilesIn(root(), small->files);
    const Holder holder(path("qc.db"), "everybody");

    Run run(System::Windows, root());

    QCOMPARE(run.exitCode(), 0);
    QCOMPARE(run.lines(), small->firstLog);
    QCOMPARE(contentsOf(root()), small->newContents);
}

void TestWindowsDisturbed::upgradesAfterARunWasKilled_data()
{
    QTest::addColumn<QStringList>("settings");

    QTest::newRow("rollback journal") << QStringList{};
    QTest::newRow("rollback journal, ten pages of cache")
        << QStringList{"pragma default_cache_size=10"};
    QTest::newRow("write-ahead log") << QStringList{"pragma journal_mode=wal"};
}

/// Shows: PLT-7
void TestWindowsDisturbed::upgradesAfterARunWasKilled()
{
    constexpr int kills = 16;
    QFETCH(QStringList, settings);
    const Databases databases(settings, manyPatients);
    qint64 duration = timeout;
    for (int i = 0; i < 3; ++i) {
        setFilesIn(root(), databases.files);
        Run undisturbed(System::Windows, root());
        QCOMPARE(undisturbed.exitCode(), 0);
        duration = std::min(duration, undisturbed.elapsed());
    }

    int ended = 0;
    int unfinished = 0; // files beside the databases
    for (int i = 0; i < kills; ++i) {
        setFilesIn(root(), databases.files);
        Run killed(System::Windows, root(), "killed.txt");
        ended += killed.endsWithin(static_cast<int>(duration * i / kills)) ? 1 : 0;
        killed.kill();

        const QStringList lines = killed.lines();
        QCOMPARE(lines, databases.firstLog.mid(0, lines.size()));
        FolderFiles left = filesIn(root());
        // An empty log is there as soon as the file is open, before the line.
        if (left.contains("data.db-journal") || !left.value("data.db-wal").isEmpty())
            QVERIFY(lines.contains("Debug: Updating data.db"));
        unfinished += left.size() > names.size() + 1 ? 1 : 0;
        left.removeIf([](const auto &file) { return file.key().endsWith("-shm"); });
        const QTemporaryDir copy;
        setFilesIn(copy.path(), left);
        const QList<QStringList> contents = contentsOf(copy.path());
        for (int k = 0; k < names.size(); ++k)
            QVERIFY2(contents.at(k) == databases.oldContents.at(k)
                         || contents.at(k) == databases.newContents.at(k),
                     qUtf8Printable(names.at(k)));

        Run next(i % 2 == 0 ? System::Windows : System::Linux, root(), "next.txt");
        QCOMPARE(next.exitCode(), 0);
        QCOMPARE(contentsOf(root()), databases.newContents);
        QCOMPARE(databaseFilesIn(root()), databaseFiles);
    }
    qInfo("%d runs killed, %d of them with a journal or a log left; %d had ended", kills - ended,
          unfinished, ended);
    QVERIFY(unfinished > 0);
}

void TestWindowsDisturbed::upgradesOnceInSeveralRuns_data()
{
    QTest::addColumn<QList<System>>("systems");

    const QList<System> both{System::Windows, System::Linux};
    for (int round = 1; round <= 3; ++round) {
        QTest::addRow("two of Windows, round %d", round) << QList<System>(2, System::Windows);
        QTest::addRow("four of Windows, round %d", round) << QList<System>(4, System::Windows);
        QTest::addRow("Windows and Linux, round %d", round) << both;
        QTest::addRow("two of each, round %d", round) << both + both;
    }
}

void TestWindowsDisturbed::upgradesOnceInSeveralRuns()
{
    QFETCH(QList<System>, systems);
    setFilesIn(root(), large->files);
    const QList<QStringList> firstParts = partsOf(large->firstLog);
    const QList<QStringList> secondParts = partsOf(large->secondLog);

    std::vector<std::unique_ptr<Run>> runs;
    for (const System system : systems)
        runs.push_back(
            std::make_unique<Run>(system, root(), QString("log%1.txt").arg(runs.size())));

    QList<int> upgrades(names.size());
    for (const auto &run : runs) {
        const int exitCode = run->exitCode();
        QStringList log = run->lines();
        if (exitCode != 0) {
            QCOMPARE(log.takeLast(), lockedLine);
            QVERIFY(log.takeLast().startsWith("Debug: Updating "));
        }
        const QList<QStringList> parts = partsOf(log);
        QVERIFY(exitCode != 0 || parts.size() == names.size());
        for (int i = 0; i < parts.size(); ++i) {
            if (parts.at(i) == firstParts.at(i))
                ++upgrades[i];
            else
                QCOMPARE(parts.at(i), secondParts.at(i));
        }
    }
    QCOMPARE(upgrades, QList<int>({1, 1, 1, 1}));
    QCOMPARE(databaseFilesIn(root()), databaseFiles);
    QCOMPARE(contentsOf(root()), large->newContents);
}

void TestWindowsDisturbed::keepsTheOldContentWhenTheDiskIsFull_data()
{
    QTest::addColumn<int>("free"); // KiB

    for (const int free : {0, 16, 200, 800})
        QTest::addRow("%d KiB free", free) << free;
}

/// Shows: PLT-7
void TestWindowsDisturbed::keepsTheOldContentWhenTheDiskIsFull()
{
    QFETCH(int, free);
    const FolderFiles before{{"data.db", large->files.value("data.db")}};
    const SmallDisk disk(static_cast<int>(before.first().size() / 1024) + 4 + free);
    if (!disk.isThere())
        QSKIP("no file system can be mounted here: a full disk is NOT tested");

    QList<QStringList> logs;
    QList<QStringList> filesLeft;
    for (const System system : {System::Linux, System::Windows}) {
        setFilesIn(disk.path(), before);
        ToolCommand command = Run::command(system, root(), "");
        command.arguments << "-p" << disk.path() + '/';
        command.log = system == System::Linux ? "linux.txt" : "windows.txt";
        const ToolRun run = runTool(command);
        QCOMPARE(run.exitCode, 1);
        logs << Run::comparable(run.log, disk.path());
        filesLeft << databaseFilesIn(disk.path());
        // Without space even a roll-back may have to wait for the next program that opens the file.
        QCOMPARE(withToday(databaseContent(disk.path() + "/data.db")), large->oldContents.at(1));
        QVERIFY(filesIn(disk.path()) == before);
    }
    QCOMPARE(logs.at(1), logs.at(0));
    QCOMPARE(filesLeft.at(1), filesLeft.at(0));
}

void TestWindowsDisturbed::leavesTheFileAsItWasWithoutTheRightToWrite_data()
{
    QTest::addColumn<QString>("readOnly"); // below the root
    QTest::addColumn<QString>("onLinux");  // what the log says
    QTest::addColumn<QString>("onWindows");

    const QString readOnly = "attempt to write a readonly database";
    QTest::newRow("a read-only file") << "lab/qc.db" << readOnly << readOnly;
    // SQLite asks for the reason on Linux only.
    QTest::newRow("a read-only folder") << "lab" << readOnly << "unable to open database file";
}

void TestWindowsDisturbed::leavesTheFileAsItWasWithoutTheRightToWrite()
{
    QFETCH(QString, readOnly);
    QFETCH(QString, onLinux);
    QFETCH(QString, onWindows);
    setFilesIn(path("lab"), {{"qc.db", small->files.value("qc.db")}});
    const auto permissions = QFile::permissions(path(readOnly));
    const QFile::Permissions writing = QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup;
    QVERIFY(QFile::setPermissions(path(readOnly), permissions & ~writing));
    // Without this capability even the superuser cannot write a read-only file.
    const QStringList bound{"--bounding-set", "-dac_override"};
    if (geteuid() == 0 && QProcess::execute("setpriv", bound + QStringList{"true"}) != 0)
        QSKIP("setpriv does not work here: a read-only file is NOT tested");
    // Wine's server opens the files, so that it needs one that lacks the capability, too.
    const WineFolder unprivileged;

    QList<QStringList> logs;
    for (const System system : {System::Linux, System::Windows}) {
        ToolCommand command = Run::command(system, root(), "");
        command.environment.insert("WINEPREFIX", unprivileged.path());
        command.arguments << "-p" << path("lab/");
        if (geteuid() == 0) {
            command.arguments = bound + QStringList{command.program} + command.arguments;
            command.program = "setpriv";
        }
        command.log = system == System::Linux ? "linux.txt" : "windows.txt";
        const ToolRun run = runTool(command);
        QCOMPARE(run.exitCode, 1);
        logs << Run::comparable(run.log, path("lab"));
        QCOMPARE(databaseFilesIn(path("lab")), QStringList{"qc.db"});
        QVERIFY(filesIn(path("lab")).value("qc.db") == small->files.value("qc.db"));
    }
    QVERIFY(QFile::setPermissions(path(readOnly), permissions));
    QVERIFY(logs.at(0).join('\n').contains(onLinux));
    QCOMPARE(logs.at(1), QStringList(logs.at(0)).replaceInStrings(onLinux, onWindows));
}

QTEST_GUILESS_MAIN(TestWindowsDisturbed)
#include "tst_windows_disturbed.moc"
