// SPDX-License-Identifier: MIT
/// An edited sample through the updater of its database: it ends, with the file as it was or upgraded and as
/// sound as before. The database is the one that DATABASE names.

#include "editmutator.h"
#include "editscript.h"
#include "inputbytes.h"
#include "require.h"
#include "upgrading.h"

#include "expectedsteps.h"
#include "plainsqlite.h"

#include <QMap>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

const QString databaseName = DATABASE;

/// One edited sample and its upgrade.
class Case {
public:
    explicit Case(EditScript editScript)
        : folder(workFolder())
        , script(std::move(editScript))
        , files(editedSample(databaseName, script, folder))
    {
    }

    void run() const
    {
        files.writeTo(tried);
        files.settleAt(settled);
        const bool upgraded = upgradedIn(folder, databaseName);
        require(upgraded || isEdited(), "a sample as it is can be upgraded");
        if (upgraded)
            judgeUpgrade();
        else
            judgeRefusal();
    }

private:
    bool isEdited() const { return !script.statements.isEmpty() || !script.changes.isEmpty(); }

    void judgeRefusal() const
    {
        const DatabaseFiles expected = DatabaseFiles::readFrom(settled);
        const DatabaseFiles found = DatabaseFiles::readFrom(tried);
        require(found.database == expected.database, "a refused file is what it was");
        require(found.journal == expected.journal, "the journal is what it was");
        require(found.log == expected.log, "the log is what it was");
    }

    static bool isNewest(const Sqlite &database)
    {
        return database.column("select version from version order by version desc").value(0).toInt()
            == newestVersionOf(databaseName);
    }

    /// A column of another name, or a trigger, may keep the version from being found: the run passes all the same.
    static bool canStoreVersion(const Sqlite &before)
    {
        return before
                   .column("select name from sqlite_master"
                           " where type = 'trigger' and lower(tbl_name) = 'version'")
                   .isEmpty()
            && (!before.tables().contains("version")
                || before.run("select version from version") == SQLITE_OK);
    }

    /// Where an index needs a collation that SQLite lacks, vardo sees no damage between tables. The connections of this
    /// program have a stand-in for such collations.
    static bool hidesDamage(const Sqlite &before, const QByteArrayList &findings)
    {
        const bool damaged =
            std::any_of(findings.begin(), findings.end(), [](const QByteArray &finding) {
                return finding != "ok" && !finding.contains(" value in ")
                    && !finding.startsWith("CHECK constraint failed in ");
            });
        return damaged
            && !before
                    .column(
                        "select 1 from sqlite_master as entry, pragma_index_list(entry.name) as list,"
                        " pragma_index_xinfo(list.name) as part"
                        " where upper(part.coll) not in ('BINARY', 'NOCASE', 'RTRIM')")
                    .isEmpty();
    }

    void judgeUpgrade() const
    {
        const Sqlite before(settled);
        const Sqlite after(tried);
        // a file at the newest version is not checked, and keeps its damage
        if (isNewest(before))
            return;
        require(isNewest(after) || !canStoreVersion(before),
                "the next run finds the newest version");
        const QByteArrayList known = before.findings();
        if (!hidesDamage(before, known)) {
            for (const QByteArray &finding : after.findings())
                require(finding == "ok" || known.contains(finding),
                        "this is no new damage: " + finding);
        }
        if (hasTriggersOfTheSampleOnly())
            requireRows(before, after);
    }

    /// Others may delete what they want, and so may those that lost a letter.
    bool hasTriggersOfTheSampleOnly() const
    {
        return script.changes.isEmpty()
            && std::none_of(script.statements.begin(), script.statements.end(),
                            [](const QByteArray &statement) {
                                const QByteArray text = statement.toLower();
                                return text.contains("trigger") || text.contains("sqlite_");
                            });
    }

    /// No table has fewer rows than before, but for those that steps delete from. What could not be moved counts.
    static void requireRows(const Sqlite &before, const Sqlite &after)
    {
        static const QMap<QString, QByteArrayList> deletedFrom{
            {"profile", {"profile", "reagent", "assayitem"}},
            {"data", {"result"}}, // a view afterwards, of one row for each item of a patient
            {"qc", {"subsetting"}}};
        const QByteArrayList exceptions =
            deletedFrom.value(databaseName) + QByteArrayList{"version"};
        for (const QByteArray &table : before.tables()) {
            if (table.startsWith("sqlite_")) // statistics, which SQLite drops with a table
                continue;
            qint64 kept = after.countRows(table);
            for (const QByteArray &other : after.tables()) {
                if (other.startsWith(table + "_unmoved"))
                    kept += after.countRows(other);
            }
            // An own table takes the place of the one that it is named for.
            if (databaseName == "data" && table.endsWith("_new") && !after.tables().contains(table))
                kept += after.countRows(table.chopped(4));
            require(exceptions.contains(table) || kept >= before.countRows(table),
                    "no row is lost of " + table);
        }
    }

    QString folder;
    EditScript script;
    QString tried = folder + '/' + databaseName + ".db";
    QString settled = folder + "/settled.db";
    DatabaseFiles files;
};

} // namespace

// NOLINTBEGIN(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    const QByteArray text = inputBytes(data, size);
    prepareProcess(); // before the first sample is made
    Case(EditScript::read(text, newestVersionOf(databaseName))).run();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(quint8 *data, std::size_t size, std::size_t most,
                                               unsigned int seed)
{
    prepareProcess();
    const QByteArray text = inputBytes(data, size);
    const QByteArray mutated = mutatedScript(databaseName, text, qsizetype(most), seed);
    std::memcpy(data, mutated.constData(), std::size_t(mutated.size()));
    return std::size_t(mutated.size());
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const quint8 *first, std::size_t firstSize,
                                                 const quint8 *second, std::size_t secondSize,
                                                 quint8 *out, std::size_t most, unsigned int seed)
{
    const QByteArray crossed = crossedScripts(
        inputBytes(first, firstSize), inputBytes(second, secondSize), qsizetype(most), seed);
    std::memcpy(out, crossed.constData(), std::size_t(crossed.size()));
    return std::size_t(crossed.size());
}
// NOLINTEND(readability-identifier-naming)
