#include "LayerDistribution.h"
#include "ExpectFailure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace kelp::oct;
using test::failure;
using Matrix = LayerDistribution::Matrix;

std::string inFunction(const std::string& function, const std::string& text)
{
    return "OCTScan/src/layerSeg/LayerDistribution::kelp::oct::LayerDistribution::" + function +
           ": " + text;
}

Matrix ramp(std::size_t rows, std::size_t columns, double first, double perRow, double perColumn)
{
    Matrix matrix(rows, std::vector<double>(columns));
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            matrix[row][column] =
                first + static_cast<double>(row) * perRow + static_cast<double>(column) * perColumn;
        }
    }
    return matrix;
}

/// 5 by 4 places, 0.1 mm (rows) by 0.2 mm (columns) apart, the fovea at row 2, column 1.
LayerDistribution rampDistribution()
{
    return {ramp(5, 4, 0.1, 0.01, 0.001),
            ramp(5, 4, 1e-4, 1e-5, 1e-6),
            {0.2, 0.1, 0.1},
            {2 * 0.1, 1 * 0.2},
            "ILM",
            "GCL"};
}

TEST(LayerDistribution, GivesTheFoveasPlaceAtTheOrigin)
{
    const LayerDistribution distribution = rampDistribution();
    EXPECT_EQ(distribution.getMean(0.0F, 0.0F), static_cast<float>(0.1 + 2 * 0.01 + 0.001));
    EXPECT_EQ(distribution.getVariance(0.0F, 0.0F), static_cast<float>(1e-4 + 2 * 1e-5 + 1e-6));
    EXPECT_EQ(distribution.getUpperLayerName(), "ILM");
    EXPECT_EQ(distribution.getLowerLayerName(), "GCL");
}

TEST(LayerDistribution, TakesTheNearestPlaceWithoutInterpolation)
{
    const LayerDistribution distribution = rampDistribution();
    const float here = distribution.getMean(0.0F, 0.0F);
    EXPECT_EQ(distribution.getMean(0.09F, 0.04F), here);
    EXPECT_EQ(distribution.getMean(-0.09F, -0.04F), here);
    EXPECT_NEAR(distribution.getMean(0.11F, 0.0F), here + 0.001F, 1e-7F);
    EXPECT_NEAR(distribution.getMean(0.0F, 0.06F), here + 0.01F, 1e-7F);
}

TEST(LayerDistribution, GivesTheNearestCornerFarOutside)
{
    const LayerDistribution distribution = rampDistribution();
    EXPECT_EQ(distribution.getMean(-99.0F, -99.0F), 0.1F);
    EXPECT_EQ(distribution.getMean(99.0F, 99.0F), static_cast<float>(0.1 + 0.04 + 0.003));
    EXPECT_EQ(distribution.getMean(1e30F, -1e30F), static_cast<float>(0.1 + 0.003));
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(distribution.getMean(nothing, nothing), 0.1F);
}

TEST(LayerDistribution, ChecksWhatItIsBuiltFrom)
{
    const auto fails = [](const Matrix& means, const Matrix& variances, const Vector3d& spacing) {
        return failure<kelp::Assertion>([&] {
            LayerDistribution(means, variances, spacing, {0.0, 0.0}, "ILM", "GCL");
        });
    };
    const auto text = [](const char* words) { return inFunction("LayerDistribution", words); };
    const Matrix one{{1.0}};
    EXPECT_EQ(fails(one, {}, {1, 1, 1}), text("Mismatch between mean and variance vectors."));
    EXPECT_EQ(fails({}, {}, {1, 1, 1}), text("Mean vector <= 0."));
    EXPECT_EQ(fails(one, one, {0, 0, 0}), text("X-Spacing <= 0."));
    EXPECT_EQ(fails(one, one, {1, 0, 0}), text("Y-Spacing <= 0."));
    EXPECT_EQ(fails(one, one, {1, 1, -1}), text("Z-Spacing <= 0."));
    EXPECT_EQ(fails({{}}, {{}}, {1, 1, 1}), text("Rows are empty or of different lengths."));
    EXPECT_EQ(fails(one, {{1.0, 2.0}}, {1, 1, 1}), text("Rows are empty or of different lengths."));
}

/// The formulas once more, from the public lookups.
struct Literal
{
    const double* spacing;
    const double* origin;
    float k;

    float x(unsigned column) const
    {
        const float product = static_cast<float>(column) * static_cast<float>(spacing[0]);
        return static_cast<float>(product - origin[1]);
    }
    float z(unsigned row) const
    {
        const float product = static_cast<float>(row) * static_cast<float>(spacing[2]);
        return static_cast<float>(product - origin[0]);
    }
    float mean(const LayerDistribution& d, unsigned row, unsigned column) const
    {
        return d.getMean(x(column), z(row)) / static_cast<float>(spacing[1]);
    }
    float deviation(const LayerDistribution& d, unsigned row, unsigned column) const
    {
        return sqrtf(d.getVariance(x(column), z(row))) * k / static_cast<float>(spacing[1]);
    }
};

TEST(LayerDistribution, GivesDistancesOfMeanLessAndPlusKDeviations)
{
    const LayerDistribution distribution = rampDistribution();
    const double spacing[3] = {0.03, 0.0039, 0.07};
    const double origin[2] = {0.2, 0.15};
    const Literal literal{spacing, origin, 1.5F};
    const VolumeLayerPtr least = distribution.getMinDistanceLayer(spacing, 12, 7, origin, 1.5F);
    const VolumeLayerPtr most = distribution.getMaxDistanceLayer(spacing, 12, 7, origin, 1.5F);
    ASSERT_EQ(least->rows, 7U);
    ASSERT_EQ(least->columns, 12U);
    ASSERT_EQ(most->rows, 7U);
    ASSERT_EQ(most->columns, 12U);
    for (unsigned z = 0; z < 7; ++z) {
        for (unsigned x = 0; x < 12; ++x) {
            const float m = literal.mean(distribution, z, x);
            const float s = literal.deviation(distribution, z, x);
            ASSERT_GT(m, s);
            EXPECT_EQ((*least)(z, x), static_cast<unsigned short>(m - s));
            EXPECT_EQ((*most)(z, x), static_cast<unsigned short>(s + m));
        }
    }
}

TEST(LayerDistribution, GivesNoLeastDistanceWhereTheSpreadReachesTheMean)
{
    const LayerDistribution distribution({{0.25}}, {{0.0625}}, {1.0, 1.0, 1.0}, {0.0, 0.0}, "a",
                                         "b");
    const double spacing[3] = {1.0, 0.0078125, 1.0};
    const double origin[2] = {0.0, 0.0};
    EXPECT_EQ((*distribution.getMinDistanceLayer(spacing, 1, 1, origin, 1.0F))(0, 0), 0);
    EXPECT_EQ((*distribution.getMinDistanceLayer(spacing, 1, 1, origin, 2.0F))(0, 0), 0);
    EXPECT_EQ((*distribution.getMinDistanceLayer(spacing, 1, 1, origin, 0.5F))(0, 0), 16);
    EXPECT_EQ((*distribution.getMaxDistanceLayer(spacing, 1, 1, origin, 1.0F))(0, 0), 64);
    EXPECT_EQ((*distribution.getMaxDistanceLayer(spacing, 1, 1, origin, -2.0F))(0, 0), 0);
}

VolumeLayerPtr randomLayer(std::mt19937& random, int from, int to)
{
    const VolumeLayerPtr layer(new VolumeLayer(7, 12));
    std::uniform_int_distribution<int> row(from, to);
    for (unsigned short& value : *layer) {
        value = static_cast<unsigned short>(row(random));
    }
    return layer;
}

TEST(SearchRangeByDistributions, SplitsTheSlackAsTheFormulasTell)
{
    std::mt19937 random(5);
    const LayerDistribution a = rampDistribution();
    const LayerDistribution b(ramp(5, 4, 0.15, -0.01, 0.002), ramp(5, 4, 3e-4, -1e-5, 1e-6),
                              {0.2, 0.1, 0.1}, {0.2, 0.2}, "GCL", "ISe");
    const double spacing[3] = {0.03, 0.0039, 0.07};
    const double origin[2] = {0.2, 0.15};
    for (const float k : {0.5F, 1.5F, 3.0F}) {
        const Literal literal{spacing, origin, k};
        const VolumeLayerPtr top = randomLayer(random, 0, 200);
        const VolumeLayerPtr bottom = randomLayer(random, 100, 300);
        const std::vector<int> oldTop(top->begin(), top->end());
        const std::vector<int> oldBottom(bottom->begin(), bottom->end());
        a.addSubtractRelativeSearchRange(top, bottom, b, spacing, origin, k);
        int moved = 0;
        for (unsigned z = 0; z < 7; ++z) {
            for (unsigned x = 0; x < 12; ++x) {
                const int t0 = oldTop[z * 12 + x];
                const int b0 = oldBottom[z * 12 + x];
                const float mA = literal.mean(a, z, x);
                const float mB = literal.mean(b, z, x);
                const float dA = literal.deviation(a, z, x);
                const float dB = literal.deviation(b, z, x);
                const float g = static_cast<float>(b0 - t0) - mA - mB;
                const float e = g * dA / (dB * dB + dA * dA) * dA;
                const float f = g / dB - e / dB;
                const float t = dA < dB ? dA : dB;
                const float add = floorf(mA + e - t);
                const float sub = floorf(f * dB + mB - t);
                const int expectedTop = add > 0 ? t0 + static_cast<int>(add) : t0;
                const int expectedBottom =
                    sub > 0 && b0 >= static_cast<int>(sub) ? b0 - static_cast<int>(sub) : b0;
                ASSERT_EQ((*top)(z, x), expectedTop);
                ASSERT_EQ((*bottom)(z, x), expectedBottom);
                moved += expectedTop != t0 || expectedBottom != b0 ? 1 : 0;
            }
        }
        EXPECT_GT(moved, 20);
    }
}

/// Mean of 10 rows, deviation of k rows.
LayerDistribution tenRows()
{
    return {{{10.0 / 128.0}}, {{1.0 / (128.0 * 128.0)}}, {1.0, 1.0, 1.0}, {0.0, 0.0}, "a", "b"};
}

std::pair<int, int> narrowed(int top, int bottom)
{
    const double spacing[3] = {1.0, 1.0 / 128.0, 1.0};
    const double origin[2] = {0.0, 0.0};
    const VolumeLayerPtr topLayer(new VolumeLayer(1, 1));
    const VolumeLayerPtr bottomLayer(new VolumeLayer(1, 1));
    topLayer->data[0] = static_cast<unsigned short>(top);
    bottomLayer->data[0] = static_cast<unsigned short>(bottom);
    tenRows().addSubtractRelativeSearchRange(topLayer, bottomLayer, tenRows(), spacing, origin,
                                             2.0F);
    return {topLayer->data[0], bottomLayer->data[0]};
}

TEST(SearchRangeByDistributions, MovesNothingWhenTheSlackIsNegativeEnough)
{
    // Slack 20: each end moves 10 + 10 - 2. No gap: slack -20, 10 - 10 - 2 is below zero.
    EXPECT_EQ(narrowed(100, 140), std::pair(118, 122));
    EXPECT_EQ(narrowed(100, 100), std::pair(100, 100));
    EXPECT_EQ(narrowed(100, 90), std::pair(100, 90));
}

TEST(SearchRangeByDistributions, NeverTakesAnEndBelowZero)
{
    // The rule could only do so where means are larger than the image: 40 rows of mean below.
    const LayerDistribution deep({{40.0 / 128.0}}, {{1.0 / (128.0 * 128.0)}}, {1.0, 1.0, 1.0},
                                 {0.0, 0.0}, "b", "c");
    const LayerDistribution shallow({{-60.0 / 128.0}}, {{1.0 / (128.0 * 128.0)}}, {1.0, 1.0, 1.0},
                                    {0.0, 0.0}, "a", "b");
    const double spacing[3] = {1.0, 1.0 / 128.0, 1.0};
    const double origin[2] = {0.0, 0.0};
    const VolumeLayerPtr top(new VolumeLayer(1, 1));
    const VolumeLayerPtr bottom(new VolumeLayer(1, 1));
    bottom->data[0] = 20;
    shallow.addSubtractRelativeSearchRange(top, bottom, deep, spacing, origin, 1.0F);
    EXPECT_EQ(bottom->data[0], 20);
    EXPECT_EQ(top->data[0], 0);
}

TEST(SearchRangeByDistributions, StaysWhereThereIsNoSpreadAtAll)
{
    const LayerDistribution certain({{0.1}}, {{0.0}}, {1.0, 1.0, 1.0}, {0.0, 0.0}, "a", "b");
    const double spacing[3] = {1.0, 0.01, 1.0};
    const double origin[2] = {0.0, 0.0};
    const VolumeLayerPtr top(new VolumeLayer(1, 1));
    const VolumeLayerPtr bottom(new VolumeLayer(1, 1));
    bottom->data[0] = 50;
    certain.addSubtractRelativeSearchRange(top, bottom, certain, spacing, origin, 1.0F);
    EXPECT_EQ(top->data[0], 0);
    EXPECT_EQ(bottom->data[0], 50);
}

TEST(SearchRangeByDistributions, ChecksItsArguments)
{
    const auto fails = [](const VolumeLayerPtr& top, const VolumeLayerPtr& bottom,
                          const std::vector<double>& spacing) {
        const double origin[2] = {0.0, 0.0};
        return failure<kelp::Assertion>([&] {
            tenRows().addSubtractRelativeSearchRange(top, bottom, tenRows(), spacing.data(), origin,
                                                     1.0F);
        });
    };
    const auto text = [](const char* words) {
        return inFunction("addSubtractRelativeSearchRange", words);
    };
    const auto sized = [](unsigned rows, unsigned columns) {
        return VolumeLayerPtr(new VolumeLayer(rows, columns));
    };
    const VolumeLayerPtr good = sized(2, 3);
    EXPECT_EQ(fails(nullptr, nullptr, {1, 1, 1}), text("Top layer is null."));
    EXPECT_EQ(fails(sized(2, 0), nullptr, {1, 1, 1}), text("Top layer has no columns."));
    EXPECT_EQ(fails(sized(0, 2), nullptr, {1, 1, 1}), text("Top layer has no rows."));
    EXPECT_EQ(fails(good, nullptr, {1, 1, 1}), text("Bottom layer is null."));
    EXPECT_EQ(fails(good, sized(2, 2), {1, 1, 1}),
              text("Mismatch between bottom and top layer columns."));
    EXPECT_EQ(fails(good, sized(3, 3), {1, 1, 1}),
              text("Mismatch between bottom and top layer rows."));
    EXPECT_EQ(fails(good, good, {0, 1, 1}), text("Layer X-spacing <= 0."));
    EXPECT_EQ(fails(good, good, {1, 0, 1}), text("Layer Y-spacing <= 0."));
    EXPECT_EQ(fails(good, good, {1, 1, 0}), text("Layer Z-spacing <= 0."));
}

} // namespace
