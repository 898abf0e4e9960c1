#include "entry/data/EmployeeCount.h"
#include "tests/entry/EntryWindow.h"

#include <QClipboard>
#include <QFrame>
#include <QInputMethodEvent>
#include <QLabel>
#include <QScrollBar>

#include <functional>
#include <ranges>

using namespace wagemill;
using namespace wagemill::test;

namespace {

using EntryKeys = EntryWindow;

bool isNumeric(const RowField& description)
{
    return description.kind != FieldKind::FreeText;
}

TEST_F(EntryKeys, AsksAboutARefusedFigureOnceForEveryMoveInsideTheWindow)
{
    struct {
        const char* way;
        std::function<void()> leave;
        bool asks;
    } const ways[] = {
        {"Tab", [&] { pressTab(); }, true},
        {"Shift+Tab", [&] { press(Qt::Key_Backtab, Qt::ShiftModifier); }, true},
        {"click elsewhere", [&] { clickOn(field("txtName(0)")); }, true},
        {"button", [&] { click("PushButton22"); }, true},
        {"another program",
         [] {
             QWidget elsewhere;
             elsewhere.show();
             elsewhere.activateWindow();
             ASSERT_TRUE(QTest::qWaitForWindowActive(&elsewhere));
         },
         false},
        {"close", [&] { form->close(); }, false},
        {"access key of a button", [&] { press(Qt::Key_S, Qt::AltModifier); }, true},
        {"access key of a field", [&] { press(Qt::Key_C, Qt::AltModifier); }, true},
        {"next employee", [&] { press(Qt::Key_PageDown, Qt::ControlModifier); }, true},
        {"screen reader: start", [&] { pressAsScreenReader("PushButton22"); }, true},
        {"screen reader: sample", [&] { pressAsScreenReader("PushButton7"); }, true},
        {"screen reader: help", [&] { pressAsScreenReader("PushButton6"); }, true},
        {"F1", [&] { press(Qt::Key_F1); }, false}, // moves no focus; the message is the help
    };
    for (const RowField& description : rowFields | std::views::filter(isNumeric))
        for (const auto& [way, leave, asks] : ways) {
            open(2);
            messages.shown.clear();
            ended = 0;
            type(rowName(description).c_str(), "abc");
            leave();
            QApplication::processEvents();
            EXPECT_TRUE(!asks || QTest::qWaitFor([&] { return !messages.shown.empty(); })) << way;
            const auto asked = std::ranges::count(messages.texts(), "Please enter a valid input.");
            EXPECT_EQ(asked, asks ? 1 : 0) << description.name << " left by " << way;
            EXPECT_EQ(text(rowName(description).c_str()), "abc");
            EXPECT_EQ(ended, std::string(way) == "close" ? 1 : 0);
            if (!asks)
                continue;
            EXPECT_EQ(messages.shown[0].title, "");
            EXPECT_EQ(messages.shown[0].icon, MessageIcon::Information);
            EXPECT_EQ(focused(), rowName(description)) << way;
            EXPECT_EQ(field(description)->selectedText(), "abc") << way;
        }
    EXPECT_EQ(std::ranges::count(spreadsheet.calls, "new"), std::ssize(spreadsheet.calls)) << "no build was started";
}

TEST_F(EntryKeys, PressesEveryButtonByEnterSpaceAndItsAccessKey)
{
    open();
    struct {
        const char* button;
        Qt::Key accessKey;
    } const cases[] = {{"PushButton22", Qt::Key_S}, {"PushButton7", Qt::Key_L}, {"PushButton6", Qt::Key_H}};
    for (const auto& [name, accessKey] : cases) {
        auto* const button = control<PushButton>(name);
        int pressed = 0;
        button->disconnect(form.get());
        QObject::connect(button, &PushButton::clicked, form.get(), [&pressed] { ++pressed; });
        button->setFocus();
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
            press(key);
        EXPECT_EQ(pressed, 3) << name;
        field("txtName(0)")->setFocus();
        press(accessKey, Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&pressed] { return pressed == 4; })) << name;
        EXPECT_FALSE(button->text().contains('&'));
        messages.shown.clear();
        press(Qt::Key_F1); // help, wherever the focus is
        EXPECT_EQ(messages.shown.size(), 1U);
    }
}

TEST_F(EntryKeys, GoesToFieldsByTheirAccessKeys)
{
    open(3);
    control<QScrollBar>("VScroll1")->setValue(1);
    for (const auto& [key, target] : {std::pair(Qt::Key_P, "dtPeriodEnding"), std::pair(Qt::Key_E, "txtEmployeeID(1)"),
                                      std::pair(Qt::Key_C, "txtCompanyName")}) {
        press(key, Qt::AltModifier);
        EXPECT_EQ(focused(), target);
    }
}

TEST_F(EntryKeys, GoesToTheSameFieldOfTheNextEmployee)
{
    open(3);
    field("txtOT(0)")->setFocus();
    for (const auto& [key, target] : {std::pair(Qt::Key_PageDown, "txtOT(1)"), std::pair(Qt::Key_PageDown, "txtOT(2)"),
                                      std::pair(Qt::Key_PageDown, "txtOT(2)"), std::pair(Qt::Key_PageUp, "txtOT(1)"),
                                      std::pair(Qt::Key_PageUp, "txtOT(0)"), std::pair(Qt::Key_PageUp, "txtOT(0)")}) {
        press(key, Qt::ControlModifier);
        EXPECT_EQ(focused(), target);
        EXPECT_FALSE(QApplication::focusWidget()->visibleRegion().isEmpty());
    }
    field("txtCompanyName")->setFocus();
    press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(focused(), "txtEmployeeID(1)");
}

TEST_F(EntryKeys, BringsAFieldIntoViewBeforeItChanges)
{
    QApplication::clipboard()->setText("7");
    struct {
        const char* what;
        std::function<void()> act;
        bool isShown = true;
    } const cases[] = {
        {"a letter", [] { QTest::keyClicks(QApplication::focusWidget(), "x"); }},
        {"delete", [] { press(Qt::Key_Delete); }},
        {"paste", [] { press(Qt::Key_V, Qt::ControlModifier); }},
        {"paste by Insert", [] { press(Qt::Key_Insert, Qt::ShiftModifier); }},
        {"undo", [] { press(Qt::Key_Z, Qt::ControlModifier); }},
        {"input method",
         [] {
             QInputMethodEvent composed;
             composed.setCommitString("x");
             QApplication::sendEvent(QApplication::focusWidget(), &composed);
         }},
        {"refused Tab", [] { pressTab(); }},
        {"refused click", [&] { clickOn(field("txtName(2)")); }},
        {"Ctrl alone", [] { press(Qt::Key_Control, Qt::ControlModifier); }, false},
        {"Shift alone", [] { press(Qt::Key_Shift, Qt::ShiftModifier); }, false},
        {"nothing", [] {}, false},
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
    for (QWidget* focus :
         {static_cast<QWidget*>(field("txtName(0)")), static_cast<QWidget*>(field("txtOT(0)")),
          static_cast<QWidget*>(field("dtPeriodEnding")), static_cast<QWidget*>(control<PushButton>("PushButton6"))}) {
        focus->setFocus();
        press(Qt::Key_Escape);
    }
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(text("txtName(0)"), "Ned");
    EXPECT_EQ(text("txtOT(0)"), "eight");
    EXPECT_EQ(store.values["dtPeriodEnding"], "3/15/2026");
    EXPECT_TRUE(messages.shown.empty());
}

/// The decimal key as keyboards report it: with a period or a comma on it, and as Delete while NumLock is off.
void pressDecimalKey(const char* printed)
{
    const Qt::Key key = *printed == ',' ? Qt::Key_Comma : *printed == '.' ? Qt::Key_Period : Qt::Key_Delete;
    QKeyEvent pressed(QEvent::KeyPress, key, Qt::KeypadModifier, QString::fromLatin1(printed));
    QApplication::sendEvent(QApplication::focusWidget(), &pressed);
}

TEST_F(EntryKeys, EntersTheDecimalSignOfTheRegionByTheKeypad)
{
    for (const char* sign : {",", ".", "\xD9\xAB"}) {
        formats.decimalSeparator = sign;
        open();
        for (const char* printed : {".", ",", ""})
            for (const RowField& description : rowFields) {
                type(rowName(description).c_str(), "12");
                pressDecimalKey(printed);
                QTest::keyClicks(field(description), "5");
                const std::string entered = isNumeric(description) && *printed != '\0' ? sign : printed;
                EXPECT_EQ(text(rowName(description).c_str()), "12" + entered + "5") << description.name;
                type(rowName(description).c_str(), "1");
            }
    }
}

TEST_F(EntryKeys, UndoesWhatTidyingReplaced)
{
    open();
    for (const RowField& description : rowFields | std::views::filter(isNumeric)) {
        type(rowName(description).c_str(), "1234.5");
        pressTab();
        ASSERT_NE(text(rowName(description).c_str()), "1234.5") << description.name;
        field(description)->setFocus();
        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(text(rowName(description).c_str()), "1234.5") << description.name;
        EXPECT_EQ(store.values[rowFieldKey(description, 0)], "1234.5");
        type(rowName(description).c_str(), "1");
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
    for (int presses = 0; presses < 2; ++presses)
        click("PushButton7");
    EXPECT_EQ(control<QScrollBar>("VScroll1")->value(), 0);
    for (const auto& [key, sample] :
         {std::pair("txtCompanyName", "ACME Inc"), std::pair("dtPeriodEnding", "2/28/2026"),
          std::pair("txtEmployeeID0", "E118"), std::pair("txtHourlyWage0", "$15.00"), std::pair("txtTaxStatus0", ""),
          std::pair("txtStateTax0", "10"), std::pair("txtOTRate0", "$10.25"), std::pair("txtOtherDeduction0", "$2.00")})
        EXPECT_EQ(store.values[key], sample) << key;
    EXPECT_FALSE(store.values.contains("txtName2"));
    std::vector<QWidget*> all = {field("txtCompanyName"), field("dtPeriodEnding")};
    for (const RowField& description : rowFields)
        all.push_back(field(description));
    for (QWidget* changed : all) {
        changed->setFocus();
        press(Qt::Key_Z, Qt::ControlModifier);
    }
    auto after = store.values;
    after["txtOtherDeduction0"] = before.at("txtOtherDeduction0"); // tidied when the sample's button was clicked
    EXPECT_EQ(after, before);
}

TEST_F(EntryKeys, TabsThroughTheFieldsOfEveryEmployeeAndBack)
{
    constexpr std::int16_t rows = 25;
    open(rows);
    std::vector<std::string> expected = {"txtCompanyName", "dtPeriodEnding"};
    for (std::int16_t row = 0; row < rows; ++row)
        for (const RowField& description : rowFields)
            expected.push_back(std::string(description.name) + "(" + std::to_string(row) + ")");
    expected.insert(expected.end(), {"PushButton22", "PushButton7", "PushButton6"});
    field("txtCompanyName")->setFocus();
    for (const std::string& name : expected) {
        ASSERT_EQ(focused(), name);
        EXPECT_FALSE(QApplication::focusWidget()->visibleRegion().isEmpty()) << name;
        pressTab();
    }
    for (const std::string& name : expected | std::views::reverse) {
        press(Qt::Key_Backtab, Qt::ShiftModifier);
        ASSERT_EQ(focused(), name);
    }
}

TEST_F(EntryKeys, KeepsAndRefillsEveryRow)
{
    open(25);
    for (const char* name : {"txtName(1)", "txtOT(24)"}) {
        field(name)->setFocus();
        QTest::keyClicks(field(name), "7");
    }
    EXPECT_EQ(store.values["txtName1"], "7");
    EXPECT_EQ(store.values["txtOT24"], "7");
    EXPECT_FALSE(store.values.contains("txtName2")) << "a row never filled costs the first start nothing";
    store.values["txtHourlyWage24"] = "12.5";
    open(25);
    EXPECT_EQ(text("txtName(1)"), "7");
    EXPECT_EQ(text("txtHourlyWage(24)"), "$12.50");
    EXPECT_EQ(store.values["txtHourlyWage24"], "$12.50");
    EXPECT_EQ(text("txtHourlyWage(12)"), "$0.00");
    EXPECT_EQ(control<QScrollBar>("VScroll1")->maximum(), 24);
    EXPECT_EQ(control<QLabel>("lblSerialNo(24)")->text(), "Serial Number : 25");
}

TEST_F(EntryKeys, TurnsTheWheelToTheNextEmployee)
{
    open(3);
    const QPointF middle = control<QFrame>("Picture1")->mapTo(form.get(), QPoint(5, 5));
    const auto turn = [&](int notches) {
        QWheelEvent event(middle, form->mapToGlobal(middle), {}, {0, 120 * notches}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(form.get(), &event); // where it comes to when nothing under the mouse takes it
        return control<QScrollBar>("VScroll1")->value();
    };
    EXPECT_EQ(turn(-1), 1);
    EXPECT_EQ(turn(-1), 2);
    EXPECT_EQ(turn(1), 1);
}

TEST(EmployeeCount, IsTheNearestFromOneToTwentyFiveAndOnlyPlainDigitsAreAsWanted)
{
    struct {
        std::vector<const char*> wanted;
        std::int16_t count;
        bool isAsWanted;
    } const cases[] = {
        {{"", "1", "01"}, 1, true},
        {{"2", "2", "002"}, 2, true},
        {{"25"}, 25, true},
        {{"26", "99", "65561", "99999999999999999999"}, 25, false},
        {{"0", "-3", "-99999999999999999999"}, 1, false},
        {{"three", "+3", " 3", "3 ", "3.0", "0x10", "3,", "1e1", "-", "-0"}, 1, false},
    };
    for (const auto& [texts, count, isAsWanted] : cases)
        for (const char* wanted : texts) {
            EXPECT_EQ(employeeCount(wanted).count, count) << '"' << wanted << '"';
            EXPECT_EQ(employeeCount(wanted).isAsWanted, isAsWanted) << '"' << wanted << '"';
        }
}

} // namespace
