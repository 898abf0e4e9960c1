#pragma once

#include "preview/PreviewPicture.h"

#include <cstddef>
#include <span>

namespace wagemill {

/// Whether a file begins as an enhanced metafile does: its first record is the header, with the signature " EMF".
/// Format: [MS-EMF], https://learn.microsoft.com/openspecs/windows_protocols/ms-emf
bool isMetafile(std::span<const std::byte> file);

/// The natural size of an enhanced metafile in pixels at 96 dots an inch, from the frame that its header states.
/// Throws std::runtime_error, with the reason, unless the file is a whole metafile whose records follow each other up
/// to the last one and which is not empty: whoever plays the records may then walk along them.
QSizeF checkedMetafileSize(std::span<const std::byte> file);

/// An enhanced metafile, played again for whatever part is painted, so that it is sharp at every scale.
/// Throws std::runtime_error, with the reason, when it cannot be played: always so on a system that plays none.
SharedPicture metafilePicture(std::span<const std::byte> file);

} // namespace wagemill
