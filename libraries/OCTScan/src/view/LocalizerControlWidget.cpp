#include "LocalizerControlWidget.h"

#include "LocalizerGraphicsViewer.h"
#include "kelpCheck.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLCDNumber>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/LocalizerControlWidget";
constexpr int viewerSize = 250;
/// Page Up and Page Down take about this share of all B-scans.
constexpr int pagesPerScan = 10;

/// The B-scan that the viewers start with too.
int middleSlice(int sliceCount)
{
    return std::min(static_cast<int>(std::lrint(0.5 * sliceCount)), sliceCount - 1);
}

} // namespace

LocalizerControlWidget::LocalizerControlWidget(QWidget* parent) : QWidget(parent)
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    addViewer();
    addPagingRow();
    connectSignals();
    clearOCT();
}

void LocalizerControlWidget::addViewer()
{
    m_viewer = new LocalizerGraphicsViewer;
    m_viewer->setObjectName(QStringLiteral("localizerViewer"));
    m_viewer->setFixedSize(viewerSize, viewerSize);
    m_viewer->setWheelZoomEnabled(false);
    m_viewer->setDragEnabled(false);
    m_viewer->setFocusPolicy(Qt::StrongFocus);
    m_viewer->installEventFilter(this);
    m_viewer->viewport()->installEventFilter(this);
    layout()->addWidget(new QLabel(QStringLiteral("Localizer:")));
    layout()->addWidget(m_viewer);
    layout()->setAlignment(m_viewer, Qt::AlignHCenter);
}

void LocalizerControlWidget::addPagingRow()
{
    m_leftArrow = new QToolButton;
    m_leftArrow->setObjectName(QStringLiteral("previousBScan"));
    m_leftArrow->setArrowType(Qt::LeftArrow);
    m_leftArrow->setToolTip(QStringLiteral("Previous B-scan"));
    m_rightArrow = new QToolButton;
    m_rightArrow->setObjectName(QStringLiteral("nextBScan"));
    m_rightArrow->setArrowType(Qt::RightArrow);
    m_rightArrow->setToolTip(QStringLiteral("Next B-scan"));
    m_slider = new QSlider(Qt::Horizontal);
    m_slider->setObjectName(QStringLiteral("bScanSlider"));
    m_slider->installEventFilter(this);
    m_sliceNumber = new QLCDNumber;
    m_sliceNumber->setObjectName(QStringLiteral("bScanNumber"));
    m_sliceNumber->setSegmentStyle(QLCDNumber::Flat);
    // As many digits as scans need, and big enough for its segments to be told apart.
    constexpr int digits = 3;
    constexpr QSize numberSize(56, 32);
    m_sliceNumber->setDigitCount(digits);
    m_sliceNumber->setFrameShape(QFrame::NoFrame);
    m_sliceNumber->setFixedSize(numberSize);

    auto* const row = new QHBoxLayout;
    row->addWidget(m_leftArrow);
    row->addWidget(m_slider, 1);
    row->addWidget(m_rightArrow);
    row->addWidget(m_sliceNumber);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

void LocalizerControlWidget::connectSignals()
{
    KELP_CONNECT(sourcePath, connect(m_leftArrow, SIGNAL(clicked()), this, SLOT(decreaseSlice())));
    KELP_CONNECT(sourcePath, connect(m_rightArrow, SIGNAL(clicked()), this, SLOT(increaseSlice())));
    KELP_CONNECT(sourcePath,
                 connect(m_slider, SIGNAL(valueChanged(int)), this, SLOT(selectSlice(int))));
    KELP_CONNECT(sourcePath,
                 connect(m_viewer, SIGNAL(bScanSelected(int)), this, SLOT(selectSlice(int))));
    KELP_CONNECT(sourcePath,
                 connect(m_viewer, SIGNAL(aScanSelected(int)), this, SIGNAL(aScanSelected(int))));
}

void LocalizerControlWidget::setOCT(const OCTScanPtr& scan)
{
    constexpr Place place{sourcePath, "kelp::oct::LocalizerControlWidget::setOCT"};
    check(!scan.isNull(), place, "OCT scan is null.");
    clearOCT();
    m_viewer->setOCT(scan);
    m_sliceCount = scan->getBScanCount();
    {
        const QSignalBlocker silent(m_slider);
        m_slider->setRange(0, std::max(0, m_sliceCount - 1));
        m_slider->setPageStep(std::max(1, m_sliceCount / pagesPerScan));
    }
    m_slider->setEnabled(m_sliceCount > 1);
    m_sliceNumber->setDigitCount(
        std::max(2, static_cast<int>(QString::number(m_sliceCount).size())));
    setActiveSlice(middleSlice(m_sliceCount));
}

void LocalizerControlWidget::setMask(const SegmentationMaskPtr& mask)
{
    constexpr Place place{sourcePath, "kelp::oct::LocalizerControlWidget::setMask"};
    check(!mask.isNull(), place, "Segmentation mask is null.");
    m_viewer->setMask(mask);
}

void LocalizerControlWidget::clearMask()
{
    m_viewer->clearMask();
}

void LocalizerControlWidget::clearOCT()
{
    m_viewer->clearOCT();
    m_sliceCount = 0;
    m_activeSlice = -1;
    m_leftArrow->setEnabled(false);
    m_rightArrow->setEnabled(false);
    const QSignalBlocker silent(m_slider);
    m_slider->setRange(0, 0);
    m_slider->setEnabled(false);
    m_sliceNumber->display(QString());
    m_sliceNumber->setToolTip(QString());
}

void LocalizerControlWidget::setActiveSlice(int index)
{
    if (!isSliceValid(index)) {
        return;
    }
    m_activeSlice = index;
    m_viewer->setActiveSlice(index);
    const QString number = QStringLiteral("B-scan %1 of %2").arg(index + 1).arg(m_sliceCount);
    m_sliceNumber->display(index + 1);
    m_sliceNumber->setToolTip(number);
    m_slider->setToolTip(number);
    m_leftArrow->setEnabled(index != 0);
    m_rightArrow->setEnabled(index != m_sliceCount - 1);
    const QSignalBlocker silent(m_slider);
    m_slider->setValue(index);
}

void LocalizerControlWidget::setActivePosition(int aScanIndex)
{
    m_viewer->setActivePosition(aScanIndex);
}

void LocalizerControlWidget::decreaseSlice()
{
    stepBy(-1);
}

void LocalizerControlWidget::increaseSlice()
{
    stepBy(1);
}

void LocalizerControlWidget::selectSlice(int index)
{
    setActiveSlice(index);
    emit bScanSelected(index);
}

void LocalizerControlWidget::stepBy(int steps)
{
    if (m_sliceCount == 0) {
        return;
    }
    const int index = std::clamp(m_activeSlice + steps, 0, m_sliceCount - 1);
    if (index != m_activeSlice) {
        selectSlice(index);
    }
}

bool LocalizerControlWidget::stepByKey(int key)
{
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        stepBy(-1);
        return true;
    case Qt::Key_Right:
    case Qt::Key_Down:
        stepBy(1);
        return true;
    case Qt::Key_PageUp:
        stepBy(-m_slider->pageStep());
        return true;
    case Qt::Key_PageDown:
        stepBy(m_slider->pageStep());
        return true;
    case Qt::Key_Home:
        stepBy(-m_sliceCount);
        return true;
    case Qt::Key_End:
        stepBy(m_sliceCount);
        return true;
    default:
        return false;
    }
}

void LocalizerControlWidget::stepByWheel(QWheelEvent& event)
{
    event.setAccepted(event.modifiers().testFlag(Qt::ControlModifier));
    if (!event.isAccepted()) {
        return;
    }
    m_wheelRest -= event.angleDelta().y();
    const int steps = m_wheelRest / QWheelEvent::DefaultDeltasPerStep;
    m_wheelRest -= steps * QWheelEvent::DefaultDeltasPerStep;
    stepBy(steps);
}

bool LocalizerControlWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto& keyEvent = *static_cast<QKeyEvent*>(event);
        // With modifiers they mean something else to the main form, such as the next tab.
        return (keyEvent.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
               stepByKey(keyEvent.key());
    }
    if (event->type() == QEvent::Wheel) {
        // Without Ctrl it scrolls the panel, wherever the mouse happens to be.
        stepByWheel(*static_cast<QWheelEvent*>(event));
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void LocalizerControlWidget::wheelEvent(QWheelEvent* event)
{
    stepByWheel(*event);
}

} // namespace kelp::oct

#include "moc_LocalizerControlWidget.cpp"
