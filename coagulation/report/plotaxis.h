// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

namespace coagulation::report {

/// An axis of a plot, linear or logarithmic: where a value lies on it, and which values it names.
class PlotAxis {
public:
    struct Tick {
        double value;
        QString label;
    };

    /// \return whether an axis has a place for a value: none for what is not finite or so large that sums
    ///         overflow, and none at 0 or below for a logarithm
    static bool canShow(double value, bool logarithmic);

    /// Makes an axis that is a little longer than its values need, and never of no length.
    /// \param values that it shows, one at least; see canShow()
    PlotAxis(bool logarithmic, const QList<double> &values);

    /// Makes the axis long enough for more values, as long as they lie no farther away than half its length.
    void reachFor(const QList<double> &values);

    /// \return 0 at the axis' start to 1 at its end; a value far beyond an end lies a little beyond it
    double position(double value) const;

    /// \return about five values that are easy to read, ascending
    QList<Tick> ticks() const;

private:
    double onScale(double value) const;
    QList<Tick> evenTicks(double from, double to) const;
    QList<Tick> logarithmicTicks() const;
    void widen();

    bool logarithmic;
    double low; ///< on the axis' own scale
    double high;
};

} // namespace coagulation::report
