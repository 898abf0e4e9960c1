#pragma once

#include "app/base/Files.h"
#include "app/look/Controls.h"
#include "entry/EntryField.h"
#include "entry/Form1.h"
#include "entry/data/RowFields.h"
#include "tests/support/MemoryStore.h"
#include "tests/support/RecordedMessages.h"
#include "tests/workbook/FakeSpreadsheet.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace wagemill::test {

/// The entry window over a store in memory and a spreadsheet that writes down what it is asked.
class EntryWindow : public testing::Test {
protected:
    EntryWindow() { setUserStore(std::make_unique<MemoryStore>(store)); }
    ~EntryWindow() override
    {
        form.reset();
        setUserStore(nullptr);
        setProgramEnd(nullptr);
    }

    void open(std::int16_t rows = 1)
    {
        setProgramEnd([this] { ++ended; });
        BuildServices services;
        services.formats = formats;
        services.spreadsheet = spreadsheet.platform();
        services.templateResource = []() -> std::span<const std::byte> { return {}; };
        services.randomNumber = [](std::int32_t, std::int32_t) { return 7; };
        form = std::make_unique<Form1>(Form1Setup{services, [this] { return today; }, rows});
        form->show();
        form->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    }

    template <typename Widget>
    Widget* control(const char* name) const
    {
        auto* const found = form->findChild<Widget*>(QString::fromUtf8(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    EntryField* field(const char* name) const { return control<EntryField>(name); }
    std::string text(const char* name) const { return field(name)->text().toStdString(); }

    /// The field of row 0 that a description names.
    EntryField* field(const RowField& description) const { return field(rowName(description).c_str()); }
    static std::string rowName(const RowField& description) { return std::string(description.name) + "(0)"; }

    /// Clicks into the field and types over what it holds.
    void type(const char* name, const char* typed) const
    {
        clickOn(field(name));
        QTest::keyClick(field(name), Qt::Key_A, Qt::ControlModifier);
        if (*typed == '\0')
            QTest::keyClick(field(name), Qt::Key_Delete);
        QTest::keyClicks(field(name), QString::fromUtf8(typed));
    }
    void click(const char* button) const { clickOn(control<PushButton>(button)); }
    /// The press that a screen reader asks for.
    void pressAsScreenReader(const char* button) const
    {
        QAccessible::queryAccessibleInterface(control<PushButton>(button))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
    }
    /// A press and release at the middle of a widget, as the platform reports it to the window.
    void clickOn(QWidget* widget) const
    {
        QTest::mouseClick(form->windowHandle(), Qt::LeftButton, {}, widget->mapTo(form.get(), widget->rect().center()));
    }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    static void pressTab() { press(Qt::Key_Tab); }
    /// As a user who turns to another program.
    static void leaveForAnotherProgram()
    {
        QWidget elsewhere;
        elsewhere.show();
        elsewhere.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&elsewhere));
    }
    static std::string focused() { return QApplication::focusWidget()->objectName().toStdString(); }

    MemoryStore::State store;
    RecordedMessages messages;
    FakeSpreadsheet spreadsheet;
    RegionalFormats formats;
    CalendarDate today{2026, 3, 15};
    int ended = 0;
    std::unique_ptr<Form1> form;
};

} // namespace wagemill::test
