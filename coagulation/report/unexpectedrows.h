// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <QList>
#include <QMap>

namespace coagulation::report {

class Questions;

/// \return the names of the assays that the steps add to every profile database, by their numbers
const QMap<int, QString> &factoryAssays();

/// A row that the steps add to every profile database, under a number or a name that may be taken.
struct FactoryRow {
    QString table;  ///< "assayItem" or "assayCalibration"
    int id;         ///< 0 if it gets the next free number
    int assay;      ///< the number of its assay
    QString name{}; ///< of a calibration: no two have the same
};

/// \return those of the factory's assays
const QList<FactoryRow> &factoryRows();

/// Finds the rows of a profile database that the steps did not expect. What a layout lacks is not asked for.
/// \param questions to a connection with the database before as main, and the one after attached as `after`
/// \param database with both versions
QList<UnexpectedRow> unexpectedRows(Questions &questions, const DatabaseFacts &database);

} // namespace coagulation::report
