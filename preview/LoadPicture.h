#pragma once

#include "preview/PreviewPicture.h"

#include <filesystem>

namespace wagemill {

/// A picture file, known by its content whatever its name: a drawing, on Windows an enhanced metafile, else a bitmap. A
/// bitmap of more than 96 dots an inch, up to 384, is that much sharper rather than larger. Paper is white where a
/// picture is transparent.
/// Throws std::runtime_error that names the file and the reason.
SharedPicture loadPicture(const std::filesystem::path& file);

} // namespace wagemill
