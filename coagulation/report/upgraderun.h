// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <functional>

/// A run of vardo that is watched through its log.
namespace coagulation::report {

/// The file names of the four databases, without their folder.
struct DatabaseNames {
    QString prefix{};
    QString suffix{};

    /// \param database "profile", "data", "qc" or "syslog"
    QString fileName(const QString &database) const { return prefix + database + suffix + ".db"; }
};

/// In the order of the upgrade.
const QStringList &databases();

struct UpgradeRun {
    QString problem{}; ///< a sentence, if the program did not start or did not end by itself
    std::optional<int> exitCode{};
    qint64 milliseconds = 0;
    QList<LogLine> log{}; ///< with the time at which each line appeared
};

/// Runs vardo on databases of a folder and waits for its end.
/// \param program path of vardo
/// \param folder of the databases; the log is there, too, as upgrade.log
/// \param line called for each line of the log as it appears
/// \param stop asked again and again; true ends the program
UpgradeRun runUpgrade(const QString &program, const QString &folder, const DatabaseNames &names,
                      const std::function<void(const QString &)> &line,
                      const std::function<bool()> &stop);

/// Reads the lines of the last run on these databases from a log file of vardo, which may hold other runs, too.
/// \return none if the file cannot be read; no line if it holds no such run
std::optional<QList<LogLine>> readLog(const QString &path, const DatabaseNames &names);

/// What the log says of one database.
struct LoggedUpgrade {
    QList<StepFacts> steps{};
    std::optional<qint64> milliseconds{};
};

/// \param log the lines of one run
/// \param fileName of the database, without its folder
/// \param end the time at which the run ended, if somebody watched it
LoggedUpgrade upgradeIn(const QList<LogLine> &log, const QString &fileName,
                        std::optional<qint64> end = {});

/// \return what a line of the log tells of the course: "update_v12()" or "profile.db"; else empty
QString partOfUpgrade(const QString &line);

} // namespace coagulation::report
