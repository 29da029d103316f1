#include "CutPlans.h"

#include "CostFunctionBM.h"
#include "CostFunctionILM.h"
#include "CostFunctionISe.h"
#include "LayerUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelp::oct {

namespace {

unsigned short asRow(int value)
{
    return static_cast<unsigned short>(value);
}

} // namespace

double edgeFactorOf(bool firstTermOn, bool secondTermOn, bool thirdTermOn)
{
    constexpr double firstTermEdges = 6.0;
    constexpr double furtherTermEdges = 1.0;
    return (firstTermOn ? firstTermEdges : plainEdgeFactor) +
           (secondTermOn ? furtherTermEdges : 0.0) + (thirdTermOn ? furtherTermEdges : 0.0);
}

void setRange(SliceStackProperties& properties, const LayerNamePtr& name, const VolumeLayerPtr& top,
              const VolumeLayerPtr& bottom, const MaskMatrixPtr& mask)
{
    LayerUtils::ensureTwoRows(top, bottom, mask);
    properties.setSearchRange(name, top, bottom);
}

void setRangeAround(SliceStackProperties& properties, const LayerNamePtr& name,
                    const VolumeLayerPtr& middle, unsigned above, unsigned below,
                    const CutSize& size, const MaskMatrixPtr& mask)
{
    const VolumeLayerPtr top = constantLayer(size, 0);
    const VolumeLayerPtr bottom = constantLayer(size, 0);
    LayerUtils::getSearchRangeLayers(middle, top, bottom, above, below, size.rows - 1);
    setRange(properties, name, top, bottom, mask);
}

int truncatedToInt(double value)
{
    if (std::isnan(value)) {
        return 0;
    }
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, lowest, highest));
}

int micrometresToRows(float micrometres, double axial)
{
    return truncatedToInt(std::nearbyint(micrometres / (axial * 1000.0)));
}

CutSize::CutSize(unsigned aScanCount, unsigned rowCount, unsigned bScanCount)
    : aScans(aScanCount), rows(rowCount), bScans(bScanCount)
{
}

CutSize::CutSize(const kelp::Vector3<int>& volumeSize)
    : CutSize(static_cast<unsigned>(volumeSize.x), static_cast<unsigned>(volumeSize.y),
              static_cast<unsigned>(volumeSize.z))
{
}

VolumeLayerPtr constantLayer(const CutSize& size, unsigned short value)
{
    const auto layer = VolumeLayerPtr::create(size.bScans, size.aScans);
    std::fill(layer->begin(), layer->end(), value);
    return layer;
}

VolumeLayerPtr copyOf(const VolumeLayerPtr& layer)
{
    const auto copy = VolumeLayerPtr::create(layer->rows, layer->columns);
    std::copy(layer->begin(), layer->end(), copy->begin());
    return copy;
}

CutPlan planCoarse(const CoarseNames& names, const CutSize& size, int minDist, int maxDist,
                   const MaskMatrixPtr& mask)
{
    constexpr double shapeWeightZ = 200.0;
    constexpr double shapeWeightX = 600.0;

    CutPlan plan;
    plan.edgeFactor = 8.0;
    plan.properties = SliceStackProperties({names.ilm, names.ise}, size.aScans, size.bScans);
    plan.properties.setCostFunction(names.ilm, CostFunctionPtr(new CostFunctionILM));
    plan.properties.setCostFunction(names.ise, CostFunctionPtr(new CostFunctionISe));
    plan.properties.setInterSurfDistance(names.ilm, names.ise, constantLayer(size, asRow(minDist)),
                                         constantLayer(size, asRow(maxDist)));

    const VolumeLayerPtr top = constantLayer(size, 0);
    const VolumeLayerPtr bottom = constantLayer(size, asRow(static_cast<int>(size.rows) - 1));
    for (const LayerNamePtr& name : {names.ilm, names.ise}) {
        setRange(plan.properties, name, top, bottom, mask);
        plan.properties.setShapeRegularizaton(name, shapeWeightZ, shapeWeightX, 1, 1);
    }
    return plan;
}

CutPlan planILM(const LayerNamePtr& ilm, const VolumeLayerPtr& ilmCoarse, const CutSize& size,
                const ILMSegParams& params)
{
    constexpr unsigned rowsAbove = 12;
    constexpr unsigned rowsBelow = 30;
    constexpr double shapedEdgeFactor = 7.0;

    CutPlan plan;
    plan.edgeFactor = params.shapeRegOn ? shapedEdgeFactor : plainEdgeFactor;
    plan.properties = SliceStackProperties({ilm}, size.aScans, size.bScans);
    plan.properties.setCostFunction(ilm, CostFunctionPtr(new CostFunctionILM));
    setRangeAround(plan.properties, ilm, ilmCoarse, rowsAbove, rowsBelow, size, params.mask);
    plan.properties.setShapeRegularizaton(ilm, params.shapeRegOn ? params.shapeRegWeightZ : 0.0,
                                          params.shapeRegOn ? params.shapeRegWeightX : 0.0, 1, 1);
    return plan;
}

CutPlan planOuter(const OuterNames& names, const VolumeLayerPtr& iseCoarse, const CutSize& size,
                  const OuterSegParams& params)
{
    constexpr unsigned iseRowsAbove = 15;
    constexpr unsigned iseRowsBelow = 15;
    constexpr unsigned bmRowsAbove = 0;
    constexpr unsigned bmRowsBelow = 30;
    constexpr unsigned stepZ = 2;
    constexpr unsigned stepX = 1;

    CutPlan plan;
    // The switches enter this sum only: the weights are set in any case.
    plan.edgeFactor = edgeFactorOf(params.iseShapeOn, params.bmShapeOn, params.iseBmDistOn);
    plan.properties = SliceStackProperties({names.ise, names.bm}, size.aScans, size.bScans);
    plan.properties.setCostFunction(names.ise, CostFunctionPtr(new CostFunctionISe));
    plan.properties.setCostFunction(names.bm, CostFunctionPtr(new CostFunctionBM));
    setRangeAround(plan.properties, names.ise, iseCoarse, iseRowsAbove, iseRowsBelow, size,
                   params.mask);
    setRangeAround(plan.properties, names.bm, iseCoarse, bmRowsAbove, bmRowsBelow, size,
                   params.mask);
    plan.properties.setShapeRegularizaton(names.ise, params.iseShapeWeightZ, params.iseShapeWeightX,
                                          stepZ, stepX);
    plan.properties.setShapeRegularizaton(names.bm, params.bmShapeWeightZ, params.bmShapeWeightX,
                                          stepZ, stepX);
    return plan;
}

QList<SoftDistance> constantOuterDistances(const OuterNames& names, const CutPlan& plan,
                                           const VolumeLayerPtr& ilm, const OuterSegParams& params,
                                           int ilm2isosRows, float ilm2isosDistVarWeight,
                                           int rpeRows)
{
    if (!params.iseBmDistOn) {
        return {};
    }
    // The ILM is not in the cut, which makes the first term one-sided.
    return {{LayerNameILM::create(),
             names.ise,
             ilm,
             ilm2isosDistVarWeight,
             {},
             static_cast<unsigned>(ilm2isosRows)},
            {names.ise,
             names.bm,
             plan.properties.getSearchRangeTop(names.ise),
             params.iseBmDistWeight,
             {},
             static_cast<unsigned>(rpeRows)}};
}

std::array<double, 3> modelSpacing(const OCTScanPtr& scan)
{
    const auto squaredDistance = [](const Vector2d& a, const Vector2d& b) {
        return (b - a).squaredLength();
    };
    const auto first = scan->getBScan(0);
    // Squared distances stand where the model takes distances: the weights of the trained terms are
    // tuned to this, so taking the root would shift every surface of the healthy chain.
    const double acrossBScans =
        scan->getBScanCount() > 1
            ? squaredDistance(first->getAScanPosition(0), scan->getBScan(1)->getAScanPosition(0))
            : 1.0;
    return {squaredDistance(first->getAScanPosition(0), first->getAScanPosition(1)),
            first->getAxialResolution(), acrossBScans};
}

} // namespace kelp::oct
