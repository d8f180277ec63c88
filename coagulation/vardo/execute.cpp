// SPDX-License-Identifier: MIT
#include "coagulation/vardo/execute.h"

#include <QtGlobal>

// Not ARM64EC, for which Microsoft's compiler defines the same macro.
#if defined(Q_PROCESSOR_X86_64) && !defined(_M_ARM64EC)
#define VARDO_X86_64
#include <immintrin.h>
#ifdef _MSC_VER
#include <intrin.h>
#endif
#endif

namespace coagulation {

#ifdef VARDO_X86_64

namespace {

// The tool as a whole is compiled for processors without AVX.
#if defined(__GNUC__) || defined(__clang__)
#define VARDO_TARGET(feature) __attribute__((target(feature)))
#else
#define VARDO_TARGET(feature)
#endif

#ifdef _MSC_VER

VARDO_TARGET("xsave") bool hasAvx()
{
    constexpr int systemSavesRegisters = 1 << 27;
    constexpr int avx = 1 << 28;
    constexpr unsigned long long bothHalves = 6; // of the registers, which the system saves
    int features[4];
    __cpuid(features, 1);
    return (features[2] & systemSavesRegisters) != 0 && (features[2] & avx) != 0
        && (_xgetbv(0) & bothHalves) == bothHalves;
}

#else

bool hasAvx()
{
    return __builtin_cpu_supports("avx") != 0;
}

#endif

VARDO_TARGET("avx") void clearWithAvx()
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
