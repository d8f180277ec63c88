// SPDX-License-Identifier: MIT
#include "coagulation/report/upgraderun.h"
