#include "app/look/AutomationSkin.h"

#include <QWidget>

#include <windows.h>

#include <stdexcept>

namespace wagemill {

std::unique_ptr<SkinningControl> skinningControlFor(const std::filesystem::path& skinFile)
{
    auto styleSheet = styleSheetSkin();
    try {
        styleSheet->loadSkin(skinFile);
        return styleSheet;
    } catch (const std::runtime_error&) {
        // It may be meant for the skinning control.
    }
    try {
        return std::make_unique<AutomationSkin>(automation::Dispatch(L"XtremeSkinFramework.SkinFramework", CLSCTX_ALL));
    } catch (const automation::CallFailure&) {
        return nullptr; // not installed, as on most machines
    }
}

void lockDrawing(QWidget& window)
{
    ::LockWindowUpdate(reinterpret_cast<HWND>(window.winId())); // a window identifier of Qt is the handle
}

void unlockDrawing(QWidget& /*window*/)
{
    ::LockWindowUpdate(nullptr);
}

} // namespace wagemill
