// SPDX-License-Identifier: MIT
#include "coagulation/report/snapshot.h"
