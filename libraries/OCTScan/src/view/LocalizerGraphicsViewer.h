#pragma once

#include "OCTScan.h"
#include "SegmentationMask.h"
#include "kelpGIImageViewer.h"

namespace kelp::oct {

/// The localizer with the positions of all B-scans, the scan's outline and the mask. A mouse press
/// or drag selects the closest B-scan and A-scan. Scene units: millimetres.
class LocalizerGraphicsViewer : public GIImageViewer
{
    Q_OBJECT

public:
    explicit LocalizerGraphicsViewer(QWidget* parent = nullptr);
    ~LocalizerGraphicsViewer() override;

    /// Throws kelp::Assertion for null. A scan without a localizer image shows its B-scans only.
    void setOCT(const OCTScanPtr& scan);
    void setMask(const SegmentationMaskPtr& mask);
    void clearOCT();

public slots:
    void setActiveSlice(int index);
    void setActivePosition(int aScanIndex);

signals:
    void aScanSelected(int posIndex);
    void bScanSelected(int sliceIndex);
};

} // namespace kelp::oct
