#include "kelpRegionTool.h"

#include <QBrush>
#include <QGraphicsSceneMouseEvent>
#include <QPen>

namespace kelp {

RegionTool::RegionTool() : m_polygonItem(new QGraphicsPolygonItem(this))
{
    setFlag(QGraphicsItem::ItemHasNoContents);
    constexpr QColor fill(0, 200, 0, 100);
    m_polygonItem->setPen(QPen(Qt::green, 0.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    m_polygonItem->setBrush(QBrush(fill, Qt::SolidPattern));
}

QRectF RegionTool::boundingRect() const
{
    return m_polygonItem->boundingRect();
}

void RegionTool::paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) {}

void RegionTool::resetPolygon()
{
    m_region.reset();
    showPolygon();
}

void RegionTool::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_region.press(event->scenePos());
        showPolygon();
    } else if (event->button() == Qt::RightButton) {
        m_region.finish();
        showPolygon();
        // A copy: a listener resets the tool.
        const QPolygonF polygon = m_region.getPolygon();
        emit polygonCreated(polygon);
        emit polygonCreated(polygon, event->scenePos());
    }
}

void RegionTool::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    if (!m_region.isDrawing()) {
        return;
    }
    m_region.move(event->scenePos(), event->buttons().testFlag(Qt::LeftButton));
    showPolygon();
}

void RegionTool::showPolygon()
{
    prepareGeometryChange();
    m_polygonItem->setPolygon(m_region.getPolygon());
}

} // namespace kelp

#include "moc_kelpRegionTool.cpp"
