#include "DifferenceStatistics.h"

#include <cmath>
#include <cstdint>

namespace kelp::compare {

namespace {

constexpr double half = 0.5;
constexpr double highPart = 0.95;

using Entry = Tally<double>::Entry;

/// The sum of what the measure makes of each value.
template <typename Measure>
double sumOf(const Tally<double>& values, const Measure& measure)
{
    double sum = 0.0;
    for (const Entry& entry : values.entries()) {
        sum += measure(entry.value) * static_cast<double>(entry.count);
    }
    return sum;
}

std::optional<double> deviationOf(const Tally<double>& values, double mean)
{
    const auto count = static_cast<double>(values.total());
    if (count < 2.0) {
        return std::nullopt;
    }
    const double sum =
        sumOf(values, [mean](double value) { return (value - mean) * (value - mean); });
    return std::sqrt(sum / (count - 1.0));
}

/// The value of this number in ascending order, counted from 0.
double valueAt(const Tally<double>& values, std::int64_t number)
{
    std::int64_t left = number;
    for (const Entry& entry : values.entries()) {
        if (left < entry.count) {
            return entry.value;
        }
        left -= entry.count;
    }
    return values.entries().back().value;
}

std::optional<double> quantileOf(const Tally<double>& values, double part)
{
    if (values.isEmpty()) {
        return std::nullopt;
    }
    const double place = part * static_cast<double>(values.total() - 1);
    const auto below = static_cast<std::int64_t>(place);
    const double lower = valueAt(values, below);
    const double upper = valueAt(values, below + 1);
    return lower + (place - static_cast<double>(below)) * (upper - lower);
}

} // namespace

std::optional<double> quantile(const std::vector<double>& values, double part)
{
    return quantileOf(Tally<double>(values), part);
}

DifferenceStatistics DifferenceStatistics::of(const std::vector<double>& differences)
{
    return ofTally(Tally<double>(differences));
}

DifferenceStatistics DifferenceStatistics::ofTally(const Tally<double>& differences)
{
    DifferenceStatistics statistics;
    statistics.count = static_cast<int>(differences.total());
    if (differences.isEmpty()) {
        return statistics;
    }
    const auto count = static_cast<double>(differences.total());
    const double mean = sumOf(differences, [](double value) { return value; }) / count;
    const Tally<double> absolute =
        differences.measured([](double value) { return std::abs(value); });
    statistics.mean = mean;
    statistics.meanAbsolute =
        sumOf(differences, [](double value) { return std::abs(value); }) / count;
    statistics.standardDeviation = deviationOf(differences, mean);
    statistics.median = quantileOf(differences, half);
    statistics.medianAbsolute = quantileOf(absolute, half);
    statistics.percentile95 = quantileOf(absolute, highPart);
    statistics.meanAbsoluteAboutMean =
        sumOf(differences, [mean](double value) { return std::abs(value - mean); }) / count;
    return statistics;
}

std::optional<double> DifferenceStatistics::lowerLimit() const
{
    return standardDeviation ? std::optional(*mean - limitFactor * *standardDeviation)
                             : std::nullopt;
}

std::optional<double> DifferenceStatistics::upperLimit() const
{
    return standardDeviation ? std::optional(*mean + limitFactor * *standardDeviation)
                             : std::nullopt;
}

} // namespace kelp::compare
