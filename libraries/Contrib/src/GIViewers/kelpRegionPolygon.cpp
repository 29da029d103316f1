#include "kelpRegionPolygon.h"

namespace kelp {

void RegionPolygon::press(const QPointF& point)
{
    if (!m_drawing) {
        m_drawing = true;
        m_polygon.clear();
        m_polygon.append(point);
    }
    m_polygon.append(point);
}

void RegionPolygon::move(const QPointF& point, bool leftButtonDown)
{
    if (!m_drawing) {
        return;
    }
    if (leftButtonDown) {
        m_polygon.append(point);
    } else {
        m_polygon.last() = point;
    }
}

void RegionPolygon::finish()
{
    m_drawing = false;
    // Up to three points the last one is taken for a corner: without it no area would be left.
    constexpr int fewestPointsOfAnArea = 3;
    if (m_polygon.size() > fewestPointsOfAnArea) {
        m_polygon.removeLast();
    }
    if (!m_polygon.isEmpty()) {
        m_polygon.append(m_polygon.first());
    }
}

void RegionPolygon::reset()
{
    m_drawing = false;
    m_polygon.clear();
}

} // namespace kelp
