// SPDX-License-Identifier: MIT
/// The command lines of both programs, and the files that vardo makes of its own: it upgrades the database that the
/// arguments name, and writes no file but that and the log. The input is a command line as Linux stores it, a NUL
/// between two arguments.

#include "editscript.h"
#include "inputbytes.h"
#include "require.h"
#include "scratchfolder.h"
#include "upgrading.h"

#include "plainsqlite.h"
#include "testfiles.h"

#include "coagulation/report/commandline.h"
#include "coagulation/vardo/commandline.h"
#include "coagulation/vardo/consolelog.h"
#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateprofile.h"
#include "coagulation/vardo/updateqc.h"
#include "coagulation/vardo/updatesyslog.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSqlDatabase>

#include <algorithm>
#include <optional>
#include <utility>

using namespace coagulation;

namespace {

constexpr qsizetype mostArguments = 12;

QStringList argumentsOf(const QByteArray &input)
{
    QStringList arguments;
    for (const QByteArray &argument : input.split('\0').mid(0, mostArguments))
        arguments << QString::fromUtf8(argument);
    return arguments;
}

void checkReportsCommandLine(const QStringList &arguments)
{
    const report::ParsedCommandLine parsed =
        report::parseCommandLine(QStringList{"vardo-report"} + arguments);
    const int answers = int(parsed.command.has_value()) + int(!parsed.error.isEmpty())
        + int(!parsed.output.isEmpty());
    require(answers == 1, "there is a command, an error or an output");
    if (!parsed.command)
        return;
    const QString folder = parsed.command->folder;
    require(folder.isEmpty() || folder.endsWith('/'), "a folder ends with a separator");
    require(!parsed.command->names.prefix.contains('/'), "the prefix names no folder");
    require(!parsed.command->names.suffix.contains('/'), "the suffix names no folder");
}

QString nameOf(const char *database)
{
    return databaseFileName(QString("%1") + database + "%2.db");
}

/// \return whether a name leads to no place outside of the folder of the run, which absolute ones get at their beginning
bool isConfined(const QString &name)
{
    return !name.split('/').contains("..");
}

bool isConfined(const CommandLine &command)
{
    fileNameAffixes() = command.affixes;
    return isConfined(nameOf("")) && isConfined(command.logFile);
}

/// \return whether a value stands behind its option, or is empty
bool isValueOf(const QString &option, const QString &value, const QStringList &arguments)
{
    if (value.isEmpty())
        return true;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i - 1) == option && arguments.at(i) == value)
            return true;
    }
    return false;
}

void checkValues(const CommandLine &command, const QStringList &arguments)
{
    require(isValueOf("-p", command.affixes.prefix, arguments), "the prefix is the one given");
    require(isValueOf("-s", command.affixes.suffix, arguments), "the suffix is the one given");
    require(command.logFile.isEmpty() || arguments.contains(command.logFile),
            "the log is the one given");
}

/// The run of vardo in a folder of its own, which holds one of the four databases.
class Run {
public:
    explicit Run(CommandLine commandLine)
        : command(std::move(commandLine))
    {
        require(QDir::setCurrent(folder.path()), "the folder can be entered");
        for (QString *name : {&command.affixes.prefix, &command.logFile}) {
            if (name->startsWith('/'))
                name->prepend(folder.path());
        }
        fileNameAffixes() = command.affixes;
        checkNames();
        databasePath = pathOf(nameOf("syslog"));
        putDatabase();
    }
    ~Run() { QDir::setCurrent(folderBefore); }
    Q_DISABLE_COPY_MOVE(Run)

    void run() const
    {
        openLog(command.logFile);
        const bool upgraded = upgrade<UpdateProfile>() && upgrade<UpdateData>()
            && upgrade<UpdateQc>() && upgrade<UpdateSyslog>();
        closeLog();
        QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
        if (logIsADatabases())
            return; // what the user asks for
        require(upgraded, "nothing fails");
        if (isThere)
            require(Sqlite(databasePath).column("select version from version")
                        == QByteArrayList{"4"},
                    "the database that is named is upgraded");
        checkFiles();
    }

private:
    template <typename Updater> static bool upgrade()
    {
        Updater updater;
        return updater.run();
    }

    /// \param name relative, also if it begins with a colon, which Qt would take for a resource
    QString pathOf(const QString &name) const
    {
        return name.startsWith('/') ? name : folder.path() + '/' + name;
    }

    void checkNames() const
    {
        for (const char *name : {"profile", "data", "qc", "syslog"})
            require(nameOf(name) == command.affixes.prefix + name + command.affixes.suffix + ".db",
                    "a name is prefix, name, suffix and .db");
    }

    /// Leaves it out if no file can have the name, or SQLite can't have its journal beside it.
    void putDatabase()
    {
        constexpr qsizetype longestPath = 500; // bytes, of SQLite's, less what it adds
        static const QByteArray sample = sampleBytes("syslog", 0);
        QDir().mkpath(QFileInfo(databasePath).path());
        QFile journal(databasePath + "-journal");
        QFile file(databasePath);
        isThere = QFile::encodeName(databasePath).size() <= longestPath
            && journal.open(QIODevice::WriteOnly) && journal.remove()
            && file.open(QIODevice::WriteOnly) && file.write(sample) == sample.size();
    }

    /// \return whether the log is to be written into a database or what SQLite keeps beside it
    bool logIsADatabases() const
    {
        if (command.logFile.isEmpty())
            return false;
        const QString log = QDir::cleanPath(command.logFile);
        const QStringList names{nameOf("profile"), nameOf("data"), nameOf("qc"), nameOf("syslog")};
        return std::any_of(names.begin(), names.end(), [&log](const QString &name) {
            return log.startsWith(QDir::cleanPath(name));
        });
    }

    void checkFiles() const
    {
        QStringList expected;
        if (isThere)
            expected << QDir::cleanPath(databasePath);
        const QString log = QDir::cleanPath(pathOf(command.logFile));
        QDirIterator files(folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = QDir::cleanPath(files.next());
            require(path == log || expected.contains(path), "no other file is written: " + path);
            if (path == log)
                require(QFileInfo(path).size() > 0, "the log has lines");
        }
    }

    QString folderBefore = QDir::currentPath(); // where the fuzzer's own files are
    ScratchFolder folder;
    CommandLine command;
    QString databasePath;
    bool isThere = false;
};

void checkExitCode(const CommandLine &command)
{
    const int code = *command.exitCode;
    require(code == exitcode::success || code == exitcode::failure
                || code == exitcode::unknownOption,
            "the exit code is known");
    require(command.error.isEmpty() == (code != exitcode::unknownOption),
            "an unknown option is named");
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    prepareProcess();
    const QStringList arguments = argumentsOf(inputBytes(data, size));

    checkReportsCommandLine(arguments);
    const CommandLine command = parseCommandLine(arguments);
    if (command.exitCode) {
        checkExitCode(command);
        return 0;
    }
    checkValues(command, arguments);
    if (isConfined(command))
        Run(command).run();
    return 0;
}
