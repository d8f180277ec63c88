// SPDX-License-Identifier: MIT
#include "profiledatabase.h"

#include "testdatabase.h"

namespace {

/// What a version brought.
struct Section {
    int version;
    QStringList statements;
};

QStringList rebuilt(const QString &table, const QString &layout, const QString &oldColumns)
{
    return {QString("create table %1_new %2").arg(table, layout),
            QString("insert into %1_new(%2) select %2 from %1 not indexed").arg(table, oldColumns),
            QString("drop table %1").arg(table),
            QString("alter table %1_new rename to %1").arg(table)};
}

/// \param values what follows the names, for example "2000, 200, 3"
QStringList reagents(const QString &insert, int type, const QStringList &names,
                     const QString &values)
{
    QStringList statements;
    for (const QString &name : names)
        statements << QString("%1 into reagent(type, name, initVolume, alarmLimit, vialType)"
                              " values(%2, '%3', %4)")
                          .arg(insert, QString::number(type), name, values);
    return statements;
}

/// \param rows for example "'DD/priority', 10"
QStringList settings(const QString &insert, const QStringList &rows)
{
    QStringList statements;
    for (const QString &row : rows)
        statements << QString("%1 into profile values(%2)").arg(insert, row);
    return statements;
}

QStringList assayTemplate(int id, const QString &name, int displayOrder,
                          const QString &calibratedBy)
{
    return {QString("insert into assayTemplate values(%1, '%2', null, %3, 'T', 'P', 'Log', 'Log')")
                .arg(id)
                .arg(name)
                .arg(displayOrder),
            QString("insert into assayCalibration values(null, %1, '%2', 0, null, '%3', 'P',"
                    " 'Log', 'Log', 'Log', 'Log')")
                .arg(id)
                .arg(name, calibratedBy)};
}

const QString curveParts = "delete from curvePoint where curvePoint.curveId = old.id;"
                           " delete from curveVariable where curveVariable.curveId = old.id;"
                           " delete from curveReagent where curveReagent.curveId = old.id;"
                           " delete from curveInfo where curveInfo.curveId = old.id;";
const QString deleteTemplateParts =
    "create trigger afterDeleteAssayTemplate after delete on assayTemplate begin"
    " delete from variable where variable.assayTemplateId = old.id;"
    " delete from assayItem where assayItem.assayTemplateId = old.id;"
    " delete from dataCheck where dataCheck.assayTemplateId = old.id; end";

QStringList users()
{
    return rebuilt("user",
                   "(id integer primary key, name text unique COLLATE NOCASE, password text,"
                   " level integer default 0, hide integer default 0)",
                   "id, name, password, level")
        + QStringList{"create table curveInfo(curveId integer references curve,"
                      " name text not null, value, unique (curveId, name) on conflict replace)",
                      "drop trigger deleteCurve",
                      "create trigger deleteCurve after delete on curve begin " + curveParts
                          + " end",
                      "create table version(version integer)"};
}

QStringList curves()
{
    return rebuilt("curve",
                   "(id integer primary key, name text not null, xUnit text, yUnit text,"
                   " correlation real, date date, xFun integer, yFun integer, a real, b real,"
                   " c real, d real, e real, valid integer, instrUuid text, lotsNum text)",
                   "id, name, xUnit, yUnit, correlation, date, xFun, yFun, a, b, c, d, e, valid,"
                   " lotsNum")
        + QStringList{"create table currentCurve(id integer primary key,"
                      " name text unique on conflict replace, curveId integer references curve)",
                      "create trigger deleteCurve after delete on curve begin " + curveParts
                          + " delete from currentCurve where currentCurve.curveId = old.id; end"};
}

QStringList items()
{
    return QStringList{"drop trigger afterDeleteAssayTemplate"}
    + rebuilt("assayItem",
              "(id integer primary key, assayTemplateId integer references assayTemplate,"
              " name text not null, method integer, unit text, expr text,"
              " precision integer default 2, displayOrder integer, abbr text, code text,"
              " lowerNormal real default 0, upperNormal real default 0,"
              " lowerReport real default 0, upperReport real default 0,"
              " lowerRepeat real default 0, upperRepeat real default 0,"
              " lowerRedilution real default 0, upperredilution real default 0,"
              " visible integer default 1)",
              "id, assayTemplateId, name, method, unit, expr, precision, displayOrder, abbr, code,"
              " lowerNormal, upperNormal")
        + QStringList{deleteTemplateParts};
}

QStringList calibrations()
{
    return rebuilt("assayCalibration",
                   "(id integer primary key, assayTemplateId integer references assayTemplate,"
                   " name text not null unique, method integer, condition text, caliX text,"
                   " caliY text, funX text, funY text, dispX text, dispY text)",
                   "id, assayTemplateId, name, method, condition, caliX, caliY, funX, funY, dispX,"
                   " dispY");
}

/// The sample's identifiers: A101 is there twice beside an A101(2), and S-1 twice.
QStringList uniqueReagentIds()
{
    return {"update reagent set reagentId = null where reagentId = ''",
            "update reagent set reagentId = 'A101(3)' where id = 3",
            "update reagent set reagentId = 'S-1(2)' where id = 13",
            "create unique index reagent_index_reagentId on reagent (reagentId)"};
}

QStringList firstDefaults()
{
    return settings("insert or ignore",
                    {"'FIB/report/dilution', '1/10'",
                     "'dilution', '梯度1;1/5;1/10;1/20;1/30,梯度2;1/5;1/10;1/20;1/30;1/40,"
                     "梯度3;1/1;1/2;1/4;1/8,梯度4;1/1;3/4;1/2;1/4'",
                     "'patient/sampleType', '样本类型'"})
        + QStringList{"delete from reagent where name in ('Buffer', 'Latex', 'Saline')"}
    + reagents("replace", 0, {"Latex", "FDP"}, "2000, 200, 3")
        + reagents("replace", 2,
                   {"Saline", "Buffer(PT)", "Buffer(APTT)", "Buffer(FIB)", "Buffer(TT)",
                    "Buffer(DD)", "Buffer(EX)", "Buffer(EN)", "Buffer(FDP)"},
                   "6500, 200, 6")
        + reagents("replace", 5, {"DD ct", "FDP ct"}, "1000, 200, 1")
        + settings("replace",
                   {"'DD/mix/times', 3", "'DD/max_clot_time', 120", "'specialValue/DD/P', 0.1",
                    "'DD/priority', 10", "'FDP/mix/times', 3", "'FDP/max_clot_time', 120",
                    "'specialValue/FDP/P', 0.1"})
        + QStringList{"delete from profile where name in ('DD/disable', 'II/disable', 'V/disable',"
                      " 'VII/disable', 'X/disable', 'VIII/disable', 'IX/disable', 'XI/disable',"
                      " 'XII/disable', 'FDP/disable')"}
    + settings("insert or ignore",
               {"'reagent/initVolume', '初始量[ul]'", "'reagent/alarmLimit', '报警限[ul]'",
                "'reagent/interruptLimit', '中断限[ul]'", "'patient/hospitalNo', '住院号'"})
        + settings("replace",
                   {"'schedule/sample', 6",
                    "'schedule/reagent', 6",
                    "'schedule/mix', 2",
                    "'schedule/dilution', 12",
                    "'schedule/dilution/1/10', 12",
                    "'schedule/dilution/1/20', 17",
                    "'schedule/dilution/1/40', 22",
                    "'schedule/clean', 15",
                    "'schedule/test/PT', 27",
                    "'schedule/test/FIB/table', '0.2,25;0.1,35;0.05,45;0.025,65'",
                    "'schedule/test/APTT', 50",
                    "'schedule/test/TT', 35",
                    "'schedule/test/II', 30",
                    "'schedule/test/V', 30",
                    "'schedule/test/VII', 30",
                    "'schedule/test/X', 30",
                    "'schedule/test/VIII', 30",
                    "'schedule/test/IX', 30",
                    "'schedule/test/XI', 30",
                    "'schedule/test/XII', 30"})
        + settings("insert or ignore", {"'analyst/FIB/odPercent', 0.5"})
        + settings("replace",
                   {"'analyst/FIB/odThreshold',"
                    " '4,0.008; 6,0.004; 10,0.0025; 20,0.001; 40,0.0005'",
                    "'analyst/APTT/odThreshold', '4,0.2; 10,0.05; 20,0.02'"});
}

QStringList calibrationAxes()
{
    return {"update assayCalibration set method = 0, dispX = 'Log', dispY = 'Log'"
            " where name in ('PT', 'FIB', 'II')",
            "update assayCalibration set method = 0, funX = 'Log', funY = 'Log', dispX = 'Log',"
            " dispY = 'Log' where name = 'PT 演算 FIB'",
            "update assayCalibration set method = 4, funX = 'Log', funY = 'Linear',"
            " dispX = 'Log', dispY = 'Log' where name in ('DD', 'FDP')"};
}

QStringList secondDefaults()
{
    const QString none = "0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0";
    QStringList rows;
    for (const QString &row : QStringList{
             "40, 16, 'T', 0, 's', null, 1, 1, 'PC-S', 'Protein C', %1, 1",
             "41, 16, 'OD', 3, 'OD', null, -1, 2, 'PC-OD', 'Absorbency', %1, 0",
             "42, 16, 'P', 1, '%', null, 2, 3, 'PC-%', 'Protein C',"
             " 70, 140, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
             "45, 17, 'T', 0, 's', null, 1, 1, 'PS-S', 'Protein S', %1, 1",
             "46, 17, 'OD', 3, 'OD', null, -1, 2, 'PS-OD', 'Absorbency', %1, 0",
             "47, 17, 'P', 1, '%', null, 2, 3, 'PS-%', 'Protein S', %1, 1",
             "50, 18, 'T', 0, 's', null, 1, 1, 'LAS-S', 'Lups Anticoagulant Screening', %1, 1",
             "51, 18, 'OD', 3, 'OD', null, -1, 2, 'LAS-OD', 'Absorbency', %1, 0",
             "52, 18, 'P', 1, '%', null, 2, 3, 'LAS-%', 'LAS', %1, 0",
             "55, 19, 'T', 0, 's', null, 1, 1, 'LAC-S', 'Lups Anticoagulant Confirm', %1, 1",
             "56, 19, 'OD', 3, 'OD', null, -1, 2, 'LAC-OD', 'Absorbency', %1, 0",
             "57, 19, 'P', 1, '%', null, 2, 3, 'LAC-%', 'LAC', %1, 0",
             "60, 20, 'T', 0, 's', null, 1, 1, 'APCR-1', 'APCR-1', %1, 1",
             "61, 20, 'OD', 3, 'OD', null, -1, 2, 'APCR-1 OD', 'Absorbency', %1, 0",
             "62, 20, 'P', 1, '%', null, 2, 3, 'APCR-1 %', 'APCR-1', %1, 0",
             "65, 21, 'T', 0, 's', null, 1, 1, 'APCR-2', 'APCR-2', %1, 1",
             "66, 21, 'OD', 3, 'OD', null, -1, 2, 'APCR-2 OD', 'Absorbency', %1, 0",
             "67, 21, 'P', 1, '%', null, 2, 3, 'APCR-2 %', 'APCR-2', %1, 0"})
        rows << QString("insert into assayItem values(%1)").arg(QString(row).replace("%1", none));

    return reagents("insert", 0,
                    {"R1(PC)", "R2(PC)", "R3(PC)", "R1(PS)", "R2(PS)", "R3(PS)", "LAS", "LAC",
                     "R1(APCR1)", "R2(APCR1)", "R3(APCR1)", "R1(APCR2)", "R2(APCR2)", "R3(APCR2)"},
                    "2000, 200, 3")
        + reagents("insert", 2,
                   {"Buffer(PC)", "Buffer(PS)", "Buffer(LAS)", "Buffer(LAC)", "Buffer(APCR1)",
                    "Buffer(APCR2)"},
                   "6500, 200, 6")
        + reagents("insert", 5, {"PC ct", "PS ct", "LAS ct", "LAC ct", "APCR1 ct", "APCR2 ct"},
                   "1000, 200, 1")
        + settings("insert",
                   {"'PC/dilution', '1/4'", "'PC/incubator/duration', 240",
                    "'PC/kinetic/start', 15", "'PC/kinetic/end', 60", "'PC/max_clot_time', 60",
                    "'PS/dilution', '1/20'", "'PS/mechanicalclot/end', 200",
                    "'PS/opticalclot/end', 200", "'PS/max_clot_time', 200",
                    "'analyst/LAS/odPercent', 0.1"})
        + assayTemplate(16, "PC", 160, "OD") + assayTemplate(17, "PS", 170, "T")
        + assayTemplate(18, "LAS", 180, "T") + assayTemplate(19, "LAC", 190, "T")
        + assayTemplate(20, "APCR1", 200, "T") + assayTemplate(21, "APCR2", 200, "T") + rows;
}

/// For the reagents that have none; Buffer(ATIII) is not there yet.
QStringList fixedReagentIds()
{
    return {"update reagent set reagentId = '101' where name = 'PT'",
            "update reagent set reagentId = '104' where name = 'FIB'",
            "update reagent set reagentId = '105' where name = 'Buffer(FIB)'",
            "update reagent set reagentId = '107' where name = 'Buffer(DD)'",
            "update reagent set reagentId = '108' where name = 'Latex'",
            "update reagent set reagentId = '109' where name = 'Buffer(FDP)'",
            "update reagent set reagentId = '110' where name = 'FDP'",
            "update reagent set reagentId = '112' where name = 'R1(ATIII)'",
            "update reagent set reagentId = '113' where name = 'R2(ATIII)'",
            "update reagent set reagentId = '115' where name = 'X'"};
}

QStringList displayNames()
{
    return {"create table assayTemplate_new(id integer primary key, name text not null unique,"
            " displayName text not null unique, class text, displayOrder integer, caliX text,"
            " caliY text, funX text, funY text)",
            "insert into assayTemplate_new select id, name, name, class, displayOrder, caliX,"
            " caliY, funX, funY from assayTemplate not indexed",
            "drop table assayTemplate", "alter table assayTemplate_new rename to assayTemplate",
            deleteTemplateParts};
}

/// \return what the versions brought, in the order in which an upgrade of several versions runs it
QList<Section> sections()
{
    return {
        {1, users()},
        {4, curves()},
        {5, items()},
        {6, calibrations()},
        {7, uniqueReagentIds()},
        {2, firstDefaults()},
        {3, calibrationAxes()},
        {4, {"insert into currentCurve(name, curveId) select name, id from curve order by id"}},
        // the limits of the sample's result checks: PT.T is reported and repeated, FIB.P diluted again
        {5,
         {"update assayItem set lowerReport = 5, upperReport = 120.5, lowerRepeat = 7,"
          " upperRepeat = 40 where id = 1",
          "update assayItem set lowerRedilution = 0.5, upperredilution = 6 where id = 8"}},
        {6, secondDefaults()},
        {7, fixedReagentIds()},
        {8, displayNames()},
        {9, {"update assayCalibration set method = 1, dispY = 'Linear' where name = 'ATIII'"}},
    };
}

} // namespace

void makeProfileAt(const TestDatabase &database, int version)
{
    database.load("profile_v0.sql");
    QStringList statements{"pragma legacy_alter_table=on", "begin"};
    for (const Section &section : sections()) {
        if (section.version <= version)
            statements << section.statements;
    }
    if (version > 0)
        statements << QString("insert into version values(%1)").arg(version);
    database.execute(statements << "commit");
}
