#include "OCTMeasurementViewer.h"

#include "EnfaceMap.h"
#include "EtdrsGrid.h"
#include "LayerUtils.h"
#include "kelpCheck.h"
#include "kelpImageConverters.h"
#include "kelpTrace.h"

#include <QMouseEvent>

#include <cmath>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTMeasurementViewer";

// Between the localizer at -1 and the hover ellipse at 10.
constexpr double mapZ = 0.0;
constexpr double hoverZ = 10.0;
constexpr double hoverPenMillimetres = 0.02;

// The dark ground under a scan that has no localizer.
constexpr double groundSpacing = 0.02;
constexpr double groundMargin = 0.5;
constexpr int groundLargestPixels = 2048;

/// From the origin of the localizer's coordinates to behind the last A-scan.
ImagePtr makeGround(const OCTScan& scan)
{
    QPointF end;
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        for (const Vector2d& place : scan.getBScan(static_cast<unsigned>(i))->getAScanPositions()) {
            end = {std::max(end.x(), place.x), std::max(end.y(), place.y)};
        }
    }
    const auto pixels = [](double millimetres) {
        return std::min(static_cast<int>((millimetres + groundMargin) / groundSpacing),
                        groundLargestPixels);
    };
    return Image::create(MonoUInt8, {pixels(end.x()), pixels(end.y()), 1},
                         {groundSpacing, groundSpacing, 1.0});
}

bool isApart(double a, double b)
{
    constexpr double tolerance = 1e-9;
    return std::abs(a - b) > tolerance;
}

} // namespace

OCTMeasurementViewer::OCTMeasurementViewer(QWidget* parent) : GIImageViewer(parent)
{
    setObjectName(QStringLiteral("measurementViewer"));
    setContextMenuPolicy(Qt::CustomContextMenu);
    KELP_CONNECT(sourcePath, connect(this, SIGNAL(customContextMenuRequested(const QPoint&)), this,
                                     SLOT(showRightClickMenu(const QPoint&))));
    render();
}

OCTMeasurementViewer::~OCTMeasurementViewer() = default;

void OCTMeasurementViewer::setOCT(const OCTScanPtr& scan)
{
    check(!scan.isNull(), {sourcePath, "kelp::oct::OCTMeasurementViewer::setOCT"},
          "OCT scan is null.");
    if (!scan->isLoaded()) {
        // Whoever tried to load it has told why.
        clearOCT();
        return;
    }
    m_scan = scan;
    if (!m_segmentation.isNull() && m_segmentation->getOCT() != scan) {
        m_segmentation = nullptr;
    }
    const auto localizer = scan->getLocalizer();
    setImage(localizer ? localizer->getImage() : makeGround(*scan), true);
    // Parts of the grid beyond the image would otherwise make the scene grow and the view scroll
    // under a fovea that is being dragged.
    scene()->setSceneRect(getImageRect());
    m_fovea = CoordOnLocalizer(scan->getCenter());
    render();
}

void OCTMeasurementViewer::setSegmentation(const OCTScanSegPtr& segmentation)
{
    check(!segmentation.isNull(), {sourcePath, "kelp::oct::OCTMeasurementViewer::setSegmentation"},
          "OCT scan segmentation is null.");
    m_segmentation = segmentation;
    const FoveaPosition fovea = segmentation->getFoveaPosition();
    if (fovea.isSet) {
        Trace() << "OCTMeasurementViewer::setSegmentation: have fovea position";
        m_fovea = fovea.position;
    } else if (m_scan) {
        m_fovea = CoordOnLocalizer(m_scan->getCenter());
    }
    for (LayerNamePtr* const name : {&m_topLayerName, &m_bottomLayerName}) {
        if (!hasLayer(*segmentation, *name)) {
            name->reset();
        }
    }
    render();
}

void OCTMeasurementViewer::clearOCT()
{
    m_scan = nullptr;
    m_segmentation = nullptr;
    m_topLayerName.reset();
    m_bottomLayerName.reset();
    m_fovea = {};
    render();
    clearImage();
    scene()->setSceneRect({});
}

void OCTMeasurementViewer::clear()
{
    // The base deletes all items of the scene.
    clearOCT();
    GIImageViewer::clear();
}

void OCTMeasurementViewer::setTopLayerName(const LayerNamePtr& name)
{
    check(!name.isNull(), {sourcePath, "kelp::oct::OCTMeasurementViewer::setTopLayerName"},
          "Layer name is null.");
    m_topLayerName = name;
    render();
}

void OCTMeasurementViewer::setBottomLayerName(const LayerNamePtr& name)
{
    check(!name.isNull(), {sourcePath, "kelp::oct::OCTMeasurementViewer::setBottomLayerName"},
          "Layer name is null.");
    m_bottomLayerName = name;
    render();
}

void OCTMeasurementViewer::setTransferFunction(ColorMaps map)
{
    m_colorMap = map;
    render();
}

void OCTMeasurementViewer::setTransferRange(double low, double high)
{
    check(low < high, {sourcePath, "kelp::oct::OCTMeasurementViewer::setTransferRange"},
          "The input range is empty.");
    m_transferLow = low;
    m_transferHigh = high;
    render();
}

void OCTMeasurementViewer::setTransferAlpha(double alpha)
{
    m_transferAlpha = alpha;
    render();
}

void OCTMeasurementViewer::updateMap()
{
    render();
}

int OCTMeasurementViewer::getSector(const CoordOnLocalizer& position) const
{
    if (m_segmentation.isNull() || m_scan.isNull()) {
        return static_cast<int>(EtdrsSector::Outside);
    }
    return static_cast<int>(etdrsSector(position, m_fovea, isRightEye(*m_scan)));
}

void OCTMeasurementViewer::render()
{
    removeHoverEllipse();
    // The grid first: it is there even where the surfaces of the map are not.
    drawGrid();
    renderMap();
}

void OCTMeasurementViewer::renderMap()
{
    removeMap();
    if (m_scan.isNull() || m_segmentation.isNull() || !m_topLayerName || !m_bottomLayerName ||
        m_segmentation->getOCT() != m_scan || !isVolumeScan(*m_scan)) {
        return;
    }
    const ImagePtr map = LayerUtils::RenderThicknessImage(
        m_segmentation->getVolumeLayer(m_topLayerName),
        m_segmentation->getVolumeLayer(m_bottomLayerName),
        thicknessColors(m_colorMap, m_transferLow, m_transferHigh, m_scan->getVolumeSpacing().y),
        m_segmentation->getMask()->getMaskMatrix(), m_transferAlpha);
    const auto transform = mapToLocalizer(*m_scan);
    if (!transform) {
        return;
    }
    m_mapItem = new QGraphicsPixmapItem(QPixmap::fromImage(ImageConverters::makeQImage(map)));
    m_mapItem->setTransformationMode(Qt::SmoothTransformation);
    m_mapItem->setTransform(*transform);
    m_mapItem->setZValue(mapZ);
    scene()->addItem(m_mapItem);
}

void OCTMeasurementViewer::removeMap()
{
    delete m_mapItem;
    m_mapItem = nullptr;
}

void OCTMeasurementViewer::setFovea(const CoordOnLocalizer& position)
{
    m_fovea = position;
    drawGrid();
}

void OCTMeasurementViewer::mousePressEvent(QMouseEvent*)
{
    m_foveaAtPress = m_fovea;
}

void OCTMeasurementViewer::mouseMoveEvent(QMouseEvent* event)
{
    removeHoverEllipse();
    if (m_scan.isNull()) {
        return;
    }
    const QPointF point = mapToScene(event->pos());
    const CoordOnLocalizer position(point.x(), point.y());
    if ((position.toVector() - m_fovea.toVector()).squaredLength() <= m_grabRadiusSquared) {
        showHoverEllipse();
    }
    // A press anywhere is enough: the fovea jumps to the mouse.
    if (event->buttons() & Qt::LeftButton) {
        setFovea(position);
    }
}

void OCTMeasurementViewer::mouseReleaseEvent(QMouseEvent*)
{
    if (isApart(m_fovea.x, m_foveaAtPress.x) || isApart(m_fovea.y, m_foveaAtPress.y)) {
        emit foveaMoved(m_fovea);
    }
}

void OCTMeasurementViewer::leaveEvent(QEvent* event)
{
    removeHoverEllipse();
    GIImageViewer::leaveEvent(event);
}

void OCTMeasurementViewer::resizeEvent(QResizeEvent* event)
{
    GIImageViewer::resizeEvent(event);
    zoomToFit();
}

void OCTMeasurementViewer::showHoverEllipse()
{
    const double radius = m_handleDiameter / 2.0;
    m_hoverEllipse = new QGraphicsEllipseItem(m_fovea.x - radius, m_fovea.y - radius,
                                              m_handleDiameter, m_handleDiameter);
    m_hoverEllipse->setZValue(hoverZ);
    m_hoverEllipse->setPen(QPen(QColor(Qt::green), hoverPenMillimetres));
    scene()->addItem(m_hoverEllipse);
}

void OCTMeasurementViewer::removeHoverEllipse()
{
    delete m_hoverEllipse;
    m_hoverEllipse = nullptr;
}

} // namespace kelp::oct

#include "moc_OCTMeasurementViewer.cpp"
