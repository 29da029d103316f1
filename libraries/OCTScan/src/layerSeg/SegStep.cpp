#include "SegStep.h"

#include "kelpCheck.h"

namespace kelp::oct {

bool abortSeen(SegWatcher& watcher)
{
    if (!watcher.isAborted()) {
        return false;
    }
    watcher.setStatus("Aborting segmentation");
    return true;
}

SegStep::SegStep(SegWatcher& watcher, const char* slot) : m_watcher(watcher), m_slot(slot) {}

SegStep::~SegStep()
{
    endStatistics();
    m_watcher.leaveStep();
}

bool SegStep::begin(const char* openingLine, const OCTScanSegPtr& octSeg)
{
    if (aborted()) {
        return false;
    }
    m_watcher.beginStepStatistics(QString::fromStdString(m_slot));
    m_counting = true;
    if (!m_watcher.startStep()) {
        abortSeen(m_watcher); // says so
        return false;
    }
    setStatus(openingLine);
    setProgress(0.0F);
    return require(octSeg, "OCT segmentation is null.") &&
           require(octSeg->getOCT(), "OCT scan is null.");
}

void SegStep::failLocated(const QString& text)
{
    const std::string function = "kelp::oct::SegWorker::" + m_slot;
    fail(locatedText({"libraries/OCTScan/src/layerSeg/SegWorker", function.c_str()}, text));
}

void SegStep::fail(const QString& text)
{
    endStatistics();
    m_watcher.fail(text);
}

void SegStep::finish()
{
    endStatistics();
    m_watcher.finishStep();
}

void SegStep::close(const char* closingLine)
{
    setStatus(closingLine);
    setProgress(1.0F);
    finish();
}

void SegStep::endStatistics()
{
    if (m_counting) {
        m_watcher.endStepStatistics();
        m_counting = false;
    }
}

} // namespace kelp::oct
