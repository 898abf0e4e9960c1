#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/text/FormatCode.h"

#include <optional>
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

/// Renders a serial day with its part of a day by a section of the kind Date. Nothing when the number is not a date:
/// below zero or after 31 December 9999.
std::optional<std::string> renderDate(double serial, const FormatSection& section, const RegionalFormats& formats,
                                      bool dates1904);

} // namespace wagemill::engine
