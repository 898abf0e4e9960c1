#include "workbook/engine/formula/DecimalRounding.h"

#include "app/base/text/NumberText.h"

#include <algorithm>
#include <limits>

namespace wagemill::engine {

namespace {

DecimalNumber truncated(DecimalNumber number, int decimals)
{
    const int kept = std::max(number.pointPosition + decimals, 0);
    if (static_cast<std::size_t>(kept) < number.digits.size())
        number.digits.resize(static_cast<std::size_t>(kept));
    return number;
}

} // namespace

double roundedNumber(double number, double decimals, Rounding rounding)
{
    constexpr double maxDecimals = 400; // no double has digits farther from the point
    const auto places = static_cast<int>(std::clamp(decimals, -maxDecimals, maxDecimals));
    const DecimalNumber decimal = toShownDecimal(number);
    DecimalNumber result =
        rounding == Rounding::HalfAwayFromZero ? rounded(decimal, places) : truncated(decimal, places);
    const bool isCut = result.digits.size() < decimal.digits.size();
    if (rounding == Rounding::AwayFromZero && isCut)
        result = result.digits.empty()
                     ? DecimalNumber{decimal.negative, "1", 1 - places}
                     : rounded({decimal.negative, result.digits + '9', decimal.pointPosition}, places);
    return toDouble(result).value_or(std::numeric_limits<double>::infinity());
}

} // namespace wagemill::engine
