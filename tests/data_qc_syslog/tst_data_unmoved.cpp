// SPDX-License-Identifier: MIT
/// What cannot be moved into versions of results is kept, or at least reported.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "testdatabase.h"
#include "upgrade.h"

#include <QTest>

namespace {

QStringList warningsOf(const MessageRecorder &recorder)
{
    return recorder.messages().filter(QRegularExpression("^Warning: "));
}

/// Makes a database of a version, with changes that the laboratory or an accident may have made.
void makeChanged(const TestDatabase &database, int stored, const QStringList &changes)
{
    makeDatabaseAt(database, "data", stored);
    database.execute(QStringList{"pragma legacy_alter_table=on"} + changes);
}

/// \return the schema without the tables that were kept
QStringList newSchema(const TestDatabase &database)
{
    return database.comparableSchema().filter(QRegularExpression("^(?!.*_unmoved)"));
}

const QStringList detailsOfPatients{
    "insert into detail(id, patientId, item, info) values(3, 2, 'PT', '通道 1'), (4, 5, 'DD', null)"};

} // namespace

class TestDataUnmoved : public QObject {
    Q_OBJECT

private slots:
    void init();

    void keepsATableThatCannotMove_data();
    void keepsATableThatCannotMove();
    void changesNothingElse_data();
    void changesNothingElse();
    void keepsTheTableInASecondRun();
    void keepsWhatTheTableHasBesidesItsRows();
    void takesANameThatIsFree_data();
    void takesANameThatIsFree();
    void keepsATableWhoseRowsCannotBeCounted_data();
    void keepsATableWhoseRowsCannotBeCounted();
    void failsWhenTheTableCannotBeRenamed();
    void dropsAnEmptyTable_data();
    void dropsAnEmptyTable();
    void keepsNothingOfAView();
    void keepsRowsThatAnotherTableSwallows_data();
    void keepsRowsThatAnotherTableSwallows();
    void anOwnTableTakesAPlace_data();
    void anOwnTableTakesAPlace();
    void reportsValuesThatAreLeftBehind_data();
    void reportsValuesThatAreLeftBehind();
    void reportsNoColumnWithoutValues();
    void knowsCopiedColumnsInOtherLetters();
    void reportsNothingOfAKeptTable();
    void reportsNothingWhenOneOfTwoTablesIsMissing();
};

void TestDataUnmoved::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestDataUnmoved::keepsATableThatCannotMove_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QStringList>("failing"); // the statements' beginnings
    QTest::addColumn<QString>("warning");

    struct Case {
        QString name;
        QStringList changes;
        QString table;
        QStringList failing;
        QString warning;
    };
    const QList<Case> cases{
        {"result without code",
         {"alter table result rename column code to kode"},
         "result",
         {"insert into results ("},
         "Kept 8 rows of result in result_unmoved"},
        {"result without a column that the choice needs",
         {"alter table result rename column subitem to part"},
         "result",
         {"insert into results (", "insert into checkedResult("},
         "Kept 8 rows of result in result_unmoved"},
        {"result without an index and code",
         {"drop index result_index", "alter table result rename column code to kode",
          "delete from result where id > 1"},
         "result",
         {"insert into results (", "drop index result_index"},
         "Kept 1 rows of result in result_unmoved"},
        {"results with the same ids",
         dataChangesTo(3).mid(0, 1) + QStringList{"insert into results(id, item) values(9, 'old')"},
         "result",
         {"create table results(", "insert into results ("},
         "Kept 8 rows of result in result_unmoved"},
        {"results of another layout",
         {"create table results(id integer primary key, patientId, time, item, subitem, remark)"},
         "result",
         {"create table results(", "insert into results ("},
         "Kept 8 rows of result in result_unmoved"},
        {"checkedResult of another layout",
         {"create table checkedResult(id integer primary key, patientId, item, subitem)"},
         "result",
         {"create table checkedResult(", "insert into checkedResult("},
         "Kept 8 rows of result in result_unmoved"},
        {"curve without item",
         {"alter table curve rename column item to assay"},
         "curve",
         {"insert into curve_new ("},
         "Kept 6 rows of curve in curve_unmoved"},
        {"curve in other letters",
         {"alter table curve rename to other", "alter table other rename to CURVE",
          "alter table CURVE rename column item to assay"},
         "curve",
         {"insert into curve_new ("},
         "Kept 6 rows of curve in curve_unmoved"},
    };
    for (const int stored : {0, 1, 2}) {
        for (const Case &each : cases) {
            QTest::addRow("%d: %s", stored, qUtf8Printable(each.name))
                << stored << each.changes << each.table << each.failing << each.warning;
        }
    }
    for (const int stored : {1, 2}) // at version 0 there are no details yet
        QTest::addRow("%d: detail without info", stored)
            << stored
            << detailsOfPatients + QStringList{"alter table detail rename column info to text"}
            << "detail" << QStringList{"insert into detail_new ("}
            << "Kept 2 rows of detail in detail_unmoved";
}

/// Shows: DAT-6
void TestDataUnmoved::keepsATableThatCannotMove()
{
    QFETCH(int, stored);
    QFETCH(QStringList, changes);
    QFETCH(QString, table);
    QFETCH(QStringList, failing);
    QFETCH(QString, warning);
    const TestDatabase database("data.db");
    makeChanged(database, stored, changes);
    const QStringList before = database.table(table);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.table(table + "_unmoved"), before);
    QCOMPARE(database.table("version"), QStringList{QString::number(newestVersionOf("data"))});
    const QStringList warnings = warningsOf(recorder);
    QCOMPARE(warnings.size(), failing.size() + 1);
    QCOMPARE(warnings.constLast(), "Warning: " + warning);
    for (qsizetype i = 0; i < failing.size(); ++i)
        QVERIFY2(warnings.at(i).contains("[ \"" + failing.at(i)), qUtf8Printable(warnings.at(i)));
}

void TestDataUnmoved::changesNothingElse_data()
{
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<QStringList>("emptied"); // tables that stay empty since nothing arrives

    QTest::newRow("result") << QStringList{"alter table result rename column code to kode"}
                            << QStringList{"results"};
    QTest::newRow("curve") << QStringList{"alter table curve rename column item to assay"}
                           << QStringList{"curve"};
    QTest::newRow("detail") << QStringList{"alter table detail rename column info to text"}
                            << QStringList{"detail"};
    QTest::newRow("all") << QStringList{"alter table result rename column subitem to part",
                                        "alter table curve rename column item to assay",
                                        "alter table detail rename column info to text"}
                         << QStringList{"results", "checkedResult", "curve", "detail"};
}

/// Shows: DAT-6
void TestDataUnmoved::changesNothingElse()
{
    QFETCH(QStringList, changes);
    QFETCH(QStringList, emptied);
    const TestDatabase sound("data.db");
    makeChanged(sound, 2, detailsOfPatients);
    QVERIFY(upgrade(sound));
    const TestDatabase database("data.db");
    makeChanged(database, 2, detailsOfPatients + changes);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(newSchema(database), referenceSchema("data"));
    for (const char *table : {"patient", "patientExtra", "exam", "department", "sex", "doctor",
                              "results", "checkedResult", "curve", "detail", "version"})
        QCOMPARE(database.table(table),
                 emptied.contains(table) ? QStringList() : sound.table(table));
}

void TestDataUnmoved::keepsTheTableInASecondRun()
{
    const TestDatabase database("data.db");
    makeChanged(database, 0, {"alter table result rename column code to kode"});
    const MessageRecorder recorder;
    QVERIFY(upgrade(database));
    const QStringList before = database.content();

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(database.content(), before);
}

void TestDataUnmoved::keepsWhatTheTableHasBesidesItsRows()
{
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"alter table result rename column code to kode",
                 "create index byAbbr on result(abbr)",
                 "create trigger keepFlag before update of flag on result"
                 " begin select raise(abort, 'kept'); end"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(
        database.rows("select type, name from sqlite_master where tbl_name = 'result_unmoved'"
                      " order by name"),
        QStringList({"'index', 'byAbbr'", "'trigger', 'keepFlag'", "'table', 'result_unmoved'"}));
}

void TestDataUnmoved::takesANameThatIsFree_data()
{
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("name");

    QTest::newRow("table") << QStringList{"create table result_unmoved(id)"} << "result_unmoved2";
    QTest::newRow("view") << QStringList{"create view result_unmoved as select 1"}
                          << "result_unmoved2";
    QTest::newRow("index") << QStringList{"create index result_unmoved on patient(name)"}
                           << "result_unmoved2";
    QTest::newRow("trigger") << QStringList{"create trigger result_unmoved after delete on exam"
                                            " begin select 1; end"}
                             << "result_unmoved2";
    QTest::newRow("other letters")
        << QStringList{"create table RESULT_Unmoved(id)"} << "result_unmoved2";
    QTest::newRow("two") << QStringList{"create table result_unmoved(id)",
                                        "create table result_unmoved2(id)"}
                         << "result_unmoved3";
    QTest::newRow("the second only")
        << QStringList{"create table result_unmoved2(id)"} << "result_unmoved";
}

/// Shows: DAT-6
void TestDataUnmoved::takesANameThatIsFree()
{
    QFETCH(QStringList, taken);
    QFETCH(QString, name);
    const TestDatabase database("data.db");
    makeChanged(database, 2, QStringList{"alter table result rename column code to kode"} + taken);
    const QStringList before = database.table("result");
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder).constLast(), "Warning: Kept 8 rows of result in " + name);
    QCOMPARE(database.table(name), before);
}

void TestDataUnmoved::keepsATableWhoseRowsCannotBeCounted_data()
{
    QTest::addColumn<QString>("table");

    for (const char *table : {"result", "curve", "detail"})
        QTest::newRow(table) << table;
}

/// The keys have an order that only the program knows that made the table.
/// Shows: DAT-6
void TestDataUnmoved::keepsATableWhoseRowsCannotBeCounted()
{
    QFETCH(QString, table);
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"drop table " + table,
                 "create table " + table + "(id integer, item text primary key) without rowid",
                 "insert into " + table + " values(7, 'PT'), (8, 'TT')"});
    const QStringList rows = database.table(table);
    const QString change =
        "update sqlite_master set sql = replace(sql, '%1', '%2') where name = '%3'";
    database.execute({"pragma writable_schema=on",
                      change.arg("item text", "item text collate elsewhere", table)});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    const QString kept = table + "_unmoved";
    QCOMPARE(warningsOf(recorder).constLast(),
             "Warning: Kept the rows of " + table + " in " + kept);
    database.execute({"pragma writable_schema=on", change.arg(" collate elsewhere", "", kept)});
    QCOMPARE(database.table(kept), rows);
}

void TestDataUnmoved::failsWhenTheTableCannotBeRenamed()
{
    // SQLite does not rename a table whose own constraint names it
    verifyUpgradeFails("data", 2,
                       {"drop table curve",
                        "create table curve(id integer primary key, patientId, curve,"
                        " check(curve.patientId > 0))",
                        "insert into curve values(1, 2, x'00')"},
                       {"insert into curve_new (", "Kept 1 rows of curve in curve_unmoved",
                        "alter table curve rename to curve_unmoved"},
                       8);
}

void TestDataUnmoved::dropsAnEmptyTable_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("column");

    QTest::newRow("result") << "result"
                            << "code";
    QTest::newRow("curve") << "curve"
                           << "item";
    QTest::newRow("detail") << "detail"
                            << "info";
}

void TestDataUnmoved::dropsAnEmptyTable()
{
    QFETCH(QString, table);
    QFETCH(QString, column);
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"delete from " + table,
                 QString("alter table %1 rename column %2 to other").arg(table, column)});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder).size(), 1);
    QCOMPARE(database.comparableSchema(), referenceSchema("data"));
}

void TestDataUnmoved::keepsNothingOfAView()
{
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"alter table result rename to old", "drop index result_index",
                 "create view result as select id, patientId, item, subitem from old"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder).size(), 3); // the copy of the results, the index and the view
    QVERIFY2(warningsOf(recorder).constLast().contains("[ \"drop table result\" ]"),
             qUtf8Printable(warningsOf(recorder).constLast()));
    QCOMPARE(database.rows("select count(*) from old"), QStringList{"8"});
}

void TestDataUnmoved::keepsRowsThatAnotherTableSwallows_data()
{
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("warning");

    const QString keptResults = "Warning: Kept 8 rows of result in result_unmoved";
    const QString keptCurves = "Warning: Kept 6 rows of curve in curve_unmoved";
    QTest::newRow("results: a trigger ignores one") << dataChangesTo(3).mid(0, 1)
            + QStringList{"create trigger q before insert on results when new.id = 4"
                          " begin select raise(ignore); end"}
                                                    << "result" << keptResults;
    QTest::newRow("results: a constraint replaces some")
        << QStringList{"create table results(id integer primary key, patientId, item, subitem,"
                       " version, abbr, code, date, time, result, unit unique on conflict replace,"
                       " flag, displayOrder, lowerMarkLimit, upperMarkLimit)"}
        << "result" << keptResults;
    QTest::newRow("curve_new: a constraint ignores all but one")
        << QStringList{"create table curve_new(id integer primary key, patientId, item,"
                       " version unique on conflict ignore, curve)"}
        << "curve" << keptCurves;
    QTest::newRow("detail_new: a trigger ignores all")
        << detailsOfPatients
            + QStringList{"create table detail_new(id integer primary key, patientId, item,"
                          " version, info)",
                          "create trigger q before insert on detail_new"
                          " begin select raise(ignore); end"}
        << "detail"
        << "Warning: Kept 2 rows of detail in detail_unmoved";
}

void TestDataUnmoved::keepsRowsThatAnotherTableSwallows()
{
    QFETCH(QStringList, changes);
    QFETCH(QString, table);
    QFETCH(QString, warning);
    const TestDatabase database("data.db");
    makeChanged(database, 2, changes);
    const QStringList before = database.table(table);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder).size(), 2); // the table that could not be created, and this
    QCOMPARE(warningsOf(recorder).constLast(), warning);
    QCOMPARE(database.table(table + "_unmoved"), before);
}

void TestDataUnmoved::anOwnTableTakesAPlace_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QStringList>("failing");
    QTest::addColumn<QString>("warning");

    QTest::newRow("curve_new") << "curve"
                               << QStringList{"create table curve_new(", "insert into curve_new ("}
                               << "Kept 6 rows of curve in curve_unmoved";
    QTest::newRow("detail_new") << "detail"
                                << QStringList{"create table detail_new(",
                                               "insert into detail_new ("}
                                << "Kept 2 rows of detail in detail_unmoved";
}

/// Shows: DAT-6
void TestDataUnmoved::anOwnTableTakesAPlace()
{
    QFETCH(QString, table);
    QFETCH(QStringList, failing);
    QFETCH(QString, warning);
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                detailsOfPatients
                    + QStringList{"create table " + table + "_new(number, note)",
                                  "insert into " + table + "_new values(3, 'own'), (4, null)"});
    const QStringList before = database.table(table);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    const QStringList warnings = warningsOf(recorder);
    QCOMPARE(warnings.size(), failing.size() + 1);
    for (int i = 0; i < failing.size(); ++i)
        QVERIFY2(warnings.at(i).contains(failing.at(i)), qUtf8Printable(warnings.at(i)));
    QCOMPARE(warnings.constLast(), "Warning: " + warning);
    QCOMPARE(database.table(table), QStringList({"3, 'own', NULL", "4, NULL, NULL"}));
    QCOMPARE(database.table(table + "_unmoved"), before);
}

void TestDataUnmoved::reportsValuesThatAreLeftBehind_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<QStringList>("warnings");

    QTest::newRow("result") << 0
                            << QStringList{"alter table result add extra text",
                                           "update result set extra = 'x' where id < 6"}
                            << QStringList{"Warning: Left 5 values of result.extra behind"};
    QTest::newRow("result, in the columns' order")
        << 2
        << QStringList{"alter table result add zeta", "alter table result add alpha",
                       "alter table result add deletedAt", "update result set zeta = 0",
                       "update result set alpha = '' where id in (1, 12)"}
        << QStringList{"Warning: Left 8 values of result.zeta behind",
                       "Warning: Left 2 values of result.alpha behind"};
    QTest::newRow("curve") << 1
                           << QStringList{"alter table curve add \"two words\"",
                                          "update curve set \"two words\" = x'00' where id = 1"}
                           << QStringList{"Warning: Left 1 values of curve.two words behind"};
    QTest::newRow("detail") << 2
                            << detailsOfPatients
            + QStringList{R"(alter table detail add "the ""channel"".no")",
                          R"(update detail set "the ""channel"".no" = 5)"}
                            << QStringList{
                                   "Warning: Left 2 values of detail.the \"channel\".no behind"};
    QTest::newRow("a name of two lines")
        << 2
        << QStringList{"alter table curve add \"two\nlines\"",
                       "update curve set \"two\nlines\" = 0 where id = 1"}
        << QStringList{"Warning: Left 1 values of curve.two lines behind"};
    QTest::newRow("all") << 2
                         << detailsOfPatients
            + QStringList{"alter table result add extra",  "update result set extra = 1",
                          "alter table curve add version", "update curve set version = 4",
                          "alter table detail add extra",  "update detail set extra = 1"}
                         << QStringList{"Warning: Left 8 values of result.extra behind",
                                        "Warning: Left 6 values of curve.version behind",
                                        "Warning: Left 2 values of detail.extra behind"};
    QTest::newRow("a column that is computed")
        << 2
        << QStringList{"alter table curve add size integer"
                       " generated always as (length(curve)) virtual"}
        << QStringList{"Warning: Left 5 values of curve.size behind"};
}

/// Shows: DAT-6
void TestDataUnmoved::reportsValuesThatAreLeftBehind()
{
    QFETCH(int, stored);
    QFETCH(QStringList, changes);
    QFETCH(QStringList, warnings);
    const TestDatabase database("data.db");
    makeChanged(database, stored, changes);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder), warnings);
    QCOMPARE(database.comparableSchema(), referenceSchema("data"));
}

void TestDataUnmoved::reportsNoColumnWithoutValues()
{
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"alter table result add extra", "alter table curve add extra",
                 "alter table detail add extra text default 'of no row'"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder), QStringList());
}

void TestDataUnmoved::knowsCopiedColumnsInOtherLetters()
{
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"alter table result rename column lowerMarkLimit to LOWERMARKLIMIT",
                 "alter table curve rename column item to Item"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder), QStringList());
}

void TestDataUnmoved::reportsNothingOfAKeptTable()
{
    const TestDatabase database("data.db");
    makeChanged(database, 2,
                {"alter table result rename column code to kode", "alter table result add extra",
                 "update result set extra = 1"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder).filter("Left"), QStringList());
    QCOMPARE(database.rows("select extra from result_unmoved limit 1"), QStringList{"1"});
}

void TestDataUnmoved::reportsNothingWhenOneOfTwoTablesIsMissing()
{
    const TestDatabase database("data.db");
    makeChanged(database, 2, {"drop table curve", "alter table detail add extra"});
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(warningsOf(recorder).size(), 2); // the copy and the drop of the curves
}

QTEST_GUILESS_MAIN(TestDataUnmoved)
#include "tst_data_unmoved.moc"
