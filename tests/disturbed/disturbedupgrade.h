// SPDX-License-Identifier: MIT
#pragma once

#include "toolrun.h"

#include <QByteArray>
#include <QDir>
#include <QHash>
#include <QMap>
#include <QSet>
#include <QString>
#include <QTemporaryDir>

#include <functional>

/// How SQLite writes an upgrade: into the file at the commit, into the file as soon as its cache is
/// full, or into a write-ahead log.
enum class Writing { AtCommit, Spilling, Ahead };

/// The upgrade of one old database by the real binary, which something disturbs, and what is left of
/// the database then.
class DisturbedUpgrade {
public:
    /// What a folder holds: the bytes of its files by their names.
    using Files = QMap<QString, QByteArray>;

    /// \param database "profile", "data", "qc" or "syslog"; of its oldest version
    /// \param vardo path of the binary
    DisturbedUpgrade(const QString &database, Writing writing, QString vardo);

    /// \return true under AddressSanitizer, which makes a run of the binary take ten times as long
    static bool isSanitized();

    QString databaseFile() const { return fileName; }
    /// \return the folder that holds the database and nothing else
    QString folder() const { return QDir(root.path()).canonicalPath() + "/databases"; }
    /// \return the path of a file outside of that folder
    QString aside(const QString &name) const { return root.filePath(name); }

    /// \return the old database, alone
    Files oldFiles() const { return before; }
    Files files() const;
    void setFiles(const Files &files) const;

    /// Runs the binary on the folder.
    /// \param disturb called in the new process before the binary is loaded
    ToolRun run(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(),
                const std::function<void()> &disturb = {}) const;

    /// Lets SQLite open the database, and so settle what is left of a transaction.
    /// \return "old", "new", or what is wrong with it
    QString outcome();

    /// Runs the binary undisturbed on what the folder holds.
    /// \return "new", or what is wrong with the outcome
    QString outcomeOfAnotherRun();

private:
    QString path() const { return folder() + '/' + fileName; }
    QString compare() const;

    QTemporaryDir root;
    QString fileName;
    QString program;
    Files before;
    QStringList oldContent;
    QStringList newContent;
    QHash<QByteArray, QString> outcomes; ///< of the files compared so far, by their bytes
    QSet<QByteArray> finished; ///< hashes of the states from which another run ended at "new"
};
