#pragma once

#include <array>
#include <string>

namespace wagemill {

/// The text before and after an unsigned number, "($" and ")".
struct Affixes {
    std::string prefix;
    std::string suffix;

    bool operator==(const Affixes&) const = default;
};

/// How one user writes numbers, money and dates. All texts are UTF-8. The defaults are those of the United States.
/// One value is filled from the user's locale at start and handed to the form and to the spreadsheet engine alike, so
/// that what the form shows is what a cell understands.
struct RegionalFormats {
    std::string decimalSeparator = ".";
    std::string groupSeparator = ",";
    int firstGroup = 3;           ///< digits in the group next to the decimal separator
    int furtherGroups = 3;        ///< digits in every further group (2 in India)
    int digitsBeforeGrouping = 1; ///< digits that there must be before the first group separator (2: 1234 but 12,345)
    char32_t zeroDigit = U'0';    ///< the digit zero; the other nine follow it
    std::string negativeSign = "-";
    std::string positiveSign = "+";
    std::string percentSign = "%";

    std::string currencySymbol = "$";
    Affixes currency = {"$", ""};
    Affixes negativeCurrency = {"($", ")"};
    std::string currencyDecimalSeparator; ///< of money where it is another ("15.00 CHF" but "7,65"); else empty

    /// d, dd day; M, MM month; MMM, MMMM month name; yyyy year, always four digits; text in '' is literal.
    std::string shortDatePattern = "M/d/yyyy";
    std::string timeSeparator = ":";
    std::array<std::string, 12> monthNames = {"January", "February", "March",     "April",   "May",      "June",
                                              "July",    "August",   "September", "October", "November", "December"};
    std::array<std::string, 12> shortMonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::array<std::string, 7> dayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                           "Thursday", "Friday", "Saturday"};
    std::array<std::string, 7> shortDayNames = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    std::string amText = "AM";
    std::string pmText = "PM";

    bool operator==(const RegionalFormats&) const = default;
};

} // namespace wagemill
