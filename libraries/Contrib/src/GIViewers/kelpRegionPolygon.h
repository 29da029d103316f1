#pragma once

#include <QPointF>
#include <QPolygonF>

namespace kelp {

/// The polygon under construction, apart from any scene: points are added by clicks and by drawing,
/// the last one follows the mouse.
class RegionPolygon
{
public:
    /// The first point exists twice: the second one follows the mouse.
    void press(const QPointF& point);
    /// With the left button down adds a point, otherwise moves the last one.
    void move(const QPointF& point, bool leftButtonDown);
    /// Closes the polygon; what is held afterwards is the result.
    void finish();
    void reset();

    bool isDrawing() const { return m_drawing; }
    const QPolygonF& getPolygon() const { return m_polygon; }

private:
    bool m_drawing = false;
    QPolygonF m_polygon;
};

} // namespace kelp
