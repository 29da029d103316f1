#pragma once

#include "kelpStringMixer.h"

#include <ostream>
#include <sstream>

namespace kelp {

/// One diagnostic line of the system: collects its parts and writes them, with a line feed, when it
/// goes out of scope. Lines of different threads never mix. Goes to standard output unless
/// redirected.
class Trace
{
public:
    Trace() = default;
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;
    ~Trace();

    template <typename T>
    Trace& operator<<(const T& part)
    {
        m_line << part;
        return *this;
    }

    /// Sends all further lines of the process to this stream; null means standard output. The
    /// stream must live until it is replaced.
    static void redirect(std::ostream* target);
    static void flush();

private:
    std::ostringstream m_line;
};

} // namespace kelp
