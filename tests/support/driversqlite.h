// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A test that reaches below Qt's driver, into SQLite itself, needs the SQLite that the driver uses. Some builds
/// of the driver have one of their own, whose objects have another layout and whose settings are others.
///
/// \param linked source id of the SQLite that the test is linked to: sqlite3_sourceid()
/// \return why the test has to be skipped, empty if the driver's SQLite has the same source id
QString otherSqliteInDriver(const QString &linked);
