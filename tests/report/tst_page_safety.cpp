// SPDX-License-Identifier: MIT
/// The page of a report is valid and needs nothing from outside, and nothing that a database holds can break it.

#include "parsedpage.h"
#include "samplereport.h"

#include "coagulation/report/page.h"
#include "coagulation/report/pagestyle.h"

#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTest>

using namespace coagulation::report;

namespace {

/// \return what tidy says of a page; nothing if it finds nothing
QString findingsOfTidy(const QByteArray &page)
{
    QProcess tidy;
    tidy.setProcessChannelMode(QProcess::MergedChannels);
    tidy.start("tidy", {"-errors", "-quiet", "-utf8"});
    tidy.write(page);
    tidy.closeWriteChannel();
    if (!tidy.waitForFinished())
        return "tidy does not end";
    return QString::fromUtf8(tidy.readAll());
}

/// Takes no more than some bytes.
class FullDevice : public QIODevice {
public:
    FullDevice() { open(QIODevice::WriteOnly); }

protected:
    qint64 readData(char * /*data*/, qint64 /*size*/) override { return -1; }
    qint64 writeData(const char * /*data*/, qint64 size) override
    {
        taken += size;
        return taken > 5'000 ? -1 : size;
    }

private:
    qint64 taken = 0;
};

} // namespace

class TestPageSafety : public QObject {
    Q_OBJECT

private slots:
    void hasNoScriptAndNothingFromOutside();
    void hasEachIdentifierOnce();
    void showsHostileTextsAsText_data();
    void showsHostileTextsAsText();
    void passesTidy_data();
    void passesTidy();
    void keepsTheStyleSheetAsItIs();
    void reportsADeviceThatTakesNoMore();
};

/// Shows: REP-16
void TestPageSafety::hasNoScriptAndNothingFromOutside()
{
    const ParsedPage page(sampleReport());

    const QSet<QString> foreign{"script", "link", "img", "iframe", "object", "embed", "base"};
    for (const ParsedPage::Element &element : page.elements())
        QVERIFY2(!foreign.contains(element.name), qUtf8Printable(element.name));
    for (const QString &target : page.values("href") + page.values("src"))
        QVERIFY2(target.startsWith('#'), qUtf8Printable(target));
    QVERIFY(!pageStyle().contains("url("));
    QVERIFY(!pageStyle().contains("@import"));
    QVERIFY(!pageOf(sampleReport()).contains("http"));
}

void TestPageSafety::hasEachIdentifierOnce()
{
    const ParsedPage page(sampleReport());

    const QStringList ids = page.values("id");
    QCOMPARE(QSet<QString>(ids.begin(), ids.end()).size(), ids.size());
    for (const QString &target : page.values("href"))
        QVERIFY2(ids.contains(target.mid(1)), qUtf8Printable(target));
}

void TestPageSafety::showsHostileTextsAsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    const auto unchanged = [](const char *name, const QString &text) {
        QTest::newRow(name) << text << text;
    };
    unchanged("markup", "</td><script>alert(1)</script><td>");
    unchanged("quotes", R"("'`)");
    unchanged("entities", "&lt;&#60;&amp");
    unchanged("end of a section", "]]>");
    unchanged("comment", "<!-- --> -->");
    unchanged("right to left", QString("\u05D0\u05D1 \u200F1"));
    unchanged("beyond the basic plane", QString::fromUcs4(U"\U0001F9EA"));
    unchanged("marks over one letter", "a" + QString(200, QChar(0x0301)));
    unchanged("a long word", QString(1'900, 'w'));

    QTest::newRow("control characters") << QStringLiteral("a\0b\tc\nd\x1b\x7f") << "a␀b␉c␊d␛␡";
    QTest::newRow("later control characters") << QString("a\u0085\u009Bb") << "a\uFFFD\uFFFDb";
    QTest::newRow("another direction") << QString("a") + QChar(0x202E) + "1" + QChar(0x2066) + "c"
                                       << "a\uFFFD1\uFFFDc";
    QTest::newRow("first half of a pair") << QString("a") + QChar(0xD83E) + "b"
                                          << "a\uFFFDb";
    QTest::newRow("second half of a pair") << QString("a") + QChar(0xDD2A) + "b"
                                           << "a\uFFFDb";
    QTest::newRow("no characters")
        << QString("a") + QChar(0xFFFE) + QChar(0xFFFF) + QChar(0xFDD0) << "a\uFFFD\uFFFD\uFFFD";
    QTest::newRow("a megabyte") << QString(1'048'576, 'w')
                                << QString(2'000, 'w') + " … (1,048,576 letters)";
    QTest::newRow("cut within a pair") << QString(1'999, 'w') + QString::fromUcs4(U"\U0001F9EA")
            + "w" << QString(1'999, 'w') + " … (2,002 letters)";
}

/// Shows: REP-17
void TestPageSafety::showsHostileTextsAsText()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    Report report = sampleReport();
    const QStringList idsBefore = ParsedPage(report).values("id");
    fillTexts(report, text);

    const ParsedPage page(report);

    QCOMPARE(page.values("id"), idsBefore);
    qsizetype places = 0;
    for (const ParsedPage::Element &element : page.elements()) {
        if (element.name == "bdi" && element.text == shown.simplified())
            ++places;
    }
    QVERIFY2(places > 100, QByteArray::number(places).constData());
}

void TestPageSafety::passesTidy_data()
{
    QTest::addColumn<Report>("report");

    QTest::newRow("everything") << sampleReport();
    QTest::newRow("nothing") << calmReport();
    Report hostile = sampleReport();
    fillTexts(hostile, QStringLiteral("</td><script>\0\x1b\u009B]]> &amp; \"'"));
    QTest::newRow("hostile texts") << hostile;
    Report empty = sampleReport();
    fillTexts(empty, "");
    QTest::newRow("empty texts") << empty;
}

/// Shows: REP-16
void TestPageSafety::passesTidy()
{
    if (QStandardPaths::findExecutable("tidy").isEmpty())
        QSKIP("tidy is not installed");
    QFETCH(Report, report);

    QCOMPARE(findingsOfTidy(pageOf(report)), QString());
}

void TestPageSafety::keepsTheStyleSheetAsItIs()
{
    QCOMPARE(pageStyle().toHtmlEscaped(), pageStyle());

    QVERIFY(pageOf(calmReport()).contains(pageStyle().toUtf8()));
}

void TestPageSafety::reportsADeviceThatTakesNoMore()
{
    FullDevice device;

    QVERIFY(!writePage(device, sampleReport()));
}

QTEST_GUILESS_MAIN(TestPageSafety)
#include "tst_page_safety.moc"
