// SPDX-License-Identifier: MIT
/// The tool as nobody should use it, or in surroundings that nobody thought of: what is in the databases is the
/// same all the same.

#include "expectedsteps.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "toolrun.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QStringList names{"profile", "data", "qc", "syslog"};

/// \param name of the database, for example "qc"
/// \return the content of a database that was upgraded alone from a stored version
QStringList upgradedContent(const QString &name, int version)
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, version);
    const ToolRun run = runToolOn(VARDO, database.folderPath());
    if (run.exitCode != 0)
        qFatal("%s", qUtf8Printable(run.log.join('\n')));
    return database.content();
}

} // namespace

class TestMisuse : public QObject {
    Q_OBJECT

private slots:
    void init();

    void upgradesADatabaseThatIsNamedAsTheLog_data();
    void upgradesADatabaseThatIsNamedAsTheLog();
    void upgradesEachDatabaseFromItsOwnVersion_data();
    void upgradesEachDatabaseFromItsOwnVersion();
    void upgradesTheFileBehindALink();
    void keepsTheRightsOfTheFile();
    void upgradesAlikeInEveryEnvironment_data();
    void upgradesAlikeInEveryEnvironment();

private:
    QString path(const QString &fileName) const { return folder->filePath(fileName); }
    void makeDatabase(const QString &name, int version) const;
    ToolRun run(const QStringList &arguments = {},
                const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

    std::unique_ptr<QTemporaryDir> folder;
};

void TestMisuse::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void TestMisuse::makeDatabase(const QString &name, int version) const
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, version);
    QVERIFY(QFile::copy(database.path(), path(name + ".db")));
}

ToolRun TestMisuse::run(const QStringList &arguments, const QProcessEnvironment &environment)
{
    return runTool({.program = VARDO,
                    .arguments = arguments,
                    .folder = folder->path(),
                    .environment = environment});
}

void TestMisuse::upgradesADatabaseThatIsNamedAsTheLog_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("setting");

    for (const QString &name : names) {
        for (const char *setting :
             {"journal_mode=delete", "journal_mode=wal", "default_cache_size=10"})
            QTest::addRow("%s, %s", qUtf8Printable(name), setting) << name << setting;
    }
}

void TestMisuse::upgradesADatabaseThatIsNamedAsTheLog()
{
#ifdef Q_OS_WIN
    QSKIP("the log is opened in another way there: this is NOT tested");
#endif
    QFETCH(QString, name);
    QFETCH(QString, setting);
    const QString file = path(name + ".db");
    makeDatabase(name, 0);
    executeOn(file, {"pragma " + setting});

    const ToolRun result = run({name + ".db"});

    QCOMPARE(result.exitCode, 0);
    QCOMPARE(databaseRows(file, "select * from pragma_integrity_check"), QStringList{"'ok'"});
    QCOMPARE(databaseContent(file), upgradedContent(name, 0));
}

void TestMisuse::upgradesEachDatabaseFromItsOwnVersion_data()
{
    QTest::addColumn<QList<int>>("versions");

    const QList<int> newest{newestVersionOf("profile"), newestVersionOf("data"),
                            newestVersionOf("qc"), newestVersionOf("syslog")};
    for (qsizetype i = 0; i < names.size(); ++i) {
        QList<int> versions = newest;
        versions[i] = 0;
        QTest::addRow("an old backup of %s", qUtf8Printable(names.at(i))) << versions;
    }
    QTest::newRow("all different") << QList<int>{15, 2, 3, 1};
}

/// Shows: CLI-7
void TestMisuse::upgradesEachDatabaseFromItsOwnVersion()
{
    QFETCH(QList<int>, versions);
    for (qsizetype i = 0; i < names.size(); ++i)
        makeDatabase(names.at(i), versions.at(i));

    const ToolRun result = run();

    QCOMPARE(result.exitCode, 0);
    for (qsizetype i = 0; i < names.size(); ++i)
        QCOMPARE(databaseContent(path(names.at(i) + ".db")),
                 upgradedContent(names.at(i), versions.at(i)));
}

/// Shows: PLT-11
void TestMisuse::upgradesTheFileBehindALink()
{
#ifdef Q_OS_WIN
    QSKIP("links need a right there that few users have: this is NOT tested");
#endif
    makeDatabase("qc", 0);
    const QString link = path("qc.db");
    QVERIFY(QFile::rename(link, path("elsewhere.db")));
    QVERIFY(QFile::link("elsewhere.db", link));

    const ToolRun result = run();

    QCOMPARE(result.exitCode, 0);
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(databaseContent(path("elsewhere.db")), upgradedContent("qc", 0));
}

/// Shows: PLT-11
void TestMisuse::keepsTheRightsOfTheFile()
{
    makeDatabase("qc", 0);
    const QString file = path("qc.db");
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    const QFile::Permissions before = QFile::permissions(file);

    const ToolRun result = run();

    QCOMPARE(result.exitCode, 0);
    QCOMPARE(QFile::permissions(file), before);
}

void TestMisuse::upgradesAlikeInEveryEnvironment_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");

    const QString missing = "/no/such/folder";
    for (const char *variable :
         {"SQLITE_TMPDIR", "TMPDIR", "HOME", "QT_PLUGIN_PATH", "QT_QPA_PLATFORM"})
        QTest::newRow(variable) << variable << missing;
    for (const char *zone :
         {"Asia/Shanghai", "America/Los_Angeles", "Pacific/Kiritimati", "no zone"})
        QTest::addRow("time zone %s", zone) << "TZ" << zone;
    QTest::newRow("numbers") << "LC_NUMERIC"
                             << "de_DE.UTF-8";
    QTest::newRow("letters") << "LC_CTYPE"
                             << "C";
}

/// Shows: CLI-6
void TestMisuse::upgradesAlikeInEveryEnvironment()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    // The date of a fit is the local one.
    const QStringList withoutDates{"update curve set date = null, expirationDate = null"};
    const TestDatabase usual("profile.db");
    makeDatabaseAt(usual, "profile", 0);
    QCOMPARE(runToolOn(VARDO, usual.folderPath()).exitCode, 0);
    usual.execute(withoutDates);
    makeDatabase("profile", 0);
    makeDatabase("data", 0);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(variable, value);

    const ToolRun result = run({}, environment);

    QCOMPARE(result.exitCode, 0);
    executeOn(path("profile.db"), withoutDates);
    QCOMPARE(databaseContent(path("profile.db")), usual.content());
    QCOMPARE(databaseContent(path("data.db")), upgradedContent("data", 0));
}

QTEST_GUILESS_MAIN(TestMisuse)
#include "tst_misuse.moc"
