#include "preview/Form2.h"

#include "app/base/Files.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QImage>
#include <QLayout>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <tuple>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file)
{
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

constexpr int unit = 4; ///< pixels of a layout unit

/// A picture whose sheet, with its hairline, is so many units large.
SharedPicture plainPicture(QSize units, const QColor& color)
{
    QImage picture(units * unit - QSize(2, 2), QImage::Format_RGB32);
    picture.fill(color);
    return bitmapPicture(picture);
}

class Form2Test : public testing::Test {
protected:
    Form2Test()
    {
        setProgramFolder(folder.path());
        setWindowEventPump([] { QCoreApplication::processEvents(); });
        std::ofstream(workbook()) << "data";
        form.setExcelFile(workbook());
        form.layout()->activate();
        const QSize partOfUnit(viewport().width() % unit, viewport().height() % unit);
        form.setFixedSize(form.size() - partOfUnit); // so that cases can be in whole units
        form.layout()->setGeometry(form.rect());
    }
    ~Form2Test() override { setWindowEventPump({}); }

    fs::path workbook() const { return folder / "kvarno01234567.xls"; }

    template <typename Control>
    Control& control(const char* name)
    {
        return *form.findChild<Control*>(QString::fromLatin1(name));
    }
    QWidget& picture() { return control<QWidget>("Picture1"); }
    QWidget& viewport() { return control<QWidget>("Picture2"); }
    QScrollBar& horizontal() { return control<QScrollBar>("HScroll1"); }
    QScrollBar& vertical() { return control<QScrollBar>("VScroll1"); }

    /// Opens the window with a picture that overhangs the viewport by so many units.
    void open(QSize overhang) { openWith(plainPicture(viewport().size() / unit + overhang, Qt::red)); }
    void openWith(const SharedPicture& shown)
    {
        form.setPicture(shown);
        form.show();
        form.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    }
    /// The size of a picture at so many quarters of its natural size.
    static QSize zoomed(QSize natural, int quarters)
    {
        const QSize units = natural / unit * quarters;
        return QSize(units.width() / 4, units.height() / 4) * unit;
    }
    void click(const char* button, int times = 1)
    {
        for (int count = 0; count < times; ++count)
            QTest::mouseClick(&control<QAbstractButton>(button), Qt::LeftButton);
    }

    /// The mouse as the window system reports it, at a point of the viewport.
    QPoint inWindow(QPoint inViewport) { return viewport().mapTo(&form, inViewport); }
    void press(QPoint at) { QTest::mousePress(form.windowHandle(), Qt::LeftButton, {}, inWindow(at)); }
    void moveTo(QPoint at) { QTest::mouseMove(form.windowHandle(), inWindow(at)); }
    void release(QPoint at) { QTest::mouseRelease(form.windowHandle(), Qt::LeftButton, {}, inWindow(at)); }

    TemporaryFolder folder;
    RecordedMessages messages;
    fs::path fileName; ///< that the user gives to the saved file; empty: cancels
    int waysBack = 0;
    Form2 form{[this] { ++waysBack; },
               [](const fs::path& file) -> drawing::PrintableSheet {
                   throw std::runtime_error("No paper for " + file.filename().string());
               },
               [this](const std::string& title, const std::string& filter, QWidget&) {
                   EXPECT_EQ(title, "Save File");
                   EXPECT_EQ(filter, "Excel Files (*.xls)|*.xls|");
                   return fileName;
               }};
};

TEST_F(Form2Test, SetsRangesWhenFirstActive)
{
    open({60, 1245});
    for (const char* button : {"PushButton2", "PushButtonPrint", "PushButton6", "PushButton8"})
        EXPECT_EQ(control<QWidget>(button).mapTo(&form, QPoint()).y(),
                  control<QWidget>("PushButton1").mapTo(&form, QPoint()).y());
    EXPECT_EQ(horizontal().maximum(), 60);
    EXPECT_EQ(vertical().maximum(), 125) << "the window is made 5 units lower";
    EXPECT_EQ(horizontal().pageStep(), viewport().width() / unit);
    EXPECT_EQ(vertical().pageStep(), viewport().height() / unit / 10);
    EXPECT_TRUE(horizontal().isEnabled() && vertical().isEnabled());
    horizontal().setValue(7);
    vertical().setValue(5);
    EXPECT_EQ(picture().pos(), QPoint(-7, -50) * unit);
    vertical().setValue(125);
    EXPECT_EQ(picture().geometry().bottom(), viewport().rect().bottom());
    vertical().setSliderDown(true); // the picture follows only when the thumb is let go
    vertical().setSliderPosition(50);
    EXPECT_EQ(picture().geometry().bottom(), viewport().rect().bottom());
    vertical().setSliderDown(false);
    EXPECT_EQ(picture().y(), -500 * unit);
}

TEST_F(Form2Test, SetUpWaitsForAPicture)
{
    openWith(nullptr); // of a build that failed
    EXPECT_FALSE(picture().isVisible());
    EXPECT_FALSE(vertical().isEnabled());
    QWidget entryWindow;
    entryWindow.show();
    form.hide();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&entryWindow));
    open({20, 200});
    EXPECT_TRUE(picture().isVisible());
    EXPECT_EQ(horizontal().maximum(), 20);
    vertical().setValue(vertical().maximum());
    EXPECT_EQ(picture().y(), -200 * unit);
}

TEST_F(Form2Test, ZoomsInQuartersFromTheOriginAndKeepsTheRanges)
{
    open({100, 100});
    const QSize natural = picture().size();
    vertical().setValue(50);
    click("PushButton1");
    QEvent comingBack(QEvent::WindowActivate);
    QApplication::sendEvent(&form, &comingBack);
    EXPECT_EQ(picture().geometry(), QRect(QPoint(0, 0), zoomed(natural, 5)));
    EXPECT_EQ(vertical().value(), 0);
    EXPECT_EQ(vertical().maximum(), 100);
    click("PushButton2", 7); // 1, 0.75, 0.5, 0.25, and no further
    EXPECT_EQ(picture().size(), zoomed(natural, 1));
    EXPECT_FALSE(horizontal().isEnabled());
    EXPECT_EQ(horizontal().maximum(), 100);
    click("PushButton1", 20);
    EXPECT_EQ(picture().size(), zoomed(natural, 15));
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(Form2Test, ABarThatZoomingAloneEnablesMovesNothing)
{
    open({0, -10});
    EXPECT_FALSE(horizontal().isEnabled() || vertical().isEnabled());
    click("PushButton1");
    ASSERT_TRUE(vertical().isEnabled());
    vertical().setValue(50);
    EXPECT_EQ(picture().pos(), QPoint(0, 0));
    click("PushButton2");
    EXPECT_FALSE(horizontal().isEnabled()) << "the picture is as wide as the view";
}

TEST_F(Form2Test, TooLargeAZoomFallsBackToOneAndDrawsNothing)
{
    openWith(plainPicture({4000, 20}, Qt::red));
    click("PushButton1", 9);
    EXPECT_EQ(picture().width(), 13000 * unit);
    click("PushButton1"); // 14000
    EXPECT_EQ(picture().width(), 13000 * unit);
    click("PushButton1");
    EXPECT_EQ(picture().width(), 5000 * unit);
}

TEST_F(Form2Test, DraggingMovesThePictureInsideTheViewportAndReleasingSnapsToTheBars)
{
    open({1000, 1000});
    press({300, 300});
    moveTo({286, 268});
    EXPECT_EQ(picture().pos(), QPoint(-14, -32));
    EXPECT_EQ(vertical().value(), 0);
    moveTo({-5000, 2000}); // beyond the window: the picture keeps receiving the moves
    EXPECT_EQ(picture().pos(), QPoint(-1000, 0) * unit);
    moveTo({44, 268});
    EXPECT_EQ(picture().pos(), QPoint(-256, -32));
    release({44, 268});
    EXPECT_EQ(horizontal().value(), 6); // 6.4 percent
    EXPECT_EQ(picture().pos(), QPoint(-60, -10) * unit);
    moveTo({10, 10});
    EXPECT_EQ(picture().pos(), QPoint(-60, -10) * unit);
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(Form2Test, ZoomingTakesAPictureBackFromWhereADragLeftIt)
{
    open({-25, -25});
    press({50, 50});
    moveTo({49, 49});
    release({49, 49});
    EXPECT_EQ(picture().pos(), QPoint(100, 100)) << "a small picture flips to its other end";
    click("PushButton2");
    EXPECT_EQ(picture().pos(), QPoint(0, 0));
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(Form2Test, ReleasingAPictureExactlyAsWideAsTheViewIsReported)
{
    open({0, 50});
    press({10, 10});
    moveTo({10, 0});
    release({10, 0});
    EXPECT_EQ(messages.failedSteps(), std::vector<int>{20});
    EXPECT_EQ(vertical().value(), 2); // 5 percent of 50; the steps after it still ran
}

TEST_F(Form2Test, ALaterPictureReplacesTheOneThatZoomingDrawsFrom)
{
    open({100, 100});
    click("PushButton1");
    vertical().setValue(20);
    form.setPicture(plainPicture({100, 50}, Qt::blue));
    EXPECT_EQ(picture().geometry(), QRect(QPoint(0, 0), QSize(125, 62) * unit)) << "at the zoom of now";
    EXPECT_EQ(picture().grab().toImage().pixelColor(490, 240), QColor(Qt::blue));
    click("PushButton1");
    EXPECT_EQ(picture().size(), QSize(150, 75) * unit);
    EXPECT_EQ(picture().grab().toImage().pixelColor(300, 150), QColor(Qt::blue));
    EXPECT_EQ(vertical().maximum(), 100);
}

TEST_F(Form2Test, KeysReachAndPressEverythingAndScrollAndZoomWhereverTheFocusIs)
{
    open({2000, 2000});
    const QSize natural = picture().size();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(picture().size(), zoomed(natural, 5));
    for (const char* next : {"PushButton2", "PushButtonPrint", "PushButton6", "PushButton8", "HScroll1", "VScroll1",
                             "PushButton1", "PushButton2"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget()->objectName(), next);
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(picture().size(), natural);
    for (const char* focus : {"PushButton8", "HScroll1"}) {
        control<QWidget>(focus).setFocus();
        const std::pair<Qt::Key, QPoint> scrolls[] = {
            {Qt::Key_Down, {0, -1}},     {Qt::Key_Up, {0, 1}},     {Qt::Key_Right, {-1, 0}}, {Qt::Key_Left, {1, 0}},
            {Qt::Key_PageDown, {0, -1}}, {Qt::Key_PageUp, {0, 1}}, {Qt::Key_End, {0, -1}},   {Qt::Key_Home, {0, 1}}};
        for (const auto& [key, moved] : scrolls) {
            const QPoint before = picture().pos();
            QTest::keyClick(QApplication::focusWidget(), key);
            const QPoint by = picture().pos() - before;
            EXPECT_EQ(QPoint((by.x() > 0) - (by.x() < 0), (by.y() > 0) - (by.y() < 0)), moved) << focus << " " << key;
            EXPECT_EQ(QApplication::focusWidget()->objectName(), focus);
        }
        EXPECT_EQ(picture().pos(), QPoint(0, 0));
        for (const auto& [key, quarters] :
             {std::pair(Qt::Key_Plus, 5), {Qt::Key_Equal, 6}, {Qt::Key_Minus, 5}, {Qt::Key_Minus, 4}}) {
            QTest::keyClick(QApplication::focusWidget(), key, Qt::ControlModifier);
            EXPECT_EQ(picture().size(), zoomed(natural, quarters)) << focus;
        }
    }
}

TEST_F(Form2Test, TheWheelScrollsAndWithCtrlItZoomsAStepANotch)
{
    open({400, 400});
    const auto turnWheelBy = [this](int eighthsOfDegree, Qt::KeyboardModifiers modifiers) {
        const QPointF middle = viewport().rect().center();
        QWheelEvent turn(middle, viewport().mapToGlobal(middle), {}, {0, eighthsOfDegree}, {}, modifiers, {}, false);
        QApplication::sendEvent(&form, &turn); // where it comes to when nothing under the mouse takes it
    };
    const QSize natural = picture().size();
    for (const auto& [turn, quarters] :
         {std::pair(120, 5), {60, 5}, {60, 6}, {-240, 4}, {-100, 4}, {-19, 4}, {-1, 3}}) {
        turnWheelBy(turn, Qt::ControlModifier);
        EXPECT_EQ(picture().size(), zoomed(natural, quarters)) << turn;
    }
    EXPECT_EQ(picture().pos(), QPoint(0, 0));
    turnWheelBy(-120, {});
    EXPECT_LT(picture().y(), 0);
}

TEST_F(Form2Test, AccessKeysPressTheButtons)
{
    open({10, 10});
    const std::pair<const char*, QKeyCombination> cases[] = {
        {"PushButton1", Qt::ALT | Qt::Key_I},     {"PushButton2", Qt::ALT | Qt::Key_O},
        {"PushButtonPrint", Qt::ALT | Qt::Key_P}, {"PushButtonPrint", Qt::CTRL | Qt::Key_P},
        {"PushButton6", Qt::ALT | Qt::Key_S},     {"PushButton6", Qt::CTRL | Qt::Key_S},
        {"PushButton8", Qt::ALT | Qt::Key_B}};
    for (const auto& [name, keys] : cases) {
        auto& button = control<QAbstractButton>(name);
        button.disconnect(&form);
        int pressed = 0;
        QObject::connect(&button, &QAbstractButton::clicked, &form, [&pressed] { ++pressed; });
        QTest::keyClick(QApplication::focusWidget(), keys.key(), keys.keyboardModifiers());
        EXPECT_TRUE(QTest::qWaitFor([&pressed] { return pressed == 1; })) << name;
    }
}

TEST_F(Form2Test, AFailedPrintIsAMessageAndNothingIsLost)
{
    open({10, 10});
    click("PushButtonPrint");
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"No paper for kvarno01234567.xls"});
    EXPECT_TRUE(fileExists(workbook()));
    EXPECT_FALSE(Form2([] {}).findChild<QWidget*>("PushButtonPrint")->isEnabled());
}

TEST_F(Form2Test, SavesUnderTheNameAndAsksBeforeItOverwrites)
{
    open({10, 10});
    const fs::path taken = folder / "taken.xls";
    std::ofstream(taken) << "older and longer data";
    const std::string question = "Are you sure you wish to overwrite " + taken.string() + " ?";
    const std::tuple<fs::path, MessageAnswer, std::vector<std::string>, std::string> cases[] = {
        {{}, MessageAnswer::Yes, {"Done."}, ""},                   // cancelled
        {folder / "first", MessageAnswer::Yes, {"Done."}, "data"}, // no extension is added
        {taken, MessageAnswer::No, {question, "Done."}, "older and longer data"},
        {taken, MessageAnswer::Yes, {question, "Done."}, "data"},
    };
    for (const auto& [name, answer, texts, content] : cases) {
        messages.shown.clear();
        messages.answers = {answer};
        fileName = name;
        click("PushButton6");
        EXPECT_EQ(messages.texts(), texts);
        EXPECT_EQ(messages.shown[0].title, "");
        EXPECT_EQ(contentOf(name), content) << name;
        EXPECT_EQ(contentOf(workbook()), "data");
    }
}

TEST_F(Form2Test, BackDeletesTheWorkbookAndReturnsWithTheWindowsStateKept)
{
    open({1000, 1000});
    click("PushButton1");
    const QSize zoomedSize = picture().size();
    click("PushButton8");
    EXPECT_FALSE(fs::exists(workbook()));
    EXPECT_EQ(waysBack, 1);
    EXPECT_FALSE(form.isVisible());
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    EXPECT_EQ(picture().size(), zoomedSize);
    EXPECT_EQ(form.focusWidget()->objectName(), "PushButton1") << "Enter must not leave it again";
}

} // namespace
