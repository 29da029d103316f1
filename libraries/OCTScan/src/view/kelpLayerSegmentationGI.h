#pragma once

#include "BScanSegmentationLayer.h"
#include "PolylineEdit.h"
#include "kelpGIVector2DList.h"

namespace kelp::oct {

/// One stretch of a surface on one B-scan as a polyline, tied to the layer's data in both
/// directions.
class LayerSegmentationGI : public GIVector2DList
{
    Q_OBJECT

public:
    /// A-scans start to end - 1. Resolutions and maxY (the image's height) in scene units. Throws
    /// kelp::Assertion.
    LayerSegmentationGI(BScanSegmentationLayerPtr layer, int start, int end, double axialResolution,
                        double lateralResolution, double maxY);

    const BScanSegmentationLayerPtr& getLayer() const { return m_layer; }
    int getStart() const { return m_start; }
    int getEnd() const { return m_end; }

    void setActive(bool active) override;
    void deactivate() override;
    void highlight() override;
    void removeHighlight() override;
    double distanceTo(const QPointF& point) const override;

public slots:
    void mouseDown(const QPointF& point) override;
    void mouseMove(const QPointF& point) override;
    void bScanLayerChanged(int aScanIndex, int newValue);
    void bScanLayerChanged(QList<int> aScanIndices, QList<int> newValues);

signals:
    void changedLayerSegmentationGI(int aScanIndex, int newValue);
    void changedLayerSegmentationGI(QList<int> aScanIndices, QList<int> newValues);
    void activated();
    void deactivated();

private:
    void connectLayer();
    void changeSegmentation(const QPointF& point);
    void changeSegmentationBetween(const QPointF& first, const QPointF& second);
    /// Tells the layer and redraws.
    void apply(const std::vector<PolylineChange>& changes);

    double m_lateralResolution;
    double m_axialResolution;
    double m_maxY;
    BScanSegmentationLayerPtr m_layer;
    QPointF m_lastMousePoint;
    int m_start;
    int m_end;
};

using LayerSegmentationGIPtr = QSharedPointer<LayerSegmentationGI>;

} // namespace kelp::oct
