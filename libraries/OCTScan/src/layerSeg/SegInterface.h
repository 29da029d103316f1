#pragma once

#include "InnerDistProps.h"
#include "OCTScanSegmentation.h"
#include "SegWatcher.h"

#include <QObject>
#include <QSharedPointer>
#include <QThread>

namespace kelp::oct {

class SegWorker;

/// The only object that modules and commands talk to in order to segment. Owns the worker, its
/// thread and the watcher. A run: resetSegmentation, then the step methods, which only count and
/// queue their step; the steps run one after the other on the worker thread.
class SegInterface : public QObject
{
    Q_OBJECT

public:
    /// How long a step under way may take to notice that it is to stop; it needs a tenth of a
    /// second of its processor.
    static constexpr int stopMilliseconds = 5000;

    SegInterface();
    ~SegInterface() override;

    /// Ends whatever runs and starts on a fresh thread, as soon as the caller is back in the event
    /// loop. A step under way is asked to stop and given 5 s; only then is its thread terminated.
    void resetSegmentation();

    void segmentCoarse(OCTScanSegPtr octSeg);
    /// Distances in rows of the full image.
    void segmentCoarseMinMax(OCTScanSegPtr octSeg, float minDist, float maxDist);
    void segmentILMFine(OCTScanSegPtr octSeg, bool maskETDRSSectors, bool maskCenter);
    void segmentRPEHumanHealthy(OCTScanSegPtr octSeg);
    void segmentBMFine(OCTScanSegPtr octSeg);
    void segmentISeIRPEFineDrusen(OCTScanSegPtr octSeg);
    void segmentPEFineConstant(OCTScanSegPtr octSeg, float rpeThicknessMean,
                               float rpeThicknessVarWeight, float ilm2isosDistMean,
                               float ilm2isosDistVarWeight);
    void segmentInnerHumanHealthy(OCTScanSegPtr octSeg);
    void segmentInnerFineConstant(OCTScanSegPtr octSeg, InnerDistProps distProps);

    /// What the steps since the last reset cost.
    std::vector<StepStatistics> getStatistics() const { return m_watcher->getStatistics(); }

public slots:
    void abortSegmentation();

signals:
    void segmentationStarted();
    void statusChanged(QString message);
    void segmentationSuccess();
    void segmentationFailure(QString message);
    void segmentationProgress(int percentageFinished);

private slots:
    void startThread();

private:
    /// Unwinds the worker thread, by force if it must, drops what waits in its queue, and
    /// forgets the run.
    void stopThread();
    /// Counts a step and hands it to the worker.
    template <typename... Arguments>
    void queueStep(const char* slot, const char* failure, const Arguments&... arguments);

    QSharedPointer<SegWatcher> m_watcher;
    QSharedPointer<SegWorker> m_worker;
    QThread m_thread;
};

} // namespace kelp::oct
