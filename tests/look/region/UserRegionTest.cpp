#include "app/look/UserRegion.h"

#include "app/base/text/DateText.h"
#include "app/base/text/NumberText.h"
#include "workbook/engine/text/TypedText.h"

#include <QLocale>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace wagemill;
using namespace wagemill::engine;

namespace {

constexpr CalendarDate today{2026, 11, 21};
const int firstDay = daysSinceEpoch({2000, 1, 1});
const int lastDay = daysSinceEpoch({2049, 12, 31});

using Regions = std::vector<std::pair<std::string, RegionalFormats>>;

/// The formats of all locales there are, named; of those that `reduced` makes equal only the first.
template <typename Reduced>
Regions distinctRegions(Reduced&& reduced)
{
    Regions regions;
    std::vector<RegionalFormats> known;
    for (const QLocale& locale :
         QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyCountry)) {
        const RegionalFormats formats = regionalFormatsOf(locale);
        if (const RegionalFormats key = reduced(formats); std::ranges::find(known, key) == known.end()) {
            known.push_back(key);
            regions.emplace_back(locale.name().toStdString(), formats);
        }
    }
    return regions;
}

/// What the text of a short date depends on, and what a cell might take it for instead. Names of months and days only
/// where the pattern has them.
RegionalFormats dateForm(const RegionalFormats& formats)
{
    RegionalFormats form = formats.shortDatePattern.find("MMM") == std::string::npos ? RegionalFormats() : formats;
    form.shortDatePattern = formats.shortDatePattern;
    form.zeroDigit = formats.zeroDigit;
    form.decimalSeparator = formats.decimalSeparator;
    form.groupSeparator = formats.groupSeparator;
    form.timeSeparator = formats.timeSeparator;
    return form;
}

} // namespace

TEST(UserRegion, EveryNumberWrittenIsReadBack)
{
    for (const auto& [name, formats] : distinctRegions([](const RegionalFormats& all) { return all; }))
        for (const char* written : {"0", "0.01", "7.65", "999.99", "1000", "12345.67", "1234567.89", "123456789012.34",
                                    "-0.01", "-12.5", "-1234.5", "-12345678.9"}) {
            const DecimalNumber number = readNumber(written, {})->number;
            for (const std::string& text : {currencyText(number, formats), numberText(number, formats)}) {
                const auto reading = readNumber(text, formats);
                ASSERT_TRUE(reading && reading->number == number) << name << " form: " << text;
                ASSERT_TRUE(readTypedText(text, formats, today).value == CellValue(*toDouble(number)))
                    << name << ": " << text;
            }
        }
}

TEST(UserRegion, EveryDayWrittenIsReadBackAndIsADateToACell)
{
#ifdef NDEBUG
    constexpr int step = 1;
#else
    constexpr int step = 29; // a slow build samples; it still meets each day of each month
#endif
    constexpr int serialDayOfEpoch = 25569;
    for (const auto& [name, formats] : distinctRegions(dateForm))
        for (int day = firstDay; day <= lastDay; day += step) {
            const CalendarDate date = dateFromDaysSinceEpoch(day);
            const std::string text = shortDateText(date, formats);
            const CellValue expected = static_cast<double>(day + serialDayOfEpoch);
            ASSERT_TRUE(readShortDate(text, formats) == date) << name << ": " << text;
            ASSERT_TRUE(readTypedText(text, formats, today).value == expected) << name << ": " << text;
        }
}

TEST(UserRegion, ReadsOffWhatTheLocaleWritesAndTakesTheLanguageOfProgramsForTheUnitedStates)
{
    EXPECT_EQ(regionalFormatsOf(QLocale::c()), RegionalFormats());
    EXPECT_EQ(regionalFormatsOf(QLocale("en_US")), RegionalFormats());
    const RegionalFormats german = regionalFormatsOf(QLocale("de_DE"));
    EXPECT_EQ(german.currencySymbol, "€");
    EXPECT_EQ(currencyTextOf("12,5", german), "12,50\u00A0€");

    const RegionalFormats hindi = regionalFormatsOf(QLocale("hi_IN"));
    EXPECT_EQ(numberTextOf("12345678", hindi), "1,23,45,678.00");
    EXPECT_EQ(currencyTextOf("-12.5", hindi), "₹-12.50");

    EXPECT_EQ(regionalFormatsOf(QLocale("es_ES")).digitsBeforeGrouping, 2);
    EXPECT_EQ(regionalFormatsOf(QLocale("fi_FI")).timeSeparator, ".");
    EXPECT_EQ(regionalFormatsOf(QLocale("ar_EG")).zeroDigit, U'٠');
}
