#pragma once

#include <cstddef>
#include <span>

namespace wagemill {

/// Whether a file begins as an enhanced metafile does: its first record is the header, with the signature " EMF".
/// Format: [MS-EMF], https://learn.microsoft.com/openspecs/windows_protocols/ms-emf
bool isMetafile(std::span<const std::byte> file);

/// The natural size of an enhanced metafile in pixels at 96 dots an inch, from the frame that its header states.
struct MetafileSize {
    double width = 0;
    double height = 0;
};

/// Throws std::runtime_error, with the reason, unless the file is a whole metafile whose records follow each other up
/// to the last one and which is not empty: whoever plays the records may then walk along them.
MetafileSize checkedMetafileSize(std::span<const std::byte> file);

/// At how many pixels per natural pixel a metafile is drawn: `sharpness`, or less where the picture would be larger
/// than 14000 by 5000 pixels, the most that the preview shows. Throws std::runtime_error when it would be larger even
/// at scale 1.
double metafileScale(MetafileSize size, double sharpness);

} // namespace wagemill
