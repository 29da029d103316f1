#include "SurfaceComparison.h"

#include "kelpCheck.h"

#include <algorithm>

namespace kelp::compare {

namespace {

bool hasRow(const SurfaceRows& surface, int bScan, int aScan)
{
    return aScan < surface.getNrAScans() && surface.has(bScan, aScan);
}

SurfaceOverlap compareBScan(const SurfaceRows& a, const SurfaceRows& b, int bScan)
{
    SurfaceOverlap overlap;
    const int nrAScans = std::max(a.getNrAScans(), b.getNrAScans());
    for (int aScan = 0; aScan < nrAScans; ++aScan) {
        const bool inA = hasRow(a, bScan, aScan);
        const bool inB = hasRow(b, bScan, aScan);
        if (inA && inB) {
            overlap.differences.push_back(a.at(bScan, aScan) - b.at(bScan, aScan));
        } else if (inA) {
            ++overlap.onlyA;
        } else if (inB) {
            ++overlap.onlyB;
        }
    }
    return overlap;
}

} // namespace

void SurfaceOverlap::add(const SurfaceOverlap& other)
{
    onlyA += other.onlyA;
    onlyB += other.onlyB;
    differences.insert(differences.end(), other.differences.begin(), other.differences.end());
}

DifferenceStatistics SurfaceOverlap::statistics(double factor) const
{
    std::vector<double> scaled;
    scaled.reserve(differences.size());
    for (const double difference : differences) {
        scaled.push_back(difference * factor);
    }
    return DifferenceStatistics::of(scaled);
}

std::vector<SurfaceOverlap> compareSurfaces(const SurfaceRows& a, const SurfaceRows& b)
{
    constexpr Place place{"src/tesseraCompare/SurfaceComparison", "kelp::compare::compareSurfaces"};
    check(a.getNrBScans() == b.getNrBScans(), place, "The surfaces differ in their B-scans.");
    std::vector<SurfaceOverlap> bScans;
    bScans.reserve(static_cast<std::size_t>(a.getNrBScans()));
    for (int bScan = 0; bScan < a.getNrBScans(); ++bScan) {
        bScans.push_back(compareBScan(a, b, bScan));
    }
    return bScans;
}

SurfaceOverlap sumOf(const std::vector<SurfaceOverlap>& bScans)
{
    SurfaceOverlap sum;
    for (const SurfaceOverlap& bScan : bScans) {
        sum.add(bScan);
    }
    return sum;
}

} // namespace kelp::compare
