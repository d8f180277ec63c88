// SPDX-License-Identifier: MIT
#include "coagulation/vardo/execute.h"

#include <QtGlobal>

// x86-64; but not ARM64EC, for which Microsoft's compiler defines the same macro
#if defined(Q_PROCESSOR_X86_64) && !defined(_M_ARM64EC)
#include <immintrin.h>
#define VARDO_HAS_X86_64
#if defined(_MSC_VER)
#include <intrin.h>
#endif
#endif

namespace coagulation {

#if defined(VARDO_HAS_X86_64)

namespace {

#if defined(_MSC_VER) && !defined(__clang__)
#define VARDO_USES_AVX

bool hasAvx()
{
    constexpr int systemSavesRegisters = 1 << 27;
    constexpr int avx = 1 << 28;
    constexpr unsigned long long vectorStates = 6; // the halves of 128 and of 256 bits
    int features[4];
    __cpuid(features, 1);
    return (features[2] & systemSavesRegisters) != 0 && (features[2] & avx) != 0
        && (_xgetbv(0) & vectorStates) == vectorStates;
}

#else
// The tool as a whole is compiled for processors without AVX.
#define VARDO_USES_AVX __attribute__((target("avx")))

bool hasAvx()
{
    return __builtin_cpu_supports("avx") != 0;
}

#endif

VARDO_USES_AVX void clearWithAvx()
{
    _mm256_zeroupper();
}

} // namespace

void clearUpperVectorHalves()
{
    static const bool available = hasAvx();
    if (available)
        clearWithAvx();
}

#else

void clearUpperVectorHalves() { }

#endif

bool execute(QSqlQuery &query)
{
    clearUpperVectorHalves();
    return query.exec();
}

bool execute(QSqlQuery &query, const QString &sql)
{
    clearUpperVectorHalves();
    return query.exec(sql);
}

} // namespace coagulation
