#pragma once

#include <QImage>

#include <cstddef>
#include <span>

namespace wagemill {

/// An enhanced metafile drawn on white, at its natural size. Its device pixel ratio is `sharpness`, or less for a
/// picture that would be too large. Throws std::runtime_error, with the reason, when it cannot be drawn: always so on a
/// system that does not play metafiles.
QImage metafilePicture(std::span<const std::byte> file, double sharpness);

} // namespace wagemill
