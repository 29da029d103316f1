#pragma once

#include "Display.h"
#include "ResultsFolder.h"
#include "ScanProcess.h"
#include "StoreKeeper.h"
#include "Summary.h"

#include <QEventLoop>
#include <QTimer>

#include <map>
#include <memory>

namespace kelp::command {

/// Segments the scans of a plan, several at a time, each in a process of its own, so that a crash
/// of one leaves the others alone; puts whole results in their place, and into the store.
class Supervisor : public QObject, private ScanProcessListener
{
    Q_OBJECT

public:
    /// All references must outlive this; the store may be null.
    Supervisor(const ScanPlan& plan, const Options& options, const ScanSettings& settings,
               ResultsFolder& results, StoreKeeper* store);

    /// False when interrupt ended it; the processes are then gone.
    bool run();
    void interrupt();

    /// One for each job of the plan.
    const QList<ScanOutcome>& getOutcomes() const { return m_outcomes; }

private slots:
    void refreshDisplay();

private:
    void scanTold(int job, const ScanMessage& message) override;
    void scanEnded(int job, const QString& failure) override;

    bool isToBeSegmented(const ScanJob& job) const;
    void settleOthers();
    void skip(int index);
    void startWaiting();
    void startScan(int index);
    /// Puts the results in their place. Throws kelp::Exception.
    void publish(int index);
    /// What a user should know of a result that stands there.
    void tellAbout(const ScanJob& job, const StoredRecord& record);
    void keepInStore(int index, StoreKeeper::Segmentations segmentations);
    void fail(int index, const QString& reason);

    const ScanPlan& m_plan;
    const Options& m_options;
    const ScanSettings& m_settings;
    ResultsFolder& m_results;
    StoreKeeper* m_store;
    Display m_display;
    QTimer m_refreshTimer;
    QEventLoop m_loop;
    QList<int> m_waiting; ///< indices of jobs
    std::map<int, std::unique_ptr<ScanProcess>> m_processes;
    std::map<int, QString> m_buildFolders;
    std::map<int, QElapsedTimer> m_timers;
    QList<ScanOutcome> m_outcomes;
    bool m_interrupted = false;
};

/// "tessera-segment: " is put before it by the display: what failed and why, in one line.
QString problemText(const QString& input, const QString& reason);

} // namespace kelp::command
