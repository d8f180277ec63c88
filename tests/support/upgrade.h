// SPDX-License-Identifier: MIT
#pragma once

#include "testdatabase.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// Runs the upgrade of a database in this process.
/// \param database whose file is named for its kind: "profile.db", "data.db", "qc.db" or "syslog.db"
/// \return whether all steps passed
bool upgrade(const TestDatabase &database);

/// Runs the upgrade of a database file with its plain name, such as "profile.db", in this process.
/// \param folder of the file
/// \param name "profile", "data", "qc" or "syslog"
/// \return whether all steps passed
bool upgradeIn(const QString &folder, const QString &name);

/// \return the schema that an upgrade is to leave, from docs/schema, as by TestDatabase::comparableSchema()
/// \param name "profile", "data", "qc" or "syslog", as below
QStringList referenceSchema(const QString &name);

/// Adds a column "stored" and a row for each version that a database may have, 0 to the newest.
void addVersionRows(const QString &name);

/// Tables and the rows that they should have, as by TestDatabase::table().
using ExpectedTables = QList<std::pair<QString, QStringList>>;

/// Checks that the sample at a version is upgraded without a warning, to the reference schema.
void verifyUpgrade(const QString &name, int stored, const ExpectedTables &tables);

/// Checks that an upgrade of the sample fails in a step and leaves the file as it was.
/// \param obstacles statements that are run on the sample at the stored version
/// \param failing how each statement that fails begins, in their order; nothing else may be warned of
///                but what stands among them in full, such as "Kept 8 rows of result in result_unmoved"
void verifyUpgradeFails(const QString &name, int stored, const QStringList &obstacles,
                        const QStringList &failing, int step);

/// Checks that an upgrade of the sample passes in spite of obstacles.
/// \param failing see verifyUpgradeFails()
void verifyUpgradeIgnores(const QString &name, int stored, const QStringList &obstacles,
                          const QStringList &failing);
