#pragma once

#include "coagulation/vardo/updatebase.h"

namespace coagulation {

/// Upgrades the data database: patients, their results, curves and lookup lists.
class UpdateData : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateData(QObject *parent = nullptr);
};

} // namespace coagulation
