// SPDX-License-Identifier: MIT
/// A comparison of two folders as its user sees it: the real program with its streams, exit codes and files.

#include "laboratory.h"
#include "otherprogram.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTest>

#include <filesystem>
#include <memory>

class TestCompareFolders : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void comparesTwoFolders();
    void readsTheLog();
    void takesPrefixAndSuffix();
    void leavesOutWhatIsInNeitherFolder();
    void reportsADatabaseOfOneFolder_data();
    void reportsADatabaseOfOneFolder();
    void reportsADamagedDatabase();
    void reportsALockedDatabase_data();
    void reportsALockedDatabase();
    void refusesWhatItCannotRead_data();
    void refusesWhatItCannotRead();
    void refusesToCompareAFolderWithItself();
    void refusesToCompareADatabaseWithItself_data();
    void refusesToCompareADatabaseWithItself();
    void reportsSwappedFolders();
    void leavesTheFoldersAsTheyWere_data();
    void leavesTheFoldersAsTheyWere();
    void recordsTheFilesOfBothFolders();

private:
    /// Compares the laboratory's folder with another one.
    ToolRun compare(const QStringList &more = {}) const
    {
        return laboratory->run(
            QStringList{"compare", laboratory->path("before"), laboratory->path("after")} + more);
    }
    QString path(const QString &name) const { return laboratory->path(name); }

    Laboratory upgraded; ///< with the copies of a rehearsal, before and after
    std::unique_ptr<Laboratory> laboratory;
};

void TestCompareFolders::initTestCase()
{
    const ToolRun run = upgraded.run(upgraded.rehearsal({"--keep", upgraded.path("copies")}));
    QCOMPARE(run.exitCode, 0);
}

void TestCompareFolders::init()
{
    laboratory = std::make_unique<Laboratory>();
    for (const QString &side : QStringList{"before", "after"}) {
        QVERIFY(QDir().mkpath(path(side)));
        const QDir copies(upgraded.path("copies/" + side));
        for (const QString &name : copies.entryList(QDir::Files))
            QVERIFY(QFile::copy(copies.filePath(name), path(side + '/' + name)));
    }
}

/// Shows: REP-7
void TestCompareFolders::comparesTwoFolders()
{
    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors, QByteArray("Comparing …\n"));
    QCOMPARE(laboratory->facts()["use"], "comparison");
    QCOMPARE(laboratory->facts()["databases"].toArray().size(), 4);
    QCOMPARE(databaseIn(laboratory->facts(), "data")["versionAfter"], 12);
    QVERIFY(laboratory->pageText().contains("</html>"));
    QCOMPARE(laboratory->temporaryFiles(), QStringList());
}

/// Shows: REP-7
void TestCompareFolders::readsTheLog()
{
    compare({"--log", path("after/upgrade.log")});

    const QJsonObject qc = databaseIn(laboratory->facts(), "qc");
    QCOMPARE(qc["steps"].toArray().size(), 3);
    QCOMPARE(qc["steps"][0]["result"], "pass");
    QCOMPARE(qc["milliseconds"], QJsonValue());
}

void TestCompareFolders::takesPrefixAndSuffix()
{
    for (const char *side : {"before/", "after/"})
        QVERIFY(QFile::rename(path(side) + QString("qc.db"), path(side) + QString("a_qc_b.db")));

    const ToolRun run = compare({"-p", "a_", "-s", "_b"});

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(laboratory->facts()["databases"].toArray().size(), 1);
    QCOMPARE(databaseIn(laboratory->facts(), "qc")["versionAfter"], 3);
}

void TestCompareFolders::leavesOutWhatIsInNeitherFolder()
{
    for (const char *side : {"before/", "after/"})
        QVERIFY(QFile::remove(path(side) + QString("qc.db")));

    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(laboratory->facts()["databases"].toArray().size(), 3);
}

void TestCompareFolders::reportsADatabaseOfOneFolder_data()
{
    QTest::addColumn<QString>("side");

    QTest::newRow("gone") << "after";
    QTest::newRow("new") << "before";
}

void TestCompareFolders::reportsADatabaseOfOneFolder()
{
    QFETCH(QString, side);
    QVERIFY(QFile::remove(path(side + "/qc.db")));

    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 1);
    QCOMPARE(databaseIn(laboratory->facts(), "qc")["problem"],
             QString("There is no qc.db in %1.").arg(path(side)));
    QCOMPARE(databaseIn(laboratory->facts(), "data")["problem"], QJsonValue());
}

/// Shows: REP-4
void TestCompareFolders::reportsADamagedDatabase()
{
    QFile file(path("after/qc.db"));
    QVERIFY(file.resize(file.size() / 2));

    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 1);
    QCOMPARE(laboratory->facts()["succeeded"], false);
    QVERIFY(laboratory->pageText().contains("</html>"));
}

void TestCompareFolders::reportsALockedDatabase_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("problem");

    QTest::newRow("wal") << "wal"
                         << "/after/qc.db is locked by another program.";
    QTest::newRow("delete") << "delete"
                            << "The database after the upgrade is locked by another program.";
}

/// Shows: REP-4
void TestCompareFolders::reportsALockedDatabase()
{
    QFETCH(QString, mode);
    QFETCH(QString, problem);
    executeOn(path("after/qc.db"), {"pragma journal_mode=" + mode});
    OtherProgram other(path("after/qc.db"));
    other.run("pragma locking_mode=exclusive; begin exclusive;");

    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 2);
    QString told = databaseIn(laboratory->facts(), "qc")["problem"].toString();
    QCOMPARE(told.remove(path("")), problem);
    QCOMPARE(databaseIn(laboratory->facts(), "data")["problem"], QJsonValue());
}

void TestCompareFolders::refusesWhatItCannotRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("no such folder")
        << QStringList{"compare", "missing", "."} << QByteArray("missing is no folder.");
    QTest::newRow("no folder") << QStringList{"compare", ".", VARDO_REPORT}
                               << QByteArray(VARDO_REPORT " is no folder.");
    QTest::newRow("no database")
        << QStringList{"compare", ".", ".", "-p", "a_"}
        << QByteArray("There is no database: neither a_profile.db nor another one is in . or ..");
    QTest::newRow("no log") << QStringList{"compare", ".", ".", "--log", "missing"}
                            << QByteArray("missing cannot be read.");
    QTest::newRow("another log") << QStringList{"compare", ".", ".", "--log", "other.txt"}
                                 << QByteArray(
                                        "other.txt holds no run of vardo on these databases.");
}

void TestCompareFolders::refusesWhatItCannotRead()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    QFile other(laboratory->result("other.txt"));
    QVERIFY(other.open(QIODevice::WriteOnly) && other.write("Another program's log.\n") > 0);
    other.close();

    const ToolRun run = laboratory->run(arguments);

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors, "vardo-report: " + error + '\n');
    QVERIFY(!QFile::exists(laboratory->page()));
}

/// Shows: REP-23
void TestCompareFolders::refusesToCompareAFolderWithItself()
{
    const ToolRun run = laboratory->run({"compare", path("after"), path("after")});

    const QByteArray file = path("after/profile.db").toUtf8();
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors, "vardo-report: " + file + " and " + file + " are the same file.\n");
    QVERIFY(!QFile::exists(laboratory->page()));
}

void TestCompareFolders::refusesToCompareADatabaseWithItself_data()
{
    QTest::addColumn<bool>("symbolic");

    QTest::newRow("a second name") << false;
#ifdef Q_OS_UNIX
    QTest::newRow("a link") << true;
#endif
}

/// Shows: REP-23
void TestCompareFolders::refusesToCompareADatabaseWithItself()
{
    QFETCH(bool, symbolic);
    const QString file = path("after/data.db");
    const QString copy = path("before/data.db");
    QVERIFY(QFile::remove(copy));
    const std::filesystem::path target(file.toStdU16String());
    const std::filesystem::path name(copy.toStdU16String());
    if (symbolic)
        std::filesystem::create_symlink(target, name);
    else
        std::filesystem::create_hard_link(target, name);

    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors,
             QString("vardo-report: %1 and %2 are the same file.\n").arg(copy, file).toUtf8());
    QVERIFY(!QFile::exists(laboratory->page()));
}

/// Shows: REP-23
void TestCompareFolders::reportsSwappedFolders()
{
    const ToolRun run = laboratory->run({"compare", path("after"), path("before")});

    QCOMPARE(run.exitCode, 1);
    QVERIFY2(laboratory->facts()["verdict"].toString().startsWith("Something is wrong"),
             qUtf8Printable(laboratory->facts()["verdict"].toString()));
}

void TestCompareFolders::leavesTheFoldersAsTheyWere_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("statements"); // of a program that keeps the database open
    QTest::addColumn<bool>("crashes");

    const QByteArray create = "create table other(value);";
    QTest::newRow("delete") << QByteArray("delete") << QByteArray("select 1;") << true;
    QTest::newRow("wal") << QByteArray("wal") << QByteArray("select 1;") << true;
    QTest::newRow("wal, in use") << QByteArray("wal") << create << false;
    QTest::newRow("wal, left by a crash") << QByteArray("wal") << create << true;
    QTest::newRow("in use") << QByteArray("delete") << "begin immediate;" + create << false;
}

/// Shows: REP-7
void TestCompareFolders::leavesTheFoldersAsTheyWere()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, statements);
    QFETCH(bool, crashes);
    executeOn(path("after/qc.db"), {"pragma journal_mode=" + mode});
    OtherProgram other(path("after/qc.db"));
    other.run(statements);
    if (crashes)
        other.kill();
    const QStringList before = Laboratory::filesIn(path("before"));
    const QStringList after = Laboratory::filesIn(path("after"));

    const ToolRun run = compare();

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(Laboratory::filesIn(path("before")), before);
    QCOMPARE(Laboratory::filesIn(path("after")), after);
}

/// Shows: REP-19
void TestCompareFolders::recordsTheFilesOfBothFolders()
{
    compare();

    const QJsonObject before = databaseIn(laboratory->facts(), "qc")["filesBefore"][0].toObject();
    const QJsonObject after = databaseIn(laboratory->facts(), "qc")["filesAfter"][0].toObject();
    QCOMPARE(before["path"], path("before/qc.db"));
    QCOMPARE(before["bytes"], QFileInfo(path("before/qc.db")).size());
    QCOMPARE(after["path"], path("after/qc.db"));
    QVERIFY(before["sha256"] != after["sha256"]);
    QCOMPARE(after["sha256"].toString().size(), 64);
}

QTEST_GUILESS_MAIN(TestCompareFolders)

#include "tst_compare_folders.moc"
