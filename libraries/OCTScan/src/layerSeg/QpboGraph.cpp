#include "QpboGraph.h"

#include "ParallelFor.h"
#include "QpboComponents.h"
#include "kelpTrace.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace kelp::oct {

namespace {

/// Says what callers expect to read, whatever the standard library calls it.
class BadAllocation : public std::bad_alloc
{
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

constexpr std::int64_t maxIndex = std::numeric_limits<std::int32_t>::max();
constexpr int runsPerGrowth = 1 << 16;

/// To the range of REAL that can be negated.
template <typename REAL>
REAL saturated(std::int64_t value)
{
    constexpr std::int64_t limit = std::numeric_limits<REAL>::max();
    return static_cast<REAL>(std::clamp(value, -limit, limit));
}

std::int64_t megabytes(std::size_t bytes)
{
    return static_cast<std::int64_t>(bytes / 1000000);
}

} // namespace

template <typename REAL>
QpboGraph<REAL>::QpboGraph(int nodeNumMax, int edgeNumMax, ErrorFunction errorFunction)
    : m_errorFunction(errorFunction)
{
    const std::int64_t nodeMax = std::max<std::int64_t>(std::int64_t{nodeNumMax} + 4, 16);
    const std::int64_t edgeMax = std::max<std::int64_t>(edgeNumMax, 16);
    if (2 * nodeMax > maxIndex || 4 * edgeMax > maxIndex ||
        !m_nodes.reserve(static_cast<std::size_t>(2 * nodeMax + 1)) ||
        !m_arcs.reserve(static_cast<std::size_t>(4 * edgeMax)) || !m_runs.reserve(runsPerGrowth)) {
        throwOutOfMemory();
    }
    m_nodeMax = static_cast<int>(nodeMax);
    m_edgeMax = static_cast<int>(edgeMax);
    const std::size_t bytes = 2 * static_cast<std::size_t>(nodeMax) * sizeof(Node) +
                              2 * static_cast<std::size_t>(edgeMax) * sizeof(Arc);
    kelp::Trace() << "-----------------------\n-----------------------\n"
                  << "QPBO\nMemory requirements initial: " << m_nodeMax << " nodes\n"
                  << m_edgeMax << " edges\n"
                  << megabytes(bytes) << " megabytes total\n"
                  << "-----------------------\n-----------------------";
}

template <typename REAL>
void QpboGraph<REAL>::throwOutOfMemory()
{
    if (m_errorFunction) {
        m_errorFunction("Not enough memory!");
    }
    m_nodes.release();
    m_arcs.release();
    m_runs.release();
    m_nodeNum = m_nodeMax = m_edgeNum = m_edgeMax = 0;
    m_runNum = 0;
    throw BadAllocation();
}

template <typename REAL>
typename QpboGraph<REAL>::NodeId QpboGraph<REAL>::AddNode(int num)
{
    if (m_arcsLaidOut) {
        gatherArcs();
    }
    const NodeId id = m_nodeNum;
    const std::int64_t end = std::int64_t{id} + num;
    if (end > m_nodeMax) {
        growNodes(end);
    }
    // After a Reset the room holds what was there before.
    std::fill_n(m_nodes.data() + id, num, Node{});
    if (m_stage == 1) {
        std::fill_n(m_nodes.data() + mirrorOf(id), num, Node{});
    }
    m_nodeNum = static_cast<int>(end);
    return id;
}

template <typename REAL>
void QpboGraph<REAL>::growNodes(std::int64_t needed)
{
    const std::int64_t nodeMax = std::max<std::int64_t>(m_nodeMax + m_nodeMax / 2, needed + 1);
    if (2 * nodeMax > maxIndex || !m_nodes.reserve(static_cast<std::size_t>(2 * nodeMax + 1))) {
        throwOutOfMemory();
    }
    if (m_stage == 1) {
        const auto shift = static_cast<std::int32_t>(nodeMax - m_nodeMax);
        Node* const mirrors = m_nodes.data() + m_nodeMax;
        std::copy_backward(mirrors, mirrors + m_nodeNum, mirrors + m_nodeNum + shift);
        for (std::size_t r = 0; r < m_runNum; ++r) {
            m_runs[r].i += m_runs[r].i >= m_nodeMax ? shift : 0;
            m_runs[r].j += m_runs[r].j >= m_nodeMax ? shift : 0;
        }
    }
    m_nodeMax = static_cast<int>(nodeMax);
    kelp::Trace() << "QPBO. reallocating: " << m_nodeMax << " nodes. Total of "
                  << megabytes(2 * static_cast<std::size_t>(nodeMax) * sizeof(Node))
                  << " megabytes";
}

template <typename REAL>
void QpboGraph<REAL>::growEdges()
{
    const std::int64_t edgeMax = std::int64_t{m_edgeMax} + m_edgeMax / 2;
    if (4 * edgeMax > maxIndex || !m_arcs.reserve(static_cast<std::size_t>(4 * edgeMax))) {
        throwOutOfMemory();
    }
    m_edgeMax = static_cast<int>(edgeMax);
    kelp::Trace() << "QPBO. reallocating: " << m_edgeMax << " edges. Total of "
                  << megabytes(4 * static_cast<std::size_t>(edgeMax) * sizeof(Arc)) << " megabytes";
}

template <typename REAL>
void QpboGraph<REAL>::addToUnary(NodeId i, std::int64_t value)
{
    Node& node = m_nodes[i];
    node.tr_cap = saturated<REAL>(node.tr_cap + value);
    if (m_stage == 1) {
        Node& mirror = m_nodes[mirrorOf(i)];
        mirror.tr_cap = saturated<REAL>(mirror.tr_cap - value);
        m_mirroredUnary += value;
    }
}

template <typename REAL>
void QpboGraph<REAL>::AddUnaryTerm(NodeId i, REAL E0, REAL E1)
{
    addToUnary(i, std::int64_t{E1} - E0);
    m_zeroEnergy += E0;
}

template <typename REAL>
void QpboGraph<REAL>::AddToUnaryCapacity(NodeId i, REAL value)
{
    addToUnary(i, value);
}

template <typename REAL>
void QpboGraph<REAL>::SetPart(NodeId first, int num, int part)
{
    for (NodeId i = first; i < first + num; ++i) {
        m_nodes[i].part = static_cast<std::uint16_t>(part);
    }
    m_partNum = std::max(m_partNum, part + 1);
}

template <typename REAL>
typename QpboGraph<REAL>::EdgeId QpboGraph<REAL>::AddPairwiseTerm(NodeId i, NodeId j, REAL E00,
                                                                  REAL E01, REAL E10, REAL E11)
{
    if (m_arcsLaidOut) {
        gatherArcs();
    }
    if (m_edgeNum == m_edgeMax) {
        growEdges();
    }
    if (std::int64_t{E00} + E11 <= std::int64_t{E01} + E10) {
        addSubmodular(i, j, E00, E01, E10, E11);
    } else {
        addNonSubmodular(i, j, E00, E01, E10, E11);
    }
    m_zeroEnergy += E00;
    return m_edgeNum++;
}

/// E = E00 + unary parts + cap [i = 0, j = 1] + reverseCap [i = 1, j = 0].
template <typename REAL>
void QpboGraph<REAL>::addSubmodular(NodeId i, NodeId j, std::int64_t E00, std::int64_t E01,
                                    std::int64_t E10, std::int64_t E11)
{
    std::int64_t unaryI = E11 - E00;
    std::int64_t unaryJ = 0;
    std::int64_t cap = E01 - E00;
    std::int64_t reverseCap = E10 - E11;
    if (cap < 0) {
        unaryI -= cap;
        unaryJ += cap;
        reverseCap += cap;
        cap = 0;
    } else if (reverseCap < 0) {
        unaryI += reverseCap;
        unaryJ -= reverseCap;
        cap += reverseCap;
        reverseCap = 0;
    }
    if (unaryI != 0) {
        addToUnary(i, unaryI);
    }
    if (unaryJ != 0) {
        addToUnary(j, unaryJ);
    }
    // A flow can put both capacities on one arc, which must not leave REAL.
    const REAL capReal = saturated<REAL>(cap);
    const REAL reverseReal = std::min(
        saturated<REAL>(reverseCap), static_cast<REAL>(std::numeric_limits<REAL>::max() - capReal));
    appendEdge(i, j, capReal, reverseReal);
    if (m_stage == 1) {
        appendEdge(mirrorOf(j), mirrorOf(i), capReal, reverseReal);
    }
}

/// E = E00 + unary parts + cap [i = 1, j = 1], with j = 1 written as mirror of j = 0.
template <typename REAL>
void QpboGraph<REAL>::addNonSubmodular(NodeId i, NodeId j, std::int64_t E00, std::int64_t E01,
                                       std::int64_t E10, std::int64_t E11)
{
    m_allEdgesSubmodular = false;
    addToUnary(i, E10 - E00);
    addToUnary(j, E01 - E00);
    appendMirrorEdge({i, j, saturated<REAL>(E00 + E11 - E01 - E10)});
}

template <typename REAL>
void QpboGraph<REAL>::appendMirrorEdge(const MirrorEdge& edge)
{
    if (m_stage == 1) {
        appendEdge(mirrorOf(edge.j), edge.i, edge.cap, 0);
        appendEdge(mirrorOf(edge.i), edge.j, edge.cap, 0);
        return;
    }
    try {
        m_mirrorEdges.push_back(edge);
    } catch (const std::bad_alloc&) {
        throwOutOfMemory();
    }
}

template <typename REAL>
void QpboGraph<REAL>::appendEdge(std::int32_t i, std::int32_t j, REAL cap, REAL reverseCap)
{
    if (m_runNum > 0) {
        Run& run = m_runs[m_runNum - 1];
        if (run.cap == cap && run.reverseCap == reverseCap && i - run.i == j - run.j) {
            const std::int32_t offset = i - run.i;
            if (offset == run.count && offset > 0) {
                ++run.count;
                return;
            }
            if (offset < 0 && offset == (run.count == 1 ? -1 : run.count)) {
                run.count = offset - 1;
                return;
            }
        }
    }
    if (m_runNum == m_runs.capacity() && !m_runs.reserve(m_runNum + m_runNum / 2)) {
        throwOutOfMemory();
    }
    m_runs[m_runNum++] = {i, j, 1, cap, reverseCap};
}

template <typename REAL>
bool QpboGraph<REAL>::isAborted() const
{
    return m_abortFlag && m_abortFlag->load(std::memory_order_relaxed);
}

template <typename REAL>
template <typename Function>
void QpboGraph<REAL>::forEachHalf(Function&& function) const
{
    function(0, m_nodeNum);
    if (m_stage == 1) {
        function(m_nodeMax, m_nodeMax + m_nodeNum);
    }
}

/// Turns the runs into arcs, those of a node side by side. False on abort, with the runs as before.
template <typename REAL>
bool QpboGraph<REAL>::layOutArcs()
{
    constexpr std::size_t abortInterval = 4096;
    // A run adds one arc to each node of two ranges: note where the number of arcs per node changes
    // and sum up, instead of counting edge by edge.
    forEachHalf([this](std::int32_t begin, std::int32_t end) {
        for (std::int32_t i = begin; i <= end; ++i) {
            m_nodes[i].first = 0;
        }
    });
    for (std::size_t r = 0; r < m_runNum; ++r) {
        if (r % abortInterval == 0 && isAborted()) {
            return false;
        }
        const Run& run = m_runs[r];
        const std::int32_t length = run.count > 0 ? run.count : -run.count;
        const std::int32_t offset = run.count > 0 ? 0 : run.count + 1;
        ++m_nodes[run.i + offset].first;
        --m_nodes[run.i + offset + length].first;
        ++m_nodes[run.j + offset].first;
        --m_nodes[run.j + offset + length].first;
    }
    std::int32_t position = 0;
    std::int32_t degree = 0;
    std::int32_t summed = -1;
    forEachHalf([&](std::int32_t begin, std::int32_t end) {
        for (std::int32_t i = begin; i <= end; ++i) {
            if (i == summed) {
                // The end mark of a full first half is the first node of the second.
                position -= degree;
            } else {
                degree += m_nodes[i].first;
            }
            m_nodes[i].first = position;
            m_nodes[i].dfs_current = position;
            position += degree;
            summed = i;
        }
    });
    for (std::size_t r = 0; r < m_runNum; ++r) {
        if (r % abortInterval == 0 && isAborted()) {
            return false;
        }
        const Run& run = m_runs[r];
        const std::int32_t step = run.count > 0 ? 1 : -1;
        const std::uint32_t forwardFlag = run.reverseCap != 0 ? Arc::reverseFlag : 0;
        const std::uint32_t backwardFlag = run.cap != 0 ? Arc::reverseFlag : 0;
        for (std::int32_t k = 0; k != run.count; k += step) {
            const std::int32_t i = run.i + k;
            const std::int32_t j = run.j + k;
            const std::int32_t forward = m_nodes[i].dfs_current++;
            const std::int32_t backward = m_nodes[j].dfs_current++;
            m_arcs[forward] = {static_cast<std::uint32_t>(j) | forwardFlag, backward, run.cap};
            m_arcs[backward] = {static_cast<std::uint32_t>(i) | backwardFlag, forward,
                                run.reverseCap};
        }
    }
    m_runs.discard();
    m_runNum = 0;
    m_arcsLaidOut = true;
    return true;
}

/// The way back, with the residuals, so that terms can be added to a solved graph.
template <typename REAL>
void QpboGraph<REAL>::gatherArcs()
{
    m_arcsLaidOut = false;
    forEachHalf([this](std::int32_t begin, std::int32_t end) {
        for (std::int32_t i = begin; i < end; ++i) {
            for (std::int32_t a = m_nodes[i].first; a < m_nodes[i + 1].first; ++a) {
                const Arc& arc = m_arcs[a];
                if (a < arc.sister) {
                    appendEdge(i, static_cast<std::int32_t>(arc.head()), arc.r_cap,
                               m_arcs[arc.sister].r_cap);
                }
            }
        }
    });
    m_arcs.discard();
}

template <typename REAL>
bool QpboGraph<REAL>::MaxFlow()
{
    if (!m_arcsLaidOut && !layOutArcs()) {
        return false;
    }
    QpboMaxFlow<REAL> flow(m_nodes.data(), m_arcs.data(), m_abortFlag);
    forEachHalf([&](std::int32_t begin, std::int32_t end) { flow.pushAlongChains(begin, end); });
    if (isAborted() || (m_stage == 0 && m_partNum > 1 && !solveParts())) {
        return false;
    }
    forEachHalf([&](std::int32_t begin, std::int32_t end) { flow.plantTrees(begin, end); });
    return flow.run();
}

/// Parts are small enough for the caches, and independent of each other as long as nothing flows
/// between them. Any flow will do as a start for the whole graph. False on abort.
template <typename REAL>
bool QpboGraph<REAL>::solveParts()
{
    using Range = std::pair<NodeId, NodeId>;
    std::vector<std::vector<Range>> parts(static_cast<std::size_t>(m_partNum));
    for (NodeId begin = 0, end = 0; begin < m_nodeNum; begin = end) {
        const auto part = m_nodes[begin].part;
        while (end < m_nodeNum && m_nodes[end].part == part) {
            ++end;
        }
        parts[part].emplace_back(begin, end);
    }
    parallelFor(m_partNum, [&](int part) {
        QpboMaxFlow<REAL> flow(m_nodes.data(), m_arcs.data(), m_abortFlag, true);
        for (const auto& [begin, end] : parts[static_cast<std::size_t>(part)]) {
            flow.plantTrees(begin, end);
        }
        flow.run();
    });
    return !isAborted();
}

template <typename REAL>
void QpboGraph<REAL>::Solve()
{
    if (!MaxFlow()) {
        return;
    }
    if (m_stage == 0 && !m_allEdgesSubmodular && (!TransformToSecondStage() || !MaxFlow())) {
        return;
    }
    assignLabels();
}

/// Gives every node and arc its mirror, with the flow found so far, and lets in the edges between
/// nodes and mirrors. From here on the energy is the doubled one.
template <typename REAL>
bool QpboGraph<REAL>::TransformToSecondStage()
{
    gatherArcs();
    m_stage = 1;
    m_mirroredUnary = 0;
    for (NodeId i = 0; i < m_nodeNum; ++i) {
        Node& mirror = m_nodes[mirrorOf(i)];
        mirror = Node{};
        mirror.tr_cap = -m_nodes[i].tr_cap;
        m_mirroredUnary += m_nodes[i].tr_cap;
    }
    const std::size_t runNum = m_runNum;
    for (std::size_t r = 0; r < runNum; ++r) {
        const Run run = m_runs[r];
        for (int k = 0; k != run.count; k += run.count > 0 ? 1 : -1) {
            appendEdge(mirrorOf(run.j + k), mirrorOf(run.i + k), run.cap, run.reverseCap);
        }
    }
    for (const MirrorEdge& edge : m_mirrorEdges) {
        appendMirrorEdge(edge);
    }
    m_mirrorEdges.clear();
    return !isAborted();
}

template <typename REAL>
int QpboGraph<REAL>::segmentOf(std::int32_t i) const
{
    const Node& node = m_nodes[i];
    return node.parent != Node::noParent && node.is_sink ? 1 : 0;
}

template <typename REAL>
void QpboGraph<REAL>::assignLabels()
{
    for (NodeId i = 0; i < m_nodeNum; ++i) {
        const int segment = segmentOf(i);
        const bool isOpen = m_stage == 1 && segmentOf(mirrorOf(i)) == segment;
        m_nodes[i].label = static_cast<std::int8_t>(isOpen ? -1 : segment);
    }
}

template <typename REAL>
void QpboGraph<REAL>::ComputeWeakPersistencies()
{
    if (m_stage == 0 || !m_arcsLaidOut) {
        return;
    }
    // A residual arc from u to v says: label 0 on u needs label 0 on v. An open node takes the
    // value whose literal does not lead to its own negation, which its component's place tells.
    QpboComponents<REAL> components(m_nodes.data(), m_arcs.data());
    forEachHalf([&](std::int32_t begin, std::int32_t end) { components.addNodes(begin, end); });
    forEachHalf(
        [&](std::int32_t begin, std::int32_t end) { components.searchForward(begin, end); });
    components.number();
    for (NodeId i = 0; i < m_nodeNum; ++i) {
        const std::uint32_t own = components.componentOf(i);
        const std::uint32_t mirrors = components.componentOf(mirrorOf(i));
        if (m_nodes[i].label < 0 && own != mirrors) {
            m_nodes[i].label = own > mirrors ? 0 : 1;
        }
    }
}

template <typename REAL>
void QpboGraph<REAL>::Reset()
{
    m_nodeNum = 0;
    m_edgeNum = 0;
    m_runNum = 0;
    m_mirrorEdges.clear();
    m_partNum = 1;
    m_arcs.discard();
    m_runs.discard();
    m_arcsLaidOut = false;
    m_stage = 0;
    m_allEdgesSubmodular = true;
    m_zeroEnergy = 0;
    m_mirroredUnary = 0;
}

template <typename REAL>
std::int64_t QpboGraph<REAL>::GetTwiceLowerBound() const
{
    std::int64_t unary = 0;
    forEachHalf([&](std::int32_t begin, std::int32_t end) {
        for (std::int32_t i = begin; i < end; ++i) {
            unary += std::min<std::int64_t>(m_nodes[i].tr_cap, 0);
        }
    });
    return m_stage == 0 ? 2 * (m_zeroEnergy + unary) : 2 * m_zeroEnergy + m_mirroredUnary + unary;
}

template class QpboGraph<int>;

} // namespace kelp::oct
