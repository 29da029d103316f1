#pragma once

#include "kelpException.h"

#include <QString>

namespace kelp {

/// The place that a failure names: the source path without its ending, as in
/// "libraries/OCTScan/src/data/BScan", and the qualified function, as in "kelp::oct::BScan::BScan".
struct Place
{
    const char* sourcePath;
    const char* function;
};

/// "<last four parts of the source path>::<function>: <text>", the form of every assertion.
QString locatedText(const Place& place, const QString& text);

/// Throws Assertion with the located text.
[[noreturn]] void throwAssertion(const Place& place, const QString& text);

/// Throws Assertion with the located text unless the condition holds.
inline void check(bool condition, const Place& place, const char* text)
{
    if (!condition) {
        throwAssertion(place, QString::fromUtf8(text));
    }
}

inline void check(bool condition, const Place& place, const QString& text)
{
    if (!condition) {
        throwAssertion(place, text);
    }
}

/// Prints and throws WatchdogException unless connected. Used through KELP_CONNECT only.
void checkConnected(bool connected, const char* expression, const char* sourcePath, int line);

} // namespace kelp

/// Tests the result of a string-based connect. A macro, since the failure quotes the expression as
/// written: KELP_CONNECT("libraries/...", connect(a, SIGNAL(x()), b, SLOT(y())));
#define KELP_CONNECT(sourcePath, ...)                                                              \
    ::kelp::checkConnected(static_cast<bool>(__VA_ARGS__), #__VA_ARGS__, sourcePath, __LINE__)
