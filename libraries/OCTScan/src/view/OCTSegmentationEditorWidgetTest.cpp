#include "OCTSegmentationEditorWidget.h"

#include "SegmentationScene.h"
#include "Waiting.h"
#include "kelpGISliceSegmentationEditor.h"

#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

#include <gtest/gtest.h>

using kelp::oct::GISliceSegmentationEditor;
using kelp::oct::OCTSegmentationEditorWidget;
using kelp::oct::test::SegmentationScene;

namespace {

class SegmentationEditorWidget : public testing::Test
{
protected:
    SegmentationEditorWidget()
    {
        scene.addLevelLayer(SegmentationScene::name("ILM"), 10);
        widget.initViewer();
        widget.setOCTScan(scene.scan);
        widget.setSegmentation(scene.segmentation);
    }

    SegmentationScene scene;
    OCTSegmentationEditorWidget widget;
};

TEST_F(SegmentationEditorWidget, HasAnEditorInPlaceOfTheViewer)
{
    EXPECT_NE(qobject_cast<GISliceSegmentationEditor*>(widget.getViewer()), nullptr);
    EXPECT_EQ(widget.findChildren<QGraphicsView*>().size(), 1);
    EXPECT_EQ(widget.getViewer()->getMinZoom(), 0.1);
    EXPECT_EQ(widget.getViewer()->getMaxZoom(), 10.0);
}

TEST_F(SegmentationEditorWidget, IsConnectedAsTheViewerWidgetIs)
{
    QSignalSpy changed(&widget, SIGNAL(activeSliceChanged(int)));
    emit widget.setActiveSlice(4);
    EXPECT_EQ(widget.getViewer()->getActiveSlice(), 4);
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(SegmentationEditorWidget, TellsHowToPickAndRedrawALayer)
{
    const auto* const hint = widget.findChild<QLabel*>(QStringLiteral("editorHint"));
    ASSERT_NE(hint, nullptr);
    for (const char* key : {"Shift", "drag", "Ctrl", "wheel"}) {
        EXPECT_TRUE(hint->text().contains(QLatin1String(key))) << key;
    }
}

TEST_F(SegmentationEditorWidget, ShowsWhichLayerIsPicked)
{
    const auto* const selected = widget.findChild<QLabel*>(QStringLiteral("selectedLayer"));
    ASSERT_NE(selected, nullptr);
    EXPECT_EQ(selected->text(), QStringLiteral("No layer picked"));
    qobject_cast<GISliceSegmentationEditor*>(widget.getViewer())->highlightClosestLayer({1.0, 1.0});
    EXPECT_EQ(selected->text(), QStringLiteral("Internal Limiting Membrane"));
    widget.setSegmentation(scene.segmentation);
    EXPECT_EQ(selected->text(), QStringLiteral("No layer picked"));
    widget.clearOCT();
    EXPECT_EQ(selected->text(), QStringLiteral("No layer picked"));
}

TEST_F(SegmentationEditorWidget, TellsThatALayerWasCorrected)
{
    widget.show();
    ASSERT_TRUE(waiting::untilActivated(widget));
    auto* const editor = widget.getViewer();
    ASSERT_TRUE(waiting::until([editor] { return editor->cursor().shape() == Qt::CrossCursor; }));
    QSignalSpy edited(&widget, SIGNAL(segmentationEdited()));
    const QPoint place = editor->mapFromScene(
        QPointF(20.5 * SegmentationScene::lateral, 30.5 * SegmentationScene::axial));
    QTest::keyPress(editor, Qt::Key_Shift);
    qobject_cast<GISliceSegmentationEditor*>(editor)->highlightClosestLayer({1.0, 1.0});
    QTest::keyRelease(editor, Qt::Key_Shift);
    QTest::mouseClick(editor->viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(scene.position(2, "ILM", 20), 30);
    EXPECT_EQ(edited.count(), 1);
}

} // namespace
