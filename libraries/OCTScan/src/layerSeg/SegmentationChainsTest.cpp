#include "SegmentationChains.h"

#include <gtest/gtest.h>

namespace kelp::oct {
namespace {

TEST(SegmentationChains, AreKnownByName)
{
    for (const SegmentationChain chain :
         {SegmentationChain::Normal, SegmentationChain::Drusen, SegmentationChain::Mouse}) {
        EXPECT_EQ(chainFromName(chainName(chain)), chain);
    }
    EXPECT_EQ(chainName(SegmentationChain::Normal), "normal");
    EXPECT_EQ(chainName(SegmentationChain::Drusen), "drusen");
    EXPECT_EQ(chainName(SegmentationChain::Mouse), "mouse");
    EXPECT_FALSE(chainFromName("Normal").has_value());
    EXPECT_FALSE(chainFromName("").has_value());
}

TEST(SegmentationChains, HoldTheirStepsInOrder)
{
    EXPECT_EQ(chainSteps(SegmentationChain::Normal),
              (QStringList{"segmentCoarse", "segmentILMFine", "segmentRPEHumanHealthy",
                           "segmentInnerHumanHealthy"}));
    EXPECT_EQ(chainSteps(SegmentationChain::Drusen),
              (QStringList{"segmentCoarse", "segmentILMFine", "segmentBMFine",
                           "segmentISeIRPEFineDrusen", "segmentInnerHumanHealthy"}));
    EXPECT_EQ(chainSteps(SegmentationChain::Mouse),
              (QStringList{"segmentCoarse", "segmentILMFine", "segmentPEFineConstant",
                           "segmentInnerFineConstant"}));
}

TEST(SegmentationChains, KnowTheMouseRetina)
{
    const OuterDistProps outer = mouseOuterDistances();
    EXPECT_EQ(outer.rpeThicknessMean, 78.0F);
    EXPECT_EQ(outer.rpeThicknessVarWeight, 0.2F);
    EXPECT_EQ(outer.ilm2isosDistMean, 117.0F);
    EXPECT_EQ(outer.ilm2isosDistVarWeight, 0.1F);

    const InnerDistProps inner = mouseInnerDistances();
    EXPECT_EQ(inner.ilm2gclDistMean, 19.5F);
    EXPECT_EQ(inner.gcl2inlDistMean, 50.7F);
    EXPECT_EQ(inner.inl2onlDistMean, 39.0F);
    EXPECT_EQ(inner.onl2isosDistMean, 85.8F);
    for (const float weight : {inner.ilm2gclDistVarWeight, inner.gcl2inlDistVarWeight,
                               inner.inl2onlDistVarWeight, inner.onl2isosDistVarWeight}) {
        EXPECT_EQ(weight, 0.03F);
    }
    EXPECT_EQ(inner.gcl2inlDistMin, 7.8F);
    EXPECT_EQ(inner.gcl2inlDistMax, 156.0F);
    EXPECT_EQ(inner.inl2onlDistMin, 7.8F);
    EXPECT_EQ(inner.inl2onlDistMax, 156.0F);
}

} // namespace
} // namespace kelp::oct
