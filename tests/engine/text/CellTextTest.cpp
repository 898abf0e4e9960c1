#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/text/TypedText.h"

#include <gtest/gtest.h>

using namespace wagemill;
using namespace wagemill::engine;

const RegionalFormats unitedStates;

TEST(CellText, TakesItsColorFromTheSection)
{
    const struct {
        const char* code;
        double number;
        std::optional<Rgb> color;
    } cases[] = {
        {"0;[Red]0", -5, Rgb{255, 0, 0}}, {"0;[Red]0", 5, std::nullopt},      {"[BLUE]0", 5, Rgb{0, 0, 255}},
        {"[Color3]0", 5, Rgb{255, 0, 0}}, {"[Color56]0", 5, Rgb{51, 51, 51}}, {"[Color57]0", 5, std::nullopt},
    };
    for (const auto& [code, number, color] : cases)
        EXPECT_EQ(showValue(number, code, unitedStates).color, color) << code;
}

TEST(CellText, NoDateIsNegative)
{
    for (const double number : {-1.0, 2958466.0, 1e300})
        EXPECT_TRUE(showValue(number, "m/d/yy", unitedStates).isNegativeDate) << number;
}

TEST(CellText, GeneralGrowsShorterWithTheCell)
{
    const std::vector<std::string> third = {"-0.33333333", "-0.3333333", "-0.333333", "-0.33333",
                                            "-0.3333",     "-0.333",     "-0.33",     "-0.3"};
    EXPECT_EQ(shorterGeneralTexts(-1.0 / 3, unitedStates), third);
    EXPECT_EQ(shorterGeneralTexts(1234.56, unitedStates), (std::vector<std::string>{"1234.6", "1235"}));
    EXPECT_EQ(generalText(1e300, unitedStates, 1), "1E+300");
    EXPECT_TRUE(showValue(5.0, "General", unitedStates).isGeneral);
    EXPECT_FALSE(showValue(5.0, "General\"h\"", unitedStates).isGeneral);
}

TEST(CellText, HostileCodesAndTextsTakeNoTime)
{
    for (const std::string& code : {std::string(5000, ';'), std::string(100000, '"'), std::string(5000, '0')})
        EXPECT_EQ(showValue(1.5, code, unitedStates).text, "1.5") << code.substr(0, 20);
    for (const char character : std::string("0#?.,%/@[msydh:\\_"))
        for (const char* tail : {"", "0", "/", "]", "s.0", "E+0", "E+0.##", ".0E+0E+0"})
            for (const double number : {-1e300, 0.0, 1e-300, 46112.3}) {
                const std::string code = std::string(4000, character) + tail;
                EXPECT_LT(showValue(number, code, unitedStates).text.size(), 100000U) << character << tail;
            }
    for (const std::string& text : {std::string(32767, '1') + "x", std::string(32767, ':'), std::string(32767, '/'),
                                    std::string(16000, '-') + "1", std::string("1\0002", 3), std::string("\xC0\x80")})
        EXPECT_EQ(readTypedText(text, unitedStates, {}).value, CellValue(text));
}
