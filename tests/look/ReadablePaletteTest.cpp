#include "app/look/ReadablePalette.h"

#include <gtest/gtest.h>

namespace wagemill {

TEST(ContrastRatio, IsOneForEqualsAndTwentyOneForBlackAndWhite)
{
    struct {
        const char* one;
        const char* other;
        double expected;
    } const cases[] = {
        {"#000000", "#ffffff", 21},
        {"#123456", "#123456", 1},
        {"#767676", "#ffffff", 4.54},
        {"#308cc6", "#ffffff", 3.69}, // the published example, and a usual highlight
    };
    for (const auto& [one, other, expected] : cases)
        EXPECT_NEAR(contrastRatio(QColor(one), QColor(other)), expected, 0.01) << one << " " << other;
}

TEST(ReadablePalette, MovesApartWhatCannotBeReadAndLeavesTheRest)
{
    struct {
        const char* background;
        const char* ink;
        bool isKept;
    } const cases[] = {{"#ffffff", "#000000", true},  {"#31363b", "#eff0f1", true},  {"#c0c0c0", "#909090", false},
                       {"#404040", "#606060", false}, {"#777777", "#777777", false}, {"#0000ff", "#ff0000", false}};
    for (const auto& [background, ink, isKept] : cases) {
        QPalette users{QColor(background), QColor(background)};
        users.setColor(QPalette::Base, QColor(background));
        for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
            users.setColor(role, QColor(ink));
        users.setColor(QPalette::Highlight, QColor(background));
        users.setColor(QPalette::HighlightedText, QColor(ink));
        const QPalette readable = readablePalette(users);
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            const auto contrast = [&](QPalette::ColorRole one, QPalette::ColorRole other) {
                return contrastRatio(readable.color(group, one), readable.color(group, other));
            };
            EXPECT_GE(contrast(QPalette::Text, QPalette::Base), 4.5) << background << " " << ink;
            EXPECT_GE(contrast(QPalette::WindowText, QPalette::Window), 4.5) << background << " " << ink;
            EXPECT_GE(contrast(QPalette::ButtonText, QPalette::Button), 4.5) << background << " " << ink;
            EXPECT_GE(contrast(QPalette::Highlight, QPalette::HighlightedText), 4.5) << background << " " << ink;
            EXPECT_GE(contrast(QPalette::Mid, QPalette::Button), 3) << background << " " << ink;
            EXPECT_EQ(readable.color(group, QPalette::Text) == QColor(ink), isKept) << background << " " << ink;
            EXPECT_EQ(readable.color(group, QPalette::Button), QColor(background));
        }
    }
}

} // namespace wagemill
