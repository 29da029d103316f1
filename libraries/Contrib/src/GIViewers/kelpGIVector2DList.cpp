#include "kelpGIVector2DList.h"

#include <QPainterPath>

namespace kelp {

namespace {

QPainterPath pathThrough(const QList<Vector2d>& points)
{
    QPainterPath path;
    if (points.isEmpty()) {
        return path;
    }
    path.moveTo(points.first().x, points.first().y);
    for (int i = 1; i < points.size(); ++i) {
        path.lineTo(points[i].x, points[i].y);
    }
    return path;
}

} // namespace

GIVector2DList::GIVector2DList(const QList<Vector2d>& points, double width)
    : m_pathItem(new QGraphicsPathItem(this)), m_pen(Qt::green)
{
    setFlag(QGraphicsItem::ItemHasNoContents);
    setZValue(1.0);
    setPenWidth(width);
    GIVector2DList::resetList(points);
}

void GIVector2DList::setColor(const QColor& color)
{
    m_pen.setColor(color);
    m_pathItem->setPen(m_pen);
}

void GIVector2DList::setPenWidth(double width)
{
    prepareGeometryChange();
    m_penWidth = width;
    m_pen.setWidthF(width);
    m_pathItem->setPen(m_pen);
}

void GIVector2DList::resetPenWidth()
{
    setPenWidth(0.0);
}

QRectF GIVector2DList::boundingRect() const
{
    return m_pathItem->boundingRect();
}

void GIVector2DList::paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) {}

void GIVector2DList::resetList(QList<Vector2d> pointList)
{
    prepareGeometryChange();
    m_points = pointList;
    m_pathItem->setPath(pathThrough(m_points));
}

} // namespace kelp

#include "moc_kelpGIVector2DList.cpp"
