#include "app/look/Splash.h"

#include "app/base/Files.h"
#include "settings/Settings.h"
#include "tests/support/FailureOf.h"
#include "tests/support/MemoryStore.h"
#include "tests/support/TemporaryFolder.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>

using namespace wagemill;
using namespace wagemill::test;

namespace {

class SplashTest : public testing::Test {
protected:
    SplashTest()
    {
        setProgramFolder(folder.path());
        setUserStore(std::make_unique<MemoryStore>(store));
    }
    ~SplashTest() override { setUserStore(nullptr); }

    template <typename Control>
    Control& control(const char* name)
    {
        return *splash.findChild<Control*>(QString::fromLatin1(name));
    }

    TemporaryFolder folder;
    MemoryStore::State store;
    Splash splash;
};

TEST_F(SplashTest, ShowsThePictureInItsFrameForSomeSecondsUntilItsBoxIsTicked)
{
    std::filesystem::create_directories(folder / "Splash/folder"); // is not a picture
    splash.SplashShow();
    EXPECT_FALSE(splash.testAttribute(Qt::WA_WState_Created)) << "nothing is there to be shown";
    QImage image(300, 100, QImage::Format_RGB32);
    image.fill(Qt::green);
    ASSERT_TRUE(image.save(QString::fromStdString((folder / "Splash/picture.png").string())));
    QTimer::singleShot(100, &splash, [&] {
        EXPECT_TRUE(splash.isVisible());
        EXPECT_EQ(splash.windowTitle(), "Wagemill");
        EXPECT_EQ(splash.frameSize(), QSize(300, 120));
        EXPECT_EQ(control<QLabel>("Image1").geometry(), QRect(0, 0, 300, 120));
        const QRect check = control<QCheckBox>("Check1").geometry();
        EXPECT_EQ(check.bottom(), 117) << "a little above the edge";
        EXPECT_EQ(control<QCheckBox>("Check1").text(), "Hide this at next startup");
        EXPECT_EQ(control<QFrame>("Line3").geometry(), QRect(299, 0, 1, 666));
        EXPECT_EQ(control<QFrame>("Line4").geometry(), QRect(0, 119, 666, 1));
        for (const char* stored : {"1", "0", "1"}) {
            QTest::mouseClick(&control<QCheckBox>("Check1"), Qt::LeftButton, {}, QPoint(8, 8));
            EXPECT_EQ(store.values["ShowAgain"], stored);
        }
    });
    QElapsedTimer time;
    time.start();
    splash.SplashShow();
    EXPECT_NEAR(static_cast<double>(time.elapsed()), isDevelopmentRun() ? 400 : 4000, 350);
    EXPECT_FALSE(splash.isVisible());
    time.start();
    splash.SplashShow();
    EXPECT_LT(time.elapsed(), 200) << "it was not to be shown again";
}

TEST_F(SplashTest, AFileThatIsNotAPictureIsAnErrorThatNamesIt)
{
    std::filesystem::create_directory(folder / "Splash");
    std::ofstream(folder / "Splash/notes.txt") << "not a picture";
    const auto show = [this] { splash.SplashShow(); };
    EXPECT_NE(failureOf(show).find("Splash/notes.txt\": "), std::string::npos) << failureOf(show);
    store.values["ShowAgain"] = "1";
    EXPECT_EQ(failureOf(show), "no failure") << "the folder is not even looked at";
}

} // namespace
