#include "BScanSegmentation.h"

#include "kelpCheck.h"

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/data/BScanSegmentation";
constexpr Place addLayerPlace{sourcePath, "kelp::oct::BScanSegmentation::addLayer"};
constexpr Place getAllLayerNamesPlace{sourcePath, "kelp::oct::BScanSegmentation::getAllLayerNames"};
constexpr Place getLayerPlace{sourcePath, "kelp::oct::BScanSegmentation::getLayer"};

constexpr const char* nullEntry = "Encountered null segmentation layer is null";

/// A layer that was never given its data has no name, and is no other's equal.
bool haveEqualNames(const LayerNamePtr& a, const LayerNamePtr& b)
{
    return a && b && *a == *b;
}

} // namespace

void BScanSegmentation::addLayer(const BScanSegmentationLayerPtr& layer)
{
    check(!layer.isNull(), addLayerPlace, "Cannot add null segmentation layer is null");
    const auto isReplaced = [&](const BScanSegmentationLayerPtr& stored) {
        check(!stored.isNull(), addLayerPlace, nullEntry);
        return haveEqualNames(stored->getLayerName(), layer->getLayerName());
    };
    const auto replaced = std::find_if(m_layers.begin(), m_layers.end(), isReplaced);
    if (replaced != m_layers.end()) {
        m_layers.erase(replaced);
    }
    m_layers.append(layer);
}

QList<LayerNamePtr> BScanSegmentation::getAllLayerNames() const
{
    QList<LayerNamePtr> names;
    names.reserve(m_layers.size());
    for (const BScanSegmentationLayerPtr& layer : m_layers) {
        check(!layer.isNull(), getAllLayerNamesPlace, nullEntry);
        names.append(layer->getLayerName());
    }
    return names;
}

BScanSegmentationLayerPtr BScanSegmentation::getLayer(const LayerNamePtr& name) const
{
    check(!name.isNull(), getLayerPlace, "Cannot get null layer");
    for (const BScanSegmentationLayerPtr& layer : m_layers) {
        check(!layer.isNull(), getLayerPlace, nullEntry);
        if (haveEqualNames(layer->getLayerName(), name)) {
            return layer;
        }
    }
    throwAssertion(getLayerPlace,
                   QString("Coult not find layer with name %1").arg(name->getIdentifier()));
}

} // namespace kelp::oct
