#include "SegmentationQuality.h"
#include "TestPhantomChains.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <initializer_list>
#include <map>

namespace kelp::oct {
namespace {

using test::PhantomChains;
using test::smallPhantom;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

struct EveryPattern : PhantomChains, testing::WithParamInterface<phantom::Pattern>
{
    /// The last run has figures for every B-scan of every surface, and they raise no doubt.
    void expectGoodFigures(const QStringList& surfaces)
    {
        QStringList measured;
        for (const StepStatistics& step : statistics) {
            for (const SurfaceQuality& quality : step.surfaces) {
                measured.append(quality.surface);
                EXPECT_EQ(std::ssize(quality.bScans), segmentation->getOCT()->getBScanCount());
                for (const QualityCounts& counts : quality.bScans) {
                    const bool isCoarse = quality.surface.endsWith("oarse");
                    EXPECT_EQ(counts.aScans, isCoarse ? 12 : 192);
                }
            }
        }
        EXPECT_EQ(measured, surfaces);
        EXPECT_THAT(qualityWarnings(statistics), IsEmpty());
    }
    void expectBelow(std::initializer_list<const char*> identifiers, double rows)
    {
        std::map<std::string, double> found = errors();
        for (const char* identifier : identifiers) {
            ASSERT_EQ(found.count(identifier), 1U) << identifier;
            EXPECT_LT(found[identifier], rows) << identifier;
        }
    }
};

TEST_P(EveryPattern, TheNormalChainFindsTheSurfacesOfAHealthyEye)
{
    make(smallPhantom(GetParam(), phantom::Kind::Normal));
    // On a circular B-scan the RPE step holds a step of its own.
    const int successes = GetParam() == phantom::Pattern::Circle ? 3 : 1;
    EXPECT_THAT(run(SegmentationChain::Normal, successes), IsEmpty());
    expectBelow({"ILM", "ISe", "BM"}, 1.5);
    expectBelow({"GCL", "INL", "ONL"}, 3.0);
    expectGoodFigures({"ILMcoarse", "ISeCoarse", "ILM", "ISe", "BM", "GCL", "INL", "ONL"});
}

TEST_P(EveryPattern, TheDrusenChainFindsTheSurfacesOverDrusen)
{
    make(smallPhantom(GetParam(), phantom::Kind::Drusen));
    EXPECT_THAT(run(SegmentationChain::Drusen), IsEmpty());
    expectBelow({"ILM"}, 1.5);
    expectBelow({"BM"}, 2.0);
    expectBelow({"GCL", "INL", "ONL", "ISe", "IRPE"}, 3.0);
    expectGoodFigures({"ILMcoarse", "ISeCoarse", "ILM", "BM", "ISe", "IRPE", "GCL", "INL", "ONL"});
}

TEST_P(EveryPattern, TheMouseChainFindsTheSurfacesOfAMouse)
{
    make(smallPhantom(GetParam(), phantom::Kind::Mouse));
    EXPECT_THAT(run(SegmentationChain::Mouse), IsEmpty());
    expectBelow({"ILM", "ISe"}, 1.5);
    expectBelow({"GCL", "INL", "ONL"}, 3.0);
    expectGoodFigures({"ILMcoarse", "ISeCoarse", "ILM", "ISe", "BM", "GCL", "INL", "ONL"});
}

std::string patternName(const testing::TestParamInfo<phantom::Pattern>& pattern)
{
    const char* const names[] = {"Volume", "Section", "Circle"};
    return names[static_cast<int>(pattern.param)];
}

INSTANTIATE_TEST_SUITE_P(Phantom, EveryPattern,
                         testing::Values(phantom::Pattern::Volume, phantom::Pattern::Section,
                                         phantom::Pattern::Circle),
                         patternName);

TEST_F(PhantomChains, AStarFailsAtTheFirstStepWithItsText)
{
    make(smallPhantom(phantom::Pattern::Star, phantom::Kind::Normal));
    for (const SegmentationChain chain :
         {SegmentationChain::Normal, SegmentationChain::Drusen, SegmentationChain::Mouse}) {
        const std::vector<std::string> failures = run(chain, 0);
        ASSERT_EQ(failures.size(), 1U);
        EXPECT_THAT(failures.front(), StartsWith("Could not segment coarse layers.\n"));
        EXPECT_THAT(failures.front(),
                    EndsWith("SegInterface::segmentILMCoarse: trying to segment Star OCT scan "
                             "pattern, but only volumes and straight and circular BScans can be "
                             "segmented"));
        EXPECT_TRUE(segmentation->getAllLayerNames().isEmpty());
    }
}

constexpr std::uint8_t whiteOfTheDevice = 255;

TEST_F(PhantomChains, TheDevicesFillDrawsNoSurfaceToIt)
{
    phantom::Options options = smallPhantom(phantom::Pattern::Volume, phantom::Kind::Normal);
    options.aScans = 128;
    make(options);
    // White right below the retina, as in B-scans that were moved up: its edge is far stronger than
    // the retina's own.
    for (const unsigned bScan : {1U, 2U, 3U, 4U, 5U}) {
        const kelp::ImagePtr image = segmentation->getOCT()->getBScan(bScan)->getImage();
        auto* const pixels = image->pixels<std::uint8_t>();
        const int columns = image->getColumns();
        const int rows = image->getRows();
        for (int column = 0; column < columns; ++column) {
            const int below = phantom.surfaces.back().rows[bScan][column] + 20;
            for (int row = below; row < rows; ++row) {
                pixels[row * columns + column] = whiteOfTheDevice;
            }
        }
    }
    EXPECT_THAT(run(SegmentationChain::Normal), IsEmpty());
    std::map<std::string, double> found = errors();
    for (const char* identifier : {"ILM", "ISe", "BM"}) {
        EXPECT_LT(found.at(identifier), 1.5) << identifier;
    }
}

} // namespace
} // namespace kelp::oct
