#pragma once

#include "QpboMaxFlow.h"

#include <cstdint>

namespace kelp::oct {

/// The strongly connected components of the residual graph, by two depth-first searches: the first
/// along the residual arcs gives an order of finishing, the second against them, in the reverse of
/// that order, gives the components, numbered from 1 in topological order: residual arcs lead from
/// lower numbers to higher ones only.
///
/// Uses the link, tree and timestamp fields of the nodes, which are free after a flow.
template <typename REAL>
class QpboComponents
{
public:
    using Node = QpboNode<REAL>;
    using Arc = QpboArc<REAL>;

    QpboComponents(Node* nodes, const Arc* arcs) : m_nodes(nodes), m_arcs(arcs) {}

    /// First for all ranges of nodes, then compute.
    void addNodes(std::int32_t begin, std::int32_t end)
    {
        for (std::int32_t i = begin; i < end; ++i) {
            m_nodes[i].timestamp = unvisited;
            m_nodes[i].dfs_current = m_nodes[i].first;
        }
    }
    /// The first search, once per range after all ranges are added.
    void searchForward(std::int32_t begin, std::int32_t end)
    {
        for (std::int32_t i = begin; i < end; ++i) {
            if (m_nodes[i].timestamp == unvisited) {
                search(i, finished, [](const Arc& arc) { return arc.r_cap != 0; });
            }
        }
    }
    /// The second search.
    void number()
    {
        std::uint32_t component = 0;
        for (std::int32_t i = m_lastFinished; i >= 0; i = m_nodes[i].next) {
            m_nodes[i].dfs_current = m_nodes[i].first;
        }
        for (std::int32_t i = m_lastFinished; i >= 0;) {
            const std::int32_t next = m_nodes[i].next;
            if (m_nodes[i].timestamp == finished) {
                search(i, ++component, [](const Arc& arc) { return arc.isReverseOpen(); });
            }
            i = next;
        }
    }
    std::uint32_t componentOf(std::int32_t i) const { return m_nodes[i].timestamp; }

private:
    static constexpr std::uint32_t unvisited = 0xffffffffU;
    static constexpr std::uint32_t finished = 0xfffffffeU;

    /// Marks what can be reached from the root over open arcs; the first search also lists it in
    /// the order of finishing. The way back is kept in the nodes, so no depth is too deep.
    template <typename IsOpen>
    void search(std::int32_t root, std::uint32_t mark, IsOpen&& isOpen)
    {
        m_nodes[root].parent = -1;
        m_nodes[root].timestamp = mark;
        for (std::int32_t i = root; i >= 0;) {
            Node& node = m_nodes[i];
            if (node.dfs_current == m_nodes[i + 1].first) {
                if (mark == finished) {
                    node.next = m_lastFinished;
                    m_lastFinished = i;
                }
                i = node.parent;
                continue;
            }
            const Arc& arc = m_arcs[node.dfs_current++];
            const auto j = static_cast<std::int32_t>(arc.head());
            const std::uint32_t untouched = mark == finished ? unvisited : finished;
            if (isOpen(arc) && m_nodes[j].timestamp == untouched) {
                m_nodes[j].timestamp = mark;
                m_nodes[j].parent = i;
                i = j;
            }
        }
    }

    Node* const m_nodes;
    const Arc* const m_arcs;
    std::int32_t m_lastFinished = -1;
};

} // namespace kelp::oct
