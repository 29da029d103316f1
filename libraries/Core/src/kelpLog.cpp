#include "kelpLog.h"

#include <QDateTime>

#include <iostream>
#include <mutex>
#include <utility>

namespace kelp {

namespace {

std::mutex logMutex;

} // namespace

Log Log::getInstance(const char* file, const char* function, int line, const char* level)
{
    return Log(file, function, line, level);
}

Log::Log(const char* file, const char* function, int line, const char* level)
    : m_file(file), m_function(function), m_line(line), m_level(level)
{
    printPrefix();
}

Log::Log(Log&& other) noexcept
    : m_file(std::move(other.m_file)), m_function(std::move(other.m_function)),
      m_line(other.m_line), m_level(std::move(other.m_level)), m_text(std::move(other.m_text)),
      m_active(std::exchange(other.m_active, false))
{
}

Log::~Log()
{
    if (m_active) {
        m_text << '\n';
        const std::lock_guard<std::mutex> lock(logMutex);
        std::cerr << m_text.str() << std::flush;
    }
}

void Log::printPrefix()
{
    m_text << m_level << ' ' << QDateTime::currentDateTime().toString(Qt::ISODateWithMs) << ' '
           << m_file << "::" << m_function << ':' << m_line << ": ";
}

} // namespace kelp
