// SPDX-License-Identifier: MIT
/// What the laboratory or the analyser software added to a database and no step touches.

#include "messagerecorder.h"
#include "olddatabases.h"
#include "upgrade.h"

#include <QTest>

namespace {

/// \return the statements that made the objects whose names begin with "site"
QStringList siteObjects(const TestDatabase &database)
{
    return database.rows("select type, name, tbl_name, sql from sqlite_master"
                         " where name like 'site%' order by name");
}

/// Adds a row for an object on each of the tables.
/// \param statement that makes it, with %1 for the table
void addRows(const QString &database, const QString &what, const QString &statement,
             const QStringList &tables)
{
    for (const QString &table : tables)
        QTest::addRow("%s: %s %s", qUtf8Printable(database), qUtf8Printable(what),
                      qUtf8Printable(table))
            << database << statement.arg(table);
}

const QString siteTrigger = "create trigger siteTrigger after insert on %1"
                            " begin select raise(ignore) where 0; end";

// The tables that get a new layout: they are dropped, and what stands on them goes with them.
const QStringList rebuiltOfProfile{"user",          "curve",       "assayItem", "assayCalibration",
                                   "assayTemplate", "currentCurve"};
const QStringList rebuiltOfData{"department", "sex",      "treatmentRoom", "diagnosis",
                                "doctor",     "operator", "result",        "curve"};
const QStringList rebuiltOfQc{"reagent", "info", "subsetting"};

} // namespace

class TestForeignObjects : public QObject {
    Q_OBJECT

private slots:
    void init();

    void anObjectSurvives_data();
    void anObjectSurvives();
    void anObjectOnARebuiltTableIsLost_data();
    void anObjectOnARebuiltTableIsLost();
    void aTableOfTheirOwnKeepsItsRows_data();
    void aTableOfTheirOwnKeepsItsRows();
};

void TestForeignObjects::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestForeignObjects::anObjectSurvives_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("object");

    const QString index = "create index siteIndex on %1";
    const QStringList ofProfile{"profile",    "reagentType",   "reagent",      "variable",
                                "curvePoint", "curveVariable", "curveReagent", "dataCheck"};
    addRows("profile", "index on", index,
            {"profile (value)", "reagentType (name)", "reagent (type)", "variable (value)",
             "curvePoint (curveId)", "curveVariable (name)", "curveReagent (lot)",
             "dataCheck (mark) where mark = 1"});
    addRows("profile", "trigger on", siteTrigger, ofProfile);
    addRows("profile", "view on", "create view siteView as select * from %1", ofProfile);
    addRows("profile", "view on the rebuilt", "create view siteView as select * from %1",
            rebuiltOfProfile);

    const QStringList ofData{"patient", "patientExtra", "exam"};
    addRows("data", "index on", index,
            {"patient (name)", "patientExtra (value)", "exam (item collate nocase desc)"});
    addRows("data", "trigger on", siteTrigger, ofData);
    addRows("data", "view on", "create view siteView as select * from %1", ofData);
    addRows("data", "view on the rebuilt", "create view siteView as select * from %1",
            rebuiltOfData);

    addRows("qc", "index on", index, {"qc (date)"});
    addRows("qc", "trigger on", siteTrigger, {"qc"});
    addRows("qc", "view on", "create view siteView as select * from %1", {"qc"});
    addRows("qc", "view on the rebuilt", "create view siteView as select * from %1", rebuiltOfQc);

    addRows("syslog", "index on", index, {"assay (time)", "event (level)"});
    addRows("syslog", "trigger on", siteTrigger, {"assay", "event"});
    addRows("syslog", "view on", "create view siteView as select * from %1", {"assay", "event"});

    for (const QString &name : QStringList{"profile", "data", "qc", "syslog"})
        addRows(name, "view on the missing", "create view siteView as select * from %1",
                {"siteMissing"});
}

/// Shows: REL-9
void TestForeignObjects::anObjectSurvives()
{
    QFETCH(QString, name);
    QFETCH(QString, object);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, 0);
    database.execute({object});
    const QStringList before = siteObjects(database);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(before.size(), 1);
    QCOMPARE(siteObjects(database), before);
    QCOMPARE(recorder.messages().filter("Warning"), QStringList());
}

void TestForeignObjects::anObjectOnARebuiltTableIsLost_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("object");
    QTest::addColumn<int>("stored");

    const auto add = [](const QString &name, int stored, const QString &table,
                        const QString &column) {
        QTest::addRow("%s %d: %s", qUtf8Printable(name), stored, qUtf8Printable(table))
            << name << QString("create index siteIndex on %1 (%2)").arg(table, column) << stored;
        QTest::addRow("%s %d: trigger on %s", qUtf8Printable(name), stored, qUtf8Printable(table))
            << name << siteTrigger.arg(table) << stored;
    };
    add("profile", 0, "user", "level");
    add("profile", 0, "curve", "date");
    add("profile", 0, "assayItem", "code");
    add("profile", 0, "assayCalibration", "method");
    add("profile", 0, "assayTemplate", "class");
    add("profile", 4, "currentCurve", "curveId");
    add("profile", 15, "assayItem", "code");
    add("data", 0, "department", "name");
    add("data", 0, "sex", "name");
    add("data", 0, "treatmentRoom", "name");
    add("data", 0, "diagnosis", "name");
    add("data", 0, "doctor", "name");
    add("data", 0, "operator", "name");
    add("data", 2, "result", "flag");
    add("data", 2, "curve", "item");
    add("data", 2, "detail", "info");
    add("qc", 0, "reagent", "name");
    add("qc", 2, "info", "unit");
    add("qc", 2, "subsetting", "x");
}

/// Shows: REL-9
void TestForeignObjects::anObjectOnARebuiltTableIsLost()
{
    QFETCH(QString, name);
    QFETCH(QString, object);
    QFETCH(int, stored);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, stored);
    database.execute({object});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(siteObjects(database), QStringList());
}

void TestForeignObjects::aTableOfTheirOwnKeepsItsRows_data()
{
    QTest::addColumn<QString>("name");

    for (const char *name : {"profile", "data", "qc", "syslog"})
        QTest::newRow(name) << name;
}

/// Shows: REL-9
void TestForeignObjects::aTableOfTheirOwnKeepsItsRows()
{
    QFETCH(QString, name);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, 0);
    database.execute({
        "create table siteNotes(id integer primary key autoincrement, note text unique, value,"
        " twice generated always as (value * 2))",
        "insert into siteNotes(id, note, value) values(7, 'O''Neill', 1.5), (9, '备注', x'00ff'),"
        " (12, null, '12.50')",
        "create table siteKeys(name text primary key, value) without rowid",
        "insert into siteKeys values('b', 2), ('a', '1')",
        "create index siteNotesByValue on siteNotes(value)",
        "create trigger siteNoteAdded after insert on siteNotes"
        " begin insert or replace into siteKeys values('added', new.id); end",
    });
    const QStringList objects = siteObjects(database);
    const QStringList notes = database.rows("select * from siteNotes");
    const QStringList keys = database.rows("select * from siteKeys");
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(objects.size(), 4);
    QCOMPARE(siteObjects(database), objects);
    QCOMPARE(database.rows("select * from siteNotes"), notes);
    QCOMPARE(database.rows("select * from siteKeys"), keys);
}

QTEST_GUILESS_MAIN(TestForeignObjects)
#include "tst_foreign_objects.moc"
