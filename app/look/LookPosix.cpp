#include "app/look/Look.h"

#include <QWidget>

namespace wagemill {

std::unique_ptr<SkinningControl> skinningControlFor(const std::filesystem::path& /*skinFile*/)
{
    return styleSheetSkin();
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
