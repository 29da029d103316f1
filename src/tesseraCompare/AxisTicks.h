#pragma once

#include <QString>

#include <vector>

namespace kelp::compare {

/// Round numbers in steps of 1, 2 or 5 times a power of ten, at most so many, that lie from low to
/// high. Throws Assertion unless low is below high.
std::vector<double> axisTicks(double low, double high, int atMost);

/// The smallest of 1, 2 or 5 times a power of ten that is not below this number above 0.
double roundUp(double number);

/// As many decimals as tell ticks with this step apart.
QString tickText(double tick, double step);

} // namespace kelp::compare
