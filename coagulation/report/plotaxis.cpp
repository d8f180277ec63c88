// SPDX-License-Identifier: MIT
#include "coagulation/report/plotaxis.h"

#include "coagulation/report/numbertext.h"

#include <algorithm>
#include <cmath>

namespace coagulation::report {

namespace {

// Beyond these a sum overflows or a step is rounded to 0.
constexpr double largestValue = 1e300;
constexpr double smallestValue = 1e-290;

/// \return 1, 2 or 5 times a power of ten, at least as large as a step
double easyStep(double step)
{
    const double decade = std::pow(10.0, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * decade >= step)
            return factor * decade;
    }
    return 10.0 * decade;
}

} // namespace

bool PlotAxis::canShow(double value, bool logarithmic)
{
    return std::abs(value) <= largestValue && (!logarithmic || value >= smallestValue);
}

PlotAxis::PlotAxis(bool isLogarithmic, const QList<double> &values)
    : logarithmic(isLogarithmic)
    , low(onScale(*std::min_element(values.begin(), values.end())))
    , high(onScale(*std::max_element(values.begin(), values.end())))
{
    widen();
}

double PlotAxis::onScale(double value) const
{
    return logarithmic ? std::log10(value) : value;
}

void PlotAxis::widen()
{
    const double largest = std::max(std::abs(low), std::abs(high));
    double margin = 0.05 * (high - low);
    if (logarithmic)
        margin = std::max(margin, 0.05);
    else if (high - low <= std::max(1e-9 * largest, smallestValue))
        margin = largest > smallestValue ? 0.05 * largest : 1.0;
    // Measured values do not go below zero, and the axis need not look as if they did.
    const bool startsAtZero = !logarithmic && low >= 0.0 && low < margin;
    low = startsAtZero ? 0.0 : low - margin;
    high += margin;
}

void PlotAxis::reachFor(const QList<double> &values)
{
    const double reach = 0.5 * (high - low);
    const double lowest = low - reach;
    const double highest = high + reach;
    for (const double value : values) {
        const double place = onScale(value);
        if (place >= lowest && place <= highest) {
            low = std::min(low, place);
            high = std::max(high, place);
        }
    }
}

double PlotAxis::position(double value) const
{
    return std::clamp((onScale(value) - low) / (high - low), -5.0, 6.0);
}

QList<PlotAxis::Tick> PlotAxis::ticks() const
{
    return logarithmic ? logarithmicTicks() : evenTicks(low, high);
}

QList<PlotAxis::Tick> PlotAxis::evenTicks(double from, double to) const
{
    const double step = easyStep((to - from) / 7.0);
    const double first = std::ceil(from / step);
    const int steps = int(std::floor(to / step) - first);
    QList<Tick> found;
    for (int i = 0; i <= steps; ++i) {
        const double value = (first + i) * step;
        found << Tick{value, tickLabel(value, step)};
    }
    return found;
}

QList<PlotAxis::Tick> PlotAxis::logarithmicTicks() const
{
    const double decades = high - low;
    const int every = std::max(1, int(std::ceil(decades / 7.0)));
    const QList<double> factors = decades > 2.5 ? QList{1.0} : QList{1.0, 2.0, 5.0};
    QList<Tick> found;
    for (int exponent = int(std::floor(low)); exponent <= int(std::floor(high)); ++exponent) {
        for (const double factor : factors) {
            const double place = exponent + std::log10(factor);
            const double step = std::pow(10.0, exponent);
            const bool isShown = place >= low && place <= high && canShow(factor * step, true);
            if (isShown && exponent % every == 0)
                found << Tick{factor * step, tickLabel(factor * step, step)};
        }
    }
    // Less than a decade may lie between 2 and 5.
    if (found.size() < 3)
        return evenTicks(std::pow(10.0, low), std::pow(10.0, high));
    return found;
}

} // namespace coagulation::report
