// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updateprofile.h"

#include "coagulation/zucore/assaytemplate.h"
#include "coagulation/zucore/standardcurve.h"

#include <QDate>
#include <QDebug>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>

#include <algorithm>
#include <cmath>

namespace coagulation {

namespace {

/// \return a debug message that begins with the place it comes from
QDebug debugFrom(const char *sourceFile, int line)
{
    return qDebug() << sourceFile << "(" << line << "): ";
}

/// \return the text of a number, which may stand in a statement; empty for anything else
QString numberText(const QVariant &value)
{
    const QString text = value.toString();
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? text : QString();
}

/// \param fullName name of a template, ".", name of an item
/// \return the item's name, as it stands in a statement
QString itemName(const QVariant &fullName)
{
    return escaped(fullName.toString().split('.').value(1));
}

/// \param row id, name, method, condition, caliX, caliY, funX, funY, dispX, dispY
AssayTemplate::Calibration readCalibration(const QSqlQuery &row)
{
    AssayTemplate::Calibration calibration;
    calibration.id = row.value(0).toInt();
    calibration.name = row.value(1).toString();
    calibration.method = static_cast<zu::RegressionMethod>(row.value(2).toInt());
    calibration.condition = row.value(3).toString();
    calibration.caliX = row.value(4).toString();
    calibration.caliY = row.value(5).toString();
    calibration.funX = row.value(6).toString();
    calibration.funY = row.value(7).toString();
    calibration.dispX = row.value(8).toString();
    calibration.dispY = row.value(9).toString();
    return calibration;
}

/// \param row of a curve; its columns 8 to 12 hold the coefficients a to e
/// \param count how many the curve's method has
/// \return as many coefficients, five at most; all five for a method that has fewer than two
QList<double> storedCoefficients(const QSqlQuery &row, int count)
{
    QList<double> coefficients(count < 2 ? 5 : std::min(count, 5));
    for (int i = 0; i < coefficients.size(); ++i)
        coefficients[i] = row.value(8 + i).toDouble();
    return coefficients;
}

} // namespace

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

// What runs below a version only is what the step to that version used to be.

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
    correctItems();
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
    const bool chinese = isChinese(tr("zh"));
    if (chinese && !writeChineseCodes())
        return false;
    if (version < 7 && !assignReagentIds())
        return false;
    if (!setReportLimits())
        return false;
    checkResults();
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
    // upperredilution: its spelling is kept
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
    if (!reagents.exec("select id, reagentId from reagent")) {
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
    for (auto duplicate = duplicates.begin(); duplicate != duplicates.end(); ++duplicate) {
        QString reagentId;
        for (int n = 2; reagentId.isEmpty() || taken.contains(reagentId); ++n)
            reagentId = QString("%1(%2)").arg(duplicate.value(), QString::number(n));
        update.bindValue(":reagentId", reagentId);
        update.bindValue(":id", duplicate.key());
        if (!update.exec()) {
            logSqlError(update, SOURCE_LINE);
            return false;
        }
        debugFrom(SOURCE_LINE) << "UPDATE reagent SET reagentId =" << reagentId
                               << "WHERE id =" << duplicate.key();
        taken.insert(reagentId);
    }
    return true;
}

void UpdateProfile::correctItems()
{
    tryAll({
        SQL("update assayItem set precision=-1 where name='OD'"),
        SQL("update assayItem set upperNormal=15 where assayTemplateId="
            "(select id from assayTemplate where name='PT') and name='T' and upperNormal=14"),
    });
    (void)updateOrInsert(
        "update profile set value='4,0.2; 7,0.02; 10,0.008' where name='analyst/odThreshold'",
        "replace into profile values('analyst/odThreshold', '4,0.2; 7,0.02; 10,0.008')",
        SOURCE_LINE);
}

/// The variables' values used to stand with the curves only.
bool UpdateProfile::fillVariables()
{
    QSqlQuery count;
    if (!count.exec("select count(*) from variable where value notnull")) {
        logUnlessContentError(count, SOURCE_LINE);
        return false;
    }
    if (count.next() && count.value(0).toLongLong() > 0)
        return true; // they have been filled before
    count.finish();

    QSqlQuery variables;
    variables.setForwardOnly(true);
    if (!variables.exec("select id, assayTemplateId, name, value from variable")) {
        logSqlError(variables, SOURCE_LINE);
        return false;
    }
    QSqlQuery values;
    values.setForwardOnly(true);
    if (!values.prepare("select curveVariable.value from curveVariable, curve, assayCalibration"
                        " where curveVariable.name=:name and curveId=curve.id"
                        " and curve.name=assayCalibration.name"
                        " and assayCalibration.assayTemplateId=:assayTemplateId")) {
        logSqlError(values, SOURCE_LINE);
        return false;
    }
    QSqlQuery update;
    if (!update.prepare("update variable set value=:value where id=:id")) {
        logSqlError(update, SOURCE_LINE);
        return false;
    }
    return readRows(variables, SOURCE_LINE, [&] {
        values.bindValue(":name", variables.value(2));
        values.bindValue(":assayTemplateId", variables.value(1));
        if (!values.exec()) {
            logSqlError(values, SOURCE_LINE);
            return false;
        }
        if (!values.next())
            return true;
        update.bindValue(":id", variables.value(0));
        update.bindValue(":value", values.value(0));
        if (!update.exec()) {
            logSqlError(update, SOURCE_LINE);
            return false;
        }
        return true;
    });
}

/// Prepared once for all curves.
struct UpdateProfile::RefitQueries {
    QSqlQuery calibration;
    QSqlQuery points;
    QSqlQuery updateCurve;
    QSqlQuery updatePoint;
};

/// Fits every curve that is not valid once more, as the analyser software of this version would.
bool UpdateProfile::refitStandardCurves()
{
    QSqlQuery curves;
    curves.setForwardOnly(true);
    if (!curves.exec("select id, name, xunit, yunit, correlation, date, xFun, yFun,"
                     " a, b, c, d, e, valid, lotsNum from curve")) {
        logUnlessContentError(curves, SOURCE_LINE);
        return false;
    }
    RefitQueries queries;
    queries.points.setForwardOnly(true);
    if (!queries.calibration.prepare(
            "select id, name, method, condition, caliX, caliY, funX, funY, dispX, dispY"
            " from assayCalibration where name = :name")) {
        logSqlError(queries.calibration, SOURCE_LINE);
        return false;
    }
    if (!queries.points.prepare(
            "select rowid, x, y, z, flags from curvePoint where curveId = :curveId")) {
        logSqlError(queries.points, SOURCE_LINE);
        return false;
    }
    if (!queries.updateCurve.prepare(
            "update curve set correlation = :correlation, date = :date,"
            " a = :a, b = :b, c = :c, d = :d, e = :e, valid = :valid where id = :id")) {
        logSqlError(queries.updateCurve, SOURCE_LINE);
        return false;
    }
    if (!queries.updatePoint.prepare(
            "update curvePoint set z = :z, flags = :flags where rowid = :rowid")) {
        logSqlError(queries.updateCurve, SOURCE_LINE); // kept: names the update of the curve
        return false;
    }
    return readRows(curves, SOURCE_LINE, [&] { return refitStandardCurve(curves, queries); });
}

/// \param row id, name, xunit, yunit, correlation, date, xFun, yFun, a to e, valid, lotsNum
bool UpdateProfile::refitStandardCurve(const QSqlQuery &row, RefitQueries &queries)
{
    const QString name = row.value(1).toString();
    queries.calibration.bindValue(":name", name);
    if (!queries.calibration.exec()) {
        logSqlError(queries.calibration, SOURCE_LINE);
        return false;
    }
    if (!queries.calibration.next()) {
        debugFrom(SOURCE_LINE) << "No calibration named " << name;
        return true;
    }
    const AssayTemplate::Calibration calibration = readCalibration(queries.calibration);

    StandardCurve curve(nullptr, nullptr);
    curve.setName(name);
    curve.setXUnit(row.value(2).toString());
    curve.setYUnit(row.value(3).toString());
    curve.setLotsNum(row.value(14).toString());
    curve.setCorrelation(row.value(4).toDouble());
    curve.setDate(row.value(5).toDate());
    curve.setXFun(static_cast<zu::Function>(row.value(6).toInt()));
    curve.setYFun(static_cast<zu::Function>(row.value(7).toInt()));
    curve.setXDispFun(calibration.dispFunX());
    curve.setYDispFun(calibration.dispFunY());
    curve.setMethod(calibration.method);

    queries.points.bindValue(":curveId", row.value(0));
    if (!queries.points.exec()) {
        logSqlError(queries.points, SOURCE_LINE);
        return false;
    }
    QVariantList rowids;
    QList<StdPoint> points;
    if (!readRows(queries.points, SOURCE_LINE, [&] {
            // by position: the rowid comes under the name of an integer primary key
            rowids << queries.points.value(0);
            points << StdPoint{queries.points.value(1).toDouble(),
                               queries.points.value(2).toDouble(),
                               queries.points.value(3).toDouble(), queries.points.value(4).toInt()};
            return true;
        }))
        return false;
    curve.setPoints(points);

    curve.setCoefficient(storedCoefficients(row, curve.coefficientCount()));
    curve.setValid(row.value(13).toBool());
    if (curve.isValid())
        return true;
    curve.update();
    return storeCurve(curve, row.value(0).toLongLong(), rowids, queries);
}

/// \param rowids of the curve's points, in their order
bool UpdateProfile::storeCurve(const StandardCurve &curve, qint64 id, const QVariantList &rowids,
                               RefitQueries &queries)
{
    if (!curve.isValid())
        debugFrom(SOURCE_LINE) << "Invalid curve: name =" << curve.name() << " id =" << id;

    // null for what the method does not have
    const auto coefficient = [&curve](int index) {
        return index < curve.coefficientCount() ? QVariant(curve.coefficient(index)) : QVariant();
    };
    queries.updateCurve.bindValue(":correlation", curve.correlation());
    queries.updateCurve.bindValue(":date", QDate::currentDate());
    queries.updateCurve.bindValue(":a", coefficient(0));
    queries.updateCurve.bindValue(":b", coefficient(1));
    queries.updateCurve.bindValue(":c", coefficient(2));
    queries.updateCurve.bindValue(":d", coefficient(3));
    queries.updateCurve.bindValue(":e", coefficient(4));
    queries.updateCurve.bindValue(":valid", curve.isValid() ? 1 : 0);
    queries.updateCurve.bindValue(":id", id);
    if (!queries.updateCurve.exec()) {
        logSqlError(queries.updateCurve, SOURCE_LINE);
        return false;
    }

    if (!curve.isValid())
        return true;
    for (int i = 0; i < rowids.size(); ++i) {
        const StdPoint point = curve.point(i);
        queries.updatePoint.bindValue(":z", point.z);
        queries.updatePoint.bindValue(":flags", point.flags);
        queries.updatePoint.bindValue(":rowid", rowids.at(i));
        if (!queries.updatePoint.exec()) {
            logSqlError(queries.updatePoint, SOURCE_LINE);
            return false;
        }
    }
    return true;
}

/// The limits of the result checks become ranges of the items.
bool UpdateProfile::moveLimitsToItems()
{
    QSqlQuery checks;
    checks.setForwardOnly(true);
    if (!checks.exec("select * from dataCheck")) {
        logUnlessContentError(checks, SOURCE_LINE);
        return false;
    }
    return readRows(checks, SOURCE_LINE, [&] {
        const QSqlRecord check = checks.record();
        if (check.value("assayTemplateId").toString().isEmpty())
            return true;
        const QString templateId = numberText(check.value("assayTemplateId"));
        if (check.value("report").toBool()
            && !execAll({SQL(QString("UPDATE assayItem SET lowerReport=%1, upperReport=%2"
                                     " WHERE assayTemplateId=%3  AND name='%4'")
                                 .arg(numberText(check.value("reportLower")),
                                      numberText(check.value("reportUpper")), templateId,
                                      itemName(check.value("reportItemFullName"))))}))
            return false;
        if (check.value("redilution").toBool()
            && !execAll({SQL(QString("UPDATE assayItem SET lowerRedilution=%1, upperRedilution=%2"
                                     " WHERE assayTemplateId=%3  AND name='%4'")
                                 .arg(numberText(check.value("redilutionLower")),
                                      numberText(check.value("redilutionUpper")), templateId,
                                      itemName(check.value("redilutionItemFullName"))))}))
            return false;
        return !check.value("repeat").toBool()
            || execAll({SQL(QString("UPDATE assayItem SET lowerRepeat=%1, upperRepeat=%2"
                                    " WHERE assayTemplateId=%3  AND name='%4'")
                                .arg(numberText(check.value("repeatLower")),
                                     numberText(check.value("repeatUpper")), templateId,
                                     itemName(check.value("repeatItemFullName"))))});
    });
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

bool UpdateProfile::renameReagents()
{
    // "name?": kept, also "nam" holds a reagent
    static const QRegularExpression reagentKey(R"(program/\w+/(name?|diluent))");

    QSqlQuery settings;
    settings.setForwardOnly(true);
    if (!settings.exec("select name, value from profile"
                       " where name like 'program/%/name_' or name like 'program/%/diluent'")) {
        logSqlError(settings, SOURCE_LINE);
        return false;
    }
    const bool complete = readRows(settings, SOURCE_LINE, [&] {
        const QString key = settings.value(0).toString();
        if (reagentKey.match(key).capturedStart() == 0)
            keysByReagent.insert(settings.value(1).toString(), key);
        return true;
    });
    return complete && execAll({SQL("update or ignore reagent set name='X2' where name='Rinse'")})
        && renameReagent("Buffer(DD)", "R1(DD)") && renameReagent("Latex", "R2(DD)")
        && renameReagent("Buffer(FDP)", "R1(FDP)") && renameReagent("FDP", "R2(FDP)");
}

bool UpdateProfile::renameReagent(const QString &from, const QString &to)
{
    if (!execAll(
            {SQL(QString("update or fail reagent set name='%2' where name='%1'").arg(from, to))}))
        return false;

    const QStringList keys = keysByReagent.values(from);
    if (keys.isEmpty())
        return true;
    QSqlQuery update;
    if (!update.prepare("update profile set value=:value where name=:name")) {
        logSqlError(update, SOURCE_LINE);
        return false;
    }
    return std::all_of(keys.begin(), keys.end(), [&](const QString &key) {
        update.bindValue(":name", key);
        update.bindValue(":value", to);
        if (!update.exec()) {
            logSqlError(update, SOURCE_LINE);
            return false;
        }
        // "Relaced" is kept: support looks for it in the logs
        debugFrom(SOURCE_LINE) << "Relaced" << key << "to" << to << "from" << from;
        return true;
    });
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
    return execAll({
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
    if (!query.exec("SELECT name FROM profile WHERE name LIKE 'program/%/volume'"
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
        if (!query.exec()) {
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

        // "DPT1.R/R": kept, the next step corrects it
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
