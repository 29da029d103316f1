#pragma once

#include "InnerDistProps.h"
#include "SegmentationMask.h"

namespace kelp::oct {

// The settings that a step hands to the function behind it: mostly a switch with its values.
// Fields that no step reads are part of the records' fixed form.

struct ILMSegParams
{
    MaskMatrixPtr mask;
    bool shapeRegOn = false;
    unsigned shapeRegWeightX = 0;
    unsigned shapeRegWeightZ = 0;
};

struct InnerSegParams
{
    MaskMatrixPtr mask;
    unsigned gridAScans = 512;
    unsigned gridBScans = 49;
    bool gclShapeOn = false;
    bool inlShapeOn = false;
    bool onlShapeOn = false;
    unsigned gclShapeWeightX = 0;
    unsigned inlShapeWeightX = 0;
    unsigned onlShapeWeightX = 0;
    unsigned gclShapeWeightZ = 0;
    unsigned inlShapeWeightZ = 0;
    unsigned onlShapeWeightZ = 0;
    bool ilmGclDistOn = false;
    bool gclInlDistOn = false;
    bool inlOnlDistOn = false;
    bool onlIseDistOn = false;
    float ilmGclDistWeight = 0.0F;
    float gclInlDistWeight = 0.0F;
    float inlOnlDistWeight = 0.0F;
    float onlIseDistWeight = 0.0F;
    bool interSurfRangeOn = true;
    float interSurfRangeFactor = 2.7F;
    bool searchRangeOn = false;
    float searchRangeFactor = 0.0F;
    unsigned unused = 0;
};

struct OuterSegParams
{
    MaskMatrixPtr mask;
    unsigned gridAScans = 512;
    unsigned gridBScans = 49;
    bool iseShapeOn = false;
    bool bmShapeOn = false;
    bool irpeShapeOn = false;
    unsigned iseShapeWeightX = 0;
    unsigned iseShapeWeightZ = 0;
    unsigned bmShapeWeightX = 0;
    unsigned bmShapeWeightZ = 0;
    unsigned irpeShapeWeightX = 0;
    unsigned irpeShapeWeightZ = 0;
    bool iseBmDistOn = false;
    float iseBmDistWeight = 0.0F;
    bool iseIrpeDistOn = false;
    float iseIrpeDistWeight = 0.0F;
    unsigned iseIrpeDistance = 5;
    bool irpeBmDistOn = false;
    float irpeBmDistWeight = 0.0F;
    unsigned irpeBmDistance = 5;
    bool rangeFactorOn = true;
    float rangeFactor = 2.7F;
    float unused = -1000.0F;
};

// The records as the steps fill them.

ILMSegParams ilmParams(const MaskMatrixPtr& mask);
OuterSegParams healthyOuterParams(const MaskMatrixPtr& mask);
InnerSegParams healthyInnerParams(const MaskMatrixPtr& mask);
OuterSegParams bmParams(const MaskMatrixPtr& mask);
OuterSegParams drusenParams(const MaskMatrixPtr& mask);
/// rpeThicknessVarWeight: how firmly ISe and BM are held at their distance.
OuterSegParams constantOuterParams(const MaskMatrixPtr& mask, float rpeThicknessVarWeight);
InnerSegParams constantInnerParams(const MaskMatrixPtr& mask, const InnerDistProps& distProps);

} // namespace kelp::oct
