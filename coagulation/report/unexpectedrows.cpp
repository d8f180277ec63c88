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
        addTakenNumbers();
        addFactoryNames();
        addReplacedLimits();
        addReplacedIdentifiers();
        addEqualIdentifiers();
        return rows;
    }

private:
    bool has(const char *schema, const QString &table, const QStringList &columns);
    bool hasOnBothSides(const QString &table, const QStringList &columns);
    bool isUpgraded() const;
    bool passes(int version) const;
    void add(Kind kind, const QString &name, const QString &other = {});
    void addOwnAssays();
    void addMisplacedLimits();
    void addLimit(const QVariant &assay, const QString &itemFullName);
    void addOldSettingNames();
    void addCurvesWithoutExpiry();
    void addTakenNumbers();
    void addFactoryNames();
    void addReplacedLimits();
    void addReplacedIdentifiers();
    void addEqualIdentifiers();

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

/// Without an upgrade what differs is somebody else's.
bool Finder::isUpgraded() const
{
    return database.versionBefore.value_or(0) < database.versionAfter.value_or(0);
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
    if (!isUpgraded() || !hasOnBothSides("assayTemplate", {"id", "name"}))
        return;
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
    questions.ask("select name, date from after.curve where expirationDate is null order by id", {},
                  [this](const QSqlQuery &row) {
                      add(Kind::CurveWithoutExpiry, row.value(0).toString(),
                          row.value(1).toString());
                      return true;
                  });
}

/// Items and calibrations of the factory's stay out if the laboratory has one with that number, and calibrations if
/// it has one with that name.
void Finder::addTakenNumbers()
{
    if (!isUpgraded() || !has(schemaBefore, "assayTemplate", {"id", "name"}))
        return;
    const QStringList needed{"id", "assayTemplateId", "name"};
    const bool items = hasOnBothSides("assayItem", needed);
    const bool calibrations = hasOnBothSides("assayCalibration", needed);
    const QMap<int, QString> &assays = factoryAssays();
    for (const FactoryRow &row : factoryRows()) {
        const bool isItem = row.table == "assayItem";
        if (!(isItem ? items : calibrations))
            continue;
        const QString assay = isItem ? "ifnull(t.name || '.', '')" : "''";
        questions.ask(
            QString("select %1 || b.name from main.%2 as b left join main.assayTemplate as t"
                    " on t.id = b.assayTemplateId where b.id = ? and b.assayTemplateId is not ?"
                    " or b.name = ? and b.assayTemplateId is not ?")
                .arg(assay, row.table),
            {row.id, row.assay, row.name, row.assay}, [&](const QSqlQuery &found) {
                add(isItem ? Kind::OwnItem : Kind::OwnCalibration, found.value(0).toString(),
                    assays.value(row.assay));
                return false;
            });
    }
}

/// The names of assays are unique, and so are those that are displayed: of two with one name, the steps leave the
/// factory's out.
void Finder::addFactoryNames()
{
    if (!isUpgraded() || !hasOnBothSides("assayTemplate", {"id", "name"}))
        return;
    const bool isDisplayed = has(schemaBefore, "assayTemplate", {"displayName"});
    const QMap<int, QString> &assays = factoryAssays();
    for (auto assay = assays.begin(); assay != assays.end(); ++assay) {
        questions.ask("select id from main.assayTemplate where name = ? and id <> ?",
                      {assay.value(), assay.key()}, [&](const QSqlQuery &row) {
                          add(Kind::FactoryName, assay.value(), row.value(0).toString());
                          return false;
                      });
        if (isDisplayed)
            questions.ask("select id from main.assayTemplate where displayName = ?"
                          " and name is not ? and id <> ?",
                          {assay.value(), assay.value(), assay.key()}, [&](const QSqlQuery &row) {
                              add(Kind::FactoryDisplayName, assay.value(), row.value(0).toString());
                              return false;
                          });
    }
}

/// Below version 5 the factory's limits of some items replace those of the laboratory's result checks.
void Finder::addReplacedLimits()
{
    if (database.versionBefore.value_or(0) >= 5 || !passes(10))
        return;
    for (const auto &[check, limit] : {std::pair<QString, QString>{"report", "Report"},
                                       {"redilution", "Redilution"},
                                       {"repeat", "Repeat"}}) {
        if (!has(schemaBefore, "dataCheck",
                 {"assayTemplateId", check, check + "ItemFullName", check + "Lower",
                  check + "Upper"})
            || !has(schemaAfter, "assayItem",
                    {"assayTemplateId", "name", "lower" + limit, "upper" + limit}))
            continue;
        // NULL arrives as 0
        const QString sql =
            QString("select c.%1ItemFullName, c.%1Lower, c.%1Upper"
                    " from main.dataCheck as c join after.assayItem as i"
                    " on i.assayTemplateId = c.assayTemplateId"
                    " and c.%1ItemFullName like '%.%'"
                    " and i.name = substr(c.%1ItemFullName, instr(c.%1ItemFullName, '.') + 1)"
                    " where c.%1 and (i.lower%2 is not ifnull(c.%1Lower, 0)"
                    " or i.upper%2 is not ifnull(c.%1Upper, 0)) order by c.assayTemplateId")
                .arg(check, limit);
        questions.ask(sql, {}, [this](const QSqlQuery &row) {
            add(Kind::ReplacedLimit, row.value(0).toString(),
                QString("%1 to %2").arg(row.value(1).toDouble()).arg(row.value(2).toDouble()));
            return true;
        });
    }
}

/// Below version 2 some reagents are made anew, and a later step numbers them and gives four of them new names.
void Finder::addReplacedIdentifiers()
{
    if (database.versionBefore.value_or(0) >= 2 || !passes(10)
        || !hasOnBothSides("reagent", {"name", "reagentId"}))
        return;
    const QMap<QString, QString> newNames{{"Buffer(DD)", "R1(DD)"},
                                          {"Latex", "R2(DD)"},
                                          {"Buffer(FDP)", "R1(FDP)"},
                                          {"FDP", "R2(FDP)"}};
    for (const char *reagent :
         {"Latex", "FDP", "Saline", "Buffer(PT)", "Buffer(APTT)", "Buffer(FIB)", "Buffer(TT)",
          "Buffer(DD)", "Buffer(EX)", "Buffer(EN)", "Buffer(FDP)", "DD ct", "FDP ct"})
        questions.ask("select b.reagentId from main.reagent as b"
                      " where b.name = ? and ifnull(b.reagentId, '') <> ''"
                      " and not exists (select 1 from after.reagent as a where a.name = ?"
                      " and cast(a.reagentId as text) = cast(b.reagentId as text))",
                      {reagent, newNames.value(reagent, reagent)}, [&](const QSqlQuery &row) {
                          add(Kind::ReplacedIdentifier, reagent, row.value(0).toString());
                          return false;
                      });
}

/// Identifiers are unique, but a number and a text are two to SQLite.
void Finder::addEqualIdentifiers()
{
    if (!isUpgraded() || !has(schemaAfter, "reagent", {"id", "name", "reagentId"}))
        return;
    questions.ask("select a.name, b.name from after.reagent as a join after.reagent as b"
                  " on typeof(a.reagentId) = 'integer' and typeof(b.reagentId) = 'text'"
                  " and cast(a.reagentId as text) = b.reagentId order by a.id",
                  {}, [this](const QSqlQuery &row) {
                      add(Kind::EqualIdentifiers, row.value(0).toString(), row.value(1).toString());
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

const QList<FactoryRow> &factoryRows()
{
    struct Items {
        int assay;
        int first; ///< their numbers follow each other
        int count;
    };
    static const QList<FactoryRow> rows = [] {
        QList<FactoryRow> all;
        for (const auto &[assay, first, count] : {
                 Items{16, 40, 3}, {17, 45, 3},  {18, 50, 4},  {19, 55, 5},  {20, 60, 3},
                 {21, 65, 3},      {22, 70, 6},  {23, 80, 3},  {24, 90, 4},  {25, 100, 4},
                 {26, 110, 4},     {27, 120, 4}, {28, 130, 3}, {29, 140, 3}, {30, 150, 3},
                 {31, 160, 4},     {32, 170, 3}, {33, 180, 2}, {34, 190, 2}, {35, 200, 2},
                 {36, 210, 2},     {37, 220, 2}, {38, 230, 4}, {39, 240, 5}, {40, 250, 5},
                 {41, 260, 4},     {42, 270, 4}, {43, 280, 5},
             }) {
            for (int id = first; id < first + count; ++id)
                all << FactoryRow{"assayItem", id, assay};
        }
        all << QList<FactoryRow>{
            {"assayCalibration", 0, 16, "PC"},
            {"assayCalibration", 0, 17, "PS"},
            {"assayCalibration", 0, 18, "LAS"},
            {"assayCalibration", 0, 19, "LAC"},
            {"assayCalibration", 0, 20, "APCR1"},
            {"assayCalibration", 0, 21, "APCR2"},
            {"assayCalibration", 0, 22, "Anti-Xa(UFH)"},
            {"assayCalibration", 0, 22, "Anti-Xa(LMWH)"},
            {"assayCalibration", 0, 22, "Anti-Xa(Rivaroxaban)"},
            {"assayCalibration", 26, 22, "Anti-Xa"},
            {"assayCalibration", 27, 31, "UFH"},
            {"assayCalibration", 28, 25, "LMWH"},
            {"assayCalibration", 29, 41, "RX"},
            {"assayCalibration", 30, 42, "dPT1"},
            {"assayCalibration", 31, 43, "dPT2"},
            {"assayCalibration", 32, 26, "Plg"},
            {"assayCalibration", 33, 24, "vWF"},
        };
        return all;
    }();
    return rows;
}

QList<UnexpectedRow> unexpectedRows(Questions &questions, const DatabaseFacts &database)
{
    return Finder(questions, database).found();
}

} // namespace coagulation::report
