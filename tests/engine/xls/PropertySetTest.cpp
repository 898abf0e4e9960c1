#include "workbook/engine/xls/PropertySet.h"
#include "tests/engine/xls/TestBytes.h"

#include <gtest/gtest.h>

namespace wagemill::engine::xls {

TEST(PropertySet, KeepsTextsOfEveryAlphabetAndTimes)
{
    for (const char* title :
         {"", "Payroll", "L\xC3\xB6hne \xE2\x82\xAC\xE2\x80\x93", "\xE7\xB5\xA6\xE4\xB8\x8E \xF0\x9F\x98\x80"}) {
        DocumentProperties properties;
        properties.title = title;
        properties.author = "Ann";
        properties.lastAuthor = "Bob";
        properties.application = "Wagemill";
        properties.created = 0x01C3E8A000000000;
        properties.saved = 0x01DC000012345678;
        DocumentProperties read;
        readSummary(writeSummary(properties), read);
        EXPECT_EQ(read.title, title);
        EXPECT_EQ(read.author, "Ann");
        EXPECT_EQ(read.lastAuthor, "Bob");
        EXPECT_EQ(read.application, "Wagemill");
        EXPECT_EQ(read.created, properties.created);
        EXPECT_EQ(read.saved, properties.saved);
    }
}

TEST(PropertySet, WritesTheWesternCodePageWhereItSuffices)
{
    DocumentProperties western;
    western.title = "\xE2\x82\xAC";
    DocumentProperties other;
    other.title = "\xE7\xB5\xA6";
    const auto codePage = [](const Bytes& stream) { // the first value of the section
        return std::to_integer<int>(stream.at(48 + 8 + 16 + 4)) | std::to_integer<int>(stream.at(48 + 8 + 16 + 5)) << 8;
    };
    EXPECT_EQ(codePage(writeSummary(western)), 1252);
    EXPECT_EQ(codePage(writeSummary(other)), 65001);
}

TEST(PropertySet, SurvivesEveryCutAndEveryByte)
{
    DocumentProperties properties;
    properties.title = "Payroll";
    properties.saved = 1;
    const Bytes whole = writeSummary(properties);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        DocumentProperties read;
        readSummary(std::span(whole).first(size), read);
        Bytes changed = whole;
        changed[size] ^= std::byte{0xFF};
        readSummary(changed, read);
        EXPECT_LE(read.title.size(), whole.size() * 3);
    }
}

} // namespace wagemill::engine::xls
