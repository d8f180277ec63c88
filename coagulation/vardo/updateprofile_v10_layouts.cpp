// SPDX-License-Identifier: MIT
/// Table layouts of version 10.

#include "coagulation/vardo/updateprofile.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/execute.h"

#include <QDebug>
#include <QHash>
#include <QSqlField>
#include <QSqlQuery>

namespace coagulation {

bool UpdateProfile::addCurveInfo()
{
    if (!execAll({SQL(R"(create table user_new(
    id integer primary key,
    name text unique COLLATE NOCASE,
    password text,
    level integer default 0,
    hide integer default 0
))")}) || !rebuildTable("user_new", "user")
        || !execAll({SQL(R"(-- curve debug info, since v1
create table curveInfo(
    curveId integer references curve,
    name text not null,
    value,
    unique (curveId, name) on conflict replace
))")}))
        return false;

    tryAll({SQL("drop trigger if exists deleteCurve")});
    return execAll({
        SQL(R"(create trigger deleteCurve after delete on curve
begin
    delete from curvePoint where curvePoint.curveId = old.id;
    delete from curveVariable where curveVariable.curveId = old.id;
    delete from curveReagent where curveReagent.curveId = old.id;
    delete from curveInfo where curveInfo.curveId = old.id;
end)"),
        SQL("create table version(version integer)"),
    });
}

bool UpdateProfile::addCurrentCurve()
{
    // valid: null or 0 invalid
    if (!execAll({SQL(R"(-- standard curve
create table curve_new (
    id integer primary key,
    name text not null,
    xUnit text,
    yUnit text,
    correlation real,
    date date,
    xFun integer,
    yFun integer,
    a real,
    b real,
    c real,
    d real,
    e real,
    valid integer,
    instrUuid text,
    lotsNum text
))")}) || !rebuildTable("curve_new", "curve"))
        return false;

    tryAll({
        SQL(R"(-- currentCurve
create table currentCurve (
    id integer primary key,
    name text unique on conflict replace,
    curveId integer references curve
))"),
        SQL("drop index if exists curve_index"),
        SQL("drop trigger if exists deleteCurve"),
        SQL(R"(create trigger deleteCurve after delete on curve
begin
    delete from curvePoint where curvePoint.curveId = old.id;
    delete from curveVariable where curveVariable.curveId = old.id;
    delete from curveReagent where curveReagent.curveId = old.id;
    delete from curveInfo where curveInfo.curveId = old.id;
    delete from currentCurve where currentCurve.curveId = old.id;
end)"),
    });
    return true;
}

bool UpdateProfile::addItemRanges()
{
    // method: 0 clotting time, 1 calibration, 2 calculation, 3 absorbance
    // upperredilution: version 16 spells it upperRedilution; until then the column has this name
    return execAll({
               SQL(R"(-- assay subitem
create table assayItem_new (
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text not null,
    method integer,
    unit text,
    expr text,
    precision integer default 2,
    displayOrder integer,
    abbr text,
    code text,
    lowerNormal real default 0,
    upperNormal real default 0,
    lowerReport real default 0,
    upperReport real default 0,
    lowerRepeat real default 0,
    upperRepeat real default 0,
    lowerRedilution real default 0,
    upperredilution real default 0,
    visible integer default 1
))"),
               SQL("DROP TRIGGER IF EXISTS afterDeleteAssayTemplate"),
           })
        && rebuildTable("assayItem_new", "assayItem")
        && execAll({SQL(R"(create trigger afterDeleteAssayTemplate after delete on assayTemplate
begin
    delete from variable where variable.assayTemplateId = old.id;
    delete from assayItem where assayItem.assayTemplateId = old.id;
    delete from dataCheck where dataCheck.assayTemplateId = old.id;
end;)")});
}

bool UpdateProfile::rebuildCalibrations()
{
    // method: as zu::RegressionMethod; the functions: null, 'Linear' or 'Log'
    return execAll({SQL(R"(-- assay calibration
create table assayCalibration_new(
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text not null unique,
    method integer,
    condition text,
    caliX text,
    caliY text,
    funX text,
    funY text,
    dispX text,
    dispY text
))")}) && rebuildTable("assayCalibration_new", "assayCalibration");
}

bool UpdateProfile::makeReagentIdsUnique()
{
    if (!execAll({SQL("update reagent set reagentId=null where reagentId=''")}))
        return false;

    QSqlQuery reagents;
    reagents.setForwardOnly(true);
    if (!execute(reagents, "select id, reagentId from reagent")) {
        logSqlError(reagents, SOURCE_LINE);
        return false;
    }
    QSet<QString> taken;
    QMap<qint64, QString> duplicates;
    const bool complete = readRows(reagents, SOURCE_LINE, [&] {
        const QString reagentId = reagents.value(1).toString();
        if (reagentId.isEmpty())
            return true;
        if (taken.contains(reagentId))
            duplicates.insert(reagents.value(0).toLongLong(), reagentId);
        else
            taken.insert(reagentId);
        return true;
    });
    return complete && renumberReagents(duplicates, taken)
        && execAll({SQL("create unique index reagent_index_reagentId on reagent (reagentId)")});
}

bool UpdateProfile::renumberReagents(const QMap<qint64, QString> &duplicates, QSet<QString> taken)
{
    if (duplicates.isEmpty())
        return true;

    QSqlQuery update;
    if (!update.prepare("update reagent set reagentId=:reagentId where id=:id")) {
        logSqlError(update, SOURCE_LINE);
        return false;
    }
    QHash<QString, int> nextNumbers; // by identifier; all lower numbers are taken
    for (auto duplicate = duplicates.begin(); duplicate != duplicates.end(); ++duplicate) {
        int number = nextNumbers.value(duplicate.value(), 2);
        QString reagentId;
        do
            reagentId = QString("%1(%2)").arg(duplicate.value(), QString::number(number++));
        while (taken.contains(reagentId));
        nextNumbers.insert(duplicate.value(), number);
        update.bindValue(":reagentId", bindable(reagentId));
        update.bindValue(":id", duplicate.key());
        if (!execute(update)) {
            logSqlError(update, SOURCE_LINE);
            return false;
        }
        debugFrom(SOURCE_LINE) << "UPDATE reagent SET reagentId =" << reagentId
                               << "WHERE id =" << duplicate.key();
        taken.insert(reagentId);
    }
    return true;
}

bool UpdateProfile::addDisplayNames()
{
    // caliX to funY are not used any more
    if (!execAll({SQL(R"(-- assay template
create table assayTemplate_new(
    id integer primary key,
    name text not null unique,
    displayName text not null unique,
    class text,
    displayOrder integer,
    caliX text,
    caliY text,
    funX text,
    funY text
))")}))
        return false;

    QSqlRecord displayName;
    displayName.append(QSqlField("displayName", QMetaType::fromType<QString>()));
    if (!copyTable("assayTemplate", "assayTemplate_new", displayName, {},
                   [](QSqlRecord &row) { row.setValue("displayName", row.value("name")); }))
        return false;

    tryAll({SQL("drop trigger if exists afterDeleteAssayTemplate")});
    if (!execAll({SQL("drop table assayTemplate")})
        || !renameTable("assayTemplate_new", "assayTemplate"))
        return false;
    tryAll({SQL(R"(create trigger afterDeleteAssayTemplate after delete on assayTemplate
begin
    delete from variable where variable.assayTemplateId = old.id;
    delete from assayItem where assayItem.assayTemplateId = old.id;
    delete from dataCheck where dataCheck.assayTemplateId = old.id;
end;)")});
    return true;
}

} // namespace coagulation
