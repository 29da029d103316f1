#include "ChainRun.h"

#include "kelpCheck.h"

#include <QHash>

#include <algorithm>

namespace kelp::command {

namespace {

constexpr const char* sourcePath = "src/tesseraSegment/ChainRun";

/// How long the steps of a volume take, compared with each other. The run's own percentage gives
/// each an equal share, from which no time left could be told.
double stepWeight(const QString& step)
{
    static const QHash<QString, double> weights{
        {"segmentCoarse", 1.0},
        {"segmentILMFine", 4.0},
    };
    constexpr double stepOfSeveralSurfaces = 8.0;
    return weights.value(step, stepOfSeveralSurfaces);
}

} // namespace

ChainRun::ChainRun(ProgressListener listener) : m_listener(std::move(listener))
{
    KELP_CONNECT(sourcePath, connect(&m_segInterface, SIGNAL(statusChanged(QString)), this,
                                     SLOT(statusChanged(QString))));
    KELP_CONNECT(sourcePath, connect(&m_segInterface, SIGNAL(segmentationProgress(int)), this,
                                     SLOT(segmentationProgress(int))));
    KELP_CONNECT(sourcePath, connect(&m_segInterface, SIGNAL(segmentationSuccess()), this,
                                     SLOT(segmentationSuccess())));
    KELP_CONNECT(sourcePath, connect(&m_segInterface, SIGNAL(segmentationFailure(QString)), this,
                                     SLOT(segmentationFailure(QString))));
}

std::vector<kelp::oct::StepStatistics> ChainRun::run(const OCTScanSegPtr& segmentation,
                                                     kelp::oct::SegmentationChain chain,
                                                     bool maskETDRSSectors, bool maskCenter)
{
    m_chain = chain;
    m_steps = kelp::oct::chainSteps(chain);
    m_progress = {};
    m_progress.nrSteps = m_steps.size();
    m_runPercentage = 0;
    m_failure.clear();
    m_over = false;
    m_segInterface.resetSegmentation();
    kelp::oct::queueChain(m_segInterface, segmentation, chain, maskETDRSSectors, maskCenter);
    // A step that cannot be queued fails inside the call.
    if (!m_over) {
        m_loop.exec();
    }
    if (!m_failure.isEmpty()) {
        throw RuntimeException(m_failure);
    }
    return m_segInterface.getStatistics();
}

void ChainRun::tellProgress()
{
    // On circular scans the counters of the run are cleared before its last step, which then tells
    // no percentage; the steps begun so far are known all the same. On a busy machine several may
    // have begun since this was last called: each is told, so that none is missing from the output.
    const auto statistics = m_segInterface.getStatistics();
    for (const auto& step : statistics) {
        const int index = m_steps.indexOf(step.name) + 1;
        if (index > m_progress.step) {
            m_progress.step = index;
            m_progress.stepName = step.name;
            tellStep();
        }
    }
    if (m_progress.step > 0) {
        tellStep();
    }
}

void ChainRun::tellStep()
{
    m_progress.percentage = std::max(m_progress.percentage, weightedPercentage());
    m_listener(m_progress);
}

int ChainRun::weightedPercentage() const
{
    double all = 0.0;
    double done = 0.0;
    for (int i = 0; i < m_steps.size(); ++i) {
        const double share = std::clamp(m_runPercentage * m_steps.size() / 100.0 - i, 0.0, 1.0);
        const bool isOver = i + 1 < m_progress.step;
        all += stepWeight(m_steps[i]);
        done += stepWeight(m_steps[i]) * (isOver ? 1.0 : share);
    }
    return static_cast<int>(100.0 * done / all);
}

void ChainRun::statusChanged(QString /*message*/)
{
    // Not traced: coming from another thread, it would fall between other lines at every run.
    tellProgress();
}

void ChainRun::segmentationProgress(int percentageFinished)
{
    m_runPercentage = percentageFinished;
    tellProgress();
}

void ChainRun::segmentationSuccess()
{
    if (kelp::oct::isChainDone(m_segInterface.getStatistics(), m_chain)) {
        m_over = true;
        m_loop.quit();
    }
}

void ChainRun::segmentationFailure(QString message)
{
    if (!m_over) {
        m_failure = message.isEmpty() ? "The segmentation failed." : message;
        m_over = true;
        m_loop.quit();
    }
}

} // namespace kelp::command
