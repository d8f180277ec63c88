// SPDX-License-Identifier: MIT
/// What cmake --install leaves: the two programs alone with their documents, and these programs at work; and
/// what the Debian package says of itself.

#include "debianpackage.h"
#include "expectedsteps.h"
#include "testdatabase.h"
#include "toolrun.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// The package's name says who fits standard curves, and the folder of its documents has that name.
const QString package = MAKER_LIBRARIES ? "vardo" : "vardo-standin";
const QString documents = "share/doc/" + package + '/';

} // namespace

class TestInstallation : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void holdsTheProgramsAndTheirDocuments();
    void hasAManualOfTheNewestVersions();
    void hasAToolThatUpgrades();
    void hasAReportThatRehearsesWithThatTool();
    void isAPackageThatSaysWhoFitsTheCurves();

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

/// Shows: PLT-1
void TestInstallation::holdsTheProgramsAndTheirDocuments()
{
    const QString compressed = COMPRESSED ? ".gz" : "";
    QStringList expected{
        "bin/" TOOL,
        "bin/" REPORT,
        documents + "CHANGELOG.md",
        documents + "SECURITY.md",
        documents + "changed-values.md",
        documents + "copyright",
        documents + "limits.md",
        documents + "operating.md",
        "share/man/man1/vardo-report.1" + compressed,
        "share/man/man1/vardo.1" + compressed,
    };
    if (COMPRESSED)
        expected << documents + "changelog.gz";
    if (TRANSLATED)
        expected << "share/vardo/translations/vardo_en.qm";

    QStringList files;
    for (QDirIterator file(root.path(), QDir::Files, QDirIterator::Subdirectories);
         file.hasNext();) {
        const QString path = file.next();
        files << QDir(root.path()).relativeFilePath(path);
    }
    files.sort();
    expected.sort();

    QCOMPARE(files, expected);
    QVERIFY(QFileInfo(root.filePath("bin/" TOOL)).isExecutable());
    QVERIFY(QFileInfo(root.filePath("bin/" REPORT)).isExecutable());
}

/// Shows: PLT-2
void TestInstallation::hasAManualOfTheNewestVersions()
{
    QFile manual(root.filePath(documents + "operating.md"));
    QVERIFY(manual.open(QIODevice::ReadOnly));

    const QString text = QString::fromUtf8(manual.readAll()).simplified();

    const QString expected = QString("knows profile %1, data %2, qc %3 and syslog %4.")
                                 .arg(newestVersionOf("profile"))
                                 .arg(newestVersionOf("data"))
                                 .arg(newestVersionOf("qc"))
                                 .arg(newestVersionOf("syslog"));
    QVERIFY2(text.contains(expected), qUtf8Printable(expected));
}

/// Shows: PLT-1
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

/// Shows: PLT-1
void TestInstallation::hasAReportThatRehearsesWithThatTool()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const QString page = QDir(database.folderPath()).filePath("report.html");

    const ToolRun run =
        runTool({.program = root.filePath("bin/" REPORT),
                 .arguments = {"rehearse", "-p", database.folderPath() + '/', "-o", page}});

    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QVERIFY(QFileInfo::exists(page));
}

/// Shows: PLT-2
void TestInstallation::isAPackageThatSaysWhoFitsTheCurves()
{
    if (QStandardPaths::findExecutable("dpkg-deb").isEmpty())
        QSKIP("dpkg-deb is not installed: the Debian package is NOT tested");

    const QMap<QString, QString> fields = debianPackageOf(BUILD, CONFIGURATION);

    QCOMPARE(fields.value("Package"), package);
    QCOMPARE(fields.value("Conflicts"), QString(MAKER_LIBRARIES ? "vardo-standin" : "vardo"));
    const QString description = fields.value("Description");
    QVERIFY2(description.contains("stand-in") != bool(MAKER_LIBRARIES),
             qUtf8Printable(description));
}

QTEST_GUILESS_MAIN(TestInstallation)
#include "tst_installation.moc"
