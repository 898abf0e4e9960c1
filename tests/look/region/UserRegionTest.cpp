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
        const RegionalFormats key = reduced(formats);
        if (std::find(known.begin(), known.end(), key) != known.end())
            continue;
        known.push_back(key);
        regions.emplace_back(locale.name().toStdString(), formats);
    }
    return regions;
}

RegionalFormats unchanged(const RegionalFormats& formats)
{
    return formats;
}

/// What the text of a short date depends on. Names of months and days only where the pattern has them.
RegionalFormats dateForm(const RegionalFormats& formats)
{
    RegionalFormats form = formats.shortDatePattern.find("MMM") == std::string::npos ? RegionalFormats() : formats;
    form.shortDatePattern = formats.shortDatePattern;
    form.zeroDigit = formats.zeroDigit;
    return form;
}

/// What a cell might take such a date for instead.
RegionalFormats dateAndNumberForm(const RegionalFormats& formats)
{
    RegionalFormats form = dateForm(formats);
    form.decimalSeparator = formats.decimalSeparator;
    form.groupSeparator = formats.groupSeparator;
    form.timeSeparator = formats.timeSeparator;
    return form;
}

/// Counts faults and keeps the first ten to be read.
class Faults {
public:
    void expect(bool right, const std::string& region, const std::string& text)
    {
        if (!right && ++m_count <= 10)
            m_first.append("\n  ").append(region).append(": ").append(text);
    }
    ~Faults() { EXPECT_EQ(m_count, 0) << m_first; }
    Faults() = default;
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

private:
    int m_count = 0;
    std::string m_first;
};

} // namespace

TEST(UserRegion, EveryFigureWrittenIsReadBack)
{
    Faults faults;
    for (const auto& [name, formats] : distinctRegions(unchanged))
        for (const char* figure : {"0",        "0.01",   "0.5",        "1",          "7.65",
                                   "12.5",     "15",     "999.99",     "1000",       "1234.5",
                                   "12345.67", "123456", "1234567.89", "12345678.9", "123456789012.34",
                                   "-0.01",    "-1",     "-12.5",      "-1234.5",    "-12345678.9"}) {
            const DecimalNumber number = readNumber(figure, {})->number;
            for (const std::string& text : {currencyText(number, formats), numberText(number, formats)}) {
                const auto reading = readNumber(text, formats);
                faults.expect(reading && reading->number == number, name + " form", text);
                faults.expect(readTypedText(text, formats, today).value == CellValue(*toDouble(number)), name + " cell",
                              text);
            }
        }
}

TEST(UserRegion, EveryDayWrittenIsReadBack)
{
    Faults faults;
    for (const auto& [name, formats] : distinctRegions(dateForm))
        for (int day = firstDay; day <= lastDay; ++day) {
            const CalendarDate date = dateFromDaysSinceEpoch(day);
            const std::string text = shortDateText(date, formats);
            faults.expect(readShortDate(text, formats) == date, name, text);
        }
}

TEST(UserRegion, EveryDayIsADateToACell)
{
#ifdef NDEBUG
    constexpr int step = 1;
#else
    constexpr int step = 29; // a slow build samples; it still meets each day of each month
#endif
    constexpr int serialDayOfEpoch = 25569;
    Faults faults;
    for (const auto& [name, formats] : distinctRegions(dateAndNumberForm))
        for (int day = firstDay; day <= lastDay; day += step) {
            const std::string text = shortDateText(dateFromDaysSinceEpoch(day), formats);
            const CellValue expected = static_cast<double>(day + serialDayOfEpoch);
            faults.expect(readTypedText(text, formats, today).value == expected, name, text);
        }
}

TEST(UserRegion, TakesTheLanguageOfProgramsForTheUnitedStates)
{
    EXPECT_EQ(regionalFormatsOf(QLocale::c()), RegionalFormats());
    EXPECT_EQ(regionalFormatsOf(QLocale("en_US")), RegionalFormats());
}

TEST(UserRegion, ReadsOffWhatTheLocaleWrites)
{
    const RegionalFormats german = regionalFormatsOf(QLocale("de_DE"));
    EXPECT_EQ(german.currency, (Affixes{"", "\u00A0€"}));
    EXPECT_EQ(german.currencySymbol, "€");
    EXPECT_EQ(german.shortDatePattern, "dd.MM.yyyy");
    EXPECT_EQ(currencyTextOf("12,5", german), "12,50\u00A0€");

    const RegionalFormats hindi = regionalFormatsOf(QLocale("hi_IN"));
    EXPECT_EQ(hindi.furtherGroups, 2);
    EXPECT_EQ(numberTextOf("12345678", hindi), "1,23,45,678.00");
    EXPECT_EQ(currencyTextOf("-12.5", hindi), "₹-12.50");

    EXPECT_EQ(regionalFormatsOf(QLocale("es_ES")).digitsBeforeGrouping, 2);
    EXPECT_EQ(regionalFormatsOf(QLocale("fi_FI")).timeSeparator, ".");
    EXPECT_EQ(regionalFormatsOf(QLocale("ar_EG")).zeroDigit, U'٠');
}
