#include "kelpRegionTool.h"

#include "MouseEvents.h"
#include "ViewerTestSupport.h"
#include "kelpGIImageViewer.h"

#include <QSignalSpy>

namespace {

using kelp::RegionTool;

constexpr QPoint a(50, 60);
constexpr QPoint b(150, 60);
constexpr QPoint c(150, 160);

QPolygonF polygon(const QVector<QPointF>& points)
{
    return QPolygonF(points);
}

/// The tool in a viewer, grabbing the mouse as in the dialog that edits masks.
class RegionToolInViewer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_viewer.setImage(viewertest::makeImage(100, 100, 0.05, 0.1));
        viewertest::show(m_viewer);
        m_viewer.scene()->addItem(&m_tool);
        m_tool.grabMouse();
    }
    void TearDown() override { m_viewer.scene()->removeItem(&m_tool); }

    void click(const QPoint& place, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(m_viewer.viewport(), button, Qt::NoModifier, place);
    }
    QPointF scene(const QPoint& place) const { return m_viewer.mapToScene(place); }
    QPolygonF shown() const
    {
        return qgraphicsitem_cast<QGraphicsPolygonItem*>(m_tool.childItems().value(0))->polygon();
    }

    kelp::GIImageViewer m_viewer;
    RegionTool m_tool;
};

TEST_F(RegionToolInViewer, DrawsInTranslucentGreenWithACosmeticPen)
{
    const auto* const item =
        qgraphicsitem_cast<QGraphicsPolygonItem*>(m_tool.childItems().value(0));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->pen(), QPen(Qt::green, 0.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    EXPECT_EQ(item->brush(), QBrush(QColor(0, 200, 0, 100)));
}

TEST_F(RegionToolInViewer, CollectsClicksAndTellsOfThePolygonAtTheRightClick)
{
    QSignalSpy created(&m_tool, SIGNAL(polygonCreated(QPolygonF)));
    QSignalSpy createdAt(&m_tool, SIGNAL(polygonCreated(QPolygonF, QPointF)));
    click(a);
    mouseevents::move(m_viewer, b);
    click(b);
    mouseevents::move(m_viewer, c);
    click(c);
    EXPECT_EQ(created.size(), 0);
    click(c, Qt::RightButton);
    const QPolygonF wanted = polygon({scene(a), scene(b), scene(c), scene(a)});
    ASSERT_EQ(created.size(), 1);
    EXPECT_EQ(created.front().front().value<QPolygonF>(), wanted);
    ASSERT_EQ(createdAt.size(), 1);
    EXPECT_EQ(createdAt.front().at(0).value<QPolygonF>(), wanted);
    EXPECT_EQ(createdAt.front().at(1).toPointF(), scene(c));
    EXPECT_EQ(shown(), wanted);
}

TEST_F(RegionToolInViewer, MovingTheMouseWithoutAButtonChangesOnlyTheLastPoint)
{
    click(a);
    mouseevents::move(m_viewer, b);
    EXPECT_EQ(m_tool.getPolygon(), polygon({scene(a), scene(b)}));
    mouseevents::move(m_viewer, c);
    EXPECT_EQ(m_tool.getPolygon(), polygon({scene(a), scene(c)}));
    EXPECT_EQ(shown(), m_tool.getPolygon());
}

TEST_F(RegionToolInViewer, DraggingWithTheLeftButtonDrawsFreehand)
{
    QTest::mousePress(m_viewer.viewport(), Qt::LeftButton, Qt::NoModifier, a);
    mouseevents::move(m_viewer, b, Qt::LeftButton);
    mouseevents::move(m_viewer, c, Qt::LeftButton);
    QTest::mouseRelease(m_viewer.viewport(), Qt::LeftButton, Qt::NoModifier, c);
    EXPECT_EQ(m_tool.getPolygon(), polygon({scene(a), scene(a), scene(b), scene(c)}));
}

TEST_F(RegionToolInViewer, TheSecondClickOfADoubleClickIsAPointToo)
{
    click(a);
    QTest::mouseDClick(m_viewer.viewport(), Qt::LeftButton, Qt::NoModifier, b);
    EXPECT_TRUE(m_tool.getPolygon().contains(scene(b)));
}

TEST_F(RegionToolInViewer, OtherButtonsDoNothing)
{
    click(a, Qt::MiddleButton);
    EXPECT_TRUE(m_tool.getPolygon().isEmpty());
}

/// Takes each polygon away at once, as the control panel does.
TEST_F(RegionToolInViewer, AListenerMayResetTheToolSoThatTheNextPolygonBeginsAtOnce)
{
    ASSERT_TRUE(QObject::connect(&m_tool, SIGNAL(polygonCreated(QPolygonF)), &m_tool,
                                 SLOT(resetPolygon())));
    QSignalSpy createdAt(&m_tool, SIGNAL(polygonCreated(QPolygonF, QPointF)));
    click(a);
    click(b);
    click(c, Qt::RightButton);
    ASSERT_EQ(createdAt.size(), 1);
    EXPECT_EQ(createdAt.front().at(0).value<QPolygonF>(),
              polygon({scene(a), scene(a), scene(b), scene(a)}));
    EXPECT_TRUE(m_tool.getPolygon().isEmpty());
    EXPECT_TRUE(shown().isEmpty());
    click(c);
    EXPECT_EQ(m_tool.getPolygon(), polygon({scene(c), scene(c)}));
}

} // namespace
