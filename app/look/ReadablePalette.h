#pragma once

#include <QPalette>

namespace wagemill {

/// Contrast of two opaque colours, from 1 to 21, as the Web Content Accessibility Guidelines count it
/// (https://www.w3.org/TR/WCAG21/#dfn-contrast-ratio).
double contrastRatio(const QColor& one, const QColor& other);

/// The user's palette, with those colours changed that are too much like their background to be read: texts to a
/// contrast of 4.5 to 1, the lines around fields and frames to 3 to 1. Others stay the user's.
QPalette readablePalette(const QPalette& users);

} // namespace wagemill
