// SPDX-License-Identifier: MIT
#include "coagulation/report/comparison.h"

#include "coagulation/report/curvefacts.h"
#include "coagulation/report/databasepair.h"
#include "coagulation/report/integrity.h"
#include "coagulation/report/tablecomparison.h"
#include "coagulation/report/unexpectedrows.h"
#include "coagulation/vardo/damagecheck.h"
#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateprofile.h"
#include "coagulation/vardo/updateqc.h"
#include "coagulation/vardo/updatesyslog.h"

#include <QMap>
#include <QMetaMethod>
#include <QSet>
#include <QSqlQuery>

#include <algorithm>

namespace coagulation::report {

namespace {

using Entries = QMap<QString, SchemaEntry>;

/// Facts that could not be read must not look like facts that are not there.
void noteFailure(DatabaseFacts &facts, const Questions &questions)
{
    if (!facts.problem.isEmpty() || !questions.failed())
        return;
    facts.problem = "One of the databases " + questions.predicate() + '.';
    facts.unreadable = saysNothingOfTheContent(questions.error());
}

/// A table `version` that lacks a column of this name counts as none.
std::optional<int> versionIn(const DatabasePair &databases, const char *schema,
                             DatabaseFacts &facts)
{
    Questions questions(databases.connection());
    QVariant version;
    if (hasPlainTable(questions, schema, "version"))
        version = questions.value(
            QString(R"(select version from "%1".version order by version desc limit 1)")
                .arg(schema));
    if (saysNothingOfTheContent(questions.error()))
        noteFailure(facts, questions);
    return version.isNull() ? std::nullopt : std::optional(version.toInt());
}

/// The indexes, triggers and views of one side.
QList<ObjectFacts> objectsIn(Questions &questions, const char *schema)
{
    QList<ObjectFacts> objects;
    questions.ask(QString(R"(select type, name, tbl_name from "%1".sqlite_master
 where type in ('index', 'trigger', 'view') and name not like 'sqlite\_%' escape '\' order by type, name)")
                      .arg(schema),
                  {}, [&objects](const QSqlQuery &row) {
                      objects << ObjectFacts{row.value(0).toString(), row.value(1).toString(),
                                             row.value(2).toString()};
                      return true;
                  });
    return objects;
}

/// \return the first objects that are not among the others
QList<ObjectFacts> without(const QList<ObjectFacts> &objects, const QList<ObjectFacts> &others)
{
    const auto identity = [](const ObjectFacts &object) {
        return object.type + ' ' + folded(object.name);
    };
    QSet<QString> known;
    for (const ObjectFacts &other : others)
        known << identity(other);
    QList<ObjectFacts> rest = objects;
    rest.removeIf([&](const ObjectFacts &object) { return known.contains(identity(object)); });
    return rest;
}

std::optional<SchemaEntry> entryNamed(const QString &key, const Entries &entries)
{
    const auto found = entries.find(key);
    return found != entries.end() ? std::optional(*found) : std::nullopt;
}

/// \return whether the name stands among the tables: views alone stand among the objects
bool isTable(const std::optional<SchemaEntry> &before, const std::optional<SchemaEntry> &after)
{
    const auto hasRows = [](const std::optional<SchemaEntry> &entry) {
        return entry && entry->kind != SchemaEntry::Kind::View;
    };
    return hasRows(before) || hasRows(after);
}

/// \return false if the comparison was stopped
bool compareTables(DatabaseFacts &facts, const ComparisonContext &context,
                   const Entries &entriesBefore, const Entries &entriesAfter,
                   const std::function<bool(const QString &)> &progress)
{
    Entries all = entriesBefore;
    for (auto entry = entriesAfter.begin(); entry != entriesAfter.end(); ++entry) {
        if (!all.contains(entry.key()))
            all.insert(entry.key(), entry.value());
    }
    for (auto entry = all.begin(); entry != all.end(); ++entry) {
        std::optional<SchemaEntry> before = entryNamed(entry.key(), entriesBefore);
        const std::optional<SchemaEntry> after = entryNamed(entry.key(), entriesAfter);
        if (!isTable(before, after))
            continue;
        if (!progress(entry->name))
            return false;
        if (before && before->kind == SchemaEntry::Kind::View)
            before.reset(); // its rows were those of other tables
        TableFacts table{entry->name};
        compareTable(context, before, after, table);
        facts.tables << table;
    }
    return true;
}

void addProfileFacts(DatabaseFacts &facts, Questions &questions)
{
    facts.curves = refittedCurves(questions);
    facts.otherInvalidCurves = otherInvalidCurves(questions, facts.curves);
    facts.methodChanges = methodChanges(questions);
    facts.unexpectedRows = unexpectedRows(questions, facts);
    if (!isDamage(questions.error())) // which is found in the tables, too
        noteFailure(facts, questions);
}

void compareContents(DatabaseFacts &facts, const QSqlDatabase &connection,
                     const ComparisonOptions &options,
                     const std::function<bool(const QString &)> &progress)
{
    Questions questions(connection);
    const Entries entriesBefore = rowSourcesOf(questions, schemaBefore);
    const Entries entriesAfter = rowSourcesOf(questions, schemaAfter);
    const QList<ObjectFacts> objectsBefore = objectsIn(questions, schemaBefore);
    const QList<ObjectFacts> objectsAfter = objectsIn(questions, schemaAfter);
    facts.objectsGone = without(objectsBefore, objectsAfter);
    facts.objectsNew = without(objectsAfter, objectsBefore);
    const Literals literals(textEncoding(questions));
    const ComparisonContext context{connection, literals, options, facts.name == "profile"};
    if (questions.failed())
        noteFailure(facts, questions);
    else if (!compareTables(facts, context, entriesBefore, entriesAfter, progress))
        facts.problem = "The comparison was stopped.";
    else if (facts.name == "profile")
        addProfileFacts(facts, questions);
}

} // namespace

void compare(DatabaseFacts &facts, const QString &before, const QString &after,
             const ComparisonOptions &options, const std::function<bool(const QString &)> &progress)
{
    DatabasePair databases("comparison");
    facts.newestVersion = newestVersion(facts.name);
    facts.problem = databases.openBefore(before);
    facts.unreadable = databases.isUnreadable();
    if (!facts.problem.isEmpty())
        return;
    IntegrityCheck checkBefore(before, "integrity before");
    facts.problem = databases.openAfter(after);
    facts.unreadable = databases.isUnreadable();
    const bool bothAreOpen = facts.problem.isEmpty();
    facts.versionBefore = versionIn(databases, schemaBefore, facts);
    if (bothAreOpen) {
        facts.versionAfter = versionIn(databases, schemaAfter, facts);
        IntegrityCheck checkAfter(after, "integrity after");
        compareContents(facts, databases.connection(), options, progress);
        facts.integrityAfter = checkAfter.finding();
    }
    facts.integrityBefore = checkBefore.finding();
}

int newestVersion(const QString &name)
{
    static const QMap<QString, const QMetaObject *> updaters{
        {"profile", &UpdateProfile::staticMetaObject},
        {"data", &UpdateData::staticMetaObject},
        {"qc", &UpdateQc::staticMetaObject},
        {"syslog", &UpdateSyslog::staticMetaObject},
    };
    const QMetaObject *updater = updaters.value(name);
    if (updater == nullptr)
        return 0;
    const QByteArray prefix = "update_v";
    int newest = 0;
    for (int index = updater->methodOffset(); index < updater->methodCount(); ++index) {
        const QByteArray method = updater->method(index).name();
        if (method.startsWith(prefix))
            newest = std::max(newest, method.mid(prefix.size()).toInt());
    }
    return newest;
}

} // namespace coagulation::report
