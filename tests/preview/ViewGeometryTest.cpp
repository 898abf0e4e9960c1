#include "preview/ViewGeometry.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace wagemill {

TEST(LayoutUnit, IsFourPixels)
{
    EXPECT_EQ(toUnits(10), 2.5F);
    EXPECT_EQ(toPixels(-2.5F), -10);
    EXPECT_EQ(toPixels(0.4F), 2) << "to the nearest pixel";
}

TEST(NaturalExtent, IsTwoLessThanTheBoxAndRoundsHalvesToEven)
{
    EXPECT_EQ(naturalExtent(1002), 1000);
    EXPECT_EQ(naturalExtent(12.5), 10); // 10.5
    EXPECT_EQ(naturalExtent(13.5), 12); // 11.5
    EXPECT_THROW(naturalExtent(1e12), std::overflow_error);
}

TEST(ZoomedExtent, RoundsDown)
{
    EXPECT_EQ(zoomedExtent(1001, 0.25F), 250);
    EXPECT_EQ(zoomedExtent(-1, 0.25F), -1); // an empty picture
    EXPECT_THROW(zoomedExtent(std::numeric_limits<std::int32_t>::max(), 1.25F), std::overflow_error);
}

TEST(Drawable, BelowBothLimits)
{
    EXPECT_TRUE(isDrawable(13999, 4999));
    EXPECT_FALSE(isDrawable(14000, 1));
    EXPECT_FALSE(isDrawable(1, 5000));
}

TEST(ScrollRange, CoversTheOverhangInUnitsOfOneOrTen)
{
    struct {
        float overhang;
        ScrollRange expected;
    } const cases[] = {
        {-5, {0, 0}},      {0, {0, 0}},                         // fits: the bar is disabled
        {60, {60, 1}},     {100, {100, 1}},   {101, {10, 10}},  // beyond 100 in units of 10
        {1234, {123, 10}}, {1245, {124, 10}}, {1255, {126, 10}} // 124.5 and 125.5: halves go to the even number
    };
    for (const auto& [overhang, expected] : cases)
        EXPECT_EQ(scrollRange(overhang), expected) << "overhang " << overhang;
    EXPECT_THROW(scrollRange(400000), std::overflow_error);
}

TEST(MissingOverhang, LetsTheRangeEndWhereThePictureEnds)
{
    const std::pair<float, float> cases[] = {{-5, 0},       {0, 0},   {60, 0},        {60.25F, 0.75F},
                                             {99.5F, 0.5F}, {100, 0}, {100.5F, 9.5F}, {1250, 0}};
    for (const auto& [overhang, missing] : cases)
        EXPECT_EQ(missingOverhang(overhang), missing) << overhang;
}

TEST(ScrolledPosition, IsASixteenBitProduct)
{
    EXPECT_EQ(scrolledPosition(10, 123), -1230);
    EXPECT_EQ(scrolledPosition(0, 100), 0);
    EXPECT_EQ(scrolledPosition(1, 32767), -32767);
    EXPECT_THROW(scrolledPosition(10, 3277), std::overflow_error);
}

TEST(ScrollValue, IgnoresTooMuchHorizontallyAndRefusesItVertically)
{
    struct {
        std::int16_t percent;
        std::int16_t maximum;
        std::optional<std::int16_t> expected;
    } const cases[] = {
        {-1, 100, std::nullopt}, {0, 100, 0}, {50, 100, 50}, {100, 100, 100}, {50, 5, 2}, // 2.5 goes to the even number
        {50, 123, 62},                                                                    // 61.5
    };
    for (const auto& [percent, maximum, expected] : cases) {
        EXPECT_EQ(horizontalScrollValue(percent, maximum), expected) << percent << " percent of " << maximum;
        EXPECT_EQ(verticalScrollValue(percent, maximum), expected) << percent << " percent of " << maximum;
    }
    EXPECT_EQ(horizontalScrollValue(101, 100), std::nullopt);
    EXPECT_THROW(verticalScrollValue(101, 100), std::out_of_range);
    EXPECT_EQ(horizontalScrollValue(104, 10), std::nullopt); // 10.4 is beyond, though it would round to the maximum
    EXPECT_EQ(verticalScrollValue(104, 10), 10);
}

TEST(DraggedPosition, FollowsThePointerInsideTheViewport)
{
    struct {
        float wanted;
        float viewport;
        float picture;
        float expected;
    } const cases[] = {
        {-120, 400, 1000, -120},  {350, 400, 1000, 0}, // its left edge stays at the viewport's
        {-1050, 400, 1000, -600},                      // its right edge stays at the viewport's
        {0, 400, 300, 100},                            // smaller: at the right end, unless ...
        {1, 400, 300, 0},                              // ... it was moved right
    };
    for (const auto& [wanted, viewport, picture, expected] : cases)
        EXPECT_EQ(draggedPosition(wanted, viewport, picture), expected) << wanted;
}

TEST(ScrolledPercent, IsThePartOfTheOverhang)
{
    EXPECT_EQ(scrolledPercent(-300, 1000, 400, "wide"), 50);
    EXPECT_EQ(scrolledPercent(-9, 600, 400, "wide"), 4);     // 4.5 goes to the even number
    EXPECT_EQ(scrolledPercent(-104, 500, 400, "high"), 104); // beyond the end
    EXPECT_EQ(scrolledPercent(100, 300, 400, "wide"), -100); // a smaller picture at its right end
    EXPECT_THROW(scrolledPercent(-400, 401, 400, "wide"), std::overflow_error);
    EXPECT_THROW(scrolledPercent(0, 400, 400, "high"), std::domain_error);
}

} // namespace wagemill
