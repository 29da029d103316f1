#include "CutPlans.h"
#include "DeviceFill.h"
#include "GraphCut.h"
#include "LayerUtils.h"
#include "SegStep.h"
#include "SegWorker.h"
#include "SegWorkerParts.h"
#include "kelpImageTools.h"
#include "kelpTrace.h"

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr double lateralReduction = 0.0625;
constexpr double axialReduction = 0.125;
/// Fewer leave no coarse column, or no two coarse rows for a graph column.
constexpr int fewestAScans = 16;
constexpr int fewestRows = 16;
/// In coarse rows.
constexpr int defaultMinDist = 2;
constexpr int defaultMaxDist = 10;

int inCoarseRows(float rows)
{
    return truncatedToInt(static_cast<double>(rows) * axialReduction);
}

QString sizeText(const kelp::Image& image)
{
    return QString("%1 A-scans and %2 rows").arg(image.getColumns()).arg(image.getRows());
}

/// A cut runs over all B-scans together, so they must be alike, and the coarse copy must have
/// something left.
void checkSizes(const OCTScan& scan)
{
    const QList<kelp::ImagePtr> images = scan.getBScanImages();
    for (int index = 0; index < images.size(); ++index) {
        const kelp::Image& image = *images.at(index);
        const kelp::Image& first = *images.first();
        if (image.getColumns() < fewestAScans || image.getRows() < fewestRows) {
            throw Exception(QString("The scan is too small to be segmented: B-scan %1 has %2, "
                                    "but %3 and %4 are needed.")
                                .arg(index + 1)
                                .arg(sizeText(image))
                                .arg(fewestAScans)
                                .arg(fewestRows));
        }
        if (image.getColumns() != first.getColumns() || image.getRows() != first.getRows()) {
            throw Exception(QString("The B-scans differ in size: B-scan %1 has %2, but B-scan 1 "
                                    "has %3.")
                                .arg(index + 1)
                                .arg(sizeText(image), sizeText(first)));
        }
    }
}

/// The mask on the grid of the coarse images. Its rows are B-scans, which are all kept.
MaskMatrixPtr makeCoarseMask(const MaskMatrixPtr& mask, const Place& place)
{
    const kelp::ImagePtr full = kelp::Image::create(
        kelp::MonoUInt8, {static_cast<int>(mask->columns), static_cast<int>(mask->rows), 1});
    check(!full.isNull(), place, "Got NULL mask image.");
    std::copy(mask->begin(), mask->end(), full->pixels<unsigned char>());

    kelp::Vector3<int> dimensions = full->getDimensions();
    dimensions.x = static_cast<int>(dimensions.x * lateralReduction);
    const kelp::ImagePtr coarse =
        kelp::ImageTools::resize(full, dimensions, kelp::InterpolationModes::AreaOrLinear);
    check(!coarse.isNull(), place, "Got NULL mask coarse image.");

    const auto coarseMask = MaskMatrixPtr::create(static_cast<unsigned>(coarse->getRows()),
                                                  static_cast<unsigned>(coarse->getColumns()));
    std::copy_n(coarse->pixels<unsigned char>(), coarseMask->size(), coarseMask->begin());
    coarseMask->shrinkRuns();
    coarseMask->shrinkRuns();
    return coarseMask;
}

double distanceOfBScans(const OCTScan& scan)
{
    if (scan.getBScanCount() < 2) {
        return 1.0;
    }
    return (scan.getBScan(1)->getCenter() - scan.getBScan(0)->getCenter()).length();
}

} // namespace

void SegWorker::segmentCoarse(OCTScanSegPtr octSeg)
{
    runCoarseStep("segmentCoarse", octSeg, defaultMinDist, defaultMaxDist);
}

void SegWorker::segmentCoarseMinMax(OCTScanSegPtr octSeg, float minDist, float maxDist)
{
    runCoarseStep("segmentCoarseMinMax", octSeg, inCoarseRows(minDist), inCoarseRows(maxDist));
}

void SegWorker::runCoarseStep(const char* slot, const OCTScanSegPtr& octSeg, int minDist,
                              int maxDist)
{
    SegStep step(*m_watcher, slot);
    if (!step.begin("Start coarse segmentation", octSeg)) {
        return;
    }
    const OCTScanPtr scan = octSeg->getOCT();
    VolumeLayerPtr ilm;
    VolumeLayerPtr ise;
    const bool done =
        !step.aborted() &&
        step.phase("Could not segment coarse layers.",
                   [&] {
                       ilm = makeTarget(scan);
                       ise = makeTarget(scan);
                       segmentILMCoarse(scan, maskMatrixOf(octSeg), ilm, ise, minDist, maxDist);
                   }) &&
        !step.aborted() && step.phase("Could not set coarse volume layers.", [&] {
            octSeg->setVolumeLayer(ilm, LayerNameILMCoarse::create());
            octSeg->setVolumeLayer(ise, LayerNameISeCoarse::create());
        });
    if (done) {
        step.close("Finished coarse segmentation");
    }
}

void SegWorker::segmentILMCoarse(const OCTScanPtr& scan, const MaskMatrixPtr& mask,
                                 const VolumeLayerPtr& ilmCoarse, const VolumeLayerPtr& iseCoarse,
                                 int minDist, int maxDist)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentILMCoarse");
    if (stopped()) {
        return;
    }
    check(!scan.isNull(), place, "OCT scan is NULL.");
    check(!mask.isNull(), place, "Mask is NULL.");
    check(!ilmCoarse.isNull(), place, "target ILM coarse layer is NULL.");
    check(!iseCoarse.isNull(), place, "target ISe coarse layer is NULL.");

    auto ilmReduced = VolumeLayerPtr::create(0U, 0U);
    auto iseReduced = VolumeLayerPtr::create(0U, 0U);
    double ilmVoxel[3] = {};
    double iseVoxel[3] = {};
    segmentILMCoarsePrivate(ilmReduced, ilmVoxel, iseReduced, iseVoxel, scan, mask, minDist,
                            maxDist);
    if (stopped()) {
        return;
    }

    const int nrBScans = scan->getBScanCount();
    check(nrBScans > 0, place, "Got no BScans from the OCT.");
    const auto first = scan->getBScan(0);
    check(!first.isNull(), place, "First BScan is NULL.");
    const auto image = first->getImage();
    check(!image.isNull(), place, "Image of first BScan is NULL.");
    const double axialSpacing = image->getSpacing().y;

    const CutSize fullSize(static_cast<unsigned>(first->getNrAScans()),
                           static_cast<unsigned>(image->getRows()),
                           static_cast<unsigned>(nrBScans));
    const VolumeLayerPtr ilmFull = constantLayer(fullSize, 0);
    const VolumeLayerPtr iseFull = constantLayer(fullSize, 0);
    LayerUtils::resampleLayer(ilmReduced, ilmVoxel, ilmFull, axialSpacing);
    LayerUtils::resampleLayer(iseReduced, iseVoxel, iseFull, axialSpacing);
    Trace() << ilmFull->columns << " x " << ilmFull->rows;
    copyLayer(ilmFull, ilmCoarse);
    copyLayer(iseFull, iseCoarse);
}

void SegWorker::segmentILMCoarsePrivate(VolumeLayerPtr& ilmCoarse, double ilmVoxel[3],
                                        VolumeLayerPtr& iseCoarse, double iseVoxel[3],
                                        const OCTScanPtr& scan, const MaskMatrixPtr& mask,
                                        int minDist, int maxDist)
{
    constexpr Place place = workerPlace("kelp::oct::SegWorker::segmentILMCoarsePrivate");
    if (stopped()) {
        return;
    }
    Trace() << "startSegmentation ILMCoarse...";
    m_watcher->setStatus("Starting coarse layer segmentation.");
    m_watcher->setStepProgress(0.0F);
    check(!ilmCoarse.isNull(), place, "NULL target ILM coarselayer");
    check(!iseCoarse.isNull(), place, "NULL target ISe coarse layer");
    check(!mask.isNull(), place, "NULL mask");
    check(!scan.isNull(), place, "NULL oct");
    check(hasSegmentablePattern(scan), place,
          QString("SegInterface::segmentILMCoarse: trying to segment %1 OCT scan pattern, but only "
                  "volumes and straight and circular BScans can be segmented")
              .arg(patternText(scan)));

    checkSizes(*scan);
    const QList<kelp::ImagePtr> images = segmentationImagesCoarse(
        *scan, lateralReduction, axialReduction, m_watcher->getAbortFlag());
    const MaskMatrixPtr coarseMask = makeCoarseMask(mask, place);
    check(coarseMask->rows == static_cast<unsigned>(images.size()), place,
          "Coarse mask matrix dimension does not match the coarse oct dimensions.");
    check(!images.isEmpty(), place, "Got no BScans.");
    check(!images.first().isNull(), place, "First BScan is NULL.");

    const kelp::Image& first = *images.first();
    const CutSize size(static_cast<unsigned>(first.getColumns()),
                       static_cast<unsigned>(first.getRows()),
                       static_cast<unsigned>(images.size()));
    const double voxel[3] = {first.getSpacing().x, first.getSpacing().y, distanceOfBScans(*scan)};
    std::copy_n(voxel, 3, ilmVoxel);
    std::copy_n(voxel, 3, iseVoxel);

    const CoarseNames names{LayerNameILMCoarse::create(), LayerNameISeCoarse::create()};
    const CutPlan plan = planCoarse(names, size, minDist, maxDist, coarseMask);
    if (stopped()) {
        return;
    }
    GraphCut cut(images, plan, coarseMask, m_watcher);
    // Only here is the coarse size known, so the targets are made anew.
    ilmCoarse = constantLayer(size, 0);
    iseCoarse = constantLayer(size, 0);
    if (cut.goesOn() && cut.solve(place, "The graph could not be built.",
                                  {{names.ilm, ilmCoarse}, {names.ise, iseCoarse}})) {
        m_watcher->setStatus("Coarse segmentation finished.");
        Trace() << "ILMCoarse DONE...";
    }
}

} // namespace kelp::oct
