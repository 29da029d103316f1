#include "LocalizerGraphicsViewer.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QGraphicsPathItem>
#include <QGraphicsPolygonItem>
#include <QGraphicsScene>
#include <QMouseEvent>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/LocalizerGraphicsViewer";
constexpr Place setOCTPlace{sourcePath, "kelp::oct::LocalizerGraphicsViewer::setOCT"};
/// Above the lines.
constexpr double markZ = 2.0;
constexpr double markRadius = 4.0; // pixels of the screen
constexpr double lineZ = 1.0;
/// Dense lines would hide it.
constexpr double maskZ = 1.2;
/// Where lines cross or lie close, the active one is to be seen.
constexpr double activeLineZ = 1.5;
/// Of the active line, as a share of the image's width: about two pixels in the panel.
constexpr double activeLineWidth = 0.008;

QPen hairline(const QColor& color)
{
    QPen pen(color);
    pen.setWidth(0);
    return pen;
}

QPointF toPoint(const Vector2d& position)
{
    return {position.x, position.y};
}

bool hasPattern(const OCTScan& scan, const OCTScanPattern& pattern)
{
    return *scan.getScanPattern() == pattern;
}

} // namespace

LocalizerGraphicsViewer::LocalizerGraphicsViewer(QWidget* parent) : GIImageViewer(parent) {}

LocalizerGraphicsViewer::~LocalizerGraphicsViewer() = default;

void LocalizerGraphicsViewer::setOCT(const OCTScanPtr& scan)
{
    check(!scan.isNull(), setOCTPlace, "OCT scan is null.");
    Trace() << "LocalizerGraphicsViewer::setOCT";
    clearOCT();
    m_scan = scan;
    m_finder = AScanFinder(scan);
    if (const auto localizer = scan->getLocalizer()) {
        setImage(localizer->getImage(), true);
    }
    addOutline();
    addSlicePositions();
    // Fixed, so that the view does not move with what is drawn beyond the image.
    setSceneRect(shownRect());
    zoomToFit();
}

QList<Vector2d> LocalizerGraphicsViewer::slicePosition(const BScan& bScan) const
{
    const QList<Vector2d> positions = bScan.getAScanPositions();
    if (positions.size() < 2) {
        return positions;
    }
    if (hasPattern(*m_scan, OCTScanPatternCircularBScan())) {
        return positions + QList<Vector2d>{positions.first()};
    }
    return {positions.first(), positions.last()};
}

void LocalizerGraphicsViewer::addSlicePositions()
{
    for (int i = 0; i < m_scan->getBScanCount(); ++i) {
        const auto bScan = m_scan->getBScan(static_cast<unsigned>(i));
        const auto line =
            GIVector2DListPtr::create(bScan ? slicePosition(*bScan) : QList<Vector2d>());
        line->setColor(Qt::green);
        m_slicePositionsGI.append(line);
        addGIObject(line);
    }
}

void LocalizerGraphicsViewer::addOutline()
{
    const int bScans = m_scan->getBScanCount();
    if (!hasPattern(*m_scan, OCTScanPatternVolume()) || bScans < 2) {
        return;
    }
    const auto first = m_scan->getBScan(0);
    const auto last = m_scan->getBScan(static_cast<unsigned>(bScans - 1));
    if (!first || !last || first->getNrAScans() == 0 || last->getNrAScans() == 0) {
        return;
    }
    const QPolygonF corners(
        {toPoint(first->getAScanPositions().first()), toPoint(first->getAScanPositions().last()),
         toPoint(last->getAScanPositions().last()), toPoint(last->getAScanPositions().first())});
    m_outline = scene()->addPolygon(corners, hairline(Qt::green));
}

void LocalizerGraphicsViewer::setMask(const SegmentationMaskPtr& mask)
{
    Trace() << "LocalizerGraphicsViewer::setMask";
    if (mask.isNull()) {
        Trace() << "--- mask is null!";
        return;
    }
    clearMask();
    for (const QPolygonF& polygon : mask->getPolygons()) {
        auto* const item =
            scene()->addPolygon(polygon, QPen(Qt::NoPen), QBrush(QColor(200, 0, 0, 100)));
        item->setZValue(maskZ);
        m_maskItems.append(item);
    }
}

void LocalizerGraphicsViewer::clearMask()
{
    qDeleteAll(m_maskItems);
    m_maskItems.clear();
}

void LocalizerGraphicsViewer::clearOCT()
{
    Trace() << "LocalizerGraphicsViewer::clearOCT()";
    clearMask();
    delete m_outline;
    m_outline = nullptr;
    delete m_positionMark;
    m_positionMark = nullptr;
    clearGIObjects();
    m_slicePositionsGI.clear();
    clearImage();
    m_scan = OCTScanPtr();
    m_finder = AScanFinder();
    m_activeSlice = -1;
    m_activePosition = -1;
    m_lastPicked.reset();
}

QRectF LocalizerGraphicsViewer::shownRect() const
{
    if (getImage()) {
        return getImageRect();
    }
    QRectF rect;
    for (const GIVector2DListPtr& line : m_slicePositionsGI) {
        rect |= line->childrenBoundingRect();
    }
    const double margin = 0.1 * std::max(rect.width(), rect.height());
    return rect.adjusted(-margin, -margin, margin, margin);
}

void LocalizerGraphicsViewer::zoomToFit()
{
    m_zoomedByUser = false;
    GIImageViewer::zoomToFit();
    if (getImage().isNull() && isVisible() && !m_slicePositionsGI.isEmpty()) {
        fitInView(shownRect(), Qt::KeepAspectRatio);
    }
}

void LocalizerGraphicsViewer::wheelEvent(QWheelEvent* event)
{
    const double before = getZoom();
    GIImageViewer::wheelEvent(event);
    m_zoomedByUser = m_zoomedByUser || getZoom() != before;
}

void LocalizerGraphicsViewer::showEvent(QShowEvent* event)
{
    GIImageViewer::showEvent(event);
    zoomToFit();
}

void LocalizerGraphicsViewer::resizeEvent(QResizeEvent* event)
{
    GIImageViewer::resizeEvent(event);
    if (!m_zoomedByUser) {
        zoomToFit();
    }
}

void LocalizerGraphicsViewer::setActiveSlice(int index)
{
    if (index < 0 || index >= m_slicePositionsGI.size()) {
        Trace() << "ERROR: index bigger than m_slicePositionsGI";
        return;
    }
    if (m_activeSlice >= 0) {
        m_slicePositionsGI[m_activeSlice]->setColor(Qt::green);
        m_slicePositionsGI[m_activeSlice]->resetPenWidth();
        m_slicePositionsGI[m_activeSlice]->setZValue(lineZ);
    }
    m_activeSlice = index;
    m_slicePositionsGI[index]->setColor(Qt::red);
    m_slicePositionsGI[index]->setPenWidth(activeLineWidth * sceneRect().width());
    m_slicePositionsGI[index]->setZValue(activeLineZ);
    showActivePosition();
}

void LocalizerGraphicsViewer::setActivePosition(int aScanIndex)
{
    m_activePosition = aScanIndex;
    showActivePosition();
}

void LocalizerGraphicsViewer::showActivePosition()
{
    const auto bScan = m_scan && m_activeSlice >= 0
                           ? m_scan->getBScan(static_cast<unsigned>(m_activeSlice))
                           : nullptr;
    if (!bScan || m_activePosition < 0 || m_activePosition >= bScan->getNrAScans()) {
        delete m_positionMark;
        m_positionMark = nullptr;
        return;
    }
    if (!m_positionMark) {
        QPainterPath circle;
        circle.addEllipse(QPointF(), markRadius, markRadius);
        m_positionMark = scene()->addPath(circle, QPen(QColor(Qt::yellow), 1.5));
        m_positionMark->setFlag(QGraphicsItem::ItemIgnoresTransformations);
        m_positionMark->setZValue(markZ);
    }
    m_positionMark->setPos(
        toPoint(bScan->getAScanPosition(static_cast<unsigned>(m_activePosition))));
}

void LocalizerGraphicsViewer::mousePressEvent(QMouseEvent* event)
{
    GIImageViewer::mousePressEvent(event);
    if (event->button() == Qt::LeftButton) {
        pick(event->pos(), true);
    }
}

void LocalizerGraphicsViewer::mouseMoveEvent(QMouseEvent* event)
{
    GIImageViewer::mouseMoveEvent(event);
    if (event->buttons().testFlag(Qt::LeftButton)) {
        pick(event->pos(), false);
    }
}

void LocalizerGraphicsViewer::pick(const QPoint& position, bool always)
{
    if (!m_pickingEnabled) {
        return;
    }
    const auto place = m_finder.closestTo(mapToScene(position));
    if (!place || (!always && place == m_lastPicked)) {
        return;
    }
    m_lastPicked = place;
    setActiveSlice(place->bScan);
    setActivePosition(place->aScan);
    emit bScanSelected(place->bScan);
    emit aScanSelected(place->aScan);
}

} // namespace kelp::oct

#include "moc_LocalizerGraphicsViewer.cpp"
