#include "app/look/Look.h"

#include "app/base/Files.h"
#include "app/look/Controls.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFrame>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

using namespace wagemill;
using namespace wagemill::test;

namespace {

/// Writes down what is asked of it.
struct RecordingSkin : SkinningControl {
    void loadSkin(const std::filesystem::path& skinFile) override
    {
        calls.push_back("2 " + skinFile.filename().string());
    }
    std::int32_t options() const override { return 6; }
    void setOptions(std::int32_t options) override { calls.push_back("1 = " + std::to_string(options)); }
    void setFlag(int dispatchIdentifier, bool value) override
    {
        calls.push_back(std::to_string(dispatchIdentifier) + (value ? " = true" : " = false"));
    }
    void applyWindow(std::uintptr_t windowHandle) override { calls.push_back("3 " + std::to_string(windowHandle)); }

    std::vector<std::string> calls;
};

/// A window with one control of each kind that backgrounds are about.
struct Window {
    QWidget window;
    QLabel label{&window};
    QRadioButton option{&window};
    QCheckBox check{&window};
    QGroupBox frame{&window};
    QFrame pictureBox{&window};
    QLineEdit textField{&window};
};

bool isNeutral(const QWidget& widget)
{
    return widget.backgroundRole() == QPalette::Button && widget.autoFillBackground();
}

class LookTest : public testing::Test {
protected:
    LookTest() { setProgramFolder(folder.path()); }

    void putSkin(const std::string& content)
    {
        std::filesystem::create_directory(folder / "x");
        std::ofstream(folder / "x/o.cjs", std::ios::binary) << content;
    }

    TemporaryFolder folder;
    std::unique_ptr<SkinningControl> styleSheet = styleSheetSkin();
    Window on;
};

TEST_F(LookTest, AsksTheSkinningControlInItsOrderWhereThereIsASkinFile)
{
    RecordingSkin skin;
    applyMainWindowSkin(on.window, &skin);
    EXPECT_TRUE(skin.calls.empty());
    EXPECT_FALSE(isNeutral(on.window));
    putSkin("");
    applyMainWindowSkin(on.window, &skin);
    EXPECT_EQ(skin.calls, (std::vector<std::string>{"2 o.cjs", "1 = 7", "5 = true", "10 = true",
                                                    "3 " + std::to_string(on.window.winId())}));
}

TEST_F(LookTest, TheMainWindowsPictureBoxesAreNeutralAndThePreviewsAreNot)
{
    putSkin("");
    applyMainWindowSkin(on.window, styleSheet.get());
    for (const QWidget* widget :
         std::initializer_list<const QWidget*>{&on.window, &on.label, &on.option, &on.check, &on.frame, &on.pictureBox})
        EXPECT_TRUE(isNeutral(*widget)) << widget->metaObject()->className();
    EXPECT_NE(on.textField.backgroundRole(), QPalette::Button);

    Window preview;
    applyPlainBackground(preview.window);
    EXPECT_TRUE(isNeutral(preview.window) && isNeutral(preview.label) && isNeutral(preview.frame));
    EXPECT_FALSE(isNeutral(preview.pictureBox));
}

TEST_F(LookTest, ASkinIsAStyleSheetAndAnotherIsReportedAtOnce)
{
    std::filesystem::create_directory(folder / "x");
    const std::filesystem::path skin = folder / "x/o.cjs";
    const auto pipe = [&] { ASSERT_EQ(::mkfifo(skin.c_str(), 0600), 0); };
    constexpr std::size_t maxSkin = 1024 * 1024;
    const auto text = [&](const std::string& content) { return [this, content] { putSkin(content); }; };
    const std::pair<std::function<void()>, const char*> cases[] = {
        {pipe, "it is not a plain file"},
        {text("QLabel { } } \xC3\x28"), "it is not text"},
        {text(std::string("a\0b", 3)), "it is not text"},
        {text(std::string(maxSkin + 1, ' ')), "it is larger than 1 MiB"},
        {text(std::string(maxSkin, '{')), "it is not a style sheet"},
        {text("Dear colleagues, the skin will follow."), "it is not a style sheet"},
        {text("QLabel { color: red"), "it is not a style sheet"},
        {text("QLabel { no declaration }"), "it is not a style sheet"},
        {text("/* { */ QLabel#a, QComboBox::drop-down:!hover > *[b=\"1\"] { color : palette(text) ; ; margin: 1px }"),
         nullptr},
        {text(" \n/* nothing */"), nullptr},
        {text(QString("QLabel { color: red; margin: 1px }\n").repeated(29'000).toStdString()), nullptr},
    };
    for (const auto& [put, reason] : cases) {
        std::filesystem::remove(skin);
        put();
        const std::string refusal = failureOf([this] { applyMainWindowSkin(on.window, styleSheet.get()); });
        EXPECT_EQ(refusal,
                  reason ? "Cannot use the skin file \"" + skin.string() + "\": " + reason + "." : "no failure");
        EXPECT_TRUE(isNeutral(on.window) && !on.window.grab().isNull());
    }
    putSkin("QLineEdit { min-height: 77px; }");
    applyMainWindowSkin(on.window, styleSheet.get());
    EXPECT_GE(on.textField.minimumSizeHint().height(), 77);
}

TEST(ScrollBar, ShowsNoThumbWhileItIsDisabled)
{
    ScrollBar bar(Qt::Vertical);
    bar.setEnabled(false);
    const QImage atTheTop = bar.grab().toImage();
    bar.setValue(bar.maximum());
    EXPECT_EQ(bar.grab().toImage(), atTheTop);
}

TEST(Title, LosesItsLastWordAndMoreWhileItIsTooLong)
{
    const QString ten = "abcdefghij";
    const QString forty = ten + " " + ten + " " + ten + " abcdefg";
    const std::pair<QString, QString> cases[] = {
        {productPhrase, "Wagemill Payroll Workbook"},
        {ten + " " + ten + " " + ten + " " + ten + " " + ten + " abcde", ten + " " + ten + " " + ten},
        {forty + " word", forty},
        {forty + "h word", ten + " " + ten + " " + ten},
        {"word ", "word"},
    };
    for (const auto& [title, expected] : cases) {
        makeApplicationTitle(title);
        EXPECT_EQ(QCoreApplication::applicationName(), expected);
    }
    for (const QString& title : {QString("Wagemill"), QString(), QString(50, 'a') + " b"})
        EXPECT_THROW(makeApplicationTitle(title), std::invalid_argument);
}

} // namespace
