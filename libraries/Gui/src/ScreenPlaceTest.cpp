#include "ScreenPlace.h"

#include <gtest/gtest.h>

using kelp::placeWithin;

namespace {

const QRect left(0, 0, 1280, 800);
const QRect right(1280, 0, 2560, 1440);

TEST(ScreenPlace, LeavesWhatLiesOnAScreenWhereItIs)
{
    EXPECT_EQ(placeWithin({100, 50, 900, 600}, {left}), QRect(100, 50, 900, 600));
    EXPECT_EQ(placeWithin({1300, 10, 2000, 1400}, {left, right}), QRect(1300, 10, 2000, 1400));
}

TEST(ScreenPlace, MovesWhatHangsOverAnEdgeOntoItsScreen)
{
    EXPECT_EQ(placeWithin({600, -40, 900, 600}, {left}), QRect(380, 0, 900, 600));
    EXPECT_EQ(placeWithin({-300, 500, 900, 600}, {left}), QRect(0, 200, 900, 600));
}

TEST(ScreenPlace, PutsWhatWasOnAScreenThatIsGoneOntoTheFirst)
{
    EXPECT_EQ(placeWithin({2000, 900, 700, 500}, {left}), QRect(580, 300, 700, 500));
    EXPECT_EQ(placeWithin({9000, 9000, 700, 500}, {left, right}), QRect(580, 300, 700, 500));
}

TEST(ScreenPlace, MakesWhatIsLargerThanItsScreenAsLargeAsThat)
{
    EXPECT_EQ(placeWithin({-10, -10, 5000, 4000}, {left}), left);
    EXPECT_EQ(placeWithin({1400, 100, 3000, 700}, {left, right}), QRect(1280, 100, 2560, 700));
}

TEST(ScreenPlace, WithoutAScreenKeepsThePlace)
{
    EXPECT_EQ(placeWithin({7, 8, 9, 10}, {}), QRect(7, 8, 9, 10));
}

} // namespace
