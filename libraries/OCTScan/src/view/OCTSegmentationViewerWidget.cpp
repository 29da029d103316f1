#include "OCTSegmentationViewerWidget.h"

#include "LayerSelectionWidget.h"
#include "kelpCheck.h"
#include "kelpGISliceSegmentationViewer.h"
#include "kelpTrace.h"

#include <QEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/OCTSegmentationViewerWidget";
constexpr kelp::Place setOCTScanPlace{sourcePath,
                                      "kelp::oct::OCTSegmentationViewerWidget::setOCTScan"};
constexpr kelp::Place setSegmentationPlace{
    sourcePath, "kelp::oct::OCTSegmentationViewerWidget::setSegmentation"};

} // namespace

OCTSegmentationViewerWidget::OCTSegmentationViewerWidget(QWidget* parent) : QWidget(parent)
{
    kelp::Trace() << "OCTSegmentationViewerWidget ctor";
    new QVBoxLayout(this);
}

void OCTSegmentationViewerWidget::initViewer()
{
    if (!m_viewer) {
        m_viewer = new GISliceSegmentationViewer(this);
        configureViewer();
    }
    m_viewer->setObjectName(QStringLiteral("segmentationViewer"));
    layout()->addWidget(m_viewer);
    m_layerSelection = new LayerSelectionWidget(this);
    m_layerSelection->setObjectName(QStringLiteral("layerSelection"));
    m_layerSelection->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    layout()->addWidget(m_layerSelection);
    KELP_CONNECT(sourcePath, connect(m_viewer, SIGNAL(activeSliceChanged(int)), this,
                                     SIGNAL(activeSliceChanged(int))));
    KELP_CONNECT(sourcePath,
                 connect(this, SIGNAL(setActiveSlice(int)), m_viewer, SLOT(setActiveSlice(int))));
    KELP_CONNECT(sourcePath,
                 connect(this, SIGNAL(setYHintLine(int)), m_viewer, SLOT(setYHintLine(int))));
    KELP_CONNECT(sourcePath,
                 connect(m_layerSelection, SIGNAL(visibilityChanged(LayerNamePtr, bool)), m_viewer,
                         SLOT(layerVisibilityChanged(LayerNamePtr, bool))));
}

void OCTSegmentationViewerWidget::configureViewer()
{
    constexpr double minZoom = 0.1;
    constexpr double maxZoom = 10.0;
    m_viewer->setDragEnabled(true);
    m_viewer->setZoomRange(minZoom, maxZoom);
    m_viewer->setWheelZoomEnabled(true);
}

void OCTSegmentationViewerWidget::setTopWidget(QWidget* widget)
{
    static_cast<QVBoxLayout*>(layout())->insertWidget(0, widget);
    m_viewerHeight = m_viewer->minimumHeight();
    widget->installEventFilter(this);
}

bool OCTSegmentationViewerWidget::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::Show || type == QEvent::Hide || type == QEvent::Resize) {
        giveRoom(*static_cast<QWidget*>(watched));
    }
    return QWidget::eventFilter(watched, event);
}

void OCTSegmentationViewerWidget::giveRoom(const QWidget& topWidget)
{
    constexpr int leastHeight = 200;
    const int taken = topWidget.isHidden() ? 0 : topWidget.height() + layout()->spacing();
    m_viewer->setMinimumHeight(std::max(leastHeight, m_viewerHeight - taken));
}

void OCTSegmentationViewerWidget::setOCTScan(OCTScanPtr octScan)
{
    kelp::check(!octScan.isNull(), setOCTScanPlace, "OCT scan is null.");
    m_viewer->setOCT(octScan);
    m_layerSelection->updateLayers(OCTScanSegPtr());
}

void OCTSegmentationViewerWidget::setSegmentation(OCTScanSegPtr segmentation)
{
    kelp::check(!segmentation.isNull(), setSegmentationPlace, "OCT scan segmentation is null.");
    m_viewer->setSegmentation(segmentation);
    m_layerSelection->updateLayers(segmentation);
}

void OCTSegmentationViewerWidget::clearOCT()
{
    kelp::Trace() << "OCTSegmentationViewerWidget::clearOCT()";
    m_viewer->clearOCT();
    m_layerSelection->updateLayers(OCTScanSegPtr());
}

} // namespace kelp::oct

#include "moc_OCTSegmentationViewerWidget.cpp"
