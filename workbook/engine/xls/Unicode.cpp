#include "workbook/engine/xls/Unicode.h"

#include <array>

namespace wagemill::engine::xls {

char16_t upperCase(char16_t unit)
{
    struct Range {
        char16_t first;
        char16_t last;
        int distance; ///< to the capital; 0: capitals and small letters alternate, the small ones odd
    };
    static constexpr auto ranges = std::to_array<Range>({
        {0x61, 0x7A, -32},
        {0xE0, 0xF6, -32},
        {0xF8, 0xFE, -32},
        {0xFF, 0xFF, 121},
        {0x100, 0x12F, 0},
        {0x14A, 0x177, 0},
        {0x3B1, 0x3C1, -32},
        {0x3C3, 0x3CB, -32},
        {0x430, 0x44F, -32},
        {0x450, 0x45F, -80},
        {0x460, 0x481, 0},
    });
    for (const auto& [first, last, distance] : ranges)
        if (unit >= first && unit <= last)
            return static_cast<char16_t>(distance == 0 ? unit & ~1 : unit + distance);
    return unit;
}

} // namespace wagemill::engine::xls
