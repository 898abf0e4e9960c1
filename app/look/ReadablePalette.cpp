#include "app/look/ReadablePalette.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace wagemill {

namespace {

constexpr double textContrast = 5; // thin letters with soft edges lose a tenth of it
constexpr double lineContrast = 3;
constexpr int steps = 50; ///< from a colour to black or white

/// What gives way, what is behind or before it, and the contrast.
constexpr std::tuple<QPalette::ColorRole, QPalette::ColorRole, double> pairs[] = {
    {QPalette::WindowText, QPalette::Window, textContrast},
    {QPalette::WindowText, QPalette::Button, textContrast},
    {QPalette::ButtonText, QPalette::Button, textContrast},
    {QPalette::Text, QPalette::Base, textContrast},
    {QPalette::Highlight, QPalette::HighlightedText, textContrast},
    {QPalette::Mid, QPalette::Button, lineContrast},
};

/// A part of a colour as it reaches the eye.
double linear(double part)
{
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor between(const QColor& from, const QColor& to, double part)
{
    const auto mix = [part](double one, double other) { return static_cast<float>(one + (other - one) * part); };
    return QColor::fromRgbF(mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()),
                            mix(from.blueF(), to.blueF()));
}

/// The first colour on the way to black or white that has the contrast, else that end: one of both has 4.58 to any.
QColor movedApart(const QColor& moving, const QColor& against, double wanted)
{
    const QColor end = contrastRatio(Qt::white, against) > contrastRatio(Qt::black, against) ? Qt::white : Qt::black;
    for (int step = 0; step < steps; ++step)
        if (const QColor color = between(moving, end, static_cast<double>(step) / steps);
            contrastRatio(color, against) >= wanted)
            return color;
    return end;
}

} // namespace

double contrastRatio(const QColor& one, const QColor& other)
{
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QPalette readablePalette(const QPalette& users)
{
    QPalette readable = users;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
        for (const auto& [moving, against, wanted] : pairs)
            if (const QColor color = readable.color(group, moving), background = readable.color(group, against);
                contrastRatio(color, background) < wanted)
                readable.setColor(group, moving, movedApart(color, background, wanted));
    return readable;
}

} // namespace wagemill
