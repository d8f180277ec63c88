// SPDX-License-Identifier: MIT
#pragma once

#include "toolrun.h"

#include <QJsonObject>
#include <QTemporaryDir>

/// A laboratory's databases in a folder of their own, and runs of vardo-report beside them.
class Laboratory {
public:
    /// \param prefix, suffix of the databases' names; they hold the samples of the oldest layouts
    explicit Laboratory(const QString &prefix = {}, const QString &suffix = {});

    QString path(const QString &fileName) const { return folder.filePath(fileName); }

    /// \return names and digests of the files in the laboratory's folder, but for the index of a write-ahead
    ///         log, which is made anew whenever nobody has it
    QStringList files() const { return filesIn(folder.path()); }
    static QStringList filesIn(const QString &path);

    /// Runs vardo-report, whose working folder is another one.
    /// \param arguments to which the file for programs is added
    ToolRun run(const QStringList &arguments) const;

    /// \return what run() starts, for other ways to start it
    ToolCommand command(const QStringList &arguments) const;

    /// \return the arguments of a rehearsal of these databases
    QStringList rehearsal(const QStringList &more = {}) const;

    QString page() const { return results.filePath("vardo-report.html"); }
    QJsonObject facts() const; ///< of the last run
    QByteArray pageText() const;

    /// \return the names of what stands where temporary folders are made
    QStringList temporaryFiles() const;

    /// \return false if a program still works there
    bool removeTemporaryFiles() const;

    /// \return a path in the folder that run() works in
    QString result(const QString &fileName) const { return results.filePath(fileName); }

private:
    QString prefixBefore;
    QString suffixBehind;
    QTemporaryDir folder;
    QTemporaryDir results;
    QTemporaryDir temporary;
};

/// \return the facts of one database; empty if it is not among them
QJsonObject databaseIn(const QJsonObject &facts, const QString &name);
