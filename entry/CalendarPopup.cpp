#include "entry/CalendarPopup.h"

#include <QFrame>
#include <QScreen>
#include <QTextCharFormat>

#include <algorithm>
#include <utility>

namespace wagemill {

namespace {

constexpr const char* daysOfMonth = "qt_calendar_calendarview";

/// What a screen reader says of the parts of the calendar; their names are those that Qt gives them.
void nameCalendarControls(QCalendarWidget& calendar)
{
    calendar.setAccessibleName(QStringLiteral("Calendar"));
    const std::pair<const char*, const char*> names[] = {
        {daysOfMonth, "Days of the month"},      {"qt_calendar_prevmonth", "Previous month"},
        {"qt_calendar_nextmonth", "Next month"}, {"qt_calendar_monthbutton", "Month"},
        {"qt_calendar_yearbutton", "Year"},      {"qt_calendar_yearedit", "Year"}};
    for (const auto& [control, name] : names)
        if (auto* const found = calendar.findChild<QWidget*>(QString::fromLatin1(control)))
            found->setAccessibleName(QString::fromLatin1(name));
}

/// The names of the days in the colours of a text, which can be read on every desktop; weekends like other days: their
/// red is hard to read on most backgrounds.
void calmCalendarColors(QCalendarWidget& calendar)
{
    QTextCharFormat dayNames;
    dayNames.setForeground(calendar.palette().text());
    dayNames.setBackground(calendar.palette().base());
    dayNames.setFontWeight(QFont::Bold);
    calendar.setHeaderTextFormat(dayNames);
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday})
        calendar.setWeekdayTextFormat(day, QTextCharFormat());
}

} // namespace

CalendarPopup::CalendarPopup(QWidget* field) : QCalendarWidget(field)
{
    setWindowFlag(Qt::Popup);
    setFont(field->font());
    setVerticalHeaderFormat(NoVerticalHeader);
    setDateEditEnabled(false); // what is typed into it would become a date without being shown whole
    nameCalendarControls(*this);
    if (auto* const days = findChild<QFrame*>(QString::fromLatin1(daysOfMonth)))
        days->setFrameShape(QFrame::Box); // the popup has no frame of its own
    connect(this, &QCalendarWidget::currentPageChanged, this, &CalendarPopup::selectInPage);
    connect(this, &QCalendarWidget::clicked, this, &CalendarPopup::take);
    connect(this, &QCalendarWidget::activated, this, &CalendarPopup::take);
}

void CalendarPopup::openAt(QDate date)
{
    calmCalendarColors(*this); // the desktop may have turned dark
    setSelectedDate(date);
    place();
    show();
    setFocus();
}

/// Below the field, above it where the screen ends.
void CalendarPopup::place()
{
    resize(sizeHint() + QSize(0, 2 * fontMetrics().height())); // the hint alone cuts the last week
    const QRect room = screen()->availableGeometry();
    const QRect field(parentWidget()->mapToGlobal(QPoint()), parentWidget()->size());
    const bool fitsBelow = field.bottom() + height() <= room.bottom();
    move(std::max(room.left(), std::min(field.left(), room.right() - width())),
         fitsBelow ? field.bottom() + 1 : field.top() - height());
}

/// The wheel and the arrows at the top show another month: Enter takes a day of that one.
void CalendarPopup::selectInPage(int year, int month)
{
    const QDate first(year, month, 1);
    setSelectedDate(first.addDays(std::min(selectedDate().day(), first.daysInMonth()) - 1));
}

void CalendarPopup::take(QDate date)
{
    if (!isVisible()) // a click may be reported as both
        return;
    close();
    emit picked(date);
}

} // namespace wagemill
