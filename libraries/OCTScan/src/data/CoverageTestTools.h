#pragma once

#include "EtdrsGrid.h"
#include "SegmentationTestTools.h"

#include <array>
#include <cmath>

/// What the tests of the sectors' coverage share: scans of any spacing, and counts one by one.
namespace kelp::oct::test {

constexpr int nrSectors = EtdrsTable::nrColumns;
using Counts = std::array<int, nrSectors>;

/// A scan whose A-scans stand at equal steps.
struct Lattice
{
    int aScans = 64;
    int bScans = 25;
    Vector2d origin;
    Vector2d aScanStep{0.1, 0.0};
    Vector2d bScanStep{0.0, 0.25};
    bool rightEye = true;
    QString pattern = OCTScanPatternVolume().toString();

    Vector2d position(int bScan, int aScan) const
    {
        return origin + bScan * bScanStep + aScan * aScanStep;
    }
    bool holds(int bScan, int aScan) const
    {
        return bScan >= 0 && bScan < bScans && aScan >= 0 && aScan < aScans;
    }
    void rotate(double degrees)
    {
        const double radians = degrees * M_PI / 180.0;
        for (Vector2d* const step : {&aScanStep, &bScanStep}) {
            *step = {std::cos(radians) * step->x - std::sin(radians) * step->y,
                     std::sin(radians) * step->x + std::cos(radians) * step->y};
        }
    }
    /// Puts this place of the scan, in steps, at (0, 0).
    void center(double bScan, double aScan)
    {
        origin = -1.0 * (bScan * bScanStep + aScan * aScanStep);
    }

    OCTScanSegPtr makeSegmentation() const
    {
        TestScan contents = lineScan(aScans, 4, bScans);
        contents.pattern = pattern;
        contents.localizer = kelp::Image::create(kelp::MonoUInt8, {4, 4, 1});
        for (int b = 0; b < bScans; ++b) {
            for (int a = 0; a < aScans; ++a) {
                contents.positions[b][a] = position(b, a);
            }
        }
        const OCTScanPtr scan = makeTestScan(contents);
        scan->getLocalizer()->setMetaInfo({{"Laterality", rightEye ? "R" : "L"}});
        return OCTScanSegPtr(new OCTScanSegmentation(scan));
    }
};

inline EtdrsTable measure(const Lattice& lattice, const CoordOnLocalizer& fovea = {})
{
    return measureEtdrs(lattice.makeSegmentation(), fovea, false);
}

inline Counts expectedOf(const EtdrsTable& table)
{
    Counts counts{};
    for (std::size_t column = 0; column < counts.size(); ++column) {
        counts[column] = table.coverage[column].expected;
    }
    return counts;
}

inline Counts insideOf(const EtdrsTable& table)
{
    Counts counts{};
    for (std::size_t column = 0; column < counts.size(); ++column) {
        counts[column] = table.coverage[column].inside;
    }
    return counts;
}

inline Counts countedOf(const EtdrsTable& table)
{
    Counts counts{};
    for (std::size_t column = 0; column < counts.size(); ++column) {
        counts[column] = table.coverage[column].counted;
    }
    return counts;
}

/// The column by radius and angle, or -1. Not for places on a circle or a diagonal.
inline int columnByAngle(const Vector2d& offset, bool rightEye)
{
    const double radius = offset.length();
    if (radius > 3.0) {
        return -1;
    }
    if (radius < 0.5) {
        return 0;
    }
    const double degrees = std::atan2(offset.y, rightEye ? offset.x : -offset.x) * 180.0 / M_PI;
    const int quadrant = std::abs(degrees) < 45.0    ? 1
                         : std::abs(degrees) > 135.0 ? 5
                         : degrees < 0.0             ? 3
                                                     : 7;
    return quadrant + (radius > 1.5 ? 1 : 0);
}

struct Enumerated
{
    Counts inside{};
    Counts expected{};
};

/// Visits every place of the lattice that can lie in the grid, and many that do not.
template <typename ColumnOf>
Enumerated enumerate(const Lattice& lattice, int firstBScan, int lastBScan, ColumnOf&& columnOf)
{
    constexpr int reach = 400;
    Enumerated counts;
    for (int b = firstBScan; b <= lastBScan; ++b) {
        for (int a = -reach; a < lattice.aScans + reach; ++a) {
            const int column = columnOf(b, a);
            if (column >= 0) {
                ++counts.expected[static_cast<std::size_t>(column)];
                counts.inside[static_cast<std::size_t>(column)] += lattice.holds(b, a) ? 1 : 0;
            }
        }
    }
    return counts;
}

/// Square millimetres by column.
inline std::array<double, nrSectors> sectorAreas()
{
    const double center = M_PI * 0.25;
    const double inner = M_PI * (2.25 - 0.25) / 4.0;
    const double outer = M_PI * (9.0 - 2.25) / 4.0;
    return {center, inner, outer, inner, outer, inner, outer, inner, outer};
}

} // namespace kelp::oct::test
