// SPDX-License-Identifier: MIT
#include "coagulation/report/comparison.h"
