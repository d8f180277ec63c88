// SPDX-License-Identifier: MIT
/// What docs/changed-values.md says of the laboratory's own values, compared with upgrades from every version.

#include "changedvalues.h"
#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "profilesteps.h"
#include "upgrade.h"

#include <QFile>
#include <QTest>

#include <map>
#include <optional>

namespace {

/// What a laboratory did to the values that its analyser software came with.
enum class Values {
    Kept,    ///< nothing: what only replaces a certain value finds it
    Changed, ///< each one is a value of its own
    Deleted, ///< each one is null
};

/// Rows with which an upgrade from a version below fails, or keeps a name that it would otherwise change.
struct Obstacle {
    int below;
    QString table;
    QString condition;
};

const QList<Obstacle> obstacles{
    {10, "reagent", "name in ('R1(DD)', 'R2(DD)', 'R1(FDP)', 'R2(FDP)', 'X2')"},
    {15, "profile", "name like '%wb1%'"},
    {20, "reagent", "name in ('RX', 'Buffer(RX)')"},
    {20, "assayTemplate", "id = 41"},
    {20, "assayCalibration", "id in (27, 28, 29)"},
    {20, "assayItem", "assayTemplateId = 41"},
    {21, "profile", "name like '%/redilution/%' and name not like 'Plg/%'"},
    {24, "profile", "name like 'program/%/r_/%' or name like 'program/%/dilution/%'"},
    {28, "profile", "name = 'ATIII/incubator/duration/factory'"},
    {30, "reagent", "name in ('R1(vWF)', 'R2(vWF)', 'R2(Plg)')"},
};

/// \return the statements for what no database of another version has; the factory uses no number from 900 on
QStringList ownProfileRows()
{
    QStringList statements;
    for (const char *name : {"V", "VII", "X", "VIII", "IX", "XI", "XII", "FDP"})
        statements << QString("insert or ignore into profile values('%1/disable', 1)").arg(name);
    for (const char *setting :
         {"'PT/mix/type', 1", "'PT/mix/volume', 20", "'PT/mix/duration', 5", "'PT/mix/speed', 9",
          "'program/PT/name2', 'R-2'", "'program/PT/name3', 'R-3'", "'program/PT/name4', 'R-4'",
          "'program/PT/reagent2', 40", "'program/PT/reagent3', 60", "'program/a/b/volume', 30",
          "'program/P1/diluent', 'Buffer(DD)'", "'program/P2/diluent', 'Latex'",
          "'program/P3/diluent', 'Buffer(FDP)'", "'program/P4/diluent', 'FDP'"})
        statements << QString("insert or ignore into profile values(%1)").arg(setting);
    int id = 900;
    for (const char *name : {"VIII", "IX", "XII"})
        statements << QString("insert or ignore into reagent(id, type, name) values(%1, 1, '%2')")
                          .arg(QString::number(++id), name);
    for (const char *name : {"AT", "V", "VII", "X", "VIII", "IX", "XI", "XII", "PT calculate FIB"})
        statements << QString("insert or ignore into assayCalibration(id, assayTemplateId, name)"
                              " values(%1, 7, '%2')")
                          .arg(QString::number(++id), name);
    // at another number than the factory's, which step 18 deletes
    statements << "insert or ignore into assayItem(id, assayTemplateId, name, abbr)"
                  " values(900, 34, 'RI', 'APTT3-RI')";
    // a point that the fit no longer takes for an outlier
    statements << "update curvePoint set flags = flags | 2 where id = 12";
    return statements;
}

struct Column {
    QString table;
    QString name;
    bool isNumber = false;
    bool isNullable = true;
    bool isNaming = false; ///< no laboratory changes it, since it names the row or another one
};

/// \return the columns of all tables but `version`
QList<Column> columnsOf(const TestDatabase &database)
{
    static const QStringList named{
        "profile", "reagent",       "assayTemplate", "assayItem", "assayCalibration", "variable",
        "curve",   "curveVariable", "curveReagent",  "curveInfo", "currentCurve"};
    QList<Column> columns;
    const bool isProfile = database.path().endsWith("profile.db");
    for (const QString &row : database.rows(
             "select o.name || '|' || c.name || '|' || lower(c.type) || '|' || c.\"notnull\""
             " || '|' || c.pk from sqlite_master o, pragma_table_info(o.name) c"
             " where o.type = 'table' and o.name <> 'version'")) {
        const QStringList parts = row.mid(1, row.size() - 2).split('|');
        const QString &table = parts.at(0);
        const QString &name = parts.at(1);
        columns << Column{table, name, parts.at(2) == "integer" || parts.at(2) == "real",
                          parts.at(3) == "0",
                          parts.at(4) != "0" || (name.endsWith("Id") && name != "reagentId")
                              || (isProfile && name == "name" && named.contains(table))};
    }
    return columns;
}

QStringList columnsOf(const QList<Column> &columns, const QString &table)
{
    QStringList names;
    for (const Column &column : columns) {
        if (column.table == table)
            names << column.name;
    }
    return names;
}

/// A profile database of another version.
struct OtherDatabase {
    TestDatabase database{"profile.db"};
    QList<Column> columns;
};

const OtherDatabase &otherDatabase(int version)
{
    static std::map<int, OtherDatabase> others;
    const auto [entry, isNew] = others.try_emplace(version);
    OtherDatabase &other = entry->second;
    if (isNew) {
        makeDatabaseAt(other.database, "profile", version);
        other.columns = columnsOf(other.database);
    }
    return other;
}

/// \return the statements by which the laboratory has made itself what databases of another version have
QStringList rowsOf(const OtherDatabase &other, const QList<Column> &known, int version)
{
    QStringList statements{QString("attach '%1' as other").arg(other.database.path()), "begin"};
    for (const QString &table :
         QStringList{"profile", "reagent", "assayTemplate", "assayCalibration", "assayItem",
                     "variable", "dataCheck"}) {
        QStringList columns = columnsOf(other.columns, table);
        columns.removeIf([&](const QString &column) {
            return !columnsOf(known, table).contains(column, Qt::CaseInsensitive)
                || (column == "id" && table == "reagent"); // another one has it
        });
        QString condition = table == "dataCheck" ? "assayTemplateId notnull" : "true";
        for (const Obstacle &obstacle : obstacles) {
            if (version < obstacle.below && obstacle.table == table)
                condition += QString(" and not (%1)").arg(obstacle.condition);
        }
        statements << QString("insert or ignore into main.%1(%2) select %2 from other.%1 where %3")
                          .arg(table, columns.join(", "), condition);
    }
    return statements << "commit"
                      << "detach other";
}

/// \return the statements that add rows which a laboratory may have made
QStringList ownRows(const QString &database, const QList<Column> &columns, int version)
{
    if (database == "data" && version < 3) {
        return {"insert into result(id, patientId, item, subitem, result) values"
                " (900, 1, 'PT', 'T', 13.5), (901, null, 'PT', 'T', 14.5)"};
    }
    if (database != "profile")
        return {};
    // With limits: below version 5, the upgrade of a check that reports fails without.
    QStringList statements{
        "insert or ignore into dataCheck(assayTemplateId, reportLower, reportUpper)"
        " select id, 1, 2 from assayTemplate"};
    // the last ones with the old names of reagents and of settings, and the last one
    for (const int other : {9, 23, newestVersionOf("profile")})
        statements += rowsOf(otherDatabase(other), columns, version);
    return statements + ownProfileRows();
}

/// \return the statements that give every value that names nothing another one
QStringList newValues(const QList<Column> &columns, Values values)
{
    QMap<QString, QStringList> assignments;
    for (const Column &column : columns) {
        if (column.isNaming)
            continue;
        QStringList &ofTable = assignments[column.table];
        if (values == Values::Changed) {
            const QString number = QString("(rowid * 100 + %1.5)").arg(ofTable.size());
            ofTable << column.name + " = " + (column.isNumber ? number : "'lab ' || " + number);
        } else if (column.isNullable && column.name != "abbr" && column.name != "type") {
            ofTable << column.name + " = null"; // by the abbreviation and the type, steps find rows
        }
    }
    QStringList statements;
    for (auto ofTable = assignments.begin(); ofTable != assignments.end(); ++ofTable) {
        if (!ofTable->isEmpty())
            statements << QString("update \"%1\" set %2").arg(ofTable.key(), ofTable->join(", "));
    }
    return statements;
}

struct Laboratory {
    QString description;
    Values values;
    bool isChinese = true;
};

const QList<Laboratory> laboratories{
    {"values as delivered", Values::Kept},
    {"values changed", Values::Changed},
    {"values deleted", Values::Deleted},
    {"values as delivered, English", Values::Kept, false},
    {"values deleted, English", Values::Deleted, false},
};

} // namespace

class TestChangedValues : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void holdsEveryChange_data() { addDatabaseRows(); }
    void holdsEveryChange();
    void holdsOnlyChanges_data() { addDatabaseRows(); }
    void holdsOnlyChanges();

private:
    static void addDatabaseRows();
    void upgradeCopies(const QString &name, int version);
    void upgradeCopy(const TestDatabase &original, const QString &name, int version,
                     const Laboratory &laboratory);

    QList<ChangedValue> lines;
    /// By database and difference: where it was found.
    QMap<QString, QMap<QString, QStringList>> differences;
    QSet<QString> effects;
};

void TestChangedValues::addDatabaseRows()
{
    QTest::addColumn<QString>("database");

    for (const char *name : {"profile", "data", "qc", "syslog"})
        QTest::newRow(name) << name;
}

void TestChangedValues::initTestCase()
{
    lines = readChangedValues(DOCUMENT);
    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        for (int version = 0; version <= newestVersionOf(name); ++version)
            upgradeCopies(name, version);
    }
}

void TestChangedValues::upgradeCopies(const QString &name, int version)
{
    const TestDatabase original(name + ".db");
    {
        const MessageRecorder recorder; // steps that make the database log
        makeDatabaseAt(original, name, version);
        original.execute(ownRows(name, columnsOf(original), version));
    }
    for (const Laboratory &laboratory : laboratories) {
        if (laboratory.isChinese || name == "profile") // the others have no labels
            upgradeCopy(original, name, version, laboratory);
    }
}

void TestChangedValues::upgradeCopy(const TestDatabase &original, const QString &name, int version,
                                    const Laboratory &laboratory)
{
    const TestDatabase database(name + ".db");
    QVERIFY(QFile::remove(database.path()) && QFile::copy(original.path(), database.path()));
    if (laboratory.values != Values::Kept)
        database.execute(newValues(columnsOf(database), laboratory.values));
    const Content before = contentOf(database);
    QList<ChangedValue> applying = lines;
    applying.removeIf([&](const ChangedValue &line) {
        return line.database != name || line.below <= version
            || (line.inChinese && !laboratory.isChinese);
    });

    std::optional<Languages> english;
    if (!laboratory.isChinese)
        english.emplace("en", "en");
    const MessageRecorder recorder;
    QVERIFY2(upgrade(database), qUtf8Printable(recorder.messages().filter("Warning: ").join('\n')));

    const Comparison comparison = compareUpgrade(applying, before, contentOf(database));
    effects += comparison.effects;
    for (const QString &difference : comparison.differences)
        differences[name][difference]
            << QString("%1 (%2)").arg(version).arg(laboratory.description);
}

/// A change that is in no line, and a line that the upgrade does not follow.
/// Shows: PLT-5
void TestChangedValues::holdsEveryChange()
{
    QFETCH(QString, database);

    QString found;
    const QMap<QString, QStringList> ofDatabase = differences.value(database);
    for (auto difference = ofDatabase.begin(); difference != ofDatabase.end(); ++difference)
        found += QString("\n%1\n    from version %2").arg(difference.key(), difference->join(", "));

    QVERIFY2(found.isEmpty(), qUtf8Printable(found));
}

/// Shows: PLT-5
void TestChangedValues::holdsOnlyChanges()
{
    QFETCH(QString, database);

    QStringList idle;
    for (const ChangedValue &line : lines) {
        if (line.database == database)
            idle += effectsOf(line);
    }
    idle.removeIf([&](const QString &effect) { return effects.contains(effect); });

    QVERIFY2(idle.isEmpty(), qUtf8Printable(idle.join('\n')));
}

QTEST_GUILESS_MAIN(TestChangedValues)
#include "tst_changed_values.moc"
