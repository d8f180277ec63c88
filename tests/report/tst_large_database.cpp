// SPDX-License-Identifier: MIT
/// A database that reaches beyond 1 GiB, where SQLite's locks lie, while another program reads it.

#include "otherprogram.h"
#include "testdatabase.h"

#include "coagulation/report/filecopy.h"
#include "coagulation/report/snapshot.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace coagulation::report;

namespace {

bool countNothing(qint64 /*bytes*/)
{
    return true;
}

QByteArray digestOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? coagulation::report::digestOf(file, countNothing)
                                          : QByteArray("no such file");
}

} // namespace

class TestLargeDatabase : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void copiesWhatLiesBeyondTheLocks();
    void hasTheSameDigestAsItsCopy();

private:
    QString original() const { return folder.filePath("original.db"); }
    QString copy() const { return folder.filePath("copy.db"); }

    QTemporaryDir folder{};
    std::unique_ptr<OtherProgram> reader{};
    Snapshot snapshot{};
};

void TestLargeDatabase::initTestCase()
{
    const QString add = "insert into number values(%1, %2)";
    executeOn(original(),
              {"pragma page_size=65536", "pragma journal_mode=off", "pragma synchronous=off",
               "create table number(id integer primary key, value)",
               add.arg("1", "zeroblob(600000000)"), add.arg("2", "zeroblob(600000000)"),
               add.arg("3", "'the last one'")});
    QVERIFY(QFileInfo(original()).size() > 0x40000000);

    reader = std::make_unique<OtherProgram>(original());
    QCOMPARE(reader->run("begin; select count(*) from number;").trimmed(), QByteArray("3"));
    snapshot = takeSnapshot(original(), copy(), countNothing);
}

/// Shows: REP-3
void TestLargeDatabase::copiesWhatLiesBeyondTheLocks()
{
    QCOMPARE(snapshot.problem, QString());
    QCOMPARE(QFileInfo(copy()).size(), QFileInfo(original()).size());
    QCOMPARE(databaseRows(copy(), "select * from pragma_integrity_check"), QStringList{"'ok'"});
    QCOMPARE(databaseRows(copy(), "select id, length(value) from number"),
             QStringList({"1, 600000000", "2, 600000000", "3, 12"}));
    QCOMPARE(databaseRows(copy(), "select value from number where id = 3"),
             QStringList{"'the last one'"});
}

void TestLargeDatabase::hasTheSameDigestAsItsCopy()
{
    QCOMPARE(digestOf(original()), digestOf(copy()));
}

QTEST_GUILESS_MAIN(TestLargeDatabase)

#include "tst_large_database.moc"
