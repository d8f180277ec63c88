// SPDX-License-Identifier: MIT
/// docs/risks.md names functions, tests and headings that exist, and says all of each hazard.

#include "testfiles.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

namespace {

const QString documents = PROJECT "/docs/";
const QStringList parts{"Sequence", "Harm", "Severity", "Control", "Evidence", "Remains"};

QString read(const QString &path)
{
    return QString::fromUtf8(fileBytes(path));
}

QString page()
{
    return read(documents + "risks.md");
}

struct Hazard {
    QString title;      ///< with the identifier
    QStringList labels; ///< of its parts, in their order
    QMap<QString, QString> texts;
};

QList<Hazard> hazards()
{
    static const QRegularExpression section(R"(^### (.+)\n((?:(?!#).*\n)*))",
                                            QRegularExpression::MultilineOption);
    static const QRegularExpression item(R"(^- \*\*(\w+):\*\*(.*(?:\n  .*)*))",
                                         QRegularExpression::MultilineOption);
    QList<Hazard> hazards;
    for (const QRegularExpressionMatch &match : section.globalMatch(page())) {
        Hazard hazard{match.captured(1), {}, {}};
        for (const QRegularExpressionMatch &part : item.globalMatch(match.captured(2))) {
            hazard.labels << part.captured(1);
            hazard.texts.insert(part.captured(1), part.captured(2).simplified());
        }
        hazards << hazard;
    }
    return hazards;
}

/// \return the name by which a link reaches a heading
QString anchorOf(const QString &heading)
{
    static const QRegularExpression others(R"([^\w -])",
                                           QRegularExpression::UseUnicodePropertiesOption);
    return heading.toLower().remove(others).replace(' ', '-');
}

QStringList anchorsIn(const QString &text)
{
    static const QRegularExpression code(R"(^ *```.*?^ *```$)",
                                         QRegularExpression::MultilineOption
                                             | QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression heading(R"(^#+ (.+)$)", QRegularExpression::MultilineOption);
    QStringList anchors;
    for (const QRegularExpressionMatch &match : heading.globalMatch(QString(text).remove(code)))
        anchors << anchorOf(match.captured(1));
    return anchors;
}

/// \return the first cells of a table's rows
QStringList firstCells(const QString &text, const QString &header)
{
    static const QRegularExpression row(R"(\G\| ([^|]+) \|.*\n)");
    const qsizetype begin = text.indexOf(header);
    QStringList cells;
    for (const QRegularExpressionMatch &match : row.globalMatch(text, begin))
        cells << match.captured(1);
    return cells.mid(2); // after the header and the line below it
}

QString withoutComments(QString source, const QString &beginning)
{
    return source.remove(QRegularExpression(beginning + "[^\\n]*"));
}

bool hasWord(const QString &text, const QString &word)
{
    return text.contains(QRegularExpression(R"(\b)" + word + R"(\b)"));
}

/// \param name of a function, class or target, with the name of its class if it has one
bool defines(const QString &path, const QString &name)
{
    const QString text =
        withoutComments(read(PROJECT "/" + path), path.endsWith(".txt") ? "#" : "//");
    const QString ofClass = name.section("::", 0, -2);
    const QString ownName = name.section("::", -1);
    return hasWord(text, name)
        || (!ofClass.isEmpty() && hasWord(text, "(class|struct) " + ofClass)
            && hasWord(text, ownName));
}

/// \return the path of a test program's source; empty if there is none
QString sourceOf(const QString &program)
{
    QDirIterator files(PROJECT "/tests", {program + ".cpp"}, QDir::Files,
                       QDirIterator::Subdirectories);
    return files.hasNext() ? files.next() : QString();
}

/// \return the names of the functions that QtTest calls
QStringList testFunctionsIn(const QString &source)
{
    static const QRegularExpression section(
        R"(^private slots:\n(.*?)(?=^(?:private|protected|public)\b|^\};))",
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression function(R"(\bvoid (\w+)\(\))");
    QStringList functions;
    const QString code = withoutComments(source, "//");
    for (const QRegularExpressionMatch &match : section.globalMatch(code)) {
        for (const QRegularExpressionMatch &one : function.globalMatch(match.captured(1)))
            functions << one.captured(1);
    }
    return functions;
}

/// \return the test programs that a CMakeLists.txt makes known to ctest
QStringList testsIn(const QString &lists)
{
    static const QRegularExpression call(R"(\b(?:vardo_add_\w*test|add_test)\((?:NAME )?(\w+))");
    static const QRegularExpression loop(R"(\bforeach\(([^)]*)\)(.*?)\bendforeach\b)",
                                         QRegularExpression::DotMatchesEverythingOption);
    const QString code = withoutComments(lists, "#");
    QStringList tests;
    for (const QRegularExpressionMatch &match : call.globalMatch(code))
        tests << match.captured(1);
    for (const QRegularExpressionMatch &match : loop.globalMatch(code)) {
        if (match.captured(2).contains("add_test(") || match.captured(2).contains("_test(${"))
            tests += match.captured(1).simplified().split(' ');
    }
    return tests;
}

} // namespace

class TestRisks : public QObject {
    Q_OBJECT

private slots:
    void numbersItsHazards();
    void listsEachHazard();
    void saysAllOfAHazard_data() { addHazards(); }
    void saysAllOfAHazard();
    void namesAControlOfEachHazard_data() { addHazards(); }
    void namesAControlOfEachHazard();
    void namesControlsThatExist_data();
    void namesControlsThatExist();
    void namesATestOfEachHazard_data() { addHazards(); }
    void namesATestOfEachHazard();
    void namesTestsThatExist_data();
    void namesTestsThatExist();
    void linksToWhatExists_data();
    void linksToWhatExists();
    void refersToHazardsThatExist();

private:
    static void addHazards();
};

void TestRisks::addHazards()
{
    QTest::addColumn<Hazard>("hazard");

    for (const Hazard &hazard : hazards())
        QTest::newRow(qUtf8Printable(hazard.title)) << hazard;
}

void TestRisks::numbersItsHazards()
{
    static const QRegularExpression identifier(R"(^H\d\d$)");
    QStringList identifiers;
    for (const Hazard &hazard : hazards())
        identifiers << hazard.title.section(' ', 0, 0);

    QVERIFY(identifiers.size() > 1);
    for (qsizetype i = 0; i < identifiers.size(); ++i) {
        QVERIFY2(identifier.match(identifiers.at(i)).hasMatch(), qUtf8Printable(identifiers.at(i)));
        QVERIFY2(i == 0 || identifiers.at(i - 1) < identifiers.at(i),
                 qUtf8Printable(identifiers.at(i)));
    }
}

void TestRisks::listsEachHazard()
{
    static const QRegularExpression row(R"(^\| (\[H\d\d .+) \| (\w+) \| \w[^|]* \|$)",
                                        QRegularExpression::MultilineOption);
    QStringList listed;
    for (const QRegularExpressionMatch &match : row.globalMatch(page()))
        listed << match.captured(1) + ": " + match.captured(2);

    QStringList expected;
    for (const Hazard &hazard : hazards())
        expected << QString("[%1](#%2): %3")
                        .arg(hazard.title, anchorOf(hazard.title), hazard.texts.value("Severity"));
    QCOMPARE(listed, expected);
}

void TestRisks::saysAllOfAHazard()
{
    QFETCH(Hazard, hazard);

    QCOMPARE(hazard.labels, parts);
    for (const QString &label : parts)
        QVERIFY2(!hazard.texts.value(label).isEmpty(), qUtf8Printable(label));
    const QStringList scale = firstCells(page(), "| severity | harm |");
    QVERIFY2(scale.contains(hazard.texts.value("Severity")), qUtf8Printable(scale.join(' ')));
}

void TestRisks::namesAControlOfEachHazard()
{
    static const QRegularExpression file(R"(`([^`]*(?:/|CMakeLists)[^`]*)`)");
    static const QRegularExpression nameBefore(R"(`[\w:]+` in $)");
    QFETCH(Hazard, hazard);
    const QString control = hazard.texts.value("Control");

    QVERIFY(control.contains(file));
    for (const QRegularExpressionMatch &match : file.globalMatch(control))
        QVERIFY2(control.first(match.capturedStart()).contains(nameBefore),
                 qUtf8Printable(match.captured() + " stands without a name"));
}

void TestRisks::namesControlsThatExist_data()
{
    static const QRegularExpression place(R"(((?:`[\w:]+`(?:, | and )?)+) in `([^`]+)`)");
    static const QRegularExpression name(R"(`([\w:]+)`)");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    for (const Hazard &hazard : hazards()) {
        for (const QRegularExpressionMatch &match :
             place.globalMatch(hazard.texts.value("Control"))) {
            for (const QRegularExpressionMatch &one : name.globalMatch(match.captured(1)))
                QTest::addRow("%s: %s", qUtf8Printable(hazard.title.first(3)),
                              qUtf8Printable(one.captured(1)))
                    << match.captured(2) << one.captured(1);
        }
    }
}

void TestRisks::namesControlsThatExist()
{
    QFETCH(QString, path);
    QFETCH(QString, name);

    QVERIFY2(QFileInfo(PROJECT "/" + path).isFile(), qUtf8Printable(path));
    QVERIFY2(defines(path, name), qUtf8Printable(path));
}

void TestRisks::namesATestOfEachHazard()
{
    static const QRegularExpression list(R"(^`tst_\w+::\w+`(?:, `tst_\w+::\w+`)*$)");
    QFETCH(Hazard, hazard);

    QVERIFY2(list.match(hazard.texts.value("Evidence")).hasMatch(),
             qUtf8Printable(hazard.texts.value("Evidence")));
}

void TestRisks::namesTestsThatExist_data()
{
    static const QRegularExpression test(R"(`(tst_\w+)::(\w+)`)");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("function");

    QStringList rows;
    for (const QRegularExpressionMatch &match : test.globalMatch(page())) {
        if (rows.contains(match.captured()))
            continue;
        rows << match.captured();
        QTest::newRow(qUtf8Printable(match.captured())) << match.captured(1) << match.captured(2);
    }
}

void TestRisks::namesTestsThatExist()
{
    QFETCH(QString, program);
    QFETCH(QString, function);
    const QString source = sourceOf(program);
    QVERIFY2(!source.isEmpty(), "there is no such program");

    const QStringList functions = testFunctionsIn(read(source));
    const QStringList tests = testsIn(read(QFileInfo(source).path() + "/CMakeLists.txt"));

    QVERIFY2(functions.contains(function), qUtf8Printable(functions.join(' ')));
    QVERIFY2(tests.contains(program), qUtf8Printable(tests.join(' ')));
}

void TestRisks::linksToWhatExists_data()
{
    static const QRegularExpression link(R"(\]\(([^)#\s]*)(?:#([^)\s]+))?\))");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("anchor");

    QStringList rows;
    for (const QRegularExpressionMatch &match : link.globalMatch(page())) {
        if (rows.contains(match.captured()))
            continue;
        rows << match.captured();
        QTest::newRow(qUtf8Printable(match.captured())) << match.captured(1) << match.captured(2);
    }
}

void TestRisks::linksToWhatExists()
{
    QFETCH(QString, file);
    QFETCH(QString, anchor);
    const QString path = documents + (file.isEmpty() ? "risks.md" : file);

    QVERIFY2(QFileInfo::exists(path), qUtf8Printable(path));
    const QStringList anchors = anchorsIn(read(path));
    QVERIFY2(anchor.isEmpty() || anchors.contains(anchor), qUtf8Printable(anchors.join(' ')));
}

void TestRisks::refersToHazardsThatExist()
{
    static const QRegularExpression reference(R"(\bH\d\d\b)");
    QStringList known;
    for (const Hazard &hazard : hazards())
        known << hazard.title.section(' ', 0, 0);

    for (const QRegularExpressionMatch &match : reference.globalMatch(page()))
        QVERIFY2(known.contains(match.captured()), qUtf8Printable(match.captured()));
}

QTEST_GUILESS_MAIN(TestRisks)
#include "tst_risks.moc"
