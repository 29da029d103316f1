#include "EditMaskDialog.h"

#include "DialogDriver.h"
#include "ExpectFailure.h"
#include "LocalizerGraphicsViewer.h"
#include "MouseEvents.h"
#include "OCTScanControlWidget.h"
#include "PanelTestTools.h"
#include "kelpRegionTool.h"

#include <QGraphicsScene>
#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelp;
using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

std::string place(const char* function)
{
    return std::string("OCTScan/src/view/OCTScanControlWidget::kelp::oct::OCTScanControlWidget::") +
           function + ": ";
}

/// Draws in the open mask editor as a user does.
class MaskDrawing
{
public:
    explicit MaskDrawing(QDialog& editor)
        : dialog(editor), viewer(childOf<LocalizerGraphicsViewer>(editor, "editMaskViewer"))
    {
    }

    void click(const QPointF& point, Qt::MouseButton button = Qt::LeftButton)
    {
        mouseevents::move(viewer, at(point));
        QTest::mouseClick(viewer.viewport(), button, {}, at(point));
    }
    void drag(const QPointF& from, const QList<QPointF>& through)
    {
        QTest::mousePress(viewer.viewport(), Qt::LeftButton, {}, at(from));
        for (const QPointF& point : through) {
            mouseevents::move(viewer, at(point), Qt::LeftButton);
        }
        QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, {}, at(through.last()));
    }
    void triangle(const QPointF& corner)
    {
        click(corner);
        click(corner + QPointF(1.0, 0.0));
        click(corner + QPointF(0.0, 1.0));
        click(corner + QPointF(0.0, 1.0), Qt::RightButton);
    }
    QPoint at(const QPointF& point) const { return seenAt(viewer, point); }
    RegionTool* tool() const
    {
        for (QGraphicsItem* const item : viewer.scene()->items()) {
            if (auto* const found = dynamic_cast<RegionTool*>(item)) {
                return found;
            }
        }
        return nullptr;
    }

    QDialog& dialog;
    LocalizerGraphicsViewer& viewer;
};

class EditMaskDialogTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_scan = phantomScan(m_folder, phantom::Pattern::Volume, 5);
        m_segmentation = OCTScanSegPtr(new OCTScanSegmentation(m_scan));
        showReady(m_panel);
        m_panel.setOCT(m_scan);
        m_panel.setOCTScanSegmentation(m_segmentation);
    }
    /// Presses "Edit Mask", does this in the dialog, and closes it with its button.
    void edit(const std::function<void(MaskDrawing&)>& action)
    {
        m_dialogs.expect([&action](QDialog& dialog) {
            MaskDrawing drawing(dialog);
            action(drawing);
            DialogDriver::click(dialog, QStringLiteral("Close"));
        });
        DialogDriver::click(m_panel, QStringLiteral("Edit Mask"));
        ASSERT_EQ(m_dialogs.pending(), 0);
    }
    QList<QPolygonF> polygons() { return m_segmentation->getMask()->getPolygons(); }
    int excluded()
    {
        const auto matrix = m_segmentation->getMask()->getMaskMatrix();
        return static_cast<int>(std::count(matrix->begin(), matrix->end(), 1));
    }
    LocalizerGraphicsViewer& localizer()
    {
        return childOf<LocalizerGraphicsViewer>(m_panel, "localizerViewer");
    }
    /// In the middle of the scan, and such that a B-scan runs through the triangle drawn from it.
    QPointF corner() const
    {
        const Vector2d position = m_scan->getBScan(3)->getAScanPosition(20);
        return {position.x, position.y - 0.3};
    }

    QTemporaryDir m_folder;
    DialogDriver m_dialogs;
    OCTScanPtr m_scan;
    OCTScanSegPtr m_segmentation;
    OCTScanControlWidget m_panel;
    QSignalSpy m_changes{&m_panel, SIGNAL(maskChanged())};
};

} // namespace

TEST_F(EditMaskDialogTest, ShowsACopyOfTheLocalizerWithTheMaskAndAHint)
{
    m_segmentation->getMask()->addPolygon(QPolygonF(QRectF(corner(), QSizeF(1.0, 1.0))));
    edit([this](MaskDrawing& drawing) {
        EXPECT_EQ(drawing.dialog.windowTitle(), QStringLiteral("Edit Mask"));
        EXPECT_EQ(drawing.viewer.getImage(), localizer().getImage());
        EXPECT_EQ(drawing.viewer.getMaskItems().size(), 1);
        EXPECT_TRUE(DialogDriver::findButton(drawing.dialog, QStringLiteral("Delete All Masks")));
        ASSERT_TRUE(drawing.tool());
        EXPECT_EQ(drawing.viewer.scene()->mouseGrabberItem(), drawing.tool());
    });
    EXPECT_EQ(m_changes.size(), 0);
}

TEST_F(EditMaskDialogTest, TwoClicksAndARightClickGiveTwoCornersAndTheClosingPoint)
{
    edit([this](MaskDrawing& drawing) {
        drawing.click(corner());
        drawing.click(corner() + QPointF(1.0, 0.0));
        drawing.click(corner() + QPointF(1.0, 0.0), Qt::RightButton);
    });
    ASSERT_EQ(polygons().size(), 1);
    // The first click holds its point twice; the rubber point goes only from more than 3 points.
    const QPolygonF polygon = polygons().first();
    ASSERT_EQ(polygon.size(), 4);
    EXPECT_EQ(polygon[0], polygon[3]);
    EXPECT_EQ(polygon[1], polygon[2]);
    EXPECT_NE(polygon[0], polygon[1]);
}

TEST_F(EditMaskDialogTest, MovingWithoutAButtonChangesOnlyTheLastPoint)
{
    edit([this](MaskDrawing& drawing) {
        drawing.click(corner());
        drawing.click(corner() + QPointF(1.0, 0.0));
        const QPolygonF before = drawing.tool()->getPolygon();
        const QPoint goal = drawing.at(corner() + QPointF(0.5, 1.0));
        mouseevents::move(drawing.viewer, drawing.at(corner() + QPointF(0.2, 1.0)));
        mouseevents::move(drawing.viewer, goal);
        const QPolygonF after = drawing.tool()->getPolygon();
        ASSERT_EQ(after.size(), before.size());
        EXPECT_EQ(after.mid(0, after.size() - 1), before.mid(0, before.size() - 1));
        EXPECT_EQ(after.last(), drawing.viewer.mapToScene(goal));
    });
}

TEST_F(EditMaskDialogTest, AFinishedPolygonLeavesTheViewAndShowsAsMaskAtOnce)
{
    edit([this](MaskDrawing& drawing) {
        drawing.triangle(corner());
        EXPECT_TRUE(drawing.tool()->getPolygon().isEmpty());
        EXPECT_EQ(drawing.viewer.getMaskItems().size(), 1);
        EXPECT_EQ(localizer().getMaskItems().size(), 1);
        EXPECT_EQ(m_changes.size(), 1);
        drawing.triangle(corner() - QPointF(1.5, 0.0));
        EXPECT_EQ(drawing.viewer.getMaskItems().size(), 2);
    });
    EXPECT_EQ(m_changes.size(), 2);
    EXPECT_EQ(polygons().size(), 2);
    EXPECT_GT(excluded(), 0);
}

TEST_F(EditMaskDialogTest, TheLeftButtonDrawsFreehand)
{
    const QPointF a = corner();
    edit([a](MaskDrawing& drawing) {
        drawing.drag(a, {a + QPointF(0.5, 0.0), a + QPointF(1.0, 0.5), a + QPointF(0.5, 1.0),
                         a + QPointF(0.0, 0.5)});
        drawing.click(a + QPointF(0.0, 0.5), Qt::RightButton);
    });
    ASSERT_EQ(polygons().size(), 1);
    EXPECT_EQ(polygons().first().size(), 6);
    EXPECT_TRUE(polygons().first().containsPoint(a + QPointF(0.5, 0.4), Qt::OddEvenFill));
}

TEST_F(EditMaskDialogTest, DrawingNeverSelectsAnAScan)
{
    const QSignalSpy aScans(&m_panel, SIGNAL(aScanSelected(int)));
    edit([this, &aScans](MaskDrawing& drawing) {
        const QSignalSpy bScans(&drawing.viewer, SIGNAL(bScanSelected(int)));
        drawing.triangle(corner());
        EXPECT_EQ(bScans.size(), 0);
        EXPECT_EQ(aScans.size(), 0);
    });
}

TEST_F(EditMaskDialogTest, DeleteAllMasksEmptiesListAndMatrixAtOnceWithoutAQuestion)
{
    edit([this](MaskDrawing& drawing) {
        drawing.triangle(corner());
        drawing.click(corner());
        DialogDriver::click(drawing.dialog, QStringLiteral("Delete All Masks"));
        EXPECT_TRUE(drawing.tool()->getPolygon().isEmpty());
        EXPECT_TRUE(drawing.viewer.getMaskItems().isEmpty());
        EXPECT_TRUE(localizer().getMaskItems().isEmpty());
        // The tool still has the mouse.
        drawing.triangle(corner());
        DialogDriver::click(drawing.dialog, QStringLiteral("Delete All Masks"));
    });
    EXPECT_TRUE(polygons().isEmpty());
    EXPECT_EQ(excluded(), 0);
    EXPECT_EQ(m_changes.size(), 4);
}

TEST_F(EditMaskDialogTest, DeletingWhereThereIsNoMaskIsNoChange)
{
    edit([](MaskDrawing& drawing) {
        DialogDriver::click(drawing.dialog, QStringLiteral("Delete All Masks"));
    });
    EXPECT_EQ(m_changes.size(), 0);
}

TEST_F(EditMaskDialogTest, ARightClickBeforeAnythingIsDrawnChangesNothing)
{
    edit([this](MaskDrawing& drawing) {
        drawing.click(corner(), Qt::RightButton);
        drawing.triangle(corner());
        drawing.click(corner(), Qt::RightButton);
    });
    EXPECT_EQ(polygons().size(), 1);
    EXPECT_EQ(m_changes.size(), 1);
}

TEST_F(EditMaskDialogTest, EscapeInMidDrawingLeavesNothingBehind)
{
    m_dialogs.expect([this](QDialog& dialog) {
        MaskDrawing drawing(dialog);
        drawing.click(corner());
        drawing.click(corner() + QPointF(1.0, 0.0));
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    DialogDriver::click(m_panel, QStringLiteral("Edit Mask"));
    EXPECT_TRUE(polygons().isEmpty());
    edit([this](MaskDrawing& drawing) {
        EXPECT_TRUE(drawing.tool()->getPolygon().isEmpty());
        mouseevents::move(drawing.viewer, drawing.at(corner()));
        EXPECT_TRUE(drawing.tool()->getPolygon().isEmpty());
        drawing.triangle(corner());
    });
    EXPECT_EQ(polygons().size(), 1);
}

TEST_F(EditMaskDialogTest, CanBeOpenedAgainAndAgainAndTellsEachPolygonOnce)
{
    for (int round = 1; round <= 3; ++round) {
        edit([this](MaskDrawing& drawing) { drawing.triangle(corner()); });
        EXPECT_EQ(polygons().size(), round);
        EXPECT_EQ(m_changes.size(), round);
    }
}

TEST_F(EditMaskDialogTest, TheWheelZoomsAndTheMaskIsDrawnWhereTheMouseIs)
{
    edit([this](MaskDrawing& drawing) {
        const double zoom = drawing.viewer.getZoom();
        mouseevents::turnWheel(*drawing.viewer.viewport(), -mouseevents::wheelDown, Qt::NoModifier);
        EXPECT_GT(drawing.viewer.getZoom(), zoom);
        const QPointF middle =
            drawing.viewer.mapToScene(drawing.viewer.viewport()->rect().center());
        drawing.triangle(middle);
        EXPECT_NEAR(polygons().value(0).value(0).x(), middle.x(), 0.1);
        EXPECT_NEAR(polygons().value(0).value(0).y(), middle.y(), 0.1);
    });
}

TEST_F(EditMaskDialogTest, RemembersItsSize)
{
    const QSize size(500, 610);
    edit([size](MaskDrawing& drawing) { drawing.dialog.resize(size); });
    edit([size](MaskDrawing& drawing) { EXPECT_EQ(drawing.dialog.size(), size); });
}

TEST_F(EditMaskDialogTest, ThePanelMayGoWhileTheDialogIsOpen)
{
    auto* const panel = new OCTScanControlWidget;
    panel->setOCT(m_scan);
    panel->setOCTScanSegmentation(m_segmentation);
    showReady(*panel);
    m_dialogs.expect([this, panel](QDialog& dialog) {
        MaskDrawing(dialog).click(corner());
        panel->deleteLater();
        QCoreApplication::sendPostedEvents(panel, QEvent::DeferredDelete);
    });
    panel->openEditMaskFrame();
    EXPECT_EQ(m_dialogs.pending(), 0);
    EXPECT_TRUE(polygons().isEmpty());
}

TEST_F(EditMaskDialogTest, AMaskBelongsToASegmentation)
{
    auto& button = childOf<QPushButton>(m_panel, "editMask");
    EXPECT_TRUE(button.isEnabled());
    m_panel.setOCT(m_scan);
    EXPECT_FALSE(button.isEnabled());
    EXPECT_EQ(failure<Assertion>([this] { m_panel.updateMask(); }),
              place("updateMask") + "OCT scan segmentation is null.");
    EXPECT_EQ(failure<Assertion>([this] { m_panel.polygonCreated(QPolygonF()); }),
              place("polygonCreated") + "Mask is null.");
    EXPECT_EQ(failure<Assertion>([this] { m_panel.deleteAllMasks(); }),
              place("deleteAllMasks") + "Mask is null.");
    m_panel.clearOCT();
    EXPECT_EQ(failure<Assertion>([this] { m_panel.openEditMaskFrame(); }),
              place("openEditMaskFrame") + "OCT is null.");
}

TEST_F(EditMaskDialogTest, UpdateMaskShowsWhatASegmentationRunMasked)
{
    m_segmentation->getMask()->addPolygon(QPolygonF(QRectF(corner(), QSizeF(1.0, 1.0))));
    EXPECT_EQ(localizer().getMaskItems().size(), 0);
    m_panel.updateMask();
    EXPECT_EQ(localizer().getMaskItems().size(), 1);
    m_panel.setOCT(m_scan);
    EXPECT_EQ(localizer().getMaskItems().size(), 0);
}
