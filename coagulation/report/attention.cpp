// SPDX-License-Identifier: MIT
#include "coagulation/report/attention.h"
