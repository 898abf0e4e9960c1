#include "app/base/text/DateText.h"

#include "tests/base/text/Regions.h"

#include <gtest/gtest.h>

#include <string>

using namespace wagemill;
using namespace wagemill::test;

namespace {

const RegionalFormats unitedStates;

RegionalFormats withPattern(const char* pattern)
{
    RegionalFormats formats;
    formats.shortDatePattern = pattern;
    return formats;
}

} // namespace

TEST(DateText, CountsDays)
{
    EXPECT_EQ(daysSinceEpoch({1970, 1, 1}), 0);
    EXPECT_EQ(daysSinceEpoch({2000, 2, 29}), 11016);
    EXPECT_EQ(dateFromDaysSinceEpoch(-1), (CalendarDate{1969, 12, 31}));
    EXPECT_TRUE(isValidDate({2024, 2, 29}));
    for (const auto& [year, month, day] :
         {CalendarDate{1900, 2, 29}, {2023, 13, 1}, {2023, 0, 1}, {2023, 4, 31}, {0, 1, 1}})
        EXPECT_FALSE(isValidDate({year, month, day})) << year << '-' << month << '-' << day;
}

TEST(DateText, WritesThePatternWithFullYear)
{
    const std::pair<const char*, const char*> cases[] = {
        {"M/d/yyyy", "3/5/2026"},
        {"dd.MM.yyyy.", "05.03.2026."},
        {"d.MM.yyyy 'г'.", "5.03.2026 г."},
        {"yyyy. M. d.", "2026. 3. 5."},
        {"ddd, d MMM yyyy", "Thu, 5 Mar 2026"},
        {"d 'o''clock' MMMM yy", "5 o'clock March 2026"},
    };
    for (const auto& [pattern, text] : cases) {
        EXPECT_EQ(shortDateText({2026, 3, 5}, withPattern(pattern)), text);
        EXPECT_EQ(readShortDate(text, withPattern(pattern)), (CalendarDate{2026, 3, 5})) << text;
    }
    EXPECT_EQ(shortDateText({2026, 3, 31}, indianFormats()), "३१/३/२०२६");
}

TEST(DateText, ReadsShortYearsOfACellInOneFixedCentury)
{
    EXPECT_EQ(readShortDate("1/1/30", unitedStates), (CalendarDate{1930, 1, 1}));
    EXPECT_EQ(readShortDate("1/1/29", unitedStates), (CalendarDate{2029, 1, 1}));
    EXPECT_EQ(readShortDate(std::string(100000, '/'), unitedStates), std::nullopt);
}

TEST(DateText, KnowsMonthNames)
{
    const std::pair<const char*, std::optional<int>> cases[] = {
        {"mar", 3}, {"MARCH", 3}, {"Sep.", 9}, {"", std::nullopt}, {"Ma", std::nullopt}};
    for (const auto& [name, month] : cases)
        EXPECT_EQ(monthOfName(name, unitedStates), month) << name;
    EXPECT_EQ(monthOfName("MÄRZ", germanFormats()), 3);
    EXPECT_TRUE(isDayFirst(germanFormats()));
    EXPECT_FALSE(isDayFirst(unitedStates));
    EXPECT_FALSE(isDayFirst(withPattern("yyyy-MM-dd")));
}
