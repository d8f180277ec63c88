// SPDX-License-Identifier: MIT
#include "coagulation/report/curvefunction.h"
