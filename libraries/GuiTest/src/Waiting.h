#pragma once

#include <QTest>
#include <QWidget>

#include <utility>

/// Waiting for what comes with the events. What takes milliseconds may take twenty times as long
/// with sanitizers on a busy machine, and a test that passes never waits to the end: so the limit
/// is far beyond that of Qt, which is 5 s.
namespace waiting {

constexpr int longestMs = 120000;

template <typename Condition>
bool until(Condition&& condition)
{
    return QTest::qWaitFor(std::forward<Condition>(condition), longestMs);
}

inline bool untilExposed(QWidget& widget)
{
    return QTest::qWaitForWindowExposed(&widget, longestMs);
}

inline bool untilActive(QWidget& widget)
{
    return QTest::qWaitForWindowActive(&widget, longestMs);
}

} // namespace waiting
