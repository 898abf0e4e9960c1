#include "workbook/engine/text/TypedText.h"

#include "app/base/NumberText.h"
#include "tests/base/text/Regions.h"
#include "workbook/engine/text/NumberFormat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace wagemill;
using namespace wagemill::engine;
using namespace wagemill::test;

namespace {

const RegionalFormats unitedStates;
constexpr Today today{2026, 11, 21};
const std::string dollars = R"("$"#,##0.00_);[Red]\("$"#,##0.00\))";
const std::string wholeDollars = R"("$"#,##0_);[Red]\("$"#,##0\))";

struct Typed {
    std::string text;
    CellValue value;
    std::string numberFormat;
};

void expectTyped(const std::vector<Typed>& cases, const RegionalFormats& formats)
{
    for (const auto& [text, value, numberFormat] : cases) {
        const TypedValue typed = readTypedText(text, formats, today);
        EXPECT_EQ(typed.value, value) << text;
        EXPECT_EQ(typed.numberFormat, numberFormat) << text;
    }
}

} // namespace

TEST(TypedText, FiguresTakeTheFormatTheyWereTypedIn)
{
    expectTyped({{"$15.00", 15.0, dollars},
                 {"$15", 15.0, wholeDollars},
                 {"($5.00)", -5.0, dollars},
                 {"-$5.00", -5.0, dollars},
                 {"$-5.00", -5.0, dollars},
                 {"(5)", -5.0, ""},
                 {"1,234.00", 1234.0, "#,##0.00"},
                 {"1,234", 1234.0, "#,##0"},
                 {"10%", 0.1, "0%"},
                 {"7.65%", 0.0765, "0.00%"},
                 {"7.5%", 0.075, "0.00%"},
                 {"1,234.5%", 12.345, "0.00%"},
                 {"5 %", 0.05, "0%"},
                 {"0%", 0.0, "0%"},
                 {"39", 39.0, ""},
                 {"39.50", 39.5, ""},
                 {"+5", 5.0, ""},
                 {" 7 ", 7.0, ""},
                 {"007", 7.0, ""},
                 {"-0", 0.0, ""},
                 {"1E5", 1e5, "0.00E+00"},
                 {"12E3", 12000.0, "0.00E+00"}},
                unitedStates);
}

TEST(TypedText, DatesAndTimesAreSerialDays)
{
    expectTyped({{"3/31/2026", 46112.0, "m/d/yy"},
                 {"3/31/26", 46112.0, "m/d/yy"},
                 {"2026-03-31", 46112.0, "m/d/yy"},
                 {"1/1/1900", 1.0, "m/d/yy"},
                 {"2/28/1900", 59.0, "m/d/yy"},
                 {"3/1/1900", 61.0, "m/d/yy"}, // 29 February 1900 counts
                 {"12/31/9999", 2958465.0, "m/d/yy"},
                 {"1/2", 46024.0, "d-mmm"},
                 {"1-2", 46024.0, "d-mmm"},
                 {"3/2026", 46082.0, "mmm-yy"},
                 {"3-Mar", 46084.0, "d-mmm"},
                 {"mar 3", 46084.0, "d-mmm"},
                 {"Mar 2026", 46082.0, "mmm-yy"},
                 {"31-Mar-26", 46112.0, "d-mmm-yy"},
                 {"31 March 2026", 46112.0, "d-mmm-yy"},
                 {"March 31, 2026", 46112.0, "d-mmm-yy"},
                 {"12:30", 12.5 / 24, "h:mm"},
                 {"12:30:15", 45015.0 / 86400, "h:mm:ss"},
                 {"12:30:15.5", 45015.5 / 86400, "mm:ss.0"},
                 {"1:30 PM", 13.5 / 24, "h:mm AM/PM"},
                 {"12:00:01 am", 1.0 / 86400, "h:mm:ss AM/PM"},
                 {"1 PM", 13.0 / 24, "h:mm AM/PM"},
                 {"36:00", 1.5, "[h]:mm:ss"},
                 {"3/31/2026 6:00 PM", 46112.75, "m/d/yy h:mm"},
                 {"31-Mar-26 18:00", 46112.75, "m/d/yy h:mm"}},
                unitedStates);
    EXPECT_EQ(readTypedText("1/2/1904", unitedStates, today, true).value, CellValue(1.0));
    EXPECT_EQ(readTypedText("12/31/1903", unitedStates, today, true).value, CellValue("12/31/1903"));
}

TEST(TypedText, WordsAreLogicalsErrorsAndText)
{
    expectTyped({{"TRUE", true, ""},
                 {"false", false, ""},
                 {" True ", true, ""},
                 {"#N/A", ErrorCode::NotAvailable, ""},
                 {"#div/0!", ErrorCode::DivisionByZero, ""},
                 {"", Empty{}, ""},
                 {" \t\u00A0", Empty{}, ""}},
                unitedStates);
    for (const char* text :
         {"2/29/2023", "31/3/2026",  "abc%",      "10%%",   "%",     "1,23",     "-Bob",     "+Bob",
          "@x",        " Bob ",      "$",         "#N",     "13:60", "25:00 PM", "1 2",      "1 1 20",
          "2/30",      "May",        "Mar-",      "-3 Mar", "MAR1",  "1 p",      "1/1/1899", "1e999",
          "1/2/3/4",   "12:30:15:1", "1:2:3.4.5", "TRUEST", "008x"})
        EXPECT_EQ(readTypedText(text, unitedStates, today).value, CellValue(text)) << text;
}

TEST(TypedText, ApostropheKeepsText)
{
    const TypedValue typed = readTypedText("'008", unitedStates, today);
    EXPECT_EQ(typed.value, CellValue("008"));
    EXPECT_TRUE(typed.quotePrefix);
    EXPECT_FALSE(readTypedText("008", unitedStates, today).quotePrefix);
    EXPECT_EQ(readTypedText("''", unitedStates, today).value, CellValue("'"));
    EXPECT_EQ(readTypedText("'", unitedStates, today).value, CellValue(""));
}

TEST(TypedText, FollowsTheUsersRegion)
{
    expectTyped({{"1.234,50", 1234.5, "#,##0.00"},
                 {"7,65%", 0.0765, "0.00%"},
                 {"15,00 €", 15.0, "#,##0.00\\\u00A0\"€\";[Red]\\-#,##0.00\\\u00A0\"€\""},
                 {"31.3.2026", 46112.0, "m/d/yy"},
                 {"1.2", 46054.0, "d-mmm"},
                 {"1/2", 46054.0, "d-mmm"},
                 {"3. März", 46084.0, "d-mmm"},
                 {"$15", "$15", ""},
                 {"1,234.50", "1,234.50", ""}},
                germanFormats());
    expectTyped({{"₹१५", 15.0, "\"₹\"#,##0;[Red]\"₹\"\\-#,##0"}}, indianFormats());
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
