#include "OCTBatchProcessModule.h"

#include "BatchImport.h"
#include "BatchLog.h"
#include "BatchOptions.h"
#include "BatchStore.h"
#include "BatchTable.h"
#include "ExportCollector.h"
#include "HintOverlay.h"
#include "OCTScanChecks.h"
#include "SavedState.h"
#include "SegmentationNames.h"
#include "SegmentationQuality.h"
#include "WaitCursor.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QProgressDialog>

namespace kelp::oct {

namespace {

// As this module has always named its source in the trace.
constexpr const char* sourcePath = "..\\src\\OCTBatchProcessModule";
constexpr const char* successFunction = "kelp::oct::OCTBatchProcessModule::segmentationSuccess";
constexpr Place startPlace{sourcePath, "kelp::oct::OCTBatchProcessModule::startSegmentingNextOCT"};

constexpr int tableStretch = 3;
constexpr int logStretch = 2;

const QString folderKey = QStringLiteral("batch/importFolder");

/// A dialog that keeps the user out of the data until it is accepted or cancelled.
void setUp(QProgressDialog& dialog, const QString& title, const QString& text)
{
    dialog.setWindowTitle(title);
    dialog.setLabelText(text);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setAutoReset(false);
    dialog.setAutoClose(false);
    dialog.show();
}

/// Also lets the window live.
bool wasCanceled(const QProgressDialog& dialog)
{
    QCoreApplication::processEvents();
    return dialog.wasCanceled();
}

} // namespace

OCTBatchProcessModule::OCTBatchProcessModule(const QString& name)
    : QtAppModule(name, false), m_mainWidget(new QWidget), m_table(new BatchTable),
      m_options(new BatchOptions), m_log(new BatchLog), m_segInterface(new SegInterface)
{
    m_table->setObjectName(QStringLiteral("batchTable"));
    m_log->setObjectName(QStringLiteral("batchLog"));
    m_hint = new HintOverlay(m_table);
    auto* const row = new QHBoxLayout(m_mainWidget);
    row->addWidget(m_table, tableStretch);
    row->addWidget(m_options);
    row->addWidget(m_log, logStretch);

    KELP_CONNECT(sourcePath,
                 connect(m_options, SIGNAL(importRequested()), this, SLOT(batchImportOCTs())));
    KELP_CONNECT(sourcePath, connect(m_options, SIGNAL(segmentationRequested()), this,
                                     SLOT(batchSegmentOCTs())));
    const auto* const source = m_segInterface.data();
    KELP_CONNECT(sourcePath, connect(source, SIGNAL(statusChanged(QString)), this,
                                     SLOT(statusUpdate(QString))));
    KELP_CONNECT(sourcePath,
                 connect(source, SIGNAL(segmentationSuccess()), this, SLOT(segmentationSuccess())));
    KELP_CONNECT(sourcePath, connect(source, SIGNAL(segmentationFailure(QString)), this,
                                     SLOT(segmentationFailure(QString))));
}

OCTBatchProcessModule::~OCTBatchProcessModule()
{
    // A step under way ends before what it would report to goes.
    m_segInterface.reset();
    delete m_mainWidget;
}

void OCTBatchProcessModule::activate()
{
    // All studies are read at the first visit.
    const WaitCursor wait;
    const QSet<QString> checked = m_table->checkedGUIDs();
    fillTable();
    m_table->check(checked);
}

QWidget* OCTBatchProcessModule::getMainWidget()
{
    return m_mainWidget;
}

void OCTBatchProcessModule::fillTable()
{
    m_table->setScans(listBatchScans());
    m_hint->setHint(m_table->scans().isEmpty()
                        ? QStringLiteral("There are no scans yet.\nImport a folder of exports.")
                        : QString());
}

BatchReport OCTBatchProcessModule::reportToLog()
{
    return [this](const QString& text, BatchLine kind) { m_log->appendLine(text, kind); };
}

void OCTBatchProcessModule::batchImportOCTs()
{
    // A cancelled dialog gives an empty path, which stands for the current folder: it is searched.
    const QString folder = QFileDialog::getExistingDirectory(
        m_mainWidget, QStringLiteral("Please select a directory containing the OCT's to import"),
        lastFolder(folderKey), QFileDialog::ShowDirsOnly);
    setLastFolder(folderKey, folder);
    m_log->clear();
    m_log->appendLine(QStringLiteral("Selected folder: ") + folder);
    QProgressDialog dialog(m_mainWidget);
    setUp(dialog, QStringLiteral("Import OCTs"), QStringLiteral("Collecting OCT Export XMLs..."));
    if (m_options->studyName().trimmed().isEmpty()) {
        m_log->appendLine(QStringLiteral("No study name set, so using default study name."));
        m_options->resetStudyName();
    }
    const auto exports = collectExports(folder, [&dialog] { return !wasCanceled(dialog); });
    if (!exports) {
        m_log->appendLine(QStringLiteral("\nUser aborted importing."));
        return;
    }
    const bool done = importAll(*exports, dialog);
    m_log->appendLine(done ? QStringLiteral("Finished importing OCTs.")
                           : QStringLiteral("\nUser aborted importing."));
    if (done) {
        dialog.accept();
    }
    fillTable();
}

bool OCTBatchProcessModule::importAll(const QStringList& xmlPaths, QProgressDialog& dialog)
{
    dialog.setLabelText(QStringLiteral("Importing OCT from export XMLs..."));
    m_log->appendLine(QStringLiteral("Found %1 XMLs to import\n").arg(xmlPaths.size()));
    dialog.setRange(0, xmlPaths.size());
    for (int i = 0; i < xmlPaths.size(); ++i) {
        dialog.setValue(i);
        if (wasCanceled(dialog)) {
            return false;
        }
        Trace() << xmlPaths[i];
        importExport(xmlPaths[i], m_options->studyName(), reportToLog());
    }
    return true;
}

void OCTBatchProcessModule::batchSegmentOCTs()
{
    m_log->clear();
    makeProgressDialog();
    if (!queueCheckedScans()) {
        m_progressDialog->hide(); // closing it would count as a cancel
        Trace() << "ERROR, did not get check box widget in oct table!";
        return;
    }
    m_progressDialog->setLabelText(QStringLiteral("Batch segementing OCTs..."));
    m_progressDialog->setRange(0, m_queue.size());
    m_segmentedScans = 0;
    m_scansWithWarnings = 0;
    startSegmentingNextOCT();
}

void OCTBatchProcessModule::makeProgressDialog()
{
    delete m_progressDialog;
    m_progressDialog = new QProgressDialog(m_mainWidget);
    KELP_CONNECT(sourcePath, connect(m_progressDialog, SIGNAL(canceled()), m_segInterface.data(),
                                     SLOT(abortSegmentation())));
    setUp(*m_progressDialog, QStringLiteral("Batch Segmentation"),
          QStringLiteral("Collecting list of OCTs to segement..."));
}

bool OCTBatchProcessModule::queueCheckedScans()
{
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const QCheckBox* const box = m_table->checkBox(row);
        if (!box) {
            return false;
        }
        if (box->isChecked()) {
            const BatchScan& scan = m_table->scans().at(row);
            Trace() << "going to segment " << scan.scan->getId();
            m_queue.append(scan);
        }
    }
    return true;
}

void OCTBatchProcessModule::startSegmentingNextOCT()
{
    // The start of a scan is posted, so the user may have cancelled since.
    if (!m_progressDialog || m_progressDialog->wasCanceled() || m_queue.isRunning()) {
        return;
    }
    if (m_queue.isEmpty()) {
        finishBatch();
        return;
    }
    m_progressDialog->setValue(m_progressDialog->value() + 1);
    if (m_progressDialog->wasCanceled()) {
        // Some seconds after the start the dialog handles events when it is set, and shows itself.
        m_progressDialog->hide();
        return;
    }
    m_queue.startNext();
    try {
        startSteps();
    } catch (const std::exception& failure) {
        // Whatever is wrong with one scan must not end the batch.
        segmentationFailure(QString::fromUtf8(failure.what()));
    }
}

void OCTBatchProcessModule::startSteps()
{
    const BatchScan item = m_queue.running();
    check(!item.scan.isNull(), startPlace, "OCT is null");
    check(!item.study.isNull(), startPlace, "Study is null");
    check(!item.patient.isNull(), startPlace, "Patient is null");
    loadScan(*item.scan);
    checkReadyForSegmentation(*item.scan);
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(item.scan));
    const CaError error =
        item.study->addProcessData(segmentation.data(), newSegmentationId(*item.study), true);
    if (error != CaError::nullError) {
        throw RuntimeException(error.toString());
    }
    m_chain = m_options->chain();
    m_segInterface->resetSegmentation();
    queueChain(*m_segInterface, segmentation, m_chain, m_options->maskETDRSSectors(),
               m_options->maskCenter());
}

void OCTBatchProcessModule::segmentationSuccess()
{
    Trace() << sourcePath << "::" << successFunction;
    // A run may tell its success several times, on circular scans before its last step has even
    // begun. A scan is done once, with its last step.
    if (!m_queue.isRunning() || !isChainDone(m_segInterface->getStatistics(), m_chain)) {
        return;
    }
    m_queue.stopRunning();
    const DataPointer<Patient> patient = m_queue.running().patient;
    if (patient) {
        m_log->appendLine(
            QStringLiteral("Segmentation success for patient %1\n").arg(patient->getName()),
            BatchLine::Success);
        reportWarnings();
        storeInBatch(patient, reportToLog());
    }
    goOn();
}

void OCTBatchProcessModule::reportWarnings()
{
    ++m_segmentedScans;
    const QStringList warnings = qualityWarnings(m_segInterface->getStatistics());
    if (warnings.isEmpty()) {
        return;
    }
    ++m_scansWithWarnings;
    const BatchScan& item = m_queue.running();
    for (const QString& warning : warnings) {
        m_log->appendLine(
            QStringLiteral("Warning for scan %1 of patient %2 in study %3: %4")
                .arg(item.scan->getId(), item.patient->getName(), item.study->getId(), warning),
            BatchLine::Problem);
    }
    m_log->appendLine(QString());
}

void OCTBatchProcessModule::reportScansWithWarnings()
{
    if (m_scansWithWarnings > 0) {
        m_log->appendLine(QStringLiteral("Scans with warnings: %1 of %2. Look at their B-scans "
                                         "before you use the numbers.")
                              .arg(m_scansWithWarnings)
                              .arg(m_segmentedScans),
                          BatchLine::Problem);
    }
}

void OCTBatchProcessModule::segmentationFailure(QString message)
{
    const bool wasRunning = m_queue.isRunning();
    m_queue.stopRunning();
    const DataPointer<Patient> patient = m_queue.running().patient;
    m_log->appendLine(wasRunning && patient
                          ? QStringLiteral("Segmentation error for patient %1. Reason: %2\n")
                                .arg(patient->getName(), message)
                          : QStringLiteral("Segmentation error...\n"),
                      BatchLine::Problem);
    goOn();
}

void OCTBatchProcessModule::goOn()
{
    if (m_progressDialog && m_progressDialog->wasCanceled()) {
        Trace() << "batch seg cancelled, done";
        reportScansWithWarnings();
        fillTable();
        return;
    }
    Trace() << "not cancelled, starting next segmentation";
    // Posted, not called: a thousand scans that cannot be loaded would nest a thousand calls, and
    // the window gets its turn between two scans.
    QMetaObject::invokeMethod(this, "startSegmentingNextOCT", Qt::QueuedConnection);
}

void OCTBatchProcessModule::finishBatch()
{
    m_progressDialog->accept();
    m_log->appendLine(QStringLiteral("\nFinished batch-segmenting OCT scans"), BatchLine::Success);
    reportScansWithWarnings();
    m_queue.clear();
    fillTable();
    // Hidden, it would come back by itself when its minimum duration has passed.
    m_progressDialog->deleteLater();
    m_progressDialog = nullptr;
}

void OCTBatchProcessModule::statusUpdate(QString /*message*/)
{
    m_log->insertDot();
}

} // namespace kelp::oct

#include "moc_OCTBatchProcessModule.cpp"
