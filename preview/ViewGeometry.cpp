#include "preview/ViewGeometry.h"

#include "app/base/text/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

namespace wagemill {

namespace {

constexpr double pixelsPerUnit = 4;
constexpr std::int32_t widthLimit = 14000;
constexpr std::int32_t heightLimit = 5000;
constexpr double borderOfBothSides = 2;
constexpr float maxOverhangInSingleUnits = 100;
constexpr std::int16_t coarseUnit = 10;

std::int16_t unitFor(float overhang)
{
    return overhang <= maxOverhangInSingleUnits ? 1 : coarseUnit;
}

double valueAtPercent(std::int16_t percent, std::int16_t maximum)
{
    return percent / 100.0 * maximum;
}

} // namespace

float toUnits(double pixels)
{
    return static_cast<float>(pixels / pixelsPerUnit);
}

int toPixels(float units)
{
    return static_cast<int>(std::lround(static_cast<double>(units) * pixelsPerUnit));
}

std::int32_t naturalExtent(float innerExtent)
{
    return toInt32(static_cast<double>(innerExtent) - borderOfBothSides);
}

std::int32_t zoomedExtent(std::int32_t naturalExtent, float zoom)
{
    return toInt32(std::floor(static_cast<double>(naturalExtent) * static_cast<double>(zoom)));
}

bool isDrawable(std::int32_t width, std::int32_t height)
{
    return width < widthLimit && height < heightLimit;
}

ScrollRange scrollRange(float overhang)
{
    if (overhang <= 0)
        return {};
    const std::int16_t unit = unitFor(overhang);
    return {.maximum = toInt16(static_cast<double>(overhang) / unit), .unit = unit};
}

float missingOverhang(float overhang)
{
    if (overhang <= 0)
        return 0;
    const float unit = unitFor(overhang);
    return std::ceil(overhang / unit) * unit - overhang;
}

std::int16_t scrolledPosition(std::int16_t unit, std::int16_t value)
{
    const std::int32_t product = std::int32_t{unit} * value;
    if (std::abs(product) > std::numeric_limits<std::int16_t>::max())
        throw std::overflow_error("The picture cannot be scrolled by " + std::to_string(product) +
                                  " units: that exceeds the range of a scroll bar.");
    return static_cast<std::int16_t>(-product);
}

std::optional<std::int16_t> horizontalScrollValue(std::int16_t percent, std::int16_t maximum)
{
    const double value = valueAtPercent(percent, maximum);
    if (percent < 0 || value > maximum)
        return std::nullopt;
    return toInt16(value);
}

std::optional<std::int16_t> verticalScrollValue(std::int16_t percent, std::int16_t maximum)
{
    if (percent < 0)
        return std::nullopt;
    const std::int16_t value = toInt16(valueAtPercent(percent, maximum));
    if (value > maximum)
        throw std::out_of_range("The scroll bar cannot take the value " + std::to_string(value) +
                                ": it runs from 0 to " + std::to_string(maximum) + ".");
    return value;
}

float draggedPosition(float wanted, float viewportInner, float pictureOuter)
{
    return wanted > 0 ? 0 : std::max(wanted, viewportInner - pictureOuter);
}

std::int16_t scrolledPercent(std::int32_t position, std::int32_t pictureOuter, std::int32_t viewportOuter,
                             const char* axis)
{
    const std::int32_t overhang = pictureOuter - viewportOuter;
    if (overhang == 0)
        throw std::domain_error(std::string("The scroll position cannot be computed, division by zero: the picture is "
                                            "exactly as ") +
                                axis + " as the view.");
    const float percent = static_cast<float>(std::abs(position)) / static_cast<float>(overhang) * 100;
    return toInt16(toInt32(static_cast<double>(percent)));
}

} // namespace wagemill
