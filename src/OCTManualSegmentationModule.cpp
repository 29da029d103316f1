#include "OCTManualSegmentationModule.h"

#include "OCTScanControlWidget.h"
#include "OCTSegmentationEditorWidget.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "src/OCTManualSegmentationModule";

} // namespace

OCTManualSegmentationModule::OCTManualSegmentationModule(ActiveDataItems* activeDataItems,
                                                         const QString& name)
    : OCTModule(name, activeDataItems), m_mainWidget(new QWidget)
{
    auto* const columns = new QHBoxLayout(m_mainWidget);
    auto* const view = new QWidget;
    auto* const box = new QVBoxLayout(view);
    box->setContentsMargins(0, 0, 0, 0);
    columns->addWidget(m_controlWidget);
    columns->addWidget(view, 1);

    const bool done =
        step("Initializing the viewer failed:\n", "Error Initializing the viewer", [&] {
            m_segmentationViewer = new OCTSegmentationEditorWidget(view);
            m_segmentationViewer->initViewer();
        });
    if (!done) {
        Trace() << "OCTManualSegmentationModule constructor: "
                << "error initializing the viewer";
    }
    box->addWidget(m_segmentationViewer, 1);
    box->addWidget(makeNextStepLabel());

    const auto* const panel = m_controlWidget.data();
    auto* const editor = m_segmentationViewer.data();
    KELP_CONNECT(sourcePath,
                 connect(panel, SIGNAL(bScanSelected(int)), editor, SIGNAL(setActiveSlice(int))));
    KELP_CONNECT(sourcePath,
                 connect(panel, SIGNAL(aScanSelected(int)), editor, SIGNAL(setYHintLine(int))));
    KELP_CONNECT(sourcePath, connect(editor, SIGNAL(activeSliceChanged(int)), this,
                                     SLOT(followActiveSlice(int))));
    KELP_CONNECT(sourcePath,
                 connect(editor, SIGNAL(segmentationEdited()), this, SLOT(segmentationChanged())));
    setHintTarget(m_segmentationViewer);
}

OCTManualSegmentationModule::~OCTManualSegmentationModule()
{
    delete m_mainWidget;
    delete m_controlWidget;
}

void OCTManualSegmentationModule::setOCTScan(OCTScanPtr scan)
{
    Trace() << "OCTManualSegmentationModule::setOCTScan()";
    const bool done = step("Setting the segmentation failed:\n", "Error Setting the OCT",
                           [&] { m_segmentationViewer->setOCTScan(scan); });
    if (!done) {
        Trace() << "OCTManualSegmentationModule::setOCTScan: "
                << "error setting the OCT in the viewer";
    }
}

void OCTManualSegmentationModule::setOCTScanSegmentation(OCTScanSegPtr segmentation)
{
    Trace() << "OCTManualSegmentationModule::setOCTScanSegmentation()";
    if (!segmentation) {
        Trace() << "OCTManualSegmentationModule::setOCTScanSegmentation: octSeg is null";
        return;
    }
    const OCTScanPtr scan = segmentation->getOCT();
    if (!scan) {
        Trace() << "OCTManualSegmentationModule::setOCTScanSegmentation: oct is null";
        return;
    }
    if (!scan->isLoaded()) {
        Trace() << "OCTManualSegmentationModule::setOCTScanSegmentation: oct is not loaded";
    }
    const bool done = step("Setting the segmentation failed:\n", "Error Setting the Segmentation",
                           [&] { m_segmentationViewer->setSegmentation(segmentation); });
    if (!done) {
        Trace() << "OCTManualSegmentationModule::setOCTScanSegmentation: "
                << "error setting the segmentation in the viewer";
    }
}

void OCTManualSegmentationModule::clearOCT()
{
    Trace() << "OCTManualSegmentationModule::clearOCT()";
    const bool done =
        step("Removing the OCT from the viewer failed:\n", "Error Removing the OCT from the Viewer",
             [this] { m_segmentationViewer->clearOCT(); });
    if (!done) {
        Trace() << "OCTManualSegmentationModule::clearOCT: "
                << "error removing the OCT from the viewer";
    }
}

QString OCTManualSegmentationModule::nextStep() const
{
    return m_octScanSegmentation
               ? QString()
               : QStringLiteral("Select a segmentation of this scan to correct its layers.");
}

} // namespace kelp::oct

#include "moc_OCTManualSegmentationModule.cpp"
