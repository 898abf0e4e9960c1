#include "app/base/text/NumberText.h"

#include "tests/base/text/Regions.h"
#include "tests/support/FailureOf.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace wagemill;
using namespace wagemill::test;

namespace {

const RegionalFormats unitedStates;

using Reading = std::pair<double, std::vector<std::string>>;

void expectNumbers(const std::vector<Reading>& numbers, const RegionalFormats& formats)
{
    for (const auto& [value, texts] : numbers)
        for (const std::string& text : texts) {
            const auto reading = readNumber(text, formats);
            ASSERT_TRUE(reading) << text;
            EXPECT_EQ(toDouble(reading->number), value) << text;
        }
}

void expectNoNumbers(const std::vector<std::string>& texts, const RegionalFormats& formats)
{
    for (const std::string& text : texts)
        EXPECT_FALSE(isNumericText(text, formats)) << text;
}

} // namespace

TEST(NumberText, ReadsWhatUsersType)
{
    expectNumbers({{0, {"0", "1e-999999999999999999999"}},
                   {0.5, {".5"}},
                   {5, {"5.", "+5"}},
                   {-5, {"5-", "- 5", "(5)", "($5.00)", "$(5.00)", "-$5.00", "$-5.00", "−5"}},
                   {7, {"007", "\t 7 \u00A0"}},
                   {15, {"$15", "$ 15.00", "15$"}},
                   {12.5, {"１２．５"}}, // full-width, as East Asian keyboards type
                   {1234567.89, {"1,234,567.89"}},
                   {1e5, {"1E5"}},
                   {0.001, {"1e-3"}},
                   {150, {"1.5E+2"}}},
                  unitedStates);
}

TEST(NumberText, RefusesWhatIsNotANumber)
{
    expectNoNumbers({"",     " ",     ".",   "-",     "$",     "()",     "1..2",  "--5",    "-5-",   "abc",
                     "0x10", "inf",   "nan", "1,23",  "12,34", "1,2345", "0,123", ",123",   "1,",    "1 234",
                     "5%",   "(-5)",  "(5",  "5)",    "$$5",   "1e",     "1e+",   "e5",     "1e5.5", "1e999999999",
                     "€5",   "1.2.3", "1-2", "12:30", "1/2",   "5 5",    "\3775", "1.234,5"},
                    unitedStates);
    expectNoNumbers({std::string(100000, '('), std::string(100000, '9'), "1" + std::string(100000, '-')}, unitedStates);
}

TEST(NumberText, ReadsPercentSignsOnlyWhereAsked)
{
    EXPECT_FALSE(readNumber("7.65%", unitedStates));
    EXPECT_EQ(readNumber("7.65 %", unitedStates, true)->decimals, 2);
    for (const char* text : {"%", "10%%", "abc%", "$5%"})
        EXPECT_FALSE(readNumber(text, unitedStates, true)) << text;
}

TEST(NumberText, ReadsTheUsersSeparators)
{
    expectNumbers({{1234.56, {"1.234,56"}}, {12.5, {"12,5 €"}}, {-12.5, {"-12,50\u00A0€"}}}, germanFormats());
    expectNoNumbers({"12.5", "1,234.56", "$5"}, germanFormats());
    expectNumbers({{1234.5, {"1 234,5", "1\u202F234,5"}}, {1234567, {"1\u00A0234 567 €"}}}, frenchFormats());
    expectNumbers({{1234567, {"12,34,567", "1,234,567"}}, {-12.5, {"₹-१२.५०"}}}, indianFormats());
    expectNumbers({{1234.5, {"١٬٢٣٤٫٥", "1,234.5"}}, {-5, {"-5 ج.م."}}}, arabicFormats());
    RegionalFormats french = germanFormats(); // of Switzerland: money has a sign of its own
    french.groupSeparator = "\u202F";
    french.currencyDecimalSeparator = ".";
    expectNumbers({{15.5, {"15.50 €", "15,50 €"}}, {7.65, {"7,65"}}}, french);
    expectNoNumbers({"7.65", "15.50,0 €"}, french);
    EXPECT_EQ(currencyTextOf("15,5", french) + " " + numberTextOf("15,5", french), "15.50\u00A0€ 15,50");
    RegionalFormats swiss;
    swiss.groupSeparator = "’";
    expectNumbers({{1234.5, {"1'234.50", "1’234.50"}}}, swiss);
}

TEST(NumberText, ReadsCurrencySymbolsOfLettersAndDots)
{
    for (const char* symbol : {"kr.", "Bs.", "S/.", "E", "F\u202FCFA", "د.إ.\u200F"}) {
        RegionalFormats formats;
        formats.currencySymbol = symbol;
        expectNumbers({{1.5, {std::string(symbol) + "1.5", "1.5 " + std::string(symbol)}}}, formats);
    }
}

TEST(NumberText, RoundsByDecimalDigits)
{
    const std::pair<const char*, const char*> cases[] = {
        {"1.005", "1.01"},  {"-0.005", "-0.01"},     {"0.0049", "0.00"}, {"-0.001", "0.00"},
        {"9.995", "10.00"}, {"999.995", "1,000.00"}, {"-0", "0.00"},     {"1e-300", "0.00"}};
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
    EXPECT_EQ(failureOf([] { currencyTextOf("abc", unitedStates); }), "\"abc\" is not a number.");
    RegionalFormats spanish = germanFormats();
    spanish.digitsBeforeGrouping = 2;
    EXPECT_EQ(numberTextOf("1234", spanish), "1234,00");
    EXPECT_EQ(numberTextOf("12345", spanish), "12.345,00");
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
