#include "app/look/StyleSheetSkin.h"

namespace wagemill {

std::unique_ptr<SkinningControl> skinningControlFor(const std::filesystem::path& /*skinFile*/)
{
    return std::make_unique<StyleSheetSkin>();
}

} // namespace wagemill
