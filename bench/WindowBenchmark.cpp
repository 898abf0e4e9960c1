#include "bench/PayrollJob.h"
#include "preview/Form2.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace {

using namespace wagemill;
using namespace wagemill::bench;
using Clock = std::chrono::steady_clock;

/// The buttons of the preview and how often each is pressed: up from the natural size, down to the smallest and back.
constexpr std::array<std::pair<const char*, int>, 3> zoomRound = {
    {{"PushButton1", 11}, {"PushButton2", 14}, {"PushButton1", 3}}};
constexpr std::array<QPointF, 6> dragMoves = {{{-13, -7}, {-13, -7}, {-40, -60}, {11, 5}, {11, 5}, {40, 60}}};

/// The stubs of 1 and 25 employees, and 0 for the largest picture that the preview paints.
void pictures(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1)
        ->Arg(25)
        ->Arg(0)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(measurements)
        ->ReportAggregatesOnly();
}

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Counts how often widgets are painted: all of a window, or one of them.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(const QWidget& watched) : m_watched(watched)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    /// Handles events until the next painting was handed to the platform.
    void untilPainted()
    {
        const int before = m_paints;
        while (m_paints == before)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

protected:
    bool eventFilter(QObject* painted, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && painted->isWidgetType() &&
            (painted == &m_watched || static_cast<QWidget*>(painted)->window() == &m_watched))
            ++m_paints;
        return false;
    }

private:
    const QWidget& m_watched;
    int m_paints = 0;
};

void sendMouse(QWidget& target, QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held)
{
    QMouseEvent event(type, at, target.mapToGlobal(at), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&target, &event);
}

/// The preview window, shown with a picture.
class Preview {
public:
    explicit Preview(drawing::Drawing picture)
    {
        m_window.setPicture(drawingPicture(std::move(picture)));
        m_window.show();
        m_window.activateWindow();
        QEventLoop quiet; // all that comes with a new window is over by then
        QTimer::singleShot(std::chrono::milliseconds(200), &quiet, &QEventLoop::quit);
        quiet.exec();
    }

    /// Seconds from the click to the painted picture; 0 where the limits leave the picture as it is.
    double zoom(const char* button)
    {
        auto* const pressed = m_window.findChild<QPushButton*>(QString::fromLatin1(button));
        const QSize before = m_box.size();
        const auto start = Clock::now();
        pressed->click();
        if (m_box.size() == before)
            return 0;
        m_pictureWatch.untilPainted();
        return secondsSince(start);
    }

    /// The slowest of some moves to and fro, in seconds from the move of the mouse to the picture painted in its place.
    double drag()
    {
        double slowest = 0;
        sendMouse(m_box, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
        for (const QPointF move : dragMoves)
            slowest = std::max(slowest, moved(grip + move));
        sendMouse(m_box, QEvent::MouseButtonRelease, grip, Qt::LeftButton, Qt::NoButton);
        return slowest;
    }

private:
    static constexpr QPointF grip = {150, 150};

    /// 0 where the limits leave the picture in its place.
    double moved(QPointF to)
    {
        const QPoint before = m_box.pos();
        const auto start = Clock::now();
        sendMouse(m_box, QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
        if (m_box.pos() == before)
            return 0;
        m_windowWatch.untilPainted();
        return secondsSince(start);
    }

    Form2 m_window{[] {}};
    QWidget& m_box = *m_window.findChild<QWidget*>(QStringLiteral("Picture1"));
    PaintWatch m_pictureWatch{m_box};
    PaintWatch m_windowWatch{m_window}; ///< a picture moved within view is not painted, but what it uncovers
};

void move(drawing::Rect& rect, double right, double down)
{
    rect.left += right;
    rect.top += down;
}

/// Stubs beside and below each other up to the largest size that the preview paints.
drawing::Drawing largestPicture()
{
    constexpr double width = 13990 * 4;
    constexpr double height = 4990 * 4;
    const drawing::Drawing stub = stubPicture(filledBook(1));
    drawing::Drawing sheet;
    sheet.fonts = stub.fonts;
    for (; sheet.height + stub.height < height; sheet.height += stub.height)
        for (sheet.width = 0; sheet.width + stub.width < width; sheet.width += stub.width) {
            for (drawing::Fill fill : stub.fills) {
                move(fill.area, sheet.width, sheet.height);
                sheet.fills.push_back(fill);
            }
            for (const drawing::Line& line : stub.lines)
                sheet.lines.push_back({line.x1 + sheet.width, line.y1 + sheet.height, line.x2 + sheet.width,
                                       line.y2 + sheet.height, line.style, line.color});
            for (drawing::Text text : stub.texts) {
                move(text.cell, sheet.width, sheet.height);
                move(text.room, sheet.width, sheet.height);
                sheet.texts.push_back(std::move(text));
            }
        }
    return sheet;
}

/// The slowest of what `work` takes at all steps of the round.
void slowest(benchmark::State& state, double (*work)(Preview& preview, const char* button))
{
    const auto employees = static_cast<int>(state.range(0));
    Preview preview(employees == 0 ? largestPicture() : stubPicture(filledBook(employees)));
    for (auto _ : state) {
        double seconds = 0;
        for (const auto& [button, steps] : zoomRound)
            for (int step = 0; step < steps; ++step)
                seconds = std::max(seconds, work(preview, button));
        state.SetIterationTime(seconds);
    }
}

void zoomStep(benchmark::State& state)
{
    slowest(state, [](Preview& preview, const char* button) { return preview.zoom(button); });
}
BENCHMARK(zoomStep)->Apply(pictures);

/// With the picture held, at every zoom.
void dragMove(benchmark::State& state)
{
    slowest(state, [](Preview& preview, const char* button) {
        preview.zoom(button);
        return preview.drag();
    });
}
BENCHMARK(dragMove)->Apply(pictures);

} // namespace
