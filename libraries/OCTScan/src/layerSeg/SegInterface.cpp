#include "SegInterface.h"

#include "SegWorker.h"
#include "kelpCheck.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/layerSeg/SegInterface";

} // namespace

SegInterface::SegInterface() : m_watcher(new SegWatcher), m_worker(new SegWorker(m_watcher))
{
    m_worker->moveToThread(&m_thread);

    KELP_CONNECT(sourcePath, connect(m_watcher.data(), SIGNAL(segmentationStarted()), this,
                                     SIGNAL(segmentationStarted())));
    KELP_CONNECT(sourcePath, connect(m_watcher.data(), SIGNAL(statusChanged(QString)), this,
                                     SIGNAL(statusChanged(QString))));
    KELP_CONNECT(sourcePath, connect(m_watcher.data(), SIGNAL(segmentationProgress(int)), this,
                                     SIGNAL(segmentationProgress(int))));
    KELP_CONNECT(sourcePath, connect(m_watcher.data(), SIGNAL(segmentationSuccess()), this,
                                     SIGNAL(segmentationSuccess())));
    KELP_CONNECT(sourcePath, connect(m_watcher.data(), SIGNAL(segmentationFailure(QString)), this,
                                     SIGNAL(segmentationFailure(QString))));

    m_thread.start(QThread::InheritPriority);
}

SegInterface::~SegInterface()
{
    stopThread();
}

void SegInterface::stopThread()
{
    m_watcher->requestAbort();
    // The steps still queued would only fall through, each with a status line that nobody waits
    // for any more.
    QCoreApplication::removePostedEvents(m_worker.data(), QEvent::MetaCall);
    m_thread.quit();
    if (!m_thread.wait(QDeadlineTimer(stopMilliseconds))) {
        // A step that does not come back must not block the next run. Its memory is lost.
        m_thread.terminate();
        m_thread.wait();
    }
    // The worker is driven by no thread now. What was queued meanwhile, and what the former run had
    // still to say, must not reach into the next run.
    QCoreApplication::removePostedEvents(m_worker.data(), QEvent::MetaCall);
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
    // Only here, since the flag is what makes a step under way leave.
    m_watcher->reset();
}

void SegInterface::resetSegmentation()
{
    stopThread();
    // Later, when the caller has queued all steps: a first one that ended before the second was
    // counted would tell the success of the run.
    QMetaObject::invokeMethod(this, "startThread", Qt::QueuedConnection);
}

void SegInterface::startThread()
{
    m_thread.start(QThread::InheritPriority);
}

template <typename... Arguments>
void SegInterface::queueStep(const char* slot, const char* failure, const Arguments&... arguments)
{
    m_watcher->addStep();
    if (!QMetaObject::invokeMethod(m_worker.data(), slot, Qt::AutoConnection, arguments...)) {
        m_watcher->fail(failure);
    }
}

void SegInterface::segmentCoarse(OCTScanSegPtr octSeg)
{
    queueStep("segmentCoarse", "Could not invoke segmentation of coarse layers",
              Q_ARG(OCTScanSegPtr, octSeg));
}

void SegInterface::segmentCoarseMinMax(OCTScanSegPtr octSeg, float minDist, float maxDist)
{
    queueStep("segmentCoarseMinMax", "Could not invoke segmentation of coarse layers",
              Q_ARG(OCTScanSegPtr, octSeg), Q_ARG(float, minDist), Q_ARG(float, maxDist));
}

void SegInterface::segmentILMFine(OCTScanSegPtr octSeg, bool maskETDRSSectors, bool maskCenter)
{
    queueStep("segmentILMFine", "Could not invoke segmentation of ILM layer",
              Q_ARG(OCTScanSegPtr, octSeg), Q_ARG(bool, maskETDRSSectors), Q_ARG(bool, maskCenter));
}

void SegInterface::segmentRPEHumanHealthy(OCTScanSegPtr octSeg)
{
    queueStep("segmentRPEHumanHealthy", "Could not invoke segmentation of RPE layers",
              Q_ARG(OCTScanSegPtr, octSeg));
}

void SegInterface::segmentBMFine(OCTScanSegPtr octSeg)
{
    queueStep("segmentBMFine", "Could not invoke segmentation of Bruch's Membrane layer",
              Q_ARG(OCTScanSegPtr, octSeg));
}

void SegInterface::segmentISeIRPEFineDrusen(OCTScanSegPtr octSeg)
{
    queueStep("segmentISeIRPEFineDrusen",
              "Could not invoke segmentation of ISe and inner RPE layers",
              Q_ARG(OCTScanSegPtr, octSeg));
}

void SegInterface::segmentPEFineConstant(OCTScanSegPtr octSeg, float rpeThicknessMean,
                                         float rpeThicknessVarWeight, float ilm2isosDistMean,
                                         float ilm2isosDistVarWeight)
{
    queueStep("segmentPEFineConstant", "Could not invoke segmentation of constant PE fine layers",
              Q_ARG(OCTScanSegPtr, octSeg), Q_ARG(float, rpeThicknessMean),
              Q_ARG(float, rpeThicknessVarWeight), Q_ARG(float, ilm2isosDistMean),
              Q_ARG(float, ilm2isosDistVarWeight));
}

void SegInterface::segmentInnerHumanHealthy(OCTScanSegPtr octSeg)
{
    queueStep("segmentInnerHumanHealthy", "Could not invoke segmentation of inner layers",
              Q_ARG(OCTScanSegPtr, octSeg));
}

void SegInterface::segmentInnerFineConstant(OCTScanSegPtr octSeg, InnerDistProps distProps)
{
    queueStep("segmentInnerFineConstant", "Could not invoke segmentation constant inner layers",
              Q_ARG(OCTScanSegPtr, octSeg), Q_ARG(InnerDistProps, distProps));
}

void SegInterface::abortSegmentation()
{
    m_watcher->abort();
}

} // namespace kelp::oct
