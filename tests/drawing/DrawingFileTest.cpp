#include "drawing/DrawingFile.h"

#include "app/base/Bytes.h"
#include "tests/support/FailureOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace wagemill {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::size_t startBytes = 8; ///< signature and version; the checksum at the end takes as many

drawing::Drawing oneOfEverything()
{
    const drawing::Text text{.cell = {1, 2, 3, 4},
                             .room = {5, 6, 7, 8.5},
                             .text = "Net\nPay \u00E4",
                             .font = 1,
                             .color = {9, 10, 11},
                             .align = drawing::Align::Right,
                             .vertical = drawing::VerticalAlign::Center,
                             .wrap = true,
                             .shrink = true,
                             .indent = 15,
                             .hashesWhenTooWide = true,
                             .alwaysHashes = true,
                             .shorterForms = {"12.5", "13"}};
    return {.width = 853,
            .height = 301,
            .fills = {{{10, 20, 30, 40}, {1, 2, 255}}, {{-1, 0, 0.5, 1e6}, {}}},
            .lines = {{0, 1, 2, 3, drawing::LineStyle::SlantDashDot, {4, 5, 6}}},
            .fonts = {{}, {"Times New Roman", 240, true, true, true, true}},
            .texts = {text, {}}};
}

const std::string accepted = "no failure";

std::string refusalOf(const Bytes& file)
{
    return test::failureOf([&] { readDrawingFile(file); });
}

/// The file with a checksum that belongs to the rest of it.
Bytes sealed(Bytes file)
{
    const std::size_t end = file.size() - startBytes;
    putU64(file, end, drawingChecksum(std::span(file).first(end)));
    return file;
}

TEST(DrawingFile, GivesBackTheDrawingAndRefusesEveryPrefixAndEveryFlippedBit)
{
    EXPECT_EQ(readDrawingFile(drawingFile({})), drawing::Drawing{});
    Bytes file = drawingFile(oneOfEverything());
    EXPECT_TRUE(isDrawingFile(file));
    EXPECT_EQ(readDrawingFile(file), oneOfEverything());
    for (std::size_t size = 0; size < file.size(); ++size) {
        const Bytes prefix(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(refusalOf(prefix), accepted) << size;
        // With a checksum that belongs to it, what is missing is noticed where it is read.
        EXPECT_NE(size < 2 * startBytes ? "too short" : refusalOf(sealed(prefix)), accepted) << size;
    }
    for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
        const auto mask = static_cast<std::byte>(1U << bit % 8);
        file[bit / 8] ^= mask;
        EXPECT_NE(refusalOf(file), accepted) << bit;
        refusalOf(sealed(file)); // some are another drawing then: nothing may crash or take its time
        file[bit / 8] ^= mask;
    }
}

TEST(DrawingFile, SaysWhatIsWrong)
{
    const auto changed = [](auto change) {
        drawing::Drawing drawing = oneOfEverything();
        change(drawing);
        return drawingFile(drawing);
    };
    Bytes longer = drawingFile({});
    longer.insert(longer.end() - startBytes, std::byte{0});
    Bytes newer = drawingFile({});
    newer[startBytes - 1] = std::byte{2};
    const std::pair<Bytes, const char*> cases[] = {
        {Bytes(100), "not a drawing"},
        {newer, "another version"},
        {sealed(longer), "damaged at byte"},
        {changed([](auto& drawing) { drawing.texts[0].font = 2; }), "damaged at byte"},
        {changed([](auto& drawing) { drawing.lines[0].style = drawing::LineStyle(14); }), "damaged at byte"},
        {changed([](auto& drawing) { drawing.texts[0].align = drawing::Align(3); }), "damaged at byte"},
        {changed([](auto& drawing) { drawing.fills[0].area.left = std::nan(""); }), "damaged at byte"},
        {changed([](auto& drawing) { drawing.width = 2e8; }), "damaged at byte"},
    };
    for (const auto& [file, reason] : cases)
        EXPECT_NE(refusalOf(file).find(reason), std::string::npos) << refusalOf(file) << " should say " << reason;
}

} // namespace
} // namespace wagemill
