#pragma once

#include "app/base/text/DateText.h"
#include "entry/EntryField.h"

#include <functional>
#include <optional>

class QToolButton;

namespace wagemill {

class Bubble;
class CalendarPopup;

/// A field that holds a date: typed, stepped by the arrow and page keys, or picked from a calendar. A typed text is
/// read as a whole when the field is left, and at once where it needs no further digit. One that is not a date changes
/// nothing: the field shows its date again, and a bubble says what could not be read. Undo works on texts, as in every
/// field.
class DatePicker : public EntryField {
    Q_OBJECT

public:
    /// today  the clock, which two digits of a year are measured from
    DatePicker(RegionalFormats formats, std::function<CalendarDate()> today, QWidget* parent = nullptr);

    CalendarDate date() const { return m_date; }
    /// Shows a date without a signal, as it was left in an earlier run: there is nothing to undo.
    void refillDate(CalendarDate date);
    /// Replaces the date without a signal, so that undo brings the earlier one back.
    void replaceDate(CalendarDate date);
    /// Reads what is in the field, as leaving it does.
    void takeTypedText();

signals:
    void dateChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString shown(CalendarDate date) const;
    std::optional<CalendarDate> typedDate() const;
    void readWhileTyping();
    void pick(CalendarDate date);
    void step(int days, int months);
    void refuse(const QString& typed);
    void openCalendar();

    RegionalFormats m_formats;
    std::function<CalendarDate()> m_today;
    CalendarDate m_date;
    CalendarDate m_settled; ///< the date before the typing that goes on: an unreadable text brings it back
    QToolButton* m_button;
    CalendarPopup* m_calendar = nullptr; ///< made at its first opening
    Bubble* m_bubble = nullptr;          ///< made with the first text that could not be read
};

} // namespace wagemill
