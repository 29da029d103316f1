#pragma once

#include "LayerName.h"
#include "kelpDynamicVector.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>

namespace kelp::oct {

/// One surface on one B-scan: the row of each A-scan.
class BScanSegmentationLayer : public QObject
{
    Q_OBJECT

public:
    using LayerData = kelp::DynamicVector<unsigned short>;

    BScanSegmentationLayer() = default;
    /// Throws Assertion for a null name.
    BScanSegmentationLayer(const LayerData& data, const LayerNamePtr& name);
    void setLayerData(const LayerData& data, const LayerNamePtr& name);

    LayerNamePtr getLayerName() const { return m_layerName; }
    LayerData getLayerData() const { return m_layerData; }
    /// Without the copy that getLayerData makes.
    const LayerData& layerData() const { return m_layerData; }
    int getSize() const { return static_cast<int>(m_layerData.size()); }

public slots:
    /// The inbound end of a manual edit. Values are truncated to 16 bits.
    void changedLayerSegmentationGI(int aScanIndex, int newValue);
    void changedLayerSegmentationGI(QList<int> aScanIndices, QList<int> newValues);

signals:
    // Connected by the overlay; no code emits them, so that an edit does not echo back to it.
    void bScanLayerChanged(int aScanIndex, int newValue);
    void bScanLayerChanged(QList<int> aScanIndices, QList<int> newValues);
    void activated();
    void deactivated();

private:
    LayerData m_layerData;
    LayerNamePtr m_layerName;
};

using BScanSegmentationLayerPtr = QSharedPointer<BScanSegmentationLayer>;

} // namespace kelp::oct
