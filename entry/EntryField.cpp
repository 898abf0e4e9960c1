#include "entry/EntryField.h"

#include <QApplication>
#include <QFocusEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QStyleOptionFrame>
#include <QTextDocument>
#include <QToolTip>
#include <QValidator>
#include <QWindow>

namespace wagemill {

namespace {

constexpr int besideText = 2; ///< pixels that a line edit leaves free on either side

/// Whether the focus moves within the program, not because a window or menu came or went.
bool isOwnMove(Qt::FocusReason reason)
{
    return reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason &&
           reason != Qt::MenuBarFocusReason && reason != Qt::NoFocusReason;
}

/// Whether the event is a key, or what an input method makes of keys. Shift, Ctrl and their like alone are none.
bool isTyped(const QEvent& event)
{
    if (event.type() != QEvent::KeyPress)
        return event.type() == QEvent::InputMethod;
    const int key = static_cast<const QKeyEvent&>(event).key();
    return (key < Qt::Key_Shift || key > Qt::Key_ScrollLock) && key != Qt::Key_AltGr;
}

/// The widget that a press on `pressed` would give the focus to, null when there is none.
QWidget* focusTargetOfPress(QWidget* pressed)
{
    for (QWidget* widget = pressed; widget != nullptr; widget = widget->parentWidget())
        if (widget->isEnabled() && (widget->focusPolicy() & Qt::ClickFocus) == Qt::ClickFocus)
            return widget;
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
    home(false);
}

void EntryField::replaceText(const QString& text)
{
    if (text == this->text())
        return;
    const QSignalBlocker blocker(this);
    selectAll();
    insert(text);
    home(false);
}

bool EntryField::isCut() const
{
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QRect contents = style()->subElementRect(QStyle::SE_LineEditContents, &option, this);
    const int room = contents.marginsRemoved(textMargins()).width() - 2 * besideText;
    return fontMetrics().horizontalAdvance(text()) > room;
}

bool EntryField::event(QEvent* event)
{
    if (isTyped(*event))
        emit needsView();
    if (event->type() != QEvent::ToolTip)
        return QLineEdit::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       isCut() ? Qt::convertFromPlainText(text()) : QString(), this);
    return true;
}

void EntryField::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    if (!isOwnMove(event->reason()))
        return;
    selectAll();
    m_selectAfterPress = event->reason() == Qt::MouseFocusReason;
    emit needsView();
}

void EntryField::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    if (isOwnMove(event->reason()))
        home(false);
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
    const bool isPress = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (!isPress || watched != m_window->windowHandle()) // a widget sees the press when the focus has moved already
        return false;
    const QPoint point = static_cast<QMouseEvent*>(event)->position().toPoint();
    const QWidget* const target = focusTargetOfPress(m_window->childAt(point));
    return target != nullptr && !allows(*target);
}

bool LeaveGuard::allows(const QWidget& target) const
{
    auto* const field = qobject_cast<EntryField*>(QApplication::focusWidget());
    return field == nullptr || field->window() != m_window || field == &target || field->mayLeave();
}

} // namespace wagemill
