#include "OCTSegmentationSelectionWidget.h"

#include "AppBase.h"
#include "HeidelbergExport.h"
#include "OCTScanUtils.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QCollator>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/OCTSegmentationSelectionWidget";

/// By id; numbers in ids count as numbers, so that "_2" comes before "_10".
QList<OCTScanSegPtr> sortedById(QList<OCTScanSegPtr> segmentations)
{
    QCollator order{QLocale(QLocale::English)}; // that of "C" knows no numbers
    order.setNumericMode(true);
    std::stable_sort(segmentations.begin(), segmentations.end(),
                     [&order](const OCTScanSegPtr& a, const OCTScanSegPtr& b) {
                         return order.compare(a->getId(), b->getId()) < 0;
                     });
    return segmentations;
}

} // namespace

OCTSegmentationSelectionWidget::OCTSegmentationSelectionWidget(QWidget* parent)
    : QWidget(parent), m_list(new QListWidget),
      m_newButton(new QPushButton(QStringLiteral("New Segmentation"))),
      m_deleteButton(new QPushButton(QStringLiteral("Delete")))
{
    m_list->setObjectName(QStringLiteral("segmentationList"));
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->installEventFilter(this);
    m_newButton->setObjectName(QStringLiteral("newSegmentation"));
    m_deleteButton->setObjectName(QStringLiteral("deleteSegmentation"));
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(m_newButton, 1);
    buttons->addWidget(m_deleteButton);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list);
    layout->addLayout(buttons);
    setFocusProxy(m_list);
    connectSignals();
    updateList(OCTScanPtr());
}

void OCTSegmentationSelectionWidget::connectSignals()
{
    KELP_CONNECT(sourcePath, connect(m_list, SIGNAL(itemClicked(QListWidgetItem*)), this,
                                     SLOT(selectionClicked(QListWidgetItem*))));
    KELP_CONNECT(sourcePath, connect(m_newButton, SIGNAL(clicked()), this,
                                     SIGNAL(btnNewSegmentationPressed())));
    KELP_CONNECT(sourcePath, connect(m_deleteButton, SIGNAL(clicked()), this,
                                     SIGNAL(btnDeleteSegmentationPressed())));
}

OCTScanSegPtr OCTSegmentationSelectionWidget::getSelected() const
{
    const QList<QListWidgetItem*> selected = m_list->selectedItems();
    return selected.isEmpty() ? OCTScanSegPtr() : m_segmentations.value(selected.first());
}

void OCTSegmentationSelectionWidget::setSelected(const OCTScanSegPtr& segmentation)
{
    const QSignalBlocker silent(m_list);
    m_list->setCurrentItem(nullptr);
    m_list->clearSelection();
    QListWidgetItem* const item =
        segmentation.isNull() ? nullptr : m_segmentations.key(segmentation, nullptr);
    if (item) {
        m_list->setCurrentItem(item, QItemSelectionModel::ClearAndSelect);
        updateEnabledStatuses();
    }
}

void OCTSegmentationSelectionWidget::updateList(OCTScanPtr oct)
{
    const OCTScanSegPtr selected = getSelected();
    {
        const QSignalBlocker silent(m_list);
        m_list->clear();
    }
    m_segmentations.clear();
    m_newButton->setEnabled(false);
    m_deleteButton->setEnabled(false);
    if (oct.isNull()) {
        return;
    }
    enableNew(oct);
    const auto segmentations =
        sortedById(OCTScanUtils::getAllSegmentationsOf(AppBase::getCurrentStudy(), oct));
    for (const OCTScanSegPtr& segmentation : segmentations) {
        auto* const item = new QListWidgetItem(segmentation->getId(), m_list);
        item->setToolTip(segmentation->getId());
        m_segmentations.insert(item, segmentation);
    }
    setSelected(selected);
}

void OCTSegmentationSelectionWidget::selectionClicked(QListWidgetItem* item)
{
    constexpr Place place{sourcePath,
                          "kelp::oct::OCTSegmentationSelectionWidget::selectionClicked"};
    const OCTScanSegPtr segmentation = m_segmentations.value(item);
    check(!segmentation.isNull(), place, "Selected OCT scan segmentation is null.");
    updateEnabledStatuses();
    Trace() << "emitting segmentationSelected()";
    emit segmentationSelected(segmentation);
}

void OCTSegmentationSelectionWidget::updateEnabledStatuses()
{
    const OCTScanSegPtr segmentation = getSelected();
    m_deleteButton->setEnabled(!segmentation.isNull());
    m_newButton->setEnabled(false);
    if (segmentation) {
        enableNew(segmentation->getOCT());
    }
}

void OCTSegmentationSelectionWidget::enableNew(const OCTScanPtr& scan)
{
    const bool loaded = scan && scan->isLoaded();
    m_newButton->setEnabled(loaded && canBeSegmented(*scan->getScanPattern()));
    m_newButton->setToolTip(loaded && !m_newButton->isEnabled()
                                ? QStringLiteral("Scans of this pattern cannot be segmented.")
                                : QString());
}

bool OCTSegmentationSelectionWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    auto& keyEvent = *static_cast<QKeyEvent*>(event);
    switch (keyEvent.key()) {
    case Qt::Key_Delete:
        deleteSelected();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        openSelected();
        break;
    default:
        moveSelection(keyEvent);
    }
    return true;
}

void OCTSegmentationSelectionWidget::deleteSelected()
{
    if (m_deleteButton->isEnabled()) {
        m_deleteButton->click();
    }
}

void OCTSegmentationSelectionWidget::openSelected()
{
    const QList<QListWidgetItem*> selected = m_list->selectedItems();
    if (!selected.isEmpty()) {
        selectionClicked(selected.first());
    }
}

void OCTSegmentationSelectionWidget::moveSelection(QKeyEvent& event)
{
    const OCTScanSegPtr before = getSelected();
    // Past the filter, which has the event already.
    static_cast<QObject*>(m_list)->event(&event);
    if (getSelected() != before) {
        openSelected();
    }
}

} // namespace kelp::oct

#include "moc_OCTSegmentationSelectionWidget.cpp"
