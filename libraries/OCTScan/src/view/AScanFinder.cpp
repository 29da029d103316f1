#include "AScanFinder.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelp::oct {

namespace {

/// Whether the scan's own conversion from millimetres to indices can be asked.
bool hasGrid(const OCTScan& scan, const std::vector<int>& aScanCounts)
{
    const QString pattern = scan.getScanPattern()->toString();
    if (pattern == OCTScanPatternVolume().toString()) {
        return aScanCounts.size() > 1 && aScanCounts[0] > 1 && aScanCounts[1] > 0;
    }
    return pattern == OCTScanPatternSingleBScan().toString() && !aScanCounts.empty() &&
           aScanCounts[0] > 1;
}

int nearestIndex(double index, int count)
{
    return static_cast<int>(std::clamp(std::round(index), 0.0, count - 1.0));
}

} // namespace

AScanFinder::AScanFinder(const OCTScanPtr& scan) : m_scan(scan)
{
    const int bScans = scan->getBScanCount();
    for (int i = 0; i < bScans; ++i) {
        const auto bScan = scan->getBScan(static_cast<unsigned>(i));
        m_aScanCounts.push_back(bScan ? bScan->getNrAScans() : 0);
    }
    if (hasGrid(*scan, m_aScanCounts)) {
        return;
    }
    for (int i = 0; i < bScans; ++i) {
        for (int j = 0; j < m_aScanCounts[static_cast<std::size_t>(i)]; ++j) {
            const Vector2d& position = scan->getBScan(static_cast<unsigned>(i))
                                           ->getAScanPosition(static_cast<unsigned>(j));
            m_positions.push_back({QPointF(position.x, position.y), {i, j}});
        }
    }
}

std::optional<AScanPlace> AScanFinder::closestTo(const QPointF& position) const
{
    if (m_scan.isNull()) {
        return std::nullopt;
    }
    return m_positions.empty() ? closestOnGrid(position) : closestStored(position);
}

std::optional<AScanPlace> AScanFinder::closestOnGrid(const QPointF& position) const
{
    if (m_aScanCounts.empty() || m_aScanCounts[0] == 0) {
        return std::nullopt;
    }
    const VolumeIndex index =
        m_scan->localizerCoordToVolumeIndex(CoordOnLocalizer(position.x(), position.y()));
    if (!std::isfinite(index.bScan) || !std::isfinite(index.aScan)) {
        return std::nullopt;
    }
    const int bScan = nearestIndex(index.bScan, static_cast<int>(m_aScanCounts.size()));
    const int aScans = m_aScanCounts[static_cast<std::size_t>(bScan)];
    if (aScans == 0) {
        return std::nullopt;
    }
    return AScanPlace{bScan, nearestIndex(index.aScan, aScans)};
}

std::optional<AScanPlace> AScanFinder::closestStored(const QPointF& position) const
{
    double shortest = std::numeric_limits<double>::infinity();
    std::optional<AScanPlace> closest;
    for (const StoredPosition& candidate : m_positions) {
        const QPointF way = candidate.position - position;
        const double squaredLength = QPointF::dotProduct(way, way);
        if (squaredLength < shortest) {
            shortest = squaredLength;
            closest = candidate.place;
        }
    }
    return closest;
}

} // namespace kelp::oct
