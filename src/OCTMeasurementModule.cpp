#include "OCTMeasurementModule.h"

#include "MeasurementWidget.h"
#include "OCTMeasurementViewer.h"
#include "OCTScanControlWidget.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QHBoxLayout>

namespace kelp::oct {

OCTMeasurementModule::OCTMeasurementModule(ActiveDataItems* activeDataItems, const QString& name)
    : OCTModule(name, activeDataItems), m_mainWidget(new QWidget)
{
    auto* const columns = new QHBoxLayout(m_mainWidget);
    columns->addWidget(m_controlWidget);
    step("Creating the measurement widget failed:\n", "Error Creating the Measurement Widget", [&] {
        m_measurementWidget = new MeasurementWidget;
        columns->addWidget(m_measurementWidget, 1);
        setHintTarget(m_measurementWidget->getViewer());
    });
}

OCTMeasurementModule::~OCTMeasurementModule()
{
    delete m_mainWidget;
    delete m_controlWidget;
}

MeasurementWidget& OCTMeasurementModule::measurementWidget() const
{
    check(!m_measurementWidget.isNull(),
          {"src/OCTMeasurementModule", "kelp::oct::OCTMeasurementModule::measurementWidget"},
          "There is no measurement widget.");
    return *m_measurementWidget;
}

void OCTMeasurementModule::setOCTScan(OCTScanPtr scan)
{
    Trace() << "OCTMeasurementModule::setOCTScan";
    step("Setting the OCT failed:\n", "Error Setting the OCT in the viewer",
         [&] { measurementWidget().setOCT(scan); });
}

void OCTMeasurementModule::setOCTScanSegmentation(OCTScanSegPtr segmentation)
{
    Trace() << "OCTMeasurementModule::setOCTScanSegmentation";
    if (!segmentation) {
        Trace() << "OCTMeasurementModule::setOCTScanSegmentation: OCT segmentation is null";
        return;
    }
    const OCTScanPtr scan = segmentation->getOCT();
    if (!scan) {
        Trace() << "OCTMeasurementModule::setOCTScanSegmentation: OCT is null";
        return;
    }
    step("Loading the OCT failed:\n", "Error loading the OCT", [&] { scan->ensureLoaded(); });
    step("Setting the segmentation failed:\n", "Error Setting the segmentation in the viewer",
         [&] { measurementWidget().setSegmentation(segmentation); });
}

void OCTMeasurementModule::clearOCT()
{
    Trace() << "OCTMeasurementModule::clearOCT()";
    step("Removing the OCT from the viewer failed:\n", "Error Removing the OCT from the viewer",
         [this] { measurementWidget().clearOCT(); });
}

} // namespace kelp::oct

#include "moc_OCTMeasurementModule.cpp"
