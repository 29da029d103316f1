#pragma once

#include "SliceStackGraphQPBO.h"
#include "StopWatch.h"
#include "kelpException.h"

#include <exception>

/// What the source files of SliceStackGraphQPBO share.
namespace kelp::oct {

/// The cost of what must not be.
constexpr int hardWeight = 1000000000;

/// Adds the life of the object to the time that building took.
class SliceStackGraphQPBO::BuildTimer
{
public:
    explicit BuildTimer(CutStatistics& statistics) : m_statistics(statistics) {}
    ~BuildTimer() { m_statistics.buildSeconds += m_watch.seconds(); }
    BuildTimer(const BuildTimer&) = delete;
    BuildTimer& operator=(const BuildTimer&) = delete;

private:
    CutStatistics& m_statistics;
    StopWatch m_watch;
};

/// Runs the function; a failure of the standard library goes out as an Exception with the text.
template <typename Function>
void wrapFailure(const char* text, Function&& function)
{
    try {
        function();
    } catch (const kelp::Exception&) {
        throw;
    } catch (const std::exception& failure) {
        throw kelp::Exception(text, failure.what());
    }
}

} // namespace kelp::oct
