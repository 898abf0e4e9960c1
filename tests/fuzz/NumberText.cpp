// Input: a byte that chooses the region, then the text of a field.

#include "app/base/text/NumberText.h"
#include "tests/fuzz/FuzzRegions.h"
#include "tests/fuzz/FuzzTarget.h"

namespace wagemill::fuzz {

void tryInput(Input input)
{
    const unsigned choice = takeByte(input);
    const RegionalFormats& region = regionOf(choice);
    const std::string_view text = asText(input);
    toLocalNumberText(text, region, choice % 2 == 0 ? std::int16_t{-1} : std::int16_t{0});
    readNumber(text, region, true);
    if (!isNumericText(text, region))
        return;
    for (const auto format : {currencyTextOf, numberTextOf}) {
        const std::string shown = format(text, region);
        require(isNumericText(shown, region), "what a field shows is a number");
        require(format(shown, region) == shown, "a field that is left again stays as it is");
    }
}

} // namespace wagemill::fuzz
