#pragma once

#include "BatchQueue.h"
#include "BatchReport.h"
#include "QtAppModule.h"
#include "SegInterface.h"
#include "SegmentationChains.h"

#include <QPointer>
#include <QSharedPointer>
#include <QStringList>

class QProgressDialog;
namespace kelp {
class HintOverlay;
}

namespace kelp::oct {

class BatchLog;
class BatchOptions;
class BatchTable;

/// The tab that needs no user at each scan: imports all exports below a folder, and segments the
/// checked scans one after the other. All problems land in its log; nothing is shown as a box.
class OCTBatchProcessModule : public QtAppModule
{
    Q_OBJECT

public:
    explicit OCTBatchProcessModule(const QString& name);
    ~OCTBatchProcessModule() override;

    /// Fills the table anew; what was checked stays so.
    void activate() override;
    QWidget* getMainWidget() override;

public slots:
    void batchImportOCTs();
    void batchSegmentOCTs();
    void segmentationSuccess();
    void segmentationFailure(QString message);
    void statusUpdate(QString message);

private:
    void fillTable();
    BatchReport reportToLog();
    /// False when the user cancelled.
    bool importAll(const QStringList& xmlPaths, QProgressDialog& dialog);
    /// False when the table has a row without cells.
    bool queueCheckedScans();
    void makeProgressDialog();
    Q_INVOKABLE void startSegmentingNextOCT();
    /// Loads the running scan and queues the steps of the chain. Throws what keeps the scan from
    /// being segmented.
    void startSteps();
    /// What the run that is over says against its own result.
    void reportWarnings();
    /// After the end of one scan.
    void goOn();
    void finishBatch();
    /// How many of the scans that were segmented have warnings; nothing if none has.
    void reportScansWithWarnings();

    QPointer<QWidget> m_mainWidget;
    BatchTable* m_table = nullptr;
    BatchOptions* m_options = nullptr;
    BatchLog* m_log = nullptr;
    HintOverlay* m_hint = nullptr;
    BatchQueue m_queue;
    int m_segmentedScans = 0;
    int m_scansWithWarnings = 0;
    SegmentationChain m_chain = SegmentationChain::Normal; ///< of the running scan
    QSharedPointer<SegInterface> m_segInterface;
    QProgressDialog* m_progressDialog = nullptr;
};

} // namespace kelp::oct
