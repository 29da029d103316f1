#include "OCTMeasurementViewer.h"

#include "ExpectFailure.h"
#include "MeasurementTestTools.h"
#include "Waiting.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kelp::oct;
using namespace kelp::oct::test;
using testing::HasSubstr;

namespace {

class MeasurementViewer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qRegisterMetaType<CoordOnLocalizer>("CoordOnLocalizer");
        m_viewer.resize(480, 480);
        m_viewer.show();
        ASSERT_TRUE(waiting::untilExposed(m_viewer));
    }

    void showMap(MeasuredScan& measured)
    {
        measured.addLayers();
        m_viewer.setOCT(measured.scan);
        m_viewer.setSegmentation(measured.segmentation);
        m_viewer.setTopLayerName(LayerNameILM::create());
        m_viewer.setBottomLayerName(LayerNameBM::create());
    }

    QPointF fovea() const { return {m_viewer.getFovea().x, m_viewer.getFovea().y}; }

    void expectNear(const QPointF& actual, const QPointF& expected, double tolerance) const
    {
        EXPECT_NEAR(actual.x(), expected.x(), tolerance);
        EXPECT_NEAR(actual.y(), expected.y(), tolerance);
    }

    /// Half a screen pixel in millimetres, the most that the mouse can be off.
    double mouseTolerance() const { return 0.51 / m_viewer.getViewScale().first; }

    QGraphicsPixmapItem* map() const
    {
        // The localizer lies below.
        const auto pixmaps = visibleItems<QGraphicsPixmapItem>(m_viewer);
        return pixmaps.size() == 2 ? pixmaps.last() : nullptr;
    }

    OCTMeasurementViewer m_viewer;
    ViewerMouse m_mouse{m_viewer};
};

TEST_F(MeasurementViewer, ShowsTheLocalizerAtItsMillimetres)
{
    const MeasuredScan measured;
    m_viewer.setOCT(measured.scan);
    ASSERT_TRUE(m_viewer.getImage());
    EXPECT_EQ(m_viewer.getImage(), measured.scan->getLocalizer()->getImage());
    expectNear(m_viewer.getImageRect().topLeft(), {-0.05, -0.05}, 1e-9);
    expectNear(m_viewer.getImageRect().bottomRight(), {7.95, 7.95}, 1e-9);
}

TEST_F(MeasurementViewer, PutsTheGridAtTheScansCentreWithoutAStoredFovea)
{
    MeasuredScan measured;
    showMap(measured);
    const Vector2d center = measured.scan->getCenter();
    expectNear(fovea(), {center.x, center.y}, 1e-9);
    expectNear(labelPlace(m_viewer, "C"), {center.x, center.y}, 0.05);
}

TEST_F(MeasurementViewer, TakesTheStoredFoveaAndTellsSo)
{
    MeasuredScan measured;
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(3.5, 4.25), true});
    const kelp::oct::test::TraceCapture trace;
    showMap(measured);
    expectNear(fovea(), {3.5, 4.25}, 0.0);
    EXPECT_THAT(trace.text(), HasSubstr("OCTMeasurementViewer::setSegmentation: have fovea "
                                        "position\n"));
}

TEST_F(MeasurementViewer, DrawsCirclesSpokesAndLabelsInBlue)
{
    MeasuredScan measured;
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 3.5), true});
    showMap(measured);
    QList<double> diameters;
    for (const auto* const circle : ellipsesOf(m_viewer, Qt::blue)) {
        expectNear(circle->rect().center(), {4.0, 3.5}, 1e-9);
        EXPECT_EQ(circle->pen().widthF(), 0.02);
        diameters.append(circle->rect().width());
    }
    std::sort(diameters.begin(), diameters.end());
    EXPECT_EQ(diameters, (QList<double>{1.0, 3.0, 6.0}));

    const auto spokes = visibleItems<QGraphicsLineItem>(m_viewer);
    ASSERT_EQ(spokes.size(), 4);
    for (const auto* const spoke : spokes) {
        EXPECT_EQ(spoke->pen(), QPen(QColor(Qt::blue), 0.02));
        for (const auto& [end, radius] :
             {std::pair(spoke->line().p1(), 0.5), std::pair(spoke->line().p2(), 3.0)}) {
            EXPECT_NEAR(std::abs(end.x() - 4.0), radius / std::sqrt(2.0), 1e-9);
            EXPECT_NEAR(std::abs(end.y() - 3.5), radius / std::sqrt(2.0), 1e-9);
        }
    }
    for (const auto* const label : visibleItems<QGraphicsSimpleTextItem>(m_viewer)) {
        if (!label->parentItem()) {
            EXPECT_EQ(label->brush().color(), QColor(Qt::blue));
            EXPECT_EQ(label->scale(), 0.05);
        }
    }
}

TEST_F(MeasurementViewer, SwapsNasalAndTemporalLabelsWithTheEye)
{
    for (const bool rightEye : {true, false}) {
        MeasuredScan measured(rightEye);
        measured.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 4.0), true});
        showMap(measured);
        const double nasal = rightEye ? 1.0 : -1.0;
        const std::pair<const char*, QPointF> places[] = {{"C", {0.0, 0.0}},
                                                          {"N1", {nasal, 0.0}},
                                                          {"N2", {2.25 * nasal, 0.0}},
                                                          {"T1", {-nasal, 0.0}},
                                                          {"S1", {0.0, -1.0}},
                                                          {"S2", {0.0, -2.25}},
                                                          {"T2", {-2.25 * nasal, 0.0}},
                                                          {"I1", {0.0, 1.0}},
                                                          {"I2", {0.0, 2.25}}};
        for (const auto& [text, offset] : places) {
            SCOPED_TRACE(text);
            expectNear(labelPlace(m_viewer, text), QPointF(4.0, 4.0) + offset, 0.05);
        }
    }
}

TEST_F(MeasurementViewer, KeepsEachLabelInsideItsSector)
{
    MeasuredScan measured;
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 4.0), true});
    showMap(measured);
    int labels = 0;
    for (const auto* const label : visibleItems<QGraphicsSimpleTextItem>(m_viewer)) {
        if (label->parentItem()) {
            continue;
        }
        ++labels;
        const QRectF box = label->mapRectToScene(label->boundingRect());
        const int sector = m_viewer.getSector({box.center().x(), box.center().y()});
        // The letters reach neither the box's corners nor its upper and lower rim.
        for (const QPointF& end :
             {QPointF(box.left(), box.center().y()), QPointF(box.right(), box.center().y()),
              box.center() + QPointF(0.0, 0.25 * box.height()),
              box.center() - QPointF(0.0, 0.25 * box.height())}) {
            EXPECT_EQ(m_viewer.getSector({end.x(), end.y()}), sector)
                << label->text().toStdString();
        }
    }
    EXPECT_EQ(labels, 9);
}

TEST_F(MeasurementViewer, DrawsNoGridWithoutASegmentation)
{
    const MeasuredScan measured;
    m_viewer.setOCT(measured.scan);
    EXPECT_TRUE(visibleItems<QGraphicsSimpleTextItem>(m_viewer).isEmpty());
    EXPECT_TRUE(visibleItems<QGraphicsEllipseItem>(m_viewer).isEmpty());
    EXPECT_EQ(m_viewer.getSector({4.0, 4.0}), 9);
}

TEST_F(MeasurementViewer, GivesTheSectorIdsAroundItsFovea)
{
    MeasuredScan right(true);
    right.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 4.0), true});
    showMap(right);
    EXPECT_EQ(m_viewer.getSector({4.5, 4.0}), 0);
    EXPECT_EQ(m_viewer.getSector({5.0, 4.0}), 1);
    EXPECT_EQ(m_viewer.getSector({2.0, 4.0}), 8);
    EXPECT_EQ(m_viewer.getSector({4.0, 5.0}), 5);
    EXPECT_EQ(m_viewer.getSector({4.0, 2.0}), 4);
    EXPECT_EQ(m_viewer.getSector({7.5, 4.0}), 9);
    MeasuredScan left(false);
    left.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 4.0), true});
    showMap(left);
    EXPECT_EQ(m_viewer.getSector({3.0, 4.0}), 1);
    EXPECT_EQ(m_viewer.getSector({5.0, 4.0}), 7);
}

TEST_F(MeasurementViewer, PutsEveryPixelOfTheMapWhereItsAScanWasTaken)
{
    MeasuredScan measured;
    showMap(measured);
    ASSERT_TRUE(map());
    EXPECT_EQ(map()->transformationMode(), Qt::SmoothTransformation);
    EXPECT_EQ(map()->pixmap().size(), QSize(MeasuredScan::aScans, MeasuredScan::bScans));
    for (int bScan = 0; bScan < MeasuredScan::bScans; bScan += 6) {
        for (int aScan = 0; aScan < MeasuredScan::aScans; aScan += 9) {
            expectNear(map()->mapToScene(QPointF(aScan + 0.5, bScan + 0.5)),
                       MeasuredScan::position(bScan, aScan), 1e-9);
        }
    }
}

TEST_F(MeasurementViewer, ColoursThicknessesBetweenItsLimitsInMicrometres)
{
    MeasuredScan measured;
    m_viewer.setTransferFunction(kelp::ColorMaps::Gray);
    m_viewer.setTransferRange(150.0, 450.0);
    m_viewer.setTransferAlpha(1.0);
    showMap(measured);
    const QImage image = map()->pixmap().toImage();
    for (int bScan = 0; bScan < MeasuredScan::bScans; ++bScan) {
        for (int aScan = 0; aScan < MeasuredScan::aScans; ++aScan) {
            const double micrometres =
                (MeasuredScan::row(5, bScan, aScan) - MeasuredScan::row(0, bScan, aScan)) * 4.0;
            const double grey = std::clamp((micrometres - 150.0) / 300.0, 0.0, 1.0) * 255.0;
            ASSERT_NEAR(qRed(image.pixel(aScan, bScan)), grey, 1.01) << bScan << " " << aScan;
        }
    }
}

TEST_F(MeasurementViewer, LeavesMaskedAScansOutOfTheMap)
{
    MeasuredScan measured;
    measured.segmentation->getMask()->addPolygon(makeRectangle(0.0, 0.0, 3.02, 8.0));
    m_viewer.setTransferAlpha(1.0);
    showMap(measured);
    const QImage image = map()->pixmap().toImage();
    EXPECT_EQ(qAlpha(image.pixel(20, 5)), 0);
    EXPECT_EQ(qAlpha(image.pixel(21, 5)), 255);
}

TEST_F(MeasurementViewer, ShowsOtherPatternsWithoutAMap)
{
    MeasuredScan star(true, QStringLiteral("Star"));
    showMap(star);
    EXPECT_FALSE(map());
    EXPECT_EQ(ellipsesOf(m_viewer, Qt::blue).size(), 3);
}

TEST_F(MeasurementViewer, ShowsAScanWithoutLocalizerOnDarkGround)
{
    TestScan contents = lineScan(32, 16, 5, 0.1, 0.5);
    const OCTScanPtr scan = makeTestScan(contents);
    ASSERT_FALSE(scan->getLocalizer());
    m_viewer.setOCT(scan);
    EXPECT_TRUE(m_viewer.getImageRect().contains(QRectF(0.0, 0.0, 3.1, 2.0)));
    m_viewer.setSegmentation(OCTScanSegPtr(new OCTScanSegmentation(scan)));
    EXPECT_EQ(ellipsesOf(m_viewer, Qt::blue).size(), 3);
}

TEST_F(MeasurementViewer, ShowsAScanThatIsNotLoadedAsNone)
{
    MeasuredScan measured;
    showMap(measured);
    m_viewer.setOCT(makeUnloadedTestScan(lineScan(32, 16, 5)));
    EXPECT_TRUE(m_viewer.getOCT().isNull());
    EXPECT_TRUE(m_viewer.scene()->items().isEmpty());
}

TEST_F(MeasurementViewer, ShowsTheHandleUnderTheMouseNearTheFovea)
{
    MeasuredScan measured;
    showMap(measured);
    m_mouse.move(fovea() + QPointF(0.45, 0.0));
    const auto handles = ellipsesOf(m_viewer, Qt::green);
    ASSERT_EQ(handles.size(), 1);
    expectNear(handles.first()->rect().center(), fovea(), 1e-9);
    EXPECT_NEAR(handles.first()->rect().width(), 1.2, 1e-12);
    EXPECT_EQ(handles.first()->zValue(), 10.0);
    EXPECT_EQ(handles.first()->pen().widthF(), 0.02);
    m_mouse.move(fovea() + QPointF(0.1, 0.1));
    EXPECT_EQ(ellipsesOf(m_viewer, Qt::green).size(), 1);
    m_mouse.move(fovea() + QPointF(0.55, 0.0));
    EXPECT_TRUE(ellipsesOf(m_viewer, Qt::green).isEmpty());
}

TEST_F(MeasurementViewer, TakesTheHandleAwayWhenTheMouseLeaves)
{
    MeasuredScan measured;
    showMap(measured);
    m_mouse.move(fovea());
    ASSERT_EQ(ellipsesOf(m_viewer, Qt::green).size(), 1);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&m_viewer, &leave);
    EXPECT_TRUE(ellipsesOf(m_viewer, Qt::green).isEmpty());
}

TEST_F(MeasurementViewer, EmitsNothingForAPressAndReleaseWithoutMovement)
{
    MeasuredScan measured;
    showMap(measured);
    const QSignalSpy moved(&m_viewer, SIGNAL(foveaMoved(CoordOnLocalizer)));
    m_mouse.press(fovea());
    m_mouse.release(fovea());
    EXPECT_EQ(moved.count(), 0);
}

TEST_F(MeasurementViewer, TellsOfTheFoveaOnceAtTheEndOfADrag)
{
    MeasuredScan measured;
    showMap(measured);
    const QSignalSpy moved(&m_viewer, SIGNAL(foveaMoved(CoordOnLocalizer)));
    const QPointF target = fovea() + QPointF(0.8, -0.6);
    m_mouse.press(fovea());
    m_mouse.move(target, Qt::LeftButton);
    EXPECT_EQ(moved.count(), 0);
    expectNear(labelPlace(m_viewer, "C"), target, 0.05 + mouseTolerance());
    m_mouse.release(target);
    ASSERT_EQ(moved.count(), 1);
    const auto position = moved.first().first().value<CoordOnLocalizer>();
    EXPECT_EQ(position, m_viewer.getFovea());
    expectNear(fovea(), target, mouseTolerance());
}

TEST_F(MeasurementViewer, LetsAnyDragMoveTheFoveaInAJumpToTheMouse)
{
    MeasuredScan measured;
    showMap(measured);
    const QSignalSpy moved(&m_viewer, SIGNAL(foveaMoved(CoordOnLocalizer)));
    const QPointF far = fovea() + QPointF(2.5, 2.5);
    m_mouse.press(far);
    EXPECT_EQ(moved.count(), 0);
    m_mouse.move(far + QPointF(0.1, 0.0), Qt::LeftButton);
    expectNear(fovea(), far + QPointF(0.1, 0.0), mouseTolerance());
    m_mouse.release(far + QPointF(0.1, 0.0));
    EXPECT_EQ(moved.count(), 1);
}

TEST_F(MeasurementViewer, DoesNotMoveTheFoveaWithTheRightButton)
{
    MeasuredScan measured;
    showMap(measured);
    const QPointF before = fovea();
    m_mouse.move(before + QPointF(1.0, 1.0), Qt::RightButton);
    expectNear(fovea(), before, 0.0);
}

TEST_F(MeasurementViewer, KeepsTheImageInPlaceWhileTheFoveaIsDraggedToItsRim)
{
    MeasuredScan measured;
    showMap(measured);
    const QPoint corner = m_viewer.mapFromScene(0.0, 0.0);
    for (const QPointF& rim : {QPointF(7.8, 7.8), QPointF(0.1, 0.1), QPointF(7.8, 0.1)}) {
        m_mouse.drag(fovea(), rim);
        expectNear(fovea(), rim, mouseTolerance());
        EXPECT_EQ(m_viewer.mapFromScene(0.0, 0.0), corner);
    }
}

TEST_F(MeasurementViewer, DoesNotWriteTheMovedFoveaIntoTheSegmentation)
{
    // Only the detection sets the stored fovea; what was dragged is gone with the view.
    MeasuredScan measured;
    measured.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 4.0), true});
    showMap(measured);
    m_mouse.drag({4.0, 4.0}, {5.0, 3.0});
    expectNear(fovea(), {5.0, 3.0}, mouseTolerance());
    EXPECT_EQ(measured.segmentation->getFoveaPosition().position, CoordOnLocalizer(4.0, 4.0));
    m_viewer.setSegmentation(measured.segmentation);
    expectNear(fovea(), {4.0, 4.0}, 0.0);
}

TEST_F(MeasurementViewer, IsNotDisturbedByTheMouseWhileItIsEmpty)
{
    m_mouse.move({0.1, 0.1});
    m_mouse.drag({0.1, 0.1}, {0.4, 0.3});
    EXPECT_TRUE(m_viewer.scene()->items().isEmpty());
}

TEST_F(MeasurementViewer, FitsTheImageAgainWhenItsSizeChanges)
{
    MeasuredScan measured;
    showMap(measured);
    const double before = m_viewer.getViewScale().first;
    m_viewer.resize(240, 240);
    QCoreApplication::processEvents();
    EXPECT_NEAR(m_viewer.getViewScale().first, before / 2.0, 0.05 * before);
}

TEST_F(MeasurementViewer, RefusesNullObjects)
{
    const auto text = [](const char* function, const char* words) {
        return std::string("OCTScan/src/view/OCTMeasurementViewer::kelp::oct::"
                           "OCTMeasurementViewer::") +
               function + ": " + words;
    };
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_viewer.setOCT(nullptr); }),
              text("setOCT", "OCT scan is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_viewer.setSegmentation(nullptr); }),
              text("setSegmentation", "OCT scan segmentation is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_viewer.setTopLayerName({}); }),
              text("setTopLayerName", "Layer name is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { m_viewer.setBottomLayerName({}); }),
              text("setBottomLayerName", "Layer name is null."));
}

TEST_F(MeasurementViewer, ForgetsEverythingWhenCleared)
{
    MeasuredScan measured;
    showMap(measured);
    m_viewer.clear();
    EXPECT_TRUE(m_viewer.scene()->items().isEmpty());
    EXPECT_FALSE(m_viewer.getImage());
    EXPECT_EQ(m_viewer.getSector({4.0, 4.0}), 9);
    showMap(measured);
    EXPECT_TRUE(map());
}

TEST_F(MeasurementViewer, NoLongerAsksForSurfacesThatTheNextSegmentationDoesNotHave)
{
    MeasuredScan measured;
    showMap(measured);
    const OCTScanSegPtr fresh(new OCTScanSegmentation(measured.scan));
    EXPECT_NO_THROW(m_viewer.setSegmentation(fresh));
    EXPECT_FALSE(map());
    EXPECT_EQ(ellipsesOf(m_viewer, Qt::blue).size(), 3);
}

} // namespace
