#pragma once

#include "coagulation/vardo/updatebase.h"

namespace coagulation {

/// Upgrades the qc database: control materials, their targets, results and rules.
class UpdateQc : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateQc(QObject *parent = nullptr);
};

} // namespace coagulation
