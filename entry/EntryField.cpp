#include "entry/EntryField.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QValidator>
#include <QWindow>

namespace wagemill {

namespace {

/// Whether the focus moves by the user's will within the program, not because a window or menu came or went.
bool isOwnMove(Qt::FocusReason reason)
{
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::MouseFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

/// The widget that a press on `pressed` would give the focus to, null when there is none.
QWidget* focusTargetOfPress(QWidget* pressed)
{
    for (QWidget* widget = pressed; widget != nullptr; widget = widget->parentWidget()) {
        if (widget->isEnabled() && (widget->focusPolicy() & Qt::ClickFocus) == Qt::ClickFocus)
            return widget->focusProxy() != nullptr ? widget->focusProxy() : widget;
        if (widget->isWindow())
            break;
    }
    return nullptr;
}

/// A line break would be shown as a blank and yet be stored and break the line in the sheet.
class OneLine : public QValidator {
public:
    using QValidator::QValidator;

    State validate(QString& text, int& /*caret*/) const override
    {
        static const QRegularExpression breaksAtEnd(QStringLiteral("\\R+$"));
        static const QRegularExpression lineBreak(QStringLiteral("\\R"));
        text.remove(breaksAtEnd);
        text.replace(lineBreak, QStringLiteral(" "));
        return Acceptable;
    }
};

} // namespace

EntryField::EntryField(QWidget* parent) : QLineEdit(parent)
{
    setValidator(new OneLine(this));
}

void EntryField::refillText(const QString& text)
{
    const QSignalBlocker blocker(this);
    setText(text);
}

void EntryField::replaceText(const QString& text)
{
    if (text == this->text())
        return;
    const QSignalBlocker blocker(this);
    selectAll();
    insert(text);
}

void EntryField::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    if (!isOwnMove(event->reason()) && event->reason() != Qt::OtherFocusReason)
        return;
    selectAll();
    m_selectAfterPress = event->reason() == Qt::MouseFocusReason;
    emit focusGained();
}

void EntryField::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    // Tab and mouse have asked before the focus moved; what is left are shortcuts, which move it unasked.
    if (event->reason() == Qt::ShortcutFocusReason && !mayLeave())
        QMetaObject::invokeMethod(this, "setFocus", Qt::QueuedConnection);
}

void EntryField::keyPressEvent(QKeyEvent* event)
{
    const bool isDecimalKey = (event->modifiers() & Qt::KeypadModifier) != 0 &&
                              (event->text() == QStringLiteral(".") || event->text() == QStringLiteral(","));
    if (isDecimalKey && !m_decimalSeparator.isEmpty())
        insert(m_decimalSeparator);
    else
        QLineEdit::keyPressEvent(event);
}

void EntryField::mousePressEvent(QMouseEvent* event)
{
    QLineEdit::mousePressEvent(event);
    if (std::exchange(m_selectAfterPress, false))
        selectAll();
}

bool EntryField::focusNextPrevChild(bool next)
{
    return !mayLeave() || QLineEdit::focusNextPrevChild(next);
}

LeaveGuard::LeaveGuard(QWidget* window) : QObject(window), m_window(window)
{
    qApp->installEventFilter(this);
}

bool LeaveGuard::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // Seen at the platform's window, before the press reaches a widget: by then the focus would have moved.
        return watched == m_window->windowHandle() &&
               isRefused(focusTargetOfPress(m_window->childAt(static_cast<QMouseEvent*>(event)->position().toPoint())));
    case QEvent::Shortcut: {
        auto* const button = qobject_cast<QAbstractButton*>(watched); // it is pressed without getting the focus
        return button != nullptr && button->window() == m_window && isRefused(button);
    }
    default:
        return false;
    }
}

bool LeaveGuard::isRefused(const QWidget* target) const
{
    auto* const field = qobject_cast<EntryField*>(QApplication::focusWidget());
    return target != nullptr && field != nullptr && field->window() == m_window && target != field &&
           !field->mayLeave();
}

} // namespace wagemill
