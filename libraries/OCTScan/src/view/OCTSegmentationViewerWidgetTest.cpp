#include "OCTSegmentationViewerWidget.h"

#include "LayerSelectionWidget.h"
#include "SegmentationScene.h"
#include "Waiting.h"
#include "kelpException.h"
#include "kelpGISliceSegmentationViewer.h"

#include <QCheckBox>
#include <QLayout>
#include <QSignalSpy>
#include <QtTest>

#include <gmock/gmock.h>

using kelp::oct::OCTSegmentationViewerWidget;
using kelp::oct::test::SegmentationScene;
using kelp::oct::test::TraceCatcher;
using testing::HasSubstr;

namespace {

class SegmentationViewerWidget : public testing::Test
{
protected:
    SegmentationViewerWidget()
    {
        scene.addLevelLayer(SegmentationScene::name("ILM"), 10);
        scene.addLevelLayer(SegmentationScene::name("ILMcoarse"), 12);
        widget.initViewer();
    }

    SegmentationScene scene;
    OCTSegmentationViewerWidget widget;
};

TEST_F(SegmentationViewerWidget, TracesItsConstruction)
{
    TraceCatcher trace;
    const OCTSegmentationViewerWidget other;
    EXPECT_EQ(trace.lines(), QStringList{QStringLiteral("OCTSegmentationViewerWidget ctor")});
}

TEST_F(SegmentationViewerWidget, HasAViewerThatDragsAndZooms)
{
    ASSERT_NE(widget.getViewer(), nullptr);
    EXPECT_EQ(widget.getViewer()->dragMode(), QGraphicsView::ScrollHandDrag);
    EXPECT_EQ(widget.getViewer()->getMinZoom(), 0.1);
    EXPECT_EQ(widget.getViewer()->getMaxZoom(), 10.0);
}

TEST_F(SegmentationViewerWidget, GivesATopWidgetRoomWithoutAskingForMore)
{
    const int leastOfViewer = widget.getViewer()->minimumHeight();
    auto* const top = new QWidget;
    constexpr int topHeight = 80;
    top->setFixedHeight(topHeight);
    top->hide();
    widget.setTopWidget(top);
    const int leastHeight = widget.minimumSizeHint().height();
    widget.resize(widget.minimumSizeHint());
    widget.show();
    ASSERT_TRUE(waiting::untilExposed(widget));
    top->show();
    EXPECT_TRUE(waiting::until([&] { return widget.minimumSizeHint().height() == leastHeight; }));
    EXPECT_LT(top->geometry().bottom(), widget.getViewer()->geometry().top());
    EXPECT_EQ(widget.getViewer()->minimumHeight(),
              leastOfViewer - topHeight - widget.layout()->spacing());
    // However high it is, something of the B-scan is left.
    top->setFixedHeight(10 * topHeight);
    EXPECT_TRUE(waiting::until([&] { return top->height() == 10 * topHeight; }));
    EXPECT_EQ(widget.getViewer()->minimumHeight(), 200);
    top->hide();
    EXPECT_EQ(widget.getViewer()->minimumHeight(), leastOfViewer);
}

TEST_F(SegmentationViewerWidget, RefusesNoScanAndNoSegmentation)
{
    try {
        widget.setOCTScan(OCTScanPtr());
        FAIL() << "no scan is taken";
    } catch (const kelp::Assertion& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("OCT scan is null."));
    }
    try {
        widget.setSegmentation(OCTScanSegPtr());
        FAIL() << "no segmentation is taken";
    } catch (const kelp::Assertion& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("OCT scan segmentation is null."));
    }
}

TEST_F(SegmentationViewerWidget, PagesByItsSignalAndTellsTheSlice)
{
    widget.setOCTScan(scene.scan);
    QSignalSpy changed(&widget, SIGNAL(activeSliceChanged(int)));
    emit widget.setActiveSlice(4);
    EXPECT_EQ(widget.getViewer()->getActiveSlice(), 4);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0], QVariantList{4});
}

TEST_F(SegmentationViewerWidget, ShowsTheHintLineOfAnAScan)
{
    widget.setOCTScan(scene.scan);
    widget.show();
    ASSERT_TRUE(waiting::untilExposed(widget));
    emit widget.setYHintLine(7);
    const auto& line = widget.getViewer()->getYHintLine();
    EXPECT_TRUE(line.isVisible());
    const QRectF image = widget.getViewer()->getImageRect();
    EXPECT_NEAR(line.getPoints().first().x, image.left() + 7.5 * image.width() / 40, 1e-9);
}

TEST_F(SegmentationViewerWidget, HidesAtFirstWhatIsNotVisibleByDefault)
{
    widget.setOCTScan(scene.scan);
    widget.setSegmentation(scene.segmentation);
    EXPECT_TRUE(widget.getViewer()->getOverlay(2, 0)->isVisible());
    EXPECT_FALSE(widget.getViewer()->getOverlay(2, 1)->isVisible());
}

TEST_F(SegmentationViewerWidget, UncheckingABoxHidesTheLayerOnEverySliceShownAfterwards)
{
    widget.setOCTScan(scene.scan);
    widget.setSegmentation(scene.segmentation);
    widget.show();
    ASSERT_TRUE(waiting::untilExposed(widget));
    auto* const box = widget.getLayerSelection()->findChild<QCheckBox*>(QStringLiteral("ILM"));
    ASSERT_NE(box, nullptr);
    QTest::mouseClick(box, Qt::LeftButton, {}, {8, box->height() / 2});
    for (int slice = 0; slice < 5; ++slice) {
        emit widget.setActiveSlice(slice);
        EXPECT_FALSE(widget.getViewer()->getOverlay(slice, 0)->isVisible());
    }
}

TEST_F(SegmentationViewerWidget, IsEmptyWhenCleared)
{
    widget.setOCTScan(scene.scan);
    widget.setSegmentation(scene.segmentation);
    TraceCatcher trace;
    widget.clearOCT();
    EXPECT_EQ(trace.lines(),
              QStringList{QStringLiteral("OCTSegmentationViewerWidget::clearOCT()")});
    EXPECT_EQ(widget.getViewer()->getSliceCount(), 0);
    EXPECT_TRUE(widget.getViewer()->getSegmentation().isNull());
    EXPECT_TRUE(widget.getLayerSelection()->findChildren<QCheckBox*>().isEmpty());
}

TEST_F(SegmentationViewerWidget, ForgetsTheLayersOfTheScanBefore)
{
    widget.setOCTScan(scene.scan);
    widget.setSegmentation(scene.segmentation);
    widget.setOCTScan(SegmentationScene::makeScan(3));
    EXPECT_TRUE(widget.getViewer()->getSliceObjects(1).isEmpty());
    EXPECT_TRUE(widget.getLayerSelection()->findChildren<QCheckBox*>().isEmpty());
}

} // namespace
