#include "preview/Metafile.h"

#include <stdexcept>

namespace wagemill {

SharedPicture metafilePicture(std::span<const std::byte> /*file*/)
{
    throw std::runtime_error("it is an enhanced metafile, which only Windows shows");
}

} // namespace wagemill
