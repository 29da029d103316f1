#include "SliceStackGraph.h"

#include "kelpCheck.h"

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr kelp::Place placeGetLayer{"libraries/OCTScan/src/layerSeg/SliceStackGraph",
                                    "kelp::oct::SliceStackGraph::getLayer"};

} // namespace

VolumeLayerPtr SliceStackGraph::getLayer(const LayerNamePtr& layerName) const
{
    kelp::check(!layerName.isNull(), placeGetLayer, "Layer name is null.");
    const QList<LayerNamePtr> layers = m_properties.getLayerNames();
    const int count = std::min(layers.size(), static_cast<int>(m_results.size()));
    for (int i = 0; i < count; ++i) {
        if (layers[i] == layerName) {
            return m_results[static_cast<std::size_t>(i)];
        }
    }
    return {};
}

} // namespace kelp::oct
