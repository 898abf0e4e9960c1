#include "app/look/WindowPlace.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

#include <optional>

namespace wagemill {

namespace {

class PlaceKeeper : public QObject {
public:
    explicit PlaceKeeper(QWidget& window) : QObject(&window), m_window(window) { window.installEventFilter(this); }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Hide && !event->spontaneous())
            m_place = m_window.geometry().topLeft();
        else if (event->type() == QEvent::Show && !event->spontaneous() && m_place)
            m_window.windowHandle()->setPosition(*m_place);
        return false;
    }

private:
    QWidget& m_window;
    std::optional<QPoint> m_place; ///< inside its frame; none until the window was hidden
};

} // namespace

void keepPlace(QWidget& window)
{
    new PlaceKeeper(window);
}

} // namespace wagemill
