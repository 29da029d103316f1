#pragma once

#include "kelpRegionPolygon.h"

#include <QGraphicsObject>
#include <QGraphicsPolygonItem>
#include <QPolygonF>

namespace kelp {

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
