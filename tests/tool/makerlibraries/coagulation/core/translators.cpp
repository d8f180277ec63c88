// SPDX-License-Identifier: MIT
#include "translators.h"

#include <QDebug>

namespace coagulation {

void installTranslators()
{
    qDebug("The maker's translators");
}

} // namespace coagulation
