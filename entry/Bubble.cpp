#include "entry/Bubble.h"

#include "app/look/Controls.h"

#include <algorithm>

namespace wagemill {

namespace {

constexpr int shownMilliseconds = 15'000;
constexpr int charactersInLine = 60;

} // namespace

Bubble::Bubble(QWidget& about) : QLabel(about.window()), m_about(about)
{
    setAccessibleRole<Bubble, QAccessible::Notification>(); // spoken as soon as it appears, which a label is not
    setObjectName(QStringLiteral("Bubble"));
    setFont(about.font());
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setMargin(fontMetrics().height() / 2);
    setFrameStyle(QFrame::Box);
    setBackgroundRole(QPalette::Base);
    setForegroundRole(QPalette::Text);
    setAutoFillBackground(true);
    hide();
    m_end.setSingleShot(true);
    m_end.setInterval(shownMilliseconds);
    connect(&m_end, &QTimer::timeout, this, [this] { isActiveWindow() ? withdraw() : m_end.start(); });
}

void Bubble::say(const QString& text)
{
    setText(text);
    // After the focus has moved on, which makes a screen reader break off what it says.
    QMetaObject::invokeMethod(this, &Bubble::appear, Qt::QueuedConnection);
}

/// Below the control, ending where it ends, inside the window.
void Bubble::appear()
{
    const QSize room = window()->size();
    const int width = std::min(fontMetrics().averageCharWidth() * charactersInLine, room.width());
    const int height = std::min(heightForWidth(width), room.height());
    const QPoint corner = m_about.mapTo(window(), QPoint(m_about.width() - width, m_about.height() + 1));
    setGeometry(std::clamp(corner.x(), 0, room.width() - width), std::clamp(corner.y(), 0, room.height() - height),
                width, height);
    show();
    raise();
    m_end.start();
    setAccessibleName(text());
    m_about.setAccessibleDescription(text());
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void Bubble::withdraw()
{
    if (isHidden())
        return;
    hide();
    m_about.setAccessibleDescription({});
}

} // namespace wagemill
