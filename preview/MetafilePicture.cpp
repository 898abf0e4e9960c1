#include "preview/MetafilePicture.h"

#include <stdexcept>

namespace wagemill {

QImage metafilePicture(std::span<const std::byte> /*file*/, double /*sharpness*/)
{
    throw std::runtime_error("it is an enhanced metafile, which only Windows shows");
}

} // namespace wagemill
