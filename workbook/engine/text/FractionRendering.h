#pragma once

#include "workbook/engine/text/NumberRendering.h"

namespace wagemill::engine {

/// Renders the magnitude of `number`, below 10 to the power 15, by a section of the kind Fraction such as "# ?/?",
/// "?/?" or "# ??/16": the nearest fraction whose denominator has as many digits as the code has places, at most four.
RenderedNumber renderFraction(double number, const FormatSection& section, const RegionalFormats& formats);

} // namespace wagemill::engine
