#include "app/base/text/NumberText.h"

#include "tests/base/text/Regions.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace wagemill;
using namespace wagemill::test;

namespace {

const RegionalFormats unitedStates;

struct Figure {
    std::string text;
    double value;
};

void expectFigures(const std::vector<Figure>& figures, const RegionalFormats& formats)
{
    for (const auto& [text, value] : figures) {
        const auto reading = readNumber(text, formats);
        ASSERT_TRUE(reading) << text;
        EXPECT_EQ(toDouble(reading->number), value) << text;
    }
}

void expectNoFigures(const std::vector<std::string>& texts, const RegionalFormats& formats)
{
    for (const std::string& text : texts)
        EXPECT_FALSE(isNumericText(text, formats)) << text;
}

} // namespace

TEST(NumberText, ReadsWhatUsersType)
{
    expectFigures({{"0", 0},
                   {"007", 7},
                   {".5", 0.5},
                   {"5.", 5},
                   {"+5", 5},
                   {"5-", -5},
                   {"- 5", -5},
                   {"(5)", -5},
                   {"\t 7 \u00A0", 7},
                   {"1,234", 1234},
                   {"1,234,567.89", 1234567.89},
                   {"$15", 15},
                   {"$ 15.00", 15},
                   {"15$", 15},
                   {"($5.00)", -5},
                   {"$(5.00)", -5},
                   {"-$5.00", -5},
                   {"$-5.00", -5},
                   {"−5", -5},
                   {"1E5", 1e5},
                   {"1e-3", 0.001},
                   {"1.5E+2", 150},
                   {"1e-999999999999999999999", 0},
                   {"１２．５", 12.5}}, // full-width, as East Asian keyboards type
                  unitedStates);
}

TEST(NumberText, RefusesWhatIsNoFigure)
{
    expectNoFigures({"",     " ",     ".",   "-",     "$",     "()",     "1..2",  "--5",    "-5-",   "abc",
                     "0x10", "inf",   "nan", "1,23",  "12,34", "1,2345", "0,123", ",123",   "1,",    "1 234",
                     "5%",   "(-5)",  "(5",  "5)",    "$$5",   "1e",     "1e+",   "e5",     "1e5.5", "1e999999999",
                     "€5",   "1.2.3", "1-2", "12:30", "1/2",   "5 5",    "\3775", "1.234,5"},
                    unitedStates);
    expectNoFigures({std::string(100000, '('), std::string(100000, '9'), "1" + std::string(100000, '-')}, unitedStates);
}

TEST(NumberText, ReadsPercentSignsOnlyWhereAsked)
{
    for (const char* text : {"7.65%", "7.65 %", "%7.65"}) {
        EXPECT_FALSE(readNumber(text, unitedStates)) << text;
        const auto reading = readNumber(text, unitedStates, true);
        ASSERT_TRUE(reading) << text;
        EXPECT_TRUE(reading->hasPercent);
        EXPECT_EQ(toDouble(reading->number), 7.65);
        EXPECT_EQ(reading->decimals, 2);
    }
    for (const char* text : {"%", "10%%", "abc%", "$5%"})
        EXPECT_FALSE(readNumber(text, unitedStates, true)) << text;
}

TEST(NumberText, ReadsTheUsersSeparators)
{
    expectFigures({{"1.234,56", 1234.56}, {"12,5 €", 12.5}, {"-12,50\u00A0€", -12.5}}, germanFormats());
    expectNoFigures({"12.5", "1,234.56", "$5"}, germanFormats());
    expectFigures({{"1 234,5", 1234.5}, {"1\u202F234,5", 1234.5}, {"1\u00A0234 567 €", 1234567}}, frenchFormats());
    expectFigures({{"12,34,567", 1234567}, {"1,234,567", 1234567}, {"₹-१२.५०", -12.5}}, indianFormats());
    expectFigures({{"١٬٢٣٤٫٥", 1234.5}, {"1,234.5", 1234.5}, {"-5 ج.م.", -5}}, arabicFormats());
    RegionalFormats french = germanFormats(); // of Switzerland: money has a sign of its own
    french.groupSeparator = "\u202F";
    french.currencyDecimalSeparator = ".";
    expectFigures({{"15.50 €", 15.5}, {"15,50 €", 15.5}, {"7,65", 7.65}}, french);
    expectNoFigures({"7.65", "15.50,0 €"}, french);
    EXPECT_EQ(currencyTextOf("15,5", french) + " " + numberTextOf("15,5", french), "15.50\u00A0€ 15,50");
    RegionalFormats swiss;
    swiss.groupSeparator = "’";
    expectFigures({{"1'234.50", 1234.5}, {"1’234.50", 1234.5}}, swiss);
}

TEST(NumberText, ReadsCurrencySymbolsOfLettersAndDots)
{
    for (const char* symbol : {"kr.", "Bs.", "S/.", "E", "F\u202FCFA", "د.إ.\u200F"}) {
        RegionalFormats formats;
        formats.currencySymbol = symbol;
        for (const std::string& text : {std::string(symbol) + "1.5", "1.5 " + std::string(symbol)}) {
            const auto reading = readNumber(text, formats);
            ASSERT_TRUE(reading) << text;
            EXPECT_TRUE(reading->hasCurrency);
            EXPECT_EQ(toDouble(reading->number), 1.5) << text;
        }
    }
}

TEST(NumberText, RoundsByDecimalDigits)
{
    struct {
        const char* text;
        const char* shown;
    } const cases[] = {
        {"1.005", "1.01"},       {"2.675", "2.68"},
        {"-2.675", "-2.68"},     {"0.005", "0.01"},
        {"0.0049", "0.00"},      {"-0.001", "0.00"},
        {"-0.005", "-0.01"},     {"9.995", "10.00"},
        {"999.995", "1,000.00"}, {"1234567.891", "1,234,567.89"},
        {"-0", "0.00"},          {"1e-300", "0.00"},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(numberTextOf(text, unitedStates), shown);
}

TEST(NumberText, WritesTheUsersForm)
{
    EXPECT_EQ(currencyTextOf("12.5", unitedStates), "$12.50");
    EXPECT_EQ(currencyTextOf("-1234.5", unitedStates), "($1,234.50)");
    EXPECT_EQ(currencyTextOf("($0.001)", unitedStates), "$0.00");
    EXPECT_EQ(currencyTextOf("-1234567,5", germanFormats()), "-1.234.567,50\u00A0€");
    EXPECT_EQ(numberTextOf("12345678.5", indianFormats()), "१,२३,४५,६७८.५०");
    EXPECT_EQ(currencyTextOf("-5", arabicFormats()), "\u061C-٥٫٠٠\u00A0ج.م.\u200F");
    EXPECT_EQ(currencyText({false, "15", 2}, unitedStates, 0), "$15");

    RegionalFormats spanish = germanFormats();
    spanish.digitsBeforeGrouping = 2;
    EXPECT_EQ(numberTextOf("1234", spanish), "1234,00");
    EXPECT_EQ(numberTextOf("12345", spanish), "12.345,00");
}

TEST(NumberText, NamesTheTextThatIsNoNumber)
{
    try {
        currencyTextOf("abc", unitedStates);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find("abc"), std::string::npos);
    }
}

TEST(NumberText, KeepsDoublesThroughDecimalDigits)
{
    for (const double number : {0.0, 0.1, -1.0 / 3, 596.7149999999999, 1e22, 1e23, 123456789012345680.0, 5e-324,
                                std::numeric_limits<double>::max(), std::numeric_limits<double>::min()})
        EXPECT_EQ(toDouble(toDecimal(number)), number);
    EXPECT_EQ(toDecimal(-0.05), (DecimalNumber{true, "5", -1}));
    EXPECT_EQ(toDouble(DecimalNumber{false, "1", 400}), std::nullopt);
}

TEST(NumberText, RoundsWholeNumbersHalfToEvenWithinTheirRange)
{
    EXPECT_EQ(toInt16(0.5), 0);
    EXPECT_EQ(toInt16(1.5), 2);
    EXPECT_EQ(toInt16(-2.5), -2);
    EXPECT_EQ(toInt16(32767.49), 32767);
    EXPECT_EQ(toInt32(2147483647.0), 2147483647);
    for (const double number : {32767.5, -32768.6, 1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(toInt16(number), std::overflow_error);
    EXPECT_THROW(toInt32(2147483648.0), std::overflow_error);
}

TEST(NumberText, TurnsSeparatorsIntoTheUsersAndBack)
{
    EXPECT_EQ(toLocalNumberText("16.0", germanFormats()), "16,0");
    EXPECT_EQ(toLocalNumberText("16,0", unitedStates), "16.0");
    EXPECT_EQ(toLocalNumberText("1.234,5.", germanFormats()), "1,234,5,");
    EXPECT_EQ(toLocalNumberText("16.0", arabicFormats()), "16٫0");
    EXPECT_EQ(toLocalNumberText("1,5,0.", germanFormats(), -1), "1.5.0.");
    EXPECT_EQ(toLocalNumberText("1,5", unitedStates, -1), "1,5");
    EXPECT_EQ(localDecimalSeparator(arabicFormats()), "٫");
}
