#pragma once

#include "VolumeLayer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kelp::oct {

/// Between the four neighbours of a position, which is clamped to the matrix. The values within a
/// row are truncated to what a layer holds before the two rows are mixed, so that a layer that is
/// sampled along its rows alone gives whole numbers. Real is the precision of everything.
template <typename Real>
Real sampleLayerBilinear(const VolumeLayer& matrix, Real row, Real column)
{
    row = std::clamp(row, Real(0), static_cast<Real>(matrix.rows - 1));
    column = std::clamp(column, Real(0), static_cast<Real>(matrix.columns - 1));
    const Real firstRow = std::floor(row);
    const Real firstColumn = std::floor(column);
    const auto left = static_cast<std::size_t>(firstColumn);
    const auto right = static_cast<std::size_t>(std::ceil(column));
    const auto valueInRow = [&](Real wholeRow) {
        const auto index = static_cast<std::size_t>(wholeRow);
        const Real leftValue = matrix(index, left);
        const Real difference = matrix(index, right) - leftValue;
        // In this form a flat row stays exactly flat, which the truncation would otherwise break.
        const Real value = leftValue + (column - firstColumn) * difference;
        return static_cast<Real>(static_cast<unsigned short>(value));
    };
    const Real upper = valueInRow(firstRow);
    const Real lower = valueInRow(std::ceil(row));
    return upper + (row - firstRow) * (lower - upper);
}

} // namespace kelp::oct
