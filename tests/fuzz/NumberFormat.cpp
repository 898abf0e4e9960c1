// Input: a byte that chooses region and kind of value, eight bytes of a number, the format code (and the text shown).

#include "workbook/engine/text/NumberFormat.h"
#include "tests/fuzz/FuzzRegions.h"
#include "tests/fuzz/FuzzTarget.h"

#include <bit>
#include <cstdint>

namespace wagemill::fuzz {

void tryInput(Input input)
{
    const unsigned choice = takeByte(input);
    std::uint64_t bits = 0;
    for (unsigned shift = 0; shift < 64; shift += 8)
        bits |= std::uint64_t{takeByte(input)} << shift;
    const auto number = std::bit_cast<double>(bits);
    const RegionalFormats& region = regionOf(choice >> 3U);
    const std::string_view code = asText(input);
    const engine::CellValue value =
        choice % 8 == 0 ? engine::CellValue(std::string(code.substr(0, 40))) : engine::numberValue(number);
    engine::showValue(value, code, region, choice % 2 == 1);
    engine::generalText(number, region, static_cast<int>(choice % 16));
}

} // namespace wagemill::fuzz
