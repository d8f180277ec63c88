// SPDX-License-Identifier: MIT
/// What the programs say in themselves of their package, for tools that look at a program or at its core dump.

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

namespace {

/// \return the JSON text of a program's note; empty if it has none
QByteArray packageNoteOf(const QString &program)
{
    static const QRegularExpression note(R"(Packaging Metadata: (\{.*\}))");

    QProcess readelf;
    readelf.start(READELF, {"--notes", "--wide", program});
    readelf.waitForFinished();
    return note.match(QString::fromUtf8(readelf.readAllStandardOutput())).captured(1).toUtf8();
}

} // namespace

class TestPackageNote : public QObject {
    Q_OBJECT

private slots:
    void namesPackageAndVersion_data();
    void namesPackageAndVersion();
};

void TestPackageNote::namesPackageAndVersion_data()
{
    QTest::addColumn<QString>("program");

    QTest::newRow("vardo") << VARDO;
    QTest::newRow("vardo-report") << VARDO_REPORT;
}

/// Shows: PLT-10
void TestPackageNote::namesPackageAndVersion()
{
    QFETCH(QString, program);

    const QJsonObject note = QJsonDocument::fromJson(packageNoteOf(program)).object();

    QCOMPARE(note, QJsonObject({{"type", "deb"}, {"name", PACKAGE}, {"version", VERSION}}));
}

QTEST_GUILESS_MAIN(TestPackageNote)
#include "tst_package_note.moc"
