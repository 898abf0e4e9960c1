#include "workbook/engine/text/TypedText.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/NumberText.h"
#include "app/base/text/PlainCharacters.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/text/SerialDay.h"
#include "workbook/engine/text/TypedMoment.h"

#include <algorithm>
#include <optional>

namespace wagemill::engine {

namespace {

/// A literal text of a format code: brackets, signs and blanks after a backslash, the rest in quotes.
std::string literalCode(const std::string& text)
{
    constexpr std::u32string_view escaped = U"()-+ \"\u00A0\u202F\u2212";
    std::u32string code;
    bool quoted = false;
    for (const char32_t character : toUtf32(text)) {
        const bool single = escaped.find(character) != std::u32string_view::npos;
        if (quoted == single)
            code += U'"';
        quoted = !single;
        code += single ? std::u32string{U'\\', character} : std::u32string{character};
    }
    return toUtf8(code) + (quoted ? "\"" : "");
}

/// The user's currency form as a format code. A form with brackets leaves the width of one after positive amounts:
///   "$"#,##0.00_);[Red]\("$"#,##0.00\)    #,##0.00\ "€";[Red]\-#,##0.00\ "€"
std::string currencyCode(const RegionalFormats& formats, bool decimals)
{
    const std::string number = decimals ? "#,##0.00" : "#,##0";
    const auto inAffixes = [&number](const Affixes& affixes) {
        return literalCode(affixes.prefix) + number + literalCode(affixes.suffix);
    };
    const std::string space = formats.negativeCurrency.suffix.ends_with(')') ? "_)" : "";
    return inAffixes(formats.currency) + space + ";[Red]" + inAffixes(formats.negativeCurrency);
}

std::string numberCode(const NumberReading& reading, const RegionalFormats& formats)
{
    const bool decimals = reading.decimals > 0;
    if (reading.hasPercent)
        return decimals ? "0.00%" : "0%";
    if (reading.hasCurrency)
        return currencyCode(formats, decimals);
    if (reading.hasExponent)
        return "0.00E+00";
    if (reading.hasGroups)
        return decimals ? "#,##0.00" : "#,##0";
    return "";
}

std::optional<TypedValue> readTypedNumber(std::string_view plain, const RegionalFormats& formats)
{
    auto reading = readNumber(plain, formats, true);
    if (!reading)
        return std::nullopt;
    if (reading->hasPercent && !reading->number.digits.empty())
        reading->number.pointPosition -= 2;
    const auto number = toDouble(reading->number);
    return TypedValue{numberValue(number.value_or(0)), numberCode(*reading, formats), false};
}

std::optional<TypedValue> readWord(std::string_view plain)
{
    for (const bool value : {true, false})
        if (sameIgnoringCase(plain, value ? "TRUE" : "FALSE"))
            return TypedValue{value, "", false};
    const auto error =
        std::ranges::find_if(errorNames, [plain](const ErrorName& name) { return sameIgnoringCase(plain, name.text); });
    return error == errorNames.end() ? std::nullopt : std::optional(TypedValue{error->error, "", false});
}

/// The serial day of a valid date, nothing before the first one.
std::optional<int> countedDay(CalendarDate date, bool dates1904)
{
    const int firstYear = dates1904 ? 1904 : 1900;
    return date.year < firstYear ? std::nullopt
                                 : std::optional(serialDayOf(date.year, date.month, date.day, dates1904));
}

std::optional<TypedValue> readDateOrTime(std::string_view plain, const RegionalFormats& formats, CalendarDate today,
                                         bool dates1904)
{
    auto moment = readMoment(plain, formats, today);
    if (!moment)
        return std::nullopt;
    const auto day = moment->date ? countedDay(*moment->date, dates1904) : 0;
    if (!day)
        return std::nullopt;
    return TypedValue{*day + moment->days, std::move(moment->numberFormat), false};
}

} // namespace

TypedValue readTypedText(std::string_view text, const RegionalFormats& formats, CalendarDate today, bool dates1904)
{
    if (text.starts_with('\''))
        return {std::string(text.substr(1)), "", true};
    const std::string plain = plainCharacters(text, formats);
    if (plain.empty())
        return {};
    if (auto number = readTypedNumber(plain, formats))
        return *number;
    if (auto word = readWord(plain))
        return *word;
    if (auto moment = readDateOrTime(plain, formats, today, dates1904))
        return *moment;
    return {std::string(text), "", false};
}

} // namespace wagemill::engine
