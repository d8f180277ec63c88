// SPDX-License-Identifier: MIT
/// The profile database of every older layout to version 10, with its factory rows.

#include "messagerecorder.h"
#include "profiledatabase.h"
#include "profileupgrade.h"
#include "today.h"

#include <QTest>

using coagulation::UpdateProfile;

namespace {

bool runStep(const TestDatabase &database)
{
    return runProfileStep(database, &UpdateProfile::update_v10);
}

QStringList warningsOf(const MessageRecorder &recorder)
{
    return recorder.messages().filter(QRegularExpression("^Warning: "));
}

/// A query and the rows that it is to give.
struct Expected {
    QString query;
    QStringList rows;
};

/// \return the schema without blanks before brackets
QStringList schemaOf(const TestDatabase &database)
{
    QStringList schema = database.schema();
    return schema.replaceInStrings(" (", "(");
}

// clang-format off
const QStringList newSchema{
    "CREATE UNIQUE INDEX reagent_index_reagentId on reagent(reagentId)",
    "CREATE TABLE \"assayCalibration\"(id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text not null unique, method integer,"
    " condition text, caliX text, caliY text, funX text, funY text, dispX text, dispY text)",
    "CREATE TABLE \"assayItem\"(id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text not null, method integer,"
    " unit text, expr text, precision integer default 2, displayOrder integer, abbr text,"
    " code text, lowerNormal real default 0, upperNormal real default 0,"
    " lowerReport real default 0, upperReport real default 0, lowerRepeat real default 0,"
    " upperRepeat real default 0, lowerRedilution real default 0, upperredilution real default 0,"
    " visible integer default 1)",
    "CREATE TABLE \"assayTemplate\"(id integer primary key, name text not null unique,"
    " displayName text not null unique, class text, displayOrder integer, caliX text, caliY text,"
    " funX text, funY text)",
    "CREATE TABLE currentCurve(id integer primary key, name text unique on conflict replace,"
    " curveId integer references curve)",
    "CREATE TABLE \"curve\"(id integer primary key, name text not null, xUnit text, yUnit text,"
    " correlation real, date date, xFun integer, yFun integer, a real, b real, c real, d real,"
    " e real, valid integer, instrUuid text, lotsNum text)",
    "CREATE TABLE curveInfo(curveId integer references curve, name text not null, value,"
    " unique(curveId, name) on conflict replace)",
    "CREATE TABLE curvePoint(id integer primary key, curveId integer references curve, x real,"
    " y real, z real, flags integer)",
    "CREATE TABLE curveReagent(curveId integer references curve, name text, lot text)",
    "CREATE TABLE curveVariable(curveId integer references curve, name text, value real)",
    "CREATE TABLE dataCheck(assayTemplateId integer unique references assayTemplate,"
    " report integer default 0, reportItemFullName text, reportLower real, reportUpper real,"
    " mark integer default 0, markItemFullName text, markLower real, markUpper real,"
    " redilution integer default 0, redilutionItemFullName text, redilutionLower real,"
    " redilutionUpper real, repeat integer default 0, repeatItemFullName text, repeatLower real,"
    " repeatUpper real, rep integer default 0, repDiff real)",
    "CREATE TABLE profile(name text primary key, value)",
    "CREATE TABLE reagent(id integer primary key, reagentId, type integer references reagentType,"
    " name text not null unique, initVolume integer, alarmLimit integer, vialType integer)",
    "CREATE TABLE reagentType(id integer primary key, name text)",
    "CREATE TABLE \"user\"(id integer primary key, name text unique COLLATE NOCASE,"
    " password text, level integer default 0, hide integer default 0)",
    "CREATE TABLE variable(id integer primary key,"
    " assayTemplateId integer references assayTemplate, name text, value,"
    " unique(assayTemplateId, name))",
    "CREATE TABLE version(version integer)",
    "CREATE TRIGGER afterDeleteAssayTemplate after delete on assayTemplate begin"
    " delete from variable where variable.assayTemplateId = old.id;"
    " delete from assayItem where assayItem.assayTemplateId = old.id;"
    " delete from dataCheck where dataCheck.assayTemplateId = old.id; end",
    "CREATE TRIGGER deleteCurve after delete on curve begin"
    " delete from curvePoint where curvePoint.curveId = old.id;"
    " delete from curveVariable where curveVariable.curveId = old.id;"
    " delete from curveReagent where curveReagent.curveId = old.id;"
    " delete from curveInfo where curveInfo.curveId = old.id;"
    " delete from currentCurve where currentCurve.curveId = old.id; end",
};

const Expected newProfile{"select name, value from profile order by name", {
    "'APTT/max_clot_time', '200'", // the user's
    "'APTT/mechanicalclot/end', '300'",
    "'APTT/opticalclot/end', '300'",
    "'ATIII/dilution', '1/15'",
    "'ATIII/incubator/duration', '90'",
    "'ATIII/kinetic/end', '55'",
    "'ATIII/kinetic/start', '5'",
    "'ATIII/max_clot_time', '55'",
    "'ATIII/report/dilution', '1/15'",
    "'DD/max_clot_time', 120",
    "'DD/mix/times', 3",
    "'DD/priority', 10",
    "'FDP/max_clot_time', 120",
    "'FDP/mix/times', 3",
    "'FIB/report/dilution', '1/20'", // the user's
    "'PC/dilution', '1/4'",
    "'PC/incubator/duration', 240",
    "'PC/kinetic/end', 60",
    "'PC/kinetic/start', 15",
    "'PC/max_clot_time', 60",
    "'PS/dilution', '1/20'",
    "'PS/max_clot_time', 200",
    "'PS/mechanicalclot/end', 200",
    "'PS/opticalclot/end', 200",
    "'PT/disable', 0", // PT is not among those that are enabled
    "'PT/mix/times', 1",
    "'TT/max_clot_time', '300'",
    "'TT/mechanicalclot/end', '300'",
    "'TT/opticalclot/end', '300'",
    "'XA/dilution', '1/10'",
    "'XA/max_clot_time', 185",
    "'XA/twopoints/p1/end', 6",
    "'XA/twopoints/p1/start', 4",
    "'XA/twopoints/p2/start', 175",
    "'analyst/APTT/odThreshold', '4,0.2; 10,0.05; 20,0.02'",
    "'analyst/FIB/odPercent', 0.5",
    "'analyst/FIB/odThreshold', '4,0.008; 6,0.004; 10,0.0025; 20,0.001; 40,0.0005'",
    "'analyst/LAS/odPercent', 0.1",
    "'analyst/odThreshold', '4,0.2; 7,0.02; 10,0.008'",
    "'dilution', '梯度1;1/5;1/10;1/20;1/30,梯度2;1/5;1/10;1/20;1/30;1/40,梯度3;1/1;1/2;1/4;1/8,梯度4;1/1;3/4;1/2;1/4'",
    "'patient/hospitalNo', 'Case no. of Dr. O''Neill'", // the user's
    "'patient/memo', '备注'",
    "'patient/name', '姓名'",
    "'patient/outputTime', '传输时间'",
    "'patient/printTime', '打印时间'",
    "'patient/sampleTime', '采样时间'",
    "'patient/sampleType', '样本类型'",
    "'patient/testTime', '测试时间'",
    "'patient/time', '送检时间'",
    "'patient/validateTime', '审核时间'",
    "'print/{00000000-0000-0000-0000-000000000000}/copies', 2",
    "'program/APTT/name1', 'APTT'",
    "'program/APTT/name2', 'CaCl2'",
    "'program/DD/diluent', 'Saline'",
    "'program/DD/name1', 'R1(DD)'",
    "'program/DD/name2', 'R2(DD)'",
    "'program/DDplus/name1', 'R1(DD)'",
    "'program/FDP/name1', 'R1(FDP)'",
    "'program/FDP/name2', 'R2(FDP)'",
    "'program/FIB/diluent', 'Buffer(FIB)'",
    "'program/FIB/name1', 'FIB'",
    "'program/PT/name1', 'PT'",
    "'program/PT/reagent1', 100",
    "'program/PT/volume', 50",
    "'reagent/alarmLimit', '报警限[ul]'",
    "'reagent/initVolume', '初始量[ul]'",
    "'reagent/interruptLimit', '中断限[ul]'",
    "'schedule/clean', 15",
    "'schedule/dilution', 12",
    "'schedule/dilution/1/10', 12",
    "'schedule/dilution/1/20', 17",
    "'schedule/dilution/1/40', 22",
    "'schedule/mix', 2",
    "'schedule/reagent', 6",
    "'schedule/sample', 6",
    "'schedule/test/APTT', 50",
    "'schedule/test/FIB/table', '0.2,25;0.1,35;0.05,45;0.025,65'",
    "'schedule/test/II', 30",
    "'schedule/test/IX', 30",
    "'schedule/test/PT', 27",
    "'schedule/test/TT', 35",
    "'schedule/test/V', 30",
    "'schedule/test/VII', 30",
    "'schedule/test/VIII', 30",
    "'schedule/test/X', 30",
    "'schedule/test/XI', 30",
    "'schedule/test/XII', 30",
    "'specialValue/DD/P', 0.1",
    "'specialValue/FDP/P', 0.1",
    "'specialValue/XA/LMWH', 0.01",
    "'specialValue/XA/RX', 0.01",
    "'specialValue/XA/UFH', 0.01",
}};

// The first reagents are the same from every version.
const QStringList firstReagents{
    "1, '101', 0, 'PT', 4000, 300, 3",
    "2, 'A101', 0, 'APTT', 2000, 200, 3",
    "3, 'A101(3)', 0, 'CaCl2', 4000, 200, 3", // A101(2) is taken
    "4, '104', 0, 'FIB', 2000, 200, 3",
    "5, 'A101(2)', 0, 'TT', 2000, 200, 3",
    "8, NULL, 3, 'X2', 9000, 500, 6", // was Rinse
    "9, '112', 0, 'R1(ATIII)', 2000, 200, 3",
    "10, '113', 0, 'R2(ATIII)', 2000, 200, 3",
    "11, 'S-1', 1, 'II', 1000, 200, 1",
    "12, '115', 1, 'X', 1000, 200, 1",
    "13, 'S-1(2)', 4, 'QC normal', 1000, 200, 1",
    "14, '108', 0, 'R2(DD)', 2000, 200, 3", // was Latex
    "15, '110', 0, 'R2(FDP)', 2000, 200, 3", // was FDP
    "16, NULL, 2, 'Saline', 6500, 200, 6",
    "17, NULL, 2, 'Buffer(PT)', 6500, 200, 6",
    "18, NULL, 2, 'Buffer(APTT)', 6500, 200, 6",
    "19, '105', 2, 'Buffer(FIB)', 6500, 200, 6",
    "20, NULL, 2, 'Buffer(TT)', 6500, 200, 6",
    "21, '107', 2, 'R1(DD)', 6500, 200, 6", // was Buffer(DD)
    "22, NULL, 2, 'Buffer(EX)', 6500, 200, 6",
    "23, NULL, 2, 'Buffer(EN)', 6500, 200, 6",
    "24, '109', 2, 'R1(FDP)', 6500, 200, 6", // was Buffer(FDP)
    "25, NULL, 5, 'DD ct', 1000, 200, 1",
    "26, NULL, 5, 'FDP ct', 1000, 200, 1",
};
const QStringList reagentsOfVersion6{
    "NULL, 0, 'R1(PC)', 2000, 200, 3",
    "NULL, 0, 'R2(PC)', 2000, 200, 3",
    "NULL, 0, 'R3(PC)', 2000, 200, 3",
    "NULL, 0, 'R1(PS)', 2000, 200, 3",
    "NULL, 0, 'R2(PS)', 2000, 200, 3",
    "NULL, 0, 'R3(PS)', 2000, 200, 3",
    "NULL, 0, 'LAS', 2000, 200, 3",
    "NULL, 0, 'LAC', 2000, 200, 3",
    "NULL, 0, 'R1(APCR1)', 2000, 200, 3",
    "NULL, 0, 'R2(APCR1)', 2000, 200, 3",
    "NULL, 0, 'R3(APCR1)', 2000, 200, 3",
    "NULL, 0, 'R1(APCR2)', 2000, 200, 3",
    "NULL, 0, 'R2(APCR2)', 2000, 200, 3",
    "NULL, 0, 'R3(APCR2)', 2000, 200, 3",
    "NULL, 2, 'Buffer(PC)', 6500, 200, 6",
    "NULL, 2, 'Buffer(PS)', 6500, 200, 6",
    "NULL, 2, 'Buffer(LAS)', 6500, 200, 6",
    "NULL, 2, 'Buffer(LAC)', 6500, 200, 6",
    "NULL, 2, 'Buffer(APCR1)', 6500, 200, 6",
    "NULL, 2, 'Buffer(APCR2)', 6500, 200, 6",
    "NULL, 5, 'PC ct', 1000, 200, 1",
    "NULL, 5, 'PS ct', 1000, 200, 1",
    "NULL, 5, 'LAS ct', 1000, 200, 1",
    "NULL, 5, 'LAC ct', 1000, 200, 1",
    "NULL, 5, 'APCR1 ct', 1000, 200, 1",
    "NULL, 5, 'APCR2 ct', 1000, 200, 1",
};
const QStringList antiXaReagents{
    "54, NULL, 0, 'R1(XA)', 2000, 200, 3",
    "55, NULL, 0, 'R2(XA)', 2000, 200, 3",
    "56, NULL, 2, 'Buffer(XA)', 6500, 200, 6",
};

const QStringList firstTemplates{
    "1, 'PT', 'PT', NULL, 10, 'T', 'P', 'Log', 'Log'",
    "2, 'FIB', 'FIB', NULL, 30, 'T', 'P', 'Log', 'Log'",
    "3, 'APTT', 'APTT', NULL, 20, 'T', 'P', 'Log', 'Log'",
    "4, 'TT', 'TT', NULL, 40, 'T', 'P', 'Log', 'Log'",
    "5, 'DD', 'DD', NULL, 50, 'OD', 'P', 'Log', 'Linear'",
    "6, 'FDP', 'FDP', NULL, 60, 'OD', 'P', 'Log', 'Linear'",
    "7, 'ATIII', 'ATIII', NULL, 70, 'OD', 'P', NULL, NULL",
    "8, 'II', 'II', 'factor', 80, 'T', 'P', 'Log', 'Log'",
    "9, 'V', 'V', 'factor', 90, 'T', 'P', 'Log', 'Log'",
    "10, 'VII', 'VII', 'factor', 100, 'T', 'P', 'Log', 'Log'",
    "11, 'X', 'X', 'factor', 110, 'T', 'P', 'Log', 'Log'",
    "12, 'VIII', 'VIII', 'factor', 120, 'T', 'P', 'Log', 'Log'",
    "13, 'IX', 'IX', 'factor', 130, 'T', 'P', 'Log', 'Log'",
    "14, 'XI', 'XI', 'factor', 140, 'T', 'P', 'Log', 'Log'",
    "15, 'XII', 'XII', 'factor', 150, 'T', 'P', 'Log', 'Log'",
    "16, 'PC', 'PC', NULL, 160, 'T', 'P', 'Log', 'Log'",
    "17, 'PS', 'PS', NULL, 170, 'T', 'P', 'Log', 'Log'",
    "18, 'LAS', 'LAS', NULL, 180, 'T', 'P', 'Log', 'Log'",
    "19, 'LAC', 'LAC', NULL, 190, 'T', 'P', 'Log', 'Log'",
    "20, 'APCR1', 'APCR1', NULL, 200, 'T', 'P', 'Log', 'Log'",
    "21, 'APCR2', 'APCR2', NULL, 200, 'T', 'P', 'Log', 'Log'",
};
const QString antiXaTemplate = "22, 'XA', 'XA', NULL, 220, 'T', 'P', 'Log', 'Log'";

// The last nine: normal, report, repeat and redilution limits, visible.
const Expected newItems{"select * from assayItem order by id", {
    "1, 1, 'T', 0, 's', NULL, 1, 1, 'PT-S', '凝血酶原时间', 9.0, 15.0, 5.0, 120.5, 7.0, 40.0, 0.0, 0.0, 1",
    "2, 1, 'OD', 3, 'OD', NULL, -1, 2, 'PT-OD', '吸光度(PT)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "3, 1, 'P', 1, '%', NULL, 2, 3, 'PT-%', '百分活动度(PT)', 80.0, 150.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "4, 1, 'R', 2, NULL, 'T/normal', 2, 4, 'PTR', '比值(PT)', 0.82, 1.15, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "5, 1, 'INR', 2, NULL, 'pow(R, ISI)', 2, 5, 'PT-INR', '国际标准化比值(PT)', 0.76, 1.15, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "6, 2, 'T', 0, 's', NULL, 1, 1, 'FIB-S', '时间(FIB)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "7, 2, 'OD', 3, 'OD', NULL, -1, 2, 'FIB-OD', '吸光度(FIB)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "8, 2, 'P', 1, 'g/l', NULL, 2, 3, 'FIB', '纤维蛋白原', 2.0, 4.0, 0.0, 0.0, 0.0, 0.0, 0.5, 6.0, 1",
    "9, 3, 'T', 0, 's', NULL, 1, 1, 'APTT', '活化部分凝血活酶时间', 24.0, 36.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "10, 3, 'R', 2, NULL, 'T/normal', 2, 2, 'APTTR', '比值(APTT)', 0.8, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "11, 4, 'T', 0, 's', NULL, 1, 1, 'TT', '凝血酶时间', 9.0, 15.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "12, 5, 'T', 0, 's', NULL, 1, 1, 'DD-T', '时间(DD)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "13, 5, 'OD', 3, 'OD', NULL, -1, 2, 'DD-OD', '吸光度(D-Dimer)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "14, 5, 'P', 1, 'mg/l', NULL, 2, 3, 'DD', 'D-二聚体', 0.0, 0.55, 0.1, 40.0, 0.0, 0.0, 0.0, 10.0, 1",
    "15, 6, 'T', 0, 's', NULL, 1, 1, 'FDP-T', '时间(FDP)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "16, 6, 'OD', 3, 'OD', NULL, -1, 2, 'FDP-OD', '吸光度(FDP)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "17, 6, 'P', 1, 'ug/ml', NULL, 2, 3, 'FDP', '纤维蛋白(原)降解产物', 0.0, 5.0, 1.0, 100.0, 0.0, 0.0, 0.0, 0.0, 1",
    "18, 7, 'T', 0, 's', NULL, 1, 1, 'AT-T', '时间(ATIII)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "19, 7, 'OD', 3, 'OD', NULL, -1, 2, 'AT-OD', '吸光度(ATIII)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "20, 7, 'P', 1, '%', NULL, 2, 3, 'AT-%', 'Antithrombin', 75.0, 125.0, 15.0, 150.0, 0.0, 0.0, 0.0, 0.0, 1",
    "21, 8, 'T', 0, 's', NULL, 1, 1, 'II-S', 'Factor II', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "22, 8, 'P', 1, '%', NULL, 2, 2, 'II-%', 'Factor II', 70.0, 120.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "40, 16, 'T', 0, 's', NULL, 1, 1, 'PC-S', 'Protein C', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "41, 16, 'OD', 3, 'OD', NULL, -1, 2, 'PC-OD', 'Absorbency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "42, 16, 'P', 1, '%', NULL, 2, 3, 'PC-%', 'Protein C', 70.0, 140.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "45, 17, 'T', 0, 's', NULL, 1, 1, 'PS-S', 'Protein S', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "46, 17, 'OD', 3, 'OD', NULL, -1, 2, 'PS-OD', 'Absorbency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "47, 17, 'P', 1, '%', NULL, 2, 3, 'PS-%', 'Protein S', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "50, 18, 'T', 0, 's', NULL, 1, 1, 'LAS-S', 'Lups Anticoagulant Screening', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "51, 18, 'OD', 3, 'OD', NULL, -1, 2, 'LAS-OD', 'Absorbency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "52, 18, 'P', 1, '%', NULL, 2, 3, 'LAS-%', 'LAS', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "55, 19, 'T', 0, 's', NULL, 1, 1, 'LAC-S', 'Lups Anticoagulant Confirm', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "56, 19, 'OD', 3, 'OD', NULL, -1, 2, 'LAC-OD', 'Absorbency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "57, 19, 'P', 1, '%', NULL, 2, 3, 'LAC-%', 'LAC', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "60, 20, 'T', 0, 's', NULL, 1, 1, 'APCR-1', 'APCR-1', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "61, 20, 'OD', 3, 'OD', NULL, -1, 2, 'APCR-1 OD', 'Absorbency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "62, 20, 'P', 1, '%', NULL, 2, 3, 'APCR-1 %', 'APCR-1', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "65, 21, 'T', 0, 's', NULL, 1, 1, 'APCR-2', 'APCR-2', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "66, 21, 'OD', 3, 'OD', NULL, -1, 2, 'APCR-2 OD', 'Absorbency', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "67, 21, 'P', 1, '%', NULL, 2, 3, 'APCR-2 %', 'APCR-2', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "70, 22, 'T', 0, 's', NULL, 1, 1, 'XA-T', '时间(抗Xa)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "71, 22, 'OD', 3, 'OD', NULL, -1, 2, 'XA-OD', '吸光度(抗Xa)', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0",
    "72, 22, 'UFH', 1, 'U/ml', NULL, 2, 3, 'XA-UFH', '抗Xa-普通肝素', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "73, 22, 'LMWH', 1, 'U/ml', NULL, 2, 4, 'XA-LMWH', '抗Xa-低分子肝素', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "74, 22, 'RX', 1, 'U/ml', NULL, 2, 5, 'XA-RX', '抗Xa-利伐沙班', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
    "90001, 1, 'my ''T''', 2, 's', 'T*2', 3, 9, 'my.PT', 'site''s own', NULL, NULL, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1",
}};

const Expected newCalibrations{"select * from assayCalibration order by id", {
    "1, 1, 'PT', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "2, 1, 'PT 演算 FIB', 0, NULL, 'OD', 'P', 'Log', 'Log', 'Log', 'Log'",
    "3, 2, 'FIB', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "4, 5, 'DD', 4, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'",
    "5, 6, 'FDP', 4, NULL, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log'",
    "6, 7, 'ATIII', 1, NULL, 'OD', 'P', NULL, NULL, 'Log', 'Linear'",
    "7, 8, 'II', 0, 'T>0', 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "8, 16, 'PC', 0, NULL, 'OD', 'P', 'Log', 'Log', 'Log', 'Log'",
    "9, 17, 'PS', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "10, 18, 'LAS', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "11, 19, 'LAC', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "12, 20, 'APCR1', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "13, 21, 'APCR2', 0, NULL, 'T', 'P', 'Log', 'Log', 'Log', 'Log'",
    "14, 22, 'Anti-Xa(UFH)', 0, NULL, 'OD', 'UFH', 'Log', 'Linear', 'Log', 'Log'",
    "15, 22, 'Anti-Xa(LMWH)', 0, NULL, 'OD', 'LMWH', 'Log', 'Linear', 'Log', 'Log'",
    "16, 22, 'Anti-Xa(Rivaroxaban)', 0, NULL, 'OD', 'RX', 'Log', 'Linear', 'Log', 'Log'",
}};

// Per template: report, mark, redilution, repeat, each with item and limits; rep, repDiff.
const Expected newDataChecks{"select * from dataCheck order by assayTemplateId", {
    "NULL, 1, 'none.T', 1.0, 2.0, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL",
    "1, 1, 'PT.T', 5.0, 120.5, 1, 'PT.T', NULL, NULL, 0, NULL, NULL, NULL, 1, 'PT.T', 7.0, 40.0, 0, NULL",
    "2, 0, 'FIB.P', NULL, NULL, 1, 'FIB.P', NULL, NULL, 1, 'FIB.P', 0.5, 6.0, 0, NULL, NULL, NULL, 1, 0.1",
    "3, 0, NULL, NULL, NULL, 1, 'APTT.T', NULL, NULL, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL",
    "4, 0, NULL, NULL, NULL, 1, 'TT.T', NULL, NULL, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL",
    "5, 1, 'DD.P', NULL, NULL, 1, 'DD.P', NULL, NULL, 1, 'DD.P', NULL, 10.0, 0, NULL, NULL, NULL, 0, NULL",
    "6, 1, 'FDP.P', NULL, NULL, 1, 'FDP.P', NULL, NULL, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL",
    "7, 1, 'ATIII.P', NULL, NULL, 1, 'ATIII.P', NULL, NULL, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL",
    "8, 1, 'II', 1.0, 2.0, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL, NULL, NULL, 0, NULL",
}};

// The tables that are the same from every version, besides those above.
const QList<Expected> otherTables{
    {"select * from user order by id", {
        "1, 'admin', '21232f297a57a5a7', 9, 0",
        "2, '张丽', NULL, 1, 0",
        "5, 'O''Neill', '', NULL, 0",
    }},
    {"select * from reagentType order by id", {
        "0, 'Reagent'", "1, 'Factor deficient plasma'", "2, 'Buffer'", "3, 'Cleaner'", "4, 'QC'", "5, 'Standard'",
    }},
    {"select * from variable order by id", {"1, 1, 'ISI', 1.07", "2, 1, 'normal', 12.0", "3, 3, 'normal', NULL"}},
    {"select * from curveInfo", {}},
    {"select * from currentCurve order by id", { // the second PT, which came last, replaced the first
        "2, 'FIB', 2", "3, 'DD', 3", "4, 'site''s', 4", "5, 'II', 5", "6, 'PT', 7",
    }},
    {"select id, curveId, x, y, round(z, 6), flags from curvePoint order by id", {
        "1, 1, 12.0, 100.0, 100.0, 0", "2, 1, 20.0, 50.0, 50.0, 0", "3, 1, 34.0, 25.0, 25.0, 0",
        "11, 2, 5.0, 20.0, 20.0, 4", "12, 2, 10.0, 10.0, 10.0, 0", "13, 2, 25.0, 4.0, 4.0, 0", "14, 2, 50.0, 2.0, 2.0, 0",
        "21, 3, 1.0, 0.6, 0.6, 0", "22, 3, 4.0, 1.2, 1.2, 0", "23, 3, 6.0, 1.4, 1.4, 0", "24, 3, 12.0, 1.7, 1.7, 0",
        "25, 3, 16.0, 1.8, 1.8, 0",
        "31, 4, 1.0, 1.0, -1.0, 0", "32, 4, 2.0, 2.0, -1.0, 0",
        "41, 5, 30.0, 50.0, -1.0, 0", "42, 5, 30.0, 60.0, -1.0, 2",
    }},
    {"select * from curveVariable order by rowid", {"1, 'ISI', 1.07", "1, 'normal', 12.0", "2, 'ISI', 9.99"}},
    {"select * from curveReagent order by rowid", {"1, 'PT', 'L-1'", "2, 'FIB', 'L-2'"}},
};

/// FIB and DD are refitted; II cannot be; there is no calibration for site's; PT is valid.
Expected newCurves()
{
    return {"select id, name, xUnit, yUnit, round(correlation, 6), date, xFun, yFun, round(a, 6), round(b, 6),"
            " round(c, 6), round(d, 6), round(e, 6), valid, instrUuid, lotsNum from curve order by id", {
        "1, 'PT', 's', '%', 0.998, '2016-04-01', 1, 1, 3.1, -1.2, NULL, NULL, NULL, 1, NULL, 'L-1'",
        "2, 'FIB', 's', 'g/l', 1.0, 'today', 1, 1, 2.0, -1.0, NULL, NULL, NULL, 1, NULL, 'L-2'",
        "3, 'DD', 'OD', 'mg/l', 1.0, 'today', 1, 0, 0.2, 1.0, 4.0, 2.2, NULL, 1, NULL, NULL",
        "4, 'site''s', 's', '%', 0.25, '2016-04-04', 0, 0, 1.0, 2.0, 3.0, 4.0, 5.0, 0, NULL, 'L-4'",
        "5, 'II', 's', '%', 0.75, 'today', 1, 1, 1.0, 2.0, NULL, NULL, NULL, 0, NULL, 'L-5'",
        "7, 'PT', 's', '%', 0.9, NULL, 1, 1, 3.2, -1.3, NULL, NULL, NULL, 1, NULL, NULL",
    }};
}
// clang-format on

QStringList numbered(int first, const QStringList &rows)
{
    QStringList result;
    for (const QString &row : rows)
        result << QString("%1, %2").arg(first + result.size()).arg(row);
    return result;
}

/// Buffer(ATIII) comes to databases of every version, so that it stands before the reagents of version 6
/// or after them; and it gets an identifier from version 7, which a database at 7 has passed.
Expected newReagents(int stored)
{
    const QString buffer = ", 2, 'Buffer(ATIII)', 6500, 200, 6";
    QStringList rows = firstReagents;
    if (stored < 6)
        rows << "27, '111'" + buffer << numbered(28, reagentsOfVersion6);
    else
        rows << numbered(27, reagentsOfVersion6)
             << (stored < 7 ? "53, '111'" : "53, NULL") + buffer;
    return {"select * from reagent order by id", rows + antiXaReagents};
}

/// The row of the anti-Xa template has eight values, which do not go into a table with display names.
Expected newTemplates(int stored)
{
    return {"select * from assayTemplate order by id",
            firstTemplates + (stored < 8 ? QStringList{antiXaTemplate} : QStringList())};
}

QList<Expected> newTables(int stored)
{
    return QList<Expected>{newProfile,
                           newReagents(stored),
                           newTemplates(stored),
                           newItems,
                           newCalibrations,
                           newDataChecks,
                           newCurves(),
                           {"select * from version",
                            stored == 0 ? QStringList() : QStringList{QString::number(stored)}}}
    + otherTables;
}

} // namespace

class TestProfileV10 : public QObject {
    Q_OBJECT

private slots:
    void init();

    void upgradesEveryVersion_data();
    void upgradesEveryVersion();
    void leavesOutWhatTheVersionHas_data();
    void leavesOutWhatTheVersionHas();
};

void TestProfileV10::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestProfileV10::upgradesEveryVersion_data()
{
    QTest::addColumn<int>("stored");

    for (int version = 0; version <= 9; ++version)
        QTest::addRow("%d", version) << version;
}

/// Shows: PRO-1, PRO-5
void TestProfileV10::upgradesEveryVersion()
{
    QFETCH(int, stored);
    const TestDatabase database("profile.db");
    makeProfileAt(database, stored);
    const MessageRecorder recorder;

    const bool passed = runStep(database);

    const QStringList warnings = warningsOf(recorder);
    QVERIFY2(passed, qUtf8Printable(warnings.join('\n')));
    QVERIFY2(warnings.size() == (stored < 8 ? 0 : 1), qUtf8Printable(warnings.join('\n')));
    if (stored >= 8) {
        QVERIFY2(warnings.constFirst().contains(
                     "( line ):  \"table assaytemplate has 9 columns but 8 values were supplied"),
                 qUtf8Printable(warnings.constFirst()));
        QVERIFY2(warnings.constFirst().contains("[ \"insert or ignore into assaytemplate values(22,"
                                                " 'XA', null, 220,"),
                 qUtf8Printable(warnings.constFirst()));
    }
    QCOMPARE(schemaOf(database), newSchema);
    for (const auto &[query, rows] : newTables(stored))
        QCOMPARE(withToday(database.rows(query)), rows);
}

void TestProfileV10::leavesOutWhatTheVersionHas_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QString>("change"); // that the version's section would undo
    QTest::addColumn<QString>("query");
    QTest::addColumn<QStringList>("kept");

    const QString marker = "select name from sqlite_master where name = 'marker'";
    const QStringList there{"'marker'"};
    QTest::newRow("1: users") << 1 << "create index marker on user(level)" << marker << there;
    QTest::newRow("2: settings") << 2
                                 << "update profile set value = 8 where name = 'schedule/sample'"
                                 << "select value from profile where name = 'schedule/sample'"
                                 << QStringList{"8"};
    QTest::newRow("2: reagents") << 2 << "update reagent set initVolume = 8 where name = 'Saline'"
                                 << "select initVolume from reagent where name = 'Saline'"
                                 << QStringList{"8"};
    QTest::newRow("3: axes") << 3 << "update assayCalibration set dispX = null where name = 'PT'"
                             << "select dispX from assayCalibration where name = 'PT'"
                             << QStringList{"NULL"};
    QTest::newRow("4: curves") << 4 << "create index marker on curve(date)" << marker << there;
    QTest::newRow("4: current curves") << 4 << "delete from currentCurve where name <> 'DD'"
                                       << "select name from currentCurve" << QStringList{"'DD'"};
    QTest::newRow("5: items") << 5 << "create index marker on assayItem(unit)" << marker << there;
    QTest::newRow("5: limits") << 5 << "update dataCheck set repeatLower = 8"
                               << "select lowerRepeat from assayItem where id = 1"
                               << QStringList{"7.0"};
    QTest::newRow("6: calibrations")
        << 6 << "create index marker on assayCalibration(method)" << marker << there;
    QTest::newRow("6: templates") << 6 << "delete from assayTemplate where name = 'LAS'"
                                  << "select id from assayTemplate where id > 16 and id < 20"
                                  << QStringList{"17", "19"};
    QTest::newRow("6: settings") << 6 << "delete from profile where name = 'PC/dilution'"
                                 << "select name from profile where name like 'PC/dil%'"
                                 << QStringList();
    QTest::newRow("6: reagents") << 6 << "delete from reagent where name = 'LAC'"
                                 << "select name from reagent where name like 'LA_'"
                                 << QStringList{"'LAS'"};
    QTest::newRow("6: items") << 6 << "delete from assayItem where id = 40"
                              << "select id from assayItem where assayTemplateId = 16"
                              << QStringList{"41", "42"};
    QTest::newRow("7: empty identifier")
        << 7 << "update reagent set reagentId = '' where id = 1"
        << "select reagentId from reagent where id = 1" << QStringList{"''"};
    QTest::newRow("7: no identifier")
        << 7 << "update reagent set reagentId = null where id = 1"
        << "select reagentId from reagent where id = 1" << QStringList{"NULL"};
    QTest::newRow("8: display names")
        << 8 << "update assayTemplate set displayName = 'Quick' where name = 'PT'"
        << "select displayName from assayTemplate where id = 1" << QStringList{"'Quick'"};
    QTest::newRow("9: ATIII") << 9 << "update assayCalibration set method = 4 where name = 'ATIII'"
                              << "select method from assayCalibration where name = 'ATIII'"
                              << QStringList{"4"};
}

/// Shows: PRO-1
void TestProfileV10::leavesOutWhatTheVersionHas()
{
    QFETCH(int, stored);
    QFETCH(QString, change);
    QFETCH(QString, query);
    QFETCH(QStringList, kept);
    const TestDatabase database("profile.db");
    makeProfileAt(database, stored);
    database.execute({change});
    const MessageRecorder recorder;

    const bool passed = runStep(database);

    QVERIFY2(passed, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.rows(query), kept);
}

QTEST_GUILESS_MAIN(TestProfileV10)
#include "tst_profile_v10.moc"
