// SPDX-License-Identifier: MIT
/// The files that a run leaves, on a disk that takes no more.

#include "filesizelimit.h"
#include "samplereport.h"
#include "testfiles.h"

#include "coagulation/report/outputs.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace coagulation::report;

class TestOutputs : public QObject {
    Q_OBJECT

private slots:
    void keepsAnOldPageOnAFullDisk_data();
    void keepsAnOldPageOnAFullDisk();
};

void TestOutputs::keepsAnOldPageOnAFullDisk_data()
{
    QTest::addColumn<int>("limit"); // bytes

    QTest::newRow("nothing fits") << 0;
    QTest::newRow("a part fits") << 10'000;
}

/// Shows: REP-20
void TestOutputs::keepsAnOldPageOnAFullDisk()
{
#ifdef Q_OS_UNIX
    QFETCH(int, limit);
    const QTemporaryDir folder;
    CommandLine command;
    command.page = folder.filePath("report.html");
    writeFile(command.page, "the page of another day");

    QString problem;
    {
        const FileSizeLimit full(limit);
        problem = writeOutputs(command, sampleReport());
    }

    QVERIFY2(problem.startsWith(command.page + " cannot be written: "), qUtf8Printable(problem));
    QCOMPARE(fileBytes(command.page), QByteArray("the page of another day"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{"report.html"});
#else
    QSKIP("a limit on file sizes is not to be had: a full disk is NOT tested");
#endif
}

QTEST_GUILESS_MAIN(TestOutputs)

#include "tst_outputs.moc"
