#include "app/look/QtMessages.h"

#include "app/look/Look.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <tuple>

using namespace wagemill;

namespace {

/// Shows the message and, once its box is open, lets `user` act on it.
MessageAnswer show(const Message& message, const std::function<void(QMessageBox&)>& user)
{
    bool wasOpen = false;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        wasOpen = true;
        user(*box);
        if (box->isVisible())
            box->close();
    });
    const MessageAnswer answer = QtMessages().show(message);
    EXPECT_TRUE(wasOpen);
    return answer;
}

void press(QMessageBox& box, QMessageBox::StandardButton button)
{
    QTest::mouseClick(box.button(button), Qt::LeftButton);
}

TEST(QtMessages, ShowsPlainSelectableLines)
{
    const Message message{.text = "<b>Cannot</b>\r\nin Form1.Form_Load at line 10\r\rPlease & thanks",
                          .title = "Application Error",
                          .icon = MessageIcon::Warning};
    const auto answer = show(message, [](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), "Application Error");
        EXPECT_TRUE(box.isModal());
        auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
        ASSERT_NE(label, nullptr);
        EXPECT_EQ(label->text(), "<b>Cannot</b>\nin Form1.Form_Load at line 10\n\nPlease & thanks");
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        EXPECT_EQ(label->font().family(), "Arial");
        EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByMouse);
        EXPECT_EQ(box.buttons().size(), 1);
        press(box, QMessageBox::Ok);
    });
    EXPECT_EQ(answer, MessageAnswer::Ok);
}

TEST(QtMessages, BreaksNoAddressAndFitsTheScreenWithItsWholeTitle)
{
    makeApplicationTitle(productPhrase);
    const std::string help = "Questions? Please contact Team Quellory at https://quellory.example/contact";
    const std::tuple<std::string, MessageIcon, QMessageBox::Icon, bool> cases[] = {
        {"Done.", MessageIcon::None, QMessageBox::NoIcon, true},
        {help, MessageIcon::Information, QMessageBox::Information, true},
        {help + " " + help + " " + help, MessageIcon::Warning, QMessageBox::Warning, false}};
    for (const auto& [text, icon, shownIcon, isOneLine] : cases)
        show({.text = text, .title = {}, .icon = icon}, [&, oneLine = isOneLine, shown = shownIcon](QMessageBox& box) {
            const auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
            const int lines = label->height() / label->fontMetrics().lineSpacing();
            EXPECT_EQ(lines == 1, oneLine) << lines << " lines";
            EXPECT_EQ(box.icon(), shown);
            EXPECT_LE(box.width(), box.screen()->availableSize().width());
            EXPECT_EQ(box.windowTitle(), "Wagemill Payroll Workbook");
            EXPECT_GT(box.width(), box.fontMetrics().horizontalAdvance(box.windowTitle()) + 80) << "the title is cut";
        });
}

TEST(QtMessages, EveryWayOutOfAQuestionIsAnAnswer)
{
    const Message question{.text = "Overwrite?", .title = {}, .buttons = MessageButtons::YesNo};
    const std::tuple<const char*, std::function<void(QMessageBox&)>, MessageAnswer> cases[] = {
        {"Yes", [](QMessageBox& box) { press(box, QMessageBox::Yes); }, MessageAnswer::Yes},
        {"No", [](QMessageBox& box) { press(box, QMessageBox::No); }, MessageAnswer::No},
        {"Enter", [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }, MessageAnswer::Yes},
        {"Escape", [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }, MessageAnswer::No},
        {"the close box", [](QMessageBox& box) { box.close(); }, MessageAnswer::No},
    };
    for (const auto& [way, user, expected] : cases)
        EXPECT_EQ(show(question, user), expected) << way;
}

} // namespace
