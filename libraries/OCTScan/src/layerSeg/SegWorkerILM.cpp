#include "CutPlans.h"
#include "DeviceFill.h"
#include "GraphCut.h"
#include "RegOCTStacks.h"
#include "SegStep.h"
#include "SegWorker.h"
#include "SegWorkerParts.h"
#include "kelpTrace.h"

namespace kelp::oct {

namespace {

/// Stores the fovea and makes the automatic masks around it.
bool settleFovea(SegStep& step, const OCTScanSegPtr& octSeg, const VolumeLayerPtr& ilm,
                 bool maskETDRSSectors, bool maskCenter)
{
    const OCTScanPtr scan = octSeg->getOCT();
    CoordOnLocalizer position(scan->getCenter());
    // A mask over the centre is for scans of the optic nerve head, which have no fovea to find: the
    // centre of the scan stands for it.
    if (!maskCenter && !step.phase("Could not find fovea position.",
                                   [&] { position = RegOCTStacks::findFovea(scan, ilm); })) {
        return false;
    }
    octSeg->setFoveaPosition({position, true});
    const SegmentationMaskPtr mask = octSeg->getMask();
    if (!step.require(mask, "Could not get segmentation mask")) {
        return false;
    }
    if (maskETDRSSectors || maskCenter) {
        // The automatic mask takes the place of whatever was drawn before.
        mask->clear();
    }
    if (maskETDRSSectors && !step.phase("Could not mask ETDRS sectors.",
                                        [&] { RegOCTStacks::maskETDRSSectors(mask, position); })) {
        return false;
    }
    return !maskCenter ||
           step.phase("Could not mask center.", [&] { RegOCTStacks::maskCenter(mask, position); });
}

} // namespace

void SegWorker::segmentILMFine(OCTScanSegPtr octSeg, bool maskETDRSSectors, bool maskCenter)
{
    SegStep step(*m_watcher, "segmentILMFine");
    if (!step.begin("Start ILM segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    VolumeLayerPtr ilm;
    VolumeLayerPtr ilmCoarse;
    ILMSegParams params;
    const bool stored =
        step.phase("Could not get ILM coarse layer.",
                   [&] {
                       ilm = makeTarget(scan);
                       ilmCoarse = octSeg->getVolumeLayer(LayerNameILMCoarse::create());
                   }) &&
        step.require(ilmCoarse, "ILM coarse layer is null.") &&
        step.phase("Could not set segmentation porperties.",
                   [&] { params = ilmParams(maskMatrixOf(octSeg)); }) &&
        !step.aborted() &&
        step.phase("Could not segment ILM layer.",
                   [&] { segmentILMFineRegularizedPrivate(ilm, ilmCoarse, scan, params); }) &&
        !step.aborted() &&
        step.phase("Could not set ILM layer.",
                   [&] { octSeg->setVolumeLayer(ilm, LayerNameILM::create()); }) &&
        !step.aborted();
    if (!stored) {
        return;
    }
    const bool settled =
        hasPattern<OCTScanPatternCircularBScan>(scan) || step.phase("Could not detect fovea.", [&] {
            return settleFovea(step, octSeg, ilm, maskETDRSSectors, maskCenter);
        });
    if (settled && !step.aborted()) {
        step.close("Finished ILM segmentation");
    }
}

void SegWorker::segmentILMFineRegularizedPrivate(const VolumeLayerPtr& ilm,
                                                 const VolumeLayerPtr& ilmCoarse,
                                                 const OCTScanPtr& scan, const ILMSegParams& params)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentILMFineRegularizedPrivate");
    if (stopped()) {
        return;
    }
    Trace() << "startSegmentation ILMFine...";
    m_watcher->setStepProgress(0.0F);
    check(!ilm.isNull(), place, "target ILM layer is null.");
    check(!ilmCoarse.isNull(), place, "ILM coarse layer is null.");
    check(!scan.isNull(), place, "OCT scan is null.");
    requireSegmentablePattern(scan);
    const CutSize size = sizeOfScan(scan, place);
    check(ilmCoarse->rows == size.bScans, place, "ILM coarse layer row size mismatch.");
    check(ilmCoarse->columns == size.aScans, place, "ILM coarse layer column size mismatch.");
    if (stopped()) {
        return;
    }

    const QList<kelp::ImagePtr> images = segmentationImages(*scan, m_watcher->getAbortFlag());
    const LayerNamePtr name = LayerNameILM::create();
    const CutPlan plan = planILM(name, ilmCoarse, size, params);
    m_watcher->setStepProgress(0.1F);
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, params.mask, m_watcher);
    if (cut.goesOn() && cut.solve(place, "The graph could not be built", {{name, ilm}})) {
        m_watcher->setStepProgress(1.0F);
        Trace() << "ILMFine DONE...";
    }
}

} // namespace kelp::oct
