#include "workbook/engine/text/NumberFormat.h"

#include "app/base/text/NumberText.h"
#include "workbook/engine/text/DateRendering.h"
#include "workbook/engine/text/NumberRendering.h"

#include <algorithm>
#include <cmath>

namespace wagemill::engine {

namespace {

/// Digits of a cell of standard width.
constexpr int standardCharacters = 11;

/// Where General turns to an exponent: 0.0001 is the smallest number shown with decimals cut off.
constexpr int smallestCutExponent = -4;

/// Beyond it a double has no fraction worth showing.
constexpr double largestFraction = 1e15;

/// A number in fixed form with the fewest decimals that show it whole, or those that fit.
std::string fixedText(const DecimalNumber& number, int decimals, const RegionalFormats& formats)
{
    const auto shown = static_cast<int>(number.digits.size()) - number.pointPosition;
    const DecimalNumber value = rounded(number, std::clamp(shown, 0, decimals));
    const int needed = std::max(static_cast<int>(value.digits.size()) - value.pointPosition, 0);
    const FixedDigits fixed = fixedDigits(value, value.digits.empty() ? 0 : needed);
    return (fixed.integer.empty() ? "0" : fixed.integer) +
           (fixed.fraction.empty() ? "" : formats.decimalSeparator + fixed.fraction);
}

std::string exponentText(int exponent)
{
    const std::string figures = std::to_string(std::abs(exponent));
    return (exponent < 0 ? "E-" : "E+") + std::string(figures.size() < 2 ? "0" : "") + figures;
}

std::string scientificText(const DecimalNumber& number, int characters, const RegionalFormats& formats)
{
    constexpr int mostDigitsSaved = 2; // the digit before the point, and the point
    int exponent = number.pointPosition - 1;
    const auto decimals = [characters](const std::string& tail) {
        return std::max(characters - static_cast<int>(tail.size()) - mostDigitsSaved, 0);
    };
    DecimalNumber mantissa = number;
    mantissa.pointPosition = 1;
    mantissa = rounded(mantissa, decimals(exponentText(exponent)));
    exponent += mantissa.pointPosition - 1; // 9.99 may have become 10.0
    mantissa.pointPosition = 1;
    return fixedText(mantissa, decimals(exponentText(exponent)), formats) + exponentText(exponent);
}

/// The digits of General without sign: in full where they fit, with fewer decimals where the number is neither too
/// large nor too small for that, else with an exponent.
std::string generalDigits(const DecimalNumber& number, int characters, const RegionalFormats& formats)
{
    if (number.digits.empty())
        return "0";
    const int integerDigits = std::max(number.pointPosition, 1);
    const int decimals = std::max(static_cast<int>(number.digits.size()) - number.pointPosition, 0);
    const int width = integerDigits + (decimals > 0 ? decimals + 1 : 0);
    if (width <= characters)
        return fixedText(number, decimals, formats);
    if (number.pointPosition - 1 >= smallestCutExponent) {
        const int room = std::max(characters - integerDigits - 1, 0);
        const DecimalNumber cut = rounded(number, room);
        if (!cut.digits.empty() && cut.pointPosition <= characters)
            return fixedText(number, room, formats);
    }
    return scientificText(number, characters, formats);
}

bool showsGeneral(const FormatSection& section)
{
    return section.kind == FormatSection::Kind::General || section.kind == FormatSection::Kind::Text;
}

/// A section of literal text with one value, General or "@", in it.
std::string around(const FormatSection& section, FormatToken::Kind kind, const std::string& value)
{
    std::string text;
    for (const FormatToken& token : section.tokens)
        text += token.kind == kind ? value : token.text;
    return text;
}

RenderedNumber renderGeneral(double number, const FormatSection& section, const RegionalFormats& formats)
{
    const std::string digits = generalText(std::abs(number), formats);
    const auto kind = section.kind == FormatSection::Kind::Text ? FormatToken::Kind::Text : FormatToken::Kind::General;
    return {around(section, kind, digits), false};
}

ShownText generalNumber(double number, const RegionalFormats& formats)
{
    ShownText shown;
    shown.text = generalText(number, formats);
    shown.isNumber = true;
    shown.isGeneral = true;
    return shown;
}

} // namespace

NumberFormatter::NumberFormatter(std::string_view code)
    : m_sections(readFormatCode(code).value_or(std::vector<FormatSection>()))
{
}

ShownText NumberFormatter::show(const CellValue& value, const RegionalFormats& formats, bool dates1904) const
{
    if (const auto* error = std::get_if<ErrorCode>(&value))
        return {errorText(*error), std::nullopt};
    if (const auto* number = std::get_if<double>(&value))
        return showNumber(*number, formats, dates1904);
    if (const auto* text = std::get_if<std::string>(&value))
        return showText(*text);
    if (const auto* logical = std::get_if<bool>(&value)) {
        const FormatSection* section = textSection();
        const bool hidden = section != nullptr && section->tokens.empty();
        return {hidden ? "" : *logical ? "TRUE" : "FALSE", std::nullopt};
    }
    return {};
}

const FormatSection* NumberFormatter::textSection() const
{
    constexpr std::size_t allSections = 4;
    if (m_sections.empty())
        return nullptr;
    const bool isText = m_sections.size() == allSections || m_sections.back().kind == FormatSection::Kind::Text;
    return isText ? &m_sections.back() : nullptr;
}

std::size_t NumberFormatter::numberSections() const
{
    const bool separateText = textSection() != nullptr && m_sections.size() > 1;
    return m_sections.size() - (separateText ? 1 : 0);
}

/// The section that shows a number: the first whose condition holds, nothing where none does. Without conditions they
/// are for positive, negative and other numbers, or for negative and other ones.
std::optional<std::size_t> NumberFormatter::sectionFor(double number) const
{
    const std::size_t count = numberSections();
    for (std::size_t i = 0; i < count; ++i) {
        const auto& condition = m_sections[i].condition;
        const bool holds = condition        ? condition->holds(number)
                           : i + 1 == count ? true
                           : i > 0          ? number < 0
                           : count > 2      ? number > 0
                                            : number >= 0;
        if (holds)
            return i;
    }
    return std::nullopt;
}

/// Whether a section is for negative numbers alone: it says itself how they look.
bool NumberFormatter::hidesSign(std::size_t section) const
{
    const auto& own = m_sections[section].condition;
    if (own)
        return own->operand <= 0 && own->comparison.front() == '<' && own->comparison != "<>";
    if (section != 1)
        return false;
    const auto& first = m_sections.front().condition;
    return numberSections() > 2 || !first || (first->operand == 0 && first->comparison.front() == '>');
}

ShownText NumberFormatter::showNumber(double number, const RegionalFormats& formats, bool dates1904) const
{
    const auto index = sectionFor(number);
    if (!index)
        return generalNumber(number, formats);
    const FormatSection& section = m_sections[*index];
    ShownText shown;
    shown.color = section.color;
    shown.isNumber = section.kind != FormatSection::Kind::Text;
    if (section.tokens.empty() && m_sections.size() > 1)
        return shown;
    if (section.kind == FormatSection::Kind::Date) {
        const auto date = renderDate(number, section, formats, dates1904);
        shown.isNegativeDate = !date;
        shown.text = date.value_or("###");
        return shown;
    }
    const bool unfit = section.kind == FormatSection::Kind::Fraction && std::abs(number) >= largestFraction;
    if (section.tokens.empty() || unfit) {
        shown.text = generalText(number, formats);
        return shown;
    }
    const RenderedNumber rendered =
        showsGeneral(section) ? renderGeneral(number, section, formats) : renderNumber(number, section, formats);
    const bool sign = number < 0 && !rendered.isZero && !hidesSign(*index);
    shown.text = (sign ? formats.negativeSign : "") + rendered.text;
    return shown;
}

ShownText NumberFormatter::showText(const std::string& text) const
{
    const FormatSection* section = textSection();
    if (section == nullptr)
        return {text, std::nullopt};
    return {around(*section, FormatToken::Kind::Text, text), section->color};
}

ShownText showValue(const CellValue& value, std::string_view code, const RegionalFormats& formats, bool dates1904)
{
    return NumberFormatter(code).show(value, formats, dates1904);
}

std::string generalText(double number, const RegionalFormats& formats, int characters)
{
    const std::string digits = generalDigits(toShownDecimal(std::abs(number)), characters, formats);
    return (number < 0 ? formats.negativeSign : "") + toLocalDigits(digits, formats);
}

std::string fullNumberText(double number, const RegionalFormats& formats)
{
    constexpr int maxIntegerDigits = 20;
    constexpr int maxLeadingZeros = 8;
    constexpr int allDigits = 30; // in either form
    const DecimalNumber decimal = toShownDecimal(number);
    const bool isPlain = decimal.pointPosition <= maxIntegerDigits && decimal.pointPosition >= -maxLeadingZeros;
    return (decimal.negative ? "-" : "") +
           (isPlain ? fixedText(decimal, allDigits, formats) : scientificText(decimal, allDigits, formats));
}

} // namespace wagemill::engine
