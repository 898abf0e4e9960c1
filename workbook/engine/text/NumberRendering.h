#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/text/FormatCode.h"

#include <string>

namespace wagemill::engine {

/// A number in the digits of a format section.
struct RenderedNumber {
    std::string text;
    bool isZero = false; ///< no digit other than zero is shown
};

/// Renders the magnitude of `number` by a section of the kinds Number, Scientific and Fraction, the last one below 10
/// to the power 15: "# ?/?" and "# ??/16".
RenderedNumber renderNumber(double number, const FormatSection& section, const RegionalFormats& formats);

} // namespace wagemill::engine
