#include "help/HelpMessage.h"

#include "app/base/Messages.h"
#include "tests/support/RecordedMessages.h"

#include <gtest/gtest.h>

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

} // namespace wagemill
