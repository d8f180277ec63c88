// SPDX-License-Identifier: MIT
/// A row that somebody deletes, changes or adds by hand, in each table of each database at its newest layout.

#include "compared.h"
#include "testdatabase.h"

#include <QTest>

using namespace coagulation::report;

namespace {

/// A row that fits into an empty table of any layout.
struct OwnRow {
    QString insert;
    QString remove;
    QString change;
    QString key;     ///< as the comparison names it
    QString cells;   ///< as the comparison shows them
    QString changed; ///< the cell that `change` changes, likewise
};

struct OwnColumn {
    QString name;
    QString type;
    bool key = false;
};

QList<OwnColumn> columnsOf(const TestDatabase &database, const QString &table)
{
    QList<OwnColumn> columns;
    for (const QString &row : database.rows(
             QString("select name || '|' || type || '|' || (pk > 0) from pragma_table_info('%1')")
                 .arg(table))) {
        const QStringList parts = row.mid(1, row.size() - 2).split('|');
        columns << OwnColumn{parts.at(0), parts.at(1).toLower(), parts.at(2) == "1"};
    }
    return columns;
}

/// \return a value of the column's type, other than what the samples hold
QString literalOf(const QString &type, bool other)
{
    if (type == "integer")
        return other ? "9002" : "9001";
    if (type == "real")
        return other ? "2.5" : "1.5";
    if (type == "blob")
        return other ? "X'00fe'" : "X'00ff'";
    return other ? "'own''s'" : "'own'";
}

OwnRow ownRow(const TestDatabase &database, const QString &table)
{
    const QList<OwnColumn> columns = columnsOf(database, table);
    QStringList names;
    QStringList values;
    QStringList cells;
    QString key;
    for (const OwnColumn &column : columns) {
        names << '"' + column.name + '"';
        values << literalOf(column.type, false);
        cells << column.name + " = " + (column.name == "password" ? "'not shown'" : values.last());
        if (column.key)
            key = cells.last();
    }
    const OwnColumn &last = columns.last();
    const QString condition = QString("rowid = (select max(rowid) from %1)").arg(table);
    OwnRow row;
    row.insert =
        QString("insert into %1(%2) values(%3)").arg(table, names.join(", "), values.join(", "));
    row.remove = QString("delete from %1 where %2").arg(table, condition);
    row.change = QString("update %1 set %2 = %3 where %4")
                     .arg(table, names.last(), literalOf(last.type, true), condition);
    row.key = key.isEmpty() ? "rowid = 1" : key;
    row.cells = cells.join(", ");
    row.changed = QString("%1: %2 -> %3")
                      .arg(last.name, literalOf(last.type, false), literalOf(last.type, true));
    return row;
}

} // namespace

class TestComparisonTables : public QObject {
    Q_OBJECT

private slots:
    void tellsTheRowOfEachTable_data();
    void tellsTheRowOfEachTable();
};

void TestComparisonTables::tellsTheRowOfEachTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("table");

    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        const TestDatabase newest;
        newest.load(QString("../docs/schema/%1.sql").arg(name));
        for (QString table : newest.rows("select name from sqlite_master where type = 'table'"
                                         " and name not like 'sqlite_%'")) {
            table = table.mid(1, table.size() - 2);
            QTest::addRow("%s: %s", name, qUtf8Printable(table)) << QString(name) << table;
        }
    }
}

void TestComparisonTables::tellsTheRowOfEachTable()
{
    QFETCH(QString, name);
    QFETCH(QString, table);
    const TestDatabase without;
    without.load(QString("../docs/schema/%1.sql").arg(name));
    const OwnRow row = ownRow(without, table);
    const TestDatabase with;
    with.load(QString("../docs/schema/%1.sql").arg(name));
    with.execute({row.insert});

    QCOMPARE(differences(compared(with, with, name)), QStringList());
    QCOMPARE(differences(compared(without, with, name)),
             (QStringList{table + ": added 1", "  " + row.key + " | " + row.cells}));
    QCOMPARE(differences(compared(with, without, name)),
             (QStringList{table + ": removed 1", "  " + row.key + " | " + row.cells}));
    without.execute({row.insert, row.change});
    QCOMPARE(differences(compared(with, without, name)),
             (QStringList{table + ": changed 1", "  " + row.key + " | " + row.changed}));
    without.execute({row.remove});
    QCOMPARE(differences(compared(with, without, name)),
             (QStringList{table + ": removed 1", "  " + row.key + " | " + row.cells}));
}

QTEST_GUILESS_MAIN(TestComparisonTables)

#include "tst_comparison_tables.moc"
