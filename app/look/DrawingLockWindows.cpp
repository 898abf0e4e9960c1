#include "app/look/DrawingLock.h"

#include <QWidget>

#include <windows.h>

namespace wagemill {

void lockDrawing(QWidget& window)
{
    ::LockWindowUpdate(reinterpret_cast<HWND>(window.winId())); // a window identifier of Qt is the handle
}

void unlockDrawing(QWidget& /*window*/)
{
    ::LockWindowUpdate(nullptr);
}

} // namespace wagemill
