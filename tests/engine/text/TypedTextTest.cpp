#include "workbook/engine/text/TypedText.h"

#include "app/base/text/NumberText.h"
#include "tests/base/text/Regions.h"
#include "workbook/engine/text/NumberFormat.h"

#include <gtest/gtest.h>

#include <string>

using namespace wagemill;
using namespace wagemill::engine;
using namespace wagemill::test;

namespace {

const RegionalFormats unitedStates;
constexpr CalendarDate today{2026, 11, 21};
} // namespace

TEST(TypedText, BlanksAreNothingAndDaysBeforeTheFirstAreText)
{
    EXPECT_EQ(readTypedText(" \t\u00A0", unitedStates, today).value, CellValue(Empty{}));
    EXPECT_EQ(readTypedText("1/2/1904", unitedStates, today, true).value, CellValue(1.0));
    EXPECT_EQ(readTypedText("12/31/1903", unitedStates, today, true).value, CellValue("12/31/1903"));
}

TEST(TypedText, AnApostropheIsRemembered)
{
    EXPECT_TRUE(readTypedText("'008", unitedStates, today).quotePrefix);
    EXPECT_FALSE(readTypedText("008", unitedStates, today).quotePrefix);
}

TEST(TypedText, CurrencyIsShownAsItWasTyped)
{
    for (const RegionalFormats& formats : {unitedStates, germanFormats(), indianFormats()})
        for (const char* figure : {"1234.5", "-0.07"}) {
            const std::string typed = currencyText(readNumber(figure, unitedStates)->number, formats);
            const TypedValue value = readTypedText(typed, formats, today);
            std::string shown = showValue(value.value, value.numberFormat, formats).text;
            while (shown.ends_with(' ')) // the width of a bracket behind positive figures
                shown.pop_back();
            EXPECT_EQ(shown, typed);
        }
}

TEST(TypedText, HostileTextIsText)
{
    for (const std::string& text : {std::string(32767, '1') + "x", std::string(32767, ':'), std::string(32767, '/'),
                                    std::string(16000, '-') + "1", std::string("1\0002", 3), std::string("\xC0\x80")})
        EXPECT_EQ(readTypedText(text, unitedStates, today).value, CellValue(text));
}
