#include "ThicknessMapSettings.h"

#include "kelpSettings.h"

#include <algorithm>
#include <cmath>

namespace kelp::oct {

namespace {

/// Not-a-number, which a settings file can hold, gives the default.
double readNumber(const char* key, double defaultValue, double smallest, double largest)
{
    const double value = Settings::get(QString::fromLatin1(key), defaultValue);
    return std::isnan(value) ? defaultValue : std::clamp(value, smallest, largest);
}

int readLimit(const char* key, int defaultValue, int smallest, int largest)
{
    return static_cast<int>(std::lround(readNumber(key, defaultValue, smallest, largest)));
}

} // namespace

ThicknessMapSettings ThicknessMapSettings::read()
{
    const ThicknessMapSettings defaults;
    ThicknessMapSettings result;
    result.lower = readLimit(thicknessMapKey::lower, defaults.lower, smallestLower, largestLower);
    result.upper = readLimit(thicknessMapKey::upper, defaults.upper, smallestUpper, largestUpper);
    if (result.lower >= result.upper) {
        result.lower = defaults.lower;
        result.upper = defaults.upper;
    }
    result.alpha = readNumber(thicknessMapKey::alpha, defaults.alpha, 0.0, 1.0);
    const int colorMap = Settings::get(QString::fromLatin1(thicknessMapKey::colorMap),
                                       static_cast<int>(defaults.colorMap));
    if (colorMap >= 0 && colorMap < PredefinedTransferfunctions::getNames().size()) {
        result.colorMap = static_cast<ColorMaps>(colorMap);
    }
    return result;
}

} // namespace kelp::oct
