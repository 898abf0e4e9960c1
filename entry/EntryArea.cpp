#include "entry/EntryArea.h"

#include "app/look/Controls.h"

#include <QApplication>
#include <QLayout>
#include <QScrollBar>

namespace wagemill {

EntryArea::EntryArea(QWidget* content, QWidget* parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // the tab key goes to the fields only
    content->layout()->setSizeConstraint(QLayout::SetFixedSize);
    setAlignment(Qt::AlignCenter);
    setWidget(content);
    // Qt's own interface to screen readers ends the program when it is asked for a child beyond the last, as happens
    // when a scroll bar has gone since the children were counted.
    setAccessibleRole<QScrollArea, QAccessible::Client>();
    content->setAutoFillBackground(false); // the window's own background shows
    viewport()->setAutoFillBackground(false);
    horizontalScrollBar()->setAccessibleName(QStringLiteral("Scroll the window left and right"));
    verticalScrollBar()->setAccessibleName(QStringLiteral("Scroll the window up and down"));
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* /*left*/, QWidget* entered) {
        if (entered != nullptr && widget()->isAncestorOf(entered))
            showWhole(*entered);
    });
}

void EntryArea::showWhole(const QWidget& control)
{
    const QRect place(control.mapTo(widget(), QPoint()), control.size());
    ensureVisible(place.center().x(), place.center().y(), place.width() / 2 + 1, place.height() / 2 + 1);
}

/// The parent's would be content with showing where the caret is.
bool EntryArea::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call)
}

QSize EntryArea::sizeHint() const
{
    return widget()->sizeHint() + QSize(1, 1); // at 150 % a window may come out a part of a pixel smaller
}

QSize EntryArea::minimumSizeHint() const
{
    return sizeHint().boundedTo({320, 200});
}

QSize EntryArea::sizeWithin(QSize available) const
{
    QSize wanted = sizeHint();
    if (wanted.height() > available.height())
        wanted.rwidth() += verticalScrollBar()->sizeHint().width();
    if (wanted.width() > available.width())
        wanted.rheight() += horizontalScrollBar()->sizeHint().height();
    return wanted.boundedTo(available);
}

} // namespace wagemill
