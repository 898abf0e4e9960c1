#pragma once

#include <QLabel>
#include <QTimer>

namespace wagemill {

/// What the program did with a text, said beside its control without a question: a note below the control that takes
/// no focus and goes after a while, or when it is clicked. It stays while another program has the keyboard. A screen
/// reader speaks it as a notification, and as the description of the control when the user comes back to it.
class Bubble : public QLabel {
    Q_OBJECT

public:
    /// about  the control; the bubble is a part of its window
    explicit Bubble(QWidget& about);

    void say(const QString& text);
    void withdraw();

protected:
    void mousePressEvent(QMouseEvent* /*event*/) override { withdraw(); }

private:
    void appear();

    QWidget& m_about;
    QTimer m_end;
};

} // namespace wagemill
