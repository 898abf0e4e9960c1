#include "workbook/engine/text/NumberRendering.h"

#include "workbook/engine/text/FractionRendering.h"
#include "workbook/engine/text/PlaceholderDigits.h"

#include <algorithm>
#include <cmath>

namespace wagemill::engine {

namespace {

using Kind = FormatToken::Kind;
using Tokens = std::vector<FormatToken>;

bool isDigitToken(const FormatToken& token)
{
    return token.kind == Kind::Digit;
}

int countDigits(Tokens::const_iterator begin, Tokens::const_iterator end)
{
    return static_cast<int>(std::count_if(begin, end, isDigitToken));
}

/// How many placeholders stand before the point, behind it, and in the exponent.
struct Layout {
    explicit Layout(const Tokens& tokens)
    {
        const auto exponentToken = std::find_if(tokens.begin(), tokens.end(),
                                                [](const FormatToken& token) { return token.kind == Kind::Exponent; });
        const auto point = std::find_if(tokens.begin(), exponentToken,
                                        [](const FormatToken& token) { return token.kind == Kind::Point; });
        integer = countDigits(tokens.begin(), point);
        fraction = countDigits(point, exponentToken);
        exponent = countDigits(exponentToken, tokens.end());
        forced = static_cast<int>(std::count_if(
            tokens.begin(), point, [](const FormatToken& token) { return isDigitToken(token) && token.text == "0"; }));
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
          m_total(std::max(fixed.integer.size(), static_cast<std::size_t>(layout.forced))),
          m_integer(std::move(fixed.integer), std::max(layout.integer, 1)),
          m_exponent(std::to_string(std::abs(exponent)), layout.exponent),
          m_negativeExponent(exponent < 0),
          m_hasInteger(layout.integer > 0)
    {
        m_shownFraction = std::min(m_fraction.find_last_not_of('0') + 1, m_fraction.size());
    }

    std::string write()
    {
        std::string text;
        for (const FormatToken& token : m_section.tokens)
            text += token.kind == Kind::Digit ? toLocalDigits(digit(token), m_formats) : sign(token);
        return text;
    }

private:
    std::string digit(const FormatToken& token)
    {
        if (m_phase == Phase::Integer)
            return m_integer.next(token, [this](std::size_t following) { return separator(following); });
        if (m_phase == Phase::Exponent)
            return m_exponent.next(token);
        const std::size_t index = m_fractionIndex++;
        return index < m_shownFraction || token.text == "0" ? m_fraction.substr(index, 1) : padding(token);
    }

    std::string separator(std::size_t following) const
    {
        return m_section.grouped && isGroupEnd(following, m_total, m_formats) ? m_formats.groupSeparator : "";
    }

    std::string sign(const FormatToken& token)
    {
        switch (token.kind) {
        case Kind::Point:
            return point();
        case Kind::Exponent:
            m_phase = Phase::Exponent;
            return "E" + std::string(m_negativeExponent ? "-" : token.text == "+" ? "+" : "");
        case Kind::Percent:
            return m_formats.percentSign;
        default:
            return token.text;
        }
    }

    /// A code without a placeholder before the point shows the digits there all the same.
    std::string point()
    {
        std::string integer;
        if (!m_hasInteger && m_integer.size() > 0)
            integer = toLocalDigits(m_integer.next({Kind::Digit, "#"}), m_formats);
        m_phase = Phase::Fraction;
        return integer + m_formats.decimalSeparator;
    }

    enum class Phase { Integer, Fraction, Exponent };

    const FormatSection& m_section;
    const RegionalFormats& m_formats;
    std::string m_fraction;
    std::size_t m_shownFraction = 0; ///< digits up to the last one that is not zero
    std::size_t m_fractionIndex = 0;
    std::size_t m_total;
    PlaceholderDigits m_integer;
    PlaceholderDigits m_exponent;
    bool m_negativeExponent;
    bool m_hasInteger;
    Phase m_phase = Phase::Integer;
};

bool isZero(const FixedDigits& fixed)
{
    return fixed.integer.empty() && fixed.fraction.find_first_not_of('0') == std::string::npos;
}

RenderedNumber renderDecimal(const DecimalNumber& number, const FormatSection& section, const RegionalFormats& formats)
{
    const Layout layout(section.tokens);
    FixedDigits fixed = fixedDigits(number, layout.fraction);
    const bool zero = isZero(fixed) && layout.integer + layout.fraction > 0;
    return {NumberWriter(section, layout, std::move(fixed), 0, formats).write(), zero};
}

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

RenderedNumber renderScientific(const DecimalNumber& number, const FormatSection& section,
                                const RegionalFormats& formats)
{
    const Layout layout(section.tokens);
    int exponent = 0;
    DecimalNumber mantissa = number;
    if (!number.digits.empty()) {
        exponent = exponentOf(number, layout);
        mantissa.pointPosition -= exponent;
        mantissa = rounded(mantissa, layout.fraction);
        const int carried = exponentOf(mantissa, layout); // 9.99 may have become 10.0
        exponent += carried;
        mantissa.pointPosition -= carried;
    }
    FixedDigits fixed = fixedDigits(mantissa, layout.fraction);
    const bool zero = isZero(fixed);
    return {NumberWriter(section, layout, std::move(fixed), exponent, formats).write(), zero};
}

} // namespace

RenderedNumber renderNumber(double number, const FormatSection& section, const RegionalFormats& formats)
{
    if (section.kind == FormatSection::Kind::Fraction)
        return renderFraction(number, section, formats);
    DecimalNumber decimal = toShownDecimal(number);
    decimal.negative = false;
    if (!decimal.digits.empty())
        decimal.pointPosition += section.scalePower;
    return section.kind == FormatSection::Kind::Scientific ? renderScientific(decimal, section, formats)
                                                           : renderDecimal(decimal, section, formats);
}

} // namespace wagemill::engine
