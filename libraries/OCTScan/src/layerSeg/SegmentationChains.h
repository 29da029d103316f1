#pragma once

#include "InnerDistProps.h"
#include "OCTScanSegmentation.h"
#include "SegStatistics.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kelp::oct {

class SegInterface;

/// The chains of steps that the application and the commands offer.
enum class SegmentationChain
{
    Normal,
    Drusen,
    Mouse
};

/// "normal", "drusen", "mouse"; nothing for another text.
std::optional<SegmentationChain> chainFromName(const QString& name);
QString chainName(SegmentationChain chain);

/// The names of the chain's steps in order.
QStringList chainSteps(SegmentationChain chain);

/// Whether the chain's last step is over, by what the run's steps cost so far. On circular scans
/// success is told before that step has even begun.
bool isChainDone(const std::vector<StepStatistics>& statistics, SegmentationChain chain);

/// The distances of ISe and BM where no trained model fits: means in micrometres, and weights.
struct OuterDistProps
{
    float rpeThicknessMean = 0.0F;
    float rpeThicknessVarWeight = 0.0F;
    float ilm2isosDistMean = 0.0F;
    float ilm2isosDistVarWeight = 0.0F;
};

/// The distances in a mouse retina.
OuterDistProps mouseOuterDistances();
InnerDistProps mouseInnerDistances();

/// Queues the steps of the chain with their numbers. The caller has called resetSegmentation.
void queueChain(SegInterface& segInterface, const OCTScanSegPtr& segmentation,
                SegmentationChain chain, bool maskETDRSSectors, bool maskCenter);

} // namespace kelp::oct
