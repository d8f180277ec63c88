// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Identifiers of places in the page, for links to them.
namespace coagulation::report {

/// \param name of a database
inline QString databaseAnchor(const QString &name)
{
    return "database-" + name;
}

/// \param database name
/// \param index of the table in the database's facts
inline QString tableAnchor(const QString &database, qsizetype index)
{
    return QString("table-%1-%2").arg(database).arg(index + 1);
}

/// The section of all standard curves.
inline QString curvesAnchor()
{
    return "curves";
}

/// \param index of the curve in the profile database's facts
inline QString curveAnchor(qsizetype index)
{
    return QString("curve-%1").arg(index + 1);
}

/// The list of a database's objects that are gone or new.
inline QString objectsAnchor(const QString &database)
{
    return "objects-" + database;
}

/// \param index of the line in the log
inline QString logAnchor(qsizetype index)
{
    return QString("log-%1").arg(index + 1);
}

} // namespace coagulation::report
