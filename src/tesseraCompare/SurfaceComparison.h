#pragma once

#include "DifferenceStatistics.h"
#include "SurfaceRows.h"

#include <vector>

namespace kelp::compare {

/// The A-scans of some B-scans in which two surfaces can be compared.
struct SurfaceOverlap
{
    int onlyA = 0;
    int onlyB = 0;
    /// A - B in rows where both have a position.
    std::vector<double> differences;

    void add(const SurfaceOverlap& other);
    /// The differences times this factor.
    DifferenceStatistics statistics(double factor) const;
};

/// One overlap for each B-scan. A surface with fewer A-scans has no position in the further ones.
/// Both must have as many B-scans.
std::vector<SurfaceOverlap> compareSurfaces(const SurfaceRows& a, const SurfaceRows& b);

/// Of all B-scans together.
SurfaceOverlap sumOf(const std::vector<SurfaceOverlap>& bScans);

} // namespace kelp::compare
