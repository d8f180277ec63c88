// SPDX-License-Identifier: MIT
/// Files that are read and copied piece by piece, and the files of a database.

#include "coagulation/report/filecopy.h"
#include "coagulation/report/snapshot.h"
#include "testfiles.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace coagulation::report;

namespace {

bool countNothing(qint64 /*bytes*/)
{
    return true;
}

} // namespace

class TestFileCopy : public QObject {
    Q_OBJECT

private slots:
    void init();

    void countsTheBytes();
    void makesASecondCopy();
    void findsTheFilesOfADatabase();
    void skipsTheLockedBytes_data();
    void skipsTheLockedBytes();
    void readsAllOfAFile();

private:
    QString original() const { return folder->filePath("data.db"); }

    std::unique_ptr<QTemporaryDir> folder;
};

void TestFileCopy::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void TestFileCopy::countsTheBytes()
{
    writeFile(original(), QByteArray(2'500'000, 'x')); // of three pieces
    QFile file(original());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QList<qint64> counted;

    const CopyResult result = copyFile(file, folder->filePath("copy.db"), [&](qint64 bytes) {
        counted << bytes;
        return true;
    });

    QCOMPARE(result.state, CopyState::Copied);
    QCOMPARE(result.bytes, 2'500'000);
    QCOMPARE(counted, QList<qint64>({0x100000, 0x100000, 2'500'000 - 0x200000}));
}

void TestFileCopy::makesASecondCopy()
{
    for (const char *ending : {"", "-journal", "-wal"})
        writeFile(original() + ending, QByteArray("content ") + ending);

    const QString copy = folder->filePath("copy.db");

    QCOMPARE(copySnapshot(original(), copy, countNothing), QString());

    for (const char *ending : {"", "-journal", "-wal"})
        QCOMPARE(fileBytes(copy + ending), fileBytes(original() + ending));
}

void TestFileCopy::findsTheFilesOfADatabase()
{
    QCOMPARE(filesOf(original()), QStringList());
    writeFile(original() + "-wal", "log");
    QCOMPARE(filesOf(original()), QStringList()); // it belongs to no database
    writeFile(original(), "database");

    QCOMPARE(filesOf(original()), QStringList({original(), original() + "-wal"}));
    QCOMPARE(bytesOf(original()), 11);
}

void TestFileCopy::skipsTheLockedBytes_data()
{
    QTest::addColumn<qint64>("position");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("lockedBytesAreReadable");
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<bool>("readable");

    constexpr qint64 gibi = 0x40000000;
    constexpr qint64 mebi = 0x100000;
    QTest::newRow("small file") << qint64(0) << qint64(10) << false << qint64(10) << true;
    QTest::newRow("end") << qint64(10) << qint64(10) << false << qint64(0) << true;
    QTest::newRow("up to the bytes") << gibi - mebi << 2 * gibi << false << mebi << true;
    QTest::newRow("shortly before") << gibi - 100 << 2 * gibi << false << qint64(100) << true;
    QTest::newRow("at them") << gibi << 2 * gibi << false << qint64(512) << false;
    QTest::newRow("among them") << gibi + 500 << 2 * gibi << false << qint64(12) << false;
    QTest::newRow("file that ends among them")
        << gibi << gibi + 100 << false << qint64(100) << false;
    QTest::newRow("file that ends before them") << gibi - 7 << gibi << false << qint64(7) << true;
    QTest::newRow("behind them") << gibi + 512 << 2 * gibi << false << mebi << true;
    QTest::newRow("other systems") << gibi - 100 << 2 * gibi << true << mebi << true;
}

void TestFileCopy::skipsTheLockedBytes()
{
    QFETCH(qint64, position);
    QFETCH(qint64, size);
    QFETCH(bool, lockedBytesAreReadable);
    QFETCH(qint64, bytes);
    QFETCH(bool, readable);

    const Piece piece = nextPiece(position, size, lockedBytesAreReadable);

    QCOMPARE(piece.bytes, bytes);
    QCOMPARE(piece.readable, readable);
}

void TestFileCopy::readsAllOfAFile()
{
    const QByteArray bytes = QByteArray("0123456789").repeated(300'000); // of three pieces
    writeFile(original(), bytes);
    QFile file(original());
    QVERIFY(file.open(QIODevice::ReadOnly));

    QCOMPARE(digestOf(file, countNothing),
             QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QTEST_GUILESS_MAIN(TestFileCopy)

#include "tst_filecopy.moc"
