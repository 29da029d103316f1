#pragma once

#include "CutPlans.h"
#include "GraphCut.h"
#include "OCTScan.h"
#include "OCTScanPattern.h"
#include "OCTScanSegmentation.h"
#include "SegStep.h"
#include "kelpCheck.h"

#include <QString>

/// What the sources of SegWorker share.
namespace kelp::oct {

/// All of SegWorker is one place to those who read its messages.
constexpr Place workerPlace(const char* function)
{
    return {"libraries/OCTScan/src/layerSeg/SegWorker", function};
}

QString patternText(const OCTScanPtr& scan);

template <typename... Patterns>
bool hasPattern(const OCTScanPtr& scan)
{
    const QString text = patternText(scan);
    return ((text == Patterns().toString()) || ...);
}

/// Volumes, single and circular B-scans.
bool hasSegmentablePattern(const OCTScanPtr& scan);
/// Throws Exception for other patterns, in the words of the fine ILM and BM cuts.
void requireSegmentablePattern(const OCTScanPtr& scan);

/// The size of the scan as its first B-scan has it. Throws Assertion if there is none.
CutSize sizeOfScan(const OCTScanPtr& scan, const Place& place);

/// A layer of the scan's size for a step to fill; empty for a scan without B-scans, which the step
/// itself refuses later.
VolumeLayerPtr makeTarget(const OCTScanPtr& scan);

MaskMatrixPtr maskMatrixOf(const OCTScanSegPtr& octSeg);

/// Solves a cut of planOuter into the two layers. As GraphCut::solve.
bool solveOuterCut(GraphCut& cut, const Place& place, const char* notBuilt, const OuterNames& names,
                   const VolumeLayerPtr& ise, const VolumeLayerPtr& bm);

/// The last phase of the steps that find the inner surfaces.
bool storeInnerLayers(SegStep& step, const char* sentence, const OCTScanSegPtr& octSeg,
                      const VolumeLayerPtr& gcl, const VolumeLayerPtr& inl,
                      const VolumeLayerPtr& onl);

} // namespace kelp::oct
