#pragma once

#include "PageBlock.h"
#include "QpboMaxFlow.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace kelp::oct {

/// Minimises a quadratic pseudo-boolean energy over binary labels by roof duality (Hammer, Hansen
/// and Simeone 1984; Kolmogorov and Rother, IEEE TPAMI 29:1274, 2007) with the maximum flow
/// algorithm of Boykov and Kolmogorov (IEEE TPAMI 26:1124, 2004). Where every term is submodular
/// the labels are those of the exact minimum cut; of several, the one with the fewest ones.
///
/// One caller at a time; Solve may use several threads of its own. REAL is the type of capacities;
/// the energy constant is 64 bits, and a unary capacity that would leave REAL saturates.
///
/// While terms are added an edge is a few bytes of a run: neighbouring columns of nodes are joined
/// row by row, and such a ladder of edges is one record. Solve lays the arcs out in rows, the arcs
/// of a node side by side, and joins nodes and arcs by 32-bit indices instead of pointers: half the
/// memory, and growth needs no patching.
template <typename REAL>
class QpboGraph
{
public:
    using NodeId = int;
    using EdgeId = int;
    using ErrorFunction = void (*)(const char*);

    /// Room for so many nodes and edges; both grow when it is used up. Room that nothing has used
    /// costs no memory. The error function is called with "Not enough memory!"; if it returns,
    /// std::bad_alloc with the text "bad allocation" follows.
    QpboGraph(int nodeNumMax, int edgeNumMax, ErrorFunction errorFunction);
    QpboGraph(const QpboGraph&) = delete;
    QpboGraph& operator=(const QpboGraph&) = delete;

    /// The flag that ends a flow computation under way; null for none. The labels are not valid
    /// after a Solve that it ended.
    void setAbortFlag(const std::atomic<bool>* flag) { m_abortFlag = flag; }

    /// The id of the first of num new nodes.
    NodeId AddNode(int num = 1);
    void AddUnaryTerm(NodeId i, REAL E0, REAL E1);
    /// Adds to the unary capacity without a change of the energy constant.
    void AddToUnaryCapacity(NodeId i, REAL value);
    EdgeId AddPairwiseTerm(NodeId i, NodeId j, REAL E00, REAL E01, REAL E10, REAL E11);

    void Solve();
    void ComputeWeakPersistencies();
    /// 0, 1, or -1 where the optimum leaves it open.
    int GetLabel(NodeId i) const { return m_nodes[i].label; }
    /// A hint that changes no label: num nodes from first on belong to this part (0 to 65535),
    /// which hangs together more within itself than with others. Solve works on each part by itself
    /// first, several at a time, and then on the whole graph with what is left. Every node starts
    /// in part 0.
    void SetPart(NodeId first, int num, int part);
    /// Back to an empty graph; the room stays, its memory goes.
    void Reset();

    int GetNodeNum() const { return m_nodeNum; }
    int GetEdgeNum() const { return m_edgeNum; }
    /// The room for nodes and edges at the moment.
    int GetNodeMax() const { return m_nodeMax; }
    int GetEdgeMax() const { return m_edgeMax; }
    /// 0 while only one half of the graph is in use, 1 once the mirror nodes are.
    int GetStage() const { return m_stage; }
    bool AreAllEdgesSubmodular() const { return m_allEdgesSubmodular; }
    std::int64_t GetEnergyConstant() const { return m_zeroEnergy; }
    /// Twice a lower bound of the energy, after Solve. Where every edge is submodular the bound is
    /// the minimum itself; twice, since roof duality gives halves.
    std::int64_t GetTwiceLowerBound() const;

    /// The terms before Solve, for independent checks: function(i, unary capacity) for each node.
    template <typename Function>
    void forEachNode(Function&& function) const
    {
        for (NodeId i = 0; i < m_nodeNum; ++i) {
            function(i, m_nodes[i].tr_cap);
        }
    }
    /// function(i, j, capacity of i to j, capacity of j to i) for each submodular edge.
    template <typename Function>
    void forEachEdge(Function&& function) const
    {
        for (std::size_t r = 0; r < m_runNum; ++r) {
            const Run& run = m_runs[r];
            for (int k = 0; k != run.count; k += run.count > 0 ? 1 : -1) {
                function(run.i + k, run.j + k, run.cap, run.reverseCap);
            }
        }
    }

private:
    using Node = QpboNode<REAL>;
    using Arc = QpboArc<REAL>;

    /// Edges (i, j), (i + 1, j + 1), ... with the same capacities; downwards if count is negative.
    struct Run
    {
        std::int32_t i;
        std::int32_t j;
        std::int32_t count;
        REAL cap;
        REAL reverseCap;
    };
    /// An edge that costs where both labels are 1. It joins a node with a mirror node, so it enters
    /// the flow only in stage 1.
    struct MirrorEdge
    {
        NodeId i;
        NodeId j;
        REAL cap;
    };

    [[noreturn]] void throwOutOfMemory();
    void growNodes(std::int64_t needed);
    void growEdges();
    void addSubmodular(NodeId i, NodeId j, std::int64_t E00, std::int64_t E01, std::int64_t E10,
                       std::int64_t E11);
    void addNonSubmodular(NodeId i, NodeId j, std::int64_t E00, std::int64_t E01, std::int64_t E10,
                          std::int64_t E11);
    void appendEdge(std::int32_t i, std::int32_t j, REAL cap, REAL reverseCap);
    void appendMirrorEdge(const MirrorEdge& edge);
    void addToUnary(NodeId i, std::int64_t value);

    bool isAborted() const;
    /// The end of the indices in use: nodes are in [0, m_nodeNum) and, in stage 1, their mirrors
    /// m_nodeMax further on.
    template <typename Function>
    void forEachHalf(Function&& function) const;
    std::int32_t mirrorOf(std::int32_t i) const
    {
        return i < m_nodeMax ? i + m_nodeMax : i - m_nodeMax;
    }
    bool layOutArcs();
    void gatherArcs();
    bool MaxFlow();
    bool solveParts();
    bool TransformToSecondStage();
    int segmentOf(std::int32_t i) const;
    void assignLabels();

    PageBlock<Node> m_nodes; ///< two halves of m_nodeMax and one end mark
    PageBlock<Arc> m_arcs;   ///< two halves of 2 m_edgeMax, filled by layOutArcs
    PageBlock<Run> m_runs;   ///< the edges while the arcs are not laid out
    std::size_t m_runNum = 0;
    std::vector<MirrorEdge> m_mirrorEdges;
    bool m_arcsLaidOut = false;
    int m_partNum = 1;

    int m_nodeNum = 0;
    int m_nodeMax = 0;
    int m_edgeNum = 0;
    int m_edgeMax = 0;
    int m_stage = 0;
    bool m_allEdgesSubmodular = true;
    std::int64_t m_zeroEnergy = 0;
    /// In stage 1: what the doubled unary terms take out of twice the energy constant.
    std::int64_t m_mirroredUnary = 0;
    const std::atomic<bool>* m_abortFlag = nullptr;
    ErrorFunction m_errorFunction;
};

extern template class QpboGraph<int>;

} // namespace kelp::oct
