#pragma once

#include "CaProgressMonitor.h"

#include <QProgressDialog>

#include <memory>

namespace kelp {

/// The modal window of the progress monitor. Registers itself as long as it lives.
class ProgressDisplay : public CaProgressMonitor::Display
{
public:
    ProgressDisplay();
    ~ProgressDisplay() override;

    void open(const QString& text, int steps) override;
    void step() override;
    void close() override;

private:
    std::unique_ptr<QProgressDialog> m_dialog;
    /// Operations that are open inside one another share the window of the outermost.
    int m_depth = 0;
};

} // namespace kelp
