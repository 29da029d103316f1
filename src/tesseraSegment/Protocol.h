#pragma once

#include "ScanSettings.h"

#include <QByteArray>
#include <QString>

#include <mutex>
#include <optional>
#include <streambuf>

/// How the command talks to the processes that segment, one for each scan. The request goes to the
/// process's standard input; what comes back on its standard output is a message a line.
namespace kelp::command {

/// What one process is to do.
struct ScanRequest
{
    QString input;
    QString series;
    ScanSettings settings;
    QString buildFolder; ///< an empty folder for the results
    bool verbose = false;

    QByteArray toJson() const;
    /// Throws ParsingError.
    static ScanRequest fromJson(const QByteArray& text);
};

/// One line of what a process tells.
struct ScanMessage
{
    enum class Kind
    {
        Progress, ///< a phase of the work and how much is done
        Trace,    ///< a diagnostic line
        Failure,  ///< the reason why there are no results
        Done      ///< the results are whole
    };

    Kind kind = Kind::Progress;
    int percentage = 0;
    QString text;

    QByteArray toLine() const;
    /// Nothing for a line that is none of the protocol's.
    static std::optional<ScanMessage> fromLine(const QByteArray& line);
};

/// The process's end of the line. Any thread may send.
class MessageSender
{
public:
    void send(const ScanMessage& message);

private:
    std::mutex m_mutex;
};

/// Turns each line written to it into a trace message.
class TraceBuffer : public std::streambuf
{
public:
    explicit TraceBuffer(MessageSender& sender) : m_sender(sender) {}

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;

private:
    void add(char character);

    MessageSender& m_sender;
    QByteArray m_line;
};

} // namespace kelp::command
