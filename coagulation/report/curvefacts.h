// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

namespace coagulation::report {

class Questions;

/// Reads the standard curves that were fitted once more: those whose validity, date, correlation or coefficients
/// differ. Layouts that lack a table or column give what they have.
/// \param questions to a connection with the database before as main, and the one after attached as `after`
QList<CurveFacts> refittedCurves(Questions &questions);

/// \param refitted as by refittedCurves()
/// \return the names of the other curves that are not valid after the upgrade
QStringList otherInvalidCurves(Questions &questions, const QList<CurveFacts> &refitted);

/// A curve stores no method, so a valid one is read by the new method of its calibration.
/// \return the calibrations with another method that have a valid curve after the upgrade
QList<MethodChange> methodChanges(Questions &questions);

} // namespace coagulation::report
