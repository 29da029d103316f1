#pragma once

#include "kelpStringMixer.h"

#include <sstream>
#include <string>

namespace kelp {

/// The stream of one log message: kelp::Log::getInstance(file, function, line) << "text"; writes
/// "<level> <time> <file>::<function>:<line>: text" to standard error when it goes out of scope.
class Log
{
public:
    static Log getInstance(const char* file, const char* function, int line,
                           const char* level = "ERROR");

    Log(Log&& other) noexcept;
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    ~Log();

    template <typename T>
    Log& operator<<(const T& part)
    {
        m_text << part;
        return *this;
    }

private:
    Log(const char* file, const char* function, int line, const char* level);
    void printPrefix();

    std::string m_file;
    std::string m_function;
    int m_line = 0;
    std::string m_level;
    std::ostringstream m_text;
    bool m_active = true;
};

} // namespace kelp
