#pragma once

#include "InnerDistProps.h"
#include "OCTScanSegmentation.h"

#include <QString>
#include <QStringList>

#include <optional>

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

/// The distances of the inner surfaces in a mouse retina.
InnerDistProps mouseInnerDistances();

/// Queues the steps of the chain with their numbers. The caller has called resetSegmentation.
void queueChain(SegInterface& segInterface, const OCTScanSegPtr& segmentation,
                SegmentationChain chain, bool maskETDRSSectors, bool maskCenter);

} // namespace kelp::oct
