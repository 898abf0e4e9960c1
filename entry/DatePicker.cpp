#include "entry/DatePicker.h"

#include "app/base/DateText.h"

#include <QKeyEvent>
#include <QWheelEvent>

#include <utility>

namespace wagemill {

namespace {

/// The keys that stand between the parts of a date, whichever one the user's form has.
bool isSeparator(const QString& typed)
{
    return typed.size() == 1 && QStringLiteral("/-. ").contains(typed);
}

} // namespace

DatePicker::DatePicker(QDate date, RegionalFormats formats, QWidget* parent)
    : QDateEdit(date, parent), m_formats(std::move(formats))
{
    setMinimumDate({1601, 1, 1});    // as the Windows picker
    setFocusPolicy(Qt::StrongFocus); // the wheel neither takes the focus from a field nor changes what is passed over
}

bool DatePicker::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call): the parent's stops at each part
}

void DatePicker::keyPressEvent(QKeyEvent* event)
{
    const bool isDigit = event->text().size() == 1 && event->text()[0].isDigit();
    if (isSeparator(event->text())) {
        m_typed += event->text();
        if (!std::exchange(m_partWasCompleted, false))
            goToNextPart();
        return;
    }
    const int part = currentSectionIndex();
    QDateEdit::keyPressEvent(event);
    m_partWasCompleted = currentSectionIndex() > part && isDigit;
    m_typed = isDigit ? m_typed + event->text() : QString();
    takeWholeDate();
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
}

void DatePicker::goToNextPart()
{
    if (currentSectionIndex() + 1 < sectionCount())
        setSelectedSection(sectionAt(currentSectionIndex() + 1));
}

void DatePicker::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QDateEdit::wheelEvent(event);
    else
        event->ignore();
}

} // namespace wagemill
