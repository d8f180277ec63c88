// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/zucore/zu.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// Stands in for the library's curves at link time: a test linked with this unit orders what the
/// library does and sees what it was given.
namespace curvedouble {

/// The result of a point, which a refit gives it.
struct PointResult {
    double z = 0.0;
    int flags = 0;
};

/// What a refit does to a curve; what is left out stays as it was set.
struct Refit {
    std::optional<bool> valid{};
    std::optional<double> correlation{};
    std::optional<QList<double>> coefficients{};
    QList<PointResult> points{}; ///< of the first points
};

struct Library {
    // orders
    int coefficientCount = 2;
    std::optional<bool> validBeforeRefit{}; ///< none: as it was set
    QMap<QString, Refit> refits{}; ///< by the curve's name; any other curve becomes invalid
    zu::Function dispFunX = zu::Function::Linear;
    zu::Function dispFunY = zu::Function::Linear;

    // what happened
    QList<QStringList> curves{};       ///< what each curve was given before its refit
    QStringList refitted{};            ///< names of the curves, in the order of their refits
    QList<QStringList> calibrations{}; ///< those whose display functions were asked for
};

/// \return the one library of the test program; a test starts with a new one
Library &library();

} // namespace curvedouble
