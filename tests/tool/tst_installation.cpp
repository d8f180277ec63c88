// SPDX-License-Identifier: MIT
/// What cmake --install leaves: the tool alone with its documents, and that tool at work.

#include "expectedsteps.h"
#include "testdatabase.h"
#include "toolrun.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestInstallation : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void holdsTheToolAndItsDocuments();
    void hasAManualOfTheNewestVersions();
    void hasAToolThatUpgrades();

private:
    QTemporaryDir root;
};

void TestInstallation::initTestCase()
{
    QProcess cmake;
    cmake.setProcessChannelMode(QProcess::MergedChannels);
    cmake.start(CMAKE, {"--install", BUILD, "--config", CONFIGURATION, "--prefix", root.path()});
    QVERIFY2(cmake.waitForFinished() && cmake.exitStatus() == QProcess::NormalExit
                 && cmake.exitCode() == 0,
             cmake.readAll().constData());
}

void TestInstallation::holdsTheToolAndItsDocuments()
{
    QStringList expected{
        "bin/" TOOL,
        "share/doc/vardo/CHANGELOG.md",
        "share/doc/vardo/copyright",
        "share/doc/vardo/limits.md",
        "share/doc/vardo/operating.md",
        COMPRESSED ? "share/man/man1/vardo.1.gz" : "share/man/man1/vardo.1",
    };
    if (COMPRESSED)
        expected.insert(2, "share/doc/vardo/changelog.gz");
    if (TRANSLATED)
        expected << "share/vardo/translations/vardo_en.qm";

    QStringList files;
    for (QDirIterator file(root.path(), QDir::Files, QDirIterator::Subdirectories);
         file.hasNext();) {
        const QString path = file.next();
        files << QDir(root.path()).relativeFilePath(path);
    }
    files.sort();

    QCOMPARE(files, expected);
    QVERIFY(QFileInfo(root.filePath("bin/" TOOL)).isExecutable());
}

void TestInstallation::hasAManualOfTheNewestVersions()
{
    QFile manual(root.filePath("share/doc/vardo/operating.md"));
    QVERIFY(manual.open(QIODevice::ReadOnly));

    const QString text = QString::fromUtf8(manual.readAll()).simplified();

    const QString expected = QString("knows profile %1, data %2, qc %3 and syslog %4.")
                                 .arg(newestVersionOf("profile"))
                                 .arg(newestVersionOf("data"))
                                 .arg(newestVersionOf("qc"))
                                 .arg(newestVersionOf("syslog"));
    QVERIFY2(text.contains(expected), qUtf8Printable(expected));
}

void TestInstallation::hasAToolThatUpgrades()
{
    const QByteArray newestVersion = QByteArray::number(newestVersionOf("profile"));
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");

    const ToolRun run = runTool({.program = root.filePath("bin/" TOOL),
                                 .arguments = {"-p", database.folderPath() + '/'},
                                 .environment = environmentWithLocale("en_US.UTF-8")});

    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.errors.contains("\nUpdated version to " + newestVersion + '\n'),
             run.errors.constData());
    QCOMPARE(database.rows("select version from version"), QStringList{newestVersion});
    QCOMPARE(database.rows("select value from profile where name = 'patient/instrId'"),
             QStringList{TRANSLATED ? "'Instrument'" : "'测量仪器'"});
}

QTEST_GUILESS_MAIN(TestInstallation)
#include "tst_installation.moc"
