#pragma once

#include "kelpStringMixer.h"

#include <QString>

#include <exception>
#include <string>

namespace kelp {

/// Base of all failures that the system raises itself. what() is the message and, if there is one,
/// the detail on a line of its own.
class Exception : public std::exception
{
public:
    explicit Exception(const _kelp::StringMixer& message,
                       const _kelp::StringMixer& detail = _kelp::StringMixer());

    const char* what() const noexcept override { return m_what.c_str(); }
    const QString& getMessage() const { return m_message; }
    const QString& getDetail() const { return m_detail; }

private:
    QString m_message;
    QString m_detail;
    std::string m_what;
};

/// A failed precondition: an error of the calling code.
class Assertion : public Exception
{
    using Exception::Exception;
};

/// A case that a function does not handle, such as a scan pattern.
class NotImplemented : public Exception
{
    using Exception::Exception;
};

/// A signal that could not be connected, or a pixel type that no code handles.
class WatchdogException : public Exception
{
    using Exception::Exception;
};

/// Base of failures that come from outside the program.
class RuntimeException : public Exception
{
    using Exception::Exception;
};

class IOFailure : public RuntimeException
{
    using RuntimeException::RuntimeException;
};

class ParsingError : public RuntimeException
{
    using RuntimeException::RuntimeException;
};

} // namespace kelp
