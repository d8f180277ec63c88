// SPDX-License-Identifier: MIT
/// The documents of vardo-report name every option of the program, and every key of its JSON file.

#include "testdatabase.h"
#include "toolrun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

namespace {

QByteArray read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    return file.readAll();
}

/// \return the options of the program's own help, with their hyphens
QStringList optionsOfHelp()
{
    static const QRegularExpression line(R"(^ +(-[^<\s,]+(?:, -[^<\s,]+)*))",
                                         QRegularExpression::MultilineOption);
    const ToolRun run = runTool({.program = VARDO_REPORT, .arguments = {"--help"}});
    QStringList options;
    for (const QRegularExpressionMatch &match : line.globalMatch(QString::fromUtf8(run.output)))
        options += match.captured(1).split(", ");
    return options;
}

/// \return the manual page's text, without the marks of its hyphens
QString manualPage()
{
    return QString::fromUtf8(read(MANUAL_PAGE)).replace(R"(\-)", "-");
}

/// \return the chapter of the operating manual
QString chapter()
{
    const QString manual = QString::fromUtf8(read(MANUAL));
    const qsizetype begin = manual.indexOf("\n## Before and after\n");
    return manual.mid(begin, manual.indexOf("\n## ", begin + 1) - begin);
}

/// \return the section on the JSON file
QString sectionForPrograms()
{
    const QString text = chapter();
    return text.mid(text.indexOf("\n### The report for programs\n"));
}

// NOLINTNEXTLINE(misc-no-recursion) a document is as deep as it is
void collectKeys(const QJsonValue &value, QStringList &keys)
{
    const QJsonArray elements = value.toArray();
    for (const auto &element : elements)
        collectKeys(element, keys);
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        keys << member.key();
        collectKeys(member.value(), keys);
    }
}

/// \return the keys of a rehearsal's JSON file, of all its objects, without repetition, ordered
QStringList keysOfARehearsal()
{
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    const QDir folder(database.folderPath());
    const QString file = folder.filePath("report.json");
    const ToolRun run = runTool({.program = VARDO_REPORT,
                                 .arguments = {"rehearse", "-p", folder.path() + '/', "-o",
                                               folder.filePath("report.html"), "--json", file}});
    if (run.exitCode != 0)
        qFatal("%s", run.errors.constData());

    QStringList keys;
    collectKeys(QJsonDocument::fromJson(read(file)).object(), keys);
    keys.removeDuplicates();
    keys.sort();
    return keys;
}

} // namespace

class TestReportManual : public QObject {
    Q_OBJECT

private slots:
    void pageNamesEachOption_data();
    void pageNamesEachOption();
    void chapterNamesEachOption_data();
    void chapterNamesEachOption();
    void chapterNamesEachKey_data();
    void chapterNamesEachKey();

private:
    static void addOptions(const QStringList &except);
};

void TestReportManual::addOptions(const QStringList &except)
{
    QTest::addColumn<QString>("option");

    const QStringList options = optionsOfHelp();
    QVERIFY2(options.contains("--json"), qUtf8Printable(options.join(' ')));
    for (const QString &option : options) {
        if (!except.contains(option))
            QTest::newRow(qUtf8Printable(option)) << option;
    }
}

void TestReportManual::pageNamesEachOption_data()
{
    addOptions({});
}

/// Shows: REP-22
void TestReportManual::pageNamesEachOption()
{
    QFETCH(QString, option);

    QVERIFY(manualPage().contains(QRegularExpression(R"(^\.BI?R? .*)" + option + R"(\b)",
                                                     QRegularExpression::MultilineOption)));
}

void TestReportManual::chapterNamesEachOption_data()
{
    addOptions({"-h", "--help", "--version"}); // of every program
}

/// Shows: REP-22
void TestReportManual::chapterNamesEachOption()
{
    QFETCH(QString, option);

    QVERIFY(chapter().contains(
        QRegularExpression(R"(^\| .*`)" + option + R"(\b)", QRegularExpression::MultilineOption)));
}

void TestReportManual::chapterNamesEachKey_data()
{
    QTest::addColumn<QString>("key");

    for (const QString &key : keysOfARehearsal())
        QTest::newRow(qUtf8Printable(key)) << key;
}

/// Shows: REP-18
void TestReportManual::chapterNamesEachKey()
{
    QFETCH(QString, key);

    QVERIFY(sectionForPrograms().contains(QRegularExpression(R"(`(\w+\.)*)" + key + '`')));
}

QTEST_GUILESS_MAIN(TestReportManual)
#include "tst_report_manual.moc"
