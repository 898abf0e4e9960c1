#include "app/look/WindowPointer.h"

#include "app/base/Files.h"

#include <QApplication>
#include <QBuffer>
#include <QImageReader>
#include <QPixmap>
#include <QPushButton>
#include <QSinglePointEvent>
#include <QWindow>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace wagemill {

namespace {

constexpr int wantedSide = 32;
constexpr int headerSize = 6;
constexpr int entrySize = 16;

/// Where the directory of a cursor file says that picture `index` points, in pixels from its upper left corner: the one
/// thing that the image reader does not tell
/// ("ICO file format", https://learn.microsoft.com/previous-versions/ms997538(v=msdn.10)).
QPoint hotSpotOf(const QByteArray& file, int index)
{
    const char* const entry = file.constData() + headerSize + qsizetype{entrySize} * index;
    return {qFromLittleEndian<quint16>(entry + 4), qFromLittleEndian<quint16>(entry + 6)};
}

/// The picture that comes nearest to 32 x 32 pixels.
QCursor readCursor(QByteArray file)
{
    QBuffer buffer(&file);
    QImageReader reader(&buffer, "cur");
    const auto fitting = static_cast<int>(std::max<qsizetype>(file.size() - headerSize, 0) / entrySize);
    const int count = std::min(reader.imageCount(), fitting); // a damaged file may claim more than it holds
    QImage best;
    QPoint hotSpot;
    const auto distance = [](const QImage& image) { return std::abs(image.width() - wantedSide); };
    for (int index = 0; index < count && reader.jumpToImage(index); ++index)
        if (const QImage image = reader.read();
            !image.isNull() && (best.isNull() || distance(image) < distance(best))) {
            best = image;
            hotSpot = hotSpotOf(file, index);
        }
    if (best.isNull())
        throw std::runtime_error("it is not a cursor file, or is damaged");
    if (!best.rect().contains(hotSpot))
        throw std::runtime_error("its hot spot is outside its picture");
    return QCursor(QPixmap::fromImage(best), hotSpot.x(), hotSpot.y());
}

} // namespace

WindowPointer::WindowPointer(QWidget& window) : QObject(&window), m_window(window)
{
    qApp->installEventFilter(this);
}

bool WindowPointer::eventFilter(QObject* watched, QEvent* event)
{
    const bool isMove = event->type() == QEvent::MouseMove || event->type() == QEvent::Enter;
    if (isMove && watched == m_window.windowHandle()) { // which sees every move, whatever control is below the mouse
        const QPoint point = static_cast<QSinglePointEvent*>(event)->position().toPoint();
        const bool isOverButton = qobject_cast<QPushButton*>(m_window.childAt(point)) != nullptr;
        hover(isOverButton ? PointerMode::Hand : PointerMode::Arrow);
    }
    return false;
}

void WindowPointer::hover(PointerMode mode)
{
    if (m_mode != PointerMode::Hourglass)
        setMode(mode);
}

void WindowPointer::setMode(PointerMode mode)
{
    if (mode == m_mode)
        return;
    if (m_mode == PointerMode::Hourglass)
        restoreOwnCursors();
    m_mode = mode;
    if (m_mode == PointerMode::Hourglass)
        hideOwnCursors();
    showModeCursor();
}

void WindowPointer::loadHandCursor(const std::filesystem::path& file)
{
    const std::vector<std::byte> bytes = readBytesFromFile(file); // a failure here names the file by itself
    try {
        m_hand = readCursor({reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())});
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("Cannot use the cursor file \"" + file.string() + "\": " + error.what() + ".");
    }
    showModeCursor();
}

/// The window's children without a cursor of their own show the window's.
void WindowPointer::showModeCursor()
{
    const bool isBusy = m_mode == PointerMode::Hourglass;
    m_window.setCursor(m_mode == PointerMode::Hand ? m_hand : QCursor(isBusy ? Qt::WaitCursor : Qt::ArrowCursor));
}

/// By the attribute alone: taking the cursors and setting them again would tell the screen each time, for every field.
void WindowPointer::hideOwnCursors()
{
    for (QWidget* control : m_window.findChildren<QWidget*>())
        if (control->testAttribute(Qt::WA_SetCursor) && control->window() == &m_window) {
            m_withOwnCursor.emplace_back(control);
            control->setAttribute(Qt::WA_SetCursor, false);
        }
}

void WindowPointer::restoreOwnCursors()
{
    for (const auto& control : m_withOwnCursor)
        if (control)
            control->setAttribute(Qt::WA_SetCursor, true);
    m_withOwnCursor.clear();
}

} // namespace wagemill
