#include "kelpColorTransferFunction.h"

#include "kelpCheck.h"

#include <algorithm>
#include <array>

namespace kelp {

namespace {

constexpr char sourcePath[] = "libraries/Core/src/ImageLib/kelpColorTransferFunction";

struct ControlPoint
{
    double position;
    std::array<double, 3> color;
};

using ColorTable = std::vector<ControlPoint>;

const ColorTable& tableOf(ColorMaps map)
{
    static const ColorTable blueRed{{0.0, {0.23, 0.30, 0.75}},
                                    {0.25, {0.55, 0.69, 1.0}},
                                    {0.5, {0.87, 0.87, 0.87}},
                                    {0.75, {0.96, 0.60, 0.48}},
                                    {1.0, {0.71, 0.02, 0.15}}};
    static const ColorTable gray{{0.0, {0.0, 0.0, 0.0}}, {1.0, {1.0, 1.0, 1.0}}};
    // From black over red and yellow to white: lightness grows all the way.
    static const ColorTable glow{{0.0, {0.0, 0.0, 0.0}},
                                 {0.375, {0.8, 0.0, 0.0}},
                                 {0.75, {1.0, 0.8, 0.0}},
                                 {1.0, {1.0, 1.0, 1.0}}};
    static const ColorTable rainbow{{0.0, {0.0, 0.0, 1.0}},
                                    {0.25, {0.0, 1.0, 1.0}},
                                    {0.5, {0.0, 1.0, 0.0}},
                                    {0.75, {1.0, 1.0, 0.0}},
                                    {1.0, {1.0, 0.0, 0.0}}};
    static const ColorTable rainbowInverted{{0.0, {1.0, 0.0, 0.0}},
                                            {0.25, {1.0, 1.0, 0.0}},
                                            {0.5, {0.0, 1.0, 0.0}},
                                            {0.75, {0.0, 1.0, 1.0}},
                                            {1.0, {0.0, 0.0, 1.0}}};
    static const ColorTable rainbowLight{{0.0, {0.5, 0.5, 1.0}},
                                         {0.25, {0.5, 1.0, 1.0}},
                                         {0.5, {0.5, 1.0, 0.5}},
                                         {0.75, {1.0, 1.0, 0.5}},
                                         {1.0, {1.0, 0.5, 0.5}}};
    // A heated body seen from cold to hot.
    static const ColorTable temperature{{0.0, {0.05, 0.05, 0.35}},
                                        {0.3, {0.45, 0.10, 0.55}},
                                        {0.6, {0.90, 0.30, 0.25}},
                                        {0.85, {0.99, 0.70, 0.20}},
                                        {1.0, {1.0, 1.0, 0.80}}};
    switch (map) {
    case ColorMaps::BlueRed:
        return blueRed;
    case ColorMaps::Gray:
        return gray;
    case ColorMaps::Glow:
        return glow;
    case ColorMaps::Rainbow:
        return rainbow;
    case ColorMaps::RainbowInverted:
        return rainbowInverted;
    case ColorMaps::RainbowLight:
        return rainbowLight;
    case ColorMaps::Temperature:
        return temperature;
    }
    throw NotImplemented("There is no color table of this number.");
}

double interpolate(const ColorTable& table, std::size_t channel, double position)
{
    const auto above =
        std::find_if(table.begin(), table.end(),
                     [position](const ControlPoint& point) { return point.position > position; });
    if (above == table.begin()) {
        return table.front().color[channel];
    }
    if (above == table.end()) {
        return table.back().color[channel];
    }
    const ControlPoint& upper = *above;
    const ControlPoint& lower = *(above - 1);
    const double fraction = (position - lower.position) / (upper.position - lower.position);
    return (1.0 - fraction) * lower.color[channel] + fraction * upper.color[channel];
}

} // namespace

PredefinedTransferfunctions::PredefinedTransferfunctions(ColorMaps map) : m_map(map)
{
    static_cast<void>(tableOf(map));
}

void PredefinedTransferfunctions::setInputRange(double low, double high)
{
    check(low < high, {sourcePath, "kelp::PredefinedTransferfunctions::setInputRange"},
          "The input range is empty.");
    m_low = low;
    m_high = high;
}

ColorTransferFunction::Channel PredefinedTransferfunctions::getChannel(int channel) const
{
    check(channel >= 0 && channel < 3,
          {sourcePath, "kelp::PredefinedTransferfunctions::getChannel"},
          "There are three color channels.");
    return [&table = tableOf(m_map), low = m_low, high = m_high,
            index = static_cast<std::size_t>(channel)](double value) {
        // Written such that not-a-number takes the lowest color.
        const double position = value > low ? std::min((value - low) / (high - low), 1.0) : 0.0;
        return interpolate(table, index, position);
    };
}

std::pair<double, double> PredefinedTransferfunctions::getInputRange() const
{
    return {m_low, m_high};
}

QStringList PredefinedTransferfunctions::getNames()
{
    return {"Blue-Red",         "Gray",          "Glow",       "Rainbow",
            "Rainbow Inverted", "Rainbow Light", "Temperature"};
}

} // namespace kelp
