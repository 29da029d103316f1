#include "CutPlans.h"
#include "DeviceFill.h"
#include "GraphCut.h"
#include "LayerDistributionUtils.h"
#include "LayerUtils.h"
#include "RegOCTStacks.h"
#include "SegStep.h"
#include "SegWorker.h"
#include "SegWorkerParts.h"
#include "kelpTrace.h"

namespace kelp::oct {

namespace {

// Typical distances of a healthy eye in micrometres, for circular B-scans, around which the trained
// model knows nothing.
constexpr float circleRpeThicknessMean = 67.0F;
constexpr float circleRpeThicknessVarWeight = 0.5F;
constexpr float circleIlm2isosDistMean = 292.0F;
constexpr float circleIlm2isosDistVarWeight = 0.1F;
constexpr float circleIlm2gclDistMean = 66.0F;
constexpr float circleGcl2inlDistMean = 70.0F;
constexpr float circleInl2onlDistMean = 64.0F;
constexpr float circleOnl2isosDistMean = 93.0F;
constexpr float circleGcl2inlDistMin = 25.0F;
constexpr float circleGcl2inlDistMax = 95.0F;
constexpr float circleInl2onlDistMin = 30.0F;
constexpr float circleInl2onlDistMax = 85.0F;

QString notImplementedFor(const OCTScanPtr& scan)
{
    return QString("Not implemented for OCT scan pattern %1").arg(patternText(scan));
}

} // namespace

void SegWorker::segmentRPEHumanHealthy(OCTScanSegPtr octSeg)
{
    SegStep step(*m_watcher, "segmentRPEHumanHealthy");
    if (!step.begin("Start human healthy RPE segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    bool segmented = false;
    if (hasPattern<OCTScanPatternSingleBScan, OCTScanPatternVolume>(scan)) {
        segmented = segmentRPEWithModel(step, octSeg);
    } else if (hasPattern<OCTScanPatternCircularBScan>(scan)) {
        // The other slot, not the function behind it: a step within this step, which counts, stores
        // and reports success for itself. The run's counters then stand one step too far, so that
        // a normal chain on a circular scan reports its success three times.
        segmented = !step.aborted() && step.phase("Could not segment the RPE layers.", [&] {
            segmentPEFineConstant(octSeg, circleRpeThicknessMean, circleRpeThicknessVarWeight,
                                  circleIlm2isosDistMean, circleIlm2isosDistVarWeight);
        });
    } else {
        step.failLocated(notImplementedFor(scan));
    }
    if (segmented && !step.aborted()) {
        step.close("Finished RPE segmentation");
    }
}

bool SegWorker::segmentRPEWithModel(SegStep& step, const OCTScanSegPtr& octSeg)
{
    const OCTScanPtr scan = octSeg->getOCT();
    VolumeLayerPtr iseCoarse;
    VolumeLayerPtr ilm;
    VolumeLayerPtr ise;
    VolumeLayerPtr bm;
    Distributions distributions;
    OuterSegParams params;
    return step.phase("Could not get the neccessary layers.",
                      [&] {
                          ise = makeTarget(scan);
                          bm = makeTarget(scan);
                          iseCoarse = octSeg->getVolumeLayer(LayerNameISeCoarse::create());
                          ilm = octSeg->getVolumeLayer(LayerNameILM::create());
                      }) &&
           !step.aborted() &&
           step.phase("Could not load the layer distributions from disk.",
                      [&] {
                          step.setStatus("Loading layer distribution from disk.");
                          LayerDistributionUtils::loadFromXML(distributions);
                          step.setProgress(0.1F);
                      }) &&
           !step.aborted() &&
           step.phase("Could not set up the segmentation properties for the RPE layers.",
                      [&] { params = healthyOuterParams(maskMatrixOf(octSeg)); }) &&
           !step.aborted() &&
           step.phase("Could not segment the RPE layers.",
                      [&] {
                          segmentPEFineConstrainedPrivate(iseCoarse, ilm, ise, bm, scan,
                                                          distributions, params);
                      }) &&
           !step.aborted() && step.phase("Could not set the RPE layers.", [&] {
               octSeg->setVolumeLayer(ise, LayerNameISe::create());
               octSeg->setVolumeLayer(bm, LayerNameBM::create());
           });
}

void SegWorker::segmentPEFineConstrainedPrivate(const VolumeLayerPtr& iseCoarse,
                                                const VolumeLayerPtr& ilm,
                                                const VolumeLayerPtr& ise, const VolumeLayerPtr& bm,
                                                const OCTScanPtr& scan,
                                                const Distributions& distributions,
                                                const OuterSegParams& params)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentPEFineConstrainedPrivate");
    if (stopped()) {
        return;
    }
    Trace() << "segmentPEFineConstrained... ";
    check(!iseCoarse.isNull(), place, "PE coarse layer is null.");
    check(!ilm.isNull(), place, "ILM layer is null.");
    check(!ise.isNull(), place, "Target ISe layer is null.");
    check(!bm.isNull(), place, "Target BM layer is null.");
    check(!scan.isNull(), place, "OCT scan is null.");
    check(
        hasPattern<OCTScanPatternVolume, OCTScanPatternSingleBScan>(scan), place,
        QString("Trying to segment %1 OCT scan pattern, but only volumes and single bScans can be "
                "segmented")
            .arg(patternText(scan)));
    check(scan->getBScanCount() > 0, place, "OCT has no BScans.");

    const CutSize size(scan->getVolumeSize());
    m_watcher->setStatus("Computing search range boundaries.");
    m_watcher->setStepProgress(0.05F);
    const OuterNames names{LayerNameISe::create(), LayerNameBM::create()};
    const CutPlan plan = planOuter(names, iseCoarse, size, params);
    const QList<kelp::ImagePtr> images = segmentationImages(*scan, m_watcher->getAbortFlag());
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, params.mask, m_watcher);
    if (!cut.goesOn()) {
        return;
    }
    const LayerDistributionPtr distribution =
        LayerUtils::getLayerDistributionBetween(distributions, "ISe", "BM");
    if (params.iseBmDistOn) {
        m_watcher->setStatus("Regularizing graph.");
        // The fovea's place on the localizer stands where the model takes its place in the scan,
        // unlike in the inner cut. The pair's mean and spread hardly depend on the place.
        const CoordOnLocalizer fovea = RegOCTStacks::findFovea(scan, ilm);
        const ModelFrame frame{modelSpacing(scan), {fovea.x, fovea.y}};
        const SoftDistance distance{names.ise,
                                    names.bm,
                                    plan.properties.getSearchRangeTop(names.ise),
                                    params.iseBmDistWeight,
                                    distribution,
                                    0};
        if (!cut.add(distance, frame)) {
            return;
        }
    }
    if (cut.goesOn() && solveOuterCut(cut, place, "the graph could not be built", names, ise, bm)) {
        m_watcher->setStepProgress(1.0F);
    }
}

void SegWorker::segmentInnerHumanHealthy(OCTScanSegPtr octSeg)
{
    SegStep step(*m_watcher, "segmentInnerHumanHealthy");
    if (!step.begin("Start human healthy inner layer segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    VolumeLayerPtr ilm;
    VolumeLayerPtr ise;
    VolumeLayerPtr gcl;
    VolumeLayerPtr inl;
    VolumeLayerPtr onl;
    InnerSegParams params;
    const bool prepared =
        step.phase("Could not get the required layers.",
                   [&] {
                       ilm = octSeg->getVolumeLayer(LayerNameILM::create());
                       ise = octSeg->getVolumeLayer(LayerNameISe::create());
                   }) &&
        !step.aborted() &&
        step.phase("Could not set up the segmentation properties for the inner layers.",
                   [&] {
                       gcl = makeTarget(scan);
                       inl = makeTarget(scan);
                       onl = makeTarget(scan);
                       params = healthyInnerParams(maskMatrixOf(octSeg));
                   }) &&
        !step.aborted();
    if (!prepared) {
        return;
    }

    bool segmented = false;
    if (hasPattern<OCTScanPatternSingleBScan, OCTScanPatternVolume>(scan)) {
        Distributions distributions;
        segmented = step.phase("Could not load the layer distributions from disk.",
                               [&] {
                                   step.setStatus("Loading layer distribution from disk.");
                                   step.setProgress(0.05F);
                                   LayerDistributionUtils::loadFromXML(distributions);
                                   step.setProgress(0.1F);
                               }) &&
                    !step.aborted() && step.phase("Could not segment the inner layers.", [&] {
                        segmentInnerFineConstrainedPrivate(ilm, ise, gcl, inl, onl, scan,
                                                           distributions, params);
                    });
    } else if (hasPattern<OCTScanPatternCircularBScan>(scan)) {
        segmented = step.phase("Could not segment the inner layers.", [&] {
            segmentInnerFineConstantPrivate(
                ilm, ise, gcl, inl, onl, scan, params, circleIlm2gclDistMean, circleGcl2inlDistMean,
                circleInl2onlDistMean, circleOnl2isosDistMean, circleGcl2inlDistMin,
                circleGcl2inlDistMax, circleInl2onlDistMin, circleInl2onlDistMax);
        });
    } else {
        step.failLocated(notImplementedFor(scan));
    }
    if (segmented && !step.aborted() &&
        storeInnerLayers(step, "Could not set the inner layers.", octSeg, gcl, inl, onl) &&
        !step.aborted()) {
        step.close("Finished inner layers segmentation");
    }
}

void SegWorker::segmentInnerFineConstrainedPrivate(
    const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise, const VolumeLayerPtr& gcl,
    const VolumeLayerPtr& inl, const VolumeLayerPtr& onl, const OCTScanPtr& scan,
    const Distributions& distributions, const InnerSegParams& params)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentInnerFineConstrainedPrivate");
    constexpr unsigned shapeStepZ = 2;
    if (stopped()) {
        return;
    }
    check(!ilm.isNull(), place, "ILM layer is null.");
    check(!ise.isNull(), place, "ISe layer is null.");
    check(!gcl.isNull(), place, "target GCL layer is null.");
    check(!inl.isNull(), place, "target INL layer is null.");
    check(!onl.isNull(), place, "target ONL layer is null.");
    check(!scan.isNull(), place, "OCT scan is null.");
    check(scan->getBScanCount() > 0, place, "OCT has no BScans.");
    const auto first = scan->getBScan(0);
    check(!first.isNull(), place, "First BScan is null.");
    check(first->getNrAScans() > 0, place, "First BScan has no AScans.");

    const CutSize size(scan->getVolumeSize());
    const InnerRanges ranges(ilm, ise);
    const CoordOnLocalizer fovea = RegOCTStacks::findFovea(scan, ilm);
    const VolumeCoords foveaInVolume = scan->localizerCoordToVolumeCoords(fovea);
    const std::array<double, 2> origin{foveaInVolume.z, foveaInVolume.x};
    const std::array<double, 3> voxelSpacing = scan->getVolumeSpacing().toArray();
    if (stopped()) {
        return;
    }
    if (params.searchRangeOn) {
        LayerUtils::getInnerSearchRangesDistribution(
            distributions, ranges.gclTop, ranges.inlTop, ranges.onlTop, ranges.gclBottom,
            ranges.inlBottom, ranges.onlBottom, voxelSpacing.data(), origin.data(),
            params.searchRangeFactor, params.mask);
    }
    if (stopped()) {
        return;
    }

    const auto between = [&](const QString& upper, const QString& lower) {
        return LayerUtils::getLayerDistributionBetween(distributions, upper, lower);
    };
    const InnerNames names{LayerNameGCL::create(), LayerNameINL::create(), LayerNameONL::create()};
    const LayerDistributionPtr gclInl =
        between(names.gcl->getIdentifier(), names.inl->getIdentifier());
    const LayerDistributionPtr inlOnl =
        between(names.inl->getIdentifier(), names.onl->getIdentifier());
    const float factor = params.interSurfRangeFactor;
    const auto minimumOf = [&](const LayerDistributionPtr& pair) {
        return pair->getMinDistanceLayer(voxelSpacing.data(), size.aScans, size.bScans,
                                         origin.data(), factor);
    };
    const auto maximumOf = [&](const LayerDistributionPtr& pair) {
        return pair->getMaxDistanceLayer(voxelSpacing.data(), size.aScans, size.bScans,
                                         origin.data(), factor);
    };
    const InnerDistances hardDistances{minimumOf(gclInl), maximumOf(gclInl), minimumOf(inlOnl),
                                       maximumOf(inlOnl)};
    const CutPlan plan = planInner(names, size, ranges, hardDistances, shapeStepZ, params);

    const QList<kelp::ImagePtr> images = segmentationImages(*scan, m_watcher->getAbortFlag());
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, params.mask, m_watcher);
    if (!cut.goesOn()) {
        return;
    }
    const InnerDistributions pairs{between("ILM", "GCL"), between("GCL", "INL"),
                                   between("INL", "ONL"), between("ONL", "ISe")};
    const ModelFrame frame{modelSpacing(scan), origin};
    if (cut.goesOn() && cut.add(trainedInnerDistances(names, ilm, ranges, pairs, params), frame)) {
        cut.solve(place, "The graph could not be built",
                  {{names.gcl, gcl}, {names.inl, inl}, {names.onl, onl}});
    }
}

} // namespace kelp::oct
