// SPDX-License-Identifier: MIT
#include "assaytemplate.h"

#include <QDebug>

namespace coagulation {

namespace {

zu::Function function(const QString &text)
{
    return text == "Log" ? zu::Function::Decadic : zu::Function::Identity;
}

} // namespace

zu::Function AssayTemplate::Calibration::dispFunX() const
{
    qDebug().noquote() << "The maker's calibration:" << id << name << static_cast<int>(method)
                       << condition << caliX << caliY << funX << funY << dispX << dispY;
    return function(dispX);
}

zu::Function AssayTemplate::Calibration::dispFunY() const
{
    return function(dispY);
}

} // namespace coagulation
