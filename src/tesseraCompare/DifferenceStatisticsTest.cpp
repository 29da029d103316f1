#include "DifferenceStatistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using kelp::compare::DifferenceStatistics;
using kelp::compare::quantile;

namespace {

TEST(DifferenceStatistics, OfAHandfulAreWhatTheyAreByHand)
{
    const auto statistics = DifferenceStatistics::of({-2.0, 0.0, 1.0, 5.0});
    EXPECT_EQ(statistics.count, 4);
    EXPECT_DOUBLE_EQ(*statistics.mean, 1.0);
    EXPECT_DOUBLE_EQ(*statistics.meanAbsolute, 2.0);
    // (9 + 1 + 0 + 16) / 3
    EXPECT_DOUBLE_EQ(*statistics.standardDeviation, std::sqrt(26.0 / 3.0));
    EXPECT_DOUBLE_EQ(*statistics.median, 0.5);
    EXPECT_DOUBLE_EQ(*statistics.medianAbsolute, 1.5);
    // Place 0.95 * 3 = 2.85 between 2 and 5.
    EXPECT_DOUBLE_EQ(*statistics.percentile95, 2.0 + 0.85 * 3.0);
    EXPECT_DOUBLE_EQ(*statistics.meanAbsoluteAboutMean, (3.0 + 1.0 + 0.0 + 4.0) / 4.0);
    EXPECT_DOUBLE_EQ(*statistics.lowerLimit(), 1.0 - 1.96 * std::sqrt(26.0 / 3.0));
    EXPECT_DOUBLE_EQ(*statistics.upperLimit(), 1.0 + 1.96 * std::sqrt(26.0 / 3.0));
}

TEST(DifferenceStatistics, OfWholeNumbersFollowTheirClosedForms)
{
    // 1 to n: mean (n + 1) / 2, variance n (n + 1) / 12, absolute deviation n / 4 for even n.
    constexpr int n = 400;
    std::vector<double> values;
    for (int i = n; i >= 1; --i) {
        values.push_back(i);
    }
    const auto statistics = DifferenceStatistics::of(values);
    EXPECT_DOUBLE_EQ(*statistics.mean, (n + 1) / 2.0);
    EXPECT_DOUBLE_EQ(*statistics.meanAbsolute, (n + 1) / 2.0);
    EXPECT_NEAR(*statistics.standardDeviation, std::sqrt(n * (n + 1) / 12.0), 1e-9);
    EXPECT_DOUBLE_EQ(*statistics.median, (n + 1) / 2.0);
    EXPECT_DOUBLE_EQ(*statistics.percentile95, 1.0 + 0.95 * (n - 1));
    EXPECT_DOUBLE_EQ(*statistics.meanAbsoluteAboutMean, n / 4.0);
}

TEST(DifferenceStatistics, OfAConstantDistanceLeaveNothingAboutTheMean)
{
    const auto statistics = DifferenceStatistics::of(std::vector<double>(17, -3.5));
    EXPECT_DOUBLE_EQ(*statistics.mean, -3.5);
    EXPECT_DOUBLE_EQ(*statistics.meanAbsolute, 3.5);
    EXPECT_DOUBLE_EQ(*statistics.meanAbsoluteAboutMean, 0.0);
    EXPECT_DOUBLE_EQ(*statistics.standardDeviation, 0.0);
    EXPECT_DOUBLE_EQ(*statistics.percentile95, 3.5);
}

TEST(DifferenceStatistics, OfNothingAreEmptyAndOfOneHaveNoSpread)
{
    const auto none = DifferenceStatistics::of({});
    EXPECT_EQ(none.count, 0);
    EXPECT_FALSE(none.mean);
    EXPECT_FALSE(none.meanAbsolute);
    EXPECT_FALSE(none.median);
    EXPECT_FALSE(none.percentile95);
    EXPECT_FALSE(none.upperLimit());

    const auto one = DifferenceStatistics::of({-4.0});
    EXPECT_DOUBLE_EQ(*one.mean, -4.0);
    EXPECT_DOUBLE_EQ(*one.median, -4.0);
    EXPECT_DOUBLE_EQ(*one.percentile95, 4.0);
    EXPECT_FALSE(one.standardDeviation);
    EXPECT_FALSE(one.lowerLimit());
}

TEST(Quantile, IsThatOfTheSortedValues)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> number(-50, 50);
    for (int size = 1; size < 60; ++size) {
        std::vector<double> values(static_cast<std::size_t>(size));
        std::generate(values.begin(), values.end(), [&] { return number(random); });
        std::vector<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        for (const double part : {0.0, 0.25, 0.5, 0.95, 1.0}) {
            const double place = part * (size - 1);
            const auto below = static_cast<std::size_t>(std::floor(place));
            const auto above = static_cast<std::size_t>(std::ceil(place));
            const double expected =
                sorted[below] + (place - std::floor(place)) * (sorted[above] - sorted[below]);
            EXPECT_DOUBLE_EQ(*quantile(values, part), expected) << size << " " << part;
        }
    }
}

} // namespace
