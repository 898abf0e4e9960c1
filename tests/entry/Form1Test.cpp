#include "app/base/Files.h"
#include "entry/SampleData.h"
#include "tests/entry/EntryWindow.h"
#include "tests/support/TemporaryFolder.h"

#include <QBuffer>
#include <QClipboard>
#include <QFrame>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QScrollBar>
#include <QTextDocument>
#include <QToolTip>

#include <ranges>
#include <utility>

using namespace wagemill;
using namespace wagemill::test;

namespace {

using Form1Test = EntryWindow;

TEST_F(Form1Test, ShowsItsDefaultsOnAFirstStartAndKeepsThem)
{
    open();
    EXPECT_EQ(form->windowTitle(), "Wagemill");
    EXPECT_EQ(QCoreApplication::applicationName(), "Wagemill Payroll Workbook");
    std::map<std::string, std::string> expected = {{"txtCompanyName", ""}, {"dtPeriodEnding", "3/15/2026"}};
    for (const RowField& description : rowFields)
        expected[rowFieldKey(description, 0)] = description.kind == FieldKind::Currency ? "$0.00"
                                                : description.kind == FieldKind::Number ? "0"
                                                                                        : "";
    EXPECT_EQ(store.values, expected);
    EXPECT_EQ(text("txtHourlyWage(0)"), "$0.00");
    EXPECT_EQ(text("txtStateTax(0)"), "0");
    EXPECT_FALSE(field("txtHourlyWage(0)")->isUndoAvailable()); // undo does not empty what an earlier run left
    EXPECT_TRUE(messages.shown.empty());
    EXPECT_EQ(spreadsheet.calls, std::vector<std::string>{"new"}); // the presence check, released without a call
}

TEST_F(Form1Test, RefillsFromTheStoreAndReportsWhatCannotBeShown)
{
    store.values = {{"txtCompanyName", "Jos\xC3\xA9 & Co"},
                    {"dtPeriodEnding", "someday"},
                    {"txtHourlyWage0", "abc"},
                    {"txtOTRate0", "12.5"},
                    {"txtStateTax0", "7.25"},
                    {"txtFedIT0", "7"},
                    {"txtOT0", "eight"},
                    {"txtName0", "Ned"}};
    open();
    EXPECT_EQ(text("txtCompanyName"), "Jos\xC3\xA9 & Co");
    EXPECT_EQ(text("txtName(0)"), "Ned");
    EXPECT_EQ(text("txtHourlyWage(0)"), "");
    EXPECT_EQ(text("txtOTRate(0)"), "$12.50");
    EXPECT_EQ(store.values["txtOTRate0"], "$12.50");
    EXPECT_EQ(text("txtStateTax(0)"), "7.25");
    EXPECT_EQ(text("txtFedIT(0)"), "7");
    EXPECT_EQ(text("txtOT(0)"), "eight"); // hours are shown as they were kept
    EXPECT_EQ(store.values["txtHourlyWage0"], "abc");
    EXPECT_EQ(text("dtPeriodEnding"), "3/15/2026");
    ASSERT_EQ(messages.shown.size(), 2U);
    for (const Message& message : messages.shown)
        EXPECT_NE(message.text.find("\r\nin Wagemill2021/08/31.Form1.Form_Load at line "), std::string::npos);
    EXPECT_NE(messages.shown[0].text.find("someday"), std::string::npos);
    EXPECT_EQ(messages.shown[1].text.substr(0, messages.shown[1].text.find('\r')),
              "The stored \"Hourly Wage:\" cannot be shown: \"abc\" is not a number.");
}

TEST_F(Form1Test, StoresEveryKeystroke)
{
    open();
    store.written.clear();
    type("txtName(0)", "Al");
    EXPECT_EQ(store.written, (std::vector<std::string>{"txtName0", "txtName0"}));
    EXPECT_EQ(store.values["txtName0"], "Al");
    type("txtName(0)", "");
    EXPECT_EQ(store.values["txtName0"], "");
    type("txtCompanyName", "Mill");
    EXPECT_EQ(store.values["txtCompanyName"], "Mill");
}

TEST_F(Form1Test, TakesPastedLineBreaksAsBlanks)
{
    open();
    QApplication::clipboard()->setText("12 Mill Lane\r\nQuellory\n\n");
    type("txtCompanyName", "");
    QTest::keyClick(field("txtCompanyName"), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text("txtCompanyName"), "12 Mill Lane Quellory");
    EXPECT_EQ(store.values["txtCompanyName"], "12 Mill Lane Quellory");
}

TEST_F(Form1Test, TidiesAFigureThatIsLeft)
{
    open();
    struct {
        const char* field;
        const char* typed;
        const char* tidy;
    } const cases[] = {
        {"txtHourlyWage", "12.5", "$12.50"},
        {"txtHourlyWage", "$12.50", "$12.50"},
        {"txtHourlyWage", "1.005", "$1.01"},
        {"txtInsuranceDeduction", "-5", "($5.00)"},
        {"txtRegHoursWorked", "1234", "1,234.00"},
        {"txtStateTax", "7.25", "7.25"},
        {"txtMedicareTax", ".5", "0.50"},
        {"txtOTRate", "(3)", "($3.00)"},
        {"txtTaxStatus", "abc", "abc"},
        {"txtFedAllowance", "", ""},
    };
    for (const auto& [name, typed, tidy] : cases) {
        type((std::string(name) + "(0)").c_str(), typed);
        pressTab();
        EXPECT_EQ(text((std::string(name) + "(0)").c_str()), tidy) << name << " typed " << typed;
        EXPECT_EQ(store.values[std::string(name) + "0"], tidy);
    }
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(Form1Test, SelectsAllOnFocusByKeyAndByMouseAndWhenTheWindowOpens)
{
    store.values["txtCompanyName"] = "ACME Inc";
    open();
    EXPECT_EQ(focused(), "txtCompanyName");
    QTest::keyClicks(QApplication::focusWidget(), "X");
    EXPECT_EQ(store.values["txtCompanyName"], "X");
    type("txtName(0)", "Ned Hollister");
    type("txtTaxStatus(0)", "single");
    clickOn(field("txtName(0)"));
    EXPECT_EQ(field("txtName(0)")->selectedText(), "Ned Hollister");
    clickOn(field("txtName(0)")); // a second click places the caret
    EXPECT_FALSE(field("txtName(0)")->hasSelectedText());
    clickOn(field("txtHourlyWage(0)"));
    pressTab();
    EXPECT_EQ(focused(), "txtTaxStatus(0)");
    EXPECT_EQ(field("txtTaxStatus(0)")->selectedText(), "single");
}

TEST_F(Form1Test, ShowsTheBeginningOfALongTextThatIsLeftAndTheWholeInAToolTip)
{
    const std::string longName = "Ottoline <b>&amp; " + std::string(60, 'm') + " the end";
    store.values["txtEmployeeID0"] = longName;
    open();
    type("txtName(0)", longName.c_str());
    EXPECT_NE(field("txtName(0)")->cursorPosition(), 0);
    type("txtTaxStatus(0)", "single");
    pressTab();
    struct {
        const char* field;
        std::string tip;
    } const cases[] = {{"txtEmployeeID(0)", longName}, {"txtName(0)", longName}, {"txtTaxStatus(0)", ""}};
    for (const auto& [name, tip] : cases) {
        EXPECT_EQ(field(name)->cursorPosition(), 0) << name;
        QHelpEvent hover(QEvent::ToolTip, {5, 5}, field(name)->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(field(name), &hover);
        const auto shown = [] {
            QTextDocument document;
            document.setHtml(QToolTip::text());
            return document.toPlainText().toStdString();
        };
        EXPECT_TRUE(QTest::qWaitFor([&, expected = tip] { return shown() == expected; })) << name << ": " << shown();
    }
}

TEST(SamplePeriodEnding, IsTheLastDayOfTheMonthBefore)
{
    struct {
        CalendarDate today, expected;
    } const cases[] = {{{2026, 3, 15}, {2026, 2, 28}},
                       {{2028, 3, 1}, {2028, 2, 29}},
                       {{2026, 1, 31}, {2025, 12, 31}},
                       {{2000, 3, 9}, {2000, 2, 29}}};
    for (const auto& [today, expected] : cases)
        EXPECT_EQ(samplePeriodEnding(today), expected);
}

TEST_F(Form1Test, ReportsAFailingStoreOncePerChangeAndKeepsTheText)
{
    open();
    store.failing = true;
    type("txtName(0)", "Al");
    const std::string report =
        "The disk is full. What you typed stays in the window and is stored as soon as possible.";
    EXPECT_EQ(messages.texts(), (std::vector<std::string>{report, report}));
    EXPECT_EQ(text("txtName(0)"), "Al");
    messages.shown.clear();
    click("PushButton7");
    EXPECT_EQ(messages.shown.size(), 19U); // each assignment is a step of its own
    EXPECT_NE(messages.shown[0].text.find("Form1.PushButton7_Click at line 10\r\r"), std::string::npos);
    EXPECT_EQ(text("txtOtherDeduction(0)"), "$2.00");
    store.failing = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return store.values["txtName0"] == "Ned Hollister"; })) << "without another key";
}

TEST_F(Form1Test, ReportsTheFieldsOfFurtherEmployeesTogether)
{
    store.values = {{"txtHourlyWage1", "abc"}, {"txtOTRate1", "abc"}, {"txtOTRate24", "x"}};
    open(25);
    ASSERT_EQ(messages.failedSteps(), std::vector<int>{120});
    EXPECT_TRUE(messages.shown[0].text.starts_with("What is stored for these employees cannot be shown:\n"
                                                   "Employee 2, Hourly Wage: \"abc\" is not a number.\n"
                                                   "Employee 2, Overtime Rate: \"abc\" is not a number.\n"
                                                   "Employee 25, Overtime Rate: \"x\" is not a number.\r\n"))
        << messages.shown[0].text;
    EXPECT_EQ(text("txtHourlyWage(1)"), "");

    messages.shown.clear();
    store.locked = true;
    open(25);
    EXPECT_EQ(messages.shown.size(), 2 + rowFields.size() + 1);
    EXPECT_TRUE(messages.shown.back().text.starts_with(
        "What is stored for these employees cannot be shown:\n"
        "Employee 2, Employee Id to employee 25, Other Deduction: The settings are locked.\r\n"))
        << messages.shown.back().text;

    messages.shown.clear();
    store.locked = false;
    for (int row = 1; row < 25; ++row) // a region in which no stored amount can be read
        store.values["txtHourlyWage" + std::to_string(row)] = std::to_string(row) + " EUR";
    open(25);
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_EQ(std::ranges::count(messages.shown[0].text, '\n'), 14) << "the dialog fits the screen";
    EXPECT_NE(messages.shown[0].text.find("\nand 14 more, up to employee 25, Overtime Rate."), std::string::npos);
}

TEST_F(Form1Test, ScrollsTheRowOfTheFocusedFieldToTheTop)
{
    open(3);
    auto* const scrollBar = control<QScrollBar>("VScroll1");
    auto* const strip = control<QFrame>("Picture3");
    const int step = control<QFrame>("picMainContainer(0)")->height() + 8;
    EXPECT_EQ(scrollBar->maximum(), 2);
    EXPECT_EQ(control<QLabel>("lblSerialNo(2)")->text(), "Serial Number : 3");
    for (const char* told : {"lblSerialNo(2)", "picMainContainer(2)"})
        EXPECT_EQ(control<QWidget>(told)->accessibleName(), "Serial Number : 3 of 3");
    EXPECT_EQ(control<QFrame>("picMainContainer(2)")->y(), 2 * step);
    field("txtName(2)")->setFocus();
    EXPECT_EQ(scrollBar->value(), 2);
    EXPECT_EQ(strip->y(), -2 * step);
    scrollBar->setSliderDown(true); // dragging moves the strip too, not only letting go
    scrollBar->setSliderPosition(1);
    EXPECT_EQ(strip->y(), -step);
    EXPECT_EQ(scrollBar->value(), 2);
    scrollBar->setSliderDown(false);
    EXPECT_EQ(scrollBar->value(), 1);
    type("txtName(1)", "Bo");
    EXPECT_EQ(store.values["txtName1"], "Bo");
    open(1);
    EXPECT_FALSE(control<QScrollBar>("VScroll1")->isEnabled());
    EXPECT_EQ(control<QLabel>("lblSerialNo(0)")->accessibleName(), "");
}

TEST(StripTop, IsTheHeightOfTheRowsAboveInTwips)
{
    EXPECT_EQ(stripTop(1000, 0), 0.0F);
    EXPECT_EQ(stripTop(1000, 2), -2240.0F);
}

TEST_F(Form1Test, EndsTheProgramWhenClosedAndBeforeItIsShownWithoutASpreadsheet)
{
    open();
    form->close();
    EXPECT_EQ(ended, 1);
    spreadsheet.fails = [](int) { return true; };
    messages.shown.clear();
    open();
    EXPECT_EQ(ended, 2);
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_TRUE(messages.shown[0].text.starts_with("Error 842001. "));
}

/// Asks every control for its children and, as screen readers do while windows change, for more than there are.
int countTold(QAccessibleInterface* control)
{
    int count = 1;
    for (int index = 0; index < control->childCount(); ++index)
        if (QAccessibleInterface* child = control->child(index))
            count += countTold(child);
    for (const int index : {-1, control->childCount(), control->childCount() + 1, 1000})
        EXPECT_EQ(control->child(index), nullptr) << control->object()->metaObject()->className();
    return count;
}

TEST_F(Form1Test, SurvivesAScreenReaderThatAsksForAChildBeyondTheLast)
{
    open(3);
    for (const QSize size : {form->size(), QSize(400, 250)}) { // without and with scroll bars
        form->resize(size);
        EXPECT_GT(countTold(QAccessible::queryAccessibleInterface(form.get())), 3 * 34);
    }
}

/// The bytes of a bitmap file of that size.
std::vector<std::byte> bitmap(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QByteArray file;
    QBuffer buffer(&file);
    image.save(&buffer, "BMP");
    const auto* const bytes = reinterpret_cast<const std::byte*>(file.constData());
    return {bytes, bytes + file.size()};
}

QWidget* previewWindow()
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->objectName() == "Form2")
            return window;
    return nullptr;
}

TEST_F(Form1Test, ShowsNoEarlierFiguresWhenAPictureFails)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temp("TEMP", folder.path().string());
    open();
    const auto broken = std::exchange(spreadsheet.pictureBytes, bitmap({300, 200}));
    click("PushButton22");
    ASSERT_TRUE(QTest::qWaitForWindowActive(previewWindow()));
    auto* const picture = previewWindow()->findChild<QWidget*>("Picture1");
    EXPECT_EQ(picture->size(), QSize(300, 200));
    EXPECT_TRUE(messages.shown.empty());
    QTest::mouseClick(previewWindow()->findChild<PushButton*>("PushButton8"), Qt::LeftButton);
    spreadsheet.pictureBytes = broken;
    click("PushButton22");
    EXPECT_EQ(messages.shown.size(), 1U);
    EXPECT_LE(picture->width(), 2);
}

TEST_F(Form1Test, TurnsIntoThePreviewAndComesBackAsItWas)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temp("TEMP", folder.path().string());
    open();
    type("txtName(0)", "Ned");
    // The fake clipboard's picture is none, so its loading is the one step that fails here.
    click("PushButton22");
    ASSERT_EQ(messages.failedSteps().size(), 1U);
    EXPECT_FALSE(form->isVisible());
    EXPECT_TRUE(form->updatesEnabled());
    QWidget* const preview = previewWindow();
    ASSERT_NE(preview, nullptr);
    EXPECT_TRUE(preview->isVisible());
    QTest::mouseClick(preview->findChild<PushButton*>("PushButton8"), Qt::LeftButton);
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(preview->isVisible());
    EXPECT_EQ(text("txtName(0)"), "Ned");
    EXPECT_EQ(ended, 0);
    preview->close();
    EXPECT_EQ(ended, 1);
}

TEST_F(Form1Test, ShowsTheHandOverButtonsAlone)
{
    setProgramFolder(WAGEMILL_SOURCE_DIR "/resources");
    open();
    const QRect help = control<PushButton>("PushButton6")->rect();
    const auto inForm = [&](const char* name, QPoint point) {
        return control<QWidget>(name)->mapTo(form.get(), point);
    };
    const struct {
        const char* place;
        QPoint point;
    } grounds[] = {
        {"between two buttons", inForm("PushButton6", {help.right() + 3, help.center().y()})},
        {"left of the buttons", inForm("PushButton6", {-4, help.center().y()})},
        {"below the buttons", inForm("PushButton6", {help.center().x(), help.bottom() + 4})},
        {"between the frames", inForm("Frame3", {100, -3})},
        {"a frame", inForm("Frame1", {100, 4})},
        {"a field", inForm("txtName(0)", {10, 10})},
    };
    const auto hover = [&](QPoint point) {
        QTest::mouseMove(form->windowHandle(), point);
        return form->cursor().shape();
    };
    for (const auto& [place, point] : grounds) {
        EXPECT_EQ(hover(inForm("PushButton6", help.center())), Qt::BitmapCursor);
        EXPECT_EQ(hover(point), Qt::ArrowCursor) << place;
    }
}

} // namespace
