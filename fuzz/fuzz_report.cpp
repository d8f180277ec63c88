// SPDX-License-Identifier: MIT
/// What vardo-report writes of any facts.

#include "checkreport.h"
#include "inputbytes.h"
#include "inputreport.h"

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    InputReader input(inputBytes(data, size));

    checkReport(readReport(input));
    return 0;
}
