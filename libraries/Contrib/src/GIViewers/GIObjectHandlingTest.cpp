#include "MouseEvents.h"
#include "ViewerTestSupport.h"
#include "kelpGIImageViewer.h"
#include "kelpTrace.h"

#include <QGraphicsDropShadowEffect>

#include <iostream>

namespace {

using kelp::GIImageViewer;
using viewertest::isInScene;
using viewertest::makeImage;
using viewertest::RecordingObject;
using viewertest::RecordingObjectPtr;
using viewertest::show;

constexpr QPoint pressPlace(120, 80);
constexpr QPoint movePlace(125, 90);
constexpr QPoint releasePlace(140, 70);

int guardsOf(const QGraphicsItem& item)
{
    int guards = 0;
    for (QGraphicsItem* const child : item.childItems()) {
        guards += dynamic_cast<kelp::DeletionGuardGO*>(child) ? 1 : 0;
    }
    return guards;
}

void drag(GIImageViewer& viewer)
{
    QTest::mousePress(viewer.viewport(), Qt::LeftButton, Qt::NoModifier, pressPlace);
    mouseevents::move(viewer, movePlace, Qt::LeftButton);
    QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, Qt::NoModifier, releasePlace);
}

TEST(GIObject, ShadowsInRedWhileHighlighted)
{
    RecordingObject object;
    object.highlight();
    const auto* const shadow = qobject_cast<QGraphicsDropShadowEffect*>(object.graphicsEffect());
    ASSERT_TRUE(shadow);
    EXPECT_EQ(shadow->color(), QColor(Qt::red));
    EXPECT_EQ(shadow->blurRadius(), 8.0);
    EXPECT_EQ(shadow->offset(), QPointF(0.0, 0.0));
    object.removeHighlight();
    EXPECT_FALSE(object.graphicsEffect());
}

TEST(GIObject, IsAsFarAsItsCentreAndInactiveAtFirst)
{
    RecordingObject object;
    EXPECT_DOUBLE_EQ(object.distanceTo(QPointF(5.0, 5.0)), 5.0);
    EXPECT_FALSE(object.isActiveObject());
    object.setActive(true);
    EXPECT_TRUE(object.isActiveObject());
    object.deactivate();
    EXPECT_FALSE(object.isActiveObject());
}

TEST(GIObjectHandling, AddingTheSameObjectTwiceAddsItOnce)
{
    GIImageViewer viewer;
    const auto object = RecordingObjectPtr::create();
    viewer.addGIObject(object);
    viewer.addGIObject(object);
    EXPECT_EQ(viewer.getGIObjects().size(), 1);
    EXPECT_EQ(guardsOf(*object), 1);
    EXPECT_TRUE(isInScene(viewer, object));
}

TEST(GIObjectHandling, RemovingTakesTheGuardOffAndSparesUnknownObjects)
{
    GIImageViewer viewer;
    const auto object = RecordingObjectPtr::create();
    const auto other = RecordingObjectPtr::create();
    viewer.addGIObject(object);
    viewer.removeGIObject(other);
    EXPECT_EQ(viewer.getGIObjects().size(), 1);
    viewer.removeGIObject(object);
    EXPECT_TRUE(viewer.getGIObjects().isEmpty());
    EXPECT_EQ(guardsOf(*object), 0);
    EXPECT_FALSE(object->scene());
    viewer.addGIObject(object);
    EXPECT_EQ(guardsOf(*object), 1);
}

TEST(GIObjectHandling, TellsActiveObjectsInSceneCoordinates)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 50, 0.01, 0.04));
    show(viewer);
    const auto active = RecordingObjectPtr::create();
    const auto passive = RecordingObjectPtr::create();
    active->setActive(true);
    viewer.addGIObject(active);
    viewer.addGIObject(passive);
    drag(viewer);
    EXPECT_EQ(active->downs, QList<QPointF>{viewer.mapToScene(pressPlace)});
    EXPECT_EQ(active->moves, QList<QPointF>{viewer.mapToScene(movePlace)});
    EXPECT_EQ(active->ups, QList<QPointF>{viewer.mapToScene(releasePlace)});
    EXPECT_TRUE(passive->downs.isEmpty() && passive->moves.isEmpty() && passive->ups.isEmpty());
}

TEST(GIObjectHandling, AMoveWithoutAButtonReachesNoObjectInSpiteOfMouseTracking)
{
    GIImageViewer viewer;
    show(viewer);
    const auto object = RecordingObjectPtr::create();
    object->setActive(true);
    viewer.addGIObject(object);
    mouseevents::move(viewer, movePlace);
    EXPECT_TRUE(object->moves.isEmpty());
    drag(viewer);
    EXPECT_EQ(object->moves.size(), 1);
    mouseevents::move(viewer, movePlace);
    EXPECT_EQ(object->moves.size(), 1);
}

TEST(GIObjectHandling, AViewThatIsNotInteractiveTellsNoMoves)
{
    GIImageViewer viewer;
    show(viewer);
    viewer.setInteractive(false);
    const auto object = RecordingObjectPtr::create();
    object->setActive(true);
    viewer.addGIObject(object);
    drag(viewer);
    EXPECT_EQ(object->downs.size(), 1);
    EXPECT_TRUE(object->moves.isEmpty());
}

/// Leaves the viewer as soon as it is touched.
class ShyObject : public RecordingObject
{
public:
    explicit ShyObject(GIImageViewer* viewer) : m_viewer(viewer) {}
    void mouseDown(const QPointF&) override { m_viewer->clearGIObjects(); }

private:
    GIImageViewer* m_viewer;
};

TEST(GIObjectHandling, ObjectsMayLeaveTheListWhileTheyAreTold)
{
    GIImageViewer viewer;
    show(viewer);
    const auto shy = QSharedPointer<ShyObject>::create(&viewer);
    const auto other = RecordingObjectPtr::create();
    shy->setActive(true);
    other->setActive(true);
    viewer.addGIObject(shy);
    viewer.addGIObject(other);
    drag(viewer);
    EXPECT_TRUE(viewer.getGIObjects().isEmpty());
    EXPECT_EQ(other->downs.size(), 1);
}

TEST(GIObjectHandling, ObjectsLiveAsLongAsSomebodyHoldsThem)
{
    int deleted = 0;
    auto held = RecordingObjectPtr::create(&deleted);
    {
        GIImageViewer viewer;
        viewer.setImage(makeImage(10, 10));
        viewer.addGIObject(held);
        viewer.addGIObject(RecordingObjectPtr::create(&deleted));
    }
    EXPECT_EQ(deleted, 1) << "the viewer alone held the other one";
    EXPECT_FALSE(held->scene());
    EXPECT_EQ(guardsOf(*held), 0);
    held.reset();
    EXPECT_EQ(deleted, 2);
}

/// The failure comes from a destructor, so it ends the program; it is printed before.
class DeletionGuardDeathTest : public ::testing::Test
{
protected:
    static constexpr const char* failure =
        "Assertion false && \"You are not allowed to delete this object, it's creation and "
        "deletion is managed by the viewer!\" failed in "
        "libraries/Contrib/src/GIViewers/kelpGIImageViewer at line [0-9]+\n"
        "(.|\n)*WatchdogException";

    DeletionGuardDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static void printToErrorStream() { kelp::Trace::redirect(&std::cerr); }

    GIImageViewer m_viewer;
};

TEST_F(DeletionGuardDeathTest, DeletingAnObjectBehindTheViewersBackRaises)
{
    auto* const object = new RecordingObject;
    EXPECT_DEATH(
        {
            printToErrorStream();
            m_viewer.addGIObject(kelp::GIObjectPtr(object));
            delete object;
        },
        failure);
    delete object;
}

TEST_F(DeletionGuardDeathTest, DeletingTheImageItemBehindTheViewersBackRaises)
{
    m_viewer.setImage(makeImage(10, 10));
    EXPECT_DEATH(
        {
            printToErrorStream();
            delete m_viewer.scene()->items(Qt::AscendingOrder).front();
        },
        failure);
}

TEST_F(DeletionGuardDeathTest, ClearingTheSceneBehindTheViewersBackRaises)
{
    m_viewer.addGIObject(RecordingObjectPtr::create());
    EXPECT_DEATH(
        {
            printToErrorStream();
            m_viewer.scene()->clear();
        },
        failure);
}

} // namespace
