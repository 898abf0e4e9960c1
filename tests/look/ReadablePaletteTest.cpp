#include "app/look/ReadablePalette.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace wagemill;

TEST(ReadablePalette, MovesApartWhatCannotBeReadAndLeavesTheRest)
{
    EXPECT_NEAR(contrastRatio("#000000", "#ffffff"), 21, 0.01);
    EXPECT_NEAR(contrastRatio("#767676", "#ffffff"), 4.54, 0.01);
    EXPECT_NEAR(contrastRatio("#308cc6", "#ffffff"), 3.69, 0.01); // the published example, and a usual highlight
    const std::tuple<QColor, QColor, bool> cases[] = {{"#ffffff", "#000000", true},  {"#31363b", "#eff0f1", true},
                                                      {"#c0c0c0", "#909090", false}, {"#404040", "#606060", false},
                                                      {"#777777", "#777777", false}, {"#0000ff", "#ff0000", false}};
    for (const auto& [background, ink, isKept] : cases) {
        QPalette users(background, background);
        for (const auto role : {QPalette::Base, QPalette::Highlight})
            users.setColor(role, background);
        for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text, QPalette::HighlightedText})
            users.setColor(role, ink);
        const QPalette readable = readablePalette(users);
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            const std::tuple<QPalette::ColorRole, QPalette::ColorRole, double> pairs[] = {
                {QPalette::Text, QPalette::Base, 4.5},
                {QPalette::WindowText, QPalette::Window, 4.5},
                {QPalette::ButtonText, QPalette::Button, 4.5},
                {QPalette::Highlight, QPalette::HighlightedText, 4.5},
                {QPalette::Mid, QPalette::Button, 3}};
            for (const auto& [one, other, wanted] : pairs)
                EXPECT_GE(contrastRatio(readable.color(group, one), readable.color(group, other)), wanted)
                    << one << " on " << background.name().toStdString();
            EXPECT_EQ(readable.color(group, QPalette::Text) == ink, isKept) << background.name().toStdString();
            EXPECT_EQ(readable.color(group, QPalette::Button), background);
        }
    }
}
