#include "app/look/DrawingLock.h"

#include <QWidget>

namespace wagemill {

void lockDrawing(QWidget& window)
{
    window.setUpdatesEnabled(false);
}

void unlockDrawing(QWidget& window)
{
    window.setUpdatesEnabled(true);
}

} // namespace wagemill
