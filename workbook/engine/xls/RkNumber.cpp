#include "workbook/engine/xls/RkNumber.h"

#include <bit>
#include <cmath>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint32_t hundredthFlag = 1;
constexpr std::uint32_t integerFlag = 2;
constexpr double largestInteger = 536870911; // 2^29 - 1

std::optional<std::uint32_t> withoutScale(double number)
{
    if (std::abs(number) <= largestInteger && number == std::trunc(number))
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(number)) << 2U | integerFlag;
    const auto pattern = std::bit_cast<std::uint64_t>(number);
    if ((pattern & 0x3FFFFFFFFU) == 0)
        return static_cast<std::uint32_t>(pattern >> 32U);
    return std::nullopt;
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
    if (!std::isfinite(number) || (number == 0 && std::signbit(number)))
        return std::nullopt;
    if (const auto rk = withoutScale(number))
        return rk;
    const auto hundredth = withoutScale(std::round(number * 100));
    if (hundredth && numberOfRk(*hundredth | hundredthFlag) == number)
        return *hundredth | hundredthFlag;
    return std::nullopt;
}

} // namespace wagemill::engine::xls
