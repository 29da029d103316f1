#include "LocalizerGraphicsViewer.h"

#include "MouseEvents.h"
#include "PanelTestTools.h"
#include "TraceCapture.h"
#include "kelpCheck.h"

#include <QGraphicsPolygonItem>
#include <QGraphicsScene>

#include <gtest/gtest.h>

#include <cmath>

using namespace kelp;
using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

constexpr int viewerSize = 250;

/// What the viewer told, as "b3" and "a12".
class Told : public QObject
{
    Q_OBJECT

public:
    explicit Told(const LocalizerGraphicsViewer& viewer)
    {
        KELP_CONNECT("", connect(&viewer, SIGNAL(bScanSelected(int)), this, SLOT(bScan(int))));
        KELP_CONNECT("", connect(&viewer, SIGNAL(aScanSelected(int)), this, SLOT(aScan(int))));
    }
    QStringList signalsSeen;

public slots:
    void bScan(int index) { signalsSeen.append(QStringLiteral("b%1").arg(index)); }
    void aScan(int index) { signalsSeen.append(QStringLiteral("a%1").arg(index)); }
};

QPointF placeOf(const OCTScanPtr& scan, int bScan, int aScan)
{
    const Vector2d position = scan->getBScan(static_cast<unsigned>(bScan))
                                  ->getAScanPosition(static_cast<unsigned>(aScan));
    return {position.x, position.y};
}

class LocalizerGraphicsViewerTest : public testing::Test
{
protected:
    void show(const OCTScanPtr& scan)
    {
        m_viewer.resize(viewerSize, viewerSize);
        m_viewer.setOCT(scan);
        showReady(m_viewer);
    }
    OCTScanPtr phantom(phantom::Pattern pattern, int bScans)
    {
        return phantomScan(m_folder, pattern, bScans);
    }
    QList<QColor> colours() const
    {
        QList<QColor> result;
        for (const auto& line : m_viewer.getSlicePositions()) {
            result.append(line->getPen().color());
        }
        return result;
    }
    /// Presses at this A-scan and checks that just this one is told.
    void expectPicked(const OCTScanPtr& scan, int bScan, int aScan)
    {
        const Told told(m_viewer);
        QTest::mousePress(m_viewer.viewport(), Qt::LeftButton, {},
                          seenAt(m_viewer, placeOf(scan, bScan, aScan)));
        QTest::mouseRelease(m_viewer.viewport(), Qt::LeftButton);
        ASSERT_EQ(told.signalsSeen.size(), 2);
        EXPECT_EQ(told.signalsSeen[0], QStringLiteral("b%1").arg(bScan));
        const int found = told.signalsSeen[1].mid(1).toInt();
        // A pixel of the screen is wider than an A-scan.
        const QPointF way = placeOf(scan, bScan, found) - placeOf(scan, bScan, aScan);
        EXPECT_LT(std::hypot(way.x(), way.y()), 1.5 / m_viewer.getViewScale().first);
        EXPECT_EQ(m_viewer.getActiveSlice(), bScan);
        EXPECT_EQ(m_viewer.getActivePosition(), found);
    }

    QTemporaryDir m_folder;
    LocalizerGraphicsViewer m_viewer;
};

} // namespace

TEST_F(LocalizerGraphicsViewerTest, DrawsALinePerBScanFromItsFirstToItsLastAScan)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    const TraceCapture trace;
    show(scan);
    EXPECT_TRUE(trace.lines().contains(QStringLiteral("LocalizerGraphicsViewer::setOCT")));
    ASSERT_EQ(m_viewer.getSlicePositions().size(), 5);
    for (int i = 0; i < 5; ++i) {
        const auto points = m_viewer.getSlicePositions()[i]->getPoints();
        ASSERT_EQ(points.size(), 2);
        EXPECT_EQ(QPointF(points[0].x, points[0].y), placeOf(scan, i, 0));
        EXPECT_EQ(QPointF(points[1].x, points[1].y), placeOf(scan, i, 63));
    }
    EXPECT_EQ(m_viewer.getImage(), scan->getLocalizer()->getImage());
}

TEST_F(LocalizerGraphicsViewerTest, ShowsTheActiveBScanInRedAndTheOthersInGreen)
{
    show(phantom(phantom::Pattern::Volume, 3));
    const QColor red(Qt::red);
    const QColor green(Qt::green);
    m_viewer.setActiveSlice(0);
    EXPECT_EQ(colours(), (QList<QColor>{red, green, green}));
    m_viewer.setActiveSlice(2);
    EXPECT_EQ(colours(), (QList<QColor>{green, green, red}));
}

TEST_F(LocalizerGraphicsViewerTest, AnIndexOutsideIsOnlyTraced)
{
    show(phantom(phantom::Pattern::Volume, 3));
    m_viewer.setActiveSlice(1);
    const auto before = colours();
    const TraceCapture trace;
    m_viewer.setActiveSlice(3);
    m_viewer.setActiveSlice(-1);
    EXPECT_EQ(trace.lines(), QStringList({"ERROR: index bigger than m_slicePositionsGI",
                                          "ERROR: index bigger than m_slicePositionsGI"}));
    EXPECT_EQ(colours(), before);
    EXPECT_EQ(m_viewer.getActiveSlice(), 1);
}

TEST_F(LocalizerGraphicsViewerTest, APressSelectsTheClosestBScanThenItsAScan)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    show(scan);
    expectPicked(scan, 1, 40);
    expectPicked(scan, 4, 3);
}

TEST_F(LocalizerGraphicsViewerTest, SelectsOnCirclesStarsAndSingleBScans)
{
    for (const auto pattern :
         {phantom::Pattern::Circle, phantom::Pattern::Star, phantom::Pattern::Section}) {
        const OCTScanPtr scan = phantom(pattern, 6);
        show(scan);
        const int last = scan->getBScanCount() - 1;
        expectPicked(scan, last, 7);
        expectPicked(scan, 0, 55);
    }
}

TEST_F(LocalizerGraphicsViewerTest, ADragFollowsTheMouseAndTellsNoPlaceTwice)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    show(scan);
    const Told told(m_viewer);
    const QPoint start = seenAt(m_viewer, placeOf(scan, 1, 10));
    const QPoint end = seenAt(m_viewer, placeOf(scan, 3, 50));
    QTest::mousePress(m_viewer.viewport(), Qt::LeftButton, {}, start);
    mouseevents::move(m_viewer, end, Qt::LeftButton);
    mouseevents::move(m_viewer, end, Qt::LeftButton);
    QTest::mouseRelease(m_viewer.viewport(), Qt::LeftButton, {}, end);
    mouseevents::move(m_viewer, start);
    ASSERT_EQ(told.signalsSeen.size(), 4);
    EXPECT_EQ(told.signalsSeen[0], QStringLiteral("b1"));
    EXPECT_EQ(told.signalsSeen[2], QStringLiteral("b3"));
    EXPECT_EQ(m_viewer.getActiveSlice(), 3);
}

TEST_F(LocalizerGraphicsViewerTest, TheOtherButtonsAndMereMovementsSelectNothing)
{
    show(phantom(phantom::Pattern::Volume, 5));
    const Told told(m_viewer);
    QTest::mouseClick(m_viewer.viewport(), Qt::RightButton, {}, QPoint(100, 100));
    QTest::mouseClick(m_viewer.viewport(), Qt::MiddleButton, {}, QPoint(100, 100));
    mouseevents::move(m_viewer, QPoint(50, 50));
    EXPECT_EQ(told.signalsSeen, QStringList());
}

TEST_F(LocalizerGraphicsViewerTest, ACircleIsDrawnAsAClosedRingThroughAllItsAScans)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Circle, 1);
    show(scan);
    const auto points = m_viewer.getSlicePositions().value(0)->getPoints();
    ASSERT_EQ(points.size(), 65);
    EXPECT_EQ(points.first(), points.last());
    EXPECT_EQ(QPointF(points[20].x, points[20].y), placeOf(scan, 0, 20));
}

TEST_F(LocalizerGraphicsViewerTest, AScanWithoutLocalizerShowsItsBScansAndCanBePicked)
{
    TestExportOptions options;
    options.localizer = false;
    const OCTScanPtr scan = makeTestExportScan(writeTestExport(m_folder.path(), options));
    scan->ensureLoaded();
    show(scan);
    ASSERT_EQ(m_viewer.getSlicePositions().size(), 3);
    const QRect seen(m_viewer.mapFromScene(placeOf(scan, 0, 0)),
                     m_viewer.mapFromScene(placeOf(scan, 2, 7)));
    EXPECT_TRUE(m_viewer.viewport()->rect().contains(seen));
    EXPECT_GT(seen.height(), viewerSize / 2);
    expectPicked(scan, 2, 0);
}

TEST_F(LocalizerGraphicsViewerTest, ShowsAMaskPolygonInTranslucentRedAndReplacesIt)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    show(scan);
    const auto mask = SegmentationMaskPtr::create(scan);
    const QPolygonF triangle(QVector<QPointF>{{3.0, 3.0}, {4.0, 3.0}, {3.0, 4.0}});
    mask->addPolygon(triangle);
    mask->addPolygon(triangle.translated(1.0, 0.0));
    const TraceCapture trace;
    m_viewer.setMask(mask);
    m_viewer.setMask(mask);
    EXPECT_EQ(trace.lines(), QStringList({"LocalizerGraphicsViewer::setMask",
                                          "LocalizerGraphicsViewer::setMask"}));
    ASSERT_EQ(m_viewer.getMaskItems().size(), 2);
    EXPECT_EQ(m_viewer.getMaskItems()[0]->polygon(), triangle);
    EXPECT_EQ(m_viewer.getMaskItems()[0]->brush().color(), QColor(200, 0, 0, 100));
    const QImage picture = m_viewer.grab().toImage();
    const QColor inside = picture.pixelColor(seenAt(m_viewer, {3.3, 3.3}));
    EXPECT_GT(inside.red(), inside.blue() + 30);
    mask->clear();
    m_viewer.setMask(mask);
    EXPECT_TRUE(m_viewer.getMaskItems().isEmpty());
}

TEST_F(LocalizerGraphicsViewerTest, ANullMaskIsOnlyTracedAndLeavesTheOldOne)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    show(scan);
    const auto mask = SegmentationMaskPtr::create(scan);
    mask->addPolygon(QPolygonF(QRectF(3.0, 3.0, 1.0, 1.0)));
    m_viewer.setMask(mask);
    const TraceCapture trace;
    m_viewer.setMask(SegmentationMaskPtr());
    EXPECT_EQ(trace.lines(),
              QStringList({"LocalizerGraphicsViewer::setMask", "--- mask is null!"}));
    EXPECT_EQ(m_viewer.getMaskItems().size(), 1);
}

TEST_F(LocalizerGraphicsViewerTest, ClearingRemovesAllItemsAndTheMouseSelectsNothingAnyMore)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    show(scan);
    const auto mask = SegmentationMaskPtr::create(scan);
    mask->addPolygon(QPolygonF(QRectF(3.0, 3.0, 1.0, 1.0)));
    m_viewer.setMask(mask);
    m_viewer.setActiveSlice(2);
    m_viewer.setActivePosition(5);
    const TraceCapture trace;
    m_viewer.clearOCT();
    EXPECT_EQ(trace.lines(), QStringList({"LocalizerGraphicsViewer::clearOCT()"}));
    EXPECT_TRUE(m_viewer.scene()->items().isEmpty());
    const Told told(m_viewer);
    QTest::mouseClick(m_viewer.viewport(), Qt::LeftButton);
    EXPECT_EQ(told.signalsSeen, QStringList());
    m_viewer.setOCT(scan);
    EXPECT_EQ(m_viewer.getSlicePositions().size(), 5);
}

TEST_F(LocalizerGraphicsViewerTest, MarksTheActiveAScanOnTheActiveBScan)
{
    const OCTScanPtr scan = phantom(phantom::Pattern::Volume, 5);
    show(scan);
    const int items = m_viewer.scene()->items().size();
    m_viewer.setActivePosition(12);
    EXPECT_EQ(m_viewer.scene()->items().size(), items) << "no B-scan is active yet";
    m_viewer.setActiveSlice(3);
    ASSERT_EQ(m_viewer.scene()->items().size(), items + 1);
    EXPECT_EQ(m_viewer.scene()->items(placeOf(scan, 3, 12)).value(0)->pos(), placeOf(scan, 3, 12));
    m_viewer.setActivePosition(64);
    EXPECT_EQ(m_viewer.scene()->items().size(), items) << "there is no such A-scan";
}

TEST_F(LocalizerGraphicsViewerTest, ANullScanIsRefused)
{
    EXPECT_THROW(m_viewer.setOCT(OCTScanPtr()), Assertion);
}

TEST_F(LocalizerGraphicsViewerTest, FitsAgainWhenResizedUnlessTheUserZoomed)
{
    show(phantom(phantom::Pattern::Volume, 5));
    const double fitted = m_viewer.getZoom();
    m_viewer.resize(2 * viewerSize, 2 * viewerSize);
    EXPECT_NEAR(m_viewer.getZoom(), 2 * fitted, 0.05 * fitted);
    m_viewer.setWheelZoomEnabled(true);
    mouseevents::turnWheel(*m_viewer.viewport(), -mouseevents::wheelDown, Qt::NoModifier);
    const double zoomed = m_viewer.getZoom();
    EXPECT_GT(zoomed, 2.1 * fitted);
    m_viewer.resize(3 * viewerSize, 3 * viewerSize);
    EXPECT_DOUBLE_EQ(m_viewer.getZoom(), zoomed);
}

#include "LocalizerGraphicsViewerTest.moc"
