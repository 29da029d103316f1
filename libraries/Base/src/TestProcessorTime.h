#pragma once

#include <ctime>

/// For bounds on how long something takes. Tests run beside others on busy machines, where a clock
/// on the wall tells more of those than of what is measured.
namespace kelp::test {

inline double secondsOf(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// What all threads of the process have worked so far.
inline double processorSeconds()
{
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

/// What the calling thread has worked so far.
inline double threadSeconds()
{
    return secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

} // namespace kelp::test
