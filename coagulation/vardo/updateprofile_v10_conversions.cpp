// SPDX-License-Identifier: MIT
/// Conversions of version 10: the laboratory's own values that move or change their form.

#include "coagulation/vardo/updateprofile.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/execute.h"

#include <QDebug>
#include <QRegularExpression>
#include <QSqlQuery>

#include <algorithm>
#include <cmath>

namespace coagulation {

namespace {

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

} // namespace

void UpdateProfile::correctItemsAndThresholds()
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

/// Copies the variables' values from the curves, which used to be their only place.
bool UpdateProfile::fillVariables()
{
    QSqlQuery count;
    if (!execute(count, "select count(*) from variable where value notnull")) {
        logUnlessContentError(count, SOURCE_LINE);
        return false;
    }
    if (count.next() && count.value(0).toLongLong() > 0)
        return true; // they have been filled before
    count.finish();

    QSqlQuery variables;
    variables.setForwardOnly(true);
    if (!execute(variables, "select id, assayTemplateId, name, value from variable")) {
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
        values.bindValue(":name", bindable(valueIn(variables, 2)));
        values.bindValue(":assayTemplateId", bindable(valueIn(variables, 1)));
        if (!execute(values)) {
            logSqlError(values, SOURCE_LINE);
            return false;
        }
        if (!values.next())
            return true;
        update.bindValue(":id", variables.value(0));
        update.bindValue(":value", bindable(valueIn(values, 0)));
        if (!execute(update)) {
            logSqlError(update, SOURCE_LINE);
            return false;
        }
        return true;
    });
}

/// The limits of the result checks become ranges of the items.
bool UpdateProfile::moveLimitsToItems()
{
    QSqlQuery checks;
    checks.setForwardOnly(true);
    if (!execute(checks, "select * from dataCheck")) {
        logUnlessContentError(checks, SOURCE_LINE);
        return false;
    }
    const QStringList columns = columnsOf("dataCheck");
    return readRows(checks, SOURCE_LINE, [&] {
        const QSqlRecord check = currentRow(checks, columns);
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

bool UpdateProfile::renameReagents()
{
    // "name?" also finds keys such as "program/PT/nam/name1", whose values then get the reagent's new
    // name. It stays so, since a delivered step never changes what it writes.
    static const QRegularExpression reagentKey(R"(program/\w+/(name?|diluent))");

    QSqlQuery settings;
    settings.setForwardOnly(true);
    if (!execute(settings,
                 "select name, value from profile"
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
        if (!execute(update)) {
            logSqlError(update, SOURCE_LINE);
            return false;
        }
        // "Relaced": support looks for this spelling in the logs
        debugFrom(SOURCE_LINE) << "Relaced" << key << "to" << to << "from" << from;
        return true;
    });
}

} // namespace coagulation
