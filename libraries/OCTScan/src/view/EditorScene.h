#pragma once

#include "MouseEvents.h"
#include "SegmentationScene.h"
#include "Waiting.h"
#include "kelpGISliceSegmentationEditor.h"

#include <QMouseEvent>
#include <QtTest>

#include <gtest/gtest.h>

namespace kelp::oct::test {

/// An editor on the screen with three level layers, driven by key and mouse events. Places are
/// A-scans and rows with fractions: row 10.5 is the middle of row 10.
class EditorScene : public testing::Test
{
protected:
    static constexpr int ilmRow = 10;
    static constexpr int iseRow = 30;
    static constexpr int bmRow = 45;

    void SetUp() override
    {
        scene.addLevelLayer(SegmentationScene::name("ILM"), ilmRow);
        scene.addLevelLayer(SegmentationScene::name("ISe"), iseRow);
        scene.addLevelLayer(SegmentationScene::name("BM"), bmRow);
        editor.show();
        ASSERT_TRUE(waiting::untilFocused(editor));
        editor.setOCT(scene.scan);
        editor.setSegmentation(scene.segmentation);
        ASSERT_TRUE(waitFor(Qt::CrossCursor));
    }

    /// Whether the editor comes to the state of this cursor.
    bool waitFor(Qt::CursorShape cursor)
    {
        return waiting::until([this, cursor] { return editor.cursor().shape() == cursor; });
    }

    QPoint place(double aScan, double row) const
    {
        return editor.mapFromScene(
            QPointF(aScan * SegmentationScene::lateral, row * SegmentationScene::axial));
    }
    void send(QEvent::Type type, const QPoint& position, Qt::MouseButton button,
              Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, position, editor.viewport()->mapToGlobal(position), button, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(editor.viewport(), &event);
    }
    void press(double aScan, double row)
    {
        send(QEvent::MouseButtonPress, place(aScan, row), Qt::LeftButton, Qt::LeftButton);
    }
    /// With the left button down.
    void drag(double aScan, double row)
    {
        mouseevents::move(editor, place(aScan, row), Qt::LeftButton);
    }
    void hover(double aScan, double row) { mouseevents::move(editor, place(aScan, row)); }
    void release(double aScan, double row)
    {
        send(QEvent::MouseButtonRelease, place(aScan, row), Qt::LeftButton, Qt::NoButton);
    }

    /// As the user does: Shift, the mouse near the layer, Shift up.
    void pick(double row)
    {
        QTest::keyPress(&editor, Qt::Key_Shift);
        hover(20.5, row);
        QTest::keyRelease(&editor, Qt::Key_Shift);
    }

    LayerSegmentationGIPtr overlay(int index) const
    {
        return editor.getOverlay(editor.getActiveSlice(), index);
    }
    /// On all slices.
    int activeOverlays() const
    {
        int count = 0;
        for (int slice = 0; slice < editor.getSliceCount(); ++slice) {
            const QList<GIObjectPtr> objects = editor.getSliceObjects(slice);
            for (const GIObjectPtr& object : objects) {
                count += object->isActiveObject() ? 1 : 0;
            }
        }
        return count;
    }
    int ilm(int aScan, int bScan = 2) const { return scene.position(bScan, "ILM", aScan); }
    bool isIlmUntouched(int bScan = 2) const
    {
        const auto& rows = scene.layer(bScan, "ILM")->layerData();
        return std::count(rows.data(), rows.data() + rows.size(), ilmRow) ==
               SegmentationScene::aScans;
    }

    SegmentationScene scene;
    GISliceSegmentationEditor editor;
};

} // namespace kelp::oct::test
