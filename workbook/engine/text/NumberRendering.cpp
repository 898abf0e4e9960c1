#include "workbook/engine/text/FormatCode.h"

#include "app/base/text/NumberText.h"
#include "app/base/text/TextScanner.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace wagemill::engine {

namespace {

using Kind = FormatToken::Kind;
using Tokens = std::vector<FormatToken>;

/// What an unused placeholder shows.
std::string padding(Kind placeholder)
{
    return placeholder == Kind::Zero ? "0" : placeholder == Kind::Question ? " " : "";
}

/// The digits of a whole number, handed out to their placeholders from left to right; the first one takes all that have
/// no placeholder of their own.
class PlaceholderDigits {
public:
    PlaceholderDigits(std::string digits, int placeholders) : m_digits(std::move(digits)), m_left(placeholders) {}

    /// Separates groups of digits; there are at least so many.
    void group(const RegionalFormats& formats, int minDigits)
    {
        m_groups = &formats;
        m_total = std::max(m_digits.size(), static_cast<std::size_t>(minDigits));
    }

    bool empty() const { return m_digits.empty(); }

    /// The text of the next placeholder.
    std::string next(Kind placeholder)
    {
        const auto position = static_cast<std::size_t>(--m_left); // digits that belong to later placeholders
        if (m_digits.size() <= position)
            return padding(placeholder) + (placeholder == Kind::Zero ? separator(position) : "");
        std::string text;
        for (; m_taken + position < m_digits.size(); ++m_taken)
            text += m_digits[m_taken] + separator(m_digits.size() - m_taken - 1);
        return text;
    }

private:
    std::string separator(std::size_t following) const
    {
        return m_groups != nullptr && isGroupEnd(following, m_total, *m_groups) ? m_groups->groupSeparator : "";
    }

    std::string m_digits;
    int m_left;
    std::size_t m_taken = 0;
    const RegionalFormats* m_groups = nullptr;
    std::size_t m_total = 0;
};

/// How many placeholders come before the point, after it, and in the exponent.
struct Layout {
    explicit Layout(const Tokens& tokens)
    {
        int* part = &integer;
        for (const FormatToken& token : tokens) {
            part = token.kind == Kind::Point ? &fraction : token.kind == Kind::Exponent ? &exponent : part;
            *part += token.isDigit() ? 1 : 0;
            forced += part == &integer && token.kind == Kind::Zero ? 1 : 0;
        }
    }

    int integer = 0;
    int fraction = 0;
    int exponent = 0;
    int forced = 0; ///< zeros among the placeholders before the point
};

/// Writes one number of the kinds Number and Scientific.
class NumberWriter {
public:
    NumberWriter(const FormatSection& section, const Layout& layout, FixedDigits fixed, int exponent,
                 const RegionalFormats& formats)
        : m_section(section),
          m_formats(formats),
          m_fraction(std::move(fixed.fraction)),
          m_shownFraction(m_fraction.find_last_not_of('0') + 1),
          m_integer(std::move(fixed.integer), std::max(layout.integer, 1)),
          m_exponent(std::to_string(std::abs(exponent)), layout.exponent),
          m_negativeExponent(exponent < 0),
          m_hasInteger(layout.integer > 0)
    {
        if (section.grouped)
            m_integer.group(formats, layout.forced);
    }

    std::string write()
    {
        std::string text;
        for (const FormatToken& token : m_section.tokens)
            text += token.isDigit() ? toLocalDigits(digit(token.kind), m_formats) : sign(token);
        return text;
    }

private:
    std::string digit(Kind placeholder)
    {
        if (m_phase == Phase::Integer)
            return m_integer.next(placeholder);
        if (m_phase == Phase::Exponent)
            return m_exponent.next(placeholder);
        const std::size_t index = m_fractionIndex++;
        return index < m_shownFraction || placeholder == Kind::Zero ? m_fraction.substr(index, 1)
                                                                    : padding(placeholder);
    }

    std::string sign(const FormatToken& token)
    {
        switch (token.kind) {
        case Kind::Point:
            return point();
        case Kind::Exponent:
            m_phase = Phase::Exponent;
            return m_negativeExponent ? "E-" : token.text.ends_with('+') ? "E+" : "E";
        case Kind::Percent:
            return m_formats.percentSign;
        default:
            return token.text;
        }
    }

    /// A code without a placeholder before the point shows the digits there all the same.
    std::string point()
    {
        const bool missing = !m_hasInteger && !m_integer.empty();
        m_phase = Phase::Fraction;
        return (missing ? toLocalDigits(m_integer.next(Kind::Hash), m_formats) : "") + m_formats.decimalSeparator;
    }

    enum class Phase { Integer, Fraction, Exponent };

    const FormatSection& m_section;
    const RegionalFormats& m_formats;
    std::string m_fraction;
    std::size_t m_shownFraction; ///< digits up to the last one that is not zero
    std::size_t m_fractionIndex = 0;
    PlaceholderDigits m_integer;
    PlaceholderDigits m_exponent;
    bool m_negativeExponent;
    bool m_hasInteger;
    Phase m_phase = Phase::Integer;
};

/// The exponent that leaves as many digits before the point as the code has places; with "#" among them it is a
/// multiple of their number, as engineers write.
int exponentOf(const DecimalNumber& number, const Layout& layout)
{
    const int exponent = number.pointPosition - 1;
    if (layout.integer <= 1)
        return exponent;
    if (layout.forced == layout.integer)
        return exponent - (layout.integer - 1);
    return static_cast<int>(std::floor(static_cast<double>(exponent) / layout.integer)) * layout.integer;
}

RenderedNumber renderDecimal(DecimalNumber number, const FormatSection& section, const RegionalFormats& formats)
{
    const Layout layout(section.tokens);
    const bool isScientific = section.kind == FormatSection::Kind::Scientific;
    int exponent = 0;
    if (isScientific && !number.digits.empty()) {
        exponent = exponentOf(number, layout);
        number.pointPosition -= exponent;
        number = rounded(number, layout.fraction);
        const int overflow = exponentOf(number, layout); // 9.99 may have become 10.0
        exponent += overflow;
        number.pointPosition -= overflow;
    }
    FixedDigits fixed = fixedDigits(number, layout.fraction);
    const bool zero = fixed.integer.empty() && fixed.fraction.find_first_not_of('0') == std::string::npos &&
                      layout.integer + layout.fraction > 0;
    return {NumberWriter(section, layout, std::move(fixed), exponent, formats).write(), zero};
}

/// The largest denominators searched for or taken from a code, by its places.
constexpr std::array maxDenominators = {9, 9, 99, 999, 9999};

/// Where the parts of a fraction are in its section: whole number, numerator, "/", denominator.
struct FractionLayout {
    explicit FractionLayout(const Tokens& tokens)
    {
        slash = static_cast<std::size_t>(std::ranges::find(tokens, Kind::Slash, &FormatToken::kind) - tokens.begin());
        numerator = slash;
        while (numerator > 0 && tokens[numerator - 1].isDigit())
            --numerator;
        end = slash + 1;
        std::string digits;
        for (; end < tokens.size() && (tokens[end].isDigit() || isLiteralDigit(tokens[end])); ++end)
            digits += tokens[end].text;
        denominator = TextScanner(digits).takeNumber(9).value_or(0);
        for (std::size_t i = 0; i < numerator; ++i)
            whole += tokens[i].isDigit() ? 1 : 0;
    }

    static bool isLiteralDigit(const FormatToken& token) { return token.text.size() == 1 && isDigit(token.text[0]); }

    std::size_t places() const { return end - slash - 1; } ///< of the denominator

    int whole = 0;             ///< placeholders of the whole number
    std::size_t numerator = 0; ///< index of its first placeholder
    std::size_t slash = 0;
    std::size_t end = 0; ///< after the denominator
    int denominator = 0; ///< fixed by the code; 0 when it is searched for
};

struct Ratio {
    std::int64_t whole = 0;
    std::int64_t numerator = 0;
    int denominator = 1;
};

/// The ratio nearest to a part of one; of equally near ones that with the smallest denominator.
Ratio nearestRatio(double part, int maxDenominator)
{
    Ratio best;
    double bestDistance = 2;
    for (int denominator = 1; denominator <= maxDenominator; ++denominator) {
        const double numerator = std::round(part * denominator);
        const double distance = std::abs(part - numerator / denominator);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = {0, static_cast<std::int64_t>(numerator), denominator};
        }
    }
    return best;
}

Ratio ratioOf(double magnitude, const FractionLayout& layout)
{
    const double whole = std::floor(magnitude);
    const double part = magnitude - whole;
    const int fixed = std::min(layout.denominator, maxDenominators.back());
    Ratio ratio = fixed > 0
                      ? Ratio{0, static_cast<std::int64_t>(std::round(part * fixed)), fixed}
                      : nearestRatio(part, maxDenominators[std::min(layout.places(), maxDenominators.size() - 1)]);
    ratio.numerator += static_cast<std::int64_t>(whole) * ratio.denominator;
    if (layout.whole > 0) {
        ratio.whole = ratio.numerator / ratio.denominator;
        ratio.numerator %= ratio.denominator;
    }
    return ratio;
}

/// The nearest fraction whose denominator has as many digits as the code has places, at most four.
RenderedNumber renderFraction(double magnitude, const FormatSection& section, const RegionalFormats& formats)
{
    const Tokens& tokens = section.tokens;
    const FractionLayout layout(tokens);
    const Ratio ratio = ratioOf(magnitude, layout);
    const bool onlyWhole = layout.whole > 0 && ratio.numerator == 0; // its fraction is left blank
    PlaceholderDigits whole(ratio.whole > 0 || onlyWhole ? std::to_string(ratio.whole) : "", layout.whole);
    PlaceholderDigits numerator(std::to_string(ratio.numerator), static_cast<int>(layout.slash - layout.numerator));

    std::string text;
    for (std::size_t i = 0; i < layout.numerator; ++i)
        text += tokens[i].isDigit() ? whole.next(tokens[i].kind) : tokens[i].text;
    std::string fraction;
    for (std::size_t i = layout.numerator; i < layout.slash; ++i)
        fraction += numerator.next(tokens[i].kind);
    std::string denominator = std::to_string(ratio.denominator); // on the left of its places
    denominator.resize(std::max(denominator.size(), layout.places()), ' ');
    fraction += "/" + denominator;
    text += onlyWhole ? std::string(fraction.size(), ' ') : fraction;
    for (std::size_t i = layout.end; i < tokens.size(); ++i)
        text += tokens[i].text;
    return {toLocalDigits(text, formats), ratio.whole == 0 && ratio.numerator == 0};
}

} // namespace

RenderedNumber renderNumber(double number, const FormatSection& section, const RegionalFormats& formats)
{
    if (section.kind == FormatSection::Kind::Fraction)
        return renderFraction(std::abs(number), section, formats);
    DecimalNumber decimal = toShownDecimal(std::abs(number));
    if (!decimal.digits.empty())
        decimal.pointPosition += section.scalePower;
    return renderDecimal(std::move(decimal), section, formats);
}

} // namespace wagemill::engine
