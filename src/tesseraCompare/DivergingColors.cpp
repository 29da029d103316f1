#include "DivergingColors.h"

#include <algorithm>
#include <array>

namespace kelp::compare {

namespace {

/// At equal steps from one end to the other; as bright on both sides.
constexpr std::array<QRgb, 5> stops{0xFF2166AC, 0xFF92C5DE, 0xFFF7F7F7, 0xFFF4A582, 0xFFB2182B};

double mixed(double from, double to, double part)
{
    return from + part * (to - from);
}

} // namespace

QColor DivergingColors::of(double value) const
{
    constexpr int nrSteps = static_cast<int>(stops.size()) - 1;
    const double place = std::clamp((value / m_limit + 1.0) / 2.0, 0.0, 1.0) * nrSteps;
    const int below = std::min(static_cast<int>(place), nrSteps - 1);
    const double part = place - below;
    const QColor from(stops[static_cast<std::size_t>(below)]);
    const QColor to(stops[static_cast<std::size_t>(below) + 1]);
    return QColor::fromRgbF(mixed(from.redF(), to.redF(), part),
                            mixed(from.greenF(), to.greenF(), part),
                            mixed(from.blueF(), to.blueF(), part));
}

} // namespace kelp::compare
