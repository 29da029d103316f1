#include "OCTScanControlWidget.h"

#include "FailureBox.h"
#include "LocalizerControlWidget.h"
#include "MetaInfoView.h"
#include "OCTScanChecks.h"
#include "OCTScanSelectionWidget.h"
#include "OCTSegmentationSelectionWidget.h"
#include "WaitCursor.h"
#include "kelpCheck.h"
#include "kelpRegionTool.h"
#include "kelpTrace.h"

#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTScanControlWidget";
constexpr char scanIsNull[] = "OCT scan is null.";
constexpr char segmentationIsNull[] = "OCT scan segmentation is null.";
constexpr char maskIsNull[] = "Mask is null.";
constexpr int usualWidth = 310;
constexpr int usualHeight = 700;
constexpr int scanListHeight = 80;
/// Between the contents and the scroll bar.
constexpr int contentMargin = 4;

QWidget* grouped(const QString& caption, QWidget* widget)
{
    auto* const group = new QGroupBox(caption);
    auto* const layout = new QVBoxLayout(group);
    layout->addWidget(widget);
    return group;
}

/// Throws a kelp::Exception that tells what is wrong with the item.
OCTScanPtr loadedScan(Data* item)
{
    if (!item) {
        throw Exception("Data is null.");
    }
    if (!item->isA(OCTScan::classId())) {
        throw Exception("Data is not an OCT scan.");
    }
    const OCTScanPtr scan = dynamic_cast<OCTScan*>(item);
    if (scan) {
        const WaitCursor wait;
        loadScan(*scan);
    }
    if (scan.isNull()) {
        throw Exception("The OCT scan is null.");
    }
    return scan;
}

} // namespace

OCTScanControlWidget::OCTScanControlWidget(QWidget* parent)
    : QWidget(parent), m_scroller(new QScrollArea), m_regionTool(new RegionTool)
{
    m_scroller->setWidget(createContent());
    m_scroller->setWidgetResizable(true);
    m_scroller->setFrameShape(QFrame::NoFrame);
    m_scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_scroller);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    connectSignals();
    clearOCT();
}

OCTScanControlWidget::~OCTScanControlWidget()
{
    // Before the scene of a mask editor that may still be open.
    delete m_regionTool;
}

QWidget* OCTScanControlWidget::createContent()
{
    m_localizer = new LocalizerControlWidget;
    m_scanInformation = new MetaInfoView;
    m_scanInformation->setObjectName(QStringLiteral("scanInformation"));
    m_bScanInformation = new MetaInfoView;
    m_bScanInformation->setObjectName(QStringLiteral("bScanInformation"));

    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, contentMargin, 0);
    // What is left of a high window goes to the lists.
    column->addWidget(createDataSelection(), 1);
    column->addWidget(m_localizer);
    column->addLayout(createMaskRow());
    column->addWidget(grouped(QStringLiteral("OCT Scan Information:"), m_scanInformation));
    column->addWidget(grouped(QStringLiteral("BScan Information:"), m_bScanInformation));
    return content;
}

QWidget* OCTScanControlWidget::createDataSelection()
{
    m_scanSelection = new OCTScanSelectionWidget;
    m_scanSelection->setMinimumHeight(scanListHeight);
    m_scanSelection->setToolTip(QStringLiteral("Double-click a scan to open it."));
    m_segmentationSelection = new OCTSegmentationSelectionWidget;
    auto* const group = new QGroupBox(QStringLiteral("Data Selection"));
    auto* const layout = new QVBoxLayout(group);
    layout->addWidget(new QLabel(QStringLiteral("OCT Scans:")));
    layout->addWidget(m_scanSelection);
    layout->addWidget(new QLabel(QStringLiteral("Corresponding Segmentations:")));
    layout->addWidget(m_segmentationSelection);
    return group;
}

QLayout* OCTScanControlWidget::createMaskRow()
{
    m_editMaskButton = new QPushButton(QStringLiteral("Edit Mask"));
    m_editMaskButton->setObjectName(QStringLiteral("editMask"));
    m_editMaskButton->setToolTip(
        QStringLiteral("Exclude regions of the scan. A mask belongs to a segmentation: "
                       "select or make one first."));
    auto* const row = new QHBoxLayout;
    row->addWidget(new QLabel(QStringLiteral("Edit Mask:")));
    row->addWidget(m_editMaskButton, 1);
    return row;
}

QSize OCTScanControlWidget::sizeHint() const
{
    const int contentWidth = m_scroller->widget()->minimumSizeHint().width();
    const int scrollBarWidth = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    return {std::max(usualWidth, contentWidth + scrollBarWidth), usualHeight};
}

QSize OCTScanControlWidget::minimumSizeHint() const
{
    return {sizeHint().width(), 0};
}

void OCTScanControlWidget::connectSignals()
{
    KELP_CONNECT(sourcePath, connect(m_scanSelection, SIGNAL(selectionDoubleClicked(Data*)), this,
                                     SLOT(octScanSelected(Data*))));
    KELP_CONNECT(sourcePath, connect(m_scanSelection, SIGNAL(selectionChanged(Data*)), this,
                                     SLOT(octScanHighlighted(Data*))));
    KELP_CONNECT(sourcePath,
                 connect(m_segmentationSelection, SIGNAL(segmentationSelected(OCTScanSegPtr)), this,
                         SIGNAL(segmentationSelected(OCTScanSegPtr))));
    KELP_CONNECT(sourcePath, connect(m_segmentationSelection, SIGNAL(btnNewSegmentationPressed()),
                                     this, SIGNAL(btnNewSegmentationPressed())));
    KELP_CONNECT(sourcePath,
                 connect(m_segmentationSelection, SIGNAL(btnDeleteSegmentationPressed()), this,
                         SLOT(btnDeleteSegmentationPressed())));
    KELP_CONNECT(sourcePath, connect(m_localizer, SIGNAL(aScanSelected(int)), this,
                                     SIGNAL(aScanSelected(int))));
    KELP_CONNECT(sourcePath, connect(m_localizer, SIGNAL(bScanSelected(int)), this,
                                     SLOT(localizerBScanSelected(int))));
    KELP_CONNECT(sourcePath,
                 connect(m_editMaskButton, SIGNAL(clicked()), this, SLOT(editMaskPressed())));
}

OCTScanPtr OCTScanControlWidget::getOCT() const
{
    return m_octScan;
}

int OCTScanControlWidget::getActiveBScan() const
{
    return m_localizer->getActiveSlice();
}

void OCTScanControlWidget::setOCT(OCTScanPtr scan)
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::setOCT"};
    check(!scan.isNull(), place, scanIsNull);
    m_octScan = scan;
    forgetSegmentation();
    m_scanSelection->setSelected(scan.data());
    m_segmentationSelection->updateList(scan);
    m_localizer->setOCT(scan);
    showScanInformation();
    showBScanInformation(m_localizer->getActiveSlice());
    Trace() << "done";
}

void OCTScanControlWidget::setActiveBScan(int bScanIndex)
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::setActiveBScan"};
    check(!m_octScan.isNull(), place, scanIsNull);
    m_localizer->setActiveSlice(bScanIndex);
    showBScanInformation(bScanIndex);
}

void OCTScanControlWidget::setActiveAScan(int aScanIndex)
{
    m_localizer->setActivePosition(aScanIndex);
}

void OCTScanControlWidget::localizerBScanSelected(int bScanIndex)
{
    showBScanInformation(bScanIndex);
    emit bScanSelected(bScanIndex);
}

void OCTScanControlWidget::refresh()
{
    m_segmentationSelection->updateList(m_octScan);
}

void OCTScanControlWidget::setOCTScanSegmentation(OCTScanSegPtr octScanSeg)
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::setOCTScanSegmentation"};
    check(!octScanSeg.isNull(), place, segmentationIsNull);
    check(!m_octScan.isNull(), place, scanIsNull);
    const SegmentationMaskPtr mask = octScanSeg->getMask();
    check(!mask.isNull(), place, maskIsNull);
    m_octScanSegmentation = octScanSeg;
    m_mask = mask;
    m_segmentationSelection->setSelected(octScanSeg);
    m_editMaskButton->setEnabled(true);
    showMask();
}

void OCTScanControlWidget::clearOCT()
{
    forgetSegmentation();
    m_octScan = OCTScanPtr();
    m_scanSelection->setSelected(nullptr);
    m_segmentationSelection->updateList(OCTScanPtr());
    m_localizer->clearOCT();
    m_scanInformation->setSections({});
    m_bScanInformation->setSections({});
}

void OCTScanControlWidget::forgetSegmentation()
{
    m_octScanSegmentation = OCTScanSegPtr();
    m_mask.reset();
    m_localizer->clearMask();
    m_editMaskButton->setEnabled(false);
}

void OCTScanControlWidget::showScanInformation()
{
    const QLocale locale;
    QList<MetaInfoSection> sections{{QString(), metaInfoLines(m_octScan->getMetaInfo(), locale)}};
    if (const auto localizer = m_octScan->getLocalizer()) {
        sections.append(
            {QStringLiteral("Localizer"), metaInfoLines(localizer->getMetaInfo(), locale)});
    }
    m_scanInformation->setSections(sections);
}

void OCTScanControlWidget::showBScanInformation(int bScanIndex)
{
    if (bScanIndex < 0 || bScanIndex >= m_octScan->getBScanCount()) {
        return;
    }
    const auto bScan = m_octScan->getBScan(static_cast<unsigned>(bScanIndex));
    const MetaInfo metaInfo = bScan ? bScan->getMetaInfo() : MetaInfo();
    m_bScanInformation->setSections({{QString(), metaInfoLines(metaInfo, QLocale())}});
}

void OCTScanControlWidget::octScanSelected(Data* item)
{
    OCTScanPtr scan;
    const bool selected = guarded(this, QStringLiteral("Error selecting the OCT: "),
                                  QStringLiteral("Error selecting the OCT"), [this, item, &scan] {
                                      scan = loadedScan(item);
                                      setOCT(scan);
                                  });
    if (selected) {
        emit newOCTScanLoaded(scan);
    } else {
        // The list is not to name another scan than the one shown.
        m_scanSelection->setSelected(m_octScan.data());
    }
}

void OCTScanControlWidget::octScanHighlighted(Data* item)
{
    if (!item && m_octScan) {
        clearOCT();
        emit OCTScanDeselected();
    }
}

void OCTScanControlWidget::btnDeleteSegmentationPressed()
{
    const OCTScanSegPtr segmentation = m_segmentationSelection->getSelected();
    if (m_octScan.isNull()) {
        showFailure(this, QStringLiteral("Deleting the Segmentation Failed"),
                    QStringLiteral("Deleting the segmentation failed: The OCT is null\n"));
        return;
    }
    if (segmentation.isNull()) {
        return;
    }
    const QString question =
        QStringLiteral("Delete the segmentation \"%1\" with all its layers and masks?\n"
                       "This cannot be undone.")
            .arg(segmentation->getId());
    if (QMessageBox::question(this, QStringLiteral("Delete Segmentation"), question,
                              QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) != QMessageBox::Yes) {
        return;
    }
    emit deleteSegment(segmentation);
    refresh();
}

} // namespace kelp::oct

#include "moc_OCTScanControlWidget.cpp"
