#include "PolylineEdit.h"

#include "kelpCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kelp::oct {

namespace {

/// The failures of a click are those of the overlay that was clicked.
constexpr kelp::Place clickPlace{"libraries/OCTScan/src/view/kelpLayerSegmentationGI",
                                 "kelp::oct::LayerSegmentationGI::changeSegmentation"};

} // namespace

int PolylineEdit::closestIndex(const Points& points, double x)
{
    constexpr double outOfSight = 999999.0;
    int closest = 0;
    double best = outOfSight;
    for (int i = 0; i < points.size(); ++i) {
        const double difference = points[i].x - x;
        if (best >= difference * difference) {
            closest = i;
            best = difference * difference;
        }
    }
    return closest;
}

double PolylineEdit::distance(const Points& points, const QPointF& point)
{
    if (points.isEmpty()) {
        return static_cast<double>(std::numeric_limits<float>::max());
    }
    const Vector2d target{point.x(), point.y()};
    // The first distance is meant to stay squared: which layer is picked near an overlay's left end
    // depends on it, and people are used to that.
    double best = (points[0] - target).squaredLength();
    for (int i = 1; i < points.size(); ++i) {
        best = std::min(best, (points[i] - target).length());
    }
    return best;
}

double PolylineEdit::clamped(double y) const
{
    return std::min(std::max(y, 0.0), m_scale.maxY);
}

PolylineChange PolylineEdit::click(const Points& points, const QPointF& point) const
{
    const int index = closestIndex(points, point.x());
    kelp::check(index < points.size(), clickPlace, "Index too large.");
    kelp::check(index >= 0, clickPlace, "Index too small.");
    const int position = static_cast<int>(clamped(point.y()) / m_scale.axialResolution);
    return {index, position, position * m_scale.axialResolution};
}

std::optional<std::vector<PolylineChange>>
PolylineEdit::drag(const Points& points, const QPointF& from, const QPointF& to) const
{
    if (points.isEmpty()) {
        return std::nullopt;
    }
    Vector2d first{from.x(), from.y()};
    Vector2d second{to.x(), to.y()};
    if (first.x > second.x) {
        std::swap(first, second);
    }
    const double xFirst = points.first().x;
    const double xLast = points.last().x;
    if (xFirst > second.x || first.x > xLast) {
        return std::nullopt;
    }
    if (xFirst > first.x) {
        // No proper interpolation: what is drawn left of the overlay has always come in like this.
        first = {xFirst, second.y + (second.y - first.y) * (-first.x)};
    }
    if (second.x > xLast) {
        second = {xLast, first.y + (second.y - first.y) * (xLast - first.x)};
    }

    std::vector<PolylineChange> changes;
    if (second.x == first.x) {
        return changes;
    }
    const int begin = closestIndex(points, first.x);
    const int last = closestIndex(points, second.x);
    const double slope = (second.y - first.y) / (second.x - first.x);
    const double halfRow = m_scale.axialResolution / 2;
    for (int i = begin; i <= last; ++i) {
        const double x = i * m_scale.lateralResolution + xFirst - first.x;
        const double y = clamped(x * slope + first.y - halfRow);
        const auto position = static_cast<int>(std::nearbyint(y / m_scale.axialResolution));
        changes.push_back({i, position, y + halfRow});
    }
    return changes;
}

} // namespace kelp::oct
