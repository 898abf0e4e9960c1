#include "workbook/engine/text/NumberFormat.h"

#include <gtest/gtest.h>

#include <string>

using namespace wagemill;
using namespace wagemill::engine;

namespace {

const RegionalFormats unitedStates;

} // namespace

TEST(NumberFormat, ColorsComeFromTheSection)
{
    const std::string code = R"("$"#,##0.00_);[Red]\("$"#,##0.00\))";
    EXPECT_EQ(showValue(-5.0, code, unitedStates).text, "($5.00)");
    EXPECT_EQ(showValue(-5.0, code, unitedStates).color, (Rgb{255, 0, 0}));
    EXPECT_EQ(showValue(5.0, code, unitedStates).color, std::nullopt);
    EXPECT_EQ(showValue(5.0, "[BLUE]0", unitedStates).color, (Rgb{0, 0, 255}));
    EXPECT_EQ(showValue(5.0, "[Color3]0", unitedStates).color, (Rgb{255, 0, 0}));
    EXPECT_EQ(showValue(5.0, "[Color99]0", unitedStates).color, std::nullopt);
}

TEST(NumberFormat, NoDateIsNegative)
{
    EXPECT_EQ(showValue(44650.0, "d-mmm-yyyy ddd", unitedStates, true).text, "31-Mar-2026 Tue");
    for (const double number : {-1.0, 2958466.0, 1e300})
        EXPECT_TRUE(showValue(number, "m/d/yy", unitedStates).isNegativeDate) << number;
}

TEST(NumberFormat, GeneralFitsTheCell)
{
    struct {
        double number;
        int characters;
        const char* text;
    } const cases[] = {
        {0, 11, "0"},
        {-5, 11, "-5"},
        {0.1 + 0.2, 11, "0.3"},
        {1234567.89012, 11, "1234567.89"},
        {12345678901, 11, "12345678901"},
        {123456789012, 11, "1.23457E+11"},
        {99999999999.5, 11, "1E+11"},
        {0.0001, 11, "0.0001"},
        {0.00001, 11, "0.00001"},
        {0.000123456789, 11, "0.000123457"},
        {0.0000123456789, 11, "1.23457E-05"},
        {1.0 / 3, 11, "0.333333333"},
        {1.0 / 3, 5, "0.333"},
        {-1.0 / 3, 5, "-0.333"},
        {123456, 5, "1E+05"},
        {1234.56, 5, "1235"},
        {1e100, 11, "1E+100"},
        {1.23456789e-200, 11, "1.2346E-200"},
        {1e300, 1, "1E+300"},
    };
    for (const auto& [number, characters, text] : cases)
        EXPECT_EQ(generalText(number, unitedStates, characters), text);
    EXPECT_TRUE(showValue(5.0, "General", unitedStates).isGeneral);
    EXPECT_FALSE(showValue(5.0, "General\"h\"", unitedStates).isGeneral);
}

TEST(NumberFormat, HostileCodesShowGeneralAtOnce)
{
    for (const std::string& code : {std::string(5000, ';'), std::string(100000, '"'), std::string(5000, '0')})
        EXPECT_EQ(showValue(1.5, code, unitedStates).text, "1.5") << code.substr(0, 20);
    for (const char* code :
         {"0E+0.00", "0.0.0E+0E+0", "E+0.##", ".", "/", "0/0/0", "?/", "0/0E+0", "h.0.0s.0", "@0.0/?"})
        for (const double number : {-1e300, 0.0, 12.34})
            EXPECT_LT(showValue(number, code, unitedStates).text.size(), 400U) << code;
    for (const char character :
         {'0', '#', '?', '.', ',', '%', '/', '@', '[', 'm', 's', 'y', 'd', 'h', ':', '\\', '_'}) {
        std::string code(4000, character);
        for (const char* tail : {"", "0", "/", "]", "s.0", "E+0"})
            for (const double number : {-1e300, 0.0, 1e-300, 46112.3})
                EXPECT_LT(showValue(number, code + tail, unitedStates).text.size(), 100000U) << character << tail;
    }
}
