#include "app/look/WindowPointer.h"

#include "app/look/CursorFile.h"

#include <QEvent>
#include <QWidget>

namespace wagemill {

WindowPointer::WindowPointer(QWidget& window) : QObject(&window), m_window(window)
{
    watch(PointerMode::Arrow, {&window});
}

void WindowPointer::watch(PointerMode mode, std::initializer_list<QWidget*> controls)
{
    for (QWidget* control : controls) {
        m_modeOver.insert(control, mode);
        control->setMouseTracking(true);
        control->installEventFilter(this);
    }
}

bool WindowPointer::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseMove || event->type() == QEvent::Enter)
        hover(m_modeOver.value(watched, m_mode));
    return QObject::eventFilter(watched, event);
}

void WindowPointer::hover(PointerMode mode)
{
    if (m_mode != PointerMode::Hourglass)
        setMode(mode);
}

void WindowPointer::resetPointer()
{
    hover(PointerMode::Arrow);
}

void WindowPointer::setMode(PointerMode mode)
{
    if (mode == m_mode)
        return;
    if (m_mode == PointerMode::Hourglass)
        restoreOwnCursors();
    m_mode = mode;
    if (m_mode == PointerMode::Hourglass)
        hideOwnCursors();
    showModeCursor();
}

void WindowPointer::loadHandCursor(const std::filesystem::path& file)
{
    m_hand = loadCursorFile(file);
    showModeCursor();
}

/// The window's children without a cursor of their own show the window's.
void WindowPointer::showModeCursor()
{
    switch (m_mode) {
    case PointerMode::Arrow:
        m_window.unsetCursor();
        break;
    case PointerMode::Hourglass:
        m_window.setCursor(Qt::WaitCursor);
        break;
    case PointerMode::Hand:
        m_window.setCursor(m_hand);
        break;
    }
}

void WindowPointer::hideOwnCursors()
{
    for (QWidget* control : m_window.findChildren<QWidget*>())
        if (control->testAttribute(Qt::WA_SetCursor) && control->window() == &m_window) {
            m_ownCursors.emplace_back(control, control->cursor());
            control->unsetCursor();
        }
}

void WindowPointer::restoreOwnCursors()
{
    for (const auto& [control, cursor] : m_ownCursors)
        if (control)
            control->setCursor(cursor);
    m_ownCursors.clear();
}

} // namespace wagemill
