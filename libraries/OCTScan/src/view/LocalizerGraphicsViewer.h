#pragma once

#include "AScanFinder.h"
#include "OCTScan.h"
#include "SegmentationMask.h"
#include "kelpGIImageViewer.h"
#include "kelpGIVector2DList.h"

#include <optional>

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
    void clearMask();
    void clearOCT();
    /// Off, the mouse selects nothing: it belongs to a tool of the scene. On at first.
    void setPickingEnabled(bool enabled) { m_pickingEnabled = enabled; }

    /// Also without an image, to the B-scans. A resized viewer fits again unless the user zoomed.
    void zoomToFit() override;

    /// The lines of all B-scans in their order.
    const QList<GIVector2DListPtr>& getSlicePositions() const { return m_slicePositionsGI; }
    const QList<QGraphicsPolygonItem*>& getMaskItems() const { return m_maskItems; }
    int getActiveSlice() const { return m_activeSlice; }
    int getActivePosition() const { return m_activePosition; }

public slots:
    void setActiveSlice(int index);
    void setActivePosition(int aScanIndex);

signals:
    void aScanSelected(int posIndex);
    void bScanSelected(int sliceIndex);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void addSlicePositions();
    void addOutline();
    QList<Vector2d> slicePosition(const BScan& bScan) const;
    QRectF shownRect() const;
    /// Makes the closest place active, and tells if it is not the one picked last.
    void pick(const QPoint& position, bool always);
    void showActivePosition();

    OCTScanPtr m_scan;
    AScanFinder m_finder;
    QList<GIVector2DListPtr> m_slicePositionsGI;
    // Owned by the scene.
    QGraphicsPolygonItem* m_outline = nullptr;
    QGraphicsPathItem* m_positionMark = nullptr;
    QList<QGraphicsPolygonItem*> m_maskItems;
    int m_activeSlice = -1;
    int m_activePosition = -1;
    std::optional<AScanPlace> m_lastPicked;
    bool m_pickingEnabled = true;
    bool m_zoomedByUser = false;
};

} // namespace kelp::oct
