#pragma once

#include "preview/PreviewPicture.h"

#include <cstddef>
#include <span>

namespace wagemill {

/// An enhanced metafile, played again for whatever part is painted, so that it is sharp at every scale.
/// Throws std::runtime_error, with the reason, when it cannot be played: always so on a system that plays none.
SharedPicture metafilePicture(std::span<const std::byte> file);

} // namespace wagemill
