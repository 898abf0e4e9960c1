#pragma once

#include <QPushButton>

namespace wagemill {

/// The push button of every window. Enter presses it like Space, and hovering leaves its colours alone: the window's
/// hand cursor is the only answer to the mouse.
class PushButton : public QPushButton {
    Q_OBJECT

public:
    /// caption  shown as it is; "&" marks the key that presses the button together with Alt
    explicit PushButton(const QString& caption, QWidget* parent = nullptr);

protected:
    void initStyleOption(QStyleOptionButton* option) const override;
};

} // namespace wagemill
