#pragma once

#include "Vector2d.h"
#include "kelpGIObject.h"

#include <QGraphicsPathItem>
#include <QList>
#include <QPen>

namespace kelp {

/// A polyline through points in scene coordinates, green at first, z value 1.
class GIVector2DList : public GIObject
{
    Q_OBJECT

public:
    explicit GIVector2DList(const QList<Vector2d>& points, double width = 0.0);

    void setColor(const QColor& color);
    /// Scene units; 0 is cosmetic.
    void setPenWidth(double width);
    void resetPenWidth();
    const QList<Vector2d>& getPoints() const { return m_points; }
    QPen getPen() const { return m_pen; }

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

public slots:
    void resetList(QList<Vector2d> pointList);

protected:
    QList<Vector2d> m_points;
    QGraphicsPathItem* m_pathItem = nullptr; ///< child
    QPen m_pen;
    double m_penWidth = 0.0;
};

using GIVector2DListPtr = QSharedPointer<GIVector2DList>;

} // namespace kelp
