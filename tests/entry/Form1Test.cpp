#include "tests/entry/EntryWindow.h"
#include "tests/support/TemporaryFolder.h"

#include <QBuffer>
#include <QClipboard>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QScrollBar>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <tuple>
#include <utility>

using namespace wagemill;
using namespace wagemill::test;

namespace {

using Form1Test = EntryWindow;

/// The text that fits the field's kind.
std::string inFormOf(const RowField& description, const char* freeText, const char* money, const char* number)
{
    return description.kind == FieldKind::FreeText   ? freeText
           : description.kind == FieldKind::Currency ? money
                                                     : number;
}

TEST_F(Form1Test, ShowsItsDefaultsOnAFirstStartAndKeepsThem)
{
    open();
    EXPECT_EQ(form->windowTitle(), "Wagemill");
    EXPECT_EQ(QCoreApplication::applicationName(), "Wagemill Payroll Workbook");
    std::map<std::string, std::string> expected = {{"txtCompanyName", ""}, {"dtPeriodEnding", "3/15/2026"}};
    for (const RowField& description : rowFields)
        expected[rowFieldKey(description, 0)] = inFormOf(description, "", "$0.00", "0");
    EXPECT_EQ(store.values, expected);
    EXPECT_FALSE(field("txtHourlyWage(0)")->isUndoAvailable()); // undo does not empty what an earlier run left
    EXPECT_TRUE(messages.shown.empty());
    EXPECT_EQ(spreadsheet.calls, std::vector<std::string>{"new"}); // the presence check, released without a call
    click("PushButton6");
    EXPECT_EQ(messages.texts(),
              std::vector<std::string>{"Questions? Please contact Team Quellory at https://quellory.example/contact"});
}

TEST_F(Form1Test, RefillsFromTheStoreAndReportsWhatCannotBeShown)
{
    store.values = {{"dtPeriodEnding", "someday"}};
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"txtCompanyName", "txtCompanyName", "Jos\xC3\xA9 & Co", "Jos\xC3\xA9 & Co"},
        {"txtHourlyWage(0)", "txtHourlyWage0", "abc", ""},
        {"txtOTRate(0)", "txtOTRate0", "12.5", "$12.50"},
        {"txtStateTax(0)", "txtStateTax0", "7.25", "7.25"},
        {"txtOT(0)", "txtOT0", "eight", "eight"}, // hours are shown as they were kept
        {"txtHourlyWage(24)", "txtHourlyWage24", "12.5", "$12.50"},
    };
    for (const auto& [name, key, stored, shown] : cases)
        store.values[key] = stored;
    open(25);
    for (const auto& [name, key, stored, shown] : cases) {
        EXPECT_EQ(text(name), shown) << name;
        EXPECT_EQ(store.values[key], *shown == '\0' ? stored : shown) << name;
    }
    EXPECT_EQ(text("dtPeriodEnding"), "3/15/2026");
    EXPECT_FALSE(store.values.contains("txtName2")) << "a row never filled costs the first start nothing";
    ASSERT_EQ(messages.failedSteps(), (std::vector<int>{70, 102}));
    EXPECT_NE(messages.shown[0].text.find("someday"), std::string::npos);
    EXPECT_TRUE(messages.shown[1].text.starts_with(
        "The stored \"Hourly Wage:\" cannot be shown: \"abc\" is not a number.\r\nin "));
}

TEST_F(Form1Test, StoresEveryKeystroke)
{
    open(25);
    store.written.clear();
    type("txtName(0)", "Al");
    EXPECT_EQ(store.written, (std::vector<std::string>{"txtName0", "txtName0"}));
    EXPECT_EQ(store.values["txtName0"], "Al");
    type("txtName(0)", "");
    EXPECT_EQ(store.values["txtName0"], "");
    field("txtOT(24)")->setFocus();
    QTest::keyClicks(field("txtOT(24)"), "7");
    EXPECT_EQ(store.values["txtOT24"], "7");
    QApplication::clipboard()->setText("12 Mill Lane\r\nQuellory\n\n"); // line breaks become blanks
    field("txtCompanyName")->setFocus();
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text("txtCompanyName"), "12 Mill Lane Quellory");
    EXPECT_EQ(store.values["txtCompanyName"], "12 Mill Lane Quellory");
}

TEST_F(Form1Test, TidiesANumberThatIsLeftAndUndoesThat)
{
    open();
    for (const RowField& description : rowFields) {
        const std::string name = rowName(description);
        const std::string tidy = inFormOf(description, "-1234.5", "($1,234.50)", "-1,234.50");
        type(name.c_str(), "-1234.5");
        pressTab();
        EXPECT_EQ(store.values[rowFieldKey(description, 0)], tidy) << name;
        field(description)->setFocus();
        pressTab(); // a second time it changes nothing
        EXPECT_EQ(text(name.c_str()), tidy) << name;
        if (tidy == "-1234.5")
            continue;
        field(description)->setFocus();
        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(text(name.c_str()), "-1234.5") << name;
        EXPECT_EQ(store.values[rowFieldKey(description, 0)], "-1234.5") << name;
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
    const std::pair<const char*, std::string> cases[] = {
        {"txtEmployeeID(0)", longName}, {"txtName(0)", longName}, {"txtTaxStatus(0)", ""}};
    for (const auto& [name, tip] : cases) {
        EXPECT_EQ(field(name)->cursorPosition(), 0) << name;
        EXPECT_FALSE(field(name)->hasSelectedText()) << name;
        QHelpEvent hover(QEvent::ToolTip, {5, 5}, field(name)->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(field(name), &hover);
        EXPECT_TRUE(QTest::qWaitFor([expected = tip] {
            return QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText().toStdString() == expected;
        })) << name;
    }
}

TEST_F(Form1Test, ReportsAFailingStoreForEachChangeAndKeepsTheTextUntilItCanBeStored)
{
    open();
    store.failing = true;
    click("PushButton7");
    EXPECT_EQ(messages.shown.size(), 19U); // each assignment is a step of its own
    EXPECT_TRUE(messages.shown[0].text.starts_with("The disk is full. What you typed stays in the window and is "
                                                   "stored as soon as possible.\r\n"));
    EXPECT_EQ(messages.failedSteps()[0], 10);
    EXPECT_EQ(text("txtOtherDeduction(0)"), "$2.00");
    QTest::qWait(1100); // in vain
    store.failing = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return store.values["txtName0"] == "Ned Hollister"; })) << "without another key";
}

TEST_F(Form1Test, ReportsTheFieldsOfFurtherEmployeesTogether)
{
    const auto report = [&] {
        messages.shown.clear();
        open(25);
        return messages.shown.back().text.substr(0, messages.shown.back().text.find('\r'));
    };
    const std::string begin = "What is stored for these employees cannot be shown:\n- employee 2, ";
    store.values = {{"txtHourlyWage1", "abc"}, {"txtOTRate1", "abc"}, {"txtOTRate24", "x"}};
    EXPECT_EQ(report(), begin + "Hourly Wage: \"abc\" is not a number.\n"
                                "- employee 2, Overtime Rate: \"abc\" is not a number.\n"
                                "- employee 25, Overtime Rate: \"x\" is not a number.");
    EXPECT_EQ(messages.failedSteps(), std::vector<int>{120});
    EXPECT_EQ(text("txtHourlyWage(1)"), "");
    for (int row = 1; row < 25; ++row) // stored in a region whose amounts cannot be read in this one
        store.values["txtHourlyWage" + std::to_string(row)] = std::to_string(row) + " EUR";
    const std::string many = report();
    EXPECT_EQ(std::ranges::count(many, '\n'), 13) << "it fits the screen";
    EXPECT_TRUE(many.ends_with("\nand 14 more, up to employee 25, Overtime Rate.")) << many;
    store.locked = true;
    EXPECT_EQ(report(), begin + "Employee Id to employee 25, Other Deduction: The settings are locked.");
    EXPECT_EQ(messages.shown.size(), 2 + rowFields.size() + 1) << "the first employee's are reported one by one";
    EXPECT_EQ(messages.failedSteps().front(), 60);
}

TEST_F(Form1Test, ScrollsTheRowOfTheFocusedFieldToTheTop)
{
    open(3);
    auto* const scrollBar = control<QScrollBar>("VScroll1");
    auto* const strip = control<QFrame>("Picture3");
    const int step = control<QFrame>("picMainContainer(0)")->height() + 8; // 120 twips
    EXPECT_EQ(scrollBar->maximum(), 2);
    EXPECT_EQ(control<QLabel>("lblSerialNo(2)")->text(), "Serial Number : 3");
    EXPECT_EQ(control<QWidget>("picMainContainer(2)")->accessibleName(), "Serial Number : 3 of 3");
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
    for (const auto& [rows, name] : {std::pair(1, ""), {2, "Serial Number : 1 of 2"}}) {
        open(static_cast<std::int16_t>(rows));
        EXPECT_EQ(control<QScrollBar>("VScroll1")->isEnabled(), rows > 1);
        EXPECT_EQ(control<QLabel>("lblSerialNo(0)")->accessibleName(), name);
    }
}

/// Asks every control for its children and, as screen readers do while windows change, for more than there are.
void askForChildren(QAccessibleInterface* control)
{
    for (int index = 0; index < control->childCount(); ++index)
        if (QAccessibleInterface* child = control->child(index))
            askForChildren(child);
    for (const int index : {-1, control->childCount(), 1000})
        EXPECT_EQ(control->child(index), nullptr) << control->object()->metaObject()->className();
}

TEST_F(Form1Test, SurvivesAScreenReaderThatAsksForAChildBeyondTheLast)
{
    open(3);
    for (const QSize size : {form->size(), QSize(400, 250)}) { // without and with scroll bars
        form->resize(size);
        askForChildren(QAccessible::queryAccessibleInterface(form.get()));
    }
}

TEST_F(Form1Test, ShowsNoEarlierAmountsWhenAPictureFails)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temp("TEMP", folder.path().string());
    open();
    QByteArray file;
    QBuffer buffer(&file);
    QImage(298, 198, QImage::Format_RGB32).save(&buffer, "BMP");
    const auto bytes = std::as_bytes(std::span(file));
    const auto broken = std::exchange(spreadsheet.pictureBytes, {bytes.begin(), bytes.end()});
    click("PushButton22");
    const QWidgetList windows = QApplication::topLevelWidgets();
    QWidget* const preview = *std::ranges::find(windows, "Form2", &QWidget::objectName);
    ASSERT_TRUE(QTest::qWaitForWindowActive(preview));
    auto* const picture = preview->findChild<QWidget*>("Picture1");
    EXPECT_EQ(picture->size(), QSize(300, 200)) << "with a hairline";
    QTest::mouseClick(preview->findChild<PushButton*>("PushButton8"), Qt::LeftButton);
    spreadsheet.pictureBytes = broken;
    click("PushButton22");
    EXPECT_EQ(messages.shown.size(), 1U);
    EXPECT_FALSE(picture->isVisible());
}

TEST_F(Form1Test, ShowsTheHandOverButtonsAlone)
{
    setProgramFolder(WAGEMILL_SOURCE_DIR "/resources");
    open();
    for (const QPoint point : {QPoint(10, 10), QPoint(-4, 10)}) { // on the button and beside it
        QTest::mouseMove(form->windowHandle(), control<PushButton>("PushButton6")->mapTo(form.get(), point));
        EXPECT_EQ(form->cursor().shape(), point.x() > 0 ? Qt::BitmapCursor : Qt::ArrowCursor);
    }
}

} // namespace
