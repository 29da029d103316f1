#pragma once

#include "OCTScanSegmentation.h"
#include "SegWatcher.h"
#include "kelpException.h"

#include <QString>

#include <string>
#include <type_traits>

namespace kelp::oct {

/// Whether the run is to stop; then says so in the status.
bool abortSeen(SegWatcher& watcher);

/// The frame that all steps of a chain share: the tests before, the phases with their sentences,
/// the closing, and the step's statistics. Lives for one call of a worker slot.
class SegStep
{
public:
    /// slot: the worker slot's name, which names the step in failures and statistics.
    SegStep(SegWatcher& watcher, const char* slot);
    ~SegStep();
    SegStep(const SegStep&) = delete;
    SegStep& operator=(const SegStep&) = delete;

    /// Announces the step and tests its argument. False if the run is to stop or if there is
    /// nothing to work on; the step then ends.
    bool begin(const char* openingLine, const OCTScanSegPtr& octSeg);

    bool aborted() { return abortSeen(m_watcher); }

    /// Runs one phase. False if it failed, which has then been told as the phase's own sentence and
    /// the reason, or if it returned false. The step then ends.
    template <typename Function>
    bool phase(const char* sentence, Function&& function)
    {
        try {
            if constexpr (std::is_same_v<std::invoke_result_t<Function>, bool>) {
                return function();
            } else {
                function();
                return true;
            }
        } catch (const std::exception& failure) {
            // Not the system's own failures alone: the optimiser behind the fovea search and the
            // allocator raise standard exceptions, and one that left the slot would end the
            // program.
            fail(QString("%1\n%2").arg(sentence, QString::fromUtf8(failure.what())));
            return false;
        }
    }

    /// True if the pointer is set; otherwise the step fails with the located text.
    template <typename Pointer>
    bool require(const Pointer& pointer, const char* text)
    {
        if (!pointer.isNull()) {
            return true;
        }
        failLocated(text);
        return false;
    }

    void failLocated(const QString& text);

    void setStatus(const char* line) { m_watcher.setStatus(line); }
    void setProgress(float fraction) { m_watcher.setStepProgress(fraction); }
    /// Counts the step as done. Its statistics are complete before anyone hears of it.
    void finish();
    /// The closing of most steps. Some order its three acts in another way.
    void close(const char* closingLine);

private:
    void fail(const QString& text);
    void endStatistics();

    SegWatcher& m_watcher;
    std::string m_slot;
    bool m_counting = false;
};

} // namespace kelp::oct
