// SPDX-License-Identifier: MIT
#include "coagulation/report/json.h"
