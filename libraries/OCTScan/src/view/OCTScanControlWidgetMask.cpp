// The mask editing of the control panel.
#include "EditMaskDialog.h"
#include "FailureBox.h"
#include "LocalizerControlWidget.h"
#include "LocalizerGraphicsViewer.h"
#include "OCTScanControlWidget.h"
#include "kelpCheck.h"
#include "kelpRegionTool.h"

#include <QGraphicsScene>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTScanControlWidget";
constexpr char maskIsNull[] = "Mask is null.";
constexpr char toolIsNull[] = "Active region tool is null.";

const QString errorTitle = QStringLiteral("Mask Editing Dialog Error");

} // namespace

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
    check(!m_octScanSegmentation.isNull(), place, "OCT scan segmentation is null.");
    m_mask = m_octScanSegmentation->getMask();
    check(!m_mask.isNull(), place, maskIsNull);
    showMask();
}

void OCTScanControlWidget::editMaskPressed()
{
    guarded(this, QStringLiteral("Editing the mask failed:\n"), errorTitle,
            [this] { openEditMaskFrame(); });
}

void OCTScanControlWidget::openEditMaskFrame()
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::openEditMaskFrame"};
    check(!m_octScan.isNull(), place, "OCT is null.");
    check(!m_regionTool.isNull(), place, toolIsNull);

    auto* const editMaskDialog = new EditMaskDialog(this);
    m_editMaskDialog = editMaskDialog;
    const bool set =
        guarded(this, QStringLiteral("Setting the OCT in the mask editing dialog failed:\n"),
                errorTitle, [this] {
                    m_editMaskDialog->getViewer()->setOCT(m_octScan);
                    if (m_mask) {
                        m_editMaskDialog->getViewer()->setMask(m_mask);
                    }
                });
    if (set) {
        connectTool(editMaskDialog);
        const QPointer<OCTScanControlWidget> panel(this);
        editMaskDialog->exec();
        // The program may have been left meanwhile.
        if (panel.isNull()) {
            return;
        }
        takeToolBack();
    }
    delete m_editMaskDialog;
}

void OCTScanControlWidget::connectTool(EditMaskDialog* editMaskDialog)
{
    editMaskDialog->getViewer()->scene()->addItem(m_regionTool);
    m_regionTool->resetPolygon();
    KELP_CONNECT(sourcePath,
                 connect(editMaskDialog, SIGNAL(btnClearClicked()), this, SLOT(deleteAllMasks())));
    KELP_CONNECT(sourcePath, connect(m_regionTool, SIGNAL(polygonCreated(QPolygonF)), this,
                                     SLOT(polygonCreated(QPolygonF))));
    m_regionTool->grabMouse();
}

void OCTScanControlWidget::takeToolBack()
{
    if (m_regionTool.isNull()) {
        return;
    }
    disconnect(m_regionTool, nullptr, this, nullptr);
    // Gives the mouse back too.
    m_regionTool->scene()->removeItem(m_regionTool);
    m_regionTool->resetPolygon();
}

void OCTScanControlWidget::polygonCreated(QPolygonF polygonPoints)
{
    constexpr Place place{sourcePath, "kelp::oct::OCTScanControlWidget::polygonCreated"};
    check(!m_mask.isNull(), place, maskIsNull);
    // A right click before anything is drawn.
    if (polygonPoints.isEmpty()) {
        return;
    }
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
    const bool hadMasks = !m_mask->getPolygons().isEmpty();
    m_mask->clear();
    showMask();
    m_regionTool->resetPolygon();
    if (hadMasks) {
        emit maskChanged();
    }
}

} // namespace kelp::oct
