#pragma once

#include <QGuiApplication>
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

/// Makes its window the active one, as a click into it does. By the X server: what Qt alone calls
/// active it takes back a while after another window has gone, since without a window manager that
/// leaves the focus nowhere, and then it closes the menu that is open.
inline bool untilActivated(QWidget& widget)
{
    widget.activateWindow();
    QGuiApplication::sync();
    return QTest::qWaitForWindowActive(&widget, longestMs);
}

/// Gives it the keyboard.
inline bool untilFocused(QWidget& widget)
{
    if (!untilActivated(widget)) {
        return false;
    }
    widget.setFocus();
    return until([&widget] { return widget.hasFocus(); });
}

} // namespace waiting
