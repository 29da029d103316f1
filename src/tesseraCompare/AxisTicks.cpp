#include "AxisTicks.h"

#include "kelpCheck.h"

#include <algorithm>
#include <cmath>

namespace kelp::compare {

namespace {

constexpr double base = 10.0;
/// What computing a step leaves behind the comma must not make it the next larger one.
constexpr double tolerance = 1e-9;

} // namespace

double roundUp(double number)
{
    const double power = std::pow(base, std::floor(std::log10(number) + tolerance));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= number * (1.0 - tolerance)) {
            return factor * power;
        }
    }
    return base * power;
}

std::vector<double> axisTicks(double low, double high, int atMost)
{
    constexpr Place place{"src/tesseraCompare/AxisTicks", "kelp::compare::axisTicks"};
    check(low < high && atMost > 0, place, "The axis has no length.");
    const double step = roundUp((high - low) / atMost);
    const double slack = step * tolerance;
    std::vector<double> ticks;
    for (double index = std::ceil((low - slack) / step); index * step <= high + slack; ++index) {
        // Without it the tick at nothing can be -0.
        ticks.push_back(index == 0.0 ? 0.0 : index * step);
    }
    return ticks;
}

QString tickText(double tick, double step)
{
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + tolerance)));
    return QString::number(tick, 'f', decimals);
}

} // namespace kelp::compare
