// SPDX-License-Identifier: MIT
#include "coagulation/report/curvefacts.h"
