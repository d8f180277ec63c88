// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <QList>
#include <QMap>

namespace coagulation::report {

class Questions;

/// \return the names of the assays that the steps add to every profile database, by their numbers
const QMap<int, QString> &factoryAssays();

/// A row that the steps add to every profile database, under a number that may be taken.
struct FactoryRow {
    QString table; ///< "assayItem" or "assayCalibration"
    int id;
    int assay; ///< the number of its assay
};

/// \return those of the factory's assays
const QList<FactoryRow> &factoryRows();

/// Finds the rows of a profile database that the steps did not expect. What a layout lacks is not asked for.
/// \param questions to a connection with the database before as main, and the one after attached as `after`
/// \param database with both versions
QList<UnexpectedRow> unexpectedRows(Questions &questions, const DatabaseFacts &database);

} // namespace coagulation::report
