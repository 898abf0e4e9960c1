#include "workbook/engine/text/NumberFormat.h"

#include "tests/base/text/Regions.h"

#include <gtest/gtest.h>

#include <string>

using namespace wagemill;
using namespace wagemill::engine;
using namespace wagemill::test;

namespace {

const RegionalFormats unitedStates;

struct Shown {
    CellValue value;
    std::string code;
    std::string text;
};

void expectShown(const std::vector<Shown>& cases, const RegionalFormats& formats = {})
{
    for (const auto& [value, code, text] : cases)
        EXPECT_EQ(showValue(value, code, formats).text, text) << code;
}

} // namespace

TEST(NumberFormat, DigitsAndGroups)
{
    expectShown({
        {596.7149999999999, "0.00", "596.72"}, // 15 significant digits first
        {2.675, "0.00", "2.68"},
        {1.005, "0.00", "1.01"},
        {-1.005, "0.00", "-1.01"},
        {-0.001, "0.00", "0.00"},
        {0.0, "#", ""},
        {0.0, "#.##", "."},
        {5.0, "0.", "5."},
        {1.5, ".00", "1.50"},
        {0.5, ".00", ".50"},
        {0.5, "#.00", ".50"},
        {1.5, "0.0##", "1.5"},
        {1.5, "0.0??", "1.5  "},
        {5.0, "000", "005"},
        {5.0, "???", "  5"},
        {1234567.891, "#,##0.00", "1,234,567.89"},
        {5.0, "0,000", "0,005"},
        {1234567.0, "#,##0,", "1,235"},
        {12345678.0, "0.0,,", "12.3"},
        {1234.0, "0,.00", "1.23"},
        {123456789.0, "000-00-0000", "123-45-6789"},
        {1234567890.0, "(000) 000-0000", "(123) 456-7890"},
        {-5.0, "\"$\"#,##0.00", "-$5.00"},
        {0.0765, "0.00%", "7.65%"},
        {0.075, "0%", "8%"},
        {-0.5, "0%", "-50%"},
        {1e15, "0", "1000000000000000"},
        {123456789012345678.0, "0", "123456789012346000"},
    });
}

TEST(NumberFormat, ExponentsAndFractions)
{
    expectShown({
        {12345.0, "0.00E+00", "1.23E+04"},
        {0.00012, "0.00E+00", "1.20E-04"},
        {12345.0, "0.00E-00", "1.23E04"},
        {9.999, "0.00E+00", "1.00E+01"},
        {0.0, "0.00E+00", "0.00E+00"},
        {12345.0, "##0.0E+0", "12.3E+3"},
        {999999.0, "##0.0E+0", "1.0E+6"},
        {0.00012, "##0.0E+0", "120.0E-6"},
        {-12345.0, "0E+0", "-1E+4"},
        {1.5, "# ?/?", "1 1/2"},
        {0.5, "# ?/?", " 1/2"},
        {5.0, "# ?/?", "5    "},
        {0.0, "# ?/?", "0    "},
        {-1.25, "# ?/?", "-1 1/4"},
        {1.999, "# ?/?", "2    "},
        {3.14159265, "# ?\?/?\?", "3 14/99"},
        {3.14159265, "?\?/?\?", "311/99"},
        {2.3, "# ?/8", "2 2/8"},
        {1.5, "?/?", "3/2"},
    });
}

TEST(NumberFormat, SectionsChooseBySignAndCondition)
{
    const std::string accounting = R"(_("$"* #,##0.00_);_("$"* \(#,##0.00\);_("$"* "-"??_);_(@_))";
    expectShown({
        {1.0, "0;(0);\"zero\"", "1"},
        {-1.0, "0;(0);\"zero\"", "(1)"},
        {0.0, "0;(0);\"zero\"", "zero"},
        {-1.0, "0;(0)", "(1)"},
        {0.0, "0;(0)", "0"},
        {"text", "0;(0);\"zero\"", "text"},
        {"Bob", "0;0;0;\"Mr. \"@", "Mr. Bob"},
        {15.0, accounting, " $15.00 "},
        {-15.0, accounting, " $(15.00)"},
        {0.0, accounting, " $-   "},
        {"x", accounting, " x "},
        {150.0, R"([>100]"high";[<=0]"low";0.0)", "high"},
        {-3.0, R"([>100]"high";[<=0]"low";0.0)", "low"},
        {50.0, R"([>100]"high";[<=0]"low";0.0)", "50.0"},
        {-5.0, "[<0]0\" owed\";0", "5 owed"},
        {-5.0, "[>100]0;0.0", "-5.0"},
        {5.0, "@", "5"},
        {5.0, "\"no digits\"", "no digits"},
        {-5.0, "\"no digits\"", "-no digits"},
        {-5.5, "General;\"minus \"General", "minus 5.5"},
        {5.0, "General\" hours\"", "5 hours"},
        {5.0, "[$€-407] 0.00", "€ 5.00"},
        {5.0, "0.00\\ [$kr.-406]", "5.00 kr."},
    });
}

TEST(NumberFormat, EmptySectionsHideAllButErrors)
{
    struct {
        CellValue value;
        const char* twoSemicolons;
        const char* threeSemicolons;
    } const cases[] = {
        {5.0, "", ""},        {-5.0, "", ""},     {0.0, "", ""},
        {"text", "text", ""}, {true, "TRUE", ""}, {ErrorCode::NotAvailable, "#N/A", "#N/A"},
        {Empty{}, "", ""},
    };
    for (const auto& [value, two, three] : cases) {
        EXPECT_EQ(showValue(value, ";;", unitedStates).text, two);
        EXPECT_EQ(showValue(value, ";;;", unitedStates).text, three);
    }
}

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

TEST(NumberFormat, DatesAndTimes)
{
    const double day = 46112.0; // Tuesday, 31 March 2026
    expectShown({
        {day, "m/d/yy", "3/31/2026"},
        {day + 0.75, "m/d/yy h:mm", "3/31/2026 18:00"},
        {day, "d-mmm-yy", "31-Mar-26"},
        {day, "dddd, mmmm dd, yyyy", "Tuesday, March 31, 2026"},
        {day, "ddd mmmmm", "Tue M"},
        {day, "mm/dd/yyyy;@", "03/31/2026"},
        {day, "[$-409]d\\-mmm\\-yyyy", "31-Mar-2026"},
        {0.5625, "h:mm AM/PM", "1:30 PM"},
        {0.0, "h:mm AM/PM", "12:00 AM"},
        {0.5625, "h:mm a/p", "1:30 P"},
        {0.5625, "hh:mm:ss", "13:30:00"},
        {1.5, "[h]:mm:ss", "36:00:00"},
        {1.5, "[mm]:ss", "2160:00"},
        {0.5, "[ss]", "43200"},
        {0.0001215, "mm:ss.0", "00:10.5"},
        {0.999999, "h:mm:ss", "0:00:00"}, // rounded to a full second
        {day + 0.99999999, "d h:mm", "1 0:00"},
        {day + 0.99999999, "d", "31"},
        {day, "yyyy-mm-dd hh:mm", "2026-03-31 00:00"},
        {60.0, "d-mmm-yyyy", "29-Feb-1900"},
        {1.0, "d-mmm-yyyy ddd", "1-Jan-1900 Sun"},
        {0.0, "m/d/yy", "1/0/1900"},
        {2958465.0, "d-mmm-yyyy", "31-Dec-9999"},
    });
    EXPECT_EQ(showValue(44650.0, "d-mmm-yyyy ddd", unitedStates, true).text, "31-Mar-2026 Tue");
    for (const double number : {-1.0, 2958466.0, 1e300})
        EXPECT_TRUE(showValue(number, "m/d/yy", unitedStates).isNegativeDate) << number;
}

TEST(NumberFormat, FollowsTheUsersRegion)
{
    expectShown({{1234.5, "#,##0.00", "1.234,50"}, {46112.0, "m/d/yy", "31.03.2026"}}, germanFormats());
    expectShown({{1234567.0, "#,##0", "१२,३४,५६७"}, {46112.0, "m/d/yy", "३१/३/२०२६"}}, indianFormats());
    expectShown({{-0.0765, "0.00%", "\u061C-٧٫٦٥٪\u061C"}, {1.5, "General", "١٫٥"}}, arabicFormats());
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

TEST(NumberFormat, UnreadableAndHostileCodesShowGeneral)
{
    for (const std::string& code : {std::string("\"open"), std::string("[open"), std::string("0\\"), std::string("0_"),
                                    std::string("*"), std::string("nonsense"), std::string("0;0;0;0;0"),
                                    std::string(5000, ';'), std::string(100000, '"'), std::string(5000, '0')})
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
