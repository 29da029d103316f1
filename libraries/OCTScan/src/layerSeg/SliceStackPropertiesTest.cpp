#include "SliceStackProperties.h"

#include "CostFunctionILM.h"
#include "ExpectFailure.h"
#include "TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace kelp::oct;
using kelp::Assertion;
using kelp::Exception;
using kelp::oct::test::failure;
using kelp::oct::test::TraceCapture;

std::string located(const char* function, const char* text)
{
    return std::string("OCTScan/src/layerSeg/SliceStackProperties::kelp::oct::"
                       "SliceStackProperties::") +
           function + ": " + text;
}

VolumeLayerPtr matrix(unsigned short value)
{
    auto layer = VolumeLayerPtr::create(2, 3);
    std::fill(layer->begin(), layer->end(), value);
    return layer;
}

class SliceStackPropertiesTest : public testing::Test
{
protected:
    const LayerNamePtr m_ilm = LayerNameILM::create();
    const LayerNamePtr m_gcl = LayerNameGCL::create();
    const LayerNamePtr m_inl = LayerNameINL::create();
    const LayerNamePtr m_bm = LayerNameBM::create();
    const LayerNamePtr m_null;
    const CostFunctionPtr m_cost{new CostFunctionILM};
    SliceStackProperties m_properties{{m_ilm, m_gcl, m_inl}, 3, 2};
    SliceStackProperties m_withNull{{m_null, m_ilm}, 3, 2};
    TraceCapture m_trace;
};

TEST_F(SliceStackPropertiesTest, DimensionsAreBScansThenAScans)
{
    EXPECT_EQ(m_properties.getDimensions(), std::make_pair(2U, 3U));
    EXPECT_EQ(SliceStackProperties().getDimensions(), std::make_pair(0U, 0U));
    EXPECT_EQ(m_properties.getNrOfLayers(), 3);
    EXPECT_EQ(m_properties.getLayerNames(), (QList<LayerNamePtr>{m_ilm, m_gcl, m_inl}));
    EXPECT_EQ(m_properties.getLayerName(1), m_gcl);
    EXPECT_EQ(m_properties.getLayerPosition(m_inl), 2);
    EXPECT_TRUE(m_properties.hasLayer(m_ilm));
    EXPECT_FALSE(m_properties.hasLayer(m_bm));
}

TEST_F(SliceStackPropertiesTest, EverythingStartsNullAndZero)
{
    EXPECT_TRUE(m_properties.getCostFunction(m_gcl).isNull());
    EXPECT_TRUE(m_properties.getSearchRangeTop(m_gcl).isNull());
    EXPECT_TRUE(m_properties.getSearchRangeBottom(m_gcl).isNull());
    EXPECT_EQ(m_properties.getShapeRegWeightX(m_gcl), 0.0);
    EXPECT_EQ(m_properties.getShapeRegWeightZ(m_gcl), 0.0);
    EXPECT_EQ(m_properties.getShapeRegStepX(m_gcl), 0U);
    EXPECT_EQ(m_properties.getShapeRegStepZ(m_gcl), 0U);
}

TEST_F(SliceStackPropertiesTest, WithoutLayersEverySetterReportsTheNameAsNotFound)
{
    SliceStackProperties empty({}, 3, 2);
    EXPECT_EQ(empty.getNrOfLayers(), 0);
    EXPECT_EQ(failure<Exception>([&] { empty.setCostFunction(m_ilm, m_cost); }),
              located("setCostFunction", "Layer name ILM not found"));
    EXPECT_EQ(failure<Exception>([&] { empty.setSearchRange(m_ilm, matrix(0), matrix(9)); }),
              located("setSearchRange", "Layer name ILM not found"));
    EXPECT_EQ(failure<Exception>([&] { empty.setShapeRegularizaton(m_ilm, 1, 2, 3, 4); }),
              located("setShapeRegularizaton", "Layer name ILM not found."));
    EXPECT_EQ(failure<Exception>([&] { empty.getLayerPosition(m_ilm); }),
              located("getLayerPosition", "Could not find layer with name ILM"));
}

TEST_F(SliceStackPropertiesTest, SettersAndGettersCompareInstances)
{
    // A second instance with the same identifier is another name to all but two getters.
    const LayerNamePtr other = LayerNameILM::create();
    m_properties.setCostFunction(m_ilm, m_cost);
    EXPECT_FALSE(m_properties.hasLayer(other));
    EXPECT_THROW(m_properties.setCostFunction(other, m_cost), Exception);
    EXPECT_THROW(m_properties.getSearchRangeTop(other), Exception);
    EXPECT_EQ(m_properties.getCostFunction(other), m_cost);
    m_properties.setInterSurfDistance(m_ilm, m_gcl, matrix(1), matrix(2));
    EXPECT_FALSE(m_properties.getInterSurfDistanceMin(other, LayerNameGCL::create()).isNull());
}

TEST_F(SliceStackPropertiesTest, TheEstimateCountsAtLeastEightNodesAColumn)
{
    for (const auto& [top, bottom, nodes] : {std::tuple<int, int, unsigned>{5, 5, 8},
                                             {5, 7, 8},
                                             {5, 13, 8},
                                             {5, 14, 9},
                                             {0, 300, 300},
                                             {9, 5, 8}}) {
        m_properties.setSearchRange(m_ilm, matrix(static_cast<unsigned short>(top)),
                                    matrix(static_cast<unsigned short>(bottom)));
        EXPECT_EQ(m_properties.getNrOfNodesForColumn(m_ilm, 1, 2), nodes) << top << " " << bottom;
    }
}

TEST_F(SliceStackPropertiesTest, ALaterPairThatSharesATopReplacesTheDistancesOfTheFirst)
{
    const VolumeLayerPtr minimum = matrix(3);
    const VolumeLayerPtr maximum = matrix(4);
    m_properties.setInterSurfDistance(m_ilm, m_gcl, matrix(1), matrix(2));
    m_properties.setInterSurfDistance(m_ilm, m_inl, minimum, maximum);
    EXPECT_EQ(m_properties.getInterSurfDistanceMin(m_ilm, m_gcl), minimum);
    EXPECT_EQ(m_properties.getInterSurfDistanceMax(m_ilm, m_gcl), maximum);
    EXPECT_TRUE(m_trace.lines().isEmpty());
    EXPECT_TRUE(m_properties.getInterSurfDistanceMin(m_ilm, m_inl).isNull());
    EXPECT_TRUE(m_properties.getInterSurfDistanceMin(m_gcl, m_ilm).isNull());
    EXPECT_TRUE(m_properties.getInterSurfDistanceMax(m_gcl, m_ilm).isNull());
    const QStringList lines = m_trace.lines();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].toStdString(),
              located("getInterSurfDistanceMin",
                      "Could not find inter-surface distances between ILM and INL"));
    EXPECT_TRUE(lines[1].endsWith("GCL and ILM"));
}

TEST_F(SliceStackPropertiesTest, ALaterPairThatSharesABottomReplacesTheDistancesOfTheFirst)
{
    const VolumeLayerPtr minimum = matrix(3);
    m_properties.setInterSurfDistance(m_ilm, m_inl, matrix(1), matrix(2));
    m_properties.setInterSurfDistance(m_gcl, m_inl, minimum, matrix(4));
    EXPECT_EQ(m_properties.getInterSurfDistanceMin(m_ilm, m_inl), minimum);
    EXPECT_TRUE(m_properties.getInterSurfDistanceMin(m_gcl, m_inl).isNull());
}

TEST_F(SliceStackPropertiesTest, PairsThatShareASurfaceInDifferentPlacesStandSideBySide)
{
    m_properties.setInterSurfDistance(m_ilm, m_gcl, matrix(1), matrix(2));
    m_properties.setInterSurfDistance(m_gcl, m_inl, matrix(3), matrix(4));
    EXPECT_EQ((*m_properties.getInterSurfDistanceMin(m_ilm, m_gcl))(0, 0), 1);
    EXPECT_EQ((*m_properties.getInterSurfDistanceMax(m_gcl, m_inl))(0, 0), 4);
}

TEST_F(SliceStackPropertiesTest, ShapeRegularizationTakesZBeforeX)
{
    m_properties.setShapeRegularizaton(m_gcl, 5, 7, 2, 3);
    EXPECT_EQ(m_properties.getShapeRegWeightZ(m_gcl), 5.0);
    EXPECT_EQ(m_properties.getShapeRegWeightX(m_gcl), 7.0);
    EXPECT_EQ(m_properties.getShapeRegStepZ(m_gcl), 2U);
    EXPECT_EQ(m_properties.getShapeRegStepX(m_gcl), 3U);
}

TEST_F(SliceStackPropertiesTest, CopiesShareTheMatrices)
{
    m_properties.setSearchRange(m_ilm, matrix(1), matrix(20));
    const SliceStackProperties copy = m_properties;
    EXPECT_EQ(copy.getSearchRangeTop(m_ilm), m_properties.getSearchRangeTop(m_ilm));
    m_properties.setSearchRange(m_ilm, matrix(2), matrix(20));
    EXPECT_EQ((*copy.getSearchRangeTop(m_ilm))(0, 0), 1);
}

TEST_F(SliceStackPropertiesTest, NullNamesAreRefused)
{
    auto& p = m_properties;
    const std::string text = "Layer name is null";
    const auto expect = [&](const char* function, auto&& call) {
        EXPECT_EQ(failure<Assertion>(call), located(function, text.c_str()));
    };
    expect("setCostFunction", [&] { p.setCostFunction(m_null, m_cost); });
    expect("getCostFunction", [&] { p.getCostFunction(m_null); });
    expect("getSearchRangeTop", [&] { p.getSearchRangeTop(m_null); });
    expect("getSearchRangeBottom", [&] { p.getSearchRangeBottom(m_null); });
    expect("getShapeRegWeightX", [&] { p.getShapeRegWeightX(m_null); });
    expect("getShapeRegWeightZ", [&] { p.getShapeRegWeightZ(m_null); });
    expect("getShapeRegStepX", [&] { p.getShapeRegStepX(m_null); });
    expect("getShapeRegStepZ", [&] { p.getShapeRegStepZ(m_null); });
    expect("getNrOfNodesForColumn", [&] { p.getNrOfNodesForColumn(m_null, 0, 0); });
    expect("hasLayer", [&] { p.hasLayer(m_null); });
    expect("setShapeRegularizaton", [&] { p.setShapeRegularizaton(m_null, 1, 1, 1, 1); });
    expect("getLayerPosition", [&] { p.getLayerPosition(m_null); });
    EXPECT_EQ(failure<Assertion>([&] { p.setSearchRange(m_null, matrix(0), matrix(1)); }),
              located("setSearchRange", "Layer name is null."));
    EXPECT_EQ(failure<Assertion>([&] { p.getInterSurfDistanceMin(m_null, m_gcl); }),
              located("getInterSurfDistanceMin", "Top layer name is null"));
    EXPECT_EQ(failure<Assertion>([&] { p.getInterSurfDistanceMax(m_ilm, m_null); }),
              located("getInterSurfDistanceMax", "Bottom layer name is null"));
}

TEST_F(SliceStackPropertiesTest, NullArgumentsAreRefused)
{
    auto& p = m_properties;
    EXPECT_EQ(failure<Assertion>([&] { p.setCostFunction(m_ilm, {}); }),
              located("setCostFunction", "Cost function is null"));
    EXPECT_EQ(failure<Assertion>([&] { p.setSearchRange(m_ilm, {}, matrix(1)); }),
              located("setSearchRange", "Top search range layer is null."));
    EXPECT_EQ(failure<Assertion>([&] { p.setSearchRange(m_ilm, matrix(1), {}); }),
              located("setSearchRange", "Bottom search range layer is null."));
    const auto distance = [&](const LayerNamePtr& top, const LayerNamePtr& bottom,
                              const VolumeLayerPtr& minimum, const VolumeLayerPtr& maximum) {
        return failure<Assertion>([&] { p.setInterSurfDistance(top, bottom, minimum, maximum); });
    };
    EXPECT_EQ(distance(m_null, m_gcl, matrix(1), matrix(2)),
              located("setInterSurfDistance", "Top layer is null."));
    EXPECT_EQ(distance(m_ilm, m_null, matrix(1), matrix(2)),
              located("setInterSurfDistance", "Bottom layer is null."));
    EXPECT_EQ(distance(m_ilm, m_gcl, {}, matrix(2)),
              located("setInterSurfDistance", "Minimum distance layer is null."));
    EXPECT_EQ(distance(m_ilm, m_gcl, matrix(1), {}),
              located("setInterSurfDistance", "Maximum distance layer is null."));
}

TEST_F(SliceStackPropertiesTest, ANullEntryOfTheListIsReportedWhereTheScanMeetsIt)
{
    auto& p = m_withNull;
    EXPECT_EQ(failure<Assertion>([&] { p.setCostFunction(m_ilm, m_cost); }),
              located("setCostFunction", "Layer 0 is null"));
    EXPECT_EQ(failure<Assertion>([&] { p.setSearchRange(m_ilm, matrix(0), matrix(1)); }),
              located("setSearchRange", "Layer 0 is null"));
    EXPECT_EQ(failure<Assertion>([&] { p.setShapeRegularizaton(m_ilm, 1, 1, 1, 1); }),
              located("setShapeRegularizaton", "Layer name 0 is null"));
    EXPECT_EQ(failure<Assertion>([&] { p.getLayerPosition(m_ilm); }),
              located("getLayerPosition", "Layer name 0 is null"));
    EXPECT_EQ(failure<Assertion>([&] { p.getLayerName(0); }),
              located("getLayerName", "Layer name for index is null"));
    // A null entry behind the name is never met.
    SliceStackProperties behind({m_ilm, m_null}, 3, 2);
    behind.setCostFunction(m_ilm, m_cost);
    EXPECT_EQ(behind.getCostFunction(m_ilm), m_cost);
}

TEST_F(SliceStackPropertiesTest, NamesAndIndicesThatAreNotThereAreReported)
{
    auto& p = m_properties;
    const auto expect = [&](const char* function, auto&& call) {
        EXPECT_EQ(failure<Exception>(call), located(function, "Could not find layer name"));
    };
    expect("getCostFunction", [&] { p.getCostFunction(m_bm); });
    expect("getSearchRangeTop", [&] { p.getSearchRangeTop(m_bm); });
    expect("getSearchRangeBottom", [&] { p.getSearchRangeBottom(m_bm); });
    expect("getShapeRegWeightX", [&] { p.getShapeRegWeightX(m_bm); });
    expect("getShapeRegWeightZ", [&] { p.getShapeRegWeightZ(m_bm); });
    expect("getShapeRegStepX", [&] { p.getShapeRegStepX(m_bm); });
    expect("getShapeRegStepZ", [&] { p.getShapeRegStepZ(m_bm); });
    EXPECT_EQ(failure<Assertion>([&] { p.getLayerName(3); }),
              located("getLayerName", "Index out of bounds"));
    EXPECT_EQ(failure<Assertion>([&] { p.getLayerName(-1); }),
              located("getLayerName", "Index out of bounds"));
}

} // namespace
