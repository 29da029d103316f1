#pragma once

#include "QpboGraph.h"

#include <vector>

/// The minimum cut of a graph's terms by Boost.Graph: an implementation that shares nothing with
/// ours, to check labels against and to compare times with.
namespace kelp::oct::bench {

enum class BoostMethod
{
    BoykovKolmogorov,
    PushRelabel
};

struct BoostCut
{
    /// 1 where the node can still reach the sink, which is the same for every maximum flow.
    std::vector<signed char> labels;
    long long flow = 0;
    /// Of the flow alone, without the building of the graph.
    double seconds = 0.0;
};

/// The graph holds its terms and has not been solved; all edges are submodular.
BoostCut solveWithBoost(const QpboGraph<int>& graph, BoostMethod method);

} // namespace kelp::oct::bench
