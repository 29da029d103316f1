#pragma once

#include "kelpTrace.h"

#include <QString>
#include <QStringList>

#include <sstream>

namespace kelp::oct::test {

/// Collects the trace lines of the process for as long as it lives.
class TraceCapture
{
public:
    TraceCapture() { Trace::redirect(&m_stream); }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture() { Trace::redirect(nullptr); }

    QStringList lines() const
    {
        return QString::fromStdString(m_stream.str()).split('\n', Qt::SkipEmptyParts);
    }

private:
    std::ostringstream m_stream;
};

} // namespace kelp::oct::test
