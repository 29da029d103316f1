#include "OCTAutoSegmentationModule.h"

#include "AppBase.h"
#include "NoticeBar.h"
#include "OCTScanControlWidget.h"
#include "OCTScanUtils.h"
#include "OCTSegmentationViewerWidget.h"
#include "SegInterface.h"
#include "SegUpdateDialog.h"
#include "SegmentationQuality.h"
#include "kelpCheck.h"
#include "kelpSettings.h"
#include "kelpTrace.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = R"(..\src\OCTAutoSegmentationModule)";
constexpr Place startSegmentTestPlace{sourcePath,
                                      "kelp::oct::OCTAutoSegmentationModule::startSegmentTest"};

// The rows of the test options that are read. The others are shown and have no effect.
constexpr int minTopMiddleRow = 0;
constexpr int maxTopMiddleRow = 1;
constexpr int expectedMiddleBottomRow = 6;
constexpr int regularizationMiddleBottomRow = 7;

constexpr const char* segmentationErrorTitle = "Segmentation Error";
constexpr const char* exportErrorTitle = "Export Error";
constexpr const char* exportingSegmentationFailed = "Exporting the OCT segmentation failed:\n";

/// Runs an exporter of several files, and names those that do not stand whole on the disk.
template <typename Exporter>
void exportFiles(const Exporter& exporter, const OCTScanSegPtr& segmentation, const QString& folder)
{
    QStringList failedFiles;
    exporter(segmentation, folder, &failedFiles);
    if (!failedFiles.isEmpty()) {
        throw IOFailure(QStringLiteral("These files could not be written:"),
                        failedFiles.join(QLatin1Char('\n')));
    }
}

} // namespace

void OCTAutoSegmentationModule::setOCTScan(OCTScanPtr scan)
{
    Trace() << "OCTAutoSegmentationModule::setOCTScan()";
    const bool done = step("Setting the OCT failed:\n", "Error Setting the OCT",
                           [&] { m_segmentationViewer->setOCTScan(scan); });
    if (!done) {
        Trace() << "OCTAutoSegmentationModule::setOCTScan: "
                << "error setting the OCT in the viewer";
    }
    Trace() << "OCTAutoSegmentationModule::setOCTScan() done";
    updateButtons();
}

void OCTAutoSegmentationModule::setOCTScanSegmentation(OCTScanSegPtr segmentation)
{
    Trace() << "OCTAutoSegmentationModule::setOCTScanSegmentation()";
    if (!segmentation) {
        Trace() << "OCTAutoSegmentationModule::setOCTScanSegmentation: octSeg is null";
        return;
    }
    if (!segmentation->getOCT()) {
        Trace() << "OCTAutoSegmentationModule::setOCTScanSegmentation: OCT is null";
        return;
    }
    const bool done = step("Setting the segmentation failed:\n", "Error Setting the Segmentation",
                           [&] { m_segmentationViewer->setSegmentation(segmentation); });
    if (!done) {
        Trace() << "OCTAutoSegmentationModule::setOCTScanSegmentation: "
                << "error setting the segmentation in the viewer";
    }
    updateButtons();
}

void OCTAutoSegmentationModule::clearOCT()
{
    Trace() << "OCTAutoSegmentationModule::clearOCT()";
    const bool done =
        step("Removing the OCT from the viewer failed:\n", "Error Removing the OCT from the Viewer",
             [this] { m_segmentationViewer->clearOCT(); });
    if (!done) {
        Trace() << "OCTAutoSegmentationModule::clearOCT: "
                << "error removing the OCT from the viewer";
    }
    updateButtons();
}

void OCTAutoSegmentationModule::startRun(const QString& lastStep)
{
    m_segInterface->resetSegmentation();
    m_lastStep = lastStep;
    m_runSegmentation = m_octScanSegmentation.data();
    runWarnings().clear();
    tellRunWarnings();
}

void OCTAutoSegmentationModule::segmentAll(SegmentationChain chain)
{
    const bool maskETDRSSectors = m_useETDRSMask->checkState() == Qt::Checked;
    const bool maskCenter = m_useCenterMask->checkState() == Qt::Checked;
    startRun(chainSteps(chain).last());
    queueChain(*m_segInterface, m_octScanSegmentation, chain, maskETDRSSectors, maskCenter);
}

void OCTAutoSegmentationModule::segmentAllNormalHuman()
{
    segmentAll(SegmentationChain::Normal);
}

void OCTAutoSegmentationModule::segmentAllDrusenHuman()
{
    segmentAll(SegmentationChain::Drusen);
}

void OCTAutoSegmentationModule::segmentAllMouse()
{
    segmentAll(SegmentationChain::Mouse);
}

float OCTAutoSegmentationModule::testValue(int row) const
{
    return m_testFields.at(row)->text().toFloat();
}

void OCTAutoSegmentationModule::startSegmentTest()
{
    step("Starting the segmentation test failed:\n", segmentationErrorTitle,
         [this] { startTestChain(); });
}

void OCTAutoSegmentationModule::startTestChain()
{
    check(!m_octScan.isNull(), startSegmentTestPlace, "OCT scan is null.");
    const auto axialMillimetres = static_cast<float>(m_octScan->getSliceSpacing().y);
    const auto axial = static_cast<float>(axialMillimetres * 1000.0);
    startRun(QStringLiteral("segmentPEFineConstant"));
    m_segInterface->segmentCoarseMinMax(m_octScanSegmentation, testValue(minTopMiddleRow) / axial,
                                        testValue(maxTopMiddleRow) / axial);
    // The mask boxes have no effect on a test.
    m_segInterface->segmentILMFine(m_octScanSegmentation, false, false);
    // The same pair stands for both distances on purpose.
    const float expected = testValue(expectedMiddleBottomRow);
    const float weight = testValue(regularizationMiddleBottomRow);
    m_segInterface->segmentPEFineConstant(m_octScanSegmentation, expected, weight, expected,
                                          weight);
}

bool OCTAutoSegmentationModule::isRunOver() const
{
    // A normal chain on a circular scan reports success before its last step, which then works on
    // the segmentation: it must be neither shown nor saved meanwhile. A step's memory is recorded
    // at its end, before it reports anything.
    const std::vector<StepStatistics> steps = m_segInterface->getStatistics();
    return steps.empty() || (steps.back().name == m_lastStep && steps.back().peakMemoryBytes > 0);
}

void OCTAutoSegmentationModule::segmentationSuccess()
{
    if (!isRunOver()) {
        return;
    }
    segmentationChanged();
    step("Setting the segmentation failed:\n", segmentationErrorTitle,
         [this] { setOCTScanSegmentation(m_octScanSegmentation); });
    step("Updating the segmentation mask failed:\n", segmentationErrorTitle,
         [this] { m_controlWidget->updateMask(); });
    noticeWarnings();
}

void OCTAutoSegmentationModule::noticeWarnings()
{
    if (!m_runSegmentation) {
        // Told already: on circular scans success comes several times.
        return;
    }
    const QStringList warnings = qualityWarnings(m_segInterface->getStatistics());
    for (const QString& warning : warnings) {
        Trace() << "OCTAutoSegmentationModule::segmentationSuccess: warning: " << warning;
    }
    runWarnings().set(m_runSegmentation.data(), warnings);
    m_runSegmentation.clear();
    tellRunWarnings();
    if (!runWarnings().isEmpty()) {
        m_notice->showNotice(runWarnings().asNotice());
    }
}

void OCTAutoSegmentationModule::tellRunWarnings()
{
    OCTModule::tellRunWarnings();
    if (runWarnings().isEmpty()) {
        m_notice->hide();
    }
}

void OCTAutoSegmentationModule::segmentationFailure(QString message)
{
    showFailure(m_mainWidget, QStringLiteral("Segmentation Failure: "), message);
    // An aborted step ends at its next look at the flag; it must not write while its result is
    // read.
    m_segInterface->resetSegmentation();
    m_runSegmentation.clear();
    segmentationChanged();
    step("Setting the segmentation failed:\n", segmentationErrorTitle,
         [this] { setOCTScanSegmentation(m_octScanSegmentation); });
}

bool OCTAutoSegmentationModule::isSegmentable() const
{
    const QString pattern = m_octScan->getScanPattern()->toString();
    return pattern == OCTScanPatternSingleBScan().toString() ||
           pattern == OCTScanPatternCircularBScan().toString() ||
           pattern == OCTScanPatternVolume().toString();
}

bool OCTAutoSegmentationModule::hasLayers() const
{
    try {
        return !m_octScanSegmentation->getAllLayerNames().isEmpty();
    } catch (const Exception&) {
        // It could not be decoded, which has been told where it was tried.
        return false;
    }
}

void OCTAutoSegmentationModule::updateButtons()
{
    const bool chosen = m_octScanSegmentation && m_octScan;
    const bool canSegment = chosen && isSegmentable();
    for (QPushButton* const button :
         {m_btnAutoSegmentNormal, m_btnAutoSegmentDrusen, m_btnAutoSegmentMouse}) {
        button->setEnabled(canSegment);
    }
    const bool canExport = chosen && hasLayers();
    for (QAbstractButton* const button : std::initializer_list<QAbstractButton*>{
             m_exportMetaImage, m_exportPositions, m_exportThickness, m_exportRaw, m_btnExport}) {
        button->setEnabled(canExport);
    }
}

QString OCTAutoSegmentationModule::nextStep() const
{
    if (m_octScanSegmentation) {
        return {};
    }
    if (isSegmentable()) {
        return QStringLiteral("Press \"New Segmentation\", or select a segmentation of this scan.");
    }
    if (*m_octScan->getScanPattern() == OCTScanPatternStar()) {
        return QStringLiteral("A star scan cannot be segmented: its B-scans cross each other, and "
                              "the segmentation needs neighbouring ones.");
    }
    return QStringLiteral("A scan of this pattern cannot be segmented.");
}

void OCTAutoSegmentationModule::exportOCT()
{
    const bool anyFormat = m_exportMetaImage->isChecked() || m_exportPositions->isChecked() ||
                           m_exportThickness->isChecked() || m_exportRaw->isChecked();
    if (!anyFormat) {
        showFailure(m_mainWidget, QStringLiteral("Export Requirements"),
                    QStringLiteral("Please select at least one of the export options above."));
        return;
    }
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString lastFolder = Settings::get(QStringLiteral("lastExportPath"), documents);
    const QString answer =
        QFileDialog::getExistingDirectory(m_mainWidget, QStringLiteral("Export Folder Selection"),
                                          lastFolder, QFileDialog::ShowDirsOnly);
    // A cancelled dialog answers with the empty path, which is the current directory and is
    // exported to as any other.
    exportInto(QDir(answer).absolutePath());
}

void OCTAutoSegmentationModule::exportInto(const QString& folder)
{
    const auto segmentationStep = [this](bool wanted, const auto& action) {
        return !wanted || step(exportingSegmentationFailed, exportErrorTitle, action);
    };
    const auto filesStep = [&](const QCheckBox* box, const auto& exporter) {
        return segmentationStep(box->isChecked(),
                                [&] { exportFiles(exporter, m_octScanSegmentation, folder); });
    };
    const bool volumes = m_exportMetaImage->isChecked();
    const QDir directory(folder);
    // The first failure ends the export.
    const bool done =
        (!volumes || step("Exporting the OCT failed:\n", exportErrorTitle,
                          [&] {
                              OCTScanUtils::writeMetaImage(
                                  m_octScan, directory.filePath(QStringLiteral("oct.mha")));
                          })) &&
        segmentationStep(volumes,
                         [&] {
                             OCTScanUtils::writeMetaImage(
                                 m_octScanSegmentation,
                                 directory.filePath(QStringLiteral("segmentation.mha")));
                         }) &&
        filesStep(m_exportPositions, OCTScanUtils::writeLayersCSV) &&
        filesStep(m_exportThickness, OCTScanUtils::writeThicknessCSV) &&
        filesStep(m_exportRaw, OCTScanUtils::writeLayersRawUInt16);
    if (done) {
        AppBase::showStatusMessage(
            QStringLiteral("Exported to %1").arg(QDir::toNativeSeparators(folder)));
    }
}

} // namespace kelp::oct

#include "moc_OCTAutoSegmentationModule.cpp"
