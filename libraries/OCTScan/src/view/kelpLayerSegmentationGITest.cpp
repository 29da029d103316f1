#include "kelpLayerSegmentationGI.h"

#include "SegmentationScene.h"
#include "kelpException.h"

#include <QGraphicsDropShadowEffect>
#include <QGraphicsPathItem>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <thread>

using kelp::oct::BScanSegmentationLayer;
using kelp::oct::BScanSegmentationLayerPtr;
using kelp::oct::LayerNameONL;
using kelp::oct::LayerNamePtr;
using kelp::oct::LayerSegmentationGI;
using kelp::oct::test::TraceCatcher;
using testing::HasSubstr;

namespace {

constexpr double lateral = 0.25;
constexpr double axial = 0.125;
constexpr double maxY = 4.0; ///< 32 rows
constexpr const char* constructor = "kelp::oct::LayerSegmentationGI::LayerSegmentationGI: ";

/// Twenty A-scans at row 10.
BScanSegmentationLayerPtr makeLayer()
{
    BScanSegmentationLayer::LayerData data(20);
    data.assign(20, 10);
    return BScanSegmentationLayerPtr::create(data, LayerNameONL::create());
}

std::string failureOf(const BScanSegmentationLayerPtr& layer, int start, int end,
                      double axialResolution = axial)
{
    try {
        const LayerSegmentationGI overlay(layer, start, end, axialResolution, lateral, maxY);
    } catch (const kelp::Assertion& failure) {
        return failure.what();
    }
    return "none";
}

class LayerOverlay : public testing::Test
{
protected:
    int position(int aScan) const { return layer->layerData()[static_cast<std::size_t>(aScan)]; }
    QPainterPath drawnPath() const
    {
        for (const QGraphicsItem* child : overlay.childItems()) {
            if (const auto* item = dynamic_cast<const QGraphicsPathItem*>(child)) {
                return item->path();
            }
        }
        return {};
    }

    BScanSegmentationLayerPtr layer = makeLayer();
    LayerSegmentationGI overlay{layer, 5, 15, axial, lateral, maxY};
};

TEST(LayerOverlayConstruction, NamesWhatIsWrongWithItsArguments)
{
    const BScanSegmentationLayerPtr layer = makeLayer();
    const std::string place = constructor;
    EXPECT_THAT(failureOf(nullptr, 5, 15), HasSubstr(place + "BScan segmentation layer is null."));
    EXPECT_THAT(failureOf(layer, 5, 15, 0.0), HasSubstr(place + "Axial resolution is too small."));
    EXPECT_THAT(failureOf(layer, 5, 5), HasSubstr(place + "Range is from 5 to 5, this is <= 0"));
    EXPECT_THAT(failureOf(BScanSegmentationLayerPtr::create(), 5, 15),
                HasSubstr(place + "BScan segmentation layer name is null."));
    EXPECT_THAT(failureOf(layer, 5, 20), HasSubstr(place + "Upper range is out of bounds."));
    EXPECT_THAT(failureOf(layer, -5, -1), HasSubstr(place + "Upper range is negative."));
    EXPECT_THAT(failureOf(layer, -1, 15), HasSubstr(place + "Lower range is negative."));
    EXPECT_EQ(failureOf(layer, 0, 19), "none");
}

TEST_F(LayerOverlay, HasOnePointAtTheCentreOfEachPixelOfItsRange)
{
    ASSERT_EQ(overlay.getPoints().size(), 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(overlay.getPoints()[i], (Vector2d{(i + 5.5) * lateral, 10.5 * axial}));
    }
    EXPECT_EQ(drawnPath().elementCount(), 10);
}

TEST_F(LayerOverlay, IsDrawnWithACosmeticPenOfItsNamesColour)
{
    EXPECT_EQ(overlay.getPen().color(), QColor(0xFF, 0xB4, 0x42));
    EXPECT_EQ(overlay.getPen().widthF(), 0.0);
    EXPECT_TRUE(overlay.getPen().isCosmetic());
}

TEST_F(LayerOverlay, IsWhiteWhileActiveAndTellsItsLayer)
{
    QSignalSpy activated(layer.data(), SIGNAL(activated()));
    QSignalSpy deactivated(layer.data(), SIGNAL(deactivated()));
    overlay.setActive(true);
    EXPECT_TRUE(overlay.isActiveObject());
    EXPECT_EQ(overlay.getPen().color(), QColor(Qt::white));
    EXPECT_EQ(activated.count(), 1);
    overlay.setActive(false);
    EXPECT_FALSE(overlay.isActiveObject());
    EXPECT_EQ(overlay.getPen().color(), QColor(0xFF, 0xB4, 0x42));
    EXPECT_EQ(deactivated.count(), 1);
    overlay.setActive(true);
    overlay.deactivate();
    EXPECT_FALSE(overlay.isActiveObject());
    EXPECT_EQ(overlay.getPen().color(), QColor(0xFF, 0xB4, 0x42));
    EXPECT_EQ(deactivated.count(), 2);
}

TEST_F(LayerOverlay, GlowsRedWithAWiderPenWhileHighlighted)
{
    overlay.highlight();
    const auto* const glow = qobject_cast<QGraphicsDropShadowEffect*>(overlay.graphicsEffect());
    ASSERT_NE(glow, nullptr);
    EXPECT_EQ(glow->color(), QColor(Qt::red));
    EXPECT_EQ(glow->blurRadius(), 10.0);
    EXPECT_EQ(glow->offset(), QPointF(0.0, 1.0));
    EXPECT_EQ(overlay.getPen().widthF(), 0.02);
    overlay.removeHighlight();
    EXPECT_EQ(overlay.graphicsEffect(), nullptr);
    EXPECT_EQ(overlay.getPen().widthF(), 0.0);
}

TEST_F(LayerOverlay, IsAsFarAwayAsItsClosestPoint)
{
    const Vector2d third = overlay.getPoints()[2];
    EXPECT_DOUBLE_EQ(overlay.distanceTo({third.x, third.y + 0.5}), 0.5);
    // The first point's distance stays squared.
    const Vector2d first = overlay.getPoints()[0];
    EXPECT_DOUBLE_EQ(overlay.distanceTo({first.x, first.y + 0.5}), 0.25);
}

TEST_F(LayerOverlay, LetsTheMousePassUnlessActive)
{
    overlay.mouseDown({7.5 * lateral, 1.0});
    overlay.mouseMove({9.5 * lateral, 2.0});
    for (int aScan = 0; aScan < 20; ++aScan) {
        EXPECT_EQ(position(aScan), 10);
    }
}

TEST_F(LayerOverlay, WritesAClickToItsLayerAndRedrawsThatPoint)
{
    QSignalSpy changed(&overlay, SIGNAL(changedLayerSegmentationGI(int, int)));
    overlay.setActive(true);
    overlay.mouseDown({7.5 * lateral, 2.06}); // row 16.48
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0], (QVariantList{7, 16}));
    EXPECT_EQ(position(7), 16);
    EXPECT_EQ(position(6), 10);
    EXPECT_EQ(overlay.getPoints()[2].y, 16 * axial);
    EXPECT_EQ(QPointF(drawnPath().elementAt(2)), QPointF(7.5 * lateral, 16 * axial));
}

TEST_F(LayerOverlay, WritesADragToItsLayerAndRedrawsThosePoints)
{
    overlay.setActive(true);
    overlay.mouseDown({7.5 * lateral, 2.1});
    overlay.mouseMove({11.5 * lateral, 2.1}); // row (2.1 - 0.0625) / 0.125 = 16.3
    for (int aScan = 7; aScan <= 11; ++aScan) {
        EXPECT_EQ(position(aScan), 16);
        EXPECT_DOUBLE_EQ(overlay.getPoints()[aScan - 5].y, 2.1);
        EXPECT_DOUBLE_EQ(drawnPath().elementAt(aScan - 5).y, 2.1);
    }
    EXPECT_EQ(position(12), 10);
}

TEST_F(LayerOverlay, GoesOnDrawingFromWhereTheMouseWasLast)
{
    overlay.setActive(true);
    overlay.mouseDown({6.5 * lateral, 2.1});
    overlay.mouseMove({8.5 * lateral, 2.1});
    overlay.mouseMove({10.5 * lateral, 3.1}); // from 2.1 to 3.1
    EXPECT_EQ(position(8), 16);
    EXPECT_EQ(position(9), 20); // (2.6 - 0.0625) / 0.125 = 20.3
    EXPECT_EQ(position(10), 24);
}

TEST_F(LayerOverlay, PrintsThatADragBesideItIsOutOfBounds)
{
    overlay.setActive(true);
    overlay.mouseDown({5.5 * lateral, 10 * axial});
    overlay.mouseMove({1.0 * lateral, 1.0});
    TraceCatcher trace;
    overlay.mouseMove({0.5 * lateral, 3.0});
    EXPECT_EQ(trace.lines(), QStringList{QStringLiteral("out of bounds")});
}

TEST_F(LayerOverlay, FollowsItsLayersSignalCountedFromTheFirstPoint)
{
    emit layer->bScanLayerChanged(QList<int>{1, 3}, QList<int>{12, 13});
    EXPECT_EQ(position(6), 12);
    EXPECT_EQ(position(8), 13);
    emit layer->bScanLayerChanged(2, 14);
    EXPECT_EQ(position(7), 14);
}

TEST_F(LayerOverlay, RefusesListsOfDifferentLength)
{
    try {
        overlay.bScanLayerChanged(QList<int>{1, 3}, QList<int>{12});
        FAIL() << "lists of different length go through";
    } catch (const kelp::Assertion& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("kelp::oct::LayerSegmentationGI::bScanLayerChanged: "
                                              "Mismatch between AScan and new values size."));
    }
}

TEST_F(LayerOverlay, PassesListsOfChangesOnToItsLayer)
{
    emit overlay.changedLayerSegmentationGI(QList<int>{0, 19}, QList<int>{1, 2});
    EXPECT_EQ(position(0), 1);
    EXPECT_EQ(position(19), 2);
}

TEST(LayerOverlayOfARun, ChangesALayerThatAnotherThreadHasMadeAtOnce)
{
    BScanSegmentationLayerPtr layer;
    std::thread([&layer] { layer = makeLayer(); }).join();
    LayerSegmentationGI overlay(layer, 5, 15, axial, lateral, maxY);
    overlay.setActive(true);
    overlay.mouseDown(QPointF(8.5 * lateral, 20.5 * axial));
    EXPECT_EQ(layer->layerData()[8], 20);
    overlay.mouseMove(QPointF(12.5 * lateral, 20.5 * axial));
    EXPECT_EQ(layer->layerData()[10], 20);
}

} // namespace
