// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace coagulation::report {

/// \return the name that the steps give a setting of the profile database, or its own if they
///         leave it. A step also changes the value of some, so that nothing else shows that they
///         are the same.
QString newSettingName(const QString &name);

/// \return whether it is a name that the steps leave, though its form is one that they change: the assay in it has
///         other letters than A to Z, digits and _
bool isOldSettingName(const QString &name);

} // namespace coagulation::report
