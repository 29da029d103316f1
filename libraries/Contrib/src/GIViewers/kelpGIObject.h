#pragma once

#include <QGraphicsObject>
#include <QPointF>
#include <QSharedPointer>

namespace kelp {

/// An interactive object on top of a viewer's image, in scene coordinates (the image's spacing
/// units). Held by the viewer's list through shared pointers; the scene must never delete it.
class GIObject : public QGraphicsObject
{
    Q_OBJECT

public:
    GIObject() = default;

    bool isActiveObject() const { return m_active; }
    virtual void setActive(bool active);
    virtual void deactivate();
    virtual void highlight();
    virtual void removeHighlight();
    /// Euclidean, to the centre of the bounding rectangle.
    virtual double distanceTo(const QPointF& point) const;

public slots:
    // In scene coordinates.
    virtual void mouseDown(const QPointF& point);
    virtual void mouseUp(const QPointF& point);
    virtual void mouseMove(const QPointF& point);

protected:
    bool m_active = false;
};

using GIObjectPtr = QSharedPointer<GIObject>;

/// An invisible child of an item that only its viewer may delete; see GIImageViewer.
class DeletionGuardGO : public QGraphicsObject
{
    Q_OBJECT

public:
    explicit DeletionGuardGO(QGraphicsItem* parent) : QGraphicsObject(parent) {}
    QRectF boundingRect() const override { return {}; }
    void paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) override {}
};

} // namespace kelp
