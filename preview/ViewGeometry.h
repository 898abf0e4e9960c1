#pragma once

#include <cstdint>
#include <optional>

namespace wagemill {

// The arithmetic of the preview. Positions and extents are in the layout unit of the window, four device-independent
// pixels; a position is that of the picture's left or top edge in the viewport, zero or negative where it was scrolled.

/// Between units and pixels; these two are the only place where one becomes the other.
float toUnits(double pixels);
/// Rounded to the nearest pixel.
int toPixels(float units);

/// The natural extent of a picture in a box of this inner extent: 2 less, rounded with halves to even.
/// Throws std::overflow_error outside the 32-bit range.
std::int32_t naturalExtent(float innerExtent);

/// The natural extent at a zoom, rounded down.
std::int32_t zoomedExtent(std::int32_t naturalExtent, float zoom);

/// Whether a picture of this size is drawn: narrower than 14000 and lower than 5000.
bool isDrawable(std::int32_t width, std::int32_t height);

/// A scroll bar that runs from 0 to `maximum` and moves the picture by `unit` a step; unit 0: the bar is disabled.
struct ScrollRange {
    std::int16_t maximum = 0;
    std::int16_t unit = 0;

    bool operator==(const ScrollRange&) const = default;
};

/// The range that covers the overhang of the picture beyond the viewport, in units of 1, or of 10 beyond 100.
/// Throws std::overflow_error when that takes more than 16 bits.
ScrollRange scrollRange(float overhang);

/// How much more overhang there must be for the range to end exactly where the picture ends: 0 or more, below 10.
float missingOverhang(float overhang);

/// Where a scroll bar puts the picture: -(unit * value). Throws std::overflow_error when the product exceeds 16 bits.
std::int16_t scrolledPosition(std::int16_t unit, std::int16_t value);

/// The value that a percentage of a bar's maximum sets; nothing for a negative percentage. Horizontally a value beyond
/// the maximum is nothing too; vertically it is an error of the bar, std::out_of_range.
std::optional<std::int16_t> horizontalScrollValue(std::int16_t percent, std::int16_t maximum);
std::optional<std::int16_t> verticalScrollValue(std::int16_t percent, std::int16_t maximum);

/// The position that the pointer drags the picture to, kept inside the viewport. A picture smaller than the viewport
/// flips between its two ends.
/// viewportInner  extent inside the viewport's border
/// pictureOuter   extent with the picture's border
float draggedPosition(float wanted, float viewportInner, float pictureOuter);

/// The part of the overhang that the picture was scrolled by, in percent, rounded with halves to even; negative for a
/// picture smaller than the viewport. Both extents include the border.
/// axis  "wide" or "high", for the message
/// Throws std::domain_error when both extents are the same, std::overflow_error beyond 16 bits.
std::int16_t scrolledPercent(std::int32_t position, std::int32_t pictureOuter, std::int32_t viewportOuter,
                             const char* axis);

} // namespace wagemill
