#pragma once

#include <QGraphicsObject>
#include <QGraphicsPolygonItem>
#include <QPolygonF>

namespace kelp {

/// The polygon under construction, apart from any scene: points are added by clicks and by drawing,
/// the last one follows the mouse.
class RegionPolygon
{
public:
    void press(const QPointF& point);
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

/// Collects a polygon with the mouse: left clicks and left drags add points, a right click ends it.
class RegionTool : public QGraphicsObject
{
    Q_OBJECT

public:
    RegionTool();

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;
    const QPolygonF& getPolygon() const { return m_region.getPolygon(); }

public slots:
    void resetPolygon();

signals:
    void polygonCreated(QPolygonF polygon);
    void polygonCreated(QPolygonF polygon, QPointF lastMousePos);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;

private:
    void showPolygon();

    RegionPolygon m_region;
    QGraphicsPolygonItem* m_polygonItem = nullptr; ///< child
};

} // namespace kelp
