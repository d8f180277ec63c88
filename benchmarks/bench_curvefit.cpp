// SPDX-License-Identifier: MIT
/// How many curves of 7 points, measured with 1 % noise, are fitted in a second.

#include "coagulation/zucore/curvefit.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

using namespace coagulation::curvefit;

namespace {

using Values = std::vector<double>;

const Values x = {1, 2, 4, 8, 16, 32, 64};

/// Noisy points of one curve, another noise for each.
std::vector<Values> measurements()
{
    const Logistic curve = {.a = 80.0, .b = 1.2, .c = 10.0, .d = 8.0};
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 0.7);
    std::vector<Values> measurements(100);
    for (Values &y : measurements) {
        for (const double value : x)
            y.push_back(curve(value) + noise(random));
    }
    return measurements;
}

template <typename Fitter> void run(benchmark::State &state, Fitter fitter)
{
    const std::vector<Values> all = measurements();
    std::size_t next = 0;
    std::size_t converged = 0;
    for (auto step : state) {
        const Fit fit = fitter(all[next++ % all.size()]);
        converged += fit.converged ? 1 : 0;
    }
    state.counters["fits/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["converged"] =
        static_cast<double>(converged) / static_cast<double>(state.iterations());
}

void polynomialFit(benchmark::State &state)
{
    run(state,
        [&](const Values &y) { return fitPolynomial(x, y, static_cast<int>(state.range(0))); });
}

void logistic4Fit(benchmark::State &state)
{
    run(state, [](const Values &y) { return fitLogistic4(x, y); });
}

void logistic5Fit(benchmark::State &state)
{
    run(state, [](const Values &y) { return fitLogistic5(x, y); });
}

BENCHMARK(polynomialFit)->DenseRange(1, 4)->ArgName("degree");
BENCHMARK(logistic4Fit);
BENCHMARK(logistic5Fit);

} // namespace
