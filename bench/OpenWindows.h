#pragma once

#include "entry/Form1.h"
#include "settings/Settings.h"
#include "workbook/embedded/PictureClipboard.h"

#include <QObject>
#include <QPointF>
#include <QString>
#include <QWidget>

#include <map>
#include <stdexcept>

namespace wagemill::bench {

/// Notices when a widget of a window was painted; both by name, for a window may be made after its watch. No widget's
/// name stands for all of them.
class PaintWatch : public QObject {
public:
    PaintWatch(const char* window, const char* widget = "");

    /// Handles events until the widget was painted once more and its window was handed to the platform.
    void untilPainted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QString m_window;
    QString m_widget;
    int m_paints = 0;
};

/// The one control of that name. Throws when there is none.
template <typename Widget>
Widget& control(QWidget& window, const QString& name)
{
    Widget* const found = window.findChild<Widget*>(name);
    if (found == nullptr)
        throw std::runtime_error("There is no " + name.toStdString() + ".");
    return *found;
}

/// Key down and up: a letter of ASCII, or a Qt::Key that is none.
void pressKey(QWidget& target, int key);
void pressMouse(QWidget& target, QPointF at);
void dragMouse(QWidget& target, QPointF to);
void releaseMouse(QWidget& target, QPointF at);

/// Shows a window and handles events until it is the active one and quiet.
void showActive(QWidget& window);

/// Presses "< Back" in the preview that is shown.
void leavePreview();

/// Settings in memory, where the disk is not what is measured.
class MemoryStore : public SettingsStore {
public:
    std::optional<std::string> read(std::string_view, std::string_view, std::string_view key) override;
    void write(std::string_view, std::string_view, std::string_view key, std::string_view value) override;

private:
    std::map<std::string, std::string, std::less<>> m_values;
};

/// The entry window as the program makes it, its rows filled with figures. Settings are kept in memory.
class EntryWindow {
public:
    explicit EntryWindow(int employees);
    ~EntryWindow();
    EntryWindow(const EntryWindow&) = delete;
    EntryWindow& operator=(const EntryWindow&) = delete;

    Form1& window() { return m_window; }

private:
    EmbeddedPictureClipboard m_clipboard;
    Form1 m_window;
};

} // namespace wagemill::bench
