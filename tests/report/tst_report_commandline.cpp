// SPDX-License-Identifier: MIT
/// The command line of vardo-report.

#include "laboratory.h"

#include <QDir>
#include <QTest>

class TestReportCommandLine : public QObject {
    Q_OBJECT

private slots:
    void refusesWhatItDoesNotKnow_data();
    void refusesWhatItDoesNotKnow();
    void showsItsHelp_data();
    void showsItsHelp();
    void showsItsVersion();
};

void TestReportCommandLine::refusesWhatItDoesNotKnow_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");

    const auto add = [](const char *name, const QStringList &arguments, const char *error) {
        QTest::newRow(name) << arguments << QByteArray(error);
    };
    add("nothing", {}, "A command is missing: rehearse or compare.");
    add("an option alone", {"--quiet"}, "A command is missing: rehearse or compare.");
    add("unknown command", {"%1"}, "Unknown command '%1'.");
    add("unknown option", {"rehearse", "-x"}, "Unknown option 'x'.");
    add("unknown long option", {"rehearse", "--keeps", "a"}, "Unknown option 'keeps'.");
    add("-p without a value", {"rehearse", "-p"}, "Missing value after '-p'.");
    add("-s without a value", {"rehearse", "-s"}, "Missing value after '-s'.");
    add("-o without a value", {"rehearse", "-o"}, "Missing value after '-o'.");
    add("--json without a value", {"rehearse", "--json"}, "Missing value after '--json'.");
    add("--keep without a value", {"rehearse", "--keep"}, "Missing value after '--keep'.");
    add("-o with an empty value", {"rehearse", "-o", ""}, "Missing value after '-o'.");
    add("--keep with an empty value", {"rehearse", "--keep", ""}, "Missing value after '--keep'.");
    add("--log in a rehearsal", {"rehearse", "--log", "a"}, "The option --log belongs to compare.");
    add("--keep in a comparison", {"compare", "a", "b", "--keep", "c"},
        "The option --keep belongs to rehearse.");
    add("too much to rehearse", {"rehearse", "a"}, "Too many arguments: a");
    add("one folder", {"compare", "a"}, "compare needs two folders: BEFORE and AFTER.");
    add("three folders", {"compare", "a", "b", "c"}, "Too many arguments: c");
    add("a folder in the suffix", {"rehearse", "-s", "a/b"}, "The suffix names no folder.");
    add("a folder in the prefix", {"compare", "a", "b", "-p", "c/d"},
        "The prefix names no folder in compare.");
}

/// Shows: REP-8
void TestReportCommandLine::refusesWhatItDoesNotKnow()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    const Laboratory laboratory;

    const ToolRun run = runTool(laboratory.command(arguments));

    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.errors, "vardo-report: " + error + " Try vardo-report --help.\n");
    QCOMPARE(run.output, QByteArray());
    QVERIFY(QDir(laboratory.result("")).isEmpty());
}

void TestReportCommandLine::showsItsHelp_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("-h") << QStringList{"-h"};
    QTest::newRow("--help") << QStringList{"--help"};
    QTest::newRow("help for a command") << QStringList{"compare", "--help"};
}

/// Shows: REP-22
void TestReportCommandLine::showsItsHelp()
{
    QFETCH(QStringList, arguments);
    const Laboratory laboratory;

    const ToolRun run = runTool(laboratory.command(arguments));

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors, QByteArray());
    for (const char *part : {"Usage:", "rehearse", "compare", "-p <prefix>", "-s <suffix>",
                             "-o <page>", "--json <file>", "--keep <folder>", "--log <file>",
                             "--examples", "--quiet", "--help", "--version"})
        QVERIFY2(run.output.contains(part), part);
}

void TestReportCommandLine::showsItsVersion()
{
    const Laboratory laboratory;

    const ToolRun run = runTool(laboratory.command({"--version"}));

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, QByteArray("vardo-report " VERSION "\n"));
    QCOMPARE(run.errors, QByteArray());
}

QTEST_GUILESS_MAIN(TestReportCommandLine)

#include "tst_report_commandline.moc"
