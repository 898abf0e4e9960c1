#include "bench/FolderOnDisk.h"
#include "bench/OpenWindows.h"
#include "bench/PayrollJob.h"
#include "bench/Repeated.h"
#include "preview/Form2.h"
#include "settings/SqliteStore.h"
#include "workbook/engine/picture/SheetPicture.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace {

using namespace wagemill;
using namespace wagemill::bench;
using Clock = std::chrono::steady_clock;

constexpr double millisecondsInSecond = 1000;

/// The buttons of the preview and how often each is pressed: up from the natural size, down to the smallest and back.
constexpr std::array<std::pair<const char*, int>, 3> zoomRound = {
    {{"PushButton1", 11}, {"PushButton2", 14}, {"PushButton1", 3}}};
constexpr std::array<QPointF, 6> dragMoves = {{{-13, -7}, {-13, -7}, {-40, -60}, {11, 5}, {11, 5}, {40, 60}}};

void timedByItself(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(measurements)
        ->ReportAggregatesOnly();
}

/// The stubs of 1 and 25 employees, and 0 for the largest picture that the preview paints.
void pictures(benchmark::internal::Benchmark* benchmark)
{
    timedByItself(benchmark->Arg(1)->Arg(25)->Arg(0));
}

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// From the release of the mouse over "Start Creating Template" to the preview's picture on the platform's window. The
/// program's first build makes the preview window, too; that one is measured from outside.
void clickToPreview(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment temp("TEMP", folder.path().string());
    EntryWindow entry(static_cast<int>(state.range(0)));
    auto& start = control<QPushButton>(entry.window(), QStringLiteral("PushButton22"));
    PaintWatch preview("Form2", "Picture1");
    for (auto _ : state) {
        pressMouse(start, start.rect().center());
        const auto clicked = Clock::now();
        releaseMouse(start, start.rect().center());
        preview.untilPainted();
        state.SetIterationTime(secondsSince(clicked));
        leavePreview();
        showActive(entry.window());
    }
}
BENCHMARK(clickToPreview)->Arg(1)->Arg(25)->Apply(timedByItself);

/// From a key event to the value durable in the store; beside it, to the glyph painted.
void keystroke(benchmark::State& state)
{
    const FolderOnDisk folder;
    EntryWindow entry(1);
    setUserStore(std::make_unique<SqliteStore>(folder() / "settings.sqlite"));
    auto& field = control<QLineEdit>(entry.window(), QStringLiteral("txtCompanyName"));
    PaintWatch glyph("Form1", "txtCompanyName");
    pressKey(field, 'a'); // makes the store
    glyph.untilPainted();
    double painted = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        pressKey(field, 'a');
        state.SetIterationTime(secondsSince(start));
        glyph.untilPainted();
        painted += secondsSince(start);
        pressKey(field, Qt::Key_Backspace);
        glyph.untilPainted();
    }
    state.counters["painted_ms"] =
        benchmark::Counter(painted * millisecondsInSecond, benchmark::Counter::kAvgIterations);
}
BENCHMARK(keystroke)->Apply(timedByItself);

/// The preview window, shown with a picture.
class Preview {
public:
    explicit Preview(drawing::Drawing picture)
    {
        m_window.setPicture(drawingPicture(std::move(picture)));
        showActive(m_window);
    }

    QWidget& box() { return control<QWidget>(m_window, QStringLiteral("Picture1")); }

    /// Seconds from the click to the painted picture; 0 where the limits leave the picture as it is.
    double zoom(const char* button)
    {
        const QSize before = box().size();
        const auto start = Clock::now();
        control<QPushButton>(m_window, QString::fromLatin1(button)).click();
        if (box().size() == before)
            return 0;
        m_pictureWatch.untilPainted();
        return secondsSince(start);
    }

    /// The slowest of some moves to and fro, in seconds from the move of the mouse to the picture painted in its place.
    double drag()
    {
        double slowest = 0;
        pressMouse(box(), grip);
        for (const QPointF move : dragMoves)
            slowest = std::max(slowest, moved(grip + move));
        releaseMouse(box(), grip);
        return slowest;
    }

private:
    static constexpr QPointF grip = {150, 150};

    /// 0 where the limits leave the picture in its place.
    double moved(QPointF to)
    {
        const QPoint before = box().pos();
        const auto start = Clock::now();
        dragMouse(box(), to);
        if (box().pos() == before)
            return 0;
        m_windowWatch.untilPainted();
        return secondsSince(start);
    }

    Form2 m_window{[] {}};
    PaintWatch m_pictureWatch{"Form2", "Picture1"};
    PaintWatch m_windowWatch{"Form2"}; ///< a picture moved within view is not painted, but what it uncovers
};

drawing::Drawing stubs(int employees)
{
    const engine::Book book = filledBook(employees);
    const engine::Sheet& sheet = *book.sheets[book.activeSheet];
    return engine::sheetPicture(book, sheet, sheet.usedRange().value(), {});
}

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
    const drawing::Drawing stub = stubs(1);
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

drawing::Drawing pictureOf(const benchmark::State& state)
{
    return state.range(0) == 0 ? largestPicture() : stubs(static_cast<int>(state.range(0)));
}

/// The slowest of all steps that the buttons offer: up from the natural size, down to the smallest and back.
void zoomStep(benchmark::State& state)
{
    Preview preview(pictureOf(state));
    for (auto _ : state) {
        double slowest = 0;
        for (const auto& [button, steps] : zoomRound)
            for (int step = 0; step < steps; ++step)
                slowest = std::max(slowest, preview.zoom(button));
        state.SetIterationTime(slowest);
    }
}
BENCHMARK(zoomStep)->Apply(pictures);

/// The slowest of all moves with the picture held, at every zoom.
void dragMove(benchmark::State& state)
{
    Preview preview(pictureOf(state));
    for (auto _ : state) {
        double slowest = 0;
        for (const auto& [button, steps] : zoomRound)
            for (int step = 0; step < steps; ++step) {
                preview.zoom(button);
                slowest = std::max(slowest, preview.drag());
            }
        state.SetIterationTime(slowest);
    }
}
BENCHMARK(dragMove)->Apply(pictures);

} // namespace
