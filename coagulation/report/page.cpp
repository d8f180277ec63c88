// SPDX-License-Identifier: MIT
#include "coagulation/report/page.h"
