#include "EditorScene.h"

#include "Waiting.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QWheelEvent>

using kelp::oct::LayerSegmentationGIPtr;
using kelp::oct::test::EditorScene;
using kelp::oct::test::SegmentationScene;
using kelp::oct::test::TraceCatcher;

namespace {

using SegmentationEditor = EditorScene;

QString outOfBounds(const char* function, const char* index)
{
    return QStringLiteral("GISliceSegmentationEditor::%1 %2 out of bounds")
        .arg(QLatin1String(function), QLatin1String(index));
}

TEST_F(SegmentationEditor, StartsReadyToEdit)
{
    EXPECT_EQ(editor.cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(editor.dragMode(), QGraphicsView::NoDrag);
    EXPECT_TRUE(editor.isInteractive());
    EXPECT_EQ(editor.getSelectedLayerIndex(), -1);
    EXPECT_FALSE(editor.isSelecting());
}

TEST_F(SegmentationEditor, PansWhileControlIsHeld)
{
    QTest::keyPress(&editor, Qt::Key_Control);
    EXPECT_EQ(editor.cursor().shape(), Qt::OpenHandCursor);
    EXPECT_EQ(editor.dragMode(), QGraphicsView::ScrollHandDrag);
    EXPECT_FALSE(editor.isInteractive());
    QTest::keyRelease(&editor, Qt::Key_Control);
    EXPECT_EQ(editor.cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(editor.dragMode(), QGraphicsView::NoDrag);
    EXPECT_TRUE(editor.isInteractive());
}

TEST_F(SegmentationEditor, MovesTheImageWithTheMouseWhileControlIsHeld)
{
    editor.setZoom(8.0);
    pick(ilmRow + 0.5);
    const QPointF before = editor.mapToScene(0, 0);
    const QPoint start = editor.viewport()->rect().center();
    QTest::keyPress(&editor, Qt::Key_Control);
    send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, start - QPoint(30, 20), Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, start - QPoint(30, 20), Qt::LeftButton, Qt::NoButton);
    QTest::keyRelease(&editor, Qt::Key_Control);
    EXPECT_GT(editor.mapToScene(0, 0).x(), before.x());
    EXPECT_GT(editor.mapToScene(0, 0).y(), before.y());
    EXPECT_TRUE(isIlmUntouched());
}

TEST_F(SegmentationEditor, PicksALayerWhileShiftIsHeld)
{
    QTest::keyPress(&editor, Qt::Key_Shift);
    EXPECT_EQ(editor.cursor().shape(), Qt::PointingHandCursor);
    EXPECT_EQ(editor.dragMode(), QGraphicsView::NoDrag);
    EXPECT_TRUE(editor.isSelecting());
    hover(20.5, iseRow + 2.0);
    EXPECT_EQ(editor.getSelectedLayerIndex(), 1);
    EXPECT_NE(overlay(1)->graphicsEffect(), nullptr);
    EXPECT_EQ(activeOverlays(), 0);
    hover(20.5, bmRow - 1.0);
    EXPECT_EQ(editor.getSelectedLayerIndex(), 2);
    EXPECT_EQ(overlay(1)->graphicsEffect(), nullptr);
    QTest::keyRelease(&editor, Qt::Key_Shift);
    EXPECT_EQ(editor.cursor().shape(), Qt::CrossCursor);
    EXPECT_FALSE(editor.isSelecting());
    EXPECT_EQ(overlay(2)->graphicsEffect(), nullptr);
    EXPECT_TRUE(overlay(2)->isActiveObject());
    EXPECT_EQ(activeOverlays(), 1);
}

TEST_F(SegmentationEditor, DoesNothingForShiftWhileControlIsHeld)
{
    QTest::keyPress(&editor, Qt::Key_Control);
    QTest::keyPress(&editor, Qt::Key_Shift);
    EXPECT_EQ(editor.cursor().shape(), Qt::OpenHandCursor);
    EXPECT_FALSE(editor.isSelecting());
    QTest::keyRelease(&editor, Qt::Key_Shift);
    EXPECT_EQ(editor.cursor().shape(), Qt::OpenHandCursor);
    QTest::keyRelease(&editor, Qt::Key_Control);
    EXPECT_EQ(editor.cursor().shape(), Qt::CrossCursor);
}

TEST_F(SegmentationEditor, DoesNothingForControlWhileShiftIsHeld)
{
    QTest::keyPress(&editor, Qt::Key_Shift);
    QTest::keyPress(&editor, Qt::Key_Control);
    EXPECT_EQ(editor.cursor().shape(), Qt::PointingHandCursor);
    EXPECT_TRUE(editor.isInteractive());
    QTest::keyRelease(&editor, Qt::Key_Shift);
    EXPECT_EQ(editor.cursor().shape(), Qt::CrossCursor);
}

TEST_F(SegmentationEditor, HasNoLayerAfterANewSegmentationAndSaysSoAtTheFirstShift)
{
    pick(ilmRow + 0.5);
    ASSERT_EQ(editor.getSelectedLayerIndex(), 0);
    editor.setSegmentation(scene.segmentation);
    EXPECT_EQ(editor.getSelectedLayerIndex(), -1);
    TraceCatcher trace;
    QTest::keyPress(&editor, Qt::Key_Shift);
    EXPECT_EQ(trace.lines(),
              QStringList{outOfBounds("deselectCurrentItem", "m_selectedSegLayerIndex")});
    EXPECT_TRUE(editor.isSelecting());
    EXPECT_EQ(editor.cursor().shape(), Qt::PointingHandCursor);
}

TEST_F(SegmentationEditor, KeepsOnPickingWhenThereWasNothingToPickYet)
{
    QTest::keyPress(&editor, Qt::Key_Shift);
    TraceCatcher trace;
    QTest::keyRelease(&editor, Qt::Key_Shift);
    EXPECT_EQ(trace.lines(),
              QStringList{outOfBounds("selectCurrentItem", "m_selectedSegLayerIndex")});
    EXPECT_TRUE(editor.isSelecting());
    EXPECT_EQ(editor.cursor().shape(), Qt::CrossCursor);
}

TEST_F(SegmentationEditor, PrintsThatNothingWasPickedBeforeTheFirstHighlight)
{
    QTest::keyPress(&editor, Qt::Key_Shift);
    TraceCatcher trace;
    hover(20.5, iseRow + 2.0);
    hover(20.5, iseRow + 3.0);
    EXPECT_EQ(trace.lines(),
              QStringList{QStringLiteral("GISliceSegmentationEditor::highlightingClosestLayer with "
                                         "invalid m_selectedSegLayerIndex: -1")});
}

TEST_F(SegmentationEditor, PicksTheLaterOfTwoEquallyCloseLayers)
{
    scene.addLevelLayer(SegmentationScene::name("ONL"), ilmRow);
    editor.setSegmentation(scene.segmentation);
    pick(ilmRow + 3.0);
    EXPECT_EQ(editor.getSelectedLayerIndex(), 3);
}

TEST_F(SegmentationEditor, PrefersTheOverlayWhoseFirstPointIsWithinAMillimetre)
{
    // In a gap the mouse is nearer to the overlay at its left, but the first point of the one at
    // its right counts squared.
    scene.mask(2, 20, 20);
    editor.setSegmentation(scene.segmentation);
    pick(ilmRow + 0.5);
    QTest::keyPress(&editor, Qt::Key_Shift);
    hover(19.5, ilmRow + 5.5);
    const QPointF mouse = editor.mapToScene(place(19.5, ilmRow + 5.5));
    const auto trueDistance = [&mouse](const Vector2d& point) {
        return (point - Vector2d{mouse.x(), mouse.y()}).length();
    };
    EXPECT_LT(trueDistance(overlay(0)->getPoints().last()),
              trueDistance(overlay(1)->getPoints().first()));
    EXPECT_EQ(editor.getSelectedLayerIndex(), 1);
}

TEST_F(SegmentationEditor, DoesNotPickAHiddenLayer)
{
    editor.layerVisibilityChanged(SegmentationScene::name("ILM"), false);
    pick(ilmRow + 0.5);
    EXPECT_EQ(editor.getSelectedLayerIndex(), 1);
}

TEST_F(SegmentationEditor, EditsTheSameLayerOnTheNextSlice)
{
    pick(iseRow + 0.5);
    QTest::keyClick(&editor, Qt::Key_Right);
    EXPECT_EQ(editor.getActiveSlice(), 3);
    EXPECT_TRUE(editor.getOverlay(3, 1)->isActiveObject());
    EXPECT_EQ(activeOverlays(), 1);
}

TEST_F(SegmentationEditor, TellsTheNameOfTheLayerThatIsPickedOnEverySlice)
{
    // With a gap the same place in the list is another layer than without.
    scene.mask(2, 20, 20);
    editor.setSegmentation(scene.segmentation);
    QSignalSpy selected(&editor, SIGNAL(selectedLayerChanged(QString)));
    QTest::keyPress(&editor, Qt::Key_Shift);
    hover(30.5, iseRow + 0.5);
    QTest::keyRelease(&editor, Qt::Key_Shift);
    ASSERT_EQ(editor.getSelectedLayerIndex(), 3);
    EXPECT_EQ(selected.last(), QVariantList{QStringLiteral("Inner Segment Elipsoids")});
    QTest::keyClick(&editor, Qt::Key_Right);
    EXPECT_EQ(selected.last(), QVariantList{QString()});
    QTest::keyClick(&editor, Qt::Key_Left);
    EXPECT_EQ(selected.last(), QVariantList{QStringLiteral("Inner Segment Elipsoids")});
    EXPECT_EQ(selected.count(), 3);
}

TEST_F(SegmentationEditor, LeavesNoHighlightBehindAndNothingActiveWhenPagingWhileShiftIsHeld)
{
    QTest::keyPress(&editor, Qt::Key_Shift);
    hover(20.5, iseRow + 0.5);
    QTest::keyClick(&editor, Qt::Key_Right);
    EXPECT_EQ(editor.getOverlay(2, 1)->graphicsEffect(), nullptr);
    EXPECT_EQ(activeOverlays(), 0);
    QTest::keyRelease(&editor, Qt::Key_Shift);
    EXPECT_TRUE(editor.getOverlay(3, 1)->isActiveObject());
    EXPECT_EQ(activeOverlays(), 1);
}

TEST_F(SegmentationEditor, PagesWithTheWheelWhileControlIsHeldAndEditsAfterwards)
{
    pick(ilmRow + 0.5);
    QTest::keyPress(&editor, Qt::Key_Control);
    const QPoint centre = editor.viewport()->rect().center();
    QWheelEvent wheel(centre, editor.viewport()->mapToGlobal(centre), {}, {0, -120}, Qt::NoButton,
                      Qt::ControlModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(editor.viewport(), &wheel);
    QTest::keyRelease(&editor, Qt::Key_Control);
    EXPECT_EQ(editor.getActiveSlice(), 3);
    press(20.5, 20.5);
    release(20.5, 20.5);
    EXPECT_EQ(ilm(20, 3), 20);
    EXPECT_TRUE(isIlmUntouched(2));
}

TEST_F(SegmentationEditor, ComesBackFromPickingWhenItLosesTheKeyboard)
{
    QLineEdit other;
    other.show();
    ASSERT_TRUE(waiting::untilExposed(other));
    QTest::keyPress(&editor, Qt::Key_Shift);
    hover(20.5, iseRow + 0.5);
    other.activateWindow();
    other.setFocus();
    ASSERT_TRUE(waitFor(Qt::CrossCursor));
    EXPECT_FALSE(editor.isSelecting());
    EXPECT_TRUE(overlay(1)->isActiveObject());
    EXPECT_EQ(overlay(1)->graphicsEffect(), nullptr);
}

TEST_F(SegmentationEditor, ComesBackFromPanningWhenItLosesTheKeyboard)
{
    QLineEdit other;
    other.show();
    ASSERT_TRUE(waiting::untilExposed(other));
    QTest::keyPress(&editor, Qt::Key_Control);
    other.activateWindow();
    other.setFocus();
    ASSERT_TRUE(waitFor(Qt::CrossCursor));
    EXPECT_TRUE(editor.isInteractive());
    EXPECT_EQ(editor.dragMode(), QGraphicsView::NoDrag);
}

TEST_F(SegmentationEditor, SaysThatNoSliceIsShown)
{
    editor.setActiveSlice(7);
    TraceCatcher trace;
    QTest::keyPress(&editor, Qt::Key_Shift);
    EXPECT_FALSE(editor.isSelecting());
    QTest::keyRelease(&editor, Qt::Key_Shift);
    editor.highlightClosestLayer({1.0, 1.0});
    EXPECT_EQ(trace.lines(),
              QStringList({outOfBounds("deselectCurrentItem", "m_currentImgIndex"),
                           outOfBounds("selectCurrentItem", "m_currentImgIndex"),
                           QStringLiteral("GISliceSegmentationEditor::highlightingClosestLayer "
                                          "with invalid m_currentImgIndex: -1")}));
}

TEST_F(SegmentationEditor, TakesKeysAndMouseWithoutASegmentation)
{
    editor.setOCT(scene.scan);
    pick(20.0);
    press(20.5, 20.5);
    drag(25.5, 25.5);
    release(25.5, 25.5);
    QTest::keyClick(&editor, Qt::Key_Right);
    EXPECT_EQ(editor.getActiveSlice(), 3);
    editor.clearOCT();
    pick(20.0);
    press(20.5, 20.5);
    release(20.5, 20.5);
    EXPECT_EQ(editor.getActiveSlice(), -1);
    EXPECT_EQ(activeOverlays(), 0);
}

/// A scan of another kind in place of the volume.
void editOneBScan(kelp::oct::GISliceSegmentationEditor& editor, const QString& pattern)
{
    kelp::oct::test::TestScan contents = kelp::oct::test::lineScan(40, 60, 1, 0.125, 0.25);
    contents.pattern = pattern;
    contents.axialResolution = SegmentationScene::axial;
    contents.images[0]->setSpacing({SegmentationScene::lateral, SegmentationScene::axial, 1.0});
    const OCTScanPtr scan = kelp::oct::test::makeTestScan(contents);
    const OCTScanSegPtr segmentation(new kelp::oct::OCTScanSegmentation(scan));
    segmentation->setVolumeLayer(QSharedPointer<kelp::oct::VolumeLayer>::create(1U, 40U),
                                 SegmentationScene::name("ILM"));
    editor.setOCT(scan);
    editor.setSegmentation(segmentation);
    ASSERT_EQ(editor.getActiveSlice(), 0);
    QTest::keyPress(&editor, Qt::Key_Shift);
    editor.highlightClosestLayer({2.0, 1.0});
    QTest::keyRelease(&editor, Qt::Key_Shift);
    const QPoint position = editor.mapFromScene(
        QPointF(20.5 * SegmentationScene::lateral, 33.5 * SegmentationScene::axial));
    QTest::mouseClick(editor.viewport(), Qt::LeftButton, {}, position);
    const auto layer =
        segmentation->getBScanSegmentation(0)->getLayer(SegmentationScene::name("ILM"));
    EXPECT_EQ(layer->layerData()[20], 33);
    EXPECT_EQ(layer->layerData()[19], 0);
}

TEST_F(SegmentationEditor, EditsASingleBScan)
{
    editOneBScan(editor, QStringLiteral("Single BScan"));
}

TEST_F(SegmentationEditor, EditsACircularBScan)
{
    editOneBScan(editor, QStringLiteral("Circular BScan"));
}

} // namespace
