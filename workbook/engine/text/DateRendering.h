#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/text/FormatCode.h"

#include <optional>
#include <string>

namespace wagemill::engine {

/// Renders a serial day with its part of a day by a section of the kind Date. Nothing when the number is not a date:
/// below zero or after 31 December 9999.
std::optional<std::string> renderDate(double serial, const FormatSection& section, const RegionalFormats& formats,
                                      bool dates1904);

} // namespace wagemill::engine
