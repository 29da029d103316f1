#pragma once

#include "SegInterface.h"
#include "SegmentationChains.h"

#include <QEventLoop>

#include <functional>
#include <vector>

namespace kelp::command {

/// Where a chain stands: which of its steps is under way, and how much of all is done.
struct ChainProgress
{
    int step = 0; ///< from 1
    int nrSteps = 0;
    QString stepName;   ///< the slot's
    int percentage = 0; ///< of the time that all steps take
};

/// Runs one chain on one segmentation and waits for its end in an event loop of its own.
class ChainRun : public QObject
{
    Q_OBJECT

public:
    /// Called at least once for each step, in their order.
    using ProgressListener = std::function<void(const ChainProgress&)>;

    explicit ChainRun(ProgressListener listener);

    /// Throws RuntimeException with the chain's reason when a step fails. Returns what the steps
    /// cost.
    std::vector<kelp::oct::StepStatistics> run(const OCTScanSegPtr& segmentation,
                                               kelp::oct::SegmentationChain chain,
                                               bool maskETDRSSectors, bool maskCenter);

private slots:
    void statusChanged(QString message);
    void segmentationProgress(int percentageFinished);
    void segmentationSuccess();
    void segmentationFailure(QString message);

private:
    void tellProgress();
    void tellStep();
    int weightedPercentage() const;

    ProgressListener m_listener;
    kelp::oct::SegInterface m_segInterface;
    QEventLoop m_loop;
    kelp::oct::SegmentationChain m_chain = kelp::oct::SegmentationChain::Normal;
    QStringList m_steps;
    ChainProgress m_progress;
    int m_runPercentage = 0; ///< as the run counts it
    QString m_failure;
    bool m_over = false;
};

} // namespace kelp::command
