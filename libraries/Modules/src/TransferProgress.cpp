#include "TransferProgress.h"

#include <QApplication>

namespace kelp::patients {

TransferProgress::TransferProgress(const QString& title, QWidget* parent)
    : m_dialog(QString(), QStringLiteral("Cancel"), 0, 1, parent)
{
    constexpr int widthInCharacters = 60;
    m_dialog.setWindowTitle(title);
    m_dialog.setWindowModality(Qt::WindowModal);
    m_dialog.setAutoReset(false);
    m_dialog.setAutoClose(false);
    m_dialog.setMinimumDuration(0);
    m_dialog.setMinimumWidth(widthInCharacters * m_dialog.fontMetrics().averageCharWidth());
    m_dialog.setValue(0);
}

bool TransferProgress::step(int done, int all, const QString& what)
{
    constexpr int longestText = 55;
    const QString shown =
        what.size() > longestText ? QChar(0x2026) + what.right(longestText) : what;
    m_dialog.setMaximum(qMax(all, 1));
    m_dialog.setLabelText(shown);
    m_dialog.setValue(done);
    QApplication::processEvents();
    return !m_dialog.wasCanceled();
}

} // namespace kelp::patients
