#pragma once

#include "app/base/RegionalFormats.h"

#include <QDateEdit>

#include <vector>

namespace wagemill {

/// A date field that is one stop of the tab key; its parts are reached by the arrow keys and by typing what stands
/// between them. A whole date that is typed, up to its year of four digits, is taken as it stands: part by part, the
/// 31st would be refused while a shorter month is shown. The mouse wheel turns it only while it has the focus. Undo
/// brings earlier dates back; what is typed in one go is one step.
class DatePicker : public QDateEdit {
    Q_OBJECT

public:
    DatePicker(QDate date, RegionalFormats formats, QWidget* parent = nullptr);

    /// Shows a date without a signal, as it was left in an earlier run: there is nothing to undo.
    void refillDate(QDate date);
    /// Replaces the date without a signal, so that undo brings the earlier one back.
    void replaceDate(QDate date);

protected:
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void goToNextPart();
    void takeTypedKey(QKeyEvent* event);
    void takeWholeDate();
    void rememberChange();
    void undo();

    RegionalFormats m_formats;
    QString m_typed;                 ///< digits and separators since the focus came or another key was pressed
    bool m_partWasCompleted = false; ///< the last key filled its part, which moved on by itself
    QDate m_shown;                   ///< before the change that is going on
    std::vector<QDate> m_earlier;    ///< for undo, the latest last
    bool m_isTyping = false;         ///< the change that is going on comes from a digit or separator
    bool m_stepIsOpen = false;       ///< what is typed on belongs to the step that was remembered last
    bool m_calendarIsMade = false;
};

} // namespace wagemill
