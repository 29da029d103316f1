#include "GuardedApplication.h"

#include "AppBase.h"
#include "FailureBox.h"
#include "kelpLog.h"

#include <exception>

namespace kelp {

GuardedApplication::GuardedApplication(int& argumentCount, char** arguments, qint64 repetitionMs)
    : QApplication(argumentCount, arguments), m_repetitionMs(repetitionMs)
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
        text == m_shown && m_sinceShown.isValid() && m_sinceShown.elapsed() < m_repetitionMs;
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
