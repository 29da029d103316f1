#include "kelpCheck.h"

#include "kelpTrace.h"

namespace kelp {

QString locatedText(const Place& place, const QString& text)
{
    const QString tail = QString::fromUtf8(place.sourcePath).section('/', -4, -1);
    return tail + "::" + place.function + ": " + text;
}

void throwAssertion(const Place& place, const QString& text)
{
    throw Assertion(locatedText(place, text));
}

void checkConnected(bool connected, const char* expression, const char* sourcePath, int line)
{
    if (connected) {
        return;
    }
    const QString text =
        QString("Assertion %1 failed in %2 at line %3").arg(expression, sourcePath).arg(line);
    Trace() << text;
    // Where this comes from a destructor, nothing runs after the throw.
    Trace::flush();
    throw WatchdogException(text);
}

} // namespace kelp
