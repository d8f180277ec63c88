// SPDX-License-Identifier: MIT
/// Factory rows of version 10.

#include "coagulation/vardo/updateprofile.h"

// One row a line, so that columns of values can be compared.
// clang-format off

namespace coagulation {

bool UpdateProfile::writeFirstDefaults()
{
    if (!execAll({
            SQL("insert or ignore into profile values('FIB/report/dilution', '1/10')"),
            SQL(QString("insert or ignore into profile values('dilution', '%1;1/5;1/10;1/20;1/30,%2;1/5;1/10;1/20;1/30;1/40,%3;1/1;1/2;1/4;1/8,%4;1/1;3/4;1/2;1/4')")
                    .arg(escaped(tr("梯度1")), escaped(tr("梯度2")), escaped(tr("梯度3")), escaped(tr("梯度4")))),
            SQL(QString("insert or ignore into profile values('patient/sampleType', '%1')").arg(escaped(tr("样本类型")))),
        }))
        return false;

    tryAll({
        SQL("delete from reagent where name = 'Buffer'"),
        SQL("delete from reagent where name = 'Latex'"),
        SQL("delete from reagent where name = 'Saline'"),

        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'Latex',        2000, 200, 3)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'FDP',          2000, 200, 3)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Saline',       6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(PT)',   6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(APTT)', 6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(FIB)',  6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(TT)',   6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(DD)',   6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(EX)',   6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(EN)',   6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(FDP)',  6500, 200, 6)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'DD ct',        1000, 200, 1)"),
        SQL("replace into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'FDP ct',       1000, 200, 1)"),

        SQL("replace into profile values('DD/mix/times', 3)"),
        SQL("replace into profile values('DD/max_clot_time', 120)"),
        SQL("replace into profile values('specialValue/DD/P', 0.1)"),
        SQL("replace into profile values('DD/priority', 10)"),
        SQL("replace into profile values('FDP/mix/times', 3)"),
        SQL("replace into profile values('FDP/max_clot_time', 120)"),
        SQL("replace into profile values('specialValue/FDP/P', 0.1)"),

        SQL("delete from profile where name='DD/disable'"),
        SQL("delete from profile where name='II/disable'"),
        SQL("delete from profile where name='V/disable'"),
        SQL("delete from profile where name='VII/disable'"),
        SQL("delete from profile where name='X/disable'"),
        SQL("delete from profile where name='VIII/disable'"),
        SQL("delete from profile where name='IX/disable'"),
        SQL("delete from profile where name='XI/disable'"),
        SQL("delete from profile where name='XII/disable'"),
        SQL("delete from profile where name='FDP/disable'"),

        SQL(QString("insert or ignore into profile values('reagent/initVolume', '%1')").arg(escaped(tr("初始量[ul]")))),
        SQL(QString("insert or ignore into profile values('reagent/alarmLimit', '%1')").arg(escaped(tr("报警限[ul]")))),
        SQL(QString("insert or ignore into profile values('reagent/interruptLimit', '%1')").arg(escaped(tr("中断限[ul]")))),
        SQL(QString("insert or ignore into profile values('patient/hospitalNo', '%1')").arg(escaped(tr("住院号")))),

        // in slots of the schedule
        SQL("replace into profile values('schedule/sample', 6)"),
        SQL("replace into profile values('schedule/reagent', 6)"),
        SQL("replace into profile values('schedule/mix', 2)"),
        SQL("replace into profile values('schedule/dilution', 12)"),
        SQL("replace into profile values('schedule/dilution/1/10', 12)"),
        SQL("replace into profile values('schedule/dilution/1/20', 17)"),
        SQL("replace into profile values('schedule/dilution/1/40', 22)"),
        SQL("replace into profile values('schedule/clean', 15)"),
        SQL("replace into profile values('schedule/test/PT', 27)"),
        SQL("replace into profile values('schedule/test/FIB/table', '0.2,25;0.1,35;0.05,45;0.025,65')"),
        SQL("replace into profile values('schedule/test/APTT', 50)"),
        SQL("replace into profile values('schedule/test/TT', 35)"),
        SQL("replace into profile values('schedule/test/II', 30)"),
        SQL("replace into profile values('schedule/test/V', 30)"),
        SQL("replace into profile values('schedule/test/VII', 30)"),
        SQL("replace into profile values('schedule/test/X', 30)"),
        SQL("replace into profile values('schedule/test/VIII', 30)"),
        SQL("replace into profile values('schedule/test/IX', 30)"),
        SQL("replace into profile values('schedule/test/XI', 30)"),
        SQL("replace into profile values('schedule/test/XII', 30)"),

        SQL("insert or ignore into profile values('analyst/FIB/odPercent', 0.5)"),
        SQL("replace into profile values('analyst/FIB/odThreshold', '4,0.008; 6,0.004; 10,0.0025; 20,0.001; 40,0.0005')"),
        SQL("replace into profile values('analyst/APTT/odThreshold', '4,0.2; 10,0.05; 20,0.02')"),
    });
    return true;
}

void UpdateProfile::setCalibrationAxes()
{
    tryAll({
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='PT'"),
        SQL("update assayCalibration set method=0, funX='Log', funY='Log', dispX='Log', dispY='Log' where name='PT 演算 FIB' or name='PT calculate FIB'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='FIB'"),
        SQL("update assayCalibration set method=4, funX='Log', funY='Linear', dispX='Log', dispY='Log' where name='DD'"),
        SQL("update assayCalibration set method=4, funX='Log', funY='Linear', dispX='Log', dispY='Log' where name='FDP'"),
        SQL("update assayCalibration set method=4, funX='Log', funY='Linear', dispX='Log', dispY='Log' where name='AT'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='II'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='V'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='VII'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='X'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='VIII'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='IX'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='XI'"),
        SQL("update assayCalibration set method=0, dispX='Log', dispY='Log' where name='XII'"),
    });
}

bool UpdateProfile::addPatientLabels()
{
    if (!execAll({SQL(QString("insert or ignore into profile values('patient/memo', '%1')").arg(escaped(tr("备注"))))}))
        return false;
    tryAll({SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(ATIII)', 6500, 200, 6)")});
    if (!execAll({
            SQL(QString("insert or ignore into profile values('patient/printTime', '%1')").arg(escaped(tr("打印时间")))),
            SQL(QString("insert or ignore into profile values('patient/outputTime', '%1')").arg(escaped(tr("传输时间")))),
        }))
        return false;
    tryAll({SQL(QString("update assayItem set code='%1' where assayTemplateId = (select id from assayTemplate where name='APTT') and name = 'T'").arg(escaped(tr("活化部分凝血活酶时间"))))});
    return true;
}

void UpdateProfile::correctNames()
{
    tryAll({
        SQL("update reagentType set name='Factor deficient plasma' where id=1 and name='Lack of factor plasma'"),
        SQL("update reagentType set name='Cleaner' where id=3 and name='Cleaning'"),
        SQL("update reagentType set name='Standard' where id=5 and name='Standard substance'"),
        // Chinese, whatever the language
        SQL("update assayItem set code='D-二聚体' where code='纤维蛋白降解物'"),
    });
}

void UpdateProfile::addProteinAndLupusAssays()
{
    tryAll({
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R1(PC)',        2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R2(PC)',        2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R3(PC)',        2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R1(PS)',        2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R2(PS)',        2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R3(PS)',        2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'LAS',           2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'LAC',           2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R1(APCR1)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R2(APCR1)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R3(APCR1)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R1(APCR2)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R2(APCR2)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R3(APCR2)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(PC)',    6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(PS)',    6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(LAS)',   6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(LAC)',   6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(APCR1)', 6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(APCR2)', 6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'PC ct',         1000, 200, 1)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'PS ct',         1000, 200, 1)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'LAS ct',        1000, 200, 1)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'LAC ct',        1000, 200, 1)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'APCR1 ct',      1000, 200, 1)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'APCR2 ct',      1000, 200, 1)"),

        SQL("insert or ignore into profile values('PC/dilution', '1/4')"),
        SQL("insert or ignore into profile values('PC/incubator/duration', 240)"),
        SQL("insert or ignore into profile values('PC/kinetic/start', 15)"),
        SQL("insert or ignore into profile values('PC/kinetic/end', 60)"),
        SQL("insert or ignore into profile values('PC/max_clot_time', 60)"),
        SQL("insert or ignore into profile values('PS/dilution', '1/20')"),
        SQL("insert or ignore into profile values('PS/mechanicalclot/end', 200)"),
        SQL("insert or ignore into profile values('PS/opticalclot/end', 200)"),
        SQL("insert or ignore into profile values('PS/max_clot_time', 200)"),
        SQL("insert or ignore into profile values('analyst/LAS/odPercent', 0.1)"),

        SQL("insert or ignore into assaytemplate values(16, 'PC',    null, 160, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(17, 'PS',    null, 170, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(18, 'LAS',   null, 180, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(19, 'LAC',   null, 190, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(20, 'APCR1', null, 200, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(21, 'APCR2', null, 200, 'T', 'P', 'Log', 'Log')"),

        SQL("insert or ignore into assayCalibration values(null, 16, 'PC',    0, null, 'OD', 'P', 'Log', 'Log', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 17, 'PS',    0, null, 'T',  'P', 'Log', 'Log', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 18, 'LAS',   0, null, 'T',  'P', 'Log', 'Log', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 19, 'LAC',   0, null, 'T',  'P', 'Log', 'Log', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 20, 'APCR1', 0, null, 'T',  'P', 'Log', 'Log', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 21, 'APCR2', 0, null, 'T',  'P', 'Log', 'Log', 'Log', 'Log')"),

        // "Lups": step 12 corrects exactly this spelling
        SQL("INSERT OR IGNORE INTO assayItem VALUES(40, 16, 'T',  0, 's',  NULL, 1,  1, 'PC-S',      'Protein C',                    0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(41, 16, 'OD', 3, 'OD', NULL, -1, 2, 'PC-OD',     'Absorbency',                   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(42, 16, 'P',  1, '%',  NULL, 2,  3, 'PC-%',      'Protein C',                    70,  140, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(45, 17, 'T',  0, 's',  NULL, 1,  1, 'PS-S',      'Protein S',                    0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(46, 17, 'OD', 3, 'OD', NULL, -1, 2, 'PS-OD',     'Absorbency',                   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(47, 17, 'P',  1, '%',  NULL, 2,  3, 'PS-%',      'Protein S',                    0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(50, 18, 'T',  0, 's',  NULL, 1,  1, 'LAS-S',     'Lups Anticoagulant Screening', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(51, 18, 'OD', 3, 'OD', NULL, -1, 2, 'LAS-OD',    'Absorbency',                   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(52, 18, 'P',  1, '%',  NULL, 2,  3, 'LAS-%',     'LAS',                          0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(55, 19, 'T',  0, 's',  NULL, 1,  1, 'LAC-S',     'Lups Anticoagulant Confirm',   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(56, 19, 'OD', 3, 'OD', NULL, -1, 2, 'LAC-OD',    'Absorbency',                   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(57, 19, 'P',  1, '%',  NULL, 2,  3, 'LAC-%',     'LAC',                          0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(60, 20, 'T',  0, 's',  NULL, 1,  1, 'APCR-1',    'APCR-1',                       0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(61, 20, 'OD', 3, 'OD', NULL, -1, 2, 'APCR-1 OD', 'Absorbency',                   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(62, 20, 'P',  1, '%',  NULL, 2,  3, 'APCR-1 %',  'APCR-1',                       0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(65, 21, 'T',  0, 's',  NULL, 1,  1, 'APCR-2',    'APCR-2',                       0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(66, 21, 'OD', 3, 'OD', NULL, -1, 2, 'APCR-2 OD', 'Absorbency',                   0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(67, 21, 'P',  1, '%',  NULL, 2,  3, 'APCR-2 %',  'APCR-2',                       0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
    });
}

bool UpdateProfile::addPatientTimeLabels()
{
    return execAll({
        SQL(QString("update profile set value='%1' where name='patient/time'").arg(escaped(tr("送检时间")))),
        SQL(QString("insert or ignore into profile values('patient/sampleTime', '%1')").arg(escaped(tr("采样时间")))),
        SQL(QString("insert or ignore into profile values('patient/testTime', '%1')").arg(escaped(tr("测试时间")))),
        SQL(QString("insert or ignore into profile values('patient/validateTime', '%1')").arg(escaped(tr("审核时间")))),
    });
}

bool UpdateProfile::writeChineseCodes()
{
    return execAll({
        SQL("update assayItem set code='吸光度(PT)' where abbr='PT-OD'"),
        SQL("update assayItem set code='百分活动度(PT)' where abbr='PT-%'"),
        SQL("update assayItem set code='比值(PT)' where abbr='PTR'"),
        SQL("update assayItem set code='国际标准化比值(PT)' where abbr='PT-INR'"),
        SQL("update assayItem set code='时间(FIB)' where abbr='FIB-S'"),
        SQL("update assayItem set code='吸光度(FIB)' where abbr='FIB-OD'"),
        SQL("update assayItem set code='比值(APTT)' where abbr='APTTR'"),
        SQL("update assayItem set code='时间(DD)' where abbr='DD-T'"),
        SQL("update assayItem set code='吸光度(D-Dimer)' where abbr='DD-OD'"),
        SQL("update assayItem set code='时间(FDP)' where abbr='FDP-T'"),
        SQL("update assayItem set code='吸光度(FDP)' where abbr='FDP-OD'"),
        SQL("update assayItem set code='纤维蛋白(原)降解产物' where abbr='FDP'"),
        SQL("update assayItem set code='时间(ATIII)' where abbr='AT-T'"),
        SQL("update assayItem set code='吸光度(ATIII)' where abbr='AT-OD'"),
    });
}

bool UpdateProfile::assignReagentIds()
{
    return execAll({
        SQL("update reagent set reagentId='101' where reagentId is null and name='PT'"),
        SQL("update reagent set reagentId='102' where reagentId is null and name='APTT'"),
        SQL("update reagent set reagentId='103' where reagentId is null and name='CaCl2'"),
        SQL("update reagent set reagentId='104' where reagentId is null and name='FIB'"),
        SQL("update reagent set reagentId='105' where reagentId is null and name='Buffer(FIB)'"),
        SQL("update reagent set reagentId='106' where reagentId is null and name='TT'"),
        SQL("update reagent set reagentId='107' where reagentId is null and name='Buffer(DD)'"),
        SQL("update reagent set reagentId='108' where reagentId is null and name='Latex'"),
        SQL("update reagent set reagentId='109' where reagentId is null and name='Buffer(FDP)'"),
        SQL("update reagent set reagentId='110' where reagentId is null and name='FDP'"),
        SQL("update reagent set reagentId='111' where reagentId is null and name='Buffer(ATIII)'"),
        SQL("update reagent set reagentId='112' where reagentId is null and name='R1(ATIII)'"),
        SQL("update reagent set reagentId='113' where reagentId is null and name='R2(ATIII)'"),
        SQL("update reagent set reagentId='114' where reagentId is null and name='II'"),
        SQL("update reagent set reagentId='115' where reagentId is null and name='X'"),
        SQL("update reagent set reagentId='116' where reagentId is null and name='VIII'"),
        SQL("update reagent set reagentId='117' where reagentId is null and name='IX'"),
        SQL("update reagent set reagentId='118' where reagentId is null and name='XII'"),
    });
}

bool UpdateProfile::setReportLimits()
{
    return execAll({
        SQL("update assayItem set lowerReport=0.1, upperReport=40, upperredilution=10 where assayTemplateId=(select id from assayTemplate where name='DD') and name='P'"),
        SQL("update assayItem set lowerReport=1, upperReport=100 where assayTemplateId=(select id from assayTemplate where name='FDP') and name='P'"),
        SQL("update assayItem set lowerReport=15, upperReport=150 where assayTemplateId=(select id from assayTemplate where name='ATIII') and name='P'"),
    });
}

void UpdateProfile::writeResultChecks()
{
    (void)updateOrInsert(
        "update dataCheck set mark=1, markItemFullName='APTT.T' where assayTemplateId=(select id from assayTemplate where name='APTT')",
        "insert into dataCheck(assayTemplateId, mark, markItemFullName) select id, 1, 'APTT.T' from assayTemplate where name='APTT'",
        SOURCE_LINE);
    (void)updateOrInsert(
        "update dataCheck set mark=1, markItemFullName='TT.T' where assayTemplateId=(select id from assayTemplate where name='TT')",
        "insert into dataCheck(assayTemplateId, mark, markItemFullName) select id, 1, 'TT.T' from assayTemplate where name='TT'",
        SOURCE_LINE);
    (void)updateOrInsert(
        "update dataCheck set mark=1, markItemFullName='PT.T' where assayTemplateId=(select id from assayTemplate where name='PT')",
        "insert into dataCheck(assayTemplateId, mark, markItemFullName) select id, 1, 'PT.T' from assayTemplate where name='PT'",
        SOURCE_LINE);
    (void)updateOrInsert(
        "update dataCheck set mark=1, markItemFullName='FIB.P' where assayTemplateId=(select id from assayTemplate where name='FIB')",
        "insert into dataCheck(assayTemplateId, mark, markItemFullName) select id, 1, 'FIB.P' from assayTemplate where name='FIB'",
        SOURCE_LINE);
    (void)updateOrInsert(
        "update dataCheck set redilution=1, redilutionItemFullName='DD.P', redilutionUpper=10, report=1, reportItemFullName='DD.P', mark=1, markItemFullName='DD.P' where assayTemplateId=(select id from assayTemplate where name='DD')",
        "insert into dataCheck(assayTemplateId, redilution, redilutionItemFullName, redilutionUpper, report, reportItemFullName, mark, markItemFullName) select id, 1, 'DD.P', 10, 1, 'DD.P', 1, 'DD.P' from assayTemplate where name='DD'",
        SOURCE_LINE);
    (void)updateOrInsert(
        "update dataCheck set report=1, reportItemFullName='FDP.P', mark=1, markItemFullName='FDP.P' where assayTemplateId=(select id from assayTemplate where name='FDP')",
        "insert into dataCheck(assayTemplateId, report, reportItemFullName, mark, markItemFullName) select id, 1, 'FDP.P', 1, 'FDP.P' from assayTemplate where name='FDP'",
        SOURCE_LINE);
    (void)updateOrInsert(
        "update dataCheck set report=1, reportItemFullName='ATIII.P', mark=1, markItemFullName='ATIII.P' where assayTemplateId=(select id from assayTemplate where name='ATIII')",
        "insert into dataCheck(assayTemplateId, report, reportItemFullName, mark, markItemFullName) select id, 1, 'ATIII.P', 1, 'ATIII.P' from assayTemplate where name='ATIII'",
        SOURCE_LINE);
}

void UpdateProfile::addClottingTimes()
{
    tryAll({
        SQL("insert or ignore into profile values('APTT/mechanicalclot/end', '300')"),
        SQL("insert or ignore into profile values('APTT/opticalclot/end', '300')"),
        SQL("insert or ignore into profile values('APTT/max_clot_time', '300')"),
        SQL("insert or ignore into profile values('TT/mechanicalclot/end', '300')"),
        SQL("insert or ignore into profile values('TT/opticalclot/end', '300')"),
        SQL("insert or ignore into profile values('TT/max_clot_time', '300')"),
    });
}

bool UpdateProfile::setNormalRanges()
{
    return execAll({
        SQL("update assayItem set lowerNormal=24, upperNormal=36 where assayTemplateId=(select id from assayTemplate where name='APTT') and name='T'"),
        SQL("update assayItem set lowerNormal=0.80, upperNormal=1.20 where assayTemplateId=(select id from assayTemplate where name='APTT') and name='R'"),
        SQL("update assayItem set lowerNormal=9, upperNormal=15 where assayTemplateId=(select id from assayTemplate where name='TT') and name='T'"),
        SQL("update assayItem set lowerNormal=75, upperNormal=125 where assayTemplateId=(select id from assayTemplate where name='ATIII') and name='P'"),
    });
}

void UpdateProfile::addAntiXa()
{
    tryAll({
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R1(XA)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'R2(XA)',     2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(XA)', 6500, 200, 6)"),

        SQL("insert or ignore into profile values('XA/dilution', '1/10')"),
        SQL("insert or ignore into profile values('specialValue/XA/UFH', 0.01)"),
        SQL("insert or ignore into profile values('specialValue/XA/LMWH', 0.01)"),
        SQL("insert or ignore into profile values('specialValue/XA/RX', 0.01)"),
        SQL("insert or ignore into profile values('XA/twopoints/p1/start', 4)"),
        SQL("insert or ignore into profile values('XA/twopoints/p1/end', 6)"),
        SQL("insert or ignore into profile values('XA/twopoints/p2/start', 175)"),
        SQL("insert or ignore into profile values('XA/max_clot_time', 185)"),

        // Fails from stored version 8 on, when the table has one more column. It stays so, since a delivered
        // step never changes what it writes.
        SQL("insert or ignore into assaytemplate values(22, 'XA', null, 220, 'T', 'P', 'Log', 'Log')"),

        SQL("insert or ignore into assayCalibration values(null, 22, 'Anti-Xa(UFH)',         0, null, 'OD', 'UFH',  'Log', 'Linear', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 22, 'Anti-Xa(LMWH)',        0, null, 'OD', 'LMWH', 'Log', 'Linear', 'Log', 'Log')"),
        SQL("insert or ignore into assayCalibration values(null, 22, 'Anti-Xa(Rivaroxaban)', 0, null, 'OD', 'RX',   'Log', 'Linear', 'Log', 'Log')"),

        SQL("insert or ignore into assayItem values(70, 22, 'T',    0, 's',    NULL, 1,  1, 'XA-T',    'Anti-Xa time',        0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("insert or ignore into assayItem values(71, 22, 'OD',   3, 'OD',   NULL, -1, 2, 'XA-OD',   'Absorbency',          0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("insert or ignore into assayItem values(72, 22, 'UFH',  1, 'U/ml', NULL, 2,  3, 'XA-UFH',  'Anti-Xa UFH',         0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("insert or ignore into assayItem values(73, 22, 'LMWH', 1, 'U/ml', NULL, 2,  4, 'XA-LMWH', 'Anti-Xa LMWH',        0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
        SQL("insert or ignore into assayItem values(74, 22, 'RX',   1, 'U/ml', NULL, 2,  5, 'XA-RX',   'Anti-Xa Rivaroxaban', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
    });
}

bool UpdateProfile::writeChineseAntiXaCodes()
{
    return execAll({
        SQL("update assayItem set code='时间(抗Xa)' where abbr='XA-T'"),
        SQL("update assayItem set code='吸光度(抗Xa)' where abbr='XA-OD'"),
        SQL("update assayItem set code='抗Xa-普通肝素' where abbr='XA-UFH'"),
        SQL("update assayItem set code='抗Xa-低分子肝素' where abbr='XA-LMWH'"),
        SQL("update assayItem set code='抗Xa-利伐沙班' where abbr='XA-RX'"),
    });
}

} // namespace coagulation
