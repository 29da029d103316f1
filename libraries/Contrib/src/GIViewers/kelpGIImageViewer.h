#pragma once

#include "kelpGIObject.h"
#include "kelpImage.h"

#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QList>

#include <utility>

namespace kelp {

/// Shows one image at its physical proportions with interactive objects on top. Pixel (column, row)
/// has its centre at (column * spacingX, row * spacingY) of the scene, in the image's spacing
/// units.
class GIImageViewer : public QGraphicsView
{
    Q_OBJECT

public:
    explicit GIImageViewer(QWidget* parent = nullptr);
    ~GIImageViewer() override;

    /// With dragging enabled the zoom stays unless fit is set. A null image clears.
    virtual void setImage(ConstImagePtr image, bool fit = false);
    virtual void clearImage();
    /// On a hidden widget at the next show.
    virtual void zoomToFit();
    virtual void setWheelZoomEnabled(bool enabled);
    virtual void setZoomRange(double min, double max);
    virtual void setZoom(double zoom);
    virtual void setDragEnabled(bool enabled);
    virtual std::pair<double, double> getViewScale() const;
    virtual std::pair<double, double> getImageScale() const;
    /// In scene coordinates.
    virtual QRectF getImageRect() const;
    /// Image, objects and whatever else was put into the scene.
    virtual void clear();
    /// Adding twice adds once.
    virtual void addGIObject(GIObjectPtr object);
    virtual void removeGIObject(GIObjectPtr object);
    virtual void clearGIObjects();

    double getZoom() const { return m_zoom; }
    double getMinZoom() const { return m_minZoom; }
    double getMaxZoom() const { return m_maxZoom; }
    const ConstImagePtr& getImage() const { return m_image; }
    const QList<GIObjectPtr>& getGIObjects() const { return m_giObjects; }

public slots:
    void startDragging();
    void stopDragging();

signals:
    void imageSet(kelp::ConstImagePtr image);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void showEvent(QShowEvent* event) override;

    /// From then on nobody but the viewer may delete the item.
    void guard(QGraphicsItem* item);
    void unguard(QGraphicsItem* item);
    /// Into the scene, guarded.
    void putItem(QGraphicsItem* item);
    /// Out of the scene and free of the guard; nobody's until its owner deletes it.
    void takeItem(QGraphicsItem* item);

    using MouseHandler = void (GIObject::*)(const QPointF&);
    bool isMousePressed() const { return m_mousePressed; }

private slots:
    /// Prints and throws kelp::WatchdogException.
    void assertNoDeletion();

private:
    void tellActiveObjects(MouseHandler handler, const QMouseEvent* event);

    ConstImagePtr m_image;
    QGraphicsPixmapItem* m_pixmapItem = nullptr;
    double m_spacingX = 1.0;
    double m_spacingY = 1.0;
    double m_zoom = 1.0;
    double m_minZoom = 0.1;
    double m_maxZoom = 10.0;
    bool m_wheelZoomEnabled = false;
    bool m_fitOnShow = false;
    bool m_dragEnabled = false;
    bool m_mousePressed = false;
    bool m_dragging = false;
    QPoint m_lastMousePosition;
    QList<GIObjectPtr> m_giObjects;
};

} // namespace kelp
