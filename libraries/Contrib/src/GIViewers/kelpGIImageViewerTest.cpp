#include "kelpGIImageViewer.h"

#include "MouseEvents.h"
#include "ViewerTestSupport.h"

#include <QSignalSpy>

#include <limits>

Q_DECLARE_METATYPE(kelp::ConstImagePtr)

namespace {

using kelp::GIImageViewer;
using viewertest::makeImage;
using viewertest::show;

/// The rectangle of all pixels that are not the scene's background.
QRect paintedRect(GIImageViewer& viewer)
{
    const QImage picture = viewer.viewport()->grab().toImage();
    QRect found;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) != QColor(Qt::lightGray)) {
                found |= QRect(x, y, 1, 1);
            }
        }
    }
    return found;
}

TEST(GIImageViewer, StartsWithoutDraggingWheelZoomOrScrollBars)
{
    const GIImageViewer viewer;
    EXPECT_EQ(viewer.scene()->backgroundBrush(), QBrush(Qt::lightGray));
    EXPECT_EQ(viewer.dragMode(), QGraphicsView::NoDrag);
    EXPECT_TRUE(viewer.hasMouseTracking());
    EXPECT_EQ(viewer.sizePolicy(), QSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum));
    EXPECT_EQ(viewer.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(viewer.verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(viewer.getZoom(), 1.0);
    EXPECT_EQ(viewer.getMinZoom(), 0.1);
    EXPECT_EQ(viewer.getMaxZoom(), 10.0);
    EXPECT_EQ(viewer.getImageScale(), std::make_pair(1.0, 1.0));
    EXPECT_TRUE(viewer.getImageRect().isEmpty());
}

TEST(GIImageViewer, PixelCentresStandAtMultiplesOfTheSpacing)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 50, 0.01, 0.04));
    EXPECT_EQ(viewer.getImageScale(), std::make_pair(0.01, 0.04));
    const QRectF rect = viewer.getImageRect();
    EXPECT_DOUBLE_EQ(rect.left(), -0.005);
    EXPECT_DOUBLE_EQ(rect.top(), -0.02);
    EXPECT_DOUBLE_EQ(rect.width(), 1.0);
    EXPECT_DOUBLE_EQ(rect.height(), 2.0);
    ASSERT_EQ(viewer.items().size(), 2) << "image and guard";
    EXPECT_EQ(viewer.scene()->items(Qt::AscendingOrder).front()->zValue(), -1.0);
}

TEST(GIImageViewer, ShowsAnImageWithoutSpacingPixelByPixel)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 50, 0.0, std::numeric_limits<double>::quiet_NaN()));
    show(viewer);
    EXPECT_EQ(viewer.getImageScale(), std::make_pair(1.0, 1.0));
    EXPECT_GT(viewer.getZoom(), 1.0);
    viewer.setZoom(2.0);
    EXPECT_EQ(viewer.getViewScale(), std::make_pair(2.0, 2.0));
}

TEST(GIImageViewer, ShowsAnImageOfAnisotropicSpacingAtTrueProportions)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 50, 0.01, 0.04));
    show(viewer, {400, 420});
    const auto [scaleX, scaleY] = viewer.getViewScale();
    EXPECT_DOUBLE_EQ(scaleX, scaleY);
    const QRect painted = paintedRect(viewer);
    EXPECT_GT(painted.height(), 400);
    EXPECT_NEAR(painted.height(), 2.0 * painted.width(), 2.0);
    EXPECT_DOUBLE_EQ(viewer.getZoom(), scaleX * 0.01);
}

TEST(GIImageViewer, AFitOfAHiddenWidgetTakesEffectOnTheNextShow)
{
    GIImageViewer viewer;
    viewer.setDragEnabled(true);
    viewer.setImage(makeImage(100, 100));
    viewer.zoomToFit();
    EXPECT_EQ(viewer.getZoom(), 1.0);
    EXPECT_EQ(viewer.getViewScale(), std::make_pair(1.0, 1.0));
    show(viewer, {400, 300});
    EXPECT_NEAR(viewer.getZoom(), 2.96, 0.04);

    viewer.setZoom(1.5);
    viewer.hide();
    viewer.show();
    EXPECT_EQ(viewer.getZoom(), 1.5) << "the fit was wanted once";
}

TEST(GIImageViewer, AFitBeyondTheZoomRangeWidensIt)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(20000, 10));
    show(viewer);
    EXPECT_LT(viewer.getZoom(), 0.1);
    EXPECT_EQ(viewer.getMinZoom(), viewer.getZoom());
    EXPECT_EQ(viewer.getMaxZoom(), 10.0);

    const double lowered = viewer.getMinZoom();
    viewer.setImage(makeImage(4, 4));
    EXPECT_GT(viewer.getZoom(), 10.0);
    EXPECT_EQ(viewer.getMaxZoom(), viewer.getZoom());
    EXPECT_EQ(viewer.getMinZoom(), lowered);
}

TEST(GIImageViewer, ZoomCountsPixelsOfTheFinerAxisAndStaysInItsRange)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 50, 0.01, 0.04));
    viewer.setZoomRange(0.5, 4.0);
    viewer.setZoom(2.0);
    EXPECT_EQ(viewer.getZoom(), 2.0);
    EXPECT_DOUBLE_EQ(viewer.getViewScale().first, 200.0);
    EXPECT_DOUBLE_EQ(viewer.getViewScale().second, 200.0);
    viewer.setZoom(100.0);
    EXPECT_EQ(viewer.getZoom(), 4.0);
    viewer.setZoom(-1.0);
    EXPECT_EQ(viewer.getZoom(), 0.5);
    EXPECT_DOUBLE_EQ(viewer.getViewScale().first, 50.0);
}

TEST(GIImageViewer, TheWheelHasNoEffectUnlessEnabled)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 100));
    show(viewer);
    viewer.setZoom(10.0);
    const QTransform before = viewer.viewportTransform();
    mouseevents::turnWheel(viewer, 120);
    mouseevents::turnWheel(viewer, -120);
    EXPECT_EQ(viewer.viewportTransform(), before) << "neither zoomed nor scrolled";
    EXPECT_EQ(viewer.getZoom(), 10.0);
}

TEST(GIImageViewer, TheWheelChangesTheZoomByItsDeltaOverFiveHundred)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 100));
    show(viewer);
    viewer.setWheelZoomEnabled(true);
    viewer.setZoom(2.0);
    EXPECT_TRUE(mouseevents::turnWheel(viewer, 120));
    EXPECT_DOUBLE_EQ(viewer.getZoom(), 2.0 + 120.0 * 2.0 / 500.0);
    mouseevents::turnWheel(viewer, -240);
    EXPECT_DOUBLE_EQ(viewer.getZoom(), 2.48 - 240.0 * 2.48 / 500.0);
    mouseevents::turnWheel(viewer, -600);
    EXPECT_EQ(viewer.getZoom(), 0.1);
    for (int i = 0; i < 40; ++i) {
        mouseevents::turnWheel(viewer, 120);
    }
    EXPECT_EQ(viewer.getZoom(), 10.0);
}

TEST(GIImageViewer, EachImageFitsUnlessDraggingKeepsTheZoom)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 100));
    show(viewer);
    const double fit = viewer.getZoom();
    viewer.setZoom(7.0);
    viewer.setImage(makeImage(100, 100));
    EXPECT_DOUBLE_EQ(viewer.getZoom(), fit);

    viewer.setDragEnabled(true);
    EXPECT_EQ(viewer.dragMode(), QGraphicsView::ScrollHandDrag);
    viewer.setZoom(7.0);
    const QTransform before = viewer.viewportTransform();
    viewer.setImage(makeImage(100, 100));
    EXPECT_EQ(viewer.getZoom(), 7.0);
    EXPECT_EQ(viewer.viewportTransform(), before);
    viewer.setImage(makeImage(100, 100), true);
    EXPECT_DOUBLE_EQ(viewer.getZoom(), fit);
    viewer.setDragEnabled(false);
    EXPECT_EQ(viewer.dragMode(), QGraphicsView::NoDrag);
}

TEST(GIImageViewer, ADragMovesTheImageWithTheMouse)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(100, 100));
    show(viewer);
    viewer.setDragEnabled(true);
    viewer.setZoom(10.0);
    const QPointF grabbed = viewer.mapToScene(QPoint(200, 150));
    QTest::mousePress(viewer.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 150));
    mouseevents::move(viewer, QPoint(230, 140), Qt::LeftButton);
    QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(230, 140));
    EXPECT_EQ(viewer.mapFromScene(grabbed), QPoint(230, 140));
}

TEST(GIImageViewer, TellsOfEachImageAndNotOfNone)
{
    qRegisterMetaType<kelp::ConstImagePtr>("kelp::ConstImagePtr");
    GIImageViewer viewer;
    QSignalSpy set(&viewer, SIGNAL(imageSet(kelp::ConstImagePtr)));
    const kelp::ImagePtr image = makeImage(10, 10);
    viewer.setImage(image);
    ASSERT_EQ(set.size(), 1);
    EXPECT_EQ(set.front().front().value<kelp::ConstImagePtr>(), image);
    EXPECT_EQ(viewer.getImage(), image);
    viewer.setImage({});
    EXPECT_EQ(set.size(), 1);
    EXPECT_TRUE(viewer.getImage().isNull());
    EXPECT_TRUE(viewer.items().isEmpty());
}

TEST(GIImageViewer, ClearsImageObjectsAndWhateverElseStandsInTheScene)
{
    GIImageViewer viewer;
    viewer.setImage(makeImage(10, 10));
    viewer.scene()->addRect(0.0, 0.0, 1.0, 1.0);
    const auto object = viewertest::RecordingObjectPtr::create();
    viewer.addGIObject(object);
    viewer.clear();
    EXPECT_TRUE(viewer.items().isEmpty());
    EXPECT_TRUE(viewer.getImage().isNull());
    EXPECT_TRUE(viewer.getGIObjects().isEmpty());
    EXPECT_FALSE(object->scene());
}

} // namespace
