#pragma once

#include "OCTScanSegmentation.h"
#include "UnmaskedRuns.h"
#include "kelpGISliceViewer.h"
#include "kelpLayerSegmentationGI.h"

#include <QMap>

#include <vector>

namespace kelp::oct {

/// Pages through the B-scans of a scan and draws their segmented layers: one polyline per layer and
/// unmasked stretch. Ctrl with the wheel, the arrow and page keys, Home and End page.
class GISliceSegmentationViewer : public GISliceViewer
{
    Q_OBJECT

public:
    explicit GISliceSegmentationViewer(QWidget* parent = nullptr);

    /// Shows the middle B-scan, as large as it fits. Throws kelp::Assertion for null.
    virtual void setOCT(const OCTScanPtr& scan);
    /// Null removes the overlays. Throws kelp::Assertion for one that is not decoded.
    virtual void setSegmentation(const OCTScanSegPtr& segmentation);
    /// Lets go of scan and segmentation.
    void clearOCT();

    const OCTScanSegPtr& getSegmentation() const { return m_segmentation; }
    /// False for a name that the viewer has not met. Looks for this very instance.
    bool isLayerVisible(const LayerNamePtr& name) const;
    /// Null for an index outside and for an object that is no layer.
    LayerSegmentationGIPtr getOverlay(int sliceIndex, int objectIndex) const;

public slots:
    void setActiveSlice(int index) override;
    void rebuildSegmentation();
    /// The overlays go, the segmentation stays.
    void removeSegmentation();
    void layerVisibilityChanged(LayerNamePtr layerName, bool visible);
    /// Shows and hides the overlays of the current slice.
    void refresh();

protected:
    /// For every overlay made, before it is added.
    virtual void overlayMade(LayerSegmentationGI& overlay);

    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void enterEvent(QEvent* event) override;

private:
    void addLayersOfBScan(int bScan);
    void addLayer(int bScan, const BScanSegmentationLayerPtr& layer,
                  const std::vector<AScanRun>& runs);
    /// By so many slices, as far as there are any.
    void page(int slices);
    void pageTo(int index);

    OCTScanSegPtr m_segmentation;
    /// Keys compare as pointers: a new instance of a name is another key.
    QMap<LayerNamePtr, bool> m_layerVisibility;
    /// Turns of the wheel that do not make a page yet, in eighths of a degree.
    int m_wheelRest = 0;
};

} // namespace kelp::oct
