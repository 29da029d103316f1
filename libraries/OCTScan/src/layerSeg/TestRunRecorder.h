#pragma once

#include "SegWatcher.h"

#include <QObject>
#include <QStringList>

#include <ostream>
#include <string>
#include <vector>

namespace kelp::oct::test {

/// Writes down the signals of a run. The sender may be a SegWatcher or a SegInterface.
class RunRecorder
{
public:
    template <typename Sender>
    explicit RunRecorder(const Sender& sender)
    {
        QObject::connect(&sender, &Sender::segmentationStarted, &m_context,
                         [this] { m_events.push_back("started"); });
        QObject::connect(&sender, &Sender::statusChanged, &m_context, [this](const QString& text) {
            m_events.push_back("status: " + text.toStdString());
        });
        QObject::connect(&sender, &Sender::segmentationSuccess, &m_context,
                         [this] { m_events.push_back("success"); });
        QObject::connect(
            &sender, &Sender::segmentationFailure, &m_context,
            [this](const QString& text) { m_events.push_back("failure: " + text.toStdString()); });
        QObject::connect(&sender, &Sender::segmentationProgress, &m_context,
                         [this](int percentage) { m_progress.push_back(percentage); });
    }
    RunRecorder(const RunRecorder&) = delete;
    RunRecorder& operator=(const RunRecorder&) = delete;

    /// Everything but the progress, in order.
    const std::vector<std::string>& events() const { return m_events; }
    const std::vector<int>& progress() const { return m_progress; }

    /// The events that begin with this text, without it.
    std::vector<std::string> eventsAfter(const std::string& prefix) const
    {
        std::vector<std::string> found;
        for (const std::string& event : m_events) {
            if (event.compare(0, prefix.size(), prefix) == 0) {
                found.push_back(event.substr(prefix.size()));
            }
        }
        return found;
    }
    std::vector<std::string> failures() const { return eventsAfter("failure: "); }
    std::vector<std::string> statuses() const { return eventsAfter("status: "); }

    int count(const std::string& event) const
    {
        int number = 0;
        for (const std::string& other : m_events) {
            number += other == event ? 1 : 0;
        }
        return number;
    }

    void clear()
    {
        m_events.clear();
        m_progress.clear();
    }

private:
    QObject m_context; ///< its connections end with the recorder
    std::vector<std::string> m_events;
    std::vector<int> m_progress;
};

} // namespace kelp::oct::test
