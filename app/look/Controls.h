#pragma once

#include <QAccessibleWidget>
#include <QPushButton>
#include <QScrollBar>

namespace wagemill {

/// The control, under its design name.
/// accessibleName  what a screen reader says of a control that has no caption of its own
template <typename Control>
Control* named(Control* control, const char* name, const char* accessibleName = "")
{
    control->setObjectName(QString::fromLatin1(name));
    control->setAccessibleName(QString::fromLatin1(accessibleName));
    return control;
}

/// From now on all controls of that class, and of those derived from it, have this role for a screen reader.
template <typename Control, QAccessible::Role role>
void setAccessibleRole()
{
    // Installed once, however often it is asked.
    QAccessible::installFactory([](const QString& className, QObject* object) -> QAccessibleInterface* {
        const bool isMeant = className == QLatin1String(Control::staticMetaObject.className());
        return isMeant ? new QAccessibleWidget(static_cast<QWidget*>(object), role) : nullptr;
    });
}

/// The push button of every window. Enter presses it like Space, and hovering leaves its colours alone: the window's
/// hand cursor is the only answer to the mouse.
class PushButton : public QPushButton {
    Q_OBJECT

public:
    /// caption    shown as it is
    /// accessKey  presses the button together with Alt; the caption does not show it
    PushButton(const QString& caption, Qt::Key accessKey, QWidget* parent);

protected:
    void initStyleOption(QStyleOptionButton* option) const override;
};

/// A scroll bar that shows no thumb while it is disabled: it looks as dead as it is.
class ScrollBar : public QScrollBar {
public:
    using QScrollBar::QScrollBar;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace wagemill
