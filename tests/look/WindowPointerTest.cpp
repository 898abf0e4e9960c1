#include "app/look/WindowPointer.h"

#include "app/base/Files.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"

#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

using namespace wagemill;
using namespace wagemill::test;

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

TEST_F(WindowPointerTest, HoveringChoosesTheMode)
{
    pointer.loadHandCursor(handFile);
    const std::pair<QPoint, PointerMode> moves[] = {
        {{20, 20}, PointerMode::Hand}, // the last from button to button
        {{200, 150}, PointerMode::Arrow}, {{20, 70}, PointerMode::Arrow},
        {{20, 20}, PointerMode::Hand},    {{100, 20}, PointerMode::Hand},
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
    pointer.loadHandCursor(handFile);
    pointer.setMode(PointerMode::Hand);
    EXPECT_EQ(button.cursor().shape(), Qt::BitmapCursor) << "it has no cursor of its own";
}

TEST_F(WindowPointerTest, ACursorFileThatCannotBeUsedIsNamedAndLeavesTheArrow)
{
    const std::vector<std::byte> hand = readBytesFromFile(handFile);
    std::vector<std::byte> pointsElsewhere = hand;
    pointsElsewhere[11] = std::byte{1};
    const std::pair<std::vector<std::byte>, const char*> cases[] = {
        {{}, "it is not a cursor file, or is damaged"},
        {{hand.begin(), hand.begin() + 60}, "it is not a cursor file, or is damaged"}, // ends in the header
        {pointsElsewhere, "its hot spot is outside its picture"},
    };
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "HAND-M.CUR";
    for (const auto& [bytes, reason] : cases) {
        std::filesystem::remove(file);
        writeBytesToFile(bytes, file);
        EXPECT_EQ(failureOf([&] { pointer.loadHandCursor(file); }),
                  "Cannot use the cursor file \"" + file.string() + "\": " + reason + ".");
    }
    moveTo({20, 20});
    EXPECT_EQ(pointer.mode(), PointerMode::Hand);
    EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
}

} // namespace
