#include "app/look/Splash.h"

#include "app/base/Files.h"
#include "settings/Settings.h"
#include "tests/support/TemporaryFolder.h"

#include <QCheckBox>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace wagemill {

namespace {

/// Keeps what is written where the test sees it.
class MapStore : public SettingsStore {
public:
    explicit MapStore(std::map<std::string, std::string>& values) : m_values(values) {}

    std::optional<std::string> read(std::string_view application, std::string_view section,
                                    std::string_view key) override
    {
        const auto found = m_values.find(name(application, section, key));
        return found == m_values.end() ? std::nullopt : std::optional(found->second);
    }
    void write(std::string_view application, std::string_view section, std::string_view key,
               std::string_view value) override
    {
        m_values[name(application, section, key)] = value;
    }

private:
    static std::string name(std::string_view application, std::string_view section, std::string_view key)
    {
        return std::string(application) + "/" + std::string(section) + "/" + std::string(key);
    }

    std::map<std::string, std::string>& m_values;
};

constexpr const char* showAgain = "Quellory/Wagemill/ShowAgain";

class SplashTest : public testing::Test {
protected:
    SplashTest()
    {
        setProgramFolder(folder.path());
        setUserStore(std::make_unique<MapStore>(stored));
    }
    ~SplashTest() override { setUserStore(nullptr); }

    void putPicture(const char* name)
    {
        std::filesystem::create_directory(folder / "Splash");
        QImage image(300, 100, QImage::Format_RGB32);
        image.fill(Qt::green);
        ASSERT_TRUE(image.save(QString::fromStdString((folder / "Splash" / name).string()), "png"));
    }
    template <typename Control>
    Control& control(const char* name)
    {
        return *splash.findChild<Control*>(QString::fromLatin1(name));
    }
    double duringTheWait()
    {
        ++waits;
        if (look)
            look();
        return time = std::fmod(time + 0.1, 86400);
    }

    test::TemporaryFolder folder;
    std::map<std::string, std::string> stored;
    double time = 1000;
    int waits = 0;
    std::function<void()> look;
    Splash splash{[this] { return duringTheWait(); }};
};

} // namespace

TEST_F(SplashTest, ShowsThePictureInItsFrameWhileItWaits)
{
    putPicture("picture.png");
    bool wasVisible = false;
    look = [&] {
        wasVisible = splash.isVisible();
        EXPECT_EQ(splash.windowTitle(), "Wagemill");
        EXPECT_EQ(splash.frameSize(), QSize(300, 120));
        EXPECT_EQ(control<QLabel>("Image1").geometry(), QRect(0, 0, 300, 120));
        const QRect check = control<QCheckBox>("Check1").geometry();
        EXPECT_TRUE(check.bottom() == 117 || check.bottom() == 118) << check.bottom(); // 20 twips above the edge
        EXPECT_EQ(control<QCheckBox>("Check1").text(), "Hide this at next startup");
        const std::pair<const char*, QPoint> lines[] = {
            {"Line1", {0, 0}}, {"Line2", {0, 0}}, {"Line3", {299, 0}}, {"Line4", {0, 119}}};
        for (const auto& [name, position] : lines)
            EXPECT_EQ(control<QFrame>(name).pos(), position) << name;
    };
    splash.SplashShow();
    EXPECT_TRUE(wasVisible);
    EXPECT_FALSE(splash.isVisible());
    EXPECT_NEAR(waits, isDevelopmentRun() ? 5 : 41, 1);
}

TEST_F(SplashTest, AWaitAcrossMidnightEnds)
{
    putPicture("picture.png");
    time = 86399.75;
    splash.SplashShow();
    EXPECT_NEAR(waits, isDevelopmentRun() ? 5 : 41, 1);
}

TEST_F(SplashTest, TickingTheBoxHidesItFromTheNextStartOn)
{
    putPicture("picture.png");
    look = [&] {
        if (waits == 1)
            QTest::mouseClick(&control<QCheckBox>("Check1"), Qt::LeftButton, {}, QPoint(8, 8));
    };
    splash.SplashShow();
    EXPECT_EQ(stored[showAgain], "1");
    const int before = waits;
    splash.SplashShow();
    EXPECT_EQ(waits, before);
    control<QCheckBox>("Check1").click();
    EXPECT_EQ(stored[showAgain], "0");
    splash.SplashShow();
    EXPECT_GT(waits, before);
}

TEST_F(SplashTest, WithoutAPictureNothingIsShown)
{
    splash.SplashShow(); // no folder
    std::filesystem::create_directories(folder / "Splash/folder");
    splash.SplashShow();
    EXPECT_EQ(waits, 0);
}

TEST_F(SplashTest, AFileThatIsNoPictureIsAnErrorThatNamesIt)
{
    std::filesystem::create_directory(folder / "Splash");
    std::ofstream(folder / "Splash/notes.txt") << "no picture";
    try {
        splash.SplashShow();
        FAIL() << "was shown";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("Splash/notes.txt"), std::string::npos) << error.what();
    }
    EXPECT_EQ(waits, 0);
    stored[showAgain] = "1";
    EXPECT_NO_THROW(splash.SplashShow()) << "the folder is not even looked at";
}

} // namespace wagemill
