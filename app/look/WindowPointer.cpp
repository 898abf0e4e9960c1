#include "app/look/WindowPointer.h"

#include "app/look/CursorFile.h"

#include <QEvent>
#include <QSinglePointEvent>
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
        hoverAt(static_cast<QWidget&>(*watched), static_cast<QSinglePointEvent*>(event)->position().toPoint());
    return QObject::eventFilter(watched, event);
}

/// What counts is the innermost control at the point: a control that does not take a mouse event passes it to the frame
/// or window below, which would bring its own mode.
void WindowPointer::hoverAt(QWidget& watched, QPoint point)
{
    const QWidget* control = watched.childAt(point);
    while (control != nullptr && control != &watched && !m_modeOver.contains(control))
        control = control->parentWidget();
    hover(m_modeOver.value(control != nullptr ? control : &watched));
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

/// By the attribute alone: taking the cursors and setting them anew would tell the screen each time, for every field.
void WindowPointer::hideOwnCursors()
{
    for (QWidget* control : m_window.findChildren<QWidget*>())
        if (control->testAttribute(Qt::WA_SetCursor) && control->window() == &m_window) {
            m_withOwnCursor.emplace_back(control);
            control->setAttribute(Qt::WA_SetCursor, false);
        }
}

void WindowPointer::restoreOwnCursors()
{
    for (const auto& control : m_withOwnCursor)
        if (control)
            control->setAttribute(Qt::WA_SetCursor, true);
    m_withOwnCursor.clear();
}

} // namespace wagemill
