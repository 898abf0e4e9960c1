#include "app/base/text/Unicode.h"

#include <gtest/gtest.h>

namespace wagemill {

TEST(Unicode, ConvertsBothWaysAndReplacesWhatIsNotText)
{
    struct {
        std::string utf8;
        std::u16string utf16;
    } const both[] = {{"", u""},
                      {"plain", u"plain"},
                      {"\xC3\xA9\xE2\x82\xAC", u"\u00E9\u20AC"},
                      {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"}};
    for (const auto& [utf8, utf16] : both) {
        EXPECT_EQ(toUtf16(utf8), utf16);
        EXPECT_EQ(toUtf8(utf16), utf8);
        EXPECT_EQ(utf16Length(utf8), utf16.size());
    }
    EXPECT_EQ(toUtf8(u"\xDE00\xD83Dz"), "\xEF\xBF\xBD\xEF\xBF\xBDz");
    for (const char* bad :
         {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"})
        EXPECT_EQ(toUtf16(bad).find_first_not_of(u'\xFFFD'), std::u16string::npos);
    EXPECT_EQ(toUtf16("\xC3z"), u"\xFFFDz") << "what follows a broken character stays";
}

} // namespace wagemill
