// SPDX-License-Identifier: MIT
#include "coagulation/report/commandline.h"

#include <QCommandLineParser>
#include <QDir>

namespace coagulation::report {

namespace {

constexpr const char *description =
    R"(Rehearses an upgrade of a workstation's databases on copies of them, or compares the databases
before and after an upgrade, and writes a report.

  vardo-report rehearse [-p prefix] [-s suffix] [-o page] [--json file] [--keep folder] [--examples] [--quiet]
  vardo-report compare BEFORE AFTER [-p prefix] [-s suffix] [-o page] [--json file] [--log file] [--examples]
                       [--quiet])";

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(description);
    parser.addPositionalArgument("command", "rehearse, or compare", "rehearse|compare");
    parser.addPositionalArgument(
        "BEFORE", "compare: the folder of the databases before the upgrade", "[BEFORE");
    parser.addPositionalArgument("AFTER", "compare: the folder of the databases after the upgrade",
                                 "AFTER]");
    parser.addOptions({
        {"p", "What stands before the databases' names; rehearse: it may begin with a folder.",
         "prefix"},
        {"s", "What stands after the databases' names.", "suffix"},
        {"o", "Write the report to this file. The default is vardo-report.html.", "page",
         "vardo-report.html"},
        {"json", "Write the same facts for programs to this file.", "file"},
        {"keep", "rehearse: keep the copies in this folder, which must be new or empty.", "folder"},
        {"log", "compare: the log of the upgrade.", "file"},
        {"examples", "Show rows of the data database, with patients' names and results."},
        {"quiet", "Show no progress."},
        {{"h", "help"}, "Show this help."},
        {"version", "Show the version."},
    });
}

QString firstEmptyOption(const QCommandLineParser &parser)
{
    for (const char *option : {"o", "json", "keep", "log"}) {
        if (parser.isSet(option) && parser.value(option).isEmpty())
            return option;
    }
    return {};
}

bool hasSeparator(const QString &name)
{
    return QDir::fromNativeSeparators(name).contains('/');
}

CommandLine valuesOf(const QCommandLineParser &parser)
{
    return {.names = {parser.value("p"), parser.value("s")},
            .page = parser.value("o"),
            .json = parser.value("json"),
            .log = parser.value("log"),
            .keep = parser.value("keep"),
            .examples = parser.isSet("examples"),
            .quiet = parser.isSet("quiet")};
}

/// Moves the folder from the prefix to a place of its own.
/// \return what is wrong; empty if nothing is
QString completeRehearsal(const QStringList &arguments, CommandLine &command)
{
    if (arguments.size() > 1)
        return QString("Too many arguments: %1").arg(arguments.at(1));
    if (!command.log.isEmpty())
        return "The option --log belongs to compare.";
    const QString prefix = QDir::fromNativeSeparators(command.names.prefix);
    const qsizetype folderSize = prefix.lastIndexOf('/') + 1;
    command.use = Use::Rehearsal;
    command.folder = prefix.first(folderSize);
    command.names.prefix = prefix.mid(folderSize);
    return {};
}

/// \return what is wrong; empty if nothing is
QString completeComparison(const QStringList &arguments, CommandLine &command)
{
    if (arguments.size() < 3)
        return "compare needs two folders: BEFORE and AFTER.";
    if (arguments.size() > 3)
        return QString("Too many arguments: %1").arg(arguments.at(3));
    if (!command.keep.isEmpty())
        return "The option --keep belongs to rehearse.";
    if (hasSeparator(command.names.prefix))
        return "The prefix names no folder in compare.";
    command.use = Use::Comparison;
    command.before = arguments.at(1);
    command.after = arguments.at(2);
    return {};
}

/// \return what is wrong; empty if nothing is
QString complete(const QStringList &arguments, CommandLine &command)
{
    if (hasSeparator(command.names.suffix))
        return "The suffix names no folder.";
    const QString name = arguments.value(0);
    if (name == "rehearse")
        return completeRehearsal(arguments, command);
    if (name == "compare")
        return completeComparison(arguments, command);
    return name.isEmpty() ? QString("A command is missing: rehearse or compare.")
                          : QString("Unknown command '%1'.").arg(name);
}

} // namespace

ParsedCommandLine parseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
        return {.error = parser.errorText()};
    if (parser.isSet("help"))
        return {.output = parser.helpText()};
    if (parser.isSet("version"))
        return {.output = "vardo-report " VARDO_VERSION "\n"};
    if (const QString option = firstEmptyOption(parser); !option.isEmpty())
        return {.error = QString("Missing value after '%1%2'.")
                             .arg(option.size() == 1 ? "-" : "--", option)};

    CommandLine command = valuesOf(parser);
    const QString error = complete(parser.positionalArguments(), command);
    if (!error.isEmpty())
        return {.error = error};
    return {.command = command};
}

} // namespace coagulation::report
