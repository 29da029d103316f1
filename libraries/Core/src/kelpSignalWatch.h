#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace kelp {

/// Brings SIGINT, SIGTERM and SIGHUP into the event loop. The first one is told; a second one ends
/// the process at once.
class SignalWatch : public QObject
{
    Q_OBJECT

public:
    explicit SignalWatch(std::function<void()> interrupted);
    ~SignalWatch() override;

    /// 0 while none has come.
    static int receivedSignal();

private slots:
    void signalArrived();

private:
    std::function<void()> m_interrupted;
    int m_pipe[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace kelp
