#include "ValueScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace macula {

namespace {

using Stops = std::array<QRgb, 9>;

constexpr Stops blueToYellow{0xff440154, 0xff472d7b, 0xff3b528b, 0xff2c728e, 0xff21918c,
                             0xff28ae80, 0xff5ec962, 0xffaddc30, 0xfffde725};
constexpr Stops blackToPink{0xff000004, 0xff1c1044, 0xff4f127b, 0xff812581, 0xffb5367a,
                            0xffe55064, 0xfffb8761, 0xfffec287, 0xfffcfdbf};

QColor between(const Stops& stops, double part)
{
    const double place = part * static_cast<double>(stops.size() - 1);
    const auto lower = std::min(static_cast<std::size_t>(place), stops.size() - 2);
    const double weight = place - static_cast<double>(lower);
    const QColor from(stops[lower]);
    const QColor to(stops[lower + 1]);
    const auto mixed = [weight](int a, int b) {
        return static_cast<int>(std::lround(a + weight * (b - a)));
    };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()),
            mixed(from.blue(), to.blue())};
}

} // namespace

RoundSteps roundSteps(double lowest, double highest, int most)
{
    // What is the same everywhere gets a range around it all the same.
    constexpr double nothing = 0.5;
    constexpr double around = 5.0;
    if (highest - lowest < nothing) {
        lowest -= around;
        highest += around;
    }
    const double range = highest - lowest;
    double step = std::pow(10.0, std::floor(std::log10(range / most)));
    while (true) {
        for (const double factor : {1.0, 2.0, 2.5, 5.0}) {
            const double width = factor * step;
            const double first = std::floor(lowest / width + 1e-9) * width;
            const int count = static_cast<int>(std::ceil((highest - first) / width - 1e-9));
            if (count <= most) {
                return {first, width, std::max(count, 1)};
            }
        }
        step *= 10.0;
    }
}

ValueScale::ValueScale(Colours colours, const RoundSteps& steps) : m_steps(steps)
{
    const Stops& stops = colours == Colours::BlueToYellow ? blueToYellow : blackToPink;
    for (int index = 0; index < steps.count; ++index) {
        m_colours.append(between(stops, steps.count == 1 ? 0.5 : index / (steps.count - 1.0)));
    }
}

QColor ValueScale::colourOf(double value) const
{
    const double index = std::floor((value - m_steps.first) / m_steps.step);
    return m_colours[static_cast<int>(std::clamp(index, 0.0, m_steps.count - 1.0))];
}

} // namespace macula
