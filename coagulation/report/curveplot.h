// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

class QXmlStreamWriter;

namespace coagulation::report {

/// Draws a curve before and after, with its measured points, as an SVG element. Its colours are those of the
/// page's style sheet.
/// \param number of the curve in the page, which makes identifiers unique
void writeCurvePlot(QXmlStreamWriter &page, const CurveFacts &curve, int number);

} // namespace coagulation::report
