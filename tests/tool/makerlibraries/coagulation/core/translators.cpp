// SPDX-License-Identifier: MIT
#include "translators.h"

#include <QDebug>

namespace coagulation {

void installTranslators()
{
    if (qEnvironmentVariableIsSet("MAKER_TELLS"))
        qDebug("The maker's translators");
}

} // namespace coagulation
