#include "entry/DatePicker.h"

#include "entry/Bubble.h"

#include <QCalendarWidget>
#include <QFrame>
#include <QKeyEvent>
#include <QScreen>
#include <QTextCharFormat>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace wagemill {

namespace {

constexpr int charactersQuoted = 40; ///< of a text that is not a date

constexpr struct {
    Qt::Key key;
    int days;
    int months;
} steps[] = {{Qt::Key_Up, 1, 0}, {Qt::Key_Down, -1, 0}, {Qt::Key_PageUp, 0, 1}, {Qt::Key_PageDown, 0, -1}};

QDate toQDate(CalendarDate date)
{
    return {date.year, date.month, date.day};
}

CalendarDate toCalendarDate(QDate date)
{
    return {date.year(), date.month(), date.day()};
}

QToolButton* calendarButton(QWidget* field)
{
    auto* const button = new QToolButton(field);
    button->setObjectName(QStringLiteral("calendarButton"));
    button->setArrowType(Qt::DownArrow);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus); // a click goes to the field, as the keys do
    button->setCursor(Qt::ArrowCursor);
    button->setAccessibleName(QStringLiteral("Open the calendar"));
    button->setToolTip(QStringLiteral("Calendar (F4)"));
    return button;
}

} // namespace

/// A calendar that opens beside a field. Enter or a click takes a day; Escape or a click elsewhere closes it without.
class CalendarPopup : public QCalendarWidget {
public:
    /// pick  is called with the day that is taken
    CalendarPopup(QWidget* field, std::function<void(QDate)> pick) : QCalendarWidget(field), m_pick(std::move(pick))
    {
        setWindowFlag(Qt::Popup);
        setFont(field->font());
        setVerticalHeaderFormat(NoVerticalHeader);
        setDateEditEnabled(false); // what is typed into it would become a date without being shown whole
        nameControls();
        if (auto* const days = findChild<QFrame*>(QString::fromLatin1(daysOfMonth)))
            days->setFrameShape(QFrame::Box); // the popup has no frame of its own
        connect(this, &QCalendarWidget::currentPageChanged, this, &CalendarPopup::selectInPage);
        connect(this, &QCalendarWidget::clicked, this, &CalendarPopup::take);
        connect(this, &QCalendarWidget::activated, this, &CalendarPopup::take);
    }

    void openAt(QDate date)
    {
        calmColors(); // the desktop may have turned dark
        setSelectedDate(date);
        place();
        show();
        setFocus();
    }

private:
    /// What a screen reader says of the parts; their names are those that Qt gives them.
    void nameControls()
    {
        setAccessibleName(QStringLiteral("Calendar"));
        const std::pair<const char*, const char*> names[] = {
            {daysOfMonth, "Days of the month"},      {"qt_calendar_prevmonth", "Previous month"},
            {"qt_calendar_nextmonth", "Next month"}, {"qt_calendar_monthbutton", "Month"},
            {"qt_calendar_yearbutton", "Year"},      {"qt_calendar_yearedit", "Year"}};
        for (const auto& [control, name] : names)
            if (auto* const found = findChild<QWidget*>(QString::fromLatin1(control)))
                found->setAccessibleName(QString::fromLatin1(name));
    }

    /// The names of the days in the colours of a text, which can be read on every desktop; weekends like other days:
    /// their red is hard to read on most backgrounds.
    void calmColors()
    {
        QTextCharFormat dayNames;
        dayNames.setForeground(palette().text());
        dayNames.setBackground(palette().base());
        dayNames.setFontWeight(QFont::Bold);
        setHeaderTextFormat(dayNames);
        for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday})
            setWeekdayTextFormat(day, QTextCharFormat());
    }

    /// Below the field, above it where the screen ends.
    void place()
    {
        resize(sizeHint() + QSize(0, 2 * fontMetrics().height())); // the hint alone cuts the last week
        const QRect room = screen()->availableGeometry();
        const QRect field(parentWidget()->mapToGlobal(QPoint()), parentWidget()->size());
        const bool fitsBelow = field.bottom() + height() <= room.bottom();
        move(std::max(room.left(), std::min(field.left(), room.right() - width())),
             fitsBelow ? field.bottom() + 1 : field.top() - height());
    }

    /// The wheel and the arrows at the top show another month: Enter takes a day of that one.
    void selectInPage(int year, int month)
    {
        const QDate first(year, month, 1);
        setSelectedDate(first.addDays(std::min(selectedDate().day(), first.daysInMonth()) - 1));
    }

    void take(QDate date)
    {
        if (!isVisible()) // a click may be reported as both
            return;
        close();
        m_pick(date);
    }

    static constexpr const char* daysOfMonth = "qt_calendar_calendarview";

    std::function<void(QDate)> m_pick;
};

DatePicker::DatePicker(RegionalFormats formats, std::function<CalendarDate()> today, QWidget* parent)
    : EntryField(parent), m_formats(std::move(formats)), m_today(std::move(today)), m_button(calendarButton(this))
{
    refillDate(m_today());
    connect(this, &QLineEdit::textChanged, this, &DatePicker::readWhileTyping);
    connect(m_button, &QToolButton::clicked, this, &DatePicker::openCalendar);
}

void DatePicker::refillDate(CalendarDate date)
{
    m_date = m_settled = date;
    refillText(shown(date));
}

void DatePicker::replaceDate(CalendarDate date)
{
    m_date = m_settled = date;
    replaceText(shown(date));
    if (m_bubble != nullptr)
        m_bubble->withdraw();
}

void DatePicker::takeTypedText()
{
    const QString typed = text();
    if (typed == shown(m_date) && m_date == m_settled)
        return; // nothing was typed since
    const auto date = typedDate();
    pick(date.value_or(m_settled));
    if (!date)
        refuse(typed);
}

QString DatePicker::shown(CalendarDate date) const
{
    return QString::fromStdString(shortDateText(date, m_formats));
}

std::optional<CalendarDate> DatePicker::typedDate() const
{
    return readTypedDate(text().toStdString(), m_formats, m_today());
}

void DatePicker::readWhileTyping()
{
    if (m_bubble != nullptr)
        m_bubble->withdraw();
    if (!hasFocus()) { // dropped, or put in by an accessibility client: nobody is going to leave the field
        takeTypedText();
        return;
    }
    if (text().size() <= 1) // typed over from the start: what was whole before was meant
        m_settled = m_date;
    const auto date = typedDate();
    if (!date || !isTypedToItsEnd(text().toStdString(), m_formats))
        return;
    if (std::exchange(m_date, *date) != *date)
        emit dateChanged();
}

void DatePicker::pick(CalendarDate date)
{
    const bool changes = date != m_date;
    replaceDate(date);
    if (changes)
        emit dateChanged();
}

void DatePicker::refuse(const QString& typed)
{
    if (m_bubble == nullptr)
        m_bubble = new Bubble(*this);
    const QString quoted =
        fontMetrics().elidedText(typed, Qt::ElideMiddle, fontMetrics().averageCharWidth() * charactersQuoted);
    m_bubble->say(
        QStringLiteral("\"%1\" could not be read as a date. Type %2, for example %3. The date is still %4.")
            .arg(quoted, QString::fromStdString(dateOrder(m_formats)), shown({m_today().year, 12, 31}), shown(m_date)));
}

void DatePicker::step(int days, int months)
{
    const bool isDate = typedDate().has_value();
    takeTypedText();
    const CalendarDate date = toCalendarDate(toQDate(m_date).addDays(days).addMonths(months));
    if (isDate && date >= firstPickedDate && date <= lastPickedDate)
        pick(date);
    selectAll();
}

void DatePicker::openCalendar()
{
    // It looks for its arrows in hundreds of places on the disk, which would make every start of the program wait.
    if (m_calendar == nullptr) {
        m_calendar = new CalendarPopup(this, [this](QDate date) {
            pick(toCalendarDate(date));
            selectAll();
        });
        m_calendar->setDateRange(toQDate(firstPickedDate), toQDate(lastPickedDate));
    }
    m_calendar->openAt(toQDate(typedDate().value_or(m_date)));
}

void DatePicker::keyPressEvent(QKeyEvent* event)
{
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const auto* const stepped = std::ranges::find(steps, event->key(), [](const auto& step) { return int{step.key}; });
    if ((event->key() == Qt::Key_F4 && modifiers == Qt::NoModifier) ||
        (event->key() == Qt::Key_Down && modifiers == Qt::AltModifier))
        openCalendar();
    else if (stepped != std::end(steps) && modifiers == Qt::NoModifier)
        step(stepped->days, stepped->months);
    else
        EntryField::keyPressEvent(event);
}

void DatePicker::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::PopupFocusReason)
        takeTypedText();
    EntryField::focusOutEvent(event);
}

void DatePicker::resizeEvent(QResizeEvent* event)
{
    EntryField::resizeEvent(event);
    QRect place = rect().adjusted(2, 2, -2, -2);
    place.setLeft(place.right() - place.height() + 1);
    m_button->setGeometry(place);
    setTextMargins(0, 0, place.width(), 0);
}

} // namespace wagemill
