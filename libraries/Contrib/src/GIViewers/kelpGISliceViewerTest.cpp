#include "kelpGISliceViewer.h"

#include "MouseEvents.h"
#include "ViewerTestSupport.h"

#include <QSignalSpy>

namespace {

using kelp::GISliceViewer;
using viewertest::isInScene;
using viewertest::makeImage;
using viewertest::RecordingObjectPtr;
using viewertest::show;

constexpr double spacingX = 0.5;
constexpr double spacingY = 0.25;

QList<kelp::ImagePtr> makeSlices(int count)
{
    QList<kelp::ImagePtr> slices;
    for (int i = 0; i < count; ++i) {
        slices.append(makeImage(40, 20, spacingX, spacingY));
    }
    return slices;
}

TEST(GISliceViewer, OpensAtTheMiddleSliceHalvesToTheEvenIndex)
{
    GISliceViewer viewer;
    const QList<QPair<int, int>> expected{{0, -1}, {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 2}, {7, 4}};
    for (const auto& [count, index] : expected) {
        viewer.setSlices(makeSlices(count));
        EXPECT_EQ(viewer.getActiveSlice(), index) << count;
        EXPECT_EQ(viewer.getSliceCount(), count);
    }
}

TEST(GISliceViewer, TakesRoomToShowSlices)
{
    const GISliceViewer viewer;
    EXPECT_EQ(viewer.minimumSize(), QSize(600, 400));
    EXPECT_EQ(viewer.sizePolicy(),
              QSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::MinimumExpanding));
    EXPECT_EQ(viewer.getMinZoom(), 0.1);
    EXPECT_EQ(viewer.getMaxZoom(), 10.0);
    EXPECT_EQ(viewer.getActiveSlice(), -1);
}

TEST(GISliceViewer, CutsAVolumeIntoItsSlices)
{
    const kelp::ImagePtr volume = makeImage(4, 3, spacingX, spacingY, 5);
    for (int z = 0; z < 5; ++z) {
        std::fill_n(volume->pixels<unsigned char>() + z * 12, 12, static_cast<unsigned char>(z));
    }
    GISliceViewer viewer;
    viewer.setVolume(volume);
    ASSERT_EQ(viewer.getSliceCount(), 5);
    EXPECT_EQ(viewer.getActiveSlice(), 2);
    for (int z = 0; z < 5; ++z) {
        viewer.setActiveSlice(z);
        EXPECT_EQ(viewer.getImage()->pixels<unsigned char>()[11], z);
        EXPECT_EQ(viewer.getImageScale(), std::make_pair(spacingX, spacingY));
    }
}

TEST(GISliceViewer, ShowsTheActiveSliceAndItsObjectsOnly)
{
    GISliceViewer viewer;
    const QList<kelp::ImagePtr> slices = makeSlices(3);
    viewer.setSlices(slices);
    viewer.setActiveSlice(0);
    const auto first = RecordingObjectPtr::create();
    const auto second = RecordingObjectPtr::create();
    viewer.addGIObject(first, 0);
    viewer.addGIObject(second, 1);
    EXPECT_TRUE(first->isVisible());
    EXPECT_FALSE(second->isVisible());
    first->setActive(true);

    QSignalSpy changed(&viewer, SIGNAL(activeSliceChanged(int)));
    viewer.setActiveSlice(1);
    EXPECT_EQ(viewer.getImage(), slices[1]);
    EXPECT_FALSE(first->isVisible());
    EXPECT_FALSE(first->isActiveObject());
    EXPECT_TRUE(second->isVisible());
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed.front().front().toInt(), 1);
}

TEST(GISliceViewer, AnIndexOutsideShowsNothing)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(3));
    viewer.setActiveSlice(1);
    const auto object = RecordingObjectPtr::create();
    viewer.addGIObject(object, 1);
    QSignalSpy changed(&viewer, SIGNAL(activeSliceChanged(int)));
    for (const int outside : {-1, 3, 1000}) {
        viewer.setActiveSlice(outside);
        EXPECT_EQ(viewer.getActiveSlice(), -1);
        EXPECT_TRUE(viewer.getImage().isNull());
        EXPECT_FALSE(object->isVisible());
        EXPECT_EQ(changed.last().front().toInt(), -1);
    }
    viewer.setActiveSlice(1);
    EXPECT_TRUE(object->isVisible());
}

TEST(GISliceViewer, ASliceWithoutImageShowsNothing)
{
    GISliceViewer viewer;
    QList<kelp::ImagePtr> slices = makeSlices(2);
    slices[1].reset();
    viewer.setSlices(slices);
    viewer.setActiveSlice(1);
    EXPECT_EQ(viewer.getActiveSlice(), -1);
    viewer.setXHintLine(3);
    viewer.setYHintLine(3);
    EXPECT_FALSE(viewer.getYHintLine().isVisible());
    viewer.setActiveSlice(0);
    EXPECT_EQ(viewer.getActiveSlice(), 0);
}

TEST(GISliceViewer, KeepsZoomAndPlaceWhileTheUserPages)
{
    GISliceViewer viewer;
    viewer.setDragEnabled(true);
    viewer.setSlices(makeSlices(3));
    viewer.setActiveSlice(0);
    show(viewer, {640, 480});
    viewer.setZoom(7.0);
    viewer.centerOn(3.0, 2.0);
    const QTransform before = viewer.viewportTransform();
    viewer.setActiveSlice(1);
    viewer.setActiveSlice(2);
    EXPECT_EQ(viewer.viewportTransform(), before);
}

TEST(GISliceViewer, HintLinesReachAcrossTheImageAtTheCentreOfTheirPixels)
{
    GISliceViewer viewer;
    const QList<Vector2d> wide{{-10000.0, 0.0}, {10000.0, 0.0}};
    const QList<Vector2d> high{{0.0, -10000.0}, {0.0, 10000.0}};
    EXPECT_EQ(viewer.getXHintLine().getPoints(), wide);
    EXPECT_EQ(viewer.getYHintLine().getPoints(), high);
    EXPECT_TRUE(viewer.getXHintLine().getPen().isCosmetic());
    viewer.setXHintLine(3);
    viewer.setYHintLine(3);
    EXPECT_EQ(viewer.getXHintLine().getPoints(), wide) << "there is no slice";
    EXPECT_FALSE(viewer.getYHintLine().isVisible());

    viewer.setSlices(makeSlices(1));
    viewer.setActiveSlice(0);
    viewer.setXHintLine(3);
    viewer.setYHintLine(7);
    // Pixel (7, 3) has its centre at its indices times the spacing.
    EXPECT_EQ(viewer.getXHintLine().getPoints(),
              (QList<Vector2d>{{-0.25, 3 * spacingY}, {19.75, 3 * spacingY}}));
    EXPECT_EQ(viewer.getYHintLine().getPoints(),
              (QList<Vector2d>{{7 * spacingX, -0.125}, {7 * spacingX, 4.875}}));
    viewer.setXHintLine(1.5);
    viewer.setYHintLine(2.5);
    EXPECT_EQ(viewer.getXHintLine().getPoints(), (QList<Vector2d>{{-0.25, 1.5}, {19.75, 1.5}}));
    EXPECT_EQ(viewer.getYHintLine().getPoints(), (QList<Vector2d>{{2.5, -0.125}, {2.5, 4.875}}));
}

TEST(GISliceViewer, OnlyTheYHintLineShowsItselfAndBothGoWithTheSliceUnlessKept)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    viewer.setActiveSlice(0);
    viewer.setXHintLine(3);
    viewer.setYHintLine(7);
    EXPECT_FALSE(viewer.getXHintLine().isVisible());
    EXPECT_TRUE(viewer.getYHintLine().isVisible());
    viewer.setActiveSlice(1);
    EXPECT_FALSE(viewer.getYHintLine().isVisible());

    viewer.setKeepXHintLine(true);
    viewer.setKeepYHintLine(true);
    viewer.setYHintLine(7);
    viewer.setActiveSlice(0);
    EXPECT_FALSE(viewer.getXHintLine().isVisible()) << "kept as it was";
    EXPECT_TRUE(viewer.getYHintLine().isVisible());
}

TEST(GISliceViewer, TellsTheObjectsOfAllSlicesWhetherActiveOrNot)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    viewer.setActiveSlice(0);
    show(viewer, {640, 480});
    const auto here = RecordingObjectPtr::create();
    const auto elsewhere = RecordingObjectPtr::create();
    const auto passive = RecordingObjectPtr::create();
    viewer.addGIObject(here, 0);
    viewer.addGIObject(elsewhere, 1);
    viewer.addGIObject(passive);
    const QPoint place(100, 90);
    mouseevents::move(viewer, place);
    EXPECT_TRUE(here->moves.isEmpty()) << "no button is down";
    QTest::mousePress(viewer.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    mouseevents::move(viewer, place, Qt::LeftButton);
    QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    const QList<QPointF> once{viewer.mapToScene(place)};
    for (const auto& object : {here, elsewhere}) {
        EXPECT_EQ(object->downs, once);
        EXPECT_EQ(object->moves, once);
        EXPECT_EQ(object->ups, once);
    }
    EXPECT_TRUE(passive->downs.isEmpty()) << "an object of the viewer, not of a slice";
}

TEST(GISliceViewer, TellsNobodyWithoutAnActiveSliceOrWhenItIsNotInteractive)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    viewer.setActiveSlice(-1);
    show(viewer, {640, 480});
    const auto object = RecordingObjectPtr::create();
    viewer.addGIObject(object, 0);
    QTest::mouseClick(viewer.viewport(), Qt::LeftButton);
    viewer.setActiveSlice(0);
    viewer.setInteractive(false);
    QTest::mouseClick(viewer.viewport(), Qt::LeftButton);
    EXPECT_TRUE(object->downs.isEmpty() && object->ups.isEmpty());
    viewer.setInteractive(true);
    QTest::mouseClick(viewer.viewport(), Qt::LeftButton);
    EXPECT_EQ(object->downs.size(), 1);
}

TEST(GISliceViewer, KeepsObjectsPerSliceOnce)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    const auto object = RecordingObjectPtr::create();
    viewer.addGIObject(object, 1);
    viewer.addGIObject(object, 1);
    EXPECT_EQ(viewer.getSliceObjects(1), QList<kelp::GIObjectPtr>{object});
    viewer.removeGIObject(object, 0);
    EXPECT_TRUE(isInScene(viewer, object));
    viewer.removeGIObject(object, 1);
    EXPECT_FALSE(object->scene());
    EXPECT_TRUE(viewer.getSliceObjects(1).isEmpty());

    for (const int outside : {-1, 2}) {
        viewer.addGIObject(object, outside);
        viewer.removeGIObject(object, outside);
        EXPECT_FALSE(object->scene());
        EXPECT_TRUE(viewer.getSliceObjects(outside).isEmpty());
    }
}

TEST(GISliceViewer, NewSlicesStartWithoutObjects)
{
    int deleted = 0;
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    const auto held = RecordingObjectPtr::create(&deleted);
    viewer.addGIObject(held, 0);
    viewer.addGIObject(RecordingObjectPtr::create(&deleted), 1);
    viewer.setSlices(makeSlices(2));
    EXPECT_EQ(deleted, 1);
    EXPECT_FALSE(held->scene());
    EXPECT_TRUE(viewer.getSliceObjects(0).isEmpty());
}

TEST(GISliceViewer, RemovesItsSlicesAndTellsOfIt)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    viewer.setActiveSlice(1);
    viewer.setYHintLine(3);
    QSignalSpy changed(&viewer, SIGNAL(activeSliceChanged(int)));
    viewer.removeSlices();
    EXPECT_EQ(viewer.getSliceCount(), 0);
    EXPECT_EQ(viewer.getActiveSlice(), -1);
    EXPECT_TRUE(viewer.getImage().isNull());
    EXPECT_FALSE(viewer.getYHintLine().isVisible());
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed.front().front().toInt(), -1);
}

TEST(GISliceViewer, AClearedViewerShowsHintLinesAgainLater)
{
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(2));
    viewer.setActiveSlice(1);
    const auto object = RecordingObjectPtr::create();
    viewer.addGIObject(object, 1);
    viewer.clear();
    EXPECT_FALSE(object->scene());
    EXPECT_TRUE(viewer.getSliceObjects(1).isEmpty());
    viewer.setActiveSlice(0);
    viewer.setYHintLine(3);
    EXPECT_TRUE(viewer.getYHintLine().isVisible());
    EXPECT_EQ(viewer.getYHintLine().scene(), viewer.scene());
}

TEST(GISliceViewer, ObjectsOfSlicesLiveAsLongAsSomebodyHoldsThem)
{
    int deleted = 0;
    auto held = RecordingObjectPtr::create(&deleted);
    {
        GISliceViewer viewer;
        viewer.setSlices(makeSlices(2));
        viewer.setActiveSlice(1);
        viewer.addGIObject(held, 1);
        viewer.addGIObject(RecordingObjectPtr::create(&deleted), 0);
    }
    EXPECT_EQ(deleted, 1);
    EXPECT_FALSE(held->scene());
    held.reset();
    EXPECT_EQ(deleted, 2);
}

TEST(GISliceViewerDeathTest, NobodyElseMayDeleteAnObjectOfASlice)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    GISliceViewer viewer;
    viewer.setSlices(makeSlices(1));
    viewer.addGIObject(RecordingObjectPtr::create(), 0);
    EXPECT_DEATH(viewer.scene()->clear(), "You are not allowed to delete this object");
}

} // namespace
