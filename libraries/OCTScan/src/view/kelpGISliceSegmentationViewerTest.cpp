#include "kelpGISliceSegmentationViewer.h"

#include "MouseEvents.h"
#include "SegmentationScene.h"
#include "Waiting.h"
#include "kelpException.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest>

#include <gmock/gmock.h>

using kelp::oct::BScanSegmentationLayer;
using kelp::oct::GISliceSegmentationViewer;
using kelp::oct::LayerNameILM;
using kelp::oct::LayerSegmentationGIPtr;
using kelp::oct::test::SegmentationScene;
using kelp::oct::test::TraceCatcher;

namespace {

class SegmentationViewer : public testing::Test
{
protected:
    SegmentationViewer()
    {
        scene.addLevelLayer(SegmentationScene::name("ILM"), 10);
        scene.addLevelLayer(SegmentationScene::name("BM"), 40);
        viewer.setOCT(scene.scan);
    }

    void show()
    {
        viewer.show();
        ASSERT_TRUE(waiting::untilExposed(viewer));
    }

    SegmentationScene scene;
    GISliceSegmentationViewer viewer;
};

TEST_F(SegmentationViewer, OpensAtTheMiddleBScan)
{
    EXPECT_EQ(viewer.getSliceCount(), 5);
    EXPECT_EQ(viewer.getActiveSlice(), 2);
    EXPECT_EQ(viewer.getImage(), scene.scan->getBScanImages()[2]);
    viewer.setOCT(SegmentationScene::makeScan(4));
    EXPECT_EQ(viewer.getActiveSlice(), 2);
    viewer.setOCT(SegmentationScene::makeScan(1));
    EXPECT_EQ(viewer.getActiveSlice(), 0);
}

TEST_F(SegmentationViewer, ShowsANewScanAsLargeAsItFits)
{
    show();
    const QRectF shown = viewer.mapToScene(viewer.viewport()->rect()).boundingRect();
    const QRectF image = viewer.getImageRect();
    EXPECT_TRUE(shown.contains(image));
    EXPECT_LT(std::min(shown.width() / image.width(), shown.height() / image.height()), 1.05);
}

TEST_F(SegmentationViewer, RefusesNoScan)
{
    EXPECT_THROW(viewer.setOCT(OCTScanPtr()), kelp::Assertion);
}

TEST_F(SegmentationViewer, DrawsEveryLayerOnEveryBScan)
{
    viewer.setSegmentation(scene.segmentation);
    for (int slice = 0; slice < 5; ++slice) {
        ASSERT_EQ(viewer.getSliceObjects(slice).size(), 2);
        const LayerSegmentationGIPtr overlay = viewer.getOverlay(slice, 1);
        ASSERT_FALSE(overlay.isNull());
        EXPECT_EQ(overlay->getLayer(), scene.layer(slice, "BM"));
        EXPECT_EQ(overlay->getStart(), 0);
        EXPECT_EQ(overlay->getEnd(), 38);
        EXPECT_EQ(overlay->getPoints().first(), (Vector2d{0.0625, 40.5 * 0.0625}));
        EXPECT_FALSE(overlay->flags() & QGraphicsItem::ItemIsSelectable);
        EXPECT_EQ(overlay->isVisible(), slice == 2);
    }
}

TEST_F(SegmentationViewer, GivesABScanThatIsMaskedWhollyNoOverlay)
{
    scene.mask(1, 0, 39);
    viewer.setSegmentation(scene.segmentation);
    EXPECT_EQ(viewer.getSliceObjects(0).size(), 2);
    EXPECT_TRUE(viewer.getSliceObjects(1).isEmpty());
}

TEST_F(SegmentationViewer, SplitsALayerAtAGapOfOneAScan)
{
    scene.mask(2, 20, 20);
    viewer.setSegmentation(scene.segmentation);
    ASSERT_EQ(viewer.getSliceObjects(2).size(), 4);
    EXPECT_EQ(viewer.getOverlay(2, 0)->getStart(), 0);
    EXPECT_EQ(viewer.getOverlay(2, 0)->getEnd(), 19);
    EXPECT_EQ(viewer.getOverlay(2, 1)->getStart(), 21);
    EXPECT_EQ(viewer.getOverlay(2, 1)->getEnd(), 38);
    EXPECT_EQ(viewer.getOverlay(2, 0)->getLayer(), viewer.getOverlay(2, 1)->getLayer());
}

TEST_F(SegmentationViewer, HidesALayerWhoseNameIsAnotherInstance)
{
    viewer.setSegmentation(scene.segmentation);
    ASSERT_TRUE(viewer.getOverlay(2, 0)->isVisible());
    const auto layer = scene.layer(2, "ILM");
    layer->setLayerData(layer->getLayerData(), LayerNameILM::create());
    viewer.refresh();
    EXPECT_FALSE(viewer.getOverlay(2, 0)->isVisible());
    EXPECT_TRUE(viewer.getOverlay(2, 1)->isVisible());
}

TEST_F(SegmentationViewer, HidesALayerOnEverySliceShownAfterwards)
{
    viewer.setSegmentation(scene.segmentation);
    {
        TraceCatcher trace;
        viewer.layerVisibilityChanged(SegmentationScene::name("ILM"), false);
        EXPECT_EQ(trace.count(QStringLiteral("setting layer visibility of ILM to 0")), 5);
    }
    for (int slice = 4; slice >= 0; --slice) {
        viewer.setActiveSlice(slice);
        EXPECT_FALSE(viewer.getOverlay(slice, 0)->isVisible());
        EXPECT_TRUE(viewer.getOverlay(slice, 1)->isVisible());
    }
    viewer.layerVisibilityChanged(SegmentationScene::name("ILM"), true);
    EXPECT_TRUE(viewer.getOverlay(0, 0)->isVisible());
    EXPECT_FALSE(viewer.getOverlay(3, 0)->isVisible());
}

TEST_F(SegmentationViewer, ShowsOnlyTheOverlaysOfTheSliceItIsAt)
{
    viewer.setSegmentation(scene.segmentation);
    viewer.setActiveSlice(4);
    EXPECT_FALSE(viewer.getOverlay(2, 0)->isVisible());
    EXPECT_TRUE(viewer.getOverlay(4, 0)->isVisible());
}

TEST_F(SegmentationViewer, TakesAScanWithoutLayers)
{
    viewer.setSegmentation(new kelp::oct::OCTScanSegmentation(scene.scan));
    for (int slice = 0; slice < 5; ++slice) {
        EXPECT_TRUE(viewer.getSliceObjects(slice).isEmpty());
    }
}

TEST_F(SegmentationViewer, PrintsThatThereIsNoSegmentationAndRemovesTheOldOverlays)
{
    viewer.setSegmentation(scene.segmentation);
    TraceCatcher trace;
    viewer.setSegmentation(OCTScanSegPtr());
    EXPECT_EQ(trace.lines(), QStringList{QStringLiteral("no OCTScanSegmentation!")});
    EXPECT_TRUE(viewer.getSliceObjects(2).isEmpty());
}

TEST_F(SegmentationViewer, RebuildsItsOverlaysForLayersThatWereReplaced)
{
    viewer.setSegmentation(scene.segmentation);
    scene.addLevelLayer(SegmentationScene::name("ISe"), 30);
    EXPECT_EQ(viewer.getSliceObjects(0).size(), 2);
    viewer.rebuildSegmentation();
    EXPECT_EQ(viewer.getSliceObjects(0).size(), 3);
    viewer.removeSegmentation();
    EXPECT_TRUE(viewer.getSliceObjects(0).isEmpty());
    EXPECT_EQ(viewer.getSegmentation().data(), scene.segmentation.data());
}

TEST_F(SegmentationViewer, CutsOffALayerThatIsShorterThanTheBScanAndSaysSo)
{
    const auto layer = scene.layer(1, "ILM");
    layer->setLayerData(BScanSegmentationLayer::LayerData(12), layer->getLayerName());
    TraceCatcher trace;
    viewer.setSegmentation(scene.segmentation);
    EXPECT_EQ(viewer.getOverlay(1, 0)->getEnd(), 11);
    EXPECT_EQ(trace.count(QStringLiteral("GISliceSegmentationViewer::setSegmentation layer ILM of "
                                         "B-scan 2 has 12 A-scans instead of 40")),
              1);
}

TEST_F(SegmentationViewer, CutsOffTheLayersOfAWiderScanAndSaysSo)
{
    viewer.setOCT(SegmentationScene::makeScan(5, 30));
    TraceCatcher trace;
    viewer.setSegmentation(scene.segmentation);
    EXPECT_EQ(viewer.getOverlay(1, 0)->getEnd(), 29);
    EXPECT_EQ(trace.count(QStringLiteral("GISliceSegmentationViewer::setSegmentation layer BM of "
                                         "B-scan 5 has 40 A-scans instead of 30")),
              1);
}

TEST_F(SegmentationViewer, LeavesOutALayerWithNothingInIt)
{
    const auto layer = scene.layer(1, "ILM");
    layer->setLayerData(BScanSegmentationLayer::LayerData(0), layer->getLayerName());
    viewer.setSegmentation(scene.segmentation);
    EXPECT_EQ(viewer.getSliceObjects(1).size(), 1);
}

TEST_F(SegmentationViewer, LeavesOutBScansThatTheScanShownDoesNotHave)
{
    viewer.setOCT(SegmentationScene::makeScan(2));
    TraceCatcher trace;
    viewer.setSegmentation(scene.segmentation);
    EXPECT_EQ(viewer.getSliceObjects(1).size(), 2);
    EXPECT_EQ(trace.count(QStringLiteral(
                  "GISliceSegmentationViewer::setSegmentation no image for B-scan 5")),
              1);
}

TEST_F(SegmentationViewer, ShowsNothingForASliceOutside)
{
    viewer.setSegmentation(scene.segmentation);
    QSignalSpy changed(&viewer, SIGNAL(activeSliceChanged(int)));
    for (const int outside : {-1, 5, 1000}) {
        viewer.setActiveSlice(outside);
        EXPECT_EQ(viewer.getActiveSlice(), -1);
        EXPECT_TRUE(viewer.getImage().isNull());
        EXPECT_EQ(changed.takeLast(), QVariantList{-1});
    }
    viewer.setActiveSlice(0);
    EXPECT_TRUE(viewer.getOverlay(0, 0)->isVisible());
}

TEST_F(SegmentationViewer, LetsGoOfEverythingWhenCleared)
{
    viewer.setSegmentation(scene.segmentation);
    viewer.clearOCT();
    EXPECT_EQ(viewer.getSliceCount(), 0);
    EXPECT_TRUE(viewer.getSegmentation().isNull());
    viewer.rebuildSegmentation();
    viewer.setOCT(scene.scan);
    viewer.setSegmentation(scene.segmentation);
    EXPECT_TRUE(viewer.getOverlay(2, 0)->isVisible());
}

TEST_F(SegmentationViewer, PagesWithArrowsPageKeysHomeAndEnd)
{
    show();
    QSignalSpy changed(&viewer, SIGNAL(activeSliceChanged(int)));
    const QList<QPair<Qt::Key, int>> steps{
        {Qt::Key_Right, 3},    {Qt::Key_Down, 4}, {Qt::Key_Left, 3}, {Qt::Key_Up, 2},
        {Qt::Key_PageDown, 4}, {Qt::Key_Home, 0}, {Qt::Key_End, 4},  {Qt::Key_PageUp, 0},
    };
    for (const auto& step : steps) {
        QTest::keyClick(&viewer, step.first);
        EXPECT_EQ(viewer.getActiveSlice(), step.second);
        EXPECT_EQ(changed.last(), QVariantList{step.second});
    }
    EXPECT_EQ(changed.count(), steps.size());
}

TEST_F(SegmentationViewer, LeavesKeysWithControlAndAltToOthers)
{
    show();
    for (const Qt::KeyboardModifier modifier : {Qt::ControlModifier, Qt::AltModifier}) {
        for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_Right, Qt::Key_Home}) {
            QTest::keyClick(&viewer, key, modifier);
            EXPECT_EQ(viewer.getActiveSlice(), 2);
        }
    }
}

TEST_F(SegmentationViewer, StaysAtTheFirstAndLastSlice)
{
    show();
    QTest::keyClick(&viewer, Qt::Key_End);
    QSignalSpy changed(&viewer, SIGNAL(activeSliceChanged(int)));
    QTest::keyClick(&viewer, Qt::Key_Right);
    QTest::keyClick(&viewer, Qt::Key_End);
    EXPECT_EQ(viewer.getActiveSlice(), 4);
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(SegmentationViewer, PagesNowhereWithoutAScan)
{
    show();
    viewer.clearOCT();
    QTest::keyClick(&viewer, Qt::Key_Right);
    QTest::keyClick(&viewer, Qt::Key_End);
    mouseevents::turnWheel(viewer, 120, Qt::ControlModifier);
    EXPECT_EQ(viewer.getActiveSlice(), -1);
}

TEST_F(SegmentationViewer, PagesWithCtrlAndTheWheelAndZoomsWithTheWheelAlone)
{
    show();
    viewer.setWheelZoomEnabled(true);
    viewer.setDragEnabled(true);
    const double zoom = viewer.getZoom();
    mouseevents::turnWheel(viewer, -120, Qt::ControlModifier);
    EXPECT_EQ(viewer.getActiveSlice(), 3);
    mouseevents::turnWheel(viewer, 240, Qt::ControlModifier);
    EXPECT_EQ(viewer.getActiveSlice(), 1);
    EXPECT_EQ(viewer.getZoom(), zoom);
    mouseevents::turnWheel(viewer, -120, Qt::NoModifier);
    EXPECT_EQ(viewer.getActiveSlice(), 1);
    EXPECT_DOUBLE_EQ(viewer.getZoom(), zoom * 0.76);
}

TEST_F(SegmentationViewer, AddsUpTheSmallTurnsOfAFineWheel)
{
    show();
    for (int i = 0; i < 3; ++i) {
        mouseevents::turnWheel(viewer, -30, Qt::ControlModifier);
        EXPECT_EQ(viewer.getActiveSlice(), 2);
    }
    mouseevents::turnWheel(viewer, -30, Qt::ControlModifier);
    EXPECT_EQ(viewer.getActiveSlice(), 3);
}

TEST_F(SegmentationViewer, KeepsTheZoomWhilePaging)
{
    show();
    viewer.setDragEnabled(true);
    viewer.setZoom(3.0);
    QTest::keyClick(&viewer, Qt::Key_Right);
    EXPECT_EQ(viewer.getZoom(), 3.0);
}

TEST(SegmentationViewerFocus, GetsTheKeyboardWhereTheMouseIsUnlessSomebodyTypes)
{
    QWidget window;
    auto* const layout = new QVBoxLayout(&window);
    auto* const search = new QLineEdit;
    auto* const list = new QScrollBar;
    list->setFocusPolicy(Qt::StrongFocus);
    auto* const viewer = new GISliceSegmentationViewer;
    layout->addWidget(search);
    layout->addWidget(list);
    layout->addWidget(viewer);
    window.show();
    ASSERT_TRUE(waiting::untilActivated(window));

    QEvent enter(QEvent::Enter);
    search->setFocus();
    QCoreApplication::sendEvent(viewer, &enter);
    EXPECT_TRUE(search->hasFocus());
    list->setFocus();
    QCoreApplication::sendEvent(viewer, &enter);
    EXPECT_TRUE(viewer->hasFocus());
}

} // namespace
