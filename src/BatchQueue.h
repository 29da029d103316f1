#pragma once

#include "BatchScans.h"

namespace kelp::oct {

/// The scans that a batch still has to segment, and the one that is being segmented. What waits
/// when a batch is cancelled stays, and the next batch begins with it.
class BatchQueue
{
public:
    void append(const BatchScan& scan) { m_waiting.append(scan); }
    bool isEmpty() const { return m_waiting.isEmpty(); }
    int size() const { return m_waiting.size(); }

    /// Takes the first of those that wait; it runs from now on.
    void startNext()
    {
        m_running = m_waiting.takeFirst();
        m_running.patient = currentObjectOf(m_running.patient);
        m_isRunning = true;
    }
    bool isRunning() const { return m_isRunning; }
    const BatchScan& running() const { return m_running; }
    /// What runs has come to its end, one way or the other. It is kept alive until the next starts.
    void stopRunning() { m_isRunning = false; }
    void clear()
    {
        m_waiting.clear();
        m_running = {};
        m_isRunning = false;
    }

private:
    QList<BatchScan> m_waiting;
    BatchScan m_running;
    bool m_isRunning = false;
};

} // namespace kelp::oct
