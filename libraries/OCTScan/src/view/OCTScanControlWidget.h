#pragma once

#include "OCTScanSegmentation.h"

#include <QPolygonF>
#include <QWidget>

namespace kelp::oct {

/// The panel at the left of the OCT tabs: picks scan and segmentation, shows the localizer with the
/// current B-scan and A-scan, the information of both, and opens the mask editor.
class OCTScanControlWidget : public QWidget
{
    Q_OBJECT

public:
    explicit OCTScanControlWidget(QWidget* parent = nullptr);
    ~OCTScanControlWidget() override;

    OCTScanPtr getOCT() const;
    int getActiveBScan() const;

public slots:
    /// Throws kelp::Assertion for null.
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
};

} // namespace kelp::oct
