#pragma once

#include <QLineEdit>
#include <functional>

namespace wagemill {

/// A text field of the entry window. It selects its whole text when it gains the focus from inside the program, and
/// asks before it lets the focus go elsewhere in the window; switching to another program asks nothing. Without the
/// focus it shows the beginning of its text, and a tool tip the whole where that is cut. Line breaks, as in a pasted
/// address, become blanks; those at the end go.
class EntryField : public QLineEdit {
    Q_OBJECT

public:
    explicit EntryField(QWidget* parent = nullptr);

    /// check  answers whether the focus may leave, and has told the user if not; without one it always may
    void setLeaveCheck(std::function<bool()> check) { m_leaveCheck = std::move(check); }
    bool mayLeave() const { return !m_leaveCheck || m_leaveCheck(); }
    /// The decimal key of the keypad enters `separator`, whatever is printed on it; empty: what the keyboard says.
    void setDecimalSeparator(const QString& separator) { m_decimalSeparator = separator; }

    /// Fills the field without a signal, as it was left in an earlier run: there is nothing to undo.
    void refillText(const QString& text);
    /// Replaces the text without a signal, so that undo brings the earlier one back.
    void replaceText(const QString& text);

signals:
    /// The field has gained the focus, is about to take a key, or refuses to let the focus go.
    void needsView();

protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    bool isCut() const;

    std::function<bool()> m_leaveCheck;
    QString m_decimalSeparator;
    bool m_selectAfterPress = false; ///< the press that brought the focus would otherwise undo the selection
};

/// Asks the focused field whether the focus may go elsewhere in the window. A mouse press that it refuses does nothing
/// at all; whatever else moves the focus, or presses a button, asks by itself. Lives as long as the window that is its
/// parent.
class LeaveGuard : public QObject {
public:
    explicit LeaveGuard(QWidget* window);

    /// Whether the focus may go from the field that has it to `target`; if not, the user has been told.
    bool allows(const QWidget& target) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* m_window;
};

} // namespace wagemill
