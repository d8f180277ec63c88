// SPDX-License-Identifier: MIT
#include "bothtools.h"

#include "testdatabase.h"
#include "today.h"
#include "wine.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

const QString plain = "plain/bin/";
const QString english = "english/bin/";

void copyFile(const QString &from, const QString &to)
{
    QDir().mkpath(QFileInfo(to).path());
    if (!QFile::copy(from, to))
        qFatal("%s cannot be copied to %s", qUtf8Printable(from), qUtf8Printable(to));
}

/// The columns that the fit of a curve writes numbers into.
const QList<std::pair<QString, QStringList>> fittedColumns{
    {"curve", {"correlation", "a", "b", "c", "d", "e"}}, {"curvePoint", {"z"}}};

/// \return the numbers that fits of curves wrote into a database, as literals
QStringList fittedNumbers(const QString &path)
{
    QStringList numbers;
    for (const auto &[table, columns] : fittedColumns) {
        for (const QString &column : columns)
            numbers << databaseRows(path,
                                    QString("select %1 from %2 not indexed").arg(column, table));
    }
    return numbers;
}

/// \return what the tool of Windows wrote as that of Linux would have written it, in lines
QByteArrayList linesOnLinux(const QByteArray &text)
{
    return asOnLinux(text).split('\n');
}

/// Takes the numbers that fits of curves wrote out of a database.
void removeFittedNumbers(const QString &path)
{
    for (const auto &[table, columns] : fittedColumns) {
        for (const QString &column : columns)
            executeOn(
                path,
                {QString("update %1 set %2 = null where typeof(%2) = 'real'").arg(table, column)});
    }
}

/// \return the difference of two literals as a part of the larger one; infinite if one is no number
double relativeDifference(const QString &one, const QString &other)
{
    if (one == other)
        return 0;
    bool isNumber = false;
    bool isOtherNumber = false;
    const double x = one.toDouble(&isNumber);
    const double y = other.toDouble(&isOtherNumber);
    if (!isNumber || !isOtherNumber)
        return std::numeric_limits<double>::infinity();
    return std::abs(x - y) / std::max(std::abs(x), std::abs(y));
}

} // namespace

BothTools::BothTools()
{
    for (const QString &installation : {plain, english}) {
        copyFile(VARDO, installations.filePath(installation + "vardo"));
        copyFile(WINDOWS_TOOL, installations.filePath(installation + "vardo.exe"));
    }
    copyFile(ENGLISH, installations.filePath("english/share/vardo/translations/vardo_en.qm"));
}

void BothTools::clear()
{
    QDir(root()).removeRecursively();
    QDir().mkpath(folder.path());
}

bool BothTools::hasLocale(const QString &locale)
{
    if (locale == "C.UTF-8" || QFileInfo::exists(locales.filePath(locale)))
        return true;
    const QStringList parts = locale.split('.');
    return QProcess::execute(
               "localedef",
               {"-i", parts.constFirst(), "-f", parts.constLast(), locales.filePath(locale)})
        == 0;
}

ToolCommand BothTools::commandFor(const Start &start, const QString &tool,
                                  const QStringList &arguments) const
{
    ToolCommand command{.program =
                            installations.filePath((start.translated ? english : plain) + tool),
                        .arguments = arguments,
                        .folder = path(start.folder),
                        .environment = environmentWithLocale(start.locale)};
    if (start.locale != "C.UTF-8")
        command.environment.insert("LOCPATH", locales.path());
    return command;
}

BothTools::Outcome BothTools::runOne(const ToolCommand &command) const
{
    ToolRun run = runTool(command);
    return {std::move(run), filesIn(root())};
}

void BothTools::compare(const Start &start)
{
    const FolderFiles before = filesIn(root());
    const Outcome onLinux = runOne(commandFor(start, "vardo", start.arguments));
    setFilesIn(root(), before);
    const Outcome onWindows = runOne(underWine(
        commandFor(start, "vardo.exe",
                   start.windowsArguments.isEmpty() ? start.arguments : start.windowsArguments)));
    ++runs;
    lastExitCode = onWindows.run.exitCode;

    QVERIFY(onLinux.run.exited && onWindows.run.exited);
    QCOMPARE(onWindows.run.exitCode, onLinux.run.exitCode);
    QCOMPARE(linesOnLinux(onWindows.run.output), onLinux.run.output.split('\n'));
    QCOMPARE(linesOnLinux(onWindows.run.errors), onLinux.run.errors.split('\n'));
    QCOMPARE(onWindows.files.keys(), onLinux.files.keys());
    for (auto file = onWindows.files.begin(); file != onWindows.files.end(); ++file) {
        const QByteArray expected = onLinux.files.value(file.key());
        if (file.key().endsWith(".txt"))
            QCOMPARE(linesOnLinux(file.value()), expected.split('\n'));
        else if (!file.key().endsWith(".db") || lastExitCode != 0)
            QVERIFY2(file.value() == expected, qUtf8Printable(file.key()));
    }
    if (lastExitCode == 0)
        compareDatabases(onLinux, onWindows);
}

void BothTools::compareDatabases(const Outcome &linuxOutcome, const Outcome &windowsOutcome)
{
    const QTemporaryDir copies;
    const QString linuxCopies = copies.filePath("linux");
    const QString windowsCopies = copies.filePath("windows");
    setFilesIn(linuxCopies, linuxOutcome.files);
    setFilesIn(windowsCopies, windowsOutcome.files);
    for (auto file = windowsOutcome.files.begin(); file != windowsOutcome.files.end(); ++file) {
        if (!file.key().endsWith(".db"))
            continue;
        ++databases;
        if (file.value() == linuxOutcome.files.value(file.key()))
            ++sameBytes;
        compareContent(linuxCopies + '/' + file.key(), windowsCopies + '/' + file.key());
        if (QTest::currentTestFailed())
            return;
    }
}

void BothTools::compareContent(const QString &linuxFile, const QString &windowsFile)
{
    if (withToday(databaseContent(windowsFile)) != withToday(databaseContent(linuxFile)))
        compareFits(linuxFile, windowsFile);
    QCOMPARE(withToday(databaseContent(windowsFile)), withToday(databaseContent(linuxFile)));

    for (const QString &table :
         databaseRows(windowsFile, "select name from sqlite_master where type = 'table'")) {
        ++tables;
        rows +=
            databaseRows(windowsFile, "select count(*) from " + table).constFirst().toLongLong();
    }
}

void BothTools::compareFits(const QString &linuxFile, const QString &windowsFile)
{
    constexpr double tolerance = 1e-10; // as a part of a number

    const bool isProfile = databaseRows(windowsFile,
                                        "select 1 from sqlite_master where name = 'curve'"
                                        " and sql like '%correlation%'")
                               .size()
        == 1;
    if (!isProfile)
        return;
    const QStringList expected = fittedNumbers(linuxFile);
    const QStringList numbers = fittedNumbers(windowsFile);
    QCOMPARE(numbers.size(), expected.size());
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        const double difference = relativeDifference(numbers.at(i), expected.at(i));
        QVERIFY2(difference <= tolerance,
                 qUtf8Printable(numbers.at(i) + " instead of " + expected.at(i)));
        roundedNumbers += difference > 0 ? 1 : 0;
        largestDifference = std::max(largestDifference, difference);
    }
    removeFittedNumbers(linuxFile);
    removeFittedNumbers(windowsFile);
}

QString BothTools::summary() const
{
    return QString(
               "%1 runs of each tool left %2 databases with %3 tables and %4 rows: the same (%5 of the"
               " files in every byte; %6 numbers of fitted curves but for a part of %7 or less)")
        .arg(runs)
        .arg(databases)
        .arg(tables)
        .arg(rows)
        .arg(sameBytes)
        .arg(roundedNumbers)
        .arg(largestDifference, 0, 'g', 2);
}
