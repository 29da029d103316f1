#include "SegParams.h"

namespace kelp::oct {

namespace {

/// The shape of the inner surfaces and their ranges, alike with and without the trained model.
InnerSegParams innerParams(const MaskMatrixPtr& mask)
{
    InnerSegParams params;
    params.mask = mask;
    params.gclShapeOn = true;
    params.gclShapeWeightX = 9000;
    params.gclShapeWeightZ = 430;
    params.inlShapeOn = true;
    params.inlShapeWeightX = 9300;
    params.inlShapeWeightZ = 400;
    params.onlShapeOn = true;
    params.onlShapeWeightX = 8500;
    params.onlShapeWeightZ = 580;
    params.ilmGclDistOn = true;
    params.gclInlDistOn = true;
    params.inlOnlDistOn = true;
    params.onlIseDistOn = true;
    params.searchRangeOn = true;
    params.searchRangeFactor = 2.7F;
    params.interSurfRangeFactor = 2.9F;
    return params;
}

} // namespace

ILMSegParams ilmParams(const MaskMatrixPtr& mask)
{
    ILMSegParams params;
    params.mask = mask;
    params.shapeRegOn = true;
    params.shapeRegWeightX = 4000;
    params.shapeRegWeightZ = 800;
    return params;
}

OuterSegParams healthyOuterParams(const MaskMatrixPtr& mask)
{
    OuterSegParams params;
    params.mask = mask;
    params.bmShapeOn = true;
    params.bmShapeWeightX = 1260;
    params.bmShapeWeightZ = 0;
    params.iseShapeOn = true;
    params.iseShapeWeightX = 5000;
    params.iseShapeWeightZ = 900;
    params.iseBmDistOn = true;
    params.iseBmDistWeight = 0.025F;
    params.rangeFactorOn = true;
    params.rangeFactor = 2.7F;
    return params;
}

InnerSegParams healthyInnerParams(const MaskMatrixPtr& mask)
{
    InnerSegParams params = innerParams(mask);
    params.ilmGclDistWeight = 0.049F;
    params.gclInlDistWeight = 0.073F;
    params.inlOnlDistWeight = 0.049F;
    params.onlIseDistWeight = 0.026F;
    params.interSurfRangeOn = true;
    return params;
}

OuterSegParams bmParams(const MaskMatrixPtr& mask)
{
    OuterSegParams params;
    params.mask = mask;
    params.bmShapeOn = true;
    params.bmShapeWeightX = 4000;
    params.bmShapeWeightZ = 800;
    return params;
}

OuterSegParams drusenParams(const MaskMatrixPtr& mask)
{
    OuterSegParams params;
    params.mask = mask;
    params.iseShapeOn = true;
    params.iseShapeWeightX = 900;
    params.iseShapeWeightZ = 0;
    params.irpeShapeOn = true;
    params.irpeShapeWeightX = 900;
    params.irpeShapeWeightZ = 0;
    params.iseIrpeDistOn = true;
    params.iseIrpeDistWeight = 1.0F;
    params.iseIrpeDistance = 4;
    params.iseBmDistOn = false;
    params.iseBmDistWeight = 0.0F;
    params.irpeBmDistOn = true;
    params.irpeBmDistWeight = 0.35F;
    params.irpeBmDistance = 11;
    return params;
}

OuterSegParams constantOuterParams(const MaskMatrixPtr& mask, float rpeThicknessVarWeight)
{
    OuterSegParams params;
    params.mask = mask;
    params.bmShapeOn = true;
    params.bmShapeWeightX = 5000;
    params.bmShapeWeightZ = 900;
    params.iseShapeOn = true;
    params.iseShapeWeightX = 5000;
    params.iseShapeWeightZ = 900;
    params.iseBmDistOn = true;
    params.iseBmDistWeight = rpeThicknessVarWeight;
    params.rangeFactorOn = false;
    params.rangeFactor = 2.7F;
    return params;
}

InnerSegParams constantInnerParams(const MaskMatrixPtr& mask, const InnerDistProps& distProps)
{
    InnerSegParams params = innerParams(mask);
    params.ilmGclDistWeight = distProps.ilm2gclDistVarWeight;
    params.gclInlDistWeight = distProps.gcl2inlDistVarWeight;
    params.inlOnlDistWeight = distProps.inl2onlDistVarWeight;
    params.onlIseDistWeight = distProps.onl2isosDistVarWeight;
    params.interSurfRangeOn = false;
    return params;
}

} // namespace kelp::oct
