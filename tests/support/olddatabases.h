// SPDX-License-Identifier: MIT
#pragma once

#include "testdatabase.h"

/// Fills a database with its sample as a workstation at a version would have it.
/// \param database whose file has the database's name, for example "profile.db"
/// \param name "profile", "data", "qc" or "syslog"
/// \param version 0 (none stored) to the newest
void makeDatabaseAt(const TestDatabase &database, const QString &name, int version);

/// \return what turns the data sample at the version before into one at a version
QStringList dataChangesTo(int version);

/// \return what turns the quality-control sample at the version before into one at a version
QStringList qcChangesTo(int version);

/// \return what turns the system log sample at the version before into one at a version
QStringList syslogChangesTo(int version);
