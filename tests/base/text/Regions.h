#pragma once

#include "app/base/text/RegionalFormats.h"

namespace wagemill::test {

inline RegionalFormats germanFormats()
{
    RegionalFormats formats;
    formats.decimalSeparator = ",";
    formats.groupSeparator = ".";
    formats.currencySymbol = "€";
    formats.currency = {"", "\u00A0€"};
    formats.negativeCurrency = {"-", "\u00A0€"};
    formats.shortDatePattern = "dd.MM.yyyy";
    formats.monthNames[2] = "März";
    formats.shortMonthNames[2] = "März";
    return formats;
}

inline RegionalFormats frenchFormats()
{
    RegionalFormats formats = germanFormats();
    formats.groupSeparator = "\u202F";
    formats.shortDatePattern = "dd/MM/yyyy";
    return formats;
}

/// Grouped by lakh; a symbol before the minus sign.
inline RegionalFormats indianFormats()
{
    RegionalFormats formats;
    formats.furtherGroups = 2;
    formats.zeroDigit = U'\u0966';
    formats.currencySymbol = "₹";
    formats.currency = {"₹", ""};
    formats.negativeCurrency = {"₹-", ""};
    formats.shortDatePattern = "d/M/yyyy";
    return formats;
}

/// Its digits and separators are not Latin, its signs carry direction marks, its symbol holds dots.
inline RegionalFormats arabicFormats()
{
    RegionalFormats formats;
    formats.decimalSeparator = "٫";
    formats.groupSeparator = "٬";
    formats.zeroDigit = U'٠';
    formats.negativeSign = "\u061C-";
    formats.percentSign = "٪\u061C";
    formats.currencySymbol = "ج.م.\u200F";
    formats.currency = {"", "\u00A0ج.م.\u200F"};
    formats.negativeCurrency = {"\u061C-", "\u00A0ج.م.\u200F"};
    formats.shortDatePattern = "d\u200F/M\u200F/yyyy";
    return formats;
}

} // namespace wagemill::test
