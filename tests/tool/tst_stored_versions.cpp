// SPDX-License-Identifier: MIT
/// Every database from every version that a workstation may have, upgraded by the real binary.

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "profilesteps.h"
#include "today.h"
#include "toolrun.h"
#include "upgrade.h"

#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateprofile.h"
#include "coagulation/vardo/updateqc.h"
#include "coagulation/vardo/updatesyslog.h"

#include <QMetaMethod>
#include <QSqlDatabase>
#include <QTest>

namespace {

/// A row that the laboratory made: how it comes into a database, and what is to be read of it.
struct OwnRow {
    QString insert;
    QString query;
    QString row;
    int from = 0;   ///< the first version whose layout takes the statement
    int below = 99; ///< the first version whose layout does not take it any more
};

struct Database {
    QString name;
    QList<OwnRow> ownRows;
};

const QList<Database> databases{
    {"profile",
     {
         {"insert into profile values('site/note', 'Dr. O''Neill: \"call\" 3.5')",
          "select * from profile where name = 'site/note'",
          "'site/note', 'Dr. O''Neill: \"call\" 3.5'"},
         {"insert into profile values('site/number', 7)",
          "select * from profile where name = 'site/number'", "'site/number', 7"},
         {"insert into user(id, name, password, level) values(77, '夜班', 'x''y', 3)",
          "select * from user where id = 77", "77, '夜班', 'x''y', 3, 0"},
         {"insert into reagentType values(9, 'Site')", "select * from reagentType where id = 9",
          "9, 'Site'"},
         {"insert into reagent values(900, 'SITE-1', 9, 'site''s reagent', 1, 2, 3)",
          "select * from reagent where id = 900", "900, 'SITE-1', 9, 'site''s reagent', 1, 2, 3"},
         {"insert into assayTemplate(id, name, displayOrder, funX) values(900, 'SITE', 1, 'Log')",
          "select * from assayTemplate where id = 900",
          "900, 'SITE', 'SITE', NULL, 1, NULL, NULL, 'Log', NULL", 0, 8},
         {"insert into assayTemplate(id, name, displayName, displayOrder, funX)"
          " values(900, 'SITE', 'Site''s', 1, 'Log')",
          "select * from assayTemplate where id = 900",
          "900, 'SITE', 'Site''s', NULL, 1, NULL, NULL, 'Log', NULL", 8},
         {"insert into assayItem(id, assayTemplateId, name, method, unit, expr, precision,"
          " displayOrder, abbr, code, lowerNormal, upperNormal)"
          " values(9000, 900, 'X', 2, 'u', 'T*2', 3, 1, 'SITE-X', 'site''s', 1.5, 2.5)",
          "select id, assayTemplateId, name, method, unit, expr, precision, displayOrder, abbr,"
          " code, lowerNormal, upperNormal, lowerMeasurement from assayItem where id = 9000",
          "9000, 900, 'X', 2, 'u', 'T*2', 3, 1, 'SITE-X', 'site''s', 1.5, 2.5, NULL"},
         {"insert into assayCalibration values(900, 900, 'SITE', 0, 'T>1', 'OD', 'P', 'Log',"
          " 'Linear', null, 'Log')",
          "select * from assayCalibration where id = 900",
          "900, 900, 'SITE', 0, 'T>1', 'OD', 'P', 'Log', 'Linear', NULL, 'Log'"},
         {"insert into variable values(900, 900, 'factor', null)",
          "select * from variable where id = 900", "900, 900, 'factor', NULL"},
         {"insert into dataCheck(assayTemplateId, mark, markItemFullName, markLower)"
          " values(900, 1, 'SITE.X', 0.5)",
          "select assayTemplateId, mark, markItemFullName, markLower, report from dataCheck"
          " where assayTemplateId = 900",
          "900, 1, 'SITE.X', 0.5, 0"},
         {"insert into curve(id, name, xUnit, yUnit, correlation, date, xFun, yFun, a, b, valid,"
          " lotsNum) values(900, 'SITE', 'OD', '%', 0.5, '2020-02-29', 1, 0, 1.25, -2, 1, 'L''9')",
          "select id, name, xUnit, yUnit, correlation, date, xFun, yFun, a, b, c, d, e, valid,"
          " lotsNum, expirationDate from curve where id = 900",
          "900, 'SITE', 'OD', '%', 0.5, '2020-02-29', 1, 0, 1.25, -2.0, NULL, NULL, NULL, 1,"
          " 'L''9', '2040-02-29'",
          0, 23},
         {"insert into curve(id, name, a, valid, expirationDate)"
          " values(900, 'SITE', 1.25, 1, '2030-01-01')",
          "select id, name, a, valid, expirationDate from curve where id = 900",
          "900, 'SITE', 1.25, 1, '2030-01-01'", 23},
         {"insert into curvePoint values(9001, 900, 1.5, 2.5, 3.5, 4)",
          "select * from curvePoint where curveId = 900", "9001, 900, 1.5, 2.5, 3.5, 4"},
         {"insert into curveVariable values(900, 'ISI', 1.5)",
          "select * from curveVariable where curveId = 900", "900, 'ISI', 1.5"},
         {"insert into curveReagent values(900, 'site''s reagent', 'L9')",
          "select * from curveReagent where curveId = 900", "900, 'site''s reagent', 'L9'"},
         {"insert into curveInfo values(900, 'temperature', 36.5)",
          "select * from curveInfo where curveId = 900", "900, 'temperature', 36.5", 1},
         {"insert into currentCurve(id, name, curveId) values(900, 'SITE', 900)",
          "select * from currentCurve where curveId = 900", "900, 'wb1', 'SITE', 900", 4, 15},
         {"insert into currentCurve values(900, 'wb2', 'SITE', 900)",
          "select * from currentCurve where curveId = 900", "900, 'wb2', 'SITE', 900", 15},
     }},
    {"data",
     {
         {"insert into patient(id, sampleNo, date, time, name, sex, age, barcode)"
          " values(900, '0900', '2020-02-29', '23:59:58', 'O''Brien', '女', '3月', '00900')",
          "select id, sampleNo, date, time, name, sex, age, barcode, instrId from patient"
          " where id = 900",
          "900, '0900', '2020-02-29', '23:59:58', 'O''Brien', '女', '3月', '00900', NULL"},
         {"insert into patientExtra values(900, 900, '床号', '7')",
          "select * from patientExtra where id = 900", "900, 900, '床号', '7'"},
         {"insert into exam values(900, '0900', '2020-02-29', 'PT')",
          "select * from exam where id = 900", "900, '0900', '2020-02-29', 'PT'"},
         {"insert into result values(900, 900, 'PT', 'T', 'PT', '凝血', 12.5, 's', 3, 1, 9, 14)",
          "select * from results where id = 900",
          "900, 900, 'PT', 'T', 1, 'PT', '凝血', NULL, NULL, 12.5, 's', 3, 1, 9.0, 14.0, NULL", 0,
          3},
         {"insert into results(id, patientId, item, subitem, version, time, result)"
          " values(900, 900, 'PT', 'T', 2, '23:59:58', 12.5)",
          "select id, patientId, item, subitem, version, time, result from results where id = 900",
          "900, 900, 'PT', 'T', 2, '23:59:58', 12.5", 3},
         {"insert into checkedResult(patientId, item, subitem, resultsId)"
          " values(900, 'PT', 'T', 900)",
          "select patientId, item, subitem, resultsId from checkedResult where patientId = 900",
          "900, 'PT', 'T', 900", 3},
         {"insert into curve(id, patientId, item, curve) values(900, 900, 'PT', x'00ff10')",
          "select id, patientId, item, curve from curve where id = 900",
          "900, 900, 'PT', X'00FF10'"},
         {"insert into detail(id, patientId, item, info) values(900, 900, 'PT', '通道 1')",
          "select id, patientId, item, info from detail where id = 900", "900, 900, 'PT', '通道 1'",
          1},
         {"insert into department(id, name) values(900, '急诊''')",
          "select * from department where id = 900", "900, NULL, '急诊'''"},
         {"insert into sex(id, abbr, name) values(900, 'x', 'X')",
          "select * from sex where id = 900", "900, 'x', 'X'"},
         {"insert into treatmentRoom(id, abbr, name) values(900, 'r', 'R')",
          "select * from treatmentRoom where id = 900", "900, 'r', 'R', NULL"},
         {"insert into diagnosis(id, abbr, name) values(900, 'd', 'D')",
          "select * from diagnosis where id = 900", "900, 'd', 'D'"},
         {"insert into doctor(id, abbr, name) values(900, 'h', 'Dr. Who')",
          "select * from doctor where id = 900", "900, 'h', 'Dr. Who', NULL"},
         {"insert into operator(id, name) values(900, '王')",
          "select * from operator where id = 900", "900, NULL, '王'"},
         {"insert into memo values(900, 'm', '溶血')", "select * from memo where id = 900",
          "900, 'm', '溶血'", 5},
         {"insert into sampleAssayRequest(barcode, testItems) values('900', 'PT')",
          "select * from sampleAssayRequest where barcode = '900'", "'900', 'PT', NULL, 0, NULL",
          12},
     }},
    {"qc",
     {
         {"insert into reagent(id, reagentId, fileNo, name, lotsNum, expireDate)"
          " values(900, 9, 90, 'site''s', 'L9', '2020-02-29')",
          "select * from reagent where id = 900",
          "900, 9, 90, 'site''s', 'L9', '2020-02-29', NULL"},
         {"insert into info(id, reagentId, itemId, subitemId, item, subitem, unit, x, xmean)"
          " values(900, 900, 1, 2, 'PT', 'T', 's', 1, 12.5)",
          "select id, reagentId, itemId, subitemId, instrId, item, subitem, unit, x, xmean, lj"
          " from info where id = 900",
          "900, 900, 1, 2, 'wb1', 'PT', 'T', 's', 1, 12.5, 0"},
         {"insert into subsetting(id, fileNo, subitemId, x, rule1_2s, rule1_3s, rule2_2s)"
          " values(900, 90, 2, 1, 2, 1, 2)",
          "select id, fileNo, subitemId, instrId, x, rule1_2s, rule1_3s, rule2_2s, rule10x"
          " from subsetting where id = 900",
          "900, 90, 2, 'wb1', 1, 2, 1, 2, 0"},
         {"insert into qc values(900, 900, '2020-02-29', '23:59:58', 12.5, 1, '复查 1.5')",
          "select * from qc where id = 900",
          "900, 900, '2020-02-29', '23:59:58', 12.5, 1, '复查 1.5'"},
     }},
    {"syslog",
     {
         {"insert into assay values(900, '2020-02-29', '23:59:58', 'wb2', 'PT', '0900', '1.5')",
          "select * from assay where id = 900",
          "900, '2020-02-29', '23:59:58', 'wb2', 'PT', '0900', '1.5'"},
         {"insert into event values(900, '23:59:58.5', 3, 'door''s open')",
          "select * from event where id = 900", "900, '23:59:58.5', 3, 'door''s open'"},
         {"insert into maintenanceRecords values(900, 'wb1', '2020-02-29', 'weekly', 'needle',"
          " '王')",
          "select * from maintenanceRecords where id = 900",
          "900, 'wb1', '2020-02-29', 'weekly', 'needle', '王'", 4},
     }},
};

const Database &databaseNamed(const QString &name)
{
    return *std::find_if(databases.begin(), databases.end(),
                         [&name](const Database &database) { return database.name == name; });
}

/// \return the log of a run on one database, without the lines of the three missing ones
QStringList expectedLog(const TestDatabase &database, const QString &name, int stored)
{
    return QStringList{"Debug: Updating " + database.path()} + stepLog(name, stored)
        + QStringList{QString("Debug: Updated version to %1").arg(newestVersionOf(name))};
}

QStringList linesOfTheEngine(const QStringList &log)
{
    return log.filter(QRegularExpression("^Debug: Updat|^Debug: update_v|^Debug: Failed"));
}

/// \return a query for the rows that refer to a row which does not exist
QString brokenReferencesOf(const QString &name, int stored)
{
    QString all = "select * from pragma_foreign_key_check";
    // The row of the anti-Xa template does not go into the table of versions 8 and 9; what refers to
    // it does.
    if (name != "profile" || (stored != 8 && stored != 9))
        return all;
    return all
        + " where not ('assayItem' = \"table\""
          " and rowid in (select id from assayItem where assayTemplateId = 22))"
          " and not ('assayCalibration' = \"table\""
          " and rowid in (select id from assayCalibration where assayTemplateId = 22))";
}

/// Runs one step after the other, each by an updater of its own and with its version stored.
template <typename Updater>
bool runStepByStep(const TestDatabase &database, const QList<int> &steps)
{
    coagulation::fileNameAffixes() = {database.folderPath() + '/', ""};
    for (const int step : steps) {
        Updater updater;
        bool passed = false;
        if (!QSqlDatabase::database().transaction()
            || !QMetaObject::invokeMethod(&updater, qPrintable(QString("update_v%1").arg(step)),
                                          Qt::DirectConnection, Q_RETURN_ARG(bool, passed))
            || !passed || !QSqlDatabase::database().commit())
            return false;
        database.execute(
            {"delete from version", QString("insert into version values(%1)").arg(step)});
    }
    return true;
}

} // namespace

class TestStoredVersions : public QObject {
    Q_OBJECT

private slots:
    void init();

    void everyVersionIsUpgraded_data();
    void everyVersionIsUpgraded();
    void aVersionAboveTheNewestIsLowered_data();
    void aVersionAboveTheNewestIsLowered();
    void stepByStepIsTheSameAsOneRun_data();
    void stepByStepIsTheSameAsOneRun();
};

void TestStoredVersions::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestStoredVersions::everyVersionIsUpgraded_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("stored");

    for (const Database &kind : databases) {
        for (int version = 0; version <= newestVersionOf(kind.name); ++version)
            QTest::addRow("%s %d", qUtf8Printable(kind.name), version) << kind.name << version;
    }
}

/// Shows: ENG-13
void TestStoredVersions::everyVersionIsUpgraded()
{
    QFETCH(QString, name);
    QFETCH(int, stored);
    const Database &kind = databaseNamed(name);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, stored);
    for (const OwnRow &own : kind.ownRows) {
        if (stored >= own.from && stored < own.below)
            database.execute({own.insert});
    }
    const QStringList brokenReferences = database.rows(brokenReferencesOf(name, stored));

    const ToolRun first = runToolOn(VARDO, database.folderPath());
    const QStringList upgraded = database.content();
    const ToolRun second = runToolOn(VARDO, database.folderPath());

    QCOMPARE(first.exitCode, 0);
    QCOMPARE(linesOfTheEngine(first.log), expectedLog(database, name, stored));
    QCOMPARE(database.comparableSchema(), referenceSchema(name));
    QCOMPARE(database.rows("select * from pragma_integrity_check"), QStringList{"'ok'"});
    for (const QString &reference : database.rows(brokenReferencesOf(name, stored)))
        QVERIFY2(brokenReferences.contains(reference), qUtf8Printable(reference));
    for (const OwnRow &own : kind.ownRows) {
        if (stored >= own.from && stored < own.below)
            QCOMPARE(database.rows(own.query), QStringList{own.row});
    }

    QCOMPARE(second.exitCode, 0);
    QCOMPARE(linesOfTheEngine(second.log), expectedLog(database, name, newestVersionOf(name)));
    QCOMPARE(database.content(), upgraded);
}

void TestStoredVersions::aVersionAboveTheNewestIsLowered_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("stored");

    for (const Database &kind : databases) {
        for (const int version : {newestVersionOf(kind.name) + 1, 1000000}) {
            QTest::addRow("%s %d", qUtf8Printable(kind.name), version) << kind.name << version;
        }
    }
}

/// Shows: ENG-4
void TestStoredVersions::aVersionAboveTheNewestIsLowered()
{
    QFETCH(QString, name);
    QFETCH(int, stored);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, newestVersionOf(name));
    const QStringList newest = database.content();
    database.execute({QString("update version set version = %1").arg(stored)});

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(linesOfTheEngine(run.log), expectedLog(database, name, stored));
    QCOMPARE(database.content(), newest);
}

void TestStoredVersions::stepByStepIsTheSameAsOneRun_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<std::function<bool(const TestDatabase &, const QList<int> &)>>("runSteps");

    const auto add = [](const QString &name, const auto &runSteps) {
        QTest::newRow(qUtf8Printable(name))
            << name << std::function<bool(const TestDatabase &, const QList<int> &)>(runSteps);
    };
    add("profile", runStepByStep<coagulation::UpdateProfile>);
    add("data", runStepByStep<coagulation::UpdateData>);
    add("qc", runStepByStep<coagulation::UpdateQc>);
    add("syslog", runStepByStep<coagulation::UpdateSyslog>);
}

/// Shows: ENG-14
void TestStoredVersions::stepByStepIsTheSameAsOneRun()
{
    QFETCH(QString, name);
    using RunSteps = std::function<bool(const TestDatabase &, const QList<int> &)>;
    QFETCH(RunSteps, runSteps);
    const TestDatabase inOneRun(name + ".db");
    makeDatabaseAt(inOneRun, name, 0);
    QCOMPARE(runToolOn(VARDO, inOneRun.folderPath()).exitCode, 0);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, 0);
    const MessageRecorder recorder;

    const bool passed = runSteps(database, stepsOf(name));

    QVERIFY(passed);
    QCOMPARE(withToday(database.content()), withToday(inOneRun.content()));
}

QTEST_GUILESS_MAIN(TestStoredVersions)
#include "tst_stored_versions.moc"
