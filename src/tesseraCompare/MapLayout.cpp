#include "MapLayout.h"

#include <cmath>

namespace kelp::compare {

namespace {

/// B-scans that are this near to each other, mm, lie on each other.
constexpr double leastDistance = 1e-3;
/// Cosine of the angle from which on B-scans are not taken for parallel.
constexpr double leastParallel = 0.9;

bool areParallel(const Vector2d& a, const Vector2d& b)
{
    return a.x * b.x + a.y * b.y > leastParallel * a.length() * b.length();
}

} // namespace

MapLayout::MapLayout(const std::optional<AScanPlaces>& places, int nrBScans, int nrAScans)
    : m_nrBScans(nrBScans), m_nrAScans(nrAScans)
{
    if (places && nrBScans > 1 && nrAScans > 1) {
        lieAs(*places);
    }
}

void MapLayout::lieAs(const AScanPlaces& places)
{
    const auto at = [&](int bScan, int aScan) { return places.at(bScan, aScan).toVector(); };
    const Vector2d along = at(0, m_nrAScans - 1) - at(0, 0);
    const Vector2d lastAlong = at(m_nrBScans - 1, m_nrAScans - 1) - at(m_nrBScans - 1, 0);
    const Vector2d across = at(m_nrBScans - 1, 0) - at(0, 0);
    if (!areParallel(along, lastAlong) || across.length() < leastDistance) {
        return;
    }
    // Rows of the localizer count downwards, as those of the map.
    m_isKnown = true;
    m_isUpright = std::abs(along.y) > std::abs(along.x);
    m_aScansBackward = (m_isUpright ? along.y : along.x) < 0.0;
    m_bScansBackward = (m_isUpright ? across.x : across.y) < 0.0;
}

QSize MapLayout::size() const
{
    return m_isUpright ? QSize(m_nrBScans, m_nrAScans) : QSize(m_nrAScans, m_nrBScans);
}

QPoint MapLayout::placeOf(int bScan, int aScan) const
{
    const int along = m_aScansBackward ? m_nrAScans - 1 - aScan : aScan;
    const int across = m_bScansBackward ? m_nrBScans - 1 - bScan : bScan;
    return m_isUpright ? QPoint(across, along) : QPoint(along, across);
}

} // namespace kelp::compare
