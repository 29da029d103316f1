#pragma once

#include "CostFunction.h"
#include "LayerName.h"
#include "VolumeLayer.h"
#include "kelpCheck.h"

#include <QList>
#include <QPair>

#include <cstddef>
#include <utility>
#include <vector>

namespace kelp::oct {

/// The description of one graph cut: the surfaces sought, from the top of the image down, and for
/// each its cost, its search range and its shape regularisation, and for pairs the allowed range of
/// distances. A value: copies share the matrices, which are read-only once set. Failures are
/// kelp::Assertion, a failed search kelp::Exception.
class SliceStackProperties
{
public:
    SliceStackProperties() = default;
    SliceStackProperties(const QList<LayerNamePtr>& layerNames, unsigned aScans, unsigned bScans);

    void setCostFunction(const LayerNamePtr& layerName, const CostFunctionPtr& costFunction);
    /// top: first row of the range, bottom: one past its last.
    void setSearchRange(const LayerNamePtr& layerName, const VolumeLayerPtr& top,
                        const VolumeLayerPtr& bottom);
    void setShapeRegularizaton(const LayerNamePtr& layerName, double weightZ, double weightX,
                               unsigned stepZ, unsigned stepX);
    /// Distances in rows. Replaces the distances of the first pair that shares its top or its
    /// bottom with this one.
    void setInterSurfDistance(const LayerNamePtr& topLayer, const LayerNamePtr& bottomLayer,
                              const VolumeLayerPtr& minimumDistance,
                              const VolumeLayerPtr& maximumDistance);

    /// (B-scans, A-scans).
    std::pair<unsigned, unsigned> getDimensions() const { return {nrBScans, nrAScans}; }
    int getNrOfLayers() const { return nrLayers; }
    QList<LayerNamePtr> getLayerNames() const;
    LayerNamePtr getLayerName(int index) const;
    int getLayerPosition(const LayerNamePtr& layerName) const;
    bool hasLayer(const LayerNamePtr& layerName) const;
    CostFunctionPtr getCostFunction(const LayerNamePtr& layerName) const;
    VolumeLayerPtr getSearchRangeTop(const LayerNamePtr& layerName) const;
    VolumeLayerPtr getSearchRangeBottom(const LayerNamePtr& layerName) const;
    /// For the estimate of memory: at least 8.
    unsigned getNrOfNodesForColumn(const LayerNamePtr& layerName, unsigned bScan,
                                   unsigned aScan) const;
    double getShapeRegWeightX(const LayerNamePtr& layerName) const;
    double getShapeRegWeightZ(const LayerNamePtr& layerName) const;
    unsigned getShapeRegStepX(const LayerNamePtr& layerName) const;
    unsigned getShapeRegStepZ(const LayerNamePtr& layerName) const;
    /// (top, bottom), as they were first registered.
    const QList<QPair<LayerNamePtr, LayerNamePtr>>& getInterSurfPairs() const
    {
        return interSurfacePairs;
    }
    /// Null, with a line on the trace, if the pair was never registered in this order.
    VolumeLayerPtr getInterSurfDistanceMin(const LayerNamePtr& top,
                                           const LayerNamePtr& bottom) const;
    VolumeLayerPtr getInterSurfDistanceMax(const LayerNamePtr& top,
                                           const LayerNamePtr& bottom) const;

private:
    int findForSetting(const LayerNamePtr& layerName, const kelp::Place& place,
                       const char* nullText) const;
    std::size_t findForReading(const LayerNamePtr& layerName, const kelp::Place& place) const;
    int findPair(const LayerNamePtr& top, const LayerNamePtr& bottom,
                 const kelp::Place& place) const;

    std::vector<LayerNamePtr> layers;
    std::vector<CostFunctionPtr> costFunctions;
    std::vector<VolumeLayerPtr> searchRangeTops;
    std::vector<VolumeLayerPtr> searchRangeBottoms;
    QList<QPair<LayerNamePtr, LayerNamePtr>> interSurfacePairs;
    std::vector<VolumeLayerPtr> interSurfaceMinimums;
    std::vector<VolumeLayerPtr> interSurfaceMaximums;
    std::vector<double> shapeRegWeightX;
    std::vector<double> shapeRegWeightZ;
    std::vector<unsigned> shapeRegStepX;
    std::vector<unsigned> shapeRegStepZ;
    unsigned nrBScans = 0;
    unsigned nrAScans = 0;
    int nrLayers = 0;
};

} // namespace kelp::oct
