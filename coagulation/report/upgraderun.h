// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <functional>

/// A run of vardo that is watched through its log.
namespace coagulation::report {

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
UpgradeRun runUpgrade(const QString &program, const QString &folder, const QString &prefix,
                      const QString &suffix, const std::function<void(const QString &)> &line,
                      const std::function<bool()> &stop);

/// Reads the lines of the last run from a log file of vardo.
/// \return none if the file cannot be read
std::optional<QList<LogLine>> readLog(const QString &path);

/// What the log says of one database.
struct LoggedUpgrade {
    QList<StepFacts> steps{};
    std::optional<qint64> milliseconds{};
};

/// \param log the lines of one run
/// \param fileName of the database, without its folder
LoggedUpgrade upgradeIn(const QList<LogLine> &log, const QString &fileName);

} // namespace coagulation::report
