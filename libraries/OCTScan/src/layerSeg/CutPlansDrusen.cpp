#include "CostFunctionBM.h"
#include "CostFunctionILM.h"
#include "CostFunctionISe.h"
#include "CutPlans.h"
#include "LayerUtils.h"

namespace kelp::oct {

CutPlan planBM(const LayerNamePtr& bm, const VolumeLayerPtr& iseCoarse, const CutSize& size,
               const OuterSegParams& params)
{
    constexpr unsigned rowsAbove = 0;
    constexpr unsigned rowsBelow = 50;

    CutPlan plan;
    // Also with the shape term, which needs more: the solver grows.
    plan.edgeFactor = plainEdgeFactor;
    plan.properties = SliceStackProperties({bm}, size.aScans, size.bScans);
    plan.properties.setCostFunction(bm, CostFunctionPtr(new CostFunctionBM));
    setRangeAround(plan.properties, bm, iseCoarse, rowsAbove, rowsBelow, size, params.mask);
    plan.properties.setShapeRegularizaton(bm, params.bmShapeOn ? params.bmShapeWeightZ : 0.0,
                                          params.bmShapeOn ? params.bmShapeWeightX : 0.0, 1, 1);
    return plan;
}

CutPlan planDrusen(const DrusenNames& names, const VolumeLayerPtr& ilm, const VolumeLayerPtr& bm,
                   const CutSize& size, const OuterSegParams& params)
{
    // In rows: from the ILM, from the BM, and between the two surfaces.
    constexpr int floorBelowILM = 10;
    constexpr int iseTopFromBM = -60;
    constexpr int iseBottomFromBM = -10;
    constexpr int irpeTopFromBM = -54;
    constexpr int irpeBottomFromBM = -8;
    constexpr unsigned smallestRange = 5;
    constexpr unsigned short iseIrpeMinimum = 6;
    constexpr unsigned short iseIrpeMaximum = 16;

    const auto rows = static_cast<int>(size.rows);
    const VolumeLayerPtr floor = copyOf(ilm);
    LayerUtils::addConstantToLayer(floor, floorBelowILM, rows - 1, constantLayer(size, 0));
    const auto fromBM = [&](int offset) {
        const VolumeLayerPtr range = copyOf(bm);
        // One row past the image's last, unlike the floor; a range's bottom is exclusive.
        LayerUtils::addConstantToLayer(range, offset, rows, floor);
        return range;
    };
    const VolumeLayerPtr iseTop = fromBM(iseTopFromBM);
    const VolumeLayerPtr iseBottom = fromBM(iseBottomFromBM);
    const VolumeLayerPtr irpeTop = fromBM(irpeTopFromBM);
    const VolumeLayerPtr irpeBottom = fromBM(irpeBottomFromBM);
    LayerUtils::fixMinDistanceTopToBottom(iseTop, iseBottom, smallestRange, params.mask);
    LayerUtils::fixMinDistanceTopToBottom(irpeTop, irpeBottom, smallestRange, params.mask);

    CutPlan plan;
    plan.edgeFactor = edgeFactorOf(params.iseShapeOn, params.irpeShapeOn);
    SliceStackProperties& properties = plan.properties;
    properties = SliceStackProperties({names.ise, names.irpe}, size.aScans, size.bScans);
    properties.setCostFunction(names.ise, CostFunctionPtr(new CostFunctionISePatho));
    properties.setCostFunction(names.irpe, CostFunctionPtr(new CostFunctionIRPE));
    setRange(properties, names.ise, iseTop, iseBottom, params.mask);
    setRange(properties, names.irpe, irpeTop, irpeBottom, params.mask);
    if (params.iseShapeOn) {
        properties.setShapeRegularizaton(names.ise, params.iseShapeWeightZ, params.iseShapeWeightX,
                                         1, 1);
    }
    if (params.irpeShapeOn) {
        properties.setShapeRegularizaton(names.irpe, params.irpeShapeWeightZ,
                                         params.irpeShapeWeightX, 1, 1);
    }
    properties.setInterSurfDistance(names.ise, names.irpe, constantLayer(size, iseIrpeMinimum),
                                    constantLayer(size, iseIrpeMaximum));
    return plan;
}

QList<DrusenDistance> drusenDistances(const DrusenNames& names, const CutPlan& plan,
                                      const OuterSegParams& params)
{
    constexpr unsigned iseBmDistance = 17;

    const LayerNamePtr bm = LayerNameBM::create();
    const VolumeLayerPtr iseTop = plan.properties.getSearchRangeTop(names.ise);
    const VolumeLayerPtr irpeTop = plan.properties.getSearchRangeTop(names.irpe);
    QList<DrusenDistance> distances;
    if (params.iseIrpeDistOn) {
        distances.append({"ISe and IRPE",
                          {names.ise,
                           names.irpe,
                           iseTop,
                           params.iseIrpeDistWeight,
                           {},
                           params.iseIrpeDistance}});
    }
    // The BM is not in the cut, which makes the two terms to it one-sided.
    if (params.iseBmDistOn) {
        distances.append(
            {"ISe and BM", {names.ise, bm, iseTop, params.iseBmDistWeight, {}, iseBmDistance}});
    }
    if (params.irpeBmDistOn) {
        distances.append(
            {"IRPE and BM",
             {names.irpe, bm, irpeTop, params.irpeBmDistWeight, {}, params.irpeBmDistance}});
    }
    return distances;
}

} // namespace kelp::oct
