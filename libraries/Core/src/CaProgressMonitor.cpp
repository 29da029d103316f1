#include "CaProgressMonitor.h"

CaProgressMonitor& CaProgressMonitor::getInstance()
{
    static CaProgressMonitor instance;
    return instance;
}

void CaProgressMonitor::open(const QString& text, int steps)
{
    if (m_display) {
        m_display->open(text, steps);
    }
}

void CaProgressMonitor::step()
{
    if (m_display) {
        m_display->step();
    }
}

void CaProgressMonitor::close()
{
    if (m_display) {
        m_display->close();
    }
}
