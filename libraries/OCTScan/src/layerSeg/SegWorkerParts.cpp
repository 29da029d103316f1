#include "SegWorkerParts.h"

#include "kelpTrace.h"

namespace kelp::oct {

QString patternText(const OCTScanPtr& scan)
{
    const auto pattern = scan->getScanPattern();
    return pattern ? pattern->toString() : OCTScanPatternUnknown().toString();
}

bool hasSegmentablePattern(const OCTScanPtr& scan)
{
    return hasPattern<OCTScanPatternVolume, OCTScanPatternSingleBScan, OCTScanPatternCircularBScan>(
        scan);
}

void requireSegmentablePattern(const OCTScanPtr& scan)
{
    if (!hasSegmentablePattern(scan)) {
        throw Exception(QString("Trying to segment %1 OCT scan pattern, but only volumes and "
                                "straight and circular bScans can be segmented")
                            .arg(patternText(scan)));
    }
}

CutSize sizeOfScan(const OCTScanPtr& scan, const Place& place)
{
    check(scan->getBScanCount() > 0, place, "OCT has no BScans.");
    const auto first = scan->getBScan(0);
    return {static_cast<unsigned>(first->getNrAScans()),
            static_cast<unsigned>(first->getImage()->getRows()),
            static_cast<unsigned>(scan->getBScanCount())};
}

VolumeLayerPtr makeTarget(const OCTScanPtr& scan)
{
    const int bScans = scan->getBScanCount();
    const int aScans = bScans > 0 ? scan->getBScan(0)->getNrAScans() : 0;
    return VolumeLayerPtr::create(static_cast<unsigned>(bScans), static_cast<unsigned>(aScans));
}

MaskMatrixPtr maskMatrixOf(const OCTScanSegPtr& octSeg)
{
    return octSeg->getMask()->getMaskMatrix();
}

bool solveOuterCut(GraphCut& cut, const Place& place, const char* notBuilt, const OuterNames& names,
                   const VolumeLayerPtr& ise, const VolumeLayerPtr& bm)
{
    if (!cut.isValid()) {
        Trace() << "error: PE Layer Segmentation: The Graph could not be built";
    }
    return cut.solve(place, notBuilt, {{names.ise, ise}, {names.bm, bm}});
}

bool storeInnerLayers(SegStep& step, const char* sentence, const OCTScanSegPtr& octSeg,
                      const VolumeLayerPtr& gcl, const VolumeLayerPtr& inl,
                      const VolumeLayerPtr& onl)
{
    return step.phase(sentence, [&] {
        octSeg->setVolumeLayer(gcl, LayerNameGCL::create());
        octSeg->setVolumeLayer(inl, LayerNameINL::create());
        octSeg->setVolumeLayer(onl, LayerNameONL::create());
    });
}

} // namespace kelp::oct
