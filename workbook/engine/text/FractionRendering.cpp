#include "workbook/engine/text/FractionRendering.h"

#include "workbook/engine/text/PlaceholderDigits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace wagemill::engine {

namespace {

using Kind = FormatToken::Kind;
using Tokens = std::vector<FormatToken>;

/// The largest denominators searched for or taken from a code, by its places.
constexpr std::array largestDenominators = {9, 9, 99, 999, 9999};

bool isPlaceholder(const FormatToken& token)
{
    return token.kind == Kind::Digit;
}

bool isFigure(const FormatToken& token)
{
    return token.text.size() == 1 && token.text >= "0" && token.text <= "9";
}

/// Where the parts of a fraction stand in its section: whole number, numerator, "/", denominator.
struct Layout {
    explicit Layout(const Tokens& tokens)
    {
        while (slash < tokens.size() && tokens[slash].kind != Kind::Slash)
            ++slash;
        numerator = slash;
        while (numerator > 0 && isPlaceholder(tokens[numerator - 1]))
            --numerator;
        end = slash + 1;
        std::string figures;
        while (end < tokens.size() && (isPlaceholder(tokens[end]) || isFigure(tokens[end])))
            figures += tokens[end++].text;
        std::from_chars(figures.data(), figures.data() + figures.size(), denominator);
        whole = static_cast<int>(
            std::count_if(tokens.begin(), tokens.begin() + static_cast<std::ptrdiff_t>(numerator), isPlaceholder));
    }

    std::size_t places() const { return end - slash - 1; } ///< of the denominator

    int whole = 0;             ///< placeholders of the whole number
    std::size_t numerator = 0; ///< index of its first placeholder
    std::size_t slash = 0;
    std::size_t end = 0; ///< behind the denominator
    int denominator = 0; ///< fixed by the code; 0 when it is searched for
};

struct Ratio {
    std::int64_t whole = 0;
    std::int64_t numerator = 0;
    int denominator = 1;
};

/// The ratio nearest to a part of one; of equally near ones that with the smallest denominator.
Ratio nearestRatio(double part, int largest)
{
    Ratio best;
    double bestDistance = 2;
    for (int denominator = 1; denominator <= largest; ++denominator) {
        const double numerator = std::round(part * denominator);
        const double distance = std::abs(part - numerator / denominator);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = {0, static_cast<std::int64_t>(numerator), denominator};
        }
    }
    return best;
}

Ratio ratioOf(double magnitude, const Layout& layout)
{
    const double whole = std::floor(magnitude);
    const double part = magnitude - whole;
    const std::size_t places = std::min(layout.places(), largestDenominators.size() - 1);
    const int fixed = std::min(layout.denominator, largestDenominators.back());
    Ratio ratio = fixed > 0 ? Ratio{0, static_cast<std::int64_t>(std::round(part * fixed)), fixed}
                            : nearestRatio(part, largestDenominators.at(places));
    ratio.numerator += static_cast<std::int64_t>(whole) * ratio.denominator;
    if (layout.whole > 0) {
        ratio.whole = ratio.numerator / ratio.denominator;
        ratio.numerator %= ratio.denominator;
    }
    return ratio;
}

/// The denominator stands on the left of its places.
std::string leftAligned(std::string figures, std::size_t places)
{
    figures.resize(std::max(figures.size(), places), ' ');
    return figures;
}

} // namespace

RenderedNumber renderFraction(double number, const FormatSection& section, const RegionalFormats& formats)
{
    const Layout layout(section.tokens);
    const Ratio ratio = ratioOf(std::abs(number), layout);
    const bool onlyWhole = layout.whole > 0 && ratio.numerator == 0; // its fraction is left blank
    PlaceholderDigits whole(ratio.whole > 0 || onlyWhole ? std::to_string(ratio.whole) : "", layout.whole);
    PlaceholderDigits numerator(std::to_string(ratio.numerator), static_cast<int>(layout.slash - layout.numerator));

    std::string text;
    for (std::size_t i = 0; i < layout.numerator; ++i)
        text += isPlaceholder(section.tokens[i]) ? whole.next(section.tokens[i]) : section.tokens[i].text;
    std::string fraction;
    for (std::size_t i = layout.numerator; i < layout.slash; ++i)
        fraction += numerator.next(section.tokens[i]);
    fraction += "/" + leftAligned(std::to_string(ratio.denominator), layout.places());
    text += onlyWhole ? std::string(fraction.size(), ' ') : fraction;
    for (std::size_t i = layout.end; i < section.tokens.size(); ++i)
        text += section.tokens[i].text;
    return {toLocalDigits(text, formats), ratio.whole == 0 && ratio.numerator == 0};
}

} // namespace wagemill::engine
