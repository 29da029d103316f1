#pragma once

#include "Vector2d.h"

#include <QList>
#include <QPointF>

#include <optional>
#include <vector>

namespace kelp::oct {

/// How the scene measures a B-scan, in scene units.
struct PolylineScale
{
    double lateralResolution = 1.0; ///< between A-scans
    double axialResolution = 1.0;   ///< between rows
    double maxY = 0.0;              ///< the image's height
};

/// What an edit does to one point of a polyline.
struct PolylineChange
{
    int index = 0;    ///< in the list of points
    int position = 0; ///< the row that the layer gets
    double y = 0.0;   ///< where the point is drawn

    friend bool operator==(const PolylineChange&, const PolylineChange&) = default;
};

/// The arithmetic of correcting a layer's polyline with the mouse; draws and stores nothing itself.
/// A click truncates to the row and draws at its upper edge; a drag rounds and draws half a row
/// lower. Both can give the row just below the image, since they clamp to its height.
class PolylineEdit
{
public:
    using Points = QList<Vector2d>;

    explicit PolylineEdit(const PolylineScale& scale) : m_scale(scale) {}

    /// The point with the closest x; of equally close ones the later. 0 if none is within sight.
    static int closestIndex(const Points& points, double x);
    /// Euclidean, but for the first point, whose distance counts squared. The largest float for no
    /// points.
    static double distance(const Points& points, const QPointF& point);

    /// Throws kelp::Assertion for an empty list.
    PolylineChange click(const Points& points, const QPointF& point) const;
    /// Between two positions of the mouse; nullopt if both lie on one side of the polyline. No
    /// changes for two positions of the same x.
    std::optional<std::vector<PolylineChange>> drag(const Points& points, const QPointF& from,
                                                    const QPointF& to) const;

private:
    double clamped(double y) const;

    PolylineScale m_scale;
};

} // namespace kelp::oct
