#pragma once

#include <QLineEdit>
#include <functional>

namespace wagemill {

/// A text field of the entry window. It selects its whole text when it gains the focus from inside the program, and
/// asks before it lets the focus go elsewhere in the window; switching to another program asks nothing. Line breaks, as
/// in a pasted address, become blanks; those at the end go.
class EntryField : public QLineEdit {
    Q_OBJECT

public:
    explicit EntryField(QWidget* parent = nullptr);

    /// check  answers whether the focus may leave, and has told the user when it may not; none: it always may
    void setLeaveCheck(std::function<bool()> check) { m_leaveCheck = std::move(check); }
    bool mayLeave() const { return !m_leaveCheck || m_leaveCheck(); }

    /// Fills the field without a signal, as it was left in an earlier run: there is nothing to undo.
    void refillText(const QString& text);
    /// Replaces the text without a signal, so that undo brings the earlier one back.
    void replaceText(const QString& text);

signals:
    void focusGained();

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    std::function<bool()> m_leaveCheck;
    bool m_selectAfterPress = false; ///< the press that brought the focus would otherwise undo the selection
};

/// Keeps a mouse press elsewhere in the window from taking the focus, and from doing anything else, while the focused
/// field refuses to let it go. Lives as long as the window that is its parent.
class LeaveGuard : public QObject {
    Q_OBJECT

public:
    explicit LeaveGuard(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* m_window;
};

} // namespace wagemill
