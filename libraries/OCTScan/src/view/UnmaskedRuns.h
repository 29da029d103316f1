#pragma once

#include <QList>

#include <vector>

namespace kelp::oct {

/// A-scans start to end - 1.
struct AScanRun
{
    int start = 0;
    int end = 0;

    friend bool operator==(const AScanRun&, const AScanRun&) = default;
};

/// The stretches of a mask row (true = excluded) that are drawn. Every run is shorter than the data
/// by its last A-scan, and by its last two if it reaches the row's end; a run with nothing left is
/// not listed.
std::vector<AScanRun> unmaskedRuns(const QList<bool>& masked);

/// The same runs cut off so that each leaves at least one of the layer's A-scans behind its end, as
/// an overlay wants it. Changes nothing for a layer as long as the row.
std::vector<AScanRun> runsWithin(std::vector<AScanRun> runs, int layerSize);

} // namespace kelp::oct
