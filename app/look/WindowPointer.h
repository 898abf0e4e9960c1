#pragma once

#include <QCursor>
#include <QObject>
#include <QPointer>

#include <filesystem>
#include <string_view>
#include <vector>

class QWidget;

namespace wagemill {

/// The hand cursor beside the program.
inline constexpr std::string_view handCursorName = "/HAND-M.CUR";

enum class PointerMode { Arrow = 0, Hourglass = 11, Hand = 99 };

/// The mouse pointer of one window and the rule of hovering: what the mouse moves over sets the mode, except while the
/// window is busy (Hourglass). In mode Arrow a control may show a cursor of its own, as the text cursor of a text
/// field; in mode Hourglass none does.
class WindowPointer : public QObject {
public:
    /// The mouse over a push button means Hand, over anything else in the window Arrow. The window owns this object.
    explicit WindowPointer(QWidget& window);

    PointerMode mode() const { return m_mode; }
    void setMode(PointerMode mode);
    /// Arrow, unless the window is busy.
    void resetPointer() { hover(PointerMode::Arrow); }

    /// The cursor of mode Hand, from a Windows cursor file; until one is loaded that mode shows the arrow.
    /// Throws std::runtime_error that names the file and the reason.
    void loadHandCursor(const std::filesystem::path& file);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void hover(PointerMode mode);
    void showModeCursor();
    void hideOwnCursors();
    void restoreOwnCursors();

    QWidget& m_window;
    PointerMode m_mode = PointerMode::Arrow;
    QCursor m_hand;
    std::vector<QPointer<QWidget>> m_withOwnCursor; ///< that do not show it while the window is busy
};

} // namespace wagemill
