// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/zucore/zu.h"

#include <QString>

namespace coagulation {

class AssayTemplate {
public:
    /// How an assay is calibrated, as it is stored in the table assayCalibration.
    struct Calibration {
        int id = 0;
        QString name;
        zu::RegressionMethod method = zu::RegressionMethod::Linear;
        QString condition;
        QString caliX; ///< the item on the x axis, for example "T" or "OD"
        QString caliY; ///< the item that is calibrated, for example "P"
        QString funX;  ///< function of the x axis, as text
        QString funY;  ///< function of the y axis, as text
        QString dispX; ///< function of the displayed x axis, as text
        QString dispY; ///< function of the displayed y axis, as text

        /// \return the function that dispX names: "Log" is the logarithm, any other text is linear
        zu::Function dispFunX() const;

        /// \return the function that dispY names: "Log" is the logarithm, any other text is linear
        zu::Function dispFunY() const;
    };
};

} // namespace coagulation
