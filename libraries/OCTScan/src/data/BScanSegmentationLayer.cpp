#include "BScanSegmentationLayer.h"

#include "kelpCheck.h"

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/data/BScanSegmentationLayer";
constexpr Place constructorPlace{sourcePath,
                                 "kelp::oct::BScanSegmentationLayer::BScanSegmentationLayer"};
constexpr Place setLayerDataPlace{sourcePath, "kelp::oct::BScanSegmentationLayer::setLayerData"};
constexpr Place editPlace{sourcePath,
                          "kelp::oct::BScanSegmentationLayer::changedLayerSegmentationGI"};

void checkIndex(int index, std::size_t size)
{
    // As an unsigned number a negative index is too large already, so it never reaches its own
    // text.
    check(static_cast<unsigned>(index) < size, editPlace, "Index position too large");
    check(index >= 0, editPlace, "Negative index position.");
}

} // namespace

BScanSegmentationLayer::BScanSegmentationLayer(const LayerData& data, const LayerNamePtr& name)
    : m_layerData(data), m_layerName(name)
{
    check(!name.isNull(), constructorPlace, "Got null layer name.");
}

void BScanSegmentationLayer::setLayerData(const LayerData& data, const LayerNamePtr& name)
{
    check(!name.isNull(), setLayerDataPlace, "Got null layer name.");
    m_layerData = data;
    m_layerName = name;
}

void BScanSegmentationLayer::changedLayerSegmentationGI(int aScanIndex, int newValue)
{
    checkIndex(aScanIndex, m_layerData.size());
    m_layerData[static_cast<std::size_t>(aScanIndex)] = static_cast<unsigned short>(newValue);
}

void BScanSegmentationLayer::changedLayerSegmentationGI(QList<int> aScanIndices,
                                                        QList<int> newValues)
{
    check(aScanIndices.size() == newValues.size(), editPlace,
          "Size mismatch between indices and values");
    // All before the first write: an edit takes place whole or not at all.
    for (const int index : aScanIndices) {
        checkIndex(index, m_layerData.size());
    }
    for (int k = 0; k < aScanIndices.size(); ++k) {
        m_layerData[static_cast<std::size_t>(aScanIndices[k])] =
            static_cast<unsigned short>(newValues[k]);
    }
}

} // namespace kelp::oct
