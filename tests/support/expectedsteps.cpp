// SPDX-License-Identifier: MIT
#include "expectedsteps.h"

#include <QMap>

#include <numeric>

namespace {

const QMap<QString, QList<int>> &allSteps()
{
    static const QMap<QString, QList<int>> steps{
        {"profile",
         {10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30}},
        {"data", {8, 9, 10, 11, 12}},
        {"qc", {1, 2, 3}},
        {"syslog", {1, 3, 4}},
    };
    return steps;
}

} // namespace

QList<int> stepsOf(const QString &database)
{
    return allSteps().value(database);
}

qsizetype numberOfSteps()
{
    return std::accumulate(
        allSteps().begin(), allSteps().end(), qsizetype(0),
        [](qsizetype sum, const QList<int> &steps) { return sum + steps.size(); });
}

int newestVersionOf(const QString &database)
{
    return stepsOf(database).constLast();
}

QStringList stepLog(const QString &database, int storedVersion, int failing)
{
    QStringList log;
    for (const int step : stepsOf(database)) {
        log << QString("Debug: %1: %2")
                   .arg(QString("update_v%1()").arg(step), -12)
                   .arg(step == failing             ? "FAIL"
                            : storedVersion >= step ? "SKIP"
                                                    : "PASS");
        if (step == failing)
            break;
    }
    return log;
}
