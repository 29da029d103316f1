#include "CostFunctionInner.h"
#include "CutPlans.h"

#include <gmock/gmock.h>

namespace kelp::oct {
namespace {

using testing::Each;

const CutSize size(6, 300, 2);

std::vector<int> elements(const VolumeLayerPtr& layer)
{
    return {layer->begin(), layer->end()};
}

struct InnerPlan : testing::Test
{
    InnerNames names{LayerNameGCL::create(), LayerNameINL::create(), LayerNameONL::create()};
    VolumeLayerPtr ilm = constantLayer(size, 50);
    VolumeLayerPtr ise = constantLayer(size, 150);
    InnerRanges ranges{ilm, ise};
    InnerDistances distances{constantLayer(size, 1), constantLayer(size, 40),
                             constantLayer(size, 2), constantLayer(size, 50)};
    MaskMatrixPtr mask = MaskMatrixPtr::create(2U, 6U);
};

TEST_F(InnerPlan, SeeksEachSurfaceBetweenILMAndISeUnlessNarrowed)
{
    for (const VolumeLayerPtr& top : {ranges.gclTop, ranges.inlTop, ranges.onlTop}) {
        EXPECT_THAT(elements(top), Each(50));
        EXPECT_NE(top, ilm);
    }
    for (const VolumeLayerPtr& bottom : {ranges.gclBottom, ranges.inlBottom, ranges.onlBottom}) {
        EXPECT_THAT(elements(bottom), Each(150));
        EXPECT_NE(bottom, ise);
    }
    EXPECT_NE(ranges.gclTop, ranges.inlTop);
    EXPECT_NE(ranges.inlTop, ranges.onlTop);
}

TEST_F(InnerPlan, HoldsThreeShapedSurfacesWithHardDistances)
{
    const CutPlan plan = planInner(names, size, ranges, distances, 2, healthyInnerParams(mask));
    const SliceStackProperties& properties = plan.properties;
    EXPECT_EQ(plan.edgeFactor, 8.0);
    EXPECT_EQ(properties.getLayerNames(), (QList<LayerNamePtr>{names.gcl, names.inl, names.onl}));
    EXPECT_TRUE(properties.getCostFunction(names.gcl).dynamicCast<CostFunctionGCL>());
    EXPECT_TRUE(properties.getCostFunction(names.inl).dynamicCast<CostFunctionINL>());
    EXPECT_TRUE(properties.getCostFunction(names.onl).dynamicCast<CostFunctionONL>());
    EXPECT_EQ(properties.getSearchRangeTop(names.gcl), ranges.gclTop);
    EXPECT_EQ(properties.getSearchRangeBottom(names.gcl), ranges.gclBottom);
    EXPECT_EQ(properties.getSearchRangeTop(names.inl), ranges.inlTop);
    EXPECT_EQ(properties.getSearchRangeBottom(names.inl), ranges.inlBottom);
    EXPECT_EQ(properties.getSearchRangeTop(names.onl), ranges.onlTop);
    EXPECT_EQ(properties.getSearchRangeBottom(names.onl), ranges.onlBottom);
    EXPECT_EQ(properties.getInterSurfDistanceMin(names.gcl, names.inl), distances.gclInlMinimum);
    EXPECT_EQ(properties.getInterSurfDistanceMax(names.gcl, names.inl), distances.gclInlMaximum);
    EXPECT_EQ(properties.getInterSurfDistanceMin(names.inl, names.onl), distances.inlOnlMinimum);
    EXPECT_EQ(properties.getInterSurfDistanceMax(names.inl, names.onl), distances.inlOnlMaximum);
}

TEST_F(InnerPlan, ShapesAreTiedOverTheGivenStepOfBScans)
{
    for (const unsigned step : {1U, 2U}) {
        const CutPlan plan =
            planInner(names, size, ranges, distances, step, healthyInnerParams(mask));
        const auto expectShape = [&](const LayerNamePtr& name, double weightZ, double weightX) {
            EXPECT_EQ(plan.properties.getShapeRegWeightZ(name), weightZ);
            EXPECT_EQ(plan.properties.getShapeRegWeightX(name), weightX);
            EXPECT_EQ(plan.properties.getShapeRegStepZ(name), step);
            EXPECT_EQ(plan.properties.getShapeRegStepX(name), 1U);
        };
        expectShape(names.gcl, 430.0, 9000.0);
        expectShape(names.inl, 400.0, 9300.0);
        expectShape(names.onl, 580.0, 8500.0);
    }
}

TEST_F(InnerPlan, WidensRangesOfSurfacesThatTouch)
{
    const InnerRanges touching(ilm, ilm);
    const CutPlan plan = planInner(names, size, touching, distances, 1, healthyInnerParams(mask));
    EXPECT_THAT(elements(plan.properties.getSearchRangeTop(names.inl)), Each(48));
    EXPECT_THAT(elements(plan.properties.getSearchRangeBottom(names.inl)), Each(50));
}

TEST_F(InnerPlan, TrainedDistancesAreOneSidedAtBothEnds)
{
    const auto pair = [](const char* upper, const char* lower) {
        return LayerDistributionPtr::create(
            LayerDistribution::Matrix{{0.05}}, LayerDistribution::Matrix{{0.01}},
            Vector3d{0.03, 1.0, 0.04}, std::array<double, 2>{}, upper, lower);
    };
    const InnerDistributions pairs{pair("ILM", "GCL"), pair("GCL", "INL"), pair("INL", "ONL"),
                                   pair("ONL", "ISe")};
    const QList<SoftDistance> terms =
        trainedInnerDistances(names, ilm, ranges, pairs, healthyInnerParams(mask));
    ASSERT_EQ(terms.size(), 4);
    EXPECT_EQ(terms[0].top->getIdentifier(), "ILM");
    EXPECT_EQ(terms[0].bottom, names.gcl);
    EXPECT_EQ(terms[0].offsets, ilm);
    EXPECT_EQ(terms[0].distribution, pairs.ilmGcl);
    EXPECT_EQ(terms[0].weight, 0.049F);
    EXPECT_EQ(terms[1].top, names.gcl);
    EXPECT_EQ(terms[1].bottom, names.inl);
    EXPECT_EQ(terms[1].offsets, ranges.gclTop);
    EXPECT_EQ(terms[1].distribution, pairs.gclInl);
    EXPECT_EQ(terms[1].weight, 0.073F);
    EXPECT_EQ(terms[2].top, names.inl);
    EXPECT_EQ(terms[2].bottom, names.onl);
    EXPECT_EQ(terms[2].offsets, ranges.inlTop);
    EXPECT_EQ(terms[2].distribution, pairs.inlOnl);
    EXPECT_EQ(terms[2].weight, 0.049F);
    EXPECT_EQ(terms[3].top, names.onl);
    EXPECT_EQ(terms[3].bottom->getIdentifier(), "ISe");
    EXPECT_EQ(terms[3].offsets, ranges.onlTop);
    EXPECT_EQ(terms[3].distribution, pairs.onlIse);
    EXPECT_EQ(terms[3].weight, 0.026F);
}

TEST_F(InnerPlan, SwitchesLeaveSoftDistancesOut)
{
    InnerSegParams params = healthyInnerParams(mask);
    params.ilmGclDistOn = false;
    params.inlOnlDistOn = false;
    const QList<SoftDistance> terms = trainedInnerDistances(names, ilm, ranges, {}, params);
    ASSERT_EQ(terms.size(), 2);
    EXPECT_EQ(terms[0].top, names.gcl);
    EXPECT_EQ(terms[1].top, names.onl);
}

TEST_F(InnerPlan, ConstantDistancesStayInMicrometres)
{
    InnerThicknesses thicknesses;
    thicknesses.ilm2gclDistMean = 19.5F;
    thicknesses.gcl2inlDistMean = 50.7F;
    thicknesses.inl2onlDistMean = 39.0F;
    thicknesses.onl2isosDistMean = 85.8F;
    InnerDistProps weights;
    weights.ilm2gclDistVarWeight = 0.01F;
    weights.gcl2inlDistVarWeight = 0.02F;
    weights.inl2onlDistVarWeight = 0.03F;
    weights.onl2isosDistVarWeight = 0.04F;
    const QList<SoftDistance> terms =
        constantInnerDistances(names, ilm, ranges, thicknesses, constantInnerParams(mask, weights));
    ASSERT_EQ(terms.size(), 4);
    const unsigned rows[] = {19, 50, 39, 85};
    const float expectedWeights[] = {0.01F, 0.02F, 0.03F, 0.04F};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(terms[i].rows, rows[i]);
        EXPECT_EQ(terms[i].weight, expectedWeights[i]);
        EXPECT_TRUE(terms[i].distribution.isNull());
    }
}

TEST_F(InnerPlan, ConstantHardDistancesAreRowsTruncated)
{
    InnerThicknesses thicknesses;
    thicknesses.gcl2inlDistMin = 7.8F;
    thicknesses.gcl2inlDistMax = 156.0F;
    thicknesses.inl2onlDistMin = 3.8F; // less than a row
    thicknesses.inl2onlDistMax = 30.0F;
    const InnerDistances hard = constantHardDistances(thicknesses, 0.0039F, size);
    // In float, as the cut takes them.
    EXPECT_THAT(elements(hard.gclInlMinimum), Each(static_cast<int>(7.8F / (0.0039F * 1000.0F))));
    EXPECT_THAT(elements(hard.gclInlMaximum), Each(static_cast<int>(156.0F / (0.0039F * 1000.0F))));
    EXPECT_THAT(elements(hard.inlOnlMinimum), Each(0));
    EXPECT_THAT(elements(hard.inlOnlMaximum), Each(7));
}

} // namespace
} // namespace kelp::oct
