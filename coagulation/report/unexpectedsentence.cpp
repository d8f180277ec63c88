// SPDX-License-Identifier: MIT
#include "coagulation/report/unexpectedsentence.h"

namespace coagulation::report {

QString sentenceOn(const UnexpectedRow &row)
{
    switch (row.kind) {
    case UnexpectedRow::Kind::OwnAssay:
        return QString(
                   "The assay ‘%1’ has the number of the factory's assay ‘%2’, whose items, calibrations or"
                   " checks were added to it: check them.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::MisplacedLimit:
        return row.other.isEmpty()
            ? QString("No item got the limits of the result check for ‘%1’: set them again.")
                  .arg(row.name)
            : QString(
                  "The limits of the result check for ‘%1’ went to an item of the assay ‘%2’: check them.")
                  .arg(row.name, row.other);
    case UnexpectedRow::Kind::OldSettingName:
        return QString(
                   "The setting ‘%1’ kept its old name, which the new analyser software does not look for:"
                   " set it again.")
            .arg(row.name);
    case UnexpectedRow::Kind::CurveWithoutExpiry:
        return row.other.isEmpty()
            ? QString(
                  "The standard curve ‘%1’ has no date of expiry, since it has no date: check it.")
                  .arg(row.name)
            : QString(
                  "The standard curve ‘%1’ has no date of expiry, since ‘%2’ is no date: check it.")
                  .arg(row.name, row.other);
    case UnexpectedRow::Kind::OwnItem:
        return QString(
                   "The item ‘%1’ has the number of an item of the factory's assay ‘%2’, which was"
                   " left out: do not use that assay.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::OwnCalibration:
        return QString(
                   "The calibration ‘%1’ has the number or the name of one of the factory's assay ‘%2’,"
                   " which was left out: do not use that assay.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::FactoryName:
        return QString(
                   "The assay ‘%1’ has the name of an assay of the factory's, but the number %2. The"
                   " factory's was left out, and settings were added to yours: check them.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::FactoryDisplayName:
        return QString(
                   "The assay with the number %2 is displayed under the name of the factory's assay ‘%1’, which"
                   " was left out: check its items, calibrations and checks.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::ReplacedLimit:
        return QString(
                   "The limits of the result check for ‘%1’ were %2, and the item got others: check them.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::ReplacedIdentifier:
        return QString(
                   "The reagent ‘%1’ was made anew without its identifier %2: check it against your"
                   " bottles.")
            .arg(row.name, row.other);
    case UnexpectedRow::Kind::EqualIdentifiers:
        return QString("The reagents ‘%1’ and ‘%2’ have the same identifier: change one of them.")
            .arg(row.name, row.other);
    }
    Q_UNREACHABLE();
}

} // namespace coagulation::report
