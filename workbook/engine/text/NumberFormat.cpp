#include "workbook/engine/text/NumberFormat.h"

#include "app/base/text/NumberText.h"
#include "workbook/engine/text/FormatCode.h"

#include <algorithm>
#include <cmath>

namespace wagemill::engine {

namespace {

/// Where General turns to an exponent: 0.0001 is the smallest number shown with decimals cut off.
constexpr int minCutExponent = -4;

/// Beyond it a double has no fraction worth showing.
constexpr double maxFraction = 1e15;

using Sections = std::vector<FormatSection>; ///< none: General

/// All digits of a number, without sign and groups.
std::string fixedText(const DecimalNumber& number, const RegionalFormats& formats)
{
    const int decimals = static_cast<int>(number.digits.size()) - number.pointPosition;
    const FixedDigits fixed = fixedDigits(number, std::max(decimals, 0));
    return (fixed.integer.empty() ? "0" : fixed.integer) +
           (fixed.fraction.empty() ? "" : formats.decimalSeparator + fixed.fraction);
}

std::string scientificText(const DecimalNumber& number, const RegionalFormats& formats)
{
    const int exponent = number.pointPosition - 1;
    return fixedText({false, number.digits, 1}, formats) + (exponent < 0 ? "E-" : "E+") +
           paddedNumber(std::abs(exponent), 2);
}

/// The digits of General without sign: in full where they fit, with fewer decimals where the number is neither too
/// large nor too small for that, else with an exponent.
std::string generalDigits(const DecimalNumber& number, int characters, const RegionalFormats& formats)
{
    if (number.digits.empty())
        return "0";
    const int exponent = number.pointPosition - 1;
    const int integerDigits = std::max(number.pointPosition, 1);
    const int decimals = std::max(static_cast<int>(number.digits.size()) - number.pointPosition, 0);
    if (integerDigits + (decimals > 0 ? decimals + 1 : 0) <= characters)
        return fixedText(number, formats);
    if (exponent >= minCutExponent) {
        const DecimalNumber cut = rounded(number, std::max(characters - integerDigits - 1, 0));
        if (!cut.digits.empty() && cut.pointPosition <= characters)
            return fixedText(cut, formats);
    }
    const int exponentCharacters = std::abs(exponent) < 100 ? 4 : 5;
    const int mantissaDecimals =
        std::max(characters - exponentCharacters - 2, 0); // after the first digit and the point
    return scientificText(rounded(number, mantissaDecimals - exponent), formats);
}

std::string signedGeneral(const DecimalNumber& number, const RegionalFormats& formats, int characters)
{
    return (number.negative ? formats.negativeSign : "") +
           toLocalDigits(generalDigits(number, characters, formats), formats);
}

/// A section of literal text with one value, General or "@", in it.
std::string around(const FormatSection& section, FormatToken::Kind kind, const std::string& value)
{
    std::string text;
    for (const FormatToken& token : section.tokens)
        text += token.kind == kind ? value : token.text;
    return text;
}

/// The section that shows texts and hides logicals; null where both are shown as they are.
const FormatSection* textSection(const Sections& sections)
{
    constexpr std::size_t allSections = 4;
    const bool isText =
        sections.size() == allSections || (!sections.empty() && sections.back().kind == FormatSection::Kind::Text);
    return isText ? &sections.back() : nullptr;
}

std::size_t numberSections(const Sections& sections)
{
    return sections.size() - (textSection(sections) != nullptr && sections.size() > 1 ? 1 : 0);
}

/// The section that shows a number: the first whose condition holds, nothing where none does. Without conditions they
/// are for positive, negative and other numbers, or for negative and other ones.
std::optional<std::size_t> sectionFor(double number, const Sections& sections)
{
    const std::size_t count = numberSections(sections);
    for (std::size_t i = 0; i < count; ++i) {
        const auto& condition = sections[i].condition;
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

/// Whether a section is for negative numbers alone: its code says itself how they look.
bool hidesSign(std::size_t section, const Sections& sections)
{
    if (const auto& own = sections[section].condition)
        return own->operand <= 0 && own->less && !own->greater;
    const auto& first = sections.front().condition;
    return section == 1 &&
           (numberSections(sections) > 2 || !first || (first->operand == 0 && first->greater && !first->less));
}

RenderedNumber renderSection(double number, const FormatSection& section, const RegionalFormats& formats)
{
    if (section.kind == FormatSection::Kind::General)
        return {around(section, FormatToken::Kind::General, generalText(std::abs(number), formats)), false};
    if (section.kind == FormatSection::Kind::Text)
        return {around(section, FormatToken::Kind::Text, generalText(std::abs(number), formats)), false};
    return renderNumber(number, section, formats);
}

ShownText showNumber(double number, const Sections& sections, const RegionalFormats& formats, bool dates1904)
{
    const auto index = sectionFor(number, sections);
    if (!index)
        return {.text = generalText(number, formats), .isNumber = true, .isGeneral = true};
    const FormatSection& section = sections[*index];
    ShownText shown = {.color = section.color, .isNumber = section.kind != FormatSection::Kind::Text};
    if (section.tokens.empty() && sections.size() > 1)
        return shown;
    if (section.kind == FormatSection::Kind::Date) {
        const auto date = renderDate(number, section, formats, dates1904);
        shown.isNegativeDate = !date;
        shown.text = date.value_or("###");
        return shown;
    }
    const bool unfit = section.kind == FormatSection::Kind::Fraction && std::abs(number) >= maxFraction;
    if (section.tokens.empty() || unfit) {
        shown.text = generalText(number, formats);
        return shown;
    }
    const RenderedNumber rendered = renderSection(number, section, formats);
    const bool sign = number < 0 && !rendered.isZero && !hidesSign(*index, sections);
    shown.text = (sign ? formats.negativeSign : "") + rendered.text;
    return shown;
}

} // namespace

ShownText showValue(const CellValue& value, std::string_view code, const RegionalFormats& formats, bool dates1904)
{
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        return {.text = errorText(*error)};
    const Sections sections = readFormatCode(code).value_or(Sections());
    if (const auto* const number = std::get_if<double>(&value))
        return showNumber(*number, sections, formats, dates1904);
    const FormatSection* const section = textSection(sections);
    if (const auto* const logical = std::get_if<bool>(&value))
        return {.text = section != nullptr && section->tokens.empty() ? "" : *logical ? "TRUE" : "FALSE"};
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return {};
    if (section == nullptr)
        return {.text = *text};
    return {.text = around(*section, FormatToken::Kind::Text, *text), .color = section->color};
}

std::string generalText(double number, const RegionalFormats& formats, int characters)
{
    return signedGeneral(toShownDecimal(number), formats, characters);
}

std::vector<std::string> shorterGeneralTexts(double number, const RegionalFormats& formats)
{
    const DecimalNumber decimal = toShownDecimal(number);
    std::vector<std::string> texts = {signedGeneral(decimal, formats, standardCharacters)};
    for (int characters = standardCharacters - 1; characters > 0; --characters)
        if (std::string text = signedGeneral(decimal, formats, characters); text.size() < texts.back().size())
            texts.push_back(std::move(text));
    texts.erase(texts.begin());
    return texts;
}

std::string fullNumberText(double number, const RegionalFormats& formats)
{
    constexpr int maxIntegerDigits = 20;
    constexpr int maxLeadingZeros = 8;
    const DecimalNumber decimal = toShownDecimal(number);
    const bool isPlain = decimal.pointPosition <= maxIntegerDigits && decimal.pointPosition >= -maxLeadingZeros;
    return (decimal.negative ? "-" : "") + (isPlain ? fixedText(decimal, formats) : scientificText(decimal, formats));
}

} // namespace wagemill::engine
