// SPDX-License-Identifier: MIT
/// The reference schemas in docs/schema against what the upgrade of the oldest samples leaves.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "testdatabase.h"
#include "upgrade.h"

#include <QTest>

class TestSchema : public QObject {
    Q_OBJECT

private slots:
    void isTheUpgradedSample_data();
    void isTheUpgradedSample();
    void isTitledByTheNewestVersion_data();
    void isTitledByTheNewestVersion();
    void listsTablesAndViewsByName_data();
    void listsTablesAndViewsByName();
    void hasOneColumnALine_data();
    void hasOneColumnALine();
};

void TestSchema::isTheUpgradedSample_data()
{
    QTest::addColumn<QString>("name");

    for (const char *name : {"profile", "data", "qc", "syslog"})
        QTest::newRow(name) << name;
}

/// Shows: PRO-1, DAT-1, QC-1, SYS-1
void TestSchema::isTheUpgradedSample()
{
    QFETCH(QString, name);
    const TestDatabase database(name + ".db");
    database.load(name + "_v0.sql");
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.comparableSchema(), referenceSchema(name));
}

void TestSchema::isTitledByTheNewestVersion_data()
{
    isTheUpgradedSample_data();
}

void TestSchema::isTitledByTheNewestVersion()
{
    QFETCH(QString, name);
    QFile file(QString(SCHEMAS "/%1.sql").arg(name));
    QVERIFY(file.open(QIODevice::ReadOnly));

    const QList<QByteArray> lines = file.readAll().split('\n');

    const QByteArray version = ", version " + QByteArray::number(newestVersionOf(name)) + '.';
    QVERIFY2(lines.value(1).endsWith(version), lines.value(1).constData());
}

void TestSchema::listsTablesAndViewsByName_data()
{
    isTheUpgradedSample_data();
}

void TestSchema::listsTablesAndViewsByName()
{
    QFETCH(QString, name);
    const TestDatabase reference;
    reference.load("../docs/schema/" + name + ".sql");
    const QString tables = "select name from sqlite_master where type in ('table', 'view')"
                           " and name not like 'sqlite_%' order by ";

    QCOMPARE(reference.rows(tables + "rowid"), reference.rows(tables + "lower(name)"));
}

void TestSchema::hasOneColumnALine_data()
{
    isTheUpgradedSample_data();
}

void TestSchema::hasOneColumnALine()
{
    QFETCH(QString, name);
    const TestDatabase reference;
    reference.load("../docs/schema/" + name + ".sql");

    QCOMPARE(reference.rows("select tbl.name from sqlite_master tbl where tbl.type = 'table'"
                            " and tbl.sql notnull and name not like 'sqlite_%'"
                            " and (select count(*) from pragma_table_info(tbl.name) column"
                            "   where instr(tbl.sql, char(10) || '    ' || column.name) = 0) > 0"),
             QStringList());
}

QTEST_GUILESS_MAIN(TestSchema)
#include "tst_schema.moc"
