#pragma once

#include "MacularTables.h"

#include <array>
#include <cstddef>
#include <vector>

namespace macula {

/// One value per grid position, row by row.
using Map = std::vector<double>;

constexpr int columns = 236;
constexpr int rows = 275;
constexpr int foveaColumn = 126;
constexpr int foveaRow = 141;
/// Micrometres per grid step.
constexpr double stepX = 40.9764;
constexpr double stepY = 28.2773;

/// Mean thickness and spread between each two surfaces at every place around the fovea of a right
/// eye: nasal is to the right, superior up.
class MacularModel
{
public:
    MacularModel();

    /// Micrometres.
    const Map& layerMean(std::size_t layer) const { return m_means[layer]; }
    /// Three standard deviations of the distance between two surfaces, in micrometres.
    Map threeDeviations(std::size_t upperSurface, std::size_t lowerSurface) const;

private:
    void addDiscFibres();

    std::array<Map, layerCount> m_means;
    /// Half of what the eye's side makes of a place.
    std::array<Map, layerCount> m_halfSideDifferences;
};

} // namespace macula
