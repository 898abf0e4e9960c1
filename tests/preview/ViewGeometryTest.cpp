#include "preview/ViewGeometry.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace wagemill;

TEST(ViewGeometry, RoundsPixelsAndExtentsAndLimitsWhatIsDrawn)
{
    EXPECT_EQ(toUnits(10), 2.5F);
    EXPECT_EQ(toPixels(-2.5F), -10);
    EXPECT_EQ(toPixels(0.4F), 2) << "to the nearest pixel";
    EXPECT_EQ(naturalExtent(12.5), 10); // 10.5: halves go to the even number, here and below
    EXPECT_EQ(naturalExtent(13.5), 12);
    EXPECT_EQ(zoomedExtent(1001, 0.25F), 250);
    EXPECT_EQ(zoomedExtent(-1, 0.25F), -1) << "an empty picture";
    EXPECT_TRUE(isDrawable(13999, 4999));
    EXPECT_FALSE(isDrawable(14000, 1));
    EXPECT_FALSE(isDrawable(1, 5000));
}

TEST(ViewGeometry, ScrollsOverTheOverhangInUnitsOfOneOrTenUpToWhereThePictureEnds)
{
    struct {
        float overhang;
        ScrollRange expected;
        float missing;
    } const cases[] = {
        {-5, {0, 0}, 0},          {0, {0, 0}, 0},       {60, {60, 1}, 0}, // the first two fit: the bar is disabled
        {60.25F, {60, 1}, 0.75F}, {100, {100, 1}, 0},   {101, {10, 10}, 9},
        {100.5F, {10, 10}, 9.5F}, {1245, {124, 10}, 5}, {1255, {126, 10}, 5},
    };
    for (const auto& [overhang, range, missing] : cases) {
        EXPECT_EQ(scrollRange(overhang), range) << overhang;
        EXPECT_EQ(missingOverhang(overhang), missing) << overhang;
    }
    EXPECT_EQ(scrolledPosition(10, 123), -1230);
    EXPECT_EQ(scrolledPosition(1, 32767), -32767);
    EXPECT_THROW(scrolledPosition(10, 3277), std::overflow_error);
}

TEST(ViewGeometry, IgnoresTooMuchHorizontallyAndRefusesItVertically)
{
    struct {
        std::int16_t percent;
        std::int16_t maximum;
        std::optional<std::int16_t> expected;
    } const cases[] = {{-1, 100, std::nullopt}, {0, 100, 0}, {100, 100, 100}, {50, 5, 2}, {50, 123, 62}};
    for (const auto& [percent, maximum, expected] : cases) {
        EXPECT_EQ(horizontalScrollValue(percent, maximum), expected) << percent << " percent of " << maximum;
        EXPECT_EQ(verticalScrollValue(percent, maximum), expected) << percent << " percent of " << maximum;
    }
    EXPECT_EQ(horizontalScrollValue(101, 100), std::nullopt);
    EXPECT_THROW(verticalScrollValue(101, 100), std::out_of_range);
    EXPECT_EQ(horizontalScrollValue(104, 10), std::nullopt); // 10.4 is beyond, though it would round to the maximum
    EXPECT_EQ(verticalScrollValue(104, 10), 10);
}

TEST(ViewGeometry, DragsASmallerPictureToTheRightEndAndCountsPercentsOfTheOverhang)
{
    EXPECT_EQ(draggedPosition(0, 400, 300), 100);
    EXPECT_EQ(draggedPosition(1, 400, 300), 0);
    EXPECT_EQ(scrolledPercent(-9, 600, 400, "wide"), 4);
    EXPECT_EQ(scrolledPercent(-104, 500, 400, "high"), 104) << "beyond the end";
    EXPECT_EQ(scrolledPercent(100, 300, 400, "wide"), -100) << "a smaller picture at its right end";
    EXPECT_THROW(scrolledPercent(-400, 401, 400, "wide"), std::overflow_error);
}
