#pragma once

#include "app/base/Interface.h"

#include <QString>

#include <cstdint>
#include <filesystem>
#include <memory>

class QWidget;

namespace wagemill {

/// The caption of every window.
inline constexpr QLatin1String productTitle("Wagemill");
/// The phrase that the application title is cut from.
inline constexpr QLatin1String productPhrase("Wagemill Payroll Workbook Creator");

/// What draws a skin on a window; the skin lasts as long as this object. On Windows its members are called by dispatch
/// identifier, given at each.
class SkinningControl : public Interface {
public:
    /// 2. Throws std::runtime_error that names the file and the reason.
    virtual void loadSkin(const std::filesystem::path& skinFile) = 0;
    /// 1. Bit 0 set: the skin covers the controls of a window.
    virtual std::int32_t options() const = 0;
    virtual void setOptions(std::int32_t options) = 0;
    /// 5 and 10: whether the skin also covers what is created later.
    virtual void setFlag(int dispatchIdentifier, bool value) = 0;
    /// 3. The window that the platform knows under `windowHandle` takes the skin.
    virtual void applyWindow(std::uintptr_t windowHandle) = 0;
};

/// Stands in for the skinning control: the skin file is a Qt style sheet, UTF-8, at most one mebibyte.
std::unique_ptr<SkinningControl> styleSheetSkin();
/// What can draw that skin: a style sheet on every platform, another file where the skinning control is installed that
/// it is meant for. Null where nothing can.
std::unique_ptr<SkinningControl> skinningControlFor(const std::filesystem::path& skinFile);
/// For the skin file beside the program.
std::unique_ptr<SkinningControl> createSkinningControl();

/// The main window's skin and neutral background. Without a skin file beside the program nothing happens at all.
/// Throws std::runtime_error when the skin file cannot be used; the window then keeps the neutral background.
/// skin  null: the window is plain
void applyMainWindowSkin(QWidget& mainWindow, SkinningControl* skin);

/// The neutral background, the palette's button colour, on a window and its labels, option buttons, check boxes and
/// frames. A picture box keeps its own colour: it may be a drawing surface.
void applyPlainBackground(QWidget& window);

/// The design font of all windows; its size stays the user's.
void applyDesignFont(QWidget& window);

/// What message boxes show that name no title of their own becomes `title` without its last word, and without further
/// words while it is longer than 40 characters.
/// Throws std::invalid_argument when there is no blank left to cut at; the application title then stays as it was.
void makeApplicationTitle(QString title);

/// From now on a window that was hidden comes back where it was, not where the window manager would put a new one.
void keepPlace(QWidget& window);

/// Holds back the drawing of a window and of all in it; one window at a time. Where the platform refuses, the window is
/// drawn as ever: nothing fails.
void lockDrawing(QWidget& window);
/// The locked window draws again, at once what it has missed.
void unlockDrawing(QWidget& window);

} // namespace wagemill
