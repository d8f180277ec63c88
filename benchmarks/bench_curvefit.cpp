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
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 0.7);
    std::vector<Values> measurements(100);
    for (Values &y : measurements) {
        for (const double value : x)
            y.push_back(8.0 + (80.0 - 8.0) / (1.0 + std::pow(value / 10.0, 1.2)) + noise(random));
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

void lineFit(benchmark::State &state)
{
    run(state, [](const Values &y) { return fitLine(x, y); });
}

void logisticFit(benchmark::State &state)
{
    run(state, [](const Values &y) { return fitLogistic(x, y); });
}

BENCHMARK(lineFit);
BENCHMARK(logisticFit);

} // namespace
