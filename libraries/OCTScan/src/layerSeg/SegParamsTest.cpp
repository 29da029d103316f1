#include "SegParams.h"

#include <gtest/gtest.h>

namespace kelp::oct {
namespace {

const MaskMatrixPtr mask = MaskMatrixPtr::create(1U, 1U);

TEST(SegParams, InnerRecordsStartWithEverythingOffButTheHardRange)
{
    const InnerSegParams params;
    EXPECT_EQ(params.gridAScans, 512U);
    EXPECT_EQ(params.gridBScans, 49U);
    EXPECT_FALSE(params.gclShapeOn || params.inlShapeOn || params.onlShapeOn);
    EXPECT_FALSE(params.ilmGclDistOn || params.gclInlDistOn || params.inlOnlDistOn ||
                 params.onlIseDistOn);
    EXPECT_TRUE(params.interSurfRangeOn);
    EXPECT_EQ(params.interSurfRangeFactor, 2.7F);
    EXPECT_FALSE(params.searchRangeOn);
    EXPECT_EQ(params.searchRangeFactor, 0.0F);
}

TEST(SegParams, OuterRecordsStartWithTheirDistances)
{
    const OuterSegParams params;
    EXPECT_EQ(params.gridAScans, 512U);
    EXPECT_EQ(params.gridBScans, 49U);
    EXPECT_FALSE(params.iseShapeOn || params.bmShapeOn || params.irpeShapeOn);
    EXPECT_EQ(params.iseIrpeDistance, 5U);
    EXPECT_EQ(params.irpeBmDistance, 5U);
    EXPECT_TRUE(params.rangeFactorOn);
    EXPECT_EQ(params.rangeFactor, 2.7F);
    EXPECT_EQ(params.unused, -1000.0F);
}

TEST(SegParams, TheILMIsSmooth)
{
    const ILMSegParams params = ilmParams(mask);
    EXPECT_EQ(params.mask, mask);
    EXPECT_TRUE(params.shapeRegOn);
    EXPECT_EQ(params.shapeRegWeightX, 4000U);
    EXPECT_EQ(params.shapeRegWeightZ, 800U);
}

TEST(SegParams, HealthyOuterSurfacesAsTuned)
{
    const OuterSegParams params = healthyOuterParams(mask);
    EXPECT_EQ(params.mask, mask);
    EXPECT_TRUE(params.bmShapeOn && params.iseShapeOn && params.iseBmDistOn);
    EXPECT_EQ(params.bmShapeWeightX, 1260U);
    EXPECT_EQ(params.bmShapeWeightZ, 0U);
    EXPECT_EQ(params.iseShapeWeightX, 5000U);
    EXPECT_EQ(params.iseShapeWeightZ, 900U);
    EXPECT_EQ(params.iseBmDistWeight, 0.025F);
    EXPECT_TRUE(params.rangeFactorOn);
    EXPECT_EQ(params.rangeFactor, 2.7F);
    EXPECT_FALSE(params.irpeShapeOn || params.iseIrpeDistOn || params.irpeBmDistOn);
}

void expectInnerShapes(const InnerSegParams& params)
{
    EXPECT_TRUE(params.gclShapeOn && params.inlShapeOn && params.onlShapeOn);
    EXPECT_EQ(params.gclShapeWeightX, 9000U);
    EXPECT_EQ(params.gclShapeWeightZ, 430U);
    EXPECT_EQ(params.inlShapeWeightX, 9300U);
    EXPECT_EQ(params.inlShapeWeightZ, 400U);
    EXPECT_EQ(params.onlShapeWeightX, 8500U);
    EXPECT_EQ(params.onlShapeWeightZ, 580U);
    EXPECT_TRUE(params.ilmGclDistOn && params.gclInlDistOn && params.inlOnlDistOn &&
                params.onlIseDistOn);
    EXPECT_TRUE(params.searchRangeOn);
    EXPECT_EQ(params.searchRangeFactor, 2.7F);
    EXPECT_EQ(params.interSurfRangeFactor, 2.9F);
}

TEST(SegParams, HealthyInnerSurfacesAsTuned)
{
    const InnerSegParams params = healthyInnerParams(mask);
    EXPECT_EQ(params.mask, mask);
    expectInnerShapes(params);
    EXPECT_EQ(params.ilmGclDistWeight, 0.049F);
    EXPECT_EQ(params.gclInlDistWeight, 0.073F);
    EXPECT_EQ(params.inlOnlDistWeight, 0.049F);
    EXPECT_EQ(params.onlIseDistWeight, 0.026F);
    EXPECT_TRUE(params.interSurfRangeOn);
}

TEST(SegParams, ConstantInnerSurfacesTakeTheCallersWeights)
{
    InnerDistProps distances;
    distances.ilm2gclDistVarWeight = 0.1F;
    distances.gcl2inlDistVarWeight = 0.2F;
    distances.inl2onlDistVarWeight = 0.3F;
    distances.onl2isosDistVarWeight = 0.4F;
    const InnerSegParams params = constantInnerParams(mask, distances);
    EXPECT_EQ(params.mask, mask);
    expectInnerShapes(params);
    EXPECT_EQ(params.ilmGclDistWeight, 0.1F);
    EXPECT_EQ(params.gclInlDistWeight, 0.2F);
    EXPECT_EQ(params.inlOnlDistWeight, 0.3F);
    EXPECT_EQ(params.onlIseDistWeight, 0.4F);
    EXPECT_FALSE(params.interSurfRangeOn);
}

TEST(SegParams, BruchsMembraneAloneIsSmooth)
{
    const OuterSegParams params = bmParams(mask);
    EXPECT_EQ(params.mask, mask);
    EXPECT_TRUE(params.bmShapeOn);
    EXPECT_EQ(params.bmShapeWeightX, 4000U);
    EXPECT_EQ(params.bmShapeWeightZ, 800U);
    EXPECT_FALSE(params.iseShapeOn || params.irpeShapeOn || params.iseBmDistOn);
}

TEST(SegParams, DrusenSurfacesAsTuned)
{
    const OuterSegParams params = drusenParams(mask);
    EXPECT_EQ(params.mask, mask);
    EXPECT_TRUE(params.iseShapeOn && params.irpeShapeOn);
    EXPECT_EQ(params.iseShapeWeightX, 900U);
    EXPECT_EQ(params.iseShapeWeightZ, 0U);
    EXPECT_EQ(params.irpeShapeWeightX, 900U);
    EXPECT_EQ(params.irpeShapeWeightZ, 0U);
    EXPECT_TRUE(params.iseIrpeDistOn);
    EXPECT_EQ(params.iseIrpeDistWeight, 1.0F);
    EXPECT_EQ(params.iseIrpeDistance, 4U);
    EXPECT_FALSE(params.iseBmDistOn);
    EXPECT_EQ(params.iseBmDistWeight, 0.0F);
    EXPECT_TRUE(params.irpeBmDistOn);
    EXPECT_EQ(params.irpeBmDistWeight, 0.35F);
    EXPECT_EQ(params.irpeBmDistance, 11U);
}

TEST(SegParams, ConstantOuterSurfacesKeepTheirDistanceOnEvenWithAWeightOfZero)
{
    for (const float weight : {0.2F, 0.0F}) {
        const OuterSegParams params = constantOuterParams(mask, weight);
        EXPECT_EQ(params.mask, mask);
        EXPECT_TRUE(params.bmShapeOn && params.iseShapeOn);
        EXPECT_EQ(params.bmShapeWeightX, 5000U);
        EXPECT_EQ(params.bmShapeWeightZ, 900U);
        EXPECT_EQ(params.iseShapeWeightX, 5000U);
        EXPECT_EQ(params.iseShapeWeightZ, 900U);
        EXPECT_TRUE(params.iseBmDistOn);
        EXPECT_EQ(params.iseBmDistWeight, weight);
        EXPECT_FALSE(params.rangeFactorOn);
        EXPECT_EQ(params.rangeFactor, 2.7F);
    }
}

} // namespace
} // namespace kelp::oct
