#include "kelpGISliceViewer.h"

#include "kelpImageTools.h"

#include <QGraphicsScene>
#include <QMouseEvent>

#include <cmath>

namespace kelp {

namespace {

constexpr double hintLineReach = 10000.0;

/// Half the length, ties to even.
int middleOf(int length)
{
    constexpr double half = 0.5;
    return length > 0 ? static_cast<int>(std::nearbyint(length * half)) : -1;
}

} // namespace

GISliceViewer::GISliceViewer(QWidget* parent) : GIImageViewer(parent)
{
    constexpr QSize minimumSize(600, 400);
    constexpr double minZoom = 0.1;
    constexpr double maxZoom = 10.0;
    setMinimumSize(minimumSize);
    setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::MinimumExpanding);
    GIImageViewer::setZoomRange(minZoom, maxZoom);
    m_xHintLine =
        GIVector2DListPtr::create(QList<Vector2d>{{-hintLineReach, 0.0}, {hintLineReach, 0.0}});
    m_yHintLine =
        GIVector2DListPtr::create(QList<Vector2d>{{0.0, -hintLineReach}, {0.0, hintLineReach}});
    m_xHintLine->hide();
    m_yHintLine->hide();
    putHintLines();
}

GISliceViewer::~GISliceViewer()
{
    GISliceViewer::clearSliceObjects();
    takeHintLines();
}

void GISliceViewer::setSlices(QList<ImagePtr> slices)
{
    clearSliceObjects();
    m_slices = slices;
    m_currentImgIndex = middleOf(m_slices.size());
    m_sliceObjects.fill({}, m_slices.size());
}

void GISliceViewer::setVolume(ImagePtr volume)
{
    QList<ImagePtr> slices;
    const QList<ConstImagePtr> cut = ImageTools::slice(volume);
    for (const ConstImagePtr& slice : cut) {
        // Made just now, and nobody else's.
        slices.append(qSharedPointerConstCast<Image>(slice));
    }
    setSlices(slices);
}

void GISliceViewer::removeSlices()
{
    setActiveSlice(-1);
    setSlices({});
}

void GISliceViewer::addGIObject(GIObjectPtr object, int sliceIndex)
{
    if (!isSliceValid(sliceIndex) || m_sliceObjects[sliceIndex].contains(object)) {
        return;
    }
    m_sliceObjects[sliceIndex].append(object);
    if (sliceIndex != m_currentImgIndex) {
        object->hide();
    }
    putItem(object.data());
}

void GISliceViewer::removeGIObject(GIObjectPtr object, int sliceIndex)
{
    if (!isSliceValid(sliceIndex) || !m_sliceObjects[sliceIndex].contains(object)) {
        return;
    }
    takeItem(object.data());
    m_sliceObjects[sliceIndex].removeAll(object);
}

void GISliceViewer::clearSliceObjects()
{
    for (QList<GIObjectPtr>& objects : m_sliceObjects) {
        for (const GIObjectPtr& object : qAsConst(objects)) {
            takeItem(object.data());
        }
        objects.clear();
    }
}

void GISliceViewer::clear()
{
    clearSliceObjects();
    takeHintLines();
    GIImageViewer::clear();
    putHintLines();
}

QList<GIObjectPtr> GISliceViewer::getSliceObjects(int sliceIndex) const
{
    return m_sliceObjects.value(sliceIndex);
}

void GISliceViewer::setActiveSlice(int index)
{
    clearImage();
    const QList<GIObjectPtr> leaving = getSliceObjects(m_currentImgIndex);
    for (const GIObjectPtr& object : leaving) {
        object->hide();
        object->setActive(false);
    }
    m_currentImgIndex = -1;
    if (isSliceValid(index)) {
        setImage(m_slices[index], false);
        m_currentImgIndex = index;
        const QList<GIObjectPtr> entering = getSliceObjects(index);
        for (const GIObjectPtr& object : entering) {
            object->show();
        }
    }
    m_xHintLine->setVisible(m_xHintLine->isVisible() && m_keepXHintLine);
    m_yHintLine->setVisible(m_yHintLine->isVisible() && m_keepYHintLine);
    emit activeSliceChanged(m_currentImgIndex);
}

void GISliceViewer::setXHintLine(int yImgRow)
{
    if (!isSliceValid(m_currentImgIndex)) {
        return;
    }
    constexpr double rowCentre = 0.5;
    const QRectF image = getImageRect();
    setXHintLine((yImgRow + rowCentre) * image.height() / m_slices[m_currentImgIndex]->getRows() +
                 image.top());
}

void GISliceViewer::setXHintLine(double yPos)
{
    const QRectF image = getImageRect();
    m_xHintLine->resetList({{image.left(), yPos}, {image.left() + image.width(), yPos}});
}

void GISliceViewer::setYHintLine(int xImgColumn)
{
    if (!isSliceValid(m_currentImgIndex)) {
        return;
    }
    constexpr double columnCentre = 0.5;
    const QRectF image = getImageRect();
    setYHintLine((xImgColumn + columnCentre) * image.width() /
                     m_slices[m_currentImgIndex]->getColumns() +
                 image.left());
}

void GISliceViewer::setYHintLine(double xPos)
{
    const QRectF image = getImageRect();
    m_yHintLine->resetList({{xPos, image.top()}, {xPos, image.top() + image.height()}});
    m_yHintLine->show();
}

void GISliceViewer::mousePressEvent(QMouseEvent* event)
{
    GIImageViewer::mousePressEvent(event);
    tellSliceObjects(&GIObject::mouseDown, event);
}

void GISliceViewer::mouseMoveEvent(QMouseEvent* event)
{
    GIImageViewer::mouseMoveEvent(event);
    if (isMousePressed()) {
        tellSliceObjects(&GIObject::mouseMove, event);
    }
}

void GISliceViewer::mouseReleaseEvent(QMouseEvent* event)
{
    GIImageViewer::mouseReleaseEvent(event);
    tellSliceObjects(&GIObject::mouseUp, event);
}

void GISliceViewer::tellSliceObjects(MouseHandler handler, const QMouseEvent* event)
{
    if (!isInteractive() || !isSliceValid(m_currentImgIndex)) {
        return;
    }
    const QPointF point = mapToScene(event->pos());
    // What an object does may change the lists.
    const QVector<QList<GIObjectPtr>> slices = m_sliceObjects;
    for (const QList<GIObjectPtr>& objects : slices) {
        for (const GIObjectPtr& object : objects) {
            (object.data()->*handler)(point);
        }
    }
}

void GISliceViewer::putHintLines()
{
    putItem(m_xHintLine.data());
    putItem(m_yHintLine.data());
}

void GISliceViewer::takeHintLines()
{
    takeItem(m_xHintLine.data());
    takeItem(m_yHintLine.data());
}

} // namespace kelp

#include "moc_kelpGISliceViewer.cpp"
