// SPDX-License-Identifier: MIT
/// An edited sample through the updater of its database: it ends, with the file as it was or upgraded and as
/// sound as before. The database is the one that DATABASE names.

#include "editmutator.h"
#include "editscript.h"
#include "inputbytes.h"
#include "requirement.h"
#include "scratchfolder.h"

#include "expectedsteps.h"
#include "plainsqlite.h"
#include "upgrade.h"

#include <QCoreApplication>
#include <QFile>
#include <QSqlDatabase>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace {

const QString databaseName = DATABASE;

/// What the target needs as long as the program runs.
class Environment {
public:
    Environment() { qInstallMessageHandler(ignore); }

    /// \return a folder that holds nothing but earlier databases
    QString folder() const { return scratch.path(); }

private:
    static void ignore(QtMsgType type, const QMessageLogContext &, const QString &message)
    {
        require(type != QtFatalMsg, message);
    }

    int argumentCount = 1;
    std::string program = "fuzz_database";
    std::array<char *, 2> arguments{program.data(), nullptr};
    QCoreApplication application{argumentCount, arguments.data()};
    ScratchFolder scratch;
};

const Environment &environment()
{
    static const Environment environment;
    return environment;
}

/// One edited sample and its upgrade.
class Case {
public:
    explicit Case(const EditScript &script)
        : folder(environment().folder())
        , files(editedSample(databaseName, script, folder))
    {
    }

    void run() const
    {
        files.writeTo(tried);
        files.writeTo(settled);
        settle();
        const bool upgraded = upgrade();
        if (upgraded)
            judgeUpgrade();
        else
            judgeRefusal();
    }

private:
    /// Lets SQLite itself roll back or move what a crashed program left.
    void settle() const
    {
        if (files.hasLeftover())
            Sqlite(settled).run("select count(*) from sqlite_master");
    }

    bool upgrade() const
    {
        const bool upgraded = upgradeIn(folder, databaseName);
        // as the end of the tool would close it
        QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
        return upgraded;
    }

    void judgeRefusal() const
    {
        const DatabaseFiles expected = DatabaseFiles::readFrom(settled);
        const DatabaseFiles found = DatabaseFiles::readFrom(tried);
        require(found.database == expected.database, "a refused file is what it was");
        require(found.journal.isNull() == expected.journal.isNull(), "no journal is left");
    }

    /// \param versions all that are stored, in a column of any name and type
    static bool isNewest(const QByteArrayList &versions)
    {
        return std::any_of(versions.begin(), versions.end(), [](const QByteArray &version) {
            return version.toDouble() == newestVersionOf(databaseName);
        });
    }

    static bool hasTriggerOnVersion(const Sqlite &database)
    {
        return !database
                    .column("select 1 from sqlite_master where type = 'trigger'"
                            " and tbl_name = 'version' collate nocase")
                    .isEmpty();
    }

    void judgeUpgrade() const
    {
        const Sqlite before(settled);
        const Sqlite after(tried);
        if (!hasTriggerOnVersion(after)) // which may make something else of what is stored
            require(isNewest(after.column("select * from version")),
                    "an upgraded file is at the newest version");
        // a file at the newest version is not checked, and keeps its damage
        if (isNewest(before.column("select version from version")))
            return;
        const QByteArrayList known = before.findings();
        for (const QByteArray &finding : after.findings())
            require(finding == "ok" || known.contains(finding),
                    "this is no new damage: " + finding);
    }

    QString folder;
    QString tried = folder + '/' + databaseName + ".db";
    QString settled = folder + "/settled.db";
    DatabaseFiles files;
};

} // namespace

// NOLINTBEGIN(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    const QByteArray text = inputBytes(data, size);
    environment(); // before the first sample is made
    Case(EditScript::read(text, newestVersionOf(databaseName))).run();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(quint8 *data, std::size_t size, std::size_t most,
                                               unsigned int seed)
{
    environment();
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
