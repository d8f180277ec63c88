// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

class QXmlStreamWriter;

namespace coagulation::report {

/// \return whether there is something to draw: a measured point that the axes can show
bool canBePlotted(const CurveFacts &curve);

/// Draws a curve before and after, with its measured points, as an SVG element. Its colours are those of the
/// page's style sheet.
/// \param curve that can be plotted
/// \param number of the curve in the page, which makes identifiers unique
void writeCurvePlot(QXmlStreamWriter &page, const CurveFacts &curve, int number);

/// \param curve that can be plotted
/// \return sentences about what the picture cannot show, or shows in another way
QStringList plotNotes(const CurveFacts &curve);

} // namespace coagulation::report
