#pragma once

#include "coagulation/vardo/updatebase.h"

namespace coagulation {

/// Upgrades the profile database: settings, users, reagents, assays, calibrations and standard curves.
class UpdateProfile : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateProfile(QObject *parent = nullptr);
};

} // namespace coagulation
