#include "OCTScanControlWidget.h"

#include "EditMaskDialog.h"
#include "FailureBox.h"
#include "LocalizerControlWidget.h"
#include "LocalizerGraphicsViewer.h"
#include "MetaInfoView.h"
#include "OCTScanSelectionWidget.h"
#include "OCTSegmentationSelectionWidget.h"
#include "kelpCheck.h"
#include "kelpRegionTool.h"
#include "kelpTrace.h"

#include <QGraphicsScene>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTScanControlWidget";
constexpr char scanIsNull[] = "OCT scan is null.";
constexpr char segmentationIsNull[] = "OCT scan segmentation is null.";
constexpr char maskIsNull[] = "Mask is null.";
constexpr char toolIsNull[] = "Active region tool is null.";
constexpr int panelWidth = 310;
constexpr int listHeight = 90;

const QString maskErrorTitle = QStringLiteral("Mask Editing Dialog Error");

} // namespace

OCTScanControlWidget::OCTScanControlWidget(QWidget* parent)
    : QWidget(parent), m_regionTool(new RegionTool)
{
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->addWidget(createDataSelection());
    m_localizer = new LocalizerControlWidget;
    column->addWidget(m_localizer);
    column->addWidget(createMaskGroup());
    addInformation(*column);
    column->addStretch();

    auto* const scroller = new QScrollArea;
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->setWidget(content);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroller);
    setFixedWidth(panelWidth);
    connectSignals();
    clearOCT();
}

OCTScanControlWidget::~OCTScanControlWidget()
{
    // Before the scene of a mask editor that may still be open.
    delete m_regionTool;
}

QWidget* OCTScanControlWidget::createDataSelection()
{
    m_scanSelection = new OCTScanSelectionWidget;
    m_scanSelection->setMinimumHeight(listHeight);
    m_segmentationSelection = new OCTSegmentationSelectionWidget;
    m_segmentationSelection->setMinimumHeight(listHeight);
    auto* const group = new QGroupBox(QStringLiteral("Data Selection"));
    auto* const layout = new QVBoxLayout(group);
    layout->addWidget(new QLabel(QStringLiteral("OCT Scans:")));
    layout->addWidget(m_scanSelection);
    layout->addWidget(new QLabel(QStringLiteral("Corresponding Segmentations:")));
    layout->addWidget(m_segmentationSelection);
    return group;
}

QWidget* OCTScanControlWidget::createMaskGroup()
{
    m_editMaskButton = new QPushButton(QStringLiteral("Edit Mask"));
    m_editMaskButton->setObjectName(QStringLiteral("editMask"));
    auto* const group = new QGroupBox(QStringLiteral("Edit Mask:"));
    auto* const layout = new QVBoxLayout(group);
    layout->addWidget(m_editMaskButton);
    return group;
}

void OCTScanControlWidget::addInformation(QVBoxLayout& column)
{
    const auto add = [&column](const QString& caption, const QString& name) {
        auto* const view = new MetaInfoView;
        view->setObjectName(name);
        auto* const group = new QGroupBox(caption);
        auto* const layout = new QVBoxLayout(group);
        layout->addWidget(view);
        column.addWidget(group);
        return view;
    };
    m_scanInformation =
        add(QStringLiteral("OCT Scan Information:"), QStringLiteral("scanInformation"));
    m_bScanInformation =
        add(QStringLiteral("BScan Information:"), QStringLiteral("bScanInformation"));
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
    m_scanInformation->clear();
    m_bScanInformation->clear();
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
    m_scanInformation->clear();
    m_scanInformation->addLines(QString(), metaInfoLines(m_octScan->getMetaInfo(), locale));
    if (const auto localizer = m_octScan->getLocalizer()) {
        m_scanInformation->addLines(QStringLiteral("Localizer"),
                                    metaInfoLines(localizer->getMetaInfo(), locale));
    }
}

void OCTScanControlWidget::showBScanInformation(int bScanIndex)
{
    if (bScanIndex < 0 || bScanIndex >= m_octScan->getBScanCount()) {
        return;
    }
    m_bScanInformation->clear();
    if (const auto bScan = m_octScan->getBScan(static_cast<unsigned>(bScanIndex))) {
        m_bScanInformation->addLines(QString(), metaInfoLines(bScan->getMetaInfo(), QLocale()));
    }
}

OCTScanPtr OCTScanControlWidget::loadedScan(Data* item)
{
    if (!item) {
        throw Exception("Data is null.");
    }
    if (!item->isA(OCTScan::classId())) {
        throw Exception("Data is not an OCT scan.");
    }
    const OCTScanPtr scan = dynamic_cast<OCTScan*>(item);
    if (scan) {
        scan->ensureLoaded();
    }
    if (scan.isNull()) {
        throw Exception("The OCT scan is null.");
    }
    return scan;
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

void OCTScanControlWidget::showMask()
{
    m_localizer->setMask(m_mask);
    if (m_editMaskDialog) {
        m_editMaskDialog->getViewer()->setMask(m_mask);
    }
}

void OCTScanControlWidget::updateMask()
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::updateMask"};
    check(!m_octScanSegmentation.isNull(), place, segmentationIsNull);
    m_mask = m_octScanSegmentation->getMask();
    check(!m_mask.isNull(), place, maskIsNull);
    showMask();
}

void OCTScanControlWidget::editMaskPressed()
{
    guarded(this, QStringLiteral("Editing the mask failed:\n"), maskErrorTitle,
            [this] { openEditMaskFrame(); });
}

void OCTScanControlWidget::openEditMaskFrame()
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::openEditMaskFrame"};
    check(!m_octScan.isNull(), place, "OCT is null.");
    check(!m_regionTool.isNull(), place, toolIsNull);

    EditMaskDialog editMaskDialog(this);
    if (!guarded(this, QStringLiteral("Setting the OCT in the mask editing dialog failed:\n"),
                 maskErrorTitle, [&] { editMaskDialog.getViewer()->setOCT(m_octScan); })) {
        return;
    }
    drawMask(editMaskDialog);
}

void OCTScanControlWidget::drawMask(EditMaskDialog& dialog)
{
    EditMaskDialog* const editMaskDialog = &dialog;
    m_editMaskDialog = editMaskDialog;
    if (m_mask) {
        editMaskDialog->getViewer()->setMask(m_mask);
    }
    QGraphicsScene* const scene = editMaskDialog->getViewer()->scene();
    scene->addItem(m_regionTool);
    m_regionTool->resetPolygon();
    KELP_CONNECT(sourcePath,
                 connect(editMaskDialog, SIGNAL(btnClearClicked()), this, SLOT(deleteAllMasks())));
    KELP_CONNECT(sourcePath, connect(m_regionTool, SIGNAL(polygonCreated(QPolygonF)), this,
                                     SLOT(polygonCreated(QPolygonF)), Qt::UniqueConnection));
    m_regionTool->grabMouse();
    editMaskDialog->exec();
    scene->removeItem(m_regionTool);
    m_regionTool->resetPolygon();
}

void OCTScanControlWidget::polygonCreated(QPolygonF polygonPoints)
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::polygonCreated"};
    check(!m_mask.isNull(), place, maskIsNull);
    m_mask->addPolygon(polygonPoints);
    showMask();
    if (m_regionTool) {
        m_regionTool->resetPolygon();
    }
    emit maskChanged();
}

void OCTScanControlWidget::deleteAllMasks()
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::deleteAllMasks"};
    check(!m_mask.isNull(), place, maskIsNull);
    check(!m_regionTool.isNull(), place, toolIsNull);
    m_mask->clear();
    showMask();
    m_regionTool->resetPolygon();
    emit maskChanged();
}

} // namespace kelp::oct

#include "moc_OCTScanControlWidget.cpp"
