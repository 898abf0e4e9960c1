#pragma once

#include "tests/base/text/Regions.h"

#include <array>

namespace wagemill::fuzz {

/// The user's formats that a byte of the input chooses.
inline const RegionalFormats& regionOf(unsigned choice)
{
    static const std::array<RegionalFormats, 5> regions = {
        RegionalFormats{}, test::germanFormats(), test::frenchFormats(), test::indianFormats(), test::arabicFormats()};
    return regions.at(choice % regions.size());
}

} // namespace wagemill::fuzz
