#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>

namespace kelp::oct {

/// A node of the flow network. Links are indices into the arrays of nodes and arcs: half the memory
/// of pointers, and nothing needs patching when the arrays grow.
template <typename REAL>
struct QpboNode
{
    /// Values of parent that are no arc.
    static constexpr std::int32_t noParent = -1;
    static constexpr std::int32_t terminal = -2;
    static constexpr std::int32_t orphan = -3;
    /// Value of next of a node that is in no queue.
    static constexpr std::int32_t notQueued = -1;

    /// The first outgoing arc; the last is before the first arc of the next node.
    std::int32_t first;
    /// The next node of the active queue; the last one points to itself.
    std::int32_t next;
    /// The arc to the parent in the search tree.
    std::int32_t parent;
    std::uint32_t timestamp;
    /// To the terminal, valid at the time of the timestamp.
    std::int32_t distance;
    /// Positive: residual of source to node; negative: residual of node to sink.
    REAL tr_cap;
    /// Link of the queue of orphans, cursor of the layout and of the depth-first search.
    std::int32_t dfs_current;
    std::uint8_t is_sink;
    std::int8_t label;
    /// Which of the graph's parts the node belongs to.
    std::uint16_t part;
};

/// An arc, which lies in one row with the other arcs of its tail.
template <typename REAL>
struct QpboArc
{
    static constexpr std::uint32_t reverseFlag = 0x80000000U;

    std::uint32_t head() const { return headAndFlag & ~reverseFlag; }
    /// Whether the sister has a residual: the trees of the sink ask that of every arc they pass,
    /// and the sister itself is far away in memory.
    bool isReverseOpen() const { return (headAndFlag & reverseFlag) != 0; }

    std::uint32_t headAndFlag;
    std::int32_t sister;
    REAL r_cap;
};

/// The maximum flow by search trees from both terminals, with the adoption of orphans by timestamps
/// and distances (Boykov and Kolmogorov, IEEE TPAMI 26:1124, 2004). Works on arrays that belong to
/// the caller and allocates nothing.
template <typename REAL>
class QpboMaxFlow
{
public:
    using Node = QpboNode<REAL>;
    using Arc = QpboArc<REAL>;

    /// With withinParts set the arcs between nodes of different parts carry no flow. Objects that
    /// work so on different parts of one graph may run at the same time.
    QpboMaxFlow(Node* nodes, Arc* arcs, const std::atomic<bool>* abortFlag,
                bool withinParts = false)
        : m_nodes(nodes), m_arcs(arcs), m_abortFlag(abortFlag), m_withinParts(withinParts)
    {
    }

    /// Makes the nodes from begin to end - 1 roots or free nodes by the sign of their unary
    /// capacity.
    void plantTrees(std::int32_t begin, std::int32_t end)
    {
        for (std::int32_t i = begin; i < end; ++i) {
            Node& node = m_nodes[i];
            node.next = Node::notQueued;
            node.timestamp = 0;
            node.distance = 1;
            node.is_sink = node.tr_cap < 0;
            node.parent = node.tr_cap != 0 ? Node::terminal : Node::noParent;
            if (node.tr_cap != 0) {
                activate(i);
            }
        }
    }

    void activate(std::int32_t i)
    {
        Node& node = m_nodes[i];
        if (node.next != Node::notQueued) {
            return;
        }
        if (m_queueLast[1] >= 0) {
            m_nodes[m_queueLast[1]].next = i;
        } else {
            m_queueFirst[1] = i;
        }
        m_queueLast[1] = i;
        node.next = i;
    }

    /// Augments along the chains of arcs that lead from each node to the one before it, as much as
    /// these chains alone allow. Columns of a surface graph are such chains, with arcs that nothing
    /// saturates, so this is most of the flow for the cost of two passes; what it leaves is found
    /// by the trees.
    void pushAlongChains(std::int32_t begin, std::int32_t end);

    /// Augments until the trees cannot meet any more. False when the abort flag ended it; the
    /// residuals are those of a valid flow in either case.
    bool run();

    std::int64_t flow() const { return m_flow; }
    std::uint32_t time() const { return m_time; }
    /// Continues the time of runs on parts of the same nodes.
    void setTime(std::uint32_t time) { m_time = time; }

private:
    static constexpr std::int32_t infiniteDistance = std::numeric_limits<std::int32_t>::max();
    /// Nodes handled between two looks at the abort flag; far below a millisecond.
    static constexpr unsigned abortInterval = 1024;

    bool isApart(const Node& a, const Node& b) const { return m_withinParts && a.part != b.part; }
    std::int32_t arcToPrevious(std::int32_t i) const;
    std::int32_t takeActive();
    std::int32_t growSource(std::int32_t i);
    std::int32_t growSink(std::int32_t i);
    void augment(std::int32_t middle);
    bool adoptOrphans();
    template <bool isSink>
    void processOrphan(std::int32_t i);
    template <bool isSink>
    std::int32_t distanceToOrigin(std::int32_t j);
    void addOrphan(std::int32_t i);
    void push(std::int32_t arc, REAL amount);
    bool mustStop()
    {
        return ++m_work % abortInterval == 0 && m_abortFlag &&
               m_abortFlag->load(std::memory_order_relaxed);
    }

    Node* const m_nodes;
    Arc* const m_arcs;
    const std::atomic<bool>* const m_abortFlag;
    const bool m_withinParts;
    std::int32_t m_queueFirst[2] = {-1, -1};
    std::int32_t m_queueLast[2] = {-1, -1};
    std::int32_t m_orphanFirst = -1;
    std::int32_t m_orphanLast = -1;
    std::uint32_t m_time = 0;
    unsigned m_work = 0;
    std::int64_t m_flow = 0;
};

/// The arc to the node before it, or -1. Only the first few arcs are looked at: where nodes are
/// built in chains the arc is one of them.
template <typename REAL>
std::int32_t QpboMaxFlow<REAL>::arcToPrevious(std::int32_t i) const
{
    constexpr std::int32_t arcsToLookAt = 4;
    const std::int32_t end = std::min(m_nodes[i + 1].first, m_nodes[i].first + arcsToLookAt);
    for (std::int32_t a = m_nodes[i].first; a < end; ++a) {
        if (static_cast<std::int32_t>(m_arcs[a].head()) == i - 1) {
            return a;
        }
    }
    return -1;
}

template <typename REAL>
void QpboMaxFlow<REAL>::pushAlongChains(std::int32_t begin, std::int32_t end)
{
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    // Upwards: how much the chain from a node on could take, kept in distance, and the arc of the
    // chain, kept in parent.
    std::int64_t wanted = 0;
    for (std::int32_t i = begin; i < end; ++i) {
        Node& node = m_nodes[i];
        node.parent = i > begin ? arcToPrevious(i) : -1;
        const std::int64_t passed =
            node.parent < 0 ? 0 : std::min<std::int64_t>(wanted, m_arcs[node.parent].r_cap);
        wanted = std::min(passed - std::min<std::int64_t>(node.tr_cap, 0), most);
        node.distance = static_cast<std::int32_t>(wanted);
    }
    // Downwards: carry no more than is wanted.
    std::int64_t carried = 0;
    for (std::int32_t i = end - 1; i >= begin; --i) {
        Node& node = m_nodes[i];
        const std::int64_t taken = std::min(carried, -std::min<std::int64_t>(node.tr_cap, 0));
        node.tr_cap += static_cast<REAL>(taken);
        m_flow += taken;
        carried -= taken;
        if (node.parent < 0) {
            continue;
        }
        const std::int64_t room =
            std::min<std::int64_t>(m_nodes[i - 1].distance, m_arcs[node.parent].r_cap);
        const std::int64_t given =
            std::clamp<std::int64_t>(room - carried, 0, std::max<std::int64_t>(node.tr_cap, 0));
        node.tr_cap -= static_cast<REAL>(given);
        carried += given;
        if (carried > 0) {
            push(node.parent, static_cast<REAL>(carried));
        }
    }
}

template <typename REAL>
bool QpboMaxFlow<REAL>::run()
{
    std::int32_t current = -1;
    while (true) {
        std::int32_t i = current;
        if (i >= 0) {
            m_nodes[i].next = Node::notQueued;
            if (m_nodes[i].parent == Node::noParent) {
                i = -1;
            }
        }
        if (i < 0) {
            i = takeActive();
            if (i < 0) {
                return true;
            }
        }
        const std::int32_t middle = m_nodes[i].is_sink ? growSink(i) : growSource(i);
        ++m_time;
        if (middle >= 0) {
            // The node stays in hand, marked as queued so that nobody queues it again.
            m_nodes[i].next = i;
            current = i;
            augment(middle);
            if (!adoptOrphans()) {
                return false;
            }
        } else {
            current = -1;
        }
        if (mustStop()) {
            return false;
        }
    }
}

template <typename REAL>
std::int32_t QpboMaxFlow<REAL>::takeActive()
{
    while (true) {
        std::int32_t i = m_queueFirst[0];
        if (i < 0) {
            i = m_queueFirst[0] = m_queueFirst[1];
            m_queueLast[0] = m_queueLast[1];
            m_queueFirst[1] = m_queueLast[1] = -1;
            if (i < 0) {
                return -1;
            }
        }
        Node& node = m_nodes[i];
        m_queueFirst[0] = node.next == i ? -1 : node.next;
        node.next = Node::notQueued;
        if (node.parent != Node::noParent) {
            return i;
        }
    }
}

/// The arc from the source's tree into the sink's over which they meet, or -1.
template <typename REAL>
std::int32_t QpboMaxFlow<REAL>::growSource(std::int32_t i)
{
    const Node& node = m_nodes[i];
    const std::int32_t end = m_nodes[i + 1].first;
    for (std::int32_t a = node.first; a < end; ++a) {
        const Arc& arc = m_arcs[a];
        if (arc.r_cap == 0) {
            continue;
        }
        const auto j = static_cast<std::int32_t>(arc.head());
        Node& other = m_nodes[j];
        if (isApart(node, other)) {
            continue;
        }
        if (other.parent == Node::noParent) {
            other.is_sink = 0;
            other.parent = arc.sister;
            other.timestamp = node.timestamp;
            other.distance = node.distance + 1;
            activate(j);
        } else if (other.is_sink) {
            return a;
        } else if (other.timestamp <= node.timestamp && other.distance > node.distance) {
            // A shorter way to the terminal.
            other.parent = arc.sister;
            other.timestamp = node.timestamp;
            other.distance = node.distance + 1;
        }
    }
    return -1;
}

template <typename REAL>
std::int32_t QpboMaxFlow<REAL>::growSink(std::int32_t i)
{
    const Node& node = m_nodes[i];
    const std::int32_t end = m_nodes[i + 1].first;
    for (std::int32_t a = node.first; a < end; ++a) {
        const Arc& arc = m_arcs[a];
        if (!arc.isReverseOpen()) {
            continue;
        }
        const auto j = static_cast<std::int32_t>(arc.head());
        Node& other = m_nodes[j];
        if (isApart(node, other)) {
            continue;
        }
        if (other.parent == Node::noParent) {
            other.is_sink = 1;
            other.parent = arc.sister;
            other.timestamp = node.timestamp;
            other.distance = node.distance + 1;
            activate(j);
        } else if (!other.is_sink) {
            return arc.sister;
        } else if (other.timestamp <= node.timestamp && other.distance > node.distance) {
            other.parent = arc.sister;
            other.timestamp = node.timestamp;
            other.distance = node.distance + 1;
        }
    }
    return -1;
}

template <typename REAL>
void QpboMaxFlow<REAL>::push(std::int32_t a, REAL amount)
{
    Arc& arc = m_arcs[a];
    Arc& sister = m_arcs[arc.sister];
    arc.r_cap -= amount;
    sister.r_cap += amount;
    arc.headAndFlag |= Arc::reverseFlag;
    if (arc.r_cap == 0) {
        sister.headAndFlag &= ~Arc::reverseFlag;
    }
}

template <typename REAL>
void QpboMaxFlow<REAL>::augment(std::int32_t middle)
{
    const std::int32_t sourceEnd = static_cast<std::int32_t>(m_arcs[m_arcs[middle].sister].head());
    const std::int32_t sinkEnd = static_cast<std::int32_t>(m_arcs[middle].head());

    REAL amount = m_arcs[middle].r_cap;
    std::int32_t i = sourceEnd;
    for (std::int32_t a; (a = m_nodes[i].parent) != Node::terminal;
         i = static_cast<std::int32_t>(m_arcs[a].head())) {
        amount = std::min(amount, m_arcs[m_arcs[a].sister].r_cap);
    }
    amount = std::min(amount, m_nodes[i].tr_cap);
    i = sinkEnd;
    for (std::int32_t a; (a = m_nodes[i].parent) != Node::terminal;
         i = static_cast<std::int32_t>(m_arcs[a].head())) {
        amount = std::min(amount, m_arcs[a].r_cap);
    }
    amount = std::min(amount, static_cast<REAL>(-m_nodes[i].tr_cap));

    push(middle, amount);
    for (i = sourceEnd; m_nodes[i].parent != Node::terminal;) {
        const std::int32_t a = m_nodes[i].parent;
        const std::int32_t toChild = m_arcs[a].sister;
        push(toChild, amount);
        if (m_arcs[toChild].r_cap == 0) {
            addOrphan(i);
        }
        i = static_cast<std::int32_t>(m_arcs[a].head());
    }
    m_nodes[i].tr_cap -= amount;
    if (m_nodes[i].tr_cap == 0) {
        addOrphan(i);
    }
    for (i = sinkEnd; m_nodes[i].parent != Node::terminal;) {
        const std::int32_t a = m_nodes[i].parent;
        push(a, amount);
        if (m_arcs[a].r_cap == 0) {
            addOrphan(i);
        }
        i = static_cast<std::int32_t>(m_arcs[a].head());
    }
    m_nodes[i].tr_cap += amount;
    if (m_nodes[i].tr_cap == 0) {
        addOrphan(i);
    }
    m_flow += amount;
}

template <typename REAL>
void QpboMaxFlow<REAL>::addOrphan(std::int32_t i)
{
    m_nodes[i].parent = Node::orphan;
    m_nodes[i].dfs_current = -1;
    if (m_orphanLast >= 0) {
        m_nodes[m_orphanLast].dfs_current = i;
    } else {
        m_orphanFirst = i;
    }
    m_orphanLast = i;
}

template <typename REAL>
bool QpboMaxFlow<REAL>::adoptOrphans()
{
    while (m_orphanFirst >= 0) {
        const std::int32_t i = m_orphanFirst;
        m_orphanFirst = m_nodes[i].dfs_current;
        if (m_orphanFirst < 0) {
            m_orphanLast = -1;
        }
        if (m_nodes[i].is_sink) {
            processOrphan<true>(i);
        } else {
            processOrphan<false>(i);
        }
        if (mustStop()) {
            return false;
        }
    }
    return true;
}

/// The number of arcs from j to the terminal, infiniteDistance where an orphan is in between.
/// Remembers it, valid at the current time, in the nodes passed.
template <typename REAL>
template <bool isSink>
std::int32_t QpboMaxFlow<REAL>::distanceToOrigin(std::int32_t j)
{
    std::int32_t distance = 0;
    for (std::int32_t k = j;;) {
        Node& node = m_nodes[k];
        if (node.timestamp == m_time) {
            distance += node.distance;
            break;
        }
        ++distance;
        if (node.parent == Node::terminal) {
            node.timestamp = m_time;
            node.distance = 1;
            break;
        }
        if (node.parent == Node::orphan) {
            return infiniteDistance;
        }
        k = static_cast<std::int32_t>(m_arcs[node.parent].head());
    }
    std::int32_t remaining = distance;
    for (std::int32_t k = j; m_nodes[k].timestamp != m_time;
         k = static_cast<std::int32_t>(m_arcs[m_nodes[k].parent].head())) {
        m_nodes[k].timestamp = m_time;
        m_nodes[k].distance = remaining--;
    }
    return distance;
}

template <typename REAL>
template <bool isSink>
void QpboMaxFlow<REAL>::processOrphan(std::int32_t i)
{
    Node& node = m_nodes[i];
    const std::int32_t begin = node.first;
    const std::int32_t end = m_nodes[i + 1].first;
    const auto isOpenFromParent = [](const Arc& arc) {
        return isSink ? arc.r_cap != 0 : arc.isReverseOpen();
    };

    std::int32_t best = Node::noParent;
    std::int32_t bestDistance = infiniteDistance;
    for (std::int32_t a = begin; a < end; ++a) {
        const Arc& arc = m_arcs[a];
        if (!isOpenFromParent(arc)) {
            continue;
        }
        const auto j = static_cast<std::int32_t>(arc.head());
        const Node& other = m_nodes[j];
        if (isApart(node, other) || (other.is_sink != 0) != isSink ||
            other.parent == Node::noParent) {
            continue;
        }
        const std::int32_t distance = distanceToOrigin<isSink>(j);
        if (distance < bestDistance) {
            best = a;
            bestDistance = distance;
        }
    }
    node.parent = best;
    if (best != Node::noParent) {
        node.timestamp = m_time;
        node.distance = bestDistance + 1;
        return;
    }
    for (std::int32_t a = begin; a < end; ++a) {
        const Arc& arc = m_arcs[a];
        const auto j = static_cast<std::int32_t>(arc.head());
        const Node& other = m_nodes[j];
        if (isApart(node, other) || (other.is_sink != 0) != isSink ||
            other.parent == Node::noParent) {
            continue;
        }
        if (isOpenFromParent(arc)) {
            activate(j);
        }
        if (other.parent >= 0 && static_cast<std::int32_t>(m_arcs[other.parent].head()) == i) {
            addOrphan(j);
        }
    }
}

} // namespace kelp::oct
