// SPDX-License-Identifier: MIT
#include "coagulation/report/progress.h"
