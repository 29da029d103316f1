#pragma once

#include "kelpColorTransferFunction.h"

#include <QString>

namespace kelp::oct {

namespace thicknessMapKey {
inline constexpr char lower[] = "Gui/thicknessMap/colorTransferMin";
inline constexpr char upper[] = "Gui/thicknessMap/colorTransferMax";
inline constexpr char alpha[] = "Gui/thicknessMap/colorTransferAlpha";
inline constexpr char colorMap[] = "Gui/thicknessMap/colorTransferMap";
inline constexpr char topLayer[] = "Gui/thicknessMap/topLayerId";
inline constexpr char bottomLayer[] = "Gui/thicknessMap/bottomLayerId";
} // namespace thicknessMapKey

/// How the thickness map was last drawn.
struct ThicknessMapSettings
{
    // Micrometres. The lower limit has room for an upper one above it.
    static constexpr int smallestLower = 0;
    static constexpr int largestLower = 499;
    static constexpr int smallestUpper = 1;
    static constexpr int largestUpper = 500;

    int lower = 200;
    int upper = 400;
    double alpha = 0.5;
    ColorMaps colorMap = ColorMaps::Rainbow;

    /// Whatever the settings file holds, the result can be drawn: values outside their range take
    /// its nearer end, limits in the wrong order and an unknown colour table their defaults.
    static ThicknessMapSettings read();
};

} // namespace kelp::oct
