#include "CutPlans.h"
#include "DeviceFill.h"
#include "GraphCut.h"
#include "SegStep.h"
#include "SegWorker.h"
#include "SegWorkerParts.h"
#include "kelpTrace.h"

namespace kelp::oct {

void SegWorker::segmentBMFine(OCTScanSegPtr octSeg)
{
    SegStep step(*m_watcher, "segmentBMFine");
    if (!step.begin("Start Bruch's Membrane segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    OuterSegParams params;
    VolumeLayerPtr iseCoarse;
    VolumeLayerPtr ilm;
    VolumeLayerPtr bm;
    const bool done =
        step.phase(
            "Could not set the segmentation properties.",
            [&] {
                const SegmentationMaskPtr mask = octSeg->getMask();
                if (!step.require(mask, "Segmentation mask is null.") ||
                    !step.require(mask->getMaskMatrix(), "Segmentation mask matrix is null.")) {
                    return false;
                }
                params = bmParams(mask->getMaskMatrix());
                return true;
            }) &&
        step.phase("Could get the ILM or RPE coarse layers.",
                   [&] {
                       bm = makeTarget(scan);
                       iseCoarse = octSeg->getVolumeLayer(LayerNameISeCoarse::create());
                       ilm = octSeg->getVolumeLayer(LayerNameILM::create());
                   }) &&
        !step.aborted() &&
        step.phase("Segmentation failed.",
                   [&] { segmentBMFinePrivate(iseCoarse, ilm, bm, scan, params); }) &&
        !step.aborted() &&
        step.phase("Could not set the Bruch's Membrane layer.",
                   [&] { octSeg->setVolumeLayer(bm, LayerNameBM::create()); }) &&
        !step.aborted();
    if (done) {
        step.setProgress(1.0F);
        step.setStatus("Finished BM segmentation");
        step.finish();
    }
}

void SegWorker::segmentBMFinePrivate(const VolumeLayerPtr& iseCoarse, const VolumeLayerPtr& ilm,
                                     const VolumeLayerPtr& bm, const OCTScanPtr& scan,
                                     const OuterSegParams& params)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentBMFinePrivate");
    if (stopped()) {
        return;
    }
    check(!iseCoarse.isNull(), place, "RPE coarse layer is null.");
    check(!ilm.isNull(), place, "ILM layer is null.");
    check(!bm.isNull(), place, "target BM layer is null.");
    check(!scan.isNull(), place, "OCT scan is null.");
    requireSegmentablePattern(scan);
    const CutSize size = sizeOfScan(scan, place);
    // The ILM serves for nothing else here: a segmentation without one is not ready for this step.
    check(ilm->rows == size.bScans, place, "ILM layer row size mismatch.");
    check(ilm->columns == size.aScans, place, "ILM layer column size mismatch.");
    if (stopped()) {
        return;
    }

    const QList<kelp::ImagePtr> images = segmentationImages(*scan, m_watcher->getAbortFlag());
    const LayerNamePtr name = LayerNameBM::create();
    const CutPlan plan = planBM(name, iseCoarse, size, params);
    m_watcher->setStepProgress(0.1F);
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, params.mask, m_watcher);
    if (cut.goesOn()) {
        cut.solve(place, "The graph could not be built", {{name, bm}});
    }
}

void SegWorker::segmentISeIRPEFineDrusen(OCTScanSegPtr octSeg)
{
    SegStep step(*m_watcher, "segmentISeIRPEFineDrusen");
    if (!step.begin("Start ISe and IRPE segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    OuterSegParams params;
    VolumeLayerPtr bm;
    VolumeLayerPtr ilm;
    VolumeLayerPtr ise;
    VolumeLayerPtr irpe;
    const bool done =
        step.phase("Could not set the segmentation properties.",
                   [&] {
                       const SegmentationMaskPtr mask = octSeg->getMask();
                       if (!step.require(mask, "Segmentation mask is null.")) {
                           return false;
                       }
                       params = drusenParams(mask->getMaskMatrix());
                       return true;
                   }) &&
        !step.aborted() &&
        step.phase("Could not get the required layers.",
                   [&] {
                       bm = octSeg->getVolumeLayer(LayerNameBM::create());
                       ilm = octSeg->getVolumeLayer(LayerNameILM::create());
                       ise = makeTarget(scan);
                       irpe = makeTarget(scan);
                   }) &&
        !step.aborted() &&
        step.phase("Segmentation failed.",
                   [&] { segmentISeIRPEFinePrivate(ilm, bm, ise, irpe, scan, params); }) &&
        !step.aborted() &&
        step.phase("Could not set the segmented layres.",
                   [&] {
                       octSeg->setVolumeLayer(ise, LayerNameISe::create());
                       octSeg->setVolumeLayer(irpe, LayerNameIRPE::create());
                   }) &&
        !step.aborted();
    if (done) {
        // The step counts as done before its progress is told, which is silent after a chain's
        // last.
        step.setStatus("Finished ISe and  segmentation");
        step.finish();
        step.setProgress(1.0F);
    }
}

void SegWorker::segmentISeIRPEFinePrivate(const VolumeLayerPtr& ilm, const VolumeLayerPtr& bm,
                                          const VolumeLayerPtr& ise, const VolumeLayerPtr& irpe,
                                          const OCTScanPtr& scan, const OuterSegParams& params)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentISeIRPEFinePrivate");
    if (stopped()) {
        return;
    }
    check(!ilm.isNull(), place, "ILM layer is null.");
    check(!ise.isNull(), place, "target ISe layer is null.");
    check(!irpe.isNull(), place, "target IRPE layer is null.");
    check(!scan.isNull(), place, "OCT scan is null.");
    check(!bm.isNull(), place, "BM layer is null.");
    const kelp::Vector3<int> volumeSize = scan->getVolumeSize();
    check(volumeSize.z > 0, place, "OCT has no BScans.");
    check(volumeSize.y > 0, place, "OCT height is zero.");
    check(volumeSize.x > 0, place, "First BScan has no AScans.");
    if (stopped()) {
        return;
    }

    const DrusenNames names{LayerNameISe::create(), LayerNameIRPE::create()};
    const CutPlan plan = planDrusen(names, ilm, bm, CutSize(volumeSize), params);
    const auto trace = [&](const QString& text) { Trace() << locatedText(place, text); };
    if (params.iseShapeOn) {
        trace("adding shape reg ISe");
    }
    if (params.irpeShapeOn) {
        trace("adding shape reg IRPE");
    }
    const QList<kelp::ImagePtr> images = segmentationImages(*scan, m_watcher->getAbortFlag());
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, params.mask, m_watcher);
    if (!cut.goesOn()) {
        return;
    }
    for (const DrusenDistance& term : drusenDistances(names, plan, params)) {
        trace(QString("adding inter surf regularization between %1").arg(term.between));
        if (!cut.add(term.distance)) {
            return;
        }
    }
    cut.solve(place, "The graph could not be built", {{names.ise, ise}, {names.irpe, irpe}});
}

} // namespace kelp::oct
