#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace kelp::oct {

/// Minimises a quadratic pseudo-boolean energy over binary labels by roof duality (Hammer, Hansen
/// and Simeone 1984; Kolmogorov and Rother, IEEE TPAMI 29:1274, 2007) with the maximum flow
/// algorithm of Boykov and Kolmogorov (IEEE TPAMI 26:1124, 2004). Where every term is submodular
/// the labels are those of the exact minimum cut; of several, the one with the fewest ones.
///
/// One thread per object. REAL is the type of capacities; sums of flow and the energy constant are
/// 64 bits, and a unary capacity that would leave REAL saturates.
template <typename REAL>
class QpboGraph
{
public:
    using NodeId = int;
    using EdgeId = int;
    using ErrorFunction = void (*)(const char*);

    /// Room for so many nodes and edges; both grow when it is used up. Room that nothing has used
    /// costs no memory. The error function is called with "Not enough memory!"; if it returns,
    /// std::bad_alloc follows.
    QpboGraph(int nodeNumMax, int edgeNumMax, ErrorFunction errorFunction);
    ~QpboGraph();
    QpboGraph(const QpboGraph&) = delete;
    QpboGraph& operator=(const QpboGraph&) = delete;

    /// The flag that ends a flow computation under way; null for none.
    void setAbortFlag(const std::atomic<bool>* flag);

    /// The id of the first of num new nodes.
    NodeId AddNode(int num = 1);
    void AddUnaryTerm(NodeId i, REAL E0, REAL E1);
    /// Adds to the unary capacity without a change of the energy constant.
    void AddToUnaryCapacity(NodeId i, REAL value);
    EdgeId AddPairwiseTerm(NodeId i, NodeId j, REAL E00, REAL E01, REAL E10, REAL E11);

    void Solve();
    void ComputeWeakPersistencies();
    /// 0, 1, or -1 where the optimum leaves it open.
    int GetLabel(NodeId i) const;
    void Reset();

    int GetNodeNum() const;
    int GetEdgeNum() const;
    /// Twice the energy's value at the solution would need halves, so this is the lower bound that
    /// the flow gives, exact for submodular energies.
    std::int64_t GetFlow() const;
    std::int64_t GetEnergyConstant() const;
};

} // namespace kelp::oct
