// SPDX-License-Identifier: MIT
#include "coagulation/zucore/assaytemplate.h"

namespace coagulation {

namespace {

zu::Function toFunction(const QString &text)
{
    return text == "Log" ? zu::Function::Log : zu::Function::Linear;
}

} // namespace

zu::Function AssayTemplate::Calibration::dispFunX() const
{
    return toFunction(dispX);
}

zu::Function AssayTemplate::Calibration::dispFunY() const
{
    return toFunction(dispY);
}

} // namespace coagulation
