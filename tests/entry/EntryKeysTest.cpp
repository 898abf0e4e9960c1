#include "app/base/text/NumberText.h"
#include "entry/data/EmployeeCount.h"
#include "tests/entry/EntryWindow.h"

#include <QClipboard>
#include <QFrame>
#include <QInputMethodEvent>
#include <QLabel>
#include <QScrollBar>

#include <functional>
#include <ranges>
#include <tuple>

using namespace wagemill;
using namespace wagemill::test;

namespace {

using EntryKeys = EntryWindow;

TEST_F(EntryKeys, AsksAboutARefusedNumberOnceForEveryMoveInsideTheWindow)
{
    const std::tuple<std::string, std::function<void()>, bool> ways[] = {
        {"Tab", [&] { pressTab(); }, true},
        {"click elsewhere", [&] { clickOn(field("txtName(0)")); }, true},
        {"button", [&] { click("PushButton22"); }, true},
        {"calendar", [&] { clickOn(control<QWidget>("calendarButton")); }, true},
        {"another program", [] { leaveForAnotherProgram(); }, false},
        {"close", [&] { form->close(); }, false},
        {"access key of a button", [&] { press(Qt::Key_S, Qt::AltModifier); }, true},
        {"access key of a field", [&] { press(Qt::Key_C, Qt::AltModifier); }, true},
        {"next employee", [&] { press(Qt::Key_PageDown, Qt::ControlModifier); }, true},
        {"screen reader: start", [&] { pressAsScreenReader("PushButton22"); }, true},
        {"screen reader: sample", [&] { pressAsScreenReader("PushButton7"); }, true},
        {"screen reader: help", [&] { pressAsScreenReader("PushButton6"); }, true},
        {"F1", [&] { press(Qt::Key_F1); }, false}, // moves no focus; the message is the help
    };
    for (const char* name : {"txtHourlyWage(0)", "txtStateTax(0)", "txtOtherDeduction(0)"})
        for (const auto& [way, leave, asks] : ways) {
            open(2);
            messages.shown.clear();
            ended = 0;
            type(name, "abc");
            leave();
            QApplication::processEvents();
            EXPECT_TRUE(!asks || QTest::qWaitFor([&] { return !messages.shown.empty(); })) << way;
            const auto asked = std::ranges::count(messages.texts(), "Please enter a valid input.");
            EXPECT_EQ(asked, asks ? 1 : 0) << name << " left by " << way;
            EXPECT_EQ(text(name), "abc");
            EXPECT_EQ(ended, way == "close" ? 1 : 0);
            if (!asks)
                continue;
            EXPECT_EQ(messages.shown[0].title, "");
            EXPECT_EQ(messages.shown[0].icon, MessageIcon::Information);
            EXPECT_EQ(focused(), name) << way;
            EXPECT_EQ(field(name)->selectedText(), "abc") << way;
        }
    EXPECT_EQ(std::ranges::count(spreadsheet.calls, "new"), std::ssize(spreadsheet.calls)) << "no build was started";
}

TEST_F(EntryKeys, GoesToFieldsByTheirKeysAndToTheSameFieldOfTheNextEmployee)
{
    open(3);
    const std::pair<QKeyCombination, const char*> presses[] = {
        {Qt::ALT | Qt::Key_P, "dtPeriodEnding"},         {Qt::CTRL | Qt::Key_PageDown, "txtEmployeeID(1)"},
        {Qt::CTRL | Qt::Key_PageUp, "txtEmployeeID(0)"}, {Qt::Key_Tab | Qt::NoModifier, "txtName(0)"},
        {Qt::CTRL | Qt::Key_PageUp, "txtName(0)"},       {Qt::CTRL | Qt::Key_PageDown, "txtName(1)"},
        {Qt::CTRL | Qt::Key_PageDown, "txtName(2)"},     {Qt::CTRL | Qt::Key_PageDown, "txtName(2)"},
        {Qt::ALT | Qt::Key_C, "txtCompanyName"},         {Qt::ALT | Qt::Key_E, "txtEmployeeID(2)"},
    };
    for (const auto& [keys, target] : presses) {
        press(keys.key(), keys.keyboardModifiers());
        EXPECT_EQ(focused(), target);
    }
}

TEST_F(EntryKeys, BringsAFieldIntoViewBeforeItChanges)
{
    QApplication::clipboard()->setText("7");
    const std::tuple<const char*, std::function<void()>, bool> cases[] = {
        {"delete", [] { press(Qt::Key_Delete); }, true},
        {"paste", [] { press(Qt::Key_V, Qt::ControlModifier); }, true},
        {"input method",
         [] {
             QInputMethodEvent composed;
             composed.setCommitString("x");
             QApplication::sendEvent(QApplication::focusWidget(), &composed);
         },
         true},
        {"refused Tab", [] { pressTab(); }, true},
        {"refused click", [&] { clickOn(field("txtName(2)")); }, true},
        {"Shift alone", [] { press(Qt::Key_Shift, Qt::ShiftModifier); }, false},
    };
    for (const QSize size : {QSize(800, 560), QSize(455, 256)})
        for (const auto& [what, act, isShown] : cases) {
            open(3);
            form->resize(size);
            messages.shown.clear();
            EntryField* const wage = field("txtHourlyWage(0)");
            type("txtHourlyWage(0)", "abc");
            field("txtName(2)")->setFocus();
            wage->setFocus();
            const auto isVisible = [&] { return wage->visibleRegion().boundingRect() == wage->rect(); };
            QObject::connect(wage, &EntryField::textChanged, form.get(),
                             [&, name = what] { EXPECT_TRUE(isVisible()) << name; });
            control<QScrollBar>("VScroll1")->setValue(2);
            ASSERT_FALSE(isVisible());
            act();
            EXPECT_EQ(isVisible(), isShown) << what;
            EXPECT_EQ(focused(), "txtHourlyWage(0)") << what;
        }
}

TEST_F(EntryKeys, LosesNothingToEscape)
{
    open();
    type("txtName(0)", "Ned");
    type("txtOT(0)", "eight");
    const auto before = store.values;
    for (const char* focus : {"txtName(0)", "txtOT(0)", "dtPeriodEnding", "PushButton6"}) {
        control<QWidget>(focus)->setFocus();
        press(Qt::Key_Escape);
    }
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(store.values, before);
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(EntryKeys, EntersTheDecimalSignOfTheRegionByTheKeypad)
{
    formats.decimalSeparator = "٫";
    open();
    const std::tuple<const char*, Qt::Key, const char*, const char*> cases[] = {
        {"txtHourlyWage(0)", Qt::Key_Period, ".", "12٫5"},
        {"txtOT(0)", Qt::Key_Comma, ",", "12٫5"},
        {"txtName(0)", Qt::Key_Period, ".", "12.5"},
        {"txtHourlyWage(0)", Qt::Key_Delete, "", "125"}, // while NumLock is off
    };
    for (const auto& [name, key, printed, expected] : cases) {
        type(name, "12");
        QKeyEvent pressed(QEvent::KeyPress, key, Qt::KeypadModifier, printed);
        QApplication::sendEvent(QApplication::focusWidget(), &pressed);
        QTest::keyClicks(field(name), "5");
        EXPECT_EQ(text(name), expected) << name;
    }
}

TEST_F(EntryKeys, LoadsTheSampleIntoTheFirstEmployeeAndUndoesIt)
{
    open(3);
    type("txtCompanyName", "Mill");
    type("dtPeriodEnding", "2/3/2025");
    for (const RowField& description : rowFields)
        type(rowName(description).c_str(), "77");
    const auto before = store.values;
    control<QScrollBar>("VScroll1")->setValue(2);
    press(Qt::Key_L, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return store.values["txtName0"] == "Ned Hollister"; }));
    click("PushButton7"); // a second time it changes nothing, also for undo
    EXPECT_EQ(control<QScrollBar>("VScroll1")->value(), 0);
    EXPECT_FALSE(field("txtName(0)")->hasSelectedText());
    EXPECT_EQ(store.values["txtCompanyName"], "ACME Inc");
    EXPECT_EQ(store.values["dtPeriodEnding"], "2/28/2026");
    for (const RowField& description : rowFields)
        EXPECT_EQ(store.values[rowFieldKey(description, 0)], description.kind == FieldKind::Currency
                                                                 ? currencyTextOf(description.sample, {})
                                                                 : description.sample);
    EXPECT_EQ(store.values["txtOTRate0"], "$10.25");
    EXPECT_FALSE(store.values.contains("txtName2"));
    for (EntryField* const changed : form->findChildren<EntryField*>()) {
        changed->setFocus();
        press(Qt::Key_Z, Qt::ControlModifier);
    }
    auto after = store.values;
    after["txtOtherDeduction0"] = before.at("txtOtherDeduction0"); // tidied when the sample's button was pressed
    EXPECT_EQ(after, before);
}

TEST_F(EntryKeys, TabsThroughTheFieldsOfEveryEmployeeAndBackInAWindowOfAnySize)
{
    open(3);
    std::vector<std::string> expected = {"txtCompanyName", "dtPeriodEnding"};
    for (const char* row : {"(0)", "(1)", "(2)"})
        for (const RowField& description : rowFields)
            expected.push_back(std::string(description.name) + row);
    expected.insert(expected.end(), {"PushButton22", "PushButton7", "PushButton6"});
    for (const QSize size : {QSize(455, 256), QSize(800, 560)}) { // a small laptop at 300 %, the smallest screen
        form->resize(size);
        field("txtCompanyName")->setFocus();
        for (const std::string& name : expected) {
            ASSERT_EQ(focused(), name);
            QWidget* const focus = QApplication::focusWidget();
            EXPECT_EQ(focus->visibleRegion().boundingRect(), focus->rect()) << name;
            pressTab();
        }
    }
    for (const std::string& name : expected | std::views::reverse) {
        press(Qt::Key_Backtab, Qt::ShiftModifier);
        ASSERT_EQ(focused(), name);
    }
}

TEST(EmployeeCount, IsTheNearestFromOneToTwentyFiveAndOnlyPlainDigitsAreAsWanted)
{
    const std::pair<std::vector<const char*>, EmployeeCount> cases[] = {
        {{"", "1", "01"}, {1, true}},
        {{"25", "025"}, {25, true}},
        {{"26", "65561", "99999999999999999999"}, {25, false}},
        {{"0", "-3", "three", "+3", " 3", "3 ", "3.0"}, {1, false}},
    };
    for (const auto& [texts, expected] : cases)
        for (const char* wanted : texts)
            EXPECT_EQ(employeeCount(wanted), expected) << '"' << wanted << '"';
}

} // namespace
