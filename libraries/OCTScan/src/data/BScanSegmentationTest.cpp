#include "BScanSegmentation.h"
#include "SegmentationTestTools.h"
#include "VolumeLayer.h"

#include <gmock/gmock.h>

#include <QPointer>

using namespace kelp::oct;
using kelp::Assertion;
using kelp::oct::test::messageOf;

namespace {

constexpr char layerPrefix[] =
    "OCTScan/src/data/BScanSegmentationLayer::kelp::oct::BScanSegmentationLayer::";
constexpr char bScanPrefix[] = "OCTScan/src/data/BScanSegmentation::kelp::oct::BScanSegmentation::";

BScanSegmentationLayer::LayerData makeData(std::initializer_list<unsigned short> values)
{
    BScanSegmentationLayer::LayerData data(values.size());
    std::copy(values.begin(), values.end(), data.data());
    return data;
}

BScanSegmentationLayerPtr makeLayer(const LayerNamePtr& name,
                                    std::initializer_list<unsigned short> values = {1, 2, 3})
{
    return QSharedPointer<BScanSegmentationLayer>::create(makeData(values), name);
}

QStringList identifiersOf(const BScanSegmentation& bScan)
{
    QStringList identifiers;
    for (const LayerNamePtr& name : bScan.getAllLayerNames()) {
        identifiers.append(name->getIdentifier());
    }
    return identifiers;
}

TEST(BScanSegmentationLayer, IsEmptyAndNamelessAtFirst)
{
    const BScanSegmentationLayer layer;
    EXPECT_EQ(layer.getSize(), 0);
    EXPECT_TRUE(layer.getLayerName().isNull());
}

TEST(BScanSegmentationLayer, CopiesItsData)
{
    auto data = makeData({7, 8});
    BScanSegmentationLayer layer(data, LayerNameILM::create());
    data[0] = 99;
    EXPECT_EQ(layer.getLayerData()[0], 7);
    layer.getLayerData()[0] = 98;
    EXPECT_EQ(layer.getLayerData()[0], 7);
    layer.setLayerData(data, LayerNameBM::create());
    EXPECT_EQ(layer.getLayerData(), data);
    EXPECT_EQ(layer.getLayerName()->getIdentifier(), "BM");
}

TEST(BScanSegmentationLayer, RefusesANullName)
{
    EXPECT_EQ(messageOf<Assertion>([] { BScanSegmentationLayer(makeData({1}), LayerNamePtr()); }),
              QString(layerPrefix) + "BScanSegmentationLayer: Got null layer name.");
    BScanSegmentationLayer layer(makeData({1}), LayerNameILM::create());
    EXPECT_EQ(messageOf<Assertion>([&] { layer.setLayerData(makeData({2}), LayerNamePtr()); }),
              QString(layerPrefix) + "setLayerData: Got null layer name.");
    EXPECT_EQ(layer.getLayerData()[0], 1);
}

TEST(BScanSegmentationLayer, EditsOneElementTruncatedTo16Bits)
{
    const auto layer = makeLayer(LayerNameILM::create());
    layer->changedLayerSegmentationGI(0, 70000);
    EXPECT_EQ(layer->getLayerData(), makeData({4464, 2, 3}));
    layer->changedLayerSegmentationGI(2, -1);
    EXPECT_EQ(layer->getLayerData(), makeData({4464, 2, 65535}));
}

TEST(BScanSegmentationLayer, EditsManyElements)
{
    const auto layer = makeLayer(LayerNameILM::create());
    layer->changedLayerSegmentationGI(QList<int>{2, 0}, QList<int>{70000, 9});
    EXPECT_EQ(layer->getLayerData(), makeData({9, 2, 4464}));
}

TEST(BScanSegmentationLayer, ReportsEveryIndexOutsideAsTooLarge)
{
    const auto layer = makeLayer(LayerNameILM::create());
    const QString tooLarge =
        QString(layerPrefix) + "changedLayerSegmentationGI: Index position too large";
    EXPECT_EQ(messageOf<Assertion>([&] { layer->changedLayerSegmentationGI(-1, 5); }), tooLarge);
    EXPECT_EQ(messageOf<Assertion>([&] { layer->changedLayerSegmentationGI(3, 5); }), tooLarge);
    EXPECT_EQ(messageOf<Assertion>([&] {
                  layer->changedLayerSegmentationGI(QList<int>{0, 3}, QList<int>{9, 9});
              }),
              tooLarge);
    EXPECT_EQ(layer->getLayerData(), makeData({1, 2, 3}));
}

TEST(BScanSegmentationLayer, RefusesListsOfDifferentLengths)
{
    const auto layer = makeLayer(LayerNameILM::create());
    EXPECT_EQ(messageOf<Assertion>([&] {
                  layer->changedLayerSegmentationGI(QList<int>{0, 1}, QList<int>{9});
              }),
              QString(layerPrefix) +
                  "changedLayerSegmentationGI: Size mismatch between indices and values");
    EXPECT_EQ(layer->getLayerData(), makeData({1, 2, 3}));
}

TEST(BScanSegmentationLayer, DoesNotEchoAnEdit)
{
    const auto layer = makeLayer(LayerNameILM::create());
    int nrSignals = 0;
    QObject::connect(layer.data(), qOverload<int, int>(&BScanSegmentationLayer::bScanLayerChanged),
                     [&](int, int) { ++nrSignals; });
    QObject::connect(layer.data(),
                     qOverload<QList<int>, QList<int>>(&BScanSegmentationLayer::bScanLayerChanged),
                     [&](const QList<int>&, const QList<int>&) { ++nrSignals; });
    layer->changedLayerSegmentationGI(0, 5);
    layer->changedLayerSegmentationGI(QList<int>{0}, QList<int>{6});
    EXPECT_EQ(nrSignals, 0);
    emit layer->bScanLayerChanged(0, 5);
    emit layer->bScanLayerChanged(QList<int>{0}, QList<int>{6});
    EXPECT_EQ(nrSignals, 2) << "would not have been noticed";
}

TEST(BScanSegmentationLayer, CanBeTrackedByViewers)
{
    auto layer = makeLayer(LayerNameILM::create());
    const QPointer<BScanSegmentationLayer> tracker(layer.data());
    const QWeakPointer<BScanSegmentationLayer> weak = layer;
    layer.reset();
    EXPECT_TRUE(tracker.isNull());
    EXPECT_TRUE(weak.isNull());
}

TEST(BScanSegmentation, ReplacesALayerOfEqualNameAndMovesItToTheEnd)
{
    BScanSegmentation bScan;
    bScan.addLayer(makeLayer(LayerNameILM::create()));
    bScan.addLayer(makeLayer(LayerNameBM::create()));
    const auto replacement = makeLayer(LayerNameILM::create(), {9});
    bScan.addLayer(replacement);
    EXPECT_EQ(identifiersOf(bScan), QStringList({"BM", "ILM"}));
    EXPECT_EQ(bScan.getLayer(LayerNameILM::create()), replacement);
    EXPECT_EQ(bScan.getAllLayers().size(), 2);
}

TEST(BScanSegmentation, KeepsTheOrderInWhichLayersWereAdded)
{
    BScanSegmentation bScan;
    bScan.addLayer(makeLayer(LayerNameBM::create()));
    bScan.addLayer(makeLayer(LayerNameILM::create()));
    EXPECT_EQ(identifiersOf(bScan), QStringList({"BM", "ILM"}));
}

TEST(BScanSegmentation, GivesACopyOfItsList)
{
    BScanSegmentation bScan;
    bScan.addLayer(makeLayer(LayerNameBM::create()));
    bScan.getAllLayers().clear();
    EXPECT_EQ(bScan.getAllLayers().size(), 1);
}

TEST(BScanSegmentation, RefusesNulls)
{
    BScanSegmentation bScan;
    EXPECT_EQ(messageOf<Assertion>([&] { bScan.addLayer(BScanSegmentationLayerPtr()); }),
              QString(bScanPrefix) + "addLayer: Cannot add null segmentation layer is null");
    EXPECT_EQ(messageOf<Assertion>([&] { bScan.getLayer(LayerNamePtr()); }),
              QString(bScanPrefix) + "getLayer: Cannot get null layer");
}

TEST(BScanSegmentation, HasNoNullResultForAMissingLayer)
{
    BScanSegmentation bScan;
    const QString missing = QString(bScanPrefix) + "getLayer: Coult not find layer with name GCL";
    EXPECT_EQ(messageOf<Assertion>([&] { bScan.getLayer(LayerNameGCL::create()); }), missing);
    bScan.addLayer(makeLayer(LayerNameILM::create()));
    EXPECT_EQ(messageOf<Assertion>([&] { bScan.getLayer(LayerNameGCL::create()); }), missing);
}

TEST(BScanSegmentation, NeverTakesANamelessLayerForAnother)
{
    BScanSegmentation bScan;
    bScan.addLayer(QSharedPointer<BScanSegmentationLayer>::create());
    bScan.addLayer(QSharedPointer<BScanSegmentationLayer>::create());
    bScan.addLayer(makeLayer(LayerNameILM::create()));
    EXPECT_EQ(bScan.getAllLayers().size(), 3);
    EXPECT_EQ(bScan.getLayer(LayerNameILM::create())->getSize(), 3);
}

TEST(VolumeLayer, IsZeroedAndRowMajor)
{
    VolumeLayer surface(2, 3);
    EXPECT_THAT(std::vector<int>(surface.begin(), surface.end()),
                testing::ElementsAre(0, 0, 0, 0, 0, 0));
    surface(1, 2) = 7;
    EXPECT_EQ(surface.data[5], 7);
    EXPECT_FALSE(surface.external);
}

TEST(VolumeLayer, MayHoldNoElements)
{
    const VolumeLayer surface(0, 5);
    EXPECT_EQ(surface.size(), 0U);
    EXPECT_EQ(surface.rows, 0U);
    EXPECT_EQ(surface.columns, 5U);
    EXPECT_EQ(surface.begin(), surface.end());
}

TEST(VolumeLayer, LeavesElementsOfOthersAlone)
{
    unsigned short elements[2] = {3, 4};
    {
        VolumeLayer surface(elements, 1, 2);
        EXPECT_TRUE(surface.external);
        surface(0, 1) = 9;
    }
    EXPECT_EQ(elements[1], 9);
}

TEST(DynamicVector, IsZeroedAndCopiesDeeply)
{
    kelp::DynamicVector<float> vector(3);
    EXPECT_EQ(vector.size(), 3U);
    EXPECT_EQ(vector[2], 0.0F);
    const kelp::DynamicVector<float> copy = vector;
    vector[2] = 1.5F;
    EXPECT_EQ(copy[2], 0.0F);
    EXPECT_EQ(vector.elementAddress(2), vector.data() + 2);
}

} // namespace
