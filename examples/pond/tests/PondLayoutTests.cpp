#include <cmath>

#include <gtest/gtest.h>

#include "PondLayout.h"

namespace pond {
namespace {

constexpr PondLayout::Size window{780, 640};

TEST(PondLayout, CentresAFewLotuses_AndPansOnlyAcrossAWiderPond)
{
    const PondLayout few(3, window);
    EXPECT_DOUBLE_EQ(few.width(), window.width);
    EXPECT_DOUBLE_EQ(few.maximumPan(), 0);
    EXPECT_NEAR((few.slot(0).x + few.slot(2).x) / 2, window.width / 2, 1e-9);
    EXPECT_DOUBLE_EQ(few.clampedPan(50), 0);

    const PondLayout all(17, window);
    EXPECT_GT(all.maximumPan(), 0);
    EXPECT_DOUBLE_EQ(all.clampedPan(-5), 0);
    EXPECT_DOUBLE_EQ(all.clampedPan(1e6), all.maximumPan());
    // The outer lotuses keep their whole area inside the pond.
    EXPECT_GE(all.slot(0).x - all.halfWidth(), 0);
    EXPECT_LE(all.slot(16).x + all.halfWidth(), all.width());
    // Neighbours alternate rows, and the rows sit between the chrome's
    // bands at the top and the bottom.
    for (std::size_t i = 0; i + 1 < all.count(); ++i)
        EXPECT_NE(all.slot(i).row, all.slot(i + 1).row);
    for (std::size_t i = 0; i < all.count(); ++i) {
        EXPECT_GE(all.slot(i).y - all.reachAbove(), 120);
        EXPECT_LE(all.slot(i).y + all.reachBelow(), window.height - 40);
    }
}

TEST(PondLayout, HitsEachLotusAtItsOwnPoint_AndNothingOnOpenWater)
{
    for (const PondLayout::Size view : {window, PondLayout::Size{400, 300}, PondLayout::Size{2000, 1200}}) {
        const PondLayout layout(17, view);
        for (std::size_t i = 0; i < layout.count(); ++i) {
            const PondLayout::Slot& slot = layout.slot(i);
            EXPECT_EQ(layout.hit(slot.x, slot.y - 10), i) << i << " in " << view.width;
            EXPECT_EQ(layout.hit(slot.x, slot.y + layout.reachBelow() - 2), i) << i << " in " << view.width;
        }
        EXPECT_EQ(layout.hit(layout.slot(0).x, 5), std::nullopt);
        EXPECT_EQ(layout.hit(-50, layout.slot(0).y), std::nullopt);
    }
}

} // namespace
} // namespace pond
