// SPDX-License-Identifier: MIT
#pragma once

// Headers of one folder name each other without it: a search path that has the stand-ins first does
// not reach them this way.
#include "zu.h"

#include <QString>
#include <QStringList>

namespace coagulation {

class AssayTemplate {
public:
    struct Calibration {
        /// Says in the log what the calibration holds.
        /// \return Decadic for "Log"
        zu::Function dispFunX() const;

        /// \return Decadic for "Log"
        zu::Function dispFunY() const;

        QStringList reagents;
        QString dispY;
        QString dispX;
        QString funY;
        QString funX;
        QString caliY;
        QString caliX;
        QString condition;
        double dilution = 1.0;
        zu::RegressionMethod method = zu::RegressionMethod::Spline;
        QString name;
        int id = -1;
    };
};

} // namespace coagulation
