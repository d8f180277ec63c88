// SPDX-License-Identifier: MIT
#include "coagulation/report/settingnames.h"

#include <QList>
#include <QRegularExpression>

#include <utility>

namespace coagulation::report {

QString newSettingName(const QString &name)
{
    // since version 24; the first pattern that matches gives the name
    static const QList<std::pair<QRegularExpression, QString>> rules{
        {QRegularExpression(R"(^program/(\w+)/volume$)"), R"(program/\1/dilution/volume)"},
        {QRegularExpression(R"(^program/(\w+)/diluent$)"), R"(program/\1/dilution/name)"},
        {QRegularExpression(R"(^program/(\w+)/name([123])$)"), R"(program/\1/r\2/name)"},
        {QRegularExpression(R"(^program/(\w+)/reagent([123])$)"), R"(program/\1/r\2/volume)"},
        {QRegularExpression(R"(^(\w+)/(mix/(type|times|volume|duration))$)"),
         R"(program/\1/r3/\2)"},
    };
    QString newName = name;
    newName.replace("{00000000-0000-0000-0000-000000000000}", "wb1"); // since version 15
    for (const auto &[pattern, replacement] : rules) {
        if (pattern.match(newName).hasMatch())
            return newName.replace(pattern, replacement);
    }
    return newName;
}

bool isOldSettingName(const QString &name)
{
    static const QRegularExpression oldForm(
        "^(program/[^/]+/(volume|diluent|name[123]|reagent[123])|[^/]+/mix/(type|times|volume|duration))$");
    return oldForm.match(name).hasMatch() && newSettingName(name) == name;
}

} // namespace coagulation::report
