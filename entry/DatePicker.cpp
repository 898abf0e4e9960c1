#include "entry/DatePicker.h"

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

DatePicker::DatePicker(QDate date, QWidget* parent) : QDateEdit(date, parent)
{
    setFocusPolicy(Qt::StrongFocus); // the wheel neither takes the focus from a field nor changes what is passed over
}

bool DatePicker::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call): the parent's stops at each part
}

void DatePicker::keyPressEvent(QKeyEvent* event)
{
    if (isSeparator(event->text())) {
        if (!std::exchange(m_partWasCompleted, false))
            goToNextPart();
        return;
    }
    const int part = currentSectionIndex();
    QDateEdit::keyPressEvent(event);
    m_partWasCompleted = currentSectionIndex() > part && event->text().size() == 1 && event->text()[0].isDigit();
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
