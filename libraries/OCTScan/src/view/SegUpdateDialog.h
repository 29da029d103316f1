#pragma once

#include "SegInterface.h"

#include <QDialog>

class QLabel;
class QProgressBar;
class QTextEdit;

namespace kelp::oct {

/// The modal dialog that shows a run and keeps the user out of the data meanwhile. Closing it by
/// the Escape key or the window's button aborts the run, which must not go on unseen.
class SegUpdateDialog : public QDialog
{
    Q_OBJECT

public:
    SegUpdateDialog(QSharedPointer<SegInterface> segInterface, QWidget* parent,
                    Qt::WindowFlags flags = {});
    void setSegInterface(const QSharedPointer<SegInterface>& segInterface);

public slots:
    void segmentationStarted();
    void statusChanged(QString message);
    void segmentationFailure(QString message);
    void segmentationSuccess();
    void segmentationProgress(int percentageCompleted);
    void abortSegmentation();
    void reject() override;

private:
    QSharedPointer<SegInterface> m_segInterface;
    QLabel* m_label = nullptr;
    QTextEdit* m_log = nullptr;
    QProgressBar* m_bar = nullptr;
    bool m_running = false;
};

} // namespace kelp::oct
