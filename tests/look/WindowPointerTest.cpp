#include "app/look/WindowPointer.h"

#include "tests/support/TemporaryFolder.h"

#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace wagemill {

namespace {

constexpr const char* handFile = WAGEMILL_SOURCE_DIR "/resources/HAND-M.CUR";

class WindowPointerTest : public testing::Test {
protected:
    WindowPointerTest()
    {
        window.resize(300, 200);
        button.setGeometry(10, 10, 80, 30);
        other.setGeometry(90, 10, 80, 30);
        text.setGeometry(10, 60, 80, 30);
        pointer.watch(PointerMode::Hand, {&button, &other});
        pointer.watch(PointerMode::Arrow, {&text});
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    void moveTo(QPoint at) { QTest::mouseMove(window.windowHandle(), at); }

    QWidget window;
    QPushButton button{&window};
    QPushButton other{&window};
    QLineEdit text{&window};
    WindowPointer& pointer = *new WindowPointer(window); // owned by the window
};

} // namespace

TEST_F(WindowPointerTest, HoveringChoosesTheMode)
{
    pointer.loadHandCursor(handFile);
    struct {
        QPoint at;
        PointerMode expected;
    } const moves[] = {
        {{20, 20}, PointerMode::Hand},  {{200, 150}, PointerMode::Arrow},
        {{20, 20}, PointerMode::Hand},  {{100, 20}, PointerMode::Hand}, // from button to button
        {{20, 70}, PointerMode::Arrow}, {{100, 20}, PointerMode::Hand},
    };
    for (const auto& [at, expected] : moves) {
        moveTo(at);
        EXPECT_EQ(pointer.mode(), expected) << at.x() << ", " << at.y();
        const bool showsHand = button.cursor().shape() == Qt::BitmapCursor;
        EXPECT_EQ(showsHand, expected == PointerMode::Hand);
    }
    EXPECT_EQ(button.cursor().hotSpot(), QPoint(12, 1));
    pointer.resetPointer();
    EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(WindowPointerTest, ABusyWindowKeepsItsHourglassEverywhere)
{
    pointer.setMode(PointerMode::Hourglass);
    for (const QPoint at : {QPoint(20, 20), QPoint(200, 150), QPoint(20, 70)}) {
        moveTo(at);
        EXPECT_EQ(pointer.mode(), PointerMode::Hourglass);
    }
    pointer.resetPointer();
    EXPECT_EQ(button.cursor().shape(), Qt::WaitCursor);
    EXPECT_EQ(text.cursor().shape(), Qt::WaitCursor);
    pointer.setMode(PointerMode::Arrow);
    EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(text.cursor().shape(), Qt::IBeamCursor);
}

TEST_F(WindowPointerTest, WithoutACursorFileTheHandIsTheArrow)
{
    moveTo({20, 20});
    EXPECT_EQ(pointer.mode(), PointerMode::Hand);
    EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(WindowPointerTest, ABrokenCursorFileIsNamedAndLeavesTheArrow)
{
    const test::TemporaryFolder folder;
    std::ofstream(folder / "HAND-M.CUR") << "no cursor";
    try {
        pointer.loadHandCursor(folder / "HAND-M.CUR");
        FAIL() << "was loaded";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()),
                  "Cannot use the cursor file \"" + (folder / "HAND-M.CUR").string() + "\": it is no cursor file.");
    }
    moveTo({20, 20});
    EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(WindowPointerTest, ACursorFileThatCannotBeReadIsNamedOnce)
{
    const test::TemporaryFolder folder;
    try {
        pointer.loadHandCursor(folder.path());
        FAIL() << "was loaded";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "Cannot read \"" + folder.path().string() + "\": it is no plain file.");
    }
}

} // namespace wagemill
