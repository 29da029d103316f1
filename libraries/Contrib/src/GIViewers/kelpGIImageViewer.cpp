#include "kelpGIImageViewer.h"

#include "kelpCheck.h"
#include "kelpImageConverters.h"
#include "kelpTrace.h"

#include <QGraphicsScene>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>

namespace kelp {

namespace {

constexpr const char* sourcePath = "libraries/Contrib/src/GIViewers/kelpGIImageViewer";

/// An image that does not know its spacing is shown all the same.
double usableSpacing(double spacing)
{
    return spacing > 0.0 ? spacing : 1.0;
}

std::pair<double, double> scaleOf(const QTransform& transform)
{
    return {transform.m11(), transform.m22()};
}

} // namespace

GIImageViewer::GIImageViewer(QWidget* parent) : QGraphicsView(parent)
{
    setScene(new QGraphicsScene(this));
    scene()->setBackgroundBrush(QBrush(Qt::lightGray));
    setDragMode(QGraphicsView::NoDrag);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

GIImageViewer::~GIImageViewer()
{
    // The scene deletes what is left in it: the objects of the list, which others may hold, have to
    // be out of it before.
    GIImageViewer::clearGIObjects();
    GIImageViewer::clearImage();
    scene()->clear();
}

void GIImageViewer::setImage(ConstImagePtr image, bool fit)
{
    clearImage();
    m_image = image;
    if (!m_image) {
        return;
    }
    m_pixmapItem = scene()->addPixmap(QPixmap::fromImage(ImageConverters::makeQImage(m_image)));
    guard(m_pixmapItem);

    m_spacingX = usableSpacing(m_image->getSpacing().x);
    m_spacingY = usableSpacing(m_image->getSpacing().y);
    constexpr double halfPixel = 0.5;
    m_pixmapItem->setOffset(-halfPixel, -halfPixel);
    m_pixmapItem->setZValue(-1.0);
    m_pixmapItem->setTransform(QTransform::fromScale(m_spacingX, m_spacingY));
    if (!m_dragEnabled || fit) {
        zoomToFit();
    }
    emit imageSet(m_image);
}

void GIImageViewer::clearImage()
{
    m_image.reset();
    if (!m_pixmapItem) {
        return;
    }
    takeItem(m_pixmapItem);
    delete m_pixmapItem;
    m_pixmapItem = nullptr;
}

void GIImageViewer::zoomToFit()
{
    if (!isVisible()) {
        m_fitOnShow = true;
        return;
    }
    if (!m_pixmapItem) {
        return;
    }
    fitInView(m_pixmapItem, Qt::KeepAspectRatio);
    m_zoom = getViewScale().first * std::min(m_spacingX, m_spacingY);
    m_minZoom = std::min(m_minZoom, m_zoom);
    m_maxZoom = std::max(m_maxZoom, m_zoom);
}

void GIImageViewer::setWheelZoomEnabled(bool enabled)
{
    m_wheelZoomEnabled = enabled;
}

void GIImageViewer::setZoomRange(double min, double max)
{
    m_minZoom = min;
    m_maxZoom = max;
}

void GIImageViewer::setZoom(double zoom)
{
    m_zoom = std::min(std::max(zoom, m_minZoom), m_maxZoom);
    const double pixelScale = 1.0 / std::min(m_spacingX, m_spacingY);
    setTransform(QTransform::fromScale(pixelScale, pixelScale).scale(m_zoom, m_zoom));
}

void GIImageViewer::setDragEnabled(bool enabled)
{
    m_dragEnabled = enabled;
    setDragMode(enabled ? QGraphicsView::ScrollHandDrag : QGraphicsView::NoDrag);
}

std::pair<double, double> GIImageViewer::getViewScale() const
{
    return scaleOf(transform());
}

std::pair<double, double> GIImageViewer::getImageScale() const
{
    return scaleOf(m_pixmapItem ? m_pixmapItem->transform() : QTransform());
}

QRectF GIImageViewer::getImageRect() const
{
    return m_pixmapItem ? m_pixmapItem->transform().mapRect(m_pixmapItem->boundingRect())
                        : QRectF();
}

void GIImageViewer::clear()
{
    clearImage();
    clearGIObjects();
    scene()->clear();
}

void GIImageViewer::addGIObject(GIObjectPtr object)
{
    if (m_giObjects.contains(object)) {
        return;
    }
    m_giObjects.append(object);
    putItem(object.data());
}

void GIImageViewer::removeGIObject(GIObjectPtr object)
{
    if (!m_giObjects.contains(object)) {
        return;
    }
    takeItem(object.data());
    m_giObjects.removeAll(object);
}

void GIImageViewer::clearGIObjects()
{
    for (const GIObjectPtr& object : qAsConst(m_giObjects)) {
        takeItem(object.data());
    }
    m_giObjects.clear();
}

void GIImageViewer::startDragging()
{
    m_dragging = false;
}

void GIImageViewer::stopDragging()
{
    m_dragging = false;
}

void GIImageViewer::mousePressEvent(QMouseEvent* event)
{
    QGraphicsView::mousePressEvent(event);
    m_lastMousePosition = event->pos();
    m_mousePressed = true;
    tellActiveObjects(&GIObject::mouseDown, event);
}

void GIImageViewer::mouseMoveEvent(QMouseEvent* event)
{
    QGraphicsView::mouseMoveEvent(event);
    m_lastMousePosition = event->pos();
    if (m_mousePressed && isInteractive()) {
        tellActiveObjects(&GIObject::mouseMove, event);
    }
}

void GIImageViewer::mouseReleaseEvent(QMouseEvent* event)
{
    QGraphicsView::mouseReleaseEvent(event);
    tellActiveObjects(&GIObject::mouseUp, event);
    m_mousePressed = false;
}

void GIImageViewer::tellActiveObjects(MouseHandler handler, const QMouseEvent* event)
{
    const QPointF point = mapToScene(event->pos());
    // What an object does may change the list.
    const QList<GIObjectPtr> objects = m_giObjects;
    for (const GIObjectPtr& object : objects) {
        if (object->isActiveObject()) {
            (object.data()->*handler)(point);
        }
    }
}

void GIImageViewer::wheelEvent(QWheelEvent* event)
{
    // The base class would scroll.
    if (!m_wheelZoomEnabled) {
        return;
    }
    event->accept();
    constexpr double deltaOfDoubling = 500.0;
    const ViewportAnchor anchor = transformationAnchor();
    setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
    setZoom(m_zoom + event->angleDelta().y() * m_zoom / deltaOfDoubling);
    setTransformationAnchor(anchor);
}

void GIImageViewer::showEvent(QShowEvent* event)
{
    QGraphicsView::showEvent(event);
    if (m_fitOnShow) {
        m_fitOnShow = false;
        zoomToFit();
    }
}

void GIImageViewer::guard(QGraphicsItem* item)
{
    auto* const dontDelete = new DeletionGuardGO(item);
    KELP_CONNECT(sourcePath,
                 connect(dontDelete, SIGNAL(destroyed()), this, SLOT(assertNoDeletion())));
}

void GIImageViewer::unguard(QGraphicsItem* item)
{
    const QList<QGraphicsItem*> children = item->childItems();
    for (QGraphicsItem* const child : children) {
        if (auto* const guardItem = dynamic_cast<DeletionGuardGO*>(child)) {
            disconnect(guardItem, SIGNAL(destroyed()), this, SLOT(assertNoDeletion()));
            delete guardItem;
        }
    }
}

void GIImageViewer::putItem(QGraphicsItem* item)
{
    guard(item);
    scene()->addItem(item);
}

void GIImageViewer::takeItem(QGraphicsItem* item)
{
    unguard(item);
    if (item->scene() == scene()) {
        scene()->removeItem(item);
    }
}

void GIImageViewer::assertNoDeletion()
{
    // Comes from a destructor, which no exception can leave: the program ends here with the text of
    // the failure, since the list would hold a pointer to nothing.
    checkConnected(false,
                   "false && \"You are not allowed to delete this object, it's creation and "
                   "deletion is managed by the viewer!\"",
                   sourcePath, __LINE__);
}

} // namespace kelp

#include "moc_kelpGIImageViewer.cpp"
