#include "kelpSignalWatch.h"

#include "kelpCheck.h"
#include "kelpException.h"

#include <atomic>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace kelp {

namespace {

constexpr const char* sourcePath = "libraries/Core/src/kelpSignalWatch";
constexpr int watchedSignals[] = {SIGINT, SIGTERM, SIGHUP};

// All that a signal handler may touch.
volatile std::sig_atomic_t arrivedSignal = 0;
std::atomic<int> wakeDescriptor{-1};

void handleSignal(int signal)
{
    arrivedSignal = signal;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(wakeDescriptor.load(), &byte, 1);
}

} // namespace

SignalWatch::SignalWatch(std::function<void()> interrupted) : m_interrupted(std::move(interrupted))
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw IOFailure("No pipe can be made.");
    }
    wakeDescriptor = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    KELP_CONNECT(sourcePath, connect(m_notifier.get(), SIGNAL(activated(QSocketDescriptor)), this,
                                     SLOT(signalArrived())));
    for (const int signal : watchedSignals) {
        struct sigaction former
        {
        };
        sigaction(signal, nullptr, &former);
        if (former.sa_handler == SIG_IGN) {
            continue; // as nohup wants it
        }
        struct sigaction action
        {
        };
        action.sa_handler = handleSignal;
        action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

SignalWatch::~SignalWatch()
{
    for (const int signal : watchedSignals) {
        std::signal(signal, SIG_DFL);
    }
    wakeDescriptor = -1;
    m_notifier.reset();
    close(m_pipe[0]);
    close(m_pipe[1]);
}

int SignalWatch::receivedSignal()
{
    return arrivedSignal;
}

void SignalWatch::signalArrived()
{
    m_notifier->setEnabled(false);
    m_interrupted();
}

} // namespace kelp

#include "moc_kelpSignalWatch.cpp"
