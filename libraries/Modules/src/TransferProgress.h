#pragma once

#include <QProgressDialog>

namespace kelp::patients {

/// Progress of a transfer in steps; the user can stop it.
class TransferProgress
{
public:
    TransferProgress(const QString& title, QWidget* parent);

    /// False once the user has cancelled.
    bool step(int done, int all, const QString& what);
    QWidget* window() { return &m_dialog; }

private:
    QProgressDialog m_dialog;
};

} // namespace kelp::patients
