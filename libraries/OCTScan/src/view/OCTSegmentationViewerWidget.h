#pragma once

#include "OCTScanSegmentation.h"

#include <QWidget>

namespace kelp::oct {

class GISliceSegmentationViewer;
class LayerSelectionWidget;

/// The B-scan viewer with the boxes that show and hide its layers.
class OCTSegmentationViewerWidget : public QWidget
{
    Q_OBJECT

public:
    explicit OCTSegmentationViewerWidget(QWidget* parent = nullptr);

    /// Makes the viewer; to be called once after construction. Throws kelp::WatchdogException.
    virtual void initViewer();

    /// Takes a widget that stands above the B-scan, which gives it room of its own while it is
    /// shown: the window need not be larger for it. Not before initViewer.
    void setTopWidget(QWidget* widget);

    /// Throw kelp::Assertion for null.
    void setOCTScan(OCTScanPtr octScan);
    void setSegmentation(OCTScanSegPtr segmentation);
    void clearOCT();

    /// Null before initViewer.
    GISliceSegmentationViewer* getViewer() const { return m_viewer; }
    LayerSelectionWidget* getLayerSelection() const { return m_layerSelection; }

signals:
    // In and out, signal to signal.
    void setActiveSlice(int index);
    void setYHintLine(int aScanIndex);
    void activeSliceChanged(int index);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Dragging, zoom range and wheel.
    void configureViewer();

    GISliceSegmentationViewer* m_viewer = nullptr;
    LayerSelectionWidget* m_layerSelection = nullptr;

private:
    void giveRoom(const QWidget& topWidget);

    int m_viewerHeight = 0; ///< the least, without a top widget
};

} // namespace kelp::oct
