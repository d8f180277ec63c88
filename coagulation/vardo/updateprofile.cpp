// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updateprofile.h"

#include "coagulation/vardo/execute.h"

#include <QDebug>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>

namespace coagulation {

QString escaped(QString text)
{
    return text.replace('\'', "''");
}

bool isChinese(const QString &language)
{
    return language.startsWith("zh", Qt::CaseInsensitive);
}

UpdateProfile::UpdateProfile(QObject *parent)
    : UpdateBase(databaseFileName("%1profile%2.db"), parent)
{
}

bool UpdateProfile::update_v10()
{
    if (!changeLayouts() || !convertValues() || !completeAssays())
        return false;

    tryAll({
        SQL("REPLACE INTO profile VALUES('ATIII/kinetic/start', '5')"),
        SQL("REPLACE INTO profile VALUES('ATIII/kinetic/end', '55')"),
        SQL("REPLACE INTO profile VALUES('ATIII/max_clot_time', '55')"),
        SQL("REPLACE INTO profile VALUES('ATIII/dilution', '1/15')"),
        SQL("REPLACE INTO profile VALUES('ATIII/report/dilution', '1/15')"),
        SQL("REPLACE INTO profile VALUES('ATIII/incubator/duration', '90')"),
        SQL("DELETE FROM profile where name LIKE 'program/ATIII/%' or name LIKE 'ATIII/mix/%'"),
    });
    return true;
}

// A part that runs only below a version was once the step to that version.

bool UpdateProfile::changeLayouts()
{
    if (version < 1 && !addCurveInfo())
        return false;
    if (version < 4 && !addCurrentCurve())
        return false;
    if (version < 5 && !addItemRanges())
        return false;
    if (version < 6 && !rebuildCalibrations())
        return false;
    return version >= 7 || makeReagentIdsUnique();
}

bool UpdateProfile::convertValues()
{
    if (version < 2 && !writeFirstDefaults())
        return false;
    if (version < 3)
        setCalibrationAxes();
    correctItemsAndThresholds();
    if (version < 4)
        tryAll({SQL("insert into currentCurve (name, curveId) select name, id from curve")});
    if (!fillVariables() || !refitStandardCurves() || !addPatientLabels())
        return false;
    if (version < 5 && !moveLimitsToItems())
        return false;
    correctNames();
    if (version < 6)
        addProteinAndLupusAssays();
    return addPatientTimeLabels();
}

bool UpdateProfile::completeAssays()
{
    // Asked in this class's translation context, like the labels. Steps 13, 17 and 18 ask in that of
    // UpdateBase. The analyser's translations may hold "zh" in only one of the two, so one context for
    // all would change what the delivered steps write.
    const bool chinese = isChinese(tr("zh"));
    if (chinese && !writeChineseCodes())
        return false;
    if (version < 7 && !assignReagentIds())
        return false;
    if (!setReportLimits())
        return false;
    writeResultChecks();
    addClottingTimes();
    if (!setNormalRanges())
        return false;
    addAntiXa();
    if (version < 8)
        (void)addDisplayNames(); // ignored: without them the templates keep their old layout
    if (version < 9
        && !execAll(
            {SQL("update assayCalibration set method=1, dispY='Linear' where name='ATIII'")}))
        return false;
    if (chinese && !writeChineseAntiXaCodes())
        return false;
    return renameReagents();
}

bool UpdateProfile::update_v11()
{
    tryAll({SQL("UPDATE assayCalibration SET funX='Linear', dispX='Linear' WHERE id=6")});
    return true;
}

// One row a line, so that columns of values can be compared.
// clang-format off

bool UpdateProfile::update_v12()
{
    tryAll({
        SQL("update assayItem set code='Lupus Anticoagulant Screening' where code='Lups Anticoagulant Screening'"),
        SQL("update assayItem set code='Lupus Anticoagulant Confirm'   where code='Lups Anticoagulant Confirm'"),
        SQL("insert or ignore into variable values(null, 18,  'RPS', null)"),
        SQL("insert or ignore into variable values(null, 19,  'RPC', null)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(53, 18, 'R',   2, NULL, 'T/RPS',   2, 4, 'LASR',   'Screen ratio',     0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(58, 19, 'R',   2, NULL, 'T/RPC',   2, 4, 'LACR',   'Confirm ratio',    0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
        SQL("INSERT OR IGNORE INTO assayItem VALUES(59, 19, 'NLR', 2, NULL, 'LAS.R/R', 2, 5, 'LA-NLR', 'Normalized ratio', 0.0, 1.2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0)"),
    });
    return true;
}

bool UpdateProfile::update_v13()
{
    tryAll({
        SQL("insert or ignore into assayCalibration values(26, 22, 'Anti-Xa', 0, null, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log')"),
        SQL("insert or ignore into assayItem        values(75, 22, 'P',       1, '%',   NULL, 2,  6,     'XA-%',   'Anti-Xa Activated degree', 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1)"),
    });
    if (!execAll({
            SQL("update assayItem set unit='IU/ml' where abbr='XA-UFH'"),
            SQL("update assayItem set unit='IU/ml' where abbr='XA-LMWH'"),
            SQL("update assayItem set unit='IU/ml' where abbr='XA-RX'"),
        }))
        return false;
    return !isChinese(UpdateBase::tr("zh"))
        || execAll({SQL("update assayItem set code='抗Xa-百分活动度' where abbr='XA-%'")});
}

// clang-format on

bool UpdateProfile::update_v15()
{
    if (!execAll({
            SQL(R"(-- currentCurve
create table currentCurve_new (
    id integer primary key,
    instrUuid text,
    name text,
    curveId integer references curve,
    unique(instrUuid, name) on conflict replace
))"),
            SQL("INSERT INTO currentCurve_new (id, instrUuid, name, curveId)"
                " SELECT id, 'wb1', name, curveId FROM currentCurve"),
            SQL("DROP TRIGGER IF EXISTS deleteCurve"),
        }))
        return false;
    reportLeftValues("currentCurve", {"id", "name", "curveId"});
    return execAll({
        SQL("DROP TABLE currentCurve"),
        SQL("ALTER TABLE currentCurve_new RENAME TO currentCurve"),
        SQL(R"(create trigger deleteCurve after delete on curve
begin
    delete from curvePoint where curvePoint.curveId = old.id;
    delete from curveVariable where curveVariable.curveId = old.id;
    delete from curveReagent where curveReagent.curveId = old.id;
    delete from curveInfo where curveInfo.curveId = old.id;
    delete from currentCurve where currentCurve.curveId = old.id;
end)"),
        SQL("UPDATE profile SET name ="
            " REPLACE(name, '{00000000-0000-0000-0000-000000000000}', 'wb1')"
            " WHERE name LIKE '%{00000000-0000-0000-0000-000000000000}%'"),
    });
}

bool UpdateProfile::update_v16()
{
    if (!execAll({
            SQL(R"(create table assayItem_new (
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
    upperRedilution real default 0,
    lowerMeasurement real,
    upperMeasurement real,
    visible integer default 1
))"),
            SQL("DROP TRIGGER IF EXISTS afterDeleteAssayTemplate"),
        })
        || !rebuildTable("assayItem_new", "assayItem")
        || !execAll({SQL(R"(create trigger afterDeleteAssayTemplate after delete on assayTemplate
begin
    delete from variable where variable.assayTemplateId = old.id;
    delete from assayItem where assayItem.assayTemplateId = old.id;
    delete from dataCheck where dataCheck.assayTemplateId = old.id;
end;)")}))
        return false;

    // times, ratios, activities and concentrations, then absorbances
    tryAll({
        SQL("UPDATE assayItem SET lowerMeasurement = 0, upperMeasurement = 1e9 WHERE id IN ("
            "1,3,4,5,6,8,9,10,11,12,14,15,17,18,20,21,22,23,24,25,26,27,28,29,30,31,32,33,34,"
            "35,36,40,42,45,47,50,52,53,55,57,58,59,60,62,65,67,70,72,73,74,75,80,82,90,92,100,"
            "102,103,110,112,113,120,122,123,130,132,140,142,150,152,160,162,163,170,172,2048,"
            "2049,2064,2065,2066"
            ")"),
        SQL("UPDATE assayItem SET lowerMeasurement = -5, upperMeasurement = 10 WHERE id IN ("
            "2,7,13,16,19,41,46,51,56,61,66,71,81,91,93,101,111,121,131,141,151,161,171"
            ")"),
    });
    return true;
}

// clang-format off

bool UpdateProfile::update_v18()
{
    tryAll({SQL("insert or ignore into assayItem values(233, 38, 'DETLA', 2, 's',  'APTT6.T-APTT7.T', 2, 4, 'APTT7-DETLA', 'Time-dependency',  0,    0,    0, 0, 0,  0,  0, 0, 0, 1e9, 1)")});
    if (isChinese(UpdateBase::tr("zh")))
        tryAll({SQL("update assayItem set code='时间依赖差(APTT7)' where abbr='APTT7-DETLA'")});
    tryAll({SQL("delete from assayItem where id = 192")});
    return true;
}

bool UpdateProfile::update_v19()
{
    tryAll({
        SQL("update assayTemplate set displayOrder=330 where name='PT2'"),
        SQL("update assayTemplate set displayOrder=340 where name='PT3'"),
        SQL("update assayTemplate set displayOrder=350 where name='APTT2'"),
        SQL("update assayTemplate set displayOrder=360 where name='APTT3'"),
        SQL("update assayTemplate set displayOrder=370 where name='APTT4'"),
        SQL("update assayTemplate set displayOrder=380 where name='APTT5'"),
        SQL("update assayTemplate set displayOrder=390 where name='APTT6'"),
        SQL("update assayTemplate set displayOrder=400 where name='APTT7'"),
    });
    return true;
}

bool UpdateProfile::update_v20()
{
    return execAll({
        SQL("insert into reagent (reagentId, type, name, initVolume, alarmLimit, vialType) values (null, 0, 'RX',         2000, 200, 3)"),
        SQL("insert into reagent (reagentId, type, name, initVolume, alarmLimit, vialType) values (null, 2, 'Buffer(RX)', 6500, 200, 6)"),

        SQL("insert into assaytemplate values(41, 'RX', 'RX', null, 410, 'T', 'P', 'Log', 'Log')"),

        SQL("insert into assayCalibration values(27, 31, 'UFH',  0, null, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log')"),
        SQL("insert into assayCalibration values(28, 25, 'LMWH', 0, null, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log')"),
        SQL("insert into assayCalibration values(29, 41, 'RX',   0, null, 'OD', 'P', 'Log', 'Linear', 'Log', 'Log')"),

        SQL("insert into assayItem values(260, 41,  'T', 0,      's',        null,  1, 1,  'RX-T',     'Rivaroxaban', 0, 0, 0, 0, 0, 0, 0, 0,  0, 1e9, 0)"),
        SQL("insert into assayItem values(261, 41, 'OD', 3,     'OD',        null, -1, 2, 'RX-OD',      'Absorbency', 0, 0, 0, 0, 0, 0, 0, 0, -5,  10, 0)"),
        SQL("insert into assayItem values(262, 41,  'P', 1,  'IU/ml',        null,  2, 3,    'RX',              'RX', 0, 0, 0, 0, 0, 0, 0, 0,  0, 1e9, 1)"),
        SQL("insert into assayItem values(263, 41,  'R', 2, 'OD/min', 'OD/(T*60)', -1, 4,  'RX-R', 'Absorbency rate', 0, 0, 0, 0, 0, 0, 0, 0,  0, 1e9, 1)"),
    });
}

// clang-format on

bool UpdateProfile::update_v21()
{
    return execAll({SQL(R"(insert into profile values
    ('ATIII/redilution/lower','1/8'),
    ('ATIII/redilution/upper','1/30'),
    ('FIB/redilution/lower','1/5'),
    ('FIB/redilution/upper','1/20'),
    ('II/redilution/lower','1/5'),
    ('II/redilution/upper','1/20'),
    ('V/redilution/lower','1/5'),
    ('V/redilution/upper','1/20'),
    ('VII/redilution/lower','1/5'),
    ('VII/redilution/upper','1/20'),
    ('X/redilution/lower','1/5'),
    ('X/redilution/upper','1/20'),
    ('VIII/redilution/lower','1/5'),
    ('VIII/redilution/upper','1/20'),
    ('IX/redilution/lower','1/5'),
    ('IX/redilution/upper','1/20'),
    ('XI/redilution/lower','1/5'),
    ('XI/redilution/upper','1/20'),
    ('XII/redilution/lower','1/5'),
    ('XII/redilution/upper','1/20'),
    ('PC/redilution/lower','1/2'),
    ('PC/redilution/upper','1/8'),
    ('PS/redilution/lower','1/10'),
    ('PS/redilution/upper','1/40'),
    ('XA/redilution/lower','1/5'),
    ('XA/redilution/upper','1/20'))")});
}

bool UpdateProfile::update_v22()
{
    return exec(SOURCE_LINE, "insert or ignore into profile values('patient/instrId', :instrId)",
                {{":instrId", tr("测量仪器")}});
}

bool UpdateProfile::update_v23()
{
    return execAll({
        SQL("ALTER TABLE curve ADD COLUMN expirationDate date;"),
        SQL("UPDATE curve SET expirationDate = DATE(date, '+20 years')"
            " WHERE expirationDate IS NULL AND date IS NOT NULL;"),
    });
}

bool UpdateProfile::update_v24()
{
    // The first pattern that matches a key gives it its new name.
    const QList<std::pair<QRegularExpression, QString>> rules{
        {QRegularExpression(R"(^program/(\w+)/volume$)"), R"(program/\1/dilution/volume)"},
        {QRegularExpression(R"(^program/(\w+)/diluent$)"), R"(program/\1/dilution/name)"},
        {QRegularExpression(R"(^program/(\w+)/name(\d)$)"), R"(program/\1/r\2/name)"},
        {QRegularExpression(R"(^program/(\w+)/reagent(\d)$)"), R"(program/\1/r\2/volume)"},
        {QRegularExpression(R"(^(\w+)/(mix/\w+)$)"), R"(program/\1/r3/\2)"},
    };
    QSqlQuery query;
    query.setForwardOnly(true);
    if (!execute(query,
                 "SELECT name FROM profile WHERE name LIKE 'program/%/volume'"
                 " OR name LIKE 'program/%/diluent'"
                 " OR name LIKE 'program/%/name1' OR name LIKE 'program/%/name2'"
                 " OR name LIKE 'program/%/name3'"
                 " OR name LIKE 'program/%/reagent1' OR name LIKE 'program/%/reagent2'"
                 " OR name LIKE 'program/%/reagent3'"
                 " OR name LIKE '%/mix/type' OR name LIKE '%/mix/times'"
                 " OR name LIKE '%/mix/volume' OR name LIKE '%/mix/duration'")) {
        logSqlError(query, SOURCE_LINE);
        return false;
    }
    QMap<QString, QString> newKeys;
    if (!readRows(query, SOURCE_LINE, [&] {
            const QString key = query.value(0).toString();
            QString newKey = key;
            for (const auto &[pattern, replacement] : rules) {
                if (newKey != key)
                    break;
                newKey.replace(pattern, replacement);
            }
            if (newKey != key)
                newKeys.insert(key, newKey);
            return true;
        }))
        return false;

    if (!query.prepare("update profile set name=:newKey where name=:key")) {
        qWarning() << query.lastError();
        return false;
    }
    for (auto newKey = newKeys.begin(); newKey != newKeys.end(); ++newKey) {
        query.bindValue(":key", newKey.key());
        query.bindValue(":newKey", newKey.value());
        if (!execute(query)) {
            logSqlError(query, SOURCE_LINE);
            return false;
        }
    }
    return true;
}

bool UpdateProfile::update_v25()
{
    return execAll({
        SQL("UPDATE reagent SET reagentId=119 WHERE name='LAC'"),
        SQL("UPDATE reagent SET reagentId=120 WHERE name='LAS'"),
    });
}

// clang-format off

bool UpdateProfile::update_v26()
{
    tryAll({
        SQL("INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 0, 'dPT1', 2000, 200, 3)"),
        SQL("INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 0, 'dPT2', 2000, 200, 3)"),
        SQL("INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 2, 'Buffer(dPT1)', 6500, 200, 6)"),
        SQL("INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 2, 'Buffer(dPT2)', 6500, 200, 6)"),
        SQL("INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 5, 'dPT1 ct', 1000, 200, 1)"),
        SQL("INSERT INTO reagent (reagentId, type, name, initVolume, alarmLimit, vialType) VALUES(null, 5, 'dPT2 ct', 1000, 200, 1)"),

        SQL("INSERT INTO assayTemplate VALUES(42, 'dPT1', 'dPT1', NULL, 420, 'T', 'P', 'Log', 'Log')"),
        SQL("INSERT INTO assayTemplate VALUES(43, 'dPT2', 'dPT2', NULL, 430, 'T', 'P', 'Log', 'Log')"),

        SQL("INSERT INTO assayCalibration VALUES(30, 42, 'dPT1', 0, null, 'T', 'P', 'Log', 'Log', 'Log', 'Log')"),
        SQL("INSERT INTO assayCalibration VALUES(31, 43, 'dPT2', 0, null, 'T', 'P', 'Log', 'Log', 'Log', 'Log')"),

        SQL("INSERT INTO variable VALUES(null, 42, 'normal', null)"),
        SQL("INSERT INTO variable VALUES(null, 43, 'normal', null)"),

        // "DPT1.R/R": databases at version 26 hold this; step 27 corrects it
        SQL("INSERT INTO assayItem VALUES(270, 42, 'T', 0, 's', null, 1, 1, 'dPT1-S', 'dPT1 Screening', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 1)"),
        SQL("INSERT INTO assayItem VALUES(271, 42, 'OD', 3, 'OD', null, -1, 2, 'dPT1-OD', 'Absorbency', 0, 0, 0, 0, 0, 0, 0, 0, -5, 10, 0)"),
        SQL("INSERT INTO assayItem VALUES(272, 42, 'P', 1, '%', null, 2, 3, 'dPT1-%', 'dPT1', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 0)"),
        SQL("INSERT INTO assayItem VALUES(273, 42, 'R', 2, null, 'T/normal', 2, 4, 'dPT1R', 'Screen ratio', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 1)"),
        SQL("INSERT INTO assayItem VALUES(280, 43, 'T', 0, 's', null, 1, 1, 'dPT2-S', 'dPT2 Confirm', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 1)"),
        SQL("INSERT INTO assayItem VALUES(281, 43, 'OD', 3, 'OD', null, -1, 2, 'dPT2-OD', 'Absorbency', 0, 0, 0, 0, 0, 0, 0, 0, -5, 10, 0)"),
        SQL("INSERT INTO assayItem VALUES(282, 43, 'P', 1, '%', null, 2, 3, 'dPT2-%', 'dPT2', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 0)"),
        SQL("INSERT INTO assayItem VALUES(283, 43, 'R', 2, null, 'T/normal', 2, 4, 'dPT2R', 'Confirm ratio', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 1)"),
        SQL("INSERT INTO assayItem VALUES(284, 43, 'NLR', 2, null, 'DPT1.R/R', 2, 5, 'dPT2-NLR', 'Normalized ratio', 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e9, 1)"),
    });
    return true;
}

// clang-format on

bool UpdateProfile::update_v27()
{
    tryAll({SQL("UPDATE assayItem SET expr='dPT1.R/R' WHERE id=284")});
    return true;
}

bool UpdateProfile::update_v28()
{
    return execAll({SQL("insert into profile values ('ATIII/incubator/duration/factory','90')")});
}

bool UpdateProfile::update_v29()
{
    return execAll({
        SQL("update reagent set reagentId='121' where name='R1(XA)'"),
        SQL("update reagent set reagentId='122' where name='R2(XA)'"),
    });
}

// clang-format off

bool UpdateProfile::update_v30()
{
    if (!execAll({
            SQL("UPDATE reagent SET name='R2(vWF)' WHERE name='vWF' AND type=0"),
            SQL("UPDATE reagent SET name='R2(Plg)' WHERE name='Plg' AND type=0"),
            SQL("UPDATE reagent SET name='R1(vWF)' WHERE name='Buffer(vWF)' AND type=2"),
        }))
        return false;
    tryAll({
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'R1(Plg)', 6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'Plg ct', 1000, 200, 1)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(5, 'vWF ct', 1000, 200, 1)"),
    });
    if (!execAll({SQL("UPDATE assayTemplate SET caliX='OD', caliY='P', funX='Linear', funY='Linear' WHERE id=26")}))
        return false;
    tryAll({
        SQL("insert or ignore into assayCalibration values(32, 26, 'Plg', 1, null, 'OD','P','Linear','Linear','Linear','Linear')"),
        SQL("insert or ignore into assayCalibration values(33, 24, 'vWF', 4, null, 'OD','P','Log','Linear','Log','Log')"),

        SQL("insert or ignore into profile values ('Plg/kinetic/start', 5)"),
        SQL("insert or ignore into profile values ('Plg/kinetic/end', 55)"),
        SQL("insert or ignore into profile values ('Plg/max_clot_time', 55)"),
        SQL("insert or ignore into profile values ('Plg/dilution', '1/15')"),
        SQL("insert or ignore into profile values ('Plg/redilution/lower', '1/8')"),
        SQL("insert or ignore into profile values ('Plg/redilution/upper', '1/30')"),
        SQL("insert or ignore into profile values ('Plg/incubator/duration', '90')"),
        SQL("insert or ignore into profile values ('Plg/report/dilution', '1/15')"),
        SQL("insert or ignore into profile values ('Plg/incubator/duration/factory', '90')"),
        SQL("insert or ignore into profile values ('program/vWF/r3/mix/times', 3)"),
        SQL("insert or ignore into profile values ('specialValue/vWF/P', 0.1)"),
        SQL("insert or ignore into profile values ('vWF/priority', 10)"),
        SQL("insert or ignore into profile values ('vWF/twopoints/p1/start', 40)"),
        SQL("insert or ignore into profile values ('vWF/twopoints/p1/end', 60)"),
        SQL("insert or ignore into profile values ('vWF/twopoints/p2/start', 290)"),
        SQL("insert or ignore into profile values ('vWF/max_clot_time', 300)"),

        SQL("insert or ignore into dataCheck (assayTemplateId, report, reportItemFullName, reportLower, reportUpper, mark, markItemFullName, markLower, markUpper, redilution, redilutionItemFullName, redilutionLower, redilutionUpper, repeat, repeatItemFullName, repeatLower, repeatUpper, rep, repDiff) values (26, 1, 'Plg.P', 0, 0, 1, 'Plg.P', 0, 0, 0, null, 0, 0, 0, null, 0, 0, 0, 0)"),
        SQL("insert or ignore into dataCheck (assayTemplateId, report, reportItemFullName, reportLower, reportUpper, mark, markItemFullName, markLower, markUpper, redilution, redilutionItemFullName, redilutionLower, redilutionUpper, repeat, repeatItemFullName, repeatLower, repeatUpper, rep, repDiff) values (24, 1, 'vWF.P', 0, 0, 1, 'vWF.P', 0, 0, 0, null, 0, 0, 0, null, 0, 0, 0, 0)"),
    });
    return true;
}

// clang-format on

} // namespace coagulation
