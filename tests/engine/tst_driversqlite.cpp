// SPDX-License-Identifier: MIT
/// Tests reach into the SQLite of Qt's driver only if it is the one that they are linked to.

#include "driversqlite.h"

#include "testdatabase.h"

#include <QTest>

class TestDriverSqlite : public QObject {
    Q_OBJECT

private slots:
    void theDriversOwnIsNoOther();
    void anotherIsNamed();
};

void TestDriverSqlite::theDriversOwnIsNoOther()
{
    const QString used = databaseRows(":memory:", "select sqlite_source_id()").constFirst();

    const QString other = otherSqliteInDriver(used.mid(1, used.size() - 2));

    QCOMPARE(other, QString());
}

void TestDriverSqlite::anotherIsNamed()
{
    const QString used = databaseRows(":memory:", "select sqlite_source_id()").constFirst();

    const QString other = otherSqliteInDriver("2001-01-01 0123456789abcdef");

    QCOMPARE(other,
             QString("Qt's driver uses SQLite %1, the test is linked to"
                     " '2001-01-01 0123456789abcdef'")
                 .arg(used));
}

QTEST_GUILESS_MAIN(TestDriverSqlite)
#include "tst_driversqlite.moc"
