#pragma once

#include "BScanSegmentationLayer.h"

namespace kelp::oct {

/// All surfaces of one B-scan in the order added, which says nothing about anatomy.
class BScanSegmentation
{
public:
    /// Replaces a layer of equal name; the new one goes to the end.
    void addLayer(const BScanSegmentationLayerPtr& layer);
    QList<BScanSegmentationLayerPtr> getAllLayers() const { return m_layers; }
    QList<LayerNamePtr> getAllLayerNames() const;
    /// Throws Assertion when there is no layer of this name.
    BScanSegmentationLayerPtr getLayer(const LayerNamePtr& name) const;

private:
    QList<BScanSegmentationLayerPtr> m_layers;
};

using BScanSegmentationPtr = QSharedPointer<BScanSegmentation>;

} // namespace kelp::oct
