// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QStringList>

/// \param database "profile", "data", "qc" or "syslog", as below
/// \return the numbers of the steps that it should have, ascending
QList<int> stepsOf(const QString &database);

/// \return how many steps the four databases have
qsizetype numberOfSteps();

/// \return the version that every upgrade should leave
int newestVersionOf(const QString &database);

/// \return what the steps should log in a run from a stored version on, up to the failing one if there
///         is one
QStringList stepLog(const QString &database, int storedVersion, int failing = 0);
