#include "CostFunctionInner.h"
#include "CutPlans.h"
#include "LayerUtils.h"

namespace kelp::oct {

InnerRanges::InnerRanges(const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise)
    : gclTop(copyOf(ilm)), inlTop(copyOf(ilm)), onlTop(copyOf(ilm)), gclBottom(copyOf(ise)),
      inlBottom(copyOf(ise)), onlBottom(copyOf(ise))
{
}

CutPlan planInner(const InnerNames& names, const CutSize& size, const InnerRanges& ranges,
                  const InnerDistances& distances, unsigned shapeStepZ,
                  const InnerSegParams& params)
{
    CutPlan plan;
    plan.edgeFactor = edgeFactorOf(params.gclShapeOn, params.inlShapeOn, params.onlShapeOn);
    SliceStackProperties& properties = plan.properties;
    properties = SliceStackProperties({names.gcl, names.inl, names.onl}, size.aScans, size.bScans);
    properties.setCostFunction(names.gcl, CostFunctionPtr(new CostFunctionGCL));
    properties.setCostFunction(names.inl, CostFunctionPtr(new CostFunctionINL));
    properties.setCostFunction(names.onl, CostFunctionPtr(new CostFunctionONL));
    setRange(properties, names.gcl, ranges.gclTop, ranges.gclBottom, params.mask);
    setRange(properties, names.inl, ranges.inlTop, ranges.inlBottom, params.mask);
    setRange(properties, names.onl, ranges.onlTop, ranges.onlBottom, params.mask);
    properties.setShapeRegularizaton(names.gcl, params.gclShapeWeightZ, params.gclShapeWeightX,
                                     shapeStepZ, 1);
    properties.setShapeRegularizaton(names.inl, params.inlShapeWeightZ, params.inlShapeWeightX,
                                     shapeStepZ, 1);
    properties.setShapeRegularizaton(names.onl, params.onlShapeWeightZ, params.onlShapeWeightX,
                                     shapeStepZ, 1);
    properties.setInterSurfDistance(names.gcl, names.inl, distances.gclInlMinimum,
                                    distances.gclInlMaximum);
    properties.setInterSurfDistance(names.inl, names.onl, distances.inlOnlMinimum,
                                    distances.inlOnlMaximum);
    return plan;
}

namespace {

struct InnerTerms
{
    SoftDistance ilmGcl, gclInl, inlOnl, onlIse;
};

/// The four terms without their distances. ILM and ISe are not in the cut, which makes the first
/// and the last term one-sided.
InnerTerms innerTerms(const InnerNames& names, const VolumeLayerPtr& ilm, const InnerRanges& ranges,
                      const InnerSegParams& params)
{
    InnerTerms terms;
    terms.ilmGcl = {LayerNameILM::create(), names.gcl, ilm, params.ilmGclDistWeight, {}, 0};
    terms.gclInl = {names.gcl, names.inl, ranges.gclTop, params.gclInlDistWeight, {}, 0};
    terms.inlOnl = {names.inl, names.onl, ranges.inlTop, params.inlOnlDistWeight, {}, 0};
    terms.onlIse = {names.onl, LayerNameISe::create(), ranges.onlTop, params.onlIseDistWeight, {},
                    0};
    return terms;
}

QList<SoftDistance> switchedOn(const InnerTerms& terms, const InnerSegParams& params)
{
    QList<SoftDistance> distances;
    if (params.ilmGclDistOn) {
        distances.append(terms.ilmGcl);
    }
    if (params.gclInlDistOn) {
        distances.append(terms.gclInl);
    }
    if (params.inlOnlDistOn) {
        distances.append(terms.inlOnl);
    }
    if (params.onlIseDistOn) {
        distances.append(terms.onlIse);
    }
    return distances;
}

} // namespace

QList<SoftDistance> trainedInnerDistances(const InnerNames& names, const VolumeLayerPtr& ilm,
                                          const InnerRanges& ranges,
                                          const InnerDistributions& distributions,
                                          const InnerSegParams& params)
{
    InnerTerms terms = innerTerms(names, ilm, ranges, params);
    terms.ilmGcl.distribution = distributions.ilmGcl;
    terms.gclInl.distribution = distributions.gclInl;
    terms.inlOnl.distribution = distributions.inlOnl;
    terms.onlIse.distribution = distributions.onlIse;
    return switchedOn(terms, params);
}

QList<SoftDistance> constantInnerDistances(const InnerNames& names, const VolumeLayerPtr& ilm,
                                           const InnerRanges& ranges,
                                           const InnerThicknesses& thicknesses,
                                           const InnerSegParams& params)
{
    // Micrometres stand where the cut takes rows, unlike in the outer cut: the weights of this
    // cut are tuned to it.
    const auto unconverted = [](float micrometres) {
        return static_cast<unsigned>(truncatedToInt(micrometres));
    };
    InnerTerms terms = innerTerms(names, ilm, ranges, params);
    terms.ilmGcl.rows = unconverted(thicknesses.ilm2gclDistMean);
    terms.gclInl.rows = unconverted(thicknesses.gcl2inlDistMean);
    terms.inlOnl.rows = unconverted(thicknesses.inl2onlDistMean);
    terms.onlIse.rows = unconverted(thicknesses.onl2isosDistMean);
    return switchedOn(terms, params);
}

InnerDistances constantHardDistances(const InnerThicknesses& thicknesses, float axial,
                                     const CutSize& size)
{
    const auto everywhere = [&](float micrometres) {
        const float rows = micrometres / (axial * 1000.0F);
        return constantLayer(size, static_cast<unsigned short>(truncatedToInt(rows)));
    };
    return {everywhere(thicknesses.gcl2inlDistMin), everywhere(thicknesses.gcl2inlDistMax),
            everywhere(thicknesses.inl2onlDistMin), everywhere(thicknesses.inl2onlDistMax)};
}

} // namespace kelp::oct
