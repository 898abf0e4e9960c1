#include "app/look/StyleSheetSkin.h"

#include <QWidget>

namespace wagemill {

std::unique_ptr<SkinningControl> skinningControlFor(const std::filesystem::path& /*skinFile*/)
{
    return std::make_unique<StyleSheetSkin>();
}

void lockDrawing(QWidget& window)
{
    window.setUpdatesEnabled(false);
}

void unlockDrawing(QWidget& window)
{
    window.setUpdatesEnabled(true);
}

} // namespace wagemill
