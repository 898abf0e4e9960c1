#include "workbook/engine/xls/SheetRecords.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <tuple>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint32_t hundredthFlag = 1;
constexpr std::uint32_t integerFlag = 2;
constexpr double maxInteger = 536870911; // 2^29 - 1

std::optional<std::uint32_t> withoutScale(double number)
{
    if (std::abs(number) <= maxInteger && number == std::trunc(number))
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(number)) << 2U | integerFlag;
    const auto pattern = std::bit_cast<std::uint64_t>(number);
    if ((pattern & 0x3FFFFFFFFU) == 0)
        return static_cast<std::uint32_t>(pattern >> 32U);
    return std::nullopt;
}

bool isMergedArea(const CellRect& area)
{
    return isInsideSheet(area.first()) && isInsideSheet({area.lastRow, area.lastColumn}) && area.rows() >= 1 &&
           area.columns() >= 1 && (area.rows() > 1 || area.columns() > 1);
}

} // namespace

double numberOfRk(std::uint32_t rk)
{
    const double number = (rk & integerFlag) != 0 ? static_cast<double>(static_cast<std::int32_t>(rk) >> 2)
                                                  : std::bit_cast<double>(static_cast<std::uint64_t>(rk & ~3U) << 32U);
    return (rk & hundredthFlag) != 0 ? number / 100 : number;
}

std::optional<std::uint32_t> rkOfNumber(double number)
{
    if (const auto rk = withoutScale(number))
        return rk;
    const auto hundredth = withoutScale(std::round(number * 100));
    if (hundredth && numberOfRk(*hundredth | hundredthFlag) == number)
        return *hundredth | hundredthFlag;
    return std::nullopt;
}

ErrorCode errorOfCode(std::uint8_t code)
{
    const auto* const found = std::ranges::find(errorNames, static_cast<ErrorCode>(code), &ErrorName::error);
    return found == errorNames.end() ? ErrorCode::NotAvailable : found->error;
}

std::vector<CellRect> withoutOverlaps(std::vector<CellRect> areas)
{
    std::erase_if(areas, [](const CellRect& area) { return !isMergedArea(area); });
    std::ranges::sort(areas, {}, [](const CellRect& area) { return std::tuple(area.firstRow, area.firstColumn); });
    std::array<int, maxColumns> takenTo; // by column: the last row that an area before takes
    takenTo.fill(-1);
    std::erase_if(areas, [&](const CellRect& area) {
        const auto first = takenTo.begin() + area.firstColumn;
        const auto last = takenTo.begin() + area.lastColumn + 1;
        if (std::any_of(first, last, [&](int row) { return row >= area.firstRow; }))
            return true;
        std::fill(first, last, area.lastRow);
        return false;
    });
    return areas;
}

} // namespace wagemill::engine::xls
