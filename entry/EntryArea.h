#pragma once

#include <QScrollArea>

namespace wagemill {

/// Holds the content of the entry window, centred where there is room for more. Where the screen is too small for it
/// the content scrolls, and the control that has the focus is kept in view.
class EntryArea : public QScrollArea {
public:
    EntryArea(QWidget* content, QWidget* parent);

    /// Room for the content without scroll bars.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    /// As much of it as `available` holds, with the scroll bars that this takes.
    QSize sizeWithin(QSize available) const;
    /// Scrolls until a control of the content is in view.
    void showWhole(const QWidget& control);

protected:
    bool focusNextPrevChild(bool next) override;
};

} // namespace wagemill
