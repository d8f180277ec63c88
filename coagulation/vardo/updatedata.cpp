// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updatedata.h"

namespace coagulation {

UpdateData::UpdateData(QObject *parent)
    : UpdateBase(databaseFileName("%1data%2.db"), parent)
{
}

bool UpdateData::update_v8()
{
    if (version < 1 && !rebuildLookupLists())
        return false;
    if (version < 2 && !replaceDeleteTrigger())
        return false;
    if (version < 3 && !splitResultsIntoVersions())
        return false;
    if (version < 4)
        showCheckedResults();
    if (version < 5 && !addMemo())
        return false;
    if (version < 6 && !addReportTimes())
        return false;
    if (version < 7 && !addDepartments())
        return false;
    return version >= 8 || addSampleTimes();
}

bool UpdateData::rebuildLookupLists()
{
    // the columns may exist already
    tryAll({
        SQL("alter table patient add sampleType text"),
        SQL("alter table patient add hospitalNo text"),
    });

    // clang-format off
    const QString lookupList = "(id integer primary key, abbr text COLLATE NOCASE, name text)";
    return execAll({SQL("create table department_new" + lookupList)})
        && rebuildTable("department_new", "department")
        && execAll({SQL("create index if not exists department_index on department (abbr)")})
        && execAll({SQL("create table sex_new" + lookupList)})
        && rebuildTable("sex_new", "sex")
        && execAll({SQL("create index if not exists sex_index on sex (abbr)")})
        && execAll({SQL("create table treatmentRoom_new" + lookupList)})
        && rebuildTable("treatmentRoom_new", "treatmentRoom")
        && execAll({SQL("create index if not exists treatmentRoom_index on treatmentRoom (abbr)")})
        && execAll({SQL("create table diagnosis_new" + lookupList)})
        && rebuildTable("diagnosis_new", "diagnosis")
        && execAll({SQL("create index if not exists diagnosis_index on diagnosis (abbr)")})
        && execAll({SQL("create table doctor_new" + lookupList)})
        && rebuildTable("doctor_new", "doctor")
        && execAll({SQL("create index if not exists doctor_index on doctor (abbr)")})
        && execAll({SQL("create table operator_new" + lookupList)})
        && rebuildTable("operator_new", "operator")
        && execAll({SQL("create index if not exists operator_index on operator (abbr)")})
        && execAll({
            SQL(R"(create table detail(
    id integer primary key,
    patientId integer references patient,
    item text,
    info text,
    unique(patientId, item) on conflict replace
))"),
            SQL("create table version(version integer)"),
        });
    // clang-format on
}

bool UpdateData::replaceDeleteTrigger()
{
    return execAll({
        SQL("drop trigger on_delete_patient"),
        SQL(R"(create trigger on_delete_patient after delete on patient
begin
    delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;
    delete from result where old.id = result.patientId;
    delete from patientExtra where old.id = patientExtra.patientId;
    delete from curve where old.id = curve.patientId;
    delete from detail where old.id = detail.patientId;
end)"),
    });
}

bool UpdateData::splitResultsIntoVersions()
{
    // Best effort: an old database may lack some of these tables, and must get the new layout all the
    // same. A table whose rows did not arrive there is kept under another name.
    const bool resultsAreNew = tryAll({
        SQL(R"(create table results(
    id integer primary key,
    patientId integer references patient,
    item text,
    subitem text,
    version integer,
    abbr text,
    code text,
    date date,
    time time,
    result real,
    unit text,
    flag integer,
    displayOrder integer,
    lowerMarkLimit real,
    upperMarkLimit real
))"),
    });
    tryAll({SQL("create index results_index on results(patientId, item, subitem)")});
    // every old result becomes version 1
    const bool resultsArrived = tryMove(
        SQL("insert into results ( id, patientId, item, subitem, version, abbr, code, result, unit,"
            " flag, displayOrder, lowerMarkLimit, upperMarkLimit)"
            " select id, patientId, item, subitem, 1, abbr, code, result, unit,"
            " flag, displayOrder, lowerMarkLimit, upperMarkLimit from result"),
        "result", "results", resultsAreNew);
    tryAll({
        SQL(R"(create table checkedResult(
    id integer primary key,
    patientId integer references patient,
    item text,
    subitem text,
    resultsId integer references results,
    unique(patientId, item, subitem) on conflict replace
))"),
        SQL("create index checkedResult_index on checkedResult(patientId, item, subitem)"),
    });
    const bool choicesArrived = tryAll({
        SQL("insert into checkedResult( patientId, item, subitem, resultsId)"
            " select patientId, item, subitem, id from result"),
    });
    tryAll({SQL("drop index result_index")});
    if (!dropOrKeep(SQL("drop table result"), "result", resultsArrived && choicesArrived,
                    {"id", "patientId", "item", "subitem", "abbr", "code", "result", "unit", "flag",
                     "displayOrder", "lowerMarkLimit", "upperMarkLimit"}))
        return false;

    const bool curvesAreNew = tryAll({
        SQL(R"(create table curve_new(
    id integer primary key,
    patientId integer references patient,
    item text,
    version integer,
    curve blob
))"),
    });
    const bool curvesArrived =
        tryMove(SQL("insert into curve_new ( id, patientId, item, version, curve)"
                    " select id, patientId, item, 1, curve from curve"),
                "curve", "curve_new", curvesAreNew);
    if (!dropOrKeep(SQL("drop table curve"), "curve", curvesArrived,
                    {"id", "patientId", "item", "curve"}))
        return false;

    tryAll({SQL("alter table curve_new rename to curve")});
    const bool detailsAreNew = tryAll({
        SQL(R"(create table detail_new(
    id integer primary key,
    patientId integer references patient,
    item text,
    version integer,
    info text
))"),
    });
    const bool detailsArrived =
        tryMove(SQL("insert into detail_new ( id, patientId, item, version, info)"
                    " select id, patientId, item, 1, info from detail"),
                "detail", "detail_new", detailsAreNew);
    if (!dropOrKeep(SQL("drop table detail"), "detail", detailsArrived,
                    {"id", "patientId", "item", "info"}))
        return false;

    tryAll({
        SQL("alter table detail_new rename to detail"),

        SQL("drop trigger on_delete_patient"),
        SQL(R"(create trigger on_delete_patient after delete on patient
begin
    delete from patientExtra where old.id = patientExtra.patientId;
    delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;
    delete from results where old.id = results.patientId;
    delete from checkedResult where old.id = checkedResult.patientId;
    delete from curve where old.id = curve.patientId;
    delete from detail where old.id = detail.patientId;
end)"),
    });
    return true;
}

/// Copies the rows of a table; a failure is ignored.
/// \param isNew whether `to` has just been created. Otherwise it is somebody else's, whose constraints or
///              triggers may swallow rows without a failure
/// \return whether every row arrived
bool UpdateData::tryMove(const Statement &insert, const QString &from, const QString &to,
                         bool isNew)
{
    if (isNew)
        return tryAll({insert});
    const std::optional<qint64> before = countRows(to);
    if (!tryAll({insert}))
        return false;
    const std::optional<qint64> after = countRows(to);
    const std::optional<qint64> expected = countRows(from);
    return before && after && expected && *after - *before == *expected;
}

/// Drops a table whose rows have been copied, or keeps it under another name if some have not.
/// \param drop the statement for it; a failure is ignored
/// \param arrived whether every copy succeeded
/// \param copied the columns that were copied
/// \return false when the table cannot be kept
bool UpdateData::dropOrKeep(const Statement &drop, const QString &table, bool arrived,
                            const QStringList &copied)
{
    if (arrived)
        reportLeftValues(table, copied);
    else if (const std::optional<qint64> rows = countRows(table); rows != 0) // or nobody knows
        return keepUnmoved(table, rows);
    tryAll({drop});
    return true;
}

void UpdateData::showCheckedResults()
{
    tryAll({
        SQL("drop view if exists result"),
        SQL(R"(create view result as
select results.id, results.patientId, results.item, results.subitem, abbr, code, result, unit, flag,
    displayOrder, lowerMarkLimit, upperMarkLimit
from results, checkedResult
where results.id = checkedResult.resultsId and results.patientId = checkedResult.patientId)"),
    });
}

bool UpdateData::addMemo()
{
    if (!execAll({SQL("alter table patient add memo text")}))
        return false;

    // the table and its index may exist already
    tryAll({
        SQL(R"(-- remarks
create table memo(
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
))"),
        SQL("create index memo_index on memo (abbr)"),
    });
    return true;
}

bool UpdateData::addReportTimes()
{
    return execAll({
        SQL("alter table patient add printTime datetime"),
        SQL("alter table patient add outputTime datetime"),
    });
}

bool UpdateData::addDepartments()
{
    return execAll({
        SQL("alter table doctor add department text"),
        SQL("alter table treatmentRoom add department text"),
    });
}

bool UpdateData::addSampleTimes()
{
    return execAll({
        SQL("alter table patient add sampleTime datetime"),
        SQL("alter table patient add testTime datetime"),
        SQL("alter table patient add validateTime datetime"),
    });
}

bool UpdateData::update_v9()
{
    return removeDecimals(
               "patient",
               {"time", "printTime", "outputTime", "sampleTime", "testTime", "validateTime"})
        && removeDecimals("results", {"time"});
}

bool UpdateData::update_v10()
{
    return execAll({SQL("alter table patient add instrId text")});
}

bool UpdateData::update_v11()
{
    return execAll({
        SQL("alter table results add deletedAt datetime"),
        SQL("alter table curve   add deletedAt datetime"),
        SQL("alter table detail  add deletedAt datetime"),
    });
}

bool UpdateData::update_v12()
{
    return execAll({SQL(R"(create table sampleAssayRequest(
    barcode text primary key,
    testItems text,
    patientInfo text,
    finished integer not null default 0,
    updatedTime datetime
))")});
}

} // namespace coagulation
