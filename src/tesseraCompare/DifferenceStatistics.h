#pragma once

#include "Tally.h"

#include <optional>
#include <vector>

namespace kelp::compare {

/// What differences amount to, in their own unit. Empty where there are too few of them.
struct DifferenceStatistics
{
    /// Half-width of the limits of agreement in standard deviations: 95 % of a normal distribution.
    static constexpr double limitFactor = 1.96;

    int count = 0;
    std::optional<double> mean;
    std::optional<double> meanAbsolute;
    /// With count - 1 below the fraction; empty for fewer than two differences.
    std::optional<double> standardDeviation;
    std::optional<double> median;         ///< of the signed differences
    std::optional<double> medianAbsolute; ///< of the absolute differences
    std::optional<double> percentile95;   ///< of the absolute differences
    /// The mean absolute difference once the mean is taken off every difference: what is left
    /// between two conventions of one surface that are a constant apart.
    std::optional<double> meanAbsoluteAboutMean;

    std::optional<double> lowerLimit() const;
    std::optional<double> upperLimit() const;

    static DifferenceStatistics ofTally(const Tally<double>& differences);
    static DifferenceStatistics of(const std::vector<double>& differences);
};

/// The value below which this part of the values lies, from 0 to 1, interpolated between the two
/// neighbours of the place part * (count - 1) in their order, which is counted from 0. Empty
/// without values.
std::optional<double> quantile(const std::vector<double>& values, double part);

} // namespace kelp::compare
