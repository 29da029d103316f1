#include "ProgressDisplay.h"

#include "AppBase.h"

#include <QCoreApplication>

namespace kelp {

ProgressDisplay::ProgressDisplay()
{
    CaProgressMonitor::getInstance().setDisplay(this);
}

ProgressDisplay::~ProgressDisplay()
{
    CaProgressMonitor::getInstance().setDisplay(nullptr);
}

void ProgressDisplay::open(const QString& text, int steps)
{
    if (++m_depth > 1) {
        return;
    }
    // Without a button: what runs here cannot be stopped halfway.
    m_dialog = std::make_unique<QProgressDialog>(text, QString(), 0, steps, AppBase::getMainForm(),
                                                 Qt::Dialog | Qt::CustomizeWindowHint |
                                                     Qt::WindowTitleHint);
    m_dialog->setObjectName(QStringLiteral("progressDialog"));
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->setAutoReset(false);
    m_dialog->setAutoClose(false);
    m_dialog->setMinimumDuration(0);
    m_dialog->setValue(0);
    m_dialog->show();
    // The first step may be a long one.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ProgressDisplay::step()
{
    if (m_dialog && m_depth == 1) {
        m_dialog->setValue(m_dialog->value() + 1);
    }
}

void ProgressDisplay::close()
{
    if (m_depth > 0 && --m_depth == 0) {
        m_dialog.reset();
    }
}

} // namespace kelp
