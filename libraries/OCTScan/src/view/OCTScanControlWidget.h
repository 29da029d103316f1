#pragma once

#include "OCTScanSegmentation.h"

#include <QPointer>
#include <QPolygonF>
#include <QWidget>

class QPushButton;
class QScrollArea;

namespace kelp {
class RegionTool;
}

namespace kelp::oct {

class EditMaskDialog;
class LocalizerControlWidget;
class MetaInfoView;
class OCTScanSelectionWidget;
class OCTSegmentationSelectionWidget;

/// The panel at the left of the OCT tabs: picks scan and segmentation, shows the localizer with the
/// current B-scan and A-scan, the information of both, and opens the mask editor.
class OCTScanControlWidget : public QWidget
{
    Q_OBJECT

public:
    explicit OCTScanControlWidget(QWidget* parent = nullptr);
    ~OCTScanControlWidget() override;

    OCTScanPtr getOCT() const;
    /// -1 without a scan.
    int getActiveBScan() const;

    /// As wide as its contents and a scroll bar need.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// Starts at the middle B-scan, without segmentation and mask. Throws kelp::Assertion for null.
    void setOCT(OCTScanPtr scan);
    void setActiveBScan(int bScanIndex);
    void setActiveAScan(int aScanIndex);
    /// The list of segmentations of the current scan, and the buttons.
    void refresh();
    void openEditMaskFrame();
    /// Throws kelp::Assertion for null, without a scan, or without a mask.
    void setOCTScanSegmentation(OCTScanSegPtr octScanSeg);
    void clearOCT();
    void updateMask();
    void octScanSelected(Data* data);
    void octScanHighlighted(Data* data);
    void polygonCreated(QPolygonF polygonPoints);
    void deleteAllMasks();
    void btnDeleteSegmentationPressed();

signals:
    void aScanSelected(int AScanIndex);
    void bScanSelected(int BScanIndex);
    void newOCTScanLoaded(OCTScanPtr oct);
    void OCTScanDeselected();
    void segmentationSelected(OCTScanSegPtr segmentation);
    void btnNewSegmentationPressed();
    void deleteSegment(OCTScanSegPtr segmentation);
    /// The user changed the mask: the moment to save.
    void maskChanged();

private slots:
    void editMaskPressed();
    void localizerBScanSelected(int bScanIndex);

private:
    QWidget* createContent();
    QWidget* createDataSelection();
    QLayout* createMaskRow();
    void connectSignals();
    void showScanInformation();
    void showBScanInformation(int bScanIndex);
    void forgetSegmentation();
    /// On the localizer, and in the mask editor while it is open.
    void showMask();
    void connectTool(EditMaskDialog* editMaskDialog);
    void takeToolBack();

    QScrollArea* m_scroller = nullptr;
    OCTScanSelectionWidget* m_scanSelection = nullptr;
    OCTSegmentationSelectionWidget* m_segmentationSelection = nullptr;
    LocalizerControlWidget* m_localizer = nullptr;
    QPushButton* m_editMaskButton = nullptr;
    MetaInfoView* m_scanInformation = nullptr;
    MetaInfoView* m_bScanInformation = nullptr;
    OCTScanPtr m_octScan;
    OCTScanSegPtr m_octScanSegmentation;
    SegmentationMaskPtr m_mask;
    /// Owned; the scene of the mask editor borrows it while that is open.
    QPointer<RegionTool> m_regionTool;
    QPointer<EditMaskDialog> m_editMaskDialog;
};

} // namespace kelp::oct
