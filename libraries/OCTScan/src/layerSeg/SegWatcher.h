#pragma once

#include "SegStatistics.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

namespace kelp::oct {

/// Shared by the interface, the worker and the graph: the step counters, the abort flag, and the
/// signals of a run. Lives on the user-interface thread; every method may be called from any
/// thread.
class SegWatcher : public QObject
{
    Q_OBJECT

public:
    SegWatcher();

    bool isAborted() const { return m_abortFlag->load(std::memory_order_relaxed); }
    /// The address that the solver reads while it works. Lives as long as this object.
    const std::atomic<bool>* getAbortFlag() const { return m_abortFlag.get(); }
    /// Sets the flag without a signal and leaves the counters, so that a step under way unwinds.
    void requestAbort() { m_abortFlag->store(true, std::memory_order_relaxed); }

    void addStep();
    /// False, and nothing is told or counted, if the run was stopped: an abort on the other thread
    /// may come after a step's own look at the flag, and a step that counted from the cleared
    /// counters would tell the start of another run.
    bool startStep();
    void finishStep();
    /// From 0 to 1 within the current step.
    void setStepProgress(float fraction);
    void setStatus(const QString& message);
    /// Emits segmentationFailure, then sets the flag and clears the counters.
    void fail(const QString& message);
    /// As fail with "Segmentation was aborted."
    void abort();
    /// Clears flag, counters and statistics.
    void reset();

    /// Statistics: what ran since reset, in order of begin. A step that another one calls has an
    /// entry of its own, and its cuts count there; its seconds count in both. A cut outside of any
    /// step is not recorded.
    void beginStepStatistics(const QString& name);
    void endStepStatistics();
    void addCutStatistics(const CutStatistics& cut);
    /// How the surfaces of a cut came out; seconds is what finding it out took.
    void addCutQuality(const std::vector<SurfaceQuality>& surfaces, double seconds);
    /// The last thing that a step does with this object.
    void leaveStep();
    std::vector<StepStatistics> getStatistics() const;

signals:
    void segmentationStarted();
    void statusChanged(QString message);
    void segmentationSuccess();
    void segmentationFailure(QString message);
    void segmentationProgress(int percentageFinished);

private:
    std::shared_ptr<std::atomic<bool>> m_abortFlag;
    mutable std::mutex m_mutex; ///< guards all below; never held while something is told
    unsigned m_nrSteps = 0;
    unsigned m_currentStep = 0;

    struct OpenStep
    {
        std::size_t index = 0;
        std::chrono::steady_clock::time_point start;
    };

    std::vector<StepStatistics> m_statistics;
    std::vector<OpenStep> m_openSteps; ///< the innermost last
};

} // namespace kelp::oct
