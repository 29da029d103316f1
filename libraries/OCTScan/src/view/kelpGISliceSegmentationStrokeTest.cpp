#include "EditorScene.h"

#include <QSignalSpy>

using kelp::oct::test::EditorScene;
using kelp::oct::test::SegmentationScene;
using kelp::oct::test::TraceCatcher;

namespace {

/// The ILM of the middle B-scan, picked for editing.
class Stroke : public EditorScene
{
protected:
    void SetUp() override
    {
        EditorScene::SetUp();
        if (HasFatalFailure()) {
            return;
        }
        pick(ilmRow + 0.5);
        ASSERT_TRUE(overlay(0)->isActiveObject());
    }

    int editedCount() const { return edited.count(); }

    QSignalSpy edited{&editor, SIGNAL(segmentationEdited())};
};

TEST_F(Stroke, OfOneClickMovesOneAScanToTheRowUnderTheMouse)
{
    press(20.5, 25.5);
    EXPECT_EQ(ilm(20), 25);
    EXPECT_EQ(editedCount(), 0);
    release(20.5, 25.5);
    EXPECT_EQ(editedCount(), 1);
    EXPECT_EQ(ilm(19), ilmRow);
    EXPECT_EQ(ilm(21), ilmRow);
    EXPECT_EQ(overlay(0)->getPoints()[20].y, 25 * SegmentationScene::axial);
}

TEST_F(Stroke, FillsTheAScansBetweenTwoPlacesOfTheMouse)
{
    press(10.5, 20.5);
    drag(20.5, 30.5);
    drag(15.5, 40.5);
    release(15.5, 40.5);
    EXPECT_EQ(ilm(9), ilmRow);
    EXPECT_EQ(ilm(12), 22);
    EXPECT_EQ(ilm(15), 40);
    EXPECT_EQ(ilm(18), 34);
    EXPECT_EQ(ilm(20), 30);
    EXPECT_EQ(ilm(21), ilmRow);
    EXPECT_EQ(editedCount(), 1);
}

TEST_F(Stroke, TouchesNeitherOtherLayersNorOtherBScans)
{
    press(10.5, 20.5);
    drag(20.5, 30.5);
    release(20.5, 30.5);
    for (const int bScan : {0, 1, 3, 4}) {
        EXPECT_TRUE(isIlmUntouched(bScan));
    }
    EXPECT_EQ(scene.position(2, "ISe", 15), iseRow);
    EXPECT_EQ(scene.position(2, "BM", 15), bmRow);
}

TEST_F(Stroke, StraightDownChangesNothingAfterTheFirstClick)
{
    press(20.5, 25.5);
    drag(20.5, 35.5);
    drag(20.5, 15.5);
    release(20.5, 15.5);
    EXPECT_EQ(ilm(20), 25);
    EXPECT_EQ(ilm(19), ilmRow);
    EXPECT_EQ(ilm(21), ilmRow);
}

TEST_F(Stroke, AboveTheImageStopsAtItsFirstRow)
{
    press(20.5, -4.0);
    EXPECT_EQ(ilm(20), 0);
    drag(24.5, -8.0);
    release(24.5, -8.0);
    for (int aScan = 20; aScan <= 24; ++aScan) {
        EXPECT_EQ(ilm(aScan), 0);
    }
}

TEST_F(Stroke, BelowTheImageStopsAtItsHeight)
{
    press(20.5, 64.0);
    EXPECT_EQ(ilm(20), 60);
    drag(24.5, 70.0);
    release(24.5, 70.0);
    for (int aScan = 20; aScan <= 24; ++aScan) {
        EXPECT_EQ(ilm(aScan), 60);
    }
}

TEST_F(Stroke, FromTheLeftOfTheOverlayIsClippedAtItsFirstPoint)
{
    scene.mask(2, 0, 9);
    editor.setSegmentation(scene.segmentation);
    pick(ilmRow + 0.5);
    ASSERT_EQ(overlay(0)->getStart(), 10);
    press(10.5, 20.5);
    drag(4.5, 20.5);
    drag(14.5, 20.5);
    release(14.5, 20.5);
    for (int aScan = 0; aScan < 10; ++aScan) {
        EXPECT_EQ(ilm(aScan), ilmRow);
    }
    for (int aScan = 10; aScan <= 14; ++aScan) {
        EXPECT_EQ(ilm(aScan), 20);
    }
}

TEST_F(Stroke, WhollyBesideTheOverlayPrintsOutOfBounds)
{
    scene.mask(2, 0, 9);
    editor.setSegmentation(scene.segmentation);
    pick(ilmRow + 0.5);
    press(6.5, 20.5);
    EXPECT_EQ(ilm(10), 20);
    TraceCatcher trace;
    drag(3.5, 25.5);
    EXPECT_EQ(trace.lines(), QStringList{QStringLiteral("out of bounds")});
    release(3.5, 25.5);
    EXPECT_EQ(ilm(10), 20);
    EXPECT_EQ(ilm(11), ilmRow);
}

TEST_F(Stroke, WhileShiftIsHeldEditsNothing)
{
    QTest::keyPress(&editor, Qt::Key_Shift);
    EXPECT_EQ(activeOverlays(), 0);
    press(10.5, 20.5);
    drag(20.5, 30.5);
    release(20.5, 30.5);
    QTest::keyRelease(&editor, Qt::Key_Shift);
    EXPECT_TRUE(isIlmUntouched());
    EXPECT_EQ(editedCount(), 0);
}

TEST_F(Stroke, WhileControlIsHeldEditsNothing)
{
    QTest::keyPress(&editor, Qt::Key_Control);
    press(10.5, 20.5);
    drag(20.5, 30.5);
    release(20.5, 30.5);
    QTest::keyRelease(&editor, Qt::Key_Control);
    EXPECT_TRUE(isIlmUntouched());
    EXPECT_EQ(editedCount(), 0);
}

TEST_F(Stroke, DoesNotBeginWhenAKeyComesUpWhileTheButtonIsDown)
{
    for (const Qt::Key key : {Qt::Key_Control, Qt::Key_Shift}) {
        QTest::keyPress(&editor, key);
        press(10.5, ilmRow + 0.5);
        QTest::keyRelease(&editor, key);
        drag(20.5, 30.5);
        drag(30.5, 40.5);
        release(30.5, 40.5);
        EXPECT_TRUE(isIlmUntouched());
    }
    EXPECT_EQ(editedCount(), 0);
}

TEST_F(Stroke, EndsWhenAKeyGoesDown)
{
    press(10.5, 20.5);
    QTest::keyPress(&editor, Qt::Key_Shift);
    drag(12.5, ilmRow + 0.5);
    QTest::keyRelease(&editor, Qt::Key_Shift);
    drag(20.5, 30.5);
    release(20.5, 30.5);
    EXPECT_EQ(ilm(10), 20);
    EXPECT_EQ(ilm(11), ilmRow);
    EXPECT_EQ(ilm(20), ilmRow);
    EXPECT_EQ(editedCount(), 1);
}

TEST_F(Stroke, EndsAtThePage)
{
    press(10.5, 20.5);
    QTest::keyClick(&editor, Qt::Key_Right);
    drag(20.5, 30.5);
    release(20.5, 30.5);
    EXPECT_EQ(ilm(10), 20);
    EXPECT_TRUE(isIlmUntouched(3));
    EXPECT_EQ(editedCount(), 1);
}

TEST_F(Stroke, DoesNotBeginWithAnotherButton)
{
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        send(QEvent::MouseButtonPress, place(10.5, 20.5), button, button);
        send(QEvent::MouseMove, place(20.5, 30.5), Qt::NoButton, button);
        send(QEvent::MouseButtonRelease, place(20.5, 30.5), button, Qt::NoButton);
    }
    EXPECT_TRUE(isIlmUntouched());
    EXPECT_EQ(editedCount(), 0);
}

TEST_F(Stroke, GoesOnWhenAnotherButtonIsClicked)
{
    press(10.5, 20.5);
    send(QEvent::MouseButtonPress, place(10.5, 20.5), Qt::RightButton,
         Qt::LeftButton | Qt::RightButton);
    send(QEvent::MouseButtonRelease, place(10.5, 20.5), Qt::RightButton, Qt::LeftButton);
    EXPECT_EQ(editedCount(), 0);
    drag(20.5, 20.5);
    release(20.5, 20.5);
    EXPECT_EQ(ilm(20), 20);
    EXPECT_EQ(editedCount(), 1);
}

TEST_F(Stroke, BeginsWithTheSecondPressOfADoubleClick)
{
    press(10.5, 20.5);
    release(10.5, 20.5);
    send(QEvent::MouseButtonDblClick, place(10.5, 20.5), Qt::LeftButton, Qt::LeftButton);
    drag(20.5, 20.5);
    release(20.5, 20.5);
    EXPECT_EQ(ilm(15), 20);
    EXPECT_EQ(editedCount(), 2);
}

TEST_F(Stroke, IsNotToldWhenNothingWasChanged)
{
    editor.setSegmentation(scene.segmentation);
    press(10.5, 20.5);
    drag(20.5, 30.5);
    release(20.5, 30.5);
    EXPECT_TRUE(isIlmUntouched());
    EXPECT_EQ(editedCount(), 0);
}

TEST_F(Stroke, IsToldWhenTheEditorIsHiddenBeforeTheButtonComesUp)
{
    press(10.5, 20.5);
    editor.hide();
    EXPECT_EQ(editedCount(), 1);
}

TEST_F(Stroke, IsToldBeforeItsSegmentationGoes)
{
    press(10.5, 20.5);
    editor.setSegmentation(new kelp::oct::OCTScanSegmentation(scene.scan));
    EXPECT_EQ(editedCount(), 1);
    release(10.5, 20.5);
    EXPECT_EQ(editedCount(), 1);
}

TEST_F(Stroke, StaysDrawnWhenPagingAwayAndBack)
{
    press(20.5, 25.5);
    release(20.5, 25.5);
    QTest::keyClick(&editor, Qt::Key_Right);
    QTest::keyClick(&editor, Qt::Key_Left);
    EXPECT_EQ(overlay(0)->getPoints()[20].y, 25 * SegmentationScene::axial);
    EXPECT_TRUE(overlay(0)->isActiveObject());
}

} // namespace
