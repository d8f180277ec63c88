// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/updatebase.h"

namespace coagulation {

/// Upgrades the quality-control database: control materials, their targets, results and rules.
class UpdateQc : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateQc(QObject *parent = nullptr);

public slots:
    bool update_v1(); ///< table version; reagent with level
    bool update_v2(); ///< whole-second times
    bool update_v3(); ///< info and subsetting for each instrument, with Levey-Jennings limits
};

} // namespace coagulation
