// SPDX-License-Identifier: MIT
#include "coagulation/report/curveplot.h"
