#pragma once

#include <QScrollBar>

namespace wagemill {

/// A scroll bar that shows no thumb while it is disabled: it looks as dead as it is.
class ScrollBar : public QScrollBar {
public:
    using QScrollBar::QScrollBar;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace wagemill
