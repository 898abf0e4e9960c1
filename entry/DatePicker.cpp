#include "entry/DatePicker.h"

#include "app/base/DateText.h"

#include <QCalendarWidget>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QTextCharFormat>
#include <QWheelEvent>

#include <utility>

namespace wagemill {

namespace {

bool isDigit(const QString& typed)
{
    return typed.size() == 1 && typed[0].isDigit();
}

/// The keys that stand between the parts of a date, whichever one the user's form has.
bool isSeparator(const QString& typed)
{
    return typed.size() == 1 && QStringLiteral("/-. ").contains(typed);
}

/// Weekends in the text's own colour; the red of the calendar is hard to read on most grounds.
void calmCalendarColors(QCalendarWidget& calendar)
{
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday})
        calendar.setWeekdayTextFormat(day, QTextCharFormat());
}

/// What a screen reader says of the parts of the calendar; their names are those that Qt gives them.
void nameCalendarControls(QCalendarWidget& calendar)
{
    calendar.setAccessibleName(QStringLiteral("Calendar"));
    const std::pair<const char*, const char*> names[] = {{"qt_calendar_calendarview", "Days of the month"},
                                                         {"qt_calendar_prevmonth", "Previous month"},
                                                         {"qt_calendar_nextmonth", "Next month"},
                                                         {"qt_calendar_monthbutton", "Month"},
                                                         {"qt_calendar_yearbutton", "Year"},
                                                         {"qt_calendar_yearedit", "Year"}};
    for (const auto& [control, name] : names)
        if (auto* const found = calendar.findChild<QWidget*>(QString::fromLatin1(control)))
            found->setAccessibleName(QString::fromLatin1(name));
}

} // namespace

DatePicker::DatePicker(QDate date, RegionalFormats formats, QWidget* parent)
    : QDateEdit(date, parent), m_formats(std::move(formats))
{
    setMinimumDate({1601, 1, 1});    // as the Windows picker
    setFocusPolicy(Qt::StrongFocus); // the wheel neither takes the focus from a field nor changes what is passed over
    setDisplayFormat(QString::fromStdString(m_formats.shortDatePattern));
    setCalendarPopup(true);
    m_shown = this->date();
    connect(this, &QDateEdit::dateChanged, this, &DatePicker::rememberChange);
}

void DatePicker::refillDate(QDate date)
{
    const QSignalBlocker blocker(this);
    setDate(date);
    m_shown = this->date();
}

void DatePicker::replaceDate(QDate date)
{
    const QSignalBlocker blocker(this);
    setDate(date);
    rememberChange();
}

bool DatePicker::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call): the parent's stops at each part
}

void DatePicker::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Undo)) {
        undo();
        return;
    }
    m_isTyping = isDigit(event->text()) || isSeparator(event->text());
    m_stepIsOpen = m_stepIsOpen && m_isTyping;
    takeTypedKey(event);
    m_isTyping = false;
}

void DatePicker::takeTypedKey(QKeyEvent* event)
{
    if (isSeparator(event->text())) {
        m_typed += event->text();
        if (!std::exchange(m_partWasCompleted, false))
            goToNextPart();
        return;
    }
    const int part = currentSectionIndex();
    QDateEdit::keyPressEvent(event);
    m_partWasCompleted = currentSectionIndex() > part && isDigit(event->text());
    m_typed = isDigit(event->text()) ? m_typed + event->text() : QString();
    takeWholeDate();
}

void DatePicker::rememberChange()
{
    const QDate before = std::exchange(m_shown, date());
    if (before == m_shown)
        return;
    if (!m_stepIsOpen || !m_isTyping)
        m_earlier.push_back(before);
    m_stepIsOpen = m_isTyping;
}

void DatePicker::undo()
{
    m_typed.clear();
    m_stepIsOpen = false;
    if (m_earlier.empty())
        return;
    m_shown = m_earlier.back(); // nothing to remember
    m_earlier.pop_back();
    setDate(m_shown);
}

void DatePicker::takeWholeDate()
{
    const auto typed = readShortDate(m_typed.toStdString(), m_formats);
    if (!typed || !m_typed.endsWith(QString::number(typed->year))) // "1/5/20" may go on
        return;
    m_typed.clear();
    if (const QDate date(typed->year, typed->month, typed->day); date >= minimumDate() && date <= maximumDate())
        setDate(date); // one out of range would become the nearest in it
}

void DatePicker::focusInEvent(QFocusEvent* event)
{
    QDateEdit::focusInEvent(event);
    m_typed.clear();
    m_stepIsOpen = false;
}

void DatePicker::goToNextPart()
{
    if (currentSectionIndex() + 1 < sectionCount())
        setSelectedSection(sectionAt(currentSectionIndex() + 1));
}

void DatePicker::mousePressEvent(QMouseEvent* event)
{
    // The calendar is made here, at the first click: it looks for its arrows in hundreds of places on the disk, which
    // would make every start of the program wait.
    if (!std::exchange(m_calendarIsMade, true)) {
        nameCalendarControls(*calendarWidget());
        calmCalendarColors(*calendarWidget());
    }
    QDateEdit::mousePressEvent(event);
}

void DatePicker::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QDateEdit::wheelEvent(event);
    else
        event->ignore();
}

} // namespace wagemill
