#include "SegmentationChains.h"

#include "SegInterface.h"

#include <QList>

#include <algorithm>
#include <functional>

namespace kelp::oct {

namespace {

struct ChainOptions
{
    bool maskETDRSSectors = false;
    bool maskCenter = false;
};

struct ChainStep
{
    QString name;
    std::function<void(SegInterface&, const OCTScanSegPtr&, const ChainOptions&)> queue;
};

/// A step without numbers of its own.
ChainStep plainStep(const char* name, void (SegInterface::*method)(OCTScanSegPtr))
{
    return {name, [method](SegInterface& segInterface, const OCTScanSegPtr& segmentation,
                           const ChainOptions&) { (segInterface.*method)(segmentation); }};
}

ChainStep ilmStep()
{
    return {"segmentILMFine", [](SegInterface& segInterface, const OCTScanSegPtr& segmentation,
                                 const ChainOptions& options) {
                segInterface.segmentILMFine(segmentation, options.maskETDRSSectors,
                                            options.maskCenter);
            }};
}

ChainStep mouseRPEStep()
{
    return {"segmentPEFineConstant",
            [](SegInterface& segInterface, const OCTScanSegPtr& segmentation, const ChainOptions&) {
                const OuterDistProps distances = mouseOuterDistances();
                segInterface.segmentPEFineConstant(
                    segmentation, distances.rpeThicknessMean, distances.rpeThicknessVarWeight,
                    distances.ilm2isosDistMean, distances.ilm2isosDistVarWeight);
            }};
}

ChainStep mouseInnerStep()
{
    return {"segmentInnerFineConstant",
            [](SegInterface& segInterface, const OCTScanSegPtr& segmentation, const ChainOptions&) {
                segInterface.segmentInnerFineConstant(segmentation, mouseInnerDistances());
            }};
}

QList<ChainStep> stepsOf(SegmentationChain chain)
{
    const ChainStep coarse = plainStep("segmentCoarse", &SegInterface::segmentCoarse);
    const ChainStep innerHuman =
        plainStep("segmentInnerHumanHealthy", &SegInterface::segmentInnerHumanHealthy);
    switch (chain) {
    case SegmentationChain::Normal:
        return {coarse, ilmStep(),
                plainStep("segmentRPEHumanHealthy", &SegInterface::segmentRPEHumanHealthy),
                innerHuman};
    case SegmentationChain::Drusen:
        return {coarse, ilmStep(), plainStep("segmentBMFine", &SegInterface::segmentBMFine),
                plainStep("segmentISeIRPEFineDrusen", &SegInterface::segmentISeIRPEFineDrusen),
                innerHuman};
    case SegmentationChain::Mouse:
        return {coarse, ilmStep(), mouseRPEStep(), mouseInnerStep()};
    }
    return {};
}

constexpr SegmentationChain allChains[] = {SegmentationChain::Normal, SegmentationChain::Drusen,
                                           SegmentationChain::Mouse};

} // namespace

OuterDistProps mouseOuterDistances()
{
    OuterDistProps distances;
    distances.rpeThicknessMean = 78.0F;
    distances.rpeThicknessVarWeight = 0.2F;
    distances.ilm2isosDistMean = 117.0F;
    distances.ilm2isosDistVarWeight = 0.1F;
    return distances;
}

InnerDistProps mouseInnerDistances()
{
    InnerDistProps distances;
    distances.ilm2gclDistMean = 19.5F;
    distances.ilm2gclDistVarWeight = 0.03F;
    distances.gcl2inlDistMean = 50.7F;
    distances.gcl2inlDistVarWeight = 0.03F;
    distances.inl2onlDistMean = 39.0F;
    distances.inl2onlDistVarWeight = 0.03F;
    distances.onl2isosDistMean = 85.8F;
    distances.onl2isosDistVarWeight = 0.03F;
    distances.gcl2inlDistMin = 7.8F;
    distances.gcl2inlDistMax = 156.0F;
    distances.inl2onlDistMin = 7.8F;
    distances.inl2onlDistMax = 156.0F;
    return distances;
}

QString chainName(SegmentationChain chain)
{
    switch (chain) {
    case SegmentationChain::Normal:
        return "normal";
    case SegmentationChain::Drusen:
        return "drusen";
    case SegmentationChain::Mouse:
        return "mouse";
    }
    return {};
}

std::optional<SegmentationChain> chainFromName(const QString& name)
{
    for (const SegmentationChain chain : allChains) {
        if (chainName(chain) == name) {
            return chain;
        }
    }
    return std::nullopt;
}

QStringList chainSteps(SegmentationChain chain)
{
    QStringList names;
    for (const ChainStep& step : stepsOf(chain)) {
        names.append(step.name);
    }
    return names;
}

bool isChainDone(const std::vector<StepStatistics>& statistics, SegmentationChain chain)
{
    const QString last = chainSteps(chain).last();
    return std::any_of(statistics.begin(), statistics.end(), [&last](const StepStatistics& step) {
        // Recorded at the step's end.
        return step.name == last && step.peakMemoryBytes > 0;
    });
}

void queueChain(SegInterface& segInterface, const OCTScanSegPtr& segmentation,
                SegmentationChain chain, bool maskETDRSSectors, bool maskCenter)
{
    const ChainOptions options{maskETDRSSectors, maskCenter};
    for (const ChainStep& step : stepsOf(chain)) {
        step.queue(segInterface, segmentation, options);
    }
}

} // namespace kelp::oct
