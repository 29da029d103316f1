#pragma once

#include "CutQuality.h"

#include <QString>

#include <cstddef>
#include <vector>

namespace kelp::oct {

/// What one graph cut cost.
struct CutStatistics
{
    std::size_t columns = 0; ///< unmasked columns over all surfaces
    std::size_t nodes = 0;
    std::size_t edges = 0;
    double buildSeconds = 0.0;
    double solveSeconds = 0.0;
};

/// What one step of a chain cost. In vectors, whose copies share nothing: a thread that asks during
/// a run reads its copy while the step writes on.
struct StepStatistics
{
    QString name; ///< the slot's, for instance "segmentCoarse"
    double seconds = 0.0;
    std::vector<CutStatistics> cuts;
    std::vector<SurfaceQuality> surfaces; ///< of all cuts of the step
    double qualitySeconds = 0.0;          ///< what counting them took, within seconds
    std::size_t peakMemoryBytes = 0;      ///< highest resident size of the process so far
};

/// The highest resident size of this process so far.
std::size_t peakResidentBytes();

} // namespace kelp::oct
