// SPDX-License-Identifier: MIT
/// What cmake --install leaves: the tool alone with its documents, and that tool at work.

#include "testdatabase.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/// \return what the program printed, when it succeeded
QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("LANGUAGE");
    environment.insert("LC_ALL", "en_US.UTF-8");
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool finished = process.waitForFinished();
    QByteArray output = process.readAllStandardOutput();
    if (!finished || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("%s: %s", qUtf8Printable(program), output.constData());
    return output;
}

} // namespace

class TestInstallation : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void holdsTheToolAndItsDocuments();
    void hasAToolThatUpgrades();

private:
    QTemporaryDir root;
};

void TestInstallation::initTestCase()
{
    outputOf(CMAKE, {"--install", BUILD, "--config", CONFIGURATION, "--prefix", root.path()});
}

void TestInstallation::holdsTheToolAndItsDocuments()
{
    QStringList expected{
        "bin/" TOOL,
        "share/doc/vardo/README.md",
        "share/doc/vardo/copyright",
        "share/doc/vardo/operating.md",
        "share/man/man1/vardo.1",
    };
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

void TestInstallation::hasAToolThatUpgrades()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");

    const QByteArray log =
        outputOf(root.filePath("bin/" TOOL), {"-p", database.folderPath() + '/'});

    QVERIFY2(log.contains("\nUpdated version to 30\n"), log.constData());
    QCOMPARE(database.rows("select version from version"), QStringList{"30"});
    QCOMPARE(database.rows("select value from profile where name = 'patient/instrId'"),
             QStringList{TRANSLATED ? "'Instrument'" : "'测量仪器'"});
}

QTEST_GUILESS_MAIN(TestInstallation)
#include "tst_installation.moc"
