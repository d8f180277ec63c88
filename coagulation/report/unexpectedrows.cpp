// SPDX-License-Identifier: MIT
#include "coagulation/report/unexpectedrows.h"

#include "coagulation/report/comparison.h"
#include "coagulation/report/databasepair.h"
#include "coagulation/report/settingnames.h"
#include "coagulation/report/tablelayout.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <utility>

namespace coagulation::report {

namespace {

using Kind = UnexpectedRow::Kind;

class Finder {
public:
    Finder(Questions &asked, const DatabaseFacts &facts)
        : questions(asked)
        , database(facts)
    {
    }

    QList<UnexpectedRow> found() &&
    {
        addOwnAssays();
        addMisplacedLimits();
        addOldSettingNames();
        addCurvesWithoutExpiry();
        return rows;
    }

private:
    bool has(const char *schema, const QString &table, const QStringList &columns);
    bool hasOnBothSides(const QString &table, const QStringList &columns);
    bool passes(int version) const;
    void add(Kind kind, const QString &name, const QString &other = {});
    void addOwnAssays();
    void addMisplacedLimits();
    void addLimit(const QVariant &assay, const QString &itemFullName);
    void addOldSettingNames();
    void addCurvesWithoutExpiry();

    Questions &questions;
    const DatabaseFacts &database;
    QList<UnexpectedRow> rows{};
};

bool Finder::has(const char *schema, const QString &table, const QStringList &columns)
{
    if (!hasPlainTable(questions, schema, table))
        return false;
    const TableLayout layout = layoutOf(questions, schema, {table});
    return std::all_of(columns.begin(), columns.end(), [&layout](const QString &column) {
        return layout.column(column) != nullptr;
    });
}

bool Finder::hasOnBothSides(const QString &table, const QStringList &columns)
{
    return has(schemaBefore, table, columns) && has(schemaAfter, table, columns);
}

/// \return whether the upgrade went from below a version to this or a later one
bool Finder::passes(int version) const
{
    return database.versionBefore.value_or(0) < version
        && database.versionAfter.value_or(0) >= version;
}

void Finder::add(Kind kind, const QString &name, const QString &other)
{
    if (rows.size() < mostRows)
        rows << UnexpectedRow{kind, name, other};
}

void Finder::addOwnAssays()
{
    const bool upgraded = database.versionBefore.value_or(0) < database.versionAfter.value_or(0);
    if (!upgraded || !hasOnBothSides("assayTemplate", {"id", "name"}))
        return; // without an upgrade the rows are somebody else's
    QStringList conditions;
    for (const auto &[table, key] : {std::pair{"assayItem", "id"},
                                     {"assayCalibration", "id"},
                                     {"dataCheck", "assayTemplateId"}}) {
        if (hasOnBothSides(table, {key, "assayTemplateId"}))
            conditions << QString(
                              "exists (select 1 from after.%1 as a where a.assayTemplateId = b.id"
                              " and not exists (select 1 from main.%1 as c where c.%2 = a.%2))")
                              .arg(table, key);
    }
    if (conditions.isEmpty())
        return;
    const QString sql =
        QString(
            "select b.name from main.assayTemplate as b where b.id = ? and b.name is not ? and (%1)")
            .arg(conditions.join(" or "));
    const QMap<int, QString> &assays = factoryAssays();
    for (auto assay = assays.begin(); assay != assays.end(); ++assay)
        questions.ask(sql, {assay.key(), assay.value()}, [&](const QSqlQuery &row) {
            add(Kind::OwnAssay, row.value(0).toString(), assay.value());
            return false;
        });
}

/// Below version 5 the limits of result checks go to the items that they name, and later versions look there.
void Finder::addMisplacedLimits()
{
    QStringList columns{"assayTemplateId"};
    for (const char *check : {"report", "redilution", "repeat"})
        columns << check << QString(check) + "ItemFullName";
    if (database.versionBefore.value_or(0) >= 5 || !passes(10)
        || !has(schemaBefore, "dataCheck", columns)
        || !has(schemaBefore, "assayItem", {"assayTemplateId", "name"})
        || !has(schemaBefore, "assayTemplate", {"id", "name"}))
        return;
    struct Limit {
        QVariant assay;
        QString itemFullName;
    };
    QList<Limit> limits;
    questions.ask(QString("select \"%1\" from main.dataCheck").arg(columns.join(R"(", ")")), {},
                  [&limits](const QSqlQuery &row) {
                      for (int column = 1; column < 7; column += 2) {
                          if (row.value(column).toBool() && !row.value(0).toString().isEmpty())
                              limits << Limit{row.value(0), row.value(column + 1).toString()};
                      }
                      return limits.size() < mostRows;
                  });
    for (const Limit &limit : limits)
        addLimit(limit.assay, limit.itemFullName);
}

/// \param itemFullName the assay's name, a point, and the item's name
void Finder::addLimit(const QVariant &assay, const QString &itemFullName)
{
    const QStringList names = itemFullName.split('.');
    const bool found =
        questions
            .value("select count(*) from main.assayItem where assayTemplateId = ? and name = ?",
                   {assay, names.value(1)})
            .toInt()
        > 0;
    const QString assayName =
        questions.value("select name from main.assayTemplate where id = ?", {assay}).toString();
    if (!found)
        add(Kind::MisplacedLimit, itemFullName);
    else if (assayName != names.first())
        add(Kind::MisplacedLimit, itemFullName, assayName);
}

void Finder::addOldSettingNames()
{
    if (!passes(24) || !hasOnBothSides("profile", {"name"}))
        return;
    questions.ask("select a.name from after.profile as a where typeof(a.name) = 'text'"
                  " and exists (select 1 from main.profile as b where b.name = a.name)",
                  {}, [this](const QSqlQuery &row) {
                      if (const QString name = row.value(0).toString(); isOldSettingName(name))
                          add(Kind::OldSettingName, name);
                      return true;
                  });
}

void Finder::addCurvesWithoutExpiry()
{
    if (has(schemaBefore, "curve", {"expirationDate"})
        || !has(schemaAfter, "curve", {"id", "name", "date", "expirationDate"}))
        return;
    questions.ask(
        "select name, date from after.curve where date is not null and expirationDate is null order by id",
        {}, [this](const QSqlQuery &row) {
            add(Kind::CurveWithoutExpiry, row.value(0).toString(), row.value(1).toString());
            return true;
        });
}

} // namespace

const QMap<int, QString> &factoryAssays()
{
    static const QMap<int, QString> assays{
        {16, "PC"},    {17, "PS"},    {18, "LAS"},   {19, "LAC"},   {20, "APCR1"}, {21, "APCR2"},
        {22, "XA"},    {23, "FM"},    {24, "vWF"},   {25, "LMWH"},  {26, "Plg"},   {27, "PAI"},
        {28, "TAFI"},  {29, "FPS"},   {30, "AP"},    {31, "UFH"},   {32, "Hep"},   {33, "APTT2"},
        {34, "APTT3"}, {35, "APTT4"}, {36, "APTT5"}, {37, "APTT6"}, {38, "APTT7"}, {39, "PT2"},
        {40, "PT3"},   {41, "RX"},    {42, "dPT1"},  {43, "dPT2"},
    };
    return assays;
}

QList<UnexpectedRow> unexpectedRows(Questions &questions, const DatabaseFacts &database)
{
    return Finder(questions, database).found();
}

} // namespace coagulation::report
