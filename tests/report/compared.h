// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/comparison.h"

#include <QString>
#include <QStringList>

class TestDatabase;

/// Compares two databases to the end.
/// \param name "profile", "data", "qc" or "syslog"
coagulation::report::DatabaseFacts
compared(const TestDatabase &before, const TestDatabase &after, const QString &name = "qc",
         const coagulation::report::ComparisonOptions &options = {true, true});

/// \return the report of an upgrade of one database that says that it worked
coagulation::report::Report reportOn(const TestDatabase &before, const TestDatabase &after,
                                     const QString &name);

/// \return what differs between the databases, a line for each count, row, column and object:
///         "t: changed 1", "  id = 3 | x: 'a' -> 'b'"; and for what could not be compared "t: problem"
QStringList differences(const coagulation::report::DatabaseFacts &facts);

/// \return the facts of a table; one that is not there ends the test program
const coagulation::report::TableFacts &tableIn(const coagulation::report::DatabaseFacts &facts,
                                               const QString &name);

/// \return the differences between two databases that are made by statements
QStringList differencesOf(const QStringList &before, const QStringList &after);
