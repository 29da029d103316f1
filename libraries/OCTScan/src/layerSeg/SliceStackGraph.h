#pragma once

#include "SegmentationMask.h"
#include "SliceStackProperties.h"
#include "kelpImage.h"

#include <QList>

#include <vector>

namespace kelp::oct {

/// A cut over a stack of B-scans: built once, solved once, read with getLayer, thrown away.
class SliceStackGraph
{
public:
    virtual ~SliceStackGraph() = default;

    virtual void segment() = 0;
    /// The surface in image rows, null if there is none of this name. The name is compared as a
    /// pointer: the caller's instance that went into the properties.
    virtual VolumeLayerPtr getLayer(const LayerNamePtr& layerName) const;

    bool isGraphValid() const { return graphValid; }

protected:
    bool graphValid = false;
    QList<kelp::ImagePtr> m_images;
    SliceStackProperties m_properties;
    MaskMatrixPtr m_mask;
    std::vector<VolumeLayerPtr> m_results;
};

} // namespace kelp::oct
