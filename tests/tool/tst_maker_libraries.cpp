// SPDX-License-Identifier: MIT
/// The tool built against the maker's libraries, here those of makerlibraries/: it must compile against
/// their headers, and none of ours, do what they do, and be a package of its own.

#include "debianpackage.h"
#include "testdatabase.h"
#include "testfiles.h"
#include "toolrun.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString root = BINARY_FOLDER;
const QString maker = root + "/maker";         // where the maker's packages are installed
const QString toolBuild = root + "/toolbuild"; // where the tool is built
const QString tool = root + "/tool";           // where the tool is installed

constexpr int timeout = 600'000; // ms, for CMake on a machine that does other things as well

/// \return whether CMake succeeded; what it says is in the test's output
bool cmake(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(CMAKE, arguments);
    return process.waitForFinished(timeout) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

/// Configures, builds and installs a project, with the compiler and the generator of this one.
/// \return whether all of that succeeded
bool install(const QString &source, const QString &build, const QString &folder,
             const QStringList &options)
{
    const QStringList configure{"--fresh", "-S", source, "-B", build, "-G", GENERATOR};
    const QStringList compiler{"-DCMAKE_CXX_COMPILER=" COMPILER, "-DCMAKE_BUILD_TYPE=Debug"};
    QStringList compile{"--build", build, "--config", "Debug"};
    if (QString(GENERATOR).startsWith("Ninja")) // which else takes the dependency files away
        compile += {"--", "-d", "keepdepfile"};
    return cmake(configure + compiler + options) && cmake(compile)
        && cmake({"--install", build, "--config", "Debug", "--prefix", folder});
}

/// \return the headers of `core` and `zucore` that the tool's units were compiled with, without
///         repetition, ordered
QStringList headersOfTheLibraries()
{
    // with a backslash before a blank of the path
    static const QRegularExpression header(R"((\\ |\S)*/coagulation/(core|zucore)/\w+\.h)");
    QStringList headers;
    for (QDirIterator file(toolBuild + "/coagulation/vardo", {"*.d"}, QDir::Files,
                           QDirIterator::Subdirectories);
         file.hasNext();) {
        QFile dependencies(file.next());
        if (!dependencies.open(QIODevice::ReadOnly))
            qFatal("%s", qUtf8Printable(dependencies.errorString()));
        const QString text = QString::fromUtf8(dependencies.readAll());
        for (const QRegularExpressionMatch &match : header.globalMatch(text))
            headers << match.captured().replace("\\ ", " ");
    }
    headers.removeDuplicates();
    headers.sort();
    return headers;
}

/// Upgrades the sample, to which it adds a calibration of the laboratory's own, with no value twice.
/// \param database named "profile.db", empty
/// \return the log; an upgrade that fails ends the program
QStringList upgradeSample(const TestDatabase &database)
{
    database.load("profile_v0.sql");
    database.execute({
        "insert into assayCalibration values(99, 1, 'site''s', 2, 'T>0', 'OD', 'P', 'X', 'Y',"
        " 'Log', 'Linear')",
        "update curve set xFun = 5, yFun = 6 where name = 'site''s'",
        "update curvePoint set y = 0.5, z = 8, flags = 16 where id = 31",
        "update curve set valid = 1 where name = 'II'",
    });
    const ToolRun run = runToolOn(tool + "/bin/" TOOL, database.folderPath());
    if (run.exitCode != 0)
        qFatal("%s", qUtf8Printable(run.log.join('\n')));
    return run.log;
}

} // namespace

class TestMakerLibraries : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void areWhatTheToolIsCompiledWith();
    void areToldToTranslate();
    void areGivenTheCalibration();
    void areGivenTheCurve();
    void fitTheCurves();
    void fitThePoints();
    void makeAPackageOfTheirOwn();
    void areListedWithoutALicence();
    void areNamedAtTheEndOfTheConfiguration_data();
    void areNamedAtTheEndOfTheConfiguration();
};

void TestMakerLibraries::initTestCase()
{
    const QString prefixPath = QString(PREFIX_PATH).replace('|', ';');

    QVERIFY(install(SOURCE "/tests/tool/makerlibraries", root + "/makerbuild", maker,
                    {"-DCMAKE_PREFIX_PATH=" + prefixPath}));
    QVERIFY(install(SOURCE, toolBuild, tool,
                    {"-DCMAKE_PREFIX_PATH=" + maker + ';' + prefixPath, "-DBUILD_TESTING=OFF",
                     "-DVARDO_MAKER_LIBRARIES=ON"}));
}

/// Shows: PLT-3
void TestMakerLibraries::areWhatTheToolIsCompiledWith()
{
    const QString headers = maker + "/include/coagulation/";

    QCOMPARE(headersOfTheLibraries(),
             QStringList({headers + "core/translators.h", headers + "zucore/assaytemplate.h",
                          headers + "zucore/standardcurve.h", headers + "zucore/stdpoint.h",
                          headers + "zucore/zu.h"}));
}

/// Shows: PLT-3
void TestMakerLibraries::areToldToTranslate()
{
    const TestDatabase database("profile.db");
    qputenv("MAKER_TELLS", "1");

    const QStringList log = upgradeSample(database);

    qunsetenv("MAKER_TELLS");
    QCOMPARE(log.value(0), "Debug: The maker's translators");
}

void TestMakerLibraries::areGivenTheCalibration()
{
    const TestDatabase database("profile.db");

    const QStringList log = upgradeSample(database);

    QCOMPARE(log.filter("The maker's calibration: 99"),
             QStringList{"Debug: The maker's calibration: 99 site's 2 T>0 OD P X Y Log Linear"});
}

void TestMakerLibraries::areGivenTheCurve()
{
    const TestDatabase database("profile.db");

    const QStringList log = upgradeSample(database);

    QCOMPARE(log.filter("The maker's curve: site's"),
             QStringList{"Debug: The maker's curve: site's s % L-4 2016-04-04 0.25 method 2"
                         " axes 5 6 shown 3 0 coefficients 1 2 3 4 5 point 1 0.5 8 16"
                         " point 2 2 -1 0"});
}

/// Shows: PLT-3
void TestMakerLibraries::fitTheCurves()
{
    const TestDatabase database("profile.db");

    upgradeSample(database);

    QCOMPARE(database.rows("select name, correlation, a, b, c, d, e, valid from curve order by id"),
             QStringList({"'PT', 0.998, 3.1, -1.2, NULL, NULL, NULL, 1", // was valid
                          "'FIB', 0.123, 11.5, 12.5, NULL, NULL, NULL, 1",
                          "'DD', 0.123, 11.5, 12.5, 13.5, 14.5, NULL, 1",
                          "'site''s', 0.123, 11.5, 12.5, 13.5, 14.5, 15.5, 1",
                          "'II', 0.75, 1.0, 2.0, 3.0, 4.0, 5.0, 1",       // was valid
                          "'PT', 0.9, 3.2, -1.3, NULL, NULL, NULL, 1"})); // was valid
}

/// Shows: PLT-3
void TestMakerLibraries::fitThePoints()
{
    const TestDatabase database("profile.db");

    upgradeSample(database);

    QCOMPARE(database.rows("select id, x, y, z, flags from curvePoint where curveId in (2, 4)"
                           " order by id"),
             QStringList({"11, 5.0, 20.0, 35.0, 68", "12, 10.0, 10.0, 70.0, 64",
                          "13, 25.0, 4.0, 175.0, 64", "14, 50.0, 2.0, 350.0, 64",
                          "31, 1.0, 0.5, 7.0, 80", "32, 2.0, 2.0, 14.0, 64"}));
}

/// Shows: PLT-2
void TestMakerLibraries::makeAPackageOfTheirOwn()
{
    if (QStandardPaths::findExecutable("dpkg-deb").isEmpty())
        QSKIP("dpkg-deb is not installed: the Debian package is NOT tested");

    const QMap<QString, QString> fields = debianPackageOf(toolBuild, "Debug");

    QCOMPARE(fields.value("Package"), "vardo");
    QCOMPARE(fields.value("Conflicts"), "vardo-standin");
    const QString description = fields.value("Description");
    QVERIFY2(!description.contains("stand-in"), qUtf8Printable(description));
}

/// Shows: PLT-9
void TestMakerLibraries::areListedWithoutALicence()
{
    if (QStandardPaths::findExecutable("dpkg-deb").isEmpty())
        QSKIP("dpkg-deb is not installed: the Debian package is NOT tested");
    const QTemporaryDir package;
    unpackDebianPackageOf(toolBuild, "Debug", package.path());
    const QByteArray list = fileBytes(package.filePath("usr/share/doc/vardo/components.cdx.json"));

    const QJsonArray components = QJsonDocument::fromJson(list)["components"].toArray();
    QList<QJsonObject> listed;
    for (const auto &component : components) {
        if (!component.toObject().contains("purl")) // no package of Debian's
            listed << component.toObject();
    }

    const auto byMaker = [](const QString &name) {
        return QJsonObject{{"type", "library"},
                           {"bom-ref", name},
                           {"name", name},
                           {"supplier", QJsonObject{{"name", "the analyser's maker"}}}};
    };
    QCOMPARE(listed, QList<QJsonObject>({byMaker("core"), byMaker("zucore")}));
    QVERIFY(!list.contains("eigen"));
}

void TestMakerLibraries::areNamedAtTheEndOfTheConfiguration_data()
{
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("summary");

    QTest::newRow("the maker's") << "ON"
                                 << "the maker's library; the package is vardo";
    QTest::newRow("the stand-in") << "OFF"
                                  << "the bundled stand-in; the package is vardo-standin";
}

/// Shows: PLT-2
void TestMakerLibraries::areNamedAtTheEndOfTheConfiguration()
{
    QFETCH(QString, library);
    QFETCH(QString, summary);
    QProcess process;

    process.start(CMAKE,
                  {"--fresh", "-S", SOURCE, "-B", root + "/summary", "-G", GENERATOR,
                   "-DCMAKE_CXX_COMPILER=" COMPILER, "-DBUILD_TESTING=OFF",
                   "-DCMAKE_PREFIX_PATH=" + maker + ';' + QString(PREFIX_PATH).replace('|', ';'),
                   "-DVARDO_MAKER_LIBRARIES=" + library});

    QVERIFY(process.waitForFinished(timeout));
    QCOMPARE(process.exitCode(), 0);
    const QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split('\n');
    const qsizetype end = lines.indexOf(QRegularExpression("^-- Configuring done.*"));
    QCOMPARE(lines.value(end - 1), "-- vardo " VERSION ": curves fitted by " + summary);
}

QTEST_GUILESS_MAIN(TestMakerLibraries)
#include "tst_maker_libraries.moc"
