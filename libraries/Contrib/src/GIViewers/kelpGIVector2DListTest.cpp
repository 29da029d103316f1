#include "kelpGIVector2DList.h"

#include <QPainterPath>

#include <gtest/gtest.h>

namespace {

using kelp::GIVector2DList;

const QList<Vector2d> zigzag{{1.0, 2.0}, {3.0, 6.0}, {5.0, -2.0}};

const QGraphicsPathItem& pathItemOf(const GIVector2DList& list)
{
    const auto* const item = qgraphicsitem_cast<QGraphicsPathItem*>(list.childItems().value(0));
    EXPECT_TRUE(item);
    return *item;
}

QList<Vector2d> cornersOf(const QPainterPath& path)
{
    QList<Vector2d> corners;
    for (int i = 0; i < path.elementCount(); ++i) {
        EXPECT_EQ(path.elementAt(i).type,
                  i == 0 ? QPainterPath::MoveToElement : QPainterPath::LineToElement);
        corners.append({path.elementAt(i).x, path.elementAt(i).y});
    }
    return corners;
}

TEST(GIVector2DList, IsAGreenLineThroughItsPointsAboveTheImage)
{
    const GIVector2DList list(zigzag, 0.5);
    EXPECT_EQ(cornersOf(pathItemOf(list).path()), zigzag);
    EXPECT_EQ(pathItemOf(list).pen().color(), QColor(Qt::green));
    EXPECT_EQ(pathItemOf(list).pen().widthF(), 0.5);
    EXPECT_EQ(list.zValue(), 1.0);
    EXPECT_TRUE(list.boundingRect().contains(QRectF(1.0, -2.0, 4.0, 8.0)));
}

TEST(GIVector2DList, TakesNewPoints)
{
    GIVector2DList list(zigzag);
    const QList<Vector2d> other{{0.0, 0.0}, {100.0, 50.0}};
    list.resetList(other);
    EXPECT_EQ(list.getPoints(), other);
    EXPECT_EQ(cornersOf(pathItemOf(list).path()), other);
    EXPECT_EQ(list.boundingRect(), QRectF(0.0, 0.0, 100.0, 50.0));
}

TEST(GIVector2DList, HoldsNoPointsAndOnePoint)
{
    GIVector2DList list({});
    EXPECT_TRUE(pathItemOf(list).path().isEmpty());
    EXPECT_TRUE(list.boundingRect().isEmpty());
    list.resetList({{3.0, 4.0}});
    EXPECT_EQ(list.getPoints().size(), 1);
    list.resetList({});
    EXPECT_TRUE(list.getPoints().isEmpty());
}

TEST(GIVector2DList, ChangesColorAndWidthAndGoesBackToACosmeticPen)
{
    GIVector2DList list(zigzag);
    EXPECT_EQ(list.getPen().widthF(), 0.0);
    list.setColor(Qt::red);
    list.setPenWidth(2.0);
    EXPECT_EQ(pathItemOf(list).pen().color(), QColor(Qt::red));
    EXPECT_EQ(pathItemOf(list).pen().widthF(), 2.0);
    list.resetPenWidth();
    EXPECT_EQ(pathItemOf(list).pen().widthF(), 0.0);
    EXPECT_TRUE(pathItemOf(list).pen().isCosmetic());
    EXPECT_EQ(pathItemOf(list).pen().color(), QColor(Qt::red));
}

} // namespace
