// SPDX-License-Identifier: MIT
#include "olddatabases.h"

#include "profiledatabase.h"
#include "profilesteps.h"

namespace {

QStringList lookupList(const QString &name)
{
    return {
        QString("create table %1_new(id integer primary key, abbr text COLLATE NOCASE, name text)")
            .arg(name),
        QString("insert into %1_new select id, %2, name from %1")
            .arg(name, name == "department" || name == "operator" ? "null" : "abbr"),
        QString("drop table %1").arg(name),
        QString("alter table %1_new rename to %1").arg(name),
        QString("create index if not exists %1_index on %1 (abbr)").arg(name),
    };
}

const QString newInfo =
    "create table info_new(id integer primary key, reagentId integer references reagent,"
    " itemId integer, subitemId integer, instrId text default 'wb1', item text, subitem text,"
    " unit text, x integer default 0, sul real, ul real, xmean real, ll real, sll real,"
    " lj integer default 0, mean real, sd real)";
const QString newSubsetting =
    "create table subsetting_new(id integer primary key, fileNo integer, subitemId integer,"
    " instrId text default 'wb1', execCheck integer default 1, checkMethod integer default 0,"
    " x integer default 0, sul real, ul real, xmean real, ll real, sll real,"
    " lj integer default 0, mean real, sd real, rule1_2s integer default 1,"
    " rule1_3s integer default 2, rule2_2s integer default 0, rule4_1s integer default 0,"
    " ruleR_4s integer default 0, rule10x integer default 0,"
    " unique (fileNo, subitemId, instrId) on conflict replace)";

} // namespace

QStringList dataChangesTo(int version)
{
    switch (version) {
    case 1:
        return QStringList{"alter table patient add sampleType text",
                           "alter table patient add hospitalNo text"}
        + lookupList("department") + lookupList("sex") + lookupList("treatmentRoom")
            + lookupList("diagnosis") + lookupList("doctor") + lookupList("operator")
            + QStringList{"create table detail(id integer primary key,"
                          " patientId integer references patient, item text, info text,"
                          " unique(patientId, item) on conflict replace)",
                          "create table version(version integer)"};
    case 2:
        return {"drop trigger on_delete_patient",
                "create trigger on_delete_patient after delete on patient begin"
                " delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;"
                " delete from result where old.id = result.patientId;"
                " delete from patientExtra where old.id = patientExtra.patientId;"
                " delete from curve where old.id = curve.patientId;"
                " delete from detail where old.id = detail.patientId; end"};
    case 3:
        return {
            "create table results(id integer primary key,"
            " patientId integer references patient, item text, subitem text, version integer,"
            " abbr text, code text, date date, time time, result real, unit text,"
            " flag integer, displayOrder integer, lowerMarkLimit real, upperMarkLimit real)",
            "create index results_index on results(patientId, item, subitem)",
            "insert into results select id, patientId, item, subitem, 1, abbr, code, null, null,"
            " result, unit, flag, displayOrder, lowerMarkLimit, upperMarkLimit from result",
            "create table checkedResult(id integer primary key,"
            " patientId integer references patient, item text, subitem text,"
            " resultsId integer references results,"
            " unique(patientId, item, subitem) on conflict replace)",
            "create index checkedResult_index on checkedResult(patientId, item, subitem)",
            "insert into checkedResult(patientId, item, subitem, resultsId)"
            " select patientId, item, subitem, id from result",
            "drop table result",
            "create table curve_new(id integer primary key,"
            " patientId integer references patient, item text, version integer, curve blob)",
            "insert into curve_new select id, patientId, item, 1, curve from curve",
            "drop table curve",
            "alter table curve_new rename to curve",
            "create table detail_new(id integer primary key,"
            " patientId integer references patient, item text, version integer, info text)",
            "insert into detail_new select id, patientId, item, 1, info from detail",
            "drop table detail",
            "alter table detail_new rename to detail",
            "drop trigger on_delete_patient",
            "create trigger on_delete_patient after delete on patient begin"
            " delete from patientExtra where old.id = patientExtra.patientId;"
            " delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;"
            " delete from results where old.id = results.patientId;"
            " delete from checkedResult where old.id = checkedResult.patientId;"
            " delete from curve where old.id = curve.patientId;"
            " delete from detail where old.id = detail.patientId; end"};
    case 4:
        return {"create view result as select results.id, results.patientId, results.item,"
                " results.subitem, abbr, code, result, unit, flag, displayOrder, lowerMarkLimit,"
                " upperMarkLimit from results, checkedResult"
                " where results.id = checkedResult.resultsId"
                " and results.patientId = checkedResult.patientId"};
    case 5:
        return {"alter table patient add memo text",
                "create table memo(id integer primary key, abbr text COLLATE NOCASE, name text)",
                "create index memo_index on memo (abbr)"};
    case 6:
        return {"alter table patient add printTime datetime",
                "alter table patient add outputTime datetime"};
    case 7:
        return {"alter table doctor add department text",
                "alter table treatmentRoom add department text"};
    case 8:
        return {"alter table patient add sampleTime datetime",
                "alter table patient add testTime datetime",
                "alter table patient add validateTime datetime"};
    case 9:
        return {"update patient set time = '08:01:02' where id = 1",
                "update patient set time = '07:59:59' where id = 5"};
    case 10:
        return {"alter table patient add instrId text"};
    case 11:
        return {"alter table results add deletedAt datetime",
                "alter table curve add deletedAt datetime",
                "alter table detail add deletedAt datetime"};
    case 12:
        return {"create table sampleAssayRequest(barcode text primary key, testItems text,"
                " patientInfo text, finished integer not null default 0, updatedTime datetime)"};
    default:
        return {};
    }
}

QStringList qcChangesTo(int version)
{
    switch (version) {
    case 1:
        return {"create table version(version integer)",
                "create table reagent_new(id integer primary key, reagentId integer,"
                " fileNo integer, name text, lotsNum text, expireDate date, level text)",
                "insert into reagent_new select id, reagentId, fileNo, name, lotsNum, expireDate,"
                " null from reagent",
                "drop table reagent",
                "alter table reagent_new rename to reagent",
                "create index reagent_index on reagent(fileNo, lotsNum, reagentId)"};
    case 2:
        return {"update qc set time = '07:45:10' where id = 1",
                "update qc set time = '07:46:01' where id = 3"};
    case 3:
        return {newInfo,
                "insert into info_new(id, reagentId, itemId, subitemId, item, subitem, unit, x,"
                " sul, ul, xmean, ll, sll) select * from info",
                "drop table info",
                "alter table info_new rename to info",
                "create index info_index on info(reagentId, itemId, subitemId, instrId)",
                newSubsetting,
                "insert into subsetting_new(id, fileNo, subitemId, x, sul, ul, xmean, ll, sll,"
                " rule1_2s, rule1_3s, rule2_2s) select * from subsetting",
                "drop table subsetting",
                "alter table subsetting_new rename to subsetting"};
    default:
        return {};
    }
}

QStringList syslogChangesTo(int version)
{
    switch (version) {
    case 1:
        return {"create table version(version integer)"};
    case 3:
        return {"update assay set time = '08:02:11' where id = 1",
                "update assay set time = '08:04:59' where id = 3",
                "update assay set time = '07:58:00' where id = 6",
                "update assay set time = '07:58:30' where id = 7"};
    case 4:
        return {"create table maintenanceRecords (id INTEGER PRIMARY KEY AUTOINCREMENT,"
                " instrUuid TEXT NOT NULL, maintenanceDate DATE NOT NULL,"
                " recordType TEXT NOT NULL, maintenanceItem TEXT NOT NULL,"
                " recorder TEXT NOT NULL)"};
    default:
        return {};
    }
}

void makeDatabaseAt(const TestDatabase &database, const QString &name, int version)
{
    if (name == "profile") {
        if (version < 10)
            makeProfileAt(database, version);
        else
            makeProfileAtStep(database, version);
        return;
    }
    const auto changesTo = name == "data" ? dataChangesTo
        : name == "qc"                    ? qcChangesTo
                                          : syslogChangesTo;
    database.load(name + "_v0.sql");
    for (int next = 1; next <= version; ++next)
        database.execute(QStringList{"pragma legacy_alter_table=on"} + changesTo(next));
    if (version > 0)
        database.execute({QString("insert into version values(%1)").arg(version)});
}
