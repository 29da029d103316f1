#include "SegUpdateDialog.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTextEdit>
#include <QThread>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/SegUpdateDialog";
constexpr Place successPlace{sourcePath, "kelp::oct::SegUpdateDialog::segmentationSuccess"};

// How long the last text stays readable before the dialog goes.
constexpr unsigned long failureShownMs = 1000;
constexpr unsigned long abortShownMs = 500;

/// What was set just before is on the screen when this returns, although no event is handled.
void showAtOnce(QDialog& dialog)
{
    dialog.layout()->activate();
    dialog.repaint();
}

} // namespace

SegUpdateDialog::SegUpdateDialog(QSharedPointer<SegInterface> segInterface, QWidget* parent,
                                 Qt::WindowFlags flags)
    : QDialog(parent, flags)
{
    constexpr int logWidth = 400;
    constexpr int logHeight = 300;
    setModal(true);
    setWindowTitle(QStringLiteral("Segmentation"));
    auto* const box = new QVBoxLayout;
    setLayout(box);
    m_label = new QLabel;
    m_label->setWordWrap(true);
    m_log = new QTextEdit;
    m_log->setFixedSize(logWidth, logHeight);
    m_log->setReadOnly(true);
    m_bar = new QProgressBar;
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    auto* const abortButton = new QPushButton(QStringLiteral("Abort Segmentation"));
    KELP_CONNECT(sourcePath,
                 connect(abortButton, SIGNAL(clicked()), this, SLOT(abortSegmentation())));
    box->addWidget(m_label);
    box->addWidget(m_log);
    box->addWidget(m_bar);
    box->addWidget(abortButton);
    setSegInterface(segInterface);
}

void SegUpdateDialog::setSegInterface(const QSharedPointer<SegInterface>& segInterface)
{
    if (m_segInterface) {
        disconnect(m_segInterface.data(), nullptr, this, nullptr);
    }
    m_segInterface = segInterface;
    const auto* const source = m_segInterface.data();
    KELP_CONNECT(sourcePath,
                 connect(source, SIGNAL(segmentationStarted()), this, SLOT(segmentationStarted())));
    KELP_CONNECT(sourcePath, connect(source, SIGNAL(statusChanged(QString)), this,
                                     SLOT(statusChanged(QString))));
    KELP_CONNECT(sourcePath, connect(source, SIGNAL(segmentationFailure(QString)), this,
                                     SLOT(segmentationFailure(QString))));
    KELP_CONNECT(sourcePath,
                 connect(source, SIGNAL(segmentationSuccess()), this, SLOT(segmentationSuccess())));
    KELP_CONNECT(sourcePath, connect(source, SIGNAL(segmentationProgress(int)), this,
                                     SLOT(segmentationProgress(int))));
}

void SegUpdateDialog::segmentationStarted()
{
    m_running = true;
    m_label->setText(QStringLiteral("Segmenting..."));
    m_log->clear();
    m_log->append(QStringLiteral("Segmentation started"));
    show();
}

void SegUpdateDialog::statusChanged(QString message)
{
    m_log->append(message);
}

void SegUpdateDialog::segmentationProgress(int percentageCompleted)
{
    m_bar->setValue(percentageCompleted);
}

void SegUpdateDialog::segmentationSuccess()
{
    m_running = false;
    Trace() << locatedText(successPlace, QStringLiteral("s u c c e s s"));
    m_bar->setValue(m_bar->maximum());
    m_label->setText(QStringLiteral("Segmentation success"));
    Trace() << locatedText(successPlace, QStringLiteral("close"));
    hide();
}

void SegUpdateDialog::segmentationFailure(QString message)
{
    m_running = false;
    m_label->setText(QStringLiteral("Segmentation failed:\n") + message);
    showAtOnce(*this);
    QThread::msleep(failureShownMs);
    close();
}

void SegUpdateDialog::abortSegmentation()
{
    m_label->setText(QStringLiteral("Aborting segmentation"));
    showAtOnce(*this);
    m_segInterface->abortSegmentation();
    QThread::msleep(abortShownMs);
    hide();
}

void SegUpdateDialog::reject()
{
    if (m_running) {
        abortSegmentation();
    } else {
        QDialog::reject();
    }
}

} // namespace kelp::oct

#include "moc_SegUpdateDialog.cpp"
