#include "CutPlans.h"
#include "DeviceFill.h"
#include "GraphCut.h"
#include "LayerUtils.h"
#include "SegStep.h"
#include "SegWorker.h"
#include "SegWorkerParts.h"
#include "kelpTrace.h"

namespace kelp::oct {

void SegWorker::segmentPEFineConstant(OCTScanSegPtr octSeg, float rpeThicknessMean,
                                      float rpeThicknessVarWeight, float ilm2isosDistMean,
                                      float ilm2isosDistVarWeight)
{
    SegStep step(*m_watcher, "segmentPEFineConstant");
    if (!step.begin("Start RPE segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    VolumeLayerPtr iseCoarse;
    VolumeLayerPtr ilm;
    VolumeLayerPtr ise;
    VolumeLayerPtr bm;
    OuterSegParams params;
    const bool done =
        !step.aborted() &&
        step.phase("Could not get required layers.",
                   [&] {
                       iseCoarse = octSeg->getVolumeLayer(LayerNameISeCoarse::create());
                       ilm = octSeg->getVolumeLayer(LayerNameILM::create());
                   }) &&
        step.require(iseCoarse, "ISe coarse layer is null.") &&
        step.require(ilm, "ILM layer is null.") && !step.aborted() &&
        step.phase("Could not set the segmentation properties.",
                   [&] {
                       ise = makeTarget(scan);
                       bm = makeTarget(scan);
                       params = constantOuterParams(maskMatrixOf(octSeg), rpeThicknessVarWeight);
                   }) &&
        !step.aborted() &&
        step.phase("Segmentation failed.",
                   [&] {
                       segmentPEFineConstantPrivate(iseCoarse, ilm, ise, bm, scan, params,
                                                    rpeThicknessMean, ilm2isosDistMean,
                                                    ilm2isosDistVarWeight);
                   }) &&
        !step.aborted() && step.phase("Could not set the segmented layers.", [&] {
            octSeg->setVolumeLayer(ise, LayerNameISe::create());
            octSeg->setVolumeLayer(bm, LayerNameBM::create());
        });
    if (done) {
        // The step counts as done before its progress is told, which is silent after a chain's
        // last.
        step.setStatus("Finished RPE segmentation");
        step.finish();
        step.setProgress(1.0F);
    }
}

void SegWorker::segmentPEFineConstantPrivate(const VolumeLayerPtr& iseCoarse,
                                             const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise,
                                             const VolumeLayerPtr& bm, const OCTScanPtr& scan,
                                             const OuterSegParams& params, float rpeThicknessMean,
                                             float ilm2isosDistMean, float ilm2isosDistVarWeight)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentPEFineConstantPrivate");
    Trace() << "segmentPEFineConstant... ";
    check(!scan.isNull(), place, "OCT scan is null.");
    check(!iseCoarse.isNull(), place, "PE coarse layer is null.");
    check(!ilm.isNull(), place, "ILM layer is null.");
    check(!ise.isNull(), place, "Target ISe layer is null.");
    check(!bm.isNull(), place, "Target BM layer is null.");
    check(hasSegmentablePattern(scan), place,
          QString("Trying to segment %1 OCT scan pattern, but only volumes and straight or cirular "
                  "BScans can be segmented")
              .arg(patternText(scan)));
    check(scan->getBScanCount() > 0, place, "OCT has no BScans.");

    const CutSize size(scan->getVolumeSize());
    const double axial = scan->getSliceSpacing().y;
    const OuterNames names{LayerNameISe::create(), LayerNameBM::create()};
    const CutPlan plan = planOuter(names, iseCoarse, size, params);
    GraphCut cut(segmentationImages(*scan, m_watcher->getAbortFlag()), plan, params.mask,
                 m_watcher);
    const QList<SoftDistance> distances =
        constantOuterDistances(names, plan, ilm, params, micrometresToRows(ilm2isosDistMean, axial),
                               ilm2isosDistVarWeight, micrometresToRows(rpeThicknessMean, axial));
    if (cut.add(distances) && cut.goesOn()) {
        solveOuterCut(cut, place, "The graph could not be built", names, ise, bm);
    }
}

void SegWorker::segmentInnerFineConstant(OCTScanSegPtr octSeg, InnerDistProps distProps)
{
    SegStep step(*m_watcher, "segmentInnerFineConstant");
    if (!step.begin("Start inner layer segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    VolumeLayerPtr ilm;
    VolumeLayerPtr ise;
    VolumeLayerPtr gcl;
    VolumeLayerPtr inl;
    VolumeLayerPtr onl;
    InnerSegParams params;
    const bool done =
        step.phase("Could not get ILM layer.",
                   [&] { ilm = octSeg->getVolumeLayer(LayerNameILM::create()); }) &&
        step.require(ilm, "ILM layer is null.") && !step.aborted() &&
        step.phase("Could not get ISe layer.",
                   [&] { ise = octSeg->getVolumeLayer(LayerNameISe::create()); }) &&
        step.require(ise, "ISe layer is null.") && !step.aborted() &&
        step.phase("Could not set segmentation properties.",
                   [&] {
                       gcl = makeTarget(scan);
                       inl = makeTarget(scan);
                       onl = makeTarget(scan);
                       params = constantInnerParams(maskMatrixOf(octSeg), distProps);
                   }) &&
        !step.aborted() &&
        step.phase("Segmentation failed.",
                   [&] {
                       segmentInnerFineConstantPrivate(
                           ilm, ise, gcl, inl, onl, scan, params, distProps.ilm2gclDistMean,
                           distProps.gcl2inlDistMean, distProps.inl2onlDistMean,
                           distProps.onl2isosDistMean, distProps.gcl2inlDistMin,
                           distProps.gcl2inlDistMax, distProps.inl2onlDistMin,
                           distProps.inl2onlDistMax);
                   }) &&
        !step.aborted() &&
        storeInnerLayers(step, "Could not set segmented layers.", octSeg, gcl, inl, onl);
    if (done) {
        step.close("Finished inner layer segmentation");
    }
}

void SegWorker::segmentInnerFineConstantPrivate(
    const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise, const VolumeLayerPtr& gcl,
    const VolumeLayerPtr& inl, const VolumeLayerPtr& onl, const OCTScanPtr& scan,
    const InnerSegParams& params, float ilm2gclDistMean, float gcl2inlDistMean,
    float inl2onlDistMean, float onl2isosDistMean, float gcl2inlDistMin, float gcl2inlDistMax,
    float inl2onlDistMin, float inl2onlDistMax)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentInnerFineConstantPrivate");
    constexpr unsigned shapeStepZ = 1;
    constexpr float balance = 0.5F;
    Trace() << "segmentInnerFineConstant... ";
    if (stopped()) {
        return;
    }
    check(!ilm.isNull(), place, "ILM layer is null.");
    check(!ise.isNull(), place, "ISe layer is null.");
    check(!gcl.isNull(), place, "Target GCL layer is null.");
    check(!inl.isNull(), place, "Target INL layer is null.");
    check(!onl.isNull(), place, "Target ONL layer is null.");
    check(!scan.isNull(), place, "OCT scan is null.");

    const CutSize size(scan->getVolumeSize());
    const InnerRanges ranges(ilm, ise);
    const auto axial = static_cast<float>(scan->getVolumeSpacing().y);
    if (stopped()) {
        return;
    }
    const InnerThicknesses thicknesses{ilm2gclDistMean,  gcl2inlDistMean, inl2onlDistMean,
                                       onl2isosDistMean, gcl2inlDistMin,  gcl2inlDistMax,
                                       inl2onlDistMin,   inl2onlDistMax};
    if (params.searchRangeOn) {
        m_watcher->setStatus("Computing search ranges");
        m_watcher->setStepProgress(0.05F);
        LayerUtils::getInnerSearchRangesConstant(
            ilm, ise, ranges.gclTop, ranges.inlTop, ranges.onlTop, ranges.gclBottom,
            ranges.inlBottom, ranges.onlBottom, ilm2gclDistMean, gcl2inlDistMean, inl2onlDistMean,
            onl2isosDistMean, axial, balance, params.mask);
    }

    const InnerNames names{LayerNameGCL::create(), LayerNameINL::create(), LayerNameONL::create()};
    const CutPlan plan = planInner(
        names, size, ranges, constantHardDistances(thicknesses, axial, size), shapeStepZ, params);
    const QList<kelp::ImagePtr> images = segmentationImages(*scan, m_watcher->getAbortFlag());
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, params.mask, m_watcher);
    if (!cut.goesOn()) {
        return;
    }
    m_watcher->setStatus("Regularizing graph");
    if (cut.goesOn() && cut.add(constantInnerDistances(names, ilm, ranges, thicknesses, params))) {
        cut.solve(place, "The graph could not be built",
                  {{names.gcl, gcl}, {names.inl, inl}, {names.onl, onl}});
    }
}

} // namespace kelp::oct
