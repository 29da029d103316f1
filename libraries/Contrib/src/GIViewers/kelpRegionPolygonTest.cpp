#include "kelpRegionPolygon.h"

#include <QVector>

#include <gtest/gtest.h>

namespace {

using kelp::RegionPolygon;

const QPointF a(0.0, 0.0);
const QPointF b(4.0, 0.0);
const QPointF c(4.0, 3.0);
const QPointF d(1.0, 5.0);

QPolygonF polygon(const QVector<QPointF>& points)
{
    return QPolygonF(points);
}

TEST(RegionPolygon, TheFirstPointExistsTwiceSinceTheLastOneFollowsTheMouse)
{
    RegionPolygon region;
    EXPECT_FALSE(region.isDrawing());
    region.press(a);
    EXPECT_TRUE(region.isDrawing());
    EXPECT_EQ(region.getPolygon(), polygon({a, a}));
}

TEST(RegionPolygon, TwoClicksAndARightClickKeepTheirThreePointsAndClose)
{
    RegionPolygon region;
    region.press(a);
    region.press(b);
    region.finish();
    EXPECT_FALSE(region.isDrawing());
    EXPECT_EQ(region.getPolygon(), polygon({a, a, b, a}));
}

TEST(RegionPolygon, ThePointThatFollowsTheMouseGoesIfMoreThanThreeAreHeld)
{
    RegionPolygon region;
    region.press(a);
    region.move(b, false);
    region.press(b);
    region.move(c, false);
    region.press(c);
    region.move(d, false);
    region.finish();
    EXPECT_EQ(region.getPolygon(), polygon({a, b, c, a}));
}

TEST(RegionPolygon, MovingWithoutAButtonChangesOnlyTheLastPoint)
{
    RegionPolygon region;
    region.press(a);
    region.press(b);
    region.move(c, false);
    EXPECT_EQ(region.getPolygon(), polygon({a, a, c}));
    region.move(d, false);
    EXPECT_EQ(region.getPolygon(), polygon({a, a, d}));
}

TEST(RegionPolygon, DraggingDrawsFreehand)
{
    RegionPolygon region;
    region.press(a);
    region.move(b, true);
    region.move(c, true);
    region.move(d, true);
    EXPECT_EQ(region.getPolygon(), polygon({a, a, b, c, d}));
    region.finish();
    EXPECT_EQ(region.getPolygon(), polygon({a, a, b, c, a}));
}

TEST(RegionPolygon, MovesBeforeTheFirstAndAfterTheLastClickChangeNothing)
{
    RegionPolygon region;
    region.move(a, false);
    region.move(a, true);
    EXPECT_TRUE(region.getPolygon().isEmpty());
    region.press(a);
    region.press(b);
    region.finish();
    region.move(d, false);
    EXPECT_EQ(region.getPolygon(), polygon({a, a, b, a}));
}

TEST(RegionPolygon, AFinishOfAnIdleToolClosesWhateverItHolds)
{
    RegionPolygon region;
    region.finish();
    EXPECT_TRUE(region.getPolygon().isEmpty());
    region.press(a);
    region.press(b);
    region.press(c);
    region.finish();
    region.finish();
    EXPECT_EQ(region.getPolygon(), polygon({a, a, b, a}));
}

TEST(RegionPolygon, TheNextClickBeginsAnewAndAResetForgets)
{
    RegionPolygon region;
    region.press(a);
    region.press(b);
    region.finish();
    region.press(c);
    EXPECT_EQ(region.getPolygon(), polygon({c, c}));
    region.reset();
    EXPECT_FALSE(region.isDrawing());
    EXPECT_TRUE(region.getPolygon().isEmpty());
}

} // namespace
