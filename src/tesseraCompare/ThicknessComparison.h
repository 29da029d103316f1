#pragma once

#include "DifferenceStatistics.h"
#include "ScanSurfaces.h"

#include <optional>
#include <utility>
#include <vector>

namespace kelp::compare {

/// The thickness of one layer at one place, in micrometres, as A and B have it.
struct ThicknessPair
{
    double a = 0.0;
    double b = 0.0;

    double mean() const { return (a + b) / 2.0; }
    double difference() const { return a - b; }

    friend bool operator==(const ThicknessPair&, const ThicknessPair&) = default;
    /// An order without a meaning, for counting.
    friend bool operator<(const ThicknessPair& one, const ThicknessPair& other)
    {
        return std::pair(one.a, one.b) < std::pair(other.a, other.b);
    }
};

DifferenceStatistics differencesOf(const std::vector<ThicknessPair>& pairs);

/// A layer, by its row of the ETDRS table, in one sector, by its column.
struct SectorComparison
{
    int row = 0;
    int column = 0;
    int nrA = 0; ///< A-scans that each side's mean stands on
    int nrB = 0;
    /// Micrometres.
    ThicknessPair thickness;
    /// Over the A-scans that both have; empty where places are not the same, so that only the
    /// means can be compared.
    std::optional<DifferenceStatistics> aScans;
    /// The border of the scan cuts the sector, so that the mean is not that of a whole one.
    bool cutA = false;
    bool cutB = false;
};

/// The layer's thickness in every A-scan that has both its surfaces in A and in B. Both scans must
/// have as many B-scans.
std::vector<ThicknessPair> thicknessPairs(const ScanSurfaces& a, const ScanSurfaces& b, int row,
                                          double axialMicrometres);

/// The sectors that hold something of a layer in both, over the A-scans that both have.
QList<SectorComparison> compareSectors(const ScanSurfaces& a, const ScanSurfaces& b,
                                       double axialMicrometres, const AScanPlaces& places,
                                       const SectorGrid& grid);

/// What one side brings where places are not the same.
struct SectorSide
{
    const ScanSurfaces& scan;
    double axialMicrometres = 0.0;
    const AScanPlaces& places;
    SectorGrid grid;
};

/// The sectors of which both have a mean, each over its own A-scans.
QList<SectorComparison> compareSectorMeans(const SectorSide& a, const SectorSide& b);

} // namespace kelp::compare
