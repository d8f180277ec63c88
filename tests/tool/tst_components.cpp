// SPDX-License-Identifier: MIT
/// The package's list of the libraries that its programs use, for scanners, and the document for people, which
/// names the code that contains the libraries' anomalies and its tests.

#include "debianpackage.h"
#include "testfiles.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QMultiHash>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

QString outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(-1);
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// \return the names of the libraries that are loaded with a program or plugin
QStringList librariesOf(const QString &file)
{
    static const QRegularExpression library(R"(^\s*(\S+) => /)",
                                            QRegularExpression::MultilineOption);

    QStringList names;
    for (const QRegularExpressionMatch &match : library.globalMatch(outputOf("ldd", {file})))
        names << match.captured(1);
    return names;
}

/// \return the Debian packages that have a library of a name, by these names
QMultiHash<QString, QString> packagesOf(const QStringList &libraries)
{
    static const QRegularExpression owner(R"(^([^:\s]+):.*/(\S+)$)",
                                          QRegularExpression::MultilineOption);

    const QStringList patterns =
        QStringList(libraries).replaceInStrings(QRegularExpression("^"), "*/");
    QMultiHash<QString, QString> packages;
    for (const QRegularExpressionMatch &match :
         owner.globalMatch(outputOf("dpkg-query", QStringList("--search") + patterns)))
        packages.insert(match.captured(2), match.captured(1));
    return packages;
}

/// \return a version of a Debian package without what Debian adds to that of the library
QString libraryVersion(const QString &version)
{
    static const QRegularExpression additions(R"(^\d+:|[.+]dfsg\d*|-[^-]*$)");
    return QString(version).remove(additions);
}

QString documentText()
{
    return QString::fromUtf8(fileBytes(PROJECT "/docs/components.md"));
}

/// \return the cells of each row of a text's tables
QList<QStringList> rowsIn(const QString &text)
{
    QList<QStringList> rows;
    for (const QString &line : text.split('\n')) {
        if (line.startsWith("| "))
            rows << line.split(" | ");
    }
    return rows;
}

/// \return the programs' sources without comments, by their file names
QMap<QString, QString> programSources()
{
    static const QRegularExpression comment("//[^\\n]*");
    QMap<QString, QString> sources;
    for (const char *folder : {PROJECT "/coagulation", PROJECT "/standins"}) {
        for (QDirIterator file(folder, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
             file.hasNext();) {
            const QString path = file.next();
            sources[QFileInfo(path).fileName()] +=
                QString::fromUtf8(fileBytes(path)).remove(comment);
        }
    }
    return sources;
}

} // namespace

class TestComponents : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void areAListInTheFormatCycloneDx();
    void dependOnEachOther();
    void areWhatIsLoaded_data();
    void areWhatIsLoaded();
    void holdWhatFitsTheCurves();
    void haveTheVersionsOfTheDocument();
    void areContainedByWhatExists_data();
    void areContainedByWhatExists();
    void haveTestsOfTheirAnomalies_data();
    void haveTestsOfTheirAnomalies();

private:
    QList<QJsonObject> objectsOf(const QString &key) const;
    QSet<QString> namesOf(const QString &key, const QString &name) const;

    QTemporaryDir root;
    QJsonObject list;
};

void TestComponents::initTestCase()
{
    if (QStandardPaths::findExecutable("dpkg-deb").isEmpty())
        QSKIP("dpkg-deb is not installed: the Debian package is NOT tested");

    unpackDebianPackageOf(BUILD, CONFIGURATION, root.path());
    list = QJsonDocument::fromJson(
               fileBytes(root.filePath("usr/share/doc/" PACKAGE "/components.cdx.json")))
               .object();
}

/// \return the objects of a part of the list
QList<QJsonObject> TestComponents::objectsOf(const QString &key) const
{
    QList<QJsonObject> objects;
    const QJsonArray values = list[key].toArray();
    for (const auto &value : values)
        objects << value.toObject();
    return objects;
}

/// \return the values with a name in each object of a part of the list
QSet<QString> TestComponents::namesOf(const QString &key, const QString &name) const
{
    QSet<QString> names;
    for (const QJsonObject &object : objectsOf(key))
        names << object[name].toString();
    return names;
}

/// Shows: PLT-9
void TestComponents::areAListInTheFormatCycloneDx()
{
    const QSet<QString> types = namesOf("components", "type");
    const QSet<QString> names = namesOf("components", "name");
    const QJsonObject programs = list["metadata"].toObject()["component"].toObject();

    QCOMPARE(list["bomFormat"], "CycloneDX");
    QCOMPARE(list["specVersion"], "1.5");
    QCOMPARE(list["version"], 1);
    QCOMPARE(programs["name"], PACKAGE);
    QCOMPARE(programs["version"], VERSION);
    QCOMPARE(types, QSet<QString>{"library"});
    QVERIFY(!names.contains(""));
    QCOMPARE(namesOf("components", "bom-ref").size(), objectsOf("components").size());
}

void TestComponents::dependOnEachOther()
{
    const QSet<QString> all = namesOf("components", "bom-ref") + QSet<QString>{PACKAGE};

    QSet<QString> needed{PACKAGE};
    for (const QJsonObject &dependency : objectsOf("dependencies")) {
        const QVariantList names = dependency["dependsOn"].toArray().toVariantList();
        for (const QVariant &name : names)
            needed << name.toString();
    }

    QCOMPARE(namesOf("dependencies", "ref"), all);
    QCOMPARE(needed, all);
}

void TestComponents::areWhatIsLoaded_data()
{
    QTest::addColumn<QStringList>("packages");

    const QString driver = outputOf("dpkg-query", {"--search", "*/sqldrivers/libqsqlite.so"})
                               .section(": ", 1)
                               .trimmed();
    QStringList libraries;
    for (const QString &file :
         {root.filePath("usr/bin/vardo"), root.filePath("usr/bin/vardo-report"), driver})
        libraries << librariesOf(file);
    libraries.removeDuplicates();
    const QMultiHash<QString, QString> packages = packagesOf(libraries);
    for (const QString &library : libraries)
        QTest::newRow(qUtf8Printable(library)) << packages.values(library);
}

/// Shows: PLT-9
void TestComponents::areWhatIsLoaded()
{
    QFETCH(QStringList, packages);
    const QSet<QString> names = namesOf("components", "name");

    QVERIFY2(std::any_of(packages.begin(), packages.end(),
                         [&](const QString &package) { return names.contains(package); }),
             qUtf8Printable(packages.join(' ')));
}

void TestComponents::holdWhatFitsTheCurves()
{
    const QSet<QString> names = namesOf("components", "name");

    QCOMPARE(names.contains("libeigen3-dev"), !MAKER_LIBRARIES);
    QCOMPARE(names.contains("zucore"), bool(MAKER_LIBRARIES));
}

/// Shows: PLT-9
void TestComponents::haveTheVersionsOfTheDocument()
{
    if (QSysInfo::prettyProductName().section(' ', 0, 2) != "Debian GNU/Linux 12")
        QSKIP("the document has the versions of Debian 12: they are NOT compared");
    const QList<QStringList> rows = rowsIn(documentText());

    QStringList undocumented;
    for (const QJsonObject &component : objectsOf("components")) {
        const QString name = component["name"].toString();
        const QString version = libraryVersion(component["version"].toString());
        if (std::none_of(rows.begin(), rows.end(), [&](const QStringList &cells) {
                return cells.join('|').contains('`' + name + '`') && cells.contains(version);
            }))
            undocumented << name + ' ' + version;
    }

    QCOMPARE(undocumented, QStringList());
}

void TestComponents::areContainedByWhatExists_data()
{
    static const QRegularExpression code(R"(`([^`]+)`(?: in `([^`]+)`)?)");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("place");

    const QString anomalies = documentText().section("\n## ", 2, 2);
    QVERIFY(anomalies.startsWith("Known anomalies\n"));
    for (const QStringList &cells : rowsIn(anomalies)) {
        for (const QRegularExpressionMatch &match : code.globalMatch(cells.at(1)))
            QTest::newRow(qUtf8Printable(cells.constFirst().mid(2, 30) + ": " + match.captured()))
                << match.captured(1) << match.captured(2);
    }
}

void TestComponents::areContainedByWhatExists()
{
    QFETCH(QString, name);
    QFETCH(QString, place);
    const QMap<QString, QString> sources = programSources();
    const QString text = place.isEmpty() ? QStringList(sources.begin(), sources.end()).join('\n')
                                         : sources.value(place);
    const QRegularExpression word(R"((?<!\w))" + QRegularExpression::escape(name) + R"((?!\w))");

    QVERIFY2(sources.contains(name) || QFileInfo(PROJECT "/" + name).isFile()
                 || text.contains(word),
             qUtf8Printable(place));
}

void TestComponents::haveTestsOfTheirAnomalies_data()
{
    static const QRegularExpression shown(R"(`(tst_\w+)`(?:: ((?:`\w+`(?:, )?)+))?)");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("functions");

    for (const QRegularExpressionMatch &match : shown.globalMatch(documentText())) {
        const QStringList functions = match.captured(2).remove('`').split(", ", Qt::SkipEmptyParts);
        QTest::newRow(qUtf8Printable(match.captured())) << match.captured(1) << functions;
    }
}

void TestComponents::haveTestsOfTheirAnomalies()
{
    QFETCH(QString, program);
    QFETCH(QStringList, functions);

    QStringList sources;
    for (QDirIterator file(PROJECT "/tests", {program + ".cpp"}, QDir::Files,
                           QDirIterator::Subdirectories);
         file.hasNext();)
        sources << file.next();

    QCOMPARE(sources.size(), 1);
    const QString source = QString::fromUtf8(fileBytes(sources.constFirst()));
    for (const QString &function : functions)
        QVERIFY2(source.contains("::" + function + "()\n"), qUtf8Printable(function));
}

QTEST_GUILESS_MAIN(TestComponents)
#include "tst_components.moc"
