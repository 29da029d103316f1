#include "SegWatcher.h"

#include <cmath>

#include <sys/resource.h>

namespace kelp::oct {

std::size_t peakResidentBytes()
{
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) != 0) {
        return 0;
    }
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024; // Linux counts kilobytes
}

SegWatcher::SegWatcher() : m_abortFlag(std::make_shared<std::atomic<bool>>(false)) {}

void SegWatcher::addStep()
{
    const std::lock_guard lock(m_mutex);
    ++m_nrSteps;
}

bool SegWatcher::startStep()
{
    std::unique_lock lock(m_mutex);
    if (isAborted()) {
        return false;
    }
    const unsigned currentStep = ++m_currentStep;
    const unsigned nrSteps = m_nrSteps;
    lock.unlock();
    if (currentStep == 1) {
        emit segmentationStarted();
    } else {
        emit statusChanged(
            QString("Segmentation step %1 of %2 has started").arg(currentStep).arg(nrSteps));
    }
    return true;
}

void SegWatcher::finishStep()
{
    std::unique_lock lock(m_mutex);
    // An abort may fall between a step's last check and its end. The run has then told its failure,
    // must not tell a success as well, and stays stopped until it is reset.
    if (isAborted()) {
        return;
    }
    const unsigned currentStep = m_currentStep;
    const unsigned nrSteps = m_nrSteps;
    lock.unlock();
    if (currentStep < nrSteps) {
        emit statusChanged(
            QString("Segmentation step %1 of %2 has finished \n\n").arg(currentStep).arg(nrSteps));
        return;
    }
    emit segmentationSuccess();
    lock.lock();
    m_nrSteps = 0;
    m_currentStep = 0;
}

void SegWatcher::setStepProgress(float fraction)
{
    std::unique_lock lock(m_mutex);
    if (m_nrSteps == 0) {
        return;
    }
    const auto nrSteps = static_cast<float>(m_nrSteps);
    const auto currentStep = static_cast<float>(m_currentStep);
    lock.unlock();
    const float percentage = ((currentStep - 1.0F) / nrSteps + fraction / nrSteps) * 100.0F;
    emit segmentationProgress(static_cast<int>(std::lrint(percentage)));
}

void SegWatcher::setStatus(const QString& message)
{
    emit statusChanged(message);
}

void SegWatcher::fail(const QString& message)
{
    emit segmentationFailure(message);
    const std::lock_guard lock(m_mutex);
    m_abortFlag->store(true, std::memory_order_relaxed);
    m_nrSteps = 0;
    m_currentStep = 0;
}

void SegWatcher::abort()
{
    fail("Segmentation was aborted.");
}

void SegWatcher::reset()
{
    const std::lock_guard lock(m_mutex);
    m_abortFlag->store(false, std::memory_order_relaxed);
    m_nrSteps = 0;
    m_currentStep = 0;
    m_statistics.clear();
    m_openSteps.clear();
}

void SegWatcher::beginStepStatistics(const QString& name)
{
    const std::lock_guard lock(m_mutex);
    m_openSteps.push_back({m_statistics.size(), std::chrono::steady_clock::now()});
    StepStatistics step;
    step.name = name;
    m_statistics.push_back(step);
}

void SegWatcher::endStepStatistics()
{
    const std::lock_guard lock(m_mutex);
    if (m_openSteps.empty()) {
        return;
    }
    const OpenStep open = m_openSteps.back();
    m_openSteps.pop_back();
    StepStatistics& step = m_statistics[open.index];
    step.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - open.start).count();
    step.peakMemoryBytes = peakResidentBytes();
}

void SegWatcher::leaveStep()
{
    // Orders what the step did before what reset does next. The thread's end is waited for inside
    // Qt, which orders it too, but where no sanitizer can see it.
    const std::lock_guard lock(m_mutex);
}

void SegWatcher::addCutStatistics(const CutStatistics& cut)
{
    const std::lock_guard lock(m_mutex);
    if (!m_openSteps.empty()) {
        m_statistics[m_openSteps.back().index].cuts.push_back(cut);
    }
}

void SegWatcher::addCutQuality(const std::vector<SurfaceQuality>& surfaces, double seconds)
{
    const std::lock_guard lock(m_mutex);
    if (!m_openSteps.empty()) {
        StepStatistics& step = m_statistics[m_openSteps.back().index];
        step.surfaces.insert(step.surfaces.end(), surfaces.begin(), surfaces.end());
        step.qualitySeconds += seconds;
    }
}

std::vector<StepStatistics> SegWatcher::getStatistics() const
{
    const std::lock_guard lock(m_mutex);
    return m_statistics;
}

} // namespace kelp::oct
