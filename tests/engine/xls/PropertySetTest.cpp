#include "workbook/engine/xls/PropertySet.h"
#include "app/base/Bytes.h"
#include "tests/engine/xls/TestBytes.h"

#include <gtest/gtest.h>

namespace wagemill::engine::xls {

const DocumentProperties payroll{"Payroll", "Ann", "Bob", "Wagemill", 0x01C3E8A000000000, 0x01DC000012345678};

TEST(PropertySet, SaysHowItsTextsAreWritten)
{
    const auto codePage = [](std::string title) { // the first value of the section
        DocumentProperties properties = payroll;
        properties.title = std::move(title);
        const Bytes stream = writeSummary(properties);
        const std::size_t value = 48 + 8 + 7 * 8 + 4;
        return ByteReader(stream, value).u16();
    };
    EXPECT_EQ(codePage("Payroll"), 1252);
    EXPECT_EQ(codePage("L\xC3\xB6hne"), 65001);
}

TEST(PropertySet, TakesNewTimesAndKeepsTheRest)
{
    DocumentProperties later = payroll;
    later.saved += 7;
    Bytes stream = writeSummary(payroll);
    stampSummary(stream, {"", "", "", "", 0, later.saved});
    EXPECT_EQ(stream, writeSummary(later));
    DocumentProperties odd;
    odd.title = "pay";
    stream = writeSummary(odd); // ends in the zero that ends the title
    Bytes unfilled = stream;
    unfilled.pop_back();
    putU32(unfilled, 48, static_cast<std::uint32_t>(unfilled.size() - 48));
    stampSummary(unfilled, {});
    EXPECT_EQ(unfilled, stream);
    const Bytes whole = writeSummary(payroll);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        stampSummary(cut, later);
        EXPECT_LE(cut.size(), size + 3);
        Bytes changed = whole;
        changed[size] ^= std::byte{0xFF};
        stampSummary(changed, later);
        EXPECT_EQ(changed.size(), whole.size());
    }
}

} // namespace wagemill::engine::xls
