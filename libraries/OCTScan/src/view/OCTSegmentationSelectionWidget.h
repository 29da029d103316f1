#pragma once

#include "OCTScanSegmentation.h"

#include <QMap>
#include <QWidget>

class QKeyEvent;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace kelp::oct {

/// The segmentations of a scan by their ids, and the buttons that make and delete one. A click, the
/// keys that move through the list, and Enter select; Delete asks for the deletion.
class OCTSegmentationSelectionWidget : public QWidget
{
    Q_OBJECT

public:
    explicit OCTSegmentationSelectionWidget(QWidget* parent = nullptr);

    /// Null for none.
    OCTScanSegPtr getSelected() const;
    /// Null or one that is not listed selects none. Emits nothing.
    void setSelected(const OCTScanSegPtr& segmentation);

public slots:
    /// Lists the segmentations that the current study has of the scan. What was selected stays
    /// selected as long as it is listed. Emits nothing.
    void updateList(OCTScanPtr oct);
    void selectionClicked(QListWidgetItem* item);
    /// For what is selected. With nothing selected neither button can be used until the next
    /// updateList.
    void updateEnabledStatuses();

signals:
    void segmentationSelected(OCTScanSegPtr segmentation);
    void btnNewSegmentationPressed();
    void btnDeleteSegmentationPressed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectSignals();
    void enableNew(const OCTScanPtr& scan);
    void deleteSelected();
    void openSelected();
    /// Lets the list handle the key, then opens what it selected.
    void moveSelection(QKeyEvent& event);

    QListWidget* m_list = nullptr;
    QPushButton* m_newButton = nullptr;
    QPushButton* m_deleteButton = nullptr;
    QMap<QListWidgetItem*, OCTScanSegPtr> m_segmentations;
};

} // namespace kelp::oct
