#include "UnmaskedRuns.h"

#include <algorithm>

namespace kelp::oct {

std::vector<AScanRun> unmaskedRuns(const QList<bool>& masked)
{
    std::vector<AScanRun> runs;
    bool outside = true;
    int start = 0;
    for (int k = 0; k < masked.size(); ++k) {
        if (!masked[k] && outside) {
            start = k;
            outside = false;
        }
        const bool closes = !outside && (masked[k] || k == masked.size() - 1);
        if (!closes) {
            continue;
        }
        // One short of the last unmasked A-scan before a mask, two short at the row's end: users
        // know the overlays like this, so it stays.
        const AScanRun run{start, k - 1};
        if (run.start < run.end) {
            runs.push_back(run);
        }
        outside = masked[k];
    }
    return runs;
}

std::vector<AScanRun> runsWithin(std::vector<AScanRun> runs, int layerSize)
{
    for (AScanRun& run : runs) {
        run.end = std::min(run.end, layerSize - 1);
    }
    const auto isEmpty = [](const AScanRun& run) { return run.start >= run.end; };
    runs.erase(std::remove_if(runs.begin(), runs.end(), isEmpty), runs.end());
    return runs;
}

} // namespace kelp::oct
