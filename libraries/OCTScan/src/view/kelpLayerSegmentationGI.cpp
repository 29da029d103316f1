#include "kelpLayerSegmentationGI.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QGraphicsDropShadowEffect>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/kelpLayerSegmentationGI";
constexpr kelp::Place constructorPlace{sourcePath,
                                       "kelp::oct::LayerSegmentationGI::LayerSegmentationGI"};
constexpr kelp::Place layerChangedPlace{sourcePath,
                                        "kelp::oct::LayerSegmentationGI::bScanLayerChanged"};

void checkArguments(const BScanSegmentationLayerPtr& layer, int start, int end,
                    double axialResolution)
{
    kelp::check(!layer.isNull(), constructorPlace, "BScan segmentation layer is null.");
    kelp::check(axialResolution > 0.0, constructorPlace, "Axial resolution is too small.");
    kelp::check(end > start, constructorPlace,
                QStringLiteral("Range is from %1 to %2, this is <= 0").arg(start).arg(end));
    kelp::check(!layer->getLayerName().isNull(), constructorPlace,
                "BScan segmentation layer name is null.");
    kelp::check(end < layer->getSize(), constructorPlace, "Upper range is out of bounds.");
    kelp::check(end >= 0, constructorPlace, "Upper range is negative.");
    kelp::check(start >= 0, constructorPlace, "Lower range is negative.");
}

/// At the centres of the pixels. The base class is built from them, so the arguments are checked
/// here.
QList<Vector2d> overlayPoints(const BScanSegmentationLayerPtr& layer, int start, int end,
                              double axialResolution, double lateralResolution)
{
    checkArguments(layer, start, end, axialResolution);
    constexpr double half = 0.5;
    const BScanSegmentationLayer::LayerData& positions = layer->layerData();
    QList<Vector2d> points;
    points.reserve(end - start);
    for (int i = start; i < end; ++i) {
        const double row = positions[static_cast<std::size_t>(i)];
        points.append({(i + half) * lateralResolution, (row + half) * axialResolution});
    }
    return points;
}

} // namespace

LayerSegmentationGI::LayerSegmentationGI(BScanSegmentationLayerPtr layer, int start, int end,
                                         double axialResolution, double lateralResolution,
                                         double maxY)
    : GIVector2DList(overlayPoints(layer, start, end, axialResolution, lateralResolution)),
      m_lateralResolution(lateralResolution), m_axialResolution(axialResolution), m_maxY(maxY),
      m_layer(std::move(layer)), m_start(start), m_end(end)
{
    setColor(m_layer->getLayerName()->getColor());
    resetPenWidth();
    connectLayer();
}

void LayerSegmentationGI::connectLayer()
{
    BScanSegmentationLayer* const layer = m_layer.data();
    // Direct, since a layer that a segmentation step has made belongs to the step's thread: an edit
    // would reach it some time later, or never once that thread has ended.
    KELP_CONNECT(sourcePath,
                 connect(this, SIGNAL(changedLayerSegmentationGI(int, int)), layer,
                         SLOT(changedLayerSegmentationGI(int, int)), Qt::DirectConnection));
    KELP_CONNECT(sourcePath,
                 connect(this, SIGNAL(changedLayerSegmentationGI(QList<int>, QList<int>)), layer,
                         SLOT(changedLayerSegmentationGI(QList<int>, QList<int>)),
                         Qt::DirectConnection));
    KELP_CONNECT(sourcePath, connect(layer, SIGNAL(bScanLayerChanged(int, int)), this,
                                     SLOT(bScanLayerChanged(int, int)), Qt::DirectConnection));
    KELP_CONNECT(sourcePath,
                 connect(layer, SIGNAL(bScanLayerChanged(QList<int>, QList<int>)), this,
                         SLOT(bScanLayerChanged(QList<int>, QList<int>)), Qt::DirectConnection));
    KELP_CONNECT(sourcePath, connect(this, SIGNAL(activated()), layer, SIGNAL(activated()),
                                     Qt::DirectConnection));
    KELP_CONNECT(sourcePath, connect(this, SIGNAL(deactivated()), layer, SIGNAL(deactivated()),
                                     Qt::DirectConnection));
}

void LayerSegmentationGI::setActive(bool active)
{
    GIVector2DList::setActive(active);
    if (active) {
        setColor(QColor(QStringLiteral("white")));
        emit activated();
    } else {
        setColor(m_layer->getLayerName()->getColor());
        emit deactivated();
    }
}

void LayerSegmentationGI::deactivate()
{
    setActive(false);
}

void LayerSegmentationGI::highlight()
{
    constexpr double penWidth = 0.02;
    constexpr double blurRadius = 10.0;
    setPenWidth(penWidth);
    auto* const shadow = new QGraphicsDropShadowEffect;
    shadow->setColor(QColor(QStringLiteral("red")));
    shadow->setBlurRadius(blurRadius);
    shadow->setOffset(0.0, 1.0);
    setGraphicsEffect(shadow);
}

void LayerSegmentationGI::removeHighlight()
{
    setGraphicsEffect(nullptr);
    resetPenWidth();
}

double LayerSegmentationGI::distanceTo(const QPointF& point) const
{
    return PolylineEdit::distance(m_points, point);
}

void LayerSegmentationGI::mouseDown(const QPointF& point)
{
    if (m_active) {
        changeSegmentation(point);
        m_lastMousePoint = point;
    }
}

void LayerSegmentationGI::mouseMove(const QPointF& point)
{
    if (m_active) {
        changeSegmentationBetween(m_lastMousePoint, point);
        m_lastMousePoint = point;
    }
}

void LayerSegmentationGI::bScanLayerChanged(int aScanIndex, int newValue)
{
    bScanLayerChanged(QList<int>{aScanIndex}, QList<int>{newValue});
}

void LayerSegmentationGI::bScanLayerChanged(QList<int> aScanIndices, QList<int> newValues)
{
    kelp::check(aScanIndices.size() == newValues.size(), layerChangedPlace,
                "Mismatch between AScan and new values size.");
    for (int i = 0; i < aScanIndices.size() && !m_points.isEmpty(); ++i) {
        changeSegmentation({aScanIndices[i] * m_lateralResolution + m_points.first().x,
                            newValues[i] * m_axialResolution});
    }
}

void LayerSegmentationGI::changeSegmentation(const QPointF& point)
{
    const PolylineEdit edit({m_lateralResolution, m_axialResolution, m_maxY});
    apply({edit.click(m_points, point)});
}

void LayerSegmentationGI::changeSegmentationBetween(const QPointF& first, const QPointF& second)
{
    const PolylineEdit edit({m_lateralResolution, m_axialResolution, m_maxY});
    const auto changes = edit.drag(m_points, first, second);
    if (!changes) {
        kelp::Trace() << "out of bounds";
    } else if (!changes->empty()) {
        apply(*changes);
    }
}

void LayerSegmentationGI::apply(const std::vector<PolylineChange>& changes)
{
    // One copy of the path for all changes: it detaches at the first of them only.
    QPainterPath path = m_pathItem->path();
    for (const PolylineChange& change : changes) {
        Vector2d& point = m_points[change.index];
        point.y = change.y;
        path.setElementPositionAt(change.index, point.x, point.y);
        emit changedLayerSegmentationGI(m_start + change.index, change.position);
    }
    prepareGeometryChange();
    m_pathItem->setPath(path);
    update();
}

} // namespace kelp::oct

#include "moc_kelpLayerSegmentationGI.cpp"
