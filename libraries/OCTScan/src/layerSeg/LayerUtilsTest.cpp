#include "LayerUtils.h"
#include "ExpectFailure.h"
#include "LayerName.h"
#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using namespace kelp::oct;
using test::failure;
using test::TraceCapture;

VolumeLayerPtr layer(unsigned rows, unsigned columns, const std::vector<int>& values)
{
    const VolumeLayerPtr result(new VolumeLayer(rows, columns));
    for (std::size_t i = 0; i < result->size(); ++i) {
        result->data[i] = static_cast<unsigned short>(values[values.size() == 1 ? 0 : i]);
    }
    return result;
}

std::vector<int> valuesOf(const VolumeLayerPtr& layer)
{
    return {layer->begin(), layer->end()};
}

MaskMatrixPtr noMask(unsigned rows, unsigned columns)
{
    return MaskMatrixPtr(new MaskMatrix(rows, columns));
}

std::string inFunction(const std::string& function, const std::string& text)
{
    return "OCTScan/src/layerSeg/LayerUtils::kelp::oct::LayerUtils::" + function + ": " + text;
}

const VolumeLayerPtr null;
const VolumeLayerPtr twoByThree = layer(2, 3, {5});
const VolumeLayerPtr twoByTwo = layer(2, 2, {5});
const VolumeLayerPtr threeByThree = layer(3, 3, {5});

TEST(AddConstantToLayer, StopsAtTheMaximumAndAtTheFloor)
{
    const VolumeLayerPtr moved = layer(1, 4, {10, 95, 0, 200});
    LayerUtils::addConstantToLayer(moved, 10, 100, layer(1, 4, {0}));
    EXPECT_EQ(valuesOf(moved), (std::vector<int>{20, 100, 10, 100}));
    const VolumeLayerPtr up = layer(1, 3, {10, 3, 50});
    LayerUtils::addConstantToLayer(up, -5, 100, layer(1, 3, {7, 0, 0}));
    EXPECT_EQ(valuesOf(up), (std::vector<int>{7, 0, 45}));
    const VolumeLayerPtr overMaximum = layer(1, 1, {10});
    LayerUtils::addConstantToLayer(overMaximum, 0, 8, layer(1, 1, {9}));
    EXPECT_EQ(valuesOf(overMaximum), (std::vector<int>{9})) << "the floor has the last word";
}

TEST(AddConstantToLayer, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& a, const VolumeLayerPtr& b) {
        return failure<kelp::Assertion>([&] { LayerUtils::addConstantToLayer(a, 1, 9, b); });
    };
    const auto text = [](const char* words) { return inFunction("addConstantToLayer", words); };
    EXPECT_EQ(fails(null, null), text("Layer is null."));
    EXPECT_EQ(fails(twoByThree, null), text("Minimum top layer is null."));
    EXPECT_EQ(fails(twoByThree, twoByTwo), text("Minimum top layer column size mismatch."));
    EXPECT_EQ(fails(twoByThree, threeByThree), text("Minimum top layer row size mismatch."));
}

TEST(GetSearchRangeLayers, StaysInTheImage)
{
    const VolumeLayerPtr top = layer(1, 3, {9});
    const VolumeLayerPtr bottom = layer(1, 3, {9});
    LayerUtils::getSearchRangeLayers(layer(1, 3, {5, 50, 95}), top, bottom, 12, 30, 100);
    EXPECT_EQ(valuesOf(top), (std::vector<int>{0, 38, 83}));
    EXPECT_EQ(valuesOf(bottom), (std::vector<int>{35, 80, 100}));
}

TEST(GetSearchRangeLayers, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& a, const VolumeLayerPtr& b,
                          const VolumeLayerPtr& c) {
        return failure<kelp::Assertion>(
            [&] { LayerUtils::getSearchRangeLayers(a, b, c, 1, 1, 9); });
    };
    const auto text = [](const std::string& words) {
        return inFunction("getSearchRangeLayers", words);
    };
    const std::string mismatch = "Mismatch between middle and target ";
    EXPECT_EQ(fails(null, null, null), text("Middle layer is null."));
    EXPECT_EQ(fails(twoByThree, null, null), text("Target top layer is null."));
    EXPECT_EQ(fails(twoByThree, twoByThree, null), text("Target bottom layer is null."));
    EXPECT_EQ(fails(twoByThree, twoByTwo, twoByTwo), text(mismatch + "top layer columns."));
    EXPECT_EQ(fails(twoByThree, threeByThree, twoByTwo), text(mismatch + "top layer rows."));
    EXPECT_EQ(fails(twoByThree, twoByThree, twoByTwo), text(mismatch + "bottom layer columns."));
    EXPECT_EQ(fails(twoByThree, twoByThree, threeByThree), text(mismatch + "bottom layer rows."));
}

TEST(FixMinDistance, SpreadsNarrowRangesAroundTheirCentre)
{
    // Too narrow; at the top; wide enough; exactly at the distance; inverted; masked.
    const VolumeLayerPtr top = layer(1, 6, {10, 3, 2, 10, 20, 10});
    const VolumeLayerPtr bottom = layer(1, 6, {12, 4, 30, 18, 11, 12});
    const MaskMatrixPtr mask = noMask(1, 6);
    mask->data[5] = 1;
    LayerUtils::fixMinDistanceTopToBottom(top, bottom, 8, mask);
    EXPECT_EQ(valuesOf(top), (std::vector<int>{7, 0, 2, 10, 11, 10}));
    EXPECT_EQ(valuesOf(bottom), (std::vector<int>{15, 7, 30, 18, 19, 12}));
}

TEST(FixMinDistance, RewritesARangeOfTheDistanceItselfWhenThatIsOdd)
{
    const VolumeLayerPtr top = layer(1, 1, {10});
    const VolumeLayerPtr bottom = layer(1, 1, {15});
    LayerUtils::fixMinDistanceTopToBottom(top, bottom, 5, noMask(1, 1));
    EXPECT_EQ(valuesOf(top), (std::vector<int>{10}));
    EXPECT_EQ(valuesOf(bottom), (std::vector<int>{14}));
}

TEST(FixMinDistance, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& a, const VolumeLayerPtr& b,
                          const MaskMatrixPtr& mask) {
        return failure<kelp::Assertion>(
            [&] { LayerUtils::fixMinDistanceTopToBottom(a, b, 8, mask); });
    };
    const auto text = [](const char* words) {
        return inFunction("fixMinDistanceTopToBottom", words);
    };
    const VolumeLayerPtr noColumns = layer(2, 0, {0});
    const VolumeLayerPtr noRows = layer(0, 3, {0});
    EXPECT_EQ(fails(null, null, nullptr), text("Null top layer"));
    EXPECT_EQ(fails(twoByThree, null, nullptr), text("Null bottom layer"));
    EXPECT_EQ(fails(twoByThree, twoByThree, nullptr), text("Null mask"));
    EXPECT_EQ(fails(noColumns, twoByThree, noMask(2, 3)), text("Top layer has no columns"));
    EXPECT_EQ(fails(noRows, twoByThree, noMask(2, 3)), text("Top layer has no rows"));
    EXPECT_EQ(fails(twoByThree, twoByTwo, noMask(2, 3)), text("Column mismatch between layers"));
    EXPECT_EQ(fails(twoByThree, threeByThree, noMask(2, 3)), text("Row mismatch between layers"));
    EXPECT_EQ(fails(twoByThree, twoByThree, noMask(3, 3)), text("Mask row mismatch"));
    EXPECT_EQ(fails(twoByThree, twoByThree, noMask(2, 2)), text("Mask columns mismatch"));
}

TEST(EnsureTwoRows, WidensUpwardsAndAtTheTopDownwards)
{
    const VolumeLayerPtr top = layer(1, 6, {10, 10, 12, 0, 1, 10});
    const VolumeLayerPtr bottom = layer(1, 6, {12, 11, 10, 0, 1, 10});
    const MaskMatrixPtr mask = noMask(1, 6);
    mask->data[5] = 1;
    LayerUtils::ensureTwoRows(top, bottom, mask);
    EXPECT_EQ(valuesOf(top), (std::vector<int>{10, 9, 8, 0, 0, 10}));
    EXPECT_EQ(valuesOf(bottom), (std::vector<int>{12, 11, 10, 2, 2, 10}));
}

TEST(SubtractLayers, IsTheSameForSwappedArguments)
{
    const VolumeLayerPtr a = layer(1, 3, {10, 20, 65535});
    const VolumeLayerPtr b = layer(1, 3, {15, 5, 0});
    EXPECT_EQ(valuesOf(LayerUtils::subtractLayers(a, b)), (std::vector<int>{5, 15, 65535}));
    EXPECT_EQ(valuesOf(LayerUtils::subtractLayers(b, a)), (std::vector<int>{5, 15, 65535}));
}

TEST(SubtractLayers, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& a, const VolumeLayerPtr& b) {
        return failure<kelp::Assertion>([&] { LayerUtils::subtractLayers(a, b); });
    };
    const auto text = [](const char* words) { return inFunction("subtractLayers", words); };
    const char* mismatch = "Mismatch between row sizes of top and bottom layer.";
    EXPECT_EQ(fails(null, null), text("Top layer is null."));
    EXPECT_EQ(fails(twoByThree, null), text("Bottom layer is null."));
    EXPECT_EQ(fails(twoByThree, threeByThree), text(mismatch));
    EXPECT_EQ(fails(twoByThree, twoByTwo), text(mismatch));
}

TEST(SampleBilinear, TruncatesWithinRowsButNotBetweenThem)
{
    const VolumeLayerPtr matrix = layer(2, 2, {10, 13, 20, 21});
    EXPECT_EQ(LayerUtils::sampleBilinear(*matrix, 0.0F, 0.5F), 11.0F);
    EXPECT_EQ(LayerUtils::sampleBilinear(*matrix, 1.0F, 0.5F), 20.0F);
    EXPECT_EQ(LayerUtils::sampleBilinear(*matrix, 0.5F, 0.5F), 15.5F);
    EXPECT_EQ(LayerUtils::sampleBilinear(*matrix, -3.0F, 9.0F), 13.0F);
    EXPECT_EQ(LayerUtils::sampleBilinear(*matrix, 9.0F, -1.0F), 20.0F);
}

TEST(CreateIsometric, GivesTheSourceItselfForEqualSpacing)
{
    const double spacing[2] = {0.1, 0.1};
    double out = 7.0;
    EXPECT_EQ(LayerUtils::createIsometric(twoByThree, spacing, &out), twoByThree);
    EXPECT_EQ(out, 7.0);
}

TEST(CreateIsometric, BringsTheCoarserAxisToTheFinerSpacing)
{
    double out = 0.0;
    const double coarseZ[2] = {0.01, 0.025};
    const VolumeLayerPtr moreRows =
        LayerUtils::createIsometric(layer(2, 2, {10, 100, 20, 200}), coarseZ, &out);
    EXPECT_EQ(out, 0.01);
    EXPECT_EQ(moreRows->rows, 5U);
    EXPECT_EQ(valuesOf(moreRows), (std::vector<int>{10, 100, 13, 125, 15, 150, 18, 175, 20, 200}));
    const double coarseX[2] = {0.025, 0.01};
    const VolumeLayerPtr moreColumns =
        LayerUtils::createIsometric(layer(2, 2, {10, 20, 100, 200}), coarseX, &out);
    EXPECT_EQ(out, 0.01);
    EXPECT_EQ(moreColumns->columns, 5U);
    // Along the columns the truncation comes before the rounding.
    EXPECT_EQ(valuesOf(moreColumns),
              (std::vector<int>{10, 12, 15, 17, 20, 100, 125, 150, 175, 200}));
}

TEST(CreateIsometric, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& source, double x, double z) {
        const double spacing[2] = {x, z};
        double out = 0.0;
        return failure<kelp::Assertion>(
            [&] { LayerUtils::createIsometric(source, spacing, &out); });
    };
    const auto text = [](const char* words) { return inFunction("createIsometric", words); };
    EXPECT_EQ(fails(null, 0.0, 0.0), text("Source layer is null."));
    EXPECT_EQ(fails(twoByThree, 0.0, 0.0), text("Source in-plane-spacing <= 0."));
    EXPECT_EQ(fails(twoByThree, 0.1, -1.0), text("Source axial resolution <= 0."));
    EXPECT_EQ(fails(layer(1, 1, {0}), 0.1, 0.2), text("Nr of source colums <= 1."));
    EXPECT_EQ(fails(layer(1, 2, {0}), 0.1, 0.2), text("Nr of source rows <= 1."));
    EXPECT_EQ(fails(twoByThree, std::nan(""), 0.2), text("Tried to resample unknown axis."));
}

TEST(CreateIsometric, RefusesSpacingsThatWouldTakeAllMemory)
{
    const double spacing[2] = {1e-12, 1.0};
    double out = 0.0;
    EXPECT_EQ(
        failure<kelp::Exception>([&] { LayerUtils::createIsometric(twoByThree, spacing, &out); }),
        "LayerUtils::createIsometric: the spacings differ too much");
}

TEST(ResampleLayer, GivesTheSourceOnItsOwnGrid)
{
    std::mt19937 random(3);
    const VolumeLayerPtr source(new VolumeLayer(7, 11));
    for (unsigned short& value : *source) {
        value = static_cast<unsigned short>(random() % 500);
    }
    const VolumeLayerPtr target(new VolumeLayer(7, 11));
    const double spacing[3] = {0.0117, 0.00387, 0.12};
    LayerUtils::resampleLayer(source, spacing, target, spacing[1]);
    EXPECT_EQ(valuesOf(target), valuesOf(source));
}

TEST(ResampleLayer, ChangesGridAndAxialUnitAtOnce)
{
    const VolumeLayerPtr target(new VolumeLayer(2, 4));
    const double spacing[3] = {0.5, 2.0, 1.0};
    LayerUtils::resampleLayer(layer(2, 2, {10, 20, 30, 40}), spacing, target, 1.0);
    EXPECT_EQ(valuesOf(target), (std::vector<int>{20, 30, 40, 40, 60, 70, 80, 80}));
    // Half a row goes away from zero.
    const VolumeLayerPtr half(new VolumeLayer(1, 1));
    LayerUtils::resampleLayer(layer(1, 1, {5}), spacing, half, 4.0);
    EXPECT_EQ(valuesOf(half), (std::vector<int>{3}));
    const VolumeLayerPtr coarse(new VolumeLayer(1, 2));
    LayerUtils::resampleLayer(layer(2, 4, {1, 2, 3, 4, 5, 6, 7, 8}), spacing, coarse, 2.0);
    EXPECT_EQ(valuesOf(coarse), (std::vector<int>{1, 3}));
}

TEST(ResampleLayer, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& source, std::vector<double> spacing,
                          const VolumeLayerPtr& target) {
        return failure<kelp::Assertion>(
            [&] { LayerUtils::resampleLayer(source, spacing.data(), target, 1.0); });
    };
    const auto text = [](const char* words) { return inFunction("resampleLayer", words); };
    const VolumeLayerPtr& good = twoByThree;
    EXPECT_EQ(fails(null, {1, 1, 1}, null), text("source layer is null."));
    EXPECT_EQ(fails(good, {1, 1, 1}, null), text("target layer is null."));
    EXPECT_EQ(fails(good, {0, 1, 1}, good), text("Source in-plane spacing is zero."));
    EXPECT_EQ(fails(good, {1, -1, 1}, good), text("Source axial resolution is zero."));
    EXPECT_EQ(fails(good, {1, 1, 0}, good), text("Source out-of-plane spacing is zero."));
    EXPECT_EQ(fails(good, {1, 1, 1}, layer(0, 3, {0})), text("target layer has no rows."));
    EXPECT_EQ(fails(good, {1, 1, 1}, layer(3, 0, {0})), text("target layer has no columns."));
}

TEST(InnerSearchRangesConstant, CutsTheTypicalThicknessesInHalf)
{
    std::vector<VolumeLayerPtr> out(6);
    std::generate(out.begin(), out.end(), [] { return layer(1, 2, {0}); });
    // Thicknesses of 10, 20, 30 and 40 rows, once in a gap of 100 rows and once in one of 52.
    LayerUtils::getInnerSearchRangesConstant(layer(1, 2, {100}), layer(1, 2, {200, 152}), out[0],
                                             out[1], out[2], out[3], out[4], out[5], 40, 80, 120,
                                             160, 0.004F, 0.5F, noMask(1, 2));
    EXPECT_EQ(valuesOf(out[0]), (std::vector<int>{105, 103}));
    EXPECT_EQ(valuesOf(out[1]), (std::vector<int>{115, 108}));
    EXPECT_EQ(valuesOf(out[2]), (std::vector<int>{130, 116}));
    EXPECT_EQ(valuesOf(out[3]), (std::vector<int>{155, 129}));
    EXPECT_EQ(valuesOf(out[4]), (std::vector<int>{165, 134}));
    EXPECT_EQ(valuesOf(out[5]), (std::vector<int>{180, 142}));
}

TEST(InnerSearchRangesConstant, KeepsEightRowsWhereTheGapIsNarrow)
{
    std::vector<VolumeLayerPtr> out(6);
    std::generate(out.begin(), out.end(), [] { return layer(1, 1, {0}); });
    LayerUtils::getInnerSearchRangesConstant(layer(1, 1, {100}), layer(1, 1, {104}), out[0], out[1],
                                             out[2], out[3], out[4], out[5], 40, 80, 120, 160,
                                             0.004F, 0.5F, noMask(1, 1));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(valuesOf(out[i + 3])[0] - valuesOf(out[i])[0], 8);
    }
}

/// Powers of two, so that the expectations are exact.
constexpr double rowHeight = 1.0 / 256.0;
constexpr double deviation = 2.5 * rowHeight;

LayerDistributionPtr distribution(const QString& upper, const QString& lower, double mean)
{
    return LayerDistributionPtr(new LayerDistribution({{mean}}, {{deviation * deviation}},
                                                      {1.0, 1.0, 1.0}, {0.0, 0.0}, upper, lower));
}

TEST(LayerDistributionBetween, FindsAPairInItsOrderOnly)
{
    const QList<LayerDistributionPtr> list{distribution("ILM", "GCL", 0.05),
                                           distribution("ISe", "BM", 0.06),
                                           distribution("ISe", "BM", 0.07)};
    TraceCapture trace;
    EXPECT_EQ(LayerUtils::getLayerDistributionBetween(list, "ISe", "BM"), list[1]);
    EXPECT_EQ(failure<kelp::Exception>(
                  [&] { LayerUtils::getLayerDistributionBetween(list, "BM", "ISe"); }),
              "LayerUtils::getLayerDistributionBetween: the layer between BM and ISe does not "
              "exist");
    EXPECT_EQ(trace.lines(),
              (QStringList{"upperLayerName: ISe", "lowerLayerName: BM", "upperLayerName: BM",
                           "lowerLayerName: ISe", "layer distribution not found!"}));
}

TEST(InnerSearchRangesDistribution, NarrowsEachSurfaceByItsTwoPairs)
{
    TraceCapture trace;
    QList<LayerDistributionPtr> list;
    for (const char* name : {"GCL", "INL", "ONL"}) {
        list << distribution("ILM", name, 25.0 * rowHeight)
             << distribution(name, "ISe", 50.0 * rowHeight);
    }
    const double spacing[3] = {0.01, rowHeight, 0.1};
    const double origin[2] = {0.0, 0.0};
    std::vector<VolumeLayerPtr> tops;
    std::vector<VolumeLayerPtr> bottoms;
    for (int i = 0; i < 3; ++i) {
        tops.push_back(layer(1, 1, {100}));
        bottoms.push_back(layer(1, 1, {200}));
    }
    LayerUtils::getInnerSearchRangesDistribution(list, tops[0], tops[1], tops[2], bottoms[0],
                                                 bottoms[1], bottoms[2], spacing, origin, 4.0F,
                                                 noMask(1, 1));
    // 25 and 50 rows of mean, four times 2.5 of deviation each: the slack of 25 is halved.
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(valuesOf(tops[static_cast<std::size_t>(i)]), (std::vector<int>{127}));
        EXPECT_EQ(valuesOf(bottoms[static_cast<std::size_t>(i)]), (std::vector<int>{148}));
    }
}

/// Red is the thickness over 100, green its square, blue constant.
class TestColours : public kelp::ColorTransferFunction
{
public:
    Channel getChannel(int channel) const override
    {
        return [channel](double value) {
            const double part = value / 100.0;
            return channel == 0 ? part : (channel == 1 ? part * part : 1.0);
        };
    }
    std::pair<double, double> getInputRange() const override { return {0.0, 100.0}; }
};

TEST(RenderThicknessImage, AsksTheColoursForRowsAndHidesWhatIsMasked)
{
    const TraceCapture trace;
    const MaskMatrixPtr mask = noMask(2, 1);
    mask->data[1] = 1;
    const kelp::ImagePtr image = LayerUtils::RenderThicknessImage(
        layer(2, 1, {10, 20}), layer(2, 1, {60, 40}), TestColours(), mask, 0.5);
    EXPECT_EQ(image->getPixelTypeId(), 8);
    EXPECT_EQ(image->getWidth(), 1);
    EXPECT_EQ(image->getHeight(), 2);
    const auto* pixels = image->pixels<unsigned char>();
    EXPECT_EQ(std::vector<int>(pixels, pixels + 8),
              (std::vector<int>{127, 63, 255, 127, 51, 10, 255, 0}));
    EXPECT_EQ(trace.lines().size(), 1);
    EXPECT_TRUE(trace.lines()[0].contains("LayerUtils::RenderThicknessImage"));
}

TEST(RenderThicknessImage, ChecksItsArguments)
{
    const TraceCapture trace;
    const auto fails = [](const VolumeLayerPtr& a, const VolumeLayerPtr& b,
                          const MaskMatrixPtr& mask) {
        return failure<kelp::Assertion>(
            [&] { LayerUtils::RenderThicknessImage(a, b, TestColours(), mask, 1.0); });
    };
    const auto text = [](const char* words) { return inFunction("RenderThicknessImage", words); };
    EXPECT_EQ(fails(null, null, nullptr), text("Mask is null."));
    EXPECT_EQ(fails(null, null, noMask(2, 3)), text("Top layer is null."));
    EXPECT_EQ(fails(twoByThree, null, noMask(2, 3)), text("Bottom layer is null."));
    EXPECT_EQ(fails(twoByThree, threeByThree, noMask(2, 3)),
              text("Mismatch between row sizes of top and bottom layer."));
    EXPECT_EQ(fails(twoByThree, twoByThree, noMask(2, 2)),
              text("Mismatch between columns of mask and top layer."));
    EXPECT_EQ(fails(twoByThree, twoByThree, noMask(3, 3)),
              text("Mismatch between rows of mask and top layer."));
}

} // namespace
