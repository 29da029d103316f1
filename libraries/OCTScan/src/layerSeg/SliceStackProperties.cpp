#include "SliceStackProperties.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

#include <algorithm>
#include <cstddef>

namespace kelp::oct {

namespace {

constexpr unsigned minimumNodesOfEstimate = 8;

constexpr kelp::Place placeOf(const char* function)
{
    return {"libraries/OCTScan/src/layerSeg/SliceStackProperties", function};
}

[[noreturn]] void throwNotFound(const kelp::Place& place, const QString& text)
{
    throw kelp::Exception(kelp::locatedText(place, text));
}

} // namespace

SliceStackProperties::SliceStackProperties(const QList<LayerNamePtr>& layerNames, unsigned aScans,
                                           unsigned bScans)
    : layers(layerNames.begin(), layerNames.end()), costFunctions(layers.size()),
      searchRangeTops(layers.size()), searchRangeBottoms(layers.size()),
      shapeRegWeightX(layers.size()), shapeRegWeightZ(layers.size()), shapeRegStepX(layers.size()),
      shapeRegStepZ(layers.size()), nrBScans(bScans), nrAScans(aScans),
      nrLayers(static_cast<int>(layers.size()))
{
}

/// Layer names are one instance per identifier, so the pointers tell them apart. A null entry met
/// on the way is reported with nullText; -1 if the name is not there.
int SliceStackProperties::findForSetting(const LayerNamePtr& layerName, const kelp::Place& place,
                                         const char* nullText) const
{
    for (int i = 0; i < nrLayers; ++i) {
        const LayerNamePtr& layer = layers[static_cast<std::size_t>(i)];
        if (layer.isNull()) {
            kelp::throwAssertion(place, QString(nullText).arg(i));
        }
        if (layer == layerName) {
            return i;
        }
    }
    return -1;
}

std::size_t SliceStackProperties::findForReading(const LayerNamePtr& layerName,
                                                 const kelp::Place& place) const
{
    kelp::check(!layerName.isNull(), place, "Layer name is null");
    const auto found = std::find(layers.begin(), layers.end(), layerName);
    if (found == layers.end()) {
        throwNotFound(place, "Could not find layer name");
    }
    return static_cast<std::size_t>(found - layers.begin());
}

void SliceStackProperties::setCostFunction(const LayerNamePtr& layerName,
                                           const CostFunctionPtr& costFunction)
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::setCostFunction");
    kelp::check(!layerName.isNull(), place, "Layer name is null");
    kelp::check(!costFunction.isNull(), place, "Cost function is null");
    const int index = findForSetting(layerName, place, "Layer %1 is null");
    if (index < 0) {
        throwNotFound(place, QString("Layer name %1 not found").arg(layerName->getShortName()));
    }
    costFunctions[static_cast<std::size_t>(index)] = costFunction;
}

void SliceStackProperties::setSearchRange(const LayerNamePtr& layerName, const VolumeLayerPtr& top,
                                          const VolumeLayerPtr& bottom)
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::setSearchRange");
    kelp::check(!layerName.isNull(), place, "Layer name is null.");
    kelp::check(!top.isNull(), place, "Top search range layer is null.");
    kelp::check(!bottom.isNull(), place, "Bottom search range layer is null.");
    const int index = findForSetting(layerName, place, "Layer %1 is null");
    if (index < 0) {
        throwNotFound(place, QString("Layer name %1 not found").arg(layerName->getShortName()));
    }
    searchRangeTops[static_cast<std::size_t>(index)] = top;
    searchRangeBottoms[static_cast<std::size_t>(index)] = bottom;
}

void SliceStackProperties::setShapeRegularizaton(const LayerNamePtr& layerName, double weightZ,
                                                 double weightX, unsigned stepZ, unsigned stepX)
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::setShapeRegularizaton");
    kelp::check(!layerName.isNull(), place, "Layer name is null");
    const int found = findForSetting(layerName, place, "Layer name %1 is null");
    if (found < 0) {
        throwNotFound(place, QString("Layer name %1 not found.").arg(layerName->getShortName()));
    }
    const auto index = static_cast<std::size_t>(found);
    shapeRegWeightX[index] = weightX;
    shapeRegWeightZ[index] = weightZ;
    shapeRegStepX[index] = stepX;
    shapeRegStepZ[index] = stepZ;
}

void SliceStackProperties::setInterSurfDistance(const LayerNamePtr& topLayer,
                                                const LayerNamePtr& bottomLayer,
                                                const VolumeLayerPtr& minimumDistance,
                                                const VolumeLayerPtr& maximumDistance)
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::setInterSurfDistance");
    kelp::check(!topLayer.isNull(), place, "Top layer is null.");
    kelp::check(!bottomLayer.isNull(), place, "Bottom layer is null.");
    kelp::check(!minimumDistance.isNull(), place, "Minimum distance layer is null.");
    kelp::check(!maximumDistance.isNull(), place, "Maximum distance layer is null.");
    for (int i = 0; i < interSurfacePairs.size(); ++i) {
        // One equal member is enough, and the entry keeps its pair. That is on purpose: a surface
        // has one limit upwards and one downwards at most, and the last call sets it.
        const auto& pair = interSurfacePairs[i];
        if (pair.first == topLayer || pair.second == bottomLayer) {
            interSurfaceMinimums[static_cast<std::size_t>(i)] = minimumDistance;
            interSurfaceMaximums[static_cast<std::size_t>(i)] = maximumDistance;
            return;
        }
    }
    interSurfacePairs.append({topLayer, bottomLayer});
    interSurfaceMinimums.push_back(minimumDistance);
    interSurfaceMaximums.push_back(maximumDistance);
}

QList<LayerNamePtr> SliceStackProperties::getLayerNames() const
{
    return QList<LayerNamePtr>(layers.begin(), layers.end());
}

LayerNamePtr SliceStackProperties::getLayerName(int index) const
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::getLayerName");
    kelp::check(index >= 0 && index < nrLayers, place, "Index out of bounds");
    const LayerNamePtr& layer = layers[static_cast<std::size_t>(index)];
    kelp::check(!layer.isNull(), place, "Layer name for index is null");
    return layer;
}

int SliceStackProperties::getLayerPosition(const LayerNamePtr& layerName) const
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::getLayerPosition");
    kelp::check(!layerName.isNull(), place, "Layer name is null");
    const int index = findForSetting(layerName, place, "Layer name %1 is null");
    if (index < 0) {
        throwNotFound(place,
                      QString("Could not find layer with name %1").arg(layerName->getShortName()));
    }
    return index;
}

bool SliceStackProperties::hasLayer(const LayerNamePtr& layerName) const
{
    kelp::check(!layerName.isNull(), placeOf("kelp::oct::SliceStackProperties::hasLayer"),
                "Layer name is null");
    return std::find(layers.begin(), layers.end(), layerName) != layers.end();
}

CostFunctionPtr SliceStackProperties::getCostFunction(const LayerNamePtr& layerName) const
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::getCostFunction");
    kelp::check(!layerName.isNull(), place, "Layer name is null");
    // By text, unlike the other getters: a fresh instance of a name finds its cost function too.
    const QString identifier = layerName->getIdentifier();
    const auto found = std::find_if(layers.begin(), layers.end(), [&](const LayerNamePtr& layer) {
        return !layer.isNull() && layer->getIdentifier() == identifier;
    });
    if (found == layers.end()) {
        throwNotFound(place, "Could not find layer name");
    }
    return costFunctions[static_cast<std::size_t>(found - layers.begin())];
}

VolumeLayerPtr SliceStackProperties::getSearchRangeTop(const LayerNamePtr& layerName) const
{
    return searchRangeTops[findForReading(
        layerName, placeOf("kelp::oct::SliceStackProperties::getSearchRangeTop"))];
}

VolumeLayerPtr SliceStackProperties::getSearchRangeBottom(const LayerNamePtr& layerName) const
{
    return searchRangeBottoms[findForReading(
        layerName, placeOf("kelp::oct::SliceStackProperties::getSearchRangeBottom"))];
}

unsigned SliceStackProperties::getNrOfNodesForColumn(const LayerNamePtr& layerName, unsigned bScan,
                                                     unsigned aScan) const
{
    constexpr kelp::Place place = placeOf("kelp::oct::SliceStackProperties::getNrOfNodesForColumn");
    const std::size_t index = findForReading(layerName, place);
    const VolumeLayerPtr& top = searchRangeTops[index];
    const VolumeLayerPtr& bottom = searchRangeBottoms[index];
    kelp::check(!top.isNull(), place, "Top search range layer is null.");
    kelp::check(!bottom.isNull(), place, "Bottom search range layer is null.");
    const int rows = int{(*bottom)(bScan, aScan)} - int{(*top)(bScan, aScan)};
    return std::max(static_cast<int>(minimumNodesOfEstimate), rows);
}

double SliceStackProperties::getShapeRegWeightX(const LayerNamePtr& layerName) const
{
    return shapeRegWeightX[findForReading(
        layerName, placeOf("kelp::oct::SliceStackProperties::getShapeRegWeightX"))];
}

double SliceStackProperties::getShapeRegWeightZ(const LayerNamePtr& layerName) const
{
    return shapeRegWeightZ[findForReading(
        layerName, placeOf("kelp::oct::SliceStackProperties::getShapeRegWeightZ"))];
}

unsigned SliceStackProperties::getShapeRegStepX(const LayerNamePtr& layerName) const
{
    return shapeRegStepX[findForReading(
        layerName, placeOf("kelp::oct::SliceStackProperties::getShapeRegStepX"))];
}

unsigned SliceStackProperties::getShapeRegStepZ(const LayerNamePtr& layerName) const
{
    return shapeRegStepZ[findForReading(
        layerName, placeOf("kelp::oct::SliceStackProperties::getShapeRegStepZ"))];
}

/// The position of exactly this pair, in this order, or -1.
int SliceStackProperties::findPair(const LayerNamePtr& top, const LayerNamePtr& bottom,
                                   const kelp::Place& place) const
{
    kelp::check(!top.isNull(), place, "Top layer name is null");
    kelp::check(!bottom.isNull(), place, "Bottom layer name is null");
    for (int i = 0; i < interSurfacePairs.size(); ++i) {
        if (*interSurfacePairs[i].first == *top && *interSurfacePairs[i].second == *bottom) {
            return i;
        }
    }
    kelp::Trace() << kelp::locatedText(place, "Could not find inter-surface distances between ")
                  << QString("%1 and %2").arg(top->getShortName(), bottom->getShortName());
    return -1;
}

VolumeLayerPtr SliceStackProperties::getInterSurfDistanceMin(const LayerNamePtr& top,
                                                             const LayerNamePtr& bottom) const
{
    const int index =
        findPair(top, bottom, placeOf("kelp::oct::SliceStackProperties::getInterSurfDistanceMin"));
    return index < 0 ? VolumeLayerPtr() : interSurfaceMinimums[static_cast<std::size_t>(index)];
}

VolumeLayerPtr SliceStackProperties::getInterSurfDistanceMax(const LayerNamePtr& top,
                                                             const LayerNamePtr& bottom) const
{
    const int index =
        findPair(top, bottom, placeOf("kelp::oct::SliceStackProperties::getInterSurfDistanceMax"));
    return index < 0 ? VolumeLayerPtr() : interSurfaceMaximums[static_cast<std::size_t>(index)];
}

} // namespace kelp::oct
