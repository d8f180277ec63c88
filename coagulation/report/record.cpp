// SPDX-License-Identifier: MIT
#include "coagulation/report/record.h"
