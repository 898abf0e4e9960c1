#include "app/look/Controls.h"

#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionSlider>

namespace wagemill {

PushButton::PushButton(const QString& caption, Qt::Key accessKey, QWidget* parent) : QPushButton(caption, parent)
{
    setShortcut(Qt::ALT | accessKey);
    setAutoDefault(true); // outside a dialog nothing else lets Enter press a button
}

void PushButton::initStyleOption(QStyleOptionButton* option) const
{
    QPushButton::initStyleOption(option);
    option->state.setFlag(QStyle::State_MouseOver, false);
}

void ScrollBar::paintEvent(QPaintEvent* event)
{
    if (isEnabled()) {
        QScrollBar::paintEvent(event);
        return;
    }
    QPainter painter(this);
    QStyleOptionSlider option;
    initStyleOption(&option);
    option.subControls = QStyle::SC_All;
    option.subControls.setFlag(QStyle::SC_ScrollBarSlider, false);
    style()->drawComplexControl(QStyle::CC_ScrollBar, &option, &painter, this);
}

} // namespace wagemill
