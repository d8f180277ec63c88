// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/updatebase.h"

namespace coagulation {

/// Upgrades the system log database: assay runs and maintenance records of the instruments.
class UpdateSyslog : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateSyslog(QObject *parent = nullptr);

public slots:
    bool update_v1(); ///< table version
    bool update_v3(); ///< whole-second assay times
    bool update_v4(); ///< table maintenanceRecords
};

} // namespace coagulation
