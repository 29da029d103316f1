#pragma once

#include "SegWorker.h"

#include <functional>
#include <ostream>
#include <vector>

namespace kelp::oct::test {

/// A slot with any arguments but the segmentation, called on the test's own thread.
struct Slot
{
    const char* name;
    const char* openingLine;
    std::function<void(SegWorker&, const OCTScanSegPtr&)> call;
};

inline std::ostream& operator<<(std::ostream& stream, const Slot& slot)
{
    return stream << slot.name;
}

inline std::vector<Slot> allSlots()
{
    return {
        {"segmentCoarse", "Start coarse segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) { worker.segmentCoarse(s); }},
        {"segmentCoarseMinMax", "Start coarse segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) {
             worker.segmentCoarseMinMax(s, 16.0F, 80.0F);
         }},
        {"segmentILMFine", "Start ILM segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) { worker.segmentILMFine(s, false, false); }},
        {"segmentRPEHumanHealthy", "Start human healthy RPE segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) { worker.segmentRPEHumanHealthy(s); }},
        {"segmentBMFine", "Start Bruch's Membrane segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) { worker.segmentBMFine(s); }},
        {"segmentISeIRPEFineDrusen", "Start ISe and IRPE segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) { worker.segmentISeIRPEFineDrusen(s); }},
        {"segmentPEFineConstant", "Start RPE segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) {
             worker.segmentPEFineConstant(s, 67.0F, 0.5F, 292.0F, 0.1F);
         }},
        {"segmentInnerHumanHealthy", "Start human healthy inner layer segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) { worker.segmentInnerHumanHealthy(s); }},
        {"segmentInnerFineConstant", "Start inner layer segmentation",
         [](SegWorker& worker, const OCTScanSegPtr& s) {
             worker.segmentInnerFineConstant(s, InnerDistProps());
         }},
    };
}

} // namespace kelp::oct::test
