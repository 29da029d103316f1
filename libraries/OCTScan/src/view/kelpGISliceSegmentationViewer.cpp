#include "kelpGISliceSegmentationViewer.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWheelEvent>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr kelp::Place setOCTPlace{"libraries/OCTScan/src/view/kelpGISliceSegmentationViewer",
                                  "kelp::oct::GISliceSegmentationViewer::setOCT"};
/// Of the page keys.
constexpr int slicesPerPage = 10;

/// Where the user is about to type, the keyboard stays.
bool isBeingTypedIn(const QWidget* widget)
{
    return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget);
}

} // namespace

GISliceSegmentationViewer::GISliceSegmentationViewer(QWidget* parent) : GISliceViewer(parent)
{
    // Hundreds of overlays of which a dozen is visible: keeping a search tree of them up to date
    // costs more than it saves.
    scene()->setItemIndexMethod(QGraphicsScene::NoIndex);
}

void GISliceSegmentationViewer::setOCT(const OCTScanPtr& scan)
{
    kelp::check(!scan.isNull(), setOCTPlace, "OCT scan is null.");
    scan->ensureLoaded();
    clearOCT();
    setSlices(scan->getBScanImages());
    setActiveSlice(m_currentImgIndex);
    zoomToFit();
}

void GISliceSegmentationViewer::clearOCT()
{
    removeSegmentation();
    m_segmentation = OCTScanSegPtr();
    m_layerVisibility.clear();
    removeSlices();
    clear();
}

void GISliceSegmentationViewer::setSegmentation(const OCTScanSegPtr& segmentation)
{
    removeSegmentation();
    m_segmentation = segmentation;
    if (m_segmentation.isNull()) {
        kelp::Trace() << "no OCTScanSegmentation!";
        return;
    }
    const QList<LayerNamePtr> names = m_segmentation->getAllLayerNames();
    for (const LayerNamePtr& name : names) {
        m_layerVisibility[name] = true;
    }
    for (int bScan = 0; bScan < m_segmentation->getNrOfBScans(); ++bScan) {
        addLayersOfBScan(bScan);
    }
    refresh();
}

void GISliceSegmentationViewer::addLayersOfBScan(int bScan)
{
    const BScanSegmentationPtr segmentation = m_segmentation->getBScanSegmentation(bScan);
    if (segmentation.isNull()) {
        kelp::Trace() << "bscan segmentaion is null!";
        return;
    }
    const QList<BScanSegmentationLayerPtr> layers = segmentation->getAllLayers();
    if (layers.isEmpty()) {
        return;
    }
    const SegmentationMaskPtr mask = m_segmentation->getMask();
    const bool hasMaskRow = static_cast<unsigned>(bScan) < mask->getMaskMatrix()->rows;
    if (!isSliceValid(bScan) || m_slices[bScan].isNull() || !hasMaskRow) {
        kelp::Trace() << "GISliceSegmentationViewer::setSegmentation no image for B-scan "
                      << bScan + 1;
        return;
    }
    const std::vector<AScanRun> runs =
        unmaskedRuns(*mask->getMaskRow(static_cast<unsigned>(bScan)));
    const int aScans = m_slices[bScan]->getColumns();
    for (const BScanSegmentationLayerPtr& layer : layers) {
        if (layer->getSize() != aScans) {
            kelp::Trace() << "GISliceSegmentationViewer::setSegmentation layer "
                          << layer->getLayerName()->getIdentifier() << " of B-scan " << bScan + 1
                          << " has " << layer->getSize() << " A-scans instead of " << aScans;
        }
        addLayer(bScan, layer, runsWithin(runs, std::min(layer->getSize(), aScans)));
    }
}

void GISliceSegmentationViewer::addLayer(int bScan, const BScanSegmentationLayerPtr& layer,
                                         const std::vector<AScanRun>& runs)
{
    const ImagePtr& slice = m_slices[bScan];
    const auto spacing = slice->getSpacing();
    const double height = slice->getRows() * spacing.y;
    for (const AScanRun& run : runs) {
        const auto overlay =
            LayerSegmentationGIPtr::create(layer, run.start, run.end, spacing.y, spacing.x, height);
        overlay->hide();
        overlay->setFlag(QGraphicsItem::ItemIsSelectable, false);
        overlayMade(*overlay);
        addGIObject(overlay, bScan);
    }
}

void GISliceSegmentationViewer::overlayMade(LayerSegmentationGI&) {}

void GISliceSegmentationViewer::rebuildSegmentation()
{
    removeSegmentation();
    if (!m_segmentation.isNull()) {
        // By value, since it becomes the member that it comes from.
        setSegmentation(OCTScanSegPtr(m_segmentation));
    }
}

void GISliceSegmentationViewer::removeSegmentation()
{
    clearSliceObjects();
}

bool GISliceSegmentationViewer::isLayerVisible(const LayerNamePtr& name) const
{
    return m_layerVisibility.value(name, false);
}

LayerSegmentationGIPtr GISliceSegmentationViewer::getOverlay(int sliceIndex, int objectIndex) const
{
    return qSharedPointerDynamicCast<LayerSegmentationGI>(
        getSliceObjects(sliceIndex).value(objectIndex));
}

void GISliceSegmentationViewer::refresh()
{
    const QList<GIObjectPtr> objects = getSliceObjects(m_currentImgIndex);
    for (const GIObjectPtr& object : objects) {
        if (const auto overlay = qSharedPointerDynamicCast<LayerSegmentationGI>(object)) {
            overlay->setVisible(isLayerVisible(overlay->getLayer()->getLayerName()));
        }
    }
    viewport()->update();
}

void GISliceSegmentationViewer::setActiveSlice(int index)
{
    GISliceViewer::setActiveSlice(index);
    refresh();
}

void GISliceSegmentationViewer::layerVisibilityChanged(LayerNamePtr layerName, bool visible)
{
    m_layerVisibility[layerName] = visible;
    for (int slice = 0; slice < m_sliceObjects.size(); ++slice) {
        for (const GIObjectPtr& object : qAsConst(m_sliceObjects[slice])) {
            const auto overlay = qSharedPointerDynamicCast<LayerSegmentationGI>(object);
            if (overlay.isNull() || overlay->getLayer()->getLayerName() != layerName) {
                continue;
            }
            kelp::Trace() << "setting layer visibility of " << layerName->getIdentifier() << " to "
                          << visible;
            if (slice == m_currentImgIndex) {
                overlay->setVisible(visible);
            }
        }
    }
    refresh();
}

void GISliceSegmentationViewer::page(int slices)
{
    if (!m_slices.isEmpty()) {
        pageTo(std::min(std::max(m_currentImgIndex + slices, 0), m_slices.size() - 1));
    }
}

void GISliceSegmentationViewer::pageTo(int index)
{
    if (isSliceValid(index) && index != m_currentImgIndex) {
        setActiveSlice(index);
    }
}

void GISliceSegmentationViewer::keyPressEvent(QKeyEvent* event)
{
    // With these the keys scroll, or mean something to the main form, such as the next tab.
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
        GISliceViewer::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        page(-1);
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        page(1);
        break;
    case Qt::Key_PageUp:
        page(-slicesPerPage);
        break;
    case Qt::Key_PageDown:
        page(slicesPerPage);
        break;
    case Qt::Key_Home:
        pageTo(0);
        break;
    case Qt::Key_End:
        pageTo(m_slices.size() - 1);
        break;
    default:
        GISliceViewer::keyPressEvent(event);
        return;
    }
    event->accept();
}

void GISliceSegmentationViewer::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        m_wheelRest = 0;
        GISliceViewer::wheelEvent(event);
        return;
    }
    event->accept();
    // Fine wheels and touch pads turn by less than a notch at a time.
    m_wheelRest += event->angleDelta().y();
    const int notches = m_wheelRest / QWheelEvent::DefaultDeltasPerStep;
    m_wheelRest -= notches * QWheelEvent::DefaultDeltasPerStep;
    page(-notches);
}

void GISliceSegmentationViewer::enterEvent(QEvent* event)
{
    GISliceViewer::enterEvent(event);
    if (isActiveWindow() && !isBeingTypedIn(QApplication::focusWidget())) {
        setFocus(Qt::MouseFocusReason);
    }
}

} // namespace kelp::oct

#include "moc_kelpGISliceSegmentationViewer.cpp"
