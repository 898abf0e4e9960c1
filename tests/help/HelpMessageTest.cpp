#include "help/HelpMessage.h"

#include "app/base/Messages.h"
#include "tests/support/RecordedMessages.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace wagemill {

TEST(HelpMessage, NamesTheContactForm)
{
    test::RecordedMessages messages;
    showHelpMessage();
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_EQ(messages.shown[0].text, "Questions? Please contact Team Quellory at https://quellory.example/contact");
    EXPECT_EQ(messages.shown[0].title, "");
    EXPECT_EQ(messages.shown[0].icon, MessageIcon::None);
    EXPECT_EQ(messages.shown[0].buttons, MessageButtons::Ok);
}

TEST(HelpMessage, AFailureIsReportedUnderTheButtonsLabel)
{
    /// Fails to show anything but the error dialog.
    class FailingMessages : public test::RecordedMessages {
    public:
        MessageAnswer show(const Message& message) override
        {
            if (message.title.empty())
                throw std::runtime_error("no room on the screen");
            return RecordedMessages::show(message);
        }
    } messages;
    showHelpMessage();
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_TRUE(messages.shown[0].text.starts_with(
        "no room on the screen\r\nin Wagemill2021/08/31.Form1.PushButton6_Click at line 10\r\r"))
        << messages.shown[0].text;
}

} // namespace wagemill
