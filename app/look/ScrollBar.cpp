#include "app/look/ScrollBar.h"

#include <QPainter>
#include <QStyleOptionSlider>

namespace wagemill {

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
