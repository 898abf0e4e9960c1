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
    /// The decimal key of the keypad enters `separator`, whatever is printed on it; empty: what the keyboard says.
    void setDecimalSeparator(const QString& separator) { m_decimalSeparator = separator; }

    /// Fills the field without a signal, as it was left in an earlier run: there is nothing to undo.
    void refillText(const QString& text);
    /// Replaces the text without a signal, so that undo brings the earlier one back.
    void replaceText(const QString& text);

signals:
    void focusGained();

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    std::function<bool()> m_leaveCheck;
    QString m_decimalSeparator;
    bool m_selectAfterPress = false; ///< the press that brought the focus would otherwise undo the selection
};

/// Keeps a mouse press elsewhere in the window from taking the focus, and from doing anything else, while the focused
/// field refuses to let it go; likewise a key that presses a button. Lives as long as the window that is its parent.
class LeaveGuard : public QObject {
    Q_OBJECT

public:
    explicit LeaveGuard(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Whether the focus may not go from the field that has it to `target`; the user has been told.
    bool isRefused(const QWidget* target) const;

    QWidget* m_window;
};

} // namespace wagemill
