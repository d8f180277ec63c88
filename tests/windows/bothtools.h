// SPDX-License-Identifier: MIT
#pragma once

#include "folderfiles.h"
#include "toolrun.h"

#include <QDir>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// What both tools are started with.
struct Start {
    QStringList arguments{};
    QStringList windowsArguments{}; ///< empty for the same
    QString folder{};               ///< the working folder, seen from the root
    QString locale = "C.UTF-8";
    bool translated = false; ///< with the English labels
};

/// Runs the tool of Linux and that of Windows on the same files at the same place, one after the other, and
/// compares what they leave.
class BothTools {
public:
    BothTools();

    /// \return the folder whose files are compared, and those below it
    QString root() const { return QDir(folder.path()).canonicalPath(); }
    QString path(const QString &name) const { return root() + '/' + name; }

    /// Makes the root empty.
    void clear();

    /// Runs both, and fails the test unless the exit codes, streams and files are the same. Logs (*.txt) may
    /// differ in what asOnLinux() changes. Databases (*.db) may differ in the layout of the file and in the
    /// last digits of what a curve's fit wrote, but in nothing else that they hold. The files are those of
    /// Windows then.
    void compare(const Start &start);

    /// \return the exit code of the last runs
    int exitCode() const { return lastExitCode; }

    /// \return whether a locale is there for Wine, which asks the C library; it is made if it can be
    bool hasLocale(const QString &locale);

    /// \return how much was compared so far
    QString summary() const;

private:
    struct Outcome {
        ToolRun run;
        FolderFiles files;
    };

    Outcome runOne(const ToolCommand &command) const;
    ToolCommand commandFor(const Start &start, const QString &tool,
                           const QStringList &arguments) const;
    void compareDatabases(const Outcome &linuxOutcome, const Outcome &windowsOutcome);
    void compareContent(const QString &linuxFile, const QString &windowsFile);
    /// Compares the numbers that fits wrote, and takes them out of both files.
    void compareFits(const QString &linuxFile, const QString &windowsFile);

    QTemporaryDir folder;
    QTemporaryDir installations;
    QTemporaryDir locales;
    int lastExitCode = -1;
    int runs = 0;
    int databases = 0;
    int sameBytes = 0;
    qsizetype tables = 0;
    qsizetype rows = 0;
    qsizetype roundedNumbers = 0;
    double largestDifference = 0;
};
