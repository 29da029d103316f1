#include "GuardedApplication.h"

#include "AppBase.h"
#include "FailureBox.h"
#include "kelpLog.h"

#include <exception>

namespace kelp {

namespace {

/// A failing paint event comes back as soon as its box is closed; the user must get past it.
constexpr qint64 repetitionMs = 2000;

} // namespace

GuardedApplication::GuardedApplication(int& argumentCount, char** arguments)
    : QApplication(argumentCount, arguments)
{
}

bool GuardedApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& exception) {
        report(exception.what());
    }
    return false;
}

void GuardedApplication::report(const char* reason)
{
    Log::getInstance("libraries/Gui/src/GuardedApplication", "kelp::GuardedApplication::notify",
                     __LINE__)
        << reason;
    const QString text = QString::fromUtf8(reason);
    const bool isRepeated =
        text == m_shown && m_sinceShown.isValid() && m_sinceShown.elapsed() < repetitionMs;
    if (!m_pending.isEmpty() || isRepeated) {
        return;
    }
    m_pending = text;
    // Later, since the event that failed may be a paint event, in which no window can open.
    QMetaObject::invokeMethod(this, "showPending", Qt::QueuedConnection);
}

void GuardedApplication::showPending()
{
    m_shown = m_pending;
    showFailure(AppBase::getMainForm(), QStringLiteral("Unexpected Problem"),
                QStringLiteral("Something went wrong. The program goes on, and what you changed is "
                               "kept.\n\n") +
                    m_pending);
    m_pending.clear();
    m_sinceShown.start();
}

} // namespace kelp

#include "moc_GuardedApplication.cpp"
