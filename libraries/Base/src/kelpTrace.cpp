#include "kelpTrace.h"

#include <iostream>
#include <mutex>

namespace {

std::mutex traceMutex;
std::ostream* traceTarget = nullptr;

} // namespace

namespace kelp {

Trace::~Trace()
{
    m_line << '\n';
    const std::string line = m_line.str();
    const std::lock_guard<std::mutex> lock(traceMutex);
    (traceTarget ? *traceTarget : std::cout) << line;
}

void Trace::redirect(std::ostream* target)
{
    const std::lock_guard<std::mutex> lock(traceMutex);
    traceTarget = target;
}

void Trace::flush()
{
    const std::lock_guard<std::mutex> lock(traceMutex);
    (traceTarget ? *traceTarget : std::cout).flush();
}

} // namespace kelp
