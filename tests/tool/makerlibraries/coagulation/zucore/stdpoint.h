// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace coagulation {

struct StdPoint {
    enum Flag : qint32 { Fitted = 64 };

    StdPoint() = default;
    StdPoint(double pointX, double pointY, double pointZ, qint32 pointFlags)
        : flags(pointFlags)
        , z(pointZ)
        , y(pointY)
        , x(pointX)
    {
    }

    QString sample;
    double weight = 1.0;
    qint32 flags = 0;
    double z = 0.0;
    double y = 0.0;
    double x = 0.0;
};

} // namespace coagulation
