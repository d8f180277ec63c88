// SPDX-License-Identifier: MIT
/// The page in a real browser: it says nothing on its console, and nobody has to scroll sideways.
/// Without Chromium these tests are skipped.

#include "parsedpage.h"
#include "samplereport.h"
#include "testdatabase.h"
#include "testfiles.h"
#include "toolrun.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace coagulation::report;

namespace {

/// \return the page of the program itself, for samples of the oldest version
QByteArray pageOfSamples()
{
    const QTemporaryDir folder;
    for (const QString &name : QStringList{"profile", "data", "qc", "syslog"}) {
        const TestDatabase sample(name + ".db");
        sample.load(name + "_v0.sql");
        writeFile(folder.filePath(name + ".db"), sample.bytes());
    }
    const QString report = folder.filePath("report.html");
    const ToolRun run =
        runTool({VARDO_REPORT,
                 {"rehearse", "-p", folder.path() + '/', "-o", report, "--examples", "--quiet"}});
    QFile page(report);
    if (run.exitCode != 0 || !page.open(QIODevice::ReadOnly))
        qFatal("No report: %s", run.errors.constData());
    return page.readAll();
}

/// Shows a page in a frame and writes down how much room it has and how much it takes. The page itself has no
/// script, so this one looks at it from outside.
QByteArray framed(int width)
{
    return QString(R"(<!DOCTYPE html><meta charset="utf-8"><title>Measure</title>
<iframe src="page.html" style="width: %1px; height: 1000px; border: 0"></iframe>
<p id="found"></p>
<script>
addEventListener('load', () => {
  const page = document.querySelector('iframe').contentDocument;
  const fold = folded => page.querySelectorAll('details').forEach(one => one.open = !folded);
  const root = page.documentElement;
  fold(true);
  const folded = root.scrollWidth;
  fold(false);
  document.querySelector('#found').textContent =
      ['found', root.clientWidth, folded, root.scrollWidth, 'found'].join(' ');
});
</script>)")
        .arg(width)
        .toUtf8();
}

struct Shown {
    QByteArray dom;
    QByteArray messages; ///< of the browser, those of the page's console among them
};

/// \param page a file
Shown show(const QString &browser, const QString &page)
{
    const QTemporaryDir profile;
    QProcess process;
    process.start(browser,
                  {"--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                   "--allow-file-access-from-files", "--enable-logging=stderr", "--v=0",
                   "--user-data-dir=" + profile.path(), "--virtual-time-budget=10000",
                   "--window-size=1500,1100", "--dump-dom", "file://" + page});
    if (!process.waitForFinished(90'000)) {
        process.kill();
        process.waitForFinished();
    }
    return {process.readAllStandardOutput(), process.readAllStandardError()};
}

/// How wide a page is, in pixels.
struct Widths {
    int room = 0;   ///< what the window leaves
    int folded = 0; ///< what the page takes
    int unfolded = 0;
};

/// Opens the page of a folder in a window of some width.
Widths widthsOf(const QString &browser, const QTemporaryDir &folder, int window)
{
    writeFile(folder.filePath("frame.html"), framed(window));
    const Shown shown = show(browser, folder.filePath("frame.html"));
    static const QRegularExpression found(R"(found (\d+) (\d+) (\d+) found)");
    const QRegularExpressionMatch match = found.match(QString::fromUtf8(shown.dom));
    if (!match.hasMatch())
        qFatal("Not measured: %s", shown.messages.constData());
    return {match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt()};
}

QStringList consoleOf(const Shown &shown)
{
    return QString::fromUtf8(shown.messages).split('\n').filter("CONSOLE");
}

} // namespace

class TestReportBrowser : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void neverScrollsSideways_data();
    void neverScrollsSideways();
    void saysNothingOnTheConsole_data();
    void saysNothingOnTheConsole();
    void wouldNoticeWidthAndMessages();

private:
    void addPages();

    QString browser = QStandardPaths::findExecutable("chromium");
    QTemporaryDir folder;
};

void TestReportBrowser::initTestCase()
{
    if (browser.isEmpty())
        QSKIP("Chromium is not installed");
}

void TestReportBrowser::addPages()
{
    QTest::addColumn<QByteArray>("page");

    QTest::newRow("program") << pageOfSamples();
    QTest::newRow("everything") << pageOf(sampleReport());
    Report longWords = sampleReport();
    fillTexts(longWords, QString(1'000, 'w'));
    QTest::newRow("long words") << pageOf(longWords);
    Report otherDirection = sampleReport();
    fillTexts(otherDirection, "\u200F</td>" + QString(300, QChar(0x05D0)));
    QTest::newRow("from right to left") << pageOf(otherDirection);
}

void TestReportBrowser::neverScrollsSideways_data()
{
    addPages();
}

/// Shows: REP-16
void TestReportBrowser::neverScrollsSideways()
{
    QFETCH(QByteArray, page);
    writeFile(folder.filePath("page.html"), page);

    for (const int window : {400, 1'400}) {
        const Widths widths = widthsOf(browser, folder, window);

        // A bar for scrolling downwards may take some of the room.
        QVERIFY(widths.room > window - 20);
        QCOMPARE(widths.folded, widths.room);
        QCOMPARE(widths.unfolded, widths.room);
    }
}

void TestReportBrowser::saysNothingOnTheConsole_data()
{
    addPages();
}

void TestReportBrowser::saysNothingOnTheConsole()
{
    QFETCH(QByteArray, page);
    writeFile(folder.filePath("page.html"), page);

    const Shown shown = show(browser, folder.filePath("page.html"));

    QVERIFY2(shown.dom.contains(R"(id="record")"), shown.messages.constData());
    QCOMPARE(consoleOf(shown), QStringList());
}

/// Otherwise the tests above would pass whatever a page does.
void TestReportBrowser::wouldNoticeWidthAndMessages()
{
    writeFile(folder.filePath("page.html"), R"(<!DOCTYPE html><title>Wide</title>
<details><summary>More</summary><div style="width: 2000px">wide</div></details>
<script>console.error('a message')</script>)");

    const Widths widths = widthsOf(browser, folder, 400);
    const Shown shown = show(browser, folder.filePath("page.html"));

    QCOMPARE(widths.folded, widths.room);
    QVERIFY(widths.unfolded > 2'000);
    QVERIFY(consoleOf(shown).join('\n').contains("a message"));
}

QTEST_GUILESS_MAIN(TestReportBrowser)
#include "tst_report_browser.moc"
